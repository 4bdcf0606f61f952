// Ts-Edit: new values of a column from a formula over up to eight columns of ts-files.
#pragma once

#include <memory>
#include <vector>

#include "formula/EditVariable.h"
#include "share/SubWindow.h"

class FormulaParser;
class QComboBox;
class QLabel;
class QLineEdit;
class QTableWidget;

class EditTsWin : public veltrac::SubWindow
{
    Q_OBJECT

public:
    // Begins with one source row, on the given file and column (from 1) where there are such.
    explicit EditTsWin(const QString& file = QString(), unsigned column = 0, QWidget* parent = nullptr);
    ~EditTsWin() override;

public slots:
    void sl_load();
    void sl_saveas();
    void sl_editFileNum();
    void sl_addSource();
    void sl_removeSource();
    void sl_quickPlot();
    void sl_calculate();
    void sl_help();
    void sl_stdfunctions();
    void sl_cbTargetActivated(int index);
    void sl_subwindowGone(subWindow window);

protected:
    void changeEvent(QEvent* event) override;

private:
    struct ActionRow;
    static const std::vector<ActionRow>& actionRows();
    void createActions();
    QWidget* createFormula();
    void createTable();
    void addRow(const QString& file, unsigned column);
    void fillTargets();

    EditVariable* targetRow() const;
    std::shared_ptr<TSFILE> openShared(const QString& file) const;
    void openFile(EditVariable* row);
    void reopenFiles();
    QByteArray formulaBytes() const;
    // A parser on m_buffer with the sources bound.
    std::unique_ptr<FormulaParser> makeParser();
    void checkQuietly();
    bool targetMayChange(const EditVariable& target);
    std::vector<const EditVariable*> usedBy(const EditVariable& target) const;
    bool areThere(const std::vector<const EditVariable*>& rows);
    veltrac::CalculationRange rangeFor(const EditVariable& target, QString& reason) const;
    TSFILE& reopenTarget(const EditVariable& target);
    void tellOutcome(veltrac::JobOutcome outcome, const veltrac::CalculationRange& range,
                     const veltrac::CalculationReport& report, double seconds);
    void run(const EditVariable& target, const veltrac::CalculationRange& range);
    void showMessage(const QString& text);
    void say(const QString& text);

    QComboBox* m_target = nullptr;
    QLineEdit* m_formula = nullptr;
    QTableWidget* m_table = nullptr;
    QLabel* m_status = nullptr;
    std::vector<EditVariable*> m_rows;
    QByteArray m_buffer;  // the formula that the parser reads
    std::unique_ptr<FormulaParser> m_parser;
    QWidget* m_plotWindow = nullptr;  // only compared
};
