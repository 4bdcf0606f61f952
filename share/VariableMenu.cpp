#include "share/VariableMenu.h"

#include <QActionGroup>
#include <QColor>
#include <QDialog>
#include <QFormLayout>
#include <QLabel>
#include <QLineEdit>
#include <QMenu>
#include <QPushButton>

#include <algorithm>
#include <cmath>

#include "core/TsExceptions.h"
#include "portal/TsApplication.h"
#include "share/BasicDriver.h"
#include "share/Boxes.h"
#include "share/ColorConfigDialog.h"
#include "share/NumberField.h"
#include "share/PlotCanvas.h"
#include "share/PlotVariables.h"
#include "share/SubWindow.h"
#include "share/ValuePlots.h"

namespace veltrac {

namespace {

template <typename Value>
struct Choice
{
    const char* text;
    Value value;
};

constexpr Choice<int> kStyles[] = {{"&Solid", 0},           {"Long dashes", 1},    {"Dash dot", 2},
                                   {"Dash dot dot", 3},     {"Dots", 4},           {"Dash dash dots", 5},
                                   {"Very long dashes", 6}, {"Long and short", 7}, {"Dash and gap", 8},
                                   {"Short dashes", 9},     {"&Markers only", -1}};
constexpr Choice<double> kWidths[] = {
    {"&Thin", 0.25}, {"&Medium", 0.7}, {"T&hick", 1.05}, {"&Very thick", 1.75}};
constexpr Choice<SubProgram> kSubPrograms[] = {
    {"Ts-&FFT…", SubProgram::Spectrum},          {"Ts-F&ilt…", SubProgram::Filter},
    {"Ts-&Derivative…", SubProgram::Derivative}, {"Ts-I&ntegrate…", SubProgram::Integral},
    {"Ts-&Edit…", SubProgram::Formula},          {"&List…", SubProgram::List}};

template <typename Value, std::size_t n, typename Chosen>
void addChoices(QMenu& menu, const Choice<Value> (&choices)[n], Value present, Chosen chosen)
{
    auto* const group = new QActionGroup(&menu);
    for (const Choice<Value>& choice : choices) {
        QAction* const action = menu.addAction(QString::fromUtf8(choice.text));
        action->setCheckable(true);
        action->setChecked(choice.value == present);
        group->addAction(action);
        const Value value = choice.value;
        QObject::connect(action, &QAction::triggered, &menu, [=] { chosen(value); });
    }
}

// What the scaling dialog edits.
struct Scaling
{
    QString label;
    double gain, offset, shift;
};

bool askScaling(QWidget* parent, const QString& shiftUnit, Scaling& scaling)
{
    constexpr int kDigits = 12;
    QDialog dialog(parent);
    dialog.setWindowTitle(QObject::tr("Variable"));
    auto* const form = new QFormLayout(&dialog);
    auto* const label = new QLineEdit(scaling.label, &dialog);
    auto* const reason = new QLabel(&dialog);
    const auto field = [&](double value) {
        return new NumberField(QString::number(value, 'g', kDigits), &dialog);
    };
    NumberField* const gain = field(scaling.gain);
    NumberField* const offset = field(scaling.offset);
    NumberField* const shift = field(scaling.shift);
    gain->setCheck(
        [](double v) { return v == 0.0 ? QObject::tr("A gain of 0 leaves nothing to see.") : QString(); });
    form->addRow(new QLabel(QObject::tr("Shown is gain × value + offset."), &dialog));
    form->addRow(QObject::tr("&Label:"), label);
    form->addRow(QObject::tr("&Gain:"), gain);
    form->addRow(QObject::tr("O&ffset:"), offset);
    form->addRow(QObject::tr("&Time shift [%1]:").arg(shiftUnit), shift);
    form->addRow(reason);
    QPushButton* const ok = addFormButtons(dialog, *form, QObject::tr("&Ok"));
    const auto check = [=] {
        QString why;
        for (const NumberField* const f : {shift, offset, gain})
            if (!f->isValid())
                why = f->reason();
        reason->setText(why);
        ok->setEnabled(why.isEmpty());
    };
    for (NumberField* const f : {gain, offset, shift})
        QObject::connect(f, &NumberField::x_validated, &dialog, check);
    if (dialog.exec() != QDialog::Accepted)
        return false;
    scaling = {label->text(), gain->number(), offset->number(), shift->number()};
    return true;
}

}  // namespace

VariableMenu::VariableMenu(PlotCanvas* canvas, SubWindow* window)
    : QObject(window), m_canvas(canvas), m_window(window)
{
}

void VariableMenu::changed()
{
    m_canvas->replot();
    emit m_canvas->x_plot_changed();
    emit x_changed();
}

void VariableMenu::popUp(const std::shared_ptr<HsVariable>& variable, const QPoint& globalPosition)
{
    QMenu menu(m_window);
    menu.addAction(tr("&Color…"), this, &VariableMenu::editColors);
    addLooks(menu, variable);
    menu.addAction(tr("&Gain, offset, time shift…"), this, [=, this] { editScaling(variable); });
    addAxes(menu, variable);
    menu.addAction(tr("&Hide"), this, [=, this] {
        m_canvas->plot().setVisible(*variable, false);
        changed();
    });
    menu.addSeparator();
    menu.addAction(tr("Hi&stogram…"), this, [=, this] { openHistogram(*m_window, *m_canvas, variable); });
    addXyMenu(*menu.addMenu(tr("X-&Y plot")), *m_window, *m_canvas, variable);
    addSubPrograms(menu, variable);
    menu.exec(globalPosition);
}

void VariableMenu::addLooks(QMenu& menu, const std::shared_ptr<HsVariable>& variable)
{
    constexpr double kMarkerlessWidth = 0.25;
    Variable& v = variable->variable();
    addChoices(*menu.addMenu(tr("Line &style")), kStyles, v.lineStyle, [=, this](int style) {
        variable->variable().lineStyle = style;
        if (style < 0 && variable->variable().marker == 0)
            variable->variable().marker = 1;
        changed();
    });
    const double width = v.widthMm > 0.0 ? v.widthMm : kMarkerlessWidth;
    addChoices(*menu.addMenu(tr("Line &width")), kWidths, width, [=, this](double mm) {
        variable->variable().widthMm = mm;
        changed();
    });
    QMenu* const markers = menu.addMenu(tr("&Marker"));
    auto* const group = new QActionGroup(markers);
    for (int marker = 0; marker <= kMarkerCount; ++marker) {
        QAction* const action =
            markers->addAction(marker == 0 ? tr("&None") : tr("Marker %1").arg(marker), this, [=, this] {
                variable->variable().marker = marker;
                changed();
            });
        action->setCheckable(true);
        action->setChecked(v.marker == marker);
        group->addAction(action);
    }
}

void VariableMenu::addAxes(QMenu& menu, const std::shared_ptr<HsVariable>& variable)
{
    QMenu* const axes = menu.addMenu(tr("Move to &axis"));
    const auto& groups = m_canvas->plot().groups();
    for (std::size_t g = 0; g < groups.size(); ++g) {
        const auto& members = groups[g].variables();
        const bool isHere = std::find(members.begin(), members.end(), variable) != members.end();
        QAction* const action = axes->addAction(
            QStringLiteral("%1  %2").arg(g + 1).arg(QString::fromStdString(groups[g].axisTitle())), this,
            [=, this] { moveToGroup(variable, static_cast<int>(g)); });
        action->setEnabled(!isHere);
    }
    axes->addAction(tr("&New axis"), this, [=, this] { moveToGroup(variable, -1); });
}

void VariableMenu::addSubPrograms(QMenu& menu, const std::shared_ptr<HsVariable>& variable)
{
    const auto file = plotFileOf(variable->variable());
    const QString path = file ? QString::fromLocal8Bit(file->path().c_str()) : QString();
    for (const Choice<SubProgram>& choice : kSubPrograms) {
        const SubProgram kind = choice.value;
        QAction* const action = menu.addAction(QString::fromUtf8(choice.text), this, [=, this] {
            QWidget* const window =
                TsApplication::instance()->openSubProgram(kind, path, variable->variable().column());
            if (window == nullptr)
                emit x_told(tr("This window cannot be opened."));
            else if (auto* const taker = dynamic_cast<SubWindow*>(window))
                offerRange(*taker, variable->variable());
        });
        action->setEnabled(file && TsApplication::instance() != nullptr);
    }
}

void VariableMenu::offerRange(SubWindow& window, const Variable& variable)
{
    const Plot2D& plot = m_canvas->plot();
    try {
        const SampleRange range = plot.samplesIn(plot.interval(), variable);
        // A single sample is no range to compute anything of.
        if (range.count() > 1)
            window.offerRange(range);
    } catch (const TS::Failure&) {
        // The window reads the file itself and tells what it finds.
    }
}

void VariableMenu::moveToGroup(const std::shared_ptr<HsVariable>& variable, int group)
{
    Plot2D& plot = m_canvas->plot();
    plot.moveToGroup(variable, group < 0 ? plot.groups().size() : static_cast<std::size_t>(group));
    m_canvas->refresh(false);
    changed();
}

void VariableMenu::editScaling(const std::shared_ptr<HsVariable>& variable)
{
    Variable& v = variable->variable();
    Scaling scaling{QString::fromStdString(v.label), v.gain, v.offset, v.timeShift};
    if (!askScaling(m_window, QString::fromStdString(xUnit(m_canvas->plot())), scaling))
        return;
    v.label = scaling.label.toUtf8().toStdString();
    v.gain = scaling.gain;
    v.offset = scaling.offset;
    v.timeShift = scaling.shift;
    m_canvas->refresh(false);
    changed();
}

// -- Colours --

void VariableMenu::editColors()
{
    if (m_dialog) {
        m_dialog->raise();
        m_dialog->activateWindow();
        return;
    }
    m_dialogColors.clear();
    m_dialogVariables.clear();
    std::vector<QColor> defaults;
    QStringList names;
    const std::vector<QColor> all = PlotCanvas::defaultColors();
    for (const auto& v : m_canvas->plot().variables()) {
        if (!v->variable().visible)
            continue;
        const auto index =
            static_cast<std::size_t>(std::max(0, v->variable().colorIndex - kFirstVariableColor));
        m_dialogColors.push_back(m_canvas->colors()[index % m_canvas->colors().size()]);
        defaults.push_back(all[index % all.size()]);
        m_dialogVariables.push_back(v);
        names.append(QString::fromStdString(v->variable().label));
    }
    if (m_dialogColors.empty())
        return;
    m_dialog = new ColorConfigDialog(&m_dialogColors, defaults, m_window, names);
    connect(m_dialog, &ColorConfigDialog::x_colors_changed, this, &VariableMenu::takeColors);
    m_dialog->show();
}

void VariableMenu::takeColors()
{
    std::vector<QColor>& colors = m_canvas->colors();
    for (std::size_t i = 0; i < m_dialogVariables.size(); ++i) {
        const auto v = m_dialogVariables[i].lock();
        if (!v)
            continue;
        const auto index =
            static_cast<std::size_t>(std::max(0, v->variable().colorIndex - kFirstVariableColor));
        // Variables beyond the table share its colours until one of them gets its own.
        while (colors.size() <= index)
            colors.push_back(colors[colors.size() - PlotCanvas::defaultColors().size()]);
        colors[index] = m_dialogColors[i];
    }
    changed();
}

}  // namespace veltrac
