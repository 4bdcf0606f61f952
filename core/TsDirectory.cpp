#include "core/TsDirectory.h"

#include <sys/stat.h>

#include <system_error>

#include "core/FileTime.h"
#include "core/TSFILE.h"
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

TsFileList::State TsFileList::stateOf(const std::string& name)
{
    struct stat file = {};
    if (::stat(name.c_str(), &file) != 0)
        return {};
    return {file.st_ino, file.st_size, file.st_mtim.tv_sec, file.st_mtim.tv_nsec};
}

bool TsFileList::look(const std::vector<std::string>& names,
                      const std::function<void(const std::string& name)>& report)
{
    bool hasChanged = false;
    for (auto& [name, known] : m_known)
        known.isThere = false;
    for (const std::string& name : names) {
        Known& known = m_known[name];
        known.isThere = true;
        const State state = stateOf(name);
        if (!(known.state == state) || (!known.record && known.timesSeen == 0)) {
            hasChanged = true;
            known.state = state;
            known.record = recordOf(name);
            known.timesSeen = 0;
        }
        constexpr int kToldAt = 2;
        if (!known.record && known.timesSeen < kToldAt && ++known.timesSeen == kToldAt)
            report(name);
    }
    hasChanged =
        std::erase_if(m_known, [](const auto& entry) { return !entry.second.isThere; }) > 0 || hasChanged;
    if (!hasChanged)
        return false;
    m_records.clear();
    m_records.reserve(names.size());
    for (const std::string& name : names)
        if (const std::optional<TsFileRecord>& record = m_known[name].record) {
            m_records.push_back(*record);
            m_records.back().index = static_cast<int>(m_records.size()) - 1;
        }
    return true;
}

}  // namespace veltrac
