// A plot window that follows a ring file which another process writes: 8 columns, 100,000 rows a second, 10 s
// in view, off screen. Beside it what its parts cost: a look without news, beside the bare read of the header
// block, and the pyramids' growth by the rows of a frame; and what a recorder takes in, beside the bare write
// of the same bytes.

#include <benchmark/benchmark.h>
#include <fcntl.h>
#include <sys/resource.h>
#include <sys/wait.h>
#include <unistd.h>

#include <QApplication>
#include <QElapsedTimer>
#include <QEvent>

#include <algorithm>
#include <chrono>
#include <cmath>
#include <csignal>
#include <cstring>
#include <filesystem>
#include <string>
#include <thread>
#include <vector>

#include "converters/Recording.h"
#include "core/HsVariable.h"
#include "core/PlotFile.h"
#include "core/RingFile.h"
#include "core/RingWriter.h"
#include "core/TSFILE.h"
#include "share/PlotCanvas.h"
#include "share/QtPlotWin1.h"

using namespace veltrac;

namespace {

namespace fs = std::filesystem;
using Clock = std::chrono::steady_clock;

constexpr std::uint32_t kLiveColumns = 8;
constexpr std::uint32_t kLiveRate = 100'000;
constexpr std::uint32_t kLiveRoom = 2'000'000;
constexpr double kLiveSeconds = 20.0;
const char* g_program = nullptr;

std::string liveFile()
{
    return (fs::temp_directory_path() / "veltrac-bench-live.ts").string();
}

RingShape liveShape(std::uint32_t room)
{
    RingShape shape{.samples = room, .dt = 1.0F / kLiveRate};
    for (std::uint32_t c = 0; c < kLiveColumns; ++c)
        shape.columns.push_back({"c" + std::to_string(c), ""});
    return shape;
}

// Seconds of the clock that all processes share; as a float fine enough for an hour's run of it.
double sharedNow()
{
    timespec now = {};
    clock_gettime(CLOCK_MONOTONIC, &now);
    return static_cast<double>(now.tv_sec % 1000) + 1e-9 * static_cast<double>(now.tv_nsec);
}

// Another process: rows in time, a write each 10 ms; the first column says when it was asked for.
int writeRows()
{
    RingWriter ring(liveFile());
    const auto begin = Clock::now();
    std::vector<float> rows;
    std::uint64_t written = 0;
    for (;;) {
        std::this_thread::sleep_for(std::chrono::milliseconds(10));
        const double seconds = std::chrono::duration<double>(Clock::now() - begin).count();
        const auto due = static_cast<std::uint64_t>(seconds * kLiveRate);
        rows.clear();
        const auto stamp = static_cast<float>(sharedNow());
        for (; written < due; ++written) {
            rows.push_back(stamp);
            for (std::uint32_t c = 1; c < kLiveColumns; ++c)
                rows.push_back(std::sin(static_cast<float>(written) * 1e-5F * static_cast<float>(c)));
        }
        ring.write(rows);
    }
}

double cpuSeconds()
{
    rusage used = {};
    getrusage(RUSAGE_SELF, &used);
    const auto seconds = [](const timeval& t) {
        return static_cast<double>(t.tv_sec) + 1e-6 * static_cast<double>(t.tv_usec);
    };
    return seconds(used.ru_utime) + seconds(used.ru_stime);
}

// Notes, after each painting of a canvas, how old the rows are that it is the first to show.
class PaintedRows : public QObject
{
public:
    explicit PaintedRows(PlotCanvas* canvas) : m_canvas(canvas) { canvas->installEventFilter(this); }

    bool eventFilter(QObject* object, QEvent* event) override
    {
        if (event->type() != QEvent::Paint || m_isPainting)
            return false;
        m_isPainting = true;
        QCoreApplication::sendEvent(object, event);
        m_isPainting = false;
        note();
        return true;
    }

    int frames = 0;
    std::vector<double> ages;

private:
    void note()
    {
        const auto v = m_canvas->plot().reference();
        const std::uint32_t rows = v->variable().rows();
        const std::uint32_t newest = v->variable().source()->sampleOf(rows);
        if (newest == m_newest)
            return;
        ++frames;
        const double now = sharedNow();
        for (std::uint32_t s = m_newest + 100; m_newest != 0 && s <= newest; s += 100)
            ages.push_back(now - v->variable().value(rows - (newest - s)));
        m_newest = newest;
    }

