// The marker glyphs: strokes on a grid of 5 × 5 points, so that at a size of 4 every stroke lies on whole
// pixels and the glyphs are told apart.

#include <vector>

#include "share/BasicDriver.h"

using namespace veltrac;

namespace {

constexpr int M = MarkerStroke::Move;
constexpr int D = MarkerStroke::Draw;
constexpr int F = MarkerStroke::Fill;
constexpr int E = MarkerStroke::End;

// clang-format off
constexpr MarkerStroke kStrokes[] = {
    {E, 0, 0},                                                                          // 0: none
    {M, -2, 0}, {D, 2, 0}, {M, 0, -2}, {D, 0, 2}, {E, 0, 0},                            // 1: plus
    {M, -2, -2}, {D, 2, 2}, {M, -2, 2}, {D, 2, -2}, {E, 0, 0},                          // 2: cross
    {M, -1, -2}, {D, 1, -2}, {D, 2, -1}, {D, 2, 1}, {D, 1, 2}, {D, -1, 2}, {D, -2, 1},  // 3: circle
    {D, -2, -1}, {D, -1, -2}, {E, 0, 0},
    {M, -2, -2}, {D, 2, -2}, {D, 2, 2}, {D, -2, 2}, {F, 0, 0}, {E, 0, 0},               // 4: full square
    {M, 0, -2}, {D, 2, 0}, {D, 0, 2}, {D, -2, 0}, {D, 0, -2}, {E, 0, 0},                // 5: diamond
    {M, -2, -2}, {D, 2, -2}, {D, 0, 2}, {F, 0, 0}, {E, 0, 0},                           // 6: full triangle up
    {M, -2, -2}, {D, 2, -2}, {D, 2, 2}, {D, -2, 2}, {D, -2, -2}, {E, 0, 0},             // 7: square
    {M, 0, -2}, {D, 2, 0}, {D, 0, 2}, {D, -2, 0}, {F, 0, 0}, {E, 0, 0},                 // 8: full diamond
    {M, -2, 0}, {D, 2, 0}, {M, 0, -2}, {D, 0, 2}, {M, -2, -2}, {D, 2, 2}, {M, -2, 2},   // 9: star
    {D, 2, -2}, {E, 0, 0},
    {M, -2, -2}, {D, 2, -2}, {M, -2, 2}, {D, 2, 2}, {M, 0, -2}, {D, 0, 2}, {E, 0, 0},   // 10: I
    {M, -2, 2}, {D, 2, 2}, {D, 0, -2}, {F, 0, 0}, {E, 0, 0},                            // 11: full triangle down
    {M, -2, -2}, {D, 2, -2}, {D, -2, 2}, {D, 2, 2}, {F, 0, 0}, {E, 0, 0},               // 12: hourglass
    {M, -2, 2}, {D, 0, -2}, {D, 2, 2}, {E, 0, 0},                                       // 13: V
    {M, -2, 2}, {D, 2, 2}, {M, 0, 2}, {D, 0, -2}, {E, 0, 0},                            // 14: T
};
// clang-format on

std::vector<const MarkerStroke*> glyphIndex()
{
    std::vector<const MarkerStroke*> index;
    const MarkerStroke* begin = kStrokes;
    for (const MarkerStroke& stroke : kStrokes) {
        if (stroke.code == MarkerStroke::End) {
            index.push_back(begin);
            begin = &stroke + 1;
        }
    }
    return index;
}

}  // namespace

const MarkerStroke* BasicDriver::MarkerStrokes(int marker)
{
    static const std::vector<const MarkerStroke*> index = glyphIndex();
    return marker < 1 ? index[0] : index[static_cast<std::size_t>((marker - 1) % kMarkerCount) + 1];
}
