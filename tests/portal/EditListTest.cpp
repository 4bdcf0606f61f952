// The list of edits against plain arrays, and block operations.

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <cstring>
#include <numeric>
#include <random>
#include <utility>
#include <vector>

#include "portal/BlockOperation.h"
#include "portal/EditList.h"

using namespace veltrac;

namespace {

using Values = std::vector<float>;

bool sameBits(const Values& a, const Values& b)
{
    return a.size() == b.size() && std::memcmp(a.data(), b.data(), a.size() * sizeof(float)) == 0;
}

Values applied(const EditList& list, std::uint32_t column, std::uint32_t first, Values values)
{
    list.apply(column, first, values);
    return values;
}

EditStrip randomStrip(std::mt19937& random, std::uint32_t samples)
{
    const auto below = [&](std::uint32_t n) { return static_cast<std::uint32_t>(random() % n); };
    SampleRun run{1 + below(2), 1 + below(samples), 0};
    run.last = std::min(samples, run.first + below(below(4) == 0 ? samples : 6));
    const double number = below(9);
    switch (below(6)) {
        case 0:
            return setStrip(run, number);
        case 1:
            return rampStrip(run, number, -3.0);
        case 2:
            return addStrip(run, number);
        case 3:
            return multiplyStrip(run, 1.0 + number);
        case 4:
            return replaceOutsideStrip(run, 2.0, 50.0, NAN);
        default:
            return valuesStrip(run.column, run.first, Values(run.count(), static_cast<float>(number)));
    }
}

// Two columns that are changed at once, as a plain editor without a list would.
struct PlainFile
{
    Values columns[2];

    void apply(const EditStrip& strip)
    {
        for (std::uint32_t s = strip.run.first; s <= strip.run.last; ++s)
            strip.apply(s, {&columns[strip.run.column - 1][s - 1], 1});
    }
    bool operator==(const PlainFile& other) const
    {
        return sameBits(columns[0], other.columns[0]) && sameBits(columns[1], other.columns[1]);
    }
};

}  // namespace

TEST(EditStrip, OperationsDoWhatTheirNamesSay)
{
    struct Row
    {
        const char* label;
        EditStrip strip;
        Values expected;  // from 1, 2, 3, missing, 5, 6
    };
    const SampleRun run{1, 2, 5};
    const Row rows[] = {
        {"set", setStrip(run, 9), {1, 9, 9, 9, 9, 6}},
        {"ramp", rampStrip(run, 10, 40), {1, 10, 20, 30, 40, 6}},
        {"ramp through 0", rampStrip({1, 1, 6}, -48, 12), {-48, -36, -24, -12, 0, 12}},
        {"ramp of one", rampStrip({1, 2, 2}, 10, 40), {1, 10, 3, NAN, 5, 6}},
        {"interpolate", interpolateStrip(run, 1, 6), {1, 2, 3, 4, 5, 6}},
        {"add", addStrip(run, 0.5), {1, 2.5, 3.5, NAN, 5.5, 6}},
        {"multiply", multiplyStrip(run, -2), {1, -4, -6, NAN, -10, 6}},
        {"outside", replaceOutsideStrip(run, 3, 4, 0), {1, 0, 3, NAN, 0, 6}},
        {"values", valuesStrip(1, 5, {7, 8}), {1, 2, 3, NAN, 7, 8}},
    };
    for (const Row& row : rows) {
        EditList list;
        list.add({"edit", {row.strip}});
        const Values out = applied(list, 1, 1, {1, 2, 3, NAN, 5, 6});
        for (std::size_t i = 0; i < out.size(); ++i)
            EXPECT_TRUE(out[i] == row.expected[i] || (std::isnan(out[i]) && std::isnan(row.expected[i])))
                << row.label << " at " << i << ": " << out[i];
        EXPECT_EQ(applied(list, 2, 1, {1, 2}), Values({1, 2})) << row.label << ": another column";
    }
}

