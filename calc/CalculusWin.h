// The common window of Ts-Derivative and Ts-Integrate: a column of a ts-file, what is computed of it in a
// scratch file, both on one canvas, and saving into an existing ts-file.
#pragma once

#include <memory>

#include "calc/Calculus.h"
#include "share/ResultWindow.h"

class QCheckBox;

namespace veltrac {

// What tells the two windows apart.
struct CalculusKind
{
    const char* title;
    const char* icon;
    const char* greeting;
    const char* resultName;
    const char* resultText;  // its description: %1 is the source column
    const char* resultUnit;  // %1 is the source's unit, %2 that of the times
    const char* executeTip;
    const char* saveImage;
    const char* doneText;
    const char* helpTitle;
    const char* helpName;
    const char* missingNote;  // what missing values lead to; may be empty
    bool hasSelections;       // a menu that chooses file and column
    JobOutcome (*compute)(const SourceColumn& source, TSFILE& work, Steps steps, const Progress& progress);
};

class CalculusWin : public ResultWindow
{
    Q_OBJECT

public slots:
    void sl_help();
    void sl_execute() override;
    void sl_saveResults() override;
    void sl_subwindowGone(subWindow window);

protected:
    // Opens on a file and column, where they are given.
    CalculusWin(const CalculusKind& kind, const QString& file, unsigned column, QWidget* parent);

    void sourceChanged(TSFILE* file) override;
    void rangeChanged() override;

private:
    void createActions();
    // Why the source cannot be computed; empty where it can.
    QString refusalOf(const SourceColumn& source) const;
    void showResult(const QString& remark);
    std::unique_ptr<TSFILE> openTarget(const QString& name);
    bool saveInto(ColumnTarget target);
    bool mayReplace(const QString& name);

    const CalculusKind& m_kind;
    QAction* m_execute = nullptr;
    QCheckBox* m_ownTimes;
};

}  // namespace veltrac
