#include "MapinfoIndex_p.h"

#include "CoordSysReader_p.h"
#include "CoordSystem_p.h"
#include "EngineGate_p.h"
#include "ProjText_p.h"
#include "ProjectionTable_p.h"
#include <coordsys/CoordSystem.h>
#include <coordsys/MapHeaderCoordsysConverter.h>
#include <coordsys/ProjectionParamsManager.h>

#include <proj.h>

#include <QHash>
#include <QMutexLocker>
#include <QRegularExpression>
#include <QSet>

#include <algorithm>
#include <cmath>
#include <limits>

namespace nivora::cs {
namespace {

// All far wider than the digits that the engines lose: a filter may let an unequal entry in, never keep an
// equal out.
constexpr double axisSlackM = 1.0;
constexpr double angleSlackDeg = 1e-6;
constexpr double lengthSlackM = 1e-2;

constexpr int webMercatorDatum = 157; // its PROJ text is written anew on plain WGS 84
constexpr int philippineDatum = 1031; // the driver puts a registered system in its place
constexpr int fullUserDatum = 9999;
constexpr int unsetUnit = 255;

/// What the driver makes of a unit's name, whatever length a host's catalogue gives it.
struct DriverUnit
{
    LinearUnit::MIUnitCode code;
    const char *name;
    double metres;
};
constexpr DriverUnit driverUnits[] = {
    {LinearUnit::Meter, "m", 1.0},        {LinearUnit::SurveyFoot, "survey ft", 1200.0 / 3937.0},
    {LinearUnit::Foot, "ft", 0.3048},     {LinearUnit::Kilometer, "km", 1000.0},
    {LinearUnit::Yard, "yd", 0.9144},     {LinearUnit::Inch, "in", 0.0254},
    {LinearUnit::Centimeter, "cm", 0.01}, {LinearUnit::Millimeter, "mm", 0.001},
};

bool near(double a, double b, double slack) { return std::fabs(a - b) <= slack + 1e-9 * std::fabs(a); }

template <typename T, typename Same>
bool compatible(const std::optional<T> &a, const std::optional<T> &b, Same &&same)
{
    return !a || !b || same(*a, *b);
}

std::optional<double> length(double value)
{
    return std::isfinite(value) && value > 0.0 ? std::make_optional(value) : std::nullopt;
}

bool sameShift(const std::array<double, 3> &a, const std::array<double, 3> &b)
{
    return std::equal(a.begin(), a.end(), b.begin(),
                      [](double x, double y) { return near(x, y, lengthSlackM); });
}

bool isOdd(int projection)
{
    const Projection *const row = projectionByNumber(projection);
    return row && row->isOblique();
}

/// Makes the facts of entries. They repeat few units: each is looked up once.
class EntryReader
{
public:
    explicit EntryReader(const ProjectionParamsManager &manager)
        : m_manager(manager)
    {}

    /// Throws std::exception for an entry that makes no system.
    CrsFingerprint facts(const QStringList &params)
    {
        const CoordSysText text(prjFromParams(params, QStringLiteral(",")));
        return factsOf(lenientRecord(text, m_manager));
    }

    CrsFingerprint factsOf(const TABProjInfo_t &info)
    {
        CrsFingerprint facts;
        const int projection = info.nProjId;
        const int code = info.nUnitsId == unsetUnit ? int(LinearUnit::Meter) : info.nUnitsId;
        const DriverUnit *unit = driverUnit(code);
        if (unit && projection != LongitudeLatitude)
            facts.unitCode = code;
        if (projection == LongitudeLatitude)
            facts.unitCode = LinearUnit::Degree;
        facts.isOblique = isOdd(projection);
        if (projection == NonEarthPlan) {
            facts.centralMeridian = 0.0;
            facts.falseOriginM = {0.0, 0.0};
            return facts;
        }
        facts.datum = info.nDatumId;
        if (isUserDatum(info.nDatumId)) {
            facts.ellipsoid = info.nEllipsoidId;
            facts.shiftM = {info.dDatumShiftX, info.dDatumShiftY, info.dDatumShiftZ};
        }
        if (!isOdd(projection))
            addPlane(facts, info, unit);
        return facts;
    }

private:
    /// Null when the name that the host gives to the code is not the one the driver knows it by.
    const DriverUnit *driverUnit(int code)
    {
        const auto known = m_driverUnits.constFind(code);
        if (known != m_driverUnits.constEnd())
            return *known;
        const auto row = std::find_if(std::begin(driverUnits), std::end(driverUnits),
                                      [code](const DriverUnit &unit) { return unit.code == code; });
        const MIUnitConvParam *named = m_manager.unitByID(code, std::nothrow);
        const bool same = row != std::end(driverUnits) && named && named->name() == QLatin1String(row->name);
        return *m_driverUnits.insert(code, same ? row : nullptr);
    }

