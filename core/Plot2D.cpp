#include "core/Plot2D.h"

#include <algorithm>
#include <cmath>
#include <filesystem>
#include <limits>
#include <string_view>
#include <system_error>
#include <vector>

#include "core/PlotFile.h"
#include "core/Utf8.h"

using namespace veltrac;

namespace {

constexpr std::size_t kLongestHistory = 100;
constexpr double kMostOfExtent = 1.1;   // the widest view, in widths of the data
constexpr double kFinestStep = 1e-3;    // the narrowest, in steps of the samples …
constexpr double kFinestDigit = 1e-13;  // … and in digits of the numbers

double leastWidth(const Plot2D& plot)
{
    const Plot2D::Extent all = plot.extent();
    const double digits = std::max(std::abs(all.x1), std::abs(all.x2)) * kFinestDigit;
    if (plot.axis().logarithmic)
        return kFinestStep;
    const auto ref = plot.reference();
    const double step = ref ? plot.axis().stepOf(ref->variable()) : 1.0;
    return std::max(step * kFinestStep, digits);
}

}  // namespace

Group::Variables Plot2D::variables() const
{
    Group::Variables all;
    for (const Group& g : m_groups)
        all.insert(all.end(), g.variables().begin(), g.variables().end());
    return all;
}

namespace {

// Without its folders and its extension.
std::string_view stemOf(std::string_view path)
{
    path.remove_prefix(path.rfind('/') + 1);
    const std::size_t dot = path.rfind('.');
    return path.substr(0, dot == 0 ? path.size() : dot);
}

std::string wholePath(const std::string& path)
{
    if (path.starts_with('/'))
        return path;
    std::error_code none;
    const std::string whole = std::filesystem::absolute(path, none).lexically_normal().string();
    return whole.empty() ? path : whole;
}

// Where the last so many folders of a path begin; the name itself for 0, all of the path where it has fewer.
std::size_t placeOfName(std::string_view path, std::size_t folders)
{
    std::size_t slash = path.rfind('/');
    for (; folders > 0 && slash != std::string_view::npos && slash > 0; --folders)
        slash = path.rfind('/', slash - 1);
    return slash + 1;
}

// With how many of its folders a name differs from that of another file; 0 for one and the same file.
std::size_t foldersToTell(std::string_view path, std::string_view other)
{
    for (std::size_t folders = 1; path != other && folders < path.size(); ++folders)
        if (path.substr(placeOfName(path, folders)) != other.substr(placeOfName(other, folders)))
            return folders;
    return 0;
}

}  // namespace

std::string Plot2D::nameOf(const HsVariable& variable) const
{
    const Variable& v = variable.variable();
    const auto* const file = dynamic_cast<const PlotFile*>(v.source().get());
    bool isShared = false;
    std::vector<const std::string*> namesakes;
    for (const auto& shown : variables()) {
        const Variable& o = shown->variable();
        if (!o.visible || o.label != v.label || o.source() == v.source())
            continue;
        isShared = true;
        const auto* const other = dynamic_cast<const PlotFile*>(o.source().get());
        if (file != nullptr && other != nullptr && stemOf(other->path()) == stemOf(file->path()))
            namesakes.push_back(&other->path());
    }
    if (file == nullptr || !isShared)
        return v.label;
    const std::string path = wholePath(file->path());
    std::size_t folders = 0;
    for (const std::string* const other : namesakes)
        folders = std::max(folders, foldersToTell(path, wholePath(*other)));
    const std::string_view stem = stemOf(path);
    const std::size_t from = placeOfName(path, folders);
    const std::size_t to = static_cast<std::size_t>(stem.data() - path.data()) + stem.size();
    return v.label + " (" + utf8OfBytes(path.substr(from, to - from)) + ')';
}

std::shared_ptr<HsVariable> Plot2D::reference() const
{
    for (const Group& g : m_groups)
        for (const auto& v : g.variables())
            if (v->variable().visible && v->variable().rows() > 0)
                return v;
    return nullptr;
}

std::shared_ptr<HsVariable> Plot2D::find(const PlotSource& source, std::uint32_t column) const
{
    for (const Group& g : m_groups)
        for (const auto& v : g.variables())
            if (v->variable().source().get() == &source && v->variable().column() == column)
                return v;
    return nullptr;
}

