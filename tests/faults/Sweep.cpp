// Runs every job with every fault at every call, and looks at what is left of the user's files.
//
//   veltrac_sweep <shim> <jobs driver> <windows driver> <veltrac-cli> [every <n>] [only <job>]
//
// After a fault each file is the old or the new one, whole; a file that is changed in place may hold old and
// new values where the old ones lie in a file that brings them back. A job that says that it is done has done
// it, one that failed says why, and neither leaves a scratch file, save where it could not be removed. After
// a kill the next start of the job does it, and removes what is left of the first. Ends with 1 where anything
// was found.

#include <fcntl.h>
#include <sys/resource.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <cmath>
#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <ctime>
#include <fstream>
#include <iterator>
#include <map>
#include <set>
#include <sstream>
#include <string>
#include <vector>

#include "core/ColumnBackup.h"
#include "core/RingFile.h"
#include "core/RingWriter.h"
#include "core/TSFILE.h"
#include "core/TsNames.h"
#include "tests/faults/Sweep.h"

namespace fs = std::filesystem;
using namespace veltrac;

namespace {

enum Program { kJobsProgram, kWindowsProgram, kCliProgram };

struct Job
{
    Program program;
    const char* name;
    // Of veltrac-cli, "< file" at their end being its standard input; of a driver the job that comes first,
    // whose outcome is whole, too.
    const char* words;
};

constexpr Job kSweptJobs[] = {
    {kJobsProgram, "edit", ""},
    {kJobsProgram, "edit-undo", "edit"},
    {kJobsProgram, "save-as", ""},
    {kJobsProgram, "formula", ""},
    {kJobsProgram, "formula-undo", "formula"},
    {kJobsProgram, "grow", ""},
    {kJobsProgram, "shrink", ""},
    {kJobsProgram, "copy", ""},
    {kJobsProgram, "interval", ""},
    {kJobsProgram, "tsa-import", ""},
    {kJobsProgram, "tsa-export", ""},
    {kJobsProgram, "stl-import", ""},
    {kJobsProgram, "scl-import", ""},
    {kJobsProgram, "filter-new", ""},
    {kJobsProgram, "filter-columns", ""},
    {kJobsProgram, "filter-added", ""},
    {kJobsProgram, "calculus-save", ""},
    {kJobsProgram, "restore", ""},
    {kCliProgram, "cli import tsa", "import --force -o x.ts t.tsa"},
    {kCliProgram, "cli import stl", "import --force -o x.ts l.stl"},
    {kCliProgram, "cli import scl", "import --force -o x.ts --rate 10 l.scl"},
    {kCliProgram, "cli import gz", "import --force -o x.ts l.stl.gz"},
    {kCliProgram, "cli import stdin", "import --force -o x.ts - < l.stl"},
    {kCliProgram, "cli import wav", "import --force -o x.ts w.wav"},
    {kCliProgram, "cli export tsa", "export --force -o x.tsa a.ts"},
    {kCliProgram, "cli export csv", "export --force --csv -o x.csv a.ts"},
    {kCliProgram, "cli export npy", "export --force --npy -o x.npy a.ts"},
    {kCliProgram, "cli export wav", "export --force --wav -o x.wav a.ts"},
    {kCliProgram, "cli cut", "cut --force --from 7 --columns 2,3 --every 2 -o x.ts a.ts"},
    {kCliProgram, "cli join", "join --force -o x.ts a.ts work.ts"},
    {kCliProgram, "cli formula", "formula --formula x1*2+t --in-place 2 a.ts"},
    {kCliProgram, "cli derivative", "derivative --column 2 --new-column a.ts"},
    {kCliProgram, "cli integral", "integral --column 2 --force -o x.ts a.ts"},
    {kCliProgram, "cli filter", "filter --type butterworth-lp --order 3 --freq 0.2 --in-place 3 a.ts"},
    {kCliProgram, "cli spectrum", "spectrum --force -o x.ts a.ts"},
    {kCliProgram, "cli header", "header --description swept --sample-time 0.25 --name 2=two a.ts"},
    {kCliProgram, "cli plot svg", "plot --force -o x.svg a.ts"},
    {kCliProgram, "cli plot eps", "plot --force -o x.eps a.ts"},
    {kCliProgram, "cli plot filter", "plot --force --characteristic group-delay --freq 1 --rate 9 -o x.svg"},
    {kCliProgram, "cli spectrogram", "spectrum --force --segment 256 --spectrogram -o x.ts a.ts"},
    {kCliProgram, "cli transfer", "spectrum --force --column 2 --second 3 --segment 512 -o x.ts a.ts"},
    {kCliProgram, "cli correlation", "spectrum --force --column 2 --second 3 --correlation 9 -o x.ts a.ts"},
    {kCliProgram, "cli many", "cut --force --columns 2 --jobs 1 -o results a.ts work.ts"},
    {kCliProgram, "cli record", "record --no-gap r.ts < rows.txt"},
    {kCliProgram, "cli stdout", "cut --columns 2 -o - a.ts"},
    {kWindowsProgram, "create", ""},
    {kWindowsProgram, "create-over", ""},
    {kWindowsProgram, "header-fields", ""},
    {kWindowsProgram, "header-grow", ""},
    {kWindowsProgram, "header-shrink", ""},
    {kWindowsProgram, "list-save", ""},
    {kWindowsProgram, "ts-edit", ""},
    {kWindowsProgram, "derivative-win", ""},
    {kWindowsProgram, "integral-win", ""},
    {kWindowsProgram, "spectrum-win", ""},
    {kWindowsProgram, "filter-win-new", ""},
    {kWindowsProgram, "filter-win-added", ""},
    {kWindowsProgram, "picture-eps", ""},
    {kWindowsProgram, "picture-svg", ""},
    {kWindowsProgram, "picture-png", ""},
};

// Each call with what becomes of it. A number is an errno.
struct Fault
{
    const char* call;
    const char* what;
    const char* column;  // of the table
};

constexpr Fault kFaults[] = {
    {"open", "13", "open"},       {"open", "from:24", "open"},  {"read", "5", "read"},
    {"read", "4", "read"},        {"read", "short", "short"},   {"write", "5", "write"},
    {"write", "from:5", "write"}, {"write", "4", "write"},      {"write", "short", "short"},
    {"sync", "5", "sync"},        {"sync", "from:28", "sync"},  {"rename", "5", "rename"},
    {"remove", "5", "remove"},    {"reserve", "95", "reserve"}, {"reserve", "28", "reserve"},
    {"copy", "18", "copy"},       {"copy", "from:5", "copy"},   {"copy", "short", "short"},
    {"lock", "from:37", "lock"},  {"alloc", "12", "memory"},    {"alloc", "from:12", "memory"},
    {"full", "28", "disk full"},  {"any", "kill", "kill"},      {"write", "tear", "kill"},
};

struct Cell
{
    long runs = 0;
    long lost = 0;
    long silent = 0;
    long crashed = 0;
    long left = 0;
};

struct Outcome
{
    bool killed = false;  // by the fault
    bool crashed = false;
    int status = 0;
    std::string told;
};

// A second a sound file of two channels lasts.
void writeWav(const std::string& file)
{
    const std::uint32_t rate = 1000;
    const std::uint32_t frames = 3000;
    std::ofstream out(file, std::ios::binary);
    const auto word = [&out](std::uint32_t v, std::streamsize bytes) {
        out.write(reinterpret_cast<const char*>(&v), bytes);
    };
    out << "RIFF";
    word(36 + frames * 4, 4);
    out << "WAVEfmt ";
    for (const auto& [v, bytes] :
         {std::pair(16U, 4), {1U, 2}, {2U, 2}, {rate, 4}, {rate * 4, 4}, {4U, 2}, {16U, 2}})
        word(v, bytes);
    out << "data";
    word(frames * 4, 4);
    for (std::uint32_t i = 0; i < 2 * frames; ++i)
        word(i * 37 % 20000, 2);
}

void makeTs(const std::string& name, std::uint32_t samples, std::uint32_t columns, double factor)
{
    const auto file = createTsFile(name, samples, columns);
    file->dt(0.5F);
    file->description("swept");
    const int stamp[7] = {0, 1, 2, 3, 4, 5, 116};
    for (std::uint32_t c = 1; c <= columns; ++c) {
        file->columnName(c, ("col" + std::to_string(c)).c_str());
        file->setColumnStamp(c, stamp);
        for (std::uint32_t s = 1; s <= samples; ++s)
            file->setValue(s, c, static_cast<float>(std::sin(s * 0.01 * c) * factor + s));
    }
    file->flush(true);
}

// A ring that has come round once, and rows that go on over its seam.
void makeRing()
{
    constexpr std::uint32_t kRoom = 10'000;  // parts of it are worth a sync each
    makeRingFile("r.ts", {.samples = kRoom, .columns = {{"a", ""}, {"b", ""}}});
    std::vector<float> rows(std::size_t{2} * (2 * kRoom - 100));
    for (std::size_t i = 0; i < rows.size(); ++i)
        rows[i] = static_cast<float>(i);
    RingWriter("r.ts").write(rows);
    std::ofstream text("rows.txt");
    for (int i = 0; i < 3000; ++i)
        text << i * 7 % 97 << ' ' << -i << '\n';
}

// Old values that a killed job has left, and the file that wants them back.
void makeInterrupted()
{
    makeTs("b.ts", 1000, 2, 3.0);
    const auto file = openTsFile("b.ts", false);
    ColumnBackup backup(*file);
    backup.save(2, 100, 700, {});
    backup.saveInfo(2);
    fs::copy_file(backup.path(), "scratch/veltrac-old-values_3.bin");
    for (std::uint32_t s = 100; s < 600; ++s)
        file->setValue(s, 2, -1.0F);
    file->columnName(2, "changed");
    file->flush(true);
}

class Sweeper
{
public:
    Sweeper(std::vector<std::string> programs, std::string shim, long every)
        : m_programs(std::move(programs)), m_shim(std::move(shim)), m_every(every)
    {
        const char* const memory = "/dev/shm";
        std::string pattern =
            ((fs::is_directory(memory) ? memory : fs::temp_directory_path()) / "veltrac-sweep-XXXXXX")
                .string();
        m_base = ::mkdtemp(pattern.data());
        makeTemplate();
    }
    ~Sweeper()
    {
        std::error_code ignored;
        fs::remove_all(m_base, ignored);
    }
    Sweeper(const Sweeper&) = delete;
    Sweeper& operator=(const Sweeper&) = delete;

