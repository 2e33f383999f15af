#pragma once

#include <coordsys/CoordSystemTypes.h>
#include <coordsys/CrsParts_p.h>
#include <coordsys/EngineStep_p.h>

#include <QString>

#include <memory>
#include <optional>

namespace nivora::cs {

class SystemIdentity;
using SystemIdentityPtr = std::shared_ptr<const SystemIdentity>;

/// Who a system is: PROJ's object of the definition that it was made from, without a vertical part, and what
/// that object answers for itself. PROJ text and CoordSys text are exports and may lose any of it. Immutable;
/// thread-safe (takes the PROJ lock).
class SystemIdentity
{
public:
    /// From a text that PROJ reads as a CRS: "EPSG:4326", WKT, PROJ text with "+type=crs". Null when it is
    /// none.
    static SystemIdentityPtr from(const QString &definition);
    /// The database's system of an EPSG code; null when it has none. PROJ reads numbers of ESRI's as EPSG's.
    static SystemIdentityPtr ofCode(int epsg);
    /// From what a system was made of; by its spatial reference where the source is no text for PROJ.
    static SystemIdentityPtr of(const CoordSystemTypes::SourceData &source, void *srs);

    CrsKind kind() const { return m_kind; }
    /// False for what x and y alone do not describe: geocentric systems, heights, times.
    bool hasPlane() const { return m_kind != CrsKind::Other; }
    /// The definition had a vertical part.
    bool isFlattened() const { return m_flattened; }
    /// What PROJ makes the system from: the text as given, or WKT 2 of its horizontal part.
    const QString &definition() const { return m_definition; }
    /// The name at the root of the text, empty when the text leaves it open.
    const QString &name() const { return m_name; }
    /// The EPSG code at the root of the text when the database's system of that code is this one, else
    /// EPSG_UNDEFINDED. An ESRI code counts by its number.
    int ownCode() const;
    /// The system under no code when its text states one of another EPSG system; else null.
    SystemIdentityPtr withoutForeignCode() const;
    /// The EPSG code of the horizontal part alone.
    int partCode() const;
    /// True when both axes run as a map's do, one to the east and one to the north.
    bool runsEastAndNorth() const;
    /// WKT 2 of the horizontal part.
    QString wkt() const;
    /// PROJ text of the horizontal part, ready to convert; empty when PROJ has none.
    QString projText() const;
    /// True when the other definition has the same plane.
    bool hasPlaneOf(const SystemIdentity &other) const;

    /// From longitude/latitude (degrees from Greenwich, own datum) to the plane, by the system itself. Null
    /// for geographic systems, and when PROJ knows no way.
    std::shared_ptr<const EngineStep> plane() const;
    /// PROJ gives an object also for methods that it cannot compute: true when the middle of the area of use,
    /// or the origin without one, has a place in the plane.
    bool converts(const EngineStep &plane) const;
    double semiMinorM() const;

    /// The horizontal part; null without one. Borrowed, for use under the PROJ lock.
    PJ *crs() const { return m_crs.get(); }
    /// An object of its own, equal to crs().
    PjHandle copyOfCrs() const;

private:
    SystemIdentity(const QString &definition, PjHandle root);

    QString m_definition;
    QString m_name;
    CrsKind m_kind = CrsKind::Other;
    bool m_flattened = false;
    int m_statedCode = CoordSystemTypes::EPSG_UNDEFINDED; ///< as the text has it
    mutable std::optional<bool> m_isOwnCode;              ///< under the PROJ lock
    PjHandle m_crs;
};

} // namespace nivora::cs
