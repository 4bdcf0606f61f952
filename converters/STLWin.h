// "Smart tool log": imports a text file of measurements as a ts-file. Everything is found out when the file
// is opened, so that Enter imports it; every finding can be changed.
#pragma once

#include <QString>

#include <memory>

#include "converters/ImportPanel.h"
#include "converters/STLObject.h"
#include "share/SubWindow.h"

namespace veltrac {

class STLColumnTable;
class STLLines;
class STLPreview;
class STLResultFields;
class STLTextFields;
class STLTimeFields;

}  // namespace veltrac

class STLWin : public veltrac::SubWindow, private veltrac::Importer
{
    Q_OBJECT

public:
    // Without a file, the window asks for one when it is shown.
    explicit STLWin(const QString& file = QString(), QWidget* parent = nullptr);
    ~STLWin() override;

    // Looks at a file and shows what was found.
    void open(const QString& file);

public slots:
    void sl_open();
    void sl_import();
    void sl_check();

private slots:
    void sl_reading_changed(char separator, char decimal);
    void sl_other_reading();
    void sl_lines_changed();
    void sl_changed();

private:
    bool hasFiles() const override { return m_log != nullptr; }
    void chooseFiles() override { sl_open(); }
    std::uint64_t fileBytes() const override;
    bool isRead() const override { return m_log->isRead(); }
    QString readingText() const override;
    veltrac::JobOutcome check(const veltrac::Progress& progress) override;
    QString doubt() const override;
    QString targetName() const override;
    veltrac::JobOutcome makeFile(const std::filesystem::path& target,
                                 const veltrac::Progress& progress) override;
    Report report() const override;
    void showFindings() override;

    QWidget* buildFields();
    bool hasColumns() const;
    bool fieldsAreGood();
    QString foundText() const;
    void showFormat();
    void enableFields();

    std::unique_ptr<STLObject> m_log;
    veltrac::STLLines* m_lines;
    veltrac::STLPreview* m_preview;
    veltrac::STLColumnTable* m_columns;
    veltrac::STLTextFields* m_text;
    veltrac::STLTimeFields* m_time;
    veltrac::STLResultFields* m_result;
    veltrac::ImportPanel* m_panel;
};
