#include "converters/STLTimeText.h"

#include <algorithm>
#include <array>
#include <cmath>

#include "converters/PlainNumber.h"
#include "converters/TimeStamps.h"

namespace veltrac {

namespace {

constexpr double kMostSeconds = 4e12;  // whose microseconds fit into 64 bits

constexpr std::array<double, 7> kFine = {1.0, 1e-1, 1e-2, 1e-3, 1e-4, 1e-5, 1e-6};

}  // namespace

double resolutionOf(std::string_view number, char decimal)
{
    const std::size_t mark = number.find(decimal);
    const std::size_t digits = mark == std::string_view::npos ? 0 : number.size() - mark - 1;
    return digits >= kFine.size() || number.find_first_of("eE") != std::string_view::npos ? 0.0
                                                                                          : kFine[digits];
}

double resolutionOf(const TimeOfDay& time)
{
    return time.hasSeconds ? kFine[static_cast<std::size_t>(std::min(time.fractionDigits, 6))] : 60.0;
}

std::optional<int> wholeAt(std::string_view cell, const STLCells& cells, int least, int most)
{
    const auto number = readNumber(cell, cells);
    const bool whole = number && *number == std::floor(*number) && *number >= least && *number <= most;
    return whole ? std::optional(static_cast<int>(*number)) : std::nullopt;
}

STLTimeReader::STLTimeReader(const STLFormat& format)
    : m_format(format),
      m_secondsPerUnit(secondsPerUnit(format)),
      m_unitsPerSecond(std::round(1.0 / m_secondsPerUnit))
{
}

STLTimeText STLTimeReader::read(std::span<const std::string_view> cells) const
{
    const auto column = static_cast<std::size_t>(m_format.timeColumn);
    const std::string_view cell = bareCell(cells[column], m_format.columns[column]);
    switch (m_format.timeSource) {
        case STLTimeSource::Stamp:
            return readStamp(cell);
        case STLTimeSource::DateAndTime:
            return clockIsInParts(m_format) ? STLTimeText() : readTimeOfDay(cell);
        case STLTimeSource::ElapsedTime:
            return readTimeOfDay(cell);
        case STLTimeSource::Typed:
        case STLTimeSource::DateParts:
        case STLTimeSource::DecimalYears:
        case STLTimeSource::SerialDays:
            return {};
        default:
            return readNumber(cell);
    }
}

// A date, a blank or "T", and a time, perhaps with its zone.
STLTimeText STLTimeReader::readStamp(std::string_view cell) const
{
    STLTimeText told;
    const auto* const between =
        std::find_if(cell.begin(), cell.end(), [](char c) { return c == ' ' || c == 'T' || c == '_'; });
    told.dateEnd = static_cast<std::size_t>(between - cell.begin());
    if (told.dateEnd == cell.size())
        return told;
    std::string_view rest = cell.substr(told.dateEnd + 1);
    rest.remove_prefix(std::min(rest.find_first_not_of(' '), rest.size()));
    const auto time = takeTime(rest);
    const auto zone = takeZone(rest);
    if (!time || !rest.empty())
        return told;
    told.isRead = true;
    told.micros = time->micros - Micros{zone.value_or(0)} * 60 * kMicrosPerSecond;
    told.isZoned = zone.has_value();
    told.resolution = resolutionOf(*time);
    return told;
}

STLTimeText STLTimeReader::readTimeOfDay(std::string_view cell) const
{
    STLTimeText told;
    if (m_format.timeIsHhmm) {
        const auto digits = wholeAt(cell, m_format.cells, 0, 2400);
        told.isRead = digits && *digits % 100 <= 59;
        told.micros = told.isRead ? (*digits / 100 * 60 + *digits % 100) * 60 * kMicrosPerSecond : 0;
        told.resolution = 60.0;
    } else if (readPlainTime(cell, told.micros)) {
        told.isRead = true;
        told.resolution = 1.0;
    } else if (const auto time = readClock(cell)) {
        told.isRead = true;
        told.micros = time->micros;
        told.resolution = resolutionOf(*time);
    }
    return told;
}

STLTimeText STLTimeReader::readNumber(std::string_view cell) const
{
    STLTimeText told;
    const char* at = cell.data();
    const auto plain = takePlainNumber(at, cell.data() + cell.size(), m_format.cells.decimal);
    if (plain && at == cell.data() + cell.size() && plain->places != 0) {
        told.isRead = true;
        told.number = plain->value();
        told.resolution = plain->places < kFine.size() ? kFine[plain->places] : 0.0;
    } else if (const auto number = veltrac::readNumber(cell, m_format.cells)) {
        told.isRead = true;
        told.number = *number;
        told.resolution = resolutionOf(cell, m_format.cells.decimal);
    }
    told.isRead = told.isRead && std::fabs(told.number * m_secondsPerUnit) <= kMostSeconds;
    told.resolution *= m_secondsPerUnit;
    return told;
}

}  // namespace veltrac
