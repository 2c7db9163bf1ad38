// SPDX-License-Identifier: MIT
//
// The sentences an epoch is made of. Each is read strictly: a number out of its range, a letter
// that is not of its field or a field too many, and there is no result.
//
//   GGA  position, quality, heights       RMC  position, speed, date     ZDA  date
//   GST  standard deviations              GSA  satellites, without a time
#pragma once

#include "field/nmea/Sentence.h"

#include <chrono>
#include <optional>
#include <string>

namespace tiltpole::field {

/// Latitude and longitude as a text gave them.
struct TextPosition
{
    double latitude = 0.0;     // [degrees]
    double longitude = 0.0;    // [degrees]
    int latitudeDecimals = 0;  // of the minutes
    int longitudeDecimals = 0; // of the minutes
};

struct Gga
{
    std::string utc;
    std::optional<TextPosition> position; // always there where quality is not 0
    int quality = 0;                      // 0 to 9
    int satellites = 0;
    std::optional<double> hdop;
    double height = 0.0;     // above the geoid [m]; 0 with quality 0
    double separation = 0.0; // of the geoid from the ellipsoid [m]; 0 with quality 0
    int heightDecimals = 0;
    int separationDecimals = 0;
    std::optional<double> correctionAge; // [s]
    std::string satelliteText;
    std::string hdopText;
    std::string separationText;
    std::string ageText;
    std::string station;
};

struct Rmc
{
    std::string utc;
    std::optional<TextPosition> position;
    std::optional<double> speed;  // [m/s]
    std::optional<double> course; // from true north [degrees]
    std::optional<std::chrono::sys_days> date;
};

struct Gst
{
    std::string utc;
    double latitude = 0.0;  // standard deviations [m]; 0: none
    double longitude = 0.0; //
    double height = 0.0;    //
    /// Of the ellipse, not of latitude and longitude; all three or none.
    std::optional<double> major;       // [m]
    std::optional<double> minor;       // [m]
    std::optional<double> orientation; // of the major axis from true north [degrees]

    bool Stated() const { return latitude > 0.0 && longitude > 0.0 && height > 0.0; }
};

struct Zda
{
    std::string utc;
    std::optional<std::chrono::sys_days> date;
};

/// GGA: 14 fields. A position may be missing where quality is 0; else height and separation must be
/// there, too, both in M. Latitudes are ddmm, longitudes dddmm with minutes below 60.
std::optional<Gga> ReadGga(const Sentence& sentence);

/// RMC: 11 to 13 fields. Speed in knots. With status V the position may be missing.
std::optional<Rmc> ReadRmc(const Sentence& sentence);

/// GST: 8 fields, of which all but the first may be empty. An ellipse with major below minor is
/// none.
std::optional<Gst> ReadGst(const Sentence& sentence);

/// ZDA: 6 fields; years from 2000.
std::optional<Zda> ReadZda(const Sentence& sentence);

/// GSA: 17 or 18 fields, modes, satellites and DOPs in their ranges.
bool IsGsa(const Sentence& sentence);

} // namespace tiltpole::field
