// SPDX-License-Identifier: MIT
#include "apps/cli/calibrate/LibraryMessages.h"

#include "apps/tables/Messages.h"
#include "framework/core/TextConversion.h"

#include <fmt/format.h>
#include <string>
#include <string_view>

namespace cli {

namespace {

struct Gloss
{
    std::wstring_view text;
    const char* english;
};

constexpr Gloss kGlosses[] = {
    {L"椭圆拟合失败,绕Z轴旋转数据有误!",
     "the ellipse fit failed: the data of the turn about Z are wrong" },
    {L"直线拟合失败,绕Z轴旋转数据有误!",
     "a line fit failed: the data of the turn about Z are wrong"      },
    {L"椭圆拟合失败,绕Y轴旋转数据有误!",
     "the ellipse fit failed: the data of the turn about Y are wrong" },
    {L"直线拟合失败,绕Y轴旋转数据有误!",
     "the line fit failed: the data of the turn about Y are wrong"    },
    {L"循环次数超限，磁力计校准参数精度不可靠!",
     "the pass limit was reached: the calibration may not be accurate"},
};

int ShowMessage(const wchar_t* text, const wchar_t* title, unsigned)
{
    std::string meaning;
    for (const Gloss& gloss : kGlosses)
        if (gloss.text == text) meaning = fmt::format(" ({})", gloss.english);
    tables::Tell("{}: {}{}\n", framework::ToUtf8(title), framework::ToUtf8(text), meaning);
    return IDOK;
}

} // namespace

MessagesOnStandardError::MessagesOnStandardError()
    : m_former(framework::SetMessageBoxHandler(ShowMessage))
{}

MessagesOnStandardError::~MessagesOnStandardError()
{
    framework::SetMessageBoxHandler(m_former);
}

} // namespace cli
