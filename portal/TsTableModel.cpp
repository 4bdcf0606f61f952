#include "portal/TsTableModel.h"

#include <QColor>

#include <algorithm>
#include <bit>
#include <charconv>
#include <cmath>
#include <limits>

#include "share/HeaderText.h"
#include "share/NumberField.h"

using namespace veltrac;

namespace {

// What the core throws when a file is not what its header claims; a cell shows it as this.
QString unreadableText()
{
    return QStringLiteral("unreadable");
}

// An amber over either background.
const QColor kChangedTint(255, 176, 32, 96);

QString exactText(float value)
{
    if (std::isnan(value))
        return QStringLiteral("nan");
    char text[32];
    const auto [end, error] = std::to_chars(std::begin(text), std::end(text), value);
    return QString::fromLatin1(text, static_cast<int>(end - text));
}

}  // namespace

std::optional<float> veltrac::cellNumber(const QString& text)
{
    const QString trimmed = text.trimmed();
    if (trimmed.isEmpty() || trimmed.compare(QLatin1String("nan"), Qt::CaseInsensitive) == 0)
        return std::numeric_limits<float>::quiet_NaN();
    const std::optional<double> number = numberOf(trimmed);
    if (!number || std::abs(*number) > static_cast<double>(std::numeric_limits<float>::max()))
        return std::nullopt;
    return static_cast<float>(*number);
}

TsTableModel::TsTableModel(TSFILE* file, QObject* parent) : QAbstractTableModel(parent)
{
    takeFile(file);
}

void TsTableModel::setFile(TSFILE* file)
{
    beginResetModel();
    takeFile(file);
    endResetModel();
}

void TsTableModel::takeFile(TSFILE* file)
{
    constexpr std::uint32_t kMostRows = std::numeric_limits<int>::max() - 1;
    m_file.reset(file);
    m_rows = static_cast<int>(std::min(file->samples(), kMostRows));
    m_columns = static_cast<int>(std::min<std::uint32_t>(file->columns(), kMostColumns));
}

void TsTableModel::makeEditable(const std::filesystem::path& path)
{
    m_edited = std::make_unique<EditedFile>(*m_file, path);
}

QString TsTableModel::columnName(int column) const
{
    try {
        return headerText(m_file->columnName(static_cast<std::uint32_t>(column + 1)));
    } catch (...) {
        return unreadableText();
    }
}

bool TsTableModel::isIntegerColumn(int column) const
{
    return m_file->timeColumn() != 0 && m_file->time32Column() == static_cast<std::uint32_t>(column + 1);
}

ColumnReader TsTableModel::columnReader(int column) const
{
    const auto number = static_cast<std::uint32_t>(column + 1);
    return m_edited ? m_edited->columnReader(number) : veltrac::columnReader(*m_file, number);
}

std::optional<float> TsTableModel::value(int row, int column) const
{
    const auto sample = static_cast<std::uint32_t>(row) + 1;
    try {
        if (!m_edited)
            return m_file->value(sample, static_cast<std::uint32_t>(column + 1));
        float v = 0.0F;
        m_edited->read(static_cast<std::uint32_t>(column + 1), sample, {&v, 1});
        return v;
    } catch (...) {
        return std::nullopt;
    }
}

void TsTableModel::showChanges()
{
    if (rowCount() > 0 && columnCount() > 0)
        emit dataChanged(index(0, 0), index(rowCount() - 1, columnCount() - 1));
    emit x_edited();
}

QString TsTableModel::cellText(int row, int column) const
{
    const std::optional<float> v = value(row, column);
    if (!v)
        return unreadableText();
    if (isIntegerColumn(column))
        return QString::number(std::bit_cast<std::uint32_t>(*v)) + QStringLiteral(".0000");
    return QString::number(static_cast<double>(*v), 'f', 4);
}

QString TsTableModel::exactCellText(int row, int column) const
{
    const std::optional<float> v = value(row, column);
    if (!v)
        return unreadableText();
    return isIntegerColumn(column) ? QString::number(std::bit_cast<std::uint32_t>(*v)) : exactText(*v);
}

QVariant TsTableModel::editingData(const QModelIndex& index, int role) const
{
    if (role == Qt::EditRole) {
        const std::optional<float> v = value(index.row(), index.column());
        return v ? QString::number(static_cast<double>(*v), 'g', 9) : QString();
    }
    if (role == Qt::BackgroundRole &&
        m_edited->edits().isUnsaved(static_cast<std::uint32_t>(index.row()) + 1,
                                    static_cast<std::uint32_t>(index.column()) + 1))
        return kChangedTint;
    return QVariant();
}

QVariant TsTableModel::data(const QModelIndex& index, int role) const
{
    if (!index.isValid())
        return QVariant();
    if (role == Qt::DisplayRole)
        return cellText(index.row(), index.column());
    if (role == Qt::TextAlignmentRole)
        return static_cast<int>(Qt::AlignHCenter | Qt::AlignVCenter);
    return m_edited ? editingData(index, role) : QVariant();
}

QVariant TsTableModel::headerData(int section, Qt::Orientation orientation, int role) const
{
    if (role != Qt::DisplayRole)
        return QVariant();
    if (orientation == Qt::Vertical)
        return section + 1;
    try {
        const auto column = static_cast<std::uint32_t>(section + 1);
        // The core's texts share a buffer: one is copied before the other is asked for.
        const QString name = headerText(m_file->columnName(column));
        const QString description = headerText(m_file->columnDescription(column));
        return QStringLiteral("  ") + name + QLatin1Char(' ') + description + QLatin1Char(' ');
    } catch (...) {
        return unreadableText();
    }
}

Qt::ItemFlags TsTableModel::flags(const QModelIndex& index) const
{
    const Qt::ItemFlags base = QAbstractTableModel::flags(index);
    return m_edited && index.isValid() && !isIntegerColumn(index.column()) ? base | Qt::ItemIsEditable : base;
}

bool TsTableModel::setData(const QModelIndex& index, const QVariant& value, int role)
{
    if (role != Qt::EditRole || !(flags(index) & Qt::ItemIsEditable))
        return false;
    const std::optional<float> number = cellNumber(value.toString());
    if (!number)
        return false;
    const auto sample = static_cast<std::uint32_t>(index.row()) + 1;
    const SampleRun cell{static_cast<std::uint32_t>(index.column()) + 1, sample, sample};
    m_edited->edits().add({"Set value", {setStrip(cell, static_cast<double>(*number))}});
    emit dataChanged(index, index);
    emit x_edited();
    return true;
}
