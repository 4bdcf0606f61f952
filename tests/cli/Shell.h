// Starts veltrac-cli as a shell does, in the test's directory.
#pragma once

#include <sys/wait.h>

#include <cstdio>
#include <cstdlib>
#include <fstream>
#include <iterator>
#include <string>

inline std::string textOf(const std::string& file)
{
    std::ifstream in(file, std::ios::binary);
    return {std::istreambuf_iterator<char>(in), {}};
}

struct ShellOutcome
{
    int status = -1;  // 128 + the signal that ended it
    std::string out{};
    std::string notes{};  // standard error
};

// `before` stands in front of the program: "ulimit -f 4;".
inline ShellOutcome cli(const std::string& arguments, const std::string& before = {},
                        const std::string& input = "/dev/null")
{
    const int ended =
        std::system((before + " " VELTRAC_CLI " " + arguments + " >.out 2>.err <" + input).c_str());
    ShellOutcome outcome{WIFEXITED(ended) ? WEXITSTATUS(ended) : 128 + WTERMSIG(ended), textOf(".out"),
                         textOf(".err")};
    std::remove(".out");
    std::remove(".err");
    return outcome;
}
