// SPDX-License-Identifier: MIT
//
// What an app sends back through the running program: corrections reach the receiver, and nothing else.
#include "tests/apps/live/Peers.h"
#include "tests/apps/live/Process.h"
#include "tests/apps/live/Recorded.h"
#include <random>

namespace {

using namespace apps::test;

// CRC-24Q, bit by bit: 1 0x864CFB.
std::uint32_t Crc24(const std::string& bytes)
{
    std::uint32_t crc = 0;
    for (const char c : bytes) {
        crc ^= static_cast<std::uint32_t>(static_cast<unsigned char>(c)) << 16;
        for (int bit = 0; bit < 8; ++bit) {
            crc <<= 1;
            if (crc & 0x1000000) crc ^= 0x1864CFB;
        }
    }
    return crc;
}

std::string Frame(const std::string& content)
{
    std::string frame{'\xD3', '\0', static_cast<char>(content.size())};
    frame += content;
    const std::uint32_t crc = Crc24(frame);
    for (const int shift : {16, 8, 0})
        frame += static_cast<char>(crc >> shift & 0xFF);
    return frame;
}

std::string RandomBytes(std::mt19937& random, std::size_t count)
{
    std::string bytes;
    while (bytes.size() < count)
        bytes += static_cast<char>(random() % 256);
    return bytes;
}

TEST(LiveCorrections, SixHundredFramesAmidNoiseReachTheReceiverAndNothingElse)
{
    const ScratchFolder folder;
    live::Loop loop;
    Device gnss(folder.Path("gnss"));
    Device imu(folder.Path("imu"));
    const Process program({TILTPOLE_PROGRAM, "live", "--gnss",
                           "serial:" + folder.Path("gnss") + ":115200", "--pose",
                           "serial:" + folder.Path("imu") + ":115200", "--pole", "2", "--serve",
                           "tcp:0", "--corrections", "clients"},
                          "/dev/null", folder.Path("errors"));
    const std::string place = " tcp 127.0.0.1:";
    ASSERT_TRUE(RunUntil(loop, [&] {
        return Count(folder.Read("errors"), place) == 1 && live::HasReader(gnss->Get());
    }));
    const std::string banner = folder.Read("errors");
    Peer app = Peer::ConnectedTo(
        static_cast<std::uint16_t>(std::stoi(banner.substr(banner.find(place) + place.size()))));

    std::mt19937 random(11);
    std::string frames;
    std::string sent = "?WATCH={\"enable\":true,\"json\":true};\r\n";
    for (int i = 0; i < 599; ++i) { // and one at the end
        const std::string frame = Frame(RandomBytes(random, random() % 5));
        frames += frame;
        sent += frame;
        if (i % 20 == 0) sent += "$PUBX,41,1,0007,0003,115200,0*18\r\n";
        if (i % 30 == 7) sent += "\xB5\x62\x06\x01" + RandomBytes(random, 4);
        if (i % 40 == 9) {
            std::string damaged = Frame("damaged");
            damaged[5] = static_cast<char>(damaged[5] ^ 1);
            sent += damaged;
        }
    }
    sent += "?POLL;\r\n" + Frame(std::string(8, 'x'));
    frames += Frame(std::string(8, 'x'));
    std::size_t at = 0;
    EXPECT_TRUE(RunUntil(loop, [&] {
        if (at < sent.size()) at += app.Write(std::string_view(sent).substr(at, 700));
        return gnss->Read().size() >= frames.size();
    })) << gnss->Read().size();
    RunFor(loop, 200ms);
    EXPECT_TRUE(gnss->Read() == frames) << gnss->Read().size() << " of " << frames.size();
    EXPECT_EQ(imu->Read(), "");
}

} // namespace
