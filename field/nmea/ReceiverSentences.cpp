// SPDX-License-Identifier: MIT
#include "field/nmea/ReceiverSentences.h"

#include "field/nmea/Numbers.h"
#include "field/time/EpochClock.h"

#include <algorithm>
#include <limits>

namespace tiltpole::field {

namespace {

constexpr double kKnot = 1852.0 / 3600.0; // m/s
constexpr double kMostDop = 1000.0;
constexpr double kLowest = -12000.0; // heights [m]
constexpr double kHighest = 100000.0;
constexpr double kMostSeparation = 200.0; // [m]
constexpr double kMostAge = 1e5;          // [s]
constexpr double kMostSpeed = 1e5;        // [knots]
constexpr double kMostSigma = 1e7;        // what is more counts as this [m]
constexpr std::size_t kLongestTime = 16;
constexpr std::size_t kLongestStation = 16;

using Date = std::optional<std::chrono::sys_days>;

bool IsTime(std::string_view text)
{
    return text.size() <= kLongestTime && !text.ends_with('.') && SecondsOfDay(text).has_value();
}

// An empty field is read, as none; a wrong one is not.
bool ReadOptional(std::string_view text, double least, double most, std::optional<double>& value)
{
    value.reset();
    if (text.empty()) return true;
    const std::optional<Decimal> number = ReadDecimal(text, least, most);
    if (number) value = number->value;
    return number.has_value();
}

// One letter of those; empty text is none.
bool IsOneOf(std::string_view text, std::string_view letters)
{
    return text.size() == 1 && letters.find(text.front()) != std::string_view::npos;
}

// ddmm.mmm, the degrees of so many digits.
bool ReadAngle(std::string_view text, std::size_t degreeDigits, double most, double& angle,
               int& decimals)
{
    if (text.size() < degreeDigits + 2) return false;
    const std::optional<int> degrees = ReadDigits(text.substr(0, degreeDigits), 1, degreeDigits);
    const std::string_view rest = text.substr(degreeDigits);
    const std::optional<Decimal> minutes = ReadDecimal(rest, 0.0, 60.0);
    if (!degrees || !minutes || minutes->value >= 60.0) return false;
    if (rest.front() == '-' || std::min(rest.find('.'), rest.size()) != 2) return false;
    angle = *degrees + minutes->value / 60.0;
    decimals = minutes->decimals;
    return angle <= most;
}

// Four fields from `first`: latitude, N or S, longitude, E or W. All of them empty is no position.
bool ReadPosition(const Sentence& sentence, std::size_t first,
                  std::optional<TextPosition>& position)
{
    const std::string_view latitude = sentence.Field(first);
    const std::string_view north = sentence.Field(first + 1);
    const std::string_view longitude = sentence.Field(first + 2);
    const std::string_view east = sentence.Field(first + 3);
    position.reset();
    if (latitude.empty() && longitude.empty())
        return (north.empty() || IsOneOf(north, "NS")) && (east.empty() || IsOneOf(east, "EW"));

    TextPosition read;
    if (!ReadAngle(latitude, 2, 90.0, read.latitude, read.latitudeDecimals)) return false;
    if (!ReadAngle(longitude, 3, 180.0, read.longitude, read.longitudeDecimals)) return false;
    if (!IsOneOf(north, "NS") || !IsOneOf(east, "EW")) return false;
    if (north == "S") read.latitude = -read.latitude;
    if (east == "W") read.longitude = -read.longitude;
    position = read;
    return true;
}

bool ReadDate(std::optional<int> year, std::optional<int> month, std::optional<int> day, Date& date)
{
    if (!year || !month || !day) return false;
    const std::chrono::year_month_day read{std::chrono::year(*year),
                                           std::chrono::month(static_cast<unsigned>(*month)),
                                           std::chrono::day(static_cast<unsigned>(*day))};
    if (!read.ok()) return false;
    date = std::chrono::sys_days(read);
    return true;
}

// ddmmyy of this century.
bool ReadShortDate(std::string_view text, Date& date)
{
    date.reset();
    if (text.empty()) return true;
    if (text.size() != 6) return false;
    std::optional<int> year = ReadDigits(text.substr(4, 2), 2, 2);
    if (year) *year += 2000;
    return ReadDate(year, ReadDigits(text.substr(2, 2), 2, 2), ReadDigits(text.substr(0, 2), 2, 2),
                    date);
}

bool IsMeter(std::string_view unit, bool demanded)
{
    return unit == "M" || (unit.empty() && !demanded);
}

// GGA 9 to 12.
bool ReadHeights(const Sentence& sentence, bool demanded, Gga& gga)
{
    const std::string_view height = sentence.Field(9);
    const std::string_view separation = sentence.Field(11);
    if (!IsMeter(sentence.Field(10), demanded) || !IsMeter(sentence.Field(12), demanded))
        return false;
    const std::optional<Decimal> h = ReadDecimal(height, kLowest, kHighest);
    const std::optional<Decimal> n = ReadDecimal(separation, -kMostSeparation, kMostSeparation);
    if ((!h && (demanded || !height.empty())) || (!n && (demanded || !separation.empty())))
        return false;
    if (h && demanded) {
        gga.height = h->value;
        gga.heightDecimals = h->decimals;
    }
    if (n && demanded) {
        gga.separation = n->value;
        gga.separationDecimals = n->decimals;
    }
    gga.separationText = separation;
    return true;
}

} // namespace

std::optional<Gga> ReadGga(const Sentence& sentence)
{
    if (sentence.Fields() != 14 || !IsTime(sentence.Field(1))) return std::nullopt;
    Gga gga;
    const std::optional<int> quality = ReadDigits(sentence.Field(6), 1, 1);
    if (!quality || !ReadPosition(sentence, 2, gga.position)) return std::nullopt;
    if (*quality != 0 && !gga.position) return std::nullopt;
    if (!ReadHeights(sentence, *quality != 0, gga)) return std::nullopt;

    const std::optional<int> satellites = ReadDigits(sentence.Field(7), 1, 2);
    if (!satellites && !(sentence.Field(7).empty() && *quality == 0)) return std::nullopt;
    if (!ReadOptional(sentence.Field(8), 0.0, kMostDop, gga.hdop)) return std::nullopt;
    if (!ReadOptional(sentence.Field(13), -kMostAge, kMostAge, gga.correctionAge))
        return std::nullopt;
    if (sentence.Field(14).size() > kLongestStation) return std::nullopt;

    gga.utc = sentence.Field(1);
    gga.quality = *quality;
    gga.satellites = satellites.value_or(0);
    gga.satelliteText = sentence.Field(7);
    gga.hdopText = sentence.Field(8);
    gga.ageText = sentence.Field(13);
    gga.station = sentence.Field(14);
    return gga;
}

std::optional<Rmc> ReadRmc(const Sentence& sentence)
{
    if (sentence.Fields() < 11 || sentence.Fields() > 13 || !IsTime(sentence.Field(1)))
        return std::nullopt;
    Rmc rmc;
    const std::string_view status = sentence.Field(2);
    if (!IsOneOf(status, "AV") || !ReadPosition(sentence, 3, rmc.position)) return std::nullopt;
    if (status == "A" && !rmc.position) return std::nullopt;
    if (!ReadOptional(sentence.Field(7), 0.0, kMostSpeed, rmc.speed)) return std::nullopt;
    if (!ReadOptional(sentence.Field(8), 0.0, 360.0, rmc.course)) return std::nullopt;
    if (!ReadShortDate(sentence.Field(9), rmc.date)) return std::nullopt;
    std::optional<double> variation;
    if (!ReadOptional(sentence.Field(10), 0.0, 180.0, variation)) return std::nullopt;
    const std::string_view east = sentence.Field(11);
    const std::string_view mode = sentence.Field(12);
    if (!east.empty() && !IsOneOf(east, "EW")) return std::nullopt;
    if (!mode.empty() && !IsOneOf(mode, "ADEFMNPRS")) return std::nullopt;
    if (rmc.speed) *rmc.speed *= kKnot;
    rmc.utc = sentence.Field(1);
    return rmc;
}

std::optional<Gst> ReadGst(const Sentence& sentence)
{
    if (sentence.Fields() != 8 || !IsTime(sentence.Field(1))) return std::nullopt;
    std::array<std::optional<double>, 7> values; // of the fields 2 to 8
    for (std::size_t i = 0; i < values.size(); ++i) {
        const double most = i == 3 ? 360.0 : std::numeric_limits<double>::max();
        if (!ReadOptional(sentence.Field(i + 2), 0.0, most, values[i])) return std::nullopt;
        if (values[i]) values[i] = std::min(*values[i], kMostSigma);
    }
    const auto& [rms, major, minor, orientation, latitude, longitude, height] = values;
    Gst gst;
    gst.utc = sentence.Field(1);
    gst.latitude = latitude.value_or(0.0);
    gst.longitude = longitude.value_or(0.0);
    gst.height = height.value_or(0.0);
    if (major && minor && orientation && *major >= *minor) {
        gst.major = major;
        gst.minor = minor;
        gst.orientation = orientation;
    }
    return gst;
}

std::optional<Zda> ReadZda(const Sentence& sentence)
{
    if (sentence.Fields() != 6 || !IsTime(sentence.Field(1))) return std::nullopt;
    Zda zda;
    zda.utc = sentence.Field(1);
    const std::string_view year = sentence.Field(4);
    if (sentence.Field(2).empty() && sentence.Field(3).empty() && year.empty()) return zda;
    const std::optional<int> century = ReadDigits(year, 4, 4);
    if (!century || *century < 2000) return std::nullopt;
    if (!ReadDate(century, ReadDigits(sentence.Field(3), 2, 2), ReadDigits(sentence.Field(2), 2, 2),
                  zda.date))
        return std::nullopt;
    return zda;
}

bool IsGsa(const Sentence& sentence)
{
    if (sentence.Fields() != 17 && sentence.Fields() != 18) return false;
    if (!IsOneOf(sentence.Field(1), "AM") || !IsOneOf(sentence.Field(2), "123")) return false;
    for (std::size_t i = 3; i <= 14; ++i)
        if (!sentence.Field(i).empty() && !ReadDigits(sentence.Field(i), 1, 3)) return false;
    std::optional<double> dop;
    for (std::size_t i = 15; i <= 17; ++i)
        if (!ReadOptional(sentence.Field(i), 0.0, kMostDop, dop)) return false;
    return sentence.Fields() == 17 || IsOneOf(sentence.Field(18), "0123456789ABCDEF");
}

} // namespace tiltpole::field
