#include "calc/Correlation.h"

#include <algorithm>
#include <cmath>
#include <iterator>
#include <numbers>
#include <span>

#include "calc/RealTransform.h"
#include "calc/SpectrumPlan.h"
#include "calc/SpectrumSamples.h"
#include "core/ColumnCopy.h"
#include "core/HeaderTexts.h"
#include "core/TSFILE.h"
#include "core/Utf8.h"
#include "core/Variable.h"

namespace veltrac {

namespace {

constexpr std::uint32_t kLeastBlock = 1U << 15;

struct CorrelationRow
{
    const char* name;
    const char* column;
};
constexpr CorrelationRow kCorrelationRows[] = {
    {"Normalised", "Correl"}, {"Biased", "Covar"}, {"Unbiased", "CovarUnb"}};
static_assert(std::size(kCorrelationRows) == kCorrelationScales);

std::uint32_t blockFor(std::uint32_t mostLag)
{
    return std::max(kLeastBlock, 2 * mostLag);
}

std::uint32_t transformFor(std::uint32_t mostLag)
{
    return paddedLength(blockFor(mostLag) + 2 * mostLag);
}

// A straight line (or a mean, or nothing) that is taken off the samples of a range, and the sum of the
// squares that are left.
class Channel
{
public:
    Channel(TSFILE& file, const SpectrumRequest& request)
        : m_reader(file, request),
          m_from(request.from),
          m_count(request.to - request.from + 1),
          m_trend(request.trend)
    {
    }

    JobOutcome findTrend(const Progress& progress)
    {
        std::vector<double> run(kLeastBlock);
        const double centre = (m_count - 1.0) / 2.0;
        double sum = 0.0;
        double product = 0.0;
        const auto walk = [&](const Progress& part, const auto& take) {
            for (std::uint32_t done = 0; done < m_count;) {
                const std::span<double> some(run.data(), std::min(kLeastBlock, m_count - done));
                m_reader.read(m_from + done, some, {});
                for (const double x : some)
                    take(done++, x);
                if (!goesOn(part, done, m_count))
                    return JobOutcome::Cancelled;
            }
            return JobOutcome::Done;
        };
        if (m_trend != SpectrumTrend::Nothing) {
            if (walk(partOf(progress, 0, 50), [&](std::uint32_t i, double x) {
                    sum += x;
                    product += (i - centre) * x;
                }) == JobOutcome::Cancelled)
                return JobOutcome::Cancelled;
            const double n = m_count;
            m_slope =
                m_trend == SpectrumTrend::Line && m_count > 1 ? product / (n * (n * n - 1.0) / 12.0) : 0.0;
            m_level = sum / n - m_slope * centre;
        }
        return walk(partOf(progress, 50, 100), [&](std::uint32_t i, double x) {
            const double rest = x - m_level - m_slope * i;
            m_squares += rest * rest;
        });
    }

    // Samples from place `first` (from 0, may lie outside, where there are zeros) on.
    void read(std::int64_t first, std::span<double> out)
    {
        std::fill(out.begin(), out.end(), 0.0);
        const std::int64_t begin = std::max<std::int64_t>(first, 0);
        const std::int64_t end =
            std::min<std::int64_t>(first + static_cast<std::int64_t>(out.size()), m_count);
        if (begin >= end)
            return;
        const std::span<double> there =
            out.subspan(static_cast<std::size_t>(begin - first), static_cast<std::size_t>(end - begin));
        m_reader.read(m_from + static_cast<std::uint32_t>(begin), there, {});
        for (std::size_t i = 0; i < there.size(); ++i)
            there[i] -= m_level + m_slope * (static_cast<double>(begin) + static_cast<double>(i));
    }

