// The columns of a ts-file as the header editor shows them: date and time of their stamps, which are only
// looked at, names and descriptions, which are edited.
#pragma once

#include <QTableWidget>

#include <vector>

class TSFILE;

namespace veltrac {

class ColumnTable : public QTableWidget
{
    Q_OBJECT

public:
    enum Place { kDate, kTime, kName, kDescription, kPlaceCount };

    explicit ColumnTable(QWidget* parent = nullptr);

    // Shows the file's columns as far as it holds them, at most the 100000 that a table can show, without
    // cellChanged(). Returns the columns that have no name.
    std::vector<unsigned> fill(TSFILE& file);
    void setRowHeights(int pixels);

protected:
    void changeEvent(QEvent* event) override;

private:
    void fitColumns();
    // False where the column has no name. Throws the TS exceptions.
    bool fillRow(TSFILE& file, int row);
};

}  // namespace veltrac
