#include "core/TSFILE.h"

#include <algorithm>
#include <cerrno>
#include <chrono>
#include <climits>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <ctime>
#include <mutex>
#include <optional>
#include <string_view>
#include <thread>
#include <vector>

#include "core/LocalTime.h"
#include "core/TsExceptions.h"

using namespace veltrac;

namespace {

constexpr std::size_t kNameBytes = 256;
constexpr int kHighestNumber = 9998;
constexpr int kRefreshRetries = 3;
constexpr auto kRetryPause = std::chrono::milliseconds(10);
// Column blocks that are moved at once.
constexpr std::size_t kRunBlocks = 512;

std::string boundedName(const char* name)
{
    return name == nullptr ? std::string() : std::string(name, strnlen(name, kNameBytes - 1));
}

int extraTimeColumns(int timeMode)
{
    return timeMode == 1 || timeMode == 2 ? timeMode : 0;
}

// Refuses what cannot become a file before an old one is truncated.
int createDescriptor(const std::string& name, std::uint32_t samples, std::uint64_t columns)
{
    if (columns > UINT32_MAX || tsFileBytes(samples, static_cast<std::uint32_t>(columns)) >= kFileLimit)
        throw TS::IO_ERROR(0, static_cast<std::uint32_t>(kFileLimit), 1);
    const int descriptor = BlockFile::create(name.c_str());
    if (descriptor <= 0)
        throw TS::CREATE_ERROR(name);
    return descriptor;
}

int openDescriptor(const char* name, bool readOnly)
{
    const int descriptor = BlockFile::open(TSFILE::tsFileName(name), readOnly);
    if (descriptor < 1)
        throw TS::OPEN_ERROR(boundedName(name));
    return descriptor;
}

int duplicateDescriptor(int descriptor)
{
    const int copy = BlockFile::duplicate(descriptor);
    if (copy < 1)
        throw TS::OPEN_ERROR(static_cast<std::uint32_t>(descriptor), 0, 1);
    return copy;
}

// A name's bytes as lookups compare them.
std::string_view withoutTrailingBlanks(const char* name)
{
    std::string_view text(name, strnlen(name, kColumnName.width));
    while (!text.empty() && static_cast<unsigned char>(text.back()) <= ' ')
        text.remove_suffix(1);
    return text;
}

// The number at a text's beginning as atoi() reads it, or 0 where it is beyond an int.
int leadingNumber(const char* text)
{
    errno = 0;
    const long number = std::strtol(text, nullptr, 10);
    return errno == ERANGE || number > INT_MAX || number < INT_MIN ? 0 : static_cast<int>(number);
}

}  // namespace

TSFILE::TSFILE(const char* name, std::uint32_t samples, std::uint32_t columns, int timeMode)
    : m_name(tsFileName(name)),
      m_file(createDescriptor(m_name, samples,
                              std::uint64_t{columns} + static_cast<unsigned>(extraTimeColumns(timeMode))),
             false),
      m_data(m_file)
{
    try {
        createContents(samples, columns, timeMode);
    } catch (...) {
        m_data.drop();
        std::remove(m_name.c_str());
        throw;
    }
}

TSFILE::TSFILE(const char* name, bool readOnly)
    : m_name(boundedName(name)), m_file(openDescriptor(name, readOnly), readOnly), m_data(m_file)
{
    openExisting();
}

TSFILE::TSFILE(int descriptor, bool readOnly)
    : m_file(duplicateDescriptor(descriptor), readOnly), m_data(m_file)
{
    openExisting();
}

TSFILE::~TSFILE() = default;

void TSFILE::createContents(std::uint32_t samples, std::uint32_t columns, int timeMode)
{
    const int extra = extraTimeColumns(timeMode);
    m_file.write(0, Block{});
    readHeader(0, 0);
    writeHeader();
    resizeColumns(columns + static_cast<std::uint32_t>(extra));
    resize(samples);
    if (extra > 0)
        makeTimeColumns(1, extra == 2 ? 2 : 0);
}

