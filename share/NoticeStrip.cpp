#include "share/NoticeStrip.h"

#include <QHBoxLayout>
#include <QLabel>
#include <QPushButton>
#include <QToolButton>

namespace veltrac {

NoticeStrip::NoticeStrip(QWidget* parent)
    : QFrame(parent), m_text(new QLabel(this)), m_button(new QPushButton(this))
{
    auto* const close = new QToolButton(this);
    close->setText(QStringLiteral("×"));
    close->setAutoRaise(true);
    close->setToolTip(tr("Hide this notice"));
    close->setAccessibleName(tr("Hide this notice"));
    auto* const row = new QHBoxLayout(this);
    row->setContentsMargins(8, 3, 3, 3);
    row->addWidget(m_text, 1);
    row->addWidget(m_button);
    row->addWidget(close);
    m_text->setTextFormat(Qt::PlainText);
    m_text->setWordWrap(true);
    setFrameShape(QFrame::StyledPanel);
    setAutoFillBackground(true);
    QPalette colors = palette();
    colors.setColor(QPalette::Window, colors.color(QPalette::ToolTipBase));
    colors.setColor(QPalette::WindowText, colors.color(QPalette::ToolTipText));
    setPalette(colors);
    connect(m_button, &QPushButton::clicked, this, &NoticeStrip::x_pressed);
    connect(close, &QToolButton::clicked, this, &QWidget::hide);
    hide();
}

void NoticeStrip::showNotice(const QString& text, const QString& button)
{
    m_text->setText(text);
    m_button->setText(button);
    m_button->setVisible(!button.isEmpty());
    show();
}

QString NoticeStrip::text() const
{
    return m_text->text();
}

}  // namespace veltrac
