// What the main window's table shows: the ts-files of the working directory and what their headers say.
#pragma once

#include <QString>

#include <cstdint>
#include <functional>
#include <vector>

namespace veltrac {

// A ts-file as it was found. It is kept by value; derived records add what another table shows.
struct TsFileRecord
{
    TsFileRecord() = default;
    TsFileRecord(const TsFileRecord&) = default;
    TsFileRecord& operator=(const TsFileRecord&) = default;
    TsFileRecord(TsFileRecord&&) = default;
    TsFileRecord& operator=(TsFileRecord&&) = default;
    virtual ~TsFileRecord() = default;

    QString name = QStringLiteral("name");  // without directory
    std::uint32_t samples = 0;
    std::uint32_t columns = 0;
    double sampleTime = 0.0;  // seconds, unless the file's time unit says otherwise
    QString description = QStringLiteral("descr");
    int index = 0;  // place in the scan, from 0
};

// Scans the working directory, not its sub-directories: regular files whose suffix is "ts" in whatever case,
// in the order of their names. `report` hears of each one that is no ts-file or cannot be opened; those are
// left out. Nothing is thrown, no file is changed.
std::vector<TsFileRecord> scanTsFiles(const std::function<void(const QString& name)>& report);

// How many ts-files of the working directory Qt passes over, because their names are no text in the system's
// encoding (names from another system, such as Latin-1 umlauts where names are UTF-8).
int countForeignNames();

// A sample time as the table shows it: three decimals beyond one second, else four.
QString sampleTimeText(double sampleTime);

}  // namespace veltrac
