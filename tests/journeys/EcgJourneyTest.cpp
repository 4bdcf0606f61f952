// A measured electrocardiogram on its way through the whole program: from text to a ts-file, listed, given a
// better header, written back to text, and read once more.

#include <gtest/gtest.h>

#include <QAction>
#include <QFileDialog>
#include <QLabel>
#include <QLineEdit>
#include <QPushButton>
#include <QTableView>
#include <QTableWidget>
#include <QTest>

#include <cstdio>

#include "core/TSFILE.h"
#include "core/TsNames.h"
#include "tests/BoxAnswer.h"
#include "tests/core/TsFileBytes.h"

using namespace veltrac;

namespace {

QWidget* windowTitled(const QString& title)
{
    for (QWidget* const window : QApplication::topLevelWidgets())
        if (window->isVisible() && window->windowTitle() == title)
            return window;
    return nullptr;
}

// What the measuring tool would write: comments, a header, one value a line.
void writeEcgText(const std::string& tsa)
{
    const auto ecg = openTsFile(VELTRAC_EXAMPLES "/ecg.ts", true);
    std::FILE* const out = std::fopen(tsa.c_str(), "w");
    std::fprintf(out, "; recorded at the bedside\r\n%%S %u\r\n%%C 1\r\n%%D %.9g\r\n%%N1 MLII\r\n",
                 ecg->samples(), static_cast<double>(ecg->dt()));
    std::fprintf(out, "%%I1 Lead MLII [mV]\r\n%%I Electrocardiogram\r\n%%T1 2016.05.17-13:45:30\r\n\r\n");
    for (std::uint32_t s = 1; s <= ecg->samples(); ++s) {
        std::string number = std::to_string(ecg->value(s, 1));
        number.replace(number.find('.'), 1, ",");
        std::fprintf(out, "%s\r\n", number.c_str());
    }
    std::fclose(out);
}

class EcgJourney : public testing::Test
{
protected:
    EcgJourney()
    {
        writeEcgText("Bett 3, 2016.tsa");
        press(Qt::Key_F6);
    }

    QTableWidget& table() { return *m_portal->findChild<QTableWidget*>(); }
    void press(Qt::Key key, Qt::KeyboardModifiers modifiers = Qt::NoModifier)
    {
        QApplication::setActiveWindow(m_portal);
        QTest::keyClick(m_portal, key, modifiers);
        QApplication::processEvents();
    }
    void choose(const QString& menuText)
    {
        for (QAction* const action : m_portal->actions())
            if (action->text() == menuText)
                action->trigger();
    }
    // Answers the file dialog that an action opens.
    void withFile(const QString& menuText, const QString& file, const QString& button)
    {
        const BoxAnswer dialog(button, [&](QWidget& box) {
            if (auto* const files = qobject_cast<QFileDialog*>(&box))
                files->selectFile(file);
        });
        choose(menuText);
        EXPECT_TRUE(dialog.wasAsked()) << menuText.toStdString();
    }
    QStringList rowOf(const QString& file)
    {
        QStringList texts;
        for (int row = 0; row < table().rowCount(); ++row)
            for (int column = 0; column < 5 && table().item(row, 0)->text() == file; ++column)
                texts << table().item(row, column)->text();
        return texts;
    }

    TestDirectory m_directory;
    QWidget* m_portal = windowTitled(QStringLiteral("Veltrac"));
};

TEST_F(EcgJourney, textBecomesAFileIsListedRenamedWrittenAndComesBackEqual)
{
    const QString ecg = QStringLiteral("Bett 3, 2016.ts");
    withFile(QStringLiteral("Read an existing ASCII file..."), QStringLiteral("Bett 3, 2016.tsa"),
             QStringLiteral("&Open"));
    EXPECT_EQ(rowOf(ecg), (QStringList{ecg, QStringLiteral("108000"), QStringLiteral("1"),
                                       QStringLiteral("0.0028"), QStringLiteral("Electrocardiogram")}));

    // The imported file is the selected one: its values, exact to what the text says.
    press(Qt::Key_L, Qt::ControlModifier);
    QWidget* const list = windowTitled(QStringLiteral("Veltrac, listing ") + ecg);
    ASSERT_NE(list, nullptr);
    const QAbstractItemModel* const model = list->findChild<QTableView*>(QString())->model();
    ASSERT_EQ(model->rowCount(), 108000);
    const auto source = openTsFile(VELTRAC_EXAMPLES "/ecg.ts", true);
    for (const int row : {0, 1, 54321, 107999})
        EXPECT_EQ(model->index(row, 0).data().toString(),
                  QString::number(static_cast<double>(source->value(static_cast<std::uint32_t>(row) + 1, 1)),
                                  'f', 4));
    list->close();

    press(Qt::Key_E, Qt::ControlModifier);
    QWidget* const header = windowTitled(QStringLiteral("Edit or view; ") + ecg + QStringLiteral(" header"));
    ASSERT_NE(header, nullptr);
    for (QLabel* const label : header->findChildren<QLabel*>())
        if (label->text().remove(QLatin1Char('&')) == QLatin1String("File description:"))
            qobject_cast<QLineEdit*>(label->buddy())->setText(QStringLiteral("Prüfling in Bett 3"));
    for (QPushButton* const button : header->findChildren<QPushButton*>())
        if (button->text().remove(QLatin1Char('&')).toUpper() == QLatin1String("OK"))
            button->click();
    press(Qt::Key_F6);
    EXPECT_EQ(rowOf(ecg).value(4), QStringLiteral("Prüfling in Bett 3"));

    withFile(QStringLiteral("&Write to ASCII..."), QStringLiteral("back.tsa"), QStringLiteral("&Save"));
    withFile(QStringLiteral("Read an existing ASCII file..."), QStringLiteral("back.tsa"),
             QStringLiteral("&Open"));
    EXPECT_EQ(rowOf(QStringLiteral("back.ts")),
              (QStringList{QStringLiteral("back.ts"), QStringLiteral("108000"), QStringLiteral("1"),
                           QStringLiteral("0.0028"), QStringLiteral("Prüfling in Bett 3")}));
    const auto first = openTsFile("Bett 3, 2016.ts", true);
    const auto back = openTsFile("back.ts", true);
    EXPECT_EQ(back->columnTime(1), first->columnTime(1));
    EXPECT_STREQ(back->columnDescription(1), "Lead MLII [mV]");
    for (std::uint32_t s = 1; s <= 108000; ++s)
        ASSERT_EQ(back->value(s, 1), first->value(s, 1)) << s;
    EXPECT_EQ(m_directory.fileCount(), 4U);
}

}  // namespace
