// A whole plot: groups from top to bottom over one x axis, what of it is in view, and the two cursors.
//
// Holds no picture and no widget: share/PlotPainter.h draws it, share/PlotCanvas.h lets the user move in it.
// Nothing here reads a whole file: variables are built by buildMissing(), which the window calls with its
// progress before it paints.
#pragma once

#include <array>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "core/Group.h"
#include "core/SampleRange.h"
#include "core/XAxis.h"

enum class PlotGrid { None, Gray, Dotted, Black };

// A text at a place of the x axis.
struct PlotNote
{
    double x = 0.0;
    std::string text;  // UTF-8
};

class Plot2D
{
public:
    std::vector<Group>& groups() noexcept { return m_groups; }
    const std::vector<Group>& groups() const noexcept { return m_groups; }
    // All variables, those that are not visible too.
    Group::Variables variables() const;
    // What a reader calls it: its label, with its file where one of another file that is shown has the same,
    // and with the folders of that where such files have one name.
    std::string nameOf(const HsVariable& variable) const;
    // The first visible variable: the one whose samples cursors snap to; null where there is none.
    std::shared_ptr<HsVariable> reference() const;
    // The variable of a source's column; null where there is none.
    std::shared_ptr<HsVariable> find(const veltrac::PlotSource& source, std::uint32_t column) const;
    // Takes a variable out of its group, and the group where it was the last one.
    void remove(const HsVariable& variable);
    // Puts a variable into another group, or into a new one below the last where there is no group of that
    // number; a group that is left empty goes. The variable may have to be built again.
    void moveToGroup(const std::shared_ptr<HsVariable>& variable, std::size_t group);
    // A hidden variable keeps its place, its looks and what was read of it; one that is shown may have to be
    // built first.
    void setVisible(HsVariable& variable, bool on);
    // Shows this variable alone.
    void showOnly(HsVariable& variable);
    // Fits the limits at once where the mode fits them. Throws the TS exceptions.
    void setYMode(std::size_t group, YMode mode);
    // The limits fit themselves then; variables may have to be built again.
    void setLogarithmicY(std::size_t group, bool on);

    // Builds the pyramids that the visible variables lack, in one pass a file.
    veltrac::JobOutcome buildMissing(const veltrac::Progress& progress);

    // -- The x axis --

    const veltrac::XAxis& axis() const noexcept { return m_axis; }
    // Keeps in view and under the cursors what was there.
    void setMode(veltrac::XMode mode);
    // What x counts in where it counts from a start; the view stays as it is.
    void setTimeUnit(double seconds) noexcept { m_axis.unitSeconds = seconds; }
    // Does nothing where no row has an x above 0.
    void setLogarithmicX(bool on);
    // The start of the first source that has a calendar becomes the origin. After variables came or went.
    void findOrigin();
    std::string xTitle;  // UTF-8

    // -- The view --

    double x1() const noexcept { return m_view.x1; }
    double x2() const noexcept { return m_view.x2; }
    struct Extent
    {
        double x1 = 0.0, x2 = 1.0;
    };
    // Of all visible variables.
    Extent extent() const;

    // Each of them keeps the view within reach of the data and no narrower than samples can be told apart;
    // groups in mode View fit y anew.
    void setX(double x1, double x2);
    void fitAll();
    void fitY();
    // The groups that are not in mode Fixed, after variables came, went or changed.
    void refitY();
    // factor > 1 shows less; `about` keeps its place.
    void zoomX(double factor, double about);
    void zoomY(std::size_t group, double factor, double about);
    // By a fraction of what is in view; positive goes to later x, greater y.
    void pan(double fraction);
    void panY(std::size_t group, double fraction);
    void setY(std::size_t group, double y1, double y2);

    // Puts the present view into the history; call it before a change of the user's. Calls with the same
    // gesture (other than 0) that follow each other count as one.
    void remember(int gesture = 0);
    bool back();
    bool forward();
    bool canGoBack() const noexcept { return !m_past.empty(); }
    bool canGoForward() const noexcept { return !m_future.empty(); }

    // Where x stands between the view's edges, 0 to 1, and back.
    double fractionOf(double x) const;
    double xAtFraction(double fraction) const;

    // -- Cursors --

    enum Cursor { A, B };
    const std::optional<double>& cursor(Cursor which) const { return m_cursors[which]; }
    // Snaps to the nearest sample of the reference variable.
    void setCursor(Cursor which, double x);
    void clearCursor(Cursor which);
    // By a number of samples of the reference variable.
    void moveCursor(Cursor which, std::int64_t samples);
    // The interval that belongs to "A to B, else the view".
    Extent interval() const;
    // The variable's samples in an interval. Throws the TS exceptions.
    veltrac::SampleRange samplesIn(const Extent& interval, const Variable& variable) const;
    // The x of the nearest sample of the reference variable; x itself where there is none.
    double snapped(double x) const;

    // -- Looks --

    PlotGrid grid = PlotGrid::Gray;
    bool legend = true;
    std::string title;  // UTF-8; above the plot
    std::vector<PlotNote> notes;
    // Those of the plot that stood in this one's place, as far as they mean the same here: along an axis of
    // the same title and mode.
    void takeNotes(const Plot2D& before);

private:
    struct YLimits
    {
        double y1, y2;
        YMode mode;
    };
    struct View
    {
        double x1 = 0.0, x2 = 1.0;
        std::vector<YLimits> groups;
    };

    View present() const;
    void show(const View& view);
    void setScale(double from, double to);
    void followY();

    std::vector<Group> m_groups;
    veltrac::XAxis m_axis;
    View m_view;  // its groups are empty: the limits stand in the groups themselves
    std::vector<View> m_past;
    std::vector<View> m_future;
    int m_gesture = 0;
    std::array<std::optional<double>, 2> m_cursors;
};
