// The calls that move long runs beside single values: the same values, bytes on disk, failures and states,
// whatever came before and wherever a transfer fails.

#include <gtest/gtest.h>
#include <unistd.h>

#include <filesystem>
#include <optional>
#include <random>
#include <string>
#include <vector>

#include "core/TSFILE.h"
#include "core/TsExceptions.h"
#include "tests/FileSizeLimit.h"
#include "tests/core/TsFileBytes.h"

using namespace veltrac;

namespace {

constexpr std::uint32_t kValues = 150'000;  // more than two of the longest transfers

// How an access ended: what it threw, in words, or nothing.
template <typename Access>
std::string endOf(Access access)
{
    const auto inWords = [](const char* type, const TS::Failure& e) {
        return std::string(type) + ' ' + std::to_string(e.value1) + ' ' + std::to_string(e.value2) + ' ' +
               std::to_string(e.flag);
    };
    try {
        access();
        return {};
    } catch (const TS::IO_ERROR& e) {
        return inWords("IO_ERROR", e);
    } catch (const TS::READONLY_VIOLATION& e) {
        return inWords("READONLY_VIOLATION", e);
    } catch (const TS::Failure& e) {
        return inWords("another failure", e);
    }
}

enum class Fault { None, ReadOnly, CutShort, DiskFull };

struct Shape
{
    std::uint32_t columns;
    bool swapped;
    Fault fault;
    bool ring = false;
};

// The same file twice: one is used by runs, the other value by value.
class Twins
{
public:
    Twins(const Shape& shape, std::mt19937& random)
        : m_random(random), m_columns(shape.columns), m_samples(kValues / shape.columns), m_fault(shape.fault)
    {
        HandMadeFile bytes(512 * (2 + (m_columns - 1) / 8) + dataBytes(m_samples, m_columns), shape.swapped);
        bytes.word(0, m_samples).word(4, m_columns).word(508, 3);
        if (shape.ring)
            bytes.word(140, 2 * m_samples + m_samples / 3).word(144, 3 * m_samples + m_samples / 3 - 1);
        for (std::size_t i = 0; i < std::size_t{m_samples} * m_columns; ++i)
            bytes.word(512 * (2 + (m_columns - 1) / 8) + 4 * i, static_cast<std::uint32_t>(random()));
        bytes.write("runs.ts");
        bytes.write("single.ts");
        m_runs.emplace("runs", shape.fault == Fault::ReadOnly);
        m_single.emplace("single", shape.fault == Fault::ReadOnly);
    }

    // Any access to any place, often to where the last one ended.
    void step()
    {
        const std::uint32_t count = 1 + below(m_random() % 4 == 0 ? m_samples - 1 : 2000 % m_samples);
        std::uint32_t first = m_random() % 2 == 0 ? m_next : 1 + below(m_samples);
        if (first + count - 1 > m_samples)
            first = m_samples - count + 1;
        m_next = first + count <= m_samples ? first + count : 1;
        const std::uint32_t col = 1 + below(m_columns);
        std::optional<FileSizeLimit> full;
        if (m_fault == Fault::DiskFull && m_random() % 3 == 0)
            full.emplace(below(static_cast<std::uint32_t>(std::filesystem::file_size("runs.ts"))));
        if (m_fault == Fault::CutShort && m_random() % 12 == 0)
            cut();
        access(below(7), col, first, count);
        full.reset();
        EXPECT_EQ(bytesOf("runs.ts"), bytesOf("single.ts"));
        const std::uint32_t place = 1 + below(m_samples);
        both([&](TSFILE& file, std::vector<float>& out) { out[0] = file.value(place, col); }, 1);
    }

private:
    std::uint32_t below(std::uint32_t end)
    {
        return end == 0 ? 0 : static_cast<std::uint32_t>(m_random() % end);
    }

    void cut()
    {
        const auto size = static_cast<std::uint32_t>(std::filesystem::file_size("runs.ts"));
        const auto left = static_cast<off_t>(size - below(size / 8));
        ASSERT_EQ(truncate("runs.ts", left), 0);
        ASSERT_EQ(truncate("single.ts", left), 0);
    }

