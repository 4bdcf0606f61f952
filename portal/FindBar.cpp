#include "portal/FindBar.h"

#include <QComboBox>
#include <QHBoxLayout>
#include <QKeyEvent>
#include <QLabel>
#include <QPushButton>
#include <QStyle>
#include <QToolButton>
#include <QVBoxLayout>

#include "portal/CellText.h"
#include "share/NumberField.h"

namespace veltrac {

namespace {

constexpr int kLeastDigits = 10;  // that the field has room for
constexpr int kMostDigits = 18;
constexpr int kGap = 6;  // pixels

struct Row
{
    Looking looking;
    const char* text;
};

constexpr Row kRows[] = {{Looking::Equal, "equal to"},
                         {Looking::Above, "above"},
                         {Looking::Below, "below"},
                         {Looking::Missing, "missing"},
                         {Looking::JumpAbove, "a jump larger than"}};

}  // namespace

FindBar::FindBar(QWidget* parent)
    : QWidget(parent),
      m_what(new QComboBox),
      m_number(new NumberField(QStringLiteral("0"))),
      m_next(new QPushButton(QStringLiteral("Nex&t"))),
      m_previous(new QPushButton(QStringLiteral("&Previous"))),
      m_reason(new QLabel)
{
    auto* const label = new QLabel(QStringLiteral("Find a val&ue"));
    label->setBuddy(m_what);
    for (const Row& row : kRows)
        m_what->addItem(QString::fromLatin1(row.text));
    m_what->setAccessibleName(QStringLiteral("What to find"));
    m_what->setToolTip(QStringLiteral("Which values of the selected column are found"));
    m_number->setAccessibleName(QStringLiteral("Number to find"));
    m_number->setToolTip(
        QStringLiteral("A number with four decimals finds every value that the table shows so; any other\n"
                       "number finds the values that are exactly equal."));
    m_number->setMinimumWidth(fontMetrics().horizontalAdvance(QLatin1Char('0')) * kLeastDigits);
    m_number->setMaximumWidth(fontMetrics().horizontalAdvance(QLatin1Char('0')) * kMostDigits);
    m_number->setReasonLabel(m_reason);
    m_next->setToolTip(QStringLiteral("The next one down the column (F3)"));
    m_previous->setToolTip(QStringLiteral("The next one up the column (Shift+F3)"));
    auto* const closeButton = new QToolButton;
    closeButton->setIcon(style()->standardIcon(QStyle::SP_TitleBarCloseButton));
    closeButton->setAutoRaise(true);
    closeButton->setToolTip(QStringLiteral("Close (Esc)"));
    closeButton->setAccessibleName(QStringLiteral("Close the find strip"));

    m_reason->setTextFormat(Qt::PlainText);
    m_reason->setWordWrap(true);
    m_reason->hide();
    auto* const rows = new QVBoxLayout(this);
    rows->setContentsMargins(4, 2, 4, 2);
    rows->setSpacing(0);
    auto* const row = new QHBoxLayout;
    row->setSpacing(kGap);
    rows->addLayout(row);
    rows->addWidget(m_reason);
    for (QWidget* const widget : std::initializer_list<QWidget*>{label, m_what, m_number, m_next, m_previous})
        row->addWidget(widget, widget == m_number ? 1 : 0);
    row->addStretch(1);
    row->addWidget(closeButton);

    connect(m_what, qOverload<int>(&QComboBox::currentIndexChanged), this, &FindBar::updateFields);
    connect(m_number, &NumberField::x_validated, this, &FindBar::updateFields);
    connect(m_next, &QPushButton::clicked, this, [this] { emit x_find(Direction::Forward); });
    connect(m_previous, &QPushButton::clicked, this, [this] { emit x_find(Direction::Backward); });
    connect(closeButton, &QToolButton::clicked, this, [this] {
        hide();
        emit x_closed();
    });
    hide();
}

void FindBar::open()
{
    show();
    m_number->selectAll();
    (m_number->isEnabled() ? static_cast<QWidget*>(m_number) : m_what)->setFocus();
}

bool FindBar::isValid() const
{
    return !m_number->isEnabled() || m_number->isValid();
}

SearchCondition FindBar::condition() const
{
    const Looking looking = kRows[m_what->currentIndex()].looking;
    return {looking, m_number->number(),
            looking == Looking::Equal ? searchTolerance(m_number->text().toStdString()) : 0.0};
}

void FindBar::updateFields()
{
    m_number->setEnabled(kRows[m_what->currentIndex()].looking != Looking::Missing);
    m_reason->setVisible(!isValid());
    m_next->setEnabled(isValid());
    m_previous->setEnabled(isValid());
}

void FindBar::keyPressEvent(QKeyEvent* event)
{
    const bool enter = event->key() == Qt::Key_Return || event->key() == Qt::Key_Enter;
    if (event->key() == Qt::Key_Escape) {
        hide();
        emit x_closed();
    } else if (enter && isValid()) {
        emit x_find((event->modifiers() & Qt::ShiftModifier) != 0 ? Direction::Backward : Direction::Forward);
    } else {
        QWidget::keyPressEvent(event);
    }
}

}  // namespace veltrac
