// Does one job in a window on the files of the working directory, as a user would: boxes are answered with
// their first button, and what warnings and the status bar tell is the job's answer.

#include <QAbstractButton>
#include <QApplication>
#include <QComboBox>
#include <QFileDialog>
#include <QLabel>
#include <QLineEdit>
#include <QMainWindow>
#include <QMessageBox>
#include <QStatusBar>
#include <QTest>
#include <QTimer>

#include <algorithm>
#include <clocale>
#include <memory>

#include "calc/DFTWin.h"
#include "calc/DerivativeWin.h"
#include "calc/IntegrateWin.h"
#include "filter/FilterWin.h"
#include "formula/EditTsWin1.h"
#include "portal/CreateTsWin_Veltrac.h"
#include "portal/EditHeaderWin.h"
#include "portal/SampleView.h"
#include "portal/TsTableView.h"
#include "share/NumberField.h"
#include "share/PlotCanvas.h"
#include "share/PlotExport.h"
#include "share/QtPlotWin1.h"
#include "tests/Desk.h"
#include "tests/faults/Driver.h"

using namespace veltrac;

namespace {

// Says yes to every question, types `name` into every file dialog, and remembers what boxes have told.
class Person
{
public:
    explicit Person(QString name) : m_name(std::move(name))
    {
        m_timer.setInterval(1);
        QObject::connect(&m_timer, &QTimer::timeout, [this] { look(); });
        m_timer.start();
    }
    const QString& told() const { return m_told; }

private:
    void look()
    {
        QWidget* const box = QApplication::activeModalWidget();
        if (box == nullptr)
            return;
        const auto buttons = box->findChildren<QAbstractButton*>();
        const auto press = [&](std::initializer_list<const char*> texts) {
            for (const char* const text : texts)
                for (QAbstractButton* const button : buttons)
                    if (button->text() == QString::fromUtf8(text) && button->isEnabled())
                        return button->click(), true;
            return false;
        };
        if (auto* const files = qobject_cast<QFileDialog*>(box))
            files->findChild<QLineEdit*>()->setText(QDir().absoluteFilePath(m_name));
        if (press({"&Yes", "Yes", "&Save", "&Save as…", "&Overwrite"}))
            return;
        if (const auto* const message = qobject_cast<QMessageBox*>(box))
            m_told += message->text() + '\n';
        if (!press({"&No", "No", "&Ok", "Ok", "OK", "&OK", "&Discard"}))
            box->close();
    }

