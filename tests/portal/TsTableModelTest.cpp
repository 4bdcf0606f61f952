// What the table asks of a ts-file, healthy or not.

#include <gtest/gtest.h>

#include <cmath>

#include "core/TSFILE.h"
#include "core/TsNames.h"
#include "portal/TsTableModel.h"
#include "tests/core/TsFileBytes.h"

using namespace veltrac;

namespace {

TSFILE* opened(const std::string& name)
{
    return openTsFile(name, true).release();
}

std::string textAt(const TsTableModel& model, int row, int column)
{
    return model.index(row, column).data().toString().toStdString();
}

}  // namespace

TEST(TsTableModel, AnswersTheTableAndNothingElse)
{
    const TestDirectory directory;
    {
        TSFILE file("a.ts", 2, 3, 0);
        file.columnName(1, "Force   ");
        file.columnDescription(1, "Left foot [N]");
        file.columnName(3, "Volt");
        file.columnDescription(3, "Volt");
        file.setValue(1, 1, -1.23456F);
        file.setValue(2, 2, NAN);
    }
    TsTableModel model(opened("a.ts"));
    EXPECT_TRUE(model.isAsTheFile());
    EXPECT_EQ(textAt(model, 0, 0), "-1.2346");
    EXPECT_EQ(textAt(model, 1, 0), "0.0000");
    EXPECT_EQ(textAt(model, 1, 1), "nan");
    EXPECT_EQ(model.index(0, 0).data(Qt::TextAlignmentRole).toInt(), Qt::AlignHCenter | Qt::AlignVCenter);
    EXPECT_EQ(model.headerData(0, Qt::Horizontal).toString(), "  Force Left foot [N] ");
    EXPECT_EQ(model.headerData(1, Qt::Horizontal).toString(), "  Column-02  ");
    EXPECT_EQ(model.headerData(2, Qt::Horizontal).toString(), "  Volt  ") << "one text for both";
    EXPECT_EQ(model.headerData(1, Qt::Vertical).toInt(), 2);
    for (const int role : {Qt::EditRole, Qt::BackgroundRole, Qt::ToolTipRole, Qt::DecorationRole}) {
        EXPECT_FALSE(model.index(0, 0).data(role).isValid()) << role;
        EXPECT_FALSE(model.headerData(0, Qt::Horizontal, role).isValid()) << role;
    }
    EXPECT_FALSE(model.setData(model.index(0, 0), "1"));
}

TEST(TsTableModel, SwappedAndRingFilesShowTheirValues)
{
    const TestDirectory directory;
    HandMadeFile swapped(1536, true);
    swapped.word(0, 3).word(4, 1).real(16, 1.0F).word(508, 3);
    swapped.word(140, 5).word(144, 7);  // a ring of 3: samples 5 to 7
    swapped.real(1024, 7.0F).real(1028, 5.0F).real(1032, 6.0F);
    swapped.write("a.ts");
    const TsTableModel model(opened("a.ts"));
    EXPECT_EQ(textAt(model, 0, 0), "7.0000");
    EXPECT_EQ(textAt(model, 1, 0), "5.0000");
    EXPECT_EQ(textAt(model, 2, 0), "6.0000");
}

TEST(TsTableModel, LyingHeadersGiveUnreadableCellsAndNoException)
{
    const TestDirectory directory;
    HandMadeFile cut(1024 + 512, false);
    cut.word(0, 4000000000U).word(4, 1).word(508, 3).real(1024, 2.0F);
    cut.write("cut.ts");
    const TsTableModel model(opened("cut.ts"));
    EXPECT_GT(model.rowCount(), 2000000000);
    EXPECT_EQ(textAt(model, 0, 0), "2.0000");
    EXPECT_EQ(textAt(model, 127, 0), "0.0000");
    EXPECT_EQ(textAt(model, 128, 0), "unreadable");
    EXPECT_EQ(textAt(model, 2147483645, 0), "unreadable");

    HandMadeFile wide(512, false);
    wide.word(0, 5).word(4, 4000000000U).word(508, 3);
    wide.write("wide.ts");
    const TsTableModel many(opened("wide.ts"));
    EXPECT_EQ(many.columnCount(), TsTableModel::kMostColumns);
    EXPECT_EQ(textAt(many, 4, 99999), "unreadable");
    EXPECT_EQ(many.headerData(99999, Qt::Horizontal).toString(), "unreadable");

    HandMadeFile(512, false).write("empty.ts");
    EXPECT_EQ(TsTableModel(opened("empty.ts")).rowCount(), 0);
}

TEST(TsTableModel, EditedCellsTakeNumbersAndNothingElse)
{
    const TestDirectory directory;
    {
        TSFILE file("a.ts", 3, 1, 2);
        file.setValue(1, 3, 0.1F);
        file.setSampleTime(1, 12.5);
    }
    TsTableModel model(opened("a.ts"));
    model.makeEditable("a.ts");
    const QModelIndex cell = model.index(0, 2);
    EXPECT_EQ(cell.data(Qt::EditRole).toString(), "0.100000001");
    struct Row
    {
        const char* typed;
        const char* shown;
    };
    const Row rows[] = {
        {"2,5", "2.5000"}, {"-1e3", "-1000.0000"}, {"", "nan"}, {" NaN ", "nan"}, {"7", "7.0000"}};
    for (const Row& row : rows) {
        EXPECT_TRUE(model.setData(cell, row.typed)) << row.typed;
        EXPECT_EQ(textAt(model, 0, 2), row.shown) << row.typed;
        EXPECT_TRUE(cell.data(Qt::BackgroundRole).isValid());
    }
    for (const char* const bad : {"1e39", "inf", "x", "1 2"}) {
        EXPECT_FALSE(model.setData(cell, bad)) << bad;
        EXPECT_EQ(textAt(model, 0, 2), "7.0000") << bad;
    }
    // The integer seconds of "Time" are bits, not numbers to be typed over.
    EXPECT_EQ(textAt(model, 0, 1), "12.0000");
    EXPECT_FALSE(model.flags(model.index(0, 1)) & Qt::ItemIsEditable);
    EXPECT_FALSE(model.setData(model.index(0, 1), "1"));
    model.editedFile()->edits().undo();
    EXPECT_EQ(textAt(model, 0, 2), "nan");
}
