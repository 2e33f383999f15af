#include <coordsys/CoordSysFactory.h>

#include "CoordSysFactory_p.h"
#include <coordsys/ProjectionParamsManager.h>

#include <QReadLocker>
#include <QWriteLocker>

// What hosts see of the factory, and the one that they installed.

namespace nivora::cs {
namespace {

struct Installed
{
    std::shared_ptr<CoordSysFactory> factory;
    QReadWriteLock lock; ///< guards factory
};

/// Never destroyed: at the end of the process other threads may still ask for the default.
Installed &installed()
{
    static Installed &made = *new Installed;
    return made;
}

std::shared_ptr<const CatalogueSource> installedDefault()
{
    const std::shared_ptr<CoordSysFactory> factory = CoordSysFactory::defaultCoordSysFactory();
    return factory ? std::shared_ptr<const CatalogueSource>(factory, &CoordSysFactoryPrivate::get(*factory))
                   : nullptr;
}

} // namespace

CoordSysFactory::CoordSysFactory(const QDir &systemDir, const QDir &userDir, const QString &language)
    : d(std::make_unique<CoordSysFactoryPrivate>(systemDir, userDir, language))
{
    setDefaultCatalogues(installedDefault);
}

CoordSysFactory::CoordSysFactory(const QString &systemDir, const QString &userDir, const QString &language)
    : CoordSysFactory(QDir(systemDir), QDir(userDir), language)
{}

CoordSysFactory::~CoordSysFactory() = default;

CatalogueScope::CatalogueScope(const CoordSysFactory &factory)
    : d(std::make_unique<SourceScope>(CoordSysFactoryPrivate::get(factory)))
{}

CatalogueScope::~CatalogueScope() = default;

std::shared_ptr<CoordSysFactory> CoordSysFactory::defaultCoordSysFactory()
{
    const QReadLocker lock(&installed().lock);
    return installed().factory;
}

void CoordSysFactory::setDefaultCoordSysFactory(std::shared_ptr<CoordSysFactory> factory)
{
    const QWriteLocker lock(&installed().lock);
    installed().factory = std::move(factory); // releases the previous one under the lock
}

bool CoordSysFactory::initCoordSystemEnvironment() { return d->initCoordSystemEnvironment(); }

void CoordSysFactory::clearEnvironment() { d->clearEnvironment(); }

QString CoordSysFactory::language() const { return d->m_language; }

QDir CoordSysFactory::resourceDir() const { return d->m_resourceDir; }

std::shared_ptr<CoordSysRect> CoordSysFactory::coordSysRect() const { return d->m_coordSysRect; }

std::shared_ptr<ProjectionParamsManager> CoordSysFactory::projectionParamsManager() const
{
    return d->m_params;
}

std::shared_ptr<MapinfoCoordSystem> CoordSysFactory::mapinfoCoordSystem() const { return d->m_mapinfo; }

std::shared_ptr<UserCoordSystem> CoordSysFactory::userCoordSystem() const { return d->m_user; }

CoordSystemPtr CoordSysFactory::latLongWgs84CoordSystem() const { return d->latLongWgs84CoordSystem(); }

CoordSystemPtr CoordSysFactory::LatLongCoordSystem() const { return d->LatLongCoordSystem(); }

CoordSystemPtr CoordSysFactory::currentCoordSystem() const { return d->currentCoordSystem(); }

void CoordSysFactory::setCurrentCoordSystem(const CoordSystemPtr &cs) { d->setCurrentCoordSystem(cs); }

LinearUnit CoordSysFactory::unitById(LinearUnit::MIUnitCode code) const
{
    const MIUnitConvParam *unit = d->m_params->unitByID(code, std::nothrow);
    return unit ? LinearUnit(*unit) : LinearUnit();
}

LinearUnit CoordSysFactory::areaUnitById(LinearUnit::MIUnitCode code) const
{
    const MIAreaConvParam *unit = d->m_params->areaUnitByID(code, std::nothrow);
    return unit ? LinearUnit(*unit) : LinearUnit();
}

CoordSystemPtr CoordSysFactory::createFromProj(const QString &proj) const { return d->createFromProj(proj); }

CoordSystemPtr CoordSysFactory::createWithoutDescription(const QString &prj) const
{
    return d->createWithoutDescription(prj);
}

CoordSystemPtr CoordSysFactory::createFromPrj(const QString &prj) const { return d->createFromPrj(prj); }

CoordSystemPtr CoordSysFactory::createFromEpsg(int epsg) const { return d->createFromEpsg(epsg); }

CoordSystemPtr CoordSysFactory::createFromWkt(const QString &wkt) const { return d->createFromWkt(wkt); }

CoordSystemPtr CoordSysFactory::createFromTaggedString(const QString &text) const
{
    return d->createFromTaggedString(text);
}

CoordSystemPtr CoordSysFactory::createNonEarth(int unitCode, QRectF bounds) const
{
    return d->createNonEarth(unitCode, bounds);
}

CoordSystemPtr CoordSysFactory::createFromOracleSRID(int srid) const { return d->createFromOracleSRID(srid); }

CoordSystemPtr CoordSysFactory::resetRectCsToDefault(const CoordSystemPtr &cs) const
{
    return d->resetRectCsToDefault(cs);
}

QString CoordSysFactory::nameOfCode(int epsg) const { return d->nameOfCode(epsg); }

} // namespace nivora::cs
