#pragma once

#include <coordsys/CoordSystemTypes.h>
#include <coordsys/LinearUnit.h>
#include <coordsys/UserInput.h>

#include <QDir>
#include <QStringList>
#include <QVector>

#include <array>
#include <memory>

namespace nivora::cs {

class CoordSysFactoryPrivate;
class CoordSysRect;
class MapinfoCoordSystem;
class ProjectionParamsManager;
class SourceScope;
class UserCoordSystem;
struct MIUnitConvParam;

/// Owns the catalogues and the standard coordinate systems, and makes systems from text and codes.
/// A host makes one, calls initCoordSystemEnvironment() on its start-up thread, and installs it with
/// setDefaultCoordSysFactory(). A factory also works before it is installed.
/// Threads: creators and accessors may run together after start-up; initCoordSystemEnvironment() and
/// clearEnvironment() are start-up and shut-down only: no creator may run on another thread meanwhile.
/// Ownership: catalogues, store and systems are shared and may outlive the factory. The MapInfo catalogue is
/// then empty; systems and transformations go on converting. What systems ask of catalogues later (bounds,
/// units, names) comes from the factory that made them while it lives, then from the installed default. At
/// the end of the process the default is not destroyed.
class NIVORA_CS_EXPORT CoordSysFactory
{
public:
    /// Records its arguments and logs them; nothing is read. \p systemDir holds the catalogues, \p userDir
    /// the user's own systems, \p language ("ru", "en") selects the catalogue files.
    CoordSysFactory(const QDir &systemDir, const QDir &userDir, const QString &language);
    CoordSysFactory(const QString &systemDir, const QString &userDir, const QString &language);
    ~CoordSysFactory();
    CoordSysFactory(const CoordSysFactory &) = delete;
    CoordSysFactory &operator=(const CoordSysFactory &) = delete;

    /// Sets LC_NUMERIC to "C" (construct QCoreApplication before), prepares PROJ and GDAL, loads the
    /// catalogues and makes the standard systems. False when the projection catalogue cannot be opened or is
    /// damaged (logged with line and column) or the MapInfo catalogue cannot be opened (logged; what was
    /// loaded before stays). Throws std::logic_error when PROJ has no database, and as createFromPrj() when
    /// the projection catalogue lacks the datums 0 and 104. May be called again, also after
    /// clearEnvironment(): the factory then has new catalogues, and those handed out before stay as they are
    /// for their holders.
    bool initCoordSystemEnvironment();
    /// Empties the bounds, MapInfo and projection catalogues, for their holders too; the standard systems and
    /// the user store stay.
    void clearEnvironment();

    /// The installed default, empty before setDefaultCoordSysFactory(). Thread-safe.
    static std::shared_ptr<CoordSysFactory> defaultCoordSysFactory();
    /// Installs a default (or none) and releases the previous one. Thread-safe.
    static void setDefaultCoordSysFactory(std::shared_ptr<CoordSysFactory> factory);

    /// The language of the catalogue files, "ru" or "en".
    QString language() const;
    /// Where the catalogue files lie.
    QDir resourceDir() const;
    /// Bounds of systems; empty before start-up.
    std::shared_ptr<CoordSysRect> coordSysRect() const;
    /// Projections, ellipsoids, datums and units; empty before start-up.
    std::shared_ptr<ProjectionParamsManager> projectionParamsManager() const;
    /// The named systems; empty before start-up.
    std::shared_ptr<MapinfoCoordSystem> mapinfoCoordSystem() const;
    /// The user's own systems.
    std::shared_ptr<UserCoordSystem> userCoordSystem() const;
    /// Longitude and latitude on WGS 84, null before start-up.
    CoordSystemPtr latLongWgs84CoordSystem() const;
    /// Longitude and latitude on no particular datum, null before start-up.
    CoordSystemPtr LatLongCoordSystem() const;
    /// What a host made current: kept for it, used by nothing here. Thread-safe.
    CoordSystemPtr currentCoordSystem() const;
    /// Replaces it; null takes it away. Thread-safe.
    void setCurrentCoordSystem(const CoordSystemPtr &cs);

    /// A copy of the catalogue's unit, an invalid one for an unknown code. Never throws.
    LinearUnit unitById(LinearUnit::MIUnitCode code) const;
    /// The same for area units.
    LinearUnit areaUnitById(LinearUnit::MIUnitCode code) const;

    /// \name Creators. No half-made object is left behind when one throws.
    /// @{
    /// All of them throw std::runtime_error "КС не имеет плановой части: …" for geocentric systems and
    /// systems of height alone; a vertical part besides a plane is left aside (the source text stays).

