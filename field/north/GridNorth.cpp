// SPDX-License-Identifier: MIT
#include "field/north/GridNorth.h"

#include "survey/Angle.h"

#include <proj.h>

#include <cmath>
#include <limits>
#include <new>
#include <string_view>
#include <utility>

namespace field {

namespace survey = tiltpole::survey;

namespace {

constexpr double kNaN = std::numeric_limits<double>::quiet_NaN();

struct Destroy
{
    void operator()(PJ_CONTEXT* context) const { proj_context_destroy(context); }
    void operator()(PJ* object) const { proj_destroy(object); }
};
using Context = std::unique_ptr<PJ_CONTEXT, Destroy>;
using Object = std::unique_ptr<PJ, Destroy>;

// What a coordinate adds to the northing and to the easting.
struct Axis
{
    double north = 0.0;
    double east = 0.0;
};

Axis AxisOf(std::string_view direction)
{
    if (direction == "north") return {1.0, 0.0};
    if (direction == "south") return {-1.0, 0.0};
    if (direction == "east") return {0.0, 1.0};
    if (direction == "west") return {0.0, -1.0};
    return {};
}

Axis AxisAt(PJ_CONTEXT* context, const PJ* system, int index)
{
    const char* direction = nullptr;
    const bool known = proj_cs_get_axis_info(context, system, index, nullptr, nullptr, &direction,
                                             nullptr, nullptr, nullptr, nullptr)
                       != 0;
    return known && direction != nullptr ? AxisOf(direction) : Axis{};
}

} // namespace

struct GridNorth::Projection
{
    Context context;
    Object way; // from latitude and longitude to the system's own coordinates
    Axis first;
    Axis second;

    // The two axes are one along the meridian and one across it.
    bool IsGrid() const
    {
        return std::fabs(first.north) + std::fabs(second.north) == 1.0
               && std::fabs(first.east) + std::fabs(second.east) == 1.0;
    }
};

std::optional<GridNorth> GridNorth::Of(const std::string& name)
{
    auto made = std::make_unique<Projection>();
    made->context.reset(proj_context_create());
    PJ_CONTEXT* const context = made->context.get();
    if (context == nullptr) throw std::bad_alloc(); // PROJ would take one that all threads share
    proj_log_level(context, PJ_LOG_NONE);
    const Object system(proj_create(context, name.c_str()));
    if (!system || proj_get_type(system.get()) != PJ_TYPE_PROJECTED_CRS) return std::nullopt;
    const Object axes(proj_crs_get_coordinate_system(context, system.get()));
    if (!axes) return std::nullopt;
    made->first = AxisAt(context, axes.get(), 0);
    made->second = AxisAt(context, axes.get(), 1);
    made->way.reset(proj_create_crs_to_crs(context, "EPSG:4326", name.c_str(), nullptr));
    if (!made->way || !made->IsGrid()) return std::nullopt;
    return GridNorth(std::move(made));
}

GridNorth::GridNorth(std::unique_ptr<Projection> projection) : m_projection(std::move(projection))
{}

GridNorth::GridNorth(GridNorth&&) noexcept = default;
GridNorth& GridNorth::operator=(GridNorth&&) noexcept = default;
GridNorth::~GridNorth() = default;

double GridNorth::Convergence(double latitude, double longitude) const
{
    constexpr double kStep = 1e-4;    // to each side [degrees]
    constexpr double kLargest = 89.9; // latitude [degrees]
    if (!(std::fabs(latitude) <= kLargest) || !std::isfinite(longitude)) return kNaN;
    const Axis& first = m_projection->first;
    const Axis& second = m_projection->second;
    const auto coordinatesAt = [&](double lat) {
        return proj_trans(m_projection->way.get(), PJ_FWD, proj_coord(lat, longitude, 0.0, 0.0)).xy;
    };
    const PJ_XY from = coordinatesAt(latitude - kStep);
    const PJ_XY to = coordinatesAt(latitude + kStep);
    const double x = to.x - from.x;
    const double y = to.y - from.y;
    const double north = first.north * x + second.north * y;
    const double east = first.east * x + second.east * y;
    if (!std::isfinite(north + east)) return kNaN; // PROJ's mark of no coordinates is infinite
    return -survey::Rad2Deg(std::atan2(east, north));
}

} // namespace field
