#pragma once

#include <coordsys/CoordSystemTypes.h>

#include <QRectF>
#include <QString>
#include <QStringList>

namespace nivora::cs {

/// What is known of a coordinate system, for people to read: a plain value, independent of the system. What
/// is not known is empty (texts), null (rectangle) or 0 (lengths): nothing here is guessed.
/// When the system has an EPSG code (CoordSystem::epsg()) the facts are those of the database's system of
/// that code, else those of the definition.
struct NIVORA_CS_EXPORT SystemInfo
{
    /// What its coordinates are.
    enum class Kind {
        Unknown,
        Geographic,
        RotatedGeographic, ///< longitude and latitude about another pole
        Projected,
        Local, ///< a plan without a place on the earth
    };

    Kind kind = Kind::Unknown;                    ///< of the horizontal part
    QString name;                                 ///< CoordSystem::description()
    int epsg = CoordSystemTypes::EPSG_UNDEFINDED; ///< CoordSystem::epsg()
    /// CoordSystem::baseCode(): the system is that one moved by an affine transformation.
    int baseCode = CoordSystemTypes::EPSG_UNDEFINDED;
    /// The registry's identifier, "EPSG:32637" or "ESRI:102100"; empty without one.
    QString identifier;
    bool isDeprecated = false; ///< withdrawn from the registry

    /// Area of use in words, English as in the database.
    QString areaName;
    /// Area of use, degrees on WGS 84, x first; right() exceeds 180 when it crosses the 180th meridian.
    QRectF area;
    /// The part of the area's centre that lies within -180 to 180.
    QPointF areaCentre() const;

    QString datum;                  ///< its name
    QString ellipsoid;              ///< its name
    double semiMajorM = 0.0;        ///< metres
    double inverseFlattening = 0.0; ///< 0 for a sphere
    QString primeMeridian;          ///< its name
    double primeMeridianDeg = 0.0;  ///< from Greenwich
    QString method;                 ///< of the projection, "Transverse Mercator"
    QString unitName;               ///< of the coordinates, as the definition has it
    double metresPerUnit = 0.0;     ///< of the coordinates; 0 for angles

    /// Sentences (in the language of the installed translation) on what the library read into the
    /// definition or left out of it.
    QStringList assumptions;
};

/// Takes some microseconds more than CoordSystem::description() and epsg(), which may search. Never throws
/// for a system that a factory made. Thread-safe.
NIVORA_CS_EXPORT SystemInfo systemInfo(const CoordSystem &cs);

/// The kind in words, for people: "Прямоугольная", … Empty for an unknown one.
NIVORA_CS_EXPORT QString kindText(SystemInfo::Kind kind);

/// Notations that a system can be written in.
enum class SystemFormat {
    Wkt1,     ///< OGC WKT 1 as GDAL writes it, on one line
    Wkt2,     ///< WKT 2 of 2019
    Esri,     ///< WKT 1 with the names of .prj files, on one line
    ProjJson, ///< PROJJSON
    Proj,     ///< PROJ text
    Mapinfo,  ///< CoordSys string, clauses included
};

/// The system in a notation, fit to be saved: with its name and, where it has one, its EPSG code. A shift to
/// WGS 84 that the definition states is kept by all but Esri, which has no place for it; an affine
/// transformation by Mapinfo and, for planes, by Wkt2 and ProjJson (as a system derived by EPSG's method
/// 9624); explicit bounds by Mapinfo alone. Throws std::runtime_error "… не записывается …" when the notation
/// has no form for the system, also for an affine transformation that would be lost, and as
/// CoordSystem::projStr() and prjStr(). Thread-safe.
NIVORA_CS_EXPORT QString exportSystem(const CoordSystem &cs, SystemFormat format);

} // namespace nivora::cs
