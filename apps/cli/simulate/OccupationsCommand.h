// SPDX-License-Identifier: MIT
//
// `tiltpole simulate occupations`
#pragma once

#include "apps/cli/simulate/SimulateOptions.h"
#include "simulation/Occupation.h"
#include <functional>
#include <string>
#include <vector>

namespace cli {

class OccupationsCommand
{
public:
    OccupationsCommand();
    void AddTo(CLI::App& command);
    int Run();

private:
    void AddMotion(CLI::App& command);
    void AddMotionAmount(CLI::App& command, const char* option,
                         double simulation::PlantedMotion::*value, const tables::Range& range,
                         const char* description);
    void AddPole(CLI::App& command);
    void AddAntenna(CLI::App& command);
    void AddErrors(CLI::App& command);
    void AddFaults(CLI::App& command);
    void AddDipoles(CLI::App& command);
    simulation::OccupationPlan Plan() const;
    void PrintResult(const simulation::Scene& scene, const simulation::Occupations& log) const;

    SceneOptions m_options;
    MagnetOptions m_magnets;
    std::string m_out = "-";
    std::string m_truth;
    std::string m_scene;
    std::string m_antennaFile;
    std::string m_motion;
    std::vector<std::function<void(simulation::PlantedMotion&)>> m_motionChanges;
    simulation::OccupationPlan m_plan;
    bool m_silent = false;
    bool m_json = false;
};

} // namespace cli
