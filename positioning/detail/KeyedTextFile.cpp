// SPDX-License-Identifier: MIT
#include "positioning/detail/KeyedTextFile.h"

#include "framework/core/AtomicFile.h"
#include "framework/core/File.h"
#include "framework/core/ParseNumber.h"
#include "framework/core/Paths.h"
#include "framework/core/TextConversion.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <cmath>
#include <utility>
#include <vector>

namespace tiltpole::positioning {

namespace {

constexpr std::size_t kLongestLine = 100;                // bytes, line end included
constexpr ULONGLONG kLargestFile = ULONGLONG{256} << 20; // bytes
constexpr std::size_t kLongestStream = std::size_t{1} << 20;
constexpr int kDecimals = 10;

// Devices and pipes have no length, and some never end.
bool ReadStream(CFile& file, std::string& content)
{
    constexpr std::size_t kPiece = 16384;
    while (content.size() <= kLongestStream) {
        const std::size_t before = content.size();
        content.resize(before + kPiece);
        const UINT count = file.Read(content.data() + before, static_cast<UINT>(kPiece));
        content.resize(before + count);
        if (count < kPiece) break;
    }
    return content.size() <= kLongestStream;
}

bool ReadAll(CFile& file, std::string& content)
{
    const ULONGLONG length = file.GetLength();
    if (length == 0) return ReadStream(file, content);
    if (length > kLargestFile) return false;
    content.resize(static_cast<std::size_t>(length));
    content.resize(file.Read(content.data(), static_cast<UINT>(length)));
    return true;
}

// Text from `first` up to the next CR, empty if there is none. Called with increasing positions, it
// scans the text once.
class Values
{
public:
    explicit Values(std::string_view text) : m_text(text) {}

    std::string_view From(std::size_t first)
    {
        if (m_end < first) m_end = std::min(m_text.find('\r', first), m_text.size());
        return m_end == m_text.size() ? std::string_view() : m_text.substr(first, m_end - first);
    }

private:
    std::string_view m_text;
    std::size_t m_end = 0;
};

double DoubleOf(std::string_view value)
{
    const auto number = framework::ParseDouble(value);
    return number.inRange ? number.value : 0.0;
}

int IntegerOf(std::string_view value)
{
    const auto number = framework::ParseInteger(value);
    return number.inRange ? number.value : 0;
}

} // namespace

int KeyedTextFile::OpenForReading(const CString& path)
{
    CFile file;
    std::string content;
    if (!file.Open(path, CFile::modeRead | CFile::shareDenyNone)) return 0;
    if (!ReadAll(file, content) || !file.Close()) return 0;
    m_content = std::move(content);
    m_writing = false;
    return 1;
}

int KeyedTextFile::OpenForWriting(const CString& path)
{
    constexpr std::size_t kUsualSize = 1024;
    if (path.IsEmpty()) return 0;
    const DWORD attributes = GetFileAttributesW(path);
    if (attributes != INVALID_FILE_ATTRIBUTES && (attributes & FILE_ATTRIBUTE_DIRECTORY)) return 0;

    m_path = path;
    m_content.clear();
    m_content.reserve(kUsualSize);
    m_writing = true;
    m_failed = false;
    return 1;
}

int KeyedTextFile::Close()
{
    const std::string content = std::exchange(m_content, {});
    if (!std::exchange(m_writing, false)) return 1;
    return !m_failed && framework::ReplaceFileContent(m_path, content) ? 1 : 0;
}

int KeyedTextFile::AppendLine(std::string_view key, std::string_view value)
{
    constexpr std::size_t kBracketsAndEnd = 4;
    if (key.size() + value.size() + kBracketsAndEnd > kLongestLine) {
        m_failed = true;
        return 0;
    }
    m_content += '[';
    m_content += key;
    m_content += ']';
    m_content += value;
    m_content += "\r\n";
    return 1;
}

int KeyedTextFile::WriteString(std::string_view key, const CString& value)
{
    return AppendLine(key, framework::ToUtf8(value.GetString()));
}

int KeyedTextFile::WriteInteger(std::string_view key, int value)
{
    return AppendLine(key, std::to_string(value));
}

int KeyedTextFile::WriteDouble(std::string_view key, double value)
{
    std::array<char, kLongestLine> digits;
    const auto written = std::to_chars(digits.data(), digits.data() + digits.size(), value,
                                       std::chars_format::fixed, kDecimals);
    if (!std::isfinite(value) || written.ec != std::errc()) {
        m_failed = true;
        return 0;
    }
    return AppendLine(key, {digits.data(), written.ptr});
}

std::string_view KeyedTextFile::ValueOf(std::string_view key) const
{
    std::string bracketed = "[";
    bracketed += key;
    bracketed += ']';
    const std::size_t at = m_content.find(bracketed);
    if (at == std::string::npos) return {};
    return Values(m_content).From(at + bracketed.size());
}

int KeyedTextFile::ReadString(std::string_view key, CString& value) const
{
    const std::string_view text = ValueOf(key);
    if (text.empty()) return 0;
    value = CString(framework::FromUtf8(text));
    return 1;
}

int KeyedTextFile::ReadInteger(std::string_view key, int& value) const
{
    const std::string_view text = ValueOf(key);
    if (text.empty()) return 0;
    value = IntegerOf(text);
    return 1;
}

int KeyedTextFile::ReadDouble(std::string_view key, double& value) const
{
    const std::string_view text = ValueOf(key);
    if (text.empty()) return 0;
    value = DoubleOf(text);
    return 1;
}

void KeyedTextFile::ReadDoubles(std::span<const KeyedDouble> wanted) const
{
    constexpr std::size_t kNone = std::string_view::npos;
    const std::string_view text = m_content;
    Values values(text);
    std::vector<KeyedDouble> missing(wanted.begin(), wanted.end());
    std::size_t open = kNone; // the last '[' that no ']' follows yet: a key can begin only there
    for (std::size_t at = 0; at < text.size() && !missing.empty(); ++at) {
        if (text[at] == '[') open = at;
        if (text[at] != ']' || open == kNone) continue;

        const std::string_view key = text.substr(open + 1, at - open - 1);
        open = kNone;
        const auto found = std::find_if(missing.begin(), missing.end(),
                                        [&](const auto& entry) { return entry.key == key; });
        if (found == missing.end()) continue;
        const std::string_view value = values.From(at + 1);
        if (!value.empty()) *found->value = DoubleOf(value);
        missing.erase(found);
    }
}

} // namespace tiltpole::positioning
