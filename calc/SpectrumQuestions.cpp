#include "calc/SpectrumQuestions.h"

#include <QFileInfo>
#include <QMessageBox>
#include <QPushButton>
#include <QWidget>

#include "calc/SpectrumDoubts.h"
#include "core/TsExceptions.h"
#include "share/Boxes.h"
#include "share/JobProgress.h"

namespace veltrac {

namespace {

void warn(QWidget* window, const QString& text)
{
    showBox(QMessageBox::Warning, window, window->windowTitle(), text);
}

bool askToGoOn(QWidget* window, const QString& text, const QString& yes)
{
    QMessageBox box(QMessageBox::Question, window->windowTitle(), text, QMessageBox::NoButton, window);
    box.setTextFormat(Qt::PlainText);
    QPushButton* const go = box.addButton(yes, QMessageBox::AcceptRole);
    QPushButton* const cancel = box.addButton(QStringLiteral("Cancel"), QMessageBox::RejectRole);
    box.setDefaultButton(go);
    box.setEscapeButton(cancel);
    box.exec();
    return box.clickedButton() == go;
}

bool areChecksPassed(QWidget* window, TSFILE& file, const QString& name, SpectrumRequest& request)
{
    for (const SpectrumCheck& check : spectrumChecks()) {
        SpectrumDoubt doubt;
        {
            JobProgress progress(window, QString::fromLatin1(check.title));
            doubt = check.look(file, name.toStdString(), request, progress.callback());
        }
        const QString text = QString::fromStdString(doubt.text);
        if (doubt.kind == SpectrumDoubt::Kind::Impossible)
            warn(window, text);
        const bool goesOn = doubt.kind == SpectrumDoubt::Kind::None ||
                            (doubt.kind == SpectrumDoubt::Kind::Question &&
                             askToGoOn(window, text, QString::fromStdString(doubt.answer)));
        if (!goesOn)
            return false;
    }
    return true;
}

}  // namespace

bool askSpectrumDoubts(QWidget* window, TSFILE& file, const QString& name, SpectrumRequest& request)
{
    try {
        return areChecksPassed(window, file, name, request);
    } catch (const TS::Failure&) {
        warn(window, QStringLiteral("%1 could not be read to its end.").arg(QFileInfo(name).fileName()));
    }
    return false;
}

}  // namespace veltrac
