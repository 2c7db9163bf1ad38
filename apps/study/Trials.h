// SPDX-License-Identifier: MIT
//
// Figures over many trials.
#pragma once

#include "simulation/trials/Trial.h"

#include <cstdint>
#include <functional>
#include <string_view>
#include <vector>

namespace study {

using Trials = std::vector<Trial>;
using Figure = std::function<double(const Trial&)>;
using Chosen = std::function<bool(const Trial&)>;

/// What is simulated. The same seed gives the same trials.
struct Plan
{
    std::vector<Condition> conditions;
    int runs = 0; // of each condition
    std::uint64_t seed = 0;
    bool noGyros = false; // in the logs
};

/// @param report  called once for each condition, with its name and its trials
/// @return the trials of all conditions
Trials SimulateAll(const Plan& plan,
                   const std::function<void(std::string_view, const Trials&)>& report);

/// The solver answered, its values are finite and the joint fit judged them.
bool Comparable(const Trial& trial);

/// Spearman's rank correlation of two figures over the chosen trials.
double RankCorrelation(const Trials& trials, const Chosen& chosen, const Figure& x,
                       const Figure& y);

double RmsOf(const Trials& trials, const Chosen& chosen, const Figure& figure);

/// @param share  in [0, 1]; 0.5 is the median
double QuantileOf(const Trials& trials, const Chosen& chosen, const Figure& figure, double share);

/// Percent of the trials among `among` that are chosen.
double ShareOf(const Trials& trials, const Chosen& among, const Chosen& chosen);

} // namespace study