void TSFILE::openExisting()
{
    readHeader(0, 0);
    try {
        lookUpTimeColumns();
    } catch (const TS::IO_ERROR&) {
        // The header claims more columns than the file can tell: it opens all the same, with the time
        // columns that were found, and the access to a column that is not there says so.
        m_timeMode = m_timeColumn != 0 ? 1 : 0;
    }
}

void TSFILE::lookUpTimeColumns()
{
    // A header may claim more columns than the whole file has room for: then only the first ones are looked
    // at, or a damaged word in a long file would have all of its blocks read as names.
    constexpr std::uint32_t kPlausibleColumns = 65536;
    const std::uint32_t claimed = columns();
    const bool fits = (std::uint64_t{claimed} / kColumnsPerBlock + 1) * kBlockBytes <= m_file.size();
    const std::uint32_t count = fits ? claimed : std::min(claimed, kPlausibleColumns);
    m_timeColumn = columnAmong(count, "Time");
    m_time32Column = columnAmong(count, "Time32");
    m_timeMode = m_time32Column != 0 ? 2 : m_timeColumn != 0 ? 1 : 0;
}

// -- Header --

void TSFILE::readHeader(std::uint32_t col, int retries)
{
    while (!m_headerHeld) {
        Block image;
        m_file.read(0, image);
        const TsHeader header = decodeHeader(image, m_order);
        if (header.version <= kHighestVersion) {
            m_header = header;
            m_headerImage = m_headerOnDisk = image;
            m_headerHeld = true;
            handLayoutToData();
        } else if (retries-- > 0) {
            std::this_thread::sleep_for(kRetryPause);
        } else {
            throw TS::NOT_TS_FILE(0, 0, 1);
        }
    }
    if (col == 0)
        return;

    if (col > m_header.columns)
        throw TS::ILL_COLUMN(col, m_header.columns, 1);
    const std::uint32_t blockNumber = (col - 1) / kColumnsPerBlock + 1;
    if (blockNumber != m_columnBlockNumber) {
        Block block;
        m_file.read(std::uint64_t{blockNumber} * kBlockBytes, block);
        m_columnBlock = m_columnBlockOnDisk = block;
        m_columnBlockNumber = blockNumber;
    }
    m_columnIndex = (col - 1) % kColumnsPerBlock;
}

void TSFILE::writeHeader()
{
    Block image = m_headerImage;
    encodeHeader(m_header, m_columnMajor ? 1 : 0, m_order, image);
    m_file.write(0, image);
    m_headerImage = m_headerOnDisk = image;
    m_header.version = kWrittenVersion;
    handLayoutToData();
}

void TSFILE::writeColumnBlock()
{
    m_file.write(std::uint64_t{m_columnBlockNumber} * kBlockBytes, m_columnBlock);
    m_columnBlockOnDisk = m_columnBlock;
}

void TSFILE::writeColumnBlocks(std::uint32_t first, std::span<const Block> blocks)
{
    const std::uint64_t offset = std::uint64_t{first} * kBlockBytes;
    std::size_t done = 0;
    while (done < blocks.size()) {
        if (!readOnly()) {
            const std::lock_guard guard(BlockFile::lock());
            done += m_file.writeRun(offset + done * kBlockBytes,
                                    {blocks[done].data(), (blocks.size() - done) * kBlockBytes}) /
                    kBlockBytes;
        }
        // The block at which it came short says why.
        if (done < blocks.size()) {
            m_file.write(offset + done * kBlockBytes, blocks[done]);
            ++done;
        }
    }
}

void TSFILE::handLayoutToData()
{
    const bool ring = m_header.ringStart != 0;
    m_dataOffset = dataOffset(m_header.columns);
    m_plainSamples = ring || m_columnMajor ? 0 : m_header.samples;
    m_data.setLayout({m_dataOffset, m_header.samples, m_header.columns, m_columnMajor, ring});
}

std::uint32_t TSFILE::samples()
{
    readHeader(0, 0);
    return m_header.samples;
}

std::uint32_t TSFILE::columns()
{
    readHeader(0, 0);
    return m_header.columns;
}

