#pragma once

#include "CatalogueToken_p.h"
#include <coordsys/CoordSysFactory.h>
#include <coordsys/PrjText.h>

#include <QReadWriteLock>

#include <atomic>

namespace nivora::cs {

class CoordSystemCache;
class CrsDefinition;
class WrittenTable;
struct FactoryGuard;

/// What a CoordSysFactory consists of, and what this library asks of it.
class CoordSysFactoryPrivate : public CatalogueSource
{
public:
    CoordSysFactoryPrivate(const QDir &systemDir, const QDir &userDir, const QString &language);
    ~CoordSysFactoryPrivate() override;
    CoordSysFactoryPrivate(const CoordSysFactoryPrivate &) = delete;
    CoordSysFactoryPrivate &operator=(const CoordSysFactoryPrivate &) = delete;

    static const CoordSysFactoryPrivate &get(const CoordSysFactory &factory) { return *factory.d; }

    bool initCoordSystemEnvironment();
    void clearEnvironment();

    QString language() const override { return m_language; }
    QDir resourceDir() const override { return m_resourceDir; }
    std::shared_ptr<ProjectionParamsManager> projectionParamsManager() const override { return m_params; }
    CoordSystemPtr latLongWgs84CoordSystem() const override;
    CoordSystemPtr LatLongCoordSystem() const override;
    CoordSystemPtr currentCoordSystem() const;
    void setCurrentCoordSystem(const CoordSystemPtr &cs);

    CoordSystemPtr createFromProj(const QString &proj) const override;
    CoordSystemPtr createWithoutDescription(const QString &prj) const override;
    CoordSystemPtr createFromPrj(const QString &prj) const override;
    CoordSystemPtr createFromEpsg(int epsg) const override;
    CoordSystemPtr createFromWkt(const QString &wkt) const override;
    CoordSystemPtr createFromTaggedString(const QString &text) const;
    CoordSystemPtr createNonEarth(int unitCode, QRectF bounds) const override;
    CoordSystemPtr createFromOracleSRID(int srid) const override;
    CoordSystemPtr resetRectCsToDefault(const CoordSystemPtr &cs) const;
    CoordSystemPtr namedFromEpsg(int epsg) const;
    static CoordSystemPtr unnamedFromCode(int epsg, const std::shared_ptr<const CrsDefinition> &identity);

    QRectF boundsOf(CoordSystem *cs) const override;
    QRectF boundsWithoutSearch(CoordSystem *cs) const override;
    QVector<CoordSystemPtr> systemsToCrop() const override;
    std::shared_ptr<const CatalogueToken> token() const override;
    QString nameOfCode(int epsg) const override;
    QString prjOfCode(int epsg) const override;
    std::optional<PrjText> writtenText(int epsg) const override;
    int codeOfRecord(const TABProjInfo_t &record, const QVector<int> &codes) const override;
    QVector<int> codesNearRecord(const TABProjInfo_t &record) const override;
    QString userDescription(const CoordSystem &cs) const override;

    QDir m_resourceDir;
    QString m_language;
    std::shared_ptr<CoordSysRect> m_coordSysRect;
    std::shared_ptr<MapinfoCoordSystem> m_mapinfo;
    std::shared_ptr<ProjectionParamsManager> m_params;
    std::shared_ptr<UserCoordSystem> m_user;

private:
    static CoordSystemPtr unnamedFromProj(const QString &proj);
    CoordSystemPtr unnamedFromPrj(const QString &prj) const;
    CoordSystemPtr unnamedFromRecord(const TABProjInfo_t &record, const QString &text) const;
    CoordSystemPtr cataloguedFromPrj(const QString &prj) const;
    CoordSystemPtr namedFromWkt(const QString &wkt) const;
    static CoordSystemPtr definedByWkt(const QString &wkt,
                                       const std::shared_ptr<const CrsDefinition> &identity);
    CoordSystemPtr definedByCode(int epsg) const;
    CoordSystemPtr unnamedFromEpsg(int epsg) const;
    CoordSystemPtr cataloguedEpsg(int entryCode, int epsg) const;
    static void useCrsProjection(CoordSystem &cs, const QString &proj);
    static CoordSystemPtr unnamedFromWkt(const std::shared_ptr<void> &srs,
                                         const std::shared_ptr<const CrsDefinition> &identity);
    static CoordSystemPtr fromIdentity(const std::shared_ptr<const CrsDefinition> &identity);
    static CoordSystemPtr fromPlanetocentric(const CrsDefinition &identity);
    CoordSystemPtr planFromWkt(const std::shared_ptr<void> &srs) const;
    CoordSystemPtr standard(CoordSystemPtr &kept, const QString &prj) const;
    void makeStandards() const;
    void makeCatalogues();
    void retireMapinfo();

    mutable CoordSystemPtr m_latLong; ///< the standard systems: made when asked for, read and set atomically
    mutable CoordSystemPtr m_latLongWgs84;
    mutable CoordSystemPtr m_current;
    mutable std::atomic<bool> m_isCurrentOpen{false}; ///< m_current is still to be made
    std::atomic<bool> m_hasStandards{false};          ///< start-up succeeded once
    mutable QReadWriteLock m_lock;                    ///< one writer of m_current at a time
    bool m_wasStarted = false;
    std::unique_ptr<CoordSystemCache> m_made;
    std::unique_ptr<WrittenTable> m_written;
    /// What the MapInfo catalogue's creator holds instead of `this`.
    std::shared_ptr<FactoryGuard> m_guard;
};

/// What the MapInfo catalogue's creator and the systems hold instead of the factory, since they may outlive
/// it: the factory while it lives, null afterwards. A creation or question holds the lock for reading, the
/// factory's end for writing.
struct FactoryGuard : CatalogueToken, std::enable_shared_from_this<FactoryGuard>
{
    explicit FactoryGuard(const CoordSysFactoryPrivate *owner)
        : factory(owner)
        , alive(QReadWriteLock::Recursive)
    {}

    std::shared_ptr<const CatalogueSource> lock() const override;
    CoordSystemPtr madeFromEpsg(int epsg) const;

    const CoordSysFactoryPrivate *factory;
    mutable QReadWriteLock alive;
};

/// "КС не имеет плановой части: …"
[[noreturn]] void throwWithoutPlane(const QString &text);

} // namespace nivora::cs
