#include "converters/Recording.h"

#include <algorithm>
#include <bit>
#include <chrono>
#include <cmath>
#include <condition_variable>
#include <csignal>
#include <cstring>
#include <exception>
#include <functional>
#include <limits>
#include <mutex>
#include <numeric>
#include <optional>
#include <thread>
#include <utility>

#include "core/FailureText.h"
#include "core/FileTime.h"
#include "core/NumberTexts.h"
#include "core/RingWriter.h"
#include "core/TSFILE.h"
#include "core/TsNames.h"

namespace veltrac {

namespace {

using Clock = std::chrono::steady_clock;
using Seconds = std::chrono::duration<double>;

constexpr std::size_t kMostWaiting = std::size_t{4} << 20;  // floats, twice: what waits and what is written
constexpr std::size_t kTimeFloats = sizeof(double) / sizeof(float);
constexpr double kSurelyEpoch = 1e8;  // seconds; no measurement has run for so long
constexpr int kGapDigits = 3;
constexpr std::uint32_t kFewNumbers = 1U << 28;

double nowSeconds()
{
    return Seconds(std::chrono::system_clock::now().time_since_epoch()).count();
}

// Signals go to the threads that read.
class BlockedSignals
{
public:
    BlockedSignals()
    {
        sigset_t all;
        sigfillset(&all);
        pthread_sigmask(SIG_SETMASK, &all, &m_before);
    }
    ~BlockedSignals() { pthread_sigmask(SIG_SETMASK, &m_before, nullptr); }
    BlockedSignals(const BlockedSignals&) = delete;
    BlockedSignals& operator=(const BlockedSignals&) = delete;

private:
    sigset_t m_before{};
};

}  // namespace

// The thread that writes.
//
// Rows that wait have their time, if any, in front as a double: only when they are written it is known from
// where the file's times count.
class Recording::Writer
{
public:
    explicit Writer(const RecordPlan& plan)
        : m_ring(std::make_unique<RingWriter>(plan.file)),
          m_time(plan.time),
          m_flush(plan.flushSeconds),
          m_step(static_cast<double>(plan.shape.dt))
    {
    }
    ~Writer()
    {
        {
            const std::lock_guard guard(m_lock);
            m_gaveUp = true;
        }
        m_news.notify_all();
        if (m_thread.joinable())
            m_thread.join();
    }
    Writer(const Writer&) = delete;
    Writer& operator=(const Writer&) = delete;

    // Only before begin() and after finish().
    RingWriter& ring() { return *m_ring; }

    void begin()
    {
        const BlockedSignals forAll;
        m_thread = std::thread([this] { run(); });
    }

    // Empties `rows`. Waits where too many of them wait already.
    void append(std::vector<float>& rows)
    {
        std::unique_lock guard(m_lock);
        m_room.wait(guard, [this] { return m_waiting.size() < kMostWaiting || m_failure; });
        throwFailure();
        if (m_waiting.empty()) {
            m_oldest = Clock::now();
            std::swap(m_waiting, rows);
        } else {
            m_waiting.insert(m_waiting.end(), rows.begin(), rows.end());
        }
        rows.clear();
        guard.unlock();
        m_news.notify_all();
    }

    void finish()
    {
        {
            const std::lock_guard guard(m_lock);
            m_ends = true;
        }
        m_news.notify_all();
        if (m_thread.joinable())
            m_thread.join();
        throwFailure();
    }

    std::vector<std::string> takeNotes()
    {
        const std::lock_guard guard(m_lock);
        return m_notes;
    }

private:
    void throwFailure() const
    {
        if (m_failure)
            std::rethrow_exception(m_failure);
    }

    // What waits, when its time has come; nothing at the end.
    bool take(std::vector<float>& rows)
    {
        std::unique_lock guard(m_lock);
        const auto isEnd = [this] { return m_ends || m_gaveUp; };
        m_news.wait(guard, [&] { return isEnd() || !m_waiting.empty(); });
        const auto due = m_oldest + std::chrono::duration_cast<Clock::duration>(m_flush);
        m_news.wait_until(guard, due, [&] { return isEnd() || m_waiting.size() >= kMostWaiting; });
        rows.clear();
        if (m_gaveUp || m_waiting.empty())
            return false;
        std::swap(rows, m_waiting);
        guard.unlock();
        m_room.notify_all();
        return true;
    }

    void run()
    {
        try {
            std::vector<float> rows;
            while (take(rows)) {
                placeTimes(rows);
                m_ring->write(rows);
                keepFine(rows);
            }
        } catch (...) {
            const std::lock_guard guard(m_lock);
            m_failure = std::current_exception();
        }
        m_room.notify_all();
    }

