#pragma once

#include <coordsys/CoordSystemTypes.h>

#include <QPointF>
#include <QSharedDataPointer>
#include <QString>

namespace nivora::cs {

/// Military grid references of points of one coordinate system, as a status bar shows them.
///
/// A projected system is brought to the longitude and latitude of the factory's LatLongCoordSystem(), which
/// has no particular datum: a system that came from an EPSG code or a PROJ string is shifted to WGS 84, one
/// that came from a CoordSys string is **not**. Points of a geographic system are taken on their
/// own datum; longitudes that count from another prime meridian than Greenwich are counted from there. For
/// references on WGS 84 from any system transform to WGS 84 first and bind a geographic system. The grids are
/// those of the ellipsoid in `mgrs`, WGS 84 unless a host changes it.
///
/// x is longitude or easting, y latitude or northing; angles are degrees.
/// Threads: const calls may run together, setters are for the thread that owns the object. A copy shares the
/// transformation.
class NIVORA_CS_EXPORT Mgrs
{
public:
    /// Precision 4. Throws as setCoordSystem() does.
    explicit Mgrs(const CoordSystemPtr &cs);
    /// Shares the transformation.
    Mgrs(const Mgrs &other);
    /// Likewise.
    Mgrs &operator=(const Mgrs &other);
    ~Mgrs();

    /// The system points come in. The precision stays. When it throws, the old system stays:
    /// std::invalid_argument "cs_from" for null, std::logic_error without catalogues, what CoordTransform
    /// throws.
    void setCoordSystem(const CoordSystemPtr &cs);
    /// The bound system; LatLongCoordSystem() of the active catalogues when a geographic one was bound.
    CoordSystemPtr coordSystem() const;

    /// Digits of each coordinate, 0 (squares of 100 km) to 5 (metres). Not checked here: every conversion
    /// with another value fails and logs.
    void setPrecision(int precision);

    /// The reference without blanks, "37UDB1212579143". Null when the point lies outside its system's bounds,
    /// cannot be transformed or is no longitude -180 to 360 and latitude -90 to 90 (not a number neither),
    /// and, with an error logged, when the grid refuses it. Coordinates never throw.
    QString getMGRSString(double x, double y) const;
    QString getMGRSString(const QPointF &p) const { return getMGRSString(p.x(), p.y()); }

    /// What one error code of the grid functions means, in Russian. Codes that several errors OR-ed together
    /// make are unknown on purpose.
    QString errorMsg(int code) const;

private:
    struct Data;
    QSharedDataPointer<Data> m_data;
};

} // namespace nivora::cs
