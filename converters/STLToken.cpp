#include "converters/STLToken.h"

#include <algorithm>
#include <array>

#include "converters/PlainNumber.h"
#include "converters/TimeStamps.h"
#include "converters/WordedDates.h"
#include "core/Characters.h"
#include "core/TextNumbers.h"

using namespace veltrac;

namespace {

constexpr std::size_t kLongestNumber = 64;
constexpr std::size_t kLongestDate = 48;
constexpr char kMinusByte = '\xE2';  // the first one of U+2212

std::string_view trimmed(std::string_view cell)
{
    while (!cell.empty() && isBlank(cell.front()))
        cell.remove_prefix(1);
    return withoutTail(cell);
}

// AM and PM belong to the time before them, although a blank stands between.
bool isHalfOfDay(std::string_view cell, std::string_view before)
{
    return cell.size() == 2 && ((cell[0] | 0x20) == 'a' || (cell[0] | 0x20) == 'p') &&
           (cell[1] | 0x20) == 'm' && before.find(':') != std::string_view::npos;
}

// A cell in quotes: separators inside it are text, and two quotes stand for one of the text. It ends at the
// quote behind which a separator or the line's end follows; null where there is none, so that it is no quote.
const char* closingQuote(const char* from, const char* end, char separator)
{
    for (const char* quote = std::find(from + 1, end, '"'); quote != end;
         quote = std::find(quote, end, '"')) {
        const char* behind = quote + 1;
        while (behind != end && (isBlank(*behind) || *behind == '\r') && *behind != separator)
            ++behind;
        const bool apart = separator == ' ' && behind != quote + 1;
        if (behind == end || *behind == separator || apart)
            return quote;
        quote += behind == quote + 1 && *behind == '"' ? 2 : 1;
    }
    return nullptr;
}

// Whether a text can begin with a stamp of several words: with a bracket, a word, or a day before a month's
// name.
bool mayBeStamp(std::string_view text)
{
    constexpr std::size_t kShortest = 12;
    if (text.size() < kShortest)
        return false;
    if (isDigit(text.front())) {
        std::size_t at = isDigit(text[1]) ? 2 : 1;
        at += text[at] == '.' ? 1 : 0;
        if (text[at++] != ' ' || text[at] < 'A')
            return false;
    } else if (text.front() < 'A') {
        return false;
    }
    return text.substr(0, kLongestDate).find(':') != std::string_view::npos;
}

// A stamp of several words that begins a text: "[2026-11-22 01:45:40]", "Sun Nov 22 01:40:30 UTC 2026", "22
// Nov 2026 01:40:30 AM". 0 where there is none.
std::size_t stampOfWords(std::string_view text)
{
    if (text.front() == '[') {
        const std::size_t length = std::min(text.find(']'), text.size() - 1) + 1;
        return length <= kLongestDate && readStamp(text.substr(0, length)) ? length : 0;
    }
    std::string_view rest = text;
    if (!takeCTime(rest) && !takeWordedStamp(rest))
        return 0;
    const bool ends = rest.empty() || isBlank(rest.front()) || rest.front() == ',' || rest.front() == ':';
    return ends ? text.size() - rest.size() : 0;
}

// "[1700000160.123456]" without its brackets: seconds since 1970, unlike a number that only counts.
std::string_view withoutBrackets(std::string_view word)
{
    constexpr std::size_t kShortest = 12;
    const bool framed = word.size() >= kShortest && word.front() == '[' && word.back() == ']';
    const std::string_view inside = framed ? word.substr(1, word.size() - 2) : word;
    return inside.find_first_not_of("0123456789.") == std::string_view::npos ? inside : word;
}

// A number in a sentence: the comma or colon behind it is none of it.
std::string_view withoutComma(std::string_view word)
{
    const bool behind = word.size() > 1 && (word.back() == ',' || word.back() == ':');
    return behind && isDigit(word[word.size() - 2]) ? word.substr(0, word.size() - 1) : word;
}

void splitAtBlanks(std::string_view line, std::vector<std::string_view>& out)
{
    std::size_t i = 0;
    while (true) {
        while (i < line.size() && isBlank(line[i]))
            ++i;
        if (i == line.size())
            return;
        if (mayBeStamp(line.substr(i))) {
            if (const std::size_t length = stampOfWords(line.substr(i)); length != 0) {
                out.push_back(line.substr(i, length));
                i += length;
                // "Nov 22, 2026 1:45:40 AM,7": no decimal sign.
                i += i + 1 < line.size() && line[i] == ',' && !isBlank(line[i + 1]) ? 1 : 0;
                continue;
            }
        }
        const char* const quote =
            line[i] == '"' ? closingQuote(line.data() + i, line.data() + line.size(), ' ') : nullptr;
        const bool quoted = quote != nullptr;
        const std::size_t end = quoted ? static_cast<std::size_t>(quote - line.data())
                                       : std::min(line.find_first_of(" \t", i), line.size());
        const std::string_view cell =
            quoted ? line.substr(i + 1, end - i - 1) : withoutBrackets(withoutComma(line.substr(i, end - i)));
        if (!out.empty() && isHalfOfDay(cell, out.back()))
            out.back() = {out.back().data(), static_cast<std::size_t>(cell.data() + 2 - out.back().data())};
        else
            out.push_back(cell);
        i = quoted ? end + 1 : end;
    }
}

// "| 1 | 2 |"
bool isFramed(std::string_view line)
{
    const std::size_t first = line.find_first_not_of(" \t");
    return first != std::string_view::npos && line[first] == '|' && line.find_last_not_of(" \t\r") != first &&
           line[line.find_last_not_of(" \t\r")] == '|';
}

// Joins the words that a row begins with to one cell; a line of words alone stays as it is.
void joinRowName(std::vector<std::string_view>& row, const STLCells& cells)
{
    std::size_t words = 0;
    while (words < row.size() && readToken(row[words], cells).kind == STLKind::Text)
        ++words;
    if (words < 2 || words == row.size())
        return;
    const std::string_view last = row[words - 1];
    row[0] = {row[0].data(), static_cast<std::size_t>(last.data() + last.size() - row[0].data())};
    row.erase(row.begin() + 1, row.begin() + static_cast<std::ptrdiff_t>(words));
}

// "1  2|3  4|": cells between blanks, in groups that bars tell apart.
void splitAtBars(std::string_view line, std::vector<std::string_view>& out)
{
    out.clear();
    for (std::size_t from = 0; from <= line.size();) {
        const std::size_t end = std::min(line.find('|', from), line.size());
        splitAtBlanks(line.substr(from, end - from), out);
        from = end + 1;
    }
}

// The number that a whole text is, where it is a plain one.
std::optional<PlainNumber> plainNumber(std::string_view text, char decimal)
{
    const char* at = text.data();
    const char* const end = at + text.size();
    const auto number = takePlainNumber(at, end, decimal);
    return at == end ? number : std::nullopt;
}

// The text behind a number's own sign; empty where no number begins so.
std::string_view digitsOf(std::string_view cell, char decimal)
{
    if (!cell.empty() && (cell.front() == '+' || cell.front() == '-'))
        cell.remove_prefix(1);
    return !cell.empty() && (isDigit(cell.front()) || cell.front() == decimal) ? cell : std::string_view();
}

bool isAscii(char c)
{
    return static_cast<unsigned char>(c) < 0x80;
}

// A number whose signs are not ASCII, made plain: no-break blanks (also narrow ones), the typographer's
// apostrophe and minus, in UTF-8 or Windows-1252. Empty where it holds none of them.
std::string_view withPlainSigns(std::string_view cell, std::array<char, kLongestNumber>& buffer)
{
    struct Sign
    {
        std::string_view bytes;
        char plain;
    };
    static constexpr std::array<Sign, 6> kSigns = {{{"\xC2\xA0", ' '},
                                                    {"\xE2\x80\xAF", ' '},
                                                    {"\xE2\x80\x99", '\''},
                                                    {"\xE2\x88\x92", '-'},
                                                    {"\xA0", ' '},
                                                    {"\x92", '\''}}};
    if (cell.size() >= buffer.size())
        return {};
    std::size_t count = 0;
    bool found = false;
    for (std::size_t i = 0; i < cell.size();) {
        const auto* sign = kSigns.end();
        if (!isAscii(cell[i]))
            sign = std::find_if(kSigns.begin(), kSigns.end(),
                                [&](const Sign& s) { return cell.substr(i).starts_with(s.bytes); });
        found = found || sign != kSigns.end();
        buffer[count++] = sign == kSigns.end() ? cell[i] : sign->plain;
        i += sign == kSigns.end() ? 1 : sign->bytes.size();
    }
    return found ? std::string_view(buffer.data(), count) : std::string_view();
}

// A number without its grouping signs; nothing where they do not stand before each three digits.
std::optional<std::string_view> ungrouped(std::string_view cell, const STLCells& cells,
                                          std::array<char, kLongestNumber>& buffer)
{
    std::size_t count = 0;
    std::size_t digits = 0;
    std::size_t groups = 0;
    std::size_t i = 0;
    for (; i < cell.size() && cell[i] != cells.decimal && cell[i] != 'e' && cell[i] != 'E'; ++i) {
        if (cell[i] == cells.grouping) {
            if (groups++ == 0 ? digits < 1 || digits > 3 : digits != 3)
                return std::nullopt;
            digits = 0;
            continue;
        }
        digits += isDigit(cell[i]) ? 1 : 0;
        if (count == buffer.size())
            return std::nullopt;
        buffer[count++] = cell[i];
    }
    if ((groups > 0 && digits != 3) || cell.size() - i > buffer.size() - count)
        return std::nullopt;
    count += cell.copy(buffer.data() + count, cell.size() - i, i);
    return std::string_view(buffer.data(), count);
}

}  // namespace

