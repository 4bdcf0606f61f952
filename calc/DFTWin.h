// Ts-FFT: the spectrum of a column of a ts-file, in a scratch file, on a canvas, with its peaks, and saving.
#pragma once

#include <filesystem>
#include <memory>
#include <optional>
#include <vector>

#include "calc/SpectrumPeaks.h"
#include "core/ScratchFile.h"
#include "share/SubWindow.h"

class NumberField;
class PlotCanvas;
class QCheckBox;
class QComboBox;
class QFormLayout;
class QLabel;
class QTableWidget;
class SourceChooser;

class DFTWin : public SubWindow
{
    Q_OBJECT

public:
    explicit DFTWin(const QString& file = QString(), unsigned column = 0, QWidget* parent = nullptr);
    ~DFTWin() override;

public slots:
    void sl_help();
    void sl_execute();
    void sl_saveResults();
    void sl_harmonics();
    void sl_cursor_moved(int x, int y, int buttons);
    void sl_plot();

protected:
    bool mayClose() override;

private:
    QWidget* createPanel();
    void createFields(QFormLayout& form);
    void createActions();
    void createPeaks();
    void sourceChanged();
    void fieldsChanged();
    // The first thing that is wrong with the fields; empty where they can be executed.
    QString reason() const;
    SpectrumRequest request() const;
    QString planText() const;

    // What has to be asked before the computing; false gives it up.
    bool clearDoubts(TSFILE& source, SpectrumRequest& wanted);
    bool askAboutMissing(TSFILE& source, SpectrumRequest& wanted);
    bool askAboutSteps(TSFILE& source, SpectrumRequest& wanted);
    bool askAboutMemory(SpectrumRequest& wanted);
    bool askToGoOn(const QString& text, const QString& yes);
    bool compute(TSFILE& source, const SpectrumRequest& wanted);
    std::unique_ptr<TSFILE> createTarget(TSFILE& source, const SpectrumRequest& wanted);
    void showResult();
    void showPeaks(const std::vector<SpectrumPeak>& peaks, const QString& title);
    void dropResult();
    bool saveAs(const QString& name);

    SourceChooser* m_source = nullptr;
    NumberField* m_from = nullptr;
    NumberField* m_to = nullptr;
    QComboBox* m_trend = nullptr;
    QComboBox* m_window = nullptr;
    QComboBox* m_method = nullptr;
    QComboBox* m_segment = nullptr;
    QComboBox* m_overlap = nullptr;
    QComboBox* m_length = nullptr;
    QComboBox* m_result = nullptr;
    QCheckBox* m_decibel = nullptr;
    QLabel* m_plan = nullptr;
    QLabel* m_readout = nullptr;
    QLabel* m_peaksTitle = nullptr;
    QTableWidget* m_peakTable = nullptr;
    PlotCanvas* m_canvas = nullptr;
    QAction* m_execute = nullptr;
    QAction* m_save = nullptr;

    // Of the chosen file.
    std::uint32_t m_samples = 0;
    double m_dt = 0.0;

    std::optional<ScratchFile> m_scratch;  // tempDFT.ts, or the next free name
    SpectrumRequest m_computedRequest;
    QString m_sourceName;  // that was computed
    double m_mean = 0.0;
    std::vector<SpectrumPeak> m_peaks;
    bool m_showsHarmonics = false;
    bool m_computed = false;
    bool m_saved = false;
};
