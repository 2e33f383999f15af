#pragma once

#include <coordsys/CoordSystemTypes.h>
#include <platform/Utils.h>

#include <QList>
#include <QMap>
#include <QStringList>

#include <memory>

namespace nivora::cs {

/// Questions to the PROJ database about systems known by authority and code. Stateless; thread-safe.
/// Rectangles are longitude and latitude in degrees, x first; a negative width crosses the 180th meridian.
class NIVORA_CS_EXPORT ProjLibMetadata
{
public:
    /// The authority "EPSG".
    static const QString EPSG;

    /// Longitude and latitude, or a plane.
    enum class Kind : int { Geographic = 0, Projected = 1 };
    /// What the database tells of a system.
    struct ProjectionInfo
    {
        QString id;                   ///< "EPSG:4326"
        QString name;                 ///< as the authority has it
        Kind kind = Kind::Geographic; ///< what its coordinates are
        QRectF rect;                  ///< WGS 84 area of use, null when unknown
    };
    /// From the name of an area of use to the systems used there.
    using ProjectionCatalog = QMap<QString, QList<ProjectionInfo>>;

    /// Each of these throws ProjException for a code that the authority does not have.
    QString nameCrs(int code, const QString &auth) const;
    /// PROJ text; that of a projected system lacks "+type=crs" (a blank stays), others keep it.
    QString projStringForCrs(int code, const QString &auth) const;
    /// WKT 2:2015, simplified.
    QString wktStringForCrs(int code, const QString &auth) const;
    /// Area of use, null when PROJ has none.
    QRectF rectWgs84ForCrs(int code, const QString &auth) const;

    /// EPSG code of the system that the text describes, CoordSystem::EPSG_UNDEFINDED when none matches or the
    /// search is cancelled. What has no code for CoordSystem::epsg() has none here: a bare ellipsoid states
    /// no datum, WGS 84's alone stands for one. Text that is no CRS is tried again as one and then only
    /// candidates of at least 70 % count. Costs up to 0.4 s. Throws ProjException for text that PROJ cannot
    /// read.
    int epsgForProjString(const std::shared_ptr<nivora::concurrent::ProgressHandler> &progress,
                          const QString &projString) const;
    int epsgForProjString(const QString &projString) const;

    /// The authorities that the database knows.
    QStringList authNames() const;
    /// All geographic and projected systems of an authority; others are logged and left out.
    ProjectionCatalog listProjections(const QString &auth) const;
};

} // namespace nivora::cs
