#include "CoordSysTexts_p.h"
#include "SystemFacts_p.h"
#include <coordsys/SystemInfo.h>

#include "AreaOfUse_p.h"
#include "CodedError_p.h"
#include "CrsComparison_p.h"
#include "CrsDefinition_p.h"
#include "DerivedPlane_p.h"
#include "ProjText_p.h"
#include <coordsys/CoordSystem.h>
#include <coordsys/PrjText.h>

#include <proj.h>
#include <proj_experimental.h>

#include <QMutexLocker>

#include <stdexcept>

namespace nivora::cs {

namespace {

/// A value that PROJ writes through a pointer for as long as its object lives.
QString textOf(const char *utf8) { return QString::fromUtf8(utf8); }

bool isNamed(const QString &name)
{
    return !name.isEmpty() && name.compare(QLatin1String("unknown"), Qt::CaseInsensitive) != 0 &&
           name.compare(QLatin1String("unnamed"), Qt::CaseInsensitive) != 0;
}

QString knownName(const PJ *object)
{
    const QString name = object ? textOf(proj_get_name(object)) : QString();
    return isNamed(name) ? name : QString();
}

SystemInfo::Kind publicKind(CrsKind kind)
{
    switch (kind) {
    case CrsKind::Geographic:
        return SystemInfo::Kind::Geographic;
    case CrsKind::RotatedGeographic:
        return SystemInfo::Kind::RotatedGeographic;
    case CrsKind::Projected:
        return SystemInfo::Kind::Projected;
    case CrsKind::Local:
        return SystemInfo::Kind::Local;
    case CrsKind::Other:
        break;
    }
    return SystemInfo::Kind::Unknown;
}

// Each of the following reads a part of a CRS without a shift of its own, under the PROJ lock.

void readArea(PJ_CONTEXT *context, const PJ *crs, SystemInfo &info)
{
    const char *name = nullptr;
    if (!proj_get_area_of_use(context, crs, nullptr, nullptr, nullptr, nullptr, &name))
        return;
    info.areaName = textOf(name);
    info.area = areaOfUse(context, crs).value_or(QRectF());
}

void readEllipsoid(PJ_CONTEXT *context, const PJ *crs, SystemInfo &info)
{
    const PjHandle ellipsoid = ownPj(proj_get_ellipsoid(context, crs));
    info.ellipsoid = knownName(ellipsoid.get());
    if (ellipsoid)
        proj_ellipsoid_get_parameters(context, ellipsoid.get(), &info.semiMajorM, nullptr, nullptr,
                                      &info.inverseFlattening);
}

/// "unknown using nadgrids=…" and "Unknown based on … ellipsoid" are PROJ's ways to say that it knows none.
void readDatum(PJ_CONTEXT *context, const PJ *crs, SystemInfo &info)
{
    const PjHandle datum = ownPj(proj_crs_get_datum_forced(context, crs));
    const QString name = knownName(datum.get());
    if (!name.startsWith(QLatin1String("unknown "), Qt::CaseInsensitive))
        info.datum = name;
    const PjHandle meridian = ownPj(proj_get_prime_meridian(context, crs));
    info.primeMeridian = knownName(meridian.get());
    info.primeMeridianDeg = meridianDeg(context, crs);
}

void readUnit(PJ_CONTEXT *context, const PJ *crs, SystemInfo &info)
{
    const bool isAngle =
        info.kind == SystemInfo::Kind::Geographic || info.kind == SystemInfo::Kind::RotatedGeographic;
    const PjHandle axes = ownPj(proj_crs_get_coordinate_system(context, crs));
    const char *name = nullptr;
    double factor = 0.0;
    if (axes && proj_cs_get_axis_info(context, axes.get(), 0, nullptr, nullptr, nullptr, &factor, &name,
                                      nullptr, nullptr))
        info.unitName =
            isAngle ? QStringLiteral("degree") : textOf(name); // the library's own, whatever the axis'
    info.metresPerUnit = isAngle ? 0.0 : factor;
}

void readMethod(PJ_CONTEXT *context, const PJ *crs, SystemInfo &info)
{
    if (info.kind != SystemInfo::Kind::Projected)
        return;
    const PjHandle conversion = ownPj(proj_crs_get_coordoperation(context, crs));
    const char *method = nullptr;
    if (conversion &&
        proj_coordoperation_get_method_info(context, conversion.get(), &method, nullptr, nullptr))
        info.method = textOf(method);
}

/// False when the registry has another system under the code that a text states.
bool isRegisteredAs(const PJ *crs, const char *authority, const char *code)
{
    PJ_CONTEXT *context = globalProjContext();
    const PjHandle registered =
        ownPj(proj_create_from_database(context, authority, code, PJ_CATEGORY_CRS, false, nullptr));
    return !registered || isRegisteredSystem(context, crs, registered.get());
}

void readIdentifier(const PJ *crs, SystemInfo &info)
{
    const char *authority = proj_get_id_auth_name(crs, 0);
    const char *code = proj_get_id_code(crs, 0);
    if (info.epsg > 0)
        info.identifier = QStringLiteral("EPSG:%1").arg(info.epsg);
    else if (authority && code && info.baseCode <= 0 && isRegisteredAs(crs, authority, code))
        info.identifier = textOf(authority) + QLatin1Char(':') + textOf(code);
    info.isDeprecated = info.epsg > 0 && proj_is_deprecated(crs) != 0;
}

void readCrs(const CrsDefinition &identity, SystemInfo &info)
{
    const QMutexLocker lock(globalProj4Mutex());
    PJ_CONTEXT *context = globalProjContext();
    info.kind = publicKind(identity.kind());
    const PjHandle crs = identity.crs() ? sourceOfBoundCrs(context, identity.crs()) : nullptr;
    if (!crs)
        return;
    readIdentifier(crs.get(), info);
    readArea(context, crs.get(), info);
    readUnit(context, crs.get(), info);
    if (info.kind == SystemInfo::Kind::Local)
        return;
    readEllipsoid(context, crs.get(), info);
    readDatum(context, crs.get(), info);
    readMethod(context, crs.get(), info);
}

bool hasUnit(const CoordSystem &cs)
{
    try {
        return cs.unit().isValid();
    } catch (const std::exception &) {
        return false;
    }
}

QStringList assumptionsOf(const CoordSystem &cs, const CrsDefinition *identity, bool hasKnownUnit)
{
    QStringList result;
    if (identity && identity->isDemotedTo2D())
        result << CoordSysTexts::tr("Вертикальная часть опущена.");
    const bool isProj = cs.sourceType() == CoordSystem::Proj4 && !cs.isNonEarth();
    if (isProj && lacksDatum(cs.sourceParameters().string))
        result << CoordSysTexts::tr("Датум не указан: сдвиг к WGS 84 принят нулевым.");
    if (isProj && statesZeroShift(cs.sourceParameters().string))
        result << CoordSysTexts::tr("Сдвиг датума в тексте нулевой: датум принят за WGS 84.");
    if (!hasKnownUnit)
        result << CoordSysTexts::tr("Единица измерения не опознана: приняты метры.");
    return result << cs.assumptions();
}

[[noreturn]] void throwUnwritable(const CoordSystem &cs, const QString &reason)
{
    throwCoded<std::runtime_error>(
        Error::Code::NotWritable,
        CoordSysTexts::tr("КС «%1» не записывается в этом формате: %2").arg(cs.description(), reason));
}

/// The CRS under another name; a shift of its own is taken off and put on again, since only plain ones can be
/// renamed.
PjHandle renamed(PJ_CONTEXT *context, const PJ *crs, const QString &name)
{
    const PjHandle plain = sourceOfBoundCrs(context, crs);
    PjHandle named = ownPj(proj_alter_name(context, plain.get(), name.toUtf8().constData()));
    const PjHandle hub =
        proj_get_type(crs) == PJ_TYPE_BOUND_CRS ? ownPj(proj_get_target_crs(context, crs)) : nullptr;
    const PjHandle shift = hub ? ownPj(proj_crs_get_coordoperation(context, crs)) : nullptr;
    if (!named || !shift)
        return named;
    return ownPj(proj_crs_create_bound_crs(context, named.get(), hub.get(), shift.get()));
}

/// The definition under the name that people see, unless the text itself names the system.
PjHandle namedCrs(PJ_CONTEXT *context, const PJ *crs, const QString &name)
{
    const PjHandle plain = sourceOfBoundCrs(context, crs);
    const bool open = knownName(plain.get()).isEmpty();
    return open && isNamed(name) ? renamed(context, crs, name) : ownPj(proj_clone(context, crs));
}

QString written(PJ_CONTEXT *context, const PJ *crs, SystemFormat format)
{
    switch (format) {
    case SystemFormat::Wkt1: {
        const char *const options[] = {"MULTILINE=NO", nullptr};
        return textOf(proj_as_wkt(context, crs, PJ_WKT1_GDAL, options));
    }
    case SystemFormat::Esri: {
        const PjHandle plain = sourceOfBoundCrs(context, crs);
        return textOf(proj_as_wkt(context, plain.get(), PJ_WKT1_ESRI, nullptr));
    }
    case SystemFormat::ProjJson:
        return textOf(proj_as_projjson(context, crs, nullptr));
    default:
        return textOf(proj_as_wkt(context, crs, PJ_WKT2_2019, nullptr));
    }
}

/// The plane behind the system's affine transformation; null where no notation has words for it.
PjHandle movedCrs(PJ_CONTEXT *context, const PJ *crs, const CoordSystem &cs, const QString &name)
{
    const LinearUnit unit = cs.affineUnit();
    const bool isLength = unit.isValid() && !unit.isDegree() && unit.conversion() > 0.0;
    const double own = axisFactor(context, crs);
    return derivedCrs(context, crs, *cs.affineTransform(), isLength ? unit.conversion() : own, name);
}

/// WKT 1 and its Esri form would be read as a system of other latitudes.
void refuseLostLatitudes(const CoordSystem &cs, SystemFormat format)
{
    const auto identity = SystemFacts::writable(cs);
    if ((format == SystemFormat::Wkt1 || format == SystemFormat::Esri) && identity &&
        identity->isPlanetocentric())
        throwUnwritable(cs, CoordSysTexts::tr("в нём нет планетоцентрических широт"));
}

/// Empty, with the reason, when PROJ cannot write it.
QString writtenByEngine(const CoordSystem &cs, SystemFormat format, QString &reason)
{
    const auto identity = SystemFacts::writable(cs);
    const QString name = cs.description();
    const QMutexLocker lock(globalProj4Mutex());
    PJ_CONTEXT *context = globalProjContext();
    PjHandle crs = identity && identity->crs() ? namedCrs(context, identity->crs(), name) : nullptr;
    if (crs && cs.affineTransform())
        crs = movedCrs(context, crs.get(), cs, name);
    const QString text = crs ? written(context, crs.get(), format) : QString();
    reason = crs || !cs.affineTransform()
                 ? projLastError()
                 : CoordSysTexts::tr("в нём нет аффинного преобразования долгот и широт");
    return text;
}

QString coordSysText(const CoordSystem &cs)
{
    const PrjText text = prjTextOf(cs);
    if (text.isRefused())
        throwUnwritable(cs, text.reason());
    return text.text;
}

} // namespace

QPointF SystemInfo::areaCentre() const
{
    QPointF centre = area.center();
    if (centre.x() > 180.0)
        centre.rx() -= 360.0;
    return centre;
}

SystemInfo systemInfo(const CoordSystem &cs)
{
    SystemInfo info;
    info.name = cs.description();
    info.epsg = cs.epsg();
    info.baseCode = cs.baseCode();
    if (const auto identity = SystemFacts::named(cs))
        readCrs(*identity, info);
    if (cs.isNonEarth())
        info.kind = SystemInfo::Kind::Local;
    info.assumptions = assumptionsOf(cs, SystemFacts::own(cs).get(), info.metresPerUnit > 0.0 || hasUnit(cs));
    return info;
}

QString kindText(SystemInfo::Kind kind)
{
    switch (kind) {
    case SystemInfo::Kind::Geographic:
        return CoordSysTexts::tr("Географическая");
    case SystemInfo::Kind::RotatedGeographic:
        return CoordSysTexts::tr("Географическая с повёрнутым полюсом");
    case SystemInfo::Kind::Projected:
        return CoordSysTexts::tr("Прямоугольная");
    case SystemInfo::Kind::Local:
        return CoordSysTexts::tr("План-схема");
    case SystemInfo::Kind::Unknown:
        break;
    }
    return {};
}

QString exportSystem(const CoordSystem &cs, SystemFormat format)
{
    if (format == SystemFormat::Mapinfo)
        return coordSysText(cs);
    refuseLostLatitudes(cs, format);
    if (cs.affineTransform() && format != SystemFormat::Wkt2 && format != SystemFormat::ProjJson)
        throwUnwritable(cs, CoordSysTexts::tr("аффинное преобразование было бы потеряно"));
    if (format == SystemFormat::Proj)
        return cs.projStr();
    const QString wkt1 = format == SystemFormat::Wkt1 ? cs.exportToWkt() : QString();
    if (isNamed(wkt1.section(QLatin1Char('"'), 1, 1)))
        return wkt1;
    QString reason;
    const QString text = writtenByEngine(cs, format, reason);
    if (text.isEmpty())
        throwUnwritable(cs, reason);
    return text;
}

} // namespace nivora::cs
