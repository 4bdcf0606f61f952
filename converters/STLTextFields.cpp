#include "converters/STLTextFields.h"

#include <QComboBox>
#include <QFormLayout>
#include <QLabel>
#include <QLineEdit>
#include <QPushButton>
#include <QScopedValueRollback>
#include <QSpinBox>

#include "converters/ImportTexts.h"

namespace veltrac {

namespace {

constexpr int kMostLineNumber = 2'000'000'000;

QSpinBox* lineNumberBox(bool mayBeNone)
{
    auto* const box = new QSpinBox;
    box->setRange(mayBeNone ? 0 : 1, kMostLineNumber);
    if (mayBeNone)
        box->setSpecialValueText(QStringLiteral("none"));
    box->setKeyboardTracking(false);
    return box;
}

QString joinedWords(const std::vector<std::string>& words)
{
    QStringList list;
    for (const std::string& word : words)
        list << QString::fromStdString(word);
    return list.join(QLatin1Char(' '));
}

std::vector<std::string> wordsOf(const QString& text)
{
    std::vector<std::string> words;
    for (const QString& word : text.split(QLatin1Char(' '), Qt::SkipEmptyParts))
        words.push_back(word.toStdString());
    return words;
}

}  // namespace

STLTextFields::STLTextFields(QWidget* parent)
    : ScrolledForm(parent),
      m_file(wrappedLabel()),
      m_encoding(choiceBox({{"UTF-8", static_cast<int>(STLEncoding::Utf8)},
                            {"Windows-1252", static_cast<int>(STLEncoding::Windows1252)}})),
      m_separator(choiceBox(
          {{"Tab", '\t'}, {"Semicolon ;", ';'}, {"Bar |", '|'}, {"Comma ,", ','}, {"Blanks", ' '}})),
      m_decimal(choiceBox({{"Point", '.'}, {"Comma", ','}})),
      m_grouping(
          choiceBox({{"none", 0}, {"Point", '.'}, {"Comma", ','}, {"Blank", ' '}, {"Apostrophe '", '\''}})),
      m_firstData(lineNumberBox(false)),
      m_namesLine(lineNumberBox(true)),
      m_unitsLine(lineNumberBox(true)),
      m_remarks(new QLineEdit),
      m_missing(new QLineEdit),
      m_other(new QPushButton)
{
    m_other->hide();
    auto* const form = new QFormLayout;
    form->addRow(m_file);
    addRow(form, "&Encoding", m_encoding, "How letters beyond ASCII are written.");
    addRow(form, "&Separator", m_separator, "What stands between the cells of a line.");
    addRow(form, "&Decimal sign", m_decimal, "The decimal sign of the numbers.", m_other);
    addRow(form, "Di&git grouping", m_grouping, "What stands between thousands, as in 1.234,5.");
    addRow(form, "First data &line", m_firstData, "The line in which the data begin.");
    addRow(form, "&Names line", m_namesLine, "The line with the names of the columns.");
    addRow(form, "&Units line", m_unitsLine, "The line with the units of the columns.");
    addRow(form, "Remar&k signs", m_remarks,
           "Lines that begin with one of these are passed over; blanks between the signs. "
           "A \";\" counts only where it is not the separator.");
    addRow(form, "&Missing markers", m_missing,
           "Cells with one of these are missing values, small letters or capitals; blanks between them. "
           "Empty cells are missing anyway.");
    setForm(form);

    const auto linesChanged = [this] {
        if (!m_filling)
            emit x_lines_changed();
    };
    for (QComboBox* const box : {m_separator, m_decimal})
        connect(box, qOverload<int>(&QComboBox::currentIndexChanged), this, &STLTextFields::announceReading);
    for (QComboBox* const box : {m_encoding, m_grouping})
        connect(box, qOverload<int>(&QComboBox::currentIndexChanged), this, linesChanged);
    for (QSpinBox* const box : {m_firstData, m_namesLine, m_unitsLine})
        connect(box, qOverload<int>(&QSpinBox::valueChanged), this, linesChanged);
    for (QLineEdit* const field : {m_remarks, m_missing})
        connect(field, &QLineEdit::editingFinished, this, &STLTextFields::x_signs_changed);
    connect(m_other, &QPushButton::clicked, this, &STLTextFields::x_other_reading);
}

void STLTextFields::showFile(const QString& text)
{
    m_file->setText(text);
}

void STLTextFields::show(const STLFormat& format)
{
    const QScopedValueRollback<bool> filling(m_filling, true);
    chooseValue(m_encoding, static_cast<int>(format.encoding));
    chooseValue(m_separator, format.cells.separator);
    chooseValue(m_decimal, format.cells.decimal);
    chooseValue(m_grouping, format.cells.grouping);
    m_firstData->setValue(static_cast<int>(format.firstDataLine));
    m_namesLine->setValue(static_cast<int>(format.namesLine));
    m_unitsLine->setValue(static_cast<int>(format.unitsLine));
    m_remarks->setText(joinedWords(format.remarks));
    m_missing->setText(joinedWords(format.cells.missing));
    m_other->setVisible(format.otherDecimal != 0);
    m_other->setText(format.otherDecimal == ',' && format.otherSeparator != ' '
                         ? QStringLiteral("Or one column with decimal comma?")
                         : QStringLiteral("Or another separator?"));
    m_other->setToolTip(QStringLiteral("First row so: %1\nand then: %2")
                            .arg(QString::fromStdString(format.evidence.firstRow),
                                 QString::fromStdString(format.otherEvidence.firstRow)));
}

void STLTextFields::readLines(STLFormat& format) const
{
    format.encoding = static_cast<STLEncoding>(chosenValue(m_encoding));
    format.cells.grouping = static_cast<char>(chosenValue(m_grouping));
    format.firstDataLine = static_cast<std::uint64_t>(m_firstData->value());
    format.namesLine = static_cast<std::uint64_t>(m_namesLine->value());
    format.unitsLine = static_cast<std::uint64_t>(m_unitsLine->value());
}

void STLTextFields::readSigns(STLFormat& format) const
{
    format.remarks = wordsOf(m_remarks->text());
    format.cells.missing = wordsOf(m_missing->text());
}

void STLTextFields::announceReading()
{
    if (m_filling)
        return;
    const auto separator = static_cast<char>(chosenValue(m_separator));
    const auto decimal = static_cast<char>(chosenValue(m_decimal));
    emit x_reading_changed(separator, separator == decimal ? '.' : decimal);
}

}  // namespace veltrac
