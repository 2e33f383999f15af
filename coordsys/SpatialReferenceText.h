#pragma once

#include <coordsys/CoordSystemTypes.h>
#include <coordsys/TABProjInfo.h>
#include <platform/Utils.h>

#include <memory>
#include <optional>

namespace nivora::cs {

/// The CoordSys string of a GDAL spatial reference (an OGRSpatialReferenceH). GDAL's exporter loses datums,
/// units and the sign of a scale; what it wrote is checked against the reference and the catalogue and
/// written anew where they differ. What cannot be mended is logged at error level. Takes the PROJ lock;
/// thread-safe. Throws ExportToPrjException when GDAL refuses.
NIVORA_CS_EXPORT QString prjFromSpatialReference(void *srs);

/// The map-header record of a spatial reference, clauses unset; none when something of it cannot be written.
/// Logs nothing. Throws ExportToPrjException when GDAL refuses. Takes the PROJ lock; thread-safe.
NIVORA_CS_EXPORT std::optional<TABProjInfo_t> recordFromSpatialReference(void *srs);

/// EPSG code of a GDAL spatial reference, by GDAL's search of the database for its figures; any shift to WGS
/// 84 is left aside in it. Of equally good candidates with the system's own unit that one is taken whose
/// entry in the MapInfo catalogue has the same record, else the one whose datum has the system's shift
/// registered, else the only one. None (CoordSystem::EPSG_UNDEFINDED) when the choice stays open, when the
/// place would differ by more than 100 m, for a bare ellipsoid other than WGS 84, which states no datum, and
/// when cancelled. Up to 0.2 s, once per text; nobody's points wait for it. Thread-safe. Never throws.
NIVORA_CS_EXPORT int getEpsgFromCrs(const std::shared_ptr<nivora::concurrent::ProgressHandler> &progress,
                                    void *srs);
NIVORA_CS_EXPORT int getEpsgFromCrs(void *srs);

} // namespace nivora::cs
