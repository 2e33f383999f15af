#include "CoordSysFactory_p.h"

#include "CodedError_p.h"
#include "CoordSysTexts_p.h"
#include "CoordSystemCache_p.h"
#include "CoordSystem_p.h"
#include "LazyParts_p.h"
#include <coordsys/CoordSystem.h>
#include <coordsys/CoordSystemConversions.h>
#include <coordsys/CoordSystemStrings.h>
#include <coordsys/MapinfoCoordSystem.h>
#include <coordsys/ProjLibMetadata.h>
#include <platform/Logger.h>

#include <cmath>

// Systems by their code in the database.

namespace nivora::cs {
namespace {

constexpr double ellipsoidToleranceM = 1e-3;

bool hasClauses(const QString &prj)
{
    const PrjClauses clauses = hasAffineOrBoundsInString(prj);
    return clauses.affine || clauses.bounds;
}

} // namespace

void throwWithoutPlane(const QString &text)
{
    throwCoded<std::runtime_error>(Error::Code::NoPlane,
                                   CoordSysTexts::tr("КС не имеет плановой части: %1").arg(text));
}

CoordSystemPtr CoordSysFactoryPrivate::createFromEpsg(int epsg) const
{
    const SourceScope scope(*this);
    LOG_DEBUG(QStringLiteral("CoordSysFactory.createFromEpsg=%1").arg(epsg));
    return m_made->system(CoordSystemCache::By::Epsg, QString::number(epsg), [&] {
        const CoordSystemPtr defined = definedByCode(epsg);
        return defined ? defined : namedFromEpsg(epsg);
    });
}

/// By its definition alone, which the database vouches for: what the engines make of it comes when it is
/// first needed. Null where the catalogue's entry has bounds, and for the few methods that PROJ writes no
/// text for, which it may not be able to compute.
CoordSystemPtr CoordSysFactoryPrivate::definedByCode(int epsg) const
{
    const CrsDefinitionPtr identity = CrsDefinition::ofCode(epsg);
    const bool isPlain = identity && !identity->isDemotedTo2D() &&
                         (identity->kind() == CrsKind::Projected || identity->kind() == CrsKind::Geographic);
    if (!isPlain || hasClauses(m_mapinfo->seekByEPSG(epsg)) || identity->projText().isEmpty())
        return nullptr;
    auto cs = std::make_shared<CoordSystem>();
    CoordSystemPrivate &own = privateOf(*cs);
    own.makeLater(std::make_shared<const LazyParts>([guard = m_guard, epsg] {
        const CoordSystemPtr made = guard->madeFromEpsg(epsg);
        const CoordSystemPrivate &parts = privateOf(*made);
        return LazyParts::Parts{parts.m_srs, parts.m_pj, parts.m_plane};
    }));
    cs->setSourceParameters({CoordSystem::Epsg, QString::number(epsg)});
    own.setIdentity(identity);
    cs->setEpsg(epsg);
    own.setNameless();
    own.m_isNonEarth = false;
    own.m_isLatLong = identity->kind() == CrsKind::Geographic;
    return cs;
}

/// By the factory while it lives, then by the installed default, else as the database has it.
CoordSystemPtr FactoryGuard::madeFromEpsg(int epsg) const
{
    const std::shared_ptr<const CatalogueSource> living = lock();
    const auto installed = living ? nullptr : CoordSysFactory::defaultCoordSysFactory();
    if (!living && !installed)
        return CoordSysFactoryPrivate::unnamedFromCode(epsg, CrsDefinition::ofCode(epsg));
    const CoordSysFactoryPrivate *const maker = living ? factory : &CoordSysFactoryPrivate::get(*installed);
    const SourceScope scope(*maker);
    return maker->namedFromEpsg(epsg);
}

CoordSystemPtr CoordSysFactoryPrivate::namedFromEpsg(int epsg) const
{
    const CoordSystemPtr catalogued = cataloguedEpsg(epsg, epsg);
    const CoordSystemPtr cs = catalogued ? catalogued : unnamedFromEpsg(epsg);
    cs->setDescription(nameOfCode(epsg));
    cs->setEpsg(epsg);
    return cs;
}

/// From the catalogue's entry of a code (\p epsg or that of its horizontal part); null when there is none.
/// One with an affine transformation is not the code's projection: the database makes that. Where MapInfo's
/// ellipsoid is not quite the code's (Xian 1980: 19 mm), the code's own plane counts, as it does in
/// transformations.
CoordSystemPtr CoordSysFactoryPrivate::cataloguedEpsg(int entryCode, int epsg) const
{
    // Entries without a code carry a negative one, which no caller may find them by.
    const CoordSystemPtr entry = entryCode > 0 ? m_mapinfo->systemOfCode(entryCode) : nullptr;
    if (!entry || hasAffine(entry))
        return nullptr;
    const CoordSystemPtr cs = privateOf(*entry).duplicate();
    CoordSystemPrivate &own = privateOf(*cs);
    const CrsDefinitionPtr coded = entryCode == epsg ? privateOf(*entry).codedIdentity() : nullptr;
    cs->setSourceParameters({CoordSystem::Epsg, QString::number(epsg)});
    if (coded)
        own.setIdentity(coded);
    const CrsDefinitionPtr identity = own.identity();
    if (identity && identity->kind() == CrsKind::Projected &&
        std::fabs(identity->semiMinorM() - cs->getSemiMinor()) > ellipsoidToleranceM)
        if (const std::shared_ptr<const ProjOperation> plane = identity->plane())
            own.setPlane(plane);
    return cs;
}

/// From the database. PROJ text does not carry every method and every direction of axes; where it fails, the
/// system converts by itself.
CoordSystemPtr CoordSysFactoryPrivate::unnamedFromEpsg(int epsg) const
{
    const CrsDefinitionPtr identity = CrsDefinition::ofCode(epsg);
    if (identity && identity->isDemotedTo2D())
        if (const CoordSystemPtr catalogued = cataloguedEpsg(identity->horizontalCode(), epsg))
            return catalogued;
    return unnamedFromCode(epsg, identity);
}

CoordSystemPtr CoordSysFactoryPrivate::unnamedFromCode(int epsg, const CrsDefinitionPtr &identity)
{
    const QString code = QStringLiteral("EPSG:%1").arg(epsg);
    QString proj = ProjLibMetadata().projStringForCrs(epsg, ProjLibMetadata::EPSG);
    LOG_DEBUG(proj);
    if (!identity || !identity->isHorizontal())
        throwWithoutPlane(code);
    if (identity->isDemotedTo2D())
        proj = identity->projText();
    const bool sameAxes = identity->hasEastNorthAxes() || proj.contains(QLatin1String("+axis="));
    try {
        const CoordSystemPtr cs = proj.isEmpty() ? fromIdentity(identity) : unnamedFromProj(proj);
        if (!sameAxes && !cs->isLatLong())
            privateOf(*cs).setPlane(identity->plane());
        cs->setSourceParameters({CoordSystem::Epsg, QString::number(epsg)});
        privateOf(*cs).setIdentity(identity);
        return cs;
    } catch (const std::exception &e) {
        LOG_DEBUG(QString::fromUtf8(e.what()));
        throw ProjException(CoordSysTexts::tr("Ошибка инициализации проекции: %1").arg(code),
                            Error::Code::UnknownCode);
    }
}

} // namespace nivora::cs
