#pragma once

#include <coordsys/coordsys_export.h>

#include <QString>

#include <memory>

namespace nivora::cs {

/// A coordinate system with what its third coordinate means: a plane or longitude and latitude with heights,
/// above the ellipsoid or of a height system, or geocentric. Stands beside CoordSystem, which has the
/// horizontal part alone; systems of two dimensions are taken, too. Not for affine transformations, CoordSys
/// text and names. An immutable value; copies share it. Thread-safe.
class NIVORA_CS_EXPORT SpatialSystem
{
public:
    /// What z is.
    enum class Height {
        None,        ///< nothing is said of it
        Ellipsoidal, ///< above the datum's own ellipsoid
        Own,         ///< of a height system of its own
        Geocentric,  ///< x, y and z are metres from the middle of the earth
    };

    /// A code ("4979", "EPSG:25832+7837", "25832+7837"), WKT, PROJJSON or PROJ text. Throws std::logic_error
    /// "Не удалось прочитать КС: …" for what PROJ does not read as a system with a horizontal part or a
    /// geocentric one.
    explicit SpatialSystem(const QString &definition);
    SpatialSystem(const SpatialSystem &other);
    /// Copies.
    SpatialSystem &operator=(const SpatialSystem &other);
    ~SpatialSystem();

    /// As it was given.
    QString definition() const;
    /// Of the whole system.
    QString name() const;
    /// What its heights are.
    Height height() const;
    /// Its frame moves against the plates (ITRF2014, WGS 84), so that coordinates hold at an epoch alone.
    bool isDynamic() const;
    /// x and y are degrees, x the longitude.
    bool isGeographic() const;
    QString verticalName() const;  ///< "EGM96 height"; empty unless Own
    QString verticalDatum() const; ///< its name; empty unless Own
    QString verticalUnit() const;  ///< "metre"; empty for None
    double verticalUnitM() const;  ///< metres, 0 for None
    /// WKT 2 of the horizontal part, for CoordSysFactory::createFromWkt(); empty for geocentric ones.
    QString horizontalWkt() const;

private:
    struct Data;
    std::shared_ptr<const Data> m_data;
};

} // namespace nivora::cs
