// The base of the windows that import text. What was found is shown while fields are edited; "Check only"
// reads everything and reports, "Import" (Enter) does so and makes the ts-file, Escape makes nothing.
//
// A window that derives from it has fields for a format, reads them in its own slots, and calls
// checkQuietly() and showFindings() after each change.
#pragma once

#include <QString>
#include <QVector>

#include <cstdint>
#include <filesystem>

#include "converters/ImportReport.h"
#include "core/Progress.h"
#include "share/SubWindow.h"

class QLabel;
class QLineEdit;
class QPushButton;

namespace veltrac {

class ImportWindow : public SubWindow
{
    Q_OBJECT

public slots:
    void sl_import();
    void sl_check();
    void sl_help();

protected:
    struct Report
    {
        QString summary;
        QVector<ImportTrouble> troubles;
        std::uint64_t troubleCount = 0;
    };

    // `icon` is a resource.
    ImportWindow(const QString& icon, QWidget* parent);

    // -- What the importers differ in; check() and makeFile() throw what importFailure() knows --

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
    virtual JobOutcome makeFile(const std::filesystem::path& target, const Progress& progress) = 0;
    virtual Report report() const = 0;
    virtual void showFindings() = 0;

    // -- Building --

    QWidget* buildFindings();
    // "Help", "Check only", "Import" and "Cancel", behind `first` where there is one.
    QWidget* buildButtons(const char* helpTip, const char* checkTip, QPushButton* first = nullptr);

    // -- Checking --

    // Small files are read whenever something changes, so that the findings are always those of all of them.
    // Of larger ones, only what needs no reading is found again.
    void checkQuietly();
    // Reads large files once they are on the screen, with a Cancel button.
    void checkLater();

    void showEvent(QShowEvent* event) override;
    void keyPressEvent(QKeyEvent* event) override;

    QString m_problem;       // why nothing can be imported; empty where it can
    bool m_checked = false;  // what was found belongs to the fields as they are
    bool m_filling = false;  // fields are being set, not edited

    QLineEdit* m_target;
    QLabel* m_finding = nullptr;
    QLabel* m_warning = nullptr;
    QPushButton* m_import = nullptr;
    QPushButton* m_check = nullptr;

private:
    bool runCheck();
    void write(const QString& target);
    void showReport(const QString& target, double seconds);

    bool m_asked = false;  // for files
};

}  // namespace veltrac
