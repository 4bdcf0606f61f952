// Gives every file of a directory to the fuzz targets once: what was found stays mended.

#include <chrono>
#include <cstdint>
#include <cstdio>
#include <filesystem>

#include "tests/core/TsFileBytes.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size);

int main(int count, char** words)
{
    std::size_t files = 0;
    bool slow = false;
    for (const auto& entry :
         std::filesystem::directory_iterator(std::filesystem::absolute(words[count - 1]))) {
        const auto bytes = bytesOf(entry.path());
        const auto before = std::chrono::steady_clock::now();
        const bool isTaken = LLVMFuzzerTestOneInput(bytes.data(), bytes.size()) == 0;
        const std::chrono::duration<double> took = std::chrono::steady_clock::now() - before;
        constexpr double kMostSeconds =
            20.0;  // one alone; under sanitizers, beside other tests, it is much more
        slow = slow || took.count() > kMostSeconds;
        if (isTaken)
            ++files;
    }
    return files > 0 && !slow ? 0 : 1;
}
