// The data rows of a smart tool log, one after the other: values, time and what was not understood.
#pragma once

#include <array>
#include <limits>
#include <map>
#include <optional>
#include <string>
#include <vector>

#include "converters/DateSteps.h"
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
    std::uint64_t line() const { return m_lineNumber; }
    std::size_t missing() const { return m_missing; }
    // What was not understood in the present line.
    const std::vector<STLTrouble>& troubles() const { return m_troubles; }

    // Lines that are no row although data stand there.
    std::uint64_t skipped() const { return m_skipped; }
    // Names lines that stand between the rows once more.
    std::uint64_t titles() const { return m_titles; }
    // The first row's place on the wall clock, or its number of seconds (elapsed times).
    Micros firstWall() const { return m_firstWall; }
    double firstSeconds() const { return m_firstSeconds; }
    // True where a date cannot be read in the format's order of day and month, but in the other one; and
    // where one can be read in the format's order alone.
    bool contradictsOrder() const { return m_contradictsOrder; }
    // The dates whose order of day and month no date tells.
    const DateSteps& dates() const { return m_dates; }
    bool provesOrder() const { return m_provesOrder; }
    // How finely the rows tell their time, in seconds, as far as they have been read.
    double resolution() const { return m_resolution; }
    // Whether a stamp has named its zone.
    bool zoned() const { return m_zoned; }
    // By how much the clock has been set back (or forward, below 0) since the first row, in microseconds, and
    // how often it was set.
    Micros clockShift() const { return m_clockShift; }
    std::uint64_t clockChanges() const { return m_clockChanges; }
    // Of the columns whose texts are numbered, by column.
    const std::map<std::size_t, STLTexts>& texts() const { return m_texts; }

    std::uint64_t position() const { return m_reader.position(); }
    std::uint64_t fileBytes() const { return m_reader.fileBytes(); }

private:
    bool holdsData(std::string_view line) const;
    bool readCells();
    bool isTitle() const;
    bool readTime();
    std::optional<double> rowSeconds();
    std::optional<double> sinceFirst(std::optional<Micros> wall);
    void followClock(Micros wall);
    std::optional<Micros> stampAt(std::string_view cell);
    std::optional<Micros> rareStamp(std::string_view cell);
    std::optional<double> numberAt(std::string_view cell);
    bool timeAt(std::string_view text, Micros& micros);
    bool isLastDate(std::string_view text) const;
    std::optional<Micros> dateAt(std::string_view text);
    void readValues();
    float valueOf(std::size_t column, std::string_view cell);
    void note(STLProblem problem, int column, std::string_view text);

    const STLFormat& m_format;
    STLPass m_pass;
    LineReader m_reader;
    std::uint64_t m_lineNumber = 0;
    std::vector<std::size_t> m_taken;  // columns
    std::vector<std::string_view> m_cells;
    std::vector<float> m_values;
    std::size_t m_missing = 0;
    std::vector<STLTrouble> m_troubles;
    std::uint64_t m_skipped = 0;
    std::vector<std::size_t> m_headed;  // columns of numbers with a heading
    std::uint64_t m_titles = 0;

    bool m_hasRow = false;
    bool m_contradictsOrder = false;
    bool m_provesOrder = false;
    DateSteps m_dates;
    int m_unreadable = -1;  // the column at which a time could not be read
    Micros m_days = 0;      // midnights that times of day have passed
    Micros m_lastTime = 0;
    double m_seconds = 0.0;
    bool m_hasFirst = false;
    Micros m_firstWall = 0;
    double m_firstSeconds = 0.0;
    double m_firstNumber = 0.0;
    std::optional<std::int64_t> m_firstTicks;  // of nanoseconds, where it has no decimals
    double m_resolution = std::numeric_limits<double>::infinity();
    bool m_zoned = false;
    double m_secondsPerUnit = 1.0;  // of times that are numbers
    Micros m_lastWall = 0;
    Micros m_lastStep = 0;
    Micros m_clockShift = 0;
    std::uint64_t m_clockChanges = 0;
    // Most rows bear the date of the row before.
    std::array<char, 16> m_lastDate = {};
    std::size_t m_lastDateSize = 0;
    Micros m_lastMidnight = 0;
    std::map<std::size_t, STLTexts> m_texts;
};

}  // namespace veltrac
