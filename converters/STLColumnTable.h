// The columns of a smart tool log, a row each: which of them are taken, and what they are called.
#pragma once

#include <QTableWidget>

#include "converters/STLObject.h"

namespace veltrac {

class STLLines;

class STLColumnTable : public QTableWidget
{
    Q_OBJECT

public:
    explicit STLColumnTable(QWidget* parent = nullptr);

    // Shows the columns with their first values; nothing is announced then.
    void show(const STLObject& log, const STLLines& lines);
    // Takes what the user has changed into the log's format.
    void read(STLObject& log) const;

signals:
    void x_changed();

private:
    void showTake(int row, const STLColumn& column, bool isTime);

    bool m_filling = false;
};

}  // namespace veltrac
