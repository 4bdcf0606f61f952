// The common window of Ts-Derivative and Ts-Integrate: a column of a ts-file, what is computed of it in a
// scratch file, both on one canvas, and saving into an existing ts-file.
#pragma once

#include <QTemporaryFile>

#include <memory>

#include "calc/Calculus.h"
#include "share/SubWindow.h"

class PlotCanvas;
class QLabel;
class SourceChooser;

// What tells the two windows apart.
struct CalculusKind
{
    const char* title;
    const char* icon;
    const char* greeting;
    const char* resultName;
    const char* executeTip;
    const char* saveImage;
    const char* doneText;
    const char* helpTitle;
    const char* helpName;
    bool hasSelections;  // a menu that chooses file and column
    JobOutcome (*compute)(TSFILE& work, double dt, const Progress& progress);
};

class CalculusWin : public SubWindow
{
    Q_OBJECT

public:
    ~CalculusWin() override;

public slots:
    void sl_cbSourceFileActivated(int index);
    void sl_cbSourceColActivated(int index);
    void sl_help();
    void sl_execute();
    void sl_saveResults();
    void sl_cursor_moved(int x, int y, int buttons);
    void sl_plot();
    void sl_subwindowGone(subWindow window);

protected:
    // Opens on a file and column, where they are given.
    CalculusWin(const CalculusKind& kind, const QString& file, unsigned column, QWidget* parent);
    bool mayClose() override;

private:
    void createActions();
    QWidget* createPanel();
    bool prepare(const Progress& progress, JobOutcome& outcome);
    bool refuses(TSFILE& source);
    bool requireColumn(const char* axis, unsigned column);
    void showResult();
    bool saveInto(TSFILE& target);
    bool mayReplace(const QString& name);
    void dropWork();
    QString title() const;

    const CalculusKind& m_kind;
    SourceChooser* m_source = nullptr;
    PlotCanvas* m_canvas = nullptr;
    QLabel* m_readout = nullptr;
    // Holds the scratch file's name, so that no other window takes it.
    std::unique_ptr<QTemporaryFile> m_reservation;
    QString m_workName;    // of the scratch file, with its extension; empty before the first calculation
    QString m_sourceName;  // of the file that was computed
    std::unique_ptr<TSFILE> m_work;
    QString m_resultName;
    bool m_computed = false;
    bool m_saved = false;
};