void Plot2D::moveToGroup(const std::shared_ptr<HsVariable>& variable, std::size_t group)
{
    if (group >= m_groups.size()) {
        m_groups.emplace_back();
        group = m_groups.size() - 1;
    }
    Group::Variables& members = m_groups[group].variables();
    if (std::find(members.begin(), members.end(), variable) == members.end()) {
        for (Group& g : m_groups)
            std::erase(g.variables(), variable);
        members.push_back(variable);
        variable->setLogarithmic(m_groups[group].isLogarithmic());
    }
    std::erase_if(m_groups, [](const Group& g) { return g.variables().empty(); });
}

void Plot2D::setVisible(HsVariable& variable, bool on)
{
    variable.variable().visible = on;
}

void Plot2D::showOnly(HsVariable& variable)
{
    for (const auto& v : variables())
        setVisible(*v, v.get() == &variable);
}

void Plot2D::setYMode(std::size_t group, YMode mode)
{
    Group& g = m_groups[group];
    g.mode = mode;
    if (mode == YMode::Whole)
        g.fitY();
    else if (mode == YMode::View)
        g.fitY(m_axis, x1(), x2());
}

void Plot2D::setLogarithmicY(std::size_t group, bool on)
{
    if (group >= m_groups.size())
        return;
    Group& g = m_groups[group];
    g.setLogarithmic(on);
    g.mode = g.mode == YMode::Fixed ? YMode::Whole : g.mode;
}

void Plot2D::remove(const HsVariable& variable)
{
    for (Group& g : m_groups)
        std::erase_if(g.variables(), [&](const auto& v) { return v.get() == &variable; });
    std::erase_if(m_groups, [](const Group& g) { return g.variables().empty(); });
}

JobOutcome Plot2D::buildMissing(const Progress& progress)
{
    Group::Variables wanted;
    for (const auto& v : variables())
        if (v->variable().visible && v->failure().empty())
            wanted.push_back(v);
    return HsVariable::buildAll(wanted, progress);
}

// -- The x axis --

void Plot2D::setMode(XMode mode)
{
    if (mode == m_axis.mode)
        return;
    const auto ref = reference();
    const bool isTime = mode != XMode::Sample && m_axis.mode != XMode::Sample;
    const bool converts = ref && !(isTime && m_axis.unitSeconds == 1.0);
    XAxis next = m_axis;
    next.mode = mode;
    if (!converts) {
        m_axis = next;
        return;
    }
    // Between two samples the steps are taken as equal.
    const Variable& v = ref->variable();
    const auto convert = [&](double x) {
        const std::uint32_t row = std::max(v.firstRow(), std::min(m_axis.rowAt(v, x), v.rows() - 1));
        if (v.rows() <= v.firstRow())
            return next.xOf(v, v.rows()) + (x - m_axis.xOf(v, v.rows()));
        const double left = m_axis.xOf(v, row);
        const double step = m_axis.xOf(v, row + 1) - left;
        const double nextLeft = next.xOf(v, row);
        const double nextStep = next.xOf(v, row + 1) - nextLeft;
        return step > 0.0 ? nextLeft + (x - left) / step * nextStep : nextLeft;
    };
    const double x1 = convert(m_view.x1);
    const double x2 = convert(m_view.x2);
    for (std::optional<double>& cursor : m_cursors)
        if (cursor)
            cursor = convert(*cursor);
    for (PlotNote& note : notes)
        note.x = convert(note.x);
    m_axis = next;
    m_past.clear();
    m_future.clear();
    setX(x1, x2);
}

void Plot2D::setLogarithmicX(bool on)
{
    if (on == m_axis.logarithmic)
        return;
    m_axis.logarithmic = on;
    const Extent all = extent();
    if (on && !(all.x1 > 0.0 && all.x2 > all.x1)) {
        m_axis.logarithmic = false;
        return;
    }
    setX(std::max(m_view.x1, all.x1), m_view.x2);
}

void Plot2D::findOrigin()
{
    const Group::Variables all = variables();
    const auto dated = std::find_if(all.begin(), all.end(),
                                    [](const auto& v) { return v->variable().source()->hasCalendar(); });
    const std::uint32_t origin = dated == all.end() ? 0 : (*dated)->variable().source()->startSeconds();
    const double seconds = static_cast<double>(m_axis.origin) - origin;
    const double moved = m_axis.mode == XMode::Elapsed ? seconds / m_axis.unitSeconds : seconds;
    const bool wasDated = m_axis.dated;
    m_axis.dated = dated != all.end();
    m_axis.origin = origin;
    // What has no calendar stands at the origin wherever that is.
    if (moved == 0.0 || !wasDated || !m_axis.dated || m_axis.mode == XMode::Sample)
        return;
    m_view.x1 += moved;
    m_view.x2 += moved;
    for (std::optional<double>& cursor : m_cursors)
        if (cursor)
            *cursor += moved;
    m_past.clear();
    m_future.clear();
}

