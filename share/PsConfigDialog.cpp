#include "share/PsConfigDialog.h"

#include <QAction>
#include <QCheckBox>
#include <QComboBox>
#include <QFormLayout>
#include <QGridLayout>
#include <QGroupBox>
#include <QHBoxLayout>
#include <QLabel>
#include <QPushButton>
#include <QVBoxLayout>

#include "share/NumberField.h"

using namespace veltrac;

namespace {

constexpr const char* kFonts[] = {"Times-Roman", "Helvetica", "Courier"};
constexpr int kPortrait = 0;
constexpr int kLandscape = 1;

// In the order of the rows; `index` is the margin's place in the record.
struct MarginRow
{
    const char* label;
    int index;
};
constexpr MarginRow kMarginRows[] = {
    {"Left margin:", 1}, {"Right margin:", 0}, {"Top margin:", 2}, {"Bottom margin:", 3}};

// Inside the field, at its right end: the field stays the one widget beside its label.
void showUnit(QLineEdit& field, const QString& unit)
{
    auto* const label = new QLabel(unit, &field);
    label->setEnabled(false);
    label->setAttribute(Qt::WA_TransparentForMouseEvents);
    auto* const row = new QHBoxLayout(&field);
    row->setContentsMargins(0, 0, 6, 0);
    row->addStretch();
    row->addWidget(label);
    field.setTextMargins(0, 0, label->sizeHint().width() + 6, 0);
}

}  // namespace

PsConfigDialog::PsConfigDialog(PsParameters* parameters, QWidget* owner)
    : QMainWindow(owner), m_parameters(parameters)
{
    setAttribute(Qt::WA_DeleteOnClose);
    setWindowTitle(QStringLiteral("PostScript parameters"));
    auto* const centre = new QWidget(this);
    auto* const column = new QVBoxLayout(centre);
    // Side by side: one below another they would be higher than a small screen.
    auto* const groups = new QGridLayout;
    groups->addWidget(makeTextGroup(), 0, 0);
    groups->addWidget(makeGridGroup(), 1, 0);
    groups->addWidget(makePageGroup(), 0, 1, 2, 1);
    column->addLayout(groups);
    m_reason = new QLabel(centre);
    m_reason->setWordWrap(true);
    // Keeps its line, so that the dialog does not jump when a reason appears.
    m_reason->setMinimumHeight(m_reason->fontMetrics().lineSpacing());
    column->addWidget(m_reason);
    column->addStretch();
    column->addWidget(makeButtons());
    setCentralWidget(centre);
    for (const NumberField* const field : m_fields)
        connect(field, &NumberField::x_validated, this, [this] { fieldsAreValid(); });
}

NumberField* PsConfigDialog::addField(QFormLayout* form, const QString& label, const QString& text,
                                      double least, double most, bool isWhole)
{
    auto* const field = new NumberField(text, this);
    if (isWhole)
        field->setWhole(least, most);
    else
        field->setCheck([least, most](double number) {
            return number >= least && number <= most
                       ? QString()
                       : QStringLiteral("This must lie between %1 and %2.").arg(least).arg(most);
        });
    field->setAccessibleName(QString(label).remove(QLatin1Char(':')));
    form->addRow(label, field);
    m_fields.push_back(field);
    return field;
}

QWidget* PsConfigDialog::makeTextGroup()
{
    auto* const group = new QGroupBox(QStringLiteral("Text and lines"), this);
    group->setWhatsThis(QStringLiteral("The font of all texts, and how thick lines are on paper."));
    auto* const form = new QFormLayout(group);
    m_font = new QComboBox(group);
    for (const char* const font : kFonts)
        m_font->addItem(QString::fromLatin1(font));
    m_font->setCurrentIndex(m_font->findText(QString::fromUtf8(m_parameters->fontName)));
    form->addRow(QStringLiteral("Font:"), m_font);
    m_fontSize = addField(form, QStringLiteral("Font size:"),
                          QString::number(m_parameters->baseFontSize, 'f', 2), 1.0, 200.0, false);
    m_lineWidth = addField(form, QStringLiteral("Line width:"),
                           QString::number(m_parameters->lineWidthScale, 'f', 2), 0.0, 100.0, false);
    showUnit(*m_fontSize, QStringLiteral("pt"));
    m_lineWidth->setToolTip(QStringLiteral("All line widths are multiplied by this"));
    return group;
}

