#include "core/RingFile.h"

#include <algorithm>
#include <cmath>
#include <functional>

#include "core/CopyFile.h"
#include "core/FileTime.h"
#include "core/Interval.h"
#include "core/NumberTexts.h"
#include "core/PlotFile.h"
#include "core/SafeChange.h"
#include "core/TSFILE.h"
#include "core/TsHeader.h"
#include "core/TsNames.h"

namespace veltrac {

namespace {

namespace fs = std::filesystem;

constexpr const char* kScratchStem = ".veltrac-ring";

// Lets `change` work on a copy, which then takes the file's place unless it returns false.
bool changeCopy(const fs::path& file, const std::function<bool(TSFILE& copy, const fs::path& path)>& change)
{
    PendingFile pending(file, kScratchStem, ".ts");
    {
        const auto from = openTsFile(file.string(), true);
        if (copyBytes(from->descriptor(), pending.path(), {}) == JobOutcome::Cancelled)
            return false;
        const auto copy = openTsFile(pending.path().string(), false);
        if (!change(*copy, pending.path()))
            return false;
        copy->flush(true);
    }
    pending.commit();
    return true;
}

// The start with so many seconds more, whole ones where they are exact.
void moveStart(TSFILE& file, double seconds)
{
    const double rest = static_cast<double>(file.startTime()) + seconds;
    if (file.startSeconds() == 0) {
        file.setStart(0, static_cast<float>(rest));
        return;
    }
    const double whole = std::floor(rest);
    file.setStart(file.startSeconds() + static_cast<std::uint32_t>(wholePart(whole)),
                  static_cast<float>(rest - whole));
}

}  // namespace

void makeRingFile(const fs::path& file, const RingShape& shape)
{
    PendingFile pending(file, kScratchStem, ".ts");
    {
        const auto made = createTsFile(pending.path().string(), shape.samples,
                                       static_cast<std::uint32_t>(shape.columns.size()), shape.timeMode);
        made->dt(shape.dt);
        made->timeUnit("Time[s]");
        made->description(shape.description.c_str());
        const auto behindTime = static_cast<std::uint32_t>(made->timeMode());
        for (std::uint32_t c = 1; c <= made->columns(); ++c)
            made->stampColumn(c);
        for (std::uint32_t c = 0; c < shape.columns.size(); ++c) {
            made->columnName(behindTime + c + 1, shape.columns[c].name.c_str());
            made->columnDescription(behindTime + c + 1, shape.columns[c].description.c_str());
        }
        made->setRingMode(true);
        made->flush(true);
    }
    pending.commit();
}

JobOutcome unfoldRing(const fs::path& ring, const fs::path& target, const Progress& progress)
{
    const PlotFile from(ring.string());
    return from.rows() == 0 ? JobOutcome::Cancelled : saveInterval(from, 1, from.rows(), target, progress);
}

std::string ringText(TSFILE& file)
{
    if (file.ringStart() == 0)
        return {};
    return file.lastSample() < file.ringStart() ? "ring, no samples yet"
                                                : "ring, oldest sample " + groupedDigits(file.ringStart());
}

bool isFineTime(double time, double step)
{
    // A float is off by half of its last of 24 bits at most.
    constexpr double kRounding = 1.0 / (1 << 24);
    constexpr double kShareOfStep = 0.01;
    return std::abs(time) * kRounding <= step * kShareOfStep;
}

bool rebaseRing(const fs::path& ring)
{
    return changeCopy(ring, [](TSFILE& copy, const fs::path& /*path*/) {
        const FileTime time(copy);
        const std::uint32_t column = copy.timeColumn();
        if (column == 0 || time.firstSample() <= 1 || time.rows() == 0)
            return false;
        const float moved = copy.value(time.firstSample(), column);
        if (!(moved >= copy.value(time.lastSample(), column) / 2.0F) || !(moved > 0.0F))
            return false;
        copy.adjustTime(true, moved);
        // Whole seconds have gone to the start; what the samples lost beyond them goes there too.
        moveStart(copy, static_cast<double>(moved) - std::trunc(static_cast<double>(moved)));
        return true;
    });
}

void renumberRing(const fs::path& ring)
{
    changeCopy(ring, [](TSFILE& copy, const fs::path& path) {
        const std::uint32_t capacity = copy.samples();
        if (copy.lastSample() / 2 <= capacity)
            return false;
        // All rounds but the last whole one.
        const std::uint32_t less = ((copy.lastSample() - 1) / capacity - 1) * capacity;
        if (copy.timeColumn() == 0)
            moveStart(copy, less * static_cast<double>(copy.dt()));
        copy.flush(true);
        BlockFile file(BlockFile::open(path.c_str(), false), false);
        Block image;
        file.read(0, image);
        ByteOrder order = ByteOrder::Unknown;
        TsHeader header = decodeHeader(image, order);
        header.ringStart -= less;
        header.lastSample -= less;
        encodeHeader(header, 0, order, image);
        file.write(0, image);
        return copy.refresh();
    });
}

}  // namespace veltrac
