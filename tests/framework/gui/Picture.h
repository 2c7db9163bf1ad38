// SPDX-License-Identifier: MIT
//
// A small picture for tests of the rasterizer.
#pragma once

#include "framework/gui/detail/Raster.h"

#include <algorithm>
#include <cstddef>
#include <set>
#include <string>
#include <utility>
#include <vector>

namespace framework::raster {

inline constexpr Color kInk = 0x00FF8040;
inline constexpr Color kPaper = 0;

// A picture with a margin that no drawing call may touch.
class Picture
{
public:
    Picture(int width, int height)
        : m_width(width), m_height(height),
          m_pixels(static_cast<std::size_t>((width + 2 * kMargin) * (height + 2 * kMargin)), kGuard)
    {
        for (int y = 0; y < height; ++y)
            for (int x = 0; x < width; ++x)
                At(x, y) = kPaper;
    }

    Canvas View()
    {
        return {
            &At(0, 0), m_width + 2 * kMargin, {0, 0, m_width, m_height}
        };
    }

    Color& At(int x, int y)
    {
        return m_pixels[static_cast<std::size_t>((y + kMargin) * (m_width + 2 * kMargin) + x
                                                 + kMargin)];
    }

    std::set<std::pair<int, int>> Inked()
    {
        std::set<std::pair<int, int>> inked;
        for (int y = 0; y < m_height; ++y)
            for (int x = 0; x < m_width; ++x)
                if (At(x, y) != kPaper) inked.emplace(x, y);
        return inked;
    }

    bool operator==(const Picture&) const = default;

    bool MarginIsWhole() const
    {
        const auto inside = static_cast<std::ptrdiff_t>(m_width) * m_height;
        return std::count(m_pixels.begin(), m_pixels.end(), kGuard)
               == static_cast<std::ptrdiff_t>(m_pixels.size()) - inside;
    }

    // The picture as rows of '#' and '.'.
    std::string Text()
    {
        std::string text;
        for (int y = 0; y < m_height; ++y) {
            for (int x = 0; x < m_width; ++x)
                text += At(x, y) == kPaper ? '.' : '#';
            text += '\n';
        }
        return text;
    }

private:
    static constexpr int kMargin = 3;
    static constexpr Color kGuard = 0xDEADBEEF;

    int m_width;
    int m_height;
    std::vector<Color> m_pixels;
};

} // namespace framework::raster
