// SPDX-License-Identifier: MIT
#include "field/nmea/ReasonName.h"

namespace tiltpole::field {

using ::field::Reason;

std::string_view ReasonName(Reason::Code code)
{
    using Code = Reason::Code;
    switch (code) {
    case Code::NoReceiver:
        return "no receiver";
    case Code::BaudRate:
        return "baud rate";
    case Code::NoFix:
        return "no fix";
    case Code::NoPose:
        return "no pose";
    case Code::PoseGap:
        return "pose gap";
    case Code::SensorStuck:
        return "sensor stuck";
    case Code::NoNorth:
        return "no north";
    case Code::NoHeading:
        return "no heading";
    case Code::FieldStrength:
        return "field strength";
    case Code::FieldDip:
        return "field dip";
    case Code::MagnetometersDiffer:
        return "magnetometers differ";
    case Code::NoCalibration:
        return "no calibration";
    case Code::CalibrationPoor:
        return "calibration poor";
    case Code::FloatFix:
        return "not fixed";
    case Code::CorrectionAge:
        return "correction age";
    case Code::Satellites:
        return "satellites";
    case Code::EpochOld:
        return "epoch old";
    case Code::BaseChanged:
        return "base changed";
    case Code::DatumStep:
        return "datum step";
    case Code::Jump:
        return "jump";
    case Code::BadLines:
        return "bad lines";
    case Code::PlanSigma:
        return "plan sigma";
    case Code::HeightSigma:
        return "height sigma";
    case Code::TimeSigma:
        return "time sigma";
    case Code::Lean:
        return "lean";
    case Code::Moving:
        return "moving";
    case Code::Settling:
        return "settling";
    case Code::TimeStep:
        return "time step";
    case Code::LeanNoted:
        return "lean noted";
    case Code::CalibrationOld:
        return "calibration old";
    case Code::SigmaAssumed:
        return "sigma assumed";
    case Code::CoarseText:
        return "coarse text";
    case Code::WeakField:
        return "weak field";
    case Code::OneMagnetometer:
        return "one magnetometer";
    }
    return "";
}

} // namespace tiltpole::field
