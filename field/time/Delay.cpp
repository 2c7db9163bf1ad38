// SPDX-License-Identifier: MIT
#include "field/Delay.h"

#include "field/Geodesy.h"
#include "field/time/DelayFit.h"
#include "field/tip/TipSolver.h"
#include "survey/Angle.h"

#include <algorithm>
#include <cmath>
#include <limits>
#include <vector>

namespace field {

namespace {

namespace survey = tiltpole::survey;
using survey::Point3;
using tiltpole::field::FitRocking;
using tiltpole::field::ResidualsOf;
using tiltpole::field::RockingFit;

constexpr int kFewestEpochs = 15;
constexpr double kShortest = 5.0;      // [s]
constexpr double kLeastSpeed = 0.1;    // of the antenna, rms over half seconds [m/s]
constexpr double kLargestSigma = 0.05; // of the delay [s]
constexpr double kLargestRms = 0.1;    // [m]
constexpr double kCoarse = 0.02;       // step of the first search [s]
constexpr double kFarthest = 10.0;     // delay that can be searched [s]
constexpr double kFine = 20e-6;        // the search ends [s]
constexpr double kSlope = 0.02;        // to both sides, for derivatives by the delay [s]
constexpr double kCorrelated = 1.0;    // residuals further apart count as independent [s]
// What clock maps and errors of the heading leave, however long the pole is rocked: with it, the
// sigmas of twelve parts of a recorded motion agreed with their errors [s].
constexpr double kModelSigma = 0.002;
constexpr double kInfinite = std::numeric_limits<double>::infinity();

double SecondsOf(Instant time)
{
    return std::chrono::duration<double>(time).count();
}

Instant InstantOf(double seconds)
{
    return Instant(std::llround(seconds * 1e9));
}

bool IsFinite(const Point3& point)
{
    return std::isfinite(point.x + point.y + point.z);
}

// What the antenna and the pose say about the moments at which both are known.
struct Pairs
{
    std::vector<Point3> antenna; // about the first epoch: north, east, up [m]
    std::vector<Point3> up;      // unit vectors up the pole
    std::vector<Instant> moments;
};

// The antenna's track of a rocked pole, and the pole at the same moments less a delay.
class Rocking
{
public:
    Rocking(std::span<const Epoch> epochs, const PoseRing& poses, const Setup& setup,
            double declination);

    /// Leaves out the epochs that have no pose at a delay between these.
    void Restrict(double from, double to);

    int Size() const { return static_cast<int>(m_moments.size()); }
    double Length() const { return SecondsOf(m_moments.back() - m_moments.front()); }
    double Speed() const;

    Pairs At(double delay) const;
    RockingFit Fit(const Pairs& pairs) const
    {
        return FitRocking(pairs.antenna, pairs.up, m_heightWeight);
    }
    std::vector<Point3> Residuals(double delay) const;
    /// Mean square of the weighted residuals [m²]; infinite with too few epochs.
    double MeanSquare(double delay) const;
    double Rms(double delay) const;
    double Sigma(double delay) const;

private:
    std::optional<Point3> UpAt(Instant moment, double delay) const;
    void WeighHeights(std::span<const Epoch> epochs);
    double Weighted(const Point3& a, const Point3& b) const;
    double ScoreVariance(const std::vector<double>& scores) const;

