// SPDX-License-Identifier: MIT
#include "apps/cli/live/Replay.h"

#include "apps/cli/ExitCode.h"
#include "apps/cli/live/PointKeeper.h"
#include "apps/live/Feed.h"
#include "apps/live/ReportText.h"
#include "apps/tables/Errors.h"
#include "apps/tables/Messages.h"
#include "apps/tables/Output.h"
#include <cerrno>
#include <chrono>
#include <fmt/format.h>
#include <fstream>
#include <iostream>
#include <memory>
#include <system_error>

namespace cli {

namespace {

// A line without its end; nothing at the end of the file. A line that never ends is cut.
bool NextLine(std::istream& file, std::string& line)
{
    constexpr std::size_t kMost = 5 * field::RecordingReader::kMostBytes;
    line.clear();
    for (int c = file.get(); c != std::istream::traits_type::eof(); c = file.get()) {
        if (c == '\n') return true;
        if (line.size() < kMost) line += static_cast<char>(c);
    }
    return !line.empty();
}

// The outputs of a replay: the recorded pole's sentences, or one JSON object an epoch.
class ReplayOutputs
{
public:
    explicit ReplayOutputs(const LiveOptions& options)
    {
        for (const live::Endpoint& sink : SinksOf(options.serve)) {
            const bool isFile = sink.kind == live::Endpoint::Kind::File;
            if (!isFile && sink.kind != live::Endpoint::Kind::Standard)
                throw tables::InputError(sink.text,
                                         "is not a sink of --replay, which writes file:PATH or -");
            if (!isFile && options.json)
                throw tables::InputError("--json and --serve - both write to standard output");
            m_nmea.push_back(&m_files.Open(isFile ? sink.name : "-"));
        }
        if (options.json) m_json = &m_files.Open("-");
    }

    void Write(const field::Report& report)
    {
        if (report.nmea.empty()) return;
        for (tables::Output* const output : m_nmea)
            output->Write(report.nmea);
        if (m_json) m_json->Write(live::ReportJson(report));
    }

    void Finish() { m_files.Finish(); }

private:
    tables::OutputFiles m_files;
    std::vector<tables::Output*> m_nmea;
    tables::Output* m_json = nullptr;
};

// What the surveyor asked for while it was recorded, done again where there is a job.
class RecordedRequests
{
public:
    RecordedRequests(const LiveOptions& options, const field::Setup& setup)
        : m_hasJob(!options.job.empty()),
          m_points(options.job, setup, options.program, [this] { return m_now; })
    {}

    void Add(const field::Report& report)
    {
        if (m_hasJob) m_points.Add(report);
    }

    // After the reports that were there when it was asked.
    void Play(const field::Record& record, double started)
    {
        using std::chrono::duration;
        const std::string_view key = record.bytes;
        if (!m_hasJob || record.channel != field::Channel::Keys) return;
        if (!key.starts_with("store") && key != "undo") return;
        const duration<double> time = duration<double>(started) + record.at;
        m_now = field::JobTime(std::chrono::round<std::chrono::milliseconds>(time));
        tables::Tell("{}\n", m_points.Do(key, [] {}));
        ++m_count;
    }

    void TellCount() const
    {
        if (m_hasJob) tables::Tell("points     {} requests of the recording\n", m_count);
    }

private:
    bool m_hasJob;
    field::JobTime m_now{};
    PointKeeper m_points;
    int m_count = 0;
};

} // namespace

field::Instant ReadRecording(const std::string& path,
                             const std::function<void(double, const field::Record&)>& onRecord)
{
    std::ifstream opened;
    if (path != "-") opened.open(path, std::ios::binary);
    std::istream& file = path == "-" ? std::cin : opened;
    if (path != "-" && !opened)
        throw tables::InputError(path, "cannot be read: " + std::generic_category().message(errno));
    field::RecordingReader reader;
    field::Instant last{};
    std::string line;
    while (NextLine(file, line)) {
        if (!reader.Read(line)) {
            // A program that was killed, or a full disk, leaves half a line at the end.
            if (reader.Started() && file.peek() == std::istream::traits_type::eof()) {
                tables::Tell("{}: {}; it is the last one and is left out\n", path, reader.Error());
                break;
            }
            throw tables::InputError(path, reader.Error());
        }
        if (!reader.Last()) continue;
        last = reader.Last()->at;
        onRecord(*reader.Started(), *reader.Last());
    }
    if (file.bad())
        throw tables::InputError(path, "cannot be read: " + std::generic_category().message(errno));
    if (!reader.Started()) throw tables::InputError(path, "is empty; it is not a recording");
    return last;
}

int Replay(const LiveOptions& options)
{
    field::Setup setup = SetupOf(options.pole);
    std::vector<std::string> files{options.job};
    for (const live::Endpoint& sink : SinksOf(options.serve))
        if (sink.kind == live::Endpoint::Kind::File) files.push_back(sink.name);
    tables::KeepApart(files, {options.replay, options.pole.config});

    ReplayOutputs outputs(options);
    std::optional<field::Bridge> bridge;
    std::optional<live::Feed> feed;
    RecordedRequests requests(options, setup);
    const auto write = [&] {
        for (const field::Report& report : bridge->Take()) {
            requests.Add(report);
            outputs.Write(report);
        }
    };
    const field::Instant last =
        ReadRecording(options.replay, [&](double started, const field::Record& record) {
            if (!bridge) {
                setup.started = started;
                feed.emplace(bridge.emplace(setup));
            }
            feed->Play(record);
            write();
            requests.Play(record, started);
        });
    if (bridge) {
        feed->Advance(last + live::Feed::kLastEpoch);
        write();
    }
    outputs.Finish();
    tables::TellText(live::CountersText(bridge ? bridge->Count() : field::Counters{}));
    requests.TellCount();
    return bridge && bridge->Count().epochs > 0 ? kDone : kNegative;
}

} // namespace cli
