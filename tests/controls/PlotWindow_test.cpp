// SPDX-License-Identifier: MIT
//
// The window of a scatter plot, and the folder in which it keeps its view.
#include "controls/GraphMagnetic_XY.h"
#include "controls/GraphMagnetic_XZ.h"
#include "framework/gui/detail/WindowRecord.h"

#include "tests/ScratchFolder.h"
#include "tests/controls/ControlTest.h"

#include <filesystem>
#include <string>

namespace tiltpole::controls::test {
namespace {

constexpr DWORD kShown = WS_CHILD | WS_VISIBLE;

struct XY : CGraphMagnetic_XY
{
    using CGraphMagnetic_XY::ConfigRead;
    using CGraphMagnetic_XY::ConfigSave;
    using CGraphMagnetic_XY::WorldToClient;
    static constexpr const char* kFile = "GraphMagnetic_XY.cfg";
};

struct XZ : CGraphMagnetic_XZ
{
    using CGraphMagnetic_XZ::ConfigRead;
    using CGraphMagnetic_XZ::ConfigSave;
    using CGraphMagnetic_XZ::WorldToClient;
    static constexpr const char* kFile = "GraphMagnetic_XZ.cfg";
};

template <class Control>
struct PlotWindow : testing::Test
{
    ScratchFolder folder;
    Dialog dialog;
    const std::filesystem::path workingFolder = std::filesystem::current_path();

    PlotWindow() { framework::SetModulePath(CString(folder.Path("host").c_str())); }
    ~PlotWindow() override
    {
        std::filesystem::current_path(workingFolder);
        framework::SetModulePath(CString());
    }

