// SPDX-License-Identifier: MIT
//
// What the surveyor is shown once the receiver and the pose sensor are heard: what they send, which
// north, which height.
#pragma once

#include "field/Bridge.h"
#include <optional>
#include <string>
#include <vector>

namespace live {

class Banner
{
public:
    static constexpr field::Instant kListens = std::chrono::seconds(2);

    /// @param config  name of the parameter file; empty: there is none
    Banner(const field::Setup& setup, std::string config, std::string poseFormat);

    /// At the start: height, where is served, what to know beforehand.
    std::string Opening(const std::vector<std::string>& serving) const;

    /// One epoch, with the counters after it.
    void Add(const field::Report& report, const field::Counters& counters);

    /// What was heard, once, two seconds after the first epoch.
    std::optional<std::string> Take();

private:
    std::string ReceiverText() const;
    std::string PoseText() const;
    std::string NorthText() const;
    std::string Warnings() const;

    const field::Setup& m_setup;
    std::string m_config;
    std::string m_poseFormat;
    std::vector<std::string> m_types; // of sentences, in the order of their first coming
    std::optional<field::Report> m_last;
    std::optional<field::Tip> m_tip; // the last
    field::Instant m_first{};
    field::Instant m_posesSince{};
    std::uint64_t m_epochs = 0;
    std::uint64_t m_posesBefore = 0;
    std::uint64_t m_poses = 0;
    bool m_isTaken = false;
};

} // namespace live
