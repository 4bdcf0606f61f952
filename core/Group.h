// Variables that share one y axis.
#pragma once

#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "core/CellImage.h"
#include "core/HsVariable.h"
#include "core/XAxis.h"
#include "core/XyPath.h"

// Whole: the limits of the whole series, so that panning keeps the scale. View: those of what is in view,
// found anew with each view. Fixed: as they were set.
enum class YMode { Whole, View, Fixed };

class Group
{
public:
    using Variables = std::vector<std::shared_ptr<HsVariable>>;

    std::string title;   // UTF-8; empty: the labels of the variables
    double share = 1.0;  // of the plot's height, relative to the other groups
    YMode mode = YMode::Whole;
    // Drawn instead of the first variable, a mark whose rows are the picture's samples: y is the picture's
    // own axis.
    std::shared_ptr<veltrac::CellImage> image;
    // A horizontal cursor at a place of the y axis.
    std::optional<double> level;
    // Drawn instead of the first variable, a mark that reaches as far as the path; x is the x axis.
    std::shared_ptr<veltrac::XyPath> path;

    Variables& variables() noexcept { return m_variables; }
    const Variables& variables() const noexcept { return m_variables; }
    bool hasVisible() const;

    double y1() const noexcept { return m_y1; }
    double y2() const noexcept { return m_y2; }
    // Limits that are no numbers, are equal or, on a logarithmic axis, not above 0 change nothing. Lower and
    // upper are put in order. The mode is left alone.
    void setLimits(double y1, double y2);

    // Variables have to be built again where they hold values that are not above 0.
    void setLogarithmic(bool on);
    bool isLogarithmic() const noexcept { return m_logarithmic; }
    // Distances along the axis: log10 on a logarithmic one.
    double toScale(double y) const;
    double fromScale(double position) const;

    // Sets the limits so that the visible variables' samples from x1 to x2 fit, with a margin; of variables
    // that are not built nothing counts. Throws the TS exceptions.
    void fitY(const veltrac::XAxis& axis, double x1, double x2);
    void fitY();

    // The title, or the visible variables' labels, each once, with their unit where all have the same.
    std::string axisTitle() const;

private:
    struct Limits
    {
        double least, greatest;
    };
    void widen(Limits& limits, const HsVariable& v, std::uint32_t first, std::uint32_t last) const;
    void take(const Limits& limits);

    Variables m_variables;
    double m_y1 = 0.0;
    double m_y2 = 1.0;
    bool m_logarithmic = false;
};
