// What the drivers share: one job a process, told as a user would hear of it.
//
// Exit status 0: the job said that it is done; 1: it said why it is not. Anything else is a crash.
#pragma once

#include <cstdio>
#include <functional>
#include <map>
#include <string>

#include "core/FailureText.h"

extern "C" __attribute__((weak)) void faultsArmed(int on);

using FaultJobs = std::map<std::string, std::function<std::string()>>;

// Memory fails in the job alone. A job returns what it told of a failure; empty: it is done.
inline int runFaultJob(const FaultJobs& jobs, const std::string& name)
{
    const auto job = jobs.find(name);
    if (job == jobs.end())
        return 3;
    if (faultsArmed != nullptr)
        faultsArmed(1);
    std::string told;
    try {
        told = job->second();
    } catch (...) {
        told = veltrac::reasonOfFailure();
    }
    if (faultsArmed != nullptr)
        faultsArmed(0);
    std::fprintf(stderr, "%s\n", told.c_str());
    return told.empty() ? 0 : 1;
}
