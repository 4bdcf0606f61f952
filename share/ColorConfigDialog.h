// "Variable color dialog": the colour of each plotted variable, changed in the opener's own record.
#pragma once

#include <QColor>
#include <QMainWindow>
#include <QPointer>
#include <QStringList>

#include <vector>

#include "share/SubWindow.h"

class ColorField;
class QPushButton;

class ColorConfigDialog : public QMainWindow
{
    Q_OBJECT

public:
    // Row i shows colors[i − 1]; its default is defaults[i − 1], and where there are fewer defaults they
    // begin again. `names` are told as tool tips. The colours are borrowed from the opener, which keeps the
    // vector at its length while the dialog is open; it closes itself when the opener is gone, and deletes
    // itself when it is closed.
    ColorConfigDialog(std::vector<QColor>* colors, std::vector<QColor> defaults, veltrac::SubWindow* opener,
                      const QStringList& names = QStringList());

signals:
    // The button of row i was pressed.
    void x_activated(int row);
    // A colour in the record has changed: draw again.
    void x_colors_changed();

public slots:
    void sl_selected();
    void sl_colorselected(int row);
    void sl_defaultcolors();
    // Keeps the colours and closes; close() alone gives back those from before.
    void sl_finished();
    void sl_subwindowGone(subWindow window);

protected:
    void closeEvent(QCloseEvent* event) override;

private:
    QWidget* makeRows(const QStringList& names);
    QWidget* makeButtons();
    // Puts the colours into the record and the rows.
    void assign(const std::vector<QColor>& colors);

    std::vector<QColor>* m_colors;  // null when the opener is gone
    std::vector<QColor> m_before;
    std::vector<QColor> m_defaults;
    QPointer<veltrac::SubWindow> m_opener;
    std::vector<ColorField*> m_fields;
    std::vector<QPushButton*> m_buttons;
};
