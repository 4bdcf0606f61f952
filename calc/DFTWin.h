// Ts-FFT: the spectrum of a column of a ts-file, in a scratch file, on a canvas, with its peaks, and saving.
#pragma once

#include <optional>

#include "calc/SpectrumRequest.h"
#include "core/ScratchFile.h"
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
    ~DFTWin() override;

public slots:
    void sl_help();
    void sl_execute() override;
    void sl_saveResults() override;
    void sl_harmonics();

protected:
    bool mayClose() override;

private:
    void createActions();
    void createAxesMenu();
    void showSource();
    bool compute(TSFILE& file, const veltrac::SpectrumRequest& request);
    void showResult(const veltrac::SpectrumRequest& request);
    void applyAxes();
    void dropResult();
    void saveAs(const QString& name);

    veltrac::SpectrumFields* m_fields = nullptr;
    veltrac::PeakTable* m_peaks = nullptr;
    QAction* m_execute = nullptr;
    QAction* m_save = nullptr;
    QAction* m_logFrequency = nullptr;
    QAction* m_logValues = nullptr;

    QString m_shownFile;                            // whose range the fields hold
    std::optional<veltrac::ScratchFile> m_scratch;  // tempDFT.ts, or the next free name
    QString m_sourceName;                           // that was computed
    double m_mean = 0.0;
};
