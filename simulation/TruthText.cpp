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
        {"n_m", p.x},
        {"e_m", p.y},
        {"h_m", p.z}
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
        {"hard_iron_counts",  VectorJson(magnetometer.hardIron)         },
        {"noise_counts",      magnetometer.noise                        },
        {"correction",        CorrectionJson(magnetometer)              },
        {"soft_iron_inverse", inverse ? JsonOf(*inverse) : Json(nullptr)}
    };
}

Json JsonOf(const PoseSensor& sensor)
{
    const bool leveling = sensor.rollReport == RollReport::Leveling;
    return {
        {"type",                 sensor.type                          },
        {"magnetometer_a",       JsonOf(sensor.a)                     },
        {"magnetometer_b",       JsonOf(sensor.b)                     },
        {"magnetic_step_counts", sensor.magneticStep                  },
        {"roll",                 leveling ? "leveling" : "inclination"},
        {"pitch_offset_deg",     sensor.pitchOffset                   },
        {"roll_offset_deg",      sensor.rollOffset                    },
        {"tilt_noise_deg",       sensor.tiltNoise                     },
        {"tilt_filter_time_s",   sensor.filterTime                    },
        {"gyro_noise_dps",       sensor.gyroNoise                     },
        {"gyro_bias_dps",        VectorJson(sensor.gyroBias)          },
        {"gyro_scale_error",     VectorJson(sensor.gyroScale)         },
        {"gyro_range_dps",       sensor.gyroRange                     },
        {"acceleration_noise_g", sensor.accelerationNoise             },
        {"acceleration_bias_g",  VectorJson(sensor.accelerationBias)  }
    };
}

Json JsonOf(const EarthField& field)
{
    return {
        {"strength_counts",        field.strength               },
        {"dip_deg",                field.dip                    },
        {"declination_deg",        field.declination            },
        {"north_east_down_counts", VectorJson(LevelField(field))}
    };
}

Json JsonOf(const Losses& losses)
{
    Json gaps = Json::array();
    for (const Gap& gap : losses.gaps)
        gaps.push_back({
            {"from_s", gap.from},
            {"to_s",   gap.to  }
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
            {"from_s",          m.from     },
            {"to_s",            m.to       },
            {"strength_counts", m.strength },
            {"share_at_b",      m.shareAtB },
            {"azimuth_deg",     m.azimuth  },
            {"elevation_deg",   m.elevation},
            {"on_pole",         m.onPole   }
        });
    }
    return list;
}

Json JsonOf(const std::vector<Dipole>& dipoles)
{
    Json list = Json::array();
    for (const Dipole& d : dipoles)
        list.push_back({
            {"from_s",                   d.from             },
            {"to_s",                     d.to               },
            {"strength_at_1_m_counts",   d.strength         },
            {"north_east_down_of_tip_m", VectorJson(d.place)},
            {"azimuth_deg",              d.azimuth          },
            {"elevation_deg",            d.elevation        }
        });
    return list;
}

Json JsonOf(const std::vector<Jump>& jumps)
{
    Json list = Json::array();
    for (const Jump& jump : jumps)
        list.push_back({
            {"from_s", jump.from         },
            {"to_s",   jump.to           },
            {"by",     PlaceJson(jump.by)}
        });
    return list;
}

Json JsonOf(const PlantedMotion& m)
{
    Json slips = Json::array();
    for (const Slip& slip : m.slips)
        slips.push_back({
            {"at_s",       slip.at           },
            {"duration_s", slip.duration     },
            {"by",         PlaceJson(slip.by)}
        });
    return {
        {"kind",            NameOf(m.motion)},
        {"duration_s",      m.duration      },
        {"lean_from_deg",   m.leanFrom      },
        {"lean_to_deg",     m.leanTo        },
        {"move_time_s",     m.moveTime      },
        {"amplitude_deg",   m.amplitude     },
        {"frequency_hz",    m.frequency     },
        {"turn_deg",        m.turn          },
        {"tremor_deg",      m.tremor        },
        {"sensor_height_m", m.sensorHeight  },
        {"slips",           slips           }
    };
}

Json JsonOf(const OccupiedPoint& point)
{
    const PoleErrors& e = point.errors;
    return {
        {"tip",                 PlaceJson(point.tip)          },
        {"tip_at_end",          PlaceJson(point.tipAtEnd)     },
        {"lean_azimuth_deg",    point.azimuth                 },
        {"heading_deg",         point.heading                 },
        {"axis_forward_deg",    e.axisForward                 },
        {"axis_right_deg",      e.axisRight                   },
        {"acceleration_bias_g", VectorJson(e.accelerationBias)},
        {"gyro_bias_dps",       VectorJson(e.gyroBias)        },
        {"gyro_scale_error",    VectorJson(e.gyroScale)       },
        {"hard_iron_a_counts",  VectorJson(e.hardIronA)       },
        {"hard_iron_b_counts",  VectorJson(e.hardIronB)       },
        {"soft_iron_a",         JsonOf(e.softIronA)           },
        {"soft_iron_b",         JsonOf(e.softIronB)           }
    };
}

