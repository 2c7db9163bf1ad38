// SPDX-License-Identifier: MIT
//
// From latitude and longitude to the northing and easting of a projected system, by PROJ.
#pragma once

#include "field/Epoch.h"
#include <memory>
#include <optional>
#include <string>

namespace cli {

struct PlanePoint
{
    double north, east; // [m]
};

class Projection
{
public:
    /// @param name  of the system, such as "EPSG:32634"
    /// @throws InputError for a name that PROJ does not know, and for systems that are not
    ///         projected, whose axes do not point north and east, or whose unit is not the meter
    explicit Projection(const std::string& name);
    ~Projection();
    Projection(const Projection&) = delete;
    Projection& operator=(const Projection&) = delete;

    /// @throws InputError naming the point, where the projection has no place for it
    PlanePoint Place(const field::Geodetic& point, const std::string& pointName);

    /// "WGS 84 / UTM zone 34N".
    std::string Title() const;

    /// What the last point went through, with its accuracy as PROJ states it.
    std::string Operation() const;

    /// Whether the system is meant to be used there; true where its area is not known.
    bool IsMeantFor(const field::Geodetic& point) const;

private:
    struct State;
    std::unique_ptr<State> m_state;
};

} // namespace cli
