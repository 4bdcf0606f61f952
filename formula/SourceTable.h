// The source rows of Ts-Edit: up to eight columns of ts-files, x1 to x8 without gaps, and their open files.
#pragma once

#include <QTableWidget>

#include <vector>

#include "formula/EditVariable.h"

class FormulaParser;

namespace veltrac {

class SourceTable : public QTableWidget
{
    Q_OBJECT

public:
    explicit SourceTable(QWidget* parent = nullptr);

    const std::vector<EditVariable*>& sources() const noexcept { return m_sources; }
    // The row of an index from 0; null where there is none.
    EditVariable* source(int index) const;

    // Appends a row on a file, the first of the directory where it is empty, and its column (0: the first).
    void addSource(const QString& file, unsigned column);
    // Removes the last row, where there is one.
    void removeSource();
    // Lists the files of the working directory anew; the rows keep their files.
    void refreshFiles();

    // The open file of that name: a row's, which is shared by all that name it, so that a target read by its
    // own formula is never stale, else opened now. For reading where it cannot be written; null where it
    // cannot be opened.
    std::shared_ptr<TSFILE> openShared(const QString& file) const;
    // Lets go of all files and opens them again: another window may have rebuilt one since.
    void reopenFiles();
    // The same without a word about those that cannot be opened, and the boxes of files and columns anew
    // where they are `closed`.
    void followFiles(bool closed);

    // Gives a parser its target, which may be null, and its sources.
    void bindTo(FormulaParser& parser, const EditVariable* target) const;
    // The rows that a formula uses, and the target's.
    std::vector<const EditVariable*> usedBy(const QByteArray& formula, const EditVariable& target) const;

signals:
    // File, column or times of a row, or the number of rows.
    void x_changed();
    void x_not_opened(const QString& fileName);

private:
    std::shared_ptr<TSFILE> heldOf(const QString& file) const;
    void openFile(EditVariable* row);

    std::vector<EditVariable*> m_sources;
};

}  // namespace veltrac
