// What the windows that import text have in common, below their fields: what was found, and the buttons.
// "Check only" reads everything and reports, "Import" (Enter) does so and makes the ts-file, Escape makes
// nothing.
#pragma once

#include <QString>
#include <QVector>
#include <QWidget>

#include <cstdint>
#include <filesystem>
#include <functional>

#include "converters/ImportReport.h"
#include "core/Progress.h"

class QLabel;
class QPushButton;

namespace veltrac {

class FileNotice;
class SubWindow;

// What the importers differ in. check() and makeFile() throw what importFailure() knows.
class Importer
{
public:
    struct Report
    {
        QString summary;
        QVector<ImportTrouble> troubles;
        std::uint64_t troubleCount = 0;
    };

    virtual ~Importer() = default;

    virtual bool hasFiles() const = 0;
    // Called once, when the window is shown without a file.
    virtual void chooseFiles() = 0;
    // The bytes of all files, and whether check() needs to read them again.
    virtual std::uint64_t fileBytes() const = 0;
    virtual bool isRead() const = 0;
    virtual QString readingText() const = 0;
    virtual JobOutcome check(const Progress& progress) = 0;
    // The question before an import that would leave most of the text out; empty where there is none.
    virtual QString doubt() const = 0;
    // The name of the ts-file as the user has it.
    virtual QString targetName() const = 0;
    virtual JobOutcome makeFile(const std::filesystem::path& target, const Progress& progress) = 0;
    virtual Report report() const = 0;
    virtual void showFindings() = 0;
};

class ImportPanel : public QWidget
{
    Q_OBJECT

public:
    // Tool tips of two buttons.
    struct Tips
    {
        const char* help;
        const char* check;
    };

    // The panel of a window, below its fields; `first` stands before the buttons and may be null. Borrows the
    // importer.
    ImportPanel(SubWindow& window, Importer& importer, QWidget* fields, const Tips& tips,
                QPushButton* first = nullptr);

    // Forgets what was found and does what may fail to read the files: what it throws keeps them from being
    // imported. True where it threw nothing.
    bool attempt(const std::function<void()>& reading);
    // Why nothing can be imported; empty where it can.
    const QString& problem() const { return m_problem; }
    // Whether what was found belongs to the fields as they are.
    bool isChecked() const { return m_checked; }

    // Small files are read whenever something changes, so that the findings are always those of all of them.
    // Of larger ones, only what needs no reading is found again.
    void checkQuietly();
    // Reads large files once they are on the screen, with a Cancel button.
    void checkLater();

    // Shows what was found, or in its place why nothing was; `doubts` stand below it, in red.
    void showFinding(const QString& found, const QString& doubts);
    // Offers the buttons where the fields are good; the focus goes to `instead` where it may not stay.
    void offerImport(bool fieldsAreGood, QWidget* instead);
    void focusImport();
    // Tells what becomes of these files from now on, and reads them again.
    void watch(const QStringList& paths);

public slots:
    void sl_import();
    void sl_check();
    void sl_help();

protected:
    bool eventFilter(QObject* watched, QEvent* event) override;

private:
    QWidget* buildButtons(const Tips& tips, QPushButton* first);
    bool runCheck();
    void askForFiles();
    void readAgain();
    void write(const QString& target);
    void showReport(const QString& target, double seconds);

    SubWindow& m_window;
    Importer& m_importer;
    QString m_problem;
    bool m_checked = false;
    bool m_asked = false;  // for files
    QLabel* m_finding;
    QLabel* m_warning;
    FileNotice* m_notice;
    QPushButton* m_import = nullptr;
    QPushButton* m_check = nullptr;
};

}  // namespace veltrac
