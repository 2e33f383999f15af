#pragma once

#include <coordsys/SpatialTransform.h>

#include <ogr_srs_api.h>

#include <memory>
#include <optional>

using SpatialReference = std::unique_ptr<void, void (*)(OGRSpatialReferenceH)>;

/// What the heights of a layer mean before and after, and how they are converted.
struct LayerHeights
{
    /// Where both ends know their heights and all it takes is here.
    std::optional<nivora::cs::SpatialTransform> transform;
    /// What the output's reference says of plane and heights; none where it says nothing of heights.
    std::optional<nivora::cs::SpatialSystem> system;
    QString above;          ///< the height system that the output should name; empty for none
    QString missing;        ///< why heights that should be converted are not
    bool isUnclear = false; ///< heights of no known meaning go into a system that has one
};

/// \p from and \p to are texts of systems in any notation; \p to is empty when heights stay as they are.
LayerHeights layerHeights(const QString &from, const QString &to);
/// The name of the height system that a reference has, empty for none.
QString heightSystemOf(OGRSpatialReferenceH reference);
/// WKT 2, empty for none.
QString textOfReference(OGRSpatialReferenceH reference);
/// As drivers take it, x first; null when GDAL does not read the system.
SpatialReference referenceOf(const nivora::cs::SpatialSystem &system);
