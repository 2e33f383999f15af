#pragma once

#include <coordsys/CatalogueRecords.h>

#include <cstdint>
#include <memory>
#include <string>
#include <vector>

namespace nivora::cs {

/// The driver's ellipsoid record (56 bytes on x86-64). The layout is the patched GDAL's.
struct MitabEllipsoid
{
    std::int32_t id;      ///< MapInfo's number
    std::string name;     ///< the driver's
    double semiMajor;     ///< metres
    double invFlattening; ///< 0 for a sphere
};

/// The driver's datum record (112 bytes on x86-64). The layout is the patched GDAL's.
struct MitabDatum
{
    std::int32_t epsg;      ///< the datum's code, 0 for none
    std::int32_t id;        ///< MapInfo's number
    std::string name;       ///< the driver's
    std::int32_t ellipsoid; ///< MapInfo's number
    double dx;              ///< this and the following as in MIDatumParam
    double dy;              ///< metres
    double dz;              ///< metres
    double rx;              ///< arc-seconds
    double ry;              ///< arc-seconds
    double rz;              ///< arc-seconds
    double sa;              ///< parts per million
    double pm;              ///< degrees
};

/// Hands the catalogue's ellipsoids and datums to a patched GDAL's MapInfo driver, so that both agree on
/// every number. Stock GDAL lacks the two functions; then the records are only kept. Start-up only.
class NIVORA_CS_EXPORT ExportCoordSystemParamsToMitabInternal
{
public:
    /// An empty list is logged and nothing is called.
    static void replaceEllipsoidParameters(const std::vector<std::unique_ptr<MIEllipsoidParam>> &ellipsoids);
    /// The same for datums.
    static void replaceDatumParameters(const std::vector<std::unique_ptr<MIDatumParam>> &datums);

    /// The records of the last hand-over, whether or not the driver took them.
    static const std::vector<MitabEllipsoid> &lastEllipsoids();
    /// The same for datums.
    static const std::vector<MitabDatum> &lastDatums();
};

} // namespace nivora::cs
