#include "Convert.h"
#include "Session.h"

#include <coordsys/CoordSystemStrings.h>
#include <coordsys/MapinfoCoordSystem.h>
#include <coordsys/MapinfoSearch.h>
#include <coordsys/SystemGuess.h>
#include <coordsys/SystemSearch.h>

#include <pybind11/numpy.h>
#include <pybind11/stl.h>

#include <array>

namespace nivora::python {
namespace {

/// What CoordSystem() takes for it.
QString textFor(const cs::MapinfoSearch::Hit &hit)
{
    if (hit.isOwn())
        return hit.name;
    if (!hit.code.isEmpty() || !hit.isInCatalogue())
        return hit.code;
    return Session::factory()->mapinfoCoordSystem()->getStrMB(hit.position.first, hit.position.second);
}

py::list find(const std::string &words, const std::optional<std::array<double, 2>> &at, int limit)
{
    if (limit < 1)
        throw py::value_error("limit must be positive");
    const QString text = QString::fromStdString(words);
    const auto search = systemSearch(*Session::factory());
    const auto place = at ? std::make_optional(QPointF((*at)[0], (*at)[1])) : std::nullopt;
    const QVector<cs::MapinfoSearch::Hit> hits = aside([&] {
        return text.isEmpty() && place ? search->at(*place, limit) : search->answer(text, place, limit).hits;
    });
    py::list list;
    for (const cs::MapinfoSearch::Hit &hit : hits)
        list.append(record("Hit", textOf(hit.name), textOf(textFor(hit)), codeOrNone(hit.epsg),
                           textOf(hit.category), hit.isWithdrawn));
    return list;
}

py::list recordsOf(const QVector<cs::SystemGuess::Entry> &entries)
{
    py::list list;
    for (const cs::SystemGuess::Entry &entry : entries) {
        py::list codes;
        py::list names;
        for (const cs::SystemGuess::Member &member : entry.members) {
            codes.append(textOf(member.code.isEmpty() ? member.name : member.code));
            names.append(textOf(member.name));
        }
        QStringList assumptions;
        for (const cs::GuessAssumption assumption : entry.assumptions)
            assumptions << cs::assumptionText(assumption);
        list.append(record("Guess", codes, names, listOf(assumptions),
                           py::make_tuple(entry.centre.x(), entry.centre.y()), entry.share, entry.spreadM));
    }
    return list;
}

py::list guess(const py::array_t<double, py::array::c_style | py::array::forcecast> &points,
               const std::optional<std::array<double, 2>> &near, const std::string &stated, int limit)
{
    if (points.ndim() != 2 || points.shape(1) != 2)
        throw py::value_error("points must have the shape (n, 2)");
    cs::SystemGuess::Question question;
    for (py::ssize_t i = 0; i < points.shape(0); ++i)
        question.points << QPointF(points.at(i, 0), points.at(i, 1));
    question.stated = QString::fromStdString(stated);
    if (near)
        question.place = QPointF((*near)[0], (*near)[1]);
    const auto planes = systemGuess(*Session::factory());
    return recordsOf(aside([&] { return planes->guess(question, limit); }).entries);
}

/// Where the CoordSys clause of a MIF stands, or would stand, and its length, in bytes.
py::tuple clausePlace(const py::bytes &header)
{
    const std::string bytes = header;
    const auto clause =
        cs::coordSysClauseIn(QString::fromLatin1(bytes.data(), static_cast<int>(bytes.size())));
    return py::make_tuple(clause.position, clause.length);
}

} // namespace

void defineLookup(py::module_ &module)
{
    module.def("_clause_place", clausePlace);
    module.def(
        "find", find, py::arg("words") = "", py::kw_only(), py::arg("at") = py::none(), py::arg("limit") = 20,
        R"(The systems that words mean, best first: names in Russian and English, zones, codes, countries,
towns. at=(longitude, latitude) in degrees: only what is in use there, alone or with words.
list of Hit(name, text, code, category, withdrawn); CoordSystem(hit.text) makes the system.)");
    module.def(
        "guess", guess, py::arg("points"), py::kw_only(), py::arg("near") = py::none(),
        py::arg("stated") = "", py::arg("limit") = 10,
        R"(The systems that bare coordinates may be in, the likeliest first. points: array of shape (n, 2), in the
order of the data. near: (longitude, latitude) in degrees of a place that the data lie at. stated: the code that they
claim. list of Guess(codes, names, assumptions, centre, share, spread_m): systems that the data cannot tell apart are
one entry; centre is on WGS 84, share the part of the data inside the area of use.)");
}

} // namespace nivora::python