std::uint32_t TSFILE::ringStart()
{
    readHeader(0, 0);
    return m_header.ringStart;
}

std::uint32_t TSFILE::lastSample()
{
    readHeader(0, 0);
    return m_header.lastSample;
}

float TSFILE::dt(float newDt)
{
    readHeader(0, 0);
    if (newDt >= 0.0F)
        storeInHeader(&TsHeader::dt, newDt);
    return m_header.dt;
}

float TSFILE::startTime(float newStart)
{
    readHeader(0, 0);
    if (newStart >= 0.0F)
        storeInHeader(&TsHeader::startTime, newStart);
    return m_header.startTime;
}

std::uint32_t TSFILE::startSeconds(std::uint32_t newSeconds)
{
    readHeader(0, 0);
    if (newSeconds != 0)
        storeInHeader(&TsHeader::startSeconds, newSeconds);
    return m_header.startSeconds;
}

void TSFILE::setStart(std::uint32_t seconds, float time)
{
    readHeader(0, 0);
    const TsHeader before = m_header;
    m_header.startSeconds = seconds;
    m_header.startTime = time;
    try {
        writeHeader();
    } catch (...) {
        m_header = before;
        throw;
    }
}

const char* TSFILE::fileName()
{
    return m_name.empty() ? nullptr : m_name.c_str();
}

const char* TSFILE::storedText(TextField field, const char* newText, char* out)
{
    readHeader(0, 0);
    if (newText != nullptr) {
        const Block before = m_headerImage;
        storeText(m_headerImage.data(), field, newText);
        m_headerImage[field.offset + field.width - 1] = 0;
        try {
            writeHeader();
        } catch (...) {
            m_headerImage = before;
            throw;
        }
    }
    loadText(m_headerImage.data(), field, out);
    return out;
}

const char* TSFILE::description(const char* newText)
{
    return storedText(kFileDescription, newText, m_descriptionText);
}

const char* TSFILE::timeUnit(const char* newText)
{
    return storedText(kTimeUnit, newText, m_timeUnitText);
}

void TSFILE::copyHeader(TSFILE& from)
{
    from.readHeader(0, 0);
    readHeader(0, 0);
    const Block imageBefore = m_headerImage;
    const TsHeader before = m_header;
    for (const TextField field : {kFileDescription, kTimeUnit})
        std::copy_n(from.m_headerImage.begin() + static_cast<std::ptrdiff_t>(field.offset), field.width,
                    m_headerImage.begin() + static_cast<std::ptrdiff_t>(field.offset));
    m_header.dt = from.m_header.dt;
    m_header.startTime = from.m_header.startTime;
    m_header.startSeconds = from.m_header.startSeconds;
    try {
        writeHeader();
    } catch (...) {
        m_headerImage = imageBefore;
        m_header = before;
        throw;
    }
}

void TSFILE::flush(bool withHeader)
{
    m_data.flush();
    if (!withHeader)
        return;
    readHeader(0, 0);
    Block image = m_headerImage;
    encodeHeader(m_header, m_columnMajor ? 1 : 0, m_order, image);
    if (readOnly() || image != m_headerOnDisk)
        writeHeader();
    if (m_columnBlockNumber != 0 && m_columnBlock != m_columnBlockOnDisk)
        writeColumnBlock();
}

bool TSFILE::refresh()
{
    const std::uint32_t before = m_header.lastSample;
    m_data.flush();
    std::this_thread::yield();
    m_columnBlockNumber = 0;
    m_data.drop();
    m_headerHeld = false;
    try {
        readHeader(0, kRefreshRetries);
    } catch (...) {
        // A file that was emptied or taken away keeps the shape that its users count on.
        m_headerHeld = true;
        throw;
    }
    return m_header.lastSample != before;
}

std::uint32_t TSFILE::ringStartOnDisk()
{
    Block image;
    m_file.read(0, image);
    ByteOrder order = m_order;
    return decodeHeader(image, order).ringStart;
}

// -- Columns --

