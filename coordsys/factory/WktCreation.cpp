#include "CoordSysFactory_p.h"

#include "CodedError_p.h"
#include "CoordSysTexts_p.h"
#include "CoordSystemCache_p.h"
#include "CoordSystem_p.h"
#include "LazyParts_p.h"
#include "OsrHandle_p.h"
#include "ProjText_p.h"
#include "WebMercatorText_p.h"
#include <coordsys/CoordSystem.h>
#include <coordsys/ProjectionParamsManager.h>
#include <platform/Logger.h>

#include <QMutexLocker>

#include <cmath>
#include <memory>

namespace nivora::cs {
namespace {

std::shared_ptr<void> importWkt(const QString &wkt)
{
    const QMutexLocker lock(globalProj4Mutex());
    const CplErrorScope errors;
    std::shared_ptr<void> srs = srsFromWkt(wkt);
    if (!srs)
        throwCoded<std::runtime_error>(
            Error::Code::NotUnderstood,
            CoordSysTexts::tr("Ошибка импорта из строки WKT:\n%1\n(%2)").arg(wkt, errors.message()));
    return srs;
}

double linearUnitsOf(void *srs)
{
    const QMutexLocker lock(globalProj4Mutex());
    return OSRGetLinearUnits(srs, nullptr);
}

/// The catalogue's unit of a length; null when it has none.
const MIUnitConvParam *unitOfLength(const ProjectionParamsManager &manager, double metres)
{
    for (const auto &unit : manager.linearUnits())
        if (unit->id != LinearUnit::Degree && std::fabs(unit->conversion() - metres) <= 1e-9 * metres)
            return unit.get();
    return nullptr;
}

void setAffine(CoordSystem &cs, const QTransform &t, const MIUnitConvParam *unit)
{
    setAffineParamsArray(cs, unit, {t.m11(), t.m12(), t.m21(), t.m22(), t.dx(), t.dy()});
}

/// The database vouches for a code's system; others are tried.
bool isComputed(const CrsDefinition &identity)
{
    const QString proj = identity.projText();
    try {
        return !proj.isEmpty() && (identity.verifiedCode() > 0 || proj4FromString(proj));
    } catch (const ProjException &) {
        return false;
    }
}

bool isLocal(void *srs)
{
    const QMutexLocker lock(globalProj4Mutex());
    return OSRIsLocal(srs) != 0;
}

/// GDAL's PROJ text; empty when it has none.
QString exportedProj(void *srs)
{
    const QMutexLocker lock(globalProj4Mutex());
    const CplErrorScope quiet;
    const QString proj = osrToProj4(srs);
    const bool webMercator = proj.contains(QLatin1String("+proj=merc ")) &&
                             proj.contains(QLatin1String("+nadgrids=@null")) &&
                             OSRGetLinearUnits(srs, nullptr) == 1.0;
    return webMercator ? webMercatorText(proj) : proj;
}

} // namespace

/// Longitude/latitude that PROJ writes no text for.
CoordSystemPtr CoordSysFactoryPrivate::fromPlanetocentric(const CrsDefinition &identity)
{
    auto cs = std::make_shared<CoordSystem>();
    cs->setOGRSpatialReference(importWkt(identity.wkt()));
    cs->setProj4(proj4FromString(QStringLiteral("+proj=longlat +geoc +a=%1 +b=%2 +no_defs")
                                     .arg(cs->getSemiMajor(), 0, 'g', 17)
                                     .arg(identity.semiMinorM(), 0, 'g', 17)));
    return cs;
}

/// A system that has no PROJ text. Throws std::runtime_error when PROJ cannot compute in it.
CoordSystemPtr CoordSysFactoryPrivate::fromIdentity(const CrsDefinitionPtr &identity)
{
    if (identity && identity->kind() == CrsKind::Geographic)
        return fromPlanetocentric(*identity);
    const std::shared_ptr<const ProjOperation> plane = identity ? identity->plane() : nullptr;
    if (!plane || !identity->converts(*plane))
        throwCoded<std::runtime_error>(Error::Code::Engine,
                                       CoordSysTexts::tr("Ошибка экспорта КС в формат proj"));
    auto cs = std::make_shared<CoordSystem>();
    cs->setOGRSpatialReference(importWkt(identity->wkt()));
    privateOf(*cs).m_pj = identity->copyOfCrs();
    privateOf(*cs).setPlane(plane);
    return cs;
}

CoordSystemPtr CoordSysFactoryPrivate::createFromWkt(const QString &wkt) const
{
    const SourceScope scope(*this);
    return m_made->system(CoordSystemCache::By::Wkt, wkt, [&] { return namedFromWkt(wkt); });
}

/// By its definition alone, see definedByCode(). Null for all that is more than a plane of PROJ's, and for
/// what PROJ cannot compute: the engines are asked at once then, and say why.
CoordSystemPtr CoordSysFactoryPrivate::definedByWkt(const QString &wkt, const CrsDefinitionPtr &identity)
{
    const bool isPlain =
        (identity->kind() == CrsKind::Projected || identity->kind() == CrsKind::Geographic) &&
        !identity->isDemotedTo2D() && !identity->affine() && !identity->hasOwnShift();
    if (!isPlain || identity->withoutForeignCode() || !isComputed(*identity))
        return nullptr;
    auto cs = std::make_shared<CoordSystem>();
    CoordSystemPrivate &own = privateOf(*cs);
    own.makeLater(std::make_shared<const LazyParts>([wkt, identity] {
        const bool isJson = wkt.startsWith(QLatin1Char('{')); // what WKT has no words for
        const CoordSystemPtr made = unnamedFromWkt(importWkt(isJson ? identity->wkt() : wkt), identity);
        const CoordSystemPrivate &parts = privateOf(*made);
        return LazyParts::Parts{parts.m_srs, parts.m_pj, parts.m_plane};
    }));
    cs->setSourceParameters({CoordSystem::Wkt, wkt});
    own.setIdentity(identity);
    own.setNameless();
    own.m_isNonEarth = false;
    own.m_isLatLong = identity->kind() == CrsKind::Geographic;
    return cs;
}

CoordSystemPtr CoordSysFactoryPrivate::namedFromWkt(const QString &wkt) const
{
    if (wkt.isEmpty())
        throwCoded<std::runtime_error>(Error::Code::EmptyText, CoordSysTexts::tr("Строка КС пустая"));
    LOG_DEBUG(QStringLiteral("CoordSysFactory.createFromWkt=%1").arg(wkt));

    CrsDefinitionPtr identity = CrsDefinition::from(wkt);
    if (const CoordSystemPtr defined = identity ? definedByWkt(wkt, identity) : nullptr)
        return defined;
    const bool isJson = wkt.startsWith(QLatin1Char('{')); // what WKT has no words for
    std::shared_ptr<void> srs = importWkt(isJson && identity ? identity->wkt() : wkt);
    if (!identity)
        identity = CrsDefinition::of({CoordSystem::Unknown, QString()}, srs.get());
    if (identity && !identity->isHorizontal())
        throwWithoutPlane(wkt);
    const CrsDefinitionPtr bare = identity ? identity->withoutForeignCode() : nullptr;
    if (bare)
        identity = bare;
    if (bare || (identity && (identity->isDemotedTo2D() || identity->affine())))
        srs = importWkt(identity->wkt());
    const CoordSystemPtr cs = isLocal(srs.get()) ? planFromWkt(srs) : unnamedFromWkt(srs, identity);
    cs->setSourceParameters({CoordSystem::Wkt, wkt});
    privateOf(*cs).setIdentity(identity);
    if (identity && identity->affine())
        setAffine(*cs, *identity->affine(), unitOfLength(*m_params, identity->affineUnitM()));
    const bool isMoved = identity && identity->affine() && !identity->name().isEmpty();
    const int code = isMoved ? int(CoordSystem::EPSG_UNDEFINDED) : privateOf(*cs).statedEpsg();
    const bool isNamedPlan = identity && identity->kind() == CrsKind::Local && !identity->name().isEmpty();
    if (code != CoordSystem::EPSG_UNDEFINDED)
        cs->setDescription(nameOfCode(code));
    else if (isMoved || isNamedPlan)
        cs->setDescription(identity->name());
    else if (cs->description().isEmpty())
        privateOf(*cs).setNameless();
    return cs;
}

/// The unit is that of the reference, which the catalogue may lack; its name is the reference's.
CoordSystemPtr CoordSysFactoryPrivate::planFromWkt(const std::shared_ptr<void> &srs) const
{
    const double factor = linearUnitsOf(srs.get());
    const MIUnitConvParam *unit = unitOfLength(*m_params, factor);
    CoordSystemPtr cs;
    if (unit) {
        cs = createFromPrj(QStringLiteral("NonEarth Units \"%1\"").arg(unit->name()));
    } else {
        cs = std::make_shared<CoordSystem>();
        cs->setProj4(proj4FromString(QStringLiteral("+proj=eqc +R=%1 +to_meter=%2 +no_defs")
                                         .arg(CoordSystem::EARTH_SPHERE_RADIUS, 0, 'f', 0)
                                         .arg(factor, 0, 'g', 17)));
    }
    cs->setOGRSpatialReference(srs);
    return cs;
}

CoordSystemPtr CoordSysFactoryPrivate::unnamedFromWkt(const std::shared_ptr<void> &srs,
                                                      const CrsDefinitionPtr &identity)
{
    const QString proj = exportedProj(srs.get());
    if (proj.isEmpty() && identity)
        return fromIdentity(identity);
    auto cs = std::make_shared<CoordSystem>();
    cs->setOGRSpatialReference(srs);
    cs->setProj4(proj4FromExport(proj));
    const std::shared_ptr<const ProjOperation> plane = identity ? identity->plane() : nullptr;
    if (plane)
        privateOf(*cs).setPlane(plane);
    return cs;
}

} // namespace nivora::cs
