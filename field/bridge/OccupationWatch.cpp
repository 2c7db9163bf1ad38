// SPDX-License-Identifier: MIT
#include "field/bridge/OccupationWatch.h"

#include "field/Geodesy.h"
#include "field/bridge/OccupationInput.h"
#include "survey/Point.h"

#include <algorithm>
#include <chrono>
#include <cmath>
#include <iterator>
#include <utility>

namespace tiltpole::field {

using ::field::Epoch;
using ::field::Fix;
using ::field::Instant;
using ::field::OccupationAdvice;
using ::field::OccupationTrack;
using namespace std::chrono_literals;

namespace {

constexpr double kElsewhere = 0.3;          // of the tip [m]
constexpr double kReach = 1.5;              // of the antenna about a tip, in pole lengths
constexpr double kDeclinationChange = 0.05; // another setup from here on [degrees]
constexpr Instant kPause = 3s;
constexpr Instant kSilence = 10s; // of epochs, told by poses: these are ahead by the delay
constexpr Instant kFirst = 2s;
constexpr Instant kEvery = 500ms;
constexpr double kLeastGravity = 0.5; // what is taken for an acceleration in g
constexpr double kMostGravity = 2.0;
constexpr std::size_t kMostPoses = 32768; // that are kept; then it begins anew

double Distance(const ::field::Geodetic& from, const ::field::Geodetic& to)
{
    return survey::Length(survey::PointOf(::field::Difference(from, to)));
}

bool HasGyros(const PoseSensorData& data)
{
    const double gravity = std::hypot(data.dAcc_x, data.dAcc_y, data.dAcc_z);
    const bool turns = data.dGyro_x != 0.0 || data.dGyro_y != 0.0 || data.dGyro_z != 0.0;
    return turns && gravity > kLeastGravity && gravity < kMostGravity;
}

} // namespace

void OccupationWatch::Add(const ::field::PoseSample& pose, bool disturbed)
{
    FreeOne();
    if (!m_running) {
        m_hasGyros = HasGyros(pose.data);
        return;
    }
    if (pose.moment - m_last > kSilence) {
        Clear();
        return;
    }
    m_occupation->Add(InertialSampleOf(m_setup, pose, disturbed));
    m_piece.poses.push_back(pose);
    m_piece.disturbed = disturbed;
    ++m_poses;
}

void OccupationWatch::Add(const Epoch& epoch, const std::optional<::field::Tip>& tip,
                          double declination)
{
    if (epoch.fix != Fix::Fixed) {
        LeaveOut(epoch, "quality " + std::to_string(static_cast<int>(epoch.fix)));
        return;
    }
    if (!m_running || !GoesOn(epoch, tip)) {
        Clear();
        Begin(epoch, tip, declination);
        return;
    }
    m_occupation->Add(AntennaEpochOf(m_pieces.front()->epoch.antenna, epoch));
    Keep(epoch, {});
    m_last = epoch.moment;
    if (epoch.moment - m_begun < kFirst || epoch.moment - m_estimated < kEvery) return;
    m_estimated = epoch.moment;
    FormEstimate();
}

void OccupationWatch::FormEstimate()
{
    m_estimate = m_occupation->Estimate();
    m_track.reset();
    if (m_estimate->advice != OccupationAdvice::Store) return;
    m_track = std::make_shared<OccupationTrack>(OccupationTrack{m_pieces, m_declination});
}

void OccupationWatch::LeaveOut(const Epoch& epoch, std::string why)
{
    if (epoch.moment - m_last > kPause)
        Clear();
    else if (m_running)
        Keep(epoch, std::move(why));
}

void OccupationWatch::Keep(const Epoch& epoch, std::string leftOut)
{
    FreeOne();
    m_piece.epoch = epoch;
    m_piece.leftOut = std::move(leftOut);
    m_pieces.push_back(std::make_shared<OccupationTrack::Piece>(std::exchange(m_piece, {})));
}

bool OccupationWatch::GoesOn(const Epoch& epoch, const std::optional<::field::Tip>& tip) const
{
    if (m_estimate && m_estimate->advice == OccupationAdvice::Refuse) return false;
    if (epoch.moment - m_last > kPause || epoch.moment <= m_last) return false;
    const Epoch& first = m_pieces.front()->epoch;
    if (m_poses > kMostPoses || epoch.station != first.station) return false;
    const double length = m_setup.poleLength + m_setup.phaseCenter;
    if (!(Distance(first.antenna, epoch.antenna) < kReach * length)) return false;
    return !m_tip || !tip || Distance(*m_tip, tip->position) < kElsewhere;
}

void OccupationWatch::Begin(const Epoch& epoch, const std::optional<::field::Tip>& tip,
                            double declination)
{
    const bool byFile = m_setup.north == ::field::NorthSource::File;
    if (!m_hasGyros || (!byFile && !std::isfinite(declination))) return;
    if (!m_occupation || (!byFile && std::fabs(declination - m_declination) > kDeclinationChange)) {
        m_occupation =
            std::make_unique<::field::Occupation>(OccupationSetupOf(m_setup, declination));
        m_declination = declination; // of an occupation that there is
    }
    Keep(epoch, "the occupation begins with it");
    if (tip) m_tip = tip->position;
    m_begun = epoch.moment;
    m_last = epoch.moment;
    m_running = true;
}

void OccupationWatch::Clear()
{
    if (m_occupation) m_occupation->Clear();
    m_running = false;
    m_tip.reset();
    m_estimate.reset();
    m_track.reset();
    std::ranges::move(m_pieces, std::back_inserter(m_ended));
    m_pieces.clear();
    m_piece = {};
    m_poses = 0;
    m_estimated = Instant{};
}

// With each pose and with each new piece: no more of them wait than there ever were in an occupation.
void OccupationWatch::FreeOne()
{
    if (!m_ended.empty()) m_ended.pop_back();
}

std::optional<::field::Geodetic> OccupationWatch::Tip() const
{
    if (!m_estimate || !m_estimate->hasTip) return std::nullopt;
    return ::field::Offset(m_pieces.front()->epoch.antenna, m_estimate->tip.x, m_estimate->tip.y,
                           m_estimate->tip.h);
}

} // namespace tiltpole::field
