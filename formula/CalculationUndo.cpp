#include "formula/CalculationUndo.h"

#include <sys/stat.h>

namespace veltrac {

CalculationUndo::CalculationUndo(std::filesystem::path file, std::unique_ptr<ColumnBackup> old)
    : m_file(std::move(file)), m_old(std::move(old)), m_state(stateOf(m_file))
{
}

bool CalculationUndo::wasChangedSince() const
{
    return stateOf(m_file) != m_state;
}

void CalculationUndo::noteState()
{
    m_state = stateOf(m_file);
}

CalculationUndo::State CalculationUndo::stateOf(const std::filesystem::path& file)
{
    struct stat now = {};
    if (::stat(file.c_str(), &now) != 0)
        return {};
    return {true,
            static_cast<std::uint64_t>(now.st_dev),
            static_cast<std::uint64_t>(now.st_ino),
            now.st_size,
            now.st_mtim.tv_sec,
            now.st_mtim.tv_nsec};
}

}  // namespace veltrac
