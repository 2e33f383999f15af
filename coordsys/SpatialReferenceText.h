#pragma once

#include <coordsys/CoordSystemTypes.h>
#include <platform/Utils.h>

#include <memory>

namespace nivora::cs {

/// The CoordSys string of a GDAL spatial reference (an OGRSpatialReferenceH). GDAL's exporter loses datums,
/// units and the sign of a scale; what it wrote is checked against the reference and the catalogue and
/// written anew where they differ. What cannot be mended is logged at error level. Takes the PROJ lock;
/// thread-safe. Throws ExportToPrjException when GDAL refuses.
NIVORA_CS_EXPORT QString prjFromSpatialReference(void *srs);

/// EPSG code of a GDAL spatial reference: the first EPSG candidate of GDAL's search with a confidence of at
/// least 50, else CoordSystem::EPSG_UNDEFINDED, also when cancelled. Up to 0.2 s. Takes the PROJ lock;
/// thread-safe. Never throws.
NIVORA_CS_EXPORT int getEpsgFromCrs(const std::shared_ptr<nivora::concurrent::ProgressHandler> &progress,
                                    void *srs);
NIVORA_CS_EXPORT int getEpsgFromCrs(void *srs);

} // namespace nivora::cs
