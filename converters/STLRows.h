// The data rows of a smart tool log, one after the other: values, time and what was not understood.
#pragma once

#include <functional>
#include <map>
#include <span>
#include <string>
#include <vector>

#include "converters/STLClock.h"
#include "converters/STLFormat.h"
#include "converters/STLPlainRow.h"
#include "converters/STLTables.h"
#include "converters/STLTitles.h"
#include "core/LineReader.h"
#include "core/Progress.h"

namespace veltrac {

// A second pass may do without the times.
enum class STLPass { Whole, WithoutTimes };

enum class STLProblem {
    NotANumber,
    TooFewCells,
    TooManyCells,
    UnreadableStamp,
    FarTime,
    NoNumber,
    OtherTable,
    LineTooLong
};

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
    std::uint64_t otherLines = 0;    // of other tables that stand between
    std::uint64_t titleLines = 0;    // names lines and titles that stand between the rows once more
    std::uint64_t shortRows = 0;     // with too few cells
    std::uint64_t longRows = 0;      // and with too many
    std::uint64_t emptyCells = 0;    // of rows: empty ones, and markers of missing values
    std::uint64_t notNumbers = 0;    // of rows: cells with anything else
    std::uint64_t roundedCells = 0;  // of rows: numbers above 2^24 that a float does not tell exactly
    double mostRounded = 0.0;        // and by how much at most; infinite beyond a float's range

    std::uint64_t missingCells() const { return emptyCells + notNumbers; }
    // What of a row is told.
    bool areAny() const { return missingCells() + roundedCells != 0; }
    void addCells(const STLLosses& ofRow);
};

// Places at which something other than rows stands between two of them.
struct STLBreaks
{
    std::uint64_t count = 0;
    std::uint64_t firstLine = 0;  // the first row behind one
};

// Texts of a column that is numbered, in the order in which they come.
using STLTexts = std::map<std::string, int, std::less<>>;

class STLRows
{
public:
    // Borrows the format. Throws std::system_error where the file cannot be opened.
    STLRows(const std::filesystem::path& file, const STLFormat& format, STLPass pass);

    // Goes through all lines in order and calls onLine() for each, on the caller's thread; cells are read on
    // the program's others too. `goesOn` (may be empty) is asked every few hundred lines. Once for an object.
    // Throws std::system_error and what onLine() throws.
    JobOutcome walk(const std::function<void()>& onLine, const std::function<bool()>& goesOn);

    // Whether the present line is a row, with a readable time.
    bool hasRow() const { return m_hasRow; }
    // Values of a row.
    std::size_t columns() const { return m_takenColumns.size(); }
    // Of the present row: a value for each taken column (NaN where it is missing), and its time in seconds
    // since the first row; 0 where the rows carry none.
    std::span<const float> values() const { return m_values; }
    double seconds() const { return m_seconds; }
    // What was not understood in the present line.
    const std::vector<STLTrouble>& troubles() const { return m_troubles; }

    // What the rows so far tell of their times, and what they lack.
    const STLClock& clock() const { return m_clock; }
    const STLLosses& losses() const { return m_losses; }
    // Where empty lines or remarks stand between two rows, which may part tables.
    const STLBreaks& breaks() const { return m_breaks; }
    // Of the columns whose texts are numbered, by column.
    const std::map<std::size_t, STLTexts>& texts() const { return m_texts; }

    // Behind what has been read.
    std::uint64_t position() const { return m_reader.position(); }
    std::uint64_t fileBytes() const { return m_reader.fileBytes(); }

private:
    // What a line is without its time.
    enum class Kind : std::uint8_t { NoData, Title, NoCells, Cells };
    // Empty cells, other texts and what is told of them.
    struct Found
    {
        std::vector<STLTrouble>& troubles;
        STLLosses losses;

        // A value as it is kept, and what that takes from it.
        float rounded(double value);
    };
    struct Line
    {
        std::uint32_t end;    // in the text of its piece
        std::uint32_t cells;  // that it has
        Kind kind;
        bool isOdd;    // something is told of it
        bool isNames;  // they can be other names
    };
    // Of an odd line: the ends, among the troubles of its piece, of those of its cells' number and those of
    // its values, and what its values lack.
    struct Odd
    {
        std::size_t cellTroubles = 0;
        std::size_t valueTroubles = 0;
        STLLosses losses{};
    };
    // Lines that are read at once, and what was found in them; vectors of cells and values only grow.
    struct Piece
    {
        std::string text;
        bool isCut = false;  // one line, longer than what is there of it
        std::vector<Line> lines;
        std::vector<Odd> odd;
        std::size_t rows = 0;                 // lines with cells
        std::vector<std::string_view> cells;  // of each row as many as columns
        std::vector<float> values;            // and as many as are taken
        std::vector<STLTimeText> times;       // and one, where times are wanted
        std::vector<STLTrouble> troubles;     // their lines counted from 1 in the piece
    };
    // How far a piece has been given out.
    struct Place
    {
        std::size_t line = 0;
        std::size_t row = 0;
        std::size_t odd = 0;
    };
    // What a thread needs while it reads a line.
    struct Desk
    {
        std::vector<std::string_view> cells;
        std::vector<std::size_t> unread;
        // Of the present line.
        std::size_t count = 0;
        bool isNames = false;
    };

    void passHead();
    bool take(Piece& piece);
    void read(Piece& piece) const;
    void makeRoom(Piece& piece) const;
    Kind readLine(Piece& piece, std::string_view text, Desk& desk, Found& found, Odd& odd) const;
    Kind readCells(Piece& piece, std::string_view text, Desk& desk, Found& found) const;
    bool holdsData(std::string_view line) const;
    // Gives the next line of a piece to the clock, and where it is a row, its values.
    void show(Piece& piece, Place& place);
    void showCells(Piece& piece, const Place& place);
    STLTrouble lineTrouble(const Piece& piece, const Place& place, STLProblem problem) const;
    bool timesAreWanted() const;
    bool readTime(Piece& piece, std::size_t row);
    bool takeOddValues(Piece& piece, const Place& place);
    std::span<std::string_view> cellsOf(Piece& piece, std::size_t row) const;
    std::span<float> valuesOf(Piece& piece, std::size_t row) const;
    float valueOf(std::size_t column, std::string_view cell, std::uint64_t number, Found& found,
                  std::map<std::size_t, STLTexts>* texts) const;
    STLTrouble trouble(std::uint64_t number, STLProblem problem, int column, std::string_view text) const;

    const STLFormat& m_format;
    STLPass m_pass;
    LineReader m_reader;
    STLClock m_clock;
    STLTitles m_titles;
    STLTables m_tables;
    STLPlainRow m_plain;
    std::vector<std::size_t> m_takenColumns;
    bool m_numbersTexts = false;  // so values are read in the order of the rows
    std::uint64_t m_lineNumber = 0;
    std::span<const float> m_values;
    std::vector<STLTrouble> m_troubles;
    STLLosses m_losses;
    STLBreaks m_breaks;
    bool m_anyRow = false;
    bool m_behindBreak = false;  // and behind a row
    bool m_hasRow = false;
    double m_seconds = 0.0;
    double m_lastSeconds = 0.0;  // of the row before
    std::map<std::size_t, STLTexts> m_texts;
};

}  // namespace veltrac
