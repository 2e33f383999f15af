#pragma once

#include "FeatureBatch.h"

class CommandLine;
class Losses;

/// What GDAL opens for a text table: itself, or, where it is UTF-16 or begins with a spreadsheet's line
/// "sep=;", a copy in memory that GDAL understands. \p asTable: a text of another suffix is a table too.
/// Throws Failure.
QString tableToOpen(const QString &path, bool asTable);

/// Adds what a column of geometries of a CSV holds that the driver does not understand: it gives such a
/// feature no geometry, without a word. Nothing for other formats.
void checkGeometryTexts(GDALDatasetH source, Losses &losses);

/// The columns of a layer that --x, --y and --z name; none when they are not given. \p hasDegrees: values may
/// be degrees, minutes and seconds. Throws Failure for a column that is not there, or twice.
std::optional<PointColumns> pointColumns(const CommandLine &line, OGRLayerH layer, bool hasDegrees,
                                         const TextCoding &coding);

/// The extent of the points; NaN for none.
QRectF extentOfPoints(OGRLayerH layer, const PointColumns &columns);
