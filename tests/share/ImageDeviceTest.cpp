// Pictures of pixels on every kind of driver, and the colours of values.

#include "share/ImageDevice.h"

#include <gtest/gtest.h>
#include <zlib.h>

#include <algorithm>
#include <cmath>
#include <fstream>
#include <iterator>
#include <limits>
#include <string>

#include "share/ColorMap.h"
#include "share/EpsFile.h"
#include "share/PostscriptDriver.h"
#include "share/PsImage.h"
#include "share/SvgDriver.h"
#include "tests/core/TsFileBytes.h"

using namespace veltrac;

namespace {

// Two pixels wide, three high; red above left.
const PixelImage kFlag{2, 3, {255, 0, 0, 0, 255, 0, 0, 0, 255, 1, 2, 3, 4, 5, 6, 7, 8, 9}};

template <typename Driver, typename... Parameters>
std::string drawn(const char* name, const Parameters&... parameters)
{
    Driver driver(name, parameters...);
    driver.BeginPage(0);
    driver.SetViewport(0.25F, 0.2F, 0.5F, 0.7F);
    driver.SetClip(true);
    driver.SetWindow(0.0F, 0.0F, 2.0F, 2.0F);
    drawImage(driver, 0.0F, 1.0F, 2.0F, 2.0F, kFlag);
    driver.EndPage();
    EXPECT_TRUE(driver.finish());
    const std::vector<unsigned char> bytes = bytesOf(name);
    return {bytes.begin(), bytes.end()};
}

}  // namespace

TEST(ImageDevice, PostscriptAndSvgHoldThePixelsInTheirPlace)
{
    const TestDirectory directory;
    const std::string eps = drawn<PostscriptDriver>("a.eps");
    EXPECT_NE(eps.find("gsave 210.50 267.75 translate 210.50 148.75 scale\n[/Indexed /DeviceRGB 5 <\n"
                       "0000ff00ff00010203040506070809ff0000\n>] setcolorspace\n"
                       "{ /_i currentfile /ASCIIHexDecode filter def\n"
                       "<< /ImageType 1 /Width 2 /Height 3 /BitsPerComponent 8\n"
                       "/ImageMatrix [2 0 0 -3 0 3] /Decode [0 255]\n"
                       "/DataSource _i /RunLengthDecode filter >> image _i flushfile } exec\n"
                       "0505010002030480\n>\ngrestore\n"),
              std::string::npos)
        << eps;
    const std::string svg = drawn<SvgDriver>("a.svg", PsParameters());
    EXPECT_NE(svg.find("<image x=\"210.5\" y=\"178.5\" width=\"210.5\" height=\"148.75\""), std::string::npos)
        << svg;
    EXPECT_NE(
        svg.find("<clipPath id=\"c1\"><rect x=\"210.5\" y=\"178.5\" width=\"210.5\" height=\"297.5\"/>"),
        std::string::npos)
        << svg;
    EXPECT_NE(svg.find("data:image/png;base64,iVBORw0KGgoAAAANSUhEUgAAAAIAAAADCAIAAAA2iEnWAAAA"),
              std::string::npos)
        << svg;
}

TEST(ImageDevice, PostscriptCutsRunsAndTakesManyColoursAsTheyAre)
{
    // Two long runs and three single pixels of two colours.
    PixelImage runs{150, 1, {}};
    for (int i = 0; i < runs.width; ++i) {
        const std::uint8_t grey = i < 140 || i == 141 ? 0 : i < 143 ? 255 : 9;
        runs.rgb.insert(runs.rgb.end(), 3, grey);
    }
    const std::vector<std::string> few = psImageLines(runs);
    EXPECT_EQ(few[1], "000000090909ffffff");
    EXPECT_EQ(few[few.size() - 2], "8100f50002020002fa0180");
    PixelImage many{257, 1, {}};
    for (int i = 0; i < many.width; ++i)
        for (const int part : {i / 256, i % 256, 7})
            many.rgb.push_back(static_cast<std::uint8_t>(part));
    const std::vector<std::string> lines = psImageLines(many);
    EXPECT_EQ(lines.front(), "/DeviceRGB setcolorspace");
    EXPECT_NE(lines[3].find("/Decode [0 1 0 1 0 1]"), std::string::npos);
    EXPECT_EQ(lines[5].substr(0, 20), "7f000007000107000207");
}

