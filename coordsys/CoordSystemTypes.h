#pragma once

#include <coordsys/coordsys_export.h>

#include <QRectF>
#include <QString>

#include <memory>

namespace nivora::cs {

class CoordSystem;
using CoordSystemPtr = std::shared_ptr<CoordSystem>; ///< how systems are passed around

/// The constants and source types of a coordinate system, a base of CoordSystem so that lower floors can name
/// them. Everything here is reached as CoordSystem::EPSG_UNDEFINDED, CoordSystem::Prj and so on.
class NIVORA_CS_EXPORT CoordSystemTypes
{
public:
    static constexpr double DEGREES_TO_RADIANS = 0.017453292519943295; ///< pi / 180
    static constexpr double RADIANS_TO_DEGREES = 57.29577951308232;    ///< 180 / pi
    /// Metres; the sphere on which PROJ and MapInfo measure.
    static constexpr double EARTH_SPHERE_RADIUS = 6370997.0;
    /// Metres per degree on that sphere.
    static constexpr double DEGREES_TO_METERS = DEGREES_TO_RADIANS * EARTH_SPHERE_RADIUS;
    static constexpr double METERS_TO_DEGREES =
        RADIANS_TO_DEGREES / EARTH_SPHERE_RADIUS; ///< the inverse of DEGREES_TO_METERS
    static constexpr int LAT_LON_EPSG = 4326;     ///< longitude and latitude on WGS 84
    /// No EPSG code is known. The spelling is part of the interface.
    static constexpr int EPSG_UNDEFINDED = -2;
    /// x, y, width, height in degrees.
    static constexpr QRectF RectEarth{-180.0, -90.0, 360.0, 180.0};

    /// The notation a system was made from. The numbers are stored in users' files.
    enum SourceType : int {
        Unknown = 0,
        Prj = 1,    ///< MapInfo CoordSys string
        Proj4 = 2,  ///< PROJ string
        Epsg = 3,   ///< EPSG code as decimal text
        Wkt = 4,    ///< OGC WKT
        Oracle = 5, ///< Oracle SRID as decimal text
    };

    /// What a system was made from: the notation and the text exactly as given.
    struct SourceData
    {
        SourceType type = Unknown; ///< the notation
        QString string;            ///< the text as given
    };
};

/// Equal types and, white space simplified, equal texts; a CoordSys string is compared without its leading
/// "CoordSys" word.
NIVORA_CS_EXPORT bool operator==(const CoordSystemTypes::SourceData &a,
                                 const CoordSystemTypes::SourceData &b);
/// Not equal as above.
inline bool operator!=(const CoordSystemTypes::SourceData &a, const CoordSystemTypes::SourceData &b)
{
    return !(a == b);
}

} // namespace nivora::cs
