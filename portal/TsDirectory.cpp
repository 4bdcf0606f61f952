#include "portal/TsDirectory.h"

#include <QCollator>
#include <QDirIterator>
#include <QFile>

#include <algorithm>
#include <cmath>
#include <filesystem>
#include <optional>
#include <system_error>

#include "core/TsNames.h"
#include "share/HeaderText.h"

namespace veltrac {

namespace {

std::vector<QString> candidates()
{
    std::vector<QString> names;
    QDirIterator entries(QStringLiteral("."));
    while (entries.hasNext()) {
        entries.next();
        const QFileInfo entry = entries.fileInfo();
        // The suffix first: it costs nothing, while the kind of a file has to be asked from the disk.
        if (entry.suffix().toLower() == QLatin1String("ts") && entry.isFile())
            names.push_back(entries.fileName());
    }
    // A directory's own order is any order. By name, with 9.ts before 10.ts, a file is found at a glance.
    QCollator byName;
    byName.setNumericMode(true);
    byName.setCaseSensitivity(Qt::CaseInsensitive);
    std::sort(names.begin(), names.end(), byName);
    return names;
}

std::optional<TsFileRecord> recordOf(const QString& name)
{
    try {
        const auto file = openTsFile(QFile::encodeName(name).toStdString(), true);
        TsFileRecord record;
        record.name = name;
        record.samples = file->samples();
        record.columns = file->columns();
        record.sampleTime = static_cast<double>(file->dt());
        record.description = headerText(file->description());
        return record;
    } catch (...) {
        // Whatever is wrong with it, it is no ts-file that can be listed.
        return std::nullopt;
    }
}

}  // namespace

std::vector<TsFileRecord> scanTsFiles(const std::function<void(const QString& name)>& report)
{
    std::vector<TsFileRecord> records;
    for (const QString& name : candidates()) {
        std::optional<TsFileRecord> record = recordOf(name);
        if (!record) {
            report(name);
            continue;
        }
        record->index = static_cast<int>(records.size());
        records.push_back(std::move(*record));
    }
    return records;
}

int countForeignNames()
{
    int count = 0;
    std::error_code error;
    std::filesystem::directory_iterator entry(".", error);
    for (; !error && entry != std::filesystem::directory_iterator(); entry.increment(error)) {
        const QByteArray name = QByteArray::fromStdString(entry->path().filename().string());
        if (name.toLower().endsWith(".ts") && QFile::encodeName(QFile::decodeName(name)) != name)
            ++count;
    }
    return count;
}

QString sampleTimeText(double sampleTime)
{
    return QStringLiteral("%1").arg(sampleTime, 0, 'f', std::fabs(sampleTime) > 1.0 ? 3 : 4);
}

}  // namespace veltrac
