#include "calc/SpectrumFields.h"

#include <QCheckBox>
#include <QComboBox>
#include <QFormLayout>
#include <QLabel>
#include <QSignalBlocker>

#include <algorithm>
#include <cmath>

#include "calc/Spectrum.h"
#include "calc/SpectrumTexts.h"
#include "calc/WindowShape.h"
#include "share/NumberField.h"

namespace veltrac {

namespace {

constexpr std::uint32_t kLeastSegment = 256;
constexpr std::uint32_t kMostSegment = 1048576;
constexpr int kOverlaps[] = {50, 0, 67, 75};  // percent
const char* const kTrends[] = {"Mean", "Straight line", "Nothing"};
enum Method { WholeRange, AveragedSegments };
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
      m_from(new NumberField(QStringLiteral("1"))),
      m_to(new NumberField(QStringLiteral("1"))),
      m_decibel(new QCheckBox(QStringLiteral("&dB"))),
      m_plan(new QLabel)
{
    createChoices();
    auto* const form = new QFormLayout(this);
    form->setContentsMargins(0, 0, 0, 0);
    addRows(*form);
    m_plan->setWordWrap(true);
    m_plan->setTextFormat(Qt::PlainText);
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
    m_method = boxOf({QStringLiteral("Whole range"), QStringLiteral("Averaged segments")});
    m_segment = boxOf(segments);
    m_segment->setEditable(true);
    m_segment->setInsertPolicy(QComboBox::NoInsert);
    m_segment->setCurrentText(QStringLiteral("4096"));
    m_overlap = boxOf(overlaps);
    m_length = boxOf({QStringLiteral("Shorten"), QStringLiteral("Pad with zeros")});
    m_result = boxOf(results);
}

void SpectrumFields::addRows(QFormLayout& form)
{
    const std::pair<const char*, QWidget*> rows[] = {
        {"&From sample:", m_from}, {"&To sample:", m_to},  {"&Remove:", m_trend},
        {"&Window:", m_window},    {"&Method:", m_method}, {"Se&gment length:", m_segment},
        {"&Overlap:", m_overlap},  {"&Length:", m_length}, {"R&esult:", m_result},
        {"", m_decibel},
    };
    for (const auto& [label, field] : rows) {
        form.addRow(QLatin1String(label), field);
        QString name = QString::fromLatin1(label).remove(QLatin1Char('&')).remove(QLatin1Char(':'));
        field->setAccessibleName(name.isEmpty() ? QStringLiteral("dB") : name);
    }
}

void SpectrumFields::connectFields()
{
    for (QComboBox* const box : {m_trend, m_window, m_method, m_overlap, m_length, m_result})
        connect(box, qOverload<int>(&QComboBox::currentIndexChanged), this, &SpectrumFields::check);
    connect(m_segment, &QComboBox::currentTextChanged, this, &SpectrumFields::check);
    connect(m_decibel, &QCheckBox::toggled, this, &SpectrumFields::check);
    for (NumberField* const field : {m_from, m_to})
        connect(field, &NumberField::x_validated, this, &SpectrumFields::check);
}

void SpectrumFields::setSource(unsigned column, std::uint32_t samples, double dt, bool anew)
{
    const bool whole = anew || samples != m_samples;
    m_refusal.clear();
    m_column = column;
    m_samples = samples;
    m_dt = dt;
    if (whole) {
        const QSignalBlocker quietFrom(m_from);
        const QSignalBlocker quietTo(m_to);
        m_from->setText(QStringLiteral("1"));
        m_to->setText(QString::number(samples));
        // The new bounds look at the new texts.
        for (NumberField* const field : {m_from, m_to})
            field->setWhole(1, std::max(samples, 1U));
    }
    check();
}

void SpectrumFields::refuseSource(const QString& why)
{
    m_refusal = why;
    m_samples = 0;
    check();
}

void SpectrumFields::useSegments()
{
    m_method->setCurrentIndex(AveragedSegments);
}

SpectrumRequest SpectrumFields::request() const
{
    SpectrumRequest request;
    request.column = m_column;
    request.from = static_cast<std::uint32_t>(m_from->number());
    request.to = static_cast<std::uint32_t>(m_to->number());
    request.trend = static_cast<SpectrumTrend>(m_trend->currentIndex());
    request.window = static_cast<SpectrumWindow>(m_window->currentIndex());
    request.averaged = m_method->currentIndex() == AveragedSegments;
    request.segment = m_segment->currentText().trimmed().toUInt();
    request.overlapPercent = kOverlaps[m_overlap->currentIndex()];
    request.pad = m_length->currentIndex() == Pad;
    request.result = static_cast<SpectrumResult>(m_result->currentIndex());
    request.decibel = m_decibel->isChecked() && request.result != SpectrumResult::RealImaginary;
    request.dt = m_dt;
    return request;
}

QString SpectrumFields::findReason(QWidget*& field) const
{
    field = nullptr;
    if (!m_refusal.isEmpty())
        return m_refusal;
    if (!(m_dt > 0.0) || !std::isfinite(m_dt))
        return QStringLiteral("The sample time of the file is not above 0. Set it in the header editor.");
    if (m_samples < 2)
        return QStringLiteral("The file has fewer than 2 samples.");
    for (NumberField* const number : {m_from, m_to})
        if (!number->isValid()) {
            field = number;
            return number->reason();
        }
    field = m_to;
    if (m_to->number() - m_from->number() < 1)
        return QStringLiteral("The range holds fewer than 2 samples.");
    const SpectrumRequest wanted = request();
    field = m_segment;
    if (wanted.averaged && (wanted.segment < kLeastSegment || wanted.segment > kMostSegment))
        return QStringLiteral("A segment has 256 to 1 048 576 samples.");
    if (planSpectrum(wanted).segments == 0)
        return QStringLiteral("The range is shorter than one segment.");
    field = m_result;
    if (wanted.averaged && wanted.result == SpectrumResult::RealImaginary)
        return QStringLiteral(
            "Real and imaginary parts are those of the whole range; segments have none in common.");
    field = nullptr;
    return QString();
}

void SpectrumFields::check()
{
    const bool averaged = m_method->currentIndex() == AveragedSegments;
    m_segment->setEnabled(averaged);
    m_overlap->setEnabled(averaged);
    m_decibel->setEnabled(m_result->currentIndex() != static_cast<int>(SpectrumResult::RealImaginary));
    QWidget* wrong = nullptr;
    m_reason = findReason(wrong);
    for (NumberField* const field : {m_from, m_to})
        markField(*field, field->isValid());
    for (QComboBox* const box : {m_segment, m_result})
        markField(*box, true);
    if (wrong != nullptr)
        markField(*wrong, false);
    m_plan->setText(m_reason.isEmpty() ? planText(request()) : m_reason);
    emit x_changed();
}

}  // namespace veltrac
