#pragma once

#include <cstdint>
#include <cstring>
#include <iterator>

namespace nivora::cs {

/// Numbers of projections that have a rule of their own somewhere.
enum ProjectionNumber : int {
    NonEarthPlan = 0,
    LongitudeLatitude = 1,
    LambertConic = 3,
    PolarEqualArea = 4,
    PolarEquidistant = 5,
    TransverseMercator = 8,
    Mercator = 10,
    SwissOblique = 25,
    RegionalMercator = 26,
    EquidistantCylinder = 33,
    ExtendedTransverseMercator = 34,
};

/// The rectangle that a system without known bounds gets.
enum class DefaultBounds {
    Earth,            ///< longitude -360 to 360, all latitudes
    EarthWithoutPole, ///< the same up to latitude 85
    EarthOfMercator,  ///< the same up to 85.05112878, where a Mercator map is square
    Band,             ///< 60 degrees on both sides of the central meridian
    Square,           ///< 100,000 km around the false origin, in the plane
    Degrees,          ///< MapInfo's own rectangle of longitude and latitude
    Plan,             ///< of a plan, in its unit
};

enum class Cone { None, Conformal, Other };

/// A projection of CoordSys text.
struct Projection
{
    int number;
    const char *name; ///< English
    /// A letter for each parameter in the order of the text: m central meridian, l latitude of the origin,
    /// p standard parallel, 1 and 2 the standard parallels of a cone, a azimuth, g rectified grid angle, s
    /// scale, e and n false easting and northing, r range. Angles are degrees, e and n are in the unit.
    const char *parameters;
    Cone cone;
    DefaultBounds bounds;
    /// PROJ's methods whose figures are these parameters: EPSG's code, or the name of a method without one.
    const char *methods;

    int count() const { return static_cast<int>(std::strlen(parameters)); }
    /// The index of a parameter, -1 when there is no such.
    int indexOf(char letter) const
    {
        const char *const found = std::strchr(parameters, letter);
        return found ? static_cast<int>(found - parameters) : -1;
    }
    bool hasFalseOrigin() const { return indexOf('e') >= 0; }
    /// As a parameter, or by two parallels in its stead.
    bool hasScale() const { return indexOf('s') >= 0 || cone == Cone::Conformal; }
    /// The false origin, the azimuth or the meridian of some are written by the engines in other figures.
    bool isOblique() const { return indexOf('a') >= 0; }
    /// The record of a map header has six places; the one behind them stands elsewhere.
    bool overflowsRecord() const { return count() > 6; }
};

// clang-format off
/// In the order of their numbers.
constexpr Projection projectionTable[] = {
    {0, "Nonearth", "", Cone::None, DefaultBounds::Plan, ""},
    {1, "Longitude / Latitude", "", Cone::None, DefaultBounds::Degrees, ""},
    {2, "Cylindrical Equal Area", "mp", Cone::None, DefaultBounds::Earth, "9835;9834"},
    {3, "Lambert Conformal Conic", "ml12en", Cone::Conformal, DefaultBounds::EarthWithoutPole, "9802;1051"},
    {4, "Lambert Azimuthal Equal Area (polar aspect)", "mlr", Cone::None, DefaultBounds::Earth, "9820;1027"},
    {5, "Azimuthal Equidistant (polar aspect)", "mlr", Cone::None, DefaultBounds::Earth, "9832;Azimuthal Equidistant"},
    {6, "Equidistant Conic", "ml12en", Cone::Other, DefaultBounds::Earth, "1119;Equidistant Conic"},
    {7, "Hotine Oblique Mercator", "mlasen", Cone::None, DefaultBounds::Earth, "9812;9815"},
    {8, "Transverse Mercator", "mlsen", Cone::None, DefaultBounds::Band, "9807;9808;1111"},
    {9, "Albers Equal-Area Conic", "ml12en", Cone::Other, DefaultBounds::Earth, "9822"},
    {10, "Mercator", "m", Cone::None, DefaultBounds::EarthOfMercator, "9804;9841"},
    {11, "Miller Cylindrical", "m", Cone::None, DefaultBounds::Earth, "Miller Cylindrical;PROJ mill"},
    {12, "Robinson", "m", Cone::None, DefaultBounds::Earth, "Robinson"},
    {13, "Mollweide", "m", Cone::None, DefaultBounds::Earth, "Mollweide"},
    {14, "Eckert IV", "m", Cone::None, DefaultBounds::Earth, "Eckert IV"},
    {15, "Eckert VI", "m", Cone::None, DefaultBounds::Earth, "Eckert VI"},
    {16, "Sinusoidal", "m", Cone::None, DefaultBounds::Earth, "Sinusoidal"},
    {17, "Gall Stereographic", "m", Cone::None, DefaultBounds::Earth, "Gall Stereographic"},
    {18, "New Zealand Map Grid", "mlen", Cone::None, DefaultBounds::Earth, "9811"},
    {19, "Lambert Conformal Conic (Belgium 1972)", "ml12en", Cone::Conformal, DefaultBounds::EarthWithoutPole, "9803"},
    {20, "Stereographic", "mlsen", Cone::None, DefaultBounds::Square, "9810;9829;9830;Stereographic"},
    {21, "Transverse Mercator (Danish System 34 Jylland-Fyn)", "mlsen", Cone::None, DefaultBounds::Band, ""},
    {22, "Transverse Mercator (Danish System 34 Sjaelland)", "mlsen", Cone::None, DefaultBounds::Band, ""},
    {23, "Transverse Mercator (Danish System 45 Bornholm)", "mlsen", Cone::None, DefaultBounds::Band, ""},
    {24, "Transverse Mercator (Finnish KKJ)", "mlsen", Cone::None, DefaultBounds::Band, ""},
    {25, "Swiss Oblique Mercator", "mlen", Cone::None, DefaultBounds::Square, "9815"},
    {26, "Regional Mercator", "mp", Cone::None, DefaultBounds::EarthOfMercator, "9805"},
    {27, "Polyconic", "mlen", Cone::None, DefaultBounds::Earth, "9818"},
    {28, "Azimuthal Equidistant (all origin latitudes)", "mlr", Cone::None, DefaultBounds::Earth, "9832;9831;Azimuthal Equidistant"},
    {29, "Lambert Azimuthal Equal Area (all origin latitudes)", "mlr", Cone::None, DefaultBounds::Earth, "9820;1027"},
    {30, "Cassini-Soldner", "mlen", Cone::None, DefaultBounds::Earth, "9806"},
    {31, "Double Stereographic", "mlsen", Cone::None, DefaultBounds::Square, "9809"},
    {32, "Krovak", "mlpaen", Cone::None, DefaultBounds::Earth, "9819;1041"},
    {33, "Equidistant Cylindrical", "mlen", Cone::None, DefaultBounds::Earth, "1028;1029;9823;9842"},
    {34, "Extended Transverse Mercator", "mlsen", Cone::None, DefaultBounds::Band, ""},
    {35, "Hotine Oblique Mercator (rectified grid angle)", "mlagsen", Cone::None, DefaultBounds::Earth, ""},
};
// clang-format on

/// Null for a number that no projection has.
inline const Projection *projectionByNumber(int number)
{
    return number >= 0 && number < static_cast<int>(std::size(projectionTable)) ? &projectionTable[number]
                                                                                : nullptr;
}

} // namespace nivora::cs
