#include "OperationText.h"

#include "NumbersText.h"

#include <coordsys/CoordSystem.h>
#include <coordsys/EpsgCandidates.h>
#include <coordsys/ShiftQuality.h>

#include <QObject>
#include <QStringList>

using namespace nivora::cs;

namespace {

const QLatin1String indent("    ");

/// "-8.82 49.79 to 1.92 60.94"
QString boxText(const QRectF &area)
{
    const auto degrees = [](double value) { return QString::number(value, 'g', 5); };
    return QObject::tr("%1 %2 to %3 %4", "west south to east north")
        .arg(degrees(area.left()), degrees(area.top()), degrees(area.right()), degrees(area.bottom()));
}

/// The database's area names list dozens of countries.
QString firstWords(const QString &text)
{
    constexpr int longest = 60;
    return text.size() <= longest
               ? text
               : text.left(text.lastIndexOf(QLatin1Char(' '), longest)) + QStringLiteral(" …");
}

QString areaText(const TransformOperation &operation, Detail detail)
{
    const QString words = detail == Detail::All ? operation.areaName : firstWords(operation.areaName);
    const QString box = operation.area.isNull() ? QString() : boxText(operation.area);
    return words.isEmpty() || box.isEmpty() ? words + box : box + QStringLiteral(": ") + words;
}

QString operationText(const TransformOperation &operation, bool hasEpoch, Detail detail)
{
    QStringList lines{indent + operation.shortName + QStringLiteral(": ") + worthText(operation, hasEpoch)};
    if (const QString area = areaText(operation, detail); !area.isEmpty())
        lines << indent + indent + area;
    for (const TransformGrid &grid : operation.grids)
        lines << indent + indent + QObject::tr("grid %1").arg(grid.name);
    if (detail == Detail::All) {
        if (!operation.codes.isEmpty())
            lines << indent + indent + operation.codes.join(QStringLiteral(", "));
        lines << indent + indent + operation.definition;
    }
    return lines.join(QLatin1Char('\n')) + QLatin1Char('\n');
}

QString gainText(const GridOffer &offer)
{
    const QString gained = shortMetres(offer.withM().value_or(0.0));
    return offer.withoutM() ? QObject::tr("%1 m instead of %2 m").arg(gained, shortMetres(*offer.withoutM()))
                            : QObject::tr("%1 m instead of a ballpark").arg(gained);
}

QString namesOf(const QVector<TransformGrid> &grids)
{
    QStringList names;
    for (const TransformGrid &grid : grids)
        names << grid.name;
    return names.join(QStringLiteral(", "));
}

/// Files that the definition itself names, so that nothing is computed without them.
QString requiredGrids(const Explanation &explanation)
{
    QVector<TransformGrid> missing;
    for (const TransformOperation &operation : explanation.elsewhere)
        for (const TransformGrid &grid : operation.grids)
            if (!grid.isAvailable)
                missing << grid;
    return explanation.used.isEmpty() ? namesOf(missing) : QString();
}

QString gridLine(const Explanation &explanation)
{
    const QVector<GridOffer> &offers = explanation.offers;
    const QString required = requiredGrids(explanation);
    if (!required.isEmpty())
        return QObject::tr("Missing grid: %1, without which nothing is transformed\n").arg(required);
    if (offers.isEmpty())
        return QObject::tr("Grids: none that is missing would help\n");
    const QString first =
        QStringLiteral("%1 (%2)").arg(namesOf(offers.first().missing()), gainText(offers.first()));
    return offers.size() == 1 ? QObject::tr("Missing grid: %1; see nivora-cs grids\n").arg(first)
                              : QObject::tr("Missing grids: %1 and %2 more; see nivora-cs grids\n")
                                    .arg(first, QString::number(offers.size() - 1));
}

QString elsewhereText(const Explanation &explanation, Detail detail)
{
    constexpr int fewest = 3;
    const int all = explanation.elsewhere.size();
    const int shown = detail == Detail::All ? all : qMin(all, fewest);
    const bool hasEpoch = explanation.hasEpoch;
    QString text = all > 0 ? QObject::tr("Elsewhere:\n") : QString();
    for (int i = 0; i < shown; ++i)
        text += operationText(explanation.elsewhere.at(i), hasEpoch, detail);
    if (shown < all)
        text += indent +
                QObject::tr("and %1 more: --explain=all, of info --all\n").arg(QString::number(all - shown));
    return text;
}

QStringList qualityParts(const ShiftQuality &quality)
{
    QStringList parts;
    if (quality.accuracyM)
        parts << QObject::tr("by %1 good to %2 m").arg(quality.definition, shortMetres(*quality.accuracyM));
    if (quality.accuracyWithGridsM && !quality.missingGrids.isEmpty())
        parts << QObject::tr("to %1 m with the grid %2")
                     .arg(shortMetres(*quality.accuracyWithGridsM),
                          quality.missingGrids.join(QStringLiteral(", ")));
    if (quality.textDistanceM)
        parts << QObject::tr("as CoordSys text %1 m away at %2")
                     .arg(shortMetres(*quality.textDistanceM), placeText(quality.place));
    return parts;
}

QString shortWorth(const TransformOperation &operation, bool hasEpoch)
{
    const auto worth = operation.worthM();
    const QString text = !worth        ? QObject::tr("accuracy unknown")
                         : *worth == 0 ? QObject::tr("exact")
                                       : QObject::tr("%1 m").arg(shortMetres(*worth));
    return operation.isTimeDependent && !hasEpoch ? text + QObject::tr(" (no epoch given)") : text;
}

} // namespace

