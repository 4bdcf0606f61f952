// Ts-Edit: new values of a column from a formula over up to eight columns of ts-files.
#pragma once

#include "formula/ColumnCalculation.h"
#include "share/FileWatch.h"
#include "share/SubWindow.h"

class QAction;
class QComboBox;
class QLabel;
class QLineEdit;

namespace veltrac {

class NoticeStrip;

}  // namespace veltrac

class EditTsWin : public veltrac::SubWindow
{
    Q_OBJECT

public:
    // Begins with one source row, on the given file and column (from 1) where there are such.
    explicit EditTsWin(const QString& file = QString(), unsigned column = 0, QWidget* parent = nullptr);
    ~EditTsWin() override;

    // The first row allows this range alone.
    void offerRange(const veltrac::SampleRange& range) override;

public slots:
    void sl_load();
    void sl_saveas();
    void sl_editFileNum();
    void sl_addSource();
    void sl_removeSource();
    void sl_quickPlot();
    void sl_calculate();
    // Puts the values before the last calculation back; while there are none it does nothing.
    void sl_undo();
    void sl_help();
    void sl_stdfunctions();
    void sl_cbTargetActivated(int index);
    void sl_subwindowGone(subWindow window);

protected:
    void changeEvent(QEvent* event) override;

private:
    void createActions();
    QWidget* createFormula();
    void fillTargets();
    EditVariable* targetRow() const;
    QByteArray formulaBytes() const;
    void checkQuietly();
    void watchFiles(bool asTheyAre);
    void followFiles();
    void showAnswer(const veltrac::ColumnCalculation::Answer& answer);
    void showWarningBox(const QString& text);
    void showStatus(const QString& text);

    QComboBox* m_target = nullptr;
    QLineEdit* m_formula = nullptr;
    QLabel* m_reading = nullptr;                // how the formula is read, while it is typed
    veltrac::NoticeStrip* m_notice = nullptr;   // what the last calculation came to
    veltrac::NoticeStrip* m_changed = nullptr;  // that another program has changed a file
    veltrac::SourceTable* m_sources = nullptr;
    QLabel* m_status = nullptr;
    QAction* m_undo = nullptr;
    veltrac::ColumnCalculation m_calculation;
    QWidget* m_plotWindow = nullptr;  // only compared
    veltrac::FileWatch m_watch;
};
