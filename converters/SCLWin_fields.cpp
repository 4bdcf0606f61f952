// SCLWin: what it is built of.

#include <QComboBox>
#include <QFontDatabase>
#include <QFormLayout>
#include <QHBoxLayout>
#include <QHeaderView>
#include <QLabel>
#include <QLineEdit>
#include <QPlainTextEdit>
#include <QPushButton>
#include <QSpinBox>
#include <QSplitter>
#include <QTableWidget>
#include <QVBoxLayout>

#include "converters/ImportFields.h"
#include "converters/ImportTexts.h"
#include "converters/SCLWin.h"
#include "converters/ValuePlot.h"
#include "share/HeaderText.h"
#include "share/NumberField.h"

using namespace veltrac;

namespace {

constexpr QSize kWindowSize(1000, 700);
constexpr int kMostSkipped = 1'000'000;

}  // namespace

SCLWin::SCLWin(const QString& file, QWidget* parent)
    : ImportWindow(QStringLiteral(":img_ReadASCII_3"), parent)
{
    setWindowTitle(QStringLiteral("Import of single column logs"));
    auto* const below = new QSplitter(Qt::Horizontal);
    below->addWidget(buildFields());
    below->addWidget(buildPreview());
    below->setStretchFactor(1, 1);
    auto* const all = new QSplitter(Qt::Vertical);
    all->addWidget(buildFiles());
    all->addWidget(below);
    all->setStretchFactor(1, 1);
    all->setSizes({190, 430});

    auto* const layout = new QVBoxLayout;
    layout->addWidget(all, 1);
    layout->addWidget(buildFindings());
    layout->addWidget(
        buildButtons("The format of text logs.", "Read the files and tell what is not understood."));
    auto* const central = new QWidget;
    central->setLayout(layout);
    setCentralWidget(central);
    resize(kWindowSize);

    showFiles();
    if (!file.isEmpty())
        add(file);
}

QWidget* SCLWin::buildFiles()
{
    m_files = new QTableWidget(0, 4);
    m_files->setHorizontalHeaderLabels({QStringLiteral("File"), QStringLiteral("Name"),
                                        QStringLiteral("Unit"), QStringLiteral("Description")});
    m_files->setSelectionBehavior(QAbstractItemView::SelectRows);
    m_files->setSelectionMode(QAbstractItemView::SingleSelection);
    m_files->setTabKeyNavigation(false);
    m_files->setAccessibleName(QStringLiteral("The files, each a column"));
    m_files->horizontalHeader()->setStretchLastSection(true);
    connect(m_files, &QTableWidget::itemChanged, this, &SCLWin::sl_changed);
    connect(m_files, &QTableWidget::itemSelectionChanged, this, &SCLWin::sl_show_file);

    struct Button
    {
        const char* text;
        void (SCLWin::*slot)();
        const char* help;
        QPushButton** kept;
    };
    QPushButton* addButton = nullptr;
    auto* const buttons = new QVBoxLayout;
    for (const Button& button :
         {Button{"&Add...", &SCLWin::sl_add, "Choose more files.", &addButton},
          Button{"&Remove", &SCLWin::sl_remove, "Leave the selected file out.", &m_remove},
          Button{"&Up", &SCLWin::sl_up, "Make the selected file an earlier column.", &m_up},
          Button{"&Down", &SCLWin::sl_down, "Make the selected file a later column.", &m_down}}) {
        *button.kept = importButton(button.text, button.help);
        connect(*button.kept, &QPushButton::clicked, this, button.slot);
        buttons->addWidget(*button.kept);
    }
    buttons->addStretch();
    auto* const box = new QWidget;
    auto* const layout = new QHBoxLayout(box);
    layout->setContentsMargins(0, 0, 0, 0);
    layout->addWidget(m_files, 1);
    layout->addLayout(buttons);
    return box;
}

QWidget* SCLWin::buildFields()
{
    m_start = new QLineEdit;
    m_start->setPlaceholderText(QStringLiteral("yyyy-mm-dd hh:mm:ss"));
    m_step = new NumberField(QStringLiteral("1"));
    m_frequency = new NumberField(QStringLiteral("1"));
    m_skip = new QSpinBox;
    m_skip->setRange(0, kMostSkipped);
    m_skip->setKeyboardTracking(false);
    m_fill = new QComboBox;
    for (const auto& [text, fill] :
         {std::pair("missing (NaN)", STLFill::NaN), std::pair("0", STLFill::Zero),
          std::pair("the value before", STLFill::Previous), std::pair("interpolated", STLFill::Interpolated)})
        m_fill->addItem(QString::fromLatin1(text), static_cast<int>(fill));
    m_description = new QLineEdit;
    m_description->setMaxLength(kFileDescriptionBytes);
    for (NumberField* const field : {m_step, m_frequency})
        field->setCheck(
            [](double number) { return number > 0 ? QString() : QStringLiteral("This must be above 0."); });

    auto* const box = new QWidget;
    auto* const form = new QFormLayout(box);
    form->setContentsMargins(0, 0, 0, 0);
    m_startReason =
        addCheckedRow(form, "&Start", m_start,
                      "When the series begins, in local time; the first sample lies one step later.");
    addCheckedRow(form, "Sample &time [s]", m_step, "Seconds from value to value.");
    addCheckedRow(form, "Sampling &frequency [Hz]", m_frequency, "Values a second.");
    addRow(form, "S&kip first lines", m_skip, "Lines at the beginning of each file that are not looked at.");
    addRow(form, "&Missing become", m_fill, "What stands in the ts-file for a missing value.");
    m_targetReason =
        addCheckedRow(form, "Result &name", m_target, "The ts-file that is made in the working directory.");
    addRow(form, "D&escription", m_description, "The description of the ts-file, at most 59 bytes.");

    connect(m_step, &QLineEdit::textChanged, this, &SCLWin::sl_step_changed);
    connect(m_frequency, &QLineEdit::textChanged, this, &SCLWin::sl_frequency_changed);
    connect(m_skip, qOverload<int>(&QSpinBox::valueChanged), this, &SCLWin::sl_skip_changed);
    connect(m_fill, qOverload<int>(&QComboBox::currentIndexChanged), this, &SCLWin::sl_changed);
    for (QLineEdit* const field : {m_start, m_target, m_description})
        connect(field, &QLineEdit::textChanged, this, &SCLWin::sl_changed);
    return box;
}

QWidget* SCLWin::buildPreview()
{
    m_lines = new QPlainTextEdit;
    m_lines->setReadOnly(true);
    m_lines->setTabChangesFocus(true);
    m_lines->setFont(QFontDatabase::systemFont(QFontDatabase::FixedFont));
    m_lines->setAccessibleName(QStringLiteral("The file's first lines"));
    m_plot = new ValuePlot;
    m_plotCaption = new QLabel;
    auto* const plot = new QWidget;
    auto* const below = new QVBoxLayout(plot);
    below->setContentsMargins(0, 0, 0, 0);
    below->addWidget(m_plot, 1);
    below->addWidget(m_plotCaption);
    auto* const preview = new QSplitter(Qt::Horizontal);
    preview->addWidget(m_lines);
    preview->addWidget(plot);
    preview->setStretchFactor(0, 2);
    preview->setStretchFactor(1, 3);
    return preview;
}
