// What a power cut may leave: of the changes since the last sync of a file or a directory, any.

#include <algorithm>
#include <cstring>
#include <fstream>

#include "tests/faults/Sweep.h"

namespace fs = std::filesystem;

namespace {

// As the shim writes it.
struct Entry
{
    char kind;
    char pad[7];
    std::uint64_t inode;
    std::uint64_t offset;
    std::uint64_t length;
};

// A change of names that may be lost: `from` is gone, `to` leads to the inode.
struct NameChange
{
    std::string from;
    std::string to;
    std::uint64_t inode;
};

struct DataChange
{
    std::uint64_t inode;
    char kind;
    std::uint64_t offset;
    Bytes bytes;
};

struct Disk
{
    std::map<std::string, std::uint64_t> names;
    std::map<std::uint64_t, Bytes> data;

    void apply(const NameChange& change)
    {
        names.erase(change.from);
        if (!change.to.empty())
            names[change.to] = change.inode;
    }
    void apply(const DataChange& change)
    {
        Bytes& file = data[change.inode];
        const std::size_t end = change.offset + change.bytes.size();
        if (change.kind == 't' || file.size() < end)
            file.resize(end);
        std::copy(change.bytes.begin(), change.bytes.end(),
                  file.begin() + static_cast<std::ptrdiff_t>(change.offset));
    }
    Files files() const
    {
        Files all;
        for (const auto& [name, inode] : names)
            all[name] = data.contains(inode) ? data.at(inode) : Bytes();
        return all;
    }
};

// The ways in which unsynced data come to the disk: none, all, the first half, the last half, every other
// one.
constexpr int kWays = 5;
bool comesToTheDisk(int way, std::size_t i, std::size_t n)
{
    const bool ways[kWays] = {false, true, i < n / 2, i >= n / 2, i % 2 == 1};
    return ways[way];
}

class Replay
{
public:
    Replay(const fs::path& folder, const States& states, const Inodes& inodes)
        : m_folder(folder), m_states(states), m_inodes(inodes)
    {
        for (const auto& [name, bytes] : *states.front()) {
            m_synced.names[name] = inodes.at(name);
            m_synced.data[inodes.at(name)] = bytes;
        }
        m_now = m_synced;
    }

    void take(const Entry& entry, const Bytes& bytes)
    {
        const std::string text(bytes.begin(), bytes.end());
        if (entry.kind == 'w' || entry.kind == 't' || entry.kind == 'g')
            change(DataChange{entry.inode, entry.kind, entry.offset, bytes});
        else if (entry.kind == 'c')
            change(NameChange{"", nameOf(text), entry.inode});
        else if (entry.kind == 'u')
            change(NameChange{nameOf(text), "", 0});
        else if (entry.kind == 'r')
            change(NameChange{nameOf(text.substr(0, entry.offset)), nameOf(text.substr(entry.offset)),
                              m_now.names[nameOf(text.substr(0, entry.offset))]});
        else
            sync(entry.inode);
    }

    // Empty where every way of losing leaves the files whole.
    std::string check(long& runs)
    {
        for (std::size_t named = 0; named <= m_names.size(); ++named)
            for (int way = 0; way < kWays; ++way) {
                Disk disk = m_synced;
                for (std::size_t i = 0; i < named; ++i)
                    disk.apply(m_names[i]);
                for (std::size_t i = 0; i < m_data.size(); ++i)
                    if (comesToTheDisk(way, i, m_data.size()))
                        disk.apply(m_data[i]);
                ++runs;
                if (const std::string lost = lostIn(disk.files()); !lost.empty())
                    return lost + " with " + std::to_string(named) + " of " + std::to_string(m_names.size()) +
                           " names, way " + std::to_string(way) + " of " + std::to_string(m_data.size()) +
                           " writes";
            }
        return {};
    }

private:
    std::string nameOf(const fs::path& path) const
    {
        return (m_folder / path).lexically_normal().lexically_relative(m_folder);
    }
    void change(DataChange one)
    {
        if (one.kind == 'g')  // reserved room, which is zeros
            one.bytes.clear();
        m_now.apply(one);
        m_data.push_back(std::move(one));
    }
    void change(NameChange one)
    {
        if (one.from.empty())
            m_now.data[one.inode].clear(), m_synced.data[one.inode].clear();
        m_now.apply(one);
        m_names.push_back(std::move(one));
    }
    void sync(std::uint64_t inode)
    {
        std::erase_if(m_data, [&](const DataChange& one) {
            if (one.inode == inode)
                m_synced.apply(one);
            return one.inode == inode;
        });
        std::erase_if(m_names, [&](const NameChange& one) {
            const std::string directory = fs::path(one.to.empty() ? one.from : one.to).parent_path();
            const bool isIn = m_inodes.contains(directory) && m_inodes.at(directory) == inode;
            if (isIn)
                m_synced.apply(one);
            return isIn;
        });
    }
    std::string lostIn(const Files& files) const
    {
        for (const std::string& name : namesOf({m_states.front(), m_states.back()}))
            if (!isWhole(files, name, m_states)) {
                layOut(files, m_folder);
                if (!canBeBroughtBack(m_folder, name, m_states))
                    return name;
            }
        return {};
    }

    fs::path m_folder;
    const States& m_states;
    const Inodes& m_inodes;
    Disk m_synced;
    Disk m_now;
    std::vector<NameChange> m_names;
    std::vector<DataChange> m_data;
};

}  // namespace

std::string replayRecord(const fs::path& record, const fs::path& folder, const States& states,
                         const Inodes& inodes, std::size_t step, long& runs)
{
    std::ifstream in(record, std::ios::binary);
    Replay replay(folder, states, inodes);
    Entry entry = {};
    for (std::size_t n = 0; in.read(reinterpret_cast<char*>(&entry), sizeof entry); ++n) {
        Bytes bytes(entry.length);
        in.read(reinterpret_cast<char*>(bytes.data()), static_cast<std::streamsize>(bytes.size()));
        replay.take(entry, bytes);
        if (n % step != 0)
            continue;
        if (const std::string lost = replay.check(runs); !lost.empty())
            return lost + " after change " + std::to_string(n);
    }
    return {};
}