    void placeTimes(std::vector<float>& rows) const
    {
        if (m_time == RecordTime::Steps)
            return;
        const std::size_t columns = m_ring->columns();
        const std::size_t inFile = m_time == RecordTime::Time ? 1 : 2;
        const std::size_t width = columns - inFile + kTimeFloats;
        const std::size_t count = rows.size() / width;
        for (std::size_t i = 0; i < count; ++i) {
            const float* const from = &rows[i * width];
            float* const to = &rows[i * columns];
            double time = 0.0;
            std::memcpy(&time, from, sizeof time);
            time -= m_ring->start();
            if (m_time == RecordTime::Time32) {
                const double whole = std::clamp(std::floor(time), 0.0, static_cast<double>(UINT32_MAX));
                to[1] = std::bit_cast<float>(static_cast<std::uint32_t>(whole));
                time -= whole;
            }
            to[0] = static_cast<float>(time);
            std::copy(from + kTimeFloats, from + width, to + inFile);
        }
        rows.resize(count * columns);
    }

    // Times and sample numbers that have run far begin anew, on a copy that takes the ring's place.
    void keepFine(const std::vector<float>& rows)
    {
        if (m_ring->numbersLeft() < kFewNumbers)
            renew([](const std::filesystem::path& file) {
                renumberRing(file);
                return true;
            });
        if (m_time == RecordTime::Time &&
            !isFineTime(static_cast<double>(rows[rows.size() - m_ring->columns()]), m_step) &&
            m_ring->lastSample() >= m_nextLook) {
            const bool isDone = renew(rebaseRing);
            // Where it gained nothing, not before the ring has come round once more.
            m_nextLook = isDone ? 0 : m_ring->lastSample() + m_ring->samples() / 2;
        }
    }

    // A copy that cannot be made leaves the ring as it is.
    bool renew(const std::function<bool(const std::filesystem::path& file)>& change)
    {
        const std::filesystem::path file = m_ring->path();
        bool isDone = false;
        try {
            isDone = change(file);
        } catch (...) {
            const std::lock_guard guard(m_lock);
            const std::string note = "the times could not be made finer: " + reasonOfFailure();
            if (m_notes.empty())
                m_notes.push_back(note);
            return false;
        }
        if (isDone)
            m_ring = std::make_unique<RingWriter>(file);
        return isDone;
    }

