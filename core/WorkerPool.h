// The program's worker threads, and the one way in which jobs use them.
//
// A job is cut into pieces that pass three stages: `take` brings a piece in (reads it), `work` computes it,
// `give` takes it out (writes or joins it). take() and give() are called on the caller's thread alone, in the
// order of the pieces, so whatever they touch - a file, a sum, a window - is never shared. work() is called
// on any thread, for several pieces at once, and sees nothing but its own piece. So no result depends on the
// number of threads, as long as the pieces do not.
#pragma once

#include <condition_variable>
#include <cstddef>
#include <cstdint>
#include <deque>
#include <exception>
#include <functional>
#include <mutex>
#include <thread>
#include <vector>

#include "core/Progress.h"

namespace veltrac {

class WorkerPool
{
public:
    // The caller's thread counts as one of `threads` (at least 1).
    explicit WorkerPool(unsigned threads);
    // No run() may be on its way.
    ~WorkerPool();
    WorkerPool(const WorkerPool&) = delete;
    WorkerPool& operator=(const WorkerPool&) = delete;

    // The pool of the whole program: as many threads as the environment's VELTRAC_THREADS says (1 to 256),
    // else as many as there are cores.
    static WorkerPool& shared();

    unsigned threads() const noexcept { return static_cast<unsigned>(m_threads.size()) + 1; }

    // `slot` is the place of a piece on its way, 0 to slots() - 1: what the stages keep for a piece belongs
    // there. No two pieces have the same one at the same time.
    struct Stages
    {
        std::function<bool(std::size_t slot)> take;  // false: there are no more pieces
        std::function<void(std::size_t slot)> work;
        std::function<void(std::size_t slot)> give;
    };
    std::size_t slots() const noexcept { return m_threads.empty() ? 1 : 2 * m_threads.size() + 2; }

    // Sends all pieces through the stages. `goesOn` (may be empty) is asked on the caller's thread after each
    // piece that was given; it may run another job on the same pool.
    //
    // What a stage throws reaches the caller: that of the first piece that failed, after all pieces before it
    // were given and none behind it. After a failure or a cancel no thread works on a piece any more.
    JobOutcome run(const Stages& stages, const std::function<bool()>& goesOn);

private:
    class Job;

    void help();

    std::mutex m_mutex;  // guards what follows and the jobs' pieces
    std::condition_variable m_wanted;
    std::deque<Job*> m_jobs;  // with pieces that nobody works on yet
    bool m_ending = false;
    std::vector<std::thread> m_threads;
};

}  // namespace veltrac
