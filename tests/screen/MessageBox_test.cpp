// SPDX-License-Identifier: MIT
//
// Message boxes as a user sees them: icon, buttons, and what the program is told of the one pressed.
#include "framework/gui/gui.h"

#include <gtest/gtest.h>

#include <QApplication>
#include <QMessageBox>
#include <QPushButton>
#include <QTimer>

#include <utility>
#include <vector>

namespace {

struct Shown
{
    QString title;
    QString text;
    QMessageBox::Icon icon = QMessageBox::NoIcon;
    QMessageBox::StandardButtons buttons;
    int answer = 0;
};

// Shows a box and presses one of its buttons.
Shown Press(QMessageBox::StandardButton pressed, UINT style)
{
    Shown shown;
    QTimer::singleShot(0, [&shown, pressed] {
        auto* const box = qobject_cast<QMessageBox*>(QApplication::activeModalWidget());
        ASSERT_NE(box, nullptr);
        shown.title = box->windowTitle();
        shown.text = box->text();
        shown.icon = box->icon();
        shown.buttons = box->standardButtons();
        if (box->button(pressed))
            box->button(pressed)->click();
        else
            box->close();
    });
    shown.answer = MessageBoxW(nullptr, L"Was the pole turned?", L"tiltpole", style);
    return shown;
}

} // namespace

TEST(MessageBox, ShowsTitleTextAndIcon)
{
    constexpr std::pair<UINT, QMessageBox::Icon> icons[] = {
        {MB_ICONQUESTION,    QMessageBox::Question   },
        {MB_ICONSTOP,        QMessageBox::Critical   },
        {MB_ICONEXCLAMATION, QMessageBox::Warning    },
        {MB_ICONINFORMATION, QMessageBox::Information},
        {0U,                 QMessageBox::NoIcon     },
    };
    for (const auto& [style, icon] : icons) {
        const Shown shown = Press(QMessageBox::Ok, MB_OK | style);
        EXPECT_EQ(shown.title, QStringLiteral("tiltpole"));
        EXPECT_EQ(shown.text, QStringLiteral("Was the pole turned?"));
        EXPECT_EQ(shown.icon, icon);
    }
}

TEST(MessageBox, TellsWhichOfItsButtonsWasPressed)
{
    struct Case
    {
        UINT style;
        QMessageBox::StandardButtons buttons;
        std::vector<std::pair<QMessageBox::StandardButton, int>> answers;
    };
    using Box = QMessageBox;
    const Case cases[] = {
        {MB_OK,          Box::Ok,               {{Box::Ok, IDOK}}                         },
        {MB_OKCANCEL,    Box::Ok | Box::Cancel, {{Box::Ok, IDOK}, {Box::Cancel, IDCANCEL}}},
        {MB_YESNO,       Box::Yes | Box::No,    {{Box::Yes, IDYES}, {Box::No, IDNO}}      },
        {MB_YESNOCANCEL,
         Box::Yes | Box::No | Box::Cancel,
         {{Box::Yes, IDYES}, {Box::No, IDNO}, {Box::Cancel, IDCANCEL}}                    },
        {MB_RETRYCANCEL,
         Box::Retry | Box::Cancel,
         {{Box::Retry, IDRETRY}, {Box::Cancel, IDCANCEL}}                                 },
    };
    for (const Case& c : cases)
        for (const auto& [button, answer] : c.answers) {
            const Shown shown = Press(button, c.style);
            EXPECT_EQ(shown.buttons, c.buttons) << c.style;
            EXPECT_EQ(shown.answer, answer) << c.style << ", button " << button;
        }
}