std::size_t veltrac::splitCells(std::string_view line, char separator, std::vector<std::string_view>& out)
{
    if (!line.empty() && line.back() == '\r')
        line.remove_suffix(1);
    if (separator == ' ') {
        out.clear();
        splitAtBlanks(line, out);
        return out.size();
    }
    // A frame around a table's lines is no cell.
    if (separator == '|' && isFramed(line))
        line = line.substr(line.find('|') + 1);
    // Most lines have as many cells as the one before.
    std::size_t count = 0;
    const auto put = [&](std::string_view cell) {
        if (count < out.size())
            out[count] = cell;
        else
            out.push_back(cell);
        ++count;
    };
    const char* const end = line.data() + line.size();
    for (const char* from = line.data();;) {
        while (from != end && isBlank(*from) && *from != separator)
            ++from;
        const char* const quote = from != end && *from == '"' ? closingQuote(from, end, separator) : nullptr;
        if (quote != nullptr) {
            put(trimmed({from + 1, static_cast<std::size_t>(quote - from - 1)}));
            from = std::find(quote, end, separator);
        } else {
            const char* const stop = std::find(from, end, separator);
            put(withoutTail({from, static_cast<std::size_t>(stop - from)}));
            from = stop;
        }
        if (from == end)
            break;
        ++from;
    }
    out.resize(count);
    return count;
}

