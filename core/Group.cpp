#include "core/Group.h"

#include <algorithm>
#include <cmath>
#include <limits>
#include <optional>
#include <string_view>
#include <vector>

using namespace veltrac;

namespace {

constexpr double kMargin = 0.04;  // of the height, above and below
constexpr std::size_t kLongestTitle = 48;

}  // namespace

bool Group::hasVisible() const
{
    return std::any_of(m_variables.begin(), m_variables.end(),
                       [](const auto& v) { return v->variable().visible; });
}

void Group::setLimits(double y1, double y2)
{
    if (!std::isfinite(y1) || !std::isfinite(y2) || y1 == y2)
        return;
    if (m_logarithmic && std::min(y1, y2) <= 0.0)
        return;
    m_y1 = std::min(y1, y2);
    m_y2 = std::max(y1, y2);
}

void Group::setLogarithmic(bool on)
{
    m_logarithmic = on;
    for (const auto& v : m_variables)
        v->setLogarithmic(on && !image);
    if (on && m_y1 <= 0.0) {
        m_y2 = m_y2 > 0.0 ? m_y2 : 1.0;
        m_y1 = m_y2 / 1000.0;
    }
}

double Group::toScale(double y) const
{
    return m_logarithmic ? std::log10(y) : y;
}

double Group::fromScale(double position) const
{
    return m_logarithmic ? std::pow(10.0, position) : position;
}

void Group::widen(Limits& limits, const HsVariable& v, std::uint32_t first, std::uint32_t last) const
{
    if (!v.variable().visible || !v.isBuilt() || first > last)
        return;
    const HsVariable::Range range = v.range(first, last);
    if (range.empty)
        return;
    limits.least = std::min(limits.least, range.least);
    limits.greatest = std::max(limits.greatest, range.greatest);
}

void Group::fitY(const XAxis& axis, double x1, double x2)
{
    if (image) {
        setLimits(image->least(), image->greatest());
        return;
    }
    Limits limits{std::numeric_limits<double>::infinity(), -std::numeric_limits<double>::infinity()};
    for (const auto& v : m_variables)
        if (v->isBuilt())
            widen(limits, *v, axis.rowFrom(v->variable(), x1), axis.rowAt(v->variable(), x2));
    take(limits);
}

void Group::fitY()
{
    if (image) {
        setLimits(image->least(), image->greatest());
        return;
    }
    Limits limits{std::numeric_limits<double>::infinity(), -std::numeric_limits<double>::infinity()};
    for (const auto& v : m_variables)
        widen(limits, *v, v->variable().firstRow(), v->variable().rows());
    take(limits);
}

void Group::take(const Limits& limits)
{
    if (!(limits.least <= limits.greatest) || (m_logarithmic && limits.least <= 0.0))
        return;
    double low = toScale(limits.least);
    double high = toScale(limits.greatest);
    // A constant stands in the middle of an axis that has some height.
    const double least = std::max(std::abs(low), std::abs(high)) * 1e-9;
    const double height = high - low > least ? (high - low) * kMargin
                          : low == 0.0       ? 1.0
                                             : std::abs(low) * 0.1;
    low -= height;
    high += height;
    setLimits(fromScale(low), fromScale(high));
}

std::string Group::axisTitle() const
{
    if (!title.empty())
        return title;
    std::vector<std::string_view> labels;
    std::optional<std::string> unit;
    bool sameUnit = true;
    for (const auto& shown : m_variables) {
        const Variable& v = shown->variable();
        if (!v.visible)
            continue;
        sameUnit = sameUnit && v.unit == unit.value_or(v.unit);
        unit = v.unit;
        if (!v.label.empty() && std::find(labels.begin(), labels.end(), v.label) == labels.end())
            labels.push_back(v.label);
    }
    std::string text;
    for (const std::string_view label : labels)
        text.append(text.empty() ? "" : ", ").append(label);
    std::string tail;
    if (sameUnit && unit && !unit->empty())
        tail.append(" [").append(*unit).append("]");
    // Many names are the legend's business.
    if (text.size() > kLongestTitle)
        text.clear();
    text.append(tail, text.empty() && !tail.empty() ? 1 : 0);
    return text;
}
