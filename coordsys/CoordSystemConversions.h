#pragma once

#include <coordsys/CoordSystemTypes.h>
#include <coordsys/LinearUnit.h>

#include <QList>
#include <QPointF>
#include <QPolygonF>
#include <QStringList>
#include <QTransform>

namespace nivora::cs {

/// \name Between a system's user plane and its projection's plane
/// forward applies the system's affine transformation, inverse undoes it; without one the value comes back
/// unchanged. Rectangles give the bounding rectangle of their image. These functions cannot fail: a singular
/// transformation (isSingularAffine) maps forward as it stands, a line or a point, and inverse takes the
/// identity for it. Ask first where that matters. Thread-safe.
/// @{
/// True when a transformation is installed, a singular one too. \p cs must not be null.
NIVORA_CS_EXPORT bool hasAffine(const CoordSystem *cs);
NIVORA_CS_EXPORT bool hasAffine(const CoordSystemPtr &cs);
NIVORA_CS_EXPORT QPointF tryConvertForward(const CoordSystem *cs, const QPointF &point);
NIVORA_CS_EXPORT QRectF tryConvertForward(const CoordSystem *cs, const QRectF &rect);
NIVORA_CS_EXPORT QPolygonF tryConvertForward(const CoordSystem *cs, const QPolygonF &polygon);
NIVORA_CS_EXPORT QPointF tryConvertForward(const CoordSystemPtr &cs, const QPointF &point);
NIVORA_CS_EXPORT QRectF tryConvertForward(const CoordSystemPtr &cs, const QRectF &rect);
NIVORA_CS_EXPORT QPolygonF tryConvertForward(const CoordSystemPtr &cs, const QPolygonF &polygon);
NIVORA_CS_EXPORT QPointF tryConvertInverse(const CoordSystem *cs, const QPointF &point);
NIVORA_CS_EXPORT QRectF tryConvertInverse(const CoordSystem *cs, const QRectF &rect);
NIVORA_CS_EXPORT QPolygonF tryConvertInverse(const CoordSystem *cs, const QPolygonF &polygon);
NIVORA_CS_EXPORT QPointF tryConvertInverse(const CoordSystemPtr &cs, const QPointF &point);
NIVORA_CS_EXPORT QRectF tryConvertInverse(const CoordSystemPtr &cs, const QRectF &rect);
NIVORA_CS_EXPORT QPolygonF tryConvertInverse(const CoordSystemPtr &cs, const QPolygonF &polygon);
/// @}

/// No point of the plane can be found back: a coefficient is no finite number, or with MapInfo's letters
/// |AE - BD| <= 1e-12 (|A| + |B|)(|D| + |E|), where rounding hides the difference. The size of the
/// coefficients does not count. Creators refuse such a transformation, CoordSystem::setAffineTransform takes
/// it. Thread-safe.
NIVORA_CS_EXPORT bool isSingularAffine(const QTransform &affine);
/// The system has such a transformation; its conversions fail.
NIVORA_CS_EXPORT bool hasSingularAffine(const CoordSystem *cs);

/// \name Units offered for a system: degrees for a geographic one, else the catalogue's lengths. Empty for
/// null.
/// @{
NIVORA_CS_EXPORT QList<LinearUnit> getUnits(CoordSystem *cs);
NIVORA_CS_EXPORT QStringList getUnitsDescriptions(CoordSystem *cs);
/// The catalogue's linear unit of that name, an invalid unit when there is none.
NIVORA_CS_EXPORT LinearUnit findUnitByName(CoordSystem &cs, const QString &name);
/// @}

} // namespace nivora::cs