std::size_t veltrac::splitCells(std::string_view line, const STLCells& cells,
                                std::vector<std::string_view>& out)
{
    if (cells.edges.empty()) {
        if (cells.bars)
            splitAtBars(line.ends_with('\r') ? line.substr(0, line.size() - 1) : line, out);
        else
            splitCells(line, cells.separator, out);
        if (cells.rowNames)
            joinRowName(out, cells);
        return out.size();
    }
    if (!line.empty() && line.back() == '\r')
        line.remove_suffix(1);
    out.assign(cells.edges.size(), std::string_view());
    for (std::size_t i = line.find_first_not_of(' '); i < line.size();) {
        const std::size_t end = std::min(line.find(' ', i), line.size());
        // A word that crosses an edge belongs where it ends: numbers stand to the right.
        const auto edge = std::upper_bound(cells.edges.begin(), cells.edges.end(), end - 1);
        std::string_view& cell =
            out[static_cast<std::size_t>(std::max<std::ptrdiff_t>(edge - cells.edges.begin() - 1, 0))];
        const char* const from = cell.empty() ? line.data() + i : cell.data();
        cell = {from, static_cast<std::size_t>(line.data() + end - from)};
        i = line.find_first_not_of(' ', end);
    }
    return out.size();
}

std::optional<double> veltrac::readNumber(std::string_view cell, const STLCells& cells)
{
    const std::string_view digits = digitsOf(cell, cells.decimal);
    // A comma behind a number is no decimal one.
    if (cells.decimal == ',' && cell.ends_with(','))
        return std::nullopt;
    std::array<char, kLongestNumber> buffer;
    if (digits.empty()) {
        // Only a minus may begin a number so.
        const std::string_view plain =
            cell.starts_with(kMinusByte) ? withPlainSigns(cell, buffer) : std::string_view();
        return plain.starts_with('-') ? readNumber(plain, cells) : std::nullopt;
    }
    if (const auto plain = plainNumber(digits, cells.decimal))
        return cell.front() == '-' ? -plain->value() : plain->value();

    if (cells.grouping != 0 && !std::all_of(cell.begin(), cell.end(), isAscii)) {
        const std::string_view plain = withPlainSigns(cell, buffer);
        return plain.empty() ? std::nullopt : readNumber(plain, cells);
    }
    if (cells.grouping != 0 && cell.find(cells.grouping) != std::string_view::npos) {
        const std::optional<std::string_view> plain = ungrouped(cell, cells, buffer);
        if (!plain)
            return std::nullopt;
        cell = *plain;
    }
    const char* const last = cell.data() + cell.size();
    const ParsedNumber number =
        parseNumber(cell.data(), last, cells.decimal == ',' ? DecimalMark::Comma : DecimalMark::Point);
    return number.end == last ? std::optional(number.value) : std::nullopt;
}

