// Lines that stand again between the rows of a log: the names of its columns, and a title above them.
#pragma once

#include <span>
#include <string>
#include <string_view>
#include <vector>

#include "converters/STLFormat.h"

namespace veltrac {

class STLTitles
{
public:
    // Borrows the format.
    explicit STLTitles(const STLFormat& format);

    // Whether a line is the title above the names, or the names in a remark.
    bool isTitle(std::string_view line) const;
    // Whether a line is one of them; `cells` are at least as many as the columns.
    bool has(std::string_view line, std::span<const std::string_view> cells) const;

private:
    bool endsInNames(std::string_view line) const;

    const STLFormat& m_format;
    std::vector<std::size_t> m_headed;  // columns of numbers and texts with a heading
    std::string m_names;                // and these, a blank between them
};

// Whether two lines differ in nothing but their digits, and hold letters.
bool areAlikeButDigits(std::string_view a, std::string_view b);

}  // namespace veltrac
