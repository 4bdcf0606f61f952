#include "core/TsDirectory.h"

#include <optional>
#include <system_error>

#include "core/FileTime.h"
#include "core/TsNames.h"

namespace veltrac {

namespace {

bool hasTsSuffix(const std::string& name)
{
    const std::size_t dot = name.rfind('.');
    return dot != std::string::npos && name.size() == dot + 3 && (name[dot + 1] | 0x20) == 't' &&
           (name[dot + 2] | 0x20) == 's';
}

std::optional<TsFileRecord> recordOf(const std::string& name)
{
    try {
        const auto file = openTsFile(name, true);
        TsFileRecord record;
        record.name = name;
        record.samples = file->samples();
        record.columns = file->columns();
        record.sampleTime = static_cast<double>(file->dt());
        const std::string unit = file->timeUnit();
        record.timeUnit = bareTimeUnit(unit);
        record.unitSeconds = secondsInTimeUnit(unit);
        record.description = file->description();
        return record;
    } catch (...) {
        // Whatever is wrong with it, it is no ts-file that can be listed.
        return std::nullopt;
    }
}

}  // namespace

std::vector<std::string> tsFilesIn(const std::filesystem::path& directory)
{
    std::vector<std::string> names;
    std::error_code error;
    std::filesystem::directory_iterator entry(directory, error);
    for (; !error && entry != std::filesystem::directory_iterator(); entry.increment(error)) {
        std::string name = entry->path().filename().string();
        // The suffix first: it costs nothing, while the kind of a file may have to be asked from the disk.
        std::error_code unknown;
        if (hasTsSuffix(name) && entry->is_regular_file(unknown))
            names.push_back(std::move(name));
    }
    return names;
}

std::vector<TsFileRecord> scanTsFiles(const std::vector<std::string>& names,
                                      const std::function<void(const std::string& name)>& report)
{
    std::vector<TsFileRecord> records;
    for (const std::string& name : names) {
        std::optional<TsFileRecord> record = recordOf(name);
        if (!record) {
            report(name);
            continue;
        }
        record->index = static_cast<int>(records.size());
        records.push_back(std::move(*record));
    }
    return records;
}

}  // namespace veltrac
