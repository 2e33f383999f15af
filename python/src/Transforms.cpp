#include "Convert.h"
#include "Points.h"
#include "Systems.h"

#include <coordsys/GridOffer.h>

#include <pybind11/stl.h>

#include <QObject>

#include <array>
#include <limits>

namespace nivora::python {
namespace {

/// A transformation with engines of its own.
class Transform
{
public:
    Transform(System source, System target, cs::OperationChoice choice, std::optional<double> epoch)
        : m_source(std::move(source))
        , m_target(std::move(target))
        , m_choice(std::move(choice))
        , m_epoch(epoch)
        , m_plain(aside([this] { return made(); }))
        , m_bulk(m_plain)
    {}

    const System &source() const { return m_source; }
    const System &target() const { return m_target; }
    const cs::OperationChoice &choice() const { return m_choice; }
    std::optional<double> epoch() const { return m_epoch; }
    const cs::CoordTransform &plain() const { return m_plain; }

    /// Under the interpreter's lock. In a forked child the engines are made anew.
    const cs::BulkTransform &bulk()
    {
        if (m_generation != Session::generation()) {
            m_bulk = cs::BulkTransform(m_plain);
            m_generation = Session::generation();
        }
        return m_bulk;
    }

private:
    cs::CoordTransform made() const
    {
        if (m_choice.isDefault())
            return {m_source.system, m_target.system, m_epoch};
        return {m_source.system, m_target.system, m_choice, m_epoch};
    }

