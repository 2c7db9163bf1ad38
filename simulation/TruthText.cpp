// SPDX-License-Identifier: MIT
#include "simulation/TruthText.h"

#include <nlohmann/json.hpp>

namespace simulation {

namespace {

using Json = nlohmann::ordered_json;

Json VectorJson(const Point3& v)
{
    return Json::array({v.x, v.y, v.z});
}

Json PlaceJson(const Point3& p)
{
    return {
        {"x", p.x},
        {"y", p.y},
        {"h", p.z}
    };
}

Json JsonOf(const Matrix& m)
{
    return Json::array({VectorJson(m.rows[0]), VectorJson(m.rows[1]), VectorJson(m.rows[2])});
}

// Null where eight values cannot undo the soft iron.
Json CorrectionJson(const MagnetometerModel& magnetometer)
{
    const auto p = CorrectionOf(magnetometer);
    if (!p) return nullptr;
    return {
        {"x0", p->x0},
        {"y0", p->y0},
        {"z0", p->z0},
        {"a",  p->a },
        {"b",  p->b },
        {"c",  p->c },
        {"d",  p->d },
        {"e",  p->e }
    };
}

Json JsonOf(const MagnetometerModel& magnetometer)
{
    const auto inverse = InverseOf(magnetometer.softIron);
    return {
        {"soft_iron",         JsonOf(magnetometer.softIron)             },
        {"hard_iron",         VectorJson(magnetometer.hardIron)         },
        {"noise",             magnetometer.noise                        },
        {"correction",        CorrectionJson(magnetometer)              },
        {"soft_iron_inverse", inverse ? JsonOf(*inverse) : Json(nullptr)}
    };
}

Json JsonOf(const PoseSensor& sensor)
{
    const bool levelling = sensor.rollReport == RollReport::Levelling;
    return {
        {"type",                 sensor.type                            },
        {"magnetometer_a",       JsonOf(sensor.a)                       },
        {"magnetometer_b",       JsonOf(sensor.b)                       },
        {"magnetic_step",        sensor.magneticStep                    },
        {"roll",                 levelling ? "levelling" : "inclination"},
        {"pitch_offset",         sensor.pitchOffset                     },
        {"roll_offset",          sensor.rollOffset                      },
        {"tilt_noise",           sensor.tiltNoise                       },
        {"gyro_noise",           sensor.gyroNoise                       },
        {"gyro_bias",            VectorJson(sensor.gyroBias)            },
        {"acceleration_noise_g", sensor.accelerationNoise               }
    };
}

Json JsonOf(const EarthField& field)
{
    return {
        {"strength",        field.strength               },
        {"dip",             field.dip                    },
        {"declination",     field.declination            },
        {"north_east_down", VectorJson(LevelField(field))}
    };
}

Json JsonOf(const Losses& losses)
{
    Json gaps = Json::array();
    for (const Gap& gap : losses.gaps)
        gaps.push_back({
            {"from", gap.from},
            {"to",   gap.to  }
        });
    return {
        {"share", losses.share},
        {"gaps",  gaps        }
    };
}

Json JsonOf(const std::vector<Magnet>& magnets)
{
    Json list = Json::array();
    for (const Magnet& m : magnets) {
        list.push_back({
            {"from",       m.from     },
            {"to",         m.to       },
            {"strength",   m.strength },
            {"share_at_b", m.shareAtB },
            {"azimuth",    m.azimuth  },
            {"elevation",  m.elevation},
            {"on_pole",    m.onPole   }
        });
    }
    return list;
}

Json JsonOf(const TurnResult& turn)
{
    const TurnPlan& plan = turn.plan;
    Json stops = Json::array();
    for (const Stop& stop : plan.stops)
        stops.push_back({
            {"at",      stop.at     },
            {"seconds", stop.seconds}
        });
    Json back = Json::array();
    for (const TurningBack& b : plan.turningsBack)
        back.push_back({
            {"at", b.at},
            {"by", b.by}
        });
    return {
        {"samples_taken",       plan.samples        },
        {"samples_written",     turn.samples        },
        {"rate_hz",             plan.rate           },
        {"extent",              plan.extent         },
        {"start_heading",       plan.startHeading   },
        {"start_spin",          plan.startSpin      },
        {"level_error",         plan.levelError     },
        {"level_direction",     plan.levelDirection },
        {"axis_error",          plan.axisError      },
        {"axis_direction",      plan.axisDirection  },
        {"wobble",              plan.wobble         },
        {"unevenness",          plan.unevenness     },
        {"stops",               stops               },
        {"turnings_back",       back                },
        {"losses",              JsonOf(plan.losses) },
        {"magnets",             JsonOf(plan.magnets)},
        {"start_second_of_day", plan.startOfDay     }
    };
}

Json JsonOf(const AntennaNoise& noise)
{
    return {
        {"white_plan",   noise.whitePlan  },
        {"white_height", noise.whiteHeight},
        {"slow_plan",    noise.slowPlan   },
        {"slow_height",  noise.slowHeight },
        {"correlation",  noise.correlation}
    };
}

// A reader of the file may not have the manual at hand, so the file itself explains x and y.
Json Opening(const char* kind, std::uint64_t seed)
{
    return {
        {"simulated", kind                                                                  },
        {"seed",      seed                                                                  },
        {"units",     "degrees, metres, seconds, counts; x is northing, y easting, h height"}
    };
}

Json Opening(const char* kind, const Scene& scene)
{
    Json truth = Opening(kind, scene.seed);
    truth["sensor"] = JsonOf(scene.sensor);
    truth["field"] = JsonOf(scene.field);
    truth["bias_angle_a"] = BiasAngleOf(scene.field);
    return truth;
}

std::string Finished(const Json& truth)
{
    return truth.dump(2) + '\n';
}

} // namespace

std::string TruthOfTurns(const Scene& scene, const std::vector<TurnResult>& turns)
{
    Json truth = Opening("turns", scene);
    for (const TurnResult& turn : turns) {
        const bool horizontal = turn.plan.axis == TurnAxis::Horizontal;
        truth[horizontal ? "horizontal_turn" : "vertical_turn"] = JsonOf(turn);
    }
    return Finished(truth);
}

std::string TruthOfWalk(const Scene& scene, const WalkPlan& plan, const Walk& walk)
{
    Json truth = Opening("walk", scene);
    truth["pole_length"] = plan.poleLength;
    truth["pole_geometry"] = plan.geometry == PoleGeometry::AsSolved ? "as_solved" : "rigid";
    truth["rate_hz"] = plan.rate;
    truth["dwell"] = plan.dwell;
    truth["travel"] = plan.travel;
    truth["tremor"] = plan.tremor;
    truth["antenna_noise"] = JsonOf(plan.noise);
    truth["losses"] = JsonOf(plan.losses);
    truth["magnets"] = JsonOf(plan.magnets);
    truth["start_second_of_day"] = plan.startOfDay;
    truth["samples_written"] = walk.samples.size();
    Json tips = Json::array();
    for (const Point3& tip : walk.tips)
        tips.push_back(PlaceJson(tip));
    truth["tips"] = tips;
    return Finished(truth);
}

std::string TruthOfPoints(std::uint64_t seed, const PointsPlan& plan,
                          const std::vector<AntennaPosition>& positions)
{
    Json truth = Opening("points", seed);
    truth["tip"] = PlaceJson(plan.tip);
    truth["pole_length"] = plan.poleLength;
    truth["least_lean"] = plan.leastLean;
    truth["most_lean"] = plan.mostLean;
    truth["azimuth"] = plan.azimuth;
    truth["width"] = plan.width;
    truth["spacing"] = plan.spacing;
    truth["plan_noise"] = plan.planNoise;
    truth["height_noise"] = plan.heightNoise;
    truth["incline_noise"] = plan.inclineNoise;
    truth["outlier_size"] = plan.outlierSize;
    Json outliers = Json::array();
    for (std::size_t i = 0; i < positions.size(); ++i)
        if (positions[i].outlier) outliers.push_back(i + 1);
    truth["outliers"] = outliers;
    truth["positions_written"] = positions.size();
    return Finished(truth);
}

} // namespace simulation