    double squares() const { return m_squares; }
    std::uint32_t count() const { return m_count; }

private:
    SampleReader m_reader;
    std::uint32_t m_from;
    std::uint32_t m_count;
    SpectrumTrend m_trend;
    double m_level = 0.0;
    double m_slope = 0.0;
    double m_squares = 0.0;
};

// The series between its values.
double between(const std::vector<double>& values, double place)
{
    constexpr int kReach = 32;
    const auto nearest = static_cast<std::int64_t>(std::llround(place));
    double sum = 0.0;
    for (std::int64_t i = nearest - kReach; i <= nearest + kReach; ++i) {
        if (i < 0 || i >= static_cast<std::int64_t>(values.size()))
            continue;
        const double x = place - static_cast<double>(i);
        const double turn = std::numbers::pi * x;
        const double sinc = std::fabs(x) < 1e-12 ? 1.0 : std::sin(turn) / turn;
        const double hann = 0.5 + 0.5 * std::cos(turn / (kReach + 1));
        sum += values[static_cast<std::size_t>(i)] * sinc * hann;
    }
    return sum;
}

}  // namespace

const char* correlationScaleName(CorrelationScale scale)
{
    return kCorrelationRows[static_cast<std::size_t>(scale)].name;
}

SpectrumRequest secondRequest(const CorrelationRequest& request)
{
    SpectrumRequest second = request.first;
    if (request.secondColumn == 0)
        return second;
    second.column = request.secondColumn;
    second.from = request.secondFrom;
    second.to = request.secondFrom + (request.first.to - request.first.from);
    second.interpolate = request.interpolateSecond;
    return second;
}

std::uint64_t correlationBytes(std::uint32_t mostLag)
{
    // The samples of one block, two transforms and the sum of their products: four times half a length.
    return (std::uint64_t{transformFor(mostLag)} * 4 + 2 * std::uint64_t{mostLag}) * sizeof(double);
}

JobOutcome correlate(TSFILE& first, TSFILE& second, const CorrelationRequest& request,
                     std::vector<double>& values, const Progress& progress)
{
    const std::uint32_t most = request.mostLag;
    const std::uint32_t block = blockFor(most);
    const std::uint32_t length = transformFor(most);
    Channel x(first, request.first);
    Channel y(second, secondRequest(request));
    if (x.findTrend(partOf(progress, 0, 15)) == JobOutcome::Cancelled ||
        y.findTrend(partOf(progress, 15, 30)) == JobOutcome::Cancelled)
        return JobOutcome::Cancelled;

    const std::size_t room = realFftRoom(static_cast<int>(length));
    std::vector<double> samples(length, 0.0);
    std::vector<double> xr(room), xi(room), yr(room), yi(room);
    // The product's real part less its imaginary one, of bin k in place k and of its mirror in place length -
    // k.
    std::vector<double> sum(length, 0.0);
    for (std::uint64_t start = 0; start < x.count(); start += block) {
        std::fill(samples.begin(), samples.end(), 0.0);
        x.read(static_cast<std::int64_t>(start), std::span(samples).first(block));
        realFft(static_cast<int>(length), samples.data(), xr.data(), xi.data(), {});
        y.read(static_cast<std::int64_t>(start) - most,
               std::span(samples).first(block + 2 * std::size_t{most}));
        realFft(static_cast<int>(length), samples.data(), yr.data(), yi.data(), {});
        for (std::size_t k = 0; k <= length / 2; ++k) {
            const double re = xr[k] * yr[k] + xi[k] * yi[k];
            const double im = xr[k] * yi[k] - xi[k] * yr[k];
            sum[k] += re - im;
            if (k > 0 && 2 * k < length)
                sum[length - k] += re + im;
        }
        if (!goesOn(partOf(progress, 30, 95), std::min<std::uint64_t>(start + block, x.count()), x.count()))
            return JobOutcome::Cancelled;
    }
    realFft(static_cast<int>(length), sum.data(), xr.data(), xi.data(), {});
    const double n = x.count();
    values.resize(2 * std::size_t{most} + 1);
    const double norm = std::sqrt(x.squares() * y.squares());
    for (std::size_t i = 0; i < values.size(); ++i) {
        // y was read from `most` samples earlier on, so that place i of the cyclic result is lag i - most.
        const bool isMirror = 2 * i > length;
        const std::size_t k = isMirror ? length - i : i;
        const double raw = (xr[k] + (isMirror ? xi[k] : -xi[k])) / length;
        const double lag = std::fabs(static_cast<double>(i) - most);
        values[i] = request.scale == CorrelationScale::Biased     ? raw / n
                    : request.scale == CorrelationScale::Unbiased ? raw / (n - lag)
                    : norm > 0.0                                  ? raw / norm
                                                                  : 0.0;
    }
    return goesOn(progress, 100, 100) ? JobOutcome::Done : JobOutcome::Cancelled;
}

CorrelationTop correlationTop(const std::vector<double>& values, bool ofItself)
{
    constexpr int kStepsASample = 16;
    constexpr double kStep = 1.0 / kStepsASample;
    constexpr double kAsHigh = 0.9;
    std::size_t begin = 0;
    if (ofItself) {
        begin = values.size() / 2;
        while (begin < values.size() && values[begin] >= 0.0)
            ++begin;
    }
    if (begin >= values.size())
        return {};
    auto top = std::max_element(values.begin() + static_cast<std::ptrdiff_t>(begin), values.end());
    if (!(*top > 0.0))
        return {};
    // The first of the periods that are as high but for what a sampled top loses between two samples.
    if (ofItself) {
        const double enough = kAsHigh * *top;
        top = std::find_if(values.begin() + static_cast<std::ptrdiff_t>(begin), values.end(),
                           [&](double v) { return v >= enough; });
        while (top + 1 != values.end() && *(top + 1) > *top)
            ++top;
    }
    const auto place = static_cast<double>(top - values.begin());
    double best = place;
    for (int step = -kStepsASample; step <= kStepsASample; ++step)
        if (const double at = place + step * kStep; between(values, at) > between(values, best))
            best = at;
    const double left = between(values, best - kStep);
    const double middle = between(values, best);
    const double right = between(values, best + kStep);
    const double curvature = left - 2.0 * middle + right;
    const double offset = curvature < 0.0 ? 0.5 * (left - right) / curvature : 0.0;
    const std::size_t half = values.size() / 2;
    return {best + offset * kStep - static_cast<double>(half), middle - 0.25 * (left - right) * offset, true};
}

JobOutcome computeCorrelation(TSFILE& first, TSFILE& second, const CorrelationRequest& request,
                              TSFILE& target, CorrelationTop& top, const Progress& progress)
{
    std::vector<double> values;
    if (correlate(first, second, request, values, partOf(progress, 0, 95)) == JobOutcome::Cancelled)
        return JobOutcome::Cancelled;
    top = correlationTop(values, request.secondColumn == 0);
    std::vector<float> rows;
    const double most = request.mostLag;
    for (std::size_t done = 0; done < values.size();) {
        const std::size_t count = std::min<std::size_t>(kRunSamples, values.size() - done);
        rows.clear();
        for (std::size_t i = done; i < done + count; ++i) {
            rows.push_back(static_cast<float>((static_cast<double>(i) - most) * request.first.dt));
            rows.push_back(static_cast<float>(values[i]));
        }
        target.writeRows(static_cast<std::uint32_t>(done + 1), static_cast<std::uint32_t>(count),
                         rows.data());
        done += count;
        if (!goesOn(partOf(progress, 95, 100), done, values.size()))
            return JobOutcome::Cancelled;
    }
    return JobOutcome::Done;
}

void describeCorrelation(TSFILE& first, TSFILE& second, const CorrelationRequest& request, TSFILE& target)
{
    const CorrelationRow& row = kCorrelationRows[static_cast<std::size_t>(request.scale)];
    const bool ofItself = request.secondColumn == 0;
    const std::string in = headerUtf8(first.columnName(request.first.column));
    const std::string out = ofItself ? in : headerUtf8(second.columnName(request.secondColumn));
    const std::string inUnit(unitIn(headerUtf8(first.columnDescription(request.first.column))));
    const std::string outUnit(ofItself ? inUnit
                                       : unitIn(headerUtf8(second.columnDescription(request.secondColumn))));
    const bool hasUnit = request.scale != CorrelationScale::Normalised && !inUnit.empty() && !outUnit.empty();
    target.dt(static_cast<float>(request.first.dt));
    target.timeUnit("Lag[s]");
    target.setStart(0, static_cast<float>(-(request.mostLag + 1.0) * request.first.dt));
    target.description(
        cutTo("Correlation " + in + (ofItself ? " with itself" : " and " + out) + ", " + row.name,
              kFileDescription.width - 1)
            .c_str());
    target.columnName(1, "Lag");
    target.columnDescription(1, "Lag, positive where the second is later [s]");
    target.columnName(2, row.column);
    target.columnDescription(2, fittingDescription(std::string(row.name) + " correlation of " + in +
                                                       (ofItself ? "" : " and " + out),
                                                   hasUnit ? inUnit + "·" + outUnit : "")
                                    .c_str());
    target.stampColumn(1);
    target.stampColumn(2);
}

}  // namespace veltrac
