#include "calc/SpectrumFields.h"

#include <QCheckBox>
#include <QComboBox>
#include <QFormLayout>
#include <QHBoxLayout>
#include <QLabel>
#include <QLineEdit>

#include <algorithm>
#include <cmath>

#include "calc/SecondColumnFields.h"
#include "calc/Spectrogram.h"
#include "calc/SpectrumPlan.h"
#include "calc/SpectrumTexts.h"
#include "calc/WindowShape.h"
#include "share/NumberField.h"

namespace veltrac {

namespace {

constexpr std::uint32_t kLeastSegment = 256;
constexpr std::uint32_t kMostSegment = 1048576;
constexpr int kOverlaps[] = {50, 0, 67, 75};  // percent
const char* const kTrends[] = {"Mean", "Straight line", "Nothing"};
enum Length { Shorten, Pad };

QComboBox* boxOf(const QStringList& entries)
{
    auto* const box = new QComboBox;
    box->addItems(entries);
    return box;
}

}  // namespace

SpectrumFields::SpectrumFields(QWidget* parent)
    : QWidget(parent),
      m_decibel(new QCheckBox(QStringLiteral("&dB"))),
      m_second(new SecondColumnFields),
      m_plan(new QLabel)
{
    createChoices();
    auto* const form = new QFormLayout(this);
    form->setContentsMargins(0, 0, 0, 0);
    addRows(*form);
    form->addRow(m_second);
    m_plan->setWordWrap(true);
    m_plan->setTextFormat(Qt::PlainText);
    constexpr int kLines = 3;  // whatever it says, the fields stay where they are
    m_plan->setMinimumHeight(kLines * m_plan->fontMetrics().lineSpacing());
    m_plan->setAccessibleName(QStringLiteral("What will be computed"));
    form->addRow(m_plan);
    connectFields();
}

void SpectrumFields::createChoices()
{
    QStringList trends;
    for (const char* const trend : kTrends)
        trends << QLatin1String(trend);
    QStringList windows;
    for (int w = 0; w < kSpectrumWindows; ++w)
        windows << QLatin1String(spectrumWindowName(static_cast<SpectrumWindow>(w)));
    QStringList overlaps;
    for (const int percent : kOverlaps)
        overlaps << QStringLiteral("%1 %").arg(percent);
    QStringList results;
    for (int r = 0; r < kSpectrumResults; ++r)
        results << QLatin1String(spectrumResultName(static_cast<SpectrumResult>(r)));
    QStringList segments;
    for (std::uint32_t n = kLeastSegment; n <= kMostSegment; n *= 2)
        segments << QString::number(n);
    m_trend = boxOf(trends);
    m_window = boxOf(windows);
    m_method = boxOf({QStringLiteral("Whole range"), QStringLiteral("Averaged segments"),
                      QStringLiteral("Correlation"), QStringLiteral("Spectrogram")});
    m_segment = boxOf(segments);
    m_segment->setEditable(true);
    m_segment->setInsertPolicy(QComboBox::NoInsert);
    m_segment->lineEdit()->setAccessibleName(QStringLiteral("Segment length"));
    m_segment->setCurrentText(QStringLiteral("4096"));
    m_overlap = boxOf(overlaps);
    m_length = boxOf({QStringLiteral("Shorten"), QStringLiteral("Pad with zeros")});
    m_result = boxOf(results);
}

void SpectrumFields::addRows(QFormLayout& form)
{
    struct Row
    {
        const char* label;
        QWidget* field;
        const char* besideLabel;  // of a second field in the row; may be empty
        QWidget* beside;
        const char* whatsThis;
    };
    const Row rows[] = {
        {"&Remove:", m_trend, "", nullptr,
         "What is taken away before the transform, so that it does not cover the low frequencies."},
        {"&Window:", m_window, "", nullptr,
         "The weights of the samples. Hann serves most work; Flat top reads the amplitude of a tone, "
         "Blackman-Harris shows weak tones beside strong ones."},
        {"&Method:", m_method, "", nullptr,
         "The whole range at once shows every line as finely as the range allows; averaged segments show "
         "noise smoothly and need little memory; a spectrogram shows them one after another over time; a "
         "correlation tells how alike the column is to itself, or to a second one, after a while."},
        {"Se&gment length:", m_segment, "&Overlap:", m_overlap,
         "How many samples a segment has, and how much of it the next one shares."},
        {"&Length:", m_length, "", nullptr,
         "What is done where the transform has no length of that many samples: leave out a few at the end, "
         "or add zeros."},
        {"R&esult:", m_result, "", m_decibel, "What is shown of each frequency; in decibels, if wanted."},
    };
    const auto named = [](QWidget& field, const char* label) {
        field.setAccessibleName(QString::fromLatin1(label).remove(QLatin1Char('&')).remove(QLatin1Char(':')));
    };
    for (const Row& row : rows) {
        named(*row.field, row.label);
        row.field->setWhatsThis(QLatin1String(row.whatsThis));
        if (row.beside == nullptr) {
            form.addRow(QLatin1String(row.label), row.field);
            continue;
        }
        named(*row.beside, *row.besideLabel == '\0' ? "dB" : row.besideLabel);
        row.beside->setWhatsThis(QLatin1String(row.whatsThis));
        auto* const both = new QHBoxLayout;
        both->addWidget(row.field, 1);
        if (*row.besideLabel != '\0') {
            auto* const label = new QLabel(QLatin1String(row.besideLabel));
            both->addWidget(label);
            label->setBuddy(row.beside);
            label->setFixedWidth(label->sizeHint().width());
        }
        both->addWidget(row.beside);
        auto* const label = new QLabel(QLatin1String(row.label));
        label->setBuddy(row.field);
        form.addRow(label, both);
    }
}

void SpectrumFields::connectFields()
{
    for (QComboBox* const box : {m_trend, m_window, m_method, m_overlap, m_length, m_result})
        connect(box, qOverload<int>(&QComboBox::currentIndexChanged), this, &SpectrumFields::check);
    connect(m_segment, &QComboBox::currentTextChanged, this, &SpectrumFields::check);
    connect(m_decibel, &QCheckBox::toggled, this, &SpectrumFields::check);
    connect(m_second, &SecondColumnFields::x_changed, this, &SpectrumFields::check);
}

void SpectrumFields::setSource(const QString& file, unsigned column, std::uint32_t from, std::uint32_t to,
                               double dt)
{
    m_refusal.clear();
    m_source.column = column;
    m_source.from = from;
    m_source.to = to;
    m_source.dt = dt;
    m_second->setSource(file, m_source);  // which has this checked
}

void SpectrumFields::refuseSource(const QString& why)
{
    m_refusal = why;
    check();
}

void SpectrumFields::useSegments()
{
    m_method->setCurrentIndex(static_cast<int>(SpectrumMethod::AveragedSegments));
}

SpectrumMethod SpectrumFields::method() const
{
    return static_cast<SpectrumMethod>(m_method->currentIndex());
}

SpectrumRequest SpectrumFields::request() const
{
    SpectrumRequest request = m_source;
    request.trend = static_cast<SpectrumTrend>(m_trend->currentIndex());
    request.window = static_cast<SpectrumWindow>(m_window->currentIndex());
    request.averaged =
        method() == SpectrumMethod::AveragedSegments || method() == SpectrumMethod::Spectrogram;
    request.segment = m_segment->currentText().trimmed().toUInt();
    request.overlapPercent = kOverlaps[m_overlap->currentIndex()];
    request.pad = m_length->currentIndex() == Pad;
    request.result = static_cast<SpectrumResult>(m_result->currentIndex());
    request.decibel = m_decibel->isChecked() && m_decibel->isEnabled();
    return request;
}

QString SpectrumFields::findReason(QWidget*& field) const
{
    field = nullptr;
    if (!m_refusal.isEmpty())
        return m_refusal;
    if (!(m_source.dt > 0.0) || !std::isfinite(m_source.dt))
        return QStringLiteral("The sample time of the file is not above 0. Set it in the header editor.");
    if (m_source.to < m_source.from + 1)
        return QStringLiteral("The range holds fewer than 2 samples.");
    const SpectrumRequest wanted = request();
    field = m_segment;
    if (wanted.averaged && (wanted.segment < kLeastSegment || wanted.segment > kMostSegment))
        return QStringLiteral("A segment has 256 to 1 048 576 samples.");
    if (planSpectrum(wanted).segments == 0)
        return QStringLiteral("The range is shorter than one segment.");
    field = nullptr;
    if (method() == SpectrumMethod::Spectrogram)
        return m_second->isOn() ? QStringLiteral("A spectrogram is one of a single column.")
                                : QString::fromStdString(spectrogramComplaint(wanted));
    if (m_second->isOn() || method() == SpectrumMethod::Correlation)
        return m_second->findReason(wanted, field);
    field = m_result;
    if (wanted.averaged && wanted.result == SpectrumResult::RealImaginary)
        return QStringLiteral(
            "Real and imaginary parts are those of the whole range; segments have none in common.");
    field = nullptr;
    return QString();
}

QString SpectrumFields::planText() const
{
    return m_second->isOn() || method() == SpectrumMethod::Correlation
               ? m_second->planText(request())
               : QString::fromStdString(veltrac::planText(request()));
}

void SpectrumFields::enableFields()
{
    const bool averaged = request().averaged;
    const bool correlates = method() == SpectrumMethod::Correlation;
    m_segment->setEnabled(averaged);
    m_overlap->setEnabled(averaged);
    for (QComboBox* const box : {m_window, m_length})
        box->setEnabled(!correlates);
    m_result->setEnabled(!correlates && !m_second->isOn());
    m_decibel->setEnabled(
        !correlates &&
        (m_second->isOn() || m_result->currentIndex() != static_cast<int>(SpectrumResult::RealImaginary)));
    m_second->setMethod(method());
}

void SpectrumFields::check()
{
    enableFields();
    QWidget* wrong = nullptr;
    m_reason = findReason(wrong);
    for (QComboBox* const box : {m_segment, m_result})
        markField(*box, true);
    if (wrong != nullptr)
        markField(*wrong, false);
    m_plan->setText(m_reason.isEmpty() ? planText() : m_reason);
    emit x_changed();
}

}  // namespace veltrac
