// One source row of Ts-Edit: a file, a column, and the times between which it allows the calculation.
#pragma once

#include <QObject>

#include <memory>
#include <optional>

#include "formula/Calculation.h"

class QLineEdit;
class QTableWidget;
class TSFILE;

namespace veltrac {

class ColumnCombo;
class FileCombo;

}  // namespace veltrac

class EditVariable : public QObject
{
    Q_OBJECT

public:
    // Puts its fields into row `index` - 1 of the table, which owns them.
    EditVariable(int index, QTableWidget* table, QObject* parent);

    int index() const { return m_index; }
    // The chosen file's whole path: it stays the same file when the working directory changes.
    const QString& file() const { return m_path; }
    // Its name without the directory, for texts.
    QString fileName() const;
    unsigned column() const;
    // Chooses a file and, from 1, a column.
    void choose(const QString& file, unsigned column);

    // The open file, shared by all rows that name it; null where it could not be opened.
    const std::shared_ptr<TSFILE>& ts() const { return m_ts; }
    // Hands the file over and shows its times, as far as the user has not edited them.
    void setTs(std::shared_ptr<TSFILE> ts);
    // The fields; valid only where hasBounds().
    veltrac::TimeBounds bounds() const;
    bool hasBounds() const;
    // Lists the files of the working directory anew and keeps the choice.
    void refreshFiles();

public slots:
    void sl_fileComboActivated(int index);
    void sl_colComboActivated(int index);
    void sl_StartTimeChanged(const QString& text);
    void sl_EndTimeChanged(const QString& text);

signals:
    // The file was chosen: the window opens it and calls setTs().
    void x_file_chosen(EditVariable* row);
    // Column or times have changed.
    void x_changed();

private:
    void takeFile();
    void takeTime(QLineEdit* field, const QString& text, bool& isEdited);
    std::optional<double> timeIn(const QLineEdit& field) const;

    int m_index;
    veltrac::FileCombo* m_files;
    veltrac::ColumnCombo* m_columns;
    QLineEdit* m_start;
    QLineEdit* m_end;
    QLineEdit* m_sampleTime;
    QString m_directory;  // whose files the box shows
    QString m_path;
    std::shared_ptr<TSFILE> m_ts;
    bool m_startEdited = false;
    bool m_endEdited = false;
    bool m_showsOwn = false;  // the file's times are being shown: no edit
};
