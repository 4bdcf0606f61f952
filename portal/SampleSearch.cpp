#include "portal/SampleSearch.h"

#include <QInputDialog>

#include <algorithm>
#include <cmath>

#include "core/FileTime.h"
#include "portal/FindBar.h"
#include "share/GroupedNumber.h"
#include "share/JobProgress.h"
#include "share/WaitCursor.h"

namespace veltrac {

namespace {

constexpr int kPages = 100;  // of a file

}  // namespace

SampleSearch::SampleSearch(SampleTable* table) : QObject(table), m_table(*table), m_findBar(new FindBar)
{
    table->addBelow(m_findBar);
    connect(m_findBar, &FindBar::x_find, this, &SampleSearch::find);
    connect(m_findBar, &FindBar::x_closed, this, [this] { m_table.view().setFocus(); });
}

// -- The scan --

bool SampleSearch::scan()
{
    TsTableModel& model = m_table.model();
    if (model.rowCount() == 0 || model.columnCount() == 0) {
        emit x_found(model.columnCount() == 0 ? QStringLiteral("The file has no columns.")
                                              : QStringLiteral("The file has no samples."));
        return false;
    }
    try {
        const WaitCursor waiting;
        JobProgress progress(
            &m_table,
            QStringLiteral("Reading column %1 of %2").arg(m_table.column() + 1).arg(m_table.name()));
        if (scanColumn(model.writtenReader(m_table.column()), model.writtenRows(), progress.callback(),
                       m_scan) == JobOutcome::Done)
            return true;
        emit x_status(QStringLiteral("Cancelled."));
    } catch (...) {
        emit x_failed(QString::fromLatin1(kCutShort));
    }
    return false;
}

void SampleSearch::showExtreme(const QString& heading, double value, std::uint32_t scanned)
{
    const std::uint32_t row = scanned == 0 ? 0 : m_table.model().writtenRow(scanned);
    if (row != 0)
        m_table.goToSample(row);
    const std::uint32_t sample = row == 0 ? 0 : m_table.model().sampleInRow(static_cast<int>(row) - 1);
    const QString place = QString::asprintf(" %g at sample %u", value, sample);
    showScan(heading + (sample == row ? place : place + QStringLiteral(" (row %1)").arg(row)));
}

void SampleSearch::showScan(const QString& found)
{
    QString text = found;
    if (m_scan.missing > 0) {
        text += m_scan.missing == 1
                    ? QStringLiteral("\n1 value is missing")
                    : QStringLiteral("\n%1 values are missing").arg(groupedNumber(m_scan.missing));
        text += std::isnan(m_scan.averagePresent)
                    ? QStringLiteral("; there is no other")
                    : QString::asprintf("; the average without them is %g", m_scan.averagePresent);
    }
    const auto rows = static_cast<std::uint32_t>(m_table.model().rowCount());
    if (const std::uint32_t empty = rows - m_table.model().writtenRows(); empty > 0)
        text += empty == 1 ? QStringLiteral("\n1 row of the ring is empty and does not count")
                           : QStringLiteral("\n%1 rows of the ring are empty and do not count")
                                 .arg(groupedNumber(empty));
    emit x_found(text);
}

void SampleSearch::findMaximum()
{
    if (scan())
        showExtreme(QStringLiteral("The max value in column %1 is:\n").arg(m_table.column() + 1),
                    m_scan.maximum, m_scan.maximumSample);
}

void SampleSearch::findMinimum()
{
    if (scan())
        showExtreme(QStringLiteral("The minimum value in column %1 is:\n").arg(m_table.column() + 1),
                    m_scan.minimum, m_scan.minimumSample);
}

void SampleSearch::findAverage()
{
    if (scan())
        showScan(QStringLiteral("The average value of column %1 is:\n").arg(m_table.column() + 1) +
                 QString::asprintf("%g", m_scan.average));
}

// -- Going and finding --

void SampleSearch::sl_goTo()
{
    const QString question =
        QStringLiteral("A sample (250000), a time (12.5 s, 13:45:30 or 2016-05-17 13:45) or a share (50%):");
    QString label = question;
    for (;;) {
        bool accepted = false;
        const QString text = QInputDialog::getText(&m_table, QStringLiteral("Go to"), label,
                                                   QLineEdit::Normal, m_lastGoTo, &accepted);
        if (!accepted)
            return;
        m_lastGoTo = text;
        QString reason = QString::fromLatin1(kCutShort);
        try {
            const MeantRow meant = meantRow(text.toStdString(), m_table.model().file());
            if (meant.row) {
                if (m_table.goToSample(*meant.row) && !meant.note.empty())
                    emit x_status(QString::fromStdString(meant.note));
                m_table.view().setFocus();
                return;
            }
            reason = QString::fromStdString(meant.reason);
        } catch (...) {
        }
        label = reason + QStringLiteral("\n\n") + question;
    }
}

void SampleSearch::sl_pageUp()
{
    SampleView& view = m_table.view();
    view.goTo(view.currentRow() - std::max(1, view.rows().total() / kPages), m_table.column());
}

void SampleSearch::sl_pageDown()
{
    SampleView& view = m_table.view();
    const int step = std::max(1, view.rows().total() / kPages);
    view.goTo(std::min(view.rows().total() - 1 - step, view.currentRow()) + step, m_table.column());
}

void SampleSearch::sl_find()
{
    m_findBar->open();
}

void SampleSearch::sl_findNext()
{
    find(Direction::Forward);
}

void SampleSearch::sl_findPrevious()
{
    find(Direction::Backward);
}

void SampleSearch::find(Direction direction)
{
    if (!m_findBar->isValid()) {
        m_findBar->open();
        return;
    }
    const TsTableModel& model = m_table.model();
    if (model.rowCount() == 0 || model.columnCount() == 0)
        return;
    std::uint32_t found = 0;
    try {
        JobProgress progress(
            &m_table,
            QStringLiteral("Searching column %1 of %2").arg(m_table.column() + 1).arg(m_table.name()));
        if (searchColumn(model.columnReader(m_table.column()), static_cast<std::uint32_t>(model.rowCount()),
                         m_findBar->condition(), m_table.view().rows().sampleOf(m_table.view().currentRow()),
                         direction, progress.callback(), found) == JobOutcome::Cancelled) {
            emit x_status(QStringLiteral("Cancelled."));
            return;
        }
    } catch (...) {
        emit x_status(QString::fromLatin1(kCutShort));
        return;
    }
    if (found != 0)
        m_table.goToSample(found);
    else
        emit x_status(direction == Direction::Forward ? QStringLiteral("No more below the current cell.")
                                                      : QStringLiteral("No more above the current cell."));
}

}  // namespace veltrac
