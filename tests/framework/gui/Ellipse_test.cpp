// SPDX-License-Identifier: MIT
#include "framework/gui/detail/EllipseRows.h"
#include "tests/framework/gui/Picture.h"

#include <gtest/gtest.h>

#include <climits>
#include <cmath>
#include <random>

namespace framework::raster {
namespace {

TEST(Ellipse, FillsAndOutlinesASmallDisc)
{
    Picture disc(7, 7);
    FillEllipse(disc.View(), {1, 1, 6, 6}, kInk);
    EXPECT_EQ(disc.Text(), ".......\n"
                           "..###..\n"
                           ".#####.\n"
                           ".#####.\n"
                           ".#####.\n"
                           "..###..\n"
                           ".......\n");
    Picture ring(7, 7);
    DrawEllipse(ring.View(), {1, 1, 6, 6}, {1, kInk});
    EXPECT_EQ(ring.Text(), ".......\n"
                           "..###..\n"
                           ".#...#.\n"
                           ".#...#.\n"
                           ".#...#.\n"
                           "..###..\n"
                           ".......\n");
}

TEST(Ellipse, TakesSwappedCornersAndDrawsNothingInAnEmptyBox)
{
    Picture straight(12, 9);
    Picture swapped(12, 9);
    FillEllipse(straight.View(), {1, 2, 11, 8}, kInk);
    FillEllipse(swapped.View(), {11, 8, 1, 2}, kInk);
    EXPECT_EQ(straight.Text(), swapped.Text());
    EXPECT_FALSE(straight.Inked().empty());

    Picture empty(12, 9);
    for (const Box& box : {
             Box{4, 2, 4, 8},
             Box{4, 8, 9, 8}
    }) {
        FillEllipse(empty.View(), box, kInk);
        for (const int width : {1, 2, 9})
            DrawEllipse(empty.View(), box, {width, kInk});
    }
    EXPECT_TRUE(empty.Inked().empty());
}

TEST(Ellipse, IsMirroredInBothAxes)
{
    for (int width = 3; width < 40; width += 3) {
        for (int height = 3; height < 40; height += 4) {
            Picture picture(width, height);
            FillEllipse(picture.View(), {0, 0, width, height}, kInk);
            const auto inked = picture.Inked();
            for (const auto& [x, y] : inked) {
                ASSERT_TRUE(inked.contains({width - 1 - x, y})) << width << 'x' << height;
                ASSERT_TRUE(inked.contains({x, height - 1 - y})) << width << 'x' << height;
            }
        }
    }
}

// The outline point by point, once around: the walk that the rows of an ellipse stand for, with its
// error carried from step to step.
std::vector<Point> WalkedOutline(const Box& box)
{
    const long long width = box.right - 1 - box.left;
    const long long height = box.bottom - 1 - box.top;
    const long long odd = height % 2;
    long long dx = 4 * (1 - width) * height * height;
    long long dy = 4 * (odd + 1) * width * width;
    long long error = dx + dy + odd * width * width;
    int x0 = box.left;
    int x1 = box.right - 1;
    int y0 = box.top + static_cast<int>((height + 1) / 2);
    int y1 = y0 - static_cast<int>(odd);
    std::vector<Point> quarters[4];
    const auto add = [&](int left, int right) {
        quarters[0].push_back({right, y0});
        quarters[1].push_back({left, y0});
        quarters[2].push_back({left, y1});
        quarters[3].push_back({right, y1});
    };
    do {
        add(x0, x1);
        const long long twice = 2 * error;
        if (twice <= dy) {
            ++y0;
            --y1;
            error += dy += 8 * width * width;
        }
        if (twice >= dx) {
            ++x0;
            --x1;
            error += dx += 8 * height * height;
        }
    } while (x0 <= x1);
    for (; y0 - y1 <= height; ++y0, --y1)
        add(x0 - 1, x1 + 1);
    std::vector<Point> outline;
    for (int i = 0; i < 4; ++i) {
        if (i % 2 == 1) std::reverse(quarters[i].begin(), quarters[i].end());
        outline.insert(outline.end(), quarters[i].begin(), quarters[i].end());
    }
    return outline;
}

// The ellipse as its points say, each by itself.
void DrawWalked(const Canvas& canvas, const std::vector<Point>& outline, int width)
{
    if (width > 1) {
        DrawClosedChain(canvas, outline, {width, kInk});
        return;
    }
    for (const Point& p : outline)
        FillBox(canvas, {p.x, p.y, p.x + 1, p.y + 1}, kInk);
}

void FillWalked(const Canvas& canvas, const Box& box, const std::vector<Point>& outline)
{
    for (const Point& p : outline) {
        const int mirrored = box.right - 1 - (p.x - box.left);
        FillBox(canvas, {std::min(p.x, mirrored), p.y, std::max(p.x, mirrored) + 1, p.y + 1}, kInk);
    }
}

// The part of an ellipse that a picture shows, filled and outlined by pens of many widths, has the
// pixels of the walk.
void CheckAgainstTheWalk(const Box& box, int width, int height, std::initializer_list<int> pens)
{
    const std::vector<Point> outline = WalkedOutline(box);
    const auto where = testing::Message()
                       << box.left << ' ' << box.top << ' ' << box.right << ' ' << box.bottom;
    Picture filled(width, height);
    Picture expected(width, height);
    FillEllipse(filled.View(), box, kInk);
    FillWalked(expected.View(), box, outline);
    ASSERT_TRUE(filled == expected) << "inside, " << where;
    for (const int pen : pens) {
        Picture drawn(width, height);
        Picture walked(width, height);
        DrawEllipse(drawn.View(), box, {pen, kInk});
        DrawWalked(walked.View(), outline, pen);
        ASSERT_TRUE(drawn == walked) << "pen " << pen << ", " << where;
    }
}

TEST(Ellipse, HasThePixelsOfTheWalkInEverySize)
{
    for (int width = 1; width <= 40; ++width)
        for (int height = 1; height <= 40; ++height)
            CheckAgainstTheWalk({4, 4, 4 + width, 4 + height}, 48, 48, {1, 2, 3});
}

TEST(Ellipse, HasThePixelsOfTheWalkWithEveryPen)
{
    for (const auto& [width, height] : {
             std::pair{1,  30},
             {30, 1 },
             {17, 40},
             {40, 18},
             {29, 29}
    })
        CheckAgainstTheWalk({9, 9, 9 + width, 9 + height}, 60, 60,
                            {0, 1, 2, 3, 4, 5, 6, 7, 8, 9, 10, 11, 15, 16, 40, 200});
}

// The windows lie around points of the outline, where it is steep, flat and in between.
TEST(Ellipse, ShowsInAWindowThePixelsOfTheWalk)
{
    std::mt19937 random(17);
    std::uniform_int_distribution<int> size(1, 12000);
    std::uniform_int_distribution<int> at(-6, 30);
    for (int round = 0; round < 60; ++round) {
        const int width = size(random);
        const int height = round % 3 == 0 ? width : size(random);
        const std::vector<Point> outline = WalkedOutline({0, 0, width, height});
        const Point seen = outline[random() % outline.size()];
        const int left = at(random) - seen.x;
        const int top = at(random) - seen.y;
        CheckAgainstTheWalk({left, top, left + width, top + height}, 24, 24, {1, 2, 3, 7, 8, 30});
    }
}

// A row that is looked for has the columns of one that was reached by going on.
TEST(EllipseRows, AreTheSameFromAnyRowOn)
{
    std::mt19937 random(23);
    std::uniform_int_distribution<int> size(1, 700);
    for (int round = 0; round < 400; ++round) {
        const int width = size(random);
        const int height = round % 4 == 0 ? width : size(random);
        EllipseRows walked({0, 0, width, height});
        walked.Seek(0);
        for (Wide row = 0; row < walked.Rows(); ++row) {
            EllipseRows sought({0, 0, width, height});
            sought.Seek(row);
            ASSERT_EQ(sought.Current().first, walked.Current().first) << width << 'x' << height;
            ASSERT_EQ(sought.Current().last, walked.Current().last) << width << 'x' << height;
            if (row + 1 < walked.Rows()) walked.Next();
        }
    }
}

// Distance in columns from a row's outline pixels to the curve x²/a² + y²/b² = 1 around the center
// of the box.
void CheckAgainstTheCurve(const Box& box, Wide row)
{
    EllipseRows rows(box);
    rows.Seek(row);
    const long double a = (static_cast<long double>(box.right) - 1 - box.left) / 2;
    const long double b = (static_cast<long double>(box.bottom) - 1 - box.top) / 2;
    const auto columnAt = [&](long double y) {
        const long double part = std::clamp(y / b, 0.0L, 1.0L);
        return a - a * std::sqrt((1 - part) * (1 + part));
    };
    // The middle of the quarter's first row lies on the center of the box, or half a pixel below.
    const long double y = static_cast<long double>(row + rows.LowerMiddle()) - box.top - b;
    EXPECT_GE(static_cast<long double>(rows.Current().first), columnAt(y - 0.75L) - 1) << row;
    EXPECT_LE(static_cast<long double>(rows.Current().last), columnAt(y + 0.75L) + 1) << row;
}

TEST(EllipseRows, FollowTheCurveUpToTheLimitsOfAnInt)
{
    const Box largest{INT_MIN, INT_MIN, INT_MAX, INT_MAX};
    const Box wide{INT_MIN, -1000, INT_MAX, 1000};
    const Box high{-1000, INT_MIN, 1000, INT_MAX};
    for (const Box& box : {
             largest, wide, high, Box{0, 0, INT_MAX, INT_MAX}
    }) {
        const Wide rows = EllipseRows(box).Rows();
        std::mt19937_64 random(29);
        for (const Wide row : {Wide{0}, Wide{1}, Wide{2}, rows / 2, rows - 2, rows - 1})
            CheckAgainstTheCurve(box, row);
        for (int i = 0; i < 200; ++i)
            CheckAgainstTheCurve(box,
                                 static_cast<Wide>(random() % static_cast<unsigned long>(rows)));
    }
}

TEST(EllipseRows, AreNoMoreThanTheRowsThatAreSeen)
{
    const EllipseRows rows({INT_MIN, INT_MIN, INT_MAX, INT_MAX});
    for (const Wide top : {Wide{INT_MIN}, Wide{-1'000'000}, Wide{-12}, Wide{0}, Wide{1'000'000}}) {
        const RowRange seen = rows.Within(top, top + 24);
        EXPECT_GT(seen.end, seen.first) << top;
        EXPECT_LE(seen.end - seen.first, 24) << top;
    }
    const RowRange none = EllipseRows({0, 0, 100, 100}).Within(100, 124);
    EXPECT_LE(none.end, none.first);
}

// No picture of 24 x 24 pixels could be drawn in the time of a test by walking around these.
TEST(Ellipse, OfTheLargestSizesIsDrawnWhereItIsSeen)
{
    const Box box{INT_MIN, -12, INT_MAX, INT_MAX};
    for (const int pen : {1, 2, 3, 8, INT_MAX}) {
        Picture picture(24, 24);
        DrawEllipse(picture.View(), box, {pen, kInk});
        EXPECT_TRUE(picture.MarginIsWhole());
    }
    Picture touched(24, 24);
    FillEllipse(touched.View(), {INT_MIN, 5, INT_MAX, INT_MAX}, kInk);
    EXPECT_EQ(touched.Inked().size(), 24u * 19u);
    Picture missed(24, 24);
    FillEllipse(missed.View(), {20 - INT_MAX, 20 - INT_MAX, 2, 2}, kInk);
    EXPECT_TRUE(missed.Inked().empty());
}

} // namespace
} // namespace framework::raster
