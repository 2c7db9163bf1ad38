// SPDX-License-Identifier: MIT
//
// The running program with the devices of a pole, one fault, and what an app gets meanwhile.
#pragma once

#include "tests/apps/live/Peers.h"
#include "tests/apps/live/Process.h"
#include "tests/apps/live/Recorded.h"
#include <functional>
#include <nlohmann/json.hpp>
#include <optional>
#include <set>
#include <sstream>

namespace apps::test {

// Seconds of the track: what fails, fails between them.
inline constexpr double kFrom = 1.0;
inline constexpr double kTo = 1.8;
inline constexpr double kDelay = 0.12;

class Scene;

struct Fault
{
    const char* name = "";
    const char* code = nullptr; ///< by which the program names it; none: the stream goes on
    double known = kFrom;       ///< from when on it can be known
    double until = kTo;         ///< its end
    double length = 3.0;        ///< of the track
    const char* quality = "4";  ///< of GGA while it lasts
    const char* line = nullptr; ///< of standard error
    live_pole::Options options; ///< what the devices send
    std::function<void(std::vector<field::Record>&)> change;
    std::function<void(Scene&)> begin; ///< at kFrom
    std::function<void(Scene&)> end;   ///< at `until`
    std::vector<std::string> more;     ///< options of the program; "@x": file x of its folder
    bool isOnTcp = false;              ///< the receiver
    bool isSilent = false;             ///< nothing is sent while it lasts
};

/// One epoch that an app got.
struct Sent
{
    double seconds = 0.0; ///< of the track
    std::string gga;
    std::string rmc;
    std::string gst;
    std::set<std::string> codes; ///< all reasons, by the status
};

/// A receiver of TCP, which may refuse its callers.
class Caster
{
public:
    Caster() { Plug(); }
    void Plug() { m_listener = std::move(live::ListenTcp("127.0.0.1", m_port).descriptor); }
    void Unplug()
    {
        m_port = Port();
        m_caller.Close();
        m_listener.Close();
    }
    std::uint16_t Port() const { return live::PortOf(m_listener.Get()); }
    bool HasCaller()
    {
        if (m_caller.Get() < 0 && m_listener.IsOpen())
            m_caller = Peer(std::move(live::Accept(m_listener.Get()).descriptor));
        return m_caller.Get() >= 0;
    }
    void Write(std::string_view bytes)
    {
        if (HasCaller()) m_caller.Write(bytes);
    }

private:
    std::uint16_t m_port = 0;
    live::Descriptor m_listener;
    Peer m_caller;
};

/// The program with its devices and an app.
class Scene
{
public:
    explicit Scene(const Fault& made)
        : fault(made), m_records(Records(made)), m_program(Words(), "/dev/null", Errors())
    {}

    /// Whether all are connected; asked again and again.
    bool IsReady()
    {
        if (m_ports.empty()) FindPorts();
        if (m_ports.size() < 2) return false;
        if (m_app.Get() < 0) {
            m_app = Peer::ConnectedTo(m_ports[0]);
            m_status = Peer::ConnectedTo(m_ports[1]);
        }
        const bool hears = fault.isOnTcp ? caster.HasCaller() : live::HasReader(gnss->Get());
        return hears && live::HasReader(imu->Get())
               && Count(folder.Read("errors"), "has connected") == 2;
    }

    /// Sends what is due by now, and pulls the cables.
    void Play(double now)
    {
        const auto due = [&](double at, const std::function<void(Scene&)>& act, bool& isDone) {
            if (isDone || now < at) return;
            isDone = true;
            if (act) act(*this);
        };
        due(kFrom, fault.begin, m_hasBegun);
        due(fault.until, fault.end, m_hasEnded);
        for (; m_next < m_records.size() && SecondsOf(m_records[m_next]) <= now; ++m_next) {
            const field::Record& record = m_records[m_next];
            if (record.channel == field::Channel::Pose) {
                imu->Write(record.bytes);
            } else if (fault.isOnTcp) {
                caster.Write(record.bytes);
            } else {
                gnss->Write(record.bytes);
            }
        }
        m_app.Read();
        m_status.Read();
        if (fault.isSilent && !m_lineAt && Text().find(fault.line) != std::string::npos)
            m_lineAt = now;
    }