TEST(SvgDriver, KeepsTextsAsTextsWhateverStandsInThem)
{
    const TestDirectory directory;
    writeSvg("t.svg", PsParameters(), [](BasicDriver& driver) {
        float width = 0.0F;
        driver.TextExtent("mm", &width, nullptr);
        EXPECT_NEAR(width, 16.8F / 842.0F, 0.001F) << "in the base size, before a font is chosen";
        driver.MoveTo(0.5F, 0.5F);
        driver.Text("<Größe> & \x01 m", 0, 0.0F, 0);
        driver.Text("\xB5m", 0, 0.0F, 0);  // as older files have it
        driver.Text("no\uFFFF\uFFFEletters¿", 0, 0.0F, 0);
        driver.DeviceMoveTo(std::nanf(""), 1.0F);
        driver.DeviceLineTo(5.0F, 5.0F);
        driver.Text("nowhere", 0, std::nanf(""), 0);
        driver.MoveTo(0.0F, 0.0F);
        driver.LineTo(1.0F, 1.0F);
        driver.Dot(0.5F, 0.5F);
        driver.LineTo(1.0F, 0.0F);
        driver.Arc(0.5F, 0.5F, 0.25F, 0.0F, 90.0F, false);
        const float corners[] = {0.0F, 0.0F, 1.0F, 0.0F, 1.0F, 1.0F, 0.5F, 0.5F};
        driver.Polyline(corners, 3, true, false);
        driver.SetTextJustification(1.5F, 0.0F);
        driver.Text("beyond", 0, 0.0F, 0);
    });
    std::ifstream in("t.svg");
    const std::string svg{std::istreambuf_iterator<char>(in), {}};
    EXPECT_NE(svg.find(">&lt;Größe&gt; &amp;   m</text>"), std::string::npos) << svg;
    EXPECT_NE(svg.find(">µm</text>"), std::string::npos);
    EXPECT_NE(svg.find("sans-serif\" font-size=\"14\" text-anchor=\"start\" fill=\"#000000\">µm"),
              std::string::npos)
        << "the font of a page on which none was chosen";
    EXPECT_EQ(svg.find("nan"), std::string::npos);
    EXPECT_NE(svg.find(">no\uFFFD\uFFFDletters¿</text>"), std::string::npos);
    EXPECT_EQ(svg.find("nowhere"), std::string::npos);
    EXPECT_LT(svg.find("L842 0"), svg.find("l0 0.01")) << "a line is drawn before the dot on it";
    EXPECT_LT(svg.find("L842 595"), svg.find(" A148.75"));
    EXPECT_NE(svg.find("\"M0 595 L842 595 L842 0 Z\""), std::string::npos) << svg;
    EXPECT_NE(svg.find("<text x=\"-4.2\""), std::string::npos) << "half a letter behind its end";
}

TEST(ImageDevice, PngHoldsTheLinesAndItsSums)
{
    const std::vector<std::uint8_t> png = pngBytes(kFlag);
    const std::string type = "IDAT";
    const auto data = std::search(png.begin(), png.end(), type.begin(), type.end());
    ASSERT_NE(data, png.end());
    const std::uint8_t* const stream = &*data + type.size();
    const std::uint32_t length = std::uint32_t{data[-2]} << 8 | data[-1];
    EXPECT_EQ(::crc32(0, &*data, length + 4), stream[length] * 0x1000000UL + stream[length + 1] * 0x10000UL +
                                                  stream[length + 2] * 0x100UL + stream[length + 3]);
    // A filter of none before each line.
    std::vector<std::uint8_t> lines(3 * 7);
    uLongf size = lines.size();
    ASSERT_EQ(::uncompress(lines.data(), &size, stream, length), Z_OK);
    EXPECT_EQ(size, lines.size());
    for (std::size_t y = 0; y < 3; ++y) {
        EXPECT_EQ(lines[7 * y], 0);
        EXPECT_TRUE(std::equal(kFlag.rgb.begin() + static_cast<std::ptrdiff_t>(6 * y),
                               kFlag.rgb.begin() + static_cast<std::ptrdiff_t>(6 * y + 6),
                               lines.begin() + static_cast<std::ptrdiff_t>(7 * y + 1)))
            << y;
    }
    const std::vector<std::uint8_t> end{0, 0, 0, 0, 'I', 'E', 'N', 'D', 0xAE, 0x42, 0x60, 0x82};
    EXPECT_TRUE(std::equal(end.rbegin(), end.rend(), png.rbegin()));
}

TEST(ColorMap, LightnessRisesEvenlyInGreyTooAndValuesBeyondTakeTheEnds)
{
    const auto grey = [](MapColor c) { return 0.299 * c.r + 0.587 * c.g + 0.114 * c.b; };
    double before = -1.0;
    for (int step = 0; step <= 16; ++step) {
        const double now = grey(mappedColor(step, 0.0, 16.0));
        EXPECT_GT(now, before + 4.0) << step;
        EXPECT_LT(now, before + 40.0) << step;
        before = now;
    }
    EXPECT_EQ(grey(mappedColor(-5.0, 0.0, 1.0)), grey(colorMap().front()));
    EXPECT_EQ(grey(mappedColor(std::numeric_limits<double>::quiet_NaN(), 0.0, 1.0)),
              grey(colorMap().front()));
    EXPECT_EQ(grey(mappedColor(5.0, 0.0, 1.0)), grey(colorMap().back()));
}
