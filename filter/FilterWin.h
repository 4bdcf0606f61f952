// Ts-Filt: a column of a ts-file through a digital filter, looked at beside its input, and saved.
#pragma once

#include <QPointer>
#include <QVector>

#include "filter/FilterTypes.h"
#include "share/ResultWindow.h"

class PlotCanvas;
class QAction;

namespace veltrac {

class FilterFields;
struct FilterOutcome;

}  // namespace veltrac

class FilterWin : public veltrac::ResultWindow
{
    Q_OBJECT

public:
    // Opens on a file and a column, where they are given.
    explicit FilterWin(const QString& file = QString(), unsigned column = 0, QWidget* parent = nullptr);

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
    void sourceChanged(TSFILE* file) override;
    void rangeChanged() override;

private:
    void createActions();
    void createPanel();
    void connectFields();
    void setField(veltrac::FilterField use, const QString& text);
    void fieldChanged();
    void showRate(double samplingHz);
    // The characteristic of what the fields say, small, beneath them.
    void showPreview();
    // Says why the fields cannot be, in a box; true where they can.
    bool validate(const veltrac::FilterRequest& asked);
    void warnOfReports(const QString& text);

    // Opens the source and takes its sample time anew: the header may have been edited since it was chosen.
    std::unique_ptr<TSFILE> openAnew();
    void showResult(const veltrac::FilterOutcome& outcome, bool hasOwnTimes);

    veltrac::FilterFields* m_fields = nullptr;
    PlotCanvas* m_preview = nullptr;
    QAction* m_execute = nullptr;
    QAction* m_plotChar = nullptr;
    double m_samplingHz = 0.0;
    QString m_words;  // what was done to the source of the result
    QVector<QPointer<QWidget>> m_subWindows;
};
