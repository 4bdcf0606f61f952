#include "portal/ErrorBox.h"

#include <QCheckBox>
#include <QPushButton>

#include "share/Boxes.h"
#include "share/JobProgress.h"

namespace {

const QString kTitle = QStringLiteral("Veltrac error");

bool isRunTimeText(const QString& text)
{
    return text == QLatin1String("Attempt to divide on zero") ||
           text == QLatin1String("Missing argument in function");
}

}  // namespace

void ErrorBox::show(QWidget* parent, const QString& text)
{
    if (!isRunTimeText(text)) {
        showBox(QMessageBox::Warning, parent, kTitle, text);
        return;
    }
    if (isSilenced(text))
        return;

    QMessageBox box(QMessageBox::Warning, kTitle, text, QMessageBox::NoButton, parent);
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
