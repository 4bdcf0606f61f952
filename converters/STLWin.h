// "Smart tool log": imports a text file of measurements as a ts-file. Everything is found out when the file
// is opened, so that Enter imports it; every finding can be changed.
#pragma once

#include <QString>

#include <memory>
#include <vector>

#include "converters/ImportWindow.h"
#include "converters/STLObject.h"

class QComboBox;
class QLabel;
class QLineEdit;
class QPushButton;
class QSpinBox;
class QTableView;
class QTableWidget;
class QWidget;

namespace veltrac {

class NumberField;
class STLLines;

}  // namespace veltrac

class STLWin : public veltrac::ImportWindow
{
    Q_OBJECT

public:
    // Without a file, the window asks for one when it is shown.
    explicit STLWin(const QString& file = QString(), QWidget* parent = nullptr);
    ~STLWin() override;

    // Looks at a file and shows what was found.
    void open(const QString& file);

public slots:
    void sl_open();

private slots:
    void sl_reading_changed();
    void sl_other_reading();
    void sl_names_changed();
    void sl_changed();

protected:
    bool hasFiles() const override { return m_log != nullptr; }
    void chooseFiles() override { sl_open(); }
    std::uint64_t fileBytes() const override;
    bool isRead() const override { return m_log->isRead(); }
    QString readingText() const override;
    veltrac::JobOutcome check(const veltrac::Progress& progress) override;
    QString doubt() const override;
    veltrac::JobOutcome makeFile(const std::filesystem::path& target,
                                 const veltrac::Progress& progress) override;
    Report report() const override;
    void showFindings() override;
    void resizeEvent(QResizeEvent* event) override;

private:
    QWidget* buildTextFields();
    QWidget* buildTimeFields();
    QWidget* buildResultFields();

    void detectAgain(char separator, char decimal);
    void showFormat();
    void showColumns();
    void widenPreview();
    void readFields();
    void readColumns();
    bool checkFields();
    void enableFields();
    void enableColumn(QComboBox* box, bool used);
    void showOrder();
    QString summary() const;

    std::unique_ptr<STLObject> m_log;

    veltrac::STLLines* m_lines;
    QTableView* m_preview;
    QTableWidget* m_columns;

    QLabel* m_fileLabel;
    QComboBox* m_encoding;
    QComboBox* m_separator;
    QComboBox* m_decimal;
    QComboBox* m_grouping;
    QSpinBox* m_firstData;
    QSpinBox* m_namesLine;
    QSpinBox* m_unitsLine;
    QLineEdit* m_remarks;
    QLineEdit* m_missing;
    QPushButton* m_other;

    QComboBox* m_source;
    QComboBox* m_dateColumn;
    QComboBox* m_timeColumn;
    QComboBox* m_order;
    QComboBox* m_zone;
    QLineEdit* m_start;
    veltrac::NumberField* m_step;
    QComboBox* m_becomes;
    QLineEdit* m_resampleStep;
    QLabel* m_orderReason;
    QLabel* m_startReason;
    QLabel* m_resampleReason;
    QLabel* m_timeFinding;

    QLineEdit* m_description;
    veltrac::NumberField* m_fromRow;
    veltrac::NumberField* m_toRow;
    veltrac::NumberField* m_everyNth;
    QComboBox* m_fill;
    QLabel* m_targetReason;
    QLabel* m_size;
    QLabel* m_head;
};
