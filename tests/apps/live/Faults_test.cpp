// SPDX-License-Identifier: MIT
//
// Faults of devices, cables and disks, made on the pseudo-terminals and sockets of the running program. All
// poles run at a time.
#include "tests/apps/live/Scene.h"
#include <deque>
#include <gmock/gmock.h>
#include <random>
#include <sys/resource.h>
#include <sys/socket.h>
#include <sys/un.h>

namespace {

using namespace apps::test;
using field::Channel;
using field::Record;
using live_pole::EpochFields;
using live_pole::PoseFields;

constexpr double kNamed = 0.2; // after it can be known [s]
constexpr double kBack = 3.0;  // after the return [s]
constexpr double kLean = 0.25; // from the tip to below the antenna [m], at least

bool During(double seconds)
{
    return seconds > kFrom - 1e-6 && seconds < kTo - 1e-6;
}

// GGA and RMC carry the tip or nothing, but for the blocked form of the other profile.
void ExpectNoAntenna(const Sent& sent)
{
    const auto check = [&](const std::string& line, int latitude) {
        if (live_pole::FieldOf(line, latitude).empty()) return;
        field::Geodetic place = live_pole::kTip;
        place.latitude = live_pole::DegreesOf(line, latitude);
        place.longitude = live_pole::DegreesOf(line, latitude + 2);
        const xyhCoordinate d = field::Difference(live_pole::kTip, place);
        EXPECT_LT(std::hypot(d.x, d.y), 0.5 * kLean) << line;
    };
    if (live_pole::FieldOf(sent.gga, 6) == "6") {
        EXPECT_GE(live_pole::NumberOf(live_pole::FieldOf(sent.gst, 6)), 0.3) << sent.gst;
        return;
    }
    check(sent.gga, 2);
    check(sent.rmc, 3);
    EXPECT_EQ(live_pole::FieldOf(sent.gga, 2).empty(), live_pole::FieldOf(sent.gga, 6) == "0")
        << sent.gga;
}

void ExpectNamed(const Fault& fault, const std::vector<Sent>& all)
{
    double first = fault.length;
    for (const Sent& sent : all) {
        const bool has = sent.codes.contains(fault.code);
        if (has) first = std::min(first, sent.seconds);
        if (sent.seconds < kFrom - 0.05) {
            EXPECT_FALSE(has) << "too early at " << sent.seconds;
        }
        if (sent.seconds < fault.known + kNamed || sent.seconds > fault.until - kDelay - 0.03)
            continue;
        EXPECT_TRUE(has) << "not named at " << sent.seconds;
        EXPECT_EQ(live_pole::FieldOf(sent.gga, 6), fault.quality) << sent.gga;
    }
    EXPECT_LE(first, fault.known + kNamed + 1e-6);
}

void ExpectAll(Scene& scene)
{
    const Fault& fault = scene.fault;
    const std::vector<Sent> all = scene.AllSent();
    double last = -1.0;
    double back = fault.length + 10.0;
    int early = 0;
    for (const Sent& sent : all) {
        EXPECT_GT(sent.seconds, last + 0.05) << "repeated: " << sent.gga;
        last = sent.seconds;
        ExpectNoAntenna(sent);
        const bool isWhole = live_pole::FieldOf(sent.gga, 6) == "4"
                             && (!fault.code || !sent.codes.contains(fault.code));
        if (sent.seconds < kFrom - 0.05) early += isWhole ? 1 : 0;
        if (sent.seconds > fault.until - 0.05 && isWhole) back = std::min(back, sent.seconds);
        if (fault.isSilent) {
            EXPECT_FALSE(sent.seconds > kFrom + 0.02 && sent.seconds < fault.until - 0.2)
                << sent.gga;
        }
    }
    EXPECT_GT(early, 5) << "the pole did not work before";
    EXPECT_LE(back, fault.until + kBack);
    if (fault.code && !fault.isSilent) ExpectNamed(fault, all);
    if (!fault.code) {
        EXPECT_EQ(all.size(), std::lround(10.0 * fault.length) - 1) << "epochs were lost";
    }
    if (fault.isSilent) {
        EXPECT_LE(scene.LineAt(), fault.known + kNamed) << "named too late";
    }
    if (fault.line) {
        EXPECT_THAT(scene.Text(), testing::HasSubstr(fault.line));
    }
}

void RunAll(const std::deque<Fault>& faults)
{
    live::Loop loop;
    std::vector<std::unique_ptr<Scene>> scenes;
    for (const Fault& fault : faults)
        scenes.push_back(std::make_unique<Scene>(fault));
    ASSERT_TRUE(RunUntil(
        loop,
        [&] { return std::ranges::all_of(scenes, [](auto& scene) { return scene->IsReady(); }); },
        30s));
    const live::Instant start = loop.Now();
    const auto feeder = loop.Every(2ms, [&] {
        for (auto& scene : scenes)
            scene->Play(std::chrono::duration<double>(loop.Now() - start).count());
    });
    double end = 0.0;
    for (const Fault& fault : faults)
        end = std::max(end, fault.length + 2.0 * kDelay);
    RunFor(loop, std::chrono::milliseconds(std::lround(1000.0 * end)));
    for (auto& scene : scenes) {
        SCOPED_TRACE(scene->fault.name + std::string("\n") + scene->Text());
        ExpectAll(*scene);
    }
}

live_pole::Options OfPoses(std::function<void(PoseFields&)> change)
{
    live_pole::Options options;
    options.pose = [change = std::move(change)](PoseFields& pose) {
        if (During(pose.seconds)) change(pose);
    };
    return options;
}

live_pole::Options OfEpochs(std::function<void(EpochFields&)> change, double until = kTo)
{
    live_pole::Options options;
    options.epoch = [change = std::move(change), until](EpochFields& epoch) {
        if (epoch.seconds > kFrom - 1e-6 && epoch.seconds < until - 1e-6) change(epoch);
    };
    return options;
}

// The records of the receiver while the fault lasts.
std::function<void(std::vector<Record>&)> OfBytes(std::function<void(std::string&)> change,
                                                  double from = kFrom, double until = kTo)
{
    return [=](std::vector<Record>& records) {
        for (Record& record : records) {
            const double t = std::chrono::duration<double>(record.at).count() - live_pole::kFirst;
            if (record.channel == Channel::Receiver && t > from && t < until) change(record.bytes);
        }
    };
}

// What the control socket answers.
std::string Answer(Scene& scene, const std::string& request)
{
    sockaddr_un address = {};
    address.sun_family = AF_UNIX;
    const std::string path = scene.folder.Path("control");
    path.copy(address.sun_path, sizeof address.sun_path - 1);
    const live::Descriptor control(socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0));
    const timeval patience{2, 0};
    setsockopt(control.Get(), SOL_SOCKET, SO_RCVTIMEO, &patience, sizeof patience);
    EXPECT_EQ(connect(control.Get(), reinterpret_cast<const sockaddr*>(&address), sizeof address),
              0);
    EXPECT_EQ(write(control.Get(), request.data(), request.size()),
              static_cast<ssize_t>(request.size()));
    char block[512];
    const ssize_t count = read(control.Get(), block, sizeof block);
    return std::string(block, static_cast<std::size_t>(std::max<ssize_t>(count, 0)));
}