    std::unique_ptr<RingWriter> m_ring;
    RecordTime m_time;
    Seconds m_flush;
    double m_step;
    std::uint32_t m_nextLook = 0;  // sample
    std::thread m_thread;
    std::mutex m_lock;
    std::condition_variable m_news;
    std::condition_variable m_room;
    std::vector<float> m_waiting;
    Clock::time_point m_oldest;
    bool m_ends = false;
    bool m_gaveUp = false;
    std::exception_ptr m_failure;
    std::vector<std::string> m_notes;
};

namespace {

// Looks whether the plan fits the file that goes on, and takes over what it leaves open.
void fitToFile(RecordPlan& plan)
{
    const auto file = openTsFile(plan.file.string(), true);
    if (file->ringStart() == 0)
        throw RingRefusal("it is no ring file: its rows are samples that stay");
    const auto mode = static_cast<RecordTime>(file->timeColumn() == 0 ? 0 : file->timeMode());
    if (plan.givesTime && plan.time != mode)
        throw RingRefusal("it tells its time in another way: leave --time and --time32 as they were");
    plan.time = mode;
    if (mode != RecordTime::Steps &&
        (file->timeColumn() != 1 || (mode == RecordTime::Time32 && file->time32Column() != 2)))
        throw RingRefusal("its time columns do not stand before the others");
    if (plan.shape.samples != 0 && plan.shape.samples != file->samples())
        throw RingRefusal("it has room for " + std::to_string(file->samples()) + " samples, not for " +
                          std::to_string(plan.shape.samples));
    if (plan.givesStep && plan.shape.dt != file->dt())
        throw RingRefusal("it has another sample time");
    plan.shape.samples = file->samples();
    plan.shape.dt = file->dt();
    const auto times = static_cast<std::uint32_t>(mode);
    std::vector<RingColumn> columns;
    for (std::uint32_t c = times + 1; c <= file->columns(); ++c)
        columns.push_back({file->columnName(c), file->columnDescription(c)});
    const bool fits =
        std::equal(plan.shape.columns.begin(), plan.shape.columns.end(), columns.begin(), columns.end(),
                   [](const RingColumn& a, const RingColumn& b) { return a.name == b.name; });
    if (!plan.shape.columns.empty() && !fits)
        throw RingRefusal("its columns are others");
    plan.shape.columns = std::move(columns);
}

// When the newest sample of a file was, in seconds since the epoch; 0 where it has none.
double newestMoment(const std::filesystem::path& path)
{
    const auto file = openTsFile(path.string(), true);
    const FileTime time(*file);
    return time.rows() == 0 ? 0.0 : time.moment(time.lastSample());
}

}  // namespace

Recording::Recording(RecordPlan plan) : m_plan(std::move(plan))
{
    std::error_code none;
    m_report.isNew = !std::filesystem::exists(m_plan.file, none);
    if (!m_report.isNew) {
        fitToFile(m_plan);
        m_lastTime = newestMoment(m_plan.file);
    } else {
        m_plan.shape.timeMode = static_cast<int>(m_plan.time);
        makeRingFile(m_plan.file, m_plan.shape);
    }
    m_columns = m_plan.shape.columns.size();
    const bool timed = m_plan.time != RecordTime::Steps;
    if (m_plan.frames) {
        m_frames = std::make_unique<FrameRows>(m_columns, timed);
    } else {
        m_plan.text.timed = timed;
        if (m_plan.text.cells.empty()) {
            m_plan.text.cells.resize(m_columns);
            std::iota(m_plan.text.cells.begin(), m_plan.text.cells.end(), std::size_t{0});
        }
        m_text = std::make_unique<TextRows>(m_plan.text);
    }
    m_writer = std::make_unique<Writer>(m_plan);
    m_report.lastSample = m_writer->ring().lastSample();
}

Recording::~Recording() = default;

void Recording::feed(std::string_view bytes)
{
    m_text ? m_text->feed(bytes, m_rows) : m_frames->feed(bytes, m_rows);
    takeRows();
}

void Recording::finish(bool whole)
{
    m_text ? m_text->end(whole, m_rows) : m_frames->end();
    takeRows();
    m_writer->finish();
}

const RowCounts& Recording::counts() const noexcept
{
    return m_text ? m_text->counts() : m_frames->counts();
}

RecordReport Recording::report() const
{
    RecordReport report = m_report;
    report.counts = counts();
    if (m_begun)
        report.lastSample = m_writer->ring().lastSample();
    report.notes = m_writer->takeNotes();
    return report;
}

// The file's times begin with the first row, or go on where they were.
void Recording::startWith(double firstTime)
{
    RingWriter& ring = m_writer->ring();
    const double step = static_cast<double>(m_plan.shape.dt);
    const bool bySteps = m_plan.time == RecordTime::Steps;
    if (ring.lastSample() == 0) {
        const double first = bySteps ? nowSeconds() - step : firstTime;
        const bool isDate = bySteps || first >= kSurelyEpoch;
        const double whole = isDate && first <= UINT32_MAX ? std::floor(first) : 0.0;
        if (whole > 0.0)
            ring.setStart(static_cast<std::uint32_t>(whole),
                          bySteps ? static_cast<float>(first - whole) : 0.0F);
    } else if (bySteps && m_plan.fillsGap && ring.start() > 0.0) {
        fillGap();
    }
    m_start = ring.start();
    m_lastTime = std::max(m_lastTime, m_start);
    m_report.firstSample = ring.lastSample() + 1;
    m_begun = true;
    m_writer->begin();
}

// The row that comes is measured now; the one behind the last sample would be told for earlier.
void Recording::fillGap()
{
    RingWriter& ring = m_writer->ring();
    const double step = static_cast<double>(ring.dt());
    const double expected = ring.start() + (ring.lastSample() + 1.0) * step;
    const double behind = std::floor((nowSeconds() - expected) / step);
    if (!(behind >= 1.0))
        return;
    // Missing rows must not push out what was measured.
    if (behind > ring.samples() / 2.0)
        throw RingRefusal(
            "nothing was recorded for a time of " + generalNumber(behind, kGapDigits) +
            " samples, more than half of its room: --no-gap goes on all the same, with times that "
            "are too early, or record into another file");
    m_report.gapRows = static_cast<std::uint64_t>(behind);
    ring.writeMissing(static_cast<std::uint32_t>(behind));
}

void Recording::takeRows()
{
    if (m_rows.count == 0)
        return;
    if (!m_begun) {
        const auto known =
            std::find_if(m_rows.times.begin(), m_rows.times.end(), [](double t) { return std::isfinite(t); });
        startWith(known == m_rows.times.end() ? 0.0 : *known);
    }
    if (m_rows.times.empty()) {
        m_out.swap(m_rows.values);
    } else {
        const std::size_t width = kTimeFloats + m_columns;
        m_out.resize(m_rows.count * width);
        for (std::size_t i = 0; i < m_rows.count; ++i) {
            const double time = usableTime(m_rows.times[i]);
            std::memcpy(&m_out[i * width], &time, sizeof time);
            std::copy_n(&m_rows.values[i * m_columns], m_columns, &m_out[i * width + kTimeFloats]);
        }
    }
    m_rows.clear();
    m_writer->append(m_out);
}

// Seconds since the epoch. A row without a usable time stands at the one of the row before: a plot needs
// times that do not run backwards.
double Recording::usableTime(double time)
{
    if (time < kSurelyEpoch)
        time += m_start;
    if (!(time >= m_start)) {
        ++m_report.timeFaults;
        return m_lastTime;
    }
    m_report.timesBackwards += time < m_lastTime ? 1 : 0;
    m_lastTime = time;
    return time;
}

}  // namespace veltrac
