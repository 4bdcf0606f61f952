// Worker threads: what comes out is the same with any number of them.

#include "core/WorkerPool.h"

#include <gtest/gtest.h>

#include <atomic>
#include <chrono>
#include <stdexcept>
#include <string>
#include <thread>
#include <vector>

using namespace veltrac;

namespace {

constexpr int kNever = -1;

// Squares the numbers below `pieces`, and fails or is cancelled where it is told to.
struct SquaresJob
{
    int pieces = 40;
    int failTake = kNever;
    int failWork = kNever;
    int failGive = kNever;
    int cancelBehind = kNever;

    std::string log{};  // what was given, and how it ended
    std::atomic<int> atWork{0};

    void run(WorkerPool& pool)
    {
        std::vector<int> value(pool.slots());
        int next = 0;
        int given = 0;
        const auto failing = [](int piece, int at) {
            if (piece == at)
                throw std::runtime_error(std::to_string(at));
        };
        const WorkerPool::Stages stages{
            [&](std::size_t slot) {
                failing(next, failTake);
                value[slot] = next;
                return next++ < pieces;
            },
            [&](std::size_t slot) {
                ++atWork;
                const int piece = value[slot];
                // Later pieces are done earlier.
                std::this_thread::sleep_for(std::chrono::microseconds(piece % 7 == 3 ? 900 : 10));
                value[slot] = piece * piece;
                --atWork;
                failing(piece, failWork);
            },
            [&](std::size_t slot) {
                failing(given, failGive);
                log += std::to_string(value[slot]) + ' ';
                ++given;
            }};
        try {
            const JobOutcome outcome =
                pool.run(stages, [&] { return cancelBehind == kNever || given <= cancelBehind; });
            log += outcome == JobOutcome::Done ? "done" : "cancelled";
        } catch (const std::runtime_error& e) {
            log += std::string("failed at ") + e.what();
        }
        EXPECT_EQ(atWork, 0);
    }
};

std::string squaresBelow(int end, const char* outcome)
{
    std::string log;
    for (int i = 0; i < end; ++i)
        log += std::to_string(i * i) + ' ';
    return log + outcome;
}

}  // namespace

TEST(WorkerPool, ResultFailureAndCancelAreThoseOfOneThread)
{
    for (const unsigned threads : {1U, 2U, 3U, 8U}) {
        SCOPED_TRACE(threads);
        WorkerPool pool(threads);
        const auto logOf = [&](SquaresJob&& job) {
            job.run(pool);
            return job.log;
        };
        EXPECT_EQ(logOf({}), squaresBelow(40, "done"));
        EXPECT_EQ(logOf({.pieces = 0}), "done");
        EXPECT_EQ(logOf({.failTake = 0}), "failed at 0");
        // The first piece that fails counts, wherever the others are by then.
        EXPECT_EQ(logOf({.failTake = 12}), squaresBelow(12, "failed at 12"));
        EXPECT_EQ(logOf({.failTake = 13, .failWork = 11}), squaresBelow(11, "failed at 11"));
        EXPECT_EQ(logOf({.failWork = 10, .failGive = 9}), squaresBelow(9, "failed at 9"));
        EXPECT_EQ(logOf({.failWork = 6, .cancelBehind = 4}), squaresBelow(5, "cancelled"));
    }
}

TEST(WorkerPool, AJobInsideAnotherAndJobsOfSeveralThreadsFinish)
{
    WorkerPool pool(3);
    std::vector<std::thread> callers;
    std::vector<SquaresJob> jobs(4);
    callers.reserve(jobs.size());
    for (SquaresJob& job : jobs)
        callers.emplace_back([&] { job.run(pool); });
    int outer = 0;
    SquaresJob inner;
    pool.run({[&](std::size_t) { return outer < 5; }, [](std::size_t) {}, [&](std::size_t) { ++outer; }},
             [&] {
                 if (outer == 2)
                     inner.run(pool);
                 return true;
             });
    for (std::thread& caller : callers)
        caller.join();
    EXPECT_GE(outer, 5);
    EXPECT_EQ(inner.log, squaresBelow(40, "done"));
    for (const SquaresJob& job : jobs)
        EXPECT_EQ(job.log, squaresBelow(40, "done"));
}
