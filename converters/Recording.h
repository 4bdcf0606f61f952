// Recording: rows come in from a stream and go into a ring file, while others read that.
//
// The caller hands over what it has read; a thread of the recording's own writes it at least every `flush`
// seconds, through RingWriter: whatever kills the process, only rows of that last span are lost. What waits
// to be written takes a fixed room; who brings more waits as well.
#pragma once

#include <cstdint>
#include <filesystem>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include "converters/RowReader.h"
#include "core/RingFile.h"

namespace veltrac {

enum class RecordTime { Steps, Time, Time32 };  // by dt, or by the times that rows begin with

struct RecordPlan
{
    std::filesystem::path file;
    RingShape shape{};  // of a file that is made; of one that is there only what is empty here is taken
    RecordTime time = RecordTime::Steps;
    bool givesTime = false;   // whether `time` was asked for, and may not differ from the file's
    bool givesStep = false;   // the same for shape.dt
    bool frames = false;      // 32-bit floats instead of text
    TextRows::Layout text{};  // of text; without cells they are the columns in their order
    double flushSeconds = 0.2;
    // A file that goes on by steps gets missing rows for the time in which nothing was recorded.
    bool fillsGap = true;
};

struct RecordReport
{
    RowCounts counts{};
    std::uint64_t gapRows = 0;     // missing rows for the time before this recording
    std::uint64_t timeFaults = 0;  // rows whose time was missing or before the start: they got the one before
    std::uint64_t timesBackwards = 0;
    std::uint32_t firstSample = 0;  // of this recording; 0 where no row came
    std::uint32_t lastSample = 0;
    bool isNew = false;                // the file was made
    std::vector<std::string> notes{};  // what else is to be said
};

class Recording
{
public:
    // Makes the file, or opens it to go on. Throws RingRefusal (what the plan asks does not fit the file, in
    // words for the user), the TS exceptions and std::system_error.
    explicit Recording(RecordPlan plan);
    // Rows that were handed over and not written are lost; finish() writes them.
    ~Recording();
    Recording(const Recording&) = delete;
    Recording& operator=(const Recording&) = delete;

    // What was read next. Throws what keeps rows from being written.
    void feed(std::string_view bytes);
    // The end: `whole` where the input has ended by itself. Writes what is left. Throws as feed(); report()
    // tells what was recorded all the same.
    void finish(bool whole);
    RecordReport report() const;
    // Of what was fed so far.
    const RowCounts& counts() const noexcept;

private:
    class Writer;

    void takeRows();
    void startWith(double firstTime);
    void fillGap();
    double usableTime(double time);

    RecordPlan m_plan;
    std::unique_ptr<Writer> m_writer;
    std::unique_ptr<TextRows> m_text;
    std::unique_ptr<FrameRows> m_frames;
    Rows m_rows;
    std::vector<float> m_out;  // rows on their way to the writer
    RecordReport m_report;
    std::size_t m_columns = 0;  // that are no time
    bool m_begun = false;
    double m_start = 0.0;     // of the file's times, seconds since the epoch
    double m_lastTime = 0.0;  // of the newest row, seconds since the epoch
};

}  // namespace veltrac
