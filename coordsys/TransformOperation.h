#pragma once

#include <coordsys/coordsys_export.h>

#include <QRectF>
#include <QString>
#include <QStringList>
#include <QVector>

#include <optional>

namespace nivora::cs {

/// A file that an operation reads its shifts from.
struct TransformGrid
{
    QString name;             ///< of the file, "uk_os_OSTN15_NTv2_OSGBtoETRS.tif"
    QString path;             ///< where it lies; empty when it is missing
    QString url;              ///< where it can be fetched from, as far as the database knows
    QString package;          ///< PROJ's package that has it, "proj-datumgrid-europe"; empty when unknown
    bool isAvailable = false; ///< PROJ finds it here
};

/// One of the operations that PROJ has for a transformation. A plain value.
struct NIVORA_CS_EXPORT TransformOperation
{
    QString name;      ///< "Inverse of British National Grid + OSGB36 to WGS 84 (6)"
    QString shortName; ///< without the projections at its ends: "OSGB36 to WGS 84 (6)"
    QStringList codes; ///< of its parts, "EPSG:1314"; projections included
    /// Metres as the register has them, -1 when unknown (999 in the register says that, too). Of
    /// a time-dependent operation: at the coordinates' own epoch.
    double accuracyM = -1.0;
    /// A datum at an end that is several realizations under one name: the name, and how far they lie apart
    /// (WGS 84: 2 m). 0 when there is none or the datum stays the same.
    QString ensemble;
    /// Metres; of the datum ensembles at its ends.
    double ensembleAccuracyM = 0.0;
    bool isTimeDependent = false; ///< without an epoch it takes its own reference epoch
    QString leavesOut; ///< by ballpark operations: "Pulkovo 1942 → WGS 84", the names of the datums
    QString areaName;  ///< in words, as the database has it (English); empty when unknown
    /// Longitude and latitude in degrees, null when unknown; a negative width crosses the 180th meridian.
    QRectF area;
    QVector<TransformGrid> grids; ///< that it reads
    bool isBallpark = false;      ///< leaves the datums' difference out: up to hundreds of metres
    bool hasInverse = false;      ///< goes both ways
    int step = 0;                 ///< 1 for the second step of a way through WGS 84
    QString definition;           ///< PROJ text, x first; empty when PROJ has none

    /// What a position is worth after it, metres: its own accuracy, an ensemble's when that is worse. None
    /// when nobody knows, and for ballpark operations.
    std::optional<double> worthM() const;
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
