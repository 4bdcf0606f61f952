#include "share/RangeFields.h"

#include <QFile>
#include <QGridLayout>
#include <QLabel>
#include <QLineEdit>
#include <QSignalBlocker>

#include <algorithm>

#include "core/FileTime.h"
#include "core/TSFILE.h"
#include "core/TsExceptions.h"
#include "core/TsNames.h"
#include "share/GroupedNumber.h"
#include "share/NumberField.h"

namespace veltrac {

RangeFields::RangeFields(QWidget* parent)
    : QWidget(parent), m_first(new QLineEdit(this)), m_last(new QLineEdit(this)), m_remark(new QLabel(this))
{
    auto* const grid = new QGridLayout(this);
    grid->setContentsMargins(0, 0, 0, 0);
    auto* const from = new QLabel(QStringLiteral("&From sample:"), this);
    auto* const to = new QLabel(QStringLiteral("to"), this);
    from->setBuddy(m_first);
    grid->addWidget(from, 0, 0);
    grid->addWidget(m_first, 0, 1);
    grid->addWidget(to, 0, 2);
    grid->addWidget(m_last, 0, 3);
    grid->addWidget(m_remark, 1, 1, 1, 3);
    m_remark->setWordWrap(true);
    m_remark->hide();
    setWhatsThis(
        QStringLiteral("The part of the file that is used: samples, times or shares, both ends included."));
    m_first->setAccessibleName(QStringLiteral("From sample"));
    m_last->setAccessibleName(QStringLiteral("To sample"));
    for (QLineEdit* const field : {m_first, m_last}) {
        field->setMinimumWidth(field->fontMetrics().horizontalAdvance(QStringLiteral("0000000")));
        field->setToolTip(QStringLiteral("A sample (250000), a time (12.5 s or 13:45:30) or a share (50%)."));
        connect(field, &QLineEdit::textChanged, this, &RangeFields::read);
    }
}

void RangeFields::setFile(const QString& file, std::uint32_t rows, bool anew)
{
    const bool whole = anew || rows != m_rows;
    m_file = file;
    m_rows = rows;
    if (whole)
        choose(1, rows);
    else
        read();
}

void RangeFields::choose(std::uint32_t first, std::uint32_t last)
{
    {
        const QSignalBlocker quietFirst(m_first);
        const QSignalBlocker quietLast(m_last);
        m_first->setText(QString::number(first));
        m_last->setText(QString::number(last));
    }
    read();
}

// The sample at a time or share.
std::uint32_t RangeFields::sampleAt(const QString& text)
{
    try {
        const auto file = openTsFile(QFile::encodeName(m_file).toStdString(), true);
        const MeantSample meant = meantSample(text.toStdString(), *file);
        m_reason = QString::fromStdString(meant.reason);
        m_note = QString::fromStdString(meant.note);
        if (meant.sample)
            return *meant.sample - FileTime(*file).firstSample() + 1;
    } catch (const TS::Failure&) {
        m_reason = QStringLiteral("The times of the file cannot be read.");
    }
    return 0;
}

// The sample that a field means, in the order of time; 0, and the reason, where it means none.
std::uint32_t RangeFields::sampleOf(QLineEdit& field)
{
    // Numbers count from the oldest sample, as the result's do.
    bool isNumber = false;
    const qulonglong number = field.text().simplified().remove(QLatin1Char(' ')).toULongLong(&isNumber);
    std::uint32_t sample = isNumber && number <= m_rows ? static_cast<std::uint32_t>(number) : 0;
    if (isNumber && sample == 0)
        m_reason = QStringLiteral("The samples run from 1 to %1.").arg(groupedNumber(m_rows));
    else if (!isNumber)
        sample = sampleAt(field.text());
    markField(field, sample != 0);
    return sample;
}

void RangeFields::read()
{
    m_reason.clear();
    m_note.clear();
    if (m_rows > 0) {
        m_from = sampleOf(*m_first);
        m_to = sampleOf(*m_last);
        if (m_reason.isEmpty() && m_from > m_to) {
            m_reason = QStringLiteral("The range ends before it begins.");
            markField(*m_last, false);
        }
    }
    const QString told = m_reason.isEmpty() ? m_note : m_reason;
    m_remark->setText(told);
    m_remark->setVisible(!told.isEmpty());
    emit x_changed();
}

}  // namespace veltrac
