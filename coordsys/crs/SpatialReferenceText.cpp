#include <coordsys/SpatialReferenceText.h>

#include "CatalogueSource_p.h"
#include "CoordSysTexts_p.h"
#include "EngineGate_p.h"
#include "ProjectionTable_p.h"
#include "SpatialReferenceText_p.h"
#include <coordsys/MapHeaderCoordsysConverter.h>
#include <coordsys/ProjEngine.h>
#include <coordsys/ProjectionParamsManager.h>
#include <platform/Logger.h>

#include <QMutexLocker>
#include <QRegularExpression>

#include <algorithm>
#include <array>
#include <cmath>
#include <optional>

namespace nivora::cs {

thread_local int QuietExportScope::depth = 0;

namespace {

constexpr double axisToleranceM = 1e-3;
constexpr double roundedAxisM =
    0.05; // two figures of one ellipsoid: Xian 1980 has 1/298.257 and 1/298.257222
constexpr double meridianToleranceDeg = 1e-8; // the driver keeps Paris 3e-9 degree off the EPSG figure
constexpr double shiftTolerance = 1e-6;       // metres, arc-seconds (0.03 mm on the ground) and ppm alike
constexpr double factorTolerance = 1e-9;      // relative
constexpr int noDatum = 0;
constexpr int wgs84Datum = 104;
constexpr int webMercatorDatum = 157;
constexpr int fullUserDatum = 9999;
constexpr int shortUserDatum = 999;

/// Shift to WGS 84 in MapInfo's order and signs: dx, dy, dz (m), rx, ry, rz (arc-seconds), scale (ppm).
using Shift = std::array<double, 7>;

/// What a spatial reference says of itself, and what GDAL's exporter made of it.
struct Exported
{
    QString prj;
    QStringList complaints; ///< what could not be written, for the log
    bool warned = false;    ///< GDAL said that something was lost
    bool local = false;
    double linearFactor = 1.0; ///< metres per unit of the plane
    bool falseOrigin = false;
    bool turnedGrid = false; ///< oblique Mercator with a rectified grid angle other than 90
    bool turnedAxes = false; ///< x or y run to the west or south, as no record has it
    double scale = 1.0;
    double parallel = 0.0;    ///< the first standard one, degrees
    bool otherRadius = false; ///< a sphere that follows from the ellipsoid, as only PROJ text says it
    bool webMercator = false;
    bool hasEllipsoid = false;
    QString ellipsoid; ///< its name
    QString datum;     ///< its name
    double semiMajorM = 0.0;
    double semiMinorM = 0.0;
    double meridianDeg = 0.0;
    std::optional<Shift> shift; ///< none when the reference carries none
};

void complainIncorrect(Exported &exported, const QString &what)
{
    exported.complaints << CoordSysTexts::tr("Строка PRJ сформирована некорректно (%1)").arg(what);
}

void readDriverText(OGRSpatialReferenceH srs, Exported &out)
{
    const CplErrorScope errors;
    CplText text;
    if (!exportToMapinfo(srs, text))
        throw ExportToPrjException();
    out.warned = CPLGetLastErrorType() == CE_Warning;
    if (out.warned)
        complainIncorrect(out, errors.message());
    out.prj = QString::fromUtf8(text.get());
}

/// PROJ keeps angles in radians, so a figure comes back with a wrong sixteenth digit; GDAL writes fifteen,
/// too.
double asWritten(double figure) { return QString::number(figure, 'g', 15).toDouble(); }

/// TOWGS84 has position-vector rotations, MapInfo coordinate-frame ones.
std::optional<Shift> shiftOf(OGRSpatialReferenceH srs)
{
    Shift shift{};
    if (OSRGetTOWGS84(srs, shift.data(), static_cast<int>(shift.size())) != OGRERR_NONE)
        return std::nullopt;
    std::transform(shift.begin(), shift.end(), shift.begin(), asWritten);
    std::transform(shift.begin() + 3, shift.begin() + 6, shift.begin() + 3, std::negate<>());
    return shift;
}

bool isWebMercator(OGRSpatialReferenceH srs)
{
    const QString proj = osrToProj4(srs);
    return proj.contains(QLatin1String("+proj=merc ")) && proj.contains(QLatin1String("+nadgrids=@null"));
}

double projParameter(OGRSpatialReferenceH srs, const char *name, double absent)
{
    OGRErr code = OGRERR_NONE;
    return OSRGetProjParm(srs, name, absent, &code);
}

/// "+R_V", "+R_lat_a=30"; "+R_A" is left aside wherever a plane is made from PROJ text.
bool hasOtherRadius(OGRSpatialReferenceH srs)
{
    static const QRegularExpression term(QStringLiteral("\\+R_(?!A(\\s|$))\\w"));
    const char *const text = OSRGetAttrValue(srs, "EXTENSION", 1); // behind the name "PROJ4"
    return text && term.match(QString::fromUtf8(text)).hasMatch();
}

/// Around a pole both axes run north, or both south, and the plane is a map's all the same.
bool hasTurnedAxes(OGRSpatialReferenceH srs)
{
    OGRAxisOrientation first = OAO_Other;
    OGRAxisOrientation second = OAO_Other;
    if (!OSRIsProjected(srs) || !OSRGetAxis(srs, nullptr, 0, &first) || !OSRGetAxis(srs, nullptr, 1, &second))
        return false;
    const auto either = [first, second](OGRAxisOrientation way) { return first == way || second == way; };
    return either(OAO_West) || (either(OAO_South) && first != second);
}

Exported exportedFrom(OGRSpatialReferenceH srs)
{
    const QMutexLocker lock(globalProj4Mutex());
    Exported out;
    readDriverText(srs, out);

    const CplErrorScope quiet;
    out.local = OSRIsLocal(srs) != 0;
    out.linearFactor = OSRGetLinearUnits(srs, nullptr);
    out.falseOrigin = projParameter(srs, SRS_PP_FALSE_EASTING, 0.0) != 0.0 ||
                      projParameter(srs, SRS_PP_FALSE_NORTHING, 0.0) != 0.0;
    out.turnedGrid = projParameter(srs, SRS_PP_RECTIFIED_GRID_ANGLE, 90.0) != 90.0;
    out.turnedAxes = hasTurnedAxes(srs);
    out.otherRadius = hasOtherRadius(srs);
    out.scale = projParameter(srs, SRS_PP_SCALE_FACTOR, 1.0);
    out.parallel = projParameter(srs, SRS_PP_STANDARD_PARALLEL_1, 0.0);
    OGRErr noMajor = OGRERR_NONE;
    OGRErr noMinor = OGRERR_NONE;
    out.semiMajorM = OSRGetSemiMajor(srs, &noMajor);
    out.semiMinorM = OSRGetSemiMinor(srs, &noMinor);
    out.hasEllipsoid = noMajor == OGRERR_NONE && noMinor == OGRERR_NONE;
    out.ellipsoid = QString::fromUtf8(OSRGetAttrValue(srs, "SPHEROID", 0));
    out.datum = QString::fromUtf8(OSRGetAttrValue(srs, "DATUM", 0));
    out.meridianDeg = asWritten(OSRGetPrimeMeridian(srs, nullptr));
    out.shift = shiftOf(srs);
    out.webMercator = out.prj.startsWith(QLatin1String("Earth Projection 10,")) && isWebMercator(srs);
    return out;
}

/// The exporter writes numbers that the catalogue leaves out; their figures are replaced afterwards.
TABProjInfo_t recordOf(const QString &prj, const ProjectionParamsManager &manager)
{
    // Earth Projection 8, 1017, "m", 39, 0, 1, 500000, 0
    static const QRegularExpression datum(QStringLiteral("^Earth Projection \\d+, (\\d+)"));
    const MapHeaderCoordsysConverter converter;
    const QRegularExpressionMatch match = datum.match(prj);
    const int number = match.captured(1).toInt();
    if (!match.hasMatch() || isUserDatum(number) || manager.datumByID(number))
        return converter.prjStrToTABProjInfo(prj);
    QString known = prj;
    known.replace(match.capturedStart(1), match.capturedLength(1), QStringLiteral("999, 255, 0, 0, 0"));
    return converter.prjStrToTABProjInfo(known);
}

// ---- Unit

bool sameFactor(double a, double b) { return std::fabs(a - b) <= factorTolerance * std::fabs(b); }

/// The exporter knows some units by name only and writes metres for the others, the false origin in the unit
/// that it dropped. True when the record was changed.
bool mendUnit(TABProjInfo_t &info, Exported &exported, const ProjectionParamsManager &manager)
{
    if (info.nProjId == LongitudeLatitude)
        return false;
    const MIUnitConvParam *written = manager.unitByID(info.nUnitsId, std::nothrow);
    if (written && sameFactor(written->conversion(), exported.linearFactor))
        return false;
    for (const auto &unit : manager.linearUnits()) {
        if (unit->id == LinearUnit::Degree || !sameFactor(unit->conversion(), exported.linearFactor))
            continue;
        info.nUnitsId = static_cast<std::uint8_t>(unit->unitCode());
        return true;
    }
    complainIncorrect(exported, exported.prj);
    return false;
}

// ---- Datum

double semiMinorM(const MIEllipsoidParam &ellipsoid)
{
    if (ellipsoid.inv_flatenning == 0.0)
        return ellipsoid.semi_major;
    return ellipsoid.semi_major * (1.0 - 1.0 / ellipsoid.inv_flatenning);
}

double axisDifferenceM(const MIEllipsoidParam &ellipsoid, const Exported &exported)
{
    return std::max(std::fabs(ellipsoid.semi_major - exported.semiMajorM),
                    std::fabs(semiMinorM(ellipsoid) - exported.semiMinorM));
}

/// The catalogue's ellipsoid within a few centimetres: the one of that name (two with the figures of WGS 84
/// plus a centimetre mark special datums), else the nearest.
const MIEllipsoidParam *findEllipsoid(const Exported &exported, const ProjectionParamsManager &manager)
{
    const MIEllipsoidParam *nearest = nullptr;
    for (const auto &ellipsoid : manager.ellipsoids()) {
        const double difference = axisDifferenceM(*ellipsoid, exported);
        if (!(difference <= roundedAxisM))
            continue;
        if (difference <= axisToleranceM && ellipsoid->name_mitab == exported.ellipsoid)
            return ellipsoid.get();
        if (!nearest || difference < axisDifferenceM(*nearest, exported))
            nearest = ellipsoid.get();
    }
    return nearest;
}

Shift shiftOf(const TABProjInfo_t &info)
{
    const double(&p)[5] = info.adDatumParams;
    return {info.dDatumShiftX, info.dDatumShiftY, info.dDatumShiftZ, p[0], p[1], p[2], p[3]};
}

void setShift(TABProjInfo_t &info, const Shift &shift)
{
    info.dDatumShiftX = shift[0];
    info.dDatumShiftY = shift[1];
    info.dDatumShiftZ = shift[2];
    std::copy(shift.begin() + 3, shift.end(), info.adDatumParams);
}

bool sameShift(const Shift &a, const Shift &b)
{
    return std::equal(a.begin(), a.end(), b.begin(),
                      [](double x, double y) { return std::fabs(x - y) <= shiftTolerance; });
}

bool isThreeParameter(const TABProjInfo_t &info)
{
    return std::all_of(std::begin(info.adDatumParams), std::end(info.adDatumParams),
                       [](double parameter) { return parameter == 0.0; });
}

bool datumFits(const TABProjInfo_t &info, const Exported &exported, const ProjectionParamsManager &manager)
{
    const MIEllipsoidParam *ellipsoid = manager.ellipsoidByID(info.nEllipsoidId);
    return ellipsoid && axisDifferenceM(*ellipsoid, exported) <= axisToleranceM &&
           std::fabs(info.adDatumParams[4] - exported.meridianDeg) <= meridianToleranceDeg &&
           (!exported.shift || sameShift(*exported.shift, shiftOf(info)));
}

/// The catalogue's own figure for a prime meridian, so that its datums are found by it.
double catalogueMeridianDeg(double meridianDeg, const ProjectionParamsManager &manager)
{
    for (const auto &datum : manager.datums())
        if (std::fabs(datum->pm - meridianDeg) <= meridianToleranceDeg)
            return datum->pm;
    return meridianDeg;
}

const MIDatumParam *findDatum(const MIEllipsoidParam &ellipsoid, const Shift &shift, double meridianDeg,
                              const ProjectionParamsManager &manager)
{
    return manager.datumByID(manager.findDatumByParams(ellipsoid.id, {shift[0], shift[1], shift[2]},
                                                       {shift[3], shift[4], shift[5]}, shift[6],
                                                       catalogueMeridianDeg(meridianDeg, manager)));
}

/// Writes the reference's datum into the record: by number when the catalogue has it, else by its figures.
/// False when the catalogue has no such ellipsoid.
bool writeDatum(TABProjInfo_t &info, const Exported &exported, const ProjectionParamsManager &manager)
{
    const MIEllipsoidParam *ellipsoid = findEllipsoid(exported, manager);
    if (!ellipsoid)
        return false;
    const Shift shift = exported.shift.value_or(Shift{});
    const MIDatumParam *datum = findDatum(*ellipsoid, shift, exported.meridianDeg, manager);
    // 0 says that there is no datum; Mercator on 157 is the spherical one
    if (datum && (datum->id == noDatum || (datum->id == webMercatorDatum && info.nProjId == Mercator)))
        datum = nullptr;

    info.nEllipsoidId = static_cast<std::uint8_t>(ellipsoid->id);
    setShift(info, shift);
    info.adDatumParams[4] = datum ? datum->pm : exported.meridianDeg;
    info.nDatumId = static_cast<std::int16_t>(datum                    ? datum->id
                                              : isThreeParameter(info) ? shortUserDatum
                                                                       : fullUserDatum);
    return true;
}

/// The datum that the driver read, by number or by the figures of one. Its exporter does not find twenty of
/// them again (OSGB 1936, Australia 1966, 1984 and 2020, MGI ...) and writes their figures.
const MIDatumParam *datumOfDriver(const TABProjInfo_t &info, const Exported &exported,
                                  const ProjectionParamsManager &manager)
{
    const auto &datums = manager.datums();
    const auto found = std::find_if(datums.begin(), datums.end(), [&](const auto &datum) {
        if (datum->name_mitab != exported.datum || datum->id == noDatum || datum->id == webMercatorDatum)
            return false;
        TABProjInfo_t numbered = info;
        numbered.nEllipsoidId = static_cast<std::uint8_t>(datum->ellipsoid);
        setShift(numbered, {datum->dx, datum->dy, datum->dz, datum->rx, datum->ry, datum->rz, datum->sa});
        numbered.adDatumParams[4] = datum->pm;
        return exported.shift && datumFits(numbered, exported, manager);
    });
    return found == datums.end() ? nullptr : found->get();
}

/// By name, a realization's included: "WGS_1984", "D_WGS_1984", "World Geodetic System 1984 (G2139)".
bool isWgs84(const QString &datum)
{
    static const QRegularExpression name(QStringLiteral("^(D_)?(WGS|World[ _]Geodetic[ _]System)[ _](19)?84"),
                                         QRegularExpression::CaseInsensitiveOption);
    return name.match(datum).hasMatch();
}

/// The exporter writes WGS 84 for every datum that it has no number for, sometimes the number of another one,
/// and the scale with the wrong sign. A datum nearer to WGS 84 than the axes tell keeps that number, but a
/// shift of zero that nobody stated is told. True when the record was changed.
bool mendDatum(TABProjInfo_t &info, Exported &exported, const ProjectionParamsManager &manager)
{
    if (info.nProjId == NonEarthPlan || !exported.hasEllipsoid)
        return false;
    if (exported.webMercator) {
        const bool changed = info.nDatumId != webMercatorDatum; // 104 when the unit is not the metre
        info.nDatumId = webMercatorDatum;
        return changed;
    }
    if (isUserDatum(info.nDatumId) && exported.shift) {
        setShift(info, *exported.shift);
        info.nDatumId = isThreeParameter(info) ? shortUserDatum : fullUserDatum;
        if (const MIDatumParam *datum = datumOfDriver(info, exported, manager)) {
            info.nDatumId = static_cast<std::int16_t>(datum->id);
            return true;
        }
    }
    const bool fits = datumFits(info, exported, manager);
    if (!fits && !writeDatum(info, exported, manager)) {
        complainIncorrect(exported, exported.prj);
        return false;
    }
    if (!exported.shift && (!fits || (info.nDatumId == wgs84Datum && !isWgs84(exported.datum))))
        exported.complaints
            << CoordSysTexts::tr("Сдвиг датума неизвестен, в строке PRJ он нулевой (%1)").arg(exported.prj);
    return !fits;
}

/// The projection has no place for something that the reference has: told, not mended.
bool isPlaneLost(const TABProjInfo_t &info, const Exported &exported)
{
    if (info.nProjId == NonEarthPlan)
        return !exported.local;
    const Projection *const row = projectionByNumber(info.nProjId); // the driver reads a missing scale as 1
    return !row || (row->isOblique() && exported.turnedGrid) || (!row->hasScale() && exported.scale != 1.0) ||
           (info.nProjId == EquidistantCylinder && exported.parallel != 0.0) || exported.turnedAxes ||
           exported.otherRadius || (exported.falseOrigin && !row->hasFalseOrigin());
}

/// Mends the record of what GDAL wrote. True when its text must be written anew.
bool mend(TABProjInfo_t &info, Exported &exported, const ProjectionParamsManager &manager)
{
    if (!exported.warned && isPlaneLost(info, exported))
        complainIncorrect(exported, exported.prj);
    const bool userDatum = isUserDatum(info.nDatumId);
    const bool unitMended = mendUnit(info, exported, manager);
    const bool datumMended = mendDatum(info, exported, manager);
    return userDatum || unitMended || datumMended;
}

} // namespace

QString prjFromSpatialReference(void *srs)
{
    // Facts first, catalogues after the lock is released: they may wait for threads that need it.
    Exported exported = exportedFrom(srs);
    QString text = exported.prj;
    if (!text.isEmpty()) {
        const auto manager = activeCatalogues()->projectionParamsManager();
        TABProjInfo_t info = recordOf(exported.prj, *manager);
        if (mend(info, exported, *manager))
            text = MapHeaderCoordsysConverter().tabProjInfoToString(info);
    }
    for (const QString &complaint : qAsConst(exported.complaints))
        if (!QuietExportScope::isOn())
            LOG_ERROR(complaint);
    return text;
}

std::optional<TABProjInfo_t> recordFromSpatialReference(void *srs)
{
    Exported exported = exportedFrom(srs);
    if (exported.prj.isEmpty())
        return std::nullopt;
    const auto manager = activeCatalogues()->projectionParamsManager();
    TABProjInfo_t info = recordOf(exported.prj, *manager);
    mend(info, exported, *manager);
    return exported.complaints.isEmpty() ? std::make_optional(info) : std::nullopt;
}

} // namespace nivora::cs
