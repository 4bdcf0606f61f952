// What the cells of a log's row tell of its time, whatever the rows before it.
#pragma once

#include <cstddef>
#include <span>
#include <string_view>

#include "converters/STLFormat.h"

namespace veltrac {

struct STLTimeText
{
    bool isRead = false;      // else nothing below counts but the date's end
    std::size_t dateEnd = 0;  // in the cell of a stamp
    Micros micros = 0;        // of a stamp or a time of day: since its midnight, at Greenwich where zoned
    bool isZoned = false;
    double number = 0.0;      // in the column's unit
    double resolution = 0.0;  // how finely it is told, in seconds; 0 for exactly
};

class STLTimeReader
{
public:
    // Borrows the format.
    explicit STLTimeReader(const STLFormat& format);

    // Of cells as many as columns. May be called on several threads at once.
    STLTimeText read(std::span<const std::string_view> cells) const;

    // A number of the column's unit.
    double inSeconds(double number) const
    {
        // Divided where the unit is a part of a second, which rounds once.
        return m_secondsPerUnit < 1.0 ? number / m_unitsPerSecond : number * m_secondsPerUnit;
    }

private:
    STLTimeText readStamp(std::string_view cell) const;
    STLTimeText readTimeOfDay(std::string_view cell) const;
    STLTimeText readNumber(std::string_view cell) const;

    const STLFormat& m_format;
    double m_secondsPerUnit;
    double m_unitsPerSecond;
};

// How fine a written number is, 1 for a whole one; 0 where its digits do not tell.
double resolutionOf(std::string_view number, char decimal);

// How fine a written time is, in seconds: its last digit, or the minute where it has no seconds.
double resolutionOf(const TimeOfDay& time);

// A cell's number without decimals, within these bounds.
std::optional<int> wholeAt(std::string_view cell, const STLCells& cells, int least, int most);

}  // namespace veltrac
