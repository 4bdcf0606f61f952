// Changes values of the list window's table: operations on blocks, pasting, undo and saving.
#pragma once

#include <QObject>
#include <QString>

#include <array>
#include <vector>

#include "portal/BlockOperation.h"
#include "portal/SampleTable.h"

class QAction;
class QMenu;

namespace veltrac {

class SampleEditor : public QObject
{
    Q_OBJECT

public:
    // The table's model is editable. Borrows the table, which is the parent; `path` is absolute.
    SampleEditor(SampleTable* table, QString path);

    bool isChanged() const { return edits().isChanged(); }
    const EditList& edits() const { return m_table.model().editedFile()->edits(); }
    // An action for each operation on blocks. They belong to the menu.
    std::vector<QAction*> addOperations(QMenu& menu);
    // Asks what is to become of edits that are not saved; false where the window is to stay open.
    bool mayClose();

public slots:
    void sl_undo();
    void sl_redo();
    void sl_paste();
    void sl_save();
    void sl_saveAs();

signals:
    // The window has written its file, or has tried to.
    void x_written();
    // A file was made in the directory.
    void x_file_made();
    // For a box.
    void x_failed(const QString& text);
    // For the window's status bar.
    void x_status(const QString& text);

private:
    EditedFile& edited() const { return *m_table.model().editedFile(); }
    void commitOpenEditor();
    void addEdit(std::string name, std::vector<EditStrip> strips);
    void operate(const BlockOperationRow& operation);
    bool askNumbers(const BlockOperationRow& operation, std::uint64_t cells, std::vector<double>& numbers);
    std::vector<double> endValues(const SampleRun& run) const;
    void pasteRows(const std::vector<std::vector<float>>& rows);
    EditedFile::Choice askWhoWins(const EditConflict& conflict);
    bool save();
    bool saveAs();
    QString askNewName();

    SampleTable& m_table;
    QString m_path;
    std::array<std::vector<double>, 8> m_lastNumbers;  // of each block operation, for its next dialog
};

}  // namespace veltrac