void Acknowledge(Scene& scene)
{
    EXPECT_NE(Answer(scene, "ack\n"), "");
}

// From now on its files take no more bytes.
void FillDisk(Scene& scene)
{
    const rlimit none{0, 0};
    EXPECT_EQ(prlimit(scene.Id(), RLIMIT_FSIZE, &none, nullptr), 0);
}

Fault Silent(const char* name)
{
    Fault fault;
    fault.name = name;
    fault.code = "no receiver";
    fault.isSilent = true;
    fault.known =
        kFrom + 0.3 + 0.06 - 0.08; // after the last epoch: its patience, and more sentences
    fault.length = 3.6;
    fault.line = "BLOCK  no epoch of the receiver for 0.3 s";
    return fault;
}

TEST(LiveFaults, OfThePoseSensorAreNamedAndShowNoTip)
{
    std::deque<Fault> faults;
    const auto add = [&](const char* name, double known, std::function<void(PoseFields&)> change) {
        Fault fault;
        fault.name = name;
        fault.code = "no pose";
        fault.known = known;
        fault.quality = "0";
        fault.options = OfPoses(std::move(change));
        faults.push_back(fault);
        return &faults.back();
    };
    add("silent", kFrom + 0.1, [](PoseFields& pose) { pose.send = false; });
    add("not a number", kFrom + 0.1, [](PoseFields& pose) { pose.pitch = std::nan(""); })->line =
        "a value is not a number";
    add("out of range", kFrom + 0.1, [](PoseFields& pose) { pose.roll = 200.0; })->line =
        "a value is out of range";
    add("stuck", kFrom + 0.5, [](PoseFields& pose) {
        pose.readings = {200.0, 100.0, -450.0, -200.0, -100.0, -450.0};
    })->code = "sensor stuck";
    Fault* const blocked = add("silent, app that keeps the last point", kFrom + 0.1,
                               [](PoseFields& p) { p.send = false; });
    blocked->quality = "6";
    blocked->more = {"--profile", "qfield"};
    Fault* const unplugged = add("unplugged", kFrom + 0.1, [](PoseFields&) {});
    unplugged->begin = [](Scene& scene) { scene.imu.Unplug(); };
    unplugged->end = [](Scene& scene) { scene.imu.Plug(); };
    unplugged->line = "; it is tried again and again";
    RunAll(faults);
}

