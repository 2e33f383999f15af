#pragma once

#include <coordsys/coordsys_export.h>

#include <QRectF>
#include <QString>
#include <QVector>

namespace nivora::cs {

/// A file that an operation reads its shifts from.
struct TransformGrid
{
    QString name;             ///< of the file, "uk_os_OSTN15_NTv2_OSGBtoETRS.tif"
    QString path;             ///< where it lies; empty when it is missing
    QString url;              ///< where it can be fetched from, as far as the database knows
    bool isAvailable = false; ///< PROJ finds it here
};

/// One of the operations that PROJ has for a transformation. A plain value.
struct TransformOperation
{
    QString name;            ///< "Inverse of British National Grid + OSGB36 to WGS 84 (6)"
    double accuracyM = -1.0; ///< metres, -1 when unknown
    QString areaName;        ///< in words, as the database has it (English); empty when unknown
    /// Longitude and latitude in degrees, null when unknown; a negative width crosses the 180th meridian.
    QRectF area;
    QVector<TransformGrid> grids; ///< that it reads
    bool isBallpark = false;      ///< leaves the datums' difference out: up to hundreds of metres
    bool hasInverse = false;      ///< goes both ways
    int step = 0;                 ///< 1 for the second step of a way through WGS 84
    QString definition;           ///< PROJ text, x first; empty when PROJ has none

    /// All its grids are there.
    bool isUsable() const
    {
        for (const TransformGrid &grid : grids)
            if (!grid.isAvailable)
                return false;
        return true;
    }
};

} // namespace nivora::cs
