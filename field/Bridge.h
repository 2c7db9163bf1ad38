// SPDX-License-Identifier: MIT
/// @file
/// A pole on a real receiver: bytes of the receiver and of the pose sensor go in with the instants
/// at which they arrived, sentences with the tip and a verdict on each come out.
///
///     field::Setup setup;
///     setup.poleLength = 2.0;
///     setup.phaseCenter = 0.1165;
///     setup.delay = 0.124;                      // by FindDelay
///     setup.delaySigma = 0.007;
///     field::Bridge bridge(setup);
///     bridge.FeedPose("$PTPS,1,1200,...*4F\r\n", now);
///     bridge.FeedReceiver("$GNGGA,130758.00,...*6F\r\n", now);
///     bridge.Tick(now);                         // every 20 ms
///     for (const field::Report& report : bridge.Take()) {
///         Send(report.nmea);                    // one epoch, whole
///         if (report.verdict.state == field::State::Store) Offer(*report.tip);
///     }
///
/// There is no clock, no socket and no file inside. The same bytes at the same instants give the
/// same reports, however they are cut into pieces and however often Tick is called; only when a
/// report is ready depends on that. Instants count in whole microseconds. The tip is formed in
/// latitude and longitude with true north; no map projection takes part.
///
///     azimuths   from true north towards east [degrees]
///     lean       angle of the pole from the vertical [degrees]
///     L          poleLength + phaseCenter: tip to the antenna's phase center
#pragma once

#include "field/DisturbanceMonitor.h"
#include "field/Epoch.h"
#include "field/Occupation.h"
#include "framework/core/Export.h"
#include "positioning/InclineSensor_Position.h"

#include <cstdint>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace field {

/// The calibration of the magnetometers, as a parameter file and its sidecar hold it.
struct CalibrationFile
{
    /// With the corrections, translations and bias angles of the file; its sensor type and kept
    /// values are not used. The bias of magnetometer A is the axis offset (see NorthSource).
    CInclineSensor_Position sensor;
    std::string bytes;     ///< of the file; empty: there is none
    bool complete = false; ///< all keys were found
    bool usable = true; ///< the verdict of the calibration was "usable" or better, or there is none
    std::optional<std::chrono::sys_days> made;
    std::optional<FieldShape>
        field; ///< strength [counts] and dip [degrees] found at the calibration
};

/// Which north the heading is brought to.
enum class NorthSource {
    Model, ///< true = magnetic - axis offset + declination by the World Magnetic Model
    File,  ///< the bias of the file holds everything already: true = magnetic - bias
};

/// What is sent while the tip is not known, see docs/live.md.
enum class Profile {
    Strict, ///< empty coordinates, quality 0
    QField, ///< point under the antenna, quality 6 and a sigma of the lean
};

/// What must hold before a tip may be stored.
struct GateLimits
{
    bool allowFloat = false;
    double correctionAge = 10.0; ///< [s]
    int satellites = 5;
    double epochAge = 1.0;         ///< [s]
    double planSigma = 0.030;      ///< of the tip, larger of north and east [m]
    double heightSigma = 0.040;    ///< [m]
    double timeSigma = 0.020;      ///< of pose against antenna while moving [s]
    double poseGap = 0.050;        ///< between neighbors [s]
    double antennaSpeed = 0.05;    ///< [m/s]
    double stillFor = 0.5;         ///< [s]
    double lean = 30.0;            ///< [degrees]
    double leanNoted = 15.0;       ///< above it a note [degrees]
    double calibrationDays = 30.0; ///< older: a note
    double fieldStrength = 0.05;   ///< part of the expected strength
    double fieldDip = 5.0;         ///< [degrees]
    double fieldPair = 0.05;       ///< difference of A and B, part of the strength
    double badLines = 0.05;        ///< part of the lines of the last 10 s
    double datumStep = 0.3;        ///< step between fixed epochs taken for another base [m]
};

/// What a pose sensor sends, see field/pose/PoseReader.h.
enum class PoseFormat : std::uint8_t { Ptps, Csv, SerialFrames };

/// A pole, its sensor and what is known about both: everything that a Bridge is made from.
struct Setup
{
    double poleLength = 2.0;  ///< tip to antenna reference point [m]
    double phaseCenter = 0.0; ///< reference point to phase center, up [m]
    double appHeight =
        0.0; ///< added to GGA field 9 for apps that subtract their antenna height [m]
    double tiltSigma = 0.1;     ///< of pitch and roll each [degrees]
    double headingSigma = 2.5;  ///< [degrees]
    double lengthSigma = 0.001; ///< [m]
    double delay = 0.0;         ///< receiver later than pose [s]
    double delaySigma = 0.03;   ///< [s]
    PoseFormat poseFormat = PoseFormat::Ptps;
    int sensorType = 1;
    bool oneMagnetometer = false; ///< B is made from A: the two are not compared
    CalibrationFile calibration;
    NorthSource north = NorthSource::Model;
    GateLimits limits;
    Profile profile = Profile::Strict;
    bool enforce = false; ///< every Block, not only an unknown tip, blanks the coordinates
    /// UTC of Instant 0, for receivers that send no date [s since 1970].
    std::optional<double> started;
};

/// One pose of the sensor.
struct PoseSample
{
    PoseSensorData data;
    std::optional<double> deviceSeconds; ///< of the sensor's own clock
    std::optional<double> heading;       ///< magnetic, by a sensor that forms one [degrees]
    Instant arrival{};
    Instant moment{}; ///< when it was true; set by the bridge
};

