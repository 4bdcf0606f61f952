// The files of an SCL import, a row each, with what their columns are called, and the buttons beside them.
#pragma once

#include <QWidget>

#include <vector>

#include "converters/SCLSource.h"

class QPushButton;
class QTableWidget;

namespace veltrac {

class SCLFileList : public QWidget
{
    Q_OBJECT

public:
    explicit SCLFileList(QWidget* parent = nullptr);

    // Shows the sources; neither changes nor the selection are announced then.
    void show(const std::vector<SCLSource>& sources);
    // Takes names, units and descriptions.
    void read(std::vector<SCLSource>& sources) const;
    // The selected row, -1 for none.
    int current() const;
    void select(int row);
    void enableButtons();

signals:
    void x_add();
    void x_remove();
    void x_up();
    void x_down();
    void x_changed();
    void x_selected();

private:
    bool m_filling = false;
    QTableWidget* m_table;
    QPushButton* m_remove;
    QPushButton* m_up;
    QPushButton* m_down;
};

}  // namespace veltrac
