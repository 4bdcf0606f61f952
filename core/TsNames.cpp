#include "core/TsNames.h"

#include <fcntl.h>

#include <algorithm>
#include <string_view>

#include "core/Characters.h"
#include "core/TSFILE.h"
#include "core/TsExceptions.h"

namespace veltrac {

namespace {

constexpr std::string_view kExtension = ".ts";
constexpr std::size_t kLongestName = 255;

}  // namespace

bool keepsItsName(const std::string& fileName)
{
    return fileName.size() <= kLongestName && fileName == TSFILE::tsFileName(fileName.c_str());
}

std::string literalTsName(const std::string& fileName)
{
    if (keepsItsName(fileName))
        return fileName;
    const std::string beside = "./" + fileName;
    return keepsItsName(beside) ? beside : fileName;
}

std::unique_ptr<TSFILE> openTsFile(const std::string& fileName, bool readOnly)
{
    const std::string literal = literalTsName(fileName);
    if (keepsItsName(literal))
        return std::make_unique<TSFILE>(literal.c_str(), readOnly);
    const BlockFile file(BlockFile::open(fileName.c_str(), readOnly), readOnly);
    if (file.descriptor() < 1)
        throw TS::OPEN_ERROR(fileName);
    return std::make_unique<TSFILE>(file.descriptor(), readOnly);
}

std::unique_ptr<TSFILE> createTsFile(const std::string& fileName, std::uint32_t samples,
                                     std::uint32_t columns, int timeMode)
{
    const std::string literal = literalTsName(fileName);
    if (!keepsItsName(literal))
        throw TS::CREATE_ERROR(fileName);
    return std::make_unique<TSFILE>(literal.c_str(), samples, columns, timeMode);
}

std::string newTsFileName(const std::string& typed)
{
    if (!typed.empty() && std::all_of(typed.begin(), typed.end(), isDigit))
        return TSFILE::tsFileName(typed.c_str());
    return typed.ends_with(kExtension) ? typed : typed + std::string(kExtension);
}

}  // namespace veltrac
