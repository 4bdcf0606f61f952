// The common window of Ts-Derivative and Ts-Integrate: a column of a ts-file, what is computed of it in a
// scratch file, both on one canvas, and saving into an existing ts-file.
#pragma once

#include <QTemporaryFile>

#include <memory>
#include <optional>

#include "calc/Calculus.h"
#include "share/ResultWindow.h"
#include "share/WaitCursor.h"

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
    JobOutcome (*compute)(TSFILE& work, double dt, const Progress& progress);
};

class CalculusWin : public ResultWindow
{
    Q_OBJECT

public:
    ~CalculusWin() override;

public slots:
    void sl_help();
    void sl_execute() override;
    void sl_saveResults() override;
    void sl_subwindowGone(subWindow window);

protected:
    // Opens on a file and column, where they are given.
    CalculusWin(const CalculusKind& kind, const QString& file, unsigned column, QWidget* parent);

private:
    void createActions();
    bool prepare(const Progress& progress, JobOutcome& outcome);
    bool refuses(TSFILE& file);
    void showResult();
    std::unique_ptr<TSFILE> openTarget(const QString& name);
    void tellResult(double seconds);
    bool saveInto(ColumnTarget target);
    bool mayReplace(const QString& name);
    void describeResult();
    void dropWork();

    const CalculusKind& m_kind;
    // Holds the scratch file's name, so that no other window takes it.
    std::unique_ptr<QTemporaryFile> m_reservation;
    QString m_workName;    // of the scratch file, with its extension; empty before the first calculation
    QString m_sourceName;  // of the file that was computed
    std::unique_ptr<TSFILE> m_work;
    std::optional<WaitCursor> m_cursor;
};

}  // namespace veltrac
