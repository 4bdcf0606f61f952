#include "core/WorkerPool.h"

#include <algorithm>
#include <charconv>
#include <cstdlib>
#include <cstring>

namespace veltrac {

namespace {

constexpr unsigned kMostThreads = 256;

unsigned wantedThreads()
{
    unsigned threads = 0;
    if (const char* const text = std::getenv("VELTRAC_THREADS"))
        std::from_chars(text, text + std::strlen(text), threads);
    if (threads == 0)
        threads = std::max(1U, std::thread::hardware_concurrency());
    return std::min(threads, kMostThreads);
}

}  // namespace

// The pieces of one run() that are on their way.
class WorkerPool::Job
{
public:
    Job(WorkerPool& pool, const Stages& stages) : m_pool(pool), m_stages(stages), m_pieces(pool.slots()) {}

    // Whatever ends the job, no piece of it is left behind.
    ~Job()
    {
        std::unique_lock lock(m_pool.m_mutex);
        m_queued.clear();
        std::erase(m_pool.m_jobs, this);
        m_done.wait(lock, [this] { return m_atWork == 0; });
    }
    Job(const Job&) = delete;
    Job& operator=(const Job&) = delete;

    JobOutcome run(const std::function<bool()>& goesOn)
    {
        for (;;) {
            while (m_taken - m_given < m_pieces.size() && takeNext()) {
            }
            if (m_taken == m_given)
                break;
            finishNext();
            const std::size_t slot = slotOf(m_given);
            if (m_pieces[slot].failure)
                std::rethrow_exception(m_pieces[slot].failure);
            m_stages.give(slot);
            ++m_given;
            if (goesOn && !goesOn())
                return JobOutcome::Cancelled;
        }
        if (m_takeFailure)
            std::rethrow_exception(m_takeFailure);
        return JobOutcome::Done;
    }

    // Works on the piece that was queued first; the lock is held before and after.
    void workOnOne(std::unique_lock<std::mutex>& lock)
    {
        const std::size_t slot = m_queued.front();
        m_queued.pop_front();
        if (m_queued.empty())
            std::erase(m_pool.m_jobs, this);
        ++m_atWork;
        lock.unlock();
        std::exception_ptr failure;
        try {
            m_stages.work(slot);
        } catch (...) {
            failure = std::current_exception();
        }
        lock.lock();
        m_pieces[slot].failure = failure;
        m_pieces[slot].isDone = true;
        --m_atWork;
        // Under the lock: the job may be gone as soon as it is let go.
        m_done.notify_all();
    }

private:
    struct Piece
    {
        bool isDone = false;
        std::exception_ptr failure;
    };

    std::size_t slotOf(std::uint64_t piece) const
    {
        return static_cast<std::size_t>(piece % m_pieces.size());
    }

    // False where there is no piece to take any more.
    bool takeNext()
    {
        if (m_isExhausted)
            return false;
        const std::size_t slot = slotOf(m_taken);
        try {
            m_isExhausted = !m_stages.take(slot);
        } catch (...) {
            // The pieces before this one come first.
            m_takeFailure = std::current_exception();
            m_isExhausted = true;
        }
        if (m_isExhausted)
            return false;
        ++m_taken;
        const std::lock_guard lock(m_pool.m_mutex);
        m_pieces[slot] = {};
        if (m_queued.empty())
            m_pool.m_jobs.push_back(this);
        m_queued.push_back(slot);
        m_pool.m_wanted.notify_one();
        return true;
    }

    // Until the next piece to be given is done; the caller works as well.
    void finishNext()
    {
        std::unique_lock lock(m_pool.m_mutex);
        const Piece& next = m_pieces[slotOf(m_given)];
        while (!next.isDone) {
            if (m_queued.empty())
                m_done.wait(lock);
            else
                workOnOne(lock);
        }
    }

    WorkerPool& m_pool;
    const Stages& m_stages;
    std::vector<Piece> m_pieces;
    std::deque<std::size_t> m_queued;  // guarded by the pool's mutex, as the next two
    std::size_t m_atWork = 0;
    std::condition_variable m_done;
    std::uint64_t m_taken = 0;
    std::uint64_t m_given = 0;
    bool m_isExhausted = false;
    std::exception_ptr m_takeFailure;
};

WorkerPool::WorkerPool(unsigned threads)
{
    for (unsigned i = 1; i < threads; ++i)
        m_threads.emplace_back([this] { help(); });
}

WorkerPool::~WorkerPool()
{
    {
        const std::lock_guard lock(m_mutex);
        m_ending = true;
    }
    m_wanted.notify_all();
    for (std::thread& thread : m_threads)
        thread.join();
}

WorkerPool& WorkerPool::shared()
{
    static WorkerPool pool(wantedThreads());
    return pool;
}

JobOutcome WorkerPool::run(const Stages& stages, const std::function<bool()>& goesOn)
{
    return Job(*this, stages).run(goesOn);
}

void WorkerPool::help()
{
    std::unique_lock lock(m_mutex);
    while (!m_ending) {
        if (m_jobs.empty())
            m_wanted.wait(lock);
        else
            m_jobs.front()->workOnOne(lock);
    }
}

}  // namespace veltrac
