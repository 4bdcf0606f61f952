// The proxies between the table and a long model.

#include <gtest/gtest.h>

#include <QApplication>
#include <QHeaderView>
#include <QPersistentModelIndex>
#include <QTableView>

#include "portal/ColumnFit.h"
#include "portal/RowWindow.h"
#include "portal/SortedRows.h"

using namespace veltrac;

namespace {

constexpr int kLong = 500000000;

class LongModel : public QAbstractTableModel
{
public:
    explicit LongModel(int rows) : m_rows(rows) {}
    int rowCount(const QModelIndex& = QModelIndex()) const override { return m_rows; }
    int columnCount(const QModelIndex& = QModelIndex()) const override { return 3; }
    QVariant data(const QModelIndex& index, int role) const override
    {
        ++asked;
        return role == Qt::DisplayRole ? QVariant(index.row() * 10LL + index.column()) : QVariant();
    }
    QVariant headerData(int section, Qt::Orientation, int) const override { return section + 1; }
    mutable std::size_t asked = 0;  // for data
    void change(int first, int last) { emit dataChanged(index(first, 0), index(last, 2)); }

private:
    int m_rows;
};

}  // namespace

TEST(RowWindow, ShowsTheSourceRowsOfItsPlaceAndStopsAtTheEnds)
{
    LongModel source(kLong);
    RowWindow window(&source);
    const int last = kLong - RowStretch::kRows;
    const int places[][2] = {{0, 0}, {1234567, 1234567}, {kLong, last}, {-5, 0}, {last, last}};
    for (const auto& [asked, base] : places) {
        window.setBase(asked);
        EXPECT_EQ(window.base(), base);
        EXPECT_EQ(window.rowCount(), RowStretch::kRows);
        EXPECT_EQ(window.index(999999, 2).data().toLongLong(), (base + 999999LL) * 10 + 2);
        EXPECT_EQ(window.headerData(7, Qt::Vertical).toInt(), base + 8);
        EXPECT_EQ(window.headerData(1, Qt::Horizontal).toInt(), 2);
        EXPECT_EQ(window.mapFromSource(source.index(base + 3, 1)), window.index(3, 1));
        EXPECT_FALSE(window.mapFromSource(source.index(base == 0 ? kLong - 1 : base - 1, 0)).isValid());
    }
    LongModel few(5);
    RowWindow whole(&few);
    whole.setBase(3);
    EXPECT_EQ(whole.base(), 0);
    EXPECT_EQ(whole.rowCount(), 5);
}

TEST(RowWindow, PersistentIndexesStayWithTheirCell)
{
    LongModel source(kLong);
    RowWindow window(&source);
    window.setBase(1000);
    const QPersistentModelIndex kept(window.index(500, 1));
    const QPersistentModelIndex lost(window.index(0, 0));
    window.setBase(1400);
    EXPECT_EQ(kept.row(), 100);
    EXPECT_EQ(kept.data().toLongLong(), 15001);
    EXPECT_FALSE(lost.isValid());
}

TEST(RowWindow, PassesOnChangesOfTheRowsThatItShows)
{
    LongModel source(kLong);
    RowWindow window(&source);
    window.setBase(1000);
    std::vector<std::pair<int, int>> seen;
    QObject::connect(
        &window, &QAbstractItemModel::dataChanged,
        [&](const QModelIndex& a, const QModelIndex& b) { seen.emplace_back(a.row(), b.row()); });
    source.change(0, 999);
    source.change(0, kLong - 1);
    source.change(1005, 1006);
    const std::vector<std::pair<int, int>> expected{{0, RowStretch::kRows - 1}, {5, 6}};
    EXPECT_EQ(seen, expected);
}

TEST(SortedRows, ShowsTheSourceRowsInItsOwnOrder)
{
    LongModel source(7);
    const SortedRows sorted(&source, {4, 5, 3, 2});
    EXPECT_EQ(sorted.rowCount(), 4);
    EXPECT_EQ(sorted.index(0, 1).data().toInt(), 31);
    EXPECT_EQ(sorted.headerData(1, Qt::Vertical, Qt::DisplayRole).toInt(), 5);
    EXPECT_EQ(sorted.mapFromSource(source.index(2, 2)), sorted.index(2, 2));
    for (const int notShown : {0, 5, 6})
        EXPECT_FALSE(sorted.mapFromSource(source.index(notShown, 0)).isValid()) << notShown;
}

// A table that is hidden has no rows in view, which the base takes for all of them.
TEST(ColumnFit, LooksAtTheRowsInViewAndAtNoneOfAHiddenTable)
{
    LongModel model(20000);
    QTableView view;
    view.horizontalHeader()->setResizeContentsPrecision(0);
    view.setModel(&model);
    auto* const fit = new ColumnFit(&view);  // the view's
    const auto askedMeanwhile = [&] {
        model.asked = 0;
        fit->fit();
        fit->widenSoon();
        QApplication::processEvents();
        QApplication::processEvents();
        return model.asked;
    };
    view.show();
    const std::size_t inView = askedMeanwhile();
    EXPECT_GT(inView, 0U);
    EXPECT_LT(inView, 5000U);
    view.hide();
    EXPECT_EQ(askedMeanwhile(), 0U);
}
