// The table of the working directory's ts-files: one row a file, one row selected at most.
#pragma once

#include <QTableWidget>

#include <vector>

#include "core/TsDirectory.h"

namespace veltrac {

class FileTable : public QTableWidget
{
    Q_OBJECT

public:
    explicit FileTable(QWidget* parent = nullptr);

    // Shows the records in place of what is there. Sorted, if at all, by the header that was clicked last.
    // The selected file stays selected if it is still there.
    void fill(const std::vector<TsFileRecord>& records, bool sorted);

    // Shows the records in place of what is there, as something that goes on behind the user's back: the
    // selection, what is scrolled to and the widths of the columns stay.
    void update(const std::vector<TsFileRecord>& records, bool sorted);

    // The file of a row, or an empty text.
    QString fileAt(int row) const;
    // The file of the selected row, or an empty text.
    QString selectedFile() const;
    // Selects a file's row and scrolls to it; false where it is not listed.
    bool select(const QString& name);

    void setRowHeights(int pixels);

signals:
    // The context menu was asked for, by mouse on a row or by key on the selected one; row -1 where no file
    // is meant.
    void x_menu_wanted(int row, const QPoint& globalPosition);
    // Enter was pressed on the selected file.
    void x_entered();

protected:
    bool viewportEvent(QEvent* event) override;
    void contextMenuEvent(QContextMenuEvent* event) override;
    void keyPressEvent(QKeyEvent* event) override;
    void changeEvent(QEvent* event) override;

private:
    // Makes the columns as wide as what they hold; of very long names the middle is left out.
    void fitColumns();
    void makeHeader();
    void setRow(int row, const TsFileRecord& record);
    void removeOthers(const std::vector<TsFileRecord>& records);
};

}  // namespace veltrac
