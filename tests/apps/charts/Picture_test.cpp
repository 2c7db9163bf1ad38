// SPDX-License-Identifier: MIT
#include "apps/charts/Painter.h"
#include "apps/charts/Picture.h"

#include "apps/tables/Errors.h"
#include "tests/apps/ScratchFile.h"
#include <cairo.h>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <memory>

namespace {

using apps::test::ReadAll;
using apps::test::ScratchFolder;
using charts::Chart;
using charts::Picture;
using charts::Range;

// A disc of one color in a chart of equal scale.
Picture Disc()
{
    Chart chart("", {"", ""});
    chart.KeepEqualScale();
    chart.SetRange(Range{-1.0, 1.0}, Range{-1.0, 1.0});
    chart.AddPoints("",
                    {
                        {0.0, 0.0}
    },
                    {.color = {1.0, 0.0, 0.0}, .size = 40.0});
    Picture picture("", "", 300.0, 200.0);
    picture.Place(std::move(chart), picture.Body());
    return picture;
}

bool IsRed(const unsigned char* pixel) // blue, green, red, unused
{
    return pixel[2] > 200 && pixel[1] < 60 && pixel[0] < 60;
}

// The red pixels of a picture that is 300 x 200 points.
int RedPixels(const Picture& picture)
{
    const ScratchFolder folder;
    picture.Save(folder.Path("red.png"));
    cairo_surface_t* const image =
        cairo_image_surface_create_from_png(folder.Path("red.png").c_str());
    EXPECT_EQ(cairo_surface_status(image), CAIRO_STATUS_SUCCESS);
    EXPECT_EQ(cairo_image_surface_get_width(image), 600);
    EXPECT_EQ(cairo_image_surface_get_height(image), 400);
    const unsigned char* const pixels = cairo_image_surface_get_data(image);
    const int stride = cairo_image_surface_get_stride(image);
    int red = 0;
    for (int y = 0; y < 400; ++y) {
        for (int x = 0; x < 600; ++x)
            red += IsRed(pixels + y * stride + 4 * x) ? 1 : 0;
    }
    cairo_surface_destroy(image);
    return red;
}

TEST(Picture, APngShowsTheChart)
{
    EXPECT_NEAR(RedPixels(Disc()), 3.14159 * 80 * 80, 400)
        << "a disc of 80 pixels, its rim blended";
}

Picture Note(charts::PlotPoint at)
{
    Chart chart("", {"", ""});
    chart.SetRange(Range{-1.0, 1.0}, Range{-1.0, 1.0});
    chart.AddText(at, "99 %: 102 mm", {1.0, 0.0, 0.0});
    Picture picture("", "", 300.0, 200.0);
    picture.Place(std::move(chart), picture.Body());
    return picture;
}

// A text that the plotting area cut off would have fewer pixels.
TEST(Picture, ANoteStaysInsideThePlottingArea)
{
    const int whole = RedPixels(Note({0.0, 0.0}));
    ASSERT_GT(whole, 100);
    for (const charts::PlotPoint corner : {
             charts::PlotPoint{1.0,  1.0 },
             {1.0,  -1.0},
             {-1.0, 1.0 }
    })
        EXPECT_NEAR(RedPixels(Note(corner)), whole, 0.15 * whole) << corner.x << ' ' << corner.y;
    for (const charts::PlotPoint outside : {
             charts::PlotPoint{0.0,  1.1 },
             {0.0,  -1.1},
             {1.1,  0.0 },
             {-1.1, 0.0 }
    })
        EXPECT_EQ(RedPixels(Note(outside)), 0) << "its point is not shown";
}

TEST(Picture, ANoteCoversTheDataBehindIt)
{
    Chart chart("", {"", ""});
    chart.SetRange(Range{-1.0, 1.0}, Range{-1.0, 1.0});
    chart.AddPoints("",
                    {
                        {0.0, 0.0}
    },
                    {.color = {1.0, 0.0, 0.0}, .size = 40.0});
    chart.AddText({-0.2, 0.0}, "99 %: 102 mm", {0.0, 0.0, 0.0});
    Picture picture("", "", 300.0, 200.0);
    picture.Place(std::move(chart), picture.Body());
    EXPECT_LT(RedPixels(picture), 0.95 * RedPixels(Disc()));
}

TEST(Picture, ALongSubtitleTakesMoreLines)
{
    const Picture one("Title", "Store it.", 300.0, 200.0);
    const Picture two("Title",
                      "Store the least-squares tip: it uses all positions at once, and more.",
                      300.0, 200.0);
    EXPECT_GT(two.Body().y, one.Body().y + 10.0);
    EXPECT_LT(two.Body().height, one.Body().height - 10.0);
}

TEST(Picture, AnSvgIsText)
{
    const ScratchFolder folder;
    Disc().Save(folder.Path("disc.svg"));
    const std::string text = ReadAll(folder.Path("disc.svg"));
    EXPECT_THAT(text, testing::HasSubstr("<svg"));
    EXPECT_THAT(text, testing::HasSubstr("</svg>"));
}

TEST(Picture, ThatIsTooLargeIsAnErrorAndNoFile)
{
    const ScratchFolder folder;
    const Picture picture("Title", "", 1e6, 1e6);
    try {
        picture.Save(folder.Path("huge.png"));
        FAIL() << "drawn";
    } catch (const tables::InputError& error) {
        EXPECT_THAT(error.what(), testing::HasSubstr("huge.png: cannot be drawn: "));
    }
    EXPECT_TRUE(folder.Names().empty());
}

TEST(Painter, MakesATextSmallerUntilItFits)
{
    const std::unique_ptr<cairo_surface_t, decltype(&cairo_surface_destroy)> surface(
        cairo_recording_surface_create(CAIRO_CONTENT_COLOR_ALPHA, nullptr), &cairo_surface_destroy);
    charts::Painter painter(surface.get());
    const std::string text = "East of the estimated tip [m]";
    const charts::TextStyle style{.size = 20.0};
    const double width = painter.TextWidth(text, style);
    EXPECT_EQ(painter.Fitted(text, style, width).size, 20.0);
    const charts::TextStyle fitted = painter.Fitted(text, style, width / 2.0);
    EXPECT_NEAR(fitted.size, 10.0, 1e-9);
    EXPECT_NEAR(painter.TextWidth(text, fitted), width / 2.0, 0.05 * width);
}

TEST(Picture, EmptyChartsAndSinglePointsAreDrawn)
{
    const ScratchFolder folder;
    Chart empty("nothing", {"x", "y"});
    Chart single("one", {"x", "y"});
    single.KeepEqualScale();
    single.AddPoints("p",
                     {
                         {5.0, 5.0}
    },
                     {});
    Picture picture("both", "", 400.0, 300.0);
    picture.Place(empty, {0, 0, 200, 300});
    picture.Place(single, {200, 0, 200, 300});
    EXPECT_NO_THROW(picture.Save(folder.Path("both.png")));
}

} // namespace
