// "Single column log": imports text files of one value a line, each of them as a column of one ts-file.
#pragma once

#include <QString>

#include "converters/ImportWindow.h"
#include "converters/SCLObject.h"

class QComboBox;
class QLabel;
class QLineEdit;
class QPlainTextEdit;
class QPushButton;
class QSpinBox;
class QTableWidget;
class QWidget;

namespace veltrac {

class NumberField;
class ValuePlot;

}  // namespace veltrac

class SCLWin : public veltrac::ImportWindow
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

private slots:
    void sl_changed();
    void sl_skip_changed();
    void sl_step_changed();
    void sl_frequency_changed();
    void sl_show_file();

protected:
    bool hasFiles() const override { return !m_logs.sources.empty(); }
    void chooseFiles() override { sl_add(); }
    std::uint64_t fileBytes() const override;
    bool isRead() const override { return m_logs.isRead(); }
    QString readingText() const override;
    veltrac::JobOutcome check(const veltrac::Progress& progress) override;
    QString doubt() const override;
    veltrac::JobOutcome makeFile(const std::filesystem::path& target,
                                 const veltrac::Progress& progress) override;
    Report report() const override;
    void showFindings() override;

private:
    QWidget* buildFiles();
    QWidget* buildFields();
    QWidget* buildPreview();

    void move(int by);
    void showFiles();
    void showStart();
    void showStep();
    bool fieldsAreGood() const;
    void enableButtons();
    void readFields();
    QString summary() const;

    SCLObject m_logs;

    QTableWidget* m_files;
    QPushButton* m_remove;
    QPushButton* m_up;
    QPushButton* m_down;
    QLineEdit* m_start;
    QLabel* m_startReason;
    QLabel* m_targetReason;
    veltrac::NumberField* m_step;
    veltrac::NumberField* m_frequency;
    QSpinBox* m_skip;
    QComboBox* m_fill;
    QLineEdit* m_description;
    QPlainTextEdit* m_lines;
    veltrac::ValuePlot* m_plot;
    QLabel* m_plotCaption;
};
