#include "share/ColorConfigDialog.h"

#include <QAction>
#include <QCloseEvent>
#include <QColorDialog>
#include <QGridLayout>
#include <QHBoxLayout>
#include <QLabel>
#include <QPushButton>
#include <QScrollArea>
#include <QScrollBar>
#include <QVBoxLayout>

#include <algorithm>

#include "share/ColorField.h"

using namespace veltrac;

ColorConfigDialog::ColorConfigDialog(std::vector<QColor>* colors, std::vector<QColor> defaults,
                                     SubWindow* opener, const QStringList& names)
    : QMainWindow(opener),
      m_colors(colors),
      m_before(*colors),
      m_defaults(std::move(defaults)),
      m_opener(opener)
{
    setAttribute(Qt::WA_DeleteOnClose);
    setWindowTitle(QStringLiteral("Variable color dialog"));
    auto* const centre = new QWidget(this);
    auto* const column = new QVBoxLayout(centre);
    // Plots of many variables have more rows than a screen is high.
    auto* const scroll = new QScrollArea(centre);
    scroll->setFrameShape(QFrame::NoFrame);
    scroll->setWidgetResizable(true);
    scroll->setFocusPolicy(Qt::NoFocus);  // it follows the button that has the focus
    scroll->setHorizontalScrollBarPolicy(Qt::ScrollBarAlwaysOff);
    QWidget* const rows = makeRows(names);
    scroll->setWidget(rows);
    scroll->setMinimumWidth(rows->sizeHint().width() + scroll->verticalScrollBar()->sizeHint().width());
    column->addWidget(scroll);
    column->addWidget(makeButtons());
    setCentralWidget(centre);
    constexpr int kMostHeight = 600;
    resize(sizeHint().width(), std::min(rows->sizeHint().height() + 80, kMostHeight));

    connect(this, &ColorConfigDialog::x_activated, this, &ColorConfigDialog::sl_colorselected);
    if (opener != nullptr)
        connect(opener, &SubWindow::windowGone, this, &ColorConfigDialog::sl_subwindowGone);
}

QWidget* ColorConfigDialog::makeRows(const QStringList& names)
{
    auto* const rows = new QWidget(this);
    auto* const grid = new QGridLayout(rows);
    grid->setColumnStretch(1, 1);
    for (int i = 1; i <= static_cast<int>(m_colors->size()); ++i) {
        auto* const label = new QLabel(QStringLiteral("Variable %1 : ").arg(i), rows);
        auto* const field = new ColorField((*m_colors)[static_cast<std::size_t>(i - 1)], rows);
        auto* const button = new QPushButton(QStringLiteral("Change color %1").arg(i), rows);
        for (QWidget* const widget :
             {static_cast<QWidget*>(label), static_cast<QWidget*>(field), static_cast<QWidget*>(button)})
            widget->setToolTip(names.value(i - 1));
        connect(button, SIGNAL(clicked()), this, SLOT(sl_selected()));
        grid->addWidget(label, i, 0);
        grid->addWidget(field, i, 1);
        grid->addWidget(button, i, 2);
        m_fields.push_back(field);
        m_buttons.push_back(button);
    }
    grid->setRowStretch(static_cast<int>(m_colors->size()) + 1, 1);
    return rows;
}

QWidget* ColorConfigDialog::makeButtons()
{
    auto* const row = new QWidget(this);
    auto* const layout = new QHBoxLayout(row);
    layout->setContentsMargins(0, 0, 0, 0);
    const auto add = [&](const QString& text) {
        auto* const button = new QPushButton(text, row);
        layout->addWidget(button);
        return button;
    };
    connect(add(QStringLiteral("&Default colors")), &QPushButton::clicked, this,
            &ColorConfigDialog::sl_defaultcolors);
    layout->addStretch();
    connect(add(QStringLiteral("&Ok")), &QPushButton::clicked, this, &ColorConfigDialog::sl_finished);
    connect(add(QStringLiteral("&Cancel")), &QPushButton::clicked, this, &QWidget::close);
    auto* const escape = new QAction(this);
    escape->setShortcut(Qt::Key_Escape);
    connect(escape, &QAction::triggered, this, &QWidget::close);
    addAction(escape);
    return row;
}

void ColorConfigDialog::assign(const std::vector<QColor>& colors)
{
    if (m_colors == nullptr)
        return;
    for (std::size_t i = 0; i < std::min(m_colors->size(), colors.size()); ++i) {
        (*m_colors)[i] = colors[i];
        if (i < m_fields.size())
            m_fields[i]->setColor(colors[i]);
    }
    emit x_colors_changed();
}

void ColorConfigDialog::sl_selected()
{
    const auto found = std::find(m_buttons.begin(), m_buttons.end(), sender());
    if (found != m_buttons.end())
        emit x_activated(static_cast<int>(found - m_buttons.begin()) + 1);
}

void ColorConfigDialog::sl_colorselected(int row)
{
    const auto i = static_cast<std::size_t>(row - 1);
    if (m_colors == nullptr || row < 1 || i >= std::min(m_colors->size(), m_fields.size()))
        return;
    const QColor chosen = QColorDialog::getColor((*m_colors)[i], this, m_buttons[i]->text());
    // The opener may have gone while the chooser was open.
    if (!chosen.isValid() || m_colors == nullptr)
        return;
    std::vector<QColor> colors = *m_colors;
    colors[i] = chosen;
    assign(colors);
}

void ColorConfigDialog::sl_defaultcolors()
{
    if (m_colors == nullptr || m_defaults.empty())
        return;
    std::vector<QColor> colors;
    for (std::size_t i = 0; i < m_colors->size(); ++i)
        colors.push_back(m_defaults[i % m_defaults.size()]);
    assign(colors);
}

void ColorConfigDialog::sl_finished()
{
    if (m_colors != nullptr)
        m_before = *m_colors;
    close();
}

void ColorConfigDialog::sl_subwindowGone(subWindow window)
{
    if (window != m_opener.data())
        return;
    m_colors = nullptr;
    close();
}

void ColorConfigDialog::closeEvent(QCloseEvent* event)
{
    event->accept();
    if (m_colors != nullptr && *m_colors != m_before)
        assign(m_before);
    m_colors = nullptr;
}
