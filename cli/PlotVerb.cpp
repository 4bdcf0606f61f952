#include <algorithm>

#include "cli/CharacteristicPicture.h"
#include "cli/FileWords.h"
#include "cli/Options.h"
#include "cli/Verbs.h"
#include "core/Plot2D.h"
#include "core/PlotFile.h"
#include "share/EpsFile.h"
#include "share/PlotGoTo.h"
#include "share/PlotPainter.h"
#include "share/PlotVariables.h"
#include "share/PostscriptDriver.h"
#include "share/SvgDriver.h"

namespace veltrac {

namespace {

constexpr VerbWords kPlotWords = {
    "plot", "Draw columns as SVG or EPS",
    "Draws columns over time, the same picture as the hard copy of the plot windows. Columns of one unit "
    "share an axis, unless --groups says otherwise. The ending of the target tells the format. With "
    "--together all files come into one picture. --characteristic draws what a filter does, with the options "
    "of filter: gain and phase, group delay, the answers to an impulse and a step, or poles and zeros.",
    "  veltrac-cli plot --from \"10 s\" --to \"20 s\" --title \"ECG\" -o ecg.svg ecg.ts\n"
    "  veltrac-cli plot --columns 2 --log-y -o spectrum.eps ecg_fft.ts\n"
    "  veltrac-cli plot --characteristic gain-and-phase --db --freq 40 --order 4 -o lowpass.svg ecg.ts"};

constexpr std::size_t kMostAtOnce = 8;  // as the windows show at first
// As in the plot settings.
constexpr double kMostPoints = 200.0;
constexpr double kMostWidth = 100.0;
constexpr const char* kEnds[] = {".svg", ".eps"};

// "a,b;c" in its parts.
std::vector<std::string> split(const std::string& text, char sign)
{
    std::vector<std::string> parts;
    for (std::size_t from = 0; from <= text.size();) {
        const std::size_t end = std::min(text.find(sign, from), text.size());
        if (end > from)
            parts.push_back(text.substr(from, end - from));
        from = end + 1;
    }
    return parts;
}

class PlotVerb : public Verb
{
public:
    const VerbWords& words() const override { return kPlotWords; }
    VerbTarget targetKind() const override
    {
        return m_together || m_characteristic.needsNoFile() ? VerbTarget::OneFile : VerbTarget::FileEach;
    }
    bool needsFiles() const override { return !m_characteristic.needsNoFile(); }
    std::string extension() const override { return kEnds[m_format]; }
    void addOptions(Options& options) override
    {
        options.flag("--together", m_together, "All files in one picture");
        options.choice("--format", m_format, {"svg", "eps"},
                       "Of targets whose name does not tell (default: svg)");
        options.texts("--columns", m_columns, "COLUMN,...",
                      "By name, number or range, 3-8 (default: the first eight)");
        options.text("--groups", m_groups, "COLUMN,...;...",
                     "Columns that share an axis, from top to bottom: \"1,2;3\"");
        options.text("--from", m_from, "PLACE",
                     "Where the picture begins: a time, a sample's number or a share");
        options.text("--to", m_to, "PLACE", "Where it ends");
        options.texts("--cursors", m_cursors, "PLACE,PLACE", "Cursors A and B");
        options.text("--title", m_title, "TEXT", "Above the plot");
        options.choice("--size", m_parameters.paper, paperNames(), "Of the picture (default: A4)");
        options.flag("--portrait", m_portrait, "Higher than wide");
        options.number("--font-size", m_parameters.baseFontSize, "POINTS", "Of the texts (default: 14)");
        options.number("--line-width", m_parameters.lineWidthScale, "FACTOR",
                       "Multiplies all widths (default: 0.8)");
        options.choice("--grid", m_grid, {"none", "gray", "dotted", "black"}, "Default: gray");
        options.choice("--x", m_xMode, {"samples", "elapsed", "clock"}, "What stands along the x axis");
        options.flag("--log-x", m_logX, "A logarithmic x axis");
        options.flag("--log-y", m_logY, "Logarithmic y axes");
        options.flag("--no-legend", m_noLegend, "Without the names of the columns");
        m_characteristic.addTo(options);
    }
    void check(CommonOptions& common) override
    {
        m_characteristic.check(!common.files.empty());
        if (m_characteristic.isWanted() &&
            (m_together || !m_columns.empty() || !m_groups.empty() || m_xMode || m_logY))
            throw UsageError(
                "--characteristic draws no columns: --together, --columns, --groups, --x and --log-y have "
                "nothing to say");
        if (m_cursors.size() > 2)
            throw UsageError("--cursors: there are two, A and B");
        if (!m_columns.empty() && !m_groups.empty())
            throw UsageError("--columns or --groups, not both");
        if (!(m_parameters.baseFontSize > 0.0) || !(m_parameters.lineWidthScale > 0.0))
            throw UsageError("--font-size and --line-width must be above 0");
        if (m_parameters.baseFontSize > kMostPoints || m_parameters.lineWidthScale > kMostWidth)
            throw UsageError("--font-size is 200 at most, --line-width 100");
        PsParameters::setText(m_parameters.fontName, "Times-Roman");
        PsParameters::setText(m_parameters.creator, "Veltrac");
        m_parameters.orientation = m_portrait ? 0 : 1;
    }
    void perform(VerbJob& job) override
    {
        const std::string end = job.target.extension().string();
        if (end != kEnds[0] && end != kEnds[1])
            throw JobError((job.name.empty() ? "" : job.target.string() + ": ") +
                           "a picture ends in .svg or .eps");
        Plot2D plot = m_characteristic.isWanted() ? m_characteristic.plotOf(job, m_logX) : plotOfFiles(job);
        plot.title = m_title;
        plot.legend = !m_noLegend;
        if (m_grid)
            plot.grid = static_cast<PlotGrid>(*m_grid);
        m_characteristic.fitTo(plot, m_parameters);
        bringIntoView(plot);
        const auto draw = [&](BasicDriver& driver) {
            PlotLook look = paperLook(m_parameters, plot.grid);
            look.colors = defaultPlotColors();
            look.cursors = !m_cursors.empty();
            const PlotLayout layout = drawPlot(plot, driver, paperColumns(m_parameters), look);
            if (!layout.unread.empty())
                throw JobError(layout.unread.front());
        };
        if (end == kEnds[0])
            writeSvg(job.target, m_parameters, draw);
        else
            writeEps(job.target, m_parameters, draw);
        job.json["columns"] = plot.variables().size();
    }

private:
    static std::vector<std::string> paperNames()
    {
        std::vector<std::string> names;
        names.reserve(std::size(kPapers));
        for (const Paper& paper : kPapers)
            names.emplace_back(paper.name);
        return names;
    }

