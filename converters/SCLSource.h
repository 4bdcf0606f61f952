// One single column log: a text file with one value a line, under an optional head (docs/scl.md).
#pragma once

#include <cstdint>
#include <filesystem>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "converters/PlainText.h"
#include "converters/STLToken.h"
#include "converters/TimeStamps.h"
#include "core/LineReader.h"

namespace veltrac {

// What stands before and in the lines, found by detection; name, unit and description may be changed.
struct SCLSource
{
    std::filesystem::path file;
    std::shared_ptr<const PlainText> text;  // its bytes
    std::string name;                       // UTF-8
    std::string unit;
    std::string description;
    std::optional<double> step;    // seconds from value to value, where the file tells
    double stepSlack = 0.0;        // by how much it may be another, where rounded times tell it
    std::optional<Micros> start;   // local wall clock, one step before the first value
    bool skipsFirst = false;       // the first number of a line is an index or a time
    bool decimalCommas = false;    // commas are taken for decimal signs
    bool inTurn = false;           // several numbers a line are read one after the other
    bool unevenTimes = false;      // the lines begin with clock times that no step explains
    std::uint64_t secondName = 0;  // the first line behind values that tells another name; 0 for none
};

// Throws STLError (no number, binary data) and std::system_error.
SCLSource detectSource(const std::filesystem::path& file, std::uint64_t skipLines);

// The values of a source, one after the other.
class SCLReader
{
public:
    // Borrows the source. Throws std::system_error.
    SCLReader(const SCLSource& source, std::uint64_t skipLines);

    // Goes to the next value; false at the end.
    bool next();

    float value() const { return m_value; }  // NaN where it is missing
    std::uint64_t line() const { return m_lineNumber; }
    // Text that is neither a number nor a marker of missing values; empty where all is well.
    const std::string& trouble() const { return m_trouble; }
    std::uint64_t position() const { return m_lines.position(); }
    std::uint64_t fileBytes() const { return m_lines.fileBytes(); }

private:
    bool nextLine();
    void take(const STLToken& token);

    const SCLSource& m_source;
    LineReader m_lines;
    std::uint64_t m_skipLines;
    std::uint64_t m_lineNumber = 0;
    std::vector<STLToken> m_tokens;
    std::size_t m_next = 0;
    float m_value = 0.0F;
    std::string m_trouble;
    bool m_started = false;  // values have been seen: what looks like a head line is a trouble now
};

}  // namespace veltrac
