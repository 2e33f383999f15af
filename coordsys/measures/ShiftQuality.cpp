#include <coordsys/ShiftQuality.h>

#include "CatalogueSource_p.h"
#include "CoordSysTexts_p.h"
#include "CrsParts_p.h"
#include "GeographicExtent_p.h"
#include "RegisteredShift_p.h"
#include "SearchContext_p.h"
#include "TransformOperations_p.h"
#include <coordsys/CoordSystem.h>
#include <coordsys/CoordTransform.h>
#include <coordsys/PrjText.h>
#include <platform/Logger.h>

namespace nivora::cs {
namespace {

/// What PROJ knows the system's datum by; empty when there is nothing.
QString definitionOf(const CoordSystem &cs)
{
    const int epsg = cs.epsg();
    if (epsg > 0)
        return QStringLiteral("EPSG:%1").arg(epsg);
    return cs.sourceType() == CoordSystem::Wkt ? cs.sourceParameters().string : QString();
}

CoordSystemPtr systemOf(const QString &definition)
{
    const auto catalogues = activeCatalogues();
    const bool isCode = definition.startsWith(QLatin1String("EPSG:"));
    return isCode ? catalogues->createFromEpsg(definition.mid(5).toInt())
                  : catalogues->createFromWkt(definition);
}

/// What the system is when its CoordSys string is all there is; null for a string that says nothing of the
/// earth. Of its clauses that affine one stays which the string of the definition has, too.
CoordSystemPtr systemOfText(const CoordSystem &cs, const CoordSystem &defined)
{
    const auto catalogues = activeCatalogues();
    const bool isGiven = cs.sourceType() == CoordSystem::Prj;
    const CoordSystemPtr text = catalogues->createWithoutDescription((isGiven ? cs : defined).prjStr());
    const CoordSystemPtr plain = text->isNonEarth() ? nullptr : catalogues->createFromProj(text->projStr());
    const bool isPart = !isGiven || catalogues->createWithoutDescription(defined.prjStr())->affineTransform();
    if (plain && isPart && text->affineTransform())
        plain->setAffineTransform(std::make_unique<QTransform>(*text->affineTransform()), text->affineUnit());
    return plain;
}

/// The coordinates that the definition has for a place, read by the text: how far off they lie.
std::optional<double> textDistanceM(const CoordSystem &cs, const QString &definition, const QPointF &place)
{
    try {
        const CoordSystemPtr wgs84 = activeCatalogues()->createFromEpsg(4326);
        const CoordSystemPtr defined = systemOf(definition);
        const CoordSystemPtr text = systemOfText(cs, *defined);
        QPointF numbers;
        QPointF moved;
        if (!text || !CoordTransform(defined, wgs84).inverse(place, numbers) ||
            !CoordTransform(text, wgs84).forward(numbers, moved))
            return std::nullopt;
        bool ok = false;
        const double apartM = wgs84->sphericalDistance(place, moved, &ok);
        return ok ? std::make_optional(apartM) : std::nullopt;
    } catch (const std::exception &e) { // no CoordSys string, or none that can be read
        LOG_DEBUG(QString::fromUtf8(e.what()));
        return std::nullopt;
    }
}

/// Operations without an area are taken for those of everywhere.
bool fitsAt(const TransformOperation &operation, const QPointF &place)
{
    const QRectF area = eastward(operation.area);
    return area.isNull() || areaHolds(area, QRectF(place, QSizeF(0.0, 0.0)));
}

/// The most accurate of the operations that fit at the place, the first of equal ones; null when none has an
/// accuracy.
template <typename Fits>
const TransformOperation *mostAccurate(const QVector<TransformOperation> &operations, const QPointF &place,
                                       Fits &&fits)
{
    const TransformOperation *best = nullptr;
    for (const TransformOperation &operation : operations)
        if (operation.accuracyM >= 0.0 && !operation.isBallpark && fitsAt(operation, place) &&
            fits(operation) && (!best || operation.accuracyM < best->accuracyM))
            best = &operation;
    return best;
}

void readOperations(PJ_CONTEXT *context, const PJ *from, const PJ *to, ShiftQuality &quality)
{
    const QVector<TransformOperation> working = operationsBetween(context, from, to, OperationSet::Working);
    if (const TransformOperation *used =
            mostAccurate(working, quality.place, [](const auto &) { return true; }))
        quality.operation = used->name;
    const QVector<TransformOperation> operations = operationsBetween(context, from, to, OperationSet::Known);
    const auto best = [&](auto &&fits) { return mostAccurate(operations, quality.place, fits); };
    if (const TransformOperation *bare = best([](const TransformOperation &o) { return o.grids.isEmpty(); }))
        quality.accuracyM = bare->accuracyM;
    const TransformOperation *whole = best([](const TransformOperation &) { return true; });
    if (!whole)
        return;
    quality.accuracyWithGridsM = whole->accuracyM;
    for (const TransformGrid &grid : whole->grids)
        if (!grid.isAvailable)
            quality.missingGrids << grid.name;
}

/// Of the operations, all but what the CoordSys text does.
std::optional<ShiftQuality> operationQuality(const QString &definition)
{
    const SearchContext context;
    const PjHandle whole = definition.isEmpty() ? nullptr : crsOf(context.get(), definition);
    const PjHandle crs = whole ? horizontalPart(context.get(), whole.get()) : nullptr;
    const PjHandle wgs84 = crsOf(context.get(), QStringLiteral("EPSG:4326"));
    ShiftQuality quality;
    if (!crs || !wgs84 || !middleOfArea(context.get(), crs.get(), quality.place))
        return std::nullopt;
    quality.definition = definition.startsWith(QLatin1String("EPSG:"))
                             ? definition
                             : QString::fromUtf8(proj_get_name(crs.get()));
    if (const PjHandle base = baseOf(context.get(), crs.get()))
        readOperations(context.get(), base.get(), wgs84.get(), quality);
    return quality;
}

} // namespace

std::optional<ShiftQuality> shiftQuality(const CoordSystem &cs)
{
    const QString definition = definitionOf(cs);
    std::optional<ShiftQuality> quality = operationQuality(definition);
    if (quality)
        quality->textDistanceM = textDistanceM(cs, definition, quality->place);
    return quality;
}

QString prjRemark(const CoordSystem &cs)
{
    constexpr double toldM = 0.01;
    constexpr double manyFiguresM = 100.0;
    const PrjText text = prjTextOf(cs);
    if (text.isRefused())
        return text.reason();
    const auto quality = shiftQuality(cs);
    const double apartM = quality ? quality->textDistanceM.value_or(0.0) : 0.0;
    if (!(apartM >= toldM))
        return text.remark();
    const QString metres =
        apartM < manyFiguresM ? QString::number(apartM, 'g', 3) : QString::number(apartM, 'f', 0);
    const QString datum = CoordSysTexts::tr("датум строки беднее зарегистрированного: %1 м").arg(metres);
    return text.remark().isEmpty() ? datum : text.remark() + QStringLiteral("; ") + datum;
}

} // namespace nivora::cs
