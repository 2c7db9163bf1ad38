// SPDX-License-Identifier: MIT
//
// The whole measurement written out formula by formula, one library call per function named in a
// formula and nothing shared between operations: what the class is compared with, in value and in
// time. Operations are functions of their own translation unit, as the member functions of a class
// written down the same way would be; the compiler may inline them there as it sees fit.
#pragma once

#include "positioning/InclineSensor_Position.h"

namespace literal {

double Rad(double degrees);

struct Setup
{
    int sensorType = 1;
    Incline_MagneticCorrectParameter parA, parB;
    Incline_MagneticTranslationParameter translation;
    double biasA = 0.0, biasB = 0.0;
};

struct Result
{
    double yaw, yaw2, yawY;
    double correctedA[3], correctedB[3];
    double quotient;  // of the tilt-direction angle
    double cosine[2]; // arguments of the arc cosines k1, k3
    xyhCoordinate tip;
};

struct State
{
    PoseSensorData still; // the corrected sample at the start of the still period
    int stationary = 0;
    int interference = 0;
};

double ElevationDegrees(int sensorType, double pitch, double roll);

double Projection(int sensorType, double pitch, double roll, double heading, double cosine[2]);

Result Measure(const Setup& setup, const PoseSensorData& s, double length,
               const xyhCoordinate& antenna);

/// Measure with all that a host sees: flags, headings in the sample, raw readings put back.
int Position(const Setup& setup, State& state, PoseSensorData& sample, double length,
             xyhCoordinate& point);

} // namespace literal
