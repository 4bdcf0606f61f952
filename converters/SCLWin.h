// "Single column log": imports text files of one value a line, each of them as a column of one ts-file.
#pragma once

#include <QString>

#include "converters/ImportPanel.h"
#include "converters/SCLObject.h"
#include "share/SubWindow.h"

namespace veltrac {

class SCLFields;
class SCLFileList;
class SCLPreview;

}  // namespace veltrac

class SCLWin : public veltrac::SubWindow, private veltrac::Importer
{
    Q_OBJECT

public:
    // Without a file, the window asks for files when it is shown.
    explicit SCLWin(const QString& file = QString(), QWidget* parent = nullptr);

    // Adds a file as the last column; says why where that fails.
    void add(const QString& file);

public slots:
    void sl_add();
    void sl_remove();
    void sl_up();
    void sl_down();

private slots:
    void sl_changed();
    void sl_skip_changed(std::uint64_t lines);
    void sl_show_file();

private:
    bool hasFiles() const override { return !m_logs.sources.empty(); }
    void chooseFiles() override { sl_add(); }
    std::uint64_t fileBytes() const override;
    bool isRead() const override { return m_logs.isRead(); }
    QString readingText() const override;
    veltrac::JobOutcome check(const veltrac::Progress& progress) override;
    QString doubt() const override;
    QString targetName() const override;
    veltrac::JobOutcome makeFile(const std::filesystem::path& target,
                                 const veltrac::Progress& progress) override;
    Report report() const override;
    void showFindings() override;

    QWidget* buildFields();
    void move(int by);
    void showFiles(int selected);
    bool fieldsAreGood();
    QString summary() const;

    SCLObject m_logs;
    veltrac::SCLFileList* m_files;
    veltrac::SCLFields* m_fields;
    veltrac::SCLPreview* m_preview;
    veltrac::ImportPanel* m_panel;
};
