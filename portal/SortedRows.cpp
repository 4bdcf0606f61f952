#include "portal/SortedRows.h"

#include <algorithm>
#include <cmath>
#include <utility>

namespace veltrac {

namespace {

constexpr std::uint64_t kRun = 8192;  // samples a step

struct Keyed
{
    float value;
    std::uint32_t sample;
};

}  // namespace

JobOutcome sortSamples(const ColumnReader& read, std::uint32_t first, std::uint32_t last, Qt::SortOrder order,
                       const Progress& progress, std::vector<std::uint32_t>& samples)
{
    const std::uint64_t total = std::uint64_t{last} - first + 1;
    std::vector<Keyed> keyed;
    keyed.reserve(total);
    std::vector<float> values(std::min(kRun, total));
    for (std::uint64_t done = 0; done < total;) {
        const std::size_t count = std::min<std::uint64_t>(values.size(), total - done);
        read(static_cast<std::uint32_t>(first + done), std::span(values).first(count));
        for (std::size_t i = 0; i < count; ++i)
            keyed.push_back({values[i], static_cast<std::uint32_t>(first + done + i)});
        done += count;
        if (!goesOn(progress, done, total))
            return JobOutcome::Cancelled;
    }
    const auto present = std::stable_partition(keyed.begin(), keyed.end(),
                                               [](const Keyed& k) { return !std::isnan(k.value); });
    if (order == Qt::AscendingOrder)
        std::stable_sort(keyed.begin(), present,
                         [](const Keyed& a, const Keyed& b) { return a.value < b.value; });
    else
        std::stable_sort(keyed.begin(), present,
                         [](const Keyed& a, const Keyed& b) { return a.value > b.value; });
    samples.clear();
    samples.reserve(keyed.size());
    for (const Keyed& k : keyed)
        samples.push_back(k.sample);
    return JobOutcome::Done;
}

SortedRows::SortedRows(QAbstractItemModel* source, std::vector<std::uint32_t> samples, QObject* parent)
    : QAbstractProxyModel(parent), m_samples(std::move(samples))
{
    setSourceModel(source);
    if (!m_samples.empty()) {
        const auto [least, most] = std::minmax_element(m_samples.begin(), m_samples.end());
        m_least = *least;
        m_rows.assign(std::size_t{*most - *least} + 1, -1);
        for (std::size_t row = 0; row < m_samples.size(); ++row)
            m_rows[m_samples[row] - m_least] = static_cast<int>(row);
    }
    // Which rows have changed is not worth finding out: the view paints only those that it shows.
    connect(source, &QAbstractItemModel::dataChanged, this, [this] {
        if (rowCount() > 0)
            emit dataChanged(index(0, 0), index(rowCount() - 1, columnCount() - 1));
    });
}

int SortedRows::rowCount(const QModelIndex& parent) const
{
    return parent.isValid() ? 0 : static_cast<int>(m_samples.size());
}

int SortedRows::columnCount(const QModelIndex& parent) const
{
    return parent.isValid() ? 0 : sourceModel()->columnCount();
}

QModelIndex SortedRows::index(int row, int column, const QModelIndex& parent) const
{
    const bool inside =
        !parent.isValid() && row >= 0 && row < rowCount() && column >= 0 && column < columnCount();
    return inside ? createIndex(row, column) : QModelIndex();
}

QModelIndex SortedRows::parent(const QModelIndex& /*child*/) const
{
    return QModelIndex();
}

QModelIndex SortedRows::mapToSource(const QModelIndex& index) const
{
    return index.isValid() ? sourceModel()->index(sourceRow(index.row()), index.column()) : QModelIndex();
}

QModelIndex SortedRows::mapFromSource(const QModelIndex& source) const
{
    const std::int64_t i = std::int64_t{source.row()} + 1 - m_least;
    if (!source.isValid() || i < 0 || i >= static_cast<std::int64_t>(m_rows.size()))
        return QModelIndex();
    return index(m_rows[static_cast<std::size_t>(i)], source.column());
}

QVariant SortedRows::headerData(int section, Qt::Orientation orientation, int role) const
{
    const bool row = orientation == Qt::Vertical && section >= 0 && section < rowCount();
    return sourceModel()->headerData(row ? sourceRow(section) : section, orientation, role);
}

}  // namespace veltrac
