// Names of ts-files on their way to TSFILE, whose name rule turns "2016-05-17 log" into ts2016.ts, "data.v2"
// into data.ts and a name that begins with an umlaut into a blank. Here a file is opened and made under the
// very name that the directory or the user gave.
#pragma once

#include <cstdint>
#include <memory>
#include <string>

class TSFILE;

namespace veltrac {

// True where TSFILE's rule would open a file of exactly this name.
bool keepsItsName(const std::string& fileName);

// The spelling under which the rule leaves a file name that ends in ".ts" alone: "./" before it where that
// is needed. Other endings come back unchanged.
std::string literalTsName(const std::string& fileName);

// Opens exactly the file of that name, whatever its name ("data.TS" too). Throws as TSFILE's constructors.
std::unique_ptr<TSFILE> openTsFile(const std::string& fileName, bool readOnly);

// Creates exactly the file of that name, which ends in ".ts". Throws as TSFILE's constructor, and
// TS::CREATE_ERROR for a name that is too long for it.
std::unique_ptr<TSFILE> createTsFile(const std::string& fileName, std::uint32_t samples,
                                     std::uint32_t columns, int timeMode = 0);

// The file name that a user means who types a name for a new file, with or without ".ts": digits alone
// give the numbered name (5 gives ts0005.ts), everything else itself with ".ts" at its end.
std::string newTsFileName(const std::string& typed);

}  // namespace veltrac