    PlotCanvas* m_canvas;
    std::uint32_t m_newest = 0;
    bool m_isPainting = false;
};

void follow(benchmark::State& state)
{
    for ([[maybe_unused]] auto _ : state) {
        makeRingFile(liveFile(), liveShape(kLiveRoom));
        const pid_t writer = fork();
        if (writer == 0) {
            execl(g_program, g_program, "--write-rows", nullptr);
            _exit(127);
        }
        QElapsedTimer clock;
        clock.start();
        while (clock.elapsed() < 11'000)
            std::this_thread::sleep_for(std::chrono::milliseconds(10));
        QtPlotWin window(QString::fromStdString(liveFile()));
        window.show();
        PlotCanvas& canvas = *window.canvas();
        canvas.showRange(canvas.plot().extent().x2 - 10.0, canvas.plot().extent().x2, 0);
        window.sl_follow(true);
        PaintedRows painted(&canvas);
        for (clock.start(); clock.elapsed() < 1000;)
            QApplication::processEvents(QEventLoop::WaitForMoreEvents);
        painted.frames = 0;
        painted.ages.clear();
        const double before = cpuSeconds();
        clock.start();
        while (static_cast<double>(clock.elapsed()) < kLiveSeconds * 1000.0)
            QApplication::processEvents(QEventLoop::WaitForMoreEvents);
        const double seconds = static_cast<double>(clock.elapsed()) / 1000.0;
        state.counters["core_percent"] = 100.0 * (cpuSeconds() - before) / seconds;
        state.counters["frames_per_s"] = painted.frames / seconds;
        std::sort(painted.ages.begin(), painted.ages.end());
        const auto age = [&](double share) {
            return 1000.0 *
                   painted
                       .ages[static_cast<std::size_t>(share * static_cast<double>(painted.ages.size() - 1))];
        };
        state.counters["latency_median_ms"] = age(0.5);
        state.counters["latency_99_ms"] = age(0.99);
        kill(writer, SIGKILL);
        waitpid(writer, nullptr, 0);
    }
    fs::remove(liveFile());
}
BENCHMARK(follow)->Iterations(1)->Unit(benchmark::kSecond);

// -- Its parts --

void bareHeaderBlock(benchmark::State& state)
{
    makeRingFile(liveFile(), liveShape(1000));
    const int file = open(liveFile().c_str(), O_RDONLY);
    char block[512];
    for ([[maybe_unused]] auto _ : state)
        benchmark::DoNotOptimize(pread(file, block, sizeof block, 0));
    close(file);
}
BENCHMARK(bareHeaderBlock);

void refreshWithoutNews(benchmark::State& state)
{
    makeRingFile(liveFile(), liveShape(1000));
    TSFILE file(liveFile().c_str(), true);
    for ([[maybe_unused]] auto _ : state)
        benchmark::DoNotOptimize(file.refresh());
}
BENCHMARK(refreshWithoutNews);

void lookWithoutNews(benchmark::State& state)
{
    makeRingFile(liveFile(), liveShape(1000));
    RingWriter(liveFile()).write(std::vector<float>(kLiveColumns * 100));
    PlotFile file(liveFile());
    for ([[maybe_unused]] auto _ : state)
        benchmark::DoNotOptimize(file.follow());
}
BENCHMARK(lookWithoutNews);

// The rows of a frame at this rate: 5,000 of 8 columns.
void growByAFrame(benchmark::State& state)
{
    makeRingFile(liveFile(), liveShape(kLiveRoom));
    RingWriter ring(liveFile());
    const std::vector<float> rows(std::size_t{kLiveColumns} * kLiveRate / 20, 1.5F);
    for (int i = 0; i < 300; ++i)
        ring.write(rows);
    const auto file = std::make_shared<PlotFile>(liveFile());
    std::vector<std::shared_ptr<HsVariable>> variables;
    for (std::uint32_t c = 1; c <= kLiveColumns; ++c)
        variables.push_back(std::make_shared<HsVariable>(Variable(file, c)));
    HsVariable::buildAll(variables, {});
    for ([[maybe_unused]] auto _ : state) {
        state.PauseTiming();
        ring.write(rows);
        const std::uint32_t before = file->rows();
        state.ResumeTiming();
        file->follow();
        HsVariable::extendAll(variables, *file, before);
        if (const std::uint32_t buckets = file->bucketsToForget(); buckets > 0)
            HsVariable::forgetBuckets(variables, *file, buckets);
    }
}
BENCHMARK(growByAFrame)->Unit(benchmark::kMicrosecond)->Iterations(500);

// -- Recording: 8 columns --

void record(benchmark::State& state, bool frames, const std::string& bytes)
{
    fs::remove(liveFile());
    RecordPlan plan{.file = liveFile(), .shape = liveShape(1'000'000), .frames = frames};
    Recording recording(plan);
    for ([[maybe_unused]] auto _ : state)
        recording.feed(bytes);
    recording.finish(true);
    state.counters["rows_per_s"] =
        benchmark::Counter(static_cast<double>(recording.report().counts.rows), benchmark::Counter::kIsRate);
}

constexpr std::size_t kFedBytes = std::size_t{1} << 18;

void recordFrames(benchmark::State& state)
{
    record(state, true, std::string(kFedBytes, '\0'));
}
BENCHMARK(recordFrames)->UseRealTime()->MinTime(3.0);

void recordText(benchmark::State& state)
{
    std::string bytes;
    while (bytes.size() < kFedBytes)
        bytes += "1.2345 -678.9 0.001 42 3.14159 2.5e-3 1000 -7.25\n";
    record(state, false, bytes);
}
BENCHMARK(recordText)->UseRealTime()->MinTime(3.0);

// The same bytes into a file of the ring's size, round after round.
void bareWrite(benchmark::State& state)
{
    const std::string bytes(kFedBytes, '\0');
    const int file = open(liveFile().c_str(), O_RDWR | O_CREAT, 0666);
    off_t at = 0;
    std::uint64_t written = 0;
    for ([[maybe_unused]] auto _ : state) {
        if (pwrite(file, bytes.data(), bytes.size(), at) < 0)
            state.SkipWithError("write");
        at = (at + static_cast<off_t>(bytes.size())) % (32 << 20);
        written += bytes.size();
    }
    fdatasync(file);
    close(file);
    state.counters["rows_per_s"] = benchmark::Counter(
        static_cast<double>(written) / (kLiveColumns * sizeof(float)), benchmark::Counter::kIsRate);
    fs::remove(liveFile());
}
BENCHMARK(bareWrite)->UseRealTime()->MinTime(3.0);

}  // namespace

int main(int argc, char** argv)
{
    g_program = argv[0];
    if (argc > 1 && std::strcmp(argv[1], "--write-rows") == 0)
        return writeRows();
    qputenv("QT_QPA_PLATFORM", "offscreen");
    QApplication application(argc, argv);
    benchmark::Initialize(&argc, argv);
    benchmark::RunSpecifiedBenchmarks();
    return 0;
}
