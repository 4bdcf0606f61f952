#include "converters/STLLines.h"

#include <QBrush>
#include <QFontDatabase>
#include <QStringList>

#include <algorithm>
#include <array>

#include "converters/STLTables.h"
#include "converters/STLTitles.h"
#include "converters/TimeStamps.h"
#include "converters/WordedDates.h"
#include "core/LineReader.h"

using namespace veltrac;

namespace {

constexpr std::size_t kMostLines = 1000;
constexpr std::size_t kLongestShown = 2000;

// What a kind of line is called in its tool tip, and its colour; 0 for the view's own.
struct Look
{
    const char* name;
    QRgb colour;
};
constexpr std::array<Look, 9> kLooks = {{{"an empty line", 0},
                                         {"a remark", 0xFFE4E4E4},
                                         {"head, above the data", 0xFFF3EBC8},
                                         {"the names of the columns", 0xFFC5DDF5},
                                         {"the units of the columns", 0xFFCDEBCB},
                                         {"names or a title once more: left out", 0xFFE4E4E4},
                                         {"a row of another table: left out", 0xFFE4E4E4},
                                         {"data", 0},
                                         {"data with troubles", 0}}};

const Look& lookOf(STLLineKind kind)
{
    return kLooks[static_cast<std::size_t>(kind)];
}

int shownLength(std::string_view bytes, STLEncoding encoding)
{
    return static_cast<int>(QString::fromStdString(decoded(bytes, encoding)).size());
}

bool readsAsTime(const STLFormat& format, std::size_t column, std::string_view cell)
{
    cell = bareCell(cell, format.columns[column]);
    const auto isDate = [&](const std::optional<Stamp>& stamp) -> bool {
        return stamp && midnight(stamp->date, format.order).has_value();
    };
    switch (format.timeSource) {
        case STLTimeSource::Stamp:
            return isDate(readStamp(cell));
        case STLTimeSource::DateAndTime:
            return static_cast<int>(column) == format.dateColumn ? isDate(readStamp(cell))
                   : format.timeIsHhmm || clockIsInParts(format) ? readNumber(cell, format.cells).has_value()
                                                                 : readClock(cell).has_value();
        case STLTimeSource::ElapsedTime:
            return readClock(cell).has_value();
        case STLTimeSource::DateParts:
            return readNumber(cell, format.cells) || monthOfName(cell) != 0;
        default:
            return readValue(cell, format.columns[column], format.cells).has_value();
    }
}

}  // namespace

STLLines::STLLines(QObject* parent) : QAbstractTableModel(parent) {}

void STLLines::load(const std::filesystem::path& file)
{
    beginResetModel();
    m_lines.clear();
    LineReader reader(file, kLongestShown);
    while (m_lines.size() < kMostLines && reader.next()) {
        Line line;
        line.bytes = reader.text();
        line.cut = reader.isCut();
        m_lines.push_back(std::move(line));
    }
    endResetModel();
}

void STLLines::explain(const STLFormat* format)
{
    m_hasFormat = format != nullptr;
    m_format = m_hasFormat ? *format : STLFormat();
    std::uint64_t number = 0;
    STLTables tables(m_format);
    for (Line& line : m_lines)
        explainLine(line, ++number, tables);
    if (!m_lines.empty())
        emit dataChanged(index(0, 0), index(rowCount() - 1, 0));
}

void STLLines::explainLine(Line& line, std::uint64_t number, STLTables& tables)
{
    line.text = QString::fromStdString(decoded(line.bytes, m_format.encoding));
    line.text.remove(QLatin1Char('\r'));
    for (QChar& c : line.text)
        if (c < QLatin1Char(' ') && c != QLatin1Char('\t'))
            c = QChar(0xB7);
    line.marks.clear();
    line.toolTip.clear();
    const bool empty = line.bytes.find_first_not_of(" \t\r") == std::string::npos;
    line.kind = empty                             ? STLLineKind::Empty
                : !m_hasFormat                    ? STLLineKind::Data
                : number == m_format.namesLine    ? STLLineKind::Names
                : number == m_format.unitsLine    ? STLLineKind::Units
                : isRemark(line.bytes, m_format)  ? STLLineKind::Remark
                : number < m_format.firstDataLine ? STLLineKind::Head
                                                  : STLLineKind::Data;
    if (line.kind == STLLineKind::Empty || line.kind == STLLineKind::Remark)
        tables.passBreak();
    if (m_hasFormat && line.kind == STLLineKind::Data)
        explainData(line, tables);
    if (line.toolTip.isEmpty() && m_hasFormat)
        line.toolTip =
            QStringLiteral("Line %1: %2").arg(number).arg(QString::fromLatin1(lookOf(line.kind).name));
}

