#include "converters/STLNamePlaces.h"

#include <algorithm>
#include <limits>
#include <optional>

namespace veltrac {

namespace {

constexpr std::size_t kTab = 8;
constexpr std::size_t kMostRows = 100;

// Where a text stands on the screen.
struct Place
{
    std::size_t from = std::numeric_limits<std::size_t>::max();
    std::size_t to = 0;
};

Place placeOf(std::string_view part, std::string_view line)
{
    const auto begin = static_cast<std::size_t>(part.data() - line.data());
    std::size_t at = 0;
    Place place;
    for (std::size_t i = 0; i < begin + part.size(); ++i) {
        if (i == begin)
            place.from = at;
        at = line[i] == '\t' ? (at / kTab + 1) * kTab : at + 1;
    }
    place.to = at;
    return place;
}

// A column and those behind it whose cells reach below its own.
struct Group
{
    std::size_t column;
    Place place;
};

std::vector<Group> groupsOf(const std::vector<STLRow>& data, std::size_t columns)
{
    std::vector<Place> places(columns);
    for (std::size_t r = 0; r < std::min(data.size(), kMostRows); ++r)
        for (std::size_t c = 0; c < columns; ++c) {
            const Place cell = placeOf(data[r].cells[c].text, data[r].line->text);
            places[c].from = std::min(places[c].from, cell.from);
            places[c].to = std::max(places[c].to, cell.to);
        }
    std::vector<Group> groups;
    for (std::size_t c = 0; c < columns; ++c)
        if (groups.empty() || groups.back().place.to <= places[c].from)
            groups.push_back({c, places[c]});
        else
            groups.back().place.to = std::max(groups.back().place.to, places[c].to);
    return groups;
}

struct Below
{
    std::size_t group = 0;
    std::ptrdiff_t apart = std::numeric_limits<std::ptrdiff_t>::max();  // negative where it stands above it
};

// What stands below a word, or else nearest to that.
Below groupBelow(const Place& word, const std::vector<Group>& groups)
{
    Below best;
    for (std::size_t g = 0; g < groups.size(); ++g) {
        const Place& place = groups[g].place;
        const std::ptrdiff_t apart = static_cast<std::ptrdiff_t>(std::max(word.from, place.from)) -
                                     static_cast<std::ptrdiff_t>(std::min(word.to, place.to));
        if (apart < best.apart)
            best = {g, apart};
    }
    return best;
}

bool isNear(std::size_t a, std::size_t b)
{
    return a <= b + 1 && b <= a + 1;
}

}  // namespace

bool areSetOut(std::string_view line)
{
    return line.starts_with(' ') || line.find("  ") != std::string_view::npos ||
           line.find('\t') != std::string_view::npos;
}

namespace {

// Where the cells of each column end; empty where those of a column, other than the first, end at several
// places.
std::vector<std::size_t> endsOf(const std::vector<STLRow>& data, std::size_t columns)
{
    std::vector<std::size_t> ends(columns);
    for (std::size_t r = 0; r < std::min(data.size(), kMostRows); ++r)
        for (std::size_t c = 0; c < columns; ++c) {
            if (data[r].cells[c].text.empty())
                continue;
            const std::size_t to = placeOf(data[r].cells[c].text, data[r].line->text).to;
            if (ends[c] != 0 && c > 0 && to != ends[c])
                return {};
            ends[c] = std::max(ends[c], to);
        }
    return ends;
}

}  // namespace

std::vector<std::string_view> namesByEnds(std::string_view line, const std::vector<STLRow>& data,
                                          const STLFormat& format)
{
    constexpr std::string_view kBlanks = " \t\r";
    const std::size_t columns = format.columns.size();
    const std::vector<std::size_t> ends =
        data.size() < 2 || format.cells.bars ? std::vector<std::size_t>() : endsOf(data, columns);
    if (ends.empty() || line.find('"') != std::string_view::npos)
        return {};
    std::vector<std::string_view> names(columns);
    std::size_t column = 0;
    for (std::size_t from = line.find_first_not_of(kBlanks); from != std::string_view::npos;) {
        const std::size_t end = std::min(line.find_first_of(kBlanks, from), line.size());
        const std::string_view word = line.substr(from, end - from);
        const Place place = placeOf(word, line);
        while (column < columns && ends[column] < place.to)
            ++column;
        if (column == columns || (column > 0 && place.from < ends[column - 1]))
            return {};
        std::string_view& name = names[column];
        if (!name.empty() && word.data() != name.data() + name.size() + 1)
            return {};
        name = name.empty() ? word : std::string_view(name.data(), name.size() + 1 + word.size());
        from = line.find_first_not_of(kBlanks, end);
    }
    for (std::size_t c = 1; c < columns; ++c)
        if (names[c].empty() || placeOf(names[c], line).to != ends[c])
            return {};
    return names;
}

std::vector<std::string_view> namesByPlace(std::string_view line, const std::vector<STLRow>& data,
                                           const STLFormat& format)
{
    const std::size_t columns = format.columns.size();
    const std::string_view blanks = format.cells.bars ? " \t\r|" : " \t\r";
    if (data.empty() || line.find('"') != std::string_view::npos)
        return {};
    const std::vector<Group> groups = groupsOf(data, columns);
    std::vector<std::string_view> names(columns);
    std::optional<std::size_t> before;
    std::size_t named = 0;
    std::size_t words = 0;
    for (std::size_t from = line.find_first_not_of(blanks); from != std::string_view::npos;) {
        const std::size_t end = std::min(line.find_first_of(blanks, from), line.size());
        const std::string_view word = line.substr(from, end - from);
        const auto [g, apart] = groupBelow(placeOf(word, line), groups);
        std::string_view& name = names[groups[g].column];
        if (before && g < *before)
            return {};
        if (before == g) {
            if (apart > 0 || word.data() != name.data() + name.size() + 1)
                return {};
            name = {name.data(), name.size() + 1 + word.size()};
        } else {
            name = word;
            ++named;
        }
        before = g;
        ++words;
        from = line.find_first_not_of(blanks, end);
    }
    // Words a blank apart that are one short: names of the columns behind one of row names, wherever they
    // stand.
    if (words + 1 == columns && !areSetOut(line))
        return {};
    const auto aligned =
        static_cast<std::size_t>(std::count_if(groups.begin(), groups.end(), [&](const Group& group) {
            const std::string_view name = names[group.column];
            if (name.empty())
                return false;
            const Place place = placeOf(name, line);
            return isNear(place.from, group.place.from) || isNear(place.to, group.place.to);
        }));
    const bool told = named > 1 && named * 2 >= columns && aligned * 3 >= named * 2;
    return told ? names : std::vector<std::string_view>();
}

}  // namespace veltrac
