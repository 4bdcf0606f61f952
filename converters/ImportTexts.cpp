#include "converters/ImportTexts.h"

#include <QFile>
#include <QFileInfo>
#include <QLabel>
#include <QPalette>

#include "core/FailureText.h"
#include "share/Boxes.h"
#include "share/TargetFile.h"

namespace veltrac {

namespace {

constexpr int kDark = 128;  // of 255

}  // namespace

std::filesystem::path pathOf(const QString& file)
{
    return QFile::encodeName(file).toStdString();
}

QString shown(const std::string& file)
{
    return QFile::decodeName(file.c_str());
}

bool askOverwrite(QWidget* parent, const QString& file)
{
    return askYesNo(QMessageBox::Question, parent, QStringLiteral("Overwrite File? "),
                    QStringLiteral("A file called %1 already exists.Do you want to overwrite it?").arg(file));
}

bool clearTarget(QWidget* parent, const QString& file)
{
    if (!QFileInfo::exists(file) && !QFileInfo(file).isSymLink())
        return true;
    return mayWrite(parent, QStringLiteral("Veltrac"), file) && askOverwrite(parent, file);
}

const QString kCancelled = QStringLiteral("The import was cancelled; nothing was made.");
const QString kMarkedField = QStringLiteral("A field is not right: it is marked, and says why.");

QLabel* wrappedLabel()
{
    auto* const label = new QLabel;
    label->setWordWrap(true);
    label->setTextFormat(Qt::PlainText);
    label->setTextInteractionFlags(Qt::TextSelectableByMouse);
    return label;
}

QLabel* warningLabel()
{
    QLabel* const label = wrappedLabel();
    // Red that can be read on light and on dark windows.
    QPalette colours;
    const bool dark = colours.color(QPalette::Window).lightness() < kDark;
    colours.setColor(QPalette::WindowText, dark ? QColor(0xFF, 0x9A, 0x8C) : QColor(0xB0, 0x2A, 0x1E));
    label->setPalette(colours);
    label->hide();
    return label;
}

void showText(QLabel* label, const QString& text)
{
    label->setText(text);
    label->setVisible(!text.isEmpty());
}

QString importFailure()
{
    QString text = QString::fromStdString(reasonOfFailure());
    if (text.isEmpty())
        return text;
    text[0] = text[0].toUpper();
    return text.endsWith(QLatin1Char('.')) ? text : text + QLatin1Char('.');
}

}  // namespace veltrac
