#pragma once

#include <coordsys/CoordSystemTypes.h>

#include <QDir>
#include <QVector>

#include <memory>
#include <new>
#include <optional>

namespace nivora::cs {

class CatalogueToken;
class ProjectionParamsManager;
struct PrjText;
struct TABProjInfo_t;

/// What coordinate systems and the text functions ask of whoever owns the catalogues, which is the factory.
/// Thread-safe once loaded.
class CatalogueSource
{
public:
    virtual ~CatalogueSource();

    /// Projections, ellipsoids, datums and units; empty before start-up.
    virtual std::shared_ptr<ProjectionParamsManager> projectionParamsManager() const = 0;
    /// Where the catalogue files lie.
    virtual QDir resourceDir() const = 0;
    /// The language of the catalogue files, "ru" or "en".
    virtual QString language() const = 0;

    /// The bounds of a system in its own unit, computed anew.
    virtual QRectF boundsOf(CoordSystem *cs) const = 0;
    /// The same without a search of the PROJ database for the system's area of use; boundsOf() unless the
    /// source says otherwise.
    virtual QRectF boundsWithoutSearch(CoordSystem *cs) const { return boundsOf(cs); }
    /// The systems whose coordinates must be cropped, made on first call.
    virtual QVector<CoordSystemPtr> systemsToCrop() const = 0;
    /// Longitude and latitude on WGS 84, null before start-up.
    virtual CoordSystemPtr latLongWgs84CoordSystem() const = 0;
    /// Longitude and latitude on no particular datum, null before start-up.
    virtual CoordSystemPtr LatLongCoordSystem() const = 0;
    /// The name that goes with an EPSG code: that of the first entry of the MapInfo catalogue with the code,
    /// else the database's. Throws ProjException for a code that neither knows.
    virtual QString nameOfCode(int epsg) const = 0;
    /// The CoordSys string of the first entry of the MapInfo catalogue with an EPSG code; empty without one.
    virtual QString prjOfCode(int epsg) const;
    /// The text of an EPSG system that the catalogue lacks, proved when the table of them was made; none when
    /// the table lacks it too.
    virtual std::optional<PrjText> writtenText(int epsg) const;
    /// Of some codes the one whose entry in the MapInfo catalogue has this record (clauses left aside), the
    /// first in the catalogue when several have; else EPSG_UNDEFINDED.
    virtual int codeOfRecord(const TABProjInfo_t &record, const QVector<int> &codes) const = 0;
    /// The codes of the MapInfo catalogue's entries that have this record but for rounded figures (the sixth
    /// decimal of a degree, the seventh figure of other numbers), in the catalogue's order. None unless the
    /// source says otherwise.
    virtual QVector<int> codesNearRecord(const TABProjInfo_t &record) const;
    /// The description that the user gave to a system, empty when there is none.
    virtual QString userDescription(const CoordSystem &cs) const = 0;

    /// What the systems made here find these catalogues by later, as long as this lives; null when they are
    /// to ask the installed default instead.
    virtual std::shared_ptr<const CatalogueToken> token() const;

    /// The creators: what CoordSysFactory says of each.
    virtual CoordSystemPtr createFromProj(const QString &proj) const = 0;
    /// See CoordSysFactory::createFromPrj.
    virtual CoordSystemPtr createFromPrj(const QString &prj) const = 0;
    /// See CoordSysFactory::createWithoutDescription.
    virtual CoordSystemPtr createWithoutDescription(const QString &prj) const = 0;
    /// See CoordSysFactory::createFromEpsg.
    virtual CoordSystemPtr createFromEpsg(int epsg) const = 0;
    /// See CoordSysFactory::createFromWkt.
    virtual CoordSystemPtr createFromWkt(const QString &wkt) const = 0;
    /// See CoordSysFactory::createFromOracleSRID.
    virtual CoordSystemPtr createFromOracleSRID(int srid) const = 0;
    /// See CoordSysFactory::createNonEarth.
    virtual CoordSystemPtr createNonEarth(int unitCode, QRectF bounds) const = 0;
};

/// Makes a source the active one of this thread for the life of the object; scopes nest. A factory opens one
/// in each of its calls, so it works before it is installed and two factories do not see each other. The
/// source must outlive the scope.
class SourceScope
{
public:
    /// Opens the scope on this thread.
    explicit SourceScope(const CatalogueSource &source);
    ~SourceScope();
    SourceScope(const SourceScope &) = delete;
    SourceScope &operator=(const SourceScope &) = delete;

private:
    const CatalogueSource *m_outer;
};

/// The source of the innermost scope of this thread, else the installed default factory. A system opens a
/// scope of its own factory's where it asks catalogues outside any. Thread-safe.
/// Throws std::logic_error "Не проинициализированы КС" when there is neither.
std::shared_ptr<const CatalogueSource> activeCatalogues();
/// The same, null when there is neither.
std::shared_ptr<const CatalogueSource> activeCatalogues(std::nothrow_t);

/// How activeCatalogues() reaches the installed default. Set once by the owner of the default; start-up only.
using DefaultCatalogues = std::shared_ptr<const CatalogueSource> (*)();
void setDefaultCatalogues(DefaultCatalogues lookUp);

} // namespace nivora::cs
