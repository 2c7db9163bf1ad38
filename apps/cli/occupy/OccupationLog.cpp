// SPDX-License-Identifier: MIT
#include "apps/cli/occupy/OccupationLog.h"

#include "apps/cli/occupy/FieldOfLog.h"
#include "apps/cli/occupy/PointsByMotion.h"
#include "apps/cli/occupy/RateSpikes.h"
#include "apps/tables/Progress.h"
#include "apps/tables/SampleLog.h"
#include "survey/Correction.h"
#include <fmt/format.h>

namespace cli {

namespace survey = tiltpole::survey;

namespace {

constexpr std::size_t kFewestDoubted = 2; // points
constexpr std::size_t kDoubtedShare = 4;  // one of so many
constexpr double kLongestHold = 1.2;      // an antenna has an epoch a second at least [s]

// Of magnetometer A.
field::SensorVector Corrected(const CInclineSensor_Position& position, const PoseSensorData& pose)
{
    const survey::Reading raw = survey::ReadingOf(pose, survey::Magnetometer::A);
    if (raw.x == 0.0 && raw.y == 0.0 && raw.z == 0.0) return {};
    const survey::Reading m = survey::Corrected(position.GetMagneticCorrectPar_A(), raw);
    return {m.x, m.y, m.z};
}

// All points of a log have the same columns: what together they show of the axes holds for each.
void RefuseForeignAxes(OccupyResult& result)
{
    AxesEvidence all;
    for (const OccupiedPoint& point : result.points)
        all.Add(point.axes);
    const auto problem = all.Problem();
    if (!problem) return;
    for (OccupiedPoint& point : result.points)
        if (!point.LacksRows()) point.Contradict(*problem);
}

// All points of a log have the same sensors: where those of some contradict the track, the others
// fit it by chance, as a rock in one plane with exchanged axes does.
void RefuseDoubtedSensors(OccupyResult& result)
{
    std::size_t judged = 0;
    std::size_t doubted = 0;
    for (const OccupiedPoint& point : result.points) {
        judged += point.LacksRows() ? 0 : 1;
        doubted += point.doubtsSensors ? 1 : 0;
    }
    if (doubted < kFewestDoubted || kDoubtedShare * doubted < judged) return;
    for (OccupiedPoint& point : result.points)
        if (!point.IsRefused() && !point.LacksRows())
            point.Contradict(fmt::format("the sensors contradict the antenna at {} of {} points of "
                                         "this log: check axes, signs and units",
                                         doubted, judged));
}

// A logger that holds the last epoch writes it on each row until the next one comes.
class HeldEpoch
{
public:
    /// Whether the row has the position of the row before at a later time.
    bool Repeats(const field::AntennaEpoch& epoch)
    {
        const auto same = [&](const xyhCoordinate& p) {
            return p.x == epoch.position.x && p.y == epoch.position.y && p.h == epoch.position.h;
        };
        const bool repeats = m_first && same(m_first->position) && epoch.seconds > m_last
                             && epoch.seconds < m_first->seconds + kLongestHold;
        if (!repeats) m_first = epoch;
        m_last = epoch.seconds;
        return repeats;
    }
    void Clear() { m_first.reset(); }

private:
    std::optional<field::AntennaEpoch> m_first; // of the rows with this position
    double m_last = 0.0;                        // [s]
};

class Reader
{
public:
    Reader(const OccupySetup& setup, const tables::ColumnChoice& columns)
        : m_setup(setup), m_log(setup.log, {.antenna = true,
                                            .blankAntenna = true,
                                            .inertial = !setup.gyroFree,
                                            .magnetometers = setup.occupation.useMagnetometer,
                                            .onBadRow = {},
                                            .columns = columns}),
          m_name(FindColumn(m_log.Rows(), kPointName, columns)), m_seconds(SecondsColumn(columns))
    {
        if (!m_name && setup.gyroFree)
            throw tables::InputError(m_log.Rows().Name(),
                                     "without gyros nothing tells points apart: add a column "
                                     "`point` with their names");
    }

    OccupyResult Read()
    {
        OccupyResult result;
        result.setup = m_setup;
        result.columns = Columns();
        result.toldApart = !m_name;
        if (m_name) {
            ReadNamed(result);
        } else {
            PointsByMotion points(m_setup, result);
            while (const auto read = m_spikes.Next())
                points.Add(Counted(*read->row));
            points.Finish();
        }
        m_progress.Wipe();
        m_spikes.Conclude();
        RefuseForeignAxes(result);
        result.field = MiddleField(result.points);
        RefuseDoubtedSensors(result);
        if (result.points.empty()) result.trouble = Trouble(result);
        return result;
    }

private:
    std::size_t SecondsColumn(const tables::ColumnChoice& columns) const
    {
        const auto column = FindColumn(m_log.Rows(), kRowSeconds, columns);
        if (!column) throw m_log.Rows().MissingColumns({kRowSeconds.key});
        return *column;
    }

    std::string Columns() const
    {
        auto used = m_log.UsedColumns();
        used.emplace_back(kRowSeconds.key, m_seconds);
        if (m_name) used.emplace_back(kPointName.key, *m_name);
        return tables::DescribeColumns(m_log.Rows(), used);
    }

