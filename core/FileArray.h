// The files of a plot, each opened once and shared by all variables on it.
#pragma once

#include <memory>
#include <string>
#include <vector>

#include "core/PlotFile.h"

class FileArray
{
public:
    // Opens a file, or gives the one that is open already under another spelling of the same path.
    // Throws as TSFILE's constructors.
    std::shared_ptr<veltrac::PlotFile> add(const std::string& path);

    std::size_t size() const noexcept { return m_files.size(); }
    const std::shared_ptr<veltrac::PlotFile>& file(std::size_t i) const { return m_files[i]; }
    bool changedOnDisk(std::size_t i) const { return m_files[i]->changedOnDisk(); }
    // Variables that still hold the file keep it open.
    void remove(std::size_t i);

private:
    std::vector<std::shared_ptr<veltrac::PlotFile>> m_files;
};
