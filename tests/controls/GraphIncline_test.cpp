// SPDX-License-Identifier: MIT
#include "controls/GraphIncline_Left.h"
#include "controls/GraphIncline_Right.h"

#include "tests/controls/ControlTest.h"

#include <algorithm>
#include <cstring>

namespace tiltpole::controls::test {
namespace {

// 100 x 180: the scale frame is columns 20 to 80, H = 180, one pixel per degree.
constexpr int kWidth = 100;
constexpr int kHeight = 180;

struct Left
{
    using Control = CGraphIncline_Left;
    static constexpr const char* kName = "CGraphIncline_Left";
    static constexpr double kLow = 0;
    static constexpr int kLowRow = 180; // the bottom edge
    static constexpr int kMiddleRow = 90;
    static int RowOf(int degreesFromLow) { return 180 - degreesFromLow; }
};

struct Right
{
    using Control = CGraphIncline_Right;
    static constexpr const char* kName = "CGraphIncline_Right";
    static constexpr double kLow = 180;
    static constexpr int kLowRow = 0; // the top edge
    static constexpr int kMiddleRow = 90;
    static int RowOf(int degreesFromLow) { return degreesFromLow; }
};

template <class Side>
struct Gauge : testing::Test, Placed<typename Side::Control>
{
    Gauge() : Placed<typename Side::Control>(kWidth, kHeight) {}
};

using Sides = testing::Types<Left, Right>;
TYPED_TEST_SUITE(Gauge, Sides);

TYPED_TEST(Gauge, ShowsAnAcceptedValueAtOnce)
{
    this->control.SetValue(TypeParam::kLow + 60);
    const Shown shown(this->control);
    const int y = TypeParam::RowOf(60);
    EXPECT_EQ(shown.At(50, y), kRed);
    EXPECT_EQ(shown.At(50, y - 1), kRed) << "two pixels wide, the row and the one above";
    EXPECT_NE(shown.At(50, y + 1), kRed);
    EXPECT_EQ(shown.At(20, y), kRed) << "from the left of the scale frame";
    EXPECT_EQ(shown.At(80, y), kRed) << "to its right";
    EXPECT_NE(shown.At(18, y), kRed);
    EXPECT_NE(shown.At(81, y), kRed);
}

TYPED_TEST(Gauge, TakesBothEndsAndNothingBeyond)
{
    this->control.SetValue(TypeParam::kLow + 90);
    for (const double outside : {TypeParam::kLow - 0.1, TypeParam::kLow + 180.1}) {
        this->control.SetValue(outside);
        EXPECT_EQ(this->control.GetValue(), TypeParam::kLow + 90) << outside;
        EXPECT_EQ(Shown(this->control).At(50, TypeParam::kMiddleRow), kRed) << outside;
    }
    this->control.SetValue(TypeParam::kLow);
    EXPECT_EQ(this->control.GetValue(), TypeParam::kLow);
    this->control.SetValue(TypeParam::kLow + 180);
    EXPECT_EQ(this->control.GetValue(), TypeParam::kLow + 180);
}

// The last row of the picture is one above the bottom edge of the frame.
TYPED_TEST(Gauge, PutsTheLowEndOnItsEdge)
{
    this->control.SetValue(TypeParam::kLow);
    const Shown shown(this->control);
    const int row = TypeParam::kLowRow == 0 ? 0 : 179;
    EXPECT_EQ(shown.At(50, row), kRed);
    EXPECT_NE(shown.At(50, 179 - row), kRed);
}

TYPED_TEST(Gauge, MarksAFixInTheLeftBand)
{
    this->control.SetFix(static_cast<int>(TypeParam::kLow) + 30);
    const Shown shown(this->control);
    const int y = TypeParam::RowOf(30);
    EXPECT_EQ(shown.At(12, y), kGreen);
    EXPECT_EQ(shown.At(12, y - 1), kGreen);
    EXPECT_EQ(shown.At(12, y + 1), kGreen);
    EXPECT_NE(shown.At(12, y + 2), kGreen);
    EXPECT_NE(shown.At(30, y), kGreen);
    // From column 5 to 20, plus a round end of one pixel on either side.
    EXPECT_EQ(shown.At(19, y + 1), kGreen);
    EXPECT_EQ(shown.At(21, y), kGreen);
    EXPECT_NE(shown.At(22, y), kGreen);
    EXPECT_EQ(shown.At(4, y), kGreen);
    EXPECT_NE(shown.At(3, y), kGreen);
}

TYPED_TEST(Gauge, IgnoresFixesOutsideItsRangeOrListedAlready)
{
    const Shown before(this->control);
    this->control.SetFix(static_cast<int>(TypeParam::kLow) - 1);
    this->control.SetFix(static_cast<int>(TypeParam::kLow) + 181);
    EXPECT_EQ(Shown(this->control), before);
    this->control.SetFix(static_cast<int>(TypeParam::kLow) + 180);
    const Shown marked(this->control);
    EXPECT_FALSE(marked == before);
    this->control.SetFix(static_cast<int>(TypeParam::kLow) + 180);
    EXPECT_EQ(Shown(this->control), marked);
}

TYPED_TEST(Gauge, DropsItsFixesWithTheNextPaint)
{
    this->control.SetFix(static_cast<int>(TypeParam::kLow) + 30);
    EXPECT_GT(this->Repainted().Count(kGreen), 0);
    this->control.ClearFix();
    this->control.UpdateWindow();
    EXPECT_EQ(Shown(this->control).Count(kGreen), 0);
}

// H/18 = 10 rows per tick, measured from the bottom; every third tick is long and has a number.
TYPED_TEST(Gauge, HasSeventeenTicksOnBothEdges)
{
    const Shown shown(this->control);
    for (int i = 1; i <= 17; ++i) {
        const int y = 180 - 10 * i;
        EXPECT_EQ(shown.At(23, y), kTick) << i;
        EXPECT_EQ(shown.At(77, y), kTick) << i;
        EXPECT_EQ(shown.At(29, y) == kTick, i % 3 == 0) << i;
        EXPECT_EQ(shown.At(71, y) == kTick, i % 3 == 0) << i;
    }
    EXPECT_EQ(shown.At(25, 170), kTick) << "a short tick is five pixels long";
    EXPECT_EQ(shown.At(26, 170), kFace);
    EXPECT_EQ(shown.At(74, 170), kTick);
    EXPECT_EQ(shown.At(73, 170), kFace);
    EXPECT_EQ(shown.At(30, 150), kTick) << "a long one is ten";
    EXPECT_EQ(shown.At(31, 150), kFace);
}

// Half a row per tick: two ticks share a row. The left gauge's pointer covers the last row.
TYPED_TEST(Gauge, KeepsItsSeventeenTicksWhereTheyCoincide)
{
    Placed<typename TypeParam::Control> low(kWidth, 9);
    const Shown shown(low.control);
    for (int y = 0; y < 8; ++y) {
        EXPECT_EQ(shown.At(23, y), kTick) << y;
        EXPECT_EQ(shown.At(77, y), kTick) << y;
    }
}

TYPED_TEST(Gauge, LabelsFiveRowsTheSameOnBothSides)
{
    const Shown shown(this->control);
    for (const int i : {3, 6, 9, 12, 15}) {
        const int center = 180 - 10 * i + 8;
        int ink = 0;
        for (int y = center - 17; y < center + 3; ++y)
            for (int x = 30; x < 64; ++x)
                ink += shown.At(x, y) == RGB(0, 0, 255);
        EXPECT_GT(ink, 10) << i;
    }
}

// The box of a label begins half its side, 17 pixels, above a point 8 pixels below its tick; digits
// begin a few pixels below the top of their cell.
TYPED_TEST(Gauge, LabelsStandBesideTheirTicks)
{
    const Shown shown(this->control);
    for (const int tick : {3, 6, 12, 15}) {
        const int row = 180 - 10 * tick;
        int top = row - 17;
        const auto hasInk = [&](int y) {
            for (int x = 30; x < 64; ++x)
                if (shown.At(x, y) == RGB(0, 0, 255)) return true;
            return false;
        };
        while (top < row + 17 && !hasInk(top))
            ++top;
        EXPECT_NEAR(top, row + 8 - 17 + 4, 2) << tick;
    }
}

// 30, 60, 90, 60, 30 from the bottom up.
TYPED_TEST(Gauge, CountsItsNumbersFromTheNearerEnd)
{
    const Shown shown(this->control);
    const auto number = [&shown](int tick) {
        std::vector<bool> ink;
        for (int y = 180 - 10 * tick - 9; y < 180 - 10 * tick + 10; ++y)
            for (int x = 32; x < 64; ++x)
                ink.push_back(shown.At(x, y) == RGB(0, 0, 255));
        return ink;
    };
    EXPECT_EQ(number(3), number(15));
    EXPECT_EQ(number(6), number(12));
    EXPECT_NE(number(3), number(6));
    EXPECT_NE(number(6), number(9));
    EXPECT_NE(number(3), number(9));
}

TYPED_TEST(Gauge, ReconstructsInItsNewSize)
{
    this->control.MoveWindow(0, 0, kWidth, 360);
    this->control.ReconstructControl();
    this->control.UpdateWindow();
    this->control.SetValue(TypeParam::kLow + 60);
    EXPECT_EQ(Shown(this->control).At(50, 2 * TypeParam::RowOf(60)), kRed);
}

TYPED_TEST(Gauge, PaintsAnewForAnotherBackColor)
{
    EXPECT_EQ(this->control.GetMeterBackColor(), RGB(102, 255, 255));
    this->control.ValidateRect(nullptr);
    this->control.SetMeterBackColor(RGB(1, 2, 3));
    EXPECT_EQ(this->control.GetMeterBackColor(), RGB(1, 2, 3));
    CRect pending;
    EXPECT_TRUE(this->control.GetUpdateRect(&pending));
}

// The host's own picture, larger than the control: 360 rows, two per degree.
TYPED_TEST(Gauge, DrawsItsPartsOnAContextOfTheHost)
{
    this->control.SetFix(static_cast<int>(TypeParam::kLow) + 30);
    CDC memory;
    memory.CreateCompatibleDC(nullptr);
    CBitmap bitmap;
    bitmap.CreateCompatibleBitmap(&memory, kWidth, 2 * kHeight);
    CBitmap* const before = memory.SelectObject(&bitmap);
    CRect all(0, 0, kWidth, 2 * kHeight);
    this->control.DrawBackground(&memory, all);
    EXPECT_EQ(memory.GetPixel(23, 2 * (180 - 10)), kTick);
    EXPECT_NE(memory.GetPixel(50, 2 * TypeParam::RowOf(60)), kRed);
    this->control.DrawPointer(&memory, TypeParam::kLow + 60);
    EXPECT_EQ(memory.GetPixel(50, 2 * TypeParam::RowOf(60)), kRed);
    EXPECT_NE(memory.GetPixel(12, 2 * TypeParam::RowOf(30)), kGreen);
    this->control.DrawFixSign(&memory);
    EXPECT_EQ(memory.GetPixel(12, 2 * TypeParam::RowOf(30)), kGreen);
    memory.SelectObject(before);
}

TYPED_TEST(Gauge, DrawsNothingWithoutAContext)
{
    this->control.SetFix(static_cast<int>(TypeParam::kLow) + 30);
    const Shown before = this->Repainted();
    CRect other(0, 0, 7, 9);
    this->control.DrawBackground(nullptr, other);
    this->control.DrawPointer(nullptr, TypeParam::kLow + 60);
    this->control.DrawFixSign(nullptr);
    EXPECT_EQ(this->Repainted(), before);
}

TYPED_TEST(Gauge, SurvivesEverySize)
{
    struct Case
    {
        int width, height;
        int column; // on the pointer, beside the fix
    };
    // Below 40 columns the edges of the scale frame are crossed, and the pointer runs between them.
    const Case cases[] = {
        {1,  1,    0 },
        {5,  5,    2 },
        {17, 17,   2 },
        {41, 41,   21},
        {60, 4000, 30},
    };
    for (const Case& c : cases) {
        Placed<typename TypeParam::Control> gauge(c.width, c.height);
        gauge.control.SetValue(TypeParam::kLow + 1);
        gauge.control.SetFix(static_cast<int>(TypeParam::kLow) + 10);
        const double way = c.height / 180.0;
        const double row = TypeParam::kLowRow == 0 ? way : c.height - way;
        const int y = std::min(static_cast<int>(row + 0.5), c.height - 1);
        EXPECT_EQ(gauge.Repainted().At(c.column, y), kRed) << c.height;
    }
    Placed<typename TypeParam::Control> none(0, 0);
    none.control.SetValue(TypeParam::kLow + 1);
    EXPECT_EQ(none.Repainted().Count(kRed), 0);
    EXPECT_EQ(none.control.GetValue(), TypeParam::kLow + 1);
}

TYPED_TEST(Gauge, ErasesNothing)
{
    EXPECT_FALSE(this->control.OnEraseBkgnd(nullptr));
}

TYPED_TEST(Gauge, IsKnownAtRunTimeAndAddsOneStyleBit)
{
    EXPECT_STREQ(this->control.GetRuntimeClass()->m_lpszClassName, TypeParam::kName);
    EXPECT_EQ(this->control.GetRuntimeClass()->m_wSchema, 0xFFFFu);
    EXPECT_EQ(this->control.GetStyle() & 0x4000u, 0x4000u);
    EXPECT_TRUE(this->control.IsKindOf(RUNTIME_CLASS(CStatic)));
}

TEST(LeftGauge, BeginsAtItsBottomEdge)
{
    Placed<CGraphIncline_Left> gauge(kWidth, kHeight);
    EXPECT_EQ(gauge.control.GetValue(), 0.0);
    EXPECT_EQ(Shown(gauge.control).At(50, 179), kRed);
}

// 0 is below its range: the line lies a whole scale height above the frame.
TEST(RightGauge, BeginsWithItsPointerOutOfSight)
{
    Placed<CGraphIncline_Right> gauge(kWidth, kHeight);
    EXPECT_EQ(gauge.control.GetValue(), 0.0);
    EXPECT_EQ(Shown(gauge.control).Count(kRed), 0);
    gauge.control.SetValue(179.9);
    EXPECT_EQ(gauge.control.GetValue(), 0.0);
}

TEST(GaugeScale, CountsFromItsLowEnd)
{
    const CRect frame(20, 10, 80, 200); // H = 190
    EXPECT_EQ(kLeftScale.RowOf(0.0, frame), 200);
    EXPECT_EQ(kLeftScale.RowOf(180.0, frame), 10);
    EXPECT_EQ(kLeftScale.RowOf(45.0, frame), 153) << "200 - 47.5, half upwards";
    EXPECT_EQ(kRightScale.RowOf(180.0, frame), 10);
    EXPECT_EQ(kRightScale.RowOf(360.0, frame), 200);
    EXPECT_EQ(kRightScale.RowOf(225.0, frame), 58) << "10 + 47.5, half upwards";
    EXPECT_EQ(kRightScale.RowOf(0.0, frame), -179) << "-180 + 0.5, cut toward zero";
    EXPECT_EQ(kLeftScale.RowOf(45, frame), 153);
    EXPECT_EQ(kRightScale.RowOf(225, frame), 58);
}

} // namespace
} // namespace tiltpole::controls::test