TEST(EditList, ShowsAndSavesWhatAPlainEditorWouldThroughUndoAndRedo)
{
    constexpr std::uint32_t kSamples = 40;
    std::mt19937 random(1);
    EditList list;
    PlainFile original;
    for (Values& column : original.columns)
        for (std::uint32_t s = 0; s < kSamples; ++s)
            column.push_back(static_cast<float>(s));
    std::vector<PlainFile> states{original};
    std::size_t now = 0;
    PlainFile onDisk = original;

    for (int step = 0; step < 3000; ++step) {
        switch (random() % 8) {
            case 0:
                list.markSaved();
                onDisk = states[now];
                break;
            case 1:
            case 2:
                list.undo();
                now -= now > 0 ? 1 : 0;
                break;
            case 3:
                list.redo();
                now += now + 1 < states.size() ? 1 : 0;
                break;
            default: {
                const EditStrip strip = randomStrip(random, kSamples);
                states.resize(now + 1);
                states.push_back(states[now]);
                states[++now].apply(strip);
                list.add({"edit", {strip}});
            }
        }
        ASSERT_EQ(list.canUndo(), now > 0);
        ASSERT_EQ(list.canRedo(), now + 1 < states.size());

        PlainFile shown = original;
        PlainFile saved = onDisk;
        for (std::uint32_t c = 1; c <= 2; ++c) {
            list.apply(c, 1, shown.columns[c - 1]);
            for (std::uint32_t s = 1; s <= kSamples; ++s)
                ASSERT_TRUE(sameBits(applied(list, c, s, {original.columns[c - 1][s - 1]}),
                                     {shown.columns[c - 1][s - 1]}));
        }
        ASSERT_TRUE(shown == states[now]) << "step " << step;
        std::size_t unsaved = 0;
        for (const SampleRun& run : list.unsavedRuns())
            for (std::uint32_t s = run.first; s <= run.last; ++s, ++unsaved) {
                ASSERT_TRUE(list.isUnsaved(run.column, s));
                saved.columns[run.column - 1][s - 1] = shown.columns[run.column - 1][s - 1];
            }
        ASSERT_TRUE(saved == shown) << "step " << step << ": a save would miss values";
        ASSERT_EQ(list.isChanged(), unsaved > 0);
    }
}

TEST(EditList, FillingHalfABillionSamplesCostsOneEntry)
{
    EditList list;
    list.add({"Set to", {setStrip({1, 1, 500000000}, 1)}});
    list.add({"Add", {addStrip({1, 1, 500000000}, 2)}});
    EXPECT_EQ(applied(list, 1, 499999999, {0, 0, 0}), Values({3, 3, 0}));
    EXPECT_EQ(list.unsavedRuns().size(), 1U);
    EXPECT_EQ(list.undoName(), "Add");
    list.undo();
    EXPECT_EQ(list.redoName(), "Add");
    EXPECT_EQ(applied(list, 1, 7, {0}), Values({1}));
}

TEST(BlockOperation, InterpolationBridgesGapsAndHoldsAtTheEnds)
{
    const Values column = {NAN, 2, NAN, NAN, 8, 100, NAN};
    const ReaderOfColumn readerOf = [&](std::uint32_t) -> ColumnReader {
        return [&](std::uint32_t first, std::span<float> out) {
            std::copy_n(column.begin() + first - 1, out.size(), out.begin());
        };
    };
    const auto outcome = [&](BlockOperation operation, const SampleRun& run) {
        EditList list;
        std::vector<EditStrip> strips;
        makeStrips(operation, {run}, {}, 7, readerOf, {}, strips);
        list.add({"edit", strips});
        return applied(list, 1, 1, column);
    };
    EXPECT_EQ(outcome(BlockOperation::InterpolateMissing, {1, 1, 7}), Values({2, 2, 4, 6, 8, 100, 100}));
    // Only the gaps that begin and end in the block are looked for there.
    EXPECT_EQ(outcome(BlockOperation::InterpolateMissing, {1, 3, 4})[3], 6.0F);
    EXPECT_TRUE(std::isnan(outcome(BlockOperation::InterpolateMissing, {1, 3, 4})[6]));
    EXPECT_EQ(outcome(BlockOperation::Interpolate, {1, 3, 4})[2], 4.0F);
    EXPECT_EQ(outcome(BlockOperation::Interpolate, {1, 1, 1})[0], 2.0F);
}

