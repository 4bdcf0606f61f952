#include "calc/SecondColumnFields.h"

#include <QCheckBox>
#include <QComboBox>
#include <QEvent>
#include <QFile>
#include <QFileInfo>
#include <QFormLayout>
#include <QLabel>

#include <algorithm>
#include <cmath>

#include "calc/SpectrumPlan.h"
#include "calc/SpectrumTexts.h"
#include "core/NumberTexts.h"
#include "core/TSFILE.h"
#include "core/TsExceptions.h"
#include "core/TsNames.h"
#include "share/NumberField.h"
#include "share/SourceChooser.h"

namespace veltrac {

SecondColumnFields::SecondColumnFields(QWidget* parent)
    : QWidget(parent),
      m_on(new QCheckBox(QStringLiteral("Seco&nd column"))),
      m_files(new FileCombo),
      m_columns(new ColumnCombo),
      m_result(new QComboBox),
      m_unwrapped(new QCheckBox(QStringLiteral("Phase &unwrapped"))),
      m_scale(new QComboBox),
      m_lag(new NumberField(QStringLiteral("1")))
{
    for (int r = 0; r < kTwoChannelResults; ++r)
        m_result->addItem(QLatin1String(twoChannelResultName(static_cast<TwoChannelResult>(r))));
    m_result->setCurrentIndex(static_cast<int>(TwoChannelResult::H1));
    for (int s = 0; s < kCorrelationScales; ++s)
        m_scale->addItem(QLatin1String(correlationScaleName(static_cast<CorrelationScale>(s))));
    auto* const form = new QFormLayout(this);
    form->setContentsMargins(0, 0, 0, 0);
    form->addRow(m_on);
    m_on->setWhatsThis(
        QStringLiteral("What the source column, the input, has to do with another, the output."));
    addRow(*form, "Second &file:", m_files,
           "The file of the output: the same one, or one of the same sample time.");
    addRow(*form, "Second column:", m_columns, "The column of the output.");
    addRow(*form, "Of &both:", m_result,
           "How strong they are together, how the output follows from the input (H1 where the output is "
           "noisy, H2 where the input is), or how much of it does.");
    form->addRow(m_unwrapped);
    m_unwrapped->setWhatsThis(
        QStringLiteral("The phase goes on beyond half a turn, so that a delay is a line."));
    addRow(*form, "&Scale:", m_scale,
           "Normalised: from -1 to 1. Biased: by all samples. Unbiased: by those that "
           "overlap at the lag.");
    addRow(*form, "Lags up &to [s]:", m_lag, "The greatest shift to both sides.");
    m_lag->setCheck([](double seconds) {
        return seconds > 0.0 ? QString() : QStringLiteral("A lag is more than 0 seconds.");
    });

    connect(m_on, &QCheckBox::toggled, this, [this] {
        showRows();
        look();
    });
    connect(m_files, qOverload<int>(&QComboBox::currentIndexChanged), this, [this] {
        m_columns->showFile(m_files->file(), false);
        look();
    });
    for (QComboBox* const box : {static_cast<QComboBox*>(m_columns), m_result, m_scale})
        connect(box, qOverload<int>(&QComboBox::currentIndexChanged), this, &SecondColumnFields::x_changed);
    connect(m_unwrapped, &QCheckBox::toggled, this, &SecondColumnFields::x_changed);
    connect(m_lag, &NumberField::x_validated, this, &SecondColumnFields::x_changed);
    showRows();
}

void SecondColumnFields::addRow(QFormLayout& form, const char* label, QWidget* field, const char* whatsThis)
{
    field->setAccessibleName(QString::fromLatin1(label).remove(QLatin1Char('&')).remove(QLatin1Char(':')));
    field->setWhatsThis(QLatin1String(whatsThis));
    form.addRow(QLatin1String(label), field);
}

void SecondColumnFields::showRows()
{
    const bool correlates = m_method == SpectrumMethod::Correlation;
    const auto* const form = qobject_cast<QFormLayout*>(layout());
    const std::pair<QWidget*, bool> rows[] = {{m_files, isOn()},
                                              {m_columns, isOn()},
                                              {m_result, hasTwoChannels()},
                                              {m_unwrapped, hasTwoChannels()},
                                              {m_scale, correlates},
                                              {m_lag, correlates}};
    for (const auto& [field, isShown] : rows) {
        field->setVisible(isShown);
        if (QWidget* const label = form->labelForField(field))
            label->setVisible(isShown);
    }
}

void SecondColumnFields::setMethod(SpectrumMethod method)
{
    if (method == m_method)
        return;
    m_method = method;
    showRows();
}

bool SecondColumnFields::isOn() const
{
    return m_on->isChecked();
}

QString SecondColumnFields::file() const
{
    return isOn() ? m_files->file() : m_source;
}

unsigned SecondColumnFields::column() const
{
    return isOn() ? m_columns->column() : 0;
}

void SecondColumnFields::setSource(const QString& file, const SpectrumRequest& range)
{
    if (file != m_source && !isOn()) {
        m_files->setFile(file);
        m_columns->showFile(file, false);
        // The next one is what the first is compared with most often.
        for (int i = 0; i < m_columns->count() && m_columns->column() == range.column; ++i)
            m_columns->setCurrentIndex(i);
    }
    m_source = file;
    m_range = range;
    look();
}

void SecondColumnFields::changeEvent(QEvent* event)
{
    QWidget::changeEvent(event);
    if (event->type() == QEvent::ActivationChange && isActiveWindow())
        m_files->refresh();
}

void SecondColumnFields::look()
{
    m_match = {m_range.from, m_range.to, m_range.from, {}, {}};
    if (isOn() && !m_files->file().isEmpty() && !m_source.isEmpty()) {
        try {
            const auto first = openTsFile(QFile::encodeName(m_source).toStdString(), true);
            const auto second = openTsFile(QFile::encodeName(m_files->file()).toStdString(), true);
            const bool isSame =
                QFileInfo(m_source).canonicalFilePath() == QFileInfo(m_files->file()).canonicalFilePath();
            m_match = matchChannels(*first, m_range.from, m_range.to, *second, isSame);
        } catch (const TS::Failure&) {
            m_match.refusal = "The second file could not be opened.";
        }
    }
    emit x_changed();
}

SpectrumRequest SecondColumnFields::matched(SpectrumRequest request) const
{
    request.from = m_match.from;
    request.to = m_match.to;
    return request;
}

TwoChannelRequest SecondColumnFields::twoChannels(const SpectrumRequest& request) const
{
    TwoChannelRequest both;
    both.input = matched(request);
    both.column = column();
    both.from = m_match.secondFrom;
    both.result = static_cast<TwoChannelResult>(m_result->currentIndex());
    both.unwrapped = m_unwrapped->isChecked();
    return both;
}

CorrelationRequest SecondColumnFields::correlation(const SpectrumRequest& request) const
{
    CorrelationRequest lags;
    lags.first = matched(request);
    lags.first.averaged = true;  // it takes no more memory than its lags need
    lags.secondColumn = column();
    lags.secondFrom = m_match.secondFrom;
    lags.scale = static_cast<CorrelationScale>(m_scale->currentIndex());
    const std::uint32_t most = std::min(lags.first.to - lags.first.from, kMostCorrelationLag);
    lags.mostLag = static_cast<std::uint32_t>(
        std::clamp(std::round(m_lag->number() / lags.first.dt), 1.0, static_cast<double>(most)));
    return lags;
}

QString SecondColumnFields::findReason(const SpectrumRequest& request, QWidget*& field) const
{
    field = m_files;
    if (isOn() && column() == 0)
        return QStringLiteral("Choose a second file and column.");
    if (isOn() && !m_match.refusal.empty())
        return QString::fromStdString(m_match.refusal);
    field = m_lag;
    if (m_method == SpectrumMethod::Correlation && !m_lag->isValid())
        return m_lag->reason();
    field = nullptr;
    return hasTwoChannels() ? QString::fromStdString(twoChannelComplaint(twoChannels(request))) : QString();
}

QString SecondColumnFields::planText(const SpectrumRequest& request) const
{
    QString text;
    if (hasTwoChannels()) {
        const SpectrumPlan plan = planSpectrum(twoChannels(request).input);
        text = QStringLiteral("%1 of %2 samples, resolution %3 Hz, up to %4 Hz")
                   .arg(QString::fromStdString(counted(plan.segments, "segment")),
                        QString::fromStdString(groupedDigits(plan.used)),
                        QString::fromStdString(generalNumber(plan.resolution, 4)),
                        QString::fromStdString(generalNumber(plan.highest, 6)));
    } else {
        const CorrelationRequest lags = correlation(request);
        text = QStringLiteral("%1 lags of %2 samples, up to %3 s, %4")
                   .arg(QString::fromStdString(groupedDigits(2 * std::uint64_t{lags.mostLag} + 1)),
                        QString::fromStdString(groupedDigits(lags.first.to - lags.first.from + 1)),
                        QString::fromStdString(generalNumber(lags.mostLag * lags.first.dt, 6)),
                        QString::fromStdString(memoryText(correlationBytes(lags.mostLag))));
    }
    return matchWords().isEmpty() || !isOn() ? text : text + QStringLiteral("; ") + matchWords();
}

}  // namespace veltrac
