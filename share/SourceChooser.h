// Two labelled boxes that choose a ts-file of the working directory and one of its columns.
#pragma once

#include <QComboBox>
#include <QWidget>

namespace veltrac {

// The names of the directory's ts-files, in the order of a person: file2 before file10.
QStringList tsFileNames();

// A box of the working directory's ts-files.
class FileCombo : public QComboBox
{
    Q_OBJECT

public:
    explicit FileCombo(QWidget* parent = nullptr);

    // The file's name as the directory shows it, or its path where the working directory is another one by
    // now; empty where none is chosen.
    QString file() const;
    // Chooses a file; one of another directory is added by its absolute path. False where it does not exist.
    bool setFile(const QString& name);
    // Reads the working directory again and keeps the choice, wherever it lies. None is chosen afterwards
    // where it is gone.
    void refresh();

private:
    QString m_directory;  // that was read
};

// A box of the columns of one ts-file: names, or "Column 3" where a name is empty.
class ColumnCombo : public QComboBox
{
    Q_OBJECT

public:
    explicit ColumnCombo(QWidget* parent = nullptr);

    // The column's number from 1; 0 where there is none.
    unsigned column() const { return currentData().toUInt(); }
    void setColumn(unsigned column);
    // Shows the columns of a file and keeps the number, or the name, that was chosen. Time columns can be
    // left out. False where the file cannot be read; the box is empty then, and the choice comes back with
    // the file.
    bool showFile(const QString& file, bool withTime);

private:
    struct Choice
    {
        QString file;
        unsigned column = 0;
        QString name;
    };
    Choice m_lost;  // that of a file which could not be read
};

class SourceChooser : public QWidget
{
    Q_OBJECT

public:
    // `withTime`: whether "Time" and "Time32" can be chosen too.
    explicit SourceChooser(bool withTime, QWidget* parent = nullptr);

    FileCombo* files() const { return m_files; }
    ColumnCombo* columns() const { return m_columns; }
    QString file() const { return m_files->file(); }
    unsigned column() const { return m_columns->column(); }
    // For a window that opens on a file and perhaps a column (0: the first).
    void choose(const QString& file, unsigned column);
    void refresh();

signals:
    // The file or the column has changed, by the user or by choose() and refresh().
    void x_source_changed();

protected:
    // Reads the directory again when the user comes back to the window.
    void changeEvent(QEvent* event) override;

private:
    void showColumns();

    bool m_withTime;
    FileCombo* m_files;
    ColumnCombo* m_columns;
};

}  // namespace veltrac
