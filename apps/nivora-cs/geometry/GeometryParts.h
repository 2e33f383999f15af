#pragma once

#include "GdalFiles.h"

#include <QPointF>

#include <vector>

QPointF pointAt(OGRGeometryH line, int i);
/// Heights stay.
void setPlace(OGRGeometryH line, int i, const QPointF &place);
/// Adds to all x.
void shift(OGRGeometryH geometry, double degrees);
/// Adds vertices to lines so that none are farther apart; heights of new ones are in between.
void refine(OGRGeometryH geometry, double step);

/// The parts of a collection, or itself; borrowed.
std::vector<OGRGeometryH> partsOf(OGRGeometryH geometry);
/// A collection of lines, or of polygons as the geometry's dimension is.
Geometry collectionFor(OGRGeometryH geometry);
/// Adds copies of what such a collection holds.
void addParts(OGRGeometryH geometry, OGRGeometryH all);
/// What crosses itself means what lies inside an odd number of times.
Geometry valid(Geometry geometry);
/// Takes away holes, and polygons of a collection, that are narrower.
void dropSlivers(OGRGeometryH geometry, double narrowest);
