// STLWin: what it is built of.

#include <QComboBox>
#include <QFormLayout>
#include <QFrame>
#include <QHBoxLayout>
#include <QHeaderView>
#include <QLabel>
#include <QLineEdit>
#include <QPushButton>
#include <QScrollArea>
#include <QSpinBox>
#include <QSplitter>
#include <QTabWidget>
#include <QTableView>
#include <QTableWidget>
#include <QVBoxLayout>

#include <initializer_list>

#include "converters/ImportFields.h"
#include "converters/ImportTexts.h"
#include "converters/STLLines.h"
#include "converters/STLWin.h"
#include "share/HeaderText.h"
#include "share/NumberField.h"

using namespace veltrac;

namespace {

constexpr QSize kWindowSize(1180, 760);
constexpr int kMostLineNumber = 2'000'000'000;

struct Choice
{
    const char* text;
    int value;
};

QComboBox* choices(std::initializer_list<Choice> rows)
{
    auto* const box = new QComboBox;
    for (const Choice& row : rows)
        box->addItem(QString::fromUtf8(row.text), row.value);
    box->setSizeAdjustPolicy(QComboBox::AdjustToMinimumContentsLengthWithIcon);
    box->setMinimumContentsLength(16);
    return box;
}

QSpinBox* lineNumber(bool mayBeNone)
{
    auto* const box = new QSpinBox;
    box->setRange(mayBeNone ? 0 : 1, kMostLineNumber);
    if (mayBeNone)
        box->setSpecialValueText(QStringLiteral("none"));
    box->setKeyboardTracking(false);
    return box;
}

QLabel* wrappedLabel()
{
    auto* const label = new QLabel;
    label->setWordWrap(true);
    label->setTextFormat(Qt::PlainText);
    label->setTextInteractionFlags(Qt::TextSelectableByMouse);
    return label;
}

QWidget* scrolling(QLayout* layout)
{
    auto* const inner = new QWidget;
    inner->setLayout(layout);
    auto* const area = new QScrollArea;
    area->setWidget(inner);
    area->setWidgetResizable(true);
    area->setFrameShape(QFrame::NoFrame);
    return area;
}

}  // namespace

STLWin::STLWin(const QString& file, QWidget* parent)
    : ImportWindow(QStringLiteral(":img_ReadASCII_1"), parent)
{
    setWindowTitle(QStringLiteral("Import of a smart tool log"));
    m_lines = new STLLines(this);

    auto* const tabs = new QTabWidget;
    tabs->addTab(buildTextFields(), QStringLiteral("Te&xt"));
    tabs->addTab(buildTimeFields(), QStringLiteral("&Time"));
    tabs->addTab(buildResultFields(), QStringLiteral("&Result"));

    auto* const right = new QSplitter(Qt::Vertical);
    m_preview = new QTableView;
    m_preview->setModel(m_lines);
    m_preview->setItemDelegate(new STLLineDelegate(m_preview));
    m_preview->setShowGrid(false);
    m_preview->setWordWrap(false);
    m_preview->setTabKeyNavigation(false);
    m_preview->setAccessibleName(QStringLiteral("The file's first lines"));
    m_preview->horizontalHeader()->hide();
    m_preview->verticalHeader()->setDefaultSectionSize(m_preview->fontMetrics().height() + 4);
    m_columns = new QTableWidget(0, 5);
    m_columns->setHorizontalHeaderLabels({QStringLiteral("Take"), QStringLiteral("Name"),
                                          QStringLiteral("Description"), QStringLiteral("Unit"),
                                          QStringLiteral("First values")});
    m_columns->setAccessibleName(QStringLiteral("The columns"));
    m_columns->horizontalHeader()->setStretchLastSection(true);
    m_columns->setTabKeyNavigation(false);
    m_columns->setWordWrap(false);
    right->addWidget(m_preview);
    right->addWidget(m_columns);
    right->setStretchFactor(0, 3);
    right->setStretchFactor(1, 2);

    auto* const across = new QSplitter(Qt::Horizontal);
    across->addWidget(tabs);
    across->addWidget(right);
    across->setStretchFactor(1, 1);
    across->setSizes({390, 790});

    auto* const layout = new QVBoxLayout;
    layout->addWidget(across, 1);
    layout->addWidget(buildFindings());
    QPushButton* const other = importButton("&Open...", "Choose another file.");
    connect(other, &QPushButton::clicked, this, &STLWin::sl_open);
    layout->addWidget(buildButtons("The format of smart tool logs.",
                                   "Read the whole file and tell what is not understood.", other));
    auto* const central = new QWidget;
    central->setLayout(layout);
    setCentralWidget(central);
    resize(kWindowSize);

    connect(m_columns, &QTableWidget::itemChanged, this, &STLWin::sl_changed);
    enableFields();
    m_import->setFocus();
    if (!file.isEmpty())
        open(file);
}

