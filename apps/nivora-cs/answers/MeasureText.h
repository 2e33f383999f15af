#pragma once

#include <coordsys/CoordSystemTypes.h>

#include <QPointF>
#include <QString>

/// "X,Y" of an option. Throws Failure.
QPointF pointOf(const QString &text);

/// Scale factors and convergence at a point in the system's coordinates. Throws Failure where there are none.
QString factorsText(const nivora::cs::CoordSystemPtr &system, const QPointF &point);
