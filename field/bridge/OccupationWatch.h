// SPDX-License-Identifier: MIT
//
// The occupation that goes on while a live pole is planted: field::Occupation, fed with the poses
// and the epochs of a bridge, begun anew where the tip is elsewhere.
//
// It begins anew when the tip of an epoch lies more than 0.3 m from that at its beginning, the
// antenna further than a planted pole reaches, an epoch is missing for 3 s, the reference station
// is another one, or the estimate refuses. Positions are local meters about the first antenna. An
// estimate is formed every half second from two seconds on. What it was formed from is kept, for
// some minutes at most.
#pragma once

#include "field/Bridge.h"
#include "field/Occupation.h"
#include "field/OccupationTrack.h"

#include <cstddef>
#include <memory>
#include <optional>
#include <string>
#include <vector>

namespace tiltpole::field {

class OccupationWatch
{
public:
    explicit OccupationWatch(const ::field::Setup& setup) : m_setup(setup) {}

    /// A pose, its moment set. Poses without gyros are passed over.
    /// @param disturbed  the field is not believed
    void Add(const ::field::PoseSample& pose, bool disturbed);

    /// An epoch, its moment set, with the tip of its own pose where that is known.
    /// @param declination  [degrees]; NaN: not known, nothing is begun
    void Add(const ::field::Epoch& epoch, const std::optional<::field::Tip>& tip,
             double declination);

    /// An epoch that must not be used.
    void LeaveOut(const ::field::Epoch& epoch, std::string why);

    void Clear();

    /// Of the occupation that goes on; none before its first two seconds.
    const std::optional<::field::OccupationEstimate>& Estimate() const { return m_estimate; }
    /// Its tip, where it has one.
    std::optional<::field::Geodetic> Tip() const;
    /// What that was computed from, where its advice is Store; else none.
    const std::shared_ptr<const ::field::OccupationTrack>& Track() const { return m_track; }

private:
    bool GoesOn(const ::field::Epoch& epoch, const std::optional<::field::Tip>& tip) const;
    void Begin(const ::field::Epoch& epoch, const std::optional<::field::Tip>& tip,
               double declination);
    void Keep(const ::field::Epoch& epoch, std::string leftOut);
    void FormEstimate();
    void FreeOne();

    ::field::Setup m_setup;
    std::unique_ptr<::field::Occupation> m_occupation;
    double m_declination = 0.0; // that m_occupation was made for [degrees]
    bool m_running = false;
    bool m_hasGyros = false;
    std::optional<::field::Geodetic> m_tip; // first tip
    ::field::Instant m_begun{};
    ::field::Instant m_last{};      // moment of the last epoch
    ::field::Instant m_estimated{}; // of that of the last estimate
    std::optional<::field::OccupationEstimate> m_estimate;
    std::shared_ptr<const ::field::OccupationTrack> m_track; // of m_estimate
    using Pieces = std::vector<std::shared_ptr<const ::field::OccupationTrack::Piece>>;
    Pieces m_pieces;
    Pieces m_ended; // of occupations that ended: freed piece by piece, which takes long at once
    ::field::OccupationTrack::Piece m_piece; // whose epoch has not come yet
    std::size_t m_poses = 0;                 // in all pieces
};

} // namespace tiltpole::field
