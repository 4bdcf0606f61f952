// A smart tool log on its way to a ts-file: detect how it is written, check what it holds, write it.
//
// The file is read line by line, a long one twice: memory does not grow with it beyond what STLKeptRows
// keeps.
#pragma once

#include <cstdint>
#include <filesystem>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "converters/FileState.h"
#include "converters/STLCheck.h"
#include "converters/STLDetect.h"
#include "converters/STLKeptRows.h"
#include "core/Progress.h"

class TSFILE;

namespace veltrac {

class STLWriter;

}  // namespace veltrac

class STLObject
{
public:
    explicit STLObject(std::filesystem::path file);

    const std::filesystem::path& file() const { return m_file; }
    // Unpacks it where it is packed. Throws as PlainText does.
    veltrac::JobOutcome unpack(const veltrac::Progress& progress);
    // Its plain bytes, unpacked when they are asked for first. Throws likewise.
    const veltrac::PlainText& text();
    // What detection found and the user changed.
    veltrac::STLFormat& format() { return m_format; }
    const veltrac::STLFormat& format() const { return m_format; }

    // Throws STLError and std::system_error.
    void detect();
    void detect(char separator, char decimal, char grouping = 0);

    // The first pass, left out where isRead(), and what becomes of its findings. Throws STLError where
    // nothing can come of it (no rows, no columns, 2 GB or more), std::system_error.
    veltrac::JobOutcome check(const veltrac::Progress& progress);
    const veltrac::STLCheck& found() const { return m_found; }
    // Whether the last pass saw the file as it is now, read as the format reads it now: check() takes no
    // time then.
    bool isRead() const;

    // After a check: writes header and rows into a file of found().samples and found().columns. Reads the
    // text a second time where it is long or was written before. Throws STLError where the file has changed
    // since the check, the TS exceptions, std::system_error.
    veltrac::JobOutcome write(TSFILE& target, const veltrac::Progress& progress);

    // Names that the taken columns get: at most 11 bytes, each one once, none that means time.
    std::vector<std::string> columnNames() const;
    // Description of a column: its whole name and its unit in brackets, or what its numbers mean.
    std::string columnDescription(std::size_t column) const;

private:
    veltrac::JobOutcome readAll(const veltrac::Progress& progress);
    veltrac::JobOutcome readThrough(const veltrac::Progress& progress, bool& wrongOrder);
    // Both hand the chosen rows to a writer: as the check has kept them, and from the text again.
    veltrac::JobOutcome writeKept(veltrac::STLWriter& writer, const veltrac::Progress& progress);
    veltrac::JobOutcome writeFromText(veltrac::STLWriter& writer, const veltrac::Progress& progress);
    // The time that the writer is given for a row.
    double writtenTime(double seconds, double lag, std::uint64_t chosen) const;
    veltrac::STLError changed() const;
    bool isChosen(std::uint64_t row) const;
    void settleResult();
    void settleStart();
    void writeHeader(TSFILE& target) const;

    std::filesystem::path m_file;
    std::optional<veltrac::PlainText> m_text;
    veltrac::STLFormat m_format;
    std::optional<veltrac::STLFormat> m_readFormat;  // of the last whole pass
    veltrac::FileState m_readState;
    veltrac::STLCheck m_read;                      // what it found
    std::unique_ptr<veltrac::STLKeptRows> m_kept;  // the chosen rows of it, until they were written
    veltrac::STLCheck m_found;                     // the same, with what becomes of it
};

namespace veltrac {

// Writes the whole result beside `target` and puts it in its place when it is complete. The old target is
// untouched where the job fails or is cancelled.
JobOutcome importSTL(STLObject& log, const std::filesystem::path& target, const Progress& progress);

}  // namespace veltrac
