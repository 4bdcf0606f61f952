// The data rows of a smart tool log, one after the other: values, time and what was not understood.
#pragma once

#include <map>
#include <string>
#include <vector>

#include "converters/STLClock.h"
#include "converters/STLFormat.h"
#include "core/LineReader.h"

namespace veltrac {

// The first pass only asks whether cells are numbers, the second one wants the numbers, and perhaps no times.
enum class STLPass { Check, Write, WriteValues };

enum class STLProblem { NotANumber, TooFewCells, TooManyCells, UnreadableStamp, FarTime, LineTooLong };

struct STLTrouble
{
    std::uint64_t line;
    int column;  // from 0; -1 for the whole line
    STLProblem problem;
    std::string text;  // what stands there, cut
};

// What does not come along, so far.
struct STLLosses
{
    std::uint64_t skippedLines = 0;  // that are no row although data stand there
    std::uint64_t titleLines = 0;    // names lines that stand between the rows once more
    std::uint64_t emptyCells = 0;    // of rows: empty ones, and markers of missing values
    std::uint64_t notNumbers = 0;    // of rows: cells with anything else

    std::uint64_t missingCells() const { return emptyCells + notNumbers; }
};

// Texts of a column that is numbered, in the order in which they come.
using STLTexts = std::map<std::string, int, std::less<>>;

class STLRows
{
public:
    // Borrows the format. Throws std::system_error where the file cannot be opened.
    STLRows(const std::filesystem::path& file, const STLFormat& format, STLPass pass);

    // Goes to the next line; false at the end.
    bool next();
    // Whether it is a row, with a readable time.
    bool hasRow() const { return m_hasRow; }

    // Of the present row: a value for each taken column (NaN where it is missing; nothing in a check), and
    // its time in seconds since the first row; 0 where the rows carry none.
    const std::vector<float>& values() const { return m_values; }
    double seconds() const { return m_seconds; }
    // What was not understood in the present line.
    const std::vector<STLTrouble>& troubles() const { return m_troubles; }

    // What the rows so far tell of their times, and what they lack.
    const STLClock& clock() const { return m_clock; }
    const STLLosses& losses() const { return m_losses; }
    // Of the columns whose texts are numbered, by column.
    const std::map<std::size_t, STLTexts>& texts() const { return m_texts; }

    std::uint64_t position() const { return m_reader.position(); }
    std::uint64_t fileBytes() const { return m_reader.fileBytes(); }

private:
    bool holdsData(std::string_view line) const;
    bool readCells();
    bool isTitle() const;
    bool readTime();
    bool readValues();
    float valueOf(std::size_t column, std::string_view cell);
    float textNumber(std::size_t column, std::string_view cell);
    void note(STLProblem problem, int column, std::string_view text);

    const STLFormat& m_format;
    STLPass m_pass;
    LineReader m_reader;
    STLClock m_clock;
    std::uint64_t m_lineNumber = 0;
    std::vector<std::size_t> m_taken;   // columns
    std::vector<std::size_t> m_headed;  // columns of numbers with a heading
    std::vector<std::string_view> m_cells;
    std::vector<float> m_values;
    std::vector<STLTrouble> m_troubles;
    STLLosses m_losses;
    bool m_hasRow = false;
    double m_seconds = 0.0;
    std::map<std::size_t, STLTexts> m_texts;
};

}  // namespace veltrac
