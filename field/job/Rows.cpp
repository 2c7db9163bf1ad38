// SPDX-License-Identifier: MIT
#include "field/job/Rows.h"

#include "field/job/JobTime.h"
#include "field/job/PointBlob.h"

#include <cmath>
#include <optional>
#include <string>
#include <string_view>

namespace tiltpole::field {

using ::field::JobTime;
using ::field::JobTimeOf;
using ::field::JobTimeText;

namespace {

using ::field::Fix;
using ::field::kNotKnown;

constexpr double kMs = 1000.0; // in a second
constexpr std::string_view kMean = "mean";
constexpr std::string_view kByOccupation = "occupation";

JobTime TimeFrom(Statement& row)
{
    return JobTimeOf(row.Text()).value_or(JobTime{});
}

Geodetic PlaceFrom(Statement& row)
{
    const double latitude = row.Number();
    const double longitude = row.Number();
    return {latitude, longitude, row.Number()};
}

double Squared(double value)
{
    return value * value;
}

bool Same(double a, double b)
{
    return a == b || (!std::isfinite(a) && !std::isfinite(b));
}

JobSetup SetupFrom(Statement& row)
{
    JobSetup setup;
    setup.id = row.Integer();
    setup.made = TimeFrom(row);
    setup.poleLength = row.Number();
    setup.phaseCenter = row.Number();
    setup.sensorType = static_cast<int>(row.Integer());
    setup.calibration = row.Text();
    setup.headingSigma = row.Number();
    setup.tiltSigma = row.Number();
    setup.lengthSigma = row.Number();
    setup.delay = row.Number() / kMs;
    setup.delaySigma = row.Number() / kMs;
    setup.axisOffset = row.Number();
    setup.north = row.Text();
    setup.model = row.Text();
    setup.program = row.Text();
    return setup;
}

JobPoint PointFrom(Statement& row)
{
    JobPoint point;
    point.id = row.Integer();
    point.tip = PointOf(row.Text()).value_or(Geodetic{kNotKnown, kNotKnown, kNotKnown});
    point.name = row.Text();
    point.code = row.Text();
    point.note = row.Text();
    point.utc = TimeFrom(row);
    point.setup = row.Integer();
    point.receivedHeight = row.Number();
    point.geoid = row.Number();
    point.sigma.nn = Squared(row.Number());
    point.sigma.ee = Squared(row.Number());
    point.sigma.hh = Squared(row.Number());
    point.sigma.ne = row.Number();
    point.epochs = static_cast<int>(row.Integer());
    point.leftOut = static_cast<int>(row.Integer());
    point.tilt = row.Number();
    point.azimuthTrue = row.Number();
    point.declination = row.Number();
    point.quality = static_cast<Fix>(row.Integer());
    point.station = row.Text();
    point.correctionAge = row.Number();
    point.antenna = PlaceFrom(row);
    point.byOccupation = row.Text() == kByOccupation;
    point.gate = row.Text();
    point.forced = row.Integer() != 0;
    point.replaces = row.MaybeInteger();
    point.voidReason = row.MaybeText();
    return point;
}

void Take(Statement& row, std::int64_t& value)
{
    value = row.Integer();
}
void Take(Statement& row, std::optional<std::int64_t>& value)
{
    value = row.MaybeInteger();
}
void Take(Statement& row, double& value)
{
    value = row.Number();
}
void Take(Statement& row, std::string& value)
{
    value = row.Text();
}
void Take(Statement& row, JobTime& value)
{
    value = TimeFrom(row);
}
void Take(Statement& row, Geodetic& value)
{
    value = PlaceFrom(row);
}

// The columns of a row in order.
template <class... Values>
void TakeAll(Statement& row, Values&... values)
{
    (Take(row, values), ...);
}

template <class Row, class Read>
std::vector<Row> RowsOf(Statement& statement, const Read& read)
{
    std::vector<Row> rows;
    while (statement.Step())
        rows.push_back(read(statement));
    return rows;
}

} // namespace

void Insert(const Sqlite& sqlite, const JobSetup& setup)
{
    Statement(sqlite,
              "INSERT INTO setup (made_utc, pole_m, arp_to_apc_m, sensor_type, calibration, "
              "heading_sd_deg, tilt_sd_deg, pole_sd_m, delay_ms, delay_sd_ms, "
              "axis_offset_deg, north, model, program) "
              "VALUES (?,?,?,?,?,?,?,?,?,?,?,?,?,?)")
        .Add(JobTimeText(setup.made))
        .Add(setup.poleLength)
        .Add(setup.phaseCenter)
        .Add(std::int64_t{setup.sensorType})
        .AddBytes(setup.calibration)
        .Add(setup.headingSigma)
        .Add(setup.tiltSigma)
        .Add(setup.lengthSigma)
        .Add(setup.delay * kMs)
        .Add(setup.delaySigma * kMs)
        .Add(setup.axisOffset)
        .Add(setup.north)
        .Add(setup.model)
        .Add(setup.program)
        .Step();
}

void Insert(const Sqlite& sqlite, const JobPoint& point)
{
    Statement(
        sqlite,
        "INSERT INTO point (geom, name, code, note, utc, setup_id, h_ell_m, h_msl_m, geoid_m, "
        "sd_n_m, sd_e_m, sd_h_m, cov_ne_m2, epochs, left_out, tilt_deg, azimuth_true_deg, "
        "declination_deg, quality, station, age_s, ant_lat, ant_lon, ant_h_ell_m, method, gate, "
        "forced, replaces, void_reason) "
        "VALUES (?,?,?,?,?,?,?,?,?,?,?,?,?,?,?,?,?,?,?,?,?,?,?,?,?,?,?,?,?)")
        .AddBytes(PointBlob(point.tip))
        .Add(point.name)
        .Add(point.code)
        .Add(point.note)
        .Add(JobTimeText(point.utc))
        .Add(point.setup)
        .Add(point.tip.ellipsoidalHeight)
        .Add(point.receivedHeight)
        .Add(point.geoid)
        .Add(std::sqrt(point.sigma.nn))
        .Add(std::sqrt(point.sigma.ee))
        .Add(std::sqrt(point.sigma.hh))
        .Add(point.sigma.ne)
        .Add(std::int64_t{point.epochs})
        .Add(std::int64_t{point.leftOut})
        .Add(point.tilt)
        .Add(point.azimuthTrue)
        .Add(point.declination)
        .Add(static_cast<std::int64_t>(point.quality))
        .Add(point.station)
        .Add(point.correctionAge)
        .Add(point.antenna.latitude)
        .Add(point.antenna.longitude)
        .Add(point.antenna.ellipsoidalHeight)
        .Add(std::string_view(point.byOccupation ? kByOccupation : kMean))
        .Add(point.gate)
        .Add(std::int64_t{point.forced ? 1 : 0})
        .Add(point.replaces)
        .Add(point.voidReason.value_or(std::string{}))
        .Step();
}

void Insert(const Sqlite& sqlite, const JobEpoch& epoch, std::int64_t point, int n)
{
    Statement(sqlite, "INSERT INTO epoch (point_id, n, used, why, moment_s, receiver, pose, "
                      "disturbed) VALUES (?,?,?,?,?,?,?,?)")
        .Add(point)
        .Add(std::int64_t{n})
        .Add(std::int64_t{epoch.used ? 1 : 0})
        .Add(epoch.why)
        .Add(epoch.seconds)
        .Add(epoch.receiver)
        .Add(epoch.pose)
        .Add(std::int64_t{epoch.disturbed ? 1 : 0})
        .Step();
}

void Insert(const Sqlite& sqlite, const JobLeanPair& pair)
{
    Statement(sqlite, "INSERT INTO lean_pair (first_id, second_id, apart_m, heading_error_deg, "
                      "made_utc) VALUES (?,?,?,?,?)")
        .Add(pair.first)
        .Add(pair.second)
        .Add(pair.apart)
        .Add(pair.headingError)
        .Add(JobTimeText(pair.made))
        .Step();
}

void Insert(const Sqlite& sqlite, const JobStake& stake)
{
    Statement(sqlite, "INSERT INTO stake (name, design_lat, design_lon, design_h_ell_m, point_id, "
                      "d_n_m, d_e_m, d_h_m, made_utc) VALUES (?,?,?,?,?,?,?,?,?)")
        .Add(stake.name)
        .Add(stake.design.latitude)
        .Add(stake.design.longitude)
        .Add(stake.design.ellipsoidalHeight)
        .Add(stake.point)
        .Add(stake.north)
        .Add(stake.east)
        .Add(stake.up)
        .Add(JobTimeText(stake.made))
        .Step();
}

void Insert(const Sqlite& sqlite, const JobEvent& event)
{
    Statement(sqlite, "INSERT INTO event (utc, kind, text) VALUES (?,?,?)")
        .Add(JobTimeText(event.utc))
        .Add(event.kind)
        .Add(event.text)
        .Step();
}

void Touch(const Sqlite& sqlite, const char* table)
{
    Statement(sqlite, "UPDATE gpkg_contents SET last_change = strftime('%Y-%m-%dT%H:%M:%fZ','now') "
                      "WHERE table_name = ?")
        .Add(std::string_view(table))
        .Step();
}

void WidenExtent(const Sqlite& sqlite, const Geodetic& point)
{
    Touch(sqlite, "point");
    Touch(sqlite, "epoch");
    Statement(sqlite, "UPDATE gpkg_contents SET min_x = min(coalesce(min_x, ?1), ?1), "
                      "min_y = min(coalesce(min_y, ?2), ?2), "
                      "max_x = max(coalesce(max_x, ?1), ?1), "
                      "max_y = max(coalesce(max_y, ?2), ?2) WHERE table_name = 'point'")
        .Add(point.longitude)
        .Add(point.latitude)
        .Step();
}

std::vector<JobSetup> ReadSetups(const Sqlite& sqlite, Which which)
{
    constexpr const char* kAll =
        "SELECT id, made_utc, pole_m, arp_to_apc_m, sensor_type, calibration, heading_sd_deg, "
        "tilt_sd_deg, pole_sd_m, delay_ms, delay_sd_ms, axis_offset_deg, north, model, program "
        "FROM setup ORDER BY id";
    const std::string last = std::string(kAll) + " DESC LIMIT 1";
    Statement rows(sqlite, which == Which::Last ? last.c_str() : kAll);
    return RowsOf<JobSetup>(rows, SetupFrom);
}

std::vector<JobPoint> ReadPoints(const Sqlite& sqlite)
{
    Statement rows(sqlite,
                   "SELECT id, geom, name, code, note, utc, setup_id, h_msl_m, geoid_m, "
                   "sd_n_m, sd_e_m, sd_h_m, cov_ne_m2, epochs, left_out, tilt_deg, "
                   "azimuth_true_deg, declination_deg, quality, station, age_s, ant_lat, "
                   "ant_lon, ant_h_ell_m, method, gate, forced, replaces, void_reason FROM point "
                   "ORDER BY id");
    return RowsOf<JobPoint>(rows, PointFrom);
}

std::vector<JobEpoch> ReadEpochs(const Sqlite& sqlite, std::int64_t point)
{
    Statement rows(sqlite, "SELECT n, used, why, moment_s, receiver, pose, disturbed FROM epoch "
                           "WHERE point_id = ? ORDER BY n");
    rows.Add(point);
    return RowsOf<JobEpoch>(rows, [](Statement& row) {
        JobEpoch epoch;
        epoch.n = static_cast<int>(row.Integer());
        epoch.used = row.Integer() != 0;
        epoch.why = row.Text();
        epoch.seconds = row.Number();
        epoch.receiver = row.Text();
        epoch.pose = row.Text();
        epoch.disturbed = row.Integer() != 0;
        return epoch;
    });
}

std::vector<JobLeanPair> ReadLeanPairs(const Sqlite& sqlite)
{
    Statement rows(sqlite, "SELECT id, first_id, second_id, apart_m, heading_error_deg, made_utc "
                           "FROM lean_pair ORDER BY id");
    return RowsOf<JobLeanPair>(rows, [](Statement& row) {
        JobLeanPair p;
        TakeAll(row, p.id, p.first, p.second, p.apart, p.headingError, p.made);
        return p;
    });
}

std::vector<JobStake> ReadStakes(const Sqlite& sqlite)
{
    Statement rows(sqlite, "SELECT id, name, design_lat, design_lon, design_h_ell_m, point_id, "
                           "d_n_m, d_e_m, d_h_m, made_utc FROM stake ORDER BY id");
    return RowsOf<JobStake>(rows, [](Statement& row) {
        JobStake s;
        TakeAll(row, s.id, s.name, s.design, s.point, s.north, s.east, s.up, s.made);
        return s;
    });
}

std::vector<JobEvent> ReadEvents(const Sqlite& sqlite)
{
    Statement rows(sqlite, "SELECT id, utc, kind, text FROM event ORDER BY id");
    return RowsOf<JobEvent>(rows, [](Statement& row) {
        JobEvent event;
        TakeAll(row, event.id, event.utc, event.kind, event.text);
        return event;
    });
}

bool SameValues(const JobSetup& stored, const JobSetup& setup)
{
    // Delays go through milliseconds; they are compared as they would be read back.
    return Same(stored.poleLength, setup.poleLength) && Same(stored.phaseCenter, setup.phaseCenter)
           && stored.sensorType == setup.sensorType && stored.calibration == setup.calibration
           && Same(stored.headingSigma, setup.headingSigma)
           && Same(stored.tiltSigma, setup.tiltSigma) && Same(stored.lengthSigma, setup.lengthSigma)
           && Same(stored.delay, setup.delay * kMs / kMs)
           && Same(stored.delaySigma, setup.delaySigma * kMs / kMs)
           && Same(stored.axisOffset, setup.axisOffset) && stored.north == setup.north
           && stored.model == setup.model && stored.program == setup.program;
}

} // namespace tiltpole::field
