// A file as a picture: what its pixels show at any zoom.

#include "core/CellImage.h"

#include <gtest/gtest.h>

#include <cmath>

#include "core/Group.h"
#include "core/PlotValues.h"

using namespace veltrac;

namespace {

// Rows of 400 columns, all 1 but for one cell.
std::shared_ptr<PlotValues> quietBut(std::uint32_t rows, std::uint32_t row, std::uint32_t column, float value)
{
    std::vector<double> x(rows);
    std::vector<std::vector<float>> columns(400, std::vector<float>(rows, 1.0F));
    for (std::uint32_t r = 0; r < rows; ++r)
        x[r] = r;
    columns[column - 1][row - 1] = value;
    return std::make_shared<PlotValues>(std::move(x), columns);
}

}  // namespace

TEST(CellImage, ABurstOfOneCellIsSeenAtEveryZoomAndAMeanWeighsItDown)
{
    // More cells than are held, so that three samples stand together.
    Group group;
    group.image = std::make_shared<CellImage>(quietBut(50'000, 31'234, 300, 9.0F), 0.5, "V");
    CellImage& image = *group.image;
    ASSERT_EQ(image.build({}), JobOutcome::Done);
    group.fitY();
    EXPECT_EQ(group.y1(), 0.25);
    EXPECT_EQ(group.y2(), 200.25);
    EXPECT_EQ(image.low, 1.0);
    EXPECT_EQ(image.high, 9.0);
    EXPECT_EQ(image.valueAt(31'234, 150.1), 9.0F);
    EXPECT_TRUE(std::isnan(image.valueAt(31'234, 0.2)));
    EXPECT_TRUE(std::isnan(image.valueAt(50'001, 10.0)));
    std::vector<float> pixels;
    const auto burst = [&](const std::vector<double>& rows, const std::vector<double>& places,
                           std::size_t pixel) {
        image.render(rows, places, pixels);
        for (std::size_t p = 0; p < pixels.size(); ++p)
            if ((pixels[p] > 1.0F) != (p == pixel))
                return false;
        return true;
    };
    const std::vector<double> places{0.25, 100.0, 149.75, 150.25, 200.25};
    EXPECT_TRUE(burst({1.0, 20'000.0, 31'000.0, 40'000.0, 50'001.0}, places, 2 * 4 + 2));  // from groups
    EXPECT_TRUE(burst({31'000.0, 31'234.0, 31'235.0, 31'300.0}, places, 2 * 3 + 1));       // read
    EXPECT_TRUE(burst({31'234.25, 31'234.5, 31'235.0, 31'235.5}, {149.9, 150.0, 150.3}, 99) == false);
    EXPECT_EQ(pixels[0], 9.0F);  // wider than a pixel, the cell fills several
    EXPECT_EQ(pixels[1], 9.0F);
    EXPECT_EQ(pixels[2], 1.0F);
    image.showsMeans = true;
    image.render(std::vector<double>{31'234.0, 31'238.0}, std::vector<double>{149.75, 150.75}, pixels);
    EXPECT_FLOAT_EQ(pixels[0], (9.0F + 7.0F) / 8.0F);
    // Nothing is drawn where the series has not begun.
    image.render(std::vector<double>{-50.0, -10.0, 10.0}, std::vector<double>{10.0, 20.0}, pixels);
    EXPECT_TRUE(std::isnan(pixels[0]));
    EXPECT_EQ(pixels[1], 1.0F);
}

TEST(CellImage, SilenceTakesNoColours)
{
    std::vector<double> x(100);
    std::vector<float> column(100, kNoLevel);
    for (std::size_t r = 0; r < x.size(); ++r) {
        x[r] = static_cast<double>(r);
        if (r >= 60)
            column[r] = -static_cast<float>(r);
    }
    CellImage image(std::make_shared<PlotValues>(x, std::vector<std::vector<float>>{column}), 0.5, "dB");
    ASSERT_EQ(image.build({}), JobOutcome::Done);
    EXPECT_EQ(image.low, -97.0);
    EXPECT_EQ(image.high, -60.0);
}
