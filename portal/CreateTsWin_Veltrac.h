// The dialog that makes a new ts-file: name, size, texts, sample time, and the names of its columns.
//
// Fields are checked as they are typed: what is wrong is marked, OK is disabled and a line says why.
#pragma once

#include <QWidget>

#include <cstdint>

#include "share/SubWindow.h"

class QLabel;
class QLineEdit;
class QPushButton;
class QTableWidget;
class TSFILE;

namespace veltrac {

class NumberField;

}  // namespace veltrac

// One field a value of the new file.
class Basic_Tab : public QWidget
{
    Q_OBJECT

public:
    explicit Basic_Tab(QWidget* parent = nullptr);

    QString fileName() const;  // without ".ts", whether that was typed or not
    std::uint32_t samples() const;
    std::uint32_t columns() const;
    float sampleTime() const;  // in the file's time unit
    QString timeUnit() const;
    QString description() const;

    // Why no file can be made of these fields; empty where one can.
    QString reason() const;
    // The file that will be made and its size, once there is no reason against it.
    QString outcome() const;

signals:
    void x_changed();
    void x_columns_changed(int columns);
    // Enter was pressed in a field.
    void x_entered();

public slots:
    void sl_columnsChanged(const QString& text);

private:
    void addChecks();
    QString nameReason() const;

    QLineEdit* m_name;
    veltrac::NumberField* m_samples;
    veltrac::NumberField* m_columns;
    QLineEdit* m_description;
    QLineEdit* m_timeUnit;
    veltrac::NumberField* m_sampleTime;
};

// A row for each column of the new file, with its name and description.
class Column_Tab : public QWidget
{
    Q_OBJECT

public:
    explicit Column_Tab(int columns, QWidget* parent = nullptr);

    QString name(int column) const;  // columns count from 1
    QString description(int column) const;

public slots:
    // Adds rows with their default texts, or takes rows away.
    void setColumns(int columns);

private:
    void cutToWidth(int row, int column);
    void showDoubtfulNames();

    QTableWidget* m_table;
    QLabel* m_doubt;
};

class CreateTsWin : public veltrac::SubWindow
{
    Q_OBJECT

public:
    explicit CreateTsWin(QWidget* parent = nullptr);

public slots:
    // Makes the file and closes the window; where it cannot be made, or an old one is kept, a line says so.
    void sl_accept();
    void sl_reject();

protected:
    void keyPressEvent(QKeyEvent* event) override;

private:
    void updateState();
    void fillIn(TSFILE& file) const;

    Basic_Tab* m_basics;
    Column_Tab* m_columns;
    QLabel* m_line;
    QPushButton* m_ok = nullptr;
};
