#include "calc/PeakTable.h"

#include <QHeaderView>
#include <QLabel>
#include <QShortcut>
#include <QSignalBlocker>
#include <QTableWidget>
#include <QVBoxLayout>

#include <algorithm>
#include <cmath>

#include "core/NumberTexts.h"
#include "core/TsExceptions.h"
#include "core/TsNames.h"
#include "core/Variable.h"
#include "share/HeaderText.h"
#include "share/JobProgress.h"

namespace veltrac {

namespace {

constexpr std::size_t kPeaks = 10;
constexpr std::size_t kHarmonics = 40;
constexpr std::uint32_t kSpectrumColumn = 2;
constexpr int kRowMargin = 6;
constexpr int kLeastRows = 3;
// A value is right to a thousandth; more digits would promise more.
constexpr int kPeakDigits = 4;
constexpr int kDecibelDecimals = 2;

}  // namespace

PeakTable::PeakTable(QWidget* parent)
    : QWidget(parent), m_title(new QLabel(QStringLiteral("Pea&ks"))), m_table(new QTableWidget(0, 2))
{
    m_title->setBuddy(m_table);
    m_table->setAccessibleName(QStringLiteral("Peaks"));
    setWhatsThis(QStringLiteral("The highest lines of the spectrum, each refined between its neighbours."));
    m_table->setHorizontalHeaderLabels({QStringLiteral("Freq [Hz]"), QStringLiteral("Value")});
    // The rest is for the value, whose heading names its unit.
    m_table->horizontalHeader()->setSectionResizeMode(0, QHeaderView::ResizeToContents);
    m_table->horizontalHeader()->setSectionResizeMode(1, QHeaderView::Stretch);
    const int rowHeight = m_table->fontMetrics().height() + kRowMargin;
    m_table->verticalHeader()->setDefaultSectionSize(rowHeight);
    m_table->setMinimumHeight((kLeastRows + 1) * rowHeight);
    m_table->setEditTriggers(QAbstractItemView::NoEditTriggers);
    m_table->setSelectionBehavior(QAbstractItemView::SelectRows);
    m_table->setSelectionMode(QAbstractItemView::SingleSelection);
    m_table->setTabKeyNavigation(false);
    m_table->setToolTip(
        QStringLiteral("A click moves cursor A there; H shows the harmonics, H again the peaks."));
    auto* const column = new QVBoxLayout(this);
    column->setContentsMargins(0, 0, 0, 0);
    column->addWidget(m_title);
    column->addWidget(m_table, 1);

    connect(m_table, &QTableWidget::currentCellChanged, this, [this](int row) {
        if (const QTableWidgetItem* const item = m_table->item(row, 0))
            emit x_chosen(item->data(Qt::UserRole).toDouble());
    });
    auto* const harmonics = new QShortcut(QKeySequence(Qt::Key_H), m_table);
    harmonics->setContext(Qt::WidgetShortcut);
    connect(harmonics, &QShortcut::activated, this, &PeakTable::sl_harmonics);
}

void PeakTable::showSpectrum(const std::filesystem::path& spectrum, const SpectrumRequest& request,
                             double mean)
{
    const auto file = openTsFile(spectrum.string(), true);
    {
        JobProgress progress(window(), QStringLiteral("Looking for the peaks"));
        m_peaks = findPeaks(*file, request, kPeaks, progress.callback());
    }
    const QString unit = QString::fromStdString(
        std::string(unitIn(headerText(file->columnDescription(kSpectrumColumn)).toStdString())));
    m_table->horizontalHeaderItem(1)->setText(
        (request.result == SpectrumResult::RealImaginary ? QStringLiteral("Magnitude")
                                                         : headerText(file->columnName(kSpectrumColumn))) +
        (unit.isEmpty() ? QString() : QStringLiteral(" [%1]").arg(unit)));
    m_spectrum = spectrum;
    m_request = request;
    m_mean = mean;
    fillPeaks();
}

void PeakTable::clear()
{
    m_peaks.clear();
    m_spectrum.clear();
    fill({}, QStringLiteral("Pea&ks"));
}

void PeakTable::fillPeaks()
{
    m_showsHarmonics = false;
    fill(m_peaks, QStringLiteral("Pea&ks (mean %1)").arg(m_mean, 0, 'g', 5));
}

void PeakTable::fill(const std::vector<SpectrumPeak>& peaks, const QString& title)
{
    const QSignalBlocker quiet(m_table);
    m_title->setText(title);
    m_table->setRowCount(static_cast<int>(peaks.size()));
    for (int row = 0; row < m_table->rowCount(); ++row) {
        const SpectrumPeak& peak = peaks[static_cast<std::size_t>(row)];
        auto* const frequency = new QTableWidgetItem(QString::number(peak.frequency, 'g', 7));
        auto* const value = new QTableWidgetItem(
            QString::fromStdString(m_request.decibel ? fixedNumber(peak.value, kDecibelDecimals)
                                                     : significantNumber(peak.value, kPeakDigits)));
        frequency->setData(Qt::UserRole, peak.frequency);
        for (QTableWidgetItem* const item : {frequency, value})
            item->setTextAlignment(Qt::AlignRight | Qt::AlignVCenter);
        m_table->setItem(row, 0, frequency);
        m_table->setItem(row, 1, value);
    }
    m_table->setCurrentCell(-1, -1);
}

void PeakTable::sl_harmonics()
{
    if (m_showsHarmonics) {
        fillPeaks();
        return;
    }
    if (m_peaks.empty()) {
        emit x_told(QStringLiteral("There are no peaks yet: execute the calculation first"));
        return;
    }
    const auto row = static_cast<std::size_t>(std::max(0, m_table->currentRow()));
    const double base = m_peaks[row].frequency;
    try {
        const auto spectrum = openTsFile(m_spectrum.string(), true);
        const std::vector<SpectrumPeak> harmonics = findHarmonics(*spectrum, m_request, base, kHarmonics);
        const double distortion = harmonicDistortion(harmonics, m_request);
        QString title = QStringLiteral("Harmonics of %1 Hz").arg(base, 0, 'g', 6);
        if (std::isfinite(distortion))
            title += QStringLiteral(" (THD %1 %)").arg(100.0 * distortion, 0, 'g', 3);
        fill(harmonics, title);
        m_showsHarmonics = true;
    } catch (const TS::Failure&) {
        emit x_told(QStringLiteral("The scratch file could not be read"));
    }
}

}  // namespace veltrac
