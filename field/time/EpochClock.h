// SPDX-License-Identifier: MIT
//
// UTC of a receiver's epochs as seconds that never wrap.
//
//   clock.Advance("235959.80", {});   // Step::First, 0 s
//   clock.Advance("000000.00", {});   // Step::Next, 0.2 s: midnight adds a day
//   clock.Advance("000000.00", {});   // Step::Repeated
//   clock.Advance("000020.00", {});   // Step::Jump: the clock map begins anew
//
//   midnight     a step below −12 h adds a day
//   leap second  235960 is the second after 235959, and 000000 the one after it
#pragma once

#include <chrono>
#include <optional>
#include <string_view>

namespace tiltpole::field {

class EpochClock
{
public:
    enum class Step {
        First,    ///< of all, or after Restart
        Next,     ///< later by at most 1.5 periods + 1 s
        Repeated, ///< the time of the last epoch: to be dropped
        Jump,     ///< back, or further ahead: the clock map restarts, and 2 s of waiting follow
        NoTime,   ///< the text is no time of day; nothing changed
    };
    struct Result
    {
        Step step = Step::NoTime;
        double seconds = 0.0; ///< since midnight before the first epoch, leap seconds counted [s]
        double change = 0.0;  ///< against the last epoch [s]
    };

    /// @param utc   hhmmss with any number of decimals; 60 only in 235960
    /// @param date  of this epoch, where it is known
    Result Advance(std::string_view utc, std::optional<std::chrono::sys_days> date);

    /// Usual distance of epochs [s], 0 before the second one: the first step forward, later what
    /// two steps in a row agree on.
    double Period() const { return m_period; }

    /// UTC of the last epoch as a year with decimals (field/North.h); none while no date came.
    std::optional<double> DecimalYear() const;

    /// UTC of the last epoch [s since 1970]; none while no date came.
    std::optional<double> UnixSeconds() const;

    /// Forgets the last epoch and the period; keeps the date.
    void Restart();

private:
    void Turn(int days);
    void Learn(double step);

    std::optional<std::chrono::sys_days> m_date; // of the last epoch
    std::optional<double> m_last;                // time of day of the last epoch [s], up to 86401
    double m_base = 0.0;                         // seconds at the last epoch's midnight
    double m_period = 0.0;
    double m_step = 0.0; // last step forward [s]
};

/// Time of day of hhmmss.ss [s], 86400 and more within the leap second 235960; none where `utc` is
/// not of that form.
std::optional<double> SecondsOfDay(std::string_view utc);

} // namespace tiltpole::field
