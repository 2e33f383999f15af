#include <coordsys/MapinfoIndex_p.h>

#include <coordsys/CatalogueSource.h>
#include <coordsys/CoordSystem.h>
#include <coordsys/MapHeaderCoordsysConverter.h>
#include <coordsys/ProjectionParamsManager.h>

#include <proj.h>

#include <QHash>
#include <QMutexLocker>
#include <QSet>

#include <algorithm>
#include <cmath>
#include <stdexcept>

namespace nivora::cs {
namespace {

// All far wider than the digits that the engines lose: a filter may let a stranger in, never keep an equal
// out.
constexpr double axisSlackM = 1.0;
constexpr double angleSlackDeg = 1e-6;
constexpr double lengthSlackM = 1e-2;

constexpr int webMercatorDatum = 157; // its PROJ text is written anew on plain WGS 84
constexpr int philippineDatum = 1031; // the driver puts a registered system in its place
constexpr int hotine = 7;             // names its meridian and origin in other terms
constexpr int krovak = 32;
constexpr int hotineWithGridAngle = 35; // the record lacks a parameter
constexpr int unsetUnit = 255;

bool near(double a, double b, double slack) { return std::fabs(a - b) <= slack + 1e-9 * std::fabs(a); }

template <typename T, typename Same>
bool compatible(const std::optional<T> &a, const std::optional<T> &b, Same &&same)
{
    return !a || !b || same(*a, *b);
}

bool isOdd(int projection)
{
    return projection == hotine || projection == krovak || projection == hotineWithGridAngle;
}

SystemFacts factsOfEntry(const QStringList &params, const ProjectionParamsManager &manager)
{
    const TABProjInfo_t info =
        MapHeaderCoordsysConverter().prjStrToTABProjInfo(prjFromParams(params, QStringLiteral(",")));
    SystemFacts facts;
    const int projection = info.nProjId;
    const int unit = info.nUnitsId == unsetUnit ? int(LinearUnit::Meter) : info.nUnitsId;
    facts.unitCode = projection == 1 ? int(LinearUnit::Degree) : unit;
    if (projection == 0) {
        facts.centralMeridian = 0.0;
        facts.falseOriginM = {0.0, 0.0};
        return facts;
    }
    facts.datum = info.nDatumId;
    if (const MIEllipsoidParam *ellipsoid = manager.ellipsoidByID(info.nEllipsoidId))
        facts.semiMajorM = ellipsoid->semi_major;
    if (info.nDatumId != webMercatorDatum && info.nDatumId != philippineDatum)
        facts.shiftM = {info.dDatumShiftX, info.dDatumShiftY, info.dDatumShiftZ};
    const MIUnitConvParam *record = manager.unitByID(unit, std::nothrow);
    if (isOdd(projection) || !record)
        return facts;
    const int count = paramForPrj(projection);
    facts.centralMeridian = projection == 1 ? 0.0 : info.adProjParams[0];
    facts.falseOriginM = count < 4 ? std::make_pair(0.0, 0.0)
                                   : std::make_pair(info.adProjParams[count - 2] * record->conversion(),
                                                    info.adProjParams[count - 1] * record->conversion());
    return facts;
}

/// "+proj=utm +zone=37 +south" as proj → utm, zone → 37, south → "".
QHash<QString, QString> termsOf(const QString &proj)
{
    QHash<QString, QString> terms;
    const QVector<QStringRef> parts = proj.splitRef(QLatin1Char(' '), Qt::SkipEmptyParts);
    for (const QStringRef &part : parts) {
        const QStringRef term = part.startsWith(QLatin1Char('+')) ? part.mid(1) : part;
        const int equals = term.indexOf(QLatin1Char('='));
        terms.insert((equals < 0 ? term : term.left(equals)).toString(),
                     equals < 0 ? QString() : term.mid(equals + 1).toString());
    }
    return terms;
}

void addPlane(SystemFacts &facts, const QHash<QString, QString> &terms)
{
    const QString projection = terms.value(QStringLiteral("proj"));
    const auto number = [&terms](const char *name) { return terms.value(QLatin1String(name)).toDouble(); };
    if (projection == QLatin1String("omerc") || projection == QLatin1String("krovak"))
        return;
    if (projection == QLatin1String("utm")) {
        facts.centralMeridian = number("zone") * 6.0 - 183.0;
        facts.falseOriginM = {500000.0, terms.contains(QStringLiteral("south")) ? 1e7 : 0.0};
        return;
    }
    facts.centralMeridian = number("lon_0");
    facts.falseOriginM = {number("x_0"), number("y_0")};
}

} // namespace

bool SystemFacts::mayEqual(const SystemFacts &other) const
{
    if (datum > 0 && other.datum > 0 && datum != other.datum)
        return false;
    return compatible(unitCode, other.unitCode, [](int a, int b) { return a == b; }) &&
           compatible(semiMajorM, other.semiMajorM,
                      [](double a, double b) { return near(a, b, axisSlackM); }) &&
           compatible(
               centralMeridian, other.centralMeridian,
               [](double a, double b) { return std::fabs(std::remainder(a - b, 360.0)) <= angleSlackDeg; }) &&
           compatible(falseOriginM, other.falseOriginM,
                      [](const auto &a, const auto &b) {
                          return near(a.first, b.first, lengthSlackM) &&
                                 near(a.second, b.second, lengthSlackM);
                      }) &&
           compatible(shiftM, other.shiftM, [](const auto &a, const auto &b) {
               return std::equal(a.begin(), a.end(), b.begin(),
                                 [](double x, double y) { return near(x, y, lengthSlackM); });
           });
}

MapinfoIndex::MapinfoIndex(const QList<CoordSystemParamsList> &categories)
{
    const auto manager = activeCatalogues()->projectionParamsManager();
    QSet<QString> seen;
    for (int category = 0; category < categories.size(); ++category) {
        const QList<CoordSystemParams> &entries = categories.at(category).entries;
        for (int index = 0; index < entries.size(); ++index) {
            const QStringList &params = entries.at(index).params;
            const QString text = params.join(QLatin1Char(','));
            if (seen.contains(text))
                continue;
            seen.insert(text);
            Row row{{}, {category, index}};
            try {
                row.facts = factsOfEntry(params, *manager);
            } catch (const std::exception &) {
                row.facts = {}; // rules nothing out: the search itself tells that the entry is broken
            }
            m_rows.push_back(std::move(row));
        }
    }
}

std::optional<SystemFacts> factsOf(const CoordSystem &cs)
{
    QString proj;
    {
        const QMutexLocker lock(globalProj4Mutex());
        if (!cs.PJ_Proj4())
            return std::nullopt;
        proj = QString::fromUtf8(proj_as_proj_string(globalProjContext(), cs.PJ_Proj4(), PJ_PROJ_4, nullptr));
    }
    SystemFacts facts;
    try {
        facts.unitCode = cs.unit().unitCode();
    } catch (const std::exception &) {
        // an unnamed unit is compared by its length
    }
    if (cs.sourceType() == CoordSystem::Prj)
        facts.datum = MapHeaderCoordsysConverter().prjStrToTABProjInfo(cs.sourceParameters().string).nDatumId;
    if (!proj.contains(QLatin1String("+proj=")) || proj.contains(QLatin1String("+proj=pipeline")))
        return facts;
    const QHash<QString, QString> terms = termsOf(proj);
    addPlane(facts, terms);
    const QStringList shift = terms.value(QStringLiteral("towgs84")).split(QLatin1Char(','));
    if (shift.size() >= 3)
        facts.shiftM = {shift.at(0).toDouble(), shift.at(1).toDouble(), shift.at(2).toDouble()};
    if (!cs.isNonEarth()) {
        try {
            facts.semiMajorM = cs.getSemiMajor();
        } catch (const std::exception &) {
            // without an ellipsoid nothing is ruled out
        }
    }
    return facts;
}

} // namespace nivora::cs
