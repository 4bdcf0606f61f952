// Ts-FFT: the spectrum of a column of a ts-file, in a scratch file, on a canvas, with its peaks, and saving.
#pragma once

#include "calc/SpectrumRequest.h"
#include "share/ResultWindow.h"

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
    void sl_harmonics();
    void sl_colorRange();

protected:
    void sourceChanged(TSFILE* file) override;
    void rangeChanged() override;

private:
    void createActions();
    void createAxesMenu();
    // Asks about what the spectrum would have to assume; false where the user gives it up, or there is
    // nothing to compute from.
    bool clearDoubts(TSFILE& file, const QString& name, veltrac::SpectrumRequest& request);
    bool askDoubts(TSFILE& file, const QString& name, veltrac::SpectrumRequest& request);
    void compute(TSFILE& file, const veltrac::SpectrumRequest& request);
    // The same with a second column, and of lags.
    void computeTwoChannels(TSFILE& file, const veltrac::SpectrumRequest& request);
    void computeCorrelation(TSFILE& file, const veltrac::SpectrumRequest& request);
    void computeSpectrogram(TSFILE& file, veltrac::SpectrumRequest request);
    // What belongs to the picture: the spectrum at cursor A, the course at the frequency of the click.
    void showCuts();
    veltrac::CellImage* picture() const;
    std::unique_ptr<TSFILE> openSecond();
    void showResult(const veltrac::SpectrumRequest& request);
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

    double m_dt = 0.0;         // of the source
    bool m_isDecibel = false;  // the result, or a phase beside it
    double m_mean = 0.0;
};