    QString m_name;
    QString m_told;
    QTimer m_timer;
};

// What the window tells at last where it is not `done`.
std::string answerOf(const Person& person, const QMainWindow& window, const char* done)
{
    const QString status = window.statusBar()->currentMessage();
    const bool isDone = status.contains(QLatin1String(done)) && !status.contains(QLatin1String("Nothing"));
    if (person.told().isEmpty() && isDone)
        return {};
    return (person.told() + status).toStdString();
}

NumberField& numberField(QWidget& window, int index)
{
    return *window.findChildren<NumberField*>().at(index);
}

std::string createFile(const char* name)
{
    const Person person({});
    CreateTsWin window;
    window.show();
    const auto fields =
        window.findChild<Basic_Tab*>()->findChildren<QLineEdit*>(QString(), Qt::FindDirectChildrenOnly);
    fields.at(0)->setText(QLatin1String(name));
    fields.at(1)->setText(QStringLiteral("700"));
    window.setAttribute(Qt::WA_DeleteOnClose, false);
    window.sl_accept();
    if (!window.isVisible())
        return {};
    QString said = person.told();
    for (const QLabel* const label : window.findChildren<QLabel*>())
        said += label->text() + '\n';
    return said.toStdString();
}

// Enters a count of samples; 0: changes fields.
std::string editHeader(int samples)
{
    const Person person({});
    EditHeaderWin window(QStringLiteral("a.ts"));
    window.setAttribute(Qt::WA_DeleteOnClose, false);
    window.show();
    if (samples == 0) {
        numberField(window, 0).setText(QStringLiteral("0,25"));
        for (QAbstractButton* const button : window.findChildren<QAbstractButton*>())
            if (button->text() == QLatin1String("&OK"))
                button->click();
    } else {
        numberField(window, 2).setText(QString::number(samples));
        QTest::keyClick(&numberField(window, 2), Qt::Key_Return);
    }
    return (person.told()).toStdString();
}

std::string editInList()
{
    const Person person({});
    TsTableView window("a.ts", nullptr, 1);
    window.setAttribute(Qt::WA_DeleteOnClose, false);
    window.show();
    window.activateWindow();
    if (window.findChild<SampleView*>() == nullptr)
        return "there is no file to edit";
    auto& view = *window.findChild<SampleView*>();
    view.setFocus();
    QApplication::setActiveWindow(&window);
    view.goTo(700, 1);
    QTest::keyClicks(QApplication::focusWidget(), QStringLiteral("8"));
    QTest::keyClick(QApplication::focusWidget(), Qt::Key_Return);
    const auto parts = window.findChildren<QObject*>();
    const auto saving = std::find_if(parts.begin(), parts.end(), [](const QObject* part) {
        return part->metaObject()->indexOfSlot("sl_save()") >= 0;
    });
    QMetaObject::invokeMethod(*saving, "sl_save");
    return person.told().toStdString();
}

std::string calculateInWindow()
{
    const Person person({});
    EditTsWin window(QStringLiteral("a.ts"), 2);
    for (QLineEdit* const field : window.findChildren<QLineEdit*>())
        if (field->accessibleName() == QLatin1String("Formula"))
            field->setText(QStringLiteral("x1*1.5+2"));
    window.sl_calculate();
    return answerOf(person, window, "20 000 samples");
}

// Computes and saves, in a window of the calculating ones.
template <typename Window>
std::string computeAndSave(const char* name, const char* computes)
{
    const Person person(QString::fromLatin1(name));
    Window window(QStringLiteral("a.ts"), 2);
    window.show();
    window.sl_execute();
    const std::string computed = answerOf(person, window, computes);
    if (!computed.empty())
        return computed;
    window.sl_saveResults();
    return answerOf(person, window, "saved");
}

std::string filterAndSave(int method)
{
    const Person person(QStringLiteral("x.ts"));
    FilterWin window(QStringLiteral("a.ts"), 2);
    window.show();
    window.sl_cbFilterActivated(5);
    window.sl_execute();
    const std::string computed = answerOf(person, window, "finished");
    if (!computed.empty())
        return computed;
    QTimer::singleShot(0, [method] {
        QWidget* const dialog = QApplication::activeModalWidget();
        if (dialog == nullptr || method == 0)
            return;
        auto* const box = dialog->findChild<QComboBox*>();
        box->setCurrentIndex(method);
        emit box->activated(method);
    });
    window.sl_saveResults();
    return answerOf(person, window, "saved");
}

std::string savePictureAs(const QString& name)
{
    QtPlotWin window(QStringLiteral("a.ts"));
    window.show();
    PlotCanvas& canvas = *window.canvas();
    canvas.grab();
    if (!name.endsWith(QLatin1String("png")))
        return writePlotEps(name, canvas.psParameters(), canvas.plot(), canvas.colors(), false).toStdString();
    const Person person(name);
    QString saved;
    QObject::connect(&canvas, &PlotCanvas::x_told, [&saved](const QString& text) { saved = text; });
    canvas.sl_savePicture();
    return saved.startsWith(QLatin1String("Saved"))
               ? std::string()
               : (person.told() + QLatin1String("not saved")).toStdString();
}

const FaultJobs kJobsInWindows = {
    {"create", [] { return createFile("made"); }},
    {"create-over", [] { return createFile("x"); }},
    {"header-fields", [] { return editHeader(0); }},
    {"header-grow", [] { return editHeader(20'500); }},
    {"header-shrink", [] { return editHeader(1000); }},
    {"list-save", editInList},
    {"ts-edit", calculateInWindow},
    {"derivative-win", [] { return computeAndSave<DerivativeWin>("work.ts", "finished"); }},
    {"integral-win", [] { return computeAndSave<IntegrateWin>("work.ts", "finished"); }},
    {"spectrum-win", [] { return computeAndSave<DFTWin>("x.ts", "20 000 of 20 000 samples"); }},
    {"filter-win-new", [] { return filterAndSave(0); }},
    {"filter-win-added", [] { return filterAndSave(1); }},
    {"picture-eps", [] { return savePictureAs(QStringLiteral("x.eps")); }},
    {"picture-svg", [] { return savePictureAs(QStringLiteral("x.svg")); }},
    {"picture-png", [] { return savePictureAs(QStringLiteral("x.png")); }},
};

}  // namespace

int main(int count, char** words)
{
    if (faultsArmed != nullptr)
        faultsArmed(0);
    QApplication application(count, words);
    std::setlocale(LC_NUMERIC, "C");
    Desk desk;
    const int status = runFaultJob(kJobsInWindows, count > 1 ? words[1] : "");
    for (const QString& error : desk.errors)
        std::fprintf(stderr, "%s\n", qPrintable(error));
    return status;
}
