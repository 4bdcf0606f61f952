// The item model that serves a ts-file's values to the table: row r is sample r + 1, column c is column c
// + 1.
//
// It keeps no copy of the values, whatever the file's length. With makeEditable() it shows the file as it is
// edited and takes new values. Cells that cannot be read show as unreadable; nothing is thrown.
#pragma once

#include <QAbstractTableModel>

#include <cstdint>
#include <filesystem>
#include <memory>
#include <optional>

#include "core/ColumnScan.h"
#include "core/FileIdentity.h"
#include "core/FileTime.h"
#include "portal/EditedFile.h"

class TSFILE;

class TsTableModel : public QAbstractTableModel
{
    Q_OBJECT

public:
    // A header may claim any number of columns; a table shows at most this many.
    static constexpr int kMostColumns = 100000;

    // Takes the file over.
    explicit TsTableModel(TSFILE* file, QObject* parent = nullptr);
    ~TsTableModel() override;

    TSFILE& file() const { return *m_file; }
    // Puts a file in the place of the one that is listed; takes it over. Not while it is edited.
    void setFile(TSFILE* file);

    // Looks what another program has written: false where nothing is new. Throws the TS exceptions; the table
    // stays as it is then.
    bool takeNewRows();
    // Whether the file still has as many samples and columns as the table.
    bool isAsTheFile() const;
    // Which file it is, whatever bears its name now.
    veltrac::FileIdentity identity() const noexcept;
    // The row of the newest sample, from 1; 0 where there is none.
    std::uint32_t newestRow() const { return m_time->rows() == 0 ? 0 : m_time->rowOf(m_time->lastSample()); }

    // Saves go to the file of that path, the one that is listed.
    void makeEditable(const std::filesystem::path& path);
    // Null while the file is only listed.
    veltrac::EditedFile* editedFile() const { return m_edited.get(); }

    // The name, and whether it holds the integer seconds of "Time": their bits are no number of a user's.
    QString columnName(int column) const;
    bool isIntegerColumn(int column) const;

    // In a ring file row and sample differ, and rows that nobody has written yet are empty.
    std::uint32_t sampleInRow(int row) const { return m_time->sampleIn(static_cast<std::uint32_t>(row) + 1); }
    bool isWritten(int row) const { return m_time->isWritten(static_cast<std::uint32_t>(row) + 1); }
    std::uint32_t emptyRows() const { return m_samples - m_time->rows(); }
    // The rows that are not empty, counted from 1 in the order of their samples where some are empty, else as
    // they stand: how many, the row that such a number stands for, and their values.
    std::uint32_t writtenRows() const { return m_time->rows(); }
    std::uint32_t writtenRow(std::uint32_t number) const;
    veltrac::ColumnReader writtenReader(int column) const;

    // The values as they are shown. Throws the TS exceptions.
    veltrac::ColumnReader columnReader(int column) const;
    std::optional<float> value(int row, int column) const;

    // The shortest text that gives the very number back; "nan" for a missing value.
    QString exactCellText(int row, int column) const;

    // After an edit, an undo, a redo or a save: the cells are painted anew.
    void showChanges();

    // As the file was opened, whatever becomes of it: a table may not find out in between.
    int rowCount(const QModelIndex& parent = QModelIndex()) const noexcept override
    {
        return parent.isValid() ? 0 : m_rows;
    }
    int columnCount(const QModelIndex& parent = QModelIndex()) const noexcept override
    {
        return parent.isValid() ? 0 : m_columns;
    }
    QVariant data(const QModelIndex& index, int role = Qt::DisplayRole) const override;
    QVariant headerData(int section, Qt::Orientation orientation, int role = Qt::DisplayRole) const override;
    Qt::ItemFlags flags(const QModelIndex& index) const override;
    // Takes a text or a number as one edit "Set value"; false where it is none or the cell is not editable.
    bool setData(const QModelIndex& index, const QVariant& value, int role = Qt::EditRole) override;

signals:
    // The list of edits has changed.
    void x_edited();

private:
    void takeFile(TSFILE* file);
    QString cellText(int row, int column) const;
    QVariant editingData(const QModelIndex& index, int role) const;

    std::unique_ptr<TSFILE> m_file;
    std::optional<veltrac::FileTime> m_time;  // never empty
    std::uint32_t m_samples = 0;
    int m_rows = 0;
    int m_columns = 0;
    std::unique_ptr<veltrac::EditedFile> m_edited;
};