void STLLines::explainData(Line& line, STLTables& tables)
{
    std::vector<std::string_view> cells;
    splitCells(line.bytes, m_format.cells, cells);
    // What lies behind the cut is not known, nor how its last cell ends.
    if (line.cut)
        cells.pop_back();
    QStringList troubles;
    const std::string_view bytes = line.bytes;
    const auto mark = [&](std::string_view cell, bool understood) {
        const auto offset = static_cast<std::size_t>(cell.data() - bytes.data());
        line.marks.append({shownLength(bytes.substr(0, offset), m_format.encoding),
                           shownLength(cell, m_format.encoding), understood});
    };
    const std::size_t columns = m_format.columns.size();
    std::vector<std::string_view> row = cells;
    row.resize(std::max(row.size(), columns));
    if (STLTitles(m_format).has(line.bytes, row)) {
        line.kind = STLLineKind::Title;
        tables.passOwnNames();
        return;
    }
    if (tables.areNames(cells) ? tables.passNames(cells.size()) : tables.isOthers(cells.size())) {
        line.kind = STLLineKind::OtherRow;
        return;
    }
    for (std::size_t c = 0; c < cells.size(); ++c) {
        if (cells[c].empty())
            continue;
        const QString trouble = c < columns ? troubleOf(c, cells[c]) : QString();
        const bool leftOut = c >= columns || (!m_format.columns[c].take && !tellsTime(m_format, c));
        if (!trouble.isEmpty())
            troubles << trouble;
        if (!trouble.isEmpty() || leftOut)
            mark(cells[c], trouble.isEmpty() && c < columns);
    }
    if (cells.size() < columns && !line.cut)
        troubles << QStringLiteral("%1 of %2 cells").arg(cells.size()).arg(columns);
    if (cells.size() > columns + (cells.back().empty() ? 1 : 0))
        troubles << QStringLiteral("%1 cells instead of %2").arg(cells.size()).arg(columns);
    if (troubles.isEmpty())
        return;
    line.kind = STLLineKind::Trouble;
    line.toolTip = troubles.join(QLatin1Char('\n'));
    if (line.marks.isEmpty())
        line.marks.append({0, static_cast<int>(line.text.size()), false});
}

QString STLLines::troubleOf(std::size_t column, std::string_view cell) const
{
    const STLColumn& wanted = m_format.columns[column];
    const QString shown = QString::fromStdString(decoded(cell.substr(0, 40), m_format.encoding));
    if (tellsTime(m_format, column))
        return readsAsTime(m_format, column, cell)
                   ? QString()
                   : QStringLiteral("\"%1\" is no time: the line is skipped").arg(shown);
    if (!wanted.take || wanted.numberTexts || isMissing(cell, m_format.cells) ||
        readValue(cell, wanted, m_format.cells) || (wanted.kind == STLKind::Time && readTime(cell)))
        return QString();
    return QStringLiteral("\"%1\" is no number: it is missing").arg(shown);
}

QString STLLines::firstValues(std::size_t column, int count) const
{
    QStringList values;
    std::vector<std::string_view> cells;
    for (std::size_t i = 0; i < m_lines.size() && values.size() < count; ++i) {
        if (m_lines[i].kind != STLLineKind::Data && m_lines[i].kind != STLLineKind::Trouble)
            continue;
        if (splitCells(m_lines[i].bytes, m_format.cells, cells) > column)
            values << QString::fromStdString(decoded(cells[column], m_format.encoding));
    }
    return values.join(QStringLiteral("  "));
}

int STLLines::rowCount(const QModelIndex& parent) const
{
    return parent.isValid() ? 0 : static_cast<int>(m_lines.size());
}

int STLLines::columnCount(const QModelIndex& parent) const
{
    return parent.isValid() ? 0 : 1;
}

QVariant STLLines::data(const QModelIndex& index, int role) const
{
    if (!index.isValid())
        return QVariant();
    const Line& line = m_lines[static_cast<std::size_t>(index.row())];
    const QRgb colour = lookOf(line.kind).colour;
    switch (role) {
        case Qt::DisplayRole:
            return line.text;
        case Qt::ToolTipRole:
            return line.toolTip;
        case Qt::FontRole:
            return QFontDatabase::systemFont(QFontDatabase::FixedFont);
        case Qt::BackgroundRole:
            return colour == 0 ? QVariant() : QBrush(QColor(colour));
        case Qt::ForegroundRole:
            // The colours are light ones, whatever the theme.
            return colour == 0 ? QVariant() : QBrush(Qt::black);
        case kMarksRole:
            return QVariant::fromValue(line.marks);
        default:
            return QVariant();
    }
}

QVariant STLLines::headerData(int section, Qt::Orientation orientation, int role) const
{
    if (role != Qt::DisplayRole)
        return QVariant();
    return orientation == Qt::Vertical ? QVariant(section + 1) : QVariant(QStringLiteral("The file"));
}