unsigned char* TSFILE::columnRecord(std::uint32_t col)
{
    readHeader(0, 0);
    if (col == 0)
        throw TS::ILL_COLUMN(col, m_header.columns, 1);
    readHeader(col, 0);
    return m_columnBlock.data() + m_columnIndex * kColumnRecordBytes;
}

// Lets `change` alter a column's record and writes its block; a refused write leaves the record as it was.
template <typename Change>
void TSFILE::changeColumn(std::uint32_t col, Change change)
{
    const ColumnRecord record(columnRecord(col));
    const Block before = m_columnBlock;
    change(record);
    try {
        writeColumnBlock();
    } catch (...) {
        m_columnBlock = before;
        throw;
    }
}

std::uint32_t TSFILE::columnNumber(const char* name)
{
    return name == nullptr ? 0 : columnAmong(columns(), name);
}

// The first column of that name among the first `count`, or 0.
std::uint32_t TSFILE::columnAmong(std::uint32_t count, const char* name)
{
    const std::string_view wanted = withoutTrailingBlanks(name);
    std::vector<Block> blocks;
    for (std::uint32_t col = 0; col < count;) {
        const std::uint32_t first = col / kColumnsPerBlock + 1;
        blocks.resize(std::min<std::size_t>((count - 1) / kColumnsPerBlock + 2 - first, kRunBlocks));
        const std::size_t held = readColumnBlocks(first, blocks);
        for (std::size_t i = 0; i < held * kColumnsPerBlock && col < count; ++i) {
            const unsigned char* const record =
                blocks[i / kColumnsPerBlock].data() + i % kColumnsPerBlock * kColumnRecordBytes;
            ++col;
            if (withoutTrailingBlanks(reinterpret_cast<const char*>(record) + kColumnName.offset) == wanted)
                return col;
        }
    }
    return 0;
}

// Reads column blocks (1: the first) as far as the file has them, at least one, and returns how many.
std::size_t TSFILE::readColumnBlocks(std::uint32_t first, std::span<Block> blocks) const
{
    const std::uint64_t offset = std::uint64_t{first} * kBlockBytes;
    const std::uint64_t room = offset < kFileLimit ? (kFileLimit - offset) / kBlockBytes : 0;
    std::size_t held = 0;
    {
        const std::lock_guard guard(BlockFile::lock());
        const std::size_t count = std::min<std::uint64_t>(blocks.size(), room);
        held = m_file.readRun(offset, {blocks.front().data(), count * kBlockBytes}) / kBlockBytes;
    }
    if (held > 0)
        return held;
    m_file.read(offset, blocks.front());  // it says why
    return 1;
}

void TSFILE::changeColumns(std::uint32_t first, std::uint32_t last,
                           const std::function<void(std::uint32_t col, ColumnRecord record)>& change)
{
    if (first == 0 || last > columns())
        throw TS::ILL_COLUMN(first == 0 ? first : last, columns(), 1);
    m_columnBlockNumber = 0;  // the one that is held may change
    std::vector<Block> blocks;
    for (std::uint32_t col = first; col <= last;) {
        const std::uint32_t from = (col - 1) / kColumnsPerBlock + 1;
        blocks.resize(std::min<std::size_t>((last - 1) / kColumnsPerBlock + 2 - from, kRunBlocks));
        const std::size_t count = readColumnBlocks(from, blocks);
        const std::uint64_t end =
            std::min<std::uint64_t>(last, (std::uint64_t{from} - 1 + count) * kColumnsPerBlock);
        for (; col <= end; ++col) {
            Block& block = blocks[(col - 1) / kColumnsPerBlock + 1 - from];
            change(col, ColumnRecord(block.data() + (col - 1) % kColumnsPerBlock * kColumnRecordBytes));
        }
        writeColumnBlocks(from, {blocks.data(), count});
    }
}

const char* TSFILE::columnName(std::uint32_t col, const char* newName)
{
    static thread_local char text[kColumnName.width + 1];
    if (newName != nullptr)
        changeColumn(col, [&](ColumnRecord record) { record.setName(newName); });
    loadText(columnRecord(col), kColumnName, text);
    return text;
}

const char* TSFILE::columnNameOrNull(std::uint32_t col)
{
    const char* const name = columnName(col);
    return *name == '\0' ? nullptr : name;
}

