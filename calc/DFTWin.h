// Ts-FFT: the spectrum of a column of a ts-file, in a scratch file, on a canvas, with its peaks, and saving.
#pragma once

#include <functional>
#include <memory>
#include <optional>
#include <string>

#include "calc/KeptSpectra.h"
#include "calc/SpectrumRequest.h"
#include "share/ResultWindow.h"

class HsVariable;
class QAction;

namespace veltrac {

class CellImage;
class PeakTable;
class SpectrumFields;

}  // namespace veltrac

class DFTWin : public veltrac::ResultWindow
{
    Q_OBJECT

public:
    // Opens on a file and a column, where they are given.
    explicit DFTWin(const QString& file = QString(), unsigned column = 0, QWidget* parent = nullptr);

public slots:
    // In a picture also frequency and level.
    void sl_cursor_moved(int x, int y, int buttons) override;
    void sl_help();
    void sl_execute() override;
    void sl_saveResults() override;
    // Of cursor A, else of the chosen peak; again: the peaks.
    void sl_harmonics();
    // Leaves the spectrum in the plot, under a name, while others are computed.
    void sl_keep();
    void sl_dropKept();
    void sl_colorRange();
    // Of a spectrogram: what stands beneath the fields and beneath the picture, as files.
    void sl_saveSpectrumAt();
    void sl_saveCourse();

protected:
    void sourceChanged(TSFILE* file) override;
    void rangeChanged() override;
    void keyPressEvent(QKeyEvent* event) override;

private:
    void createActions();
    void connectPeaks();
    void createAxesMenu();
    // Asks about what the spectrum would have to assume; false where the user gives it up, or there is
    // nothing to compute from.
    bool clearDoubts(TSFILE& file, const QString& name, veltrac::SpectrumRequest& request);
    void compute(TSFILE& file, const veltrac::SpectrumRequest& request);
    // The same with a second column, and of lags.
    void computeTwoChannels(TSFILE& file, const veltrac::SpectrumRequest& request);
    void computeCorrelation(TSFILE& file, const veltrac::SpectrumRequest& request);
    void computeSpectrogram(TSFILE& file, veltrac::SpectrumRequest request);
    // Writes a file of a part of the picture's.
    using CutJob = std::function<veltrac::JobOutcome(TSFILE& whole, const std::string& file,
                                                     const veltrac::Progress& progress)>;
    void saveCut(const QString& title, const QString& ending, const CutJob& job);
    bool writeNamed(const QString& name,
                    const std::function<veltrac::JobOutcome(const veltrac::Progress&)>& write);
    // What belongs to the picture: the spectrum at cursor A, the course at the horizontal cursor.
    void showCuts();
    veltrac::CellImage* picture() const;
    std::unique_ptr<TSFILE> openSecond();
    void showResult(const veltrac::SpectrumRequest& request, const std::string& description);
    // What stands at the cursors in the table of peaks, and marks of harmonics.
    void showLines();
    void markHarmonics();
    double frequencyAt(const std::optional<double>& cursor) const;
    void tellResult(const QString& what);
    void applyAxes();
    void saveAs(const QString& name);

    veltrac::SpectrumFields* m_fields = nullptr;
    veltrac::PeakTable* m_peaks = nullptr;
    QAction* m_execute = nullptr;
    QAction* m_save = nullptr;
    QAction* m_logFrequency = nullptr;
    QAction* m_logValues = nullptr;
    QAction* m_colorRange = nullptr;
    QAction* m_means = nullptr;
    PlotCanvas* m_cut = nullptr;  // beneath the fields while there is a picture
    QPoint m_mouse;               // where it was last, in the canvas

    double m_dt = 0.0;  // of the source
    struct Shown
    {
        double mean = 0.0;
        double resolution = 1.0;
        bool isDecibel = false;  // it, or a phase beside it
        bool hasParts = false;   // real and imaginary part: neither is as high as a line
    };
    Shown m_shown;               // the result
    bool m_choosesLine = false;  // the table moves cursor A
    std::shared_ptr<HsVariable> m_harmonics;
    veltrac::KeptSpectra m_kept;
};
