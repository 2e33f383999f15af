#include "Convert.h"
#include "Session.h"

#include <coordsys/MapinfoCoordSystem.h>
#include <coordsys/MapinfoSearch.h>

#include <pybind11/stl.h>

#include <array>

namespace nivora::python {
namespace {

/// What CoordSystem() takes for it.
QString textFor(const cs::MapinfoSearch::Hit &hit)
{
    if (!hit.code.isEmpty() || !hit.isInCatalogue())
        return hit.code;
    return Session::factory()->mapinfoCoordSystem()->getStrMB(hit.position.first, hit.position.second);
}

py::list find(const std::string &words, const std::optional<std::array<double, 2>> &at, int limit)
{
    if (limit < 1)
        throw py::value_error("limit must be positive");
    const QString text = QString::fromStdString(words);
    const cs::MapinfoSearch &search = Session::search();
    const auto place = at ? std::make_optional(QPointF((*at)[0], (*at)[1])) : std::nullopt;
    const QVector<cs::MapinfoSearch::Hit> hits = aside([&] {
        return text.isEmpty() && place ? search.at(*place, limit) : search.answer(text, place, limit).hits;
    });
    py::list list;
    for (const cs::MapinfoSearch::Hit &hit : hits)
        list.append(record("Hit", textOf(hit.name), textOf(textFor(hit)), codeOrNone(hit.epsg),
                           textOf(hit.category), hit.isWithdrawn));
    return list;
}

} // namespace

void defineLookup(py::module_ &module)
{
    module.def(
        "find", find, py::arg("words") = "", py::kw_only(), py::arg("at") = py::none(), py::arg("limit") = 20,
        R"(The systems that words mean, best first: names in Russian and English, zones, codes, countries,
towns. at=(longitude, latitude) in degrees: only what is in use there, alone or with words.
list of Hit(name, text, code, category, withdrawn); CoordSystem(hit.text) makes the system.)");
}

} // namespace nivora::python
