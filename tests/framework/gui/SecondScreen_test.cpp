// SPDX-License-Identifier: MIT
//
// Windows that are moved from a screen with one device pixel to a unit of the toolkit to one with
// two. Every test has an application of its own.
#include "framework/gui/QtInterop.h"
#include "framework/gui/gui.h"

#include "tests/ScratchFolder.h"

#include <gtest/gtest.h>

#include <QApplication>
#include <QImage>
#include <QPixmap>
#include <QVBoxLayout>
#include <QWidget>

#include <memory>
#include <string>
#include <vector>

namespace {

constexpr COLORREF kFill = RGB(10, 200, 30);
constexpr COLORREF kLastPixel = RGB(250, 0, 0);

// Two screens beside each other, in memory: 800 x 600 units each.
struct TwoScreens : testing::Test
{
    ScratchFolder folder;
    int count = 1;
    char name[5] = "test";
    char* values[2] = {name, nullptr};
    std::unique_ptr<QApplication> application;

    TwoScreens()
    {
        const std::string screens = folder.Write("screens.json", R"({ "screens": [
            {"name": "near", "x": 0, "y": 0, "width": 800, "height": 600,
             "logicalDpi": 96, "logicalBaseDpi": 96, "dpr": 1},
            {"name": "far", "x": 800, "y": 0, "width": 800, "height": 600,
             "logicalDpi": 96, "logicalBaseDpi": 96, "dpr": 2}
        ] })");
        qputenv("QT_QPA_PLATFORM", ("offscreen:configfile=" + screens).c_str());
        application = std::make_unique<QApplication>(count, values);
    }
    ~TwoScreens() override { qputenv("QT_QPA_PLATFORM", "offscreen"); }

    static void Settle()
    {
        for (int i = 0; i < 5; ++i)
            QCoreApplication::processEvents();
    }

    // Moves a top-level widget, and lets the events run that follow.
    static void MoveTo(QWidget& widget, int x)
    {
        widget.move(x, 50);
        Settle();
    }

    static void Near(QWidget& widget)
    {
        MoveTo(widget, 100);
        ASSERT_EQ(widget.devicePixelRatio(), 1.0);
    }
    static void Far(QWidget& widget)
    {
        MoveTo(widget, 900);
        ASSERT_EQ(widget.devicePixelRatio(), 2.0);
    }
};

// Fills itself, and colors its last pixel.
class Filled : public CWnd
{
public:
    std::vector<CSize> sizes;
    std::vector<CPoint> places;

    BOOL Make(CWnd* parent, int width, int height)
    {
        return CreateEx(0, AfxRegisterWndClass(CS_HREDRAW | CS_VREDRAW), L"", parent ? WS_CHILD : 0,
                        CRect(7, 9, 7 + width, 9 + height), parent, 1);
    }

    CSize Client() const
    {
        CRect client;
        GetClientRect(&client);
        return client.Size();
    }

protected:
    afx_msg void OnPaint()
    {
        CPaintDC dc(this);
        const CSize size = Client();
        const CRect all({0, 0}, size);
        dc.FillSolidRect(&all, kFill);
        dc.SetPixel(size.cx - 1, size.cy - 1, kLastPixel);
    }
    afx_msg void OnSize(UINT, int width, int height) { sizes.emplace_back(width, height); }
    afx_msg void OnMove(int x, int y) { places.emplace_back(x, y); }

    DECLARE_MESSAGE_MAP()
};

BEGIN_MESSAGE_MAP(Filled, CWnd)
ON_WM_PAINT()
ON_WM_SIZE()
ON_WM_MOVE()
END_MESSAGE_MAP()

