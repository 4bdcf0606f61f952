// Files of a folder as the sweep looks at them, and what a power cut may leave of them.
#pragma once

#include <cstdint>
#include <filesystem>
#include <initializer_list>
#include <map>
#include <set>
#include <string>
#include <vector>

using Bytes = std::vector<unsigned char>;
using Files = std::map<std::string, Bytes>;           // by their names below the folder
using Inodes = std::map<std::string, std::uint64_t>;  // "" is the folder itself

Files filesBelow(const std::filesystem::path& folder);
Inodes inodesBelow(const std::filesystem::path& folder);
std::set<std::string> namesOf(std::initializer_list<const Files*> all);
// Both lack the file, or have it alike.
bool same(const Files& a, const Files& b, const std::string& name);

// Sets of files that are whole each: the old ones, the new ones, those between two steps of a job.
using States = std::vector<const Files*>;
bool isWhole(const Files& files, const std::string& name, const States& states);

// Makes a folder of exactly these files, which were last changed two hours ago; the second leaves others in
// it.
void layOut(const Files& files, const std::filesystem::path& folder);
void layOver(const Files& files, const std::filesystem::path& folder);
void age(const std::filesystem::path& file);

// Whether every value of the file is that of one of the states, and a file of old values in the folder makes
// it the one of a state again; of a ring file, whether it holds all samples that it names.
bool canBeBroughtBack(const std::filesystem::path& folder, const std::string& name, const States& states);

// Replays what the shim has recorded up to each change (every `step`-th), with what was not synced by then
// lost in many ways: names before data and data before names. `states` begins with the old files. Returns the
// first way that leaves a file not whole nor able to be brought back; empty: none does. Adds to `runs` how
// many were tried.
std::string replayRecord(const std::filesystem::path& record, const std::filesystem::path& folder,
                         const States& states, const Inodes& inodes, std::size_t step, long& runs);
