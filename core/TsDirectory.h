// The ts-files of a directory and what their headers say.
#pragma once

#include <cstdint>
#include <filesystem>
#include <functional>
#include <optional>
#include <string>
#include <unordered_map>
#include <vector>

namespace veltrac {

// A ts-file as it was found. It is kept by value; derived records add what another list shows.
struct TsFileRecord
{
    TsFileRecord() = default;
    TsFileRecord(const TsFileRecord&) = default;
    TsFileRecord& operator=(const TsFileRecord&) = default;
    TsFileRecord(TsFileRecord&&) = default;
    TsFileRecord& operator=(TsFileRecord&&) = default;
    virtual ~TsFileRecord() = default;

    std::string name = "name";  // as the system gives it, without directory
    std::uint32_t samples = 0;
    std::uint32_t columns = 0;
    double sampleTime = 0.0;            // in the file's time unit
    std::string timeUnit{};             // its bare word: "s", "min"
    double unitSeconds = 1.0;           // seconds in it
    std::string description = "descr";  // the header's bytes
    int index = 0;                      // place in the scan, from 0
};

// The names of a directory's ts-files, not of its sub-directories: regular files whose suffix is "ts" in
// whatever case, in no order. None where the directory cannot be read.
std::vector<std::string> tsFilesIn(const std::filesystem::path& directory);

// Reads the headers of the working directory's files of these names, in this order. `report` hears of each
// one that is no ts-file or cannot be opened; those are left out. Nothing is thrown, no file is changed.
std::vector<TsFileRecord> scanTsFiles(const std::vector<std::string>& names,
                                      const std::function<void(const std::string& name)>& report);

// The same files again and again: only the headers of those that have changed since are read.
class TsFileList
{
public:
    // As scanTsFiles(). `report` hears of a file that cannot be listed when it is found so for the second
    // time in one state, and then not before that changes: a file that is being written is none that is
    // corrupt. False where nothing has changed.
    bool look(const std::vector<std::string>& names,
              const std::function<void(const std::string& name)>& report);

    const std::vector<TsFileRecord>& records() const noexcept { return m_records; }

private:
    // Of a file on the disk: another one, or one that was written, has another.
    struct State
    {
        std::uint64_t number = 0;
        std::int64_t size = -1;
        std::int64_t seconds = 0;
        std::int64_t nanoseconds = 0;
        bool operator==(const State&) const = default;
    };
    struct Known
    {
        State state;
        std::optional<TsFileRecord> record;
        int timesSeen = 0;  // of one that cannot be listed
        bool isThere = false;
    };
    static State stateOf(const std::string& name);

    std::unordered_map<std::string, Known> m_known;
    std::vector<TsFileRecord> m_records;
};

}  // namespace veltrac
