// SPDX-License-Identifier: MIT
//
// A recording of any content is read without a crash; what is read, written again, reads as the same.
#include "field/Recording.h"

#include <algorithm>
#include <cstdint>
#include <cstdlib>
#include <string>
#include <string_view>

namespace {

void Require(bool condition)
{
    if (!condition) std::abort();
}

void CheckRecord(const field::Record& record)
{
    std::string text = field::RecordingLines(record.at, record.channel, record.bytes);
    field::RecordingReader reader;
    Require(reader.Read("# tiltpole recording 1, started 2026-11-22T13:07:58.123456Z"));
    std::string bytes;
    while (!text.empty()) {
        const std::size_t end = text.find('\n');
        Require(reader.Read(text.substr(0, end)));
        Require(reader.Last() && reader.Last()->at == record.at);
        Require(reader.Last()->channel == record.channel);
        bytes += reader.Last()->bytes;
        text.erase(0, end + 1);
    }
    Require(bytes == record.bytes);
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    std::string_view text(reinterpret_cast<const char*>(data), size);
    field::RecordingReader reader;
    field::RecordingReader headed;
    Require(headed.Read("# tiltpole recording 1, started 2026-11-22T13:07:58.123456Z"));
    while (!text.empty()) {
        const std::size_t end = std::min(text.find('\n'), text.size() - 1);
        const std::string_view line = text.substr(0, text[end] == '\n' ? end : end + 1);
        if (reader.Read(line) && reader.Started())
            Require(
                field::RecordingHeader(*reader.Started()).starts_with("# tiltpole recording 1"));
        if (headed.Read(line) && headed.Last()) CheckRecord(*headed.Last());
        text.remove_prefix(end + 1);
    }
    return 0;
}
