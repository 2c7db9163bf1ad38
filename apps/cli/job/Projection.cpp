// SPDX-License-Identifier: MIT
#include "apps/cli/job/Projection.h"

#include "apps/tables/Errors.h"
#include <cmath>
#include <fmt/format.h>
#include <proj.h>
#include <string_view>
#include <utility>

namespace cli {

namespace {

struct EndContext
{
    void operator()(PJ_CONTEXT* context) const { proj_context_destroy(context); }
};

struct EndObject
{
    void operator()(PJ* object) const { proj_destroy(object); }
};

using Context = std::unique_ptr<PJ_CONTEXT, EndContext>;
using Object = std::unique_ptr<PJ, EndObject>;

} // namespace

struct Projection::State
{
    std::string name;
    Context context; // outlives the objects
    Object system;
    Object transformation;

    tables::InputError Error(const std::string& reason) const { return {name, reason}; }
};

namespace {

// Two axes, one to the north and one to the east, both in meters. At a pole none points north.
std::string ProblemOfAxes(PJ_CONTEXT* context, const PJ* system)
{
    const Object axes(proj_crs_get_coordinate_system(context, system));
    if (proj_cs_get_axis_count(context, axes.get()) != 2) // -1 where there are none
        return "has not two axes; choose a system of the plane";
    bool north = false;
    bool east = false;
    for (int i = 0; i < 2; ++i) {
        const char* direction = nullptr;
        const char* unit = nullptr;
        double meters = 0.0;
        if (proj_cs_get_axis_info(context, axes.get(), i, nullptr, nullptr, &direction, &meters,
                                  &unit, nullptr, nullptr)
            != 1)
            return "has axes that are not known";
        if (meters != 1.0)
            return fmt::format("is in the unit {}, not in meters; see docs/job.md for ogr2ogr",
                               unit);
        north = north || std::string_view(direction) == "north";
        east = east || std::string_view(direction) == "east";
    }
    return north && east ? ""
                         : "has axes that do not point north and east; see docs/job.md for ogr2ogr";
}

} // namespace

Projection::Projection(const std::string& name) : m_state(std::make_unique<State>())
{
    State& state = *m_state;
    state.name = name;
    state.context.reset(proj_context_create());
    proj_log_level(state.context.get(), PJ_LOG_NONE);
    proj_context_set_enable_network(state.context.get(), 0); // the same result everywhere
    state.system.reset(proj_create(state.context.get(), name.c_str()));
    if (!state.system || proj_is_crs(state.system.get()) == 0)
        throw state.Error("is not a coordinate reference system that PROJ knows");
    if (proj_get_type(state.system.get()) != PJ_TYPE_PROJECTED_CRS)
        throw state.Error("is not a projected system; without --crs the format csv has latitude "
                          "and longitude");
    const std::string problem = ProblemOfAxes(state.context.get(), state.system.get());
    if (!problem.empty()) throw state.Error(problem);

    const Object geodetic(proj_create(state.context.get(), "EPSG:4979"));
    const Object direct(proj_create_crs_to_crs_from_pj(state.context.get(), geodetic.get(),
                                                       state.system.get(), nullptr, nullptr));
    // Longitude before latitude, easting before northing, whatever order a system states.
    if (direct)
        state.transformation.reset(
            proj_normalize_for_visualization(state.context.get(), direct.get()));
    if (!state.transformation) throw state.Error("cannot be reached from WGS 84");
}

Projection::~Projection() = default;

PlanePoint Projection::Place(const field::Geodetic& point, const std::string& pointName)
{
    PJ* const transformation = m_state->transformation.get();
    proj_errno_reset(transformation);
    const PJ_COORD from =
        proj_coord(point.longitude, point.latitude, point.ellipsoidalHeight, HUGE_VAL);
    const PJ_COORD to = proj_trans(transformation, PJ_FWD, from);
    if (proj_errno(transformation) != 0 || !std::isfinite(to.xy.x) || !std::isfinite(to.xy.y))
        throw m_state->Error("has no place for point " + pointName);
    return {to.xy.y, to.xy.x};
}

std::string Projection::Title() const
{
    return proj_get_name(m_state->system.get());
}

std::string Projection::Operation() const
{
    PJ_CONTEXT* const context = m_state->context.get();
    const Object last(proj_trans_get_last_used_operation(m_state->transformation.get()));
    const PJ* const used = last ? last.get() : m_state->transformation.get();
    const PJ_PROJ_INFO info = proj_pj_info(const_cast<PJ*>(used));
    const char* const name = proj_get_name(used);
    const double accuracy = proj_coordoperation_get_accuracy(context, used);
    std::string text = name != nullptr && *name != '\0' ? name : info.description;
    return text
           + (accuracy < 0.0 ? std::string(", accuracy not known")
                             : fmt::format(", accuracy {:g} m", accuracy));
}

bool Projection::IsMeantFor(const field::Geodetic& point) const
{
    double west = 0.0;
    double south = 0.0;
    double east = 0.0;
    double north = 0.0;
    if (proj_get_area_of_use(m_state->context.get(), m_state->system.get(), &west, &south, &east,
                             &north, nullptr)
            == 0
        || west < -180.0)
        return true;
    const bool inside = west <= east ? west <= point.longitude && point.longitude <= east
                                     : west <= point.longitude || point.longitude <= east;
    return inside && south <= point.latitude && point.latitude <= north;
}

} // namespace cli
