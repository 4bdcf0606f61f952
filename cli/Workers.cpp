#include "cli/Workers.h"

#include <poll.h>
#include <sys/socket.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <csignal>
#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <map>
#include <optional>
#include <vector>

#include "cli/StopSignals.h"

namespace veltrac {

namespace {

constexpr std::uint64_t kNoMore = UINT64_MAX;
constexpr int kLookMs = 100;

// Until all bytes are moved, by transfer(bytes already moved); false where the other side is gone.
template <typename Transfer>
bool moveAll(std::size_t count, Transfer transfer)
{
    for (std::size_t done = 0; done < count;) {
        const ssize_t moved = transfer(done);
        if (moved < 0 && errno == EINTR)
            continue;
        if (moved <= 0)
            return false;
        done += static_cast<std::size_t>(moved);
    }
    return true;
}

bool sendAll(int descriptor, const void* bytes, std::size_t count)
{
    return moveAll(count, [&](std::size_t done) {
        return send(descriptor, static_cast<const char*>(bytes) + done, count - done, MSG_NOSIGNAL);
    });
}

bool receiveAll(int descriptor, void* bytes, std::size_t count)
{
    return moveAll(count, [&](std::size_t done) {
        return recv(descriptor, static_cast<char*>(bytes) + done, count - done, 0);
    });
}

bool sendText(int descriptor, const std::string& text)
{
    const std::uint64_t size = text.size();
    return sendAll(descriptor, &size, sizeof size) && sendAll(descriptor, text.data(), text.size());
}

bool receiveText(int descriptor, std::string& text)
{
    std::uint64_t size = 0;
    if (!receiveAll(descriptor, &size, sizeof size))
        return false;
    text.resize(size);
    return receiveAll(descriptor, text.data(), size);
}

bool receiveOutcome(int descriptor, TaskOutcome& outcome)
{
    return receiveAll(descriptor, &outcome.state, sizeof outcome.state) &&
           receiveText(descriptor, outcome.out) && receiveText(descriptor, outcome.notes) &&
           receiveText(descriptor, outcome.report);
}

[[noreturn]] void work(int descriptor, const std::function<TaskOutcome(std::size_t)>& task)
{
    std::uint64_t number = 0;
    while (receiveAll(descriptor, &number, sizeof number) && number != kNoMore) {
        const TaskOutcome outcome = task(number);
        if (!sendAll(descriptor, &outcome.state, sizeof outcome.state) ||
            !sendText(descriptor, outcome.out) || !sendText(descriptor, outcome.notes) ||
            !sendText(descriptor, outcome.report))
            break;
    }
    _exit(0);  // what stands in the parent's buffers is the parent's
}

// The processes, and which of them does what.
class Pool
{
public:
    Pool(std::size_t count, const std::function<TaskOutcome(std::size_t)>& task)
        : m_count(count), m_task(task)
    {
    }
    ~Pool()
    {
        for (Worker& worker : m_workers)
            end(worker);
    }
    Pool(const Pool&) = delete;
    Pool& operator=(const Pool&) = delete;

    // As many as the system gives: one with a limit of processes or of memory may give none.
    void start(std::size_t workers)
    {
        while (m_workers.size() < workers) {
            m_workers.emplace_back();
            if (!fork(m_workers.back())) {
                m_workers.pop_back();
                return;
            }
        }
    }

    // Waits for the next outcome; nothing where all have come.
    std::optional<std::pair<std::size_t, TaskOutcome>> next()
    {
        for (;;) {
            if (stopAsked())
                passStopOn();
            std::vector<pollfd> polled;
            for (const Worker& worker : m_workers)
                polled.push_back({worker.number ? worker.descriptor : -1, POLLIN, 0});
            if (!isBusy())
                return outcomeOfOwn();
            // A stop that comes right before is seen a little later.
            if (poll(polled.data(), polled.size(), kLookMs) <= 0)
                continue;
            for (std::size_t i = 0; i < polled.size(); ++i)
                if (polled[i].revents != 0)
                    return outcomeOf(m_workers[i]);
        }
    }

private:
    struct Worker
    {
        pid_t process = -1;
        int descriptor = -1;
        std::optional<std::size_t> number{};
    };