    void sweep(const Job& job);
    bool replayPowerCuts(const Job& job);
    bool tell() const;

private:
    fs::path old() const { return m_base / "old"; }
    fs::path work() const { return m_base / "work"; }
    fs::path outside(const char* name) const { return m_base / name; }

    void makeTemplate();
    States states() const { return {&m_old, &m_between, &m_new}; }
    Outcome run(const Job& job, const std::string& fault, bool records = false);
    void tryFault(const Job& job, const Fault& fault, long n);
    void checkSecondStart(const Job& job, const std::string& what, Cell& cell);
    void report(const Job& job, const std::string& what, const char* finding, const std::string& detail);
    std::map<std::string, long> counts() const;

    std::vector<std::string> m_programs;
    std::string m_shim;
    long m_every;
    long m_turn = 0;
    const std::string m_now = std::to_string(std::time(nullptr));
    fs::path m_base;
    Files m_old;
    Files m_between;  // what a job that comes first makes of them
    Files m_new;      // what the job makes of them without a fault
    std::map<std::string, std::map<std::string, Cell>> m_table;
    std::vector<std::string> m_order;
};

void Sweeper::makeTemplate()
{
    fs::create_directories(old() / "scratch");
    fs::current_path(old());
    makeTs("a.ts", 20'000, 3, 5.0);
    makeTs("work.ts", 20'000, 2, 9.0);
    makeTs("x.ts", 100, 1, 1.0);
    std::ofstream stl("l.stl");
    std::ofstream scl("l.scl");
    std::ofstream tsa("t.tsa");
    stl << "time;force [N];way\n";
    tsa << "%N t.tsa\n%S 3000\n%C 3\n%D 0.5\n";
    for (int i = 0; i < 3000; ++i) {
        stl << i << ';' << i * 3 % 101 << ".25;" << i * 7 % 97 << '\n';
        scl << i * 5 % 113 << ".5\n";
        tsa << i << ' ' << i * 3 % 101 << ".25 " << i * 7 % 97 << '\n';
    }
    stl.close();
    scl.close();
    tsa.close();
    writeWav("w.wav");
    makeRing();
    ::setenv("TMPDIR", (old() / "scratch").c_str(), 1);
    makeInterrupted();
    if (std::system("gzip -nk l.stl") != 0)
        throw std::runtime_error("gzip");
    // The user's own, however much their names look like the program's.
    for (const char* const name :
         {"x.tsa", "x.csv", "x.npy", "x.wav", "x.svg", "x.eps", "x.png", "x.pdf", "tmp.ts", "temp.ts",
          "tempDFT.ts", ".veltrac-mine.ts", "scratch/veltrac-notes.txt"})
        std::ofstream(name) << "the user's own " << name;
    for (const auto& entry : fs::recursive_directory_iterator(old()))
        age(entry.path());
    m_old = filesBelow(old());
}

// A process that never ends is a fault, one that others do not let run is none: what counts is the
// processor's time. The clock ends what waits for something that does not come.
void giveTime()
{
    constexpr rlimit kSeconds{60, 70};  // told at 60, not killed as by a fault
    constexpr unsigned kMostWait = 1800;
    ::setrlimit(RLIMIT_CPU, &kSeconds);
    ::alarm(kMostWait);
}

Outcome Sweeper::run(const Job& job, const std::string& fault, bool records)
{
    std::vector<std::string> words = {m_programs[job.program]};
    std::istringstream more(job.program == kCliProgram ? job.words : job.name);
    words.insert(words.end(), std::istream_iterator<std::string>(more), {});
    const auto from = std::find(words.begin(), words.end(), "<");
    const std::string input = from == words.end() ? "/dev/null" : *(from + 1);
    words.erase(from, words.end());
    std::vector<char*> arguments;
    arguments.reserve(words.size() + 1);
    for (std::string& word : words)
        arguments.push_back(word.data());
    arguments.push_back(nullptr);
    const pid_t child = ::fork();
    if (child == 0) {
        giveTime();
        ::setenv("LD_PRELOAD", m_shim.c_str(), 1);
        ::setenv("VELTRAC_FAULT_DIR", work().c_str(), 1);
        ::setenv("VELTRAC_FAULT_COUNTS", outside("counts").c_str(), 1);
        if (records)
            ::setenv("VELTRAC_FAULT_RECORD", outside("record").c_str(), 1);
        if (!fault.empty())
            ::setenv("VELTRAC_FAULT", fault.c_str(), 1);
        ::setenv("TMPDIR", (work() / "scratch").c_str(), 1);
        ::setenv("VELTRAC_FAULT_NOW", m_now.c_str(), 1);
        ::setenv("VELTRAC_THREADS", "1", 1);
        ::setenv("QT_QPA_PLATFORM", "offscreen", 1);
        ::setenv("XDG_RUNTIME_DIR", m_base.c_str(), 1);
        ::setenv("LC_ALL", "C.UTF-8", 1);
        if (::chdir(work().c_str()) != 0)
            ::_exit(99);
        ::dup2(::open(input.c_str(), O_RDONLY), 0);
        const int told = ::open(outside("told").c_str(), O_WRONLY | O_CREAT | O_TRUNC, 0666);
        const int out = ::open(outside("out").c_str(), O_WRONLY | O_CREAT | O_TRUNC, 0666);
        ::dup2(out, 1);
        ::dup2(told, 2);
        ::execv(arguments[0], arguments.data());
        ::_exit(99);
    }
    int ended = 0;
    ::waitpid(child, &ended, 0);
    Outcome outcome;
    outcome.killed = WIFSIGNALED(ended) && WTERMSIG(ended) == SIGKILL;
    outcome.crashed = (WIFSIGNALED(ended) && !outcome.killed) || (WIFEXITED(ended) && WEXITSTATUS(ended) > 2);
    outcome.status = WIFEXITED(ended) ? WEXITSTATUS(ended) : 128 + WTERMSIG(ended);
    std::ifstream told(outside("told"));
    outcome.told = {std::istreambuf_iterator<char>(told), {}};
    return outcome;
}

std::map<std::string, long> Sweeper::counts() const
{
    std::map<std::string, long> found;
    std::ifstream in(outside("counts"));
    std::string call;
    for (long n = 0; in >> call >> n;)
        found[call] = n;
    return found;
}

void Sweeper::report(const Job& job, const std::string& what, const char* finding, const std::string& detail)
{
    std::printf("%s | %s | %s: %s\n", job.name, what.c_str(), finding, detail.c_str());
    std::fflush(stdout);
}

void Sweeper::tryFault(const Job& job, const Fault& fault, long n)
{
    layOut(m_old, work());
    const std::string what = std::string(fault.call) + ' ' + std::to_string(n) + ' ' + fault.what;
    const Outcome outcome = run(job, what);
    const Files now = filesBelow(work());
    Cell& cell = m_table[job.name][fault.column];
    ++cell.runs;
    const auto found = [&](long& count, const char* finding, const std::string& detail) {
        ++count;
        report(job, what, finding,
               detail + " (status " + std::to_string(outcome.status) + ", told \"" +
                   outcome.told.substr(0, 300) + "\")");
    };
    if (outcome.crashed)
        found(cell.crashed, "crashed", "");
    const bool mayBeLeft = outcome.killed || outcome.crashed || std::string(fault.call) == "remove";
    std::string lost;
    std::string left;
    bool isNew = true;
    for (const std::string& name : namesOf({&m_old, &m_new, &now})) {
        const bool isUsers = m_old.contains(name) || m_new.contains(name);
        if (!isUsers) {
            const bool isTold = outcome.told.find(fs::path(name).filename().string()) != std::string::npos;
            left += isTold || mayBeLeft ? "" : name + ' ';
        } else if (!same(now, m_new, name)) {
            isNew = false;
            if (!isWhole(now, name, states()) && !canBeBroughtBack(work(), name, states()))
                lost += name + ' ';
        }
    }
    if (!lost.empty())
        found(cell.lost, "lost", lost);
    if (!left.empty())
        found(cell.left, "left over", left);
    const bool isSilent =
        outcome.status == 0 ? !isNew : outcome.told.find_first_not_of(" \n") == std::string::npos;
    if (isSilent && !outcome.killed && !outcome.crashed)
        found(cell.silent, "silent", outcome.status == 0 ? "it is not done" : "it does not say why");
    // Locks are a courtesy that some file systems do not know.
    if (std::string(fault.call) == "lock" && outcome.status != 0)
        found(cell.silent, "does not work without locks", "");
    if (outcome.killed)
        checkSecondStart(job, what, cell);
}

// The user puts his files in order and starts the job once more, two hours later.
void Sweeper::checkSecondStart(const Job& job, const std::string& what, Cell& cell)
{
    Files leftovers = filesBelow(work());
    for (const std::string& name : namesOf({&m_old, &m_new}))
        leftovers.erase(name);
    for (const std::string& name : namesOf({&m_new}))
        if (!m_old.contains(name))
            fs::remove(work() / name);
    for (const auto& [name, bytes] : leftovers)
        age(work() / name);
    layOver(m_old, work());
    const Outcome again = run(job, "");
    const Files now = filesBelow(work());
    std::string wrong;
    for (const std::string& name : namesOf({&m_new, &now})) {
        // Values that a kill has kept from their file are the user's until he has them back.
        const bool isKept =
            leftovers.contains(name) && fs::path(name).extension() == ".bin" && same(now, leftovers, name);
        if (!same(now, m_new, name) && !isKept)
            wrong += name + ' ';
    }
    if (wrong.empty() && again.status == 0)
        return;
    ++cell.left;
    report(job, what, "left over after the next start", wrong + again.told);
}

void Sweeper::sweep(const Job& job)
{
    layOut(m_old, work());
    if (job.program != kCliProgram && *job.words != '\0')
        run({job.program, job.words, ""}, "");
    m_between = filesBelow(work());
    layOut(m_old, work());
    const Outcome clean = run(job, "");
    m_new = filesBelow(work());
    m_order.emplace_back(job.name);
    if (clean.status != 0) {
        ++m_table[job.name]["clean"].silent;
        report(job, "no fault", "failed", clean.told);
        return;
    }
    std::map<std::string, long> calls = counts();
    if (calls["open"] == 0) {
        ++m_table[job.name]["clean"].silent;
        report(job, "no fault", "not seen by the shim, which has to be named by its whole path", "");
        return;
    }
    for (const auto& [name, bytes] : m_new)
        for (const char* const mark : {"scratch/", ".veltrac", "temp", "tmp", "_part"})
            if (!m_old.contains(name) && name.find(mark) != std::string::npos) {
                report(job, "no fault", "left over", name);
                ++m_table[job.name]["clean"].left;
            }
    for (const Fault& fault : kFaults) {
        const bool isFull = std::string(fault.call) == "full";
        const long most = isFull ? calls["bytes"] : calls[fault.call];
        // A disk that is full from any byte on: each block matters where there are few of them.
        const long step = isFull ? std::max(512L, most / 60) : 1;
        for (long n = isFull ? 0 : 1; n <= (isFull ? most - 1 : most); n += step)
            if (m_turn++ % m_every == 0)
                tryFault(job, fault, n);
    }
    if (!replayPowerCuts(job))
        ++m_table[job.name]["power cut"].lost;
}

bool Sweeper::replayPowerCuts(const Job& job)
{
    layOut(m_old, work());
    const Inodes inodes = inodesBelow(work());
    if (run(job, "", true).status != 0)
        return false;
    long runs = 0;
    const auto wrong = replayRecord(outside("record"), work(), states(), inodes, m_every == 1 ? 1 : 7, runs);
    m_table[job.name]["power cut"].runs += runs;
    if (!wrong.empty())
        report(job, "power cut", "lost", wrong);
    return wrong.empty();
}

bool Sweeper::tell() const
{
    std::set<std::string> columns;
    for (const Fault& fault : kFaults)
        columns.insert(fault.column);
    columns.insert({"clean", "power cut"});
    Cell all;
    std::printf("%-16s %-10s %6s %6s %6s %7s %9s\n", "job", "fault", "runs", "lost", "silent", "crashed",
                "left over");
    const auto line = [](const std::string& job, const std::string& column, const Cell& cell) {
        std::printf("%-16s %-10s %6ld %6ld %6ld %7ld %9ld\n", job.c_str(), column.c_str(), cell.runs,
                    cell.lost, cell.silent, cell.crashed, cell.left);
    };
    for (const std::string& job : m_order)
        for (const auto& [column, cell] : m_table.at(job)) {
            line(job, column, cell);
            all.runs += cell.runs;
            all.lost += cell.lost;
            all.silent += cell.silent;
            all.crashed += cell.crashed;
            all.left += cell.left;
        }
    line("all", "", all);
    return all.lost + all.silent + all.crashed + all.left == 0;
}

}  // namespace

int main(int count, char** words)
{
    if (count < 5)
        return 2;
    std::string only;
    long every = 1;
    for (int i = 5; i + 1 < count; i += 2)
        if (std::string(words[i]) == "every")
            every = std::max(1L, std::atol(words[i + 1]));
        else
            only = words[i + 1];
    Sweeper sweeper({words[2], words[3], words[4]}, words[1], every);
    for (const Job& job : kSweptJobs)
        if (only.empty() || std::string(job.name).find(only) != std::string::npos)
            sweeper.sweep(job);
    return sweeper.tell() ? 0 : 1;
}