// Expects the window's pixels, its last one at the end, from `corner` on in what the widget shows.
void ExpectShown(QWidget& widget, QPoint corner, QSize size)
{
    const QImage shown = widget.grab().toImage();
    int filled = 0;
    for (int y = 0; y < shown.height(); ++y)
        for (int x = 0; x < shown.width(); ++x)
            filled += shown.pixel(x, y) == qRgb(10, 200, 30);
    EXPECT_EQ(filled, size.width() * size.height() - 1);
    const QPoint last = corner + QPoint(size.width() - 1, size.height() - 1);
    ASSERT_TRUE(shown.rect().contains(last));
    EXPECT_EQ(shown.pixel(last), qRgb(250, 0, 0));
}

// 123 x 45 device pixels are 61.5 x 22.5 units of the second screen.
TEST_F(TwoScreens, ShowATopLevelWindowInItsOwnPixels)
{
    Filled window;
    ASSERT_TRUE(window.Make(nullptr, 123, 45));
    window.ShowWindow(SW_SHOW);
    QWidget& widget = *framework::NativeWidget(window);
    Near(widget);
    EXPECT_EQ(widget.size(), QSize(123, 45));
    window.sizes.clear();

    Far(widget);
    EXPECT_EQ(widget.size(), QSize(62, 23));
    EXPECT_EQ(window.Client(), CSize(123, 45));
    ExpectShown(widget, {0, 0}, {123, 45});

    Near(widget);
    EXPECT_EQ(widget.size(), QSize(123, 45));
    ExpectShown(widget, {0, 0}, {123, 45});
    EXPECT_TRUE(window.sizes.empty()) << "its size never changed";
}

// By the window's own call. The corner is given in pixels of the screen that the window leaves.
TEST_F(TwoScreens, ShowAWindowThatItsHostMovesInItsOwnPixels)
{
    Filled window;
    ASSERT_TRUE(window.Make(nullptr, 123, 45));
    window.ShowWindow(SW_SHOW);
    QWidget& widget = *framework::NativeWidget(window);
    Near(widget);
    window.sizes.clear();
    window.SetWindowPos(nullptr, 900, 50, 0, 0, SWP_NOSIZE);
    Settle();
    ASSERT_EQ(widget.devicePixelRatio(), 2.0);
    EXPECT_EQ(widget.size(), QSize(62, 23));
    EXPECT_TRUE(window.sizes.empty()) << "its size never changed";
    ExpectShown(widget, {0, 0}, {123, 45});
}

TEST_F(TwoScreens, ShowAChildInItsPlaceAndSize)
{
    Filled window;
    ASSERT_TRUE(window.Make(nullptr, 200, 100));
    Filled child;
    ASSERT_TRUE(child.Make(&window, 60, 40));
    child.ShowWindow(SW_SHOW);
    window.ShowWindow(SW_SHOW);
    QWidget& widget = *framework::NativeWidget(window);
    Near(widget);
    EXPECT_EQ(framework::NativeWidget(child)->geometry(), QRect(7, 9, 60, 40));

    Far(widget);
    EXPECT_EQ(framework::NativeWidget(child)->geometry(), QRect(3, 4, 31, 21)) << "encloses it";
    EXPECT_EQ(child.Client(), CSize(60, 40));
    const QImage shown = widget.grab().toImage();
    EXPECT_EQ(shown.pixel(7 + 59, 9 + 39), qRgb(250, 0, 0)) << "the child's last pixel";
}

// Beside other widgets without a layout: its place is theirs, in units, its size its own.
struct TwoScreensWithoutALayout : TwoScreens
{
    QWidget page;
    Filled window;
    QWidget* widget = nullptr;

    void Show(QPoint at)
    {
        ASSERT_TRUE(window.Make(nullptr, 123, 45));
        widget = framework::NativeWidget(window);
        widget->setParent(&page);
        widget->move(at);
        window.ShowWindow(SW_SHOW);
        page.resize(200, 100);
        page.show();
        Near(page);
        window.sizes.clear();
        window.places.clear();
    }
};

