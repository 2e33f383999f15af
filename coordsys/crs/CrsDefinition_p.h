#pragma once

#include "CrsParts_p.h"
#include "ProjOperation_p.h"
#include <coordsys/CoordSystemTypes.h>

#include <QRectF>
#include <QString>
#include <QTransform>

#include <memory>
#include <optional>

namespace nivora::cs {

class CrsDefinition;
using CrsDefinitionPtr = std::shared_ptr<const CrsDefinition>;

/// Who a system is: PROJ's object of the definition that it was made from, without a vertical part, and what
/// that object answers for itself. PROJ text and CoordSys text are exports and may lose any of it. Immutable;
/// thread-safe (takes the PROJ lock).
class CrsDefinition
{
public:
    /// From a text that PROJ reads as a CRS: "EPSG:4326", WKT, PROJ text with "+type=crs". Null when it is
    /// none.
    static CrsDefinitionPtr from(const QString &definition);
    /// The database's system of an EPSG code; null when it has none. PROJ reads numbers of ESRI's as EPSG's.
    static CrsDefinitionPtr ofCode(int epsg);
    /// From what a system was made of; by its spatial reference where the source is no text for PROJ.
    static CrsDefinitionPtr of(const CoordSystemTypes::SourceData &source, void *srs);

    CrsKind kind() const { return m_kind; }
    /// False for what x and y alone do not describe: geocentric systems, heights, times.
    bool isHorizontal() const { return m_kind != CrsKind::Other; }
    /// Longitude/latitude to the centre of the body, or a plane over such.
    bool isPlanetocentric() const;
    /// The definition had a vertical part.
    bool isDemotedTo2D() const { return m_flattened; }
    /// What PROJ makes the system from: the text as given, or WKT 2 of its horizontal part.
    const QString &definition() const { return m_definition; }
    /// What the definition does to the plane that all other answers are about; none where the plane is its
    /// own.
    const std::optional<QTransform> &affine() const { return m_affine; }
    /// Unit of the affine image; 0 without one.
    double affineUnitM() const { return m_affineUnitM; }
    /// The whole definition as a text that reads back to it, which WKT 2 does not for planetocentric bases.
    QString stored() const;
    /// The name at the root of the text, empty when the text leaves it open.
    const QString &name() const { return m_name; }
    /// The EPSG code at the root of the text, or of its horizontal part, when the database's system of that
    /// code is this one, else EPSG_UNDEFINDED. An ESRI code counts by its number.
    int verifiedCode() const;
    /// True when the database's system of an EPSG code is this one.
    bool isSystemOf(int epsg) const;
    /// The system under no code when its text states one of another EPSG system; else null.
    CrsDefinitionPtr withoutForeignCode() const;
    /// The EPSG code of the horizontal part alone.
    int horizontalCode() const;
    /// The text has a shift to WGS 84 of its own.
    bool hasOwnShift() const;
    /// The datum has a name. "unknown", which PROJ text and bare ellipsoids have, is none.
    bool namesDatum() const;
    /// The horizontal part without a shift, longitude or easting first: what comparisons take. Made on first
    /// call. Null without a horizontal part. Borrowed, for use under the PROJ lock.
    const PJ *mapOriented() const;
    /// True when both axes run as a map's do, one to the east and one to the north.
    bool hasEastNorthAxes() const;
    /// WKT 2 of the horizontal part.
    QString wkt() const;
    /// PROJ text of the horizontal part, ready to convert; empty when PROJ has none.
    QString projText() const;
    /// True when the other definition has the same plane.
    bool isHorizontalPartOf(const CrsDefinition &other) const;

    /// From longitude/latitude (degrees from Greenwich, own datum) to the plane, by the system itself. Null
    /// for geographic systems, and when PROJ knows no way.
    std::shared_ptr<const ProjOperation> plane() const;
    /// PROJ gives an object also for methods that it cannot compute: true when the middle of the area of use,
    /// or the origin without one, has a place in the plane.
    bool converts(const ProjOperation &plane) const;
    double semiMinorM() const;
    /// Degrees from Greenwich; right() exceeds 180 when it crosses the 180th meridian. None when it has none.
    std::optional<QRectF> areaOfUse() const;

    /// The horizontal part; null without one. Borrowed, for use under the PROJ lock.
    PJ *crs() const { return m_crs.get(); }
    /// An object of its own, equal to crs(), for another context than the shared one where one is given.
    PjHandle copyOfCrs(PJ_CONTEXT *context = nullptr) const;
    /// The definition is an ESRI text without a code, which takes PROJ fifty times as long to read as others,
    /// for it looks up each name: a copy of crs() says the same.
    bool isBareEsri() const { return m_isBareEsri; }

private:
    enum class Origin { Text, EsriText, Database };
    CrsDefinition(const QString &definition, PjHandle root, Origin origin);
    void splitAffine();

    QString m_definition;
    QString m_name;
    CrsKind m_kind = CrsKind::Other;
    bool m_flattened = false;
    bool m_isBareEsri = false;
    int m_declaredCode = CoordSystemTypes::EPSG_UNDEFINDED; ///< as the text has it
    mutable std::optional<int> m_verifiedCode;              ///< under the PROJ lock
    mutable std::optional<bool> m_namesDatum;               ///< under the PROJ lock
    mutable PjHandle m_mapOriented;                         ///< under the PROJ lock
    PjHandle m_crs;
    std::optional<QTransform> m_affine;
    double m_affineUnitM = 0.0;
    QString m_stored; ///< with the affine transformation; empty without one
};

} // namespace nivora::cs