TEST(BlockOperation, GapsAreBridgedWhereverTheyLieInALongColumn)
{
    // At the seam of what is read at once, behind it, and at the end.
    Values column(20'001);
    std::iota(column.begin(), column.end(), 1.0F);
    const Values whole = column;
    for (const auto& [first, last] : {std::pair{8190, 8195}, {16'384, 16'385}, {20'000, 20'001}})
        std::fill(column.begin() + first - 1, column.begin() + last, NAN);
    std::vector<EditStrip> strips;
    const ReaderOfColumn readerOf = [&](std::uint32_t) -> ColumnReader {
        return [&](std::uint32_t first, std::span<float> out) {
            std::copy_n(column.begin() + first - 1, out.size(), out.begin());
        };
    };
    makeStrips(BlockOperation::InterpolateMissing, {{1, 3, 20'001}}, {}, 20'001, readerOf, {}, strips);
    EXPECT_EQ(strips.size(), 3U);
    EditList list;
    list.add({"edit", strips});
    const Values bridged = applied(list, 1, 1, column);
    EXPECT_TRUE(std::equal(bridged.begin(), bridged.end() - 2, whole.begin()));
    EXPECT_EQ(bridged.back(), 19'999.0F);
}

TEST(BlockOperation, EachWorksOnAllRunsOfTheSelection)
{
    const Values column = {1, 2, NAN, 4, 5, 6};
    const ReaderOfColumn readerOf = [&](std::uint32_t) -> ColumnReader {
        return [&](std::uint32_t first, std::span<float> out) {
            std::copy_n(column.begin() + first - 1, out.size(), out.begin());
        };
    };
    const struct
    {
        BlockOperation operation;
        Values second, first;  // columns: samples 2 to 4 of the second, 5 to 6 of the first
    } rows[] = {{BlockOperation::Set, {1, 3, 3, 3, 5, 6}, {1, 2, NAN, 4, 3, 3}},
                {BlockOperation::SetMissing, {1, NAN, NAN, NAN, 5, 6}, {1, 2, NAN, 4, NAN, NAN}},
                {BlockOperation::Ramp, {1, 3, 4, 5, 5, 6}, {1, 2, NAN, 4, 3, 5}},
                {BlockOperation::Interpolate, {1, 2, 3, 4, 5, 6}, {1, 2, NAN, 4, 4, 4}},
                {BlockOperation::InterpolateMissing, {1, 2, 3, 4, 5, 6}, column},
                {BlockOperation::Add, {1, 5, NAN, 7, 5, 6}, {1, 2, NAN, 4, 8, 9}},
                {BlockOperation::Multiply, {1, 6, NAN, 12, 5, 6}, {1, 2, NAN, 4, 15, 18}},
                {BlockOperation::ReplaceOutside, {1, 9, NAN, 4, 5, 6}, {1, 2, NAN, 4, 5, 9}}};
    for (const auto& row : rows) {
        std::vector<EditStrip> strips;
        ASSERT_EQ(makeStrips(row.operation, {{2, 2, 4}, {1, 5, 6}}, std::vector{3.0, 5.0, 9.0}, 6, readerOf,
                             {}, strips),
                  JobOutcome::Done);
        EditList list;
        list.add({"edit", strips});
        for (const std::uint32_t c : {1U, 2U}) {
            const Values out = applied(list, c, 1, column);
            const Values& wanted = c == 1 ? row.first : row.second;
            for (std::size_t i = 0; i < out.size(); ++i)
                EXPECT_TRUE(out[i] == wanted[i] || (std::isnan(out[i]) && std::isnan(wanted[i])))
                    << rowOf(row.operation).name << ", column " << c << ", sample " << i + 1 << ": "
                    << out[i];
        }
    }
}

TEST(BlockOperation, PasteTakesCommasAndGapsAndRefusesWords)
{
    const PastedTable table = parsePasted("1,5\t\t-2e3\r\nnan\t+4\r\n");
    ASSERT_EQ(table.rows.size(), 2U);
    EXPECT_EQ(table.rows[0][0], 1.5F);
    EXPECT_TRUE(std::isnan(table.rows[0][1]));
    EXPECT_EQ(table.rows[0][2], -2000.0F);
    EXPECT_TRUE(std::isnan(table.rows[1][0]));
    EXPECT_EQ(table.rows[1][1], 4.0F);
    for (const char* const bad : {"1\tVolt", "1 2", "0x10", "1e39", "1.234,5"}) {
        const PastedTable refused = parsePasted(bad);
        EXPECT_TRUE(refused.rows.empty()) << bad;
        EXPECT_FALSE(refused.refused.empty()) << bad;
    }
}

TEST(BlockOperation, PastedRowsFillTheirCellsAndCountWhatFindsNoPlace)
{
    // Two samples in the order of a sorted table, the second of three columns takes nothing.
    const std::vector<std::vector<float>> rows = {{1, 2, 3, 4}, {5, 6}, {7}};
    const std::vector<std::uint32_t> samples = {9, 4};
    const std::vector<std::uint32_t> columns = {2, 0, 1};
    const PastedStrips pasted = pasteStrips(rows, samples, columns);
    EXPECT_EQ(pasted.beyond, 2U);
    EXPECT_EQ(pasted.refused, 2U);
    EditList list;
    list.add({"Paste", pasted.strips});
    EXPECT_EQ(applied(list, 2, 4, Values(6)), Values({5, 0, 0, 0, 0, 1}));
    EXPECT_EQ(applied(list, 1, 4, Values(6)), Values({0, 0, 0, 0, 0, 3}));
}
