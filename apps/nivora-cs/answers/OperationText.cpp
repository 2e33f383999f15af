#include "OperationText.h"

#include <coordsys/CoordSystem.h>
#include <coordsys/EpsgCandidates.h>
#include <coordsys/ShiftQuality.h>

#include <QObject>
#include <QStringList>

using nivora::cs::CoordSystem;
using nivora::cs::CoordSystemPtr;
using nivora::cs::CoordTransform;
using nivora::cs::EpsgCandidate;
using nivora::cs::ShiftQuality;
using nivora::cs::TransformGrid;
using nivora::cs::TransformOperation;

namespace {

QString accuracyText(const TransformOperation &operation)
{
    if (operation.isBallpark)
        return QObject::tr("ballpark: the difference of the datums is left out");
    return operation.accuracyM < 0.0
               ? QObject::tr("accuracy unknown")
               : QObject::tr("good to %1 m").arg(QString::number(operation.accuracyM, 'g', 6));
}

QString operationText(const TransformOperation &operation)
{
    QStringList lines{QStringLiteral("%1\n    %2").arg(operation.name, accuracyText(operation))};
    if (!operation.areaName.isEmpty())
        lines << QStringLiteral("    ") + operation.areaName;
    for (const TransformGrid &grid : operation.grids)
        lines << QStringLiteral("    ") +
                     (grid.isAvailable ? QObject::tr("grid %1").arg(grid.name)
                                       : QObject::tr("missing grid %1, from %2").arg(grid.name, grid.url));
    return lines.join(QLatin1Char('\n')) + QLatin1Char('\n');
}

/// No more digits than there is to tell: a millimetre, three figures.
QString metres(double value)
{
    constexpr double least = 5e-4;
    constexpr double manyFigures = 100.0;
    if (value < least)
        return QStringLiteral("0");
    return value < manyFigures ? QString::number(value, 'g', 3) : QString::number(value, 'f', 0);
}

/// "-3.5, 55.4"
QString placeText(const QPointF &lonLat)
{
    return QStringLiteral("%1, %2").arg(QString::number(lonLat.x(), 'g', 5),
                                        QString::number(lonLat.y(), 'g', 5));
}

QStringList qualityParts(const ShiftQuality &quality)
{
    QStringList parts;
    if (quality.accuracyM)
        parts << QObject::tr("by %1 good to %2 m").arg(quality.definition, metres(*quality.accuracyM));
    if (quality.accuracyWithGridsM && !quality.missingGrids.isEmpty())
        parts << QObject::tr("to %1 m with the grid %2")
                     .arg(metres(*quality.accuracyWithGridsM),
                          quality.missingGrids.join(QStringLiteral(", ")));
    if (quality.textDistanceM)
        parts << QObject::tr("as CoordSys text %1 m away at %2")
                     .arg(metres(*quality.textDistanceM), placeText(quality.place));
    return parts;
}

} // namespace

QString operationsText(const CoordTransform &transform)
{
    const QVector<TransformOperation> operations = transform.operations();
    QString text;
    for (const TransformOperation &operation : operations)
        text += operationText(operation);
    if (text.isEmpty())
        return QObject::tr("Nothing to do: the systems are equal.\n");
    for (const CoordSystemPtr &system : {transform.sourceCoordSystem(), transform.destinationCoordSystem()})
        if (const QString shift = shiftText(*system); !shift.isEmpty())
            text += QObject::tr("%1, shift to WGS 84: %2\n").arg(system->description().simplified(), shift);
    return text;
}

QString shiftText(const CoordSystem &system)
{
    const auto quality = shiftQuality(system);
    return quality ? qualityParts(*quality).join(QStringLiteral("; ")) : QString();
}

QString candidatesText(const CoordSystem &system)
{
    QString text;
    for (const EpsgCandidate &candidate : epsgCandidates(system))
        text +=
            QStringLiteral("%1\t%2 %\t%3\n")
                .arg(QString::number(candidate.code), QString::number(candidate.confidence), candidate.name);
    return text;
}