    static void addPlane(CrsFingerprint &facts, const TABProjInfo_t &info, const DriverUnit *unit)
    {
        const Projection *const row = projectionByNumber(info.nProjId);
        const double meridian = info.nProjId == LongitudeLatitude ? 0.0 : info.adProjParams[0];
        if (std::isfinite(meridian))
            facts.centralMeridian = meridian;
        if (!row || !row->hasFalseOrigin()) {
            facts.falseOriginM = {0.0, 0.0};
            return;
        }
        const double east = unit ? info.adProjParams[row->indexOf('e')] * unit->metres : HUGE_VAL;
        const double north = unit ? info.adProjParams[row->indexOf('n')] * unit->metres : HUGE_VAL;
        if (std::isfinite(east) && std::isfinite(north))
            facts.falseOriginM = {east, north};
    }

    const ProjectionParamsManager &m_manager;
    QHash<int, const DriverUnit *> m_driverUnits;
};

/// "+proj=utm +zone=37 +south" as proj → utm, zone → 37, south → "".
QHash<QString, QString> termsOf(const QString &proj)
{
    QHash<QString, QString> terms;
    forEachTerm(proj, [&terms](const QString &name, const QString &value) {
        if (!terms.contains(name)) // PROJ takes the first, too
            terms.insert(name, value);
    });
    return terms;
}

using Terms = QHash<QString, QString>;

/// A term's figure; \p absent without the term, nothing when it is no decimal number. One that is not finite
/// is NaN, which differs from every known figure.
std::optional<double> figure(const Terms &terms, const char *name, double absent)
{
    const auto term = terms.constFind(QLatin1String(name));
    if (term == terms.constEnd())
        return absent;
    bool isNumber = false;
    const double value = term->toDouble(&isNumber);
    if (!isNumber)
        return std::nullopt;
    return std::isfinite(value) ? value : std::numeric_limits<double>::quiet_NaN();
}

/// The terms of the texts that the engine writes for entries; "m" stands in a plan of an unknown unit.
constexpr const char *entryTerms[] = {
    "proj",  "zone",    "south",  "lat_0",  "lon_0",  "lat_1",   "lat_2",   "lat_ts",   "lonc",  "lon_1",
    "lon_2", "alpha",   "gamma",  "k",      "k_0",    "x_0",     "y_0",     "h",        "R",     "a",
    "b",     "rf",      "f",      "ellps",  "datum",  "pm",      "towgs84", "nadgrids", "units", "to_meter",
    "axis",  "no_uoff", "no_off", "no_rot", "wktext", "no_defs", "m"};

/// False for a text that no entry has. Texts make systems equal, and the engine writes those of entries with
/// decimal numbers, with the zone of UTM, and without terms of its own making.
bool isEntryText(const Terms &terms)
{
    const auto isKnown = [](const QString &name) {
        return std::any_of(std::begin(entryTerms), std::end(entryTerms),
                           [&name](const char *term) { return name == QLatin1String(term); });
    };
    const auto isFigure = [&terms](const char *name) { return figure(terms, name, 0.0).has_value(); };
    const QString projection = terms.value(QStringLiteral("proj"));
    const bool isUtm = projection == QLatin1String("utm");
    return std::all_of(terms.keyBegin(), terms.keyEnd(), isKnown) && !projection.isEmpty() &&
           (!isUtm || terms.contains(QStringLiteral("zone"))) && isFigure("zone") && isFigure("lon_0") &&
           isFigure("x_0") && isFigure("y_0");
}

void addPlane(CrsFingerprint &facts, const Terms &terms)
{
    const QString projection = terms.value(QStringLiteral("proj"));
    const bool turned =
        projection == QLatin1String("somerc"); // what an oblique Mercator at 90 degrees becomes
    if (!turned)
        facts.isOblique =
            projection == QLatin1String("omerc") || projection.endsWith(QLatin1String("krovak"));
    if (turned || *facts.isOblique)
        return;
    if (projection == QLatin1String("utm")) {
        const double none = -1.0;
        if (const auto zone = figure(terms, "zone", none); zone && *zone != none) {
            facts.centralMeridian = *zone * 6.0 - 183.0;
            facts.falseOriginM = {500000.0, terms.contains(QStringLiteral("south")) ? 1e7 : 0.0};
        }
        return;
    }
    facts.centralMeridian = figure(terms, "lon_0", 0.0);
    const auto east = figure(terms, "x_0", 0.0);
    const auto north = figure(terms, "y_0", 0.0);
    if (east && north)
        facts.falseOriginM = {*east, *north};
}

/// "+towgs84=23.57,-140.95,-79.8", the only shift of its text.
std::optional<std::array<double, 3>> shiftIn(const Terms &terms)
{
    const QStringList parts = terms.value(QStringLiteral("towgs84")).split(QLatin1Char(','));
    if (parts.size() < 3 || terms.contains(QStringLiteral("datum")) ||
        terms.contains(QStringLiteral("nadgrids")))
        return std::nullopt;
    std::array<double, 3> shift{};
    for (std::size_t i = 0; i < shift.size(); ++i) {
        bool isNumber = false;
        shift[i] = parts.at(static_cast<int>(i)).toDouble(&isNumber);
        if (!isNumber || !std::isfinite(shift[i]))
            return std::nullopt;
    }
    return shift;
}

/// A CRS, which never equals the operations that entries are.
bool isCrs(const CoordSystem &cs)
{
    const QMutexLocker lock(globalProj4Mutex());
    return proj_is_crs(cs.PJ_Proj4()) != 0;
}

QString projTextOf(const CoordSystem &cs)
{
    const QMutexLocker lock(globalProj4Mutex());
    return QString::fromUtf8(proj_as_proj_string(globalProjContext(), cs.PJ_Proj4(), PJ_PROJ_4, nullptr));
}

/// What \p ask gives; nothing when it throws, because the system does not know.
template <typename Ask> auto answerOf(Ask &&ask) -> std::optional<decltype(ask())>
{
    try {
        return ask();
    } catch (const std::exception &) {
        return std::nullopt;
    }
}

} // namespace

bool CrsFingerprint::mayEqual(const CrsFingerprint &other) const
{
    if (datum > 0 && other.datum > 0 && datum != other.datum)
        return false;
    const auto identical = [](auto a, auto b) { return a == b; };
    return compatible(unitCode, other.unitCode, identical) &&
           compatible(isOblique, other.isOblique, identical) &&
           compatible(
               centralMeridian, other.centralMeridian,
               [](double a, double b) { return std::fabs(std::remainder(a - b, 360.0)) <= angleSlackDeg; }) &&
           compatible(falseOriginM, other.falseOriginM,
                      [](const auto &a, const auto &b) {
                          return near(a.first, b.first, lengthSlackM) &&
                                 near(a.second, b.second, lengthSlackM);
                      }) &&
           compatible(semiMajorM, other.semiMajorM,
                      [](double a, double b) { return near(a, b, axisSlackM); }) &&
           compatible(shiftM, other.shiftM, sameShift);
}

namespace {

CrsFingerprint factsOfEntry(EntryReader &reader, const QStringList &params)
{
    try {
        return reader.facts(params);
    } catch (const std::exception &) {
        return {}; // rules nothing out: the search itself tells that the entry is broken
    }
}

} // namespace

MapinfoIndex::MapinfoIndex(const QList<CoordSystemParamsList> &categories)
{
    const auto manager = activeCatalogues()->projectionParamsManager();
    EntryReader reader(*manager);
    QHash<QStringList, std::pair<CrsFingerprint, QSet<int>>> seen; // facts and codes of the same parameters
    int count = 0;
    for (const CoordSystemParamsList &category : categories)
        count += category.entries.size();
    seen.reserve(count);
    m_rows.reserve(static_cast<std::size_t>(count));
    for (int category = 0; category < categories.size(); ++category) {
        const QList<CoordSystemParams> &entries = categories.at(category).entries;
        for (int index = 0; index < entries.size(); ++index) {
            const QStringList &params = entries.at(index).params;
            auto known = seen.find(params);
            if (known == seen.end())
                known = seen.insert(params, {factsOfEntry(reader, params), {}});
            QSet<int> &codes = known->second;
            const int before = codes.size();
            if (codes.insert(entries.at(index).epsg()); codes.size() != before)
                m_rows.push_back({known->first, {category, index}});
        }
    }
}

MapinfoIndex::DatumFigures MapinfoIndex::figuresOf(const CrsFingerprint &facts)
{
    QString text = QStringLiteral("Earth Projection 1, %1").arg(facts.datum);
    if (isUserDatum(facts.datum))
        text += QStringLiteral(", %1, 0, 0, 0").arg(facts.ellipsoid) +
                (facts.datum == fullUserDatum ? QStringLiteral(", 0, 0, 0, 0, 0") : QString());
    const QMutexLocker lock(globalProj4Mutex());
    const CplErrorScope quiet;
    const std::shared_ptr<void> srs = newSrs();
    DatumFigures figures;
    if (!importFromMapinfo(srs.get(), text))
        return figures;
    OGRErr code = OGRERR_NONE;
    const double semiMajor = OSRGetSemiMajor(srs.get(), &code);
    if (code == OGRERR_NONE)
        figures.semiMajorM = length(semiMajor);
    double shift[7] = {};
    if (!isUserDatum(facts.datum) && OSRGetTOWGS84(srs.get(), shift, 7) == OGRERR_NONE)
        figures.shiftM = {shift[0], shift[1], shift[2]};
    return figures;
}

std::shared_ptr<const TABProjInfo_t> MapinfoIndex::recordOf(const CoordSystem &cs)
{
    return privateOf(cs).record();
}

bool MapinfoIndex::mayEqual(const CrsFingerprint &facts, const Row &row) const
{
    const CrsFingerprint &entry = row.facts;
    if (!facts.mayEqual(entry))
        return false;
    if (entry.datum <= 0 || entry.datum == webMercatorDatum || entry.datum == philippineDatum)
        return true;
    const QMutexLocker lock(&m_lock);
    const std::pair<int, int> key(entry.datum, entry.ellipsoid);
    auto known = m_figures.find(key);
    if (known == m_figures.end())
        known = m_figures.insert(key, figuresOf(entry));
    return compatible(facts.semiMajorM, known->semiMajorM,
                      [](double a, double b) { return near(a, b, axisSlackM); }) &&
           compatible(facts.shiftM, known->shiftM, sameShift);
}

std::optional<CrsFingerprint> factsOf(const CoordSystem &cs)
{
    if (!cs.PJ_Proj4() || isCrs(cs))
        return std::nullopt;
    CrsFingerprint facts;
    if (const auto unit = answerOf([&cs] { return cs.unit(); }))
        facts.unitCode = unit->unitCode(); // an unnamed unit is compared by its length
    if (cs.sourceType() == CoordSystem::Prj) {
        const auto record = MapinfoIndex::recordOf(cs);
        if (!record)
            return std::nullopt;
        facts.datum = record->nDatumId;
    }
    const QString proj = projTextOf(cs);
    if (proj.isEmpty())
        return facts;
    const Terms terms = termsOf(proj);
    if (!isEntryText(terms))
        return std::nullopt;
    addPlane(facts, terms);
    facts.shiftM = shiftIn(terms);
    if (!cs.isNonEarth() && !terms.contains(QStringLiteral("R_A")))
        if (const auto semiMajor = answerOf([&cs] { return cs.getSemiMajor(); }))
            facts.semiMajorM = length(*semiMajor);
    return facts;
}

CrsFingerprint factsOf(const CoordSystemTypes::SourceData &source, const ProjectionParamsManager &manager)
{
    CrsFingerprint facts;
    if (source.type == CoordSystemTypes::Prj) {
        const auto record =
            answerOf([&source] { return MapHeaderCoordsysConverter().prjStrToTABProjInfo(source.string); });
        return record ? EntryReader(manager).factsOf(*record) : facts;
    }
    static const QRegularExpression plain(
        QStringLiteral("^\\s*\\+proj=(?!pipeline)")); // "+proj=utm +zone=37"
    if (source.type == CoordSystemTypes::Proj4 && plain.match(source.string).hasMatch()) {
        const Terms terms = termsOf(source.string);
        addPlane(facts, terms);
        facts.shiftM = shiftIn(terms);
    }
    return facts;
}

} // namespace nivora::cs
