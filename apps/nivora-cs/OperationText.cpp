#include "OperationText.h"

#include <coordsys/CoordSystem.h>
#include <coordsys/Measures.h>

#include <QObject>
#include <QStringList>

#include <algorithm>

using nivora::cs::CoordSystem;
using nivora::cs::CoordSystemPtr;
using nivora::cs::CoordTransform;
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

QStringList missingGrids(const TransformOperation &operation)
{
    QStringList names;
    for (const TransformGrid &grid : operation.grids)
        if (!grid.isAvailable)
            names << grid.name;
    return names;
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

/// The first usable one, the one that PROJ prefers.
const TransformOperation *preferred(const QVector<TransformOperation> &operations)
{
    const auto found = std::find_if(operations.begin(), operations.end(),
                                    [](const TransformOperation &o) { return o.isUsable(); });
    return found == operations.end() ? nullptr : &*found;
}

/// The same operation without what is missing would be better than the preferred one.
const TransformOperation *betterMissing(const QVector<TransformOperation> &operations, double accuracyM)
{
    const TransformOperation *best = nullptr;
    for (const TransformOperation &operation : operations) {
        const bool isBetter = !operation.isUsable() && operation.accuracyM >= 0.0 &&
                              (accuracyM < 0.0 || operation.accuracyM < accuracyM);
        if (isBetter && (!best || operation.accuracyM < best->accuracyM))
            best = &operation;
    }
    return best;
}

} // namespace

QString operationsText(const CoordTransform &transform)
{
    const QVector<TransformOperation> operations = transform.operations();
    QString text;
    for (const TransformOperation &operation : operations)
        text += operationText(operation);
    return text.isEmpty() ? QObject::tr("Nothing to do: the systems are equal.\n") : text;
}

QString shiftText(const CoordSystemPtr &system, const CoordSystemPtr &wgs84)
{
    if (system->isNonEarth())
        return {};
    try {
        const QVector<TransformOperation> operations = CoordTransform(system, wgs84).operations();
        const TransformOperation *used = preferred(operations);
        if (!used)
            return {};
        QString text =
            QObject::tr("To WGS 84: %1, %2").arg(used->name, accuracyText(*used)) + QLatin1Char('\n');
        if (const TransformOperation *better = betterMissing(operations, used->accuracyM))
            text += QObject::tr("With %1 it would be good to %2 m")
                        .arg(missingGrids(*better).join(QStringLiteral(", ")),
                             QString::number(better->accuracyM, 'g', 6)) +
                    QLatin1Char('\n');
        return text;
    } catch (const std::exception &) {
        return {}; // PROJ knows no way
    }
}
