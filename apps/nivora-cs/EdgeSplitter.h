#pragma once

#include <coordsys/BulkTransform.h>

#include <ogr_api.h>

/// Adds vertices to a line or ring, in the source's coordinates, wherever the image of a straight edge lies
/// more than \p mostBendM metres from the straight edge between the images of its ends. Heights and measures
/// of new vertices are in between. Other geometries stay as they are.
void splitEdges(OGRGeometryH geometry, const nivora::cs::BulkTransform &transform, double mostBendM);
