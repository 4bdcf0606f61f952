// Many files at once: worker processes, each of which takes one file after the other.
//
// Processes, because what one of them meets (a file that kills it, memory that runs out) harms no other one,
// and because ts-files share a lock within a process.
#pragma once

#include <cstddef>
#include <functional>
#include <string>

namespace veltrac {

struct TaskOutcome
{
    enum class State {
        Done,
        Skipped,
        Failed,
        Interrupted,
        Died  // the worker; `notes` says how
    };
    State state = State::Done;
    std::string out{};    // for standard output
    std::string notes{};  // for standard error
    std::string report{};
};

// Runs `task` for 0 to count - 1 in up to `workers` processes, in this one where one is enough or none can be
// had, and hands the outcomes to `take` in the order of their numbers. A worker that dies fails the task that
// it had. Once stopAsked(), no further task is begun, and those that run are told to stop. `advanced` hears
// how many are done.
void runTasks(std::size_t count, unsigned workers, const std::function<TaskOutcome(std::size_t)>& task,
              const std::function<void(std::size_t, const TaskOutcome&)>& take,
              const std::function<void(std::size_t done)>& advanced);

}  // namespace veltrac
