#include "Systems.h"

#include "Convert.h"

#include <pybind11/stl.h>

#include <coordsys/ProjectionParamsManager.h>
#include <coordsys/SystemInfo.h>

#include <array>
#include <map>
#include <string>
#include <tuple>
#include <vector>

namespace nivora::python {
namespace {

using cs::CoordSystem;

System fromText(const std::string &text)
{
    const auto &factory = Session::factory();
    return aside([&] {
        const cs::UserInput input = factory->readUserInput(QString::fromStdString(text));
        return System{input.system, input.notes, QString()};
    });
}

/// Throws Python's own error for what has no UTF-8.
std::string utf8Of(const py::handle &text)
{
    Py_ssize_t size = 0;
    const char *const bytes = PyUnicode_AsUTF8AndSize(text.ptr(), &size);
    if (!bytes)
        throw py::error_already_set();
    return {bytes, static_cast<std::size_t>(size)};
}

cs::SystemFormat formatOf(const std::string &name)
{
    static const std::map<std::string, cs::SystemFormat> formats{
        {"wkt", cs::SystemFormat::Wkt2},          {"wkt2", cs::SystemFormat::Wkt2},
        {"wkt1", cs::SystemFormat::Wkt1},         {"esri", cs::SystemFormat::Esri},
        {"projjson", cs::SystemFormat::ProjJson}, {"proj", cs::SystemFormat::Proj},
        {"coordsys", cs::SystemFormat::Mapinfo},
    };
    const auto found = formats.find(name);
    if (found == formats.end())
        throw py::value_error("notation is one of wkt, wkt2, wkt1, esri, projjson, proj, coordsys: " + name);
    return found->second;
}

py::str textIn(const System &self, const std::string &notation)
{
    const cs::SystemFormat format = formatOf(notation);
    return textOf(aside([&] { return cs::exportSystem(*self.system, format); }));
}

py::object unitOf(const System &self)
{
    const cs::LinearUnit unit = aside([&] { return self.system->unit(); });
    return record("Unit", textOf(unit.name()), unit.isDegree() ? 0.0 : unit.conversion(), unit.unitCode());
}

py::object areaOf(const System &self)
{
    const cs::SystemInfo info = aside([&] { return cs::systemInfo(*self.system); });
    if (info.area.isNull())
        return py::none();
    return record("Area", info.area.left(), info.area.top(), info.area.right(), info.area.bottom(),
                  textOf(info.areaName));
}

py::tuple boundsOf(const System &self)
{
    const QRectF rect = aside([&] { return self.system->rectNumericCoordSys(); });
    return py::make_tuple(rect.left(), rect.top(), rect.right(), rect.bottom());
}

py::dict infoOf(const System &self)
{
    const cs::SystemInfo info = aside([&] { return cs::systemInfo(*self.system); });
    py::dict facts;
    facts["kind"] = textOf(cs::kindText(info.kind));
    facts["identifier"] = textOf(info.identifier);
    facts["deprecated"] = info.isDeprecated;
    facts["datum"] = textOf(info.datum);
    facts["ellipsoid"] = textOf(info.ellipsoid);
    facts["semi_major_m"] = info.semiMajorM;
    facts["inverse_flattening"] = info.inverseFlattening;
    facts["prime_meridian"] = textOf(info.primeMeridian);
    facts["prime_meridian_deg"] = info.primeMeridianDeg;
    facts["method"] = textOf(info.method);
    return facts;
}

/// By its registered identity where both have one: an entry of the catalogue and the database's system of its
/// code are written differently.
bool isSame(const CoordSystem &a, const CoordSystem &b, bool withBounds)
{
    if (a.isEqual(b, !withBounds))
        return true;
    return !withBounds && a.epsg() == b.epsg() && a.epsg() != CoordSystem::EPSG_UNDEFINDED;
}

System withName(const System &self, const std::string &name)
{
    const QString text = QString::fromStdString(name);
    return {self.system->withDescription(text), self.notes, text};
}

System withBounds(const System &self, double left, double bottom, double right, double top)
{
    return {self.system->withBounds(QRectF(left, bottom, right - left, top - bottom)), self.notes, self.name};
}

cs::LinearUnit unitNamed(const std::string &name)
{
    if (name.empty())
        return {};
    return cs::LinearUnit(
        *Session::factory()->projectionParamsManager()->unitByName(QString::fromStdString(name)));
}

System withAffine(const System &self, const std::array<double, 6> &c, const std::string &unit)
{
    const QTransform matrix(c[0], c[3], c[1], c[4], c[2], c[5]); // given by columns
    return {self.system->withAffine(matrix, unitNamed(unit)), self.notes, self.name};
}

py::object affineOf(const System &self)
{
    const QTransform *m = self.system->affineTransform();
    if (!m)
        return py::none();
    return py::make_tuple(m->m11(), m->m21(), m->dx(), m->m12(), m->m22(), m->dy());
}

QString tagOf(CoordSystem::SourceType type)
{
    switch (type) {
    case CoordSystem::Proj4:
        return QStringLiteral("proj4:");
    case CoordSystem::Epsg:
        return QStringLiteral("epsg:");
    case CoordSystem::Wkt:
        return QStringLiteral("wkt:");
    default:
        return {};
    }
}

/// The text that it was made from with its tag; of CoordSys and Oracle systems the CoordSys string, clauses
/// included.
QString travelText(const System &self)
{
    const CoordSystem::SourceData source = self.system->sourceParameters();
    const QString tag = tagOf(source.type);
    return tag.isEmpty() ? self.system->taggedString() : tag + source.string;
}

/// What stands in a CoordSys string is not repeated.
py::tuple travelState(const System &self)
{
    const QString text = travelText(self);
    const bool hasClauses = text.startsWith(QLatin1String("prj:"));
    const bool isNamed = !self.name.isEmpty() || hasClauses;
    const py::object affine = hasClauses ? py::none() : affineOf(self);
    const bool hasBounds = !hasClauses && self.system->isRectSet();
    return py::make_tuple(textOf(text), isNamed ? textOf(self.system->description()) : py::str(),
                          listOf(self.notes), hasBounds ? py::object(boundsOf(self)) : py::none(), affine,
                          affine.is_none() ? py::str() : textOf(self.system->affineUnit().name()));
}

System restored(const py::tuple &state)
{
    const QString text = QString::fromStdString(state[0].cast<std::string>());
    const auto &factory = Session::factory();
    System made{aside([&] { return factory->createFromTaggedString(text); }), {}, {}};
    for (const auto &note : state[2].cast<py::list>())
        made.notes << QString::fromStdString(note.cast<std::string>());
    if (!state[4].is_none())
        made = withAffine(made, state[4].cast<std::array<double, 6>>(), state[5].cast<std::string>());
    if (!state[3].is_none()) {
        const auto b = state[3].cast<std::array<double, 4>>();
        made = withBounds(made, b[0], b[1], b[2], b[3]);
    }
    const auto name = QString::fromStdString(state[1].cast<std::string>());
    if (!name.isEmpty() && made.system->description() != name)
        made.system = made.system->withDescription(name);
    made.name = name;
    return made;
}

py::str shown(const System &self)
{
    return py::str("CoordSystem({!r}, name={!r})")
        .format(textOf(travelText(self)), textOf(self.system->description()));
}

void defineProperties(py::class_<System> &type)
{
    type.def_property_readonly(
            "name",
            [](const System &self) { return textOf(aside([&] { return self.system->description(); })); },
            "The name for people.")
        .def_property_readonly(
            "code", [](const System &self) { return codeOrNone(aside([&] { return self.system->epsg(); })); },
            "EPSG code, None when the system is none of EPSG's. Searched for on first call, up to 0.2 s.")
        .def_property_readonly(
            "base_code",
            [](const System &self) { return codeOrNone(aside([&] { return self.system->baseCode(); })); },
            "EPSG code of the system that an affine transformation moves; None without one.")
        .def_property_readonly("unit", unitOf,
                               "Unit(name, metres, code) of the coordinates; metres is 0 for degrees.")
        .def_property_readonly(
            "area", areaOf,
            "Area of use, Area(west, south, east, north, name) in degrees; east exceeds 180 when it crosses\n"
            "the 180th meridian. None when unknown.")
        .def_property_readonly("bounds", boundsOf,
                               "(xmin, ymin, xmax, ymax) in the system's unit, degrees for a geographic one.")
        .def_property_readonly("affine", affineOf,
                               "(A, B, C, D, E, F) with x' = Ax + By + C, y' = Dx + Ey + F, or None.")
        .def_property_readonly("info", infoOf, "dict of datum, ellipsoid, projection method and the like.")
        .def_property_readonly(
            "is_geographic", [](const System &self) { return self.system->isLatLong(); },
            "Longitude and latitude in degrees.")
        .def_property_readonly(
            "assumptions", [](const System &self) { return listOf(self.system->assumptions()); },
            "Sentences on what the text leaves open and the library took on.")
        .def_property_readonly(
            "notes", [](const System &self) { return listOf(self.notes); },
            "Sentences on how the text was read: assumptions, and what was left aside.");
}

void defineTexts(py::class_<System> &type)
{
    type.def(
        "text", textIn, py::arg("notation"),
        "The system in a notation: \"wkt2\" (also \"wkt\"), \"wkt1\", \"esri\", \"projjson\", \"proj\",\n"
        "\"coordsys\". Error with code \"not-writable\" when the notation has no form for it.");
    type.def(
        "to_wkt",
        [](const System &self, const py::args &, const py::kwargs &) { return textIn(self, "wkt2"); },
        "WKT 2 of 2019: pyproj.CRS(system), and so GeoPandas, take it from here.");
    for (const auto &[name, notation, what] :
         std::vector<std::tuple<const char *, const char *, const char *>>{
             {"wkt", "wkt2", "WKT 2 of 2019."},
             {"wkt1", "wkt1", "OGC WKT 1 as GDAL writes it."},
             {"projjson", "projjson", "PROJJSON."},
             {"proj", "proj", "PROJ text."},
             {"coordsys", "coordsys", "MapInfo's CoordSys string, clauses included."}}) {
        const std::string wanted = notation;
        type.def_property_readonly(
            name, [wanted](const System &self) { return textIn(self, wanted); }, what);
    }
}

void defineCopies(py::class_<System> &type)
{
    type.def("with_name", withName, py::arg("name"), "The same system under another name.")
        .def("with_bounds", withBounds, py::arg("xmin"), py::arg("ymin"), py::arg("xmax"), py::arg("ymax"),
             "The same system with explicit bounds in its own unit.")
        .def("with_affine", withAffine, py::arg("coefficients"), py::arg("unit") = "",
             "The system moved by (A, B, C, D, E, F): x' = Ax + By + C, y' = Dx + Ey + F. unit is a name of\n"
             "MapInfo's (\"m\", \"ft\"), the system's own by default.")
        .def(
            "same_as",
            [](const System &self, const py::object &other, bool bounds) {
                const System second = systemOf(other);
                return aside([&] { return isSame(*self.system, *second.system, bounds); });
            },
            py::arg("other"), py::kw_only(), py::arg("bounds") = false,
            "True when both mean the same plane on the same datum, whatever notation they came from. ==\n"
            "compares the texts.");
}

} // namespace

System systemOf(const py::handle &value)
{
    if (py::isinstance<System>(value))
        return value.cast<System>();
    if (py::isinstance<py::str>(value))
        return fromText(utf8Of(value));
    if (PyIndex_Check(value.ptr()) && !py::isinstance<py::bool_>(value)) // also NumPy's integers
        return fromText(utf8Of(py::str(py::module_::import("operator").attr("index")(value))));
    if (py::hasattr(value, "to_wkt")) // of other libraries of systems
        return fromText(utf8Of(value.attr("to_wkt")()));
    throw py::type_error("a system is a CoordSystem, a text, a code or an object with to_wkt()");
}

void defineSystems(py::module_ &module)
{
    py::class_<System> type(module, "CoordSystem", R"(A coordinate system, made from any notation of one.

CoordSystem("EPSG:32637"), CoordSystem(32637), CoordSystem("WGS 84 / UTM zone 37N"), WKT, PROJJSON, PROJ text,
CoordSystem('CoordSys Earth Projection 8, 1001, "m", 39, 0, 1, 7500000, 0'), CoordSystem("@table.tab") for what a
file holds, and objects with to_wkt(), as pyproj's. Unchangeable; threads may share one. x is always longitude or
easting and comes first, angles are degrees. Pickles as its text. Raises Error with a code for text that is no system.)");
    type.def(py::init([](const py::object &text) { return systemOf(text); }), py::arg("text"));
    defineProperties(type);
    defineTexts(type);
    defineCopies(type);
    type.def("__repr__", shown)
        .def("__eq__",
             [](const System &self, const py::object &other) -> py::object {
                 if (!py::isinstance<System>(other))
                     return py::reinterpret_borrow<py::object>(Py_NotImplemented);
                 return py::bool_(travelState(self).equal(travelState(other.cast<const System &>())));
             })
        .def("__hash__", [](const System &self) { return py::hash(textOf(travelText(self))); })
        .def(py::pickle([](const System &self) { return travelState(self); },
                        [](const py::tuple &state) { return restored(state); }));
}

} // namespace nivora::python
