#include "converters/ImportTexts.h"

#include <QFile>
#include <QFileInfo>
#include <QLabel>
#include <QPalette>

#include <algorithm>
#include <array>
#include <cmath>

#include "core/FailureText.h"
#include "share/Boxes.h"
#include "share/GroupedNumber.h"
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

QString counted(std::uint64_t n, const char* one, const char* many)
{
    return groupedNumber(n) + QLatin1Char(' ') + QString::fromLatin1(n == 1 ? one : many);
}

namespace {

struct Unit
{
    double from;
    double seconds;
    const char* name;
};

const Unit& unitOf(double seconds)
{
    static constexpr std::array<Unit, 5> kUnits = {
        {{86400, 86400, "d"}, {7200, 3600, "h"}, {600, 60, "min"}, {0.1, 1, "s"}, {0, 1e-3, "ms"}}};
    const double size = std::fabs(seconds);
    return *std::find_if(kUnits.begin(), kUnits.end() - 1, [size](const Unit& unit) {
        return size == 0.0 ? unit.seconds == 1 : size >= unit.from;
    });
}

QString inUnit(const QString& number, const Unit& unit)
{
    return number + QLatin1Char(' ') + QString::fromLatin1(unit.name);
}

}  // namespace

QString durationText(double seconds)
{
    const Unit& unit = unitOf(seconds);
    return inUnit(QString::number(seconds / unit.seconds, 'g', 4), unit);
}

QString stepLength(double seconds)
{
    const Unit& unit = unitOf(seconds);
    const double length = seconds / unit.seconds;
    const int places = length < 10 ? 3 : length < 100 ? 2 : length < 1000 ? 1 : 0;
    return inUnit(QString::number(length, 'f', places), unit);
}

QString stepRange(double least, double greatest)
{
    const Unit& unit = unitOf(greatest);
    if (&unitOf(least) != &unit)
        return durationText(least) + QStringLiteral(" to ") + durationText(greatest);
    const QString from = QString::number(least / unit.seconds, 'g', 4);
    const QString to = QString::number(greatest / unit.seconds, 'g', 4);
    return from == to ? stepLength(greatest) : from + QStringLiteral(" to ") + inUnit(to, unit);
}

QString sizeText(std::uint64_t bytes)
{
    const auto size = static_cast<double>(bytes);
    if (bytes < 1000)
        return counted(bytes, "byte", "bytes");
    if (size < 1e6)
        return QString::number(size / 1e3, 'f', 1) + QStringLiteral(" kB");
    return size < 1e9 ? QString::number(size / 1e6, 'f', 1) + QStringLiteral(" MB")
                      : QString::number(size / 1e9, 'f', 2) + QStringLiteral(" GB");
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

QLabel* warningLabel()
{
    auto* const label = new QLabel;
    label->setWordWrap(true);
    label->setTextFormat(Qt::PlainText);
    label->setTextInteractionFlags(Qt::TextSelectableByMouse);
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
