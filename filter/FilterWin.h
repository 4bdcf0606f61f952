// Ts-Filt: a column of a ts-file through a digital filter, looked at beside its input, and saved.
#pragma once

#include <QPointer>
#include <QVector>

#include <memory>

#include "core/Progress.h"
#include "core/ScratchFile.h"
#include "core/TSFILE.h"
#include "filter/FilterTypes.h"
#include "share/ResultWindow.h"

class PlotCanvas;
class QAction;
class SaveResultsDialog;
struct FidFilter;

namespace veltrac {

class FilterFields;
struct FilterOutcome;
struct ResultColumns;

}  // namespace veltrac

class FilterWin : public veltrac::ResultWindow
{
    Q_OBJECT

public:
    // Opens on a file and a column, where they are given.
    explicit FilterWin(const QString& file = QString(), unsigned column = 0, QWidget* parent = nullptr);
    ~FilterWin() override;

public slots:
    void sl_cbFilterActivated(int type);
    void sl_fldFreq0Changed(const QString& text);
    void sl_fldFiltOrderChanged(const QString& text);
    void sl_fldFreq1Changed(const QString& text);
    void sl_fldRippleChanged(const QString& text);
    void sl_help();
    void sl_updateCanvas();
    void sl_execute() override;
    void sl_plotFiltWin();
    void sl_saveResults() override;
    void sl_subwindowGone(subWindow window);

protected:
    bool mayClose() override;

private:
    void createActions();
    void createPanel();
    void connectFields();
    void fieldChanged();
    void showSource();
    void showRate(double samplingHz);
    // The characteristic of what the fields say, small, beneath them.
    void showPreview();
    // Tells where there is none.
    bool requireSource();
    // Says why the fields cannot be, in a box; true where they can.
    bool validate(const veltrac::FilterRequest& asked);
    void tellReports(const QString& text);

    // Opens the source and takes its sample time anew: the header may have been edited since it was chosen.
    std::unique_ptr<TSFILE> openAnew();
    void calculate(const veltrac::FilterRequest& asked, TSFILE& file);
    veltrac::FilterOutcome fillWork(const veltrac::FilterRequest& asked, const FidFilter* filter,
                                    TSFILE& file, double& seconds);
    void showResult(const veltrac::FilterOutcome& outcome, double seconds, bool hasOwnTimes);

    bool save(const SaveResultsDialog& dialog);
    bool saveToFile(const SaveResultsDialog& dialog);
    bool saveToSource(const SaveResultsDialog& dialog);
    bool saveToColumnsOf(const QString& file, const veltrac::ResultColumns& columns);
    bool mayTakeResults(const QString& file);
    bool agreesWith(const QString& file, std::uint32_t& count);
    bool tellSaved(const QString& file, veltrac::JobOutcome outcome, bool isNew = false);
    void dropWork();

    veltrac::FilterFields* m_fields = nullptr;
    PlotCanvas* m_preview = nullptr;
    QAction* m_execute = nullptr;
    QAction* m_plotChar = nullptr;
    double m_samplingHz = 0.0;

    // The work file: column 1 the input, column 2 the output. A new one is made beside it and takes its place
    // when it is whole.
    std::unique_ptr<veltrac::ScratchFile> m_work;
    QString m_sourceFile;  // that the work file was made of, by its absolute path
    QString m_words;       // what was done to it
    QVector<QPointer<QWidget>> m_subWindows;
};
