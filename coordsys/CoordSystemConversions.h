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
/// unchanged. A transformation that cannot be inverted counts as the identity. Rectangles give the bounding
/// rectangle of their image. Thread-safe.
/// @{
NIVORA_CS_EXPORT bool hasAffine(const CoordSystem *cs);
NIVORA_CS_EXPORT bool hasAffine(const CoordSystemPtr &cs);
/// True when a transformation folds the plane into a line or a point, or is not finite: with x' = A x + B y +
/// C and y' = D x + E y + F, when |A E - B D| <= 1e-12 (|A| + |B|) (|D| + |E|).
NIVORA_CS_EXPORT bool isSingularAffine(const QTransform &affine);
/// The system has such a transformation; its conversions fail.
NIVORA_CS_EXPORT bool hasSingularAffine(const CoordSystem *cs);
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

/// \name Units offered for a system: degrees for a geographic one, else the catalogue's lengths. Empty for
/// null.
/// @{
NIVORA_CS_EXPORT QList<LinearUnit> getUnits(CoordSystem *cs);
NIVORA_CS_EXPORT QStringList getUnitsDescriptions(CoordSystem *cs);
/// The catalogue's linear unit of that name, an invalid unit when there is none.
NIVORA_CS_EXPORT LinearUnit findUnitByName(CoordSystem &cs, const QString &name);
/// @}

} // namespace nivora::cs
