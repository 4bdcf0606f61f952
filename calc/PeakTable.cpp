#include "calc/PeakTable.h"

#include <QHBoxLayout>
#include <QHeaderView>
#include <QLabel>
#include <QShortcut>
#include <QSignalBlocker>
#include <QTableWidget>
#include <QVBoxLayout>

#include <algorithm>
#include <cmath>

#include "calc/SpectrumTexts.h"
#include "core/NumberTexts.h"
#include "core/TSFILE.h"
#include "core/TsExceptions.h"
#include "core/TsNames.h"
#include "core/Variable.h"
#include "share/HeaderText.h"
#include "share/JobProgress.h"
#include "share/NumberField.h"

namespace veltrac {

namespace {

constexpr std::size_t kHarmonics = 40;
constexpr std::uint32_t kSpectrumColumn = 2;
constexpr std::uint32_t kBandColumns = 5;
constexpr int kPeriodCell = 1;
constexpr int kValueCell = 2;
constexpr int kPhaseCell = 3;
constexpr int kRowMargin = 6;
constexpr int kLeastRows = 3;
// A value is right to a thousandth; more digits would promise more.
constexpr int kPeakDigits = 4;
constexpr int kFrequencyDigits = 7;
constexpr int kPeriodDigits = 5;
constexpr int kDecibelDecimals = 2;
constexpr int kPhaseDecimals = 1;

QString fromUtf8(const std::string& utf8)
{
    return QString::fromStdString(utf8);
}

}  // namespace

PeakTable::PeakTable(QWidget* parent)
    : QWidget(parent),
      m_title(new QLabel(QStringLiteral("Pea&ks"))),
      m_choice(new QWidget),
      m_prominence(new NumberField(QStringLiteral("0"))),
      m_distance(new NumberField(QStringLiteral("0"))),
      m_table(new QTableWidget(0, kPhaseCell + 1)),
      m_power(new QLabel)
{
    setWhatsThis(QStringLiteral("The highest lines of the spectrum, each refined between its neighbours."));
    createTable();
    createChoice();
    m_power->setTextInteractionFlags(Qt::TextSelectableByMouse);
    m_power->setTextFormat(Qt::PlainText);
    m_power->setWordWrap(true);
    m_power->setAccessibleName(QStringLiteral("Power between the cursors"));
    m_power->hide();
    auto* const column = new QVBoxLayout(this);
    column->setContentsMargins(0, 0, 0, 0);
    column->addWidget(m_title);
    column->addWidget(m_table, 1);
    column->addWidget(m_choice);
    column->addWidget(m_power);
}

void PeakTable::createTable()
{
    m_title->setBuddy(m_table);
    m_table->setAccessibleName(QStringLiteral("Peaks"));
    m_table->horizontalHeader()->setSectionResizeMode(QHeaderView::ResizeToContents);
    // The rest is for the value, whose heading names its unit.
    m_table->horizontalHeader()->setSectionResizeMode(kValueCell, QHeaderView::Stretch);
    m_table->verticalHeader()->hide();
    setColumns(QStringLiteral("Value"), true, false);
    const int rowHeight = m_table->fontMetrics().height() + kRowMargin;
    m_table->verticalHeader()->setDefaultSectionSize(rowHeight);
    m_table->setMinimumHeight((kLeastRows + 1) * rowHeight);
    // What the panel has left: by its own wish the panel would have to be scrolled.
    m_table->setSizePolicy(QSizePolicy::Expanding, QSizePolicy::Ignored);
    m_table->setEditTriggers(QAbstractItemView::NoEditTriggers);
    m_table->setSelectionBehavior(QAbstractItemView::SelectRows);
    m_table->setSelectionMode(QAbstractItemView::SingleSelection);
    m_table->setTabKeyNavigation(false);
    m_table->setToolTip(
        QStringLiteral("A click moves cursor A there; H shows its harmonics, H again the peaks."));
    connect(m_table, &QTableWidget::currentCellChanged, this, [this](int row) {
        if (const QTableWidgetItem* const item = m_table->item(row, 0))
            emit x_chosen(item->data(Qt::UserRole).toDouble());
    });
    auto* const harmonics = new QShortcut(QKeySequence(Qt::Key_H), m_table);
    harmonics->setContext(Qt::WidgetShortcut);
    connect(harmonics, &QShortcut::activated, this, &PeakTable::x_harmonics_wanted);
}

void PeakTable::createChoice()
{
    struct Row
    {
        const char* label;
        const char* name;
        NumberField* field;
        const char* whatsThis;
    };
    const Row rows[] = {
        {"Prominence:", "Least prominence", m_prominence,
         "How far a peak stands out of the curve around it, in the unit of the values: its height above the "
         "higher one of the lowest places between it and higher peaks on both sides."},
        {"Distance [Hz]:", "Least distance", m_distance,
         "Of two peaks that are closer together only the higher one is listed."}};
    auto* const line = new QHBoxLayout(m_choice);
    line->setContentsMargins(0, 0, 0, 0);
    for (const Row& row : rows) {
        auto* const label = new QLabel(QLatin1String(row.label));
        label->setBuddy(row.field);
        label->setFixedWidth(label->sizeHint().width());
        row.field->setAccessibleName(QLatin1String(row.name));
        row.field->setToolTip(QLatin1String(row.whatsThis));
        row.field->setWhatsThis(QLatin1String(row.whatsThis));
        row.field->setCheck(
            [](double number) { return number >= 0.0 ? QString() : QStringLiteral("That is not below 0."); });
        line->addWidget(label);
        line->addWidget(row.field, 1);
        connect(row.field, &NumberField::editingFinished, this, &PeakTable::readChoice);
    }
}

void PeakTable::readChoice()
{
    for (const NumberField* const field : {m_prominence, m_distance})
        if (!field->isValid()) {
            emit x_told(field->reason());
            return;
        }
    PeakChoice wanted = m_wanted;
    wanted.leastProminence = m_prominence->number();
    wanted.leastDistance = m_distance->number();
    const bool isNew =
        wanted.leastProminence != m_wanted.leastProminence || wanted.leastDistance != m_wanted.leastDistance;
    if (!isNew || JobProgress::isRunning())
        return;
    if (m_spectrum.empty() || findAgain(wanted)) {
        m_wanted = wanted;
        return;
    }
    constexpr int kDigits = 12;
    m_prominence->setText(QString::number(m_wanted.leastProminence, 'g', kDigits));
    m_distance->setText(QString::number(m_wanted.leastDistance, 'g', kDigits));
}

// False where the peaks are still those of the choice before.
bool PeakTable::findAgain(const PeakChoice& wanted)
{
    try {
        const auto file = openTsFile(m_spectrum.string(), true);
        JobProgress progress(window(), QStringLiteral("Looking for the peaks"));
        auto found = findPeaks(*file, m_request, wanted, progress.callback());
        if (progress.wasCancelled()) {
            emit x_told(QStringLiteral("Cancelled; the peaks are those found before"));
            return false;
        }
        m_peaks = std::move(found);
    } catch (const TS::Failure&) {
        emit x_told(QStringLiteral("The scratch file could not be read"));
        return false;
    }
    showPeaks();
    return true;
}

void PeakTable::showSpectrum(const std::filesystem::path& spectrum, const SpectrumRequest& request,
                             double mean, const std::string& unit)
{
    clear();
    const auto file = openTsFile(spectrum.string(), true);
    const std::string valueUnit(unitIn(headerText(file->columnDescription(kSpectrumColumn)).toStdString()));
    const QString name = request.result == SpectrumResult::RealImaginary
                             ? QStringLiteral("Magnitude")
                             : headerText(file->columnName(kSpectrumColumn));
    m_request = request;
    m_mean = mean;
    m_unit = unit;
    setColumns(name + (valueUnit.empty() ? QString() : QStringLiteral(" [%1]").arg(fromUtf8(valueUnit))),
               !request.averaged, hasBands(request.result));
    m_choice->setVisible(!hasBands(request.result));
    if (hasBands(request.result)) {
        fillBands(*file);
        return;
    }
    JobProgress progress(window(), QStringLiteral("Looking for the peaks"));
    m_peaks = findPeaks(*file, request, m_wanted, progress.callback());
    if (BandPower::isDensity(request))
        m_sums.build(*file, request, progress.callback());
    m_spectrum = spectrum;
    showPeaks();
}

void PeakTable::clear()
{
    m_peaks.clear();
    m_harmonics.clear();
    m_sums.clear();
    m_spectrum.clear();
    m_power->hide();
    fill({}, QStringLiteral("Pea&ks"));
}

void PeakTable::showPeaks()
{
    m_harmonics.clear();
    fill(m_peaks, QStringLiteral("Pea&ks (mean %1)").arg(m_mean, 0, 'g', 5));
    emit x_peaks_shown();
}

void PeakTable::showHarmonics(double frequency)
{
    if (m_spectrum.empty()) {
        emit x_told(QStringLiteral("There are no peaks yet: execute the calculation first"));
        return;
    }
    try {
        const auto spectrum = openTsFile(m_spectrum.string(), true);
        const double base = lineAt(*spectrum, m_request, frequency).frequency;
        m_harmonics = findHarmonics(*spectrum, m_request, base, kHarmonics);
        fill(m_harmonics, title());
    } catch (const TS::Failure&) {
        emit x_told(QStringLiteral("The scratch file could not be read"));
    }
}

QString PeakTable::title() const
{
    if (m_harmonics.empty())
        return QString();
    QString title = QStringLiteral("Harmonics of %1 Hz").arg(m_harmonics.front().frequency, 0, 'g', 6);
    const double distortion = harmonicDistortion(m_harmonics, m_request);
    if (std::isfinite(distortion))
        title += QStringLiteral(" (THD %1 %)").arg(100.0 * distortion, 0, 'g', 3);
    return title;
}

std::optional<double> PeakTable::chosenFrequency() const
{
    if (m_peaks.empty())
        return std::nullopt;
    const auto row = static_cast<std::size_t>(std::max(0, m_table->currentRow()));
    return m_peaks[std::min(row, m_peaks.size() - 1)].frequency;
}

void PeakTable::showPowerBetween(const std::optional<double>& from, const std::optional<double>& to)
{
    if (!m_sums.isBuilt() || !from || !to) {
        m_power->hide();
        return;
    }
    try {
        const auto spectrum = openTsFile(m_spectrum.string(), true);
        const BandPower::Sum sum = m_sums.between(*spectrum, *from, *to);
        const auto with = [](double value, const std::string& unit) {
            return fromUtf8(generalNumber(value, kPeakDigits) + (unit.empty() ? "" : " " + unit));
        };
        m_power->setText(QStringLiteral("%1 to %2 Hz: power %3, RMS %4 (%5)")
                             .arg(fromUtf8(generalNumber(sum.from, kPeakDigits)),
                                  fromUtf8(generalNumber(sum.to, kPeakDigits)),
                                  with(sum.power, powerUnit(m_unit)), with(std::sqrt(sum.power), m_unit),
                                  fromUtf8(counted(sum.bins, "bin"))));
        m_power->show();
    } catch (const TS::Failure&) {
        emit x_told(QStringLiteral("The scratch file could not be read"));
    }
}

// -- Cells --

void PeakTable::setColumns(const QString& value, bool hasPhase, bool hasBands)
{
    m_table->setHorizontalHeaderLabels({hasBands ? QStringLiteral("Band [Hz]") : QStringLiteral("Freq [Hz]"),
                                        QStringLiteral("Period [s]"), value, QStringLiteral("Phase [°]")});
    m_table->horizontalHeaderItem(kValueCell)->setToolTip(value);
    m_table->setColumnHidden(kPeriodCell, hasBands);
    m_table->setColumnHidden(kPhaseCell, !hasPhase || hasBands);
}

QString PeakTable::valueText(double value) const
{
    return fromUtf8(m_request.decibel ? fixedNumber(value, kDecibelDecimals)
                                      : significantNumber(value, kPeakDigits));
}

void PeakTable::addCells(int row, double frequency, const QStringList& cells)
{
    for (int c = 0; c < cells.size(); ++c) {
        auto* const item = new QTableWidgetItem(cells[c]);
        item->setTextAlignment(Qt::AlignRight | Qt::AlignVCenter);
        if (c == 0)
            item->setData(Qt::UserRole, frequency);
        m_table->setItem(row, c, item);
    }
}

void PeakTable::fill(const std::vector<SpectrumPeak>& peaks, const QString& title)
{
    const QSignalBlocker quiet(m_table);
    m_title->setText(title);
    m_table->setRowCount(static_cast<int>(peaks.size()));
    for (int row = 0; row < m_table->rowCount(); ++row) {
        const SpectrumPeak& peak = peaks[static_cast<std::size_t>(row)];
        addCells(row, peak.frequency,
                 {QString::number(peak.frequency, 'g', kFrequencyDigits),
                  QString::number(1.0 / peak.frequency, 'g', kPeriodDigits), valueText(peak.value),
                  fromUtf8(fixedNumber(peak.phase, kPhaseDecimals))});
    }
    m_table->setCurrentCell(-1, -1);
}

void PeakTable::fillBands(TSFILE& bands)
{
    const QSignalBlocker quiet(m_table);
    double power = 0.0;
    m_table->setRowCount(static_cast<int>(bands.samples()));
    for (std::uint32_t b = 1; b <= bands.samples(); ++b) {
        const auto middle = static_cast<double>(bands.value(b, 1));
        const auto value = static_cast<double>(bands.value(b, kSpectrumColumn));
        if (!std::isnan(value))
            power += m_request.decibel ? std::pow(10.0, value / 10.0) : value * value;
        addCells(static_cast<int>(b) - 1, middle,
                 {QString::number(static_cast<double>(bands.value(b, kBandColumns)), 'g', kFrequencyDigits),
                  QString(), valueText(value)});
    }
    m_title->setText(QStringLiteral("Bands (together %1)")
                         .arg(valueText(m_request.decibel ? 10.0 * std::log10(power) : std::sqrt(power))));
    m_table->setCurrentCell(-1, -1);
}

}  // namespace veltrac
