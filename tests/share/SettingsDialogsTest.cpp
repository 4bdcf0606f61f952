// Hard copies and the two dialogs of the plot settings.

#include <gtest/gtest.h>

#include <QApplication>
#include <QCheckBox>
#include <QColorDialog>
#include <QComboBox>
#include <QDir>
#include <QFile>
#include <QLabel>
#include <QPointer>
#include <QPushButton>
#include <QSignalSpy>
#include <QTemporaryDir>
#include <QTimer>

#include "share/BasicDriver.h"
#include "share/ColorConfigDialog.h"
#include "share/ColorField.h"
#include "share/HardCopy.h"
#include "share/NumberField.h"
#include "share/PlotExport.h"
#include "share/PsConfigDialog.h"
#include "tests/FileSizeLimit.h"

using namespace veltrac;

namespace {

QPushButton* button(const QWidget& window, const QString& text)
{
    for (QPushButton* const candidate : window.findChildren<QPushButton*>())
        if (candidate->text() == text)
            return candidate;
    return nullptr;
}

NumberField* field(const QWidget& window, const QString& name)
{
    for (NumberField* const candidate : window.findChildren<NumberField*>())
        if (candidate->accessibleName() == name)
            return candidate;
    return nullptr;
}

QCheckBox* box(const QWidget& window, const QString& text)
{
    for (QCheckBox* const candidate : window.findChildren<QCheckBox*>())
        if (candidate->text() == text)
            return candidate;
    return nullptr;
}

TEST(PsConfigDialog, ShowsTheRecordAndPutsEveryFieldBack)
{
    PsParameters record;
    auto* const dialog = new PsConfigDialog(&record);
    const QPointer<QWidget> watched = dialog;
    const std::pair<const char*, const char*> shown[] = {
        {"Font size", "14.00"}, {"Line width", "0.80"}, {"Left margin", "20"},
        {"Right margin", "20"}, {"Top margin", "20"},   {"Bottom margin", "20"},
        {"Gray", "1"},          {"Black", "0.2"},       {"Dotted", "2"}};
    for (const auto& [name, text] : shown)
        EXPECT_EQ(field(*dialog, name)->text(), text) << name;
    EXPECT_TRUE(box(*dialog, "EPSF format")->isChecked());
    EXPECT_FALSE(box(*dialog, "Use portrait mode")->isChecked());
    const QList<QComboBox*> combos = dialog->findChildren<QComboBox*>();
    ASSERT_EQ(combos.size(), 2);
    EXPECT_EQ(combos[0]->currentText(), "Helvetica");
    EXPECT_EQ(combos[1]->currentText(), "A4");

    int value = 1;
    for (const auto& row : shown)
        field(*dialog, row.first)->setText(QString::number(value++));
    field(*dialog, "Line width")->setText("1,5");
    combos[0]->setCurrentText("Courier");
    combos[1]->setCurrentText("Letter");
    box(*dialog, "EPSF format")->click();
    box(*dialog, "Use portrait mode")->click();
    button(*dialog, "&Ok")->click();
    QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
    EXPECT_TRUE(watched.isNull());
    EXPECT_STREQ(record.fontName, "Courier");
    EXPECT_EQ(record.baseFontSize, 1.0);
    EXPECT_EQ(record.lineWidthScale, 1.5);
    EXPECT_EQ(std::vector<int>(record.margins, record.margins + 4), (std::vector<int>{4, 3, 5, 6}));
    EXPECT_EQ(record.grayGridThickness, 7.0);
    EXPECT_EQ(record.blackGridThickness, 8.0);
    EXPECT_EQ(record.dottedGridThickness, 9.0);
    EXPECT_EQ(record.paper, 3);
    EXPECT_EQ(record.orientation, 0);
    EXPECT_FALSE(record.eps);
    const PsConfigDialog again(&record);
    EXPECT_EQ(again.findChildren<QComboBox*>()[0]->currentText(), "Courier");
    EXPECT_EQ(again.findChildren<QComboBox*>()[1]->currentText(), "Letter");
}

TEST(PsConfigDialog, BadTextIsMarkedAndNothingIsApplied)
{
    PsParameters record;
    PsParameters::setText(record.fontName, "Symbol");  // not in the list
    const QPointer<PsConfigDialog> dialog = new PsConfigDialog(&record);
    QSignalSpy applied(dialog, &PsConfigDialog::x_applied);
    dialog->show();
    field(*dialog, "Font size")->setText("20");
    for (const char* const bad : {"abc", "", "1e999", "20.5", "-3"}) {
        field(*dialog, "Left margin")->setText(bad);
        button(*dialog, "&Ok")->click();
        QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
        ASSERT_FALSE(dialog.isNull()) << bad;
        EXPECT_FALSE(field(*dialog, "Left margin")->isValid()) << bad;
        EXPECT_EQ(record.baseFontSize, 14.0) << bad;
    }
    // Margins only count without EPS; together they are wider than the paper.
    field(*dialog, "Left margin")->setText("200");
    box(*dialog, "EPSF format")->setChecked(false);
    button(*dialog, "&Apply")->click();
    EXPECT_EQ(applied.count(), 0);
    EXPECT_TRUE(record.eps);
    box(*dialog, "EPSF format")->setChecked(true);
    button(*dialog, "&Apply")->click();
    EXPECT_EQ(applied.count(), 1);
    EXPECT_EQ(record.baseFontSize, 20.0);
    EXPECT_STREQ(record.fontName, "Symbol");
    field(*dialog, "Font size")->setText("30");
    button(*dialog, "&Cancel")->click();
    EXPECT_EQ(record.baseFontSize, 20.0);
}

// Answers the colour chooser that opens next.
void chooseNext(const QColor& colour)
{
    QTimer::singleShot(0, [colour] {
        auto* const chooser = qobject_cast<QColorDialog*>(QApplication::activeModalWidget());
        ASSERT_NE(chooser, nullptr);
        chooser->setCurrentColor(colour);
        chooser->accept();
    });
}

TEST(ColorConfigDialog, ChangesAtOnceRestoresOnCancelKeepsOnOk)
{
    const std::vector<QColor> before{Qt::red, Qt::green, Qt::blue};
    std::vector<QColor> colours = before;
    SubWindow opener;
    opener.setAttribute(Qt::WA_DeleteOnClose, false);
    const auto open = [&] { return new ColorConfigDialog(&colours, {Qt::cyan, Qt::magenta}, &opener); };

    ColorConfigDialog* dialog = open();
    QSignalSpy changed(dialog, &ColorConfigDialog::x_colors_changed);
    EXPECT_EQ(dialog->findChildren<QLabel*>().at(1)->text(), "Variable 2 : ");
    chooseNext(QColor(1, 2, 3));
    button(*dialog, "Change color 2")->click();
    EXPECT_EQ(colours[1], QColor(1, 2, 3));
    EXPECT_EQ(changed.count(), 1);
    EXPECT_EQ(dialog->findChildren<ColorField*>().at(1)->styleSheet(), "background-color:#010203");
    button(*dialog, "&Default colors")->click();
    EXPECT_EQ(colours, (std::vector<QColor>{Qt::cyan, Qt::magenta, Qt::cyan}));
    button(*dialog, "&Cancel")->click();
    EXPECT_EQ(colours, before);
    EXPECT_EQ(changed.count(), 3);

    dialog = open();
    button(*dialog, "&Default colors")->click();
    button(*dialog, "&Ok")->click();
    EXPECT_EQ(colours[0], QColor(Qt::cyan));

    const QPointer<ColorConfigDialog> last = open();
    last->show();
    button(*last, "&Default colors")->click();
    colours[0] = Qt::white;
    opener.close();  // its colours may be gone by now
    QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
    EXPECT_TRUE(last.isNull());
    EXPECT_EQ(colours[0], QColor(Qt::white));
}

QByteArray contents(const QString& name)
{
    QFile file(name);
    return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
}

TEST(HardCopy, ReplacesAnOlderFileOnlyWhenWhole)
{
    const QTemporaryDir directory;
    const QString name = directory.filePath(QStringLiteral("Öl 1.5.eps"));
    const auto line = [](BasicDriver& driver) {
        for (int i = 0; i < 2000; ++i) {
            driver.MoveTo(0, 0);
            driver.LineTo(1, 1);
        }
    };
    const auto onlyTheOldFileIsThere = [&] {
        return contents(name) == "old" && QDir(directory.path()).entryList(QDir::Files).size() == 1;
    };
    QFile old(name);
    ASSERT_TRUE(old.open(QIODevice::WriteOnly));
    old.write("old");
    old.close();

    QImage noise(100, 100, QImage::Format_RGB32);
    for (int i = 0; i < 10'000; ++i)
        noise.setPixel(i % 100, i / 100, static_cast<uint>(i) * 2654435761U);
    QString failure, pictureFailure, pageFailure;
    {
        const FileSizeLimit fullDisk(1024);
        failure = writeHardCopy(name, PsParameters(), line);
        pictureFailure = writePicture(name, noise);
        pageFailure = writePlotPdf(name, QPageLayout(), Plot2D(), {});
    }
    EXPECT_EQ(failure,
              "The hard copy \"Öl 1.5.eps\" could not be written: the disk took no more (is it full?).");
    EXPECT_EQ(pictureFailure, "Öl 1.5.eps cannot be written: the disk took no more (is it full?).");
    EXPECT_EQ(pageFailure, pictureFailure);
    EXPECT_TRUE(onlyTheOldFileIsThere());

    EXPECT_FALSE(
        writeHardCopy(name, PsParameters(), [](BasicDriver&) { throw std::runtime_error("x"); }).isEmpty());
    EXPECT_TRUE(onlyTheOldFileIsThere());
    EXPECT_FALSE(writeHardCopy(directory.path(), PsParameters(), line).isEmpty());
    EXPECT_FALSE(writeHardCopy(directory.filePath("no/x.eps"), PsParameters(), line).isEmpty());

    EXPECT_EQ(writeHardCopy(name, PsParameters(), line), "");
    EXPECT_TRUE(contents(name).startsWith("%!PS-Adobe-2.0 EPSF-1.2\n"));
    EXPECT_TRUE(contents(name).endsWith("%%Trailer\n%%Pages: 1\nsaveobj restore\n"));
    EXPECT_EQ(writePicture(name, noise), "");
    EXPECT_EQ(QImage(name, "PNG"), noise);
    EXPECT_EQ(writePlotPdf(name, QPageLayout(), Plot2D(), {}), "");
    EXPECT_TRUE(contents(name).startsWith("%PDF-"));
}

}  // namespace
