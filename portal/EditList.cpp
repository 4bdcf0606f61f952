#include "portal/EditList.h"

#include <algorithm>
#include <cmath>
#include <tuple>
#include <utility>

namespace veltrac {

namespace {

bool before(const SampleRun& a, const SampleRun& b)
{
    return std::tie(a.column, a.first) < std::tie(b.column, b.first);
}

// The strips of an entry that touch samples first to last of a column.
std::span<const EditStrip> touching(const Edit& edit, const SampleRun& run)
{
    const auto begin = std::partition_point(edit.strips.begin(), edit.strips.end(), [&](const EditStrip& s) {
        return std::tie(s.run.column, s.run.last) < std::tie(run.column, run.first);
    });
    const auto end = std::partition_point(begin, edit.strips.end(), [&](const EditStrip& s) {
        return std::tie(s.run.column, s.run.first) <= std::tie(run.column, run.last);
    });
    return {begin, end};
}

bool settles(const Edit& edit, const SampleRun& run)
{
    const std::span<const EditStrip> strips = touching(edit, run);
    return strips.size() == 1 && strips[0].isAbsolute() && strips[0].run.first <= run.first &&
           strips[0].run.last >= run.last;
}

EditStrip strip(const SampleRun& run, EditStrip::Kind kind, double a)
{
    EditStrip made;
    made.run = run;
    made.kind = kind;
    made.a = a;
    return made;
}

}  // namespace

std::vector<SampleRun> joinedRuns(std::vector<SampleRun> runs)
{
    std::sort(runs.begin(), runs.end(), before);
    std::vector<SampleRun> out;
    for (const SampleRun& run : runs) {
        if (!out.empty() && out.back().column == run.column &&
            run.first <= std::uint64_t{out.back().last} + 1)
            out.back().last = std::max(out.back().last, run.last);
        else
            out.push_back(run);
    }
    return out;
}

void EditStrip::apply(std::uint32_t first, std::span<float> out) const
{
    const std::uint64_t from = std::max(first, run.first);
    const std::uint64_t end = std::min<std::uint64_t>(run.last, first + out.size() - 1) + 1;
    const auto forEach = [&](auto change) {
        for (std::uint64_t sample = from; sample < end; ++sample)
            change(out[sample - first], sample);
    };
    switch (kind) {
        case Kind::Line:
            if (x0 == x1)
                forEach([&](float& v, std::uint64_t) { v = static_cast<float>(a); });
            else
                forEach([&](float& v, std::uint64_t sample) {
                    // Divided last: a share of the way would leave crumbs where the line meets 0.
                    const double before = static_cast<double>(sample) - x0;
                    const double behind = x1 - static_cast<double>(sample);
                    v = static_cast<float>((a * behind + b * before) / (before + behind));
                });
            break;
        case Kind::Add:
            forEach([&](float& v, std::uint64_t) { v = static_cast<float>(v + a); });
            break;
        case Kind::Multiply:
            forEach([&](float& v, std::uint64_t) { v = static_cast<float>(v * a); });
            break;
        case Kind::ReplaceOutside:
            forEach([&](float& v, std::uint64_t) { v = v < b || v > c ? static_cast<float>(a) : v; });
            break;
        case Kind::Values:
            forEach([&](float& v, std::uint64_t sample) { v = values[sample - run.first]; });
            break;
    }
}

EditStrip setStrip(const SampleRun& run, double value)
{
    return strip(run, EditStrip::Kind::Line, value);
}

EditStrip rampStrip(const SampleRun& run, double atFirst, double atLast)
{
    EditStrip made = strip(run, EditStrip::Kind::Line, atFirst);
    made.b = atLast;
    made.x0 = run.first;
    made.x1 = run.last;
    return made;
}

EditStrip interpolateStrip(const SampleRun& run, double valueBefore, double valueAfter)
{
    EditStrip made = rampStrip(run, valueBefore, valueAfter);
    made.x0 = run.first - 1;
    made.x1 = run.last + 1;
    return made;
}

EditStrip addStrip(const SampleRun& run, double number)
{
    return strip(run, EditStrip::Kind::Add, number);
}

EditStrip multiplyStrip(const SampleRun& run, double factor)
{
    return strip(run, EditStrip::Kind::Multiply, factor);
}

EditStrip replaceOutsideStrip(const SampleRun& run, double low, double high, double replacement)
{
    EditStrip made = strip(run, EditStrip::Kind::ReplaceOutside, replacement);
    made.b = low;
    made.c = high;
    return made;
}

EditStrip valuesStrip(std::uint32_t column, std::uint32_t first, std::vector<float> values)
{
    EditStrip made;
    made.run = {column, first, static_cast<std::uint32_t>(first + values.size() - 1)};
    made.kind = EditStrip::Kind::Values;
    made.values = std::move(values);
    return made;
}

void EditList::add(Edit edit)
{
    if (edit.strips.empty())
        return;
    std::sort(edit.strips.begin(), edit.strips.end(),
              [](const EditStrip& a, const EditStrip& b) { return before(a.run, b.run); });
    m_edits.resize(m_active);
    m_edits.push_back(std::make_shared<const Edit>(std::move(edit)));
    ++m_active;
}

std::string EditList::undoName() const
{
    return canUndo() ? m_edits[m_active - 1]->name : std::string();
}

std::string EditList::redoName() const
{
    return canRedo() ? m_edits[m_active]->name : std::string();
}

void EditList::undo()
{
    if (canUndo())
        --m_active;
}

void EditList::redo()
{
    if (canRedo())
        ++m_active;
}

// File and list agree in the entries that both begin with; all others were applied in one of them alone.
template <typename Visit>
bool EditList::anyDifferent(Visit visit) const
{
    const std::size_t both = std::min(m_active, m_saved.size());
    std::size_t same = 0;
    while (same < both && m_edits[same] == m_saved[same])
        ++same;
    for (std::size_t i = m_active; i > same; --i)
        if (visit(*m_edits[i - 1]))
            return true;
    for (std::size_t i = same; i < m_saved.size(); ++i)
        if (visit(*m_saved[i]))
            return true;
    return false;
}

bool EditList::isChanged() const
{
    return anyDifferent([](const Edit&) { return true; });
}

std::vector<SampleRun> EditList::unsavedRuns() const
{
    std::vector<SampleRun> runs;
    anyDifferent([&](const Edit& edit) {
        for (const EditStrip& s : edit.strips)
            runs.push_back(s.run);
        return false;
    });
    return joinedRuns(std::move(runs));
}

bool EditList::isUnsaved(std::uint32_t column, std::uint32_t sample) const
{
    const SampleRun cell{column, sample, sample};
    return anyDifferent([&](const Edit& edit) { return !touching(edit, cell).empty(); });
}

void EditList::markSaved()
{
    m_saved.assign(m_edits.begin(), m_edits.begin() + static_cast<std::ptrdiff_t>(m_active));
}

void EditList::apply(std::uint32_t column, std::uint32_t first, std::span<float> values) const
{
    if (values.empty())
        return;
    const SampleRun run{column, first, static_cast<std::uint32_t>(first + values.size() - 1)};
    std::size_t start = m_active;
    while (start > 0 && !settles(*m_edits[start - 1], run))
        --start;
    for (std::size_t i = start == 0 ? 0 : start - 1; i < m_active; ++i)
        for (const EditStrip& s : touching(*m_edits[i], run))
            s.apply(first, values);
}

}  // namespace veltrac
