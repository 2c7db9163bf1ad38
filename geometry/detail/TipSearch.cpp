// SPDX-License-Identifier: MIT
#include "geometry/detail/TipSearch.h"

#include "geometry/detail/PointCloud.h"
#include "vector/Dispatch.h"

#include <algorithm>
#include <cmath>
#include <limits>

namespace tiltpole::geometry {

namespace {

constexpr double kRadiusTolerance = 0.05; // start radius to antenna height [m]
constexpr double kNoBest = 1e-6;          // a best point error below this counts as none yet [m]
constexpr double kWorthwhile = 0.0005;    // gain that outweighs a poorer geometry [m]
constexpr double kRadiusSlack = 1e-9;     // relative; the exact test follows
constexpr std::size_t kBatch = 64;        // starts judged at once, at least

struct Quality
{
    double pointError = 0.0;
    double geometryFigure = 0.0;
};

// Starts of one row, and those of several rows that wait for judgement.
struct RowBuffers
{
    explicit RowBuffers(std::size_t count)
        : x(count), y(count), h(count), denominator(count), usable(count)
    {}
    RowStarts View() { return {x.data(), y.data(), h.data(), denominator.data(), usable.data()}; }
    std::vector<double> x, y, h, denominator;
    std::vector<std::int64_t> usable;
};

struct WaitingStarts
{
    explicit WaitingStarts(std::size_t count)
        : x(count), y(count), h(count), denominator(count), radius(count), hopeless(count),
          members(count)
    {}
    std::vector<double> x, y, h, denominator, radius;
    std::vector<std::int64_t> hopeless;
    std::vector<Quadruple> members;
    std::size_t size = 0;
};

class Search
{
public:
    Search(const std::vector<Point3>& positions, double antennaHeight, double flatness,
           const SearchKernels& kernels);
    TipSearchResult Run(const ProgressObserver& progress);

private:
    void TakeAsFirst(std::size_t i);
    void ScanFourth(std::size_t i, std::size_t j, std::size_t k);
    void AwaitUsable(const Quadruple& members);
    void JudgeWaiting();
    void Weigh(std::size_t slot);
    Quality Refine(const Point3& start, double radius, double limit) const;
    bool HasBest() const { return m_best.pointError >= kNoBest; }
    double PointErrorToBeat() const
    {
        return HasBest() ? m_best.pointError : std::numeric_limits<double>::infinity();
    }

