#include "Convert.h"
#include "Points.h"
#include "Systems.h"

#include <coordsys/Calibration.h>
#include <coordsys/ProjectionParamsManager.h>

#include <pybind11/stl.h>

#include <cmath>

namespace nivora::python {
namespace {

using PointArray = py::array_t<double, py::array::c_style | py::array::forcecast>;

/// A fit and the calibration that it is of.
struct Fit
{
    cs::Calibration calibration;
    cs::CalibrationFit fit;
};

void checkPoints(const PointArray &array)
{
    if (array.ndim() != 2 || array.shape(1) != 2)
        throw py::value_error("control points must have the shape (n, 2)");
}

QVector<cs::CalibrationPair> pairsOf(const PointArray &local, const PointArray &known,
                                     const std::vector<std::string> &names,
                                     const std::vector<double> &weights)
{
    checkPoints(local);
    checkPoints(known);
    const auto count = static_cast<std::size_t>(local.shape(0));
    const auto fits = [count](std::size_t size) { return size == 0 || size == count; };
    if (known.shape(0) != local.shape(0) || !fits(names.size()) || !fits(weights.size()))
        throw py::value_error("local, known, names and weights must be of one length");
    QVector<cs::CalibrationPair> pairs;
    for (std::size_t i = 0; i < count; ++i) {
        const auto row = static_cast<py::ssize_t>(i);
        cs::CalibrationPair pair;
        pair.name = names.empty() ? QString::number(i + 1) : QString::fromStdString(names[i]);
        pair.local = QPointF(local.at(row, 0), local.at(row, 1));
        pair.known = QPointF(known.at(row, 0), known.at(row, 1));
        pair.weight = weights.empty() ? 1.0 : weights[i];
        pairs << pair;
    }
    return pairs;
}

/// The one that was named, else the one that the points justify.
cs::CalibrationModel modelOf(const cs::Calibration &calibration, const std::string &word)
{
    if (word.empty())
        return calibration.justifiedModel().value_or(cs::CalibrationModel::Shift);
    const auto model = cs::calibrationModel(QString::fromStdString(word));
    if (!model)
        throw py::value_error("model is one of shift, similarity, affine, tmerc, helmert, polynomial: " +
                              word);
    return *model;
}

Fit calibrate(const py::object &system, const PointArray &local, const PointArray &known,
              const std::string &model, const std::vector<std::string> &names,
              const std::vector<double> &weights, const std::string &unit, const py::object &projection)
{
    const System target = systemOf(system);
    cs::Calibration::Local own;
    if (!unit.empty())
        own.unit = cs::LinearUnit(
            *Session::factory()->projectionParamsManager()->unitByName(QString::fromStdString(unit)));
    if (!projection.is_none())
        own.system = systemOf(projection).system;
    const cs::Calibration calibration(target.system, pairsOf(local, known, names, weights), own);
    const cs::CalibrationModel kind = modelOf(calibration, model);
    return {calibration, aside([&] { return calibration.fit(kind); })};
}

py::list parameters(const Fit &self)
{
    py::list list;
    for (const cs::CalibrationParameter &p : self.fit.parameters())
        list.append(record("Parameter", textOf(p.name), textOf(p.unit), p.value, p.deviation));
    return list;
}

py::list residuals(const Fit &self)
{
    py::list list;
    const auto pairs = self.calibration.pairs();
    int i = 0;
    for (const cs::CalibrationResidual &r : self.fit.residuals())
        list.append(record("Residual", textOf(pairs.at(i++).name), r.offsetM.x(), r.offsetM.y(), r.lengthM,
                           r.probability, r.isSuspect));
    return list;
}

System madeSystem(const Fit &self, const std::string &name)
{
    Session::factory(); // the text is read by the active catalogues
    const cs::CoordSystemPtr made = aside([&] { return self.fit.system(); });
    const QString text = QString::fromStdString(name);
    return {text.isEmpty() ? made : made->withDescription(text), {}, text};
}

} // namespace

void defineCalibration(py::module_ &module)
{
    py::class_<Fit> type(module, "Fit", "What calibrate() found.");
    type.def_property_readonly(
            "model", [](const Fit &self) { return textOf(cs::calibrationWord(self.fit.model())); },
            "\"shift\", \"similarity\", \"affine\", \"tmerc\", \"helmert\" or \"polynomial\".")
        .def_property_readonly(
            "refusal", [](const Fit &self) { return textOf(self.fit.refusal()); },
            "Why the points do not determine the model; empty when they do.")
        .def_property_readonly("parameters", parameters, "list of Parameter(name, unit, value, deviation).")
        .def_property_readonly("residuals", residuals,
                               "list of Residual(name, east_m, north_m, length_m, probability, suspect).")
        .def_property_readonly(
            "rms_m", [](const Fit &self) { return self.fit.rmsM(); }, "Root of the mean square, metres.")
        .def_property_readonly(
            "sigma_m", [](const Fit &self) { return self.fit.sigmaM(); },
            "Standard deviation of one coordinate, metres; NaN without redundancy.")
        .def_property_readonly(
            "hints", [](const Fit &self) { return listOf(self.calibration.hints()); },
            "Sentences on wrong units, swapped axes, another zone. Usually empty.")
        .def_property_readonly(
            "coordsys", [](const Fit &self) { return textOf(self.fit.coordSysText()); },
            "CoordSys string of the system that was found. Error when there is none.")
        .def("system", madeSystem, py::arg("name") = "", "The system whose coordinates are the local ones.");
    module.def("calibrate", calibrate, py::arg("system"), py::arg("local"), py::arg("known"), py::kw_only(),
               py::arg("model") = "", py::arg("names") = std::vector<std::string>(),
               py::arg("weights") = std::vector<double>(), py::arg("unit") = "",
               py::arg("projection") = py::none(),
               R"(Finds the system in which points have the local coordinates, by least squares: a Fit.

system: of the known coordinates. local, known: arrays of shape (n, 2), x = longitude or easting first. model: by
default the simplest that the points justify. unit: of the local coordinates, metres by default. projection: of
the local coordinates, for model "helmert".)");
}

} // namespace nivora::python
