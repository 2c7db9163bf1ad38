// SPDX-License-Identifier: MIT
#include "controls/GraphMagnetic_XY.h"
#include "controls/GraphMagnetic_XZ.h"

#include "tests/ScratchFolder.h"
#include "tests/controls/ControlTest.h"

#include <climits>
#include <cstring>
#include <filesystem>
#include <string>

namespace tiltpole::controls::test {
namespace {

template <class Base>
struct Reach : Base
{
    using Base::ClientToWorld;
    using Base::ConfigRead;
    using Base::ConfigSave;
    using Base::InvalidateCtrl;
    using Base::WorldToClient;
};

struct XY
{
    using Control = Reach<CGraphMagnetic_XY>;
    static constexpr const char* kName = "CGraphMagnetic_XY";
    static constexpr const char* kFile = "GraphMagnetic_XY.cfg";
    static constexpr const char* kDefaults = "GRAPHMAGNETIC_XY:-500, -500, 2.500000,\r\n";
    static constexpr const char* kOther = "GRAPHMAGNETIC_XY:-100, -200, 1.000000,\r\n";
    static constexpr COLORREF kTrack = kWhite;
    static MagneticPlotPoint Point(int h, int v) { return {h, v, 77777}; }
};

struct XZ
{
    using Control = Reach<CGraphMagnetic_XZ>;
    static constexpr const char* kName = "CGraphMagnetic_XZ";
    static constexpr const char* kFile = "GraphMagnetic_XZ.cfg";
    static constexpr const char* kDefaults = "GRAPHMAGNETIC_XZ:0, -500, 3.000000,\r\n";
    static constexpr const char* kOther = "GRAPHMAGNETIC_XZ:-100, -200, 1.000000,\r\n";
    static constexpr COLORREF kTrack = kGreen;
    static MagneticPlotPoint Point(int h, int v) { return {h, 77777, v}; }
};

// The module path points to an empty folder of the test.
class ModuleFolder : public ScratchFolder
{
public:
    ModuleFolder() { framework::SetModulePath(CString(Path("host").c_str())); }
    ~ModuleFolder() { framework::SetModulePath(CString()); }
};

// A plot of 194 x 144 pixels inside its edges whose view starts at (-100, -200) with one count per
// pixel: (h, v) is at column h + 100, row 144 - (v + 200).
template <class Plane>
struct Plot : testing::Test
{
    ModuleFolder folder;
    Dialog dialog;
    std::unique_ptr<typename Plane::Control> control;

    Plot()
    {
        folder.Write(Plane::kFile, Plane::kOther);
        control = std::make_unique<typename Plane::Control>();
        EXPECT_TRUE(control->Create(nullptr, nullptr, WS_CHILD | WS_VISIBLE, CRect(0, 0, 200, 150),
                                    &dialog, 3));
        control->UpdateWindow();
    }

