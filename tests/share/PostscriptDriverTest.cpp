#include "share/PostscriptDriver.h"

#include <gtest/gtest.h>

#include <cmath>
#include <filesystem>
#include <fstream>
#include <functional>
#include <sstream>

#include "share/Transliteration.h"
#include "tests/core/TsFileBytes.h"

using namespace veltrac;

namespace {

using Draw = std::function<void(PostscriptDriver&)>;

std::string fileOf(const PsParameters* parameters, const Draw& draw)
{
    const TestDirectory directory;
    const std::filesystem::path path = "a.eps";
    {
        PostscriptDriver driver(path.c_str(), parameters);
        draw(driver);
    }
    std::ifstream stream(path, std::ios::binary);
    std::stringstream text;
    text << stream.rdbuf();
    return text.str();
}

// What is written for a drawing on a begun page, with the trailer cut off. Window and viewport are the whole
// device, so that world units are points.
std::string bytesOf(const Draw& draw, const PsParameters& parameters = PsParameters())
{
    std::string text = fileOf(&parameters, [&](PostscriptDriver& driver) {
        driver.BeginPage(0);
        driver.SetWindow(0.0F, 0.0F, 842.0F, 595.0F);
        driver.WriteLine("BEGIN");
        draw(driver);
        driver.WriteLine("END");
    });
    const std::size_t begin = text.find("BEGIN\n") + 6;
    return text.substr(begin, text.find("END\n") - begin);
}

constexpr const char* kProlog =
    "%%EndComments\n"
    "/saveobj save def gsave\n"
    "/_n { newpath } bind def\n"
    "/_m { transform round exch round exch\n"
    "      itransform moveto } bind def\n"
    "/_l { transform round exch round exch\n"
    "      itransform lineto } bind def\n"
    "/_d { transform round exch round exch\n"
    "      2 copy 1 add itransform newpath moveto\n"
    "      itransform lineto stroke } bind def\n"
    "/_s { stroke } bind def\n"
    "/_f { closepath fill } bind def\n"
    "/_w { setlinewidth } bind def\n"
    "/_P { setdash } bind def\n"
    "/_F { /cheight 2 index def\n"
    "      findfont exch scalefont setfont } bind def\n"
    "/_js { 2 index stringwidth pop\n"
    "       exch cheight mul 3 1 roll mul neg\n"
    "       exch neg rmoveto show } bind def\n"
    "/_ejs { gsave 3 index stringwidth pop div\n"
    "       currentfont exch scalefont setfont\n"
    "       moveto show grestore } bind def\n"
    "%%EndProlog\n"
    "1 setlinecap 1 setlinejoin\n";

constexpr const char* kPageStart =
    "[] 0 _P\n"
    "11.34 _w % 1.00 0.80\n"
    "0.000000 0.000000 0.000000 setrgbcolor\n";

TEST(PostscriptFile, EpsWithDefaultsIsRightToTheByte)
{
    const PsParameters defaults;
    const std::string expected = std::string(
                                     "%!PS-Adobe-2.0 EPSF-1.2\n"
                                     "%%Title: PostScript File\n"
                                     "%%Creator: Kestrane PostScript plotting facility\n"
                                     "%%BoundingBox: 0 0 842 595\n"
                                     "%%BoundingBox: 0 0 842 595\n"
                                     "%%Pages: 1\n"
                                     "%%DocumentFonts: Courier Helvetica\n") +
                                 kProlog + "%%Page: 1 1\n14 /Helvetica _F\n" + kPageStart +
                                 "showpage\n%%Trailer\n%%Pages: 1\nsaveobj restore\n";
    EXPECT_EQ(fileOf(&defaults,
                     [](PostscriptDriver& driver) {
                         driver.BeginPage(0);
                         driver.EndPage();
                     }),
              expected);
}

TEST(PostscriptFile, PaperRotationAndFontFollowTheRecord)
{
    const Draw page = [](PostscriptDriver& driver) { driver.BeginPage(2 * (driver.bytesWritten() == 0)); };
    PsParameters plain;
    plain.eps = false;
    const std::string turned = fileOf(&plain, page);
    EXPECT_EQ(turned.substr(0, 15), "%!PS-Adobe-2.0\n");
    EXPECT_NE(turned.find("%%BoundingBox: 0 0 595 842\n%%BoundingBox: 0 0 595 842\n"), std::string::npos);
    EXPECT_NE(turned.find("%%Page: 1 1\n90 rotate 0 -595 translate\n"), std::string::npos);
    const std::string kept = fileOf(&plain, [](PostscriptDriver& driver) { driver.BeginPage(2); });
    EXPECT_EQ(kept.find("rotate"), std::string::npos);
    // Margins only here: the viewport's outline is the area that they leave.
    EXPECT_NE(kept.find("gsave 1 setgray\n_n  56.7 56.7 _m  785.3 56.7 _l \n785.3 538.3 _l \n56.7 538.3 _l \n"
                        "fill grestore\n"),
              std::string::npos);

    PsParameters portrait;
    portrait.orientation = 0;
    portrait.paper = 3;
    PsParameters::setText(portrait.fontName, "Courier-Bold");
    const std::string letter = fileOf(&portrait, page);
    EXPECT_NE(letter.find("%%BoundingBox: 0 0 612 792\n"), std::string::npos);
    EXPECT_NE(letter.find("%%DocumentFonts: Courier Courier-Bold\n"), std::string::npos);
    EXPECT_NE(letter.find("14 /Courier _F\n"), std::string::npos);

    const std::string bare = fileOf(nullptr, page);
    EXPECT_NE(bare.find("%%Creator: unknown\n"), std::string::npos);
    EXPECT_NE(bare.find("14 /Times-Roman _F\n"), std::string::npos);
}

TEST(PostscriptFile, TextsOfTheRecordCannotBreakTheProlog)
{
    PsParameters record;
    PsParameters::setText(record.creator, "M\xC3\xBCller\nshowpage \xFF");
    const std::string text = fileOf(&record, [](PostscriptDriver&) {});
    EXPECT_NE(text.find("%%Creator: Mueller showpage y\n"), std::string::npos);
    const std::string longText = std::string(126, 'x') + "\xC3\xBC";
    PsParameters::setText(record.creator, longText.c_str());
    EXPECT_EQ(std::string(record.creator), std::string(126, 'x'));
}

struct Row
{
    const char* what;
    Draw draw;
    std::string bytes;
};

void checkRows(const std::vector<Row>& rows)
{
    for (const Row& row : rows)
        EXPECT_EQ(bytesOf(row.draw), row.bytes) << row.what;
}

std::string segments(int first, int last)
{
    std::string text;
    for (int i = first; i <= last; ++i)
        text += (i == first ? "_n  " + std::to_string(i - 1) + ".0 5.0 _m  " : "") + std::to_string(i) +
                ".0 5.0 _l \n";
    return text;
}

TEST(PostscriptPaths, AreWrittenStrokedAndClampedByTheRules)
{
    std::vector<float> many;
    for (int i = 0; i < 250; ++i)
        many.insert(many.end(), {static_cast<float>(i), 5.0F});
    const float far[] = {5000.0F, -5000.0F, -5000.0F, 5000.0F};
    const float line[] = {1.0F, 2.0F, 3.0F, 4.0F, 5.0F, 2.0F};
    checkRows({
        {"two sub-paths are one path",
         [](PostscriptDriver& d) {
             d.MoveTo(1, 2);
             d.LineTo(3, 4);
             d.MoveTo(5, 6);
             d.LineTo(7, 8);
             d.SetLineStyle(9);
         },
         "_n  1.0 2.0 _m  3.0 4.0 _l \n5.0 6.0 _m  7.0 8.0 _l \n_s\n[6 6] 0 _P\n"},
        {"a line goes on where the last stroke ended",
         [](PostscriptDriver& d) {
             d.MoveTo(1, 2);
             d.LineTo(3, 4);
             d.SetLineStyle(4);
             d.LineTo(5, 6);
             d.EndPage();
         },
         "_n  1.0 2.0 _m  3.0 4.0 _l \n_s\n[2 3] 0 _P\n_n  3.0 4.0 _m  5.0 6.0 _l \n_s\nshowpage\n"},
        {"clamped", [&](PostscriptDriver& d) { d.Polyline(far, 2, false, false); },
         "_n  2000.0 -999.0 _m  -999.0 2000.0 _l \n_s\n"},
        {"a stroke each 101 segments",
         [&](PostscriptDriver& d) { d.Polyline(many.data(), 250, false, false); },
         segments(1, 101) + "_s\n" + segments(102, 202) + "_s\n" + segments(203, 249) + "_s\n"},
        {"a fill is never broken up", [&](PostscriptDriver& d) { d.Polyline(many.data(), 250, false, true); },
         segments(1, 249) + "0.0 5.0 _l \n_f\n"},
        {"a pending path is stroked first",
         [&](PostscriptDriver& d) {
             d.MoveTo(0, 0);
             d.LineTo(9, 9);
             d.Polyline(line, 3, true, false);
         },
         "_n  0.0 0.0 _m  9.0 9.0 _l \n_s\n"
         "_n  1.0 2.0 _m  3.0 4.0 _l \n5.0 2.0 _l \n1.0 2.0 _l \n_s\n"},
        {"one point", [&](PostscriptDriver& d) { d.Polyline(line, 1, false, false); }, ""},
        {"dots and arcs are not clamped",
         [](PostscriptDriver& d) {
             d.Dot(100, 200.5F);
             d.Dot(5000, 0.5F);
             d.SetViewport(0, 0, 0.5F, 1);
             d.SetWindow(0, 0, 421, 595);
             d.Arc(3000, 20, 0.1F, 0, 90, true);
         },
         "100 200.5 _d\n5000 .5 _d\n_n 3000.0 20.0 42.1 0.0 90.0 arc fill\n"},
        {"a path is drawn before the text behind it",
         [](PostscriptDriver& d) {
             d.MoveTo(1, 2);
             d.LineTo(3, 4);
             d.Text("t", 0, 0, 0);
         },
         "_n  1.0 2.0 _m  3.0 4.0 _l \n_s\n3 4 _m(t) 0 0 _js\n"},
        {"a picture without pixels, and one without a place",
         [](PostscriptDriver& d) {
             d.DrawImage(1, 2, 3, 4, {0, 0, {}});
             d.DrawImage(std::nanf(""), 2, 3, 4, {1, 1, {1, 2, 3}});
         },
         ""},
        {"box", [](PostscriptDriver& d) { d.FilledBox(1, 2, 3, 4, true); },
         "_n  1.0 2.0 _m  3.0 2.0 _l \n3.0 4.0 _l \n1.0 4.0 _l \n1.0 2.0 _l \n_f\n"},
    });
}

TEST(PostscriptAttributes, AreWrittenOnlyWhenTheyChange)
{
    checkRows({
        {"colour",
         [](PostscriptDriver& d) {
             d.SetColor(0.5F, 0.25F, 1);
             d.SetColor(0.5F, 0.255F, 1);
             d.SetColor(0.5F, 0.27F, 1);
         },
         "0.500000 0.250000 1.000000 setrgbcolor\n0.500000 0.270000 1.000000 setrgbcolor\n"},
        {"styles",
         [](PostscriptDriver& d) {
             for (const int style : {0, 1, 2, 3, 5, 6, 7, 8, 8, 77})
                 d.SetLineStyle(style);
         },
         "[12 3] 0 _P\n[12 3 3 3] 0 _P\n[12 3 3 3 3 3] 0 _P\n[12 3 12 3 3 3 3 3] 0 _P\n[24 4] 0 _P\n"
         "[24 4 4 4] 0 _P\n[24 3 7 3] 0 _P\n[] 0 _P\n"},
        {"width",
         [](PostscriptDriver& d) {
             d.SetLineWidth(0.1F);
             d.SetLineWidth(0.1F);
         },
         "1.13 _w % 0.10 0.80\n"},
        {"font",
         [](PostscriptDriver& d) {
             d.FontControl(1, 0);
             d.FontControl(0, kFontBold);  // the record's own family is never bold
             d.FontControl(0.5F, kFontCourier | kFontBold);
             d.FontControl(10, kFontTimes | kFontSizeInPoints);
             d.FontControl(0.01F, kFontHelvetica | kFontSizeInMetres);
         },
         " 7 /Courier-Bold _F\n10 /Times-Roman _F\n28.3 /Helvetica _F\n"},
        {"what changes nothing leaves the path open",
         [](PostscriptDriver& d) {
             d.LineTo(1, 1);
             d.FontControl(1, 0);
             d.Text(" \t", 0, 0, 0);
             d.LineTo(0, 1);
         },
         "_n  0.0 0.0 _m  1.0 1.0 _l \n0.0 1.0 _l \n"},
        {"a clip that ends is forgotten with all it held",
         [](PostscriptDriver& d) {
             d.SetClip(false);
             d.SetViewport(0.25F, 0.2F, 0.5F, 1);
             d.SetClip(true);
             d.SetColor(1, 0, 0);
             d.SetClip(false);
             d.SetColor(0, 0, 0);
             d.SetLineStyle(0);
             d.FontControl(1, 0);
         },
         "gsave\n_n  210.5 119.0 _m  421.0 119.0 _l \n421.0 595.0 _l \n210.5 595.0 _l \nclosepath clip\n"
         "1.000000 0.000000 0.000000 setrgbcolor\ngrestore\n0.000000 0.000000 0.000000 setrgbcolor\n"
         "[] 0 _P\n14 /Helvetica _F\n"},
    });
}

TEST(PostscriptText, IsEscapedCompactedJustifiedAndTurned)
{
    const auto text = [](const char* string, float h, float v, int length = 0, float angle = 0.0F) {
        return [=](PostscriptDriver& d) {
            d.MoveTo(100, 20.5F);
            d.SetTextJustification(h, v);
            d.SetTextJustification(-999.0F, -900.0F);
            d.Text(string, length, angle, 0);
        };
    };
    checkRows({
        {"escapes", text("a(b)c\\", 0, 0.5F), "100 20.5 _m(a\\(b\\)c\\\\) 0 .5 _js\n"},
        {"numbers in the text stay", text("1.00  0.50 \n", 0.5F, 1), "100 20.5 _m(1.00  0.50) .5 1 _js\n"},
        {"length", text("abcdef", 0, 0, 3), "100 20.5 _m(abc) 0 0 _js\n"},
        {"empty", text(" \t", 0, 0), ""},
        {"right of the right end", text("x", 1.5F, 0), "95.8 20.5 _m(x) 1 0 _js\n"},
        {"left of the left end", text("x", -0.5F, 0), "104.2 20.5 _m(x) 0 0 _js\n"},
        {"turned", text("x", 1.5F, 0, 0, 90.0F),
         "gsave 100 20.5 translate 90 rotate\n-4.2 0 _m(x) 1 0 _js\ngrestore\n"},
        {"not ASCII", text("5 µm² ß 10⁻³ Ω\xFC", 0, 0), "100 20.5 _m(5 um^2 \\373 10^-3 Ohmue) 0 0 _js\n"},
        {"stamp, and the font again behind it",
         [](PostscriptDriver& d) {
             d.DrawStamp(0, "V(1)");
             d.MoveTo(1, 1);
             d.SetTextJustification(0, 0);
             d.Text("t", 0, 0, 0);
         },
         "gsave 5.0 /AvantGarde-DemiOblique _F 0 0 .3 setrgbcolor 4.0 4.0 _m 1 1.5 scale (V\\(1\\)) show "
         "grestore\n14 /Helvetica _F\n1 1 _m(t) 0 0 _js\n"},
        {"stamp in a frame as wide as it", [](PostscriptDriver& d) { d.DrawStamp(1, "Vel"); },
         "gsave 4.0 4.0 translate 1.000000 1.000000 scale\n"
         "0.3 setlinewidth [] 0 _P 0 0 .3 setrgbcolor _n 0 0 moveto 18.5 0 lineto\n"
         "18.5 12 lineto 0 12 lineto closepath stroke\n"
         "gsave 5.0 /AvantGarde-DemiOblique _F 0 0 .3 setrgbcolor 4.0 4.0 _m 1 1.5 scale (Vel) show "
         "grestore\ngrestore\n"},
    });
}

TEST(PostscriptText, LongLinesAreCutInsideTheTextNeverInsideAnEscape)
{
    for (int shift = 0; shift < 5; ++shift) {
        const std::string text = std::string(static_cast<std::size_t>(shift), 'x') + [] {
            std::string s;
            for (int i = 0; i < 90; ++i)
                s += "(§";
            return s;
        }();
        const std::string line = bytesOf([&](PostscriptDriver& d) {
            d.MoveTo(1, 2);
            d.Text(text.c_str(), 0, 0, 0);
        });
        EXPECT_LE(line.size(), 129U);  // with its line feed
        EXPECT_GE(line.size(), 125U);
        const std::string tail = ") 0 0 _js\n";
        ASSERT_EQ(line.substr(line.size() - tail.size()), tail);
        const std::string last = line.substr(0, line.size() - tail.size());
        EXPECT_TRUE(last.ends_with("\\(") || last.ends_with("\\247")) << line;
    }
    const std::string exact(128 - 4 - 13 + 4, 'x');
    const std::string whole = bytesOf([&](PostscriptDriver& d) {
        d.MoveTo(1, 2);
        d.Text(exact.c_str(), 111, 0, 0);
    });
    EXPECT_EQ(whole, "1 2 _m(" + std::string(111, 'x') + ") 0 0 _js\n");
    EXPECT_EQ(whole.size(), 129U - 1U);
}

TEST(PostscriptText, ExtentCountsGlyphsNotBytes)
{
    bytesOf([](PostscriptDriver& d) {
        float width = 0.0F, height = 0.0F;
        d.TextExtent("µ²", &width, &height);  // u^2
        EXPECT_FLOAT_EQ(width, 3.0F * 14.0F * 0.6F / 842.0F);
        EXPECT_FLOAT_EQ(height, 14.0F * 0.6F / 595.0F);
        d.TextExtent("x", nullptr, nullptr);
    });
}

TEST(Transliteration, EveryCharacterBecomesAsciiOrAStandardGlyph)
{
    EXPECT_EQ(asciiText("Größe 20 °C ±½ “é” €"), "Groesse 20 degC +/-1/2 \"e\" EUR");
    EXPECT_EQ(asciiText("\xE2\x82"), "a?");  // cut short: Latin-1
    EXPECT_EQ(standardText("日本"), "??");
    for (char32_t c = 0x80; c < 0x800; ++c) {
        const char bytes[] = {static_cast<char>(0xC0 | c >> 6), static_cast<char>(0x80 | (c & 0x3F)), 0};
        for (const char byte : asciiText(bytes))
            ASSERT_TRUE(byte >= 0x20 && byte < 0x7F) << static_cast<unsigned>(c);
    }
}

TEST(PostscriptFile, FailureIsToldByFinishOnly)
{
    PostscriptDriver nowhere("/nowhere/at/all.eps");
    nowhere.BeginPage(1);
    nowhere.Dot(1, 1);
    EXPECT_EQ(nowhere.outputError(), ENOENT);
    EXPECT_FALSE(nowhere.finish());
    PostscriptDriver full("/dev/full");
    full.BeginPage(1);
    full.EndPage();
    EXPECT_FALSE(full.finish());
    EXPECT_EQ(full.outputError(), ENOSPC);
}

}  // namespace