    /// From a PROJ string. Throws std::invalid_argument for empty text, std::logic_error when it does not
    /// begin with "+proj=", std::runtime_error when GDAL refuses it or it is no system (a shift, a pipeline
    /// without a plane), ProjException when PROJ refuses it.
    CoordSystemPtr createFromProj(const QString &proj) const;
    /// From a CoordSys string understood to its last token, without looking for its name: see assumptions().
    /// Throws std::invalid_argument for empty text, std::logic_error with token and place for what is not
    /// understood, std::runtime_error when GDAL refuses it or reads something else.
    CoordSystemPtr createWithoutDescription(const QString &prj) const;
    /// From a CoordSys string, named from the MapInfo catalogue or the user's.
    CoordSystemPtr createFromPrj(const QString &prj) const;
    /// From an EPSG code: the catalogue's system when it has the code, else the PROJ database's.
    /// Throws ProjException for an unknown code, numbers of other registries (ESRI's 102100) too, and for one
    /// that no coordinates can be computed in.
    CoordSystemPtr createFromEpsg(int epsg) const;
    /// From WKT 1, WKT 2 or ESRI's. Name and datum stay those of the text, and so does the code unless it is
    /// that of another system. Throws std::runtime_error for empty or unusable text, ProjException when PROJ
    /// refuses what GDAL took.
    CoordSystemPtr createFromWkt(const QString &wkt) const;
    /// From "proj:", "proj4:", "wkt:", "epsg:" or "prj:" and the text; text without a tag is a CoordSys
    /// string.
    CoordSystemPtr createFromTaggedString(const QString &text) const;
    /// From what a person writes for a system, in whichever notation it is, blanks around it aside:
    /// - the notations above, with or without their tags ("oracle:" too): a bare number is an EPSG code, PROJ
    ///   text may begin with any term and lack the signs, CoordSys text may lack that word;
    /// - a code in any letter case: "EPSG:4326", "EPSG::4326", "epsg 4326", "+init=epsg:4326", "SRID=4326"
    ///   (a geometry behind it is left aside), OGC URNs and URLs, "OGC:CRS84", "CRS:84", and the other
    ///   authorities of the PROJ database ("ESRI:102100", "IGNF:LAMB93"); of "A:n+B:m" and the compound URNs
    ///   the horizontal part;
    /// - PROJJSON;
    /// - the name of one of the user's own systems, else a name or alias of the PROJ database
    ///   ("ETRS89 / UTM zone 32N", "NAD83"), else a name of the catalogue in any of its languages, letter
    ///   case aside; blanks and punctuation count only where they tell systems apart;
    /// - a line of a catalogue file: "name\p4326", 1, 104;
    /// - "@FILE": what a .prj, .qpj or .wkt file holds in any of these notations, the CoordSys clause of a
    ///   .mif, the system of a .tab (by the header of the .map beside it). UTF-8, UTF-16 or the locale's
    ///   encoding; at most 1 MB.
    /// The source is Epsg when the system is one of EPSG's, else Wkt with the database's WKT 2 of 2019 in
    /// which the code stands; notations of which the tags above tell keep their own type and text. x is
    /// longitude or easting, whatever order the authority has for the system. Throws std::invalid_argument
    /// for empty text, else std::runtime_error that says what the text was taken for and what is nearest, or
    /// lists the systems that it may mean. Up to 0.3 s for a text that means nothing.
    CoordSystemPtr createFromUserInput(const QString &text) const;
    /// The same, with what was assumed and left aside.
    UserInput readUserInput(const QString &text) const;
    /// A plan without a place on the earth. Throws UnknownUnitException.
    CoordSystemPtr createNonEarth(int unitCode, QRectF bounds) const;
    /// By Oracle Spatial's number, through "OracleSRID.xml". Throws std::runtime_error for an unknown number
    /// or a file that cannot be opened.
    CoordSystemPtr createFromOracleSRID(int srid) const;
    /// A clone with the bounds that the catalogue or the rule gives, the affine transformation, whose image
    /// they are, and the code that was set included. Throws std::logic_error "Не могу задать пустые границы"
    /// when there are none.
    CoordSystemPtr resetRectCsToDefault(const CoordSystemPtr &cs) const;
    /// @}

    /// Installs an affine transformation: \p params is the unit's name and A to F (x' = A x + B y + C,
    /// y' = D x + E y + F) as text. An unknown unit name counts as no unit. Throws like setAffineParamsArray.
    static void setAffineParams(CoordSystem &cs, const QStringList &params);
    /// The two systems whose coordinates must be cropped, made by the active factory on first call and kept
    /// for the life of the process. Thread-safe.
    static QVector<CoordSystemPtr> cropCoordSystems();

    /// The name that goes with an EPSG code: that of the first entry of the MapInfo catalogue with the code,
    /// else the database's. Throws ProjException for a code that neither knows.
    QString nameOfCode(int epsg) const;

private:
    friend class CoordSysFactoryPrivate;
    const std::unique_ptr<CoordSysFactoryPrivate> d;
};

/// While one lives, its factory is the one whose catalogues this thread asks wherever none is named, in place
/// of the installed default: texts, units, calibration. Scopes nest. For hosts with a factory that is not
/// installed; calls of a factory open one of their own. The factory must outlive it.
class NIVORA_CS_EXPORT CatalogueScope
{
public:
    /// Opens the scope on this thread, which must be the one that ends it.
    explicit CatalogueScope(const CoordSysFactory &factory);
    ~CatalogueScope();
    CatalogueScope(const CatalogueScope &) = delete;
    CatalogueScope &operator=(const CatalogueScope &) = delete;

private:
    const std::unique_ptr<SourceScope> d;
};

/// Installs the affine transformation whose matrix is m11, m12, m21, m22, dx, dy, in this order. With no
/// unit: degree for a geographic system, else the system's own unit when it can be named, else none, whatever
/// unit an earlier transformation had. Throws std::invalid_argument "Вырожденное аффинное преобразование" for
/// a singular one (isSingularAffine), which leaves the system as it was.
NIVORA_CS_EXPORT void setAffineParamsArray(CoordSystem &cs, const MIUnitConvParam *unit,
                                           const std::array<double, 6> &params);

} // namespace nivora::cs
