#include "portal/TsFileTexts.h"

#include <QCollator>
#include <QFile>

#include <algorithm>
#include <array>
#include <charconv>
#include <cmath>

#include "core/TimeUnits.h"
#include "share/HeaderText.h"

namespace veltrac {

namespace {

QString rateText(double hertz)
{
    struct Prefix
    {
        double factor;
        const char* unit;
    };
    constexpr std::array kPrefixes = {Prefix{1e9, "GHz"}, Prefix{1e6, "MHz"}, Prefix{1e3, "kHz"},
                                      Prefix{1.0, "Hz"}, Prefix{1e-3, "mHz"}};
    // A sample time is a float: more digits than these would be noise.
    constexpr int kDigits = 6;
    for (const Prefix& prefix : kPrefixes)
        if (hertz >= prefix.factor)
            return QString::number(hertz / prefix.factor, 'g', kDigits) + QLatin1Char(' ') +
                   QString::fromLatin1(prefix.unit);
    return QString::number(hertz * 1e6, 'g', kDigits) + QStringLiteral(" µHz");
}

}  // namespace

std::vector<std::string> shownTsFiles(int& foreign)
{
    std::vector<QString> names;
    foreign = 0;
    for (const std::string& name : tsFilesIn(".")) {
        const QString text = QFile::decodeName(name.c_str());
        if (QFile::encodeName(text).toStdString() == name)
            names.push_back(text);
        else
            ++foreign;
    }
    QCollator byName;
    byName.setNumericMode(true);
    byName.setCaseSensitivity(Qt::CaseInsensitive);
    std::sort(names.begin(), names.end(), byName);
    std::vector<std::string> sorted;
    sorted.reserve(names.size());
    for (const QString& name : names)
        sorted.push_back(QFile::encodeName(name).toStdString());
    return sorted;
}

QString floatText(float v)
{
    char text[32];
    const auto result = std::to_chars(text, text + sizeof text, v);
    return QString::fromLatin1(text, static_cast<int>(result.ptr - text));
}

QString sampleTimeText(double sampleTime)
{
    return QStringLiteral("%1").arg(sampleTime, 0, 'f', std::fabs(sampleTime) > 1.0 ? 3 : 4);
}

QString sampleTimeTip(const TsFileRecord& record)
{
    const QString unit = headerText(record.timeUnit.c_str());
    const QString time = floatText(static_cast<float>(record.sampleTime)) + QLatin1Char(' ') + unit;
    const double seconds = record.sampleTime * record.unitSeconds;
    const bool isTime = secondsOfUnit(unit.toLower().toStdString()) > 0.0;
    return isTime && std::isfinite(seconds) && seconds > 0.0
               ? time + QStringLiteral(", ") + rateText(1.0 / seconds)
               : time;
}

}  // namespace veltrac
