// SPDX-License-Identifier: MIT
#include "field/job/JobRecord.h"

#include "field/job/AveragedTip.h"
#include "field/job/EpochSummary.h"
#include "field/job/PtpsLine.h"

#include <set>

namespace field {

namespace inner = tiltpole::field;

namespace {

/// "no tip", and why.
std::string WithoutTip(const Verdict& verdict)
{
    return verdict.reasons.empty() ? "no tip" : "no tip: " + verdict.reasons.front().text;
}

/// The verdicts on the epochs of the mean in one text, each reason once.
std::string GateText(const std::vector<const Report*>& used, bool forced)
{
    std::string text = forced ? "forced" : "store";
    std::set<Reason::Code> named;
    for (const Report* report : used)
        for (const Reason& reason : report->verdict.reasons)
            if (named.insert(reason.code).second) {
                text += named.size() == 1 ? ": " : "; ";
                text += reason.text;
            }
    return text;
}

JobEpoch EpochOf(const Report& report)
{
    JobEpoch epoch;
    epoch.seconds = inner::SecondsOf(report.epoch.moment);
    epoch.receiver = report.epoch.lines;
    epoch.used = report.tip.has_value();
    if (report.tip)
        epoch.pose = inner::PtpsLine(report.tip->pose, epoch.seconds);
    else
        epoch.why = WithoutTip(report.verdict);
    return epoch;
}

/// What the epochs of the mean say together.
void Describe(JobPoint& point, const std::vector<const Report*>& used, JobTime now)
{
    std::vector<const Epoch*> epochs;
    double declination = 0.0;
    for (const Report* report : used) {
        epochs.push_back(&report->tip->epoch);
        declination += report->tip->declination;
        point.forced = point.forced || report->verdict.state != State::Store;
    }
    inner::Summarize(point, epochs, now); // the mean takes epochs of one quality and station
    point.declination = declination / static_cast<double>(used.size());
    point.gate = GateText(used, point.forced);
}

} // namespace

JobSetup JobSetupOf(const Setup& setup, std::string_view program, JobTime now)
{
    JobSetup row;
    row.made = now;
    row.poleLength = setup.poleLength;
    row.phaseCenter = setup.phaseCenter;
    row.sensorType = setup.sensorType;
    row.calibration = setup.calibration.bytes;
    row.headingSigma = setup.headingSigma;
    row.tiltSigma = setup.tiltSigma;
    row.lengthSigma = setup.lengthSigma;
    row.delay = setup.delay;
    row.delaySigma = setup.delaySigma;
    row.axisOffset = setup.calibration.sensor.GetMagneticBiasAngle_A();
    row.north = setup.north == NorthSource::Model ? "model" : "file";
    if (setup.north == NorthSource::Model) row.model = "WMM2025";
    row.program = program;
    return row;
}

JobRecord JobRecordOf(std::span<const Report> reports, JobTime now)
{
    JobRecord record;
    std::vector<Tip> tips;
    std::vector<std::size_t> reportOf; // a tip
    for (std::size_t i = 0; i < reports.size(); ++i) {
        record.epochs.push_back(EpochOf(reports[i]));
        if (!reports[i].tip) continue;
        tips.push_back(*reports[i].tip);
        reportOf.push_back(i);
    }
    const TipAverage mean = AveragedTip(tips);
    if (mean.used == 0) {
        record.error = reports.empty() ? "there is no epoch" : "no epoch has a tip";
        return record;
    }
    for (const LeftOutTip& out : mean.leftOut) {
        record.epochs[reportOf[out.index]].used = false;
        record.epochs[reportOf[out.index]].why = out.why;
    }
    std::vector<const Report*> used;
    for (std::size_t i = 0; i < reports.size(); ++i) {
        record.epochs[i].n = static_cast<int>(i) + 1;
        if (record.epochs[i].used) used.push_back(&reports[i]);
    }
    JobPoint& point = record.point;
    point.tip = mean.position;
    point.sigma = mean.sigma;
    point.epochs = static_cast<int>(mean.used);
    point.leftOut = static_cast<int>(reports.size() - mean.used);
    point.tilt = mean.tilt;
    point.azimuthTrue = mean.azimuthTrue;
    point.antenna = mean.antenna;
    Describe(point, used, now);
    return record;
}

} // namespace field
