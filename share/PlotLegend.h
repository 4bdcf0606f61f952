// The names of a group's curves above its frame, in as many rows as they need and get.
#pragma once

#include <cstddef>
#include <string>
#include <vector>

class BasicDriver;
class Group;
class HsVariable;
class Plot2D;

namespace veltrac {

// Where the names stand: x in parts of the device's width, rows from the top.
struct LegendFlow
{
    struct Place
    {
        const HsVariable* variable;
        std::string text;
        float x;
        std::size_t row;
    };
    std::vector<Place> places{};
    std::size_t left = 0;  // names that found no room; their number stands behind the last one, at …
    float leftX = 0.0F;

    std::size_t rows() const { return places.empty() ? 1 : places.back().row + 1; }
};

// Of the stroke before a name, in character widths.
inline constexpr float kLegendStroke = 2.5F;
inline constexpr float kLegendTextGap = 0.6F;

class PlotLegend
{
public:
    // Whether a group has one: of several curves, or where values are not shown on a logarithmic axis.
    static bool isOf(const Group& group);

    // Measures the names with the driver's present font, of which `charWidth` is the width of a digit.
    // Borrows plot and group.
    PlotLegend(const Plot2D& plot, const Group& group, BasicDriver& driver, float charWidth);

    // Between two places, in at most so many rows.
    LegendFlow flow(float x1, float x2, std::size_t mostRows) const;

private:
    struct Entry
    {
        const HsVariable* variable;
        std::string text;
        float width;  // of the text
    };
    LegendFlow flow(float x1, float x2, std::size_t mostRows, bool keepsRoom) const;

    std::vector<Entry> m_entries;
    float m_charWidth;
};

}  // namespace veltrac
