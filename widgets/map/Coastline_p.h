#pragma once

#include <QPainterPath>
#include <QRectF>
#include <QTransform>

namespace nivora::cs {

/// The land that a part of the world shows, mapped by \p toScreen from longitude and latitude in degrees; the
/// part may reach beyond the 180th meridian on either side. Fill it by the odd-even rule. Empty when the
/// coastlines cannot be read.
QPainterPath landPath(const QRectF &lonLat, const QTransform &toScreen);

} // namespace nivora::cs
