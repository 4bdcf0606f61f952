// The recorder as a process of its own, fed with rows that tell which they are.
#pragma once

#include <fcntl.h>
#include <sys/wait.h>
#include <unistd.h>

#include <chrono>
#include <csignal>
#include <cstdint>
#include <string>
#include <thread>

inline constexpr std::uint32_t kRecordedRoom = 9000;  // samples of the ring r.ts

// Rows have three values: the sample's number, that modulo 977, and minus it. Whoever uses it ignores
// SIGPIPE.
class Recorder
{
public:
    // The first row's number; a hundred rows come at once, with a pause behind them.
    explicit Recorder(std::uint32_t next, std::chrono::microseconds pause = std::chrono::microseconds(200))
        : m_pause(pause)
    {
        int ends[2];
        if (pipe2(ends, O_CLOEXEC) != 0)
            return;
        m_pid = fork();
        if (m_pid == 0) {
            dup2(ends[0], 0);
            const int null = open("notes", O_WRONLY | O_CREAT | O_TRUNC, 0666);
            dup2(null, 2);
            signal(SIGINT, SIG_DFL);  // which a shell ignores for what it starts behind itself
            const std::string room = std::to_string(kRecordedRoom);
            execl(VELTRAC_CLI, VELTRAC_CLI, "record", "r.ts", "--f32", "--columns", "n,m,k", "--samples",
                  room.c_str(), "--flush", "0.002", "--no-gap", nullptr);
            _exit(127);
        }
        close(ends[0]);
        m_feeder = std::thread([this, next, out = ends[1]] { feed(next, out); });
    }
    ~Recorder() { end(SIGKILL); }

    int end(int signal)
    {
        if (m_pid <= 0)
            return m_status;
        kill(m_pid, signal);
        waitpid(m_pid, &m_status, 0);
        m_pid = 0;
        m_feeder.join();
        return m_status;
    }

private:
    void feed(std::uint32_t next, int out) const
    {
        constexpr std::uint32_t kRows = 100;
        float rows[3 * kRows];
        for (;; next += kRows) {
            for (std::uint32_t i = 0; i < kRows; ++i) {
                rows[3 * i] = static_cast<float>(next + i);
                rows[3 * i + 1] = static_cast<float>((next + i) % 977);
                rows[3 * i + 2] = -static_cast<float>(next + i);
            }
            if (write(out, rows, sizeof rows) != static_cast<ssize_t>(sizeof rows))
                break;
            std::this_thread::sleep_for(m_pause);
        }
        close(out);
    }

    std::chrono::microseconds m_pause;
    pid_t m_pid = 0;
    int m_status = 0;
    std::thread m_feeder;
};