    /// When the line of the fault was seen [s].
    double LineAt() const { return m_lineAt.value_or(fault.length + 10.0); }

    std::vector<Sent> AllSent();
    pid_t Id() const { return m_program.Id(); }
    std::string Text() const { return folder.Read("errors"); }

    const Fault& fault;
    ScratchFolder folder;
    Device gnss{folder.Path("gnss")};
    Device imu{folder.Path("imu")};
    Caster caster;

private:
    static std::vector<field::Record> Records(const Fault& fault)
    {
        auto records = live_pole::RecordsOf(live_pole::StandingTrack(fault.length), fault.options);
        if (fault.change) fault.change(records);
        return records;
    }
    static double SecondsOf(const field::Record& record)
    {
        return std::chrono::duration<double>(record.at).count() - live_pole::kFirst;
    }
    std::string Errors() const { return folder.Path("errors"); }
    std::vector<std::string> Words() const
    {
        const std::string receiver = fault.isOnTcp
                                         ? "tcp:127.0.0.1:" + std::to_string(caster.Port())
                                         : "serial:" + folder.Path("gnss") + ":115200";
        return Joined(Joined({TILTPOLE_PROGRAM, "live", "--gnss", receiver, "--pose",
                              "serial:" + folder.Path("imu") + ":115200", "--serve", "tcp:0",
                              "--status", "tcp:0", "--control", folder.Path("control")},
                             PoleOptions(ParameterFile(folder))),
                      More());
    }
    std::vector<std::string> More() const
    {
        std::vector<std::string> more = fault.more;
        for (std::string& word : more)
            if (word.starts_with('@')) word = folder.Path(word.substr(1));
        return more;
    }
    void FindPorts()
    {
        const std::string text = Text();
        if (Count(text, "127.0.0.1:") < 2) return;
        for (std::size_t at = 0; (at = text.find(" tcp 127.0.0.1:", at)) != std::string::npos; ++at)
            m_ports.push_back(static_cast<std::uint16_t>(std::stoi(text.substr(at + 15))));
    }

    std::vector<field::Record> m_records;
    Process m_program;
    std::vector<std::uint16_t> m_ports;
    Peer m_app;
    Peer m_status;
    std::size_t m_next = 0;
    std::optional<double> m_lineAt;
    bool m_hasBegun = false;
    bool m_hasEnded = false;
};

/// Seconds of the track; a receiver whose time steps by 18 s is followed.
inline double TrackSeconds(const std::string& utc)
{
    const double s = 3600.0 * std::stod(utc.substr(0, 2)) + 60.0 * std::stod(utc.substr(2, 2))
                     + std::stod(utc.substr(4)) - live_pole::kStart;
    if (s < -1.0) return s + 18.0;
    return s > 10.0 ? s - 18.0 : s;
}

inline std::vector<Sent> Scene::AllSent()
{
    std::vector<Sent> all;
    std::istringstream lines(m_app.Read());
    for (std::string line; std::getline(lines, line);) {
        const std::string type = line.substr(0, 6);
        if (type == "$GNGGA") {
            all.push_back({TrackSeconds(live_pole::FieldOf(line, 1)), line, "", "", {}});
        } else if (!all.empty() && type == "$GNRMC") {
            all.back().rmc = line;
        } else if (!all.empty() && type == "$GNGST") {
            all.back().gst = line;
        }
    }
    std::istringstream objects(m_status.Read());
    for (std::string line; std::getline(objects, line);) {
        const nlohmann::json object = nlohmann::json::parse(line);
        for (Sent& sent : all)
            if (live_pole::FieldOf(sent.gga, 1) == object["utc"])
                sent.codes = object["codes"].get<std::set<std::string>>();
    }
    return all;
}

} // namespace apps::test
