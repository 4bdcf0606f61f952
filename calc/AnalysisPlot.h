// The results of Ts-FFT that are more than a curve: two channels with their bands, a spectrogram with its
// cuts.
#pragma once

#include <QString>

#include <cstdint>
#include <string>

class PlotCanvas;

namespace veltrac {

// Value, phase and coherence below one another, the first two with the band of their random errors. False
// where the file cannot be read; the canvas tells it then.
bool showTwoChannels(PlotCanvas& canvas, const QString& file, unsigned columns);

// A picture of time, frequency in steps of `step` Hz, and level.
bool showSpectrogram(PlotCanvas& canvas, const QString& file, double step, const std::string& unit);
// Beneath the picture the course at the frequency nearest to one.
void showCourse(PlotCanvas& canvas, double frequency);
// The spectrum at the picture's sample nearest to x, on another canvas. False where there is none.
bool showCut(const PlotCanvas& picture, double x, PlotCanvas& canvas);
// The row of the picture that x lies in; 0 where it lies outside.
std::uint32_t pictureRow(const PlotCanvas& picture, double x);

}  // namespace veltrac