QString shortMetres(double value)
{
    constexpr double least = 5e-4;
    constexpr double manyFigures = 100.0;
    if (value < least)
        return QStringLiteral("0");
    return value < manyFigures ? QString::number(value, 'g', 3) : QString::number(value, 'f', 0);
}

QString placeText(const QPointF &lonLat)
{
    constexpr double largestAngle = 360.0; // planes have longer numbers
    const auto number = [](double value) {
        return std::abs(value) <= largestAngle ? QString::number(value, 'g', 5)
                                               : QString::number(value, 'f', 0);
    };
    return number(lonLat.x()) + QStringLiteral(", ") + number(lonLat.y());
}

QString worthText(const TransformOperation &operation, bool hasEpoch)
{
    if (operation.isBallpark)
        return QObject::tr(
                   "ballpark, the difference of the datums is left out (%1): up to hundreds of metres")
            .arg(operation.leavesOut);
    QStringList parts{operation.accuracyM < 0.0 ? QObject::tr("accuracy unknown")
                      : operation.accuracyM == 0.0
                          ? QObject::tr("exact")
                          : QObject::tr("good to %1 m").arg(shortMetres(operation.accuracyM))};
    if (operation.accuracyM >= 0.0 && operation.ensembleAccuracyM > operation.accuracyM)
        parts << QObject::tr("%1 itself to %2 m")
                     .arg(operation.ensemble, shortMetres(operation.ensembleAccuracyM));
    if (operation.isTimeDependent)
        parts << (hasEpoch ? QObject::tr("at the given epoch")
                           : QObject::tr("at the right epoch only: give --epoch"));
    return parts.join(QStringLiteral(", "));
}

QString explanationText(const Explanation &explanation, Detail detail)
{
    if (explanation.isCopy)
        return QObject::tr("Nothing to do: the systems are equal.\n");
    const bool hasEpoch = explanation.hasEpoch;
    QString text = explanation.here.isEmpty() ? QObject::tr("Used here: no place is known, give --at\n")
                                              : QObject::tr("Used %1:\n").arg(explanation.here);
    for (const OperationTally::Use &use : explanation.used)
        text += operationText(use.operation, hasEpoch, detail);
    text += elsewhereText(explanation, detail);
    text += detail == Detail::All && !explanation.offers.isEmpty() ? offersText(explanation.offers)
                                                                   : gridLine(explanation);
    if (!explanation.heights.isEmpty())
        text += explanation.heights + QLatin1Char('\n');
    for (const CoordSystemPtr &system : explanation.systems)
        if (const QString shift = shiftText(*system); !shift.isEmpty())
            text += QObject::tr("%1, shift to WGS 84: %2\n").arg(system->description().simplified(), shift);
    return text;
}

QString usageText(const CoordTransform &transform, const OperationTally &tally)
{
    if (transform.isEqualsCS())
        return QObject::tr("the systems are equal: points are copied");
    const auto uses = tally.uses();
    const bool isNone =
        std::all_of(uses.begin(), uses.end(), [](const auto &use) { return use.points == 0; });
    const QString required = isNone ? requiredGrids(explained(transform, std::nullopt, nullptr)) : QString();
    return required.isEmpty()
               ? usageText(tally, transform.epoch().has_value())
               : QObject::tr("no points: %1 is missing, without which nothing is transformed").arg(required);
}

QString usageText(const OperationTally &tally, bool hasEpoch)
{
    constexpr int mostNamed = 3;
    QStringList parts;
    qint64 others = 0;
    QString leftOut;
    for (const OperationTally::Use &use : tally.uses()) {
        if (use.points == 0)
            continue; // chosen, and every point failed
        if (use.operation.isBallpark)
            leftOut = use.operation.leavesOut;
        else if (parts.size() < mostNamed)
            parts << (use.points == 1 ? QObject::tr("%1 point by \"%2\", %3")
                                      : QObject::tr("%1 points by \"%2\", %3"))
                         .arg(QString::number(use.points), use.operation.shortName,
                              shortWorth(use.operation, hasEpoch));
        else
            others += use.points;
    }
    if (others > 0)
        parts << QObject::tr("%1 by other operations").arg(QString::number(others));
    if (const qint64 ballpark = tally.ballparkPoints(); ballpark > 0)
        parts << QObject::tr("%1 ballpark (without %2)").arg(QString::number(ballpark), leftOut);
    return parts.isEmpty() ? QObject::tr("no points") : parts.join(QStringLiteral("; "));
}

QString offersText(const QVector<GridOffer> &offers)
{
    QString text;
    for (const GridOffer &offer : offers) {
        text += QStringLiteral("%1: %2\n").arg(namesOf(offer.missing()), gainText(offer));
        text += indent + offer.operation().shortName + QLatin1Char('\n');
        if (const QString area = areaText(offer.operation(), Detail::Short); !area.isEmpty())
            text += indent + area + QLatin1Char('\n');
        for (const TransformGrid &grid : offer.missing())
            text += indent +
                    (grid.url.isEmpty() ? QObject::tr("%1: nobody offers it for download").arg(grid.name)
                                        : QObject::tr("projsync --file %1, or %2").arg(grid.name, grid.url)) +
                    QLatin1Char('\n');
    }
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
