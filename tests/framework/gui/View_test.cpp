// SPDX-License-Identifier: MIT
//
// Whose a view is: one made with new deletes itself after its window, any other stays the host's.
#include "framework/gui/gui.h"

#include <gtest/gtest.h>

#include <array>
#include <cstddef>
#include <memory>
#include <new>
#include <stdexcept>
#include <utility>

namespace {

struct Frame : CWnd
{
    Frame() { CreateEx(0, AfxRegisterWndClass(0), L"", WS_OVERLAPPED, 0, 0, 80, 60, nullptr, 0); }
};

// Counts its destructions.
class Counted : public CView
{
    DECLARE_DYNAMIC(Counted)

public:
    explicit Counted(int& deleted) : m_deleted(&deleted) {}
    ~Counted() override { ++*m_deleted; }

    BOOL CreateIn(CWnd* parent)
    {
        return Create(nullptr, nullptr, AFX_WS_DEFAULT_VIEW, CRect(0, 0, 20, 20), parent, 1);
    }

protected:
    void OnDraw(CDC*) override {}

private:
    int* m_deleted;
};

IMPLEMENT_DYNAMIC(Counted, CView)

TEST(View, MadeWithNewDeletesItselfWithItsWindow)
{
    int deleted = 0;
    Frame frame;
    auto* const view = new Counted(deleted);
    ASSERT_TRUE(view->CreateIn(&frame));
    EXPECT_EQ(deleted, 0);
    EXPECT_TRUE(view->DestroyWindow());
    EXPECT_EQ(deleted, 1);
}

TEST(View, MadeWithNewThatDoesNotThrowDeletesItselfToo)
{
    int deleted = 0;
    Frame frame;
    auto* const view = new (std::nothrow) Counted(deleted);
    ASSERT_TRUE(view && view->CreateIn(&frame));
    EXPECT_TRUE(view->DestroyWindow());
    EXPECT_EQ(deleted, 1);
}

TEST(View, MadeWithNewDeletesItselfWithItsParentsWindow)
{
    int deleted = 0;
    Frame frame;
    ASSERT_TRUE((new Counted(deleted))->CreateIn(&frame));
    frame.SendMessage(WM_CLOSE);
    EXPECT_EQ(deleted, 1);
}

TEST(View, MadeWithNewMayBeDeletedByItsHostWhileItHasAWindow)
{
    int deleted = 0;
    Frame frame;
    auto* const view = new Counted(deleted);
    ASSERT_TRUE(view->CreateIn(&frame));
    delete view;
    EXPECT_EQ(deleted, 1);
    EXPECT_EQ(frame.GetDlgItem(1), nullptr);
}

TEST(View, MadeWithNewDeletesItselfWhereItsWindowCannotBeCreated)
{
    int deleted = 0;
    EXPECT_FALSE((new Counted(deleted))->CreateIn(nullptr));
    EXPECT_EQ(deleted, 1) << "without a parent";

    Frame frame;
    EXPECT_FALSE((new Counted(deleted))
                     ->Create(L"no such class", L"", WS_CHILD, CRect(0, 0, 9, 9), &frame, 1));
    EXPECT_EQ(deleted, 2) << "without a class";

    class Refusing : public Counted
    {
    public:
        using Counted::Counted;

    protected:
        LRESULT WindowProc(UINT message, WPARAM wParam, LPARAM lParam) override
        {
            return message == WM_CREATE ? -1 : Counted::WindowProc(message, wParam, lParam);
        }
    };
    EXPECT_FALSE((new Refusing(deleted))->CreateIn(&frame));
    EXPECT_EQ(deleted, 3) << "refused in WM_CREATE";
}

TEST(View, KeepsItsWindowWhenAskedForASecondOne)
{
    int deleted = 0;
    Frame frame;
    auto* const view = new Counted(deleted);
    ASSERT_TRUE(view->CreateIn(&frame));
    EXPECT_FALSE(view->CreateIn(&frame));
    EXPECT_EQ(deleted, 0);
    EXPECT_NE(view->GetSafeHwnd(), nullptr);
}

TEST(View, ThatIsAVariableStaysAndCanBeCreatedAgain)
{
    int deleted = 0;
    Frame frame;
    {
        Counted view(deleted);
        ASSERT_TRUE(view.CreateIn(&frame));
        EXPECT_TRUE(view.DestroyWindow());
        EXPECT_EQ(deleted, 0);
        EXPECT_TRUE(view.CreateIn(&frame));
    }
    EXPECT_EQ(deleted, 1);
}

TEST(View, ThatIsAMemberStaysEvenInAnObjectMadeWithNew)
{
    int deleted = 0;
    struct Host : Frame
    {
        explicit Host(int& count) : view(count) {}
        Counted view;
    };
    const auto host = std::make_unique<Host>(deleted);
    ASSERT_TRUE(host->view.CreateIn(host.get()));
    EXPECT_TRUE(host->DestroyWindow());
    EXPECT_EQ(deleted, 0);
}

TEST(View, ThatIsAMemberOfAViewMadeWithNewIsDeletedOnceWithIt)
{
    int deleted = 0;
    Frame frame;
    struct Outer : Counted
    {
        explicit Outer(int& count) : Counted(count), inner(count) {}
        Counted inner;
    };
    auto* const outer = new Outer(deleted);
    ASSERT_TRUE(outer->CreateIn(&frame));
    ASSERT_TRUE(outer->inner.CreateIn(outer));
    EXPECT_TRUE(outer->DestroyWindow());
    EXPECT_EQ(deleted, 2);
}

TEST(View, ThatIsAnElementOrInPlaceStays)
{
    int deleted = 0;
    Frame frame;
    std::array<Counted, 1> views{Counted(deleted)};
    ASSERT_TRUE(views[0].CreateIn(&frame));
    const auto shared = std::make_shared<Counted>(deleted);
    ASSERT_TRUE(shared->CreateIn(&frame));
    alignas(Counted) std::array<std::byte, sizeof(Counted)> memory;
    auto* const placed = new (memory.data()) Counted(deleted);
    ASSERT_TRUE(placed->CreateIn(&frame));
    EXPECT_TRUE(frame.DestroyWindow());
    EXPECT_EQ(deleted, 0);
    placed->~Counted();
}

TEST(View, MadeWithNewIsKnownBesideOneMadeInItsArguments)
{
    int deleted = 0;
    Frame frame;
    struct Pair : Counted
    {
        Pair(int& count, Counted* made) : Counted(count), other(made) {}
        Counted* other;
    };
    auto* const pair = new Pair(deleted, new Counted(deleted));
    ASSERT_TRUE(pair->CreateIn(&frame));
    ASSERT_TRUE(pair->other->CreateIn(&frame));
    EXPECT_TRUE(frame.DestroyWindow());
    EXPECT_EQ(deleted, 2);
}

TEST(View, WhoseConstructorThrewLeavesNoTrace)
{
    int deleted = 0;
    const auto fail = []() -> int& { throw std::runtime_error("no counter"); };
    EXPECT_THROW(new Counted(fail()), std::runtime_error);
    EXPECT_THROW(new (std::nothrow) Counted(fail()), std::runtime_error);
    alignas(Counted) std::byte place[sizeof(Counted)];
    EXPECT_THROW(new (static_cast<void*>(place)) Counted(fail()), std::runtime_error);
    Frame frame;
    auto* const view = new Counted(deleted); // likely at the same address
    ASSERT_TRUE(view->CreateIn(&frame));
    EXPECT_TRUE(frame.DestroyWindow());
    EXPECT_EQ(deleted, 1);
}

TEST(View, MadeWithNewForAnAlignmentDeletesItselfToo)
{
    class alignas(64) Aligned : public Counted
    {
    public:
        using Counted::Counted;
    };
    int deleted = 0;
    Frame frame;
    auto* const view = new Aligned(deleted);
    ASSERT_TRUE(view->CreateIn(&frame));
    EXPECT_TRUE(view->DestroyWindow());
    EXPECT_EQ(deleted, 1);
}

TEST(View, WithoutAClassHasTheColorOfWindowsAndDoubleClicks)
{
    int deleted = 0;
    Frame frame;
    Counted view(deleted);
    ASSERT_TRUE(view.CreateIn(&frame));
    frame.ShowWindow(SW_SHOW);
    view.UpdateWindow();
    CClientDC dc(&view);
    EXPECT_EQ(dc.GetPixel(5, 5), GetSysColor(COLOR_WINDOW));

    class Refilled : public Counted
    {
    public:
        using Counted::Counted;

    protected:
        BOOL PreCreateWindow(CREATESTRUCT& created) override
        {
            if (!CView::PreCreateWindow(created)) return FALSE;
            created.lpszClass = AfxRegisterWndClass(0, nullptr, CBrush(RGB(1, 2, 3)));
            return TRUE;
        }
    } other(deleted);
    ASSERT_TRUE(other.CreateIn(&frame));
    other.UpdateWindow();
    CClientDC blue(&other);
    EXPECT_EQ(blue.GetPixel(5, 5), RGB(1, 2, 3)) << "a class of its own";
}

} // namespace
