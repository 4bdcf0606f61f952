// WAV, FLAC and what else libsndfile reads, as columns.

#include <fcntl.h>
#include <sndfile.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <fstream>
#include <iterator>
#include <limits>
#include <memory>
#include <string_view>
#include <system_error>
#include <vector>

#include "cli/ImportOptions.h"
#include "converters/ColumnTexts.h"
#include "core/NumberTexts.h"
#include "core/SafeChange.h"
#include "core/TSFILE.h"
#include "core/TsHeader.h"
#include "core/TsNames.h"
#include "core/Utf8.h"

namespace veltrac {

namespace {

struct CloseSoundFile
{
    void operator()(SNDFILE* file) const noexcept { sf_close(file); }
};
using SoundFile = std::unique_ptr<SNDFILE, CloseSoundFile>;

// The bytes of a sound, read for the library: it takes a read that fails for the end of the file, and counts
// samples by what it could read of the head.
class SoundBytes
{
public:
    // Throws std::system_error where the file cannot be opened.
    explicit SoundBytes(const std::filesystem::path& file)
        : SoundBytes(::open(file.c_str(), O_RDONLY | O_CLOEXEC))
    {
        struct stat status = {};
        if (m_file < 0 || ::fstat(m_file, &status) != 0)
            throw std::system_error(errno, std::generic_category());
        m_length = status.st_size;
    }
    ~SoundBytes() { ::close(m_file); }
    SoundBytes(const SoundBytes&) = delete;
    SoundBytes& operator=(const SoundBytes&) = delete;

    // Lives as long as the bytes at most; null where they are no sound. Throws as requireRead().
    SoundFile open(SF_INFO& info)
    {
        SF_VIRTUAL_IO calls = {length, seek, read, write, tell};
        SoundFile sound(sf_open_virtual(&calls, SFM_READ, &info, this));
        requireRead();
        return sound;
    }

    // Throws std::system_error where a read has failed.
    void requireRead() const
    {
        if (m_failure != 0)
            throw std::system_error(m_failure, std::generic_category());
    }

private:
    explicit SoundBytes(int file) noexcept : m_file(file) {}  // whole, so that it is closed whatever comes

    static SoundBytes& of(void* self) { return *static_cast<SoundBytes*>(self); }
    static sf_count_t length(void* self) { return of(self).m_length; }
    static sf_count_t tell(void* self) { return of(self).m_at; }
    static sf_count_t write(const void* /*from*/, sf_count_t /*count*/, void* /*self*/) { return 0; }

    static sf_count_t seek(sf_count_t offset, int from, void* self)
    {
        SoundBytes& bytes = of(self);
        const sf_count_t base = from == SEEK_CUR ? bytes.m_at : from == SEEK_END ? bytes.m_length : 0;
        if (offset < -base || offset > std::numeric_limits<sf_count_t>::max() - base)
            return -1;  // a chunk may claim any length
        return bytes.m_at = base + offset;
    }

    static sf_count_t read(void* to, sf_count_t count, void* self)
    {
        SoundBytes& bytes = of(self);
        sf_count_t moved = 0;
        while (moved < count) {
            const ssize_t now = ::pread(bytes.m_file, static_cast<char*>(to) + moved,
                                        static_cast<std::size_t>(count - moved), bytes.m_at);
            if (now < 0 && errno == EINTR)
                continue;
            if (now < 0)
                bytes.m_failure = errno;
            if (now <= 0)
                break;
            moved += now;
            bytes.m_at += now;
        }
        return moved;
    }

    int m_file;
    sf_count_t m_length = 0;
    sf_count_t m_at = 0;
    int m_failure = 0;
};

constexpr std::uint32_t kSoundRunValues = 1U << 16;

std::string channelName(int channel, int channels)
{
    if (channels == 2)
        return channel == 1 ? "Left" : "Right";
    return channels == 1 ? "Sound" : "Channel " + std::to_string(channel);
}

void describeSound(const VerbJob& job, const ImportOptions& options, const SF_INFO& info, SNDFILE* sound,
                   TSFILE& made)
{
    const char* const title = sf_get_string(sound, SF_STR_TITLE);
    const std::string description = !options.result.description.empty() ? options.result.description
                                    : title != nullptr                  ? utf8OfBytes(title)
                                                                        : job.name;
    made.description(cutTo(description, kFileDescription.width - 1).c_str());
    made.timeUnit("Time[s]");
    made.dt(static_cast<float>(options.time.step.value_or(1.0 / info.samplerate)));
    for (int c = 1; c <= info.channels; ++c) {
        const auto column = static_cast<std::uint32_t>(c);
        made.columnName(column, channelName(c, info.channels).c_str());
        made.columnDescription(column, "");
        made.stampColumn(column);
    }
}

}  // namespace

bool isSound(const std::filesystem::path& file)
{
    // Of MP3 the library takes any text in UTF-16 for a beginning: such files are asked for with --as.
    static constexpr std::string_view kMagics[] = {"RIFF", "RF64", "fLaC", "OggS",
                                                   "FORM", ".snd", "caff", "riff"};
    char magic[4] = {};
    std::ifstream(file, std::ios::binary).read(magic, sizeof magic);
    if (std::find(std::begin(kMagics), std::end(kMagics), std::string_view(magic, sizeof magic)) ==
        std::end(kMagics))
        return false;
    SF_INFO info = {};
    return SoundBytes(file).open(info) != nullptr;
}

ImportTold importSoundInto(const VerbJob& job, const ImportOptions& options)
{
    SF_INFO info = {};
    SoundBytes bytes(job.source);
    SoundFile sound = bytes.open(info);
    if (!sound) {  // Some kinds have no head and are known by the name of their file.
        info = {};
        sound.reset(sf_open(job.source.c_str(), SFM_READ, &info));
    }
    if (!sound)
        throw JobError(sf_strerror(nullptr));
    if (info.frames <= 0 || info.frames > UINT32_MAX || info.samplerate <= 0)
        throw JobError("its samples cannot be counted");
    const auto samples = static_cast<std::uint32_t>(info.frames);
    const auto columns = static_cast<std::uint32_t>(info.channels);
    requireFits(samples, columns);
    ImportTold told{counted(samples, "sample") + ", " + counted(columns, "column") + ", " +
                    std::to_string(info.samplerate) + " Hz."};
    if (job.target.empty())
        return told;

    PendingFile pending(job.target, ".veltrac-new", ".ts");
    const auto made = createTsFile(pending.path().string(), samples, columns);
    describeSound(job, options, info, sound.get(), *made);
    const std::uint32_t runRows = std::max<std::uint32_t>(1, kSoundRunValues / columns);
    std::vector<float> rows(std::size_t{runRows} * columns);
    for (std::uint32_t done = 0; done < samples;) {
        const std::uint32_t count = std::min(runRows, samples - done);
        const sf_count_t read = sf_readf_float(sound.get(), rows.data(), count);
        bytes.requireRead();
        if (read != count)
            throw JobError("it ends after " + groupedDigits(done) + " of " + groupedDigits(samples) +
                           " samples");
        made->writeRows(done + 1, count, rows.data());
        done += count;
        if (!goesOn(job.progress, done, samples))
            throw Interrupted{};
    }
    made->flush(true);
    pending.commit();
    return told;
}

}  // namespace veltrac
