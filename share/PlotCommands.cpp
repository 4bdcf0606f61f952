#include "share/PlotCommands.h"

#include <QKeyEvent>

namespace veltrac {

namespace {

// As plain numbers: sums of enumerations of two types are deprecated.
constexpr int kShift = Qt::SHIFT;
constexpr int kControl = Qt::CTRL;
constexpr int kAlt = Qt::ALT;

using C = PlotOutput;
using Part = PlotCommand::Part;
const PlotCommand kCommands[] = {
    {"&Fit all", &C::sl_fitAll, Part::View, Qt::Key_F, 0, false},
    {"Fit &y", &C::sl_fitY, Part::View, Qt::Key_Y, 0, false},
    {"Zoom to A–&B", &C::sl_zoomToCursors, Part::View, Qt::Key_Z, 0, true},
    {"Zoom &in", &C::sl_zoomIn, Part::View, Qt::Key_Plus, Qt::Key_Equal, false},
    {"Zoom &out", &C::sl_zoomOut, Part::View, Qt::Key_Minus, 0, false},
    {"Zoom in y", &C::sl_zoomInY, Part::View, kShift | Qt::Key_Plus, kShift | Qt::Key_Asterisk, false},
    {"Zoom out y", &C::sl_zoomOutY, Part::View, kShift | Qt::Key_Minus, kShift | Qt::Key_Underscore, true},
    {"Pan left", &C::sl_panLeft, Part::View, Qt::Key_Left, 0, false},
    {"Pan right", &C::sl_panRight, Part::View, Qt::Key_Right, 0, false},
    {"Page left", &C::sl_pageLeft, Part::View, kControl | Qt::Key_Left, 0, false},
    {"Page right", &C::sl_pageRight, Part::View, kControl | Qt::Key_Right, 0, false},
    {"To the start", &C::sl_toStart, Part::View, Qt::Key_Home, 0, false},
    {"To the end", &C::sl_toEnd, Part::View, Qt::Key_End, 0, true},
    {"&Previous view", &C::sl_previousView, Part::View, Qt::Key_Backspace, kAlt | Qt::Key_Left, false},
    {"&Next view", &C::sl_nextView, Part::View, kAlt | Qt::Key_Right, 0, false},
    {"&Go to…", &C::sl_goTo, Part::View, kControl | Qt::Key_G, 0, false},
    {"Cursor &A to the middle", &C::sl_cursorA, Part::Cursors, Qt::Key_A, 0, false},
    {"Cursor &B to the middle", &C::sl_cursorB, Part::Cursors, Qt::Key_B, 0, false},
    {"To the &greatest in view", &C::sl_toGreatest, Part::Cursors, Qt::Key_M, 0, false},
    {"To the &least in view", &C::sl_toLeast, Part::Cursors, kShift | Qt::Key_M, 0, false},
    {"&Remove the cursors", &C::sl_clearCursors, Part::Cursors, Qt::Key_Escape, 0, false},
    {"&Note at the cursor…", &C::sl_note, Part::Cursors, Qt::Key_N, 0, false},
    {"Copy read-&out", &C::sl_copyReadout, Part::Output, kControl | Qt::Key_C, 0, false},
    {"Copy &picture", &C::sl_copyPicture, Part::Output, kControl | kShift | Qt::Key_C, 0, true},
    {"&Hard copy (EPS)…", &C::sl_hardCopy, Part::Output, kControl | Qt::Key_E, 0, false},
    {"Hard copy &with cursors…", &C::sl_hardCopyWithCursors, Part::Output, 0, 0, false},
    {"Postscript para&meters…", &C::sl_psParameters, Part::Output, 0, 0, false},
    {"&Save picture…", &C::sl_savePicture, Part::Output, 0, 0, false},
    {"P&rint…", &C::sl_print, Part::Output, kControl | Qt::Key_P, 0, false},
};

}  // namespace

std::span<const PlotCommand> plotCommands()
{
    return kCommands;
}

const PlotCommand* plotCommandOf(const QKeyEvent& event)
{
    const int pressed = event.key() | static_cast<int>(event.modifiers() & ~Qt::KeypadModifier);
    for (const PlotCommand& command : plotCommands())
        if (pressed == command.key || (command.otherKey != 0 && pressed == command.otherKey))
            return &command;
    return nullptr;
}

}  // namespace veltrac
