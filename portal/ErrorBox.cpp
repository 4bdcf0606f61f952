#include "portal/ErrorBox.h"

#include <QApplication>
#include <QCheckBox>
#include <QPushButton>

#include "formula/FormulaEvaluation.h"
#include "share/Boxes.h"
#include "share/JobProgress.h"

namespace veltrac {

namespace {

const QString kBoxTitle = QStringLiteral("Veltrac error");

bool isRunTimeText(const QString& text)
{
    return text == QLatin1String(kDivisionByZero) || text == QLatin1String(kMissingArgument);
}

}  // namespace

// Between two boxes of one calculation no window is active: it is still the one of before that matters.
QWidget* ErrorBox::inFront(QWidget* otherwise)
{
    if (QWidget* const active = QApplication::activeWindow())
        m_front = active;
    return m_front && m_front->isVisible() ? m_front.data() : otherwise;
}

void ErrorBox::show(QWidget* otherwise, const QString& text)
{
    const bool isRunTime = isRunTimeText(text);
    if (isRunTime && isSilenced(text))
        return;
    QWidget* const parent = inFront(otherwise);
    if (!isRunTime) {
        showBox(QMessageBox::Warning, parent, kBoxTitle, text);
        return;
    }

    QMessageBox box(QMessageBox::Warning, kBoxTitle, text, QMessageBox::NoButton, parent);
    box.setTextFormat(Qt::PlainText);
    box.setEscapeButton(box.addButton(QStringLiteral("Ok"), QMessageBox::AcceptRole));
    // The box owns the check box.
    auto* const silence =
        new QCheckBox(QStringLiteral("Do not show this text again during this calculation"));
    box.setCheckBox(silence);
    box.exec();
    if (!silence->isChecked())
        return;
    if (m_silencedJob != JobProgress::serial())
        m_silenced.clear();
    m_silencedJob = JobProgress::serial();
    m_silenced << text;
}

bool ErrorBox::isSilenced(const QString& text) const
{
    return m_silencedJob == JobProgress::serial() && m_silenced.contains(text);
}

}  // namespace veltrac
