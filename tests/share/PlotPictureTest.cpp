// A plot on the screen beside the same plot on paper, rendered by Ghostscript.
#include <gtest/gtest.h>

#include <QImage>
#include <QProcess>
#include <QTemporaryDir>

#include <cmath>

#include "core/PlotValues.h"
#include "share/EpsFile.h"
#include "share/PlotPainter.h"
#include "share/PostscriptDriver.h"
#include "share/QtDriver.h"

using namespace veltrac;

namespace {

constexpr int kWidth = 1100;
constexpr int kHeight = 778;  // the sheet's proportions

Plot2D plotOf(const std::vector<float>& values)
{
    std::vector<double> x(values.size());
    for (std::size_t i = 0; i < x.size(); ++i)
        x[i] = 0.001 * static_cast<double>(i);
    const auto source = std::make_shared<PlotValues>(x, std::vector<std::vector<float>>{values});
    Plot2D plot;
    plot.grid = PlotGrid::None;
    plot.groups().emplace_back().variables().push_back(std::make_shared<HsVariable>(Variable(source, 1)));
    plot.buildMissing({});
    plot.fitAll();
    return plot;
}

struct Picture
{
    QImage image;
    PlotLayout::Frame frame;
};

Picture onScreen(const Plot2D& plot)
{
    QImage image(kWidth, kHeight, QImage::Format_RGB32);
    image.fill(Qt::white);
    QtDriver driver(&image);
    driver.BeginPage(0);
    const PlotLayout layout = drawPlot(plot, driver, kWidth);
    driver.EndPage();
    return {image, layout.groups.front()};
}

Picture onPaper(const Plot2D& plot)
{
    const QTemporaryDir directory;
    const QString eps = directory.filePath(QStringLiteral("plot.eps"));
    const QString png = directory.filePath(QStringLiteral("plot.png"));
    const PsParameters parameters;
    PlotLayout layout;
    writeEps(eps.toStdString(), parameters, [&](PostscriptDriver& driver) {
        layout = drawPlot(plot, driver, paperColumns(parameters), paperLook(parameters, plot.grid));
    });
    QProcess process;
    process.setProcessChannelMode(QProcess::MergedChannels);
    process.start(QStringLiteral("gs"),
                  {"-q", "-dNOPAUSE", "-dBATCH", "-dSAFER", "-dEPSCrop", "-sDEVICE=png16m", "-dEPSFitPage",
                   QStringLiteral("-g%1x%2").arg(kWidth).arg(kHeight), "-sOutputFile=" + png, eps});
    EXPECT_TRUE(process.waitForFinished(60000));
    EXPECT_EQ(process.readAll().toStdString(), "");
    return {QImage(png), layout.groups.front()};
}

// Highest and lowest ink of the curve, which is blue, around a place of the frame's width; in parts of the
// frame's height from below. Nothing where there is none.
struct Ink
{
    double low = 2.0, high = -1.0;
};

Ink inkAt(const Picture& picture, double place, int reach)
{
    const double left = static_cast<double>(picture.frame.x1) * kWidth;
    const double right = static_cast<double>(picture.frame.x2) * kWidth;
    const double bottom = (1.0 - static_cast<double>(picture.frame.y1)) * kHeight;
    const double top = (1.0 - static_cast<double>(picture.frame.y2)) * kHeight;
    const int middle = static_cast<int>(left + place * (right - left));
    Ink ink;
    for (int x = middle - reach; x <= middle + reach; ++x)
        for (int y = static_cast<int>(top) + 3; y < static_cast<int>(bottom) - 3; ++y) {
            const QRgb pixel = picture.image.pixel(x, y);
            if (qBlue(pixel) - qRed(pixel) < 40)
                continue;
            const double height = (bottom - y) / (bottom - top);
            ink.low = std::min(ink.low, height);
            ink.high = std::max(ink.high, height);
        }
    return ink;
}

TEST(PlotPicture, screenAndPaperShowTheSameCurve)
{
    std::vector<float> few(300);
    for (std::size_t i = 0; i < few.size(); ++i)
        few[i] = static_cast<float>(std::sin(static_cast<double>(i) * 0.05));
    std::vector<float> many(500'000);
    for (std::size_t i = 0; i < many.size(); ++i)
        many[i] =
            static_cast<float>(std::sin(static_cast<double>(i) * 2e-5) * (1.0 + (i % 7 == 0 ? 0.5 : 0.0)));
    many[123'456] = 4.0F;
    for (const std::vector<float>& values : {few, many}) {
        const Plot2D plot = plotOf(values);
        const Picture screen = onScreen(plot);
        const Picture paper = onPaper(plot);
        ASSERT_EQ(paper.image.size(), screen.image.size());
        constexpr double kPixels = 3.0 / kHeight;
        for (int i = 2; i < 98; ++i) {
            const double place = i / 100.0;
            // What one of them has, the other has within two pixels.
            for (const auto& [one, other] : {std::pair{&screen, &paper}, std::pair{&paper, &screen}}) {
                const Ink narrow = inkAt(*one, place, 0);
                const Ink wide = inkAt(*other, place, 2);
                EXPECT_LE(wide.low, narrow.low + kPixels) << values.size() << " at " << place;
                EXPECT_GE(wide.high, narrow.high - kPixels) << values.size() << " at " << place;
            }
        }
        // The spike of one sample.
        for (const Picture* const picture : {&screen, &paper}) {
            const bool hasSpike = values.size() == many.size();
            EXPECT_EQ(inkAt(*picture, 123'456.0 / 499'999.0, 1).high > 0.9, hasSpike);
        }
    }
}

}  // namespace
