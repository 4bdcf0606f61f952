#include "portal/SampleStatus.h"

#include <QLabel>
#include <QVBoxLayout>

#include "portal/SelectionStatistics.h"

namespace veltrac {

SampleStatus::SampleStatus(SampleTable& table, QWidget* parent)
    : QWidget(parent),
      m_table(table),
      m_position(new QLabel),
      m_selected(new QLabel),
      m_statistics(new SelectionStatistics(this))
{
    auto* const layout = new QVBoxLayout(this);
    layout->setContentsMargins(2, 0, 2, 0);
    layout->setSpacing(0);
    for (QLabel* const label : {m_position, m_selected}) {
        label->setSizePolicy(QSizePolicy::Ignored, QSizePolicy::Fixed);
        label->setTextFormat(Qt::PlainText);
        label->setTextInteractionFlags(Qt::TextSelectableByMouse);
        layout->addWidget(label);
    }
    m_position->setAccessibleName(QStringLiteral("Current sample"));
    m_selected->setAccessibleName(QStringLiteral("Selected values"));
    connect(m_statistics, &SelectionStatistics::x_text, this, [this](const QString& text) {
        m_selected->setText(text);
        m_selected->setToolTip(text);
    });
    connect(&table.view(), &SampleView::x_current_moved, this, &SampleStatus::showPosition);
    connect(&table.view(), &SampleView::x_selected, this, &SampleStatus::restartStatistics);
    showPosition();
}

void SampleStatus::followChanges()
{
    showPosition();
    restartStatistics();
}

void SampleStatus::stop()
{
    m_statistics->stop();
}

void SampleStatus::showPosition()
{
    const QString text = m_table.model().rowCount() == 0 ? QStringLiteral("The file has no samples.")
                                                         : m_table.rowText(m_table.view().currentRow());
    m_position->setText(text);
    m_position->setToolTip(text);
}

void SampleStatus::restartStatistics()
{
    m_statistics->start(m_table.selectedRuns(), m_table.readerOfColumn());
}

}  // namespace veltrac
