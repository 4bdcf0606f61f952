// The results of Ts-FFT that are more than a curve: two channels with their bands, a spectrogram with its
// cuts.
#pragma once

#include <QString>

#include <cstdint>
#include <memory>
#include <string>
#include <vector>

#include "calc/SpectrumPeaks.h"

class HsVariable;
class PlotCanvas;

namespace veltrac {

class CellImage;

// Value, phase and coherence below one another, the first two with the band of their random errors. False
// where the file cannot be read; the canvas tells it then.
bool showTwoChannels(PlotCanvas& canvas, const QString& file, unsigned columns);

// Bands as stairs from edge to edge, with their values as marks that can be read off. False as above.
bool showBands(PlotCanvas& canvas, const QString& file);
// Marks lines of the spectrum that is shown, without changing the view; the marks are what it returns.
std::shared_ptr<HsVariable> markLines(PlotCanvas& canvas, const std::vector<SpectrumPeak>& lines,
                                      const QString& label);

// A picture of time, frequency in steps of `step` Hz, and level.
bool showSpectrogram(PlotCanvas& canvas, const QString& file, double step, const std::string& unit);
// The picture's column whose frequency is nearest to one.
std::uint32_t courseColumn(const CellImage& image, double frequency);
// Beneath the picture the course at the frequency nearest to one.
void showCourse(PlotCanvas& canvas, double frequency);
// The spectrum at the picture's sample nearest to x, on another canvas. False where there is none.
bool showCut(const PlotCanvas& picture, double x, PlotCanvas& canvas);
// The row of the picture that x lies in; 0 where it lies outside.
std::uint32_t pictureRow(const PlotCanvas& picture, double x);

}  // namespace veltrac