    const PoseRing& m_poses;
    tiltpole::field::TipSolver m_unitPole;
    double m_declination;
    double m_heightWeight = 0.25; // where nothing is stated: heights twice as uncertain
    std::vector<Point3> m_antenna;
    std::vector<Instant> m_moments;
};

Setup UnitPole(Setup setup)
{
    setup.poleLength = 1.0;
    setup.phaseCenter = 0.0;
    return setup;
}

Rocking::Rocking(std::span<const Epoch> epochs, const PoseRing& poses, const Setup& setup,
                 double declination)
    : m_poses(poses), m_unitPole(UnitPole(setup)), m_declination(declination)
{
    std::optional<Geodetic> origin;
    for (const Epoch& epoch : epochs) {
        if (epoch.fix != Fix::Fixed) continue;
        const Geodetic& from = origin ? *origin : epoch.antenna;
        const Point3 local = survey::PointOf(Difference(from, epoch.antenna));
        if (!IsFinite(local)) continue;
        if (!origin) origin = epoch.antenna;
        m_antenna.push_back(local);
        m_moments.push_back(epoch.moment);
    }
    WeighHeights(epochs);
}

void Rocking::Restrict(double from, double to)
{
    std::size_t kept = 0;
    for (std::size_t i = 0; i < m_moments.size(); ++i) {
        bool known = UpAt(m_moments[i], to).has_value();
        for (double delay = from; known && delay < to; delay += kCoarse)
            known = UpAt(m_moments[i], delay).has_value();
        if (!known) continue;
        m_antenna[kept] = m_antenna[i];
        m_moments[kept] = m_moments[i];
        ++kept;
    }
    m_antenna.resize(kept);
    m_moments.resize(kept);
}

void Rocking::WeighHeights(std::span<const Epoch> epochs)
{
    constexpr double kLeast = 0.04;
    double plan = 0.0;
    double height = 0.0;
    for (const Epoch& epoch : epochs) {
        plan += 0.5 * (epoch.sigma.nn + epoch.sigma.ee);
        height += epoch.sigma.hh;
    }
    if (plan > 0.0 && height > 0.0) m_heightWeight = std::clamp(plan / height, kLeast, 1.0);
}

std::optional<Point3> Rocking::UpAt(Instant moment, double delay) const
{
    const PoseLookup found = m_poses.At(moment - InstantOf(delay));
    if (found.state != PoseLookup::State::Found) return std::nullopt;
    const Point3 up = -1.0 * m_unitPole.Step(found.pose, m_declination);
    return IsFinite(up) ? std::optional(up) : std::nullopt;
}

Pairs Rocking::At(double delay) const
{
    Pairs pairs;
    for (std::size_t i = 0; i < m_moments.size(); ++i) {
        const std::optional<Point3> up = UpAt(m_moments[i], delay);
        if (!up) continue;
        pairs.antenna.push_back(m_antenna[i]);
        pairs.up.push_back(*up);
        pairs.moments.push_back(m_moments[i]);
    }
    return pairs;
}

// A single epoch's noise is no motion; half a second apart it adds 14 mm/s for each 5 mm.
double Rocking::Speed() const
{
    constexpr Instant kApart = std::chrono::milliseconds(500);
    double sum = 0.0;
    int count = 0;
    std::size_t from = 0;
    for (std::size_t i = 0; i < m_moments.size(); ++i) {
        while (m_moments[i] - m_moments[from + 1] >= kApart)
            ++from;
        if (m_moments[i] - m_moments[from] < kApart) continue;
        const Point3 step = m_antenna[i] - m_antenna[from];
        const double seconds = SecondsOf(m_moments[i] - m_moments[from]);
        sum += survey::Dot(step, step) / (seconds * seconds);
        ++count;
    }
    return count > 0 ? std::sqrt(sum / count) : 0.0;
}

double Rocking::MeanSquare(double delay) const
{
    const Pairs pairs = At(delay);
    if (std::ssize(pairs.up) < kFewestEpochs) return kInfinite;
    return Fit(pairs).sum / static_cast<double>(pairs.up.size());
}

std::vector<Point3> Rocking::Residuals(double delay) const
{
    const Pairs pairs = At(delay);
    if (pairs.up.empty()) return {};
    return ResidualsOf(pairs.antenna, pairs.up, Fit(pairs));
}

double Rocking::Rms(double delay) const
{
    const std::vector<Point3> residuals = Residuals(delay);
    double sum = 0.0;
    for (const Point3& residual : residuals)
        sum += survey::Dot(residual, residual);
    return residuals.empty() ? 0.0 : std::sqrt(sum / static_cast<double>(residuals.size()));
}

double Rocking::Weighted(const Point3& a, const Point3& b) const
{
    return a.x * b.x + a.y * b.y + m_heightWeight * a.z * b.z;
}

// Variance of the sum of the scores, neighbors counted together with weights that fall to 0 at
// kCorrelated (W. K. Newey and K. D. West, Econometrica 55, 1987); at least that of white ones.
double Rocking::ScoreVariance(const std::vector<double>& scores) const
{
    double white = 0.0;
    double correlated = 0.0;
    for (std::size_t i = 0; i < scores.size(); ++i) {
        white += scores[i] * scores[i];
        for (std::size_t k = i + 1; k < scores.size(); ++k) {
            const double apart = SecondsOf(m_moments[k] - m_moments[i]);
            if (apart >= kCorrelated) break;
            correlated += 2.0 * (1.0 - apart / kCorrelated) * scores[i] * scores[k];
        }
    }
    return std::max(white, white + correlated);
}

// Of the delay with the least sum: √(variance of the sum of r·r') / Σ r'·r', r' by the delay, and
// the model's.
double Rocking::Sigma(double delay) const
{
    const std::vector<Point3> residuals = Residuals(delay);
    const std::vector<Point3> before = Residuals(delay - kSlope);
    const std::vector<Point3> after = Residuals(delay + kSlope);
    if (before.size() != residuals.size() || after.size() != residuals.size()) return kInfinite;
    std::vector<double> scores;
    double information = 0.0;
    for (std::size_t i = 0; i < residuals.size(); ++i) {
        const Point3 slope = (0.5 / kSlope) * (after[i] - before[i]);
        scores.push_back(Weighted(residuals[i], slope));
        information += Weighted(slope, slope);
    }
    if (!(information > 0.0)) return kInfinite;
    return std::hypot(std::sqrt(ScoreVariance(scores)) / information, kModelSigma);
}

// Where the least mean square lies.
struct Coarse
{
    double low = 0.0; // delays [s]
    double high = 0.0;
    bool atTheEnd = false;
};

// At every delay all epochs count that have a pose there; delays with less than half of them do
// not.
std::optional<Coarse> SearchCoarsely(const Rocking& rocking, const DelayRange& range)
{
    const double width = range.latest - range.earliest;
    if (!(width > 0.0) || !(std::fabs(range.earliest) < kFarthest && width < kFarthest))
        return std::nullopt;
    const int count = std::max(2, static_cast<int>(std::ceil(width / kCoarse)));
    const auto delayOf = [&](int i) { return range.earliest + width * i / count; };
    std::size_t most = 0;
    std::vector<std::size_t> sizes;
    std::vector<double> means;
    for (int i = 0; i <= count; ++i) {
        const Pairs pairs = rocking.At(delayOf(i));
        sizes.push_back(pairs.up.size());
        most = std::max(most, pairs.up.size());
        const bool enough = std::ssize(pairs.up) >= kFewestEpochs;
        means.push_back(enough ? rocking.Fit(pairs).sum / static_cast<double>(pairs.up.size())
                               : kInfinite);
    }
    for (std::size_t i = 0; i < means.size(); ++i)
        if (2 * sizes[i] < most) means[i] = kInfinite;
    const int least =
        static_cast<int>(std::min_element(means.begin(), means.end()) - means.begin());
    if (!std::isfinite(means[static_cast<std::size_t>(least)])) return std::nullopt;
    return Coarse{delayOf(std::max(least - 1, 0)), delayOf(std::min(least + 1, count)),
                  least == 0 || least == count};
}

// Golden section.
double LeastWithin(const Rocking& rocking, double low, double high)
{
    constexpr double kGolden = 0.6180339887498949;
    double left = high - kGolden * (high - low);
    double right = low + kGolden * (high - low);
    double atLeft = rocking.MeanSquare(left);
    double atRight = rocking.MeanSquare(right);
    while (high - low > kFine) {
        if (atLeft < atRight) {
            high = right;
            right = left;
            atRight = atLeft;
            left = high - kGolden * (high - low);
            atLeft = rocking.MeanSquare(left);
        } else {
            low = left;
            left = right;
            atLeft = atRight;
            right = low + kGolden * (high - low);
            atRight = rocking.MeanSquare(right);
        }
    }
    return 0.5 * (low + high);
}

DelayOutcome Judge(const DelayResult& result, double speed, bool atTheEnd)
{
    if (speed < kLeastSpeed) return DelayOutcome::TooLittleMotion;
    if (atTheEnd) return DelayOutcome::AtTheEnd;
    if (!(result.rms <= kLargestRms)) return DelayOutcome::NotOneTip;
    return result.sigma <= kLargestSigma ? DelayOutcome::Found : DelayOutcome::TooLittleMotion;
}

} // namespace

std::string_view TextOf(DelayOutcome outcome)
{
    switch (outcome) {
    case DelayOutcome::Found:
        return "found";
    case DelayOutcome::TooFewEpochs:
        return "too few fixed epochs with poses around them";
    case DelayOutcome::TooShort:
        return "too short: rock the pole for 20 s";
    case DelayOutcome::TooLittleMotion:
        return "too little motion: rock the pole faster and wider";
    case DelayOutcome::NotOneTip:
        return "the antenna does not follow the pose about one tip: keep the tip on its mark";
    case DelayOutcome::AtTheEnd:
        return "the delay lies beyond the range that was searched";
    }
    return "";
}

DelayResult FindDelay(std::span<const Epoch> epochs, const PoseRing& poses, const Setup& setup,
                      double declination, const DelayRange& range)
{
    DelayResult result;
    const Rocking all(epochs, poses, setup, declination);
    const std::optional<Coarse> coarse = SearchCoarsely(all, range);
    if (!coarse) return result;
    Rocking near = all;
    near.Restrict(coarse->low - kSlope, coarse->high + kSlope);
    result.epochs = near.Size();
    if (result.epochs < kFewestEpochs) return result;
    result.outcome = DelayOutcome::TooShort;
    if (near.Length() < kShortest) return result;

    result.delay = LeastWithin(near, coarse->low, coarse->high);
    result.sigma = near.Sigma(result.delay);
    const RockingFit fit = near.Fit(near.At(result.delay));
    result.headingOffset = survey::Rad2Deg(fit.headingOffset);
    result.length = fit.length;
    result.rms = near.Rms(result.delay);
    result.rmsWithout = all.Rms(0.0);
    result.outcome = Judge(result, near.Speed(), coarse->atTheEnd);
    return result;
}

} // namespace field
