// Gives every file of a directory to the fuzz targets once: what was found stays mended.

#include <cstdint>
#include <cstdio>
#include <ctime>
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
        const std::clock_t before = std::clock();  // the processor's time: others may want it more
        const bool isTaken = LLVMFuzzerTestOneInput(bytes.data(), bytes.size()) == 0;
        constexpr double kMostSeconds = 20.0;  // one, without sanitizers
        slow = slow || static_cast<double>(std::clock() - before) / CLOCKS_PER_SEC > kMostSeconds;
        if (isTaken)
            ++files;
    }
    return files > 0 && !slow ? 0 : 1;
}
