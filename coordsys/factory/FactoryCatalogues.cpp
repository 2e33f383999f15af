#include "CoordSysFactory_p.h"

#include "CatalogueRevision_p.h"
#include "CoordSysTexts_p.h"
#include "CoordSystemCache_p.h"
#include "MapinfoCoordSystem_p.h"
#include "WrittenTable_p.h"
#include <coordsys/CoordSysEnvironment.h>
#include <coordsys/CoordSysRect.h>
#include <coordsys/CoordSystem.h>
#include <coordsys/MapHeaderCoordsysConverter.h>
#include <coordsys/MapinfoCoordSystem.h>
#include <coordsys/ProjLibMetadata.h>
#include <coordsys/ProjectionParamsManager.h>
#include <coordsys/UserCoordSystem.h>
#include <platform/Logger.h>

#include <QReadLocker>
#include <QWriteLocker>

#include <clocale>
#include <exception>
#include <optional>

namespace nivora::cs {
namespace {

const QLatin1String latLongText("Earth Projection 1, 0");
const QLatin1String latLongWgs84Text("Earth Projection 1, 104");

/// The text of an exception and of those it was thrown around, outermost first.
QString nestedText(const std::exception &e)
{
    QString text = QString::fromUtf8(e.what());
    try {
        std::rethrow_if_nested(e);
    } catch (const std::exception &inner) {
        text += QStringLiteral(": ") + nestedText(inner);
    } catch (...) {
    }
    return text;
}

/// A catalogue that cannot be loaded ends start-up with a log line, not with an exception.
template <typename Load> bool loaded(Load &&load)
{
    try {
        return load();
    } catch (const std::exception &e) {
        LOG_ERROR(nestedText(e));
        return false;
    }
}

} // namespace

CoordSysFactoryPrivate::CoordSysFactoryPrivate(const QDir &systemDir, const QDir &userDir,
                                               const QString &language)
    : m_resourceDir(systemDir)
    , m_language(language)
    , m_made(std::make_unique<CoordSystemCache>())
    , m_written(std::make_unique<WrittenTable>(systemDir))
    , m_guard(std::make_shared<FactoryGuard>(this))
{
    makeCatalogues();
    m_user = std::make_shared<UserCoordSystem>(userDir);
    m_user->setMaker([guard = m_guard](const CoordSystemTypes::SourceData &source) {
        const QReadLocker alive(&guard->alive);
        std::optional<SourceScope> scope;
        if (guard->factory)
            scope.emplace(*guard->factory);
        return UserCoordSystem::csStringToInternalNoDescription(source);
    });
    if (!m_resourceDir.exists())
        LOG_ERROR(CoordSysTexts::tr("Путь с ресурсами неверен:%1").arg(m_resourceDir.absolutePath()));
    LOG_TRACE(CoordSysTexts::tr("Системные ресурсы КС: %1").arg(systemDir.absolutePath()));
    LOG_TRACE(CoordSysTexts::tr("Пользовательские ресурсы КС: %1").arg(userDir.absolutePath()));
}

CoordSysFactoryPrivate::~CoordSysFactoryPrivate()
{
    // Must not ask for the default factory: it may be destroyed while its lock is held.
    m_mapinfo->clear(); // waits for the background fill, which still builds with this factory
    retireMapinfo();
    const QWriteLocker lock(&m_guard->alive);
    m_guard->factory = nullptr;
    m_guard->codes().clear();
}

/// A catalogue that a holder keeps builds on with this factory while that lives, and compares with the active
/// one.
void CoordSysFactoryPrivate::retireMapinfo()
{
    if (!m_mapinfo)
        return;
    m_mapinfo->stopInternalCache();
    MapinfoCoordSystemPrivate::setOwner(*m_mapinfo, nullptr);
}

/// Each start-up but the first works on new catalogues: those handed out before stay as their holders know
/// them, and a cleared MapInfo catalogue would build nothing any more.
void CoordSysFactoryPrivate::makeCatalogues()
{
    retireMapinfo();
    m_coordSysRect = std::make_shared<CoordSysRect>();
    m_params = std::make_shared<ProjectionParamsManager>();
    m_mapinfo = std::make_shared<MapinfoCoordSystem>([guard = m_guard](const QString &prj) {
        const QReadLocker alive(&guard->alive);
        return guard->factory ? guard->factory->createWithoutDescription(prj) : CoordSystemPtr();
    });
    MapinfoCoordSystemPrivate::setOwner(*m_mapinfo, this);
}

bool CoordSysFactoryPrivate::initCoordSystemEnvironment()
{
    const SourceScope scope(*this);
    std::setlocale(LC_NUMERIC, "C");
    initProjLibEnvironment();
    ++catalogueRevision(); // the engines' resources are others now
    setMitabEnvVariable();
    LOG_INFO(CoordSysTexts::tr("Инициализация координатных систем"));
    if (m_wasStarted) {
        makeStandards();
        makeCatalogues();
    }
    m_wasStarted = true;
    if (!loaded(
            [this] { return m_params->initFromXML(m_resourceDir, m_language) && !m_params->isDamaged(); }))
        return false;
    if (!loaded([this] { return m_mapinfo->loadFromPRJ(m_resourceDir, m_language); }))
        return false;
    m_coordSysRect->openXML(m_resourceDir); // without it bounds follow the rules per projection
    m_user->loadFromFile(true);
    for (const QLatin1String prj : {latLongText, latLongWgs84Text})
        MapHeaderCoordsysConverter().prjStrToTABProjInfo(prj); // throws where a datum is missing
    std::atomic_store(&m_latLong, CoordSystemPtr());
    std::atomic_store(&m_latLongWgs84, CoordSystemPtr());
    m_hasStandards = true;
    m_isCurrentOpen = true;
    return true;
}

/// Null before start-up. Of two threads that make one, the first wins.
CoordSystemPtr CoordSysFactoryPrivate::standard(CoordSystemPtr &kept, const QString &prj) const
{
    CoordSystemPtr known = std::atomic_load(&kept);
    if (known || !m_hasStandards)
        return known;
    const CoordSystemPtr made = createFromPrj(prj);
    return std::atomic_compare_exchange_strong(&kept, &known, made) ? made : known;
}

/// They outlive the catalogues that they are made with.
void CoordSysFactoryPrivate::makeStandards() const
{
    LatLongCoordSystem();
    latLongWgs84CoordSystem();
    currentCoordSystem();
}

CoordSystemPtr CoordSysFactoryPrivate::LatLongCoordSystem() const { return standard(m_latLong, latLongText); }

CoordSystemPtr CoordSysFactoryPrivate::latLongWgs84CoordSystem() const
{
    return standard(m_latLongWgs84, latLongWgs84Text);
}

void CoordSysFactoryPrivate::clearEnvironment()
{
    LOG_INFO(CoordSysTexts::tr("Очистка ресурсов координатных систем"));
    makeStandards();
    m_coordSysRect->clear();
    m_mapinfo->clear();
    m_params->clear();
}

CoordSystemPtr CoordSysFactoryPrivate::currentCoordSystem() const
{
    if (!m_isCurrentOpen)
        return std::atomic_load(&m_current);
    const CoordSystemPtr made = createFromPrj(latLongWgs84Text); // unlocked: it takes other locks
    made->setEpsg(CoordSystem::LAT_LON_EPSG);
    const QWriteLocker lock(&m_lock);
    if (m_isCurrentOpen)
        std::atomic_store(&m_current, made);
    m_isCurrentOpen = false;
    return std::atomic_load(&m_current);
}

void CoordSysFactoryPrivate::setCurrentCoordSystem(const CoordSystemPtr &cs)
{
    const QWriteLocker lock(&m_lock);
    std::atomic_store(&m_current, cs);
    m_isCurrentOpen = false;
}

QRectF CoordSysFactoryPrivate::boundsOf(CoordSystem *cs) const
{
    const SourceScope scope(*this);
    return m_coordSysRect->rect(cs);
}

QRectF CoordSysFactoryPrivate::boundsWithoutSearch(CoordSystem *cs) const
{
    const SourceScope scope(*this);
    return m_coordSysRect->rectWithoutSearch(cs);
}

std::shared_ptr<const CatalogueSource> FactoryGuard::lock() const
{
    alive.lockForRead();
    if (factory)
        return {factory, [self = shared_from_this()](const CatalogueSource *) { self->alive.unlock(); }};
    alive.unlock();
    return nullptr;
}

std::shared_ptr<const CatalogueToken> CoordSysFactoryPrivate::token() const { return m_guard; }

QVector<CoordSystemPtr> CoordSysFactoryPrivate::systemsToCrop() const
{
    const SourceScope scope(*this);
    return CoordSysFactory::cropCoordSystems();
}

QString CoordSysFactoryPrivate::nameOfCode(int epsg) const
{
    const SourceScope scope(*this);
    const CoordSystemPtr entry = epsg > 0 ? m_mapinfo->systemOfCode(epsg) : nullptr;
    return entry ? entry->description() : ProjLibMetadata().nameCrs(epsg, ProjLibMetadata::EPSG);
}

QString CoordSysFactoryPrivate::prjOfCode(int epsg) const { return m_mapinfo->seekByEPSG(epsg); }

std::optional<PrjText> CoordSysFactoryPrivate::writtenText(int epsg) const
{
    return m_mapinfo->seekByEPSG(epsg).isEmpty() ? m_written->text(epsg) : std::nullopt;
}

int CoordSysFactoryPrivate::codeOfRecord(const TABProjInfo_t &record, const QVector<int> &codes) const
{
    const SourceScope scope(*this);
    return m_mapinfo->codeOfRecord(record, codes);
}

QVector<int> CoordSysFactoryPrivate::codesNearRecord(const TABProjInfo_t &record) const
{
    const SourceScope scope(*this);
    return m_mapinfo->codesNearRecord(record);
}

QString CoordSysFactoryPrivate::userDescription(const CoordSystem &cs) const
{
    const SourceScope scope(*this);
    const CoordSystemPtr stored = m_user->storedEqual(cs);
    return stored ? stored->description() : QString();
}

} // namespace nivora::cs