STLWin::~STLWin() = default;

QWidget* STLWin::buildTextFields()
{
    m_fileLabel = wrappedLabel();
    m_encoding = choices({{"UTF-8", 0}, {"Windows-1252", 1}});
    m_separator =
        choices({{"Tab", '\t'}, {"Semicolon ;", ';'}, {"Bar |", '|'}, {"Comma ,", ','}, {"Blanks", ' '}});
    m_decimal = choices({{"Point", '.'}, {"Comma", ','}});
    m_grouping =
        choices({{"none", 0}, {"Point", '.'}, {"Comma", ','}, {"Blank", ' '}, {"Apostrophe '", '\''}});
    m_firstData = lineNumber(false);
    m_namesLine = lineNumber(true);
    m_unitsLine = lineNumber(true);
    m_remarks = new QLineEdit;
    m_missing = new QLineEdit;
    m_other = new QPushButton;
    m_other->hide();

    auto* const form = new QFormLayout;
    form->addRow(m_fileLabel);
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

    for (QComboBox* const box : {m_separator, m_decimal})
        connect(box, qOverload<int>(&QComboBox::currentIndexChanged), this, &STLWin::sl_reading_changed);
    for (QComboBox* const box : {m_encoding, m_grouping})
        connect(box, qOverload<int>(&QComboBox::currentIndexChanged), this, &STLWin::sl_names_changed);
    for (QSpinBox* const box : {m_firstData, m_namesLine, m_unitsLine})
        connect(box, qOverload<int>(&QSpinBox::valueChanged), this, &STLWin::sl_names_changed);
    for (QLineEdit* const field : {m_remarks, m_missing})
        connect(field, &QLineEdit::editingFinished, this, &STLWin::sl_changed);
    connect(m_other, &QPushButton::clicked, this, &STLWin::sl_other_reading);
    return scrolling(form);
}