TEST(LiveFaults, OfTheFixTheBaseAndTheTimeAreNamed)
{
    std::deque<Fault> faults;
    const auto add = [&](const char* name, const char* code, double until,
                         std::function<void(EpochFields&)> change) {
        Fault fault;
        fault.name = name;
        fault.code = code;
        fault.until = until;
        fault.options = OfEpochs(std::move(change), until);
        faults.push_back(fault);
        return &faults.back();
    };
    add("fix lost", "no fix", kTo, [](EpochFields& e) { e.quality = 0; })->quality = "0";
    add("float", "not fixed", kTo, [](EpochFields& e) { e.quality = 5; })->quality = "5";
    add("no GST", "sigma assumed", kTo, [](EpochFields& e) { e.gst = false; });
    Fault* const other = add("GST of another time", "sigma assumed", kTo, [](EpochFields&) {});
    other->change = OfBytes(
        [](std::string& bytes) {
            const std::size_t gst = bytes.find("$GNGST");
            std::string body = bytes.substr(gst + 1, bytes.find('*', gst) - gst - 1);
            body.replace(6, 9, "010203.00");
            bytes = bytes.substr(0, gst) + live_pole::WithChecksum(body);
        },
        kFrom + 0.05, kTo + kDelay - 0.05);
    // These last until they are acknowledged.
    for (Fault* const fault :
         {add("another base", "base changed", 9.0, [](EpochFields& e) { e.station = "0312"; }),
          add("another datum", "datum step", 9.0,
              [](EpochFields& e) { e.antenna.ellipsoidalHeight += 0.5; })}) {
        fault->known = kFrom + 0.1;
        fault->until = kTo + kDelay;
        fault->end = Acknowledge;
    }
    for (Fault* const fault :
         {add("time ahead", "time step", 9.0, [](EpochFields& e) { e.utc += 18.0; }),
          add("time back", "time step", 9.0, [](EpochFields& e) { e.utc -= 18.0; })}) {
        fault->until = kFrom + 2.0; // it settles
        fault->length = kFrom + 2.5;
    }
    RunAll(faults);
}

TEST(LiveFaults, OfTheReceiversLineStopTheStreamAndLeaveNothingStale)
{
    std::deque<Fault> faults;
    Fault silent = Silent("silent");
    silent.known += 0.1; // one epoch more, late as they come
    silent.options = OfEpochs([](EpochFields& epoch) { epoch.send = false; });
    faults.push_back(silent);
    Fault unplugged = Silent("unplugged");
    unplugged.begin = [](Scene& scene) { scene.gnss.Unplug(); };
    unplugged.end = [](Scene& scene) { scene.gnss.Plug(); };
    faults.push_back(unplugged);
    Fault refused = Silent("closed, then refused");
    refused.isOnTcp = true;
    refused.begin = [](Scene& scene) { scene.caster.Unplug(); };
    refused.end = [](Scene& scene) { scene.caster.Plug(); };
    faults.push_back(refused);
    Fault baud = Silent("wrong baud rate");
    baud.line = "check the baud rate";
    baud.known = kFrom + 2.0 + 0.1 + 0.02; // the first byte after 2 s of others
    baud.until = kFrom + 2.3;
    baud.change = OfBytes(
        [random = std::mt19937(3)](std::string& bytes) mutable {
            for (char& c : bytes)
                c = static_cast<char>(random() % 256);
        },
        kFrom, kFrom + 2.3);
    faults.push_back(baud);
    RunAll(faults);
}

TEST(LiveFaults, ThatDoNotTouchTheEpochsLeaveTheStreamAlone)
{
    std::deque<Fault> faults;
    Fault garbage;
    garbage.length = 2.3;
    garbage.name = "garbage and a line of 2 KiB between the epochs";
    garbage.change = OfBytes([](std::string& bytes) {
        bytes = "\x00\xFFnoise$GN" + std::string(2048, 'x') + "\r\n" + bytes + "$GNGGA,1307";
    });
    faults.push_back(garbage);
    Fault split;
    split.length = 2.3;
    split.name = "pieces of seven bytes";
    split.change = [](std::vector<Record>& records) {
        std::vector<Record> pieces;
        for (const Record& record : records)
            for (std::size_t at = 0; at < record.bytes.size(); at += 7)
                pieces.push_back({record.at, record.channel, record.bytes.substr(at, 7)});
        records = std::move(pieces);
    };
    faults.push_back(split);
    Fault full;
    full.length = 2.3;
    full.name = "disk full";
    full.more = {"--record", "/dev/full"};
    full.line = "the recording /dev/full ends: No space left on device";
    faults.push_back(full);
    Fault job;
    job.name = "disk full when a point is stored";
    job.more = {"--job", "@site.gpkg"};
    job.length = 2.3;
    job.end = [](Scene& scene) { // the pole is still by then
        EXPECT_THAT(Answer(scene, "store P1\n"), testing::StartsWith("stored P1"));
        FillDisk(scene);
        EXPECT_THAT(Answer(scene, "store P2\n"), testing::StartsWith("refused"));
    };
    faults.push_back(job);
    const auto before = std::signal(SIGXFSZ, SIG_IGN); // writing fails instead, as on a full disk
    RunAll(faults);
    std::signal(SIGXFSZ, before);
}

} // namespace
