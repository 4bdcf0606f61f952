// The main window's table over a directory of 10,000 ts-files, beside the bare loop that reads each file's
// first block; and jumps in a list of 500 million samples, beside painting the same table without one. The
// files stay in the page cache; windows are painted off screen.

#include <benchmark/benchmark.h>
#include <dirent.h>
#include <fcntl.h>
#include <unistd.h>

#include <QApplication>
#include <QScrollBar>

#include <filesystem>
#include <fstream>
#include <memory>
#include <string>

#include "core/TSFILE.h"
#include "core/TsNames.h"
#include "portal/FileTable.h"
#include "portal/SampleView.h"
#include "portal/TsFileTexts.h"
#include "portal/TsTableModel.h"

using namespace veltrac;

namespace {

namespace fs = std::filesystem;

constexpr int kFiles = 10'000;
constexpr std::uint32_t kSamples = 500'000'000;

// Makes the directory of files once a run, and enters it.
class Directory
{
public:
    Directory() : m_path(fs::temp_directory_path() / "veltrac-bench-portal")
    {
        fs::create_directories(m_path);
        fs::current_path(m_path);
        createTsFile("series0.ts", 100, 2)->description("A short series");
        for (int i = 1; i < kFiles; ++i)
            fs::copy_file("series0.ts", "series" + std::to_string(i) + ".ts",
                          fs::copy_options::skip_existing);
    }
    ~Directory()
    {
        fs::current_path(m_path.parent_path());
        fs::remove_all(m_path);
    }
    Directory(const Directory&) = delete;
    Directory& operator=(const Directory&) = delete;

private:
    fs::path m_path;
};

void bareHeaders(benchmark::State& state)
{
    const Directory directory;
    char block[512];
    for (auto _ : state) {
        int sum = 0;
        DIR* const entries = opendir(".");
        while (const dirent* const entry = readdir(entries)) {
            const int fd = open(entry->d_name, O_RDONLY);
            if (read(fd, block, sizeof block) == sizeof block)
                sum += block[0];
            close(fd);
        }
        closedir(entries);
        benchmark::DoNotOptimize(sum);
    }
}

void scan(benchmark::State& state)
{
    const Directory directory;
    int foreign = 0;
    for (auto _ : state)
        benchmark::DoNotOptimize(scanTsFiles(shownTsFiles(foreign), [](const std::string&) {}));
}

void scanAndFill(benchmark::State& state)
{
    const Directory directory;
    int foreign = 0;
    FileTable table;
    table.resize(800, 600);
    table.show();
    for (auto _ : state) {
        table.fill(scanTsFiles(shownTsFiles(foreign), [](const std::string&) {}), false);
        QApplication::processEvents();
    }
}

// What the table does by itself: looking whether anything has changed, and taking in the 40 files that have
// come since the last look, while another program writes 100 a second.
void lookWithoutNews(benchmark::State& state)
{
    const Directory directory;
    int foreign = 0;
    TsFileList list;
    list.look(shownTsFiles(foreign), {});
    for (auto _ : state)
        benchmark::DoNotOptimize(list.look(shownTsFiles(foreign), {}));
}

void lookAndUpdate(benchmark::State& state)
{
    const Directory directory;
    int foreign = 0;
    int made = 0;
    TsFileList list;
    FileTable table;
    table.resize(800, 600);
    table.show();
    list.look(shownTsFiles(foreign), {});
    table.fill(list.records(), false);
    for (auto _ : state) {
        state.PauseTiming();
        constexpr int kCame = 40;
        for (int i = 0; i < kCame; ++i, ++made)
            fs::copy_file("series0.ts", "come" + std::to_string(made) + ".ts");
        state.ResumeTiming();
        list.look(shownTsFiles(foreign), {});
        table.update(list.records(), false);
        QApplication::processEvents();
    }
}

// A list of samples that take no room on the disk.
class HugeList
{
public:
    HugeList() : m_path(fs::temp_directory_path() / "veltrac-bench-huge.ts")
    {
        createTsFile(m_path.string(), 1, 1).reset();
        std::fstream file(m_path, std::ios::binary | std::ios::in | std::ios::out);
        file.write(reinterpret_cast<const char*>(&kSamples), sizeof kSamples);
        file.close();
        fs::resize_file(m_path, tsFileBytes(kSamples, 1));
        m_model = std::make_unique<TsTableModel>(openTsFile(m_path.string(), true).release());
        m_view = std::make_unique<SampleView>(m_model.get());
        m_view->resize(500, 600);
        m_view->show();
        QApplication::processEvents();
    }
    ~HugeList()
    {
        m_view.reset();
        m_model.reset();
        fs::remove(m_path);
    }
    HugeList(const HugeList&) = delete;
    HugeList& operator=(const HugeList&) = delete;
    SampleView& view() { return *m_view; }

private:
    fs::path m_path;
    std::unique_ptr<TsTableModel> m_model;
    std::unique_ptr<SampleView> m_view;
};

void repaint(benchmark::State& state)
{
    HugeList list;
    for (auto _ : state)
        list.view().viewport()->repaint();
}

void jump(benchmark::State& state)
{
    HugeList list;
    std::uint32_t place = 1;
    for (auto _ : state) {
        place = place * 1664525U + 1013904223U;
        list.view().sampleBar()->setValue(static_cast<int>(place % kSamples));
        list.view().viewport()->repaint();
    }
}

void openList(benchmark::State& state)
{
    for (auto _ : state)
        HugeList list;
}

}  // namespace

BENCHMARK(bareHeaders)->Unit(benchmark::kMillisecond);
BENCHMARK(scan)->Unit(benchmark::kMillisecond);
BENCHMARK(scanAndFill)->Unit(benchmark::kMillisecond);
BENCHMARK(lookWithoutNews)->Unit(benchmark::kMillisecond);
BENCHMARK(lookAndUpdate)->Unit(benchmark::kMillisecond)->Iterations(25);
BENCHMARK(repaint)->Unit(benchmark::kMillisecond);
BENCHMARK(jump)->Unit(benchmark::kMillisecond);
BENCHMARK(openList)->Unit(benchmark::kMillisecond);

int main(int argc, char** argv)
{
    qputenv("QT_QPA_PLATFORM", "offscreen");
    const QApplication application(argc, argv);
    benchmark::Initialize(&argc, argv);
    benchmark::RunSpecifiedBenchmarks();
    return 0;
}