    // Calls `access` with either file and room for `values` numbers; all that comes of it has to be equal.
    template <typename Access>
    void both(Access access, std::size_t values)
    {
        both(access, access, values);
    }
    template <typename Runs, typename Single>
    void both(Runs runs, Single single, std::size_t values)
    {
        std::vector<float> ofRuns(values);
        std::vector<float> ofSingle(values);
        const std::string end = endOf([&] { runs(*m_runs, ofRuns); });
        EXPECT_EQ(end, endOf([&] { single(*m_single, ofSingle); }));
        // Of a refused run nobody looks at the values.
        if (end.empty() && values > 0) {
            EXPECT_EQ(std::memcmp(ofRuns.data(), ofSingle.data(), values * sizeof(float)), 0);
        }
    }

    void access(std::uint32_t kind, std::uint32_t col, std::uint32_t first, std::uint32_t count)
    {
        SCOPED_TRACE("kind " + std::to_string(kind) + ", column " + std::to_string(col) + ", sample " +
                     std::to_string(first) + ", count " + std::to_string(count));
        const std::uint32_t n = m_columns;
        std::vector<float> in(std::size_t{count} * (kind == 3 ? n : 1));
        for (float& v : in)
            v = static_cast<float>(m_random());
        const auto other = std::min(col + 1, n);
        switch (kind) {
            case 0:
                return both([&](TSFILE& f, std::vector<float>& out) { f.readColumn(col, first, out); },
                            [&](TSFILE& f, std::vector<float>& out) {
                                for (std::uint32_t i = 0; i < count; ++i)
                                    out[i] = f.value(first + i, col);
                            },
                            count);
            case 1:
                return both([&](TSFILE& f, std::vector<float>& out) { f.readRows(first, count, out.data()); },
                            [&](TSFILE& f, std::vector<float>& out) {
                                for (std::uint32_t i = 0; i < count; ++i)
                                    for (std::uint32_t c = 1; c <= n; ++c)
                                        out[std::size_t{i} * n + c - 1] = f.value(first + i, c);
                            },
                            std::size_t{count} * n);
            case 2:
                return both([&](TSFILE& f, std::vector<float>&) { f.writeColumn(col, first, in); },
                            [&](TSFILE& f, std::vector<float>&) {
                                for (std::uint32_t i = 0; i < count; ++i)
                                    f.setValue(first + i, col, in[i]);
                            },
                            0);
            case 3:
                return both([&](TSFILE& f, std::vector<float>&) { f.writeRows(first, count, in.data()); },
                            [&](TSFILE& f, std::vector<float>&) {
                                for (std::uint32_t i = 0; i < count; ++i)
                                    for (std::uint32_t c = 1; c <= n; ++c)
                                        f.setValue(first + i, c, in[std::size_t{i} * n + c - 1]);
                            },
                            0);
            case 4:
                return both(
                    [&](TSFILE& f, std::vector<float>& out) {
                        const TSFILE::ColumnRun pair[] = {{col, out.data()}, {other, out.data() + count}};
                        f.readColumns(first, count, pair);
                    },
                    [&](TSFILE& f, std::vector<float>& out) {
                        for (std::uint32_t i = 0; i < count; ++i) {
                            out[i] = f.value(first + i, col);
                            out[count + i] = f.value(first + i, other);
                        }
                    },
                    2 * std::size_t{count});
            case 5:
                return both([&](TSFILE& f, std::vector<float>&) { f.setValue(first, col, in[0]); }, 0);
            default:
                return both([&](TSFILE& f, std::vector<float>&) { f.flush(false); }, 0);
        }
    }

    std::mt19937& m_random;
    std::uint32_t m_columns;
    std::uint32_t m_samples;
    Fault m_fault;
    std::uint32_t m_next = 1;
    std::optional<TSFILE> m_runs;
    std::optional<TSFILE> m_single;
};

}  // namespace

TEST(TsFile, RunsDoWhatSingleValuesDoWhateverFails)
{
    const TestDirectory directory;
    std::mt19937 random(13);
    for (const std::uint32_t columns : {1U, 3U, 8U, 700U})
        for (const Fault fault : {Fault::None, Fault::ReadOnly, Fault::CutShort, Fault::DiskFull})
            for (const bool swapped : {false, true}) {
                SCOPED_TRACE("columns " + std::to_string(columns) + ", fault " +
                             std::to_string(static_cast<int>(fault)) + (swapped ? ", swapped" : ""));
                Twins twins({columns, swapped, fault, fault == Fault::None && columns == 3}, random);
                for (int i = 0; i < 25 && !testing::Test::HasFailure(); ++i)
                    twins.step();
            }
}
