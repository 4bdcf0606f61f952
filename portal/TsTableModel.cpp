#include "portal/TsTableModel.h"

#include <QColor>

#include <algorithm>
#include <bit>
#include <limits>

#include "core/TSFILE.h"
#include "portal/CellText.h"
#include "share/HeaderText.h"

using namespace veltrac;

namespace {

// What the core throws when a file is not what its header claims; a cell shows it as this.
QString unreadableText()
{
    return QStringLiteral("unreadable");
}

// An amber over either background.
const QColor kChangedTint(255, 176, 32, 96);

}  // namespace

TsTableModel::TsTableModel(TSFILE* file, QObject* parent) : QAbstractTableModel(parent)
{
    takeFile(file);
}

TsTableModel::~TsTableModel() = default;

void TsTableModel::setFile(TSFILE* file)
{
    beginResetModel();
    takeFile(file);
    if (m_edited)
        makeEditable(std::filesystem::path(m_edited->path()));
    endResetModel();
}

void TsTableModel::takeFile(TSFILE* file)
{
    constexpr std::uint32_t kMostRows = std::numeric_limits<int>::max() - 1;
    m_file.reset(file);
    m_time.emplace(*m_file);
    m_samples = file->samples();
    m_rows = static_cast<int>(std::min(m_samples, kMostRows));
    m_columns = static_cast<int>(std::min<std::uint32_t>(file->columns(), kMostColumns));
}

bool TsTableModel::takeNewRows()
{
    const bool hasMoved = m_file->refresh();
    if (!isAsTheFile())
        return true;
    if (!hasMoved)
        return false;
    m_time.emplace(*m_file);
    if (rowCount() > 0 && columnCount() > 0)
        emit dataChanged(index(0, 0), index(rowCount() - 1, columnCount() - 1));
    return true;
}

FileIdentity TsTableModel::identity() const noexcept
{
    return identityOf(m_file->descriptor());
}

bool TsTableModel::isAsTheFile() const
{
    return m_file->samples() == m_samples &&
           static_cast<int>(std::min<std::uint32_t>(m_file->columns(), kMostColumns)) == m_columns;
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

std::uint32_t TsTableModel::writtenRow(std::uint32_t number) const
{
    return emptyRows() == 0 ? number : m_time->rowOf(m_time->firstSample() + number - 1);
}

ColumnReader TsTableModel::writtenReader(int column) const
{
    ColumnReader read = columnReader(column);
    if (emptyRows() == 0)
        return read;
    return [this, read](std::uint32_t first, std::span<float> out) {
        // As far as the last row of the file at once, and the rest from the first row on.
        const std::uint32_t row = writtenRow(first);
        const std::size_t count = std::min<std::size_t>(out.size(), m_samples - row + 1);
        read(row, out.first(count));
        if (count < out.size())
            read(1, out.subspan(count));
    };
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
    return QString::number(static_cast<double>(*v), 'f', kShownDecimals);
}

QString TsTableModel::exactCellText(int row, int column) const
{
    const std::optional<float> v = value(row, column);
    if (!v)
        return unreadableText();
    return isIntegerColumn(column) ? QString::number(std::bit_cast<std::uint32_t>(*v))
                                   : QString::fromStdString(exactText(*v));
}

QVariant TsTableModel::editingData(const QModelIndex& index, int role) const
{
    if (role == Qt::EditRole) {
        const std::optional<float> v = value(index.row(), index.column());
        return v ? QString::number(static_cast<double>(*v), 'g', 9) : QString();
    }
    if (role == Qt::BackgroundRole &&
        m_edited->edits().isUnsaved(static_cast<std::uint32_t>(index.column()) + 1,
                                    static_cast<std::uint32_t>(index.row()) + 1))
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
        QString description = headerText(m_file->columnDescription(column));
        // Files whose columns have one text for both would show it twice.
        if (description == name)
            description.clear();
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
    const std::optional<float> number = cellNumber(value.toString().toStdString());
    if (!number)
        return false;
    const auto sample = static_cast<std::uint32_t>(index.row()) + 1;
    const SampleRun cell{static_cast<std::uint32_t>(index.column()) + 1, sample, sample};
    m_edited->add({"Set value", {setStrip(cell, static_cast<double>(*number))}});
    emit dataChanged(index, index);
    emit x_edited();
    return true;
}
