// "Single column log": imports text files of one value a line, each of them as a column of one ts-file.
#pragma once

#include <QString>

#include "converters/SCLObject.h"
#include "share/SubWindow.h"

class NumberField;
class QComboBox;
class QLabel;
class QLineEdit;
class QPlainTextEdit;
class QPushButton;
class QSpinBox;
class QTableWidget;
class QWidget;
class ValuePlot;

class SCLWin : public SubWindow
{
    Q_OBJECT

public:
    // Without a file, the window asks for files when it is shown.
    explicit SCLWin(const QString& file = QString(), QWidget* parent = nullptr);

    // Adds a file as the last column; says why where that fails.
    void add(const QString& file);

public slots:
    void sl_add();
    void sl_remove();
    void sl_up();
    void sl_down();
    void sl_import();
    void sl_check();
    void sl_help();

private slots:
    void sl_changed();
    void sl_skip_changed();
    void sl_step_changed();
    void sl_frequency_changed();
    void sl_show_file();

protected:
    void showEvent(QShowEvent* event) override;
    void keyPressEvent(QKeyEvent* event) override;

private:
    QWidget* buildFiles();
    QWidget* buildFields();
    QWidget* buildPreview();
    QWidget* buildButtons();

    void move(int by);
    void showFiles();
    void showFindings();
    void showStep();
    bool fieldsAreGood() const;
    void enableButtons();
    void readFields();
    void checkQuietly();
    void checkLater();
    bool runCheck();
    void write(const QString& target);
    void showReport(const QString& target, double seconds);
    QString summary() const;

    SCLObject m_logs;
    QString m_problem;
    bool m_checked = false;
    bool m_filling = false;
    bool m_asked = false;

    QTableWidget* m_files;
    QPushButton* m_remove;
    QPushButton* m_up;
    QPushButton* m_down;
    QLineEdit* m_start;
    QLabel* m_startReason;
    QLabel* m_targetReason;
    NumberField* m_step;
    NumberField* m_frequency;
    QSpinBox* m_skip;
    QComboBox* m_fill;
    QLineEdit* m_target;
    QLineEdit* m_description;
    QPlainTextEdit* m_lines;
    ValuePlot* m_plot;
    QLabel* m_finding;
    QLabel* m_warning;
    QPushButton* m_import;
    QPushButton* m_check;
};
