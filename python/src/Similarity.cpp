// SPDX-License-Identifier: MIT
#include "geometry/MagneticConvert.h"
#include "python/src/Arrays.h"
#include "python/src/Bindings.h"

#include <cmath>
#include <memory>
#include <utility>

namespace tiltpole::python {

namespace {

constexpr const char* kSimilarityDoc =
    R"(A similarity of the plane:

x' = k (cos(t) x - sin(t) y) + dx
y' = k (sin(t) x + cos(t) y) + dy

scale     k, above 0
rotation  t [radians], from x towards y
dx, dy    [m])";

constexpr const char* kFitDoc =
    R"(Fits a similarity by least squares.

source, target  (n, 2): x (N) and y (E) of the same points in both systems [m], two or more

Returns a Similarity, which carries `residuals` (n, 2), fitted minus target [m]. It says nothing of
whether the pairs make sense: look at scale and residuals. Raises ValueError where a shape is
another one, numbers are not finite, or the source points coincide.)";

class Similarity
{
public:
    explicit Similarity(std::shared_ptr<const CMagneticConvert> convert)
        : m_convert(std::move(convert))
    {}
    Similarity(double scale, double rotation, double dx, double dy)
    {
        if (!(std::isfinite(scale) && scale > 0.0 && std::isfinite(rotation) && std::isfinite(dx)
              && std::isfinite(dy)))
            throw py::value_error("a similarity has a scale above 0 and finite numbers");
        const auto convert = std::make_shared<CMagneticConvert>();
        convert->SetFourParameter(dx, dy, rotation, scale, 0.0, 0.0);
        m_convert = convert;
    }

    Magnetic_FourParameter Parameters() const { return m_convert->GetFourParameter(); }

    Doubles Forward(const Doubles& points) const
    {
        return Each(points, [this](double& x, double& y) { m_convert->XYtoXY(x, y); });
    }
    Doubles Backward(const Doubles& points) const
    {
        return Each(points, [this](double& x, double& y) { m_convert->XYtoXY1(x, y); });
    }

    Doubles residuals = NewArray(0, 2);

private:
    template <class Convert>
    static Doubles Each(const Doubles& points, const Convert& convert)
    {
        const Rows from(points, 2, "points");
        Doubles result = NewArray(from.size(), 2);
        double* to = result.mutable_data();
        for (std::size_t i = 0; i < from.size(); ++i, to += 2) {
            to[0] = from[i][0];
            to[1] = from[i][1];
            convert(to[0], to[1]);
        }
        return result;
    }

    std::shared_ptr<const CMagneticConvert> m_convert; // copies of a transform share it
};

bool AreFinite(const Rows& rows)
{
    for (std::size_t i = 0; i < rows.size(); ++i)
        if (!std::isfinite(rows[i][0]) || !std::isfinite(rows[i][1])) return false;
    return true;
}

bool Coincide(const Rows& rows)
{
    for (std::size_t i = 1; i < rows.size(); ++i)
        if (rows[i][0] != rows[0][0] || rows[i][1] != rows[0][1]) return false;
    return true;
}

Similarity Fit(const Doubles& source, const Doubles& target)
{
    const Rows from(source, 2, "source");
    const Rows to(target, 2, "target");
    RequireSameLength(from.size(), to.size(), "source and target");
    if (!AreFinite(from) || !AreFinite(to)) throw py::value_error("coordinates must be finite");
    if (Coincide(from)) throw py::value_error("a fit needs two different source points");
    const auto convert = std::make_shared<CMagneticConvert>();
    for (std::size_t i = 0; i < from.size(); ++i) {
        FourParameterPoint pair;
        pair.xSource = from[i][0];
        pair.ySource = from[i][1];
        pair.xTarget = to[i][0];
        pair.yTarget = to[i][1];
        convert->m_Points.Add(pair);
    }
    convert->CalFourParameter();
    Similarity fit(convert);
    fit.residuals = fit.Forward(source);
    double* residual = fit.residuals.mutable_data();
    for (std::size_t i = 0; i < to.size(); ++i) {
        *residual++ -= to[i][0];
        *residual++ -= to[i][1];
    }
    return fit;
}

} // namespace

void AddSimilarity(py::module_& module)
{
    py::class_<Similarity>(module, "Similarity", kSimilarityDoc)
        .def(py::init<double, double, double, double>(), py::arg("scale") = 1.0,
             py::arg("rotation") = 0.0, py::arg("dx") = 0.0, py::arg("dy") = 0.0)
        .def_property_readonly(
            "scale", [](const Similarity& s) { return s.Parameters().dScale; }, "k, no unit.")
        .def_property_readonly(
            "rotation", [](const Similarity& s) { return s.Parameters().dRotate; },
            "t, from x towards y [radians].")
        .def_property_readonly(
            "dx", [](const Similarity& s) { return s.Parameters().dDx; }, "[m]")
        .def_property_readonly(
            "dy", [](const Similarity& s) { return s.Parameters().dDy; }, "[m]")
        .def_readonly("residuals", &Similarity::residuals,
                      "Of a fit, fitted minus target (n, 2) [m]; else empty.")
        .def("forward", &Similarity::Forward, py::arg("points"),
             "Source to target, (n, 2) to (n, 2) [m].")
        .def("backward", &Similarity::Backward, py::arg("points"),
             "Target to source, (n, 2) to (n, 2) [m].");
    module.def("fit_similarity", &Fit, py::arg("source"), py::arg("target"), kFitDoc);
}

} // namespace tiltpole::python
