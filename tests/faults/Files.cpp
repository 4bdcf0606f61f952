#include <sys/stat.h>

#include <algorithm>
#include <chrono>
#include <cstring>
#include <fstream>

#include "core/ColumnBackup.h"
#include "core/TSFILE.h"
#include "core/TsHeader.h"
#include "core/TsNames.h"
#include "tests/core/TsFileBytes.h"
#include "tests/faults/Sweep.h"

namespace fs = std::filesystem;
using namespace veltrac;

Files filesBelow(const fs::path& folder)
{
    Files files;
    for (const auto& entry : fs::recursive_directory_iterator(folder))
        if (entry.is_regular_file())
            files[entry.path().lexically_relative(folder)] = bytesOf(entry.path());
    return files;
}

Inodes inodesBelow(const fs::path& folder)
{
    Inodes inodes;
    const auto add = [&](const fs::path& path, const std::string& name) {
        struct stat found = {};
        ::stat(path.c_str(), &found);
        inodes[name] = found.st_ino;
    };
    add(folder, "");
    for (const auto& entry : fs::recursive_directory_iterator(folder))
        add(entry.path(), entry.path().lexically_relative(folder));
    return inodes;
}

std::set<std::string> namesOf(std::initializer_list<const Files*> all)
{
    std::set<std::string> names;
    for (const Files* const files : all)
        for (const auto& [name, bytes] : *files)
            names.insert(name);
    return names;
}

bool same(const Files& a, const Files& b, const std::string& name)
{
    const auto one = a.find(name);
    const auto other = b.find(name);
    return one == a.end() || other == b.end() ? (one == a.end()) == (other == b.end())
                                              : one->second == other->second;
}

void age(const fs::path& file)
{
    // The same for all files and runs: imports take the time of a file for the start of its series.
    static const auto then = fs::file_time_type::clock::now() - std::chrono::hours(2);
    fs::last_write_time(file, then);
}

void layOver(const Files& files, const fs::path& folder)
{
    for (const auto& [name, bytes] : files) {
        std::ofstream(folder / name, std::ios::binary)
            .write(reinterpret_cast<const char*>(bytes.data()), static_cast<std::streamsize>(bytes.size()));
        age(folder / name);
    }
}

void layOut(const Files& files, const fs::path& folder)
{
    fs::remove_all(folder);
    fs::create_directories(folder / "scratch");
    fs::create_directories(folder / "results");
    layOver(files, folder);
}

bool isWhole(const Files& files, const std::string& name, const States& states)
{
    return std::any_of(states.begin(), states.end(),
                       [&](const Files* state) { return same(files, *state, name); });
}

namespace {

TsHeader headerOf(const Bytes& file)
{
    Block image = {};
    std::copy_n(file.begin(), std::min(file.size(), image.size()), image.begin());
    ByteOrder order = ByteOrder::Native;
    return decodeHeader(image, order);
}

// Whether a ring file on its way from one state to the other holds each sample that it names.
bool namesWhatIsThere(const Bytes& now, const Bytes& before, const Bytes& after)
{
    const TsHeader old = headerOf(before);
    const TsHeader head = headerOf(now);
    if (old.ringStart == 0 || now.size() != before.size() || now.size() != after.size() ||
        head.lastSample < old.lastSample || head.lastSample > headerOf(after).lastSample ||
        !std::equal(now.begin(), now.begin() + kRingStartAt, before.begin()))
        return false;
    const std::size_t width = old.columns * sizeof(float);
    for (std::uint32_t s = head.ringStart; s <= head.lastSample; ++s) {
        const Bytes& whole = s <= old.lastSample ? before : after;
        const std::size_t at = dataOffset(old.columns) + (s - 1) % old.samples * width;
        if (std::memcmp(&now[at], &whole[at], width) != 0)
            return false;
    }
    return true;
}

}  // namespace

bool canBeBroughtBack(const fs::path& folder, const std::string& name, const States& states)
{
    const Bytes now = bytesOf(folder / name);
    for (const Files* const state : states)
        if (!state->contains(name) || state->at(name).size() != now.size())
            return false;
    if (namesWhatIsThere(now, states.front()->at(name), states.back()->at(name)))
        return true;
    // Stamps and texts of a column are written apart from each other, and meet in one word.
    constexpr std::size_t kHead = 1536;
    for (std::size_t i = 0; i < now.size(); i += i < kHead ? 1 : sizeof(float)) {
        const std::size_t size = i < kHead ? 1 : sizeof(float);
        if (std::none_of(states.begin(), states.end(), [&](const Files* state) {
                return std::memcmp(&now[i], &state->at(name)[i], size) == 0;
            }))
            return false;
    }
    for (const auto& entry : fs::directory_iterator(folder / "scratch"))
        if (entry.path().filename().string().starts_with("veltrac-old-values")) {
            const fs::path copy = folder.parent_path() / "copy.ts";
            fs::copy_file(folder / name, copy, fs::copy_options::overwrite_existing);
            try {
                restoreOldValues(entry.path(), *openTsFile(copy, false), {});
            } catch (...) {
                continue;
            }
            if (isWhole({{name, bytesOf(copy)}}, name, states))
                return true;
        }
    return false;
}
