#pragma once

#include <coordsys/CoordSystem.h>

#include <gdal.h>
#include <ogr_api.h>

class Session;

/// The system that a layer's coordinates are in. The CoordSys clause of a MIF and the projection record of a
/// TAB are read by the library, the reference of other formats is GDAL's. Null when the file says nothing.
/// Throws Failure, with the file's name, for a text or record that describes no system.
nivora::cs::CoordSystemPtr systemOfLayer(const Session &session, GDALDatasetH dataset, OGRLayerH layer);

/// The system of a spatial reference as GDAL has it, null for none. The library's exceptions pass through.
nivora::cs::CoordSystemPtr systemOfReference(const Session &session, OGRSpatialReferenceH reference);