    void Add(int h, int v)
    {
        const MagneticPlotPoint p = Plane::Point(h, v);
        control->AddTrackPoint(p.nFirst, p.nSecond, p.nThird);
    }
    void AddCenter(int h, int v)
    {
        const MagneticPlotPoint p = Plane::Point(h, v);
        control->AddCenterPoint(p.nFirst, p.nSecond, p.nThird);
    }
    Shown Now()
    {
        control->UpdateWindow();
        return Shown(*control);
    }
};

using Planes = testing::Types<XY, XZ>;
TYPED_TEST_SUITE(Plot, Planes);

// 114 rows inside the edges: the bottom, and every cross with it, is 30 rows higher.
TYPED_TEST(Plot, DrawsItsCrossesWhereTheNewSizeHasThem)
{
    this->Add(0, -100);
    EXPECT_EQ(this->Now().At(100, 44), TypeParam::kTrack);
    this->control->MoveWindow(0, 0, 200, 120);
    this->control->InvalidateCtrl();
    this->control->Invalidate();
    const Shown shown = this->Now();
    EXPECT_EQ(shown.At(100, 14), TypeParam::kTrack);
    EXPECT_NE(shown.At(100, 44), TypeParam::kTrack);
}

TYPED_TEST(Plot, LosesThreePixelsASideToItsEdges)
{
    CRect client;
    this->control->GetClientRect(&client);
    EXPECT_EQ(client, CRect(0, 0, 194, 144));
    EXPECT_EQ(this->control->GetExStyle(), 0x20200u);
}

TYPED_TEST(Plot, DrawsASampleAsACrossWithoutItsEndPixels)
{
    this->Add(0, -100);
    const Shown shown = this->Now();
    const COLORREF track = TypeParam::kTrack;
    EXPECT_EQ(shown.At(100, 44), track);
    EXPECT_EQ(shown.At(97, 44), track);
    EXPECT_EQ(shown.At(102, 44), track);
    EXPECT_EQ(shown.At(103, 44), kBlack) << "the end pixel of the line";
    EXPECT_EQ(shown.At(100, 41), track);
    EXPECT_EQ(shown.At(100, 47), kBlack);
}

TYPED_TEST(Plot, DrawsCentersInRedByOrOverTheGrid)
{
    this->AddCenter(0, -100);
    // On the axis glyph: the arrow's corner is at (20, 124), cyan under red is white.
    this->AddCenter(-80, -180);
    const Shown shown = this->Now();
    EXPECT_EQ(shown.At(100, 44), kRed);
    EXPECT_EQ(shown.At(20, 124), kWhite);
    EXPECT_EQ(shown.At(30, 124), RGB(0, 255, 255));
}

TYPED_TEST(Plot, ZoomsWithTheEleventhSampleOutside)
{
    for (int i = 0; i < 10; ++i)
        this->Add(1000 + i, 0);
    EXPECT_EQ(this->folder.Read(TypeParam::kFile), TypeParam::kOther) << "ten are not enough";
    this->Add(0, -100);
    EXPECT_EQ(this->folder.Read(TypeParam::kFile), TypeParam::kOther) << "inside does not count";
    this->Add(1010, 0);
    EXPECT_NE(this->folder.Read(TypeParam::kFile), TypeParam::kOther);
    // Extent 1010 x 100: 1010/194·1.5 counts per pixel; the center is (505, -50).
    long x = 0;
    long y = 0;
    this->control->WorldToClient(505, -50, x, y);
    EXPECT_NEAR(static_cast<double>(x), 97, 1);
    EXPECT_NEAR(static_cast<double>(y), 72, 1);
    EXPECT_GT(this->Now().Count(TypeParam::kTrack), 5) << "the samples are drawn in the new view";
}

TYPED_TEST(Plot, CountsTheRightAndBottomEdgeAsOutside)
{
    for (int i = 0; i < 5; ++i)
        this->Add(94, -100); // column 194
    for (int i = 0; i < 5; ++i)
        this->Add(0, -200); // row 144
    EXPECT_EQ(this->folder.Read(TypeParam::kFile), TypeParam::kOther);
    this->Add(94, -100);
    EXPECT_NE(this->folder.Read(TypeParam::kFile), TypeParam::kOther);
}

TYPED_TEST(Plot, StartsCountingAgainAfterAZoomAndAfterClear)
{
    for (int i = 0; i < 8; ++i)
        this->Add(1000, 0);
    this->control->Clear();
    for (int i = 0; i < 10; ++i)
        this->Add(1000 + i, 0);
    EXPECT_EQ(this->folder.Read(TypeParam::kFile), TypeParam::kOther) << "after Clear";
    this->Add(1010, 0);
    EXPECT_NE(this->folder.Read(TypeParam::kFile), TypeParam::kOther);

    this->folder.Write(TypeParam::kFile, TypeParam::kOther);
    for (int i = 0; i < 10; ++i)
        this->Add(100000 + i, 0);
    EXPECT_EQ(this->folder.Read(TypeParam::kFile), TypeParam::kOther) << "after a zoom";
    this->Add(100010, 0);
    EXPECT_NE(this->folder.Read(TypeParam::kFile), TypeParam::kOther);
}

TYPED_TEST(Plot, LeavesTheViewAloneBelowTwoSamples)
{
    this->Add(5000, 5000);
    this->control->ZoomAll();
    EXPECT_EQ(this->folder.Read(TypeParam::kFile), TypeParam::kOther);
}

TYPED_TEST(Plot, NeverZoomsByItselfAtScaleZero)
{
    this->Add(0, 0);
    this->Add(0, 0);
    this->control->ZoomAll(); // all samples coincide: scale 0
    long x = 9;
    long y = 9;
    this->control->WorldToClient(123, 456, x, y);
    EXPECT_EQ(x, 0);
    EXPECT_EQ(y, 0);
    // Each further sample maps to (0, 0), inside; it counts, but only one outside would zoom.
    for (int i = 0; i < 20; ++i)
        this->Add(i, i);
    this->control->WorldToClient(123, 456, x, y);
    EXPECT_EQ(x, 0);
}

// Above 1000 counts per pixel samples inside count too: the first one outside is the eleventh.
TYPED_TEST(Plot, CountsEverySampleWhileTheScaleIsOutOfRange)
{
    const auto begin = [this](const char* view) {
        const std::string line = std::string(TypeParam::kOther).substr(0, 17) + view;
        this->folder.Write(TypeParam::kFile, line);
        this->control = std::make_unique<typename TypeParam::Control>();
        this->control->Create(nullptr, nullptr, WS_CHILD, CRect(0, 0, 200, 150), &this->dialog, 4);
        for (int i = 0; i < 10; ++i)
            this->Add(1000, 1000);
        EXPECT_EQ(this->folder.Read(TypeParam::kFile), line) << "inside";
        this->Add(-1, -1000000);
        return this->folder.Read(TypeParam::kFile) != line;
    };
    EXPECT_TRUE(begin("0, 0, 1000.000001,"));
    EXPECT_FALSE(begin("0, 0, 1000.000000,"));
}

TYPED_TEST(Plot, NeverZoomsForCenters)
{
    this->Add(0, -100); // a zoom needs two samples
    this->Add(10, -90);
    for (int i = 0; i < 30; ++i)
        this->AddCenter(1000 + i, 0);
    for (int i = 0; i < 10; ++i)
        this->Add(1000 + i, 0);
    EXPECT_EQ(this->folder.Read(TypeParam::kFile), TypeParam::kOther);
}

TYPED_TEST(Plot, EmptiesItselfAndKeepsItsView)
{
    this->Add(0, -100);
    this->AddCenter(10, -110);
    this->control->Clear();
    const Shown shown = this->Now();
    EXPECT_EQ(shown.Count(TypeParam::kTrack), 0);
    EXPECT_EQ(shown.Count(kRed), 0);
    this->Add(0, -100);
    EXPECT_EQ(this->Now().At(100, 44), TypeParam::kTrack);
}

// The client area is measured with the layers, so that new crosses match the existing ones.
TYPED_TEST(Plot, TakesANewSizeWithItsLayersAndNotWithAPaint)
{
    this->control->MoveWindow(0, 0, 300, 250);
    this->control->UpdateWindow();
    this->Add(0, -100);
    EXPECT_EQ(this->Now().At(100, 44), TypeParam::kTrack);
    this->control->Clear();
    long x = 0;
    long y = 0;
    this->control->WorldToClient(0, -100, x, y);
    EXPECT_EQ(x, 100);
    EXPECT_EQ(y, 144);
}

// A hundredth of a count per pixel: the limits of an int lie far beyond any pixel.
TYPED_TEST(Plot, ShowsNothingOfWhatNoPixelCanReach)
{
    for (const int limit : {INT_MIN, INT_MAX}) {
        this->AddCenter(limit, 0);
        this->AddCenter(0, limit);
    }
    this->Add(0, 0);
    this->Add(1, 1);
    this->control->ZoomAll();
    EXPECT_EQ(this->Now().Count(kRed), 0);
}

TYPED_TEST(Plot, KeepsItsViewBetweenRuns)
{
    this->Add(0, 0);
    this->Add(388, 288);
    this->control->ZoomAll();
    // 388/194 = 2, 288/144 = 2, times 1.5; origin (194 - 291, 144 - 216), plus one half, truncated.
    const std::string expected =
        std::string(TypeParam::kOther).substr(0, 17) + "-96, -71, 3.000000,\r\n";
    EXPECT_EQ(this->folder.Read(TypeParam::kFile), expected);
    typename TypeParam::Control next;
    EXPECT_TRUE(next.ConfigSave());
    EXPECT_EQ(this->folder.Read(TypeParam::kFile), expected);
}

#if !defined(_WIN32)
TYPED_TEST(Plot, KeepsItsViewInAFolderWithABackslashInItsName)
{
    const std::string name = R"(north\east)";
    std::filesystem::create_directory(this->folder.Path(name));
    framework::SetModulePath(CString(this->folder.Path(name + "/host").c_str()));
    typename TypeParam::Control fresh;
    EXPECT_TRUE(fresh.ConfigSave());
    EXPECT_EQ(this->folder.Read(name + '/' + TypeParam::kFile), TypeParam::kDefaults);
}
#endif

TYPED_TEST(Plot, WritesItsDefaultsByteForByte)
{
    std::filesystem::remove(this->folder.Path(TypeParam::kFile));
    typename TypeParam::Control fresh;
    EXPECT_FALSE(fresh.ConfigRead()) << "no file";
    EXPECT_TRUE(fresh.ConfigSave());
    EXPECT_EQ(this->folder.Read(TypeParam::kFile), TypeParam::kDefaults);
}

TYPED_TEST(Plot, SurvivesAnyViewFile)
{
    for (const std::string& text :
         {std::string(), std::string(100000, 'x'), std::string("\0\0\xff\xfe", 4)}) {
        this->folder.Write(TypeParam::kFile, text);
        typename TypeParam::Control fresh;
        EXPECT_TRUE(fresh.ConfigRead());
        EXPECT_TRUE(fresh.ConfigSave());
        EXPECT_EQ(this->folder.Read(TypeParam::kFile), TypeParam::kDefaults);
    }
}

TYPED_TEST(Plot, FailsToSaveWhereItMayNotWrite)
{
    std::filesystem::remove(this->folder.Path(TypeParam::kFile));
    std::filesystem::create_directory(this->folder.Path(TypeParam::kFile));
    EXPECT_FALSE(this->control->ConfigSave());
}

TYPED_TEST(Plot, AnswersTrueEvenWhenItCouldNotBeMade)
{
    typename TypeParam::Control orphan;
    EXPECT_TRUE(orphan.Create(nullptr, nullptr, WS_CHILD, CRect(0, 0, 9, 9), nullptr, 1));
    EXPECT_EQ(orphan.GetSafeHwnd(), nullptr);
    for (int i = 0; i < 30; ++i)
        orphan.AddTrackPoint(i * 1000, i, i);
    orphan.AddCenterPoint(1, 2, 3);
    orphan.ZoomAll();
    orphan.Clear();
    EXPECT_EQ(this->folder.Read(TypeParam::kFile), TypeParam::kOther) << "no area, no new view";
}

TYPED_TEST(Plot, TakesTheColumnFromItsResult)
{
    long wx = 50;
    long wy = 0;
    this->control->ClientToWorld(123456, 44, wx, wy);
    EXPECT_EQ(wx, -50);
    EXPECT_EQ(wy, -100);
}

TYPED_TEST(Plot, MeasuresPixelsCutTowardsZero)
{
    EXPECT_EQ(this->control->GetDistance({0, 0}, {3, 4}), 5);
    EXPECT_EQ(this->control->GetDistance({0, 0}, {1, 1}), 1);
    EXPECT_EQ(this->control->GetDistance({INT_MIN, 0}, {INT_MAX, 0}), INT_MAX);
}

TYPED_TEST(Plot, IsKnownAtRunTime)
{
    EXPECT_STREQ(this->control->GetRuntimeClass()->m_lpszClassName, TypeParam::kName);
    EXPECT_EQ(this->control->GetRuntimeClass()->m_wSchema, 0xFFFFu);
    EXPECT_TRUE(this->control->IsKindOf(RUNTIME_CLASS(CWnd)));
}

TYPED_TEST(Plot, DrawsItsCrossesOnAContextOfTheHost)
{
    this->Add(0, -100);
    this->AddCenter(10, -110);
    CDC memory;
    memory.CreateCompatibleDC(nullptr);
    CBitmap bitmap;
    bitmap.CreateCompatibleBitmap(&memory, 194, 144);
    CBitmap* const before = memory.SelectObject(&bitmap);
    const CRect all(0, 0, 194, 144);
    memory.FillSolidRect(&all, kBlack);
    this->control->DrawTrackPoints(&memory);
    EXPECT_EQ(memory.GetPixel(100, 44), TypeParam::kTrack);
    EXPECT_EQ(memory.GetPixel(110, 54), kBlack);
    this->control->DrawCenterPoints(&memory);
    EXPECT_EQ(memory.GetPixel(110, 54), kRed);
    EXPECT_EQ(memory.GetPixel(100, 44), TypeParam::kTrack);
    memory.SelectObject(before);
}

TYPED_TEST(Plot, DrawsNothingWithoutAContext)
{
    this->Add(0, -100);
    this->AddCenter(10, -110);
    const Shown before = this->Now();
    this->control->DrawTrackPoints(nullptr);
    this->control->DrawCenterPoints(nullptr);
    EXPECT_EQ(this->Now(), before);
}

} // namespace
} // namespace tiltpole::controls::test
