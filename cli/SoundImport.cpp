// WAV, FLAC and what else libsndfile reads, as columns.

#include <sndfile.h>

#include <algorithm>
#include <fstream>
#include <iterator>
#include <memory>
#include <string_view>
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
    return SoundFile(sf_open(file.c_str(), SFM_READ, &info)) != nullptr;
}

ImportTold importSoundInto(const VerbJob& job, const ImportOptions& options)
{
    SF_INFO info = {};
    const SoundFile sound(sf_open(job.source.c_str(), SFM_READ, &info));
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
        if (sf_readf_float(sound.get(), rows.data(), count) != count)
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
