// The first lines of a smart tool log as they stand in the file, coloured by what they are taken for.
#pragma once

#include <QAbstractTableModel>
#include <QString>
#include <QVector>

#include <filesystem>
#include <string>
#include <vector>

#include "converters/STLFormat.h"

namespace veltrac {

class STLTables;

enum class STLLineKind { Empty, Remark, Head, Names, Units, Title, OtherRow, Data, Trouble };

class STLLines : public QAbstractTableModel
{
    Q_OBJECT

public:
    // A stretch of a line's text that was not understood, or of a column that is not taken.
    struct Mark
    {
        int from;
        int length;
        bool understood;
    };
    // Data under this role: the marks of a line as a QVector<Mark>.
    static constexpr int kMarksRole = Qt::UserRole;

    explicit STLLines(QObject* parent = nullptr);

    // Reads the first thousand lines. Throws std::system_error.
    void load(const std::filesystem::path& file);
    // Colours them by a format; without one they are just text.
    void explain(const STLFormat* format);
    // The first data lines' texts of a column, for its row in the table of columns.
    QString firstValues(std::size_t column, int count) const;

    int rowCount(const QModelIndex& parent = QModelIndex()) const override;
    int columnCount(const QModelIndex& parent = QModelIndex()) const override;
    QVariant data(const QModelIndex& index, int role) const override;
    QVariant headerData(int section, Qt::Orientation orientation, int role) const override;

private:
    struct Line
    {
        std::string bytes;
        bool cut = false;  // only its beginning is shown
        QString text;
        QString toolTip;
        STLLineKind kind = STLLineKind::Empty;
        QVector<Mark> marks;
    };

    void explainLine(Line& line, std::uint64_t number, STLTables& tables);
    void explainData(Line& line, STLTables& tables);
    QString troubleOf(std::size_t column, std::string_view cell) const;

    std::vector<Line> m_lines;
    STLFormat m_format;
    bool m_hasFormat = false;
};

}  // namespace veltrac

Q_DECLARE_METATYPE(QVector<veltrac::STLLines::Mark>)
