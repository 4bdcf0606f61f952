// An open ts-file: the one class through which the program creates, reads and writes its time series.
//
// A ts-file holds `samples` rows of `columns` 32-bit floats with a constant sample time, a description, a
// time unit, a start, and for each column a name, a description and a time stamp (docs/ts-file.md).
// Samples and columns count from 1. One header image, one column block and one data block are kept in
// memory. Single values move one 512-byte block a transfer, runs of them up to 256 KiB through a buffer of
// that size, so a file of any length costs the same memory.
//
// Failures are the TS exceptions; the object stays usable after each of them. Header changes go to the file
// at once, data when another block is wanted, at flush() and in the destructor, which swallows failures:
// a job that writes calls flush(), and catches, before it lets go.
//
// One object is used by one thread at a time; different objects may be used on different threads.
#pragma once

#include <cstdint>
#include <ctime>
#include <functional>
#include <memory>
#include <span>
#include <string>

#include "core/BlockFile.h"
#include "core/DataBlock.h"
#include "core/DataRuns.h"
#include "core/TsHeader.h"

class TSFILE
{
public:
    // -- The virtual operations, in the order that their callers count on --

    // Flushes the data block, closes the file; never throws.
    virtual ~TSFILE();

    // The first column of that name, or 0. Trailing bytes of value 32 and below do not count on either
    // side; at most 12 bytes are compared. Throws TS::IO_ERROR where the column blocks cannot be read.
    virtual std::uint32_t columnNumber(const char* name);

    virtual std::uint32_t ringStart();   // 0: no ring file; else the number of the oldest sample held
    virtual std::uint32_t lastSample();  // ring files: the highest sample number written

    // The column's name; with newName, at most 12 bytes of it are stored first. The text stands in one
    // buffer shared by all objects of a thread: copy it before the next call. Throws TS::ILL_COLUMN.
    virtual const char* columnName(std::uint32_t col, const char* newName = nullptr);

    // The name as it was given when the file was opened, or null.
    virtual const char* fileName();

    // As columnName(), for the description of at most 45 bytes.
    virtual const char* columnDescription(std::uint32_t col, const char* newText = nullptr);

    // The file's description, at most 59 bytes; with newText it is stored first. Valid until the next call.
    virtual const char* description(const char* newText = nullptr);

    // The time unit, at most 39 bytes; as description().
    virtual const char* timeUnit(const char* newText = nullptr);

    // columnName(), or null where it is empty.
    virtual const char* columnNameOrNull(std::uint32_t col);

    // -- Making and opening --

    // Creates tsFileName(name), truncating a file of that name. timeMode 0: no time column, 1: one column
    // "Time" before the others, 2: "Time" and "Time32" before the others; else as 0.
    // Throws TS::CREATE_ERROR, or TS::IO_ERROR: a file of 2 GiB or more is refused before anything is
    // touched, and a file that could not be completed is removed again.
    TSFILE(const char* name, std::uint32_t samples, std::uint32_t columns, int timeMode);

    // Opens tsFileName(name). Throws TS::OPEN_ERROR, TS::IO_ERROR or TS::NOT_TS_FILE. The counts are
    // taken as the header claims them; only the access that cannot be served throws.
    TSFILE(const char* name, bool readOnly);

    // Opens a duplicate of a descriptor, which stays the caller's.
    TSFILE(int descriptor, bool readOnly);

    TSFILE(const TSFILE&) = delete;
    TSFILE& operator=(const TSFILE&) = delete;

    // -- Header and columns --

    std::uint32_t samples();
    std::uint32_t columns();
    // For callers that copy the whole file byte for byte; borrowed.
    int descriptor() const noexcept { return m_file.descriptor(); }
    bool readOnly() const noexcept { return m_file.readOnly(); }

    // The setters store what is not negative (not 0 for startSeconds) and write the header.
    float dt(float newDt = -1.0F);                             // sample time, seconds
    float startTime(float newStart = -1.0F);                   // seconds, added to startSeconds()
    std::uint32_t startSeconds(std::uint32_t newSeconds = 0);  // seconds since the epoch

    // Stores the start as it is, in one write: a series whose own seconds begin at 0 starts at -dt, so that
    // its first sample lies at 0.
    void setStart(std::uint32_t seconds, float time);

    // Takes over another file's description, time unit, sample time and start, bits as they are.
    void copyHeader(TSFILE& from);

