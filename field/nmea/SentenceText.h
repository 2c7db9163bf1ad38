// SPDX-License-Identifier: MIT
//
// A sentence as it is written, field by field:
//
//     SentenceText("PTLTS,1").Text("130758.00").Number(12.34, 2).Framed(); // "$PTLTS,1,130758.00,12.34*hh"
#pragma once

#include <optional>
#include <string>
#include <string_view>

namespace tiltpole::field {

class SentenceText
{
public:
    /// @param address  with fields or without
    explicit SentenceText(std::string_view address) : m_text(address) {}

    SentenceText& Text(std::string_view field);
    /// Empty where the value is not finite.
    SentenceText& Number(double value, int decimals);
    SentenceText& Number(std::optional<double> value, int decimals);

    /// With '$', checksum, CR LF.
    std::string Framed() const;

private:
    std::string m_text;
};

/// "4733.9634022,N,01900.5015958,E"; minutes that round to 60 carry over.
/// @return ",,," for a value that is not finite or out of range
std::string PositionText(double latitude, double longitude);

} // namespace tiltpole::field