QWidget* STLWin::buildTimeFields()
{
    m_source = choices({{"Start and step below", static_cast<int>(STLTimeSource::Typed)},
                        {"A column of dates or stamps", static_cast<int>(STLTimeSource::Stamp)},
                        {"A date and a time column", static_cast<int>(STLTimeSource::DateAndTime)},
                        {"Elapsed hours:minutes:seconds", static_cast<int>(STLTimeSource::ElapsedTime)},
                        {"Elapsed seconds", static_cast<int>(STLTimeSource::ElapsedSeconds)},
                        {"Unix seconds", static_cast<int>(STLTimeSource::UnixSeconds)},
                        {"Unix milliseconds", static_cast<int>(STLTimeSource::UnixMilliseconds)},
                        {"Unix microseconds", static_cast<int>(STLTimeSource::UnixMicroseconds)},
                        {"Unix nanoseconds", static_cast<int>(STLTimeSource::UnixNanoseconds)}});
    m_dateColumn = choices({});
    m_timeColumn = choices({});
    m_order = choices({{"day before month", static_cast<int>(DateOrder::DayMonth)},
                       {"month before day", static_cast<int>(DateOrder::MonthDay)}});
    m_zone = choices({{"local time", 0}, {"UTC", 1}});
    m_start = new QLineEdit;
    m_start->setPlaceholderText(QStringLiteral("yyyy-mm-dd hh:mm:ss"));
    m_step = new NumberField;
    m_step->setCheck(
        [](double number) { return number > 0 ? QString() : QStringLiteral("This must be above 0."); });
    m_becomes = choices({{"what the steps say", -1},
                         {"a constant sample time", static_cast<int>(STLTimeResult::Constant)},
                         {"a column \"Time\"", static_cast<int>(STLTimeResult::TimeColumn)},
                         {"\"Time\" with \"Time32\"", static_cast<int>(STLTimeResult::TimeTwoColumns)},
                         {"equal steps, values interpolated", static_cast<int>(STLTimeResult::Resampled)}});
    m_resampleStep = new QLineEdit;
    m_resampleStep->setPlaceholderText(QStringLiteral("the typical step"));
    m_timeFinding = wrappedLabel();

    auto* const form = new QFormLayout;
    addRow(form, "&From", m_source, "Where the time of a row comes from.");
    addRow(form, "&Date column", m_dateColumn, "The column of dates.");
    addRow(form, "Time colu&mn", m_timeColumn, "The column of stamps, times or seconds.");
    m_orderReason = warningLabel();
    addRow(form, "Ord&er", m_order, "How 3/4/2016 is meant.", m_orderReason);
    addRow(form, "&Zone", m_zone, "The zone of stamps that name none.");
    m_startReason = addCheckedRow(form, "&Start", m_start,
                                  "When the series begins; the first sample lies one step later.");
    addCheckedRow(form, "Ste&p [s]", m_step, "Seconds from row to row.");
    addRow(form, "&Becomes", m_becomes,
           "How the ts-file tells the time. \"Time32\" keeps the whole seconds apart, for long series with "
           "short steps. Equal steps: values are interpolated, gaps are missing.");
    m_resampleReason =
        addCheckedRow(form, "E&qual step [s]", m_resampleStep, "The step of the interpolated series.");
    form->addRow(m_timeFinding);

    for (QComboBox* const box : {m_source, m_dateColumn, m_timeColumn, m_order, m_zone, m_becomes})
        connect(box, qOverload<int>(&QComboBox::currentIndexChanged), this, &STLWin::sl_changed);
    for (QLineEdit* const field : {m_start, static_cast<QLineEdit*>(m_step), m_resampleStep})
        connect(field, &QLineEdit::textChanged, this, &STLWin::sl_changed);
    return scrolling(form);
}

QWidget* STLWin::buildResultFields()
{
    m_description = new QLineEdit;
    m_description->setMaxLength(kFileDescriptionBytes);
    m_fromRow = new NumberField(QStringLiteral("1"));
    m_toRow = new NumberField(QStringLiteral("0"));
    m_everyNth = new NumberField(QStringLiteral("1"));
    m_fill = choices({{"missing (NaN)", static_cast<int>(STLFill::NaN)},
                      {"0", static_cast<int>(STLFill::Zero)},
                      {"the value before", static_cast<int>(STLFill::Previous)},
                      {"interpolated", static_cast<int>(STLFill::Interpolated)}});
    m_size = new QLabel;
    m_head = wrappedLabel();
    for (NumberField* const field : {m_fromRow, m_everyNth})
        field->setWhole(1, 4294967295.0);
    m_toRow->setWhole(0, 4294967295.0);

    auto* const form = new QFormLayout;
    m_targetReason =
        addCheckedRow(form, "&File name", m_target, "The ts-file that is made in the working directory.");
    addRow(form, "&Description", m_description, "The description of the ts-file, at most 59 bytes.");
    addCheckedRow(form, "Ro&ws from", m_fromRow, "The first data row to take.");
    addCheckedRow(form, "to (0: the &last)", m_toRow, "The last data row to take; 0 takes all.");
    addCheckedRow(form, "&Every n-th row", m_everyNth, "1 takes every row, 10 every tenth.");
    addRow(form, "&Missing become", m_fill, "What stands in the ts-file for a missing value.");
    addRow(form, "Size", m_size, "What the ts-file takes on the disk.");
    form->addRow(m_head);

    for (QLineEdit* const field : {m_target, m_description, static_cast<QLineEdit*>(m_fromRow),
                                   static_cast<QLineEdit*>(m_toRow), static_cast<QLineEdit*>(m_everyNth)})
        connect(field, &QLineEdit::textChanged, this, &STLWin::sl_changed);
    connect(m_fill, qOverload<int>(&QComboBox::currentIndexChanged), this, &STLWin::sl_changed);
    return scrolling(form);
}