    // The columns of a spectrum's file are those of its values: the frequencies lie along x.
    static std::vector<std::uint32_t> columnsAtFirst(const PlotFile& file)
    {
        std::vector<std::uint32_t> columns = plottableColumns(file);
        if (columns.size() > 1 && file.timeUnit() == "Frequency[Hz]" && file.columnName(1) == "Freq")
            return {2};
        columns.resize(std::min(columns.size(), kMostAtOnce));
        return columns;
    }

    void addFile(Plot2D& plot, const std::shared_ptr<PlotFile>& file) const
    {
        if (!m_groups.empty()) {
            addGroups(plot, file);
            return;
        }
        const auto columns =
            m_columns.empty() ? columnsAtFirst(*file) : columnsMeant(file->file(), m_columns);
        for (const std::uint32_t column : columns)
            addByUnit(plot, makeVariable(file, column));
    }

    void addGroups(Plot2D& plot, const std::shared_ptr<PlotFile>& file) const
    {
        for (const std::string& group : split(m_groups, ';')) {
            const auto columns = columnsMeant(file->file(), split(group, ','));
            for (std::size_t i = 0; i < columns.size(); ++i) {
                const auto variable = makeVariable(file, columns[i]);
                addAlone(plot, variable);
                if (i > 0)
                    plot.moveToGroup(variable, plot.groups().size() - 2);
            }
        }
    }

    Plot2D plotOfFiles(VerbJob& job) const
    {
        Plot2D plot;
        for (const std::filesystem::path& source : m_together ? job.sources : std::vector{job.source}) {
            const auto file = std::make_shared<PlotFile>(source.string());
            addFile(plot, file);
            if (const std::string words = cutShortText(*file); !words.empty())
                job.notes.push_back(m_together ? source.string() + ": " + words : words);
        }
        if (plot.variables().empty())
            throw JobError("it has no column that can be plotted");
        for (std::size_t g = 0; g < plot.groups().size() && m_logY; ++g)
            plot.setLogarithmicY(g, true);
        requireDone(plot.buildMissing(job.progress));
        chooseXAxis(plot);
        if (m_xMode) {
            const auto mode = static_cast<XMode>(*m_xMode);
            if (mode == XMode::Clock && !canShowClock(plot))
                throw JobError(
                    "its times do not count in seconds, or do not rise: --x clock cannot show them");
            plot.setMode(mode);
        }
        plot.fitAll();
        if (m_logX) {
            plot.setLogarithmicX(true);
            plot.fitAll();
        }
        return plot;
    }

    void bringIntoView(Plot2D& plot) const
    {
        const Plot2D::Extent all{plot.x1(), plot.x2()};
        if (!m_from.empty() || !m_to.empty())
            plot.setX(m_from.empty() ? all.x1 : place(plot, m_from, "--from"),
                      m_to.empty() ? all.x2 : place(plot, m_to, "--to"));
        for (std::size_t i = 0; i < m_cursors.size(); ++i)
            plot.setCursor(i == 0 ? Plot2D::A : Plot2D::B, place(plot, m_cursors[i], "--cursors"));
    }

    static double place(const Plot2D& plot, const std::string& text, const char* option)
    {
        const PlaceInPlot meant = placeInPlot(plot, text);
        if (!meant.x)
            throw JobError(std::string(option) + " " + text + ": " + meant.reason);
        return *meant.x;
    }

    CharacteristicPicture m_characteristic;
    bool m_together = false;
    int m_format = 0;
    std::vector<std::string> m_columns;
    std::string m_groups;
    std::string m_from;
    std::string m_to;
    std::vector<std::string> m_cursors;
    std::string m_title;
    PsParameters m_parameters;
    bool m_portrait = false;
    std::optional<int> m_grid;
    std::optional<int> m_xMode;
    bool m_logX = false;
    bool m_logY = false;
    bool m_noLegend = false;
};

}  // namespace

std::unique_ptr<Verb> makePlotVerb()
{
    return std::make_unique<PlotVerb>();
}

}  // namespace veltrac
