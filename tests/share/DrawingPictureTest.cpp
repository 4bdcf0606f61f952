// The same drawing on the screen and on paper.

#include <gtest/gtest.h>

#include <QBuffer>
#include <QFrame>
#include <QImage>
#include <QPaintEngine>
#include <QPdfWriter>
#include <QProcess>
#include <QTemporaryDir>

#include <array>
#include <cmath>
#include <fstream>
#include <functional>
#include <iterator>

#include "share/EpsFile.h"
#include "share/PostscriptDriver.h"
#include "share/QtCompat.h"
#include "share/QtDriver.h"
#include "share/SvgDriver.h"

using namespace veltrac;

namespace {

using Draw = std::function<void(BasicDriver&)>;

// An A4 sheet in landscape at 75 dots per inch, as the screen counts.
constexpr int kWidth = 877;
constexpr int kHeight = 620;
// The paper's lines are 5 × 0.8 times wider.
constexpr float kPaperWidthFactor = 0.25F;

QImage screenPicture(const Draw& draw)
{
    QImage picture(kWidth, kHeight, QImage::Format_RGB32);
    picture.fill(Qt::white);
    QtDriver driver(&picture);
    driver.BeginPage(1);
    draw(driver);
    driver.EndPage();
    return picture;
}

// What a program makes of a picture; it must have nothing to say.
QImage rendered(const char* program, const QStringList& arguments, const QString& png)
{
    QProcess process;
    process.setProcessChannelMode(QProcess::MergedChannels);
    process.start(QString::fromLatin1(program), arguments);
    EXPECT_TRUE(process.waitForFinished(60000));
    EXPECT_EQ(process.exitCode(), 0);
    EXPECT_EQ(process.readAll().toStdString(), "");
    return QImage(png);
}

// Renders with Ghostscript.
QImage paperPicture(const Draw& draw)
{
    const QTemporaryDir directory;
    const QString eps = directory.filePath(QStringLiteral("plot.eps"));
    const QString png = directory.filePath(QStringLiteral("plot.png"));
    writeEps(eps.toStdString(), PsParameters(), draw);
    return rendered("gs",
                    {"-q", "-dNOPAUSE", "-dBATCH", "-dSAFER", "-dEPSCrop", "-sDEVICE=png16m", "-r75",
                     QStringLiteral("-g%1x%2").arg(kWidth).arg(kHeight), "-sOutputFile=" + png, eps},
                    png);
}

// Renders SVG by librsvg.
QImage svgPicture(const Draw& draw)
{
    const QTemporaryDir directory;
    const QString svg = directory.filePath(QStringLiteral("plot.svg"));
    const QString png = directory.filePath(QStringLiteral("plot.png"));
    writeSvg(svg.toStdString(), PsParameters(), draw);
    // It smooths: a line that is narrower than a pixel is pale.
    constexpr int kPale = 200;
    QImage picture =
        rendered("rsvg-convert",
                 {"-w", QString::number(kWidth), "-h", QString::number(kHeight), "-o", png, svg}, png)
            .convertToFormat(QImage::Format_RGB32);
    for (int y = 0; y < picture.height(); ++y)
        for (int x = 0; x < picture.width(); ++x) {
            const QRgb pixel = picture.pixel(x, y);
            if (qRed(pixel) < kPale || qGreen(pixel) < kPale || qBlue(pixel) < kPale)
                picture.setPixel(x, y, qRgb(0, 0, 0));
        }
    return picture;
}

bool isInk(QRgb pixel)
{
    return qRed(pixel) < 128 || qGreen(pixel) < 128 || qBlue(pixel) < 128;
}

// The ink of one picture that has none of the other within so many pixels.
int strayInk(const QImage& picture, const QImage& other, int reach)
{
    int stray = 0;
    for (int y = reach; y < picture.height() - reach; ++y) {
        for (int x = reach; x < picture.width() - reach; ++x) {
            if (!isInk(picture.pixel(x, y)))
                continue;
            bool isNear = false;
            for (int dy = -reach; dy <= reach && !isNear; ++dy)
                for (int dx = -reach; dx <= reach && !isNear; ++dx)
                    isNear = isInk(other.pixel(x + dx, y + dy));
            stray += isNear ? 0 : 1;
        }
    }
    return stray;
}

void drawCurves(BasicDriver& driver, float widthFactor, bool hasTexts)
{
    driver.DefineColor(kTextColor, 0, 0, 0);
    driver.SelectColor(kTextColor);
    driver.SetViewport(0.1F, 0.2F, 0.95F, 0.9F);
    driver.SetWindow(0, -1.2F, 10, 1.2F);
    AxisStyle style;
    style.hasLabels = hasTexts;
    style.lineWidth = style.gridWidth = 0.2F * widthFactor;
    style.grid = GridStyle::Black;
    driver.DrawXAxis(linearTicks(0, 10, driver.xLabelRoom()), style);
    driver.DrawYAxis(linearTicks(-1.2, 1.2, driver.yLabelRoom()), style);
    driver.DrawFrame(0, -1.2F, 10, 1.2F, 0.2F * widthFactor);
    driver.SetClip(true);
    driver.SetColor(0.8F, 0, 0);
    driver.SetLineWidth(0.2F * widthFactor);
    std::vector<float> curve;
    for (int i = 0; i <= 1000; ++i) {
        const float t = static_cast<float>(i) * 0.01F;
        curve.insert(curve.end(), {t, 1.5F * std::sin(t * t * 0.3F)});  // beyond the clip
    }
    driver.Polyline(curve.data(), 1001, false, false);
    driver.SetClip(false);
    driver.SetLineWidth(0.2F * widthFactor);
    driver.SetColor(0, 0, 0.8F);
    for (int marker = 1; marker <= kMarkerCount; ++marker)
        driver.DrawMarker(static_cast<float>(marker) * 0.6F, 0.55F, marker, 8);
    driver.Arc(5, -0.5F, 0.1F, 30, 200, false);
    driver.Arc(7, -0.5F, 0.1F, 30, 200, true);
    driver.Rectangle(1, -1, 2, -0.7F, 1);
}

TEST(DrawingPicture, PaperAndScreenHaveTheSameLinesInTheSamePlaces)
{
    const QImage screen = screenPicture([](BasicDriver& driver) { drawCurves(driver, 1.0F, false); });
    const QImage paper =
        paperPicture([](BasicDriver& driver) { drawCurves(driver, kPaperWidthFactor, false); });
    ASSERT_EQ(paper.size(), screen.size());
    EXPECT_EQ(strayInk(screen, paper, 2), 0);
    EXPECT_EQ(strayInk(paper, screen, 2), 0);
    EXPECT_GT(strayInk(screen, QImage(paper.mirrored()), 2), 1000);  // the measure can fail
}

TEST(DrawingPicture, SvgAndPaperHaveTheSameLinesAndTextsInTheSamePlaces)
{
    const auto draw = [](BasicDriver& driver) { drawCurves(driver, kPaperWidthFactor, false); };
    const QImage svg = svgPicture(draw);
    const QImage paper = paperPicture(draw);
    ASSERT_EQ(paper.size(), svg.size());
    EXPECT_EQ(strayInk(svg, paper, 2), 0);
    EXPECT_EQ(strayInk(paper, svg, 2), 0);
    EXPECT_GT(strayInk(svg, QImage(paper.mirrored()), 2), 1000);

    // Fonts differ a little; a text that is turned, shifted or left out is seen all the same.
    const auto write = [](BasicDriver& driver) {
        driver.SetColor(0, 0, 0);
        for (const float angle : {0.0F, 90.0F, 33.0F}) {
            for (const float h : {0.0F, 0.5F, 1.4F}) {
                driver.DeviceMoveTo(300.0F + 4.0F * angle, 200.0F + 150.0F * h);
                driver.SetTextJustification(h, 1.0F - h);
                driver.Text("Force", 0, angle, kFontHelvetica | kFontBold);
            }
        }
    };
    const QImage svgTexts = svgPicture(write);
    const QImage paperTexts = paperPicture(write);
    EXPECT_LT(strayInk(svgTexts, paperTexts, 4), 20);
    EXPECT_LT(strayInk(paperTexts, svgTexts, 4), 20);
}

TEST(DrawingPicture, GhostscriptHasNothingToSayOfAnything)
{
    const QImage paper = paperPicture([](BasicDriver& driver) {
        drawCurves(driver, kPaperWidthFactor, true);
        const float angles[] = {0.0F, 33.3F, 90.0F, -120.0F};
        for (const float angle : angles) {
            driver.MoveTo(5, 0);
            driver.SetTextJustification(1.4F, 0.5F);
            driver.Text("(\\Größe ß § 10⁻³)", 0, angle, kFontTimes | kFontBold);
        }
        for (int style = 0; style < 10; ++style) {
            driver.SetLineStyle(style);
            driver.MoveTo(0, static_cast<float>(style) * 0.1F);
            driver.LineTo(std::nanf(""), 3e38F);
        }
        driver.Dot(-3e38F, 3e38F);
        driver.DrawStamp(0, "Veltrac");
        driver.DrawStamp(1, "Veltrac ß)");
    });
    EXPECT_EQ(paper.size(), QSize(kWidth, kHeight));
}

TEST(QtDriver, MarkersAreToldApartAtFourPixels)
{
    std::vector<QImage> glyphs;
    for (int marker = 1; marker <= kMarkerCount; ++marker) {
        QImage glyph(9, 9, QImage::Format_RGB32);
        glyph.fill(Qt::white);
        QtDriver driver(&glyph);
        driver.BeginPage(0);
        driver.SetColor(0, 0, 0);
        driver.DrawMarker(0.5F, 0.5F, marker, 4);
        driver.EndPage();
        glyphs.push_back(glyph);
    }
    for (std::size_t a = 0; a < glyphs.size(); ++a) {
        for (std::size_t b = 0; b < a; ++b) {
            int different = 0;
            for (int pixel = 0; pixel < 81; ++pixel)
                different += glyphs[a].pixel(pixel % 9, pixel / 9) != glyphs[b].pixel(pixel % 9, pixel / 9);
            EXPECT_GE(different, 4) << "markers " << a + 1 << " and " << b + 1;
        }
    }
}

TEST(QtDriver, WhatIsTurnedAndWhatIsMovedToDoesNotMoveWhatFollows)
{
    // The same strokes and texts in two orders make the same picture.
    std::array<QImage, 2> pictures;
    for (const bool textFirst : {false, true}) {
        QImage& picture = pictures[textFirst ? 1 : 0];
        picture = QImage(200, 100, QImage::Format_RGB32);
        picture.fill(Qt::white);
        QtDriver driver(&picture);
        driver.BeginPage(0);
        driver.SetColor(0, 0, 0);
        for (const bool text : {textFirst, !textFirst}) {
            driver.MoveTo(0.3F, 0.2F);
            if (text)
                driver.Text("Force", 0, 90.0F, 0);
            else
                driver.LineTo(0.9F, 0.6F);
        }
        driver.EndPage();
    }
    EXPECT_EQ(pictures[0], pictures[1]);
}

TEST(QtDriver, TextsStandWhereTheyAreJustified)
{
    const struct
    {
        float h, v, angle;
        int left, right, top, bottom;  // about how far the ink is from the place, in widths and heights
    } cases[] = {{0, 0, 0, 0, 1, -1, 0},
                 {1, 1, 0, -1, 0, 0, 1},
                 {0.5F, 0, 0, 9, 9, -1, 0},
                 {0, 0, 90.0F, -1, 0, -1, 0},
                 {1, 1, -90.0F, -1, 0, -1, 0}};
    for (const auto& c : cases) {
        QImage picture(400, 400, QImage::Format_RGB32);
        picture.fill(Qt::white);
        QtDriver driver(&picture);
        driver.BeginPage(0);
        driver.SetColor(0, 0, 0);
        driver.SetTextJustification(c.h, c.v);
        driver.MoveTo(0.5F, 0.5F);
        driver.Text("FHEH", 0, c.angle, 0);
        float width = 0.0F;
        driver.TextExtent("FHEH", &width, nullptr);
        driver.EndPage();
        QRect ink;
        for (int y = 0; y < 400; ++y)
            for (int x = 0; x < 400; ++x)
                if (isInk(picture.pixel(x, y)))
                    ink |= QRect(x, y, 1, 1);
        const bool isTurned = c.angle != 0.0F;
        const int along = isTurned ? ink.height() : ink.width();
        EXPECT_NEAR(along, 400 * width, 8);
        EXPECT_GT(along, 10);
        const auto isAt = [](int side, int edge, int size) {
            return side == 9 ? std::abs(edge - 200) <= size / 2 + 3
                             : std::abs(edge - 200 - side * size) <= 4 + std::abs(side) * size / 2;
        };
        EXPECT_TRUE(isAt(c.left, ink.left(), ink.width())) << c.h << ", " << c.angle << ": " << ink.left();
        EXPECT_TRUE(isAt(c.right, ink.right(), ink.width())) << c.h << ", " << c.angle << ": " << ink.right();
        EXPECT_TRUE(isAt(c.top, ink.top(), ink.height())) << c.v << ", " << c.angle << ": " << ink.top();
        EXPECT_TRUE(isAt(c.bottom, ink.bottom(), ink.height()))
            << c.v << ", " << c.angle << ": " << ink.bottom();
    }
}

TEST(QtDriver, TruncatesPixelsFromTheTopAndClipsToTheViewport)
{
    QImage picture(100, 50, QImage::Format_RGB32);
    picture.fill(Qt::blue);
    QtDriver driver(&picture);
    driver.BeginPage(0);
    driver.SetViewport(0.2F, 0.3F, 0.8F, 0.9F);
    EXPECT_EQ(driver.viewportRectangle(), QRect(QPoint(20, 5), QPoint(80, 35)));
    driver.ClearViewport();
    driver.SetColor(1, 0, 0);
    driver.SetLineWidth(0.1F);  // one pixel
    driver.SetClip(true);
    driver.MoveTo(-1, 0.49F);
    driver.LineTo(1e30F, 0.49F);
    driver.SetClip(false);
    driver.SetWindow(0, 0, 60, 30);
    driver.Dot(-10.01F, 33.01F);
    driver.EndPage();
    const QRgb red = qRgb(255, 0, 0), blue = qRgb(0, 0, 255), white = qRgb(255, 255, 255);
    EXPECT_EQ(picture.pixel(19, 20), blue);
    EXPECT_EQ(picture.pixel(20, 20), red);
    EXPECT_EQ(picture.pixel(80, 20), red);
    EXPECT_EQ(picture.pixel(81, 20), blue);
    EXPECT_EQ(picture.pixel(50, 19), white);
    EXPECT_EQ(picture.pixel(50, 21), white);
    EXPECT_EQ(picture.pixel(9, 1), red);
}

TEST(QtDriver, EveryPixelOfAHighDensityPictureCounts)
{
    QImage picture(200, 100, QImage::Format_RGB32);
    picture.setDevicePixelRatio(2.0);
    picture.fill(Qt::white);
    QtDriver driver(&picture);
    driver.BeginPage(0);
    EXPECT_EQ(driver.deviceRectangle(), QRect(0, 0, 200, 100));
    EXPECT_EQ(driver.characterUnit(), 22);
    driver.SetColor(1, 0, 0);
    driver.SetLineWidth(0.1F);
    driver.SetWindow(0, 0, 200, 100);
    driver.MoveTo(51.5F, 0);
    driver.LineTo(51.5F, 100);
    driver.EndPage();
    std::string row;
    for (int x = 48; x < 56; ++x)
        row += picture.pixel(x, 50) == qRgb(255, 0, 0) ? '#' : '.';
    EXPECT_EQ(row, "..##....") << "two pixels wide, at an odd one";
}

TEST(QtDriver, DrawsInsideTheFrameOfAQFrame)
{
    class Canvas : public QFrame
    {
    public:
        QtDriver driver{this};

    protected:
        void paintEvent(QPaintEvent*) override
        {
            driver.BeginPage(0);
            driver.EndPage();
        }
    };
    Canvas canvas;
    canvas.setFrameShape(QFrame::Box);
    canvas.setFrameShadow(QFrame::Plain);
    canvas.setLineWidth(3);
    canvas.resize(200, 100);
    canvas.grab();
    EXPECT_EQ(canvas.driver.deviceRectangle(), QRect(3, 3, 194, 94));
}

TEST(QtDriver, SaysWhenThePainterIsNotReady)
{
    QtDriver driver(static_cast<QPaintDevice*>(nullptr));
    testing::internal::CaptureStdout();
    driver.SetColor(1, 0, 0);
    driver.FontControl(1, 0);
    driver.MoveTo(0, 0);
    driver.LineTo(1, 1);
    driver.Text("x", 0, 0, 0);
    driver.Arc(0, 0, 1, 0, 360, true);
    driver.EndPage();
    EXPECT_EQ(testing::internal::GetCapturedStdout(),
              "QtDriver::SetColor - painter not ready!\nQtDriver::FontControl - painter not ready!\n");
}

// A printer of old: a paint engine of type PostScript, which records nothing.
class OldEngine : public QPaintEngine
{
public:
    OldEngine() : QPaintEngine(QPaintEngine::AllFeatures) {}
    bool begin(QPaintDevice*) override { return true; }
    bool end() override { return true; }
    void updateState(const QPaintEngineState&) override {}
    void drawPixmap(const QRectF&, const QPixmap&, const QRectF&) override {}
    Type type() const override { return kPostScriptEngine; }
};

class OldPrinter : public QPdfWriter
{
public:
    explicit OldPrinter(QIODevice* device) : QPdfWriter(device) {}

    int pages = 1;

    QPaintEngine* paintEngine() const override { return &m_engine; }
    bool newPage() override { return ++pages > 0; }

protected:
    int metric(PaintDeviceMetric metric) const override
    {
        if (metric == PdmWidth)
            return 1200;
        if (metric == PdmHeight)
            return 2400;
        return metric == PdmDepth ? 24 : QPdfWriter::metric(metric);
    }

private:
    mutable OldEngine m_engine;
};

TEST(QtDriver, SizesFollowThePageOfAPostScriptEngine)
{
    QBuffer ignored;
    OldPrinter printer(&ignored);
    printer.setPageMargins(QMarginsF(0, 0, 0, 0));
    QtDriver driver(&printer);
    driver.BeginPage(0);
    EXPECT_EQ(driver.deviceRectangle(), QRect(100, 100, 1000, 2200));  // a twelfth for each margin of none
    EXPECT_EQ(driver.characterUnit(), 1000 / 60);
    EXPECT_EQ(driver.lineUnit(), 22);
    EXPECT_EQ(printer.pages, 1);
    driver.EndPage();
    EXPECT_EQ(printer.pages, 2);
}

}  // namespace