/// The tip at one epoch of the receiver, and what it was computed from.
struct Tip
{
    Epoch epoch;
    PoseSample pose; ///< interpolated to epoch.moment
    Geodetic position;
    Covariance3 sigma;
    double tilt = 0.0;         ///< lean [degrees]
    double azimuthTrue = 0.0;  ///< towards which the pole leans: from tip to antenna [degrees]
    double headingTrue = 0.0;  ///< of the sensor's forward axis [degrees]
    double declination = 0.0;  ///< [degrees]; NaN: the file holds the north
    double antennaSpeed = 0.0; ///< relative to the tip [m/s]
};

enum class State {
    Store, ///< may be stored
    Wait,  ///< moving or settling
    Block, ///< must not be stored
};

/// Why a tip may not be stored, or what to know about it.
struct Reason
{
    enum class Code : std::uint8_t {
        // The tip is not known.
        NoReceiver,
        BaudRate,
        NoFix,
        NoPose,
        PoseGap,
        SensorStuck,
        NoNorth,
        NoHeading,
        FieldStrength,
        FieldDip,
        MagnetometersDiffer,
        NoCalibration,
        CalibrationPoor,
        // The tip is known, and is not good enough.
        FloatFix,
        CorrectionAge,
        Satellites,
        EpochOld,
        BaseChanged,
        DatumStep,
        Jump,
        BadLines,
        PlanSigma,
        HeightSigma,
        TimeSigma,
        Lean,
        // Wait.
        Moving,
        Settling,
        TimeStep,
        // Notes, which forbid nothing.
        LeanNoted,
        CalibrationOld,
        SigmaAssumed,
        CoarseText,
        WeakField,
        OneMagnetometer,
    };
    Code code{};
    std::string text; ///< one sentence for the surveyor, with the value and its limit
};

/// Whether the tip of an epoch may be stored, and why not.
struct Verdict
{
    State state = State::Block;
    std::vector<Reason> reasons; ///< the most important first; empty or only notes: Store
};

struct OccupationTrack; // field/OccupationTrack.h

/// What came of one epoch; or, with an epoch without utc and no sentences, that there are none any
/// more.
struct Report
{
    Epoch epoch;
    std::optional<Tip> tip; ///< none while it is not known
    Verdict verdict;
    std::string nmea; ///< its sentences, each with CR LF; they tell of `tip` alone
    /// Of the time since the tip was planted, with the gyros of the sensor; none without them, or
    /// before two seconds. x north, y east, h up of the antenna at its beginning.
    std::optional<OccupationEstimate> occupation;
    /// Its tip. Where its advice is Store, a pole that only moves may be stored, too: the verdict
    /// then is that of this tip, not of `tip`.
    std::optional<Geodetic> occupationTip;
    bool byOccupation = false; ///< whether the verdict is Store for `occupationTip` only
    /// What `occupation` was computed from; none unless its advice is Store.
    std::shared_ptr<const OccupationTrack> occupationTrack;
};

/// What was read and what was left out.
struct Counters
{
    std::uint64_t receiverLines = 0;
    std::uint64_t receiverBad = 0;     ///< checksum, length or form
    std::uint64_t receiverOther = 0;   ///< good sentences that are not used
    std::uint64_t receiverRefused = 0; ///< good checksum, but against their own epochs
    std::uint64_t epochs = 0;
    std::uint64_t repeated = 0; ///< epochs not later than the last, sentences that one had already
    std::uint64_t poses = 0;
    std::uint64_t posesBad = 0;     ///< checksum or form
    std::uint64_t posesRefused = 0; ///< NaN, out of range, time running back
    std::uint64_t stored = 0;       ///< epochs by verdict
    std::uint64_t waited = 0;
    std::uint64_t blocked = 0;
};

/// The engine. One thread; memory is bounded.
///
/// Where memory is short (std::bad_alloc) while bytes, poses or time are given, the bridge goes on
/// as after RestartReceiver and RestartPose, and epochs that waited are lost: what was half known
/// makes no tip. Reports that were formed before stay. Sentences may have been given to the
/// callback of an epoch that has no report. Any other call has not happened then.
class TILTPOLE_API Bridge
{
public:
    explicit Bridge(const Setup& setup);
    ~Bridge();
    Bridge(Bridge&&) noexcept;
    Bridge& operator=(Bridge&&) noexcept;

    /// Bytes as they came, cut anywhere. Instants never run back.
    void FeedReceiver(std::string_view bytes, Instant arrival);
    void FeedPose(std::string_view bytes, Instant arrival);
    /// A pose that another reader understood, at its arrival; its moment is set here.
    void FeedPose(const PoseSample& sample);

    /// Time passes: closes epochs that wait for a neighbor or for more sentences. Every 20 ms.
    void Tick(Instant now);

    /// Reports since the last call, in order.
    std::vector<Report> Take();

    /// Gives the sentences of each epoch to `callback` as soon as they are formed, before an
    /// occupation is estimated with it. The report that Take returns holds the same. The callback
    /// must not use the bridge.
    void OnSentences(std::function<void(const std::string&)> callback);

    /// What the surveyor confirms: another base, a step of the datum.
    void Acknowledge(Reason::Code code);

    /// Drops what is half read and begins the clocks anew, after a cable was pulled.
    void RestartReceiver();
    void RestartPose();

    /// How many apps are served; $PTLTS says it.
    void SetClients(int clients);

    const Counters& Count() const;

private:
    struct Engine;
    std::unique_ptr<Engine> m_engine;
};

} // namespace field
