// SPDX-License-Identifier: MIT
//
// What gpsd tells of a receiver, as the sentences that the bridge reads.
//
//     socket.Write(GpsdJson::kRequest);
//     bridge.FeedReceiver(gpsd.Feed(line), now); // a line at a time
//
//   TPV   GGA and RMC; nine decimals of a degree become seven of a minute. With a fix, but without a
//         height yet: nothing
//   GST   GST
//   SKY   satellites used and HDOP of the GGA that follow
//
// gpsd's own eph and epv are not used: they ignore what the receiver states in GST.
#pragma once

#include <cstddef>
#include <string>
#include <string_view>

class GpsdJson
{
public:
    /// Asks gpsd for its objects.
    static constexpr std::string_view kRequest = "?WATCH={\"enable\":true,\"json\":true};\n";
    static constexpr std::size_t kLongestLine = 16384; ///< bytes; gpsd's own limit is 10240

    /// @param line  one object, its line end or not
    /// @return sentences, each with CR LF; empty for other objects and for what is none
    std::string Feed(std::string_view line);

private:
    std::string m_satellites = "0";
    std::string m_hdop;
};
