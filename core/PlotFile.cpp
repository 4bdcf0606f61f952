#include "core/PlotFile.h"

#include <sys/stat.h>

#include <algorithm>
#include <bit>
#include <cmath>
#include <limits>
#include <system_error>

#include "core/FileTime.h"
#include "core/TSFILE.h"
#include "core/TsExceptions.h"
#include "core/TsNames.h"

namespace veltrac {

namespace {

constexpr std::uint32_t kWideRows = 4;
constexpr std::uint32_t kBucketOfWideRows = 64;

}  // namespace

PlotFile::PlotFile(std::string path) : m_path(std::move(path))
{
    reload();
}

PlotFile::~PlotFile() = default;

std::string PlotFile::name() const
{
    return std::filesystem::path(m_path).filename().string();
}

bool PlotFile::changedOnDisk() const
{
    return stampOf(m_path) != m_stamp;
}

void PlotFile::reload()
{
    // The stamp comes first: a change between the two is noticed, at worst once too often.
    const std::optional<FileStamp> stamp = stampOf(m_path);
    m_file = openTsFile(m_path, true);
    m_stamp = stamp;
    m_identity = identityOf(m_file->descriptor());
    look();
    m_shape = shape();
    m_wasCut = false;
}

PlotFile::Shape PlotFile::shape() const
{
    return {isRing() ? m_file->samples() : 0, m_file->columns(), m_file->startSeconds(), m_file->startTime(),
            m_file->dt()};
}

std::uint32_t PlotFile::newestSample() const
{
    return isRing() ? m_file->lastSample() : m_file->samples();
}

PlotFile::News PlotFile::follow()
{
    struct stat named = {};
    if (::stat(m_path.c_str(), &named) != 0)
        return News::Gone;
    const bool isSame = m_identity == identityOf(named);
    if (isSame && m_stamp && named.st_size < m_stamp->bytes) {
        m_wasCut = true;
        return News::Cut;
    }
    if (!isSame || m_wasCut) {
        reload();
        return News::Loaded;
    }
    if (m_missingRows > 0 && !changedOnDisk())
        return News::None;
    const bool wasRing = isRing();
    m_file->refresh();
    const std::uint32_t newest = newestSample();
    const std::uint32_t known = sampleOf(m_rows);
    const std::uint32_t oldest = std::max<std::uint32_t>(1, m_file->ringStart());
    const bool isAsItWas = wasRing == isRing() && shape() == m_shape;
    if (isAsItWas && newest == known && (m_rows == 0 || oldest == sampleOf(m_firstRow)))
        return News::None;
    // What came and went between two looks cannot be told from what never was: the ring is read anew.
    if (!isAsItWas || newest < known || oldest > known || m_rows == 0 || m_missingRows > 0 ||
        !timesAreKnown()) {
        reload();
        return News::Loaded;
    }
    m_firstRow = std::max(m_firstRow, oldest - m_firstSample + 1);
    if (newest == known)
        return News::None;
    m_stamp = stampOf(m_path);
    rowsCame(newest - m_firstSample + 1);
    return News::Rows;
}

int PlotFile::descriptor() const noexcept
{
    return m_file->descriptor();
}

bool PlotFile::isRing() const
{
    return m_file->ringStart() != 0;
}

std::uint32_t PlotFile::bucketsToForget() const
{
    const std::uint32_t gone = m_firstRow - 1;
    return gone > m_file->samples() ? gone / m_bucketRows : 0;
}

// A writer may have come round meanwhile: then newer samples stand in these rows.
void PlotFile::hideOverwritten(std::uint32_t first, std::uint32_t count, float* rows) const
{
    if (!isRing())
        return;
    const std::uint32_t oldest = m_file->ringStartOnDisk();
    const std::uint32_t sample = sampleOf(first);
    if (oldest <= sample)
        return;
    const std::uint32_t gone = std::min(count, oldest - sample);
    for (std::size_t i = 0; i < gone; ++i)
        for (std::uint32_t c = 1; c <= m_columns; ++c)
            if (isPlottable(c))
                rows[i * m_columns + c - 1] = std::numeric_limits<float>::quiet_NaN();
}

void PlotFile::look()
{
    forgetContents();
    m_columns = m_file->columns();
    m_bucketRows = m_columns < kWideRows ? Pyramid::kLargestBucket : kBucketOfWideRows;
    m_startSeconds = m_file->startSeconds();
    try {
        m_hasCalendar = FileTime(*m_file).hasCalendar();
    } catch (const TS::Failure&) {
        m_hasCalendar = m_startSeconds != 0;  // its times cannot be read
    }

    std::uint32_t claimed = m_file->samples();
    std::uint32_t inFile = claimed;
    const std::uint64_t head = tsFileBytes(0, m_columns);
    if (m_columns > 0) {
        // Only whole blocks can be read.
        const std::uint64_t bytes = bytesBehind(head) / kBlockBytes * kBlockBytes;
        inFile =
            static_cast<std::uint32_t>(std::min<std::uint64_t>(claimed, bytes / sizeof(float) / m_columns));
    }
    m_firstSample = std::max<std::uint32_t>(1, m_file->ringStart());
    if (m_file->ringStart() != 0) {
        const std::uint32_t last = m_file->lastSample();
        const std::uint32_t held = last >= m_firstSample ? last - m_firstSample + 1 : 0;
        claimed = std::min(claimed, held);
        // In a folded file that is cut short the rows that are left do not follow each other.
        if (inFile < m_file->samples() && last > inFile)
            inFile = 0;
    }
    m_rows = m_columns == 0 ? 0 : std::min(claimed, inFile);
    m_missingRows = claimed - m_rows;

    // With a clock the start is told in seconds.
    m_unitSeconds = secondsInTimeUnit(m_file->timeUnit());
    const double start = static_cast<double>(m_file->startTime()) / (m_hasCalendar ? m_unitSeconds : 1.0);
    m_base = start + (m_firstSample - 1.0) * m_file->dt();
    m_dt = static_cast<double>(m_file->dt());
    if (m_file->timeColumn() != 0) {
        m_timeKind = TimeKind::EachRow;
        m_base = start;
    } else if (std::isfinite(m_base) && std::isfinite(m_dt) && m_dt > 0.0) {
        m_timeKind = TimeKind::Steps;
    } else {
        m_timeKind = TimeKind::RowNumbers;
    }
}

std::string PlotFile::columnName(std::uint32_t column) const
{
    return m_file->columnName(column);
}

std::string PlotFile::columnDescription(std::uint32_t column) const
{
    return m_file->columnDescription(column);
}

std::string PlotFile::description() const
{
    return m_file->description();
}

std::string PlotFile::timeUnit() const
{
    return m_file->timeUnit();
}

std::uint64_t PlotFile::bytesBehind(std::uint64_t head) const
{
    const std::uint64_t bytes = m_stamp ? static_cast<std::uint64_t>(m_stamp->bytes) : 0;
    return bytes > head ? bytes - head : 0;
}

std::uint32_t PlotFile::describedColumns() const
{
    return static_cast<std::uint32_t>(
        std::min<std::uint64_t>(m_columns, bytesBehind(kBlockBytes) / kColumnRecordBytes));
}

bool PlotFile::isPlottable(std::uint32_t column) const
{
    return column != m_file->timeColumn() && column != m_file->time32Column();
}

void PlotFile::readRows(std::uint32_t first, std::uint32_t count, float* out) const
{
    m_file->readRows(sampleOf(first), count, out);
    hideOverwritten(first, count, out);
}

float PlotFile::readValue(std::uint32_t column, std::uint32_t row) const
{
    const float v = m_file->value(sampleOf(row), column);
    const bool isGone = isRing() && m_file->ringStartOnDisk() > sampleOf(row);
    return isGone ? std::numeric_limits<float>::quiet_NaN() : v;
}

double PlotFile::timeInRow(std::uint32_t /*row*/, const float* values) const
{
    double t = m_base + static_cast<double>(values[m_file->timeColumn() - 1]);
    if (m_file->time32Column() != 0)
        t += std::bit_cast<std::uint32_t>(values[m_file->time32Column() - 1]);
    return t;
}

}  // namespace veltrac
