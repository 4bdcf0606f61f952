#include "filter/FilterFields.h"

#include <QCheckBox>
#include <QComboBox>
#include <QGridLayout>
#include <QLabel>

#include <algorithm>
#include <array>

#include "share/NumberField.h"

namespace veltrac {

namespace {

constexpr double kMostPoints = 2147483647.0;
constexpr double kFreq0 = 10.0;
constexpr double kFreq1 = 40.0;

struct FieldRow
{
    FilterField use;
    const char* label;
    const char* text;
    const char* tip;
};

constexpr std::array<FieldRow, 4> kFields = {{
    {FilterField::Freq0, "Freq&0 [Hz]:", "10", "Lowpass/Highpass corner frequency."},
    {FilterField::Order, "Filter &order:", "4",
     "For Low/Highpass=no of poles, Bandpass/stop= 0.5 x no of poles."},
    {FilterField::Freq1, "Freq&1 [Hz]:", "40", "Bandpass/Bandstop upper corner frequency."},
    {FilterField::Ripple, "&Ripple [dB]:", "-0.1", "Ripple in dB (negative)."},
}};

// What a screen reader says of a label: no mnemonic, no colon.
QString spoken(QString label)
{
    return label.remove(QLatin1Char('&')).remove(QLatin1Char(':'));
}

}  // namespace

FilterFields::FilterFields(QWidget* parent)
    : QWidget(parent),
      m_rate(new QLabel(this)),
      m_types(new QComboBox(this)),
      m_zeroPhase(new QCheckBox(QStringLiteral("&Zero phase"), this)),
      m_settled(new QCheckBox(QStringLiteral("Start s&ettled"), this))
{
    // A grid gives the rows of hidden reasons no room, as a form would.
    auto* const grid = new QGridLayout(this);
    grid->setContentsMargins(0, 0, 0, 0);
    const auto addRow = [&](const QString& text, QWidget* widget) {
        auto* const label = new QLabel(text, this);
        label->setBuddy(widget);
        const int row = grid->rowCount();
        grid->addWidget(label, row, 0);
        grid->addWidget(widget, row, 1);
        return label;
    };
    for (const FilterType& type : filterTypes()) {
        m_types->addItem(QLatin1String(type.entry));
        m_types->setItemData(m_types->count() - 1, QLatin1String(type.toolTip), Qt::ToolTipRole);
    }
    m_types->setMaxVisibleItems(m_types->count());
    m_types->setAccessibleName(QStringLiteral("Filter type"));
    m_rate->setWhatsThis(QStringLiteral("How many samples a second the source has."));
    addRow(QStringLiteral("Sampling freq [Hz]:"), m_rate);
    addRow(QStringLiteral("Filter &type:"), m_types);
    for (const FieldRow& row : kFields) {
        auto* const field = new NumberField(QLatin1String(row.text), this);
        QLabel* const label = addRow(QLatin1String(row.label), field);
        auto* const reason = new QLabel(this);
        grid->addWidget(reason, grid->rowCount(), 0, 1, 2);
        field->setToolTip(QLatin1String(row.tip));
        field->setWhatsThis(QLatin1String(row.tip));
        field->setAccessibleName(spoken(label->text()));
        field->setReasonLabel(reason);
        reason->setWordWrap(true);
        m_rows.append({row.use, label, field, reason, QLatin1String(row.text)});
        connect(field, &NumberField::x_validated, this, &FilterFields::showReasons);
    }
    field(FilterField::Order)->setWhole(-kMostPoints, kMostPoints);
    addPasses(*grid);
    showReasons();
}

void FilterFields::addPasses(QGridLayout& grid)
{
    m_zeroPhase->setToolTip(QStringLiteral("Forward and back: no delay, and the gain squared."));
    m_settled->setToolTip(QStringLiteral("Begin in the steady state of the first value, without ringing."));
    const int row = grid.rowCount();
    grid.addWidget(m_zeroPhase, row, 0);
    grid.addWidget(m_settled, row, 1);
    for (QCheckBox* const box : {m_zeroPhase, m_settled}) {
        box->setWhatsThis(box->toolTip());
        connect(box, &QCheckBox::toggled, this, [this] {
            enablePasses();
            emit x_passChanged();
        });
    }
    enablePasses();
}

void FilterFields::enablePasses()
{
    m_zeroPhase->setEnabled(!m_showsPoints);
    // The way there and the way back begin settled in any case.
    m_settled->setEnabled(!m_showsPoints && !m_zeroPhase->isChecked());
}

NumberField* FilterFields::field(FilterField use) const
{
    return std::find_if(m_rows.begin(), m_rows.end(), [&](const Row& row) { return row.use == use; })->field;
}

void FilterFields::showType(int type)
{
    const FilterType& chosen = filterTypes()[static_cast<std::size_t>(type)];
    const bool points = type == 0;
    m_types->setCurrentIndex(type);
    m_types->setToolTip(QLatin1String(chosen.toolTip));
    for (const Row& row : m_rows) {
        row.field->setEnabled(chosen.uses(row.use));
        row.label->setEnabled(chosen.uses(row.use));
        if (row.use != FilterField::Order)
            continue;
        row.label->setText(points ? QStringLiteral("No of poi&nts:") : QStringLiteral("Filter &order:"));
        row.field->setAccessibleName(spoken(row.label->text()));
        if (points != m_showsPoints) {
            const QString text = row.field->text();
            row.field->setText(m_otherText);
            m_otherText = text;
        }
    }
    m_showsPoints = points;
    enablePasses();
    showReasons();
}

namespace {

// One significant digit.
QString roundedText(double frequency)
{
    return QString::number(QString::number(frequency, 'g', 1).toDouble(), 'g', 6);
}

}  // namespace

void FilterFields::showRate(double samplingHz)
{
    // 10 and 40 Hz are a good start for most instruments, and nonsense for a value a day.
    constexpr double kUsualRate = 360.0;
    constexpr double kSlowest = 90.0;
    constexpr double kFastest = 10000.0;
    const double scale =
        samplingHz > 0.0 && (samplingHz < kSlowest || samplingHz > kFastest) ? samplingHz / kUsualRate : 1.0;
    for (Row& row : m_rows) {
        if ((row.use != FilterField::Freq0 && row.use != FilterField::Freq1) ||
            row.field->text() != row.suggested)
            continue;
        row.suggested = roundedText(scale * (row.use == FilterField::Freq0 ? kFreq0 : kFreq1));
        row.field->setText(row.suggested);
    }
    m_rate->setText(samplingHz > 0 ? QString::number(samplingHz, 'g', 7) : QStringLiteral("none"));
}

void FilterFields::showReasons()
{
    for (const Row& row : m_rows)
        row.reason->setVisible(row.field->isEnabled() && !row.field->isValid());
}

bool FilterFields::isValid() const
{
    return std::all_of(m_rows.begin(), m_rows.end(),
                       [](const Row& row) { return !row.field->isEnabled() || row.field->isValid(); });
}

FilterRequest FilterFields::request() const
{
    FilterRequest asked;
    asked.type = m_types->currentIndex();
    asked.freq0 = field(FilterField::Freq0)->number();
    asked.freq1 = field(FilterField::Freq1)->number();
    asked.rippleDb = field(FilterField::Ripple)->number();
    asked.order =
        static_cast<int>(std::clamp(field(FilterField::Order)->number(), -kMostPoints, kMostPoints));
    if (!asked.isMovingAverage())
        asked.pass = m_zeroPhase->isChecked() ? FilterPass::ZeroPhase
                     : m_settled->isChecked() ? FilterPass::Settled
                                              : FilterPass::FromZero;
    return asked;
}

}  // namespace veltrac
