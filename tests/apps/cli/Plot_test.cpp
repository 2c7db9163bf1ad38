// SPDX-License-Identifier: MIT
#include "apps/cli/Plot.h"

#include "apps/cli/Errors.h"
#include "tests/apps/cli/ScratchFile.h"
#include <cairo.h>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <rapidcheck/gtest.h>

namespace {

using cli::Chart;
using cli::Picture;
using cli::Range;
using cli::test::ReadAll;
using cli::test::ScratchFolder;
using testing::ElementsAre;

TEST(Ticks, StandAtRoundNumbers)
{
    EXPECT_THAT(cli::TickTexts(cli::Ticks({0.0, 1.0}, 6)),
                ElementsAre("0.0", "0.2", "0.4", "0.6", "0.8", "1.0"));
    EXPECT_THAT(cli::TickTexts(cli::Ticks({-12.0, 13.0}, 6)),
                ElementsAre("\u221210", "\u22125", "0", "5", "10"));
    EXPECT_THAT(cli::TickTexts(cli::Ticks({-0.031, 0.02}, 4)),
                ElementsAre("\u22120.02", "0.00", "0.02"));
}

RC_GTEST_PROP(Ticks, LieInTheRangeAndAreFew, (int low, unsigned width))
{
    const Range range{low / 1000.0, low / 1000.0 + (width + 1U) / 7000.0};
    const auto ticks = cli::Ticks(range, 6);
    RC_ASSERT(ticks.size() >= 2U);
    RC_ASSERT(ticks.size() <= 6U);
    for (const double tick : ticks) {
        RC_ASSERT(tick >= range.low - 1e-6 * range.Width());
        RC_ASSERT(tick <= range.high + 1e-6 * range.Width());
    }
}

TEST(Plot, ThinnedPointsStayEvenAndBounded)
{
    cli::ThinnedPoints points;
    for (int i = 0; i < 1'000'000; ++i)
        points.Add({static_cast<double>(i), 0.0});
    const auto& kept = points.Points();
    ASSERT_LE(kept.size(), cli::ThinnedPoints::kMost);
    ASSERT_GT(kept.size(), cli::ThinnedPoints::kMost / 4);
    const double step = kept[1].x - kept[0].x;
    for (std::size_t i = 0; i < kept.size(); ++i) {
        ASSERT_EQ(kept[i].x, static_cast<double>(i) * step);
    }
}

TEST(Plot, FewPointsAreAllKept)
{
    cli::ThinnedPoints points;
    for (int i = 0; i < 100; ++i)
        points.Add({static_cast<double>(i), 0.0});
    EXPECT_EQ(points.Points().size(), 100U);
}

// A disc of one colour in a chart of equal scale.
Picture Disc()
{
    Chart chart("", {"", ""});
    chart.KeepEqualScale();
    chart.SetRange(Range{-1.0, 1.0}, Range{-1.0, 1.0});
    chart.AddPoints("",
                    {
                        {0.0, 0.0}
    },
                    {.colour = {1.0, 0.0, 0.0}, .size = 40.0});
    Picture picture("", "", 300.0, 200.0);
    picture.Place(std::move(chart), picture.Body());
    return picture;
}

bool IsRed(const unsigned char* pixel) // blue, green, red, unused
{
    return pixel[2] > 200 && pixel[1] < 60 && pixel[0] < 60;
}

TEST(Plot, APngShowsWhatWasDrawn)
{
    const ScratchFolder folder;
    Disc().Save(folder.Path("disc.png"));
    cairo_surface_t* const image =
        cairo_image_surface_create_from_png(folder.Path("disc.png").c_str());
    ASSERT_EQ(cairo_surface_status(image), CAIRO_STATUS_SUCCESS);
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
    EXPECT_NEAR(red, 3.14159 * 80 * 80, 400) << "a disc of 80 pixels, its rim blended";
}

TEST(Plot, AnSvgIsText)
{
    const ScratchFolder folder;
    Disc().Save(folder.Path("disc.svg"));
    const std::string text = ReadAll(folder.Path("disc.svg"));
    EXPECT_THAT(text, testing::HasSubstr("<svg"));
    EXPECT_THAT(text, testing::HasSubstr("</svg>"));
}

TEST(Plot, AnEllipseTurnsAsAzimuthsDo)
{
    Chart chart("", {"", ""});
    chart.AddEllipse("", {10.0, 20.0}, 2.0, 1.0, 90.0, {});
    const auto& points = chart.series[0].points;
    EXPECT_NEAR(points.front().x, 12.0, 1e-12) << "the long half axis points east";
    EXPECT_NEAR(points.front().y, 20.0, 1e-12);
    EXPECT_NEAR(points[45].y, 19.0, 1e-12) << "a quarter further is the short one, south";
}

TEST(Plot, EmptyChartsAndSinglePointsAreDrawn)
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

TEST(Plot, ANameTellsTheKindOfPicture)
{
    const CLI::Validator check = cli::PictureName();
    EXPECT_EQ(check("a.png"), "");
    EXPECT_EQ(check("b/a.svg"), "");
    EXPECT_NE(check("a.pdf"), "");
    EXPECT_NE(check(".png"), "");
}

} // namespace
