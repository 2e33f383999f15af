#pragma once

#include "FeatureBatch.h"
#include "OutputFormat.h"

/// The driver counts a table's coordinates in whole steps between bounds and would move a point behind them
/// onto them. Those of a system that states none are wide enough for the data.
QRectF tableBounds(OGRLayerH source, const GeometryChange &change, const OutputLayer &layer);

/// How far a table with such bounds may move places, in metres; 0 where it moves none of these by a
/// millimetre.
double roundingM(const OutputLayer &layer, const QVector<QPointF> &places);
