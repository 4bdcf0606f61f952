// The failures of the ts-file core.
//
// All types carry the same payload; TSFILE's operations say which members they fill. They have no common
// standard base on purpose: a handler for std::exception must not catch them, because the reporters tell
// each of them in words of its own.
#pragma once

#include <cstdint>
#include <string>
#include <utility>

namespace TS {

struct Failure
{
    std::uint32_t value1 = 0;
    std::uint32_t value2 = 0;
    unsigned char flag = 0;
    std::string name;

    Failure() = default;
    explicit Failure(std::string fileName) : name(std::move(fileName)) {}
    Failure(std::uint32_t first, std::uint32_t second, unsigned char mark, std::string fileName = {})
        : value1(first), value2(second), flag(mark), name(std::move(fileName))
    {
    }
};

// A file could not be created: name.
struct CREATE_ERROR : Failure
{
    using Failure::Failure;
};

// A file could not be opened: name; or a descriptor not duplicated: descriptor, 0, flag 1.
struct OPEN_ERROR : Failure
{
    using Failure::Failure;
};

// The header's version is above 10.
struct NOT_TS_FILE : Failure
{
    using Failure::Failure;
};

// A seek failed: descriptor and offset. A transfer was short: offset and the bytes moved, plus 100000 for
// a read and 200000 for a write, so that the one number tells the two apart.
struct IO_ERROR : Failure
{
    using Failure::Failure;
};

// An operation needs a column "Time" and finds none: name.
struct NO_TIME_COLUMN : Failure
{
    using Failure::Failure;
};

// A sample number beyond the file: sample and sample count; flag 1 when reading, 0 when writing.
struct ILL_SAMPLE : Failure
{
    using Failure::Failure;
};

// A column number beyond the file: column and column count; flag 1 for column information, 0 for values.
struct ILL_COLUMN : Failure
{
    using Failure::Failure;
};

// An appended row lies before the file's start: both times, truncated.
struct ILL_TIME : Failure
{
    using Failure::Failure;
};

// A block write on a file opened for reading: offset, 0, flag 1; unfolding or rebasing one: name.
struct READONLY_VIOLATION : Failure
{
    using Failure::Failure;
};

// An access through a mapped view beyond its size. No view is ever made today; handlers know the type.
struct MAP_ERROR : Failure
{
    using Failure::Failure;
};

}  // namespace TS
