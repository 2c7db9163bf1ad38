// SPDX-License-Identifier: MIT
#include "tests/framework/gui/Picture.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <climits>
#include <cmath>
#include <cstdlib>
#include <functional>
#include <random>
#include <set>
#include <string>
#include <utility>
#include <vector>

namespace framework::raster {
namespace {

// Every pixel of a thin line, walked one by one with the error term of the textbook loop.
std::set<std::pair<int, int>> WalkedLine(Point from, Point to, int width, int height)
{
    const long long dx = static_cast<long long>(to.x) - from.x;
    const long long dy = static_cast<long long>(to.y) - from.y;
    const long long ax = std::llabs(dx);
    const long long ay = std::llabs(dy);
    const long long a = std::max(ax, ay);
    const long long b = std::min(ax, ay);
    int octant = 0;
    if (dy > 0)
        octant = dx > 0 ? (dx > dy ? 1 : 2) : (-dx > dy ? 4 : 3);
    else
        octant = dx < 0 ? (-dx > -dy ? 5 : 6) : (dx > -dy ? 8 : 7);
    const int bias = octant == 3 || octant == 5 || octant == 6 || octant == 8 ? 1 : 0;
    long long x = from.x;
    long long y = from.y;
    long long e = 2 * b - a;
    std::set<std::pair<int, int>> pixels;
    for (long long i = 0; i < a; ++i) {
        if (x >= 0 && y >= 0 && x < width && y < height)
            pixels.emplace(static_cast<int>(x), static_cast<int>(y));
        const bool minorToo = e + bias > 0;
        e += minorToo ? 2 * b - 2 * a : 2 * b;
        if (ax > ay || minorToo) x += dx < 0 ? -1 : 1;
        if (ax <= ay || minorToo) y += dy < 0 ? -1 : 1;
    }
    return pixels;
}

void CheckThinLine(Point from, Point to, int width = 40, int height = 30)
{
    Picture picture(width, height);
    DrawLine(picture.View(), from, to, {1, kInk});
    EXPECT_EQ(picture.Inked(), WalkedLine(from, to, width, height))
        << from.x << ',' << from.y << " to " << to.x << ',' << to.y;
    EXPECT_TRUE(picture.MarginIsWhole());
}

TEST(ThinLine, LeavesItsLastPixelUnset)
{
    Picture picture(5, 1);
    DrawLine(picture.View(), {0, 0}, {4, 0}, {1, kInk});
    EXPECT_EQ(picture.Text(), "####.\n");
}

TEST(ThinLine, WithoutLengthSetsNothing)
{
    Picture picture(3, 3);
    DrawLine(picture.View(), {1, 1}, {1, 1}, {0, kInk});
    EXPECT_TRUE(picture.Inked().empty());
}

TEST(ThinLine, SetsThePixelsOfTheWalkInEveryDirection)
{
    for (int dx = -12; dx <= 12; ++dx)
        for (int dy = -12; dy <= 12; ++dy)
            CheckThinLine({20, 15}, {20 + dx, 15 + dy});
}

// A tie between two rows breaks one way for a line right and down, the other way for its reverse.
TEST(ThinLine, BreaksTiesByItsOctant)
{
    Picture down(3, 2);
    DrawLine(down.View(), {0, 0}, {2, 1}, {1, kInk});
    EXPECT_EQ(down.Text(), "##.\n...\n");

    Picture up(3, 2);
    DrawLine(up.View(), {0, 1}, {2, 0}, {1, kInk});
    EXPECT_EQ(up.Text(), ".#.\n#..\n");
}

TEST(ThinLine, KeepsItsPhaseWhenItBeginsFarOutside)
{
    std::mt19937 random(7);
    std::uniform_int_distribution<int> far(-3000, 3000);
    for (int i = 0; i < 3000; ++i)
        CheckThinLine({far(random), far(random)}, {far(random), far(random)});
}

TEST(ThinLine, ReachesThePictureFromTheLimitsOfAnInt)
{
    struct Case
    {
        Point from;
        Point to;
        std::size_t pixels;
    };
    const Case cases[] = {
        {{INT_MIN, 5},        {INT_MAX, 5},        40},
        {{7, INT_MAX},        {7, INT_MIN},        30},
        {{INT_MIN, INT_MIN},  {INT_MAX, INT_MAX},  30},
        {{-INT_MAX, INT_MAX}, {INT_MAX, -INT_MAX}, 1 },
        {{INT_MIN, 100},      {INT_MAX, 100},      0 },
    };
    for (const Case& c : cases) {
        Picture picture(40, 30);
        DrawLine(picture.View(), c.from, c.to, {1, kInk});
        EXPECT_EQ(picture.Inked().size(), c.pixels) << c.from.x << ',' << c.from.y;
        EXPECT_TRUE(picture.MarginIsWhole());
    }
}

struct PolygonCase
{
    std::vector<Point> corners;
    const char* expected;
    const char* why;
};

TEST(Polygon, FillsFromTheFirstColumnInsideToBeforeTheNextCrossing)
{
    const PolygonCase cases[] = {
        {{{1, 1}, {4, 1}, {4, 3}, {1, 3}},
         ".....\n.###.\n.###.\n.....\n",                                   "right and bottom are out"},
        {{{0, 0}, {4, 0}, {0, 4}},         "####.\n###..\n##...\n#....\n", "diagonal"                },
        {{{0, 0}, {4, 4}, {4, 0}, {0, 4}},
         ".....\n#..#.\n####.\n#..#.\n",                                   "a bow tie, empty above"  },
        {{{2, 0}, {2, 4}},                 ".....\n.....\n.....\n.....\n", "no inside"               },
    };
    for (const PolygonCase& c : cases) {
        Picture picture(5, 4);
        FillPolygon(picture.View(), c.corners, kInk);
        EXPECT_EQ(picture.Text(), c.expected) << c.why;
        EXPECT_TRUE(picture.MarginIsWhole());
    }
}

// The even-odd rule for one pixel, with a ray to the left and exact fractions.
bool IsInside(const std::vector<Point>& corners, int x, int y)
{
    bool inside = false;
    for (std::size_t i = 0; i < corners.size(); ++i) {
        Point p = corners[i];
        Point q = corners[(i + 1) % corners.size()];
        if (p.y > q.y) std::swap(p, q);
        if (y < p.y || y >= q.y) continue;
        const long long rise = static_cast<long long>(q.x - p.x) * (y - p.y);
        if (rise <= static_cast<long long>(x - p.x) * (q.y - p.y)) inside = !inside;
    }
    return inside;
}

TEST(Polygon, FillsExactlyThePixelsInside)
{
    std::mt19937 random(11);
    std::uniform_int_distribution<int> at(-15, 45);
    std::uniform_int_distribution<int> howMany(3, 12);
    for (int round = 0; round < 500; ++round) {
        std::vector<Point> corners(static_cast<std::size_t>(howMany(random)));
        for (Point& p : corners)
            p = {at(random), at(random)};
        Picture picture(30, 30);
        FillPolygon(picture.View(), corners, kInk);
        std::set<std::pair<int, int>> expected;
        for (int y = 0; y < 30; ++y)
            for (int x = 0; x < 30; ++x)
                if (IsInside(corners, x, y)) expected.emplace(x, y);
        ASSERT_EQ(picture.Inked(), expected);
    }
}

TEST(WideLine, CoversBothEndsWithItsCap)
{
    struct Case
    {
        int width;
        Point from;
        Point to;
        const char* expected;
    };
    const Case cases[] = {
        {2, {2, 2}, {2, 2}, "......\n.##...\n.##...\n......\n......\n"},
        {3, {2, 2}, {2, 2}, "......\n..#...\n.###..\n..#...\n......\n"},
        {2, {1, 2}, {4, 2}, "......\n#####.\n#####.\n......\n......\n"},
        {2, {2, 3}, {2, 1}, ".##...\n.##...\n.##...\n.##...\n......\n"},
        {3, {1, 2}, {4, 2}, "......\n.####.\n######\n.####.\n......\n"},
    };
    for (const Case& c : cases) {
        Picture picture(6, 5);
        DrawLine(picture.View(), c.from, c.to, {c.width, kInk});
        EXPECT_EQ(picture.Text(), c.expected) << c.width << " wide to " << c.to.x << ',' << c.to.y;
    }
}

// The corners of a slanted body, w = 2 from (2, 1) to (10, 5): length sqrt(80), so
// vx = 2·4/8.944 = 0.894 and vy = 2·8/8.944 = 1.789; near (0, 1), far (1, 1); same signs:
// A = (+1, −1), B = (0, +1).
TEST(WideLine, FillsAPolygonWhenItSlants)
{
    Picture picture(14, 8);
    DrawLine(picture.View(), {2, 1}, {10, 5}, {2, kInk});
    Picture expected(14, 8);
    const Point body[] = {
        {3,  0},
        {11, 4},
        {10, 6},
        {2,  2}
    };
    FillPolygon(expected.View(), body, kInk);
    FillBox(expected.View(), {1, 0, 3, 2}, kInk);
    FillBox(expected.View(), {9, 4, 11, 6}, kInk);
    EXPECT_EQ(picture.Text(), expected.Text());
}

TEST(WideLine, IsTheSameFromEitherEnd)
{
    std::mt19937 random(3);
    std::uniform_int_distribution<int> at(-20, 60);
    for (int i = 0; i < 500; ++i) {
        const Point p{at(random), at(random)};
        const Point q{at(random), at(random)};
        const int width = 2 + i % 2;
        Picture there(40, 40);
        Picture back(40, 40);
        DrawLine(there.View(), p, q, {width, kInk});
        DrawLine(back.View(), q, p, {width, kInk});
        ASSERT_EQ(there.Inked(), back.Inked());
        ASSERT_TRUE(there.MarginIsWhole());
    }
}

TEST(WideLine, SurvivesTheLimitsOfAnInt)
{
    Picture picture(20, 20);
    DrawLine(picture.View(), {INT_MIN, INT_MIN}, {INT_MAX, INT_MAX}, {3, kInk});
    DrawLine(picture.View(), {INT_MIN, 10}, {INT_MAX, 10}, {2, kInk});
    EXPECT_TRUE(picture.MarginIsWhole());
    EXPECT_EQ(picture.At(3, 9), kInk);
}

TEST(Clip, LeavesEverythingOutsideTheBoxAlone)
{
    const Box clip{5, 7, 21, 18};
    std::mt19937 random(5);
    std::uniform_int_distribution<int> at(-20, 50);
    for (int round = 0; round < 300; ++round) {
        const Point p{at(random), at(random)};
        const Point q{at(random), at(random)};
        const auto draw = [&](const Canvas& canvas) {
            DrawLine(canvas, p, q, {1 + round % 3, kInk});
            FillEllipse(canvas, {q.x, p.y, q.x + 9, p.y + 6}, kInk);
        };
        Picture whole(30, 30);
        draw(whole.View());
        Picture clipped(30, 30);
        Canvas view = clipped.View();
        view.clip = clip;
        draw(view);
        std::set<std::pair<int, int>> expected;
        for (const auto& [x, y] : whole.Inked())
            if (x >= clip.left && x < clip.right && y >= clip.top && y < clip.bottom)
                expected.emplace(x, y);
        ASSERT_EQ(clipped.Inked(), expected);
    }
}

TEST(Frame, RunsThroughTheFirstAndLastRowAndColumn)
{
    Picture thin(6, 5);
    DrawFrame(thin.View(), {1, 1, 5, 4}, {1, kInk});
    EXPECT_EQ(thin.Text(), "......\n.####.\n.#..#.\n.####.\n......\n");

    Picture wide(7, 6);
    DrawFrame(wide.View(), {1, 1, 6, 5}, {2, kInk});
    EXPECT_EQ(wide.Text(), "######.\n######.\n##..##.\n######.\n######.\n.......\n");
}

TEST(Copy, ClipsAtBothPictures)
{
    Picture source(4, 4);
    FillBox(source.View(), {0, 0, 4, 4}, kInk);
    Picture target(6, 6);
    raster::Copy(target.View(), {-2, -2, 20, 20}, source.View(), {-1, -1}, CopyMode::Replace);
    EXPECT_EQ(target.Text(), "###...\n###...\n###...\n......\n......\n......\n");
    EXPECT_TRUE(target.MarginIsWhole());
}

TEST(Copy, CombinesBitsWhenAsked)
{
    Picture source(2, 1);
    Picture target(2, 1);
    source.At(0, 0) = 0x00F000;
    target.At(0, 0) = 0x0000FF;
    target.At(1, 0) = 0x123456;
    raster::Copy(target.View(), {0, 0, 2, 1}, source.View(), {0, 0}, CopyMode::Combine);
    EXPECT_EQ(target.At(0, 0), 0x00F0FFu);
    EXPECT_EQ(target.At(1, 0), 0x123456u);
}

TEST(Copy, MovesWithinOnePicture)
{
    Picture picture(4, 4);
    for (int y = 0; y < 4; ++y)
        picture.At(0, y) = static_cast<Color>(y + 1);
    raster::Copy(picture.View(), {0, 1, 4, 4}, picture.View(), {0, 0}, CopyMode::Replace);
    EXPECT_EQ(picture.At(0, 1), 1u);
    EXPECT_EQ(picture.At(0, 2), 2u);
    EXPECT_EQ(picture.At(0, 3), 3u);
}

} // namespace
} // namespace framework::raster