    // A stamp is seven integers: 0, second, minute, hour, day, month from 1, year.
    void columnStamp(std::uint32_t col, int out[7]);
    void setColumnStamp(std::uint32_t col, const int in[7]);
    // Stores the local calendar time of t; 0 means now.
    void stampColumn(std::uint32_t col, std::time_t t = 0);
    // The stamp as a time, by mktime(); -1 where it is none.
    std::time_t columnTime(std::uint32_t col);
    // Lets `change` set the records of the columns `first` to `last`, with some thousands a transfer: for
    // files that may have millions of them. What it throws passes; the transfers before stay written.
    // Throws as the setters do.
    void changeColumns(std::uint32_t first, std::uint32_t last,
                       const std::function<void(std::uint32_t col, veltrac::ColumnRecord record)>& change);

    // Grows the samples; a count not above the present one does nothing. New values are 0.
    // Throws TS::IO_ERROR, before anything is written where the file would reach 2 GiB.
    void resize(std::uint32_t newCount);
    void setSize(std::uint32_t samples, std::uint32_t columns);
    // Adds columns. Only for files without samples: values that stand there keep their place in the
    // section and so move to other samples.
    void resizeColumns(std::uint32_t newCount);

    // Writes the data block if it has changed; with the header also the header and the column block, if
    // their bytes differ from the file's. Throws TS::READONLY_VIOLATION on a file opened for reading.
    void flush(bool withHeader);

    // On: makes it a ring file. Off: rotates the data so that the oldest sample is row 1.
    void setRingMode(bool on);
    // Reads the header again, waiting for a writer in another process; true where lastSample() has changed.
    // On failure the header that was held stays.
    bool refresh();
    // ringStart() as it stands in the file now, while the header that is held stays: what a writer has
    // overwritten since it was read lies before it.
    std::uint32_t ringStartOnDisk();

    // -- Data --

    // One value. Neither sample 0 nor the column is checked here: this is the inner loop of everything.
    // Throws TS::ILL_SAMPLE beyond the last sample, TS::IO_ERROR where the block cannot be read.
    float value(std::uint32_t sample, std::uint32_t col)
    {
        std::uint64_t element = std::uint64_t{sample - 1U} * m_header.columns + (col - 1U);
        if (sample > m_plainSamples) [[unlikely]]
            element = elementAnywhere(col, sample);
        return native(m_data.at(element));
    }

    // Throws TS::ILL_SAMPLE and TS::ILL_COLUMN (flag 0). In a ring file any sample from 1 up can be written.
    void setValue(std::uint32_t sample, std::uint32_t col, float v)
    {
        if (sample - 1U >= m_plainSamples || col - 1U >= m_header.columns) [[unlikely]]
            sample = requireWritable(col, sample);
        m_data.forWriting(m_data.elementIndex(col, sample)) = native(v);
    }

    // Runs of samples, moved many blocks at once. They do what value() and setValue() do for each of them,
    // and throw the same; what was moved before a failure stays moved.
    // readColumn/writeColumn: out[i], in[i] is sample first + i of column col.
    void readColumn(std::uint32_t col, std::uint32_t first, std::span<float> out);
    // Several columns in one pass over the rows; `out` has room for `count` values.
    struct ColumnRun
    {
        std::uint32_t column;
        float* out;
    };
    void readColumns(std::uint32_t first, std::uint32_t count, std::span<const ColumnRun> runs);
    void writeColumn(std::uint32_t col, std::uint32_t first, std::span<const float> in);
    // readRows/writeRows: `count` rows from sample `first`, row by row, columns() values each.
    void readRows(std::uint32_t first, std::uint32_t count, float* out);
    void writeRows(std::uint32_t first, std::uint32_t count, const float* in);

    // One row of columns() values. writeRow() raises lastSample() to the sample.
    void readRow(std::uint32_t sample, float* out);
    void readRow(std::uint32_t sample, double* out);
    void writeRow(std::uint32_t sample, const float* in, bool flush);
    void writeRow(std::uint32_t sample, const double* in, bool flush);

    // -- Time --

    // How the file tells its time: 0 by dt, 1 by "Time", 2 by "Time" and "Time32".
    int timeMode() const noexcept { return m_timeMode; }
    std::uint32_t timeColumn() const noexcept { return m_timeColumn; }
    std::uint32_t time32Column() const noexcept { return m_time32Column; }

    // The row without its time columns, in order; returns its time in seconds since the epoch.
    // Throws TS::NO_TIME_COLUMN.
    double readRowWithTime(std::uint32_t sample, float* out);

