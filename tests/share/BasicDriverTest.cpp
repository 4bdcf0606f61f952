#include "share/BasicDriver.h"

#include <gtest/gtest.h>

#include <sstream>
#include <vector>

#include "share/Dashes.h"

using namespace veltrac;

namespace {

// Writes down what reaches the device, which is 100 to 300 by 50 to 150.
class Recorder : public BasicDriver
{
public:
    Recorder()
    {
        m_deviceXMin = 100.0F;
        m_deviceXMax = 300.0F;
        m_deviceYMin = 50.0F;
        m_deviceYMax = 150.0F;
    }

    float lineWidth() const { return m_lineWidth; }
    std::string taken()
    {
        std::string text = m_log.str();
        m_log.str("");
        return text;
    }

    void SetClip(bool) override {}
    void ClearViewport() override {}
    void DrawMarker(float, float, int, int) override {}
    void SetLineStyle(int style) override { m_lineStyle = style; }
    void SetLineWidth(float width) override { m_lineWidth = width; }
    void DeviceLineTo(float x, float y) override { m_log << "L" << x << ',' << y << ' '; }
    void DeviceMoveTo(float x, float y) override { m_log << "M" << x << ',' << y << ' '; }
    void Arc(float, float, float, float, float, bool) override {}
    void Text(const char* string, int, float, int) override { m_log << '"' << string << "\" "; }
    void TextExtent(const char* string, float* width, float* height) override
    {
        if (width != nullptr)
            *width = static_cast<float>(std::string(string).size()) * 0.03F;
        if (height != nullptr)
            *height = 0.1F;
    }
    void SetColor(float r, float g, float b) override
    {
        if (!isCurrentColor(r, g, b))
            m_log << "C" << r << ',' << g << ',' << b << ' ';
        BasicDriver::SetColor(r, g, b);
    }

private:
    std::ostringstream m_log;
};

TEST(BasicDriver, MapsTheWindowOntoTheViewport)
{
    Recorder driver;
    driver.MoveTo(0.5F, 0.25F);
    EXPECT_EQ(driver.taken(), "M200,75 ");
    driver.SetViewport(0.5F, 0.0F, 1.0F, 0.5F);
    const float window[] = {-1.0F, 10.0F, 1.0F, 30.0F};
    driver.SetWindow(window);
    driver.MoveTo(-1, 10);
    driver.LineTo(1, 30);
    driver.Rectangle(0, 20, 1, 30, 0);
    driver.Dot(0, 20);
    EXPECT_EQ(driver.taken(), "M200,50 L300,100 M250,75 L300,75 L300,100 L250,100 L250,75 M250,75 L250,75 ");
    driver.SetWindow(5, 10, 5, 30);  // no width: the x scale stays, the origin moves
    driver.LineTo(6, 30);
    EXPECT_EQ(driver.taken(), "L250,100 ");
    float all[4] = {9, 9, 9, 9};
    driver.GetMaxViewport(all);
    EXPECT_EQ(std::vector<float>(all, all + 4), (std::vector<float>{0, 0, 1, 1}));
}

TEST(BasicDriver, ColourTableTakesTheNewestAndIgnoresTheUnknown)
{
    Recorder driver;
    EXPECT_EQ(driver.NextColorIndex(), 7);
    driver.SelectColor(1);
    driver.DefineColor(3, 1, 0, 0);
    EXPECT_EQ(driver.NextColorIndex(), 7);
    driver.DefineColor(9, 0, 1, 0);
    driver.DefineColor(3, 0, 0, 1);
    EXPECT_EQ(driver.NextColorIndex(), 10);
    driver.SelectColor(3);
    driver.SetColor(0.005F, 0, 1);
    driver.SelectColor(8);
    EXPECT_EQ(driver.taken(), "C0,0,1 ");
    driver.BeginPage(0);
    driver.SelectColor(3);
    EXPECT_EQ(driver.taken(), "C0,0,1 ");
}

TEST(BasicDriver, AxesStandAtTheWindowsEdges)
{
    Recorder driver;
    driver.SetColor(0, 0, 0);
    driver.SetViewport(0.25F, 0.25F, 0.75F, 0.75F);
    driver.SetWindow(0, 0, 10, 10);
    driver.taken();
    AxisStyle style;
    style.origin = 1e9;  // labels in double, places in float
    style.grid = GridStyle::Gray;
    const AxisTicks ticks{
        {{1e9 - 5, "out", true}, {1e9, "0", true}, {1e9 + 5, "", false}}, 3, "x10^3", "left"};
    driver.DrawXAxis(ticks, style);
    EXPECT_EQ(driver.taken(),
              "C0.8,0.8,0.8 M150,75 L150,125 C0,0,0 M150,75 L150,70 M200,75 L200,72.5 M150,66.5 \"0\" "
              "M150,54 \"left\" M250,54 \"x10^3\" ");
    style.grid = GridStyle::None;
    style.title = "Volt";  // between the texts at the ends, which leave it no room in the middle
    driver.DrawXAxis(ticks, style);
    const std::string axis = driver.taken();
    EXPECT_TRUE(axis.ends_with("M198,54 \"Volt\" ")) << axis;
    // Light letters stand on a dark ground, whose grid is dark as well.
    driver.SetColor(1, 1, 1);
    driver.SetLineWidth(3);
    style.grid = GridStyle::Gray;
    driver.DrawYAxis(ticks, style);
    EXPECT_NE(driver.taken().find("C0.35,0.35,0.35 "), std::string::npos);
    EXPECT_EQ(driver.lineWidth(), 3.0F);
    driver.SetColor(0, 0, 0);
    driver.taken();
    style.grid = GridStyle::None;
    style.title = "V";
    driver.DrawYAxis(ticks, style);
    // 8.5 for tick and gap, 5 characters of 6, 16 for the title
    EXPECT_EQ(driver.taken(),
              "M150,75 L145,75 M150,100 L147.5,100 M141.5,75 \"0\" M141.5,134 \"x10^3\" "
              "M95.5,100 \"V\" ");
}

TEST(BasicDriver, DashesGoRoundCornersToTheEnd)
{
    Recorder driver;
    veltrac::drawDashes({0, 0, 10, 0, 10, 10}, {12, 3}, driver);
    EXPECT_EQ(driver.taken(), "M0,0 L10,0 L10,2 M10,5 L10,10 ");
}

TEST(BasicDriver, MarkersEndAndBeginAgainBehindTheLast)
{
    Recorder driver;
    EXPECT_EQ(driver.MarkerStrokes(0)->code, MarkerStroke::End);
    EXPECT_EQ(driver.MarkerStrokes(-4)->code, MarkerStroke::End);
    EXPECT_EQ(driver.MarkerStrokes(kMarkerCount + 2), driver.MarkerStrokes(2));
    for (int marker = 1; marker <= kMarkerCount; ++marker) {
        const MarkerStroke* stroke = driver.MarkerStrokes(marker);
        EXPECT_EQ(stroke->code, MarkerStroke::Move) << marker;
        while (stroke->code != MarkerStroke::End)
            ++stroke;
        EXPECT_EQ(stroke + 1 == driver.MarkerStrokes(marker + 1), marker < kMarkerCount) << marker;
    }
}

}  // namespace