bool veltrac::isNumber(std::string_view cell, const STLCells& cells)
{
    const std::string_view digits = digitsOf(cell, cells.decimal);
    const bool plain = !digits.empty() && digits.back() != ',' && plainNumber(digits, cells.decimal);
    return plain || readNumber(cell, cells);
}

bool veltrac::isMissing(std::string_view cell, const STLCells& cells)
{
    const auto lower = [](char c) { return c >= 'A' && c <= 'Z' ? static_cast<char>(c + 32) : c; };
    return cell.empty() ||
           std::any_of(cells.missing.begin(), cells.missing.end(), [&](const std::string& marker) {
               return marker.size() == cell.size() &&
                      std::equal(cell.begin(), cell.end(), marker.begin(),
                                 [&](char a, char b) { return lower(a) == lower(b); });
           });
}

STLToken veltrac::readToken(std::string_view cell, const STLCells& cells)
{
    if (const auto number = readNumber(cell, cells))
        return {STLKind::Number, cell, *number};
    if (isMissing(cell, cells))
        return {STLKind::Missing, cell, 0.0};
    // Words may begin a date ("Mar 12, 2024"), none without digits.
    if (!isDigit(cell.front()) &&
        (cell.size() > kLongestDate || std::none_of(cell.begin(), cell.end(), isDigit)))
        return {STLKind::Text, cell, 0.0};
    if (readTime(cell))
        return {STLKind::Time, cell, 0.0};
    if (const auto stamp = readStamp(cell))
        return {stamp->time ? STLKind::Stamp : STLKind::Date, cell, 0.0};
    return {STLKind::Text, cell, 0.0};
}