    System m_source;
    System m_target;
    cs::OperationChoice m_choice;
    std::optional<double> m_epoch;
    cs::CoordTransform m_plain;
    cs::BulkTransform m_bulk;
    unsigned m_generation = Session::generation();
};

cs::OperationChoice chosen(const std::string &operation, const std::optional<std::array<double, 4>> &area,
                           bool ballpark, std::optional<double> mostErrorM)
{
    cs::OperationChoice choice;
    if (!operation.empty())
        choice = choice.withOperation(QString::fromStdString(operation));
    if (area) {
        const auto &[west, south, east, north] = *area;
        choice = choice.withArea(QRectF(west, south, east - west, north - south));
    }
    if (!ballpark)
        choice = choice.withoutBallpark();
    return mostErrorM ? choice.withMostError(*mostErrorM) : choice;
}

constexpr double notANumber = std::numeric_limits<double>::quiet_NaN();

template <bool forward> py::tuple convertOne(Transform &self, double x, double y)
{
    QPointF out(notANumber, notANumber);
    const cs::BulkTransform &bulk = self.bulk();
    if constexpr (forward)
        bulk.forward(QPointF(x, y), out, self.epoch());
    else
        bulk.inverse(QPointF(x, y), out, self.epoch());
    return py::make_tuple(out.x(), out.y());
}

template <bool forward>
py::object convertAny(Transform &self, const py::object &x, const py::object &y, const py::object &out,
                      const std::string &errors, int threads)
{
    const ListWishes wishes{raisesOn(errors), threads, self.epoch()};
    if (y.is_none())
        return convertPoints(self.bulk(), forward, x, out, wishes);
    if (!out.is_none())
        throw py::value_error("out goes with points of shape (n, 2), not with x and y");
    return convertPair(self.bulk(), forward, x, y, wishes);
}

/// The scalar form stands first: it takes floats alone and costs a third of the other.
template <bool forward> void defineWay(py::class_<Transform> &type, const char *name, const char *doc)
{
    type.def(name, convertOne<forward>, py::arg("x").noconvert(), py::arg("y").noconvert(),
             "Two floats give two floats, NaN outside of the domain.");
    type.def(name, convertAny<forward>, py::arg("x"), py::arg("y") = py::none(), py::kw_only(),
             py::arg("out") = py::none(), py::arg("errors") = "nan", py::arg("threads") = 0, doc);
}

py::object accuracy(double metres) { return metres < 0.0 ? py::object(py::none()) : py::float_(metres); }

py::object recordOf(const cs::TransformOperation &operation)
{
    py::list grids;
    for (const cs::TransformGrid &grid : operation.grids)
        grids.append(
            record("Grid", textOf(grid.name), textOf(grid.path), textOf(grid.url), grid.isAvailable));
    return record("Operation", textOf(operation.shortName), accuracy(operation.accuracyM),
                  listOf(operation.codes), textOf(operation.areaName), operation.isBallpark, grids,
                  textOf(operation.definition));
}

py::list operationsOf(const Transform &self)
{
    py::list list;
    for (const cs::TransformOperation &operation : aside([&] { return self.plain().operations(); }))
        list.append(recordOf(operation));
    return list;
}

py::object operationAt(const Transform &self, double x, double y)
{
    const auto used = aside([&] { return self.plain().operationAt(QPointF(x, y)); });
    return used ? recordOf(*used) : py::none();
}

/// What the first operation is worth.
py::object accuracyOf(const Transform &self)
{
    if (self.plain().isEqualsCS())
        return py::float_(0.0);
    const auto operations = aside([&] { return self.plain().operations(); });
    const auto worth = operations.isEmpty() ? std::nullopt : operations.first().worthM();
    return worth ? py::object(py::float_(*worth)) : py::none();
}

py::list missingGrids(const Transform &self)
{
    py::list list;
    for (const cs::GridOffer &offer : aside([&] { return self.plain().gridOffers(); }))
        for (const cs::TransformGrid &grid : offer.missing())
            list.append(record("Grid", textOf(grid.name), textOf(grid.path), textOf(grid.url), false));
    return list;
}

py::object rectangle(const Transform &self, const std::array<double, 4> &rect, int mesh)
{
    const QRectF in(QPointF(rect[0], rect[1]), QPointF(rect[2], rect[3]));
    const auto out = aside([&] {
        QRectF image;
        return self.plain().forwardMesh(in, image, mesh) ? std::make_optional(image) : std::nullopt;
    });
    if (!out)
        return py::none();
    return py::make_tuple(out->left(), out->top(), out->right(), out->bottom());
}

py::object geographicBounds(const Transform &self, const std::array<double, 4> &rect)
{
    const QRectF in(QPointF(rect[0], rect[1]), QPointF(rect[2], rect[3]));
    const auto out = aside([&] {
        cs::GeographicBounds bounds;
        return self.plain().geographicBounds(in, bounds) ? std::make_optional(bounds) : std::nullopt;
    });
    if (!out)
        return py::none();
    return record("GeographicBounds", out->west, out->south, out->east, out->north, out->hasNorthPole,
                  out->hasSouthPole);
}

py::tuple travelState(const Transform &self)
{
    return py::make_tuple(self.source(), self.target(), textOf(self.choice().toText()), self.epoch());
}

Transform restored(const py::tuple &state)
{
    return {state[0].cast<System>(), state[1].cast<System>(),
            cs::OperationChoice::fromText(QString::fromStdString(state[2].cast<std::string>())),
            state[3].cast<std::optional<double>>()};
}

void defineFacts(py::class_<Transform> &type)
{
    type.def_property_readonly(
            "source", [](const Transform &self) { return self.source(); }, "What forward() reads.")
        .def_property_readonly(
            "target", [](const Transform &self) { return self.target(); }, "What forward() writes.")
        .def_property_readonly(
            "epoch", [](const Transform &self) { return self.epoch(); },
            "When the coordinates were measured, in decimal years, or None.")
        .def_property_readonly(
            "copies", [](const Transform &self) { return self.plain().isEqualsCS(); },
            "True when the systems are equal, so that nothing is transformed.")
        .def_property_readonly("operations", operationsOf,
                               "list of Operation(name, accuracy, codes, area, ballpark, grids, definition) "
                               "that work here, the\n"
                               "best first; accuracy in metres, None when unknown. Empty for equal systems.")
        .def_property_readonly("accuracy", accuracyOf,
                               "Metres that a position is worth after the best operation; None when unknown.")
        .def_property_readonly("missing_grids", missingGrids,
                               "list of Grid(name, path, url, available) that would make it better.")
        .def("operation_at", operationAt, py::arg("x"), py::arg("y"),
             "The operation that a point of the source goes by; None when it fails.");
}

} // namespace

void defineTransforms(py::module_ &module)
{
    py::class_<Transform> type(module, "Transform", R"(Converts coordinates from one system into another.

Transform("EPSG:4326", "EPSG:32637"); both may be CoordSystem objects or texts for one. x = longitude or easting
first, always; geographic systems have degrees. By default PROJ chooses the operation by place; operation (a code,
a name, PROJ text), area (west, south, east, north in degrees), ballpark=False and max_error (metres) narrow the
choice. epoch is in decimal years. Threads may share one; a forked child makes engines of its own; it pickles.)");
    type.def(py::init([](const py::object &source, const py::object &target, const std::string &operation,
                         const std::optional<std::array<double, 4>> &area, bool ballpark,
                         std::optional<double> mostErrorM, std::optional<double> epoch) {
                 return Transform(systemOf(source), systemOf(target),
                                  chosen(operation, area, ballpark, mostErrorM), epoch);
             }),
             py::arg("source"), py::arg("target"), py::kw_only(), py::arg("operation") = "",
             py::arg("area") = py::none(), py::arg("ballpark") = true, py::arg("max_error") = py::none(),
             py::arg("epoch") = py::none());
    const char *forward = R"(Source to target.

forward(points): array of shape (..., 2) to one of the same shape; contiguous float64 is read where it stands, other
types and strides are copied once. out: where the result goes, which may be points itself.
forward(x, y): two floats to two floats, or two arrays that broadcast to two arrays.
A point outside of the domain is NaN in both coordinates and fails alone; with errors="raise" an Error with code
"point-failed" tells their places in .failed. threads: 0 for all cores. Other Python threads run meanwhile.)";
    defineWay<true>(type, "forward", forward);
    defineWay<true>(type, "__call__", "The same as forward().");
    defineWay<false>(type, "inverse", "Target to source; see forward().");
    defineFacts(type);
    type.def("rectangle", rectangle, py::arg("rect"), py::arg("mesh") = 100,
             "(xmin, ymin, xmax, ymax) around the image of such a rectangle of the source, bulging edges\n"
             "included: mesh intervals along the width. None when nothing of it can be transformed.")
        .def("geographic_bounds", geographicBounds, py::arg("rect"),
             "GeographicBounds(west, south, east, north, north_pole, south_pole) of a rectangle of the "
             "plane:\n"
             "west exceeds east when it crosses the 180th meridian.")
        .def("__repr__",
             [](const Transform &self) {
                 return py::str("Transform({!r}, {!r})").format(self.source(), self.target());
             })
        .def(py::pickle([](const Transform &self) { return travelState(self); },
                        [](const py::tuple &state) { return restored(state); }));
}

} // namespace nivora::python