Json JsonOf(const TurnResult& turn)
{
    const TurnPlan& plan = turn.plan;
    Json stops = Json::array();
    for (const Stop& stop : plan.stops)
        stops.push_back({
            {"at_deg",     stop.at     },
            {"duration_s", stop.seconds}
        });
    Json back = Json::array();
    for (const TurningBack& b : plan.turningsBack)
        back.push_back({
            {"at_deg", b.at},
            {"by_deg", b.by}
        });
    return {
        {"samples_taken",       plan.samples        },
        {"samples_written",     turn.samples        },
        {"rate_hz",             plan.rate           },
        {"extent_deg",          plan.extent         },
        {"start_heading_deg",   plan.startHeading   },
        {"start_spin_deg",      plan.startSpin      },
        {"level_error_deg",     plan.levelError     },
        {"level_direction_deg", plan.levelDirection },
        {"axis_error_deg",      plan.axisError      },
        {"axis_direction_deg",  plan.axisDirection  },
        {"wobble_deg",          plan.wobble         },
        {"unevenness",          plan.unevenness     },
        {"stops",               stops               },
        {"turnings_back",       back                },
        {"losses",              JsonOf(plan.losses) },
        {"magnets",             JsonOf(plan.magnets)},
        {"start_of_day_s",      plan.startOfDay     }
    };
}

Json JsonOf(const AntennaNoise& noise)
{
    return {
        {"white_plan_m",   noise.whitePlan  },
        {"white_height_m", noise.whiteHeight},
        {"slow_plan_m",    noise.slowPlan   },
        {"slow_height_m",  noise.slowHeight },
        {"correlation_s",  noise.correlation}
    };
}

// A reader of the file may not have the manual at hand, so the file itself explains its units.
Json Opening(const char* kind, std::uint64_t seed)
{
    const Json units = {
        {"_m",      "meters; n northing, e easting, h height"},
        {"_deg",    "degrees"                                },
        {"_dps",    "degrees per second"                     },
        {"_s",      "seconds"                                },
        {"_hz",     "samples per second"                     },
        {"_counts", "readings of a magnetometer"             },
        {"_g",      "standard gravity"                       }
    };
    return {
        {"format",  "tiltpole simulate truth"},
        {"version", 1                        },
        {"units",   units                    },
        {"kind",    kind                     },
        {"seed",    seed                     }
    };
}

Json Opening(const char* kind, const Scene& scene)
{
    Json truth = Opening(kind, scene.seed);
    truth["sensor"] = JsonOf(scene.sensor);
    truth["field"] = JsonOf(scene.field);
    truth["bias_a_deg"] = BiasAngleOf(scene.field);
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
    truth["pole_length_m"] = plan.poleLength;
    truth["pole_geometry"] = plan.geometry == PoleGeometry::ByFormula ? "by_formula" : "rigid";
    truth["rate_hz"] = plan.rate;
    truth["dwell_s"] = plan.dwell;
    truth["travel_s"] = plan.travel;
    truth["tremor_deg"] = plan.tremor;
    truth["antenna_noise"] = JsonOf(plan.noise);
    truth["losses"] = JsonOf(plan.losses);
    truth["magnets"] = JsonOf(plan.magnets);
    truth["start_of_day_s"] = plan.startOfDay;
    truth["samples_written"] = walk.samples.size();
    Json tips = Json::array();
    for (const Point3& tip : walk.tips)
        tips.push_back(PlaceJson(tip));
    truth["tips"] = tips;
    return Finished(truth);
}

std::string TruthOfOccupations(const Scene& scene, const OccupationPlan& plan,
                               const Occupations& log)
{
    Json truth = Opening("occupations", scene);
    truth["pole_length_m"] = plan.poleLength;
    truth["pole_length_error_m"] = plan.poleError;
    truth["rate_hz"] = plan.rate;
    truth["antenna_rate_hz"] = plan.antennaRate;
    truth["antenna_delay_s"] = plan.delay;
    truth["motion"] = JsonOf(plan.motion);
    truth["axis_forward_deg"] = plan.axisForward;
    truth["axis_right_deg"] = plan.axisRight;
    truth["antenna_noise"] = plan.recorded.errors.empty() ? JsonOf(plan.noise) : Json("recorded");
    truth["losses"] = JsonOf(plan.losses);
    truth["epoch_losses"] = JsonOf(plan.epochLosses);
    truth["jumps"] = JsonOf(plan.jumps);
    truth["magnets"] = JsonOf(plan.magnets);
    truth["dipoles"] = JsonOf(plan.dipoles);
    truth["start_of_day_s"] = plan.startOfDay;
    truth["rows_written"] = log.rows.size();
    Json points = Json::array();
    for (const OccupiedPoint& point : log.points)
        points.push_back(JsonOf(point));
    truth["points"] = points;
    return Finished(truth);
}

std::string TruthOfPoints(std::uint64_t seed, const PointsPlan& plan,
                          const std::vector<AntennaPosition>& positions)
{
    Json truth = Opening("points", seed);
    truth["tip"] = PlaceJson(plan.tip);
    truth["pole_length_m"] = plan.poleLength;
    truth["least_lean_deg"] = plan.leastLean;
    truth["most_lean_deg"] = plan.mostLean;
    truth["azimuth_deg"] = plan.azimuth;
    truth["width_deg"] = plan.width;
    truth["spacing_m"] = plan.spacing;
    truth["plan_noise_m"] = plan.planNoise;
    truth["height_noise_m"] = plan.heightNoise;
    truth["incline_noise_deg"] = plan.inclineNoise;
    truth["outlier_size_m"] = plan.outlierSize;
    Json outliers = Json::array();
    for (std::size_t i = 0; i < positions.size(); ++i)
        if (positions[i].outlier) outliers.push_back(i + 1);
    truth["outliers"] = outliers;
    truth["positions_written"] = positions.size();
    return Finished(truth);
}

} // namespace simulation
