// Ts-FFT: the spectrum of a column of a ts-file, in a scratch file, on a canvas, with its peaks, and saving.
#pragma once

#include "calc/SpectrumRequest.h"
#include "share/ResultWindow.h"

class QAction;

namespace veltrac {

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
    void sl_help();
    void sl_execute() override;
    void sl_saveResults() override;
    void sl_harmonics();

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

    double m_dt = 0.0;         // of the source
    bool m_isDecibel = false;  // the result, or a phase beside it
    double m_mean = 0.0;
};