const char* TSFILE::columnDescription(std::uint32_t col, const char* newText)
{
    static thread_local char text[kColumnDescription.width + 1];
    if (newText != nullptr)
        changeColumn(col, [&](ColumnRecord record) { record.setDescription(newText); });
    loadText(columnRecord(col), kColumnDescription, text);
    return text;
}

void TSFILE::columnStamp(std::uint32_t col, int out[7])
{
    std::copy_n(columnRecord(col), kStampBytes, out);
    out[6] += kStampYear;
}

void TSFILE::setColumnStamp(std::uint32_t col, const int in[7])
{
    changeColumn(col, [&](ColumnRecord record) { record.setStamp(in); });
}

void TSFILE::stampColumn(std::uint32_t col, std::time_t t)
{
    const std::time_t when = t == 0 ? std::time(nullptr) : t;
    const std::optional<std::tm> local = localCalendar(when);
    if (!local)
        return;
    const int stamp[7] = {0,
                          local->tm_sec,
                          local->tm_min,
                          local->tm_hour,
                          local->tm_mday,
                          local->tm_mon + 1,
                          local->tm_year + kStampYear};
    setColumnStamp(col, stamp);
}

std::time_t TSFILE::columnTime(std::uint32_t col)
{
    const unsigned char* const stamp = columnRecord(col);
    std::tm local = {};
    local.tm_sec = stamp[1];
    local.tm_min = stamp[2];
    local.tm_hour = stamp[3];
    local.tm_mday = stamp[4];
    local.tm_mon = stamp[5] - 1;
    local.tm_year = stamp[6];
    local.tm_isdst = -1;
    return std::mktime(&local);
}

void TSFILE::makeTimeColumns(std::uint32_t col, std::uint32_t col32)
{
    const std::uint32_t timeCol = col == 0 ? 1 : col;
    for (const std::uint32_t wanted : {timeCol, col32})
        if (wanted > columns())
            throw TS::ILL_COLUMN(wanted, columns(), 1);
    if (const std::uint32_t displaced = TSFILE::columnNumber("Time"); displaced != 0 && displaced != timeCol)
        TSFILE::columnName(displaced, "_Time");
    TSFILE::columnName(timeCol, "Time");
    m_timeColumn = timeCol;
    m_timeMode = 1;
    if (m_time32Column == timeCol)
        m_time32Column = 0;
    if (col32 != 0) {
        TSFILE::columnName(col32, "Time32");
        m_time32Column = col32;
        m_timeMode = 2;
    }
}

// -- Names --

const char* TSFILE::tsFileName(const char* text)
{
    // What stands behind a lone blank is the rest of the result before: callers print it, and rely on it.
    static thread_local char buffer[kNameBytes] = {};
    static constexpr char kExtension[] = ".ts";

    const int number = text == nullptr ? 0 : leadingNumber(text);
    if (number >= 1 && number <= kHighestNumber) {
        std::snprintf(buffer, sizeof buffer, "ts%04d.ts", number);
        return buffer;
    }
    if (text == nullptr || static_cast<signed char>(*text) <= ' ') {
        buffer[0] = ' ';
        return buffer;
    }
    std::string name(text);
    // A dot at the very beginning starts a hidden name, no extension.
    for (std::size_t i = name.size(); i-- > 1 && name[i] != '/';) {
        if (name[i] == '.') {
            name.resize(i);
            break;
        }
    }
    name.resize(std::min(name.size(), kNameBytes - sizeof kExtension));
    name += kExtension;
    std::memcpy(buffer, name.c_str(), name.size() + 1);
    return buffer;
}

const char* TSFILE::formatTime(double seconds, bool utc, const char* format)
{
    static thread_local char text[128];
    const auto whole = static_cast<std::time_t>(wholePart(seconds));
    const std::optional<std::tm> calendar = utc ? utcCalendar(whole) : localCalendar(whole);
    if (!calendar || std::strftime(text, sizeof text, format, &*calendar) == 0)
        text[0] = '\0';
    return text;
}
