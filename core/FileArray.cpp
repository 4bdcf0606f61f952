#include "core/FileArray.h"

#include <filesystem>
#include <system_error>

using namespace veltrac;

namespace {

bool samePath(const std::string& a, const std::string& b)
{
    std::error_code error;
    return a == b || std::filesystem::equivalent(a, b, error);
}

}  // namespace

std::shared_ptr<PlotFile> FileArray::add(const std::string& path)
{
    for (const std::shared_ptr<PlotFile>& file : m_files)
        if (samePath(file->path(), path))
            return file;
    return m_files.emplace_back(std::make_shared<PlotFile>(path));
}

void FileArray::remove(std::size_t i)
{
    m_files.erase(m_files.begin() + static_cast<std::ptrdiff_t>(i));
}
