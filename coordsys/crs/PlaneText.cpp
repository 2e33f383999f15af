#include "PlaneText_p.h"

#include "ProjText_p.h"

#include <algorithm>
#include <cmath>
#include <map>

namespace nivora::cs {
namespace {

using Terms = std::map<QString, QString>;

constexpr double relativeTolerance = 1e-9;

/// They move no point of the plane.
constexpr const char *asides[] = {"towgs84", "nadgrids", "type", "no_defs", "wktext", "title"};

/// What PROJ takes where the term is missing.
struct Default
{
    const char *term;
    double value;
};
constexpr Default defaults[] = {{"lat_0", 0}, {"lon_0", 0}, {"x_0", 0},
                                {"y_0", 0},   {"k", 1},     {"to_meter", 1}};

/// Datums that PROJ writes instead of their ellipsoid.
struct DatumEllipsoid
{
    const char *datum;
    const char *ellipsoid;
};
constexpr DatumEllipsoid datumEllipsoids[] = {{"WGS84", "WGS84"}, {"NAD83", "GRS80"}, {"NAD27", "clrk66"}};

void setEllipsoidOfDatum(Terms &terms)
{
    const auto datum = terms.find(QStringLiteral("datum"));
    if (datum == terms.end())
        return;
    for (const DatumEllipsoid &row : datumEllipsoids)
        if (datum->second == QLatin1String(row.datum)) {
            terms[QStringLiteral("ellps")] = QLatin1String(row.ellipsoid);
            terms.erase(datum);
            return;
        }
}

void writeZoneOut(Terms &terms)
{
    if (terms[QStringLiteral("proj")] != QLatin1String("utm"))
        return;
    const int zone = terms[QStringLiteral("zone")].toInt();
    terms[QStringLiteral("proj")] = QStringLiteral("tmerc");
    terms[QStringLiteral("lon_0")] = QString::number(6 * zone - 183);
    terms[QStringLiteral("k")] = QStringLiteral("0.9996");
    terms[QStringLiteral("x_0")] = QStringLiteral("500000");
    if (terms.erase(QStringLiteral("south")))
        terms[QStringLiteral("y_0")] = QStringLiteral("10000000");
    terms.erase(QStringLiteral("zone"));
}

void dropDefaults(Terms &terms)
{
    for (const Default &row : defaults) {
        const auto term = terms.find(QLatin1String(row.term));
        bool isNumber = false;
        if (term != terms.end() && term->second.toDouble(&isNumber) == row.value && isNumber)
            terms.erase(term);
    }
}

Terms termsOf(const QString &proj)
{
    Terms terms;
    forEachTerm(proj, [&terms](const QString &name, const QString &value) {
        const bool isAside = std::any_of(std::begin(asides), std::end(asides),
                                         [&name](const char *aside) { return name == QLatin1String(aside); });
        const bool isMetre = name == QLatin1String("units") && value == QLatin1String("m");
        if (!isAside && !isMetre)
            terms.emplace(name == QLatin1String("k_0") ? QStringLiteral("k") : name, value);
    });
    setEllipsoidOfDatum(terms);
    writeZoneOut(terms);
    dropDefaults(terms);
    return terms;
}

bool isSameValue(const QString &a, const QString &b)
{
    if (a == b)
        return true;
    bool isNumber[2] = {false, false};
    const double x = a.toDouble(&isNumber[0]);
    const double y = b.toDouble(&isNumber[1]);
    return isNumber[0] && isNumber[1] &&
           std::fabs(x - y) <= relativeTolerance * std::max({1.0, std::fabs(x), std::fabs(y)});
}

} // namespace

bool saySamePlane(const QString &projA, const QString &projB)
{
    const Terms a = termsOf(projA);
    const Terms b = termsOf(projB);
    return a.size() == b.size() &&
           std::equal(a.begin(), a.end(), b.begin(), [](const auto &x, const auto &y) {
               return x.first == y.first && isSameValue(x.second, y.second);
           });
}

} // namespace nivora::cs