    void Create(Control& plot, UINT id = 3)
    {
        EXPECT_TRUE(plot.Create(L"a class", L"a name", kShown, CRect(5, 6, 205, 156), &dialog, id));
    }
};

using Plots = testing::Types<XY, XZ>;
TYPED_TEST_SUITE(PlotWindow, Plots);

TYPED_TEST(PlotWindow, HasAClassOfStyleThreeWithoutABackground)
{
    TypeParam plot;
    this->Create(plot);
    const framework::WindowClass* const windowClass = plot.GetSafeHwnd()->windowClass;
    EXPECT_EQ(windowClass->style, 3u);
    EXPECT_FALSE(windowClass->hasBackground);
    TypeParam second;
    this->Create(second, 4);
    EXPECT_EQ(second.GetSafeHwnd()->windowClass, windowClass) << "registered once";
}

TEST(PlotWindowClass, IsAnotherForEachPlane)
{
    Dialog dialog;
    CGraphMagnetic_XY xy;
    CGraphMagnetic_XZ xz;
    xy.Create(nullptr, nullptr, kShown, CRect(0, 0, 9, 9), &dialog, 1);
    xz.Create(nullptr, nullptr, kShown, CRect(0, 0, 9, 9), &dialog, 2);
    EXPECT_NE(xy.GetSafeHwnd()->windowClass, xz.GetSafeHwnd()->windowClass);
}

TYPED_TEST(PlotWindow, HasNoTextWhateverNameItIsGiven)
{
    TypeParam plot;
    this->Create(plot);
    EXPECT_EQ(plot.GetWindowTextLength(), 0);
}

TYPED_TEST(PlotWindow, HasTheStylePlaceAndIdThatItIsGiven)
{
    TypeParam plot;
    this->Create(plot);
    EXPECT_EQ(plot.GetStyle(), kShown);
    EXPECT_EQ(plot.GetDlgCtrlID(), 3);
    EXPECT_EQ(plot.GetParent(), &this->dialog);
    CRect place;
    CRect around;
    plot.GetWindowRect(&place);
    this->dialog.GetWindowRect(&around);
    EXPECT_EQ(place, CRect(around.left + 5, around.top + 6, around.left + 205, around.top + 156));
}

TYPED_TEST(PlotWindow, StaysAsItIsWhenItIsCreatedAgain)
{
    TypeParam plot;
    this->Create(plot);
    plot.AddTrackPoint(0, 0, 0);
    plot.UpdateWindow();
    const Shown before(plot);
    HWND const window = plot.GetSafeHwnd();
    EXPECT_TRUE(plot.Create(nullptr, nullptr, kShown, CRect(0, 0, 50, 50), &this->dialog, 9));
    EXPECT_EQ(plot.GetSafeHwnd(), window);
    EXPECT_EQ(plot.GetDlgCtrlID(), 3);
    plot.UpdateWindow();
    EXPECT_EQ(Shown(plot), before);
}

// Only Create makes the layers with the grid; Clear makes them anew.
TYPED_TEST(PlotWindow, IsBlackUntilItIsClearedWhereItWasNotMadeByItsOwnCreate)
{
    TypeParam plot;
    ASSERT_TRUE(plot.CreateEx(WS_EX_CLIENTEDGE | WS_EX_STATICEDGE, L"STATIC", L"", kShown, 5, 6,
                              200, 150, this->dialog.GetSafeHwnd(), 3));
    plot.AddTrackPoint(0, 0, 0);
    plot.UpdateWindow();
    const Shown bare(plot);
    EXPECT_EQ(bare.Count(kBlack), 194 * 144);

    TypeParam made;
    this->Create(made, 4);
    made.UpdateWindow();
    plot.Clear();
    plot.UpdateWindow();
    EXPECT_EQ(Shown(plot), Shown(made));
    EXPECT_LT(Shown(plot).Count(kBlack), 194 * 144);
}

TYPED_TEST(PlotWindow, ShowsItsSamplesInTheWindowThatFollows)
{
    TypeParam plot;
    this->Create(plot);
    plot.AddTrackPoint(0, 0, 0);
    plot.UpdateWindow();
    const Shown before(plot);
    plot.DestroyWindow();
    this->Create(plot);
    plot.UpdateWindow();
    EXPECT_EQ(Shown(plot), before);
}

// Without a separator the whole name is taken for the folder.
TYPED_TEST(PlotWindow, KeepsItsViewBelowTheModulesNameWhereThatHasNoFolder)
{
    std::filesystem::create_directory(this->folder.Path("host"));
    std::filesystem::current_path(this->folder.Native());
    framework::SetModulePath(CString(L"host"));
    EXPECT_TRUE(TypeParam().ConfigSave());
    EXPECT_NE(this->folder.Read(std::string("host/") + TypeParam::kFile), "");
    EXPECT_TRUE(TypeParam().ConfigRead());
}

// The name is cut to 259 characters before its folder is taken: what is cut is the last part here,
// and the folder before it remains.
TYPED_TEST(PlotWindow, KeepsItsViewInTheFolderThatALongNameIsCutTo)
{
    const std::string outer(100, 'd');
    const std::string inner(250, 'e');
    ASSERT_LT(this->folder.Path(outer).size(), 258u);
    std::filesystem::create_directories(this->folder.Path(outer + '/' + inner));
    framework::SetModulePath(CString(this->folder.Path(outer + '/' + inner + "/host").c_str()));
    EXPECT_TRUE(TypeParam().ConfigSave());
    EXPECT_NE(this->folder.Read(outer + '/' + TypeParam::kFile), "");
    EXPECT_EQ(this->folder.Read(outer + '/' + inner + '/' + TypeParam::kFile), "");
    EXPECT_TRUE(TypeParam().ConfigRead());
}

// 259 characters are the longest name that is not cut.
TYPED_TEST(PlotWindow, KeepsItsViewBesideAModuleWhoseNameJustFits)
{
    const std::string inner(257 - this->folder.Path("").size(), 'f');
    const std::string name = this->folder.Path(inner) + "/h";
    ASSERT_EQ(name.size(), 259u);
    std::filesystem::create_directories(this->folder.Path(inner));
    for (const std::string& module : {name, name + "ost"}) {
        framework::SetModulePath(CString(module.c_str()));
        EXPECT_TRUE(TypeParam().ConfigSave()) << module.size();
        EXPECT_NE(this->folder.Read(inner + '/' + TypeParam::kFile), "") << module.size();
        std::filesystem::remove(this->folder.Path(inner + '/' + TypeParam::kFile));
    }
}

} // namespace
} // namespace tiltpole::controls::test