    bool isBusy() const
    {
        for (const Worker& worker : m_workers)
            if (worker.number)
                return true;
        return false;
    }

    // False where the system gives no further process.
    bool fork(Worker& worker)
    {
        int pair[2];
        if (socketpair(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0, pair) != 0)
            return false;
        worker.process = ::fork();
        if (worker.process < 0) {
            close(pair[0]);
            close(pair[1]);
            return false;
        }
        if (worker.process == 0) {
            // Else a sibling that dies would not be noticed.
            for (const Worker& other : m_workers)
                if (other.descriptor >= 0)
                    close(other.descriptor);
            close(pair[0]);
            // The files share the cores; a thread for each core in each process would only crowd them.
            setenv("VELTRAC_THREADS", "1", 0);
            work(pair[1], m_task);
        }
        close(pair[1]);
        worker.descriptor = pair[0];
        give(worker);
        return true;
    }

    // The next task, for whoever does it.
    std::optional<std::size_t> takeTask()
    {
        return m_next < m_count && !stopAsked() ? std::optional(m_next++) : std::nullopt;
    }

    void give(Worker& worker)
    {
        worker.number = takeTask();
        const std::uint64_t number = worker.number.value_or(kNoMore);
        sendAll(worker.descriptor, &number, sizeof number);
    }

    // Of what no worker is there for.
    std::optional<std::pair<std::size_t, TaskOutcome>> outcomeOfOwn()
    {
        const auto number = takeTask();
        if (!number)
            return std::nullopt;
        return std::pair(*number, m_task(*number));
    }

    std::pair<std::size_t, TaskOutcome> outcomeOf(Worker& worker)
    {
        std::pair<std::size_t, TaskOutcome> made(*worker.number, {});
        if (receiveOutcome(worker.descriptor, made.second)) {
            give(worker);
            return made;
        }
        made.second = {TaskOutcome::State::Died, {}, "its worker " + end(worker)};
        if (m_next < m_count && !stopAsked())
            fork(worker);
        return made;
    }

    // How the process ended.
    static std::string end(Worker& worker)
    {
        if (worker.process < 0)
            return {};
        close(worker.descriptor);
        int status = 0;
        while (waitpid(worker.process, &status, 0) < 0 && errno == EINTR)
            continue;
        worker = {};
        return WIFSIGNALED(status)
                   ? "was ended by signal " + std::to_string(WTERMSIG(status)) +
                         (WTERMSIG(status) == SIGKILL ? " (was there too little memory?)" : "")
                   : "has ended";
    }

    // Ctrl+C reaches the workers by itself, SIGTERM does not. Once is enough: the second one would kill.
    void passStopOn()
    {
        if (m_stopPassedOn)
            return;
        m_stopPassedOn = true;
        for (const Worker& worker : m_workers)
            if (worker.process > 0)
                kill(worker.process, kStopWorker);
    }

    std::size_t m_count;
    const std::function<TaskOutcome(std::size_t)>& m_task;
    std::vector<Worker> m_workers;
    std::size_t m_next = 0;
    bool m_stopPassedOn = false;
};

}  // namespace

void runTasks(std::size_t count, unsigned workers, const std::function<TaskOutcome(std::size_t)>& task,
              const std::function<void(std::size_t, const TaskOutcome&)>& take,
              const std::function<void(std::size_t)>& advanced)
{
    Pool pool(count, task);
    if (workers > 1 && count > 1)
        pool.start(std::min<std::size_t>(workers, count));
    std::map<std::size_t, TaskOutcome> early;
    std::size_t told = 0;
    std::size_t done = 0;
    while (auto outcome = pool.next()) {
        early.insert(std::move(*outcome));
        for (auto at = early.find(told); at != early.end(); at = early.find(told)) {
            take(told++, at->second);
            early.erase(at);
        }
        advanced(++done);
    }
    // After a stop some are missing between them.
    for (const auto& [number, outcome] : early)
        take(number, outcome);
}

}  // namespace veltrac
