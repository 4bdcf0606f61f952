#include <cmath>
#include <optional>

#include "cli/FileWords.h"
#include "cli/Options.h"
#include "cli/Verbs.h"
#include "converters/TimeStamps.h"
#include "core/FileTime.h"
#include "core/HeaderTexts.h"
#include "core/SafeChange.h"
#include "core/TSFILE.h"
#include "core/TsHeader.h"
#include "core/TsNames.h"
#include "core/Utf8.h"
#include "core/Variable.h"
#include "core/WallClock.h"

namespace veltrac {

namespace {

constexpr VerbWords kHeaderWords = {
    "header", "Set description, unit, sample time, start, names of columns",
    "Changes the headers of ts-files; what is not named stays as it is, and so do the values. Texts that are "
    "too long for their field are refused.",
    "  veltrac-cli header --description \"Run 7\" --rate 1000 --name 1=Force --unit 1=kN run7.ts\n"
    "  veltrac-cli header --start 2016-10-30T02:30:00 *.ts"};

constexpr std::size_t kNameBytes = 11;

class HeaderVerb : public Verb
{
public:
    const VerbWords& words() const override { return kHeaderWords; }
    VerbTarget targetKind() const override { return VerbTarget::InSource; }
    void addOptions(Options& options) override
    {
        options.wholeTexts("--description", m_description, "TEXT", "Of the file, at most 59 bytes");
        options.wholeTexts("--time-unit", m_timeUnit, "TEXT", "Of the times, at most 39 bytes");
        options.number("--sample-time", m_step, "SECONDS",
                       "From sample to sample, in the file's unit of time");
        options.number("--rate", m_rate, "HZ", "Samples a second, instead of --sample-time");
        options.text("--start", m_start, "TIME",
                     "2016-10-30T02:30:00, or seconds; the first sample lies one sample time later");
        options.wholeTexts("--name", m_names, "COLUMN=NAME", "At most 11 bytes; may be given several times");
        options.wholeTexts("--text", m_texts, "COLUMN=TEXT",
                           "The description of a column, with its unit in brackets");
        options.wholeTexts("--unit", m_units, "COLUMN=UNIT",
                           "Changes the unit in the description of a column");
    }
    void check(CommonOptions& /*common*/) override
    {
        if (m_description.empty() && m_timeUnit.empty() && !m_step && !m_rate && m_start.empty() &&
            m_names.empty() && m_texts.empty() && m_units.empty())
            throw UsageError("nothing is to be changed");
        if (m_step && m_rate)
            throw UsageError("--sample-time and --rate say the same: one of them");
        if (m_rate)
            m_step = 1.0 / *m_rate;
        if (m_step && !isSampleTime(*m_step))
            throw UsageError("a sample time must be above 0");
        for (const std::string& text : m_description)
            requireFitting(text, kFileDescription.width - 1);
        for (const std::string& text : m_timeUnit)
            requireFitting(text, kTimeUnit.width - 1);
        for (const auto* const list : {&m_names, &m_texts, &m_units})
            for (const std::string& text : *list)
                if (text.find('=') == std::string::npos)
                    throw UsageError("\"" + text + "\": COLUMN=TEXT is meant");
        takeStart();
    }
    void perform(VerbJob& job) override
    {
        changeHeader(job.source, [this](TSFILE& file) { apply(file); });
    }

private:
    using ColumnText = std::pair<std::uint32_t, std::string>;

    void apply(TSFILE& file) const
    {
        const auto names = columnsAndTexts(file, m_names, kNameBytes);
        const auto texts = columnsAndTexts(file, m_texts, kColumnDescription.width - 1);
        const auto units = columnsAndTexts(file, m_units, kColumnDescription.width - 1);
        for (const std::string& text : m_description)
            file.description(text.c_str());
        for (const std::string& text : m_timeUnit)
            file.timeUnit(text.c_str());
        if (m_step) {
            const double step = m_rate ? *m_step / FileTime(file).unitSeconds() : *m_step;
            if (!isSampleTime(step))
                throw JobError("a sample time must be above 0");
            file.dt(static_cast<float>(step));
        }
        if (m_startSeconds)
            file.setStart(*m_startSeconds, m_startRest);
        for (const auto& [column, text] : names)
            file.columnName(column, text.c_str());
        for (const auto& [column, text] : texts)
            file.columnDescription(column, text.c_str());
        for (const auto& [column, unit] : units)
            file.columnDescription(column,
                                   withUnit(headerUtf8(file.columnDescription(column)), unit).c_str());
    }

    static void requireFitting(const std::string& text, std::size_t most)
    {
        if (text.size() > most)
            throw UsageError("\"" + text + "\" is longer than the " + std::to_string(most) +
                             " bytes of its field");
    }

    static std::vector<ColumnText> columnsAndTexts(TSFILE& file, const std::vector<std::string>& given,
                                                   std::size_t most)
    {
        std::vector<ColumnText> out;
        out.reserve(given.size());
        for (const std::string& text : given) {
            const std::size_t at = text.find('=');
            out.emplace_back(columnMeant(file, text.substr(0, at)), text.substr(at + 1));
            if (out.back().second.size() > most)
                throw JobError("\"" + out.back().second + "\" is longer than the " + std::to_string(most) +
                               " bytes of its field");
        }
        return out;
    }

    // "Force [N]" with "kN" is "Force [kN]".
    static std::string withUnit(std::string text, const std::string& unit)
    {
        if (!unitIn(text).empty())
            text.erase(text.rfind('['));
        text.erase(text.find_last_not_of(' ') + 1);
        return fittingDescription(text, unit);
    }

    void takeStart()
    {
        if (m_start.empty())
            return;
        double seconds = 0.0;
        const auto stamp = readStamp(m_start);
        const auto wall = stamp ? localWallClock(*stamp, DateOrder::DayMonth) : std::nullopt;
        char* end = nullptr;
        if (wall) {
            const Micros rest = (*wall % kMicrosPerSecond + kMicrosPerSecond) % kMicrosPerSecond;
            seconds = static_cast<double>(localSeconds(*wall - rest)) +
                      static_cast<double>(rest) / kMicrosPerSecond;
        } else {
            seconds = std::strtod(m_start.c_str(), &end);
            if (end == m_start.c_str() || *end != '\0' || !std::isfinite(seconds))
                throw UsageError("--start: \"" + m_start + "\" is no time; 2016-10-30T02:30:00 is one");
        }
        const double whole = std::floor(seconds);
        if (whole < 0.0 || whole > UINT32_MAX)
            throw UsageError("--start lies outside of 1970 to 2106, which a ts-file can tell");
        m_startSeconds = static_cast<std::uint32_t>(whole);
        m_startRest = static_cast<float>(seconds - whole);
    }

    std::vector<std::string> m_description;
    std::vector<std::string> m_timeUnit;
    std::optional<double> m_step;
    std::optional<double> m_rate;
    std::string m_start;
    std::optional<std::uint32_t> m_startSeconds;
    float m_startRest = 0.0F;
    std::vector<std::string> m_names;
    std::vector<std::string> m_texts;
    std::vector<std::string> m_units;
};

}  // namespace

std::unique_ptr<Verb> makeHeaderVerb()
{
    return std::make_unique<HeaderVerb>();
}

}  // namespace veltrac