    std::optional<ReadRow> ReadNext()
    {
        m_progress.Update(m_log.Rows().BytesRead());
        if (!m_log.Next()) return std::nullopt;
        ReadRow read;
        if (m_name) read.name = m_log.Rows().Field(*m_name);
        read.hasAntenna = m_log.HasAntenna();
        read.line = m_log.Rows().Line();
        if (!m_name || !read.name.empty()) read.row = Row();
        return read;
    }

    LogRow Row()
    {
        const double seconds = tables::NumberIn(m_log.Rows(), m_seconds, tables::kSeconds);
        LogRow row{SampleOf(m_log.Pose(), seconds, m_setup), m_log.Pose(), std::nullopt};
        if (m_log.HasAntenna()) {
            row.epoch = field::AntennaEpoch{seconds - m_setup.delay, m_log.Antenna(), 0.0, 0.0};
            row.repeatsEpoch = m_held.Repeats(*row.epoch);
            if (row.repeatsEpoch) row.epoch.reset();
        } else {
            m_held.Clear();
        }
        return row;
    }

    const LogRow& Counted(const LogRow& row)
    {
        m_rows.Add(row);
        return row;
    }

    // Why a log with rows has no points.
    std::optional<std::string> Trouble(const OccupyResult& result) const
    {
        if (result.otherRows == 0) return std::nullopt;
        if (m_name) return "the column with the names of points is blank throughout";
        if (m_rows.RunsBack()) return "the time of the rows runs back or repeats";
        if (auto problem = m_rows.TimeProblem()) return problem;
        if (!m_rows.HasEpochs()) return "there are no antenna positions";
        if (auto problem = m_rows.RateProblem()) return problem;
        return "nowhere does the tip stand for 2 s" + StopsText(result);
    }

    // ": the longest of 2 stops lasts 1.3 s; the antenna moves by 70.0 m"
    std::string StopsText(const OccupyResult& result) const
    {
        const std::string moves = fmt::format("the antenna moves by {:.1f} m", m_rows.Moves());
        if (result.shortStops == 0) return ": it never stops, and " + moves;
        return fmt::format(
            ": the longest of {} stop{} lasts {:.1f} s, the second after a walk and the one "
            "before it left out; {}",
            result.shortStops, result.shortStops == 1 ? "" : "s", result.longestStop, moves);
    }

    void ReadNamed(OccupyResult& result)
    {
        PointInWork point(m_setup);
        while (const auto read = m_spikes.Next()) {
            const std::string& name = read->name;
            if (point.HasBegun() && point.Point().name != name)
                result.points.push_back(point.End());
            if (name.empty()) {
                ++result.otherRows;
                result.otherEpochs += read->hasAntenna ? 1 : 0;
                continue;
            }
            if (!point.HasBegun()) point.Begin(name);
            point.Add(Counted(*read->row));
        }
        if (point.HasBegun()) result.points.push_back(point.End());
    }

    const OccupySetup& m_setup;
    tables::SampleLog m_log;
    std::optional<std::size_t> m_name;
    std::size_t m_seconds;
    HeldEpoch m_held;
    RowCheck m_rows; // of the whole log, where names do not divide it
    RateSpikes m_spikes{m_setup.log, [this] { return ReadNext(); }};
    tables::Progress m_progress{m_log.Rows().Size(), tables::Unit::Bytes};
};

} // namespace

field::InertialSample SampleOf(const PoseSensorData& pose, double seconds, const OccupySetup& setup)
{
    field::InertialSample sample;
    sample.seconds = seconds;
    if (!setup.gyroFree) sample.rate = {pose.dGyro_x, pose.dGyro_y, pose.dGyro_z};
    sample.acceleration = {pose.dAcc_x, pose.dAcc_y, pose.dAcc_z};
    sample.magnetic = Corrected(setup.position, pose);
    sample.tilt.pitch = pose.dPitch;
    sample.tilt.roll = pose.dRoll;
    return sample;
}

std::vector<std::string> OccupationKeys()
{
    std::vector<std::string> keys = tables::SampleLog::ColumnKeys();
    keys.emplace_back(kRowSeconds.key);
    keys.emplace_back(kPointName.key);
    return keys;
}

OccupyResult EstimatePoints(const OccupySetup& setup, const tables::ColumnChoice& columns)
{
    return Reader(setup, columns).Read();
}

std::optional<xyhCoordinate> OccupiedPoint::MeanTip() const
{
    if (singleTips.empty()) return std::nullopt;
    const xyhCoordinate& origin = singleTips.front();
    xyhCoordinate sum{};
    for (const xyhCoordinate& tip : singleTips) {
        sum.x += tip.x - origin.x;
        sum.y += tip.y - origin.y;
        sum.h += tip.h - origin.h;
    }
    const auto count = static_cast<double>(singleTips.size());
    return xyhCoordinate{origin.x + sum.x / count, origin.y + sum.y / count,
                         origin.h + sum.h / count};
}

std::optional<double> DelayOf(const OccupiedPoint& point, const OccupySetup& setup)
{
    if (!(point.estimate.delaySigma > 0.0)) return std::nullopt;
    return setup.delay - point.estimate.delay;
}

} // namespace cli