TEST_F(TwoScreensWithoutALayout, KeepAWindowInItsOwnPixelsAtItsPlaceInUnits)
{
    Show({20, 10});
    EXPECT_EQ(widget->geometry(), QRect(20, 10, 123, 45));

    Far(page);
    EXPECT_EQ(widget->geometry(), QRect(20, 10, 62, 23));
    EXPECT_EQ(window.Client(), CSize(123, 45));
    ExpectShown(page, {40, 20}, {123, 45});
    CRect place;
    window.GetWindowRect(&place);
    const QPoint corner = 2 * page.mapToGlobal(QPoint(20, 10));
    EXPECT_EQ(place, CRect(corner.x(), corner.y(), corner.x() + 123, corner.y() + 45));

    Near(page);
    EXPECT_EQ(widget->geometry(), QRect(20, 10, 123, 45));
    ExpectShown(page, {20, 10}, {123, 45});
    EXPECT_TRUE(window.sizes.empty()) << "its size never changed";
    EXPECT_EQ(window.places, (std::vector<CPoint>{
                                 {40, 20},
                                 {20, 10}
    }));
}

// The window's own call gives its corner in pixels, here in the middle of a unit.
TEST_F(TwoScreensWithoutALayout, KeepAWindowWhereItsHostPutIt)
{
    Show({0, 0});
    Far(page);
    window.MoveWindow(31, 17, 123, 45);
    Settle();
    EXPECT_EQ(widget->geometry(), QRect(15, 8, 62, 23));
    ExpectShown(page, {31, 17}, {123, 45});
    page.hide();
    page.show();
    Settle();
    ExpectShown(page, {31, 17}, {123, 45}); // it stays between two units
    Near(page);
    EXPECT_EQ(widget->geometry(), QRect(15, 8, 123, 45));
    ExpectShown(page, {15, 8}, {123, 45});
    window.SetWindowPos(nullptr, 0, 0, 0, 0, SWP_NOMOVE | SWP_NOSIZE | SWP_FRAMECHANGED);
    EXPECT_EQ(widget->geometry(), QRect(15, 8, 123, 45));
    widget->resize(60, 30); // the host decides on the size too, from now on in units
    Far(page);
    EXPECT_EQ(widget->geometry(), QRect(15, 8, 60, 30));
    EXPECT_EQ(window.Client(), CSize(120, 60));
    ExpectShown(page, {30, 16}, {120, 60});
}

TEST_F(TwoScreensWithoutALayout, ShowTheChildrenOfAWindowInTheirPlaces)
{
    Show({20, 10});
    Filled child;
    ASSERT_TRUE(child.Make(&window, 60, 20));
    child.ShowWindow(SW_SHOW);
    Far(page);
    EXPECT_EQ(child.Client(), CSize(60, 20));
    const QImage shown = page.grab().toImage();
    EXPECT_EQ(shown.pixel(40 + 7 + 59, 20 + 9 + 19), qRgb(250, 0, 0)) << "the child's last pixel";
    EXPECT_EQ(shown.pixel(40 + 122, 20 + 44), qRgb(250, 0, 0)) << "the window's";
}

// A layout decides in units: the window gets the pixels that these are on its screen.
TEST_F(TwoScreens, GiveAWindowInALayoutThePixelsOfItsScreen)
{
    Filled window;
    ASSERT_TRUE(window.Make(nullptr, 50, 40));
    QWidget page;
    QVBoxLayout layout(&page);
    layout.setContentsMargins(0, 0, 0, 0);
    layout.addWidget(framework::NativeWidget(window));
    window.ShowWindow(SW_SHOW);
    page.resize(200, 100);
    page.show();
    Near(page);
    EXPECT_EQ(window.Client(), CSize(200, 100));
    window.sizes.clear();

    Far(page);
    EXPECT_EQ(window.Client(), CSize(400, 200));
    EXPECT_EQ(window.sizes, std::vector<CSize>{CSize(400, 200)});
    ExpectShown(page, {0, 0}, {400, 200});

    Near(page);
    EXPECT_EQ(window.Client(), CSize(200, 100));
    ExpectShown(page, {0, 0}, {200, 100});
}

} // namespace
