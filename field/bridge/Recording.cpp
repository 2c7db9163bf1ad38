// SPDX-License-Identifier: MIT
#include "field/Recording.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <chrono>
#include <cmath>
#include <cstdint>

namespace field {

namespace {

using std::chrono::microseconds;

constexpr std::string_view kOpening = "# tiltpole recording 1, started ";
constexpr std::size_t kBytesOfLine = 4096; // written
constexpr std::int64_t kMillion = 1'000'000;
constexpr std::int64_t kLatestStart = 253'402'300'799; // end of 9999 [s since 1970]
constexpr std::int64_t kLatestTime = 1'000'000'000;    // of a record [s]
constexpr std::string_view kHex = "0123456789ABCDEF";

// `value` with at least `digits` digits.
std::string Padded(std::int64_t value, std::size_t digits)
{
    std::string text = std::to_string(value);
    if (text.size() < digits) text.insert(0, digits - text.size(), '0');
    return text;
}

// Takes digits from the front of `text`, exactly `count` of them; 0: one or more.
std::optional<std::int64_t> TakeDigits(std::string_view& text, std::size_t count)
{
    std::size_t end = 0;
    while (end < text.size() && text[end] >= '0' && text[end] <= '9')
        ++end;
    if (count != 0 && end > count) end = count;
    if (end == 0 || (count != 0 && end != count)) return std::nullopt;
    std::int64_t value = 0;
    const auto parsed = std::from_chars(text.data(), text.data() + end, value);
    if (parsed.ec != std::errc{}) return std::nullopt;
    text.remove_prefix(end);
    return value;
}

bool Take(std::string_view& text, std::string_view what)
{
    if (!text.starts_with(what)) return false;
    text.remove_prefix(what.size());
    return true;
}

// Two numbers of two digits and a separator after each, as in 13:07:.
std::optional<std::int64_t> TakeTwo(std::string_view& text, std::string_view after)
{
    const auto value = TakeDigits(text, 2);
    if (!value || !Take(text, after)) return std::nullopt;
    return value;
}

std::optional<double> ParseUtc(std::string_view text)
{
    using namespace std::chrono;
    const auto y = TakeDigits(text, 4);
    if (!y || !Take(text, "-")) return std::nullopt;
    const auto m = TakeTwo(text, "-");
    const auto d = TakeTwo(text, "T");
    const auto hours = TakeTwo(text, ":");
    const auto minutes = TakeTwo(text, ":");
    const auto whole = TakeTwo(text, ".");
    const auto micro = TakeDigits(text, 6);
    if (!m || !d || !hours || !minutes || !whole || !micro || text != "Z") return std::nullopt;
    if (*hours > 23 || *minutes > 59 || *whole > 59) return std::nullopt;

    const year_month_day date{year(static_cast<int>(*y)), month(static_cast<unsigned>(*m)),
                              day(static_cast<unsigned>(*d))};
    if (!date.ok() || sys_days(date) < sys_days{}) return std::nullopt;
    const std::int64_t days = sys_days(date).time_since_epoch().count();
    const std::int64_t all = ((days * 24 + *hours) * 60 + *minutes) * 60 + *whole;
    return static_cast<double>(all) + static_cast<double>(*micro) * 1e-6;
}

void AppendEscaped(std::string& text, char c)
{
    const auto byte = static_cast<unsigned char>(c);
    if (byte >= 0x20 && byte < 0x7F && c != '\\') {
        text += c;
        return;
    }
    text += "\\x";
    text += kHex[byte >> 4U];
    text += kHex[byte & 0xFU];
}

// The bytes of escaped text; none where an escape is wrong or a byte is not printable.
std::optional<std::string> Unescaped(std::string_view text)
{
    std::string bytes;
    while (!text.empty()) {
        const char c = text.front();
        if (c < 0x20 || c >= 0x7F) return std::nullopt;
        if (c != '\\') {
            bytes += c;
            text.remove_prefix(1);
            continue;
        }
        if (text.size() < 4 || text[1] != 'x') return std::nullopt;
        unsigned value = 0;
        const auto parsed = std::from_chars(text.data() + 2, text.data() + 4, value, 16);
        if (parsed.ec != std::errc{} || parsed.ptr != text.data() + 4) return std::nullopt;
        bytes += static_cast<char>(static_cast<unsigned char>(value));
        text.remove_prefix(4);
    }
    return bytes;
}

} // namespace

std::string RecordingHeader(double started)
{
    using namespace std::chrono;
    const bool valid = started >= 0.0 && started < static_cast<double>(kLatestStart);
    const auto total = static_cast<std::int64_t>(std::llround((valid ? started : 0.0) * 1e6));
    const std::int64_t ofDay = total / kMillion % 86400;
    const year_month_day date{sys_days{days{total / kMillion / 86400}}};

    std::string text(kOpening);
    text += Padded(static_cast<int>(date.year()), 4);
    text += '-' + Padded(static_cast<unsigned>(date.month()), 2);
    text += '-' + Padded(static_cast<unsigned>(date.day()), 2);
    text += 'T' + Padded(ofDay / 3600, 2);
    text += ':' + Padded(ofDay / 60 % 60, 2);
    text += ':' + Padded(ofDay % 60, 2);
    text += '.' + Padded(total % kMillion, 6) + "Z\n";
    return text;
}

std::string RecordingLines(Instant at, Channel channel, std::string_view bytes)
{
    const std::int64_t micro =
        std::max<std::int64_t>(std::chrono::floor<microseconds>(at).count(), 0);
    const std::string front = '+' + Padded(micro / kMillion, 1) + '.' + Padded(micro % kMillion, 6)
                              + ' ' + static_cast<char>(channel) + ' ';
    std::string text;
    for (; !bytes.empty(); bytes.remove_prefix(std::min(bytes.size(), kBytesOfLine))) {
        text += front;
        for (const char c : bytes.substr(0, kBytesOfLine))
            AppendEscaped(text, c);
        text += '\n';
    }
    return text;
}

bool RecordingReader::Read(std::string_view line)
{
    ++m_line;
    m_last.reset();
    if (line.ends_with('\r')) line.remove_suffix(1);
    try {
        if (!m_started) return ReadHeader(line);
        if (line.empty() || line.front() == '#') return true;
        return ReadRecord(line);
    } catch (...) {
        --m_line;
        throw;
    }
}

bool RecordingReader::Fail(std::string_view what)
{
    std::string error = "line " + std::to_string(m_line) + ": ";
    error += what;
    m_error = std::move(error);
    return false;
}

bool RecordingReader::ReadHeader(std::string_view line)
{
    if (!Take(line, kOpening)) return Fail("not a recording: it has to open with its start");
    m_started = ParseUtc(line);
    return m_started ? true : Fail("the start is no UTC like 2026-11-22T13:07:58.123456Z");
}

bool RecordingReader::ReadRecord(std::string_view line)
{
    if (!Take(line, "+")) return Fail("a record begins with + and the seconds");
    const auto seconds = TakeDigits(line, 0);
    if (!seconds || *seconds > kLatestTime || !Take(line, "."))
        return Fail("the time is no number of seconds like 12.345678");
    const auto micro = TakeDigits(line, 6);
    if (!micro || !Take(line, " ")) return Fail("the time needs six decimals and a space");
    if (line.size() < 2 || std::string_view("RPCK").find(line.front()) == std::string_view::npos
        || line[1] != ' ')
        return Fail("the channel is none of R, P, C, K");
    if (line.size() > 4 * kMostBytes) return Fail("the line is too long");

    const Instant at = microseconds(*seconds * kMillion + *micro);
    if (at < m_time) return Fail("the time runs back");
    auto bytes = Unescaped(line.substr(2));
    if (!bytes) return Fail("a byte is neither printable nor \\xHH");
    if (bytes->size() > kMostBytes) return Fail("the line is too long");

    m_time = at;
    m_last = Record{at, static_cast<Channel>(line.front()), std::move(*bytes)};
    return true;
}

} // namespace field
