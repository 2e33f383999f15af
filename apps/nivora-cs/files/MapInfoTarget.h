#pragma once

#include <coordsys/CoordSystem.h>

#include <QRectF>

/// A system as MapInfo's formats carry it.
struct MapInfoTarget
{
    QString clause;               ///< the CoordSys string, with affine clause and explicit bounds
    QRectF bounds;                ///< explicit, else the system's; empty when none are known
    bool needsLongHeader = false; ///< a table's short one has no room for it
    /// Metres that programs are off which pass over an affine clause that stands for parameters.
    double withoutAffineM = 0.0;
};

/// Throws Failure when the format has no words for the system.
MapInfoTarget mapInfoTarget(const nivora::cs::CoordSystem &cs);

/// Makes the files that the driver wrote without a system say \p target. Throws Failure.
void giveSystem(const QString &path, const MapInfoTarget &target);