// -- The view --

Plot2D::Extent Plot2D::extent() const
{
    double from = std::numeric_limits<double>::infinity();
    double to = -from;
    double step = 1.0;
    for (const auto& h : variables()) {
        const Variable& v = h->variable();
        if (!v.visible || v.rows() == 0 || !h->failure().empty())
            continue;
        std::uint32_t first = v.firstRow();
        if (m_axis.logarithmic)
            first = m_axis.rowFrom(v, std::numeric_limits<double>::min());
        if (first > v.rows())
            continue;
        from = std::min(from, m_axis.xOf(v, first));
        to = std::max(to, m_axis.xOf(v, v.rows()));
        step = m_axis.stepOf(v);
    }
    if (!(from <= to))
        return {};
    if (from == to)
        return m_axis.logarithmic ? Extent{from / 2.0, to * 2.0} : Extent{from - step, to + step};
    return {from, to};
}

// Limits in distances along the axis.
void Plot2D::setScale(double from, double to)
{
    if (!std::isfinite(from) || !std::isfinite(to))
        return;
    if (from > to)
        std::swap(from, to);
    const Extent all = extent();
    const double low = m_axis.toScale(all.x1);
    const double high = m_axis.toScale(all.x2);
    double width = std::max(to - from, leastWidth(*this));
    double middle = from + (to - from) / 2.0;
    if (width > (high - low) * kMostOfExtent) {
        width = std::max((high - low) * kMostOfExtent, leastWidth(*this));
        middle = low + (high - low) / 2.0;
    }
    middle = std::clamp(middle, low, high);
    const bool asAsked = width == to - from && middle == from + (to - from) / 2.0;
    m_view.x1 = m_axis.fromScale(asAsked ? from : middle - width / 2.0);
    m_view.x2 = m_axis.fromScale(asAsked ? to : middle + width / 2.0);
    followY();
}

void Plot2D::setX(double x1, double x2)
{
    if (m_axis.logarithmic && std::min(x1, x2) <= 0.0) {
        const Extent all = extent();
        x1 = std::max(x1, all.x1);
        x2 = std::max(x2, all.x2);
    }
    setScale(m_axis.toScale(x1), m_axis.toScale(x2));
}

void Plot2D::fitAll()
{
    for (Group& g : m_groups)
        g.mode = g.mode == YMode::Fixed ? YMode::Whole : g.mode;
    const Extent all = extent();
    setX(all.x1, all.x2);
    refitY();
}

void Plot2D::fitY()
{
    for (Group& g : m_groups) {
        g.fitY(m_axis, m_view.x1, m_view.x2);
        g.mode = g.mode == YMode::View ? YMode::View : YMode::Fixed;
    }
}

void Plot2D::refitY()
{
    for (Group& g : m_groups)
        if (g.mode == YMode::Whole)
            g.fitY();
    followY();
}

void Plot2D::followY()
{
    for (Group& g : m_groups)
        if (g.mode == YMode::View)
            g.fitY(m_axis, m_view.x1, m_view.x2);
}

void Plot2D::zoomX(double factor, double about)
{
    if (!(factor > 0.0))
        return;
    const double fixed = m_axis.toScale(about);
    const double from = m_axis.toScale(m_view.x1);
    const double to = m_axis.toScale(m_view.x2);
    // At the least width the view stands still instead of creeping.
    factor = std::min(factor, std::max(1.0, (to - from) / leastWidth(*this)));
    setScale(fixed - (fixed - from) / factor, fixed + (to - fixed) / factor);
}

void Plot2D::zoomY(std::size_t group, double factor, double about)
{
    if (group >= m_groups.size() || !(factor > 0.0))
        return;
    Group& g = m_groups[group];
    const double fixed = g.toScale(about);
    const double from = g.toScale(g.y1());
    const double to = g.toScale(g.y2());
    if (factor > 1.0 && (to - from) <= std::max(std::abs(from), std::abs(to)) * kFinestDigit)
        return;
    setY(group, g.fromScale(fixed - (fixed - from) / factor), g.fromScale(fixed + (to - fixed) / factor));
}

void Plot2D::pan(double fraction)
{
    const double from = m_axis.toScale(m_view.x1);
    const double to = m_axis.toScale(m_view.x2);
    const Extent all = extent();
    // Stops with the first or last sample in view, as a scroll bar does.
    const double room = fraction > 0.0 ? std::max(0.0, m_axis.toScale(all.x2) - to)
                                       : std::min(0.0, m_axis.toScale(all.x1) - from);
    const double wanted = fraction * (to - from);
    const double by = fraction > 0.0 ? std::min(wanted, room) : std::max(wanted, room);
    setScale(from + by, to + by);
}