    const SearchKernels& m_kernels;
    const double m_antennaHeight;
    const double m_flatness;
    const PointCloud m_cloud;
    const std::size_t m_count;
    CoordinateArrays m_edges; // positions about the first one of the combination
    std::vector<double> m_halfSquare;
    std::vector<std::size_t> m_usable;
    RowBuffers m_rowStarts;
    Row m_row = {};
    WaitingStarts m_waiting;
    Quality m_best;
    std::optional<Quadruple> m_bestMembers;
};

Search::Search(const std::vector<Point3>& positions, double antennaHeight, double flatness,
               const SearchKernels& kernels)
    : m_kernels(kernels), m_antennaHeight(antennaHeight), m_flatness(flatness), m_cloud(positions),
      m_count(positions.size()), m_edges(m_count), m_halfSquare(m_count + kGroup),
      m_usable(m_count + 1), m_rowStarts(m_count + kGroup), m_waiting(kBatch + m_count + kGroup)
{
    const double low = std::max(0.0, m_antennaHeight - kRadiusTolerance) * (1.0 - kRadiusSlack);
    const double high = (m_antennaHeight + kRadiusTolerance) * (1.0 + kRadiusSlack);
    m_row.e = m_edges.View();
    m_row.halfSquare = m_halfSquare.data();
    m_row.lowSquare = low * low;
    m_row.highSquare = high * high;
}

void Search::TakeAsFirst(std::size_t i)
{
    for (std::size_t l = i + 1; l < m_count; ++l) {
        const Point3 edge = m_cloud.At(l) - m_cloud.At(i);
        m_edges.Set(l, edge);
        m_halfSquare[l] = 0.5 * Dot(edge, edge);
    }
}

void Search::ScanFourth(std::size_t i, std::size_t j, std::size_t k)
{
    const Point3 a = m_edges.At(j);
    const Point3 b = m_edges.At(k);
    const Point3 w = m_halfSquare[j] * b - m_halfSquare[k] * a;
    const Point3 c = Cross(a, b);
    m_row.w[0] = w.x;
    m_row.w[1] = w.y;
    m_row.w[2] = w.z;
    m_row.c[0] = c.x;
    m_row.c[1] = c.y;
    m_row.c[2] = c.z;
    m_row.flat = 8.0 * m_flatness * m_flatness * m_halfSquare[j] * m_halfSquare[k];
    m_kernels.scanRow(m_row, k + 1, m_count, m_rowStarts.View());
    AwaitUsable({i, j, k, 0});
}

void Search::AwaitUsable(const Quadruple& members)
{
    std::size_t found = 0;
    for (std::size_t l = members[2] + 1; l < m_count; ++l) {
        m_usable[found] = l;
        found -= static_cast<std::size_t>(m_rowStarts.usable[l]);
    }
    for (std::size_t u = 0; u < found; ++u) {
        const std::size_t l = m_usable[u];
        const std::size_t slot = m_waiting.size++;
        m_waiting.x[slot] = m_rowStarts.x[l];
        m_waiting.y[slot] = m_rowStarts.y[l];
        m_waiting.h[slot] = m_rowStarts.h[l];
        m_waiting.denominator[slot] = m_rowStarts.denominator[l];
        m_waiting.members[slot] = {members[0], members[1], members[2], l};
    }
}

// Starts are judged against the best at the time. One below kNoBest is replaced by every start, so
// the best can get worse on the way: while it is, the verdicts count for nothing.
void Search::JudgeWaiting()
{
    if (m_waiting.size == 0) return;
    const Point3 origin = m_cloud.At(m_waiting.members[0][0]);
    const double toBeat = PointErrorToBeat();
    const double redundancy = static_cast<double>(m_count) - 4.0;
    const Batch batch = {
        .x = m_waiting.x.data(),
        .y = m_waiting.y.data(),
        .h = m_waiting.h.data(),
        .denominator = m_waiting.denominator.data(),
        .radius = m_waiting.radius.data(),
        .hopeless = m_waiting.hopeless.data(),
        .size = m_waiting.size,
        .origin = {origin.x, origin.y, origin.z},
        .limit = toBeat * toBeat * redundancy
    };
    m_kernels.judgeStarts(m_cloud.Moments(), batch);
    for (std::size_t slot = 0; slot < m_waiting.size; ++slot)
        if (m_waiting.hopeless[slot] == 0 || PointErrorToBeat() > toBeat) Weigh(slot);
    m_waiting.size = 0;
}

void Search::Weigh(std::size_t slot)
{
    const double radius = m_waiting.radius[slot];
    if (!(std::fabs(radius - m_antennaHeight) <= kRadiusTolerance)) return;

    const Point3 start = {m_waiting.x[slot], m_waiting.y[slot], m_waiting.h[slot]};
    const Quality found = Refine(start, radius, PointErrorToBeat());
    const bool graded = std::isfinite(found.pointError) && std::isfinite(found.geometryFigure);
    if (!graded && m_count > 4) return;
    if (HasBest()) {
        const double gain = m_best.pointError - found.pointError;
        if (!(gain > 0.0)) return;
        if (gain < kWorthwhile && m_best.geometryFigure < found.geometryFigure) return;
    }
    m_best = found;
    m_bestMembers = m_waiting.members[slot];
}

// StepSphere with the normal matrix from the moments. A point error above `limit` may come out
// smaller than it is, but not below the limit.
Quality Search::Refine(const Point3& start, double radius, double limit) const
{
    const double n = static_cast<double>(m_count);
    const double squaredRadius = radius * radius;
    Symmetric3 normal = m_cloud.Spread();
    normal.AddSquare(start);
    const Symmetric3 cofactor =
        normal.Adjugate().Scaled(squaredRadius / (n * normal.Determinant()));
    const double trace = n * normal.Trace() / squaredRadius;

    const double tip[] = {start.x, start.y, start.z};
    const DistanceSums sums = m_kernels.sumDistances(m_cloud.View(), m_count, tip);
    const Point3 weighted = {sums.weighted[0], sums.weighted[1], sums.weighted[2]};
    const Point3 right = (1.0 / radius) * weighted - n * start;
    const Point3 correction = cofactor * right;
    const Point3 refined = start + correction;
    const double newTip[] = {refined.x, refined.y, refined.z};
    const double step[] = {correction.x, correction.y, correction.z};
    const double newRadius = radius + (right.x + right.y + right.z) / n;
    const double squares = m_kernels.sumResiduals(m_cloud.View(), m_count, newTip, step, newRadius,
                                                  limit * limit * (n - 4.0) / trace);
    return {std::sqrt(squares / (n - 4.0) * trace), std::sqrt(cofactor.Trace())};
}

double CombinationsOfFour(std::size_t count)
{
    const double n = static_cast<double>(count);
    return n * (n - 1.0) * (n - 2.0) * (n - 3.0) / 24.0;
}

TipSearchResult Search::Run(const ProgressObserver& progress)
{
    const double all = CombinationsOfFour(m_count);
    double done = 0.0;
    for (std::size_t i = 0; i + 3 < m_count; ++i) {
        TakeAsFirst(i);
        for (std::size_t j = i + 1; j + 2 < m_count; ++j) {
            for (std::size_t k = j + 1; k + 1 < m_count; ++k) {
                ScanFourth(i, j, k);
                if (m_waiting.size >= (HasBest() ? kBatch : 1)) JudgeWaiting();
            }
            const double behind = static_cast<double>(m_count - j - 1);
            done += 0.5 * behind * (behind - 1.0);
            if (progress && !progress(done / all)) return {true, {}};
        }
        JudgeWaiting();
    }
    return {false, m_bestMembers};
}

} // namespace

const SearchKernels& BestSearchKernels()
{
    static const SearchKernels& best =
        vector::KernelsFor<SearchKernels, 4>(vector::LanesOfProcessor());
    return best;
}

TipSearchResult SearchTip(const std::vector<Point3>& positions, double antennaHeight,
                          double flatness, const ProgressObserver& progress,
                          const SearchKernels& kernels)
{
    if (!(antennaHeight + kRadiusTolerance >= 0.0)) return {};
    return Search(positions, antennaHeight, flatness, kernels).Run(progress);
}

} // namespace tiltpole::geometry
