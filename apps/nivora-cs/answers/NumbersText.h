#pragma once

#include <QPointF>
#include <QString>

/// Metres with no more digits than there is to tell: a millimetre, three figures.
QString shortMetres(double value);

/// "-3.5, 55.4"
QString placeText(const QPointF &lonLat);
