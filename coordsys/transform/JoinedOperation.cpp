#include "JoinedOperation_p.h"

#include "AreaOfUse_p.h"
#include "CatalogueSource_p.h"
#include "CodedError_p.h"
#include "CoordSysTexts_p.h"
#include "CrsParts_p.h"
#include "ProjPoint_p.h"
#include "TransformOperations_p.h"
#include <coordsys/CoordSystem.h>
#include <coordsys/CoordTransform.h>

#include <cmath>
#include <stdexcept>

namespace nivora::cs {
namespace {

[[noreturn]] void refuse(const QString &why) { throwCoded<std::logic_error>(Error::Code::NoOperation, why); }

/// Projections and units alone; null when a datum would change.
PjHandle conversionBetween(const PJ *source, const PJ *target)
{
    PJ_CONTEXT *context = globalProjContext();
    const PjList list = operationList(context, source, target, OperationSet::Working);
    PjHandle first =
        list && proj_list_get_count(list.get()) > 0 ? ownPj(proj_list_get(context, list.get(), 0)) : nullptr;
    if (!first)
        return nullptr;
    const TransformOperation described = describedOperation(context, first.get());
    const bool isExact = described.accuracyM == 0.0 && !described.isBallpark;
    return isExact ? std::move(first) : nullptr;
}

/// The steps of an operation's PROJ text, each with a blank before it; empty for none at all.
QString stepsOf(const PJ *operation)
{
    const QLatin1String pipeline("+proj=pipeline");
    const QString text =
        QString::fromUtf8(proj_as_proj_string(globalProjContext(), operation, PJ_PROJ_5, nullptr));
    if (text == QLatin1String("+proj=noop"))
        return {};
    return text.startsWith(pipeline) ? text.mid(pipeline.size()) : QStringLiteral(" +step ") + text;
}

/// Null when the ends do not fit.
PjHandle tryJoin(const PJ *source, const PJ *operation, const PJ *target)
{
    PJ_CONTEXT *context = globalProjContext();
    const PjHandle begin = ownPj(proj_get_source_crs(context, operation));
    const PjHandle end = ownPj(proj_get_target_crs(context, operation));
    if (!begin || !end)
        return nullptr;
    const PjHandle before = conversionBetween(source, begin.get());
    const PjHandle behind = conversionBetween(end.get(), target);
    if (!before || !behind)
        return nullptr;
    const QString text =
        QStringLiteral("+proj=pipeline") + stepsOf(before.get()) + stepsOf(operation) + stepsOf(behind.get());
    return ownPj(proj_create(context, text.toUtf8().constData()));
}

QString endsText(const PJ *operation)
{
    PJ_CONTEXT *context = globalProjContext();
    const PjHandle begin = ownPj(proj_get_source_crs(context, operation));
    const PjHandle end = ownPj(proj_get_target_crs(context, operation));
    const auto name = [](const PjHandle &crs) {
        return crs ? QString::fromUtf8(proj_get_name(crs.get())) : QStringLiteral("?");
    };
    return name(begin) + QStringLiteral(" → ") + name(end);
}

/// A place of both systems in degrees on WGS 84: the middle of the source's area. None without one.
std::optional<QPointF> middleOf(const CoordSystemPtr &system)
{
    std::optional<QPointF> middle;
    askWithEnds(globalProjContext(), system, system, [&](const PJ *crs, const PJ *) {
        if (const std::optional<QRectF> area = areaOfUse(globalProjContext(), crs))
            middle = area->center();
        return true;
    });
    return middle;
}

QString placeText(const QPointF &point)
{
    return QStringLiteral("%1, %2").arg(QString::number(point.x(), 'g', 9),
                                        QString::number(point.y(), 'g', 9));
}

/// Units and axes cannot be read from PROJ text, but where it leads can be seen.
void checkEnds(const ProjOperation &step, const CoordSystemPtr &from, const CoordSystemPtr &to)
{
    constexpr double mostShiftDeg = 0.1; // no datum lies ten kilometres from another
    const CoordSystemPtr wgs84 = activeCatalogues()->latLongWgs84CoordSystem();
    const std::optional<QPointF> middle = wgs84 ? middleOf(from) : std::nullopt;
    QPointF start, usual, usualPlace, place;
    if (!middle || !CoordTransform(wgs84, from).forward(*middle, start) ||
        !CoordTransform(from, to).forward(start, usual) ||
        !CoordTransform(to, wgs84).forward(usual, usualPlace))
        return; // no place to look at
    QPointF moved = start;
    const bool works = transformPoint(step, PJ_FWD, moved);
    if (works && CoordTransform(to, wgs84).forward(moved, place) &&
        std::fabs(std::remainder(place.x() - usualPlace.x(), 360.0)) * std::cos(proj_torad(place.y())) <
            mostShiftDeg &&
        std::fabs(place.y() - usualPlace.y()) < mostShiftDeg)
        return;
    refuse(CoordSysTexts::tr(
               "Операция не соединяет эти КС: точку (%1) она переводит в (%2), а не в (%3). Порядок "
               "координат: сначала x (долгота)")
               .arg(placeText(start), works ? placeText(moved) : QStringLiteral("*"), placeText(usual)));
}

} // namespace

PjHandle joinedWithEnds(const PJ *source, const PJ *operation, const PJ *target)
{
    PJ_CONTEXT *context = globalProjContext();
    const PjHandle xFirstSource = ownPj(proj_normalize_for_visualization(context, source));
    const PjHandle xFirstTarget = ownPj(proj_normalize_for_visualization(context, target));
    if (PjHandle forward = tryJoin(xFirstSource.get(), operation, xFirstTarget.get()))
        return forward;
    const PjHandle inverse = ownPj(proj_coordoperation_create_inverse(context, operation));
    if (PjHandle back = inverse ? tryJoin(xFirstSource.get(), inverse.get(), xFirstTarget.get()) : nullptr)
        return back;
    refuse(CoordSysTexts::tr("Операция «%1» соединяет %2, а не эти КС")
               .arg(QString::fromUtf8(proj_get_name(operation)), endsText(operation)));
}

bool isProjText(const QString &text)
{
    return text.contains(QLatin1String("proj=")) && !text.contains(QLatin1Char('['));
}

ProjOperation stepOfProjText(const QString &text, const CoordSystemPtr &from, const CoordSystemPtr &to)
{
    PJ_CONTEXT *context = globalProjContext();
    std::shared_ptr<PJ> pj = ownPj(proj_create(context, text.toUtf8().constData()));
    if (!pj || proj_is_crs(pj.get()))
        refuse(CoordSysTexts::tr("Нет такой операции: %1").arg(text.left(200)));
    if (proj_pj_info(pj.get()).has_inverse == 0)
        refuse(CoordSysTexts::tr("Операция не имеет обратной: %1").arg(text.left(200)));
    ProjOperation step(std::move(pj));
    TransformOperation described;
    described.name = described.shortName = described.definition = text;
    described.hasInverse = true;
    step.single = std::make_shared<const TransformOperation>(described);
    checkEnds(step, from, to);
    return step;
}

} // namespace nivora::cs