void Plot2D::panY(std::size_t group, double fraction)
{
    if (group >= m_groups.size())
        return;
    const Group& g = m_groups[group];
    const double from = g.toScale(g.y1());
    const double to = g.toScale(g.y2());
    const double by = fraction * (to - from);
    setY(group, g.fromScale(from + by), g.fromScale(to + by));
}

void Plot2D::setY(std::size_t group, double y1, double y2)
{
    if (group >= m_groups.size())
        return;
    m_groups[group].setLimits(y1, y2);
    m_groups[group].mode = YMode::Fixed;
}

// -- History --

Plot2D::View Plot2D::present() const
{
    View view{m_view.x1, m_view.x2, {}};
    for (const Group& g : m_groups)
        view.groups.push_back({g.y1(), g.y2(), g.mode});
    return view;
}

void Plot2D::show(const View& view)
{
    m_view.x1 = view.x1;
    m_view.x2 = view.x2;
    // Groups that came or went since keep their limits.
    if (view.groups.size() == m_groups.size()) {
        for (std::size_t i = 0; i < m_groups.size(); ++i) {
            m_groups[i].setLimits(view.groups[i].y1, view.groups[i].y2);
            m_groups[i].mode = view.groups[i].mode;
        }
    }
    m_gesture = 0;
}

void Plot2D::remember(int gesture)
{
    if (gesture != 0 && gesture == m_gesture && !m_past.empty())
        return;
    m_gesture = gesture;
    m_past.push_back(present());
    if (m_past.size() > kLongestHistory)
        m_past.erase(m_past.begin());
    m_future.clear();
}

bool Plot2D::back()
{
    if (m_past.empty())
        return false;
    m_future.push_back(present());
    show(m_past.back());
    m_past.pop_back();
    return true;
}

bool Plot2D::forward()
{
    if (m_future.empty())
        return false;
    m_past.push_back(present());
    show(m_future.back());
    m_future.pop_back();
    return true;
}

double Plot2D::fractionOf(double x) const
{
    const double from = m_axis.toScale(m_view.x1);
    return (m_axis.toScale(x) - from) / (m_axis.toScale(m_view.x2) - from);
}

double Plot2D::xAtFraction(double fraction) const
{
    if (!m_axis.logarithmic)
        return m_view.x1 + fraction * (m_view.x2 - m_view.x1);
    const double from = m_axis.toScale(m_view.x1);
    return m_axis.fromScale(from + fraction * (m_axis.toScale(m_view.x2) - from));
}

// -- Cursors --

double Plot2D::snapped(double x) const
{
    const auto ref = reference();
    if (!ref)
        return x;
    const std::uint32_t row = m_axis.nearestRow(ref->variable(), x);
    return row == 0 ? x : m_axis.xOf(ref->variable(), row);
}

void Plot2D::setCursor(Cursor which, double x)
{
    if (std::isfinite(x))
        m_cursors[which] = snapped(x);
}

void Plot2D::clearCursor(Cursor which)
{
    m_cursors[which].reset();
}

void Plot2D::moveCursor(Cursor which, std::int64_t samples)
{
    const auto ref = reference();
    if (!ref || !m_cursors[which])
        return;
    const Variable& v = ref->variable();
    const std::int64_t row = m_axis.nearestRow(v, *m_cursors[which]) + samples;
    m_cursors[which] =
        m_axis.xOf(v, static_cast<std::uint32_t>(std::clamp<std::int64_t>(row, v.firstRow(), v.rows())));
}

Plot2D::Extent Plot2D::interval() const
{
    if (m_cursors[A] && m_cursors[B])
        return {std::min(*m_cursors[A], *m_cursors[B]), std::max(*m_cursors[A], *m_cursors[B])};
    return {m_view.x1, m_view.x2};
}

SampleRange Plot2D::samplesIn(const Extent& interval, const Variable& variable) const
{
    const std::uint32_t first = m_axis.rowFrom(variable, interval.x1);
    const std::uint32_t last = m_axis.rowAt(variable, interval.x2);
    return first <= last ? SampleRange{first, last} : SampleRange{};
}

void Plot2D::takeNotes(const Plot2D& before)
{
    if (before.xTitle != xTitle || before.axis().mode != axis().mode)
        return;
    const double shift =
        axis().mode == XMode::Sample ? 0.0 : static_cast<double>(before.axis().origin) - axis().origin;
    for (const PlotNote& note : before.notes)
        notes.push_back({note.x + shift, note.text});
}
