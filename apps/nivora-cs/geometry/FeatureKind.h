#pragma once

#include <QString>

#include <ogr_api.h>

#include <set>

/// What some formats hold one of in a file.
enum class FeatureKind { Nothing, Points, Multipoints, Lines, Polygons, Collections };

/// Nothing for no or an empty geometry.
FeatureKind kindOfFeature(OGRGeometryH geometry);
/// "points", for names of files.
const char *kindName(FeatureKind kind);
/// "roads_lines.shp" for the lines of "roads.shp".
QString nameForKind(const QString &out, FeatureKind kind);
/// Reads the layer to its end.
std::set<FeatureKind> kindsIn(OGRLayerH layer);

/// Which features of a source are wanted.
struct FeatureChoice
{
    FeatureKind kind;
    bool withNothing; ///< those without geometry, too

    bool includes(OGRGeometryH geometry) const
    {
        const FeatureKind found = kindOfFeature(geometry);
        return found == kind || (withNothing && found == FeatureKind::Nothing);
    }
};