    // The time of a sample in seconds since the epoch; sample 0 means the oldest. Without a "Time" column
    // sample s lies s * dt after the start, so sample 1 lies one dt after it.
    double sampleTime(std::uint32_t sample);
    // Stores a sample's time in the time columns; does nothing where there are none.
    void setSampleTime(std::uint32_t sample, double t);
    // Writes the next row, at time t; `in` holds the values of the columns that are no time columns.
    // Throws TS::NO_TIME_COLUMN, TS::ILL_TIME where t lies before the file's start.
    void appendRowWithTime(double t, const float* in, bool flush);
    // The last sample whose time is at or before t; the first one where there is none.
    std::uint32_t findSample(double t);
    // Moves the start of a ring file forward to its oldest sample when that lies `threshold` seconds or
    // more behind it, so that the floats of "Time" stay fine. Tells about it unless quiet.
    void adjustTime(bool quiet, float threshold);
    // Names column col (0: the first) "Time", and col32 "Time32" where it is not 0. A "Time" that is
    // there already becomes "_Time". Throws TS::ILL_COLUMN.
    void makeTimeColumns(std::uint32_t col, std::uint32_t col32);

    // -- Static helpers; their texts stand in buffers of the calling thread --

    // The file name that a name given to the constructors means: a number from 1 to 9998 at its beginning
    // gives ts%04d.ts, else the extension becomes ".ts".
    static const char* tsFileName(const char* text);
    static const char* formatTime(double seconds, bool utc, const char* format);

private:
    void createContents(std::uint32_t samples, std::uint32_t columns, int timeMode);
    void openExisting();
    void lookUpTimeColumns();
    std::uint32_t columnAmong(std::uint32_t count, const char* name);
    void requireTimeColumn();
    std::uint32_t firstAtOrAfter(double t, std::uint32_t before, std::uint32_t high);
    std::uint32_t oldestSample() const noexcept { return m_header.ringStart == 0 ? 1 : m_header.ringStart; }

    // Makes sure that the header is held; with a column also that its block is.
    void readHeader(std::uint32_t col, int retries);
    void writeHeader();
    void writeColumnBlock();
    std::size_t readColumnBlocks(std::uint32_t first, std::span<veltrac::Block> blocks) const;
    void writeColumnBlocks(std::uint32_t first, std::span<const veltrac::Block> blocks);
    void handLayoutToData();
    const char* storedText(veltrac::TextField field, const char* newText, char* out);
    unsigned char* columnRecord(std::uint32_t col);
    template <typename Change>
    void changeColumn(std::uint32_t col, Change change);
    // Memory never claims what the file refused.
    template <typename T>
    void storeInHeader(T veltrac::TsHeader::*field, T v)
    {
        const T before = m_header.*field;
        m_header.*field = v;
        try {
            writeHeader();
        } catch (...) {
            m_header.*field = before;
            throw;
        }
    }
    // Between the file's byte order and the machine's, either way.
    float native(float v) const noexcept
    {
        return m_order == veltrac::ByteOrder::Swapped ? veltrac::swapBytes(v) : v;
    }
    // Throws nothing itself: the slot of an element that there is not does.
    std::uint64_t elementAnywhere(std::uint32_t col, std::uint32_t sample) noexcept;
    void requireSample(std::uint32_t& sample);
    std::uint32_t requireWritable(std::uint32_t col, std::uint32_t sample);

    void addColumnRecords(std::uint32_t newCount);
    void moveData(std::uint64_t bytes, std::uint64_t shift);
    void writeZeros(std::uint64_t from, std::uint64_t to);
    bool unfold();
    void rotate();
    template <typename Value>
    void readRowOf(std::uint32_t sample, Value* out);
    template <typename Value>
    void writeRowOf(std::uint32_t sample, const Value* in, bool flush);
    enum class Direction { Read, Write };
    struct RingPart
    {
        std::uint32_t row;
        std::uint64_t count;
    };
    RingPart ringPart(std::uint32_t sample, std::uint64_t count) const noexcept;
    void requireRun(Direction direction, std::uint32_t first, std::size_t count);

    std::string m_name;
    veltrac::BlockFile m_file;
    veltrac::DataBlock m_data;
    veltrac::DataRuns m_runs{m_file, m_data};
    veltrac::TsHeader m_header;
    bool m_headerHeld = false;
    // The samples of a held, ordinary file, whose elements need no further thought; else 0.
    std::uint32_t m_plainSamples = 0;
    veltrac::ByteOrder m_order = veltrac::ByteOrder::Unknown;
    bool m_columnMajor = false;  // only while columns are being added
    int m_timeMode = 0;
    std::uint32_t m_timeColumn = 0;
    std::uint32_t m_time32Column = 0;
    std::uint32_t m_dataOffset = 0;

    veltrac::Block m_headerImage{};
    veltrac::Block m_headerOnDisk{};
    std::uint32_t m_columnBlockNumber = 0;  // 0: none
    std::uint32_t m_columnIndex = 0;        // of the current column inside the block
    veltrac::Block m_columnBlock{};
    veltrac::Block m_columnBlockOnDisk{};
    char m_descriptionText[veltrac::kFileDescription.width + 1] = {};
    char m_timeUnitText[veltrac::kTimeUnit.width + 1] = {};
};