QWidget* PsConfigDialog::makePageGroup()
{
    auto* const group = new QGroupBox(QStringLiteral("Page"), this);
    group->setWhatsThis(
        QStringLiteral("Where the plot stands on the paper. An EPSF file is a picture to be placed "
                       "in a text and has no page of its own."));
    auto* const form = new QFormLayout(group);
    m_margins.resize(std::size(m_parameters->margins));
    for (const MarginRow& row : kMarginRows) {
        const int millimetres = m_parameters->margins[row.index];
        NumberField* const field =
            addField(form, QString::fromLatin1(row.label), QString::number(millimetres), 0.0, 400.0, true);
        showUnit(*field, QStringLiteral("mm"));
        field->setToolTip(QStringLiteral("The EPSF format has no margins"));
        m_margins[static_cast<std::size_t>(row.index)] = field;
    }
    m_eps = new QCheckBox(QStringLiteral("EPSF format"), group);
    m_eps->setToolTip(QStringLiteral("If checked, EPSF format, else ?"));
    m_eps->setChecked(m_parameters->eps);
    m_portrait = new QCheckBox(QStringLiteral("Use portrait mode"), group);
    m_portrait->setToolTip(QStringLiteral("If checked, portrait, else landscape"));
    m_portrait->setChecked(m_parameters->orientation != kLandscape);
    form->addRow(QString(), m_eps);
    form->addRow(QString(), m_portrait);
    m_paper = new QComboBox(group);
    for (const Paper& paper : kPapers)
        m_paper->addItem(QString::fromLatin1(paper.name));
    m_paper->setCurrentText(QString::fromLatin1(paperOf(*m_parameters).name));
    form->addRow(QStringLiteral("Papersize:"), m_paper);
    return group;
}

QWidget* PsConfigDialog::makeGridGroup()
{
    auto* const group = new QGroupBox(QStringLiteral("Relative grid line thickness:"), this);
    group->setWhatsThis(
        QStringLiteral("How thick the lines of each kind of grid are, beside those of the axes."));
    auto* const form = new QFormLayout(group);
    const auto add = [&](const char* label, double thickness) {
        return addField(form, QString::fromLatin1(label), QString::number(thickness, 'g', 6), 0.0, 100.0,
                        false);
    };
    m_gray = add("Gray", m_parameters->grayGridThickness);
    m_black = add("Black", m_parameters->blackGridThickness);
    m_dotted = add("Dotted", m_parameters->dottedGridThickness);
    return group;
}

QWidget* PsConfigDialog::makeButtons()
{
    auto* const row = new QWidget(this);
    auto* const layout = new QHBoxLayout(row);
    layout->setContentsMargins(0, 0, 0, 0);
    layout->addStretch();
    const auto add = [&](const QString& text) {
        auto* const button = new QPushButton(text, row);
        layout->addWidget(button);
        return button;
    };
    QPushButton* const ok = add(QStringLiteral("&Ok"));
    ok->setDefault(true);
    connect(ok, &QPushButton::clicked, this, &PsConfigDialog::sl_finished);
    connect(add(QStringLiteral("&Apply")), &QPushButton::clicked, this, &PsConfigDialog::sl_apply);
    connect(add(QStringLiteral("&Cancel")), &QPushButton::clicked, this, &QWidget::close);
    // A main window has no default button of its own: Return in a field means Ok, Escape Cancel.
    for (NumberField* const field : m_fields)
        connect(field, &QLineEdit::returnPressed, this, &PsConfigDialog::sl_finished);
    auto* const escape = new QAction(this);
    escape->setShortcut(Qt::Key_Escape);
    connect(escape, &QAction::triggered, this, &QWidget::close);
    addAction(escape);
    return row;
}

bool PsConfigDialog::fieldsAreValid()
{
    for (NumberField* const field : m_fields) {
        if (!field->isValid()) {
            m_reason->setText(QStringLiteral("%1: %2").arg(field->accessibleName(), field->reason()));
            return false;
        }
    }
    m_reason->clear();
    return true;
}

bool PsConfigDialog::marginsLeaveRoom() const
{
    const Paper& paper = kPapers[static_cast<std::size_t>(m_paper->currentIndex())];
    const double across = (m_margins[0]->number() + m_margins[1]->number()) * kPointsPerMm;
    const double along = (m_margins[2]->number() + m_margins[3]->number()) * kPointsPerMm;
    return across < paper.width && along < paper.height;
}

bool PsConfigDialog::apply()
{
    if (!fieldsAreValid()) {
        for (NumberField* const field : m_fields) {
            if (!field->isValid()) {
                field->setFocus();
                field->selectAll();
                break;
            }
        }
        return false;
    }
    if (!m_eps->isChecked() && !marginsLeaveRoom()) {
        m_reason->setText(QStringLiteral("These margins leave no room on the paper."));
        return false;
    }
    PsParameters& record = *m_parameters;
    // A font that the list lacks stays where none of the list is chosen.
    if (m_font->currentIndex() >= 0)
        PsParameters::setText(record.fontName, m_font->currentText().toUtf8().constData());
    record.baseFontSize = m_fontSize->number();
    record.lineWidthScale = m_lineWidth->number();
    for (std::size_t i = 0; i < m_margins.size(); ++i)
        record.margins[i] = static_cast<int>(m_margins[i]->number());
    record.eps = m_eps->isChecked();
    record.orientation = m_portrait->isChecked() ? kPortrait : kLandscape;
    record.paper = m_paper->currentIndex();
    record.grayGridThickness = m_gray->number();
    record.blackGridThickness = m_black->number();
    record.dottedGridThickness = m_dotted->number();
    return true;
}

void PsConfigDialog::sl_apply()
{
    if (apply())
        emit x_applied();
}

void PsConfigDialog::sl_finished()
{
    if (!apply())
        return;
    emit x_applied();
    close();
}
