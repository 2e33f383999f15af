#pragma once

#include <coordsys/LinearUnit.h>

namespace nivora::cs {

/// A projection by its MapInfo number.
struct MIProjectionParam
{
    int id = 0;   ///< MapInfo's number
    QString name; ///< for people
};

/// An ellipsoid by its MapInfo number.
struct MIEllipsoidParam
{
    int id = 0;                  ///< MapInfo's number
    QString name;                ///< for people
    QString name_mitab;          ///< the name the MapInfo driver knows it by
    double semi_major = 0.0;     ///< metres
    double inv_flatenning = 0.0; ///< 0 for a sphere; spelled as in the catalogue file
};

/// A datum by its MapInfo number. Rotations carry MapInfo's sign, the opposite of TOWGS84.
struct NIVORA_CS_EXPORT MIDatumParam
{
    int id = 0;         ///< MapInfo's number
    QString name;       ///< for people
    QString name_mitab; ///< the name the MapInfo driver knows it by
    int epsg_mitab = 0; ///< EPSG datum that the MapInfo driver associates, 0 when none
    int ellipsoid = 0;  ///< id of an MIEllipsoidParam
    double dx = 0.0;    ///< shift to WGS 84, metres
    double dy = 0.0;    ///< metres
    double dz = 0.0;    ///< metres
    double rx = 0.0;    ///< rotations, arc-seconds
    double ry = 0.0;    ///< arc-seconds
    double rz = 0.0;    ///< arc-seconds
    double sa = 0.0;    ///< scale, parts per million
    double pm = 0.0;    ///< prime meridian, degrees east of Greenwich

    /// Any of dx, dy, dz beyond 1e-12 (NaN counts).
    bool has3Params() const;
    /// A shift and any of rx, ry, rz, sa beyond 1e-12. Rotations without a shift do not count: readers of
    /// MapInfo files have always treated such a datum as unshifted.
    bool has7Params() const;
};

/// A linear unit; `id` equals its unit code.
struct MIUnitConvParam : LinearUnit
{
    int id = 0;         ///< MapInfo's number
    QString name_proj4; ///< PROJ's name of the unit
};

/// An area unit; its conversion is square metres per unit.
struct MIAreaConvParam : LinearUnit
{
    int id = 0; ///< MapInfo's number
};

} // namespace nivora::cs
