#include <coordsys/SpatialTransform.h>

#include "AreaOfUse_p.h"
#include "ChosenOperation_p.h"
#include "CodedError_p.h"
#include "CoordSysTexts_p.h"
#include "CrsParts_p.h"
#include "OperationPool_p.h"
#include "SearchContext_p.h"
#include "TransformOperations_p.h"

#include <proj_experimental.h>

#include <QMutexLocker>
#include <QStringList>

#include <cmath>
#include <limits>
#include <stdexcept>

namespace nivora::cs {
namespace {

using Height = SpatialSystem::Height;

/// The system as it takes part: without heights when they pass through, with ellipsoidal ones beside a
/// geocentric system.
PjHandle endOf(PJ_CONTEXT *context, const SpatialSystem &system, const SpatialSystem &other, bool withHeights)
{
    PjHandle crs = ownPj(proj_create(context, system.definition().toUtf8().constData()));
    if (crs && !withHeights)
        return horizontalPart(context, crs.get());
    if (crs && system.height() == Height::None && other.height() == Height::Geocentric)
        return ownPj(proj_crs_promote_to_3D(context, nullptr, crs.get()));
    return crs;
}

bool haveHeights(const SpatialSystem &a, const SpatialSystem &b)
{
    const bool isGeocentric = a.height() == Height::Geocentric || b.height() == Height::Geocentric;
    return isGeocentric || (a.height() != Height::None && b.height() != Height::None);
}

bool leavesGeoidOut(const TransformOperation &operation)
{
    return operation.isBallpark &&
           operation.name.contains(QLatin1String("ballpark vertical"), Qt::CaseInsensitive);
}

/// The height of the geoid of 1996 above the ellipsoid in the middle of an area; none without its file.
std::optional<double> geoidM(PJ_CONTEXT *context, const PJ *crs)
{
    constexpr double widest = 60.0; // degrees; the geoid of the whole earth has no middle
    const PjHandle geoid =
        ownPj(proj_create(context, "+proj=vgridshift +grids=us_nga_egm96_15.tif +multiplier=1"));
    const std::optional<QRectF> area = areaOfUse(context, crs);
    if (!geoid || !area || !(area->width() > 0.0 && area->width() < widest))
        return std::nullopt;
    const QPointF middle = area->center();
    const PJ_COORD height = proj_trans(
        geoid.get(), PJ_FWD, proj_coord(proj_torad(middle.x()), proj_torad(middle.y()), 0.0, HUGE_VAL));
    return std::isfinite(height.v[2]) ? std::make_optional(std::fabs(height.v[2])) : std::nullopt;
}

/// The files of the first operation that would keep the geoid; empty when there is none.
QString missingFiles(PJ_CONTEXT *context, const PJ *source, const PJ *target)
{
    for (const TransformOperation &operation :
         operationsBetween(context, source, target, OperationSet::Known)) {
        QStringList names;
        for (const TransformGrid &grid : operation.grids)
            if (!grid.isAvailable)
                names << grid.name;
        if (!names.isEmpty() && !leavesGeoidOut(operation))
            return names.join(QLatin1String(", "));
    }
    return {};
}

/// What operationEpoch() gives; \p clash is set where it throws.
std::optional<double> epochBetween(bool fromMoves, bool toMoves, std::optional<double> epoch,
                                   std::optional<double> wanted, bool &clash)
{
    clash = fromMoves && toMoves && epoch && wanted && *epoch != *wanted;
    const bool isOfTarget = toMoves && !fromMoves;
    const std::optional<double> first = isOfTarget ? wanted : epoch;
    return first ? first : isOfTarget ? epoch : wanted;
}

std::optional<double> yearAt(const double *years, std::size_t i)
{
    return years && std::isfinite(years[i]) ? std::make_optional(years[i]) : std::nullopt;
}

/// PROJ's own choice at each place; empty when it knows no way.
ProjOperation usualStep(PJ_CONTEXT *context, const PJ *begin, const PJ *end)
{
    const PjHandle way = ownPj(proj_create_crs_to_crs_from_pj(context, begin, end, nullptr, nullptr));
    if (!way)
        return {};
    PJ *normalized = proj_normalize_for_visualization(context, way.get());
    ProjOperation step(std::shared_ptr<PJ>(ownPj(normalized ? normalized : proj_clone(context, way.get()))));
    step.single = singleOperation(context, way.get());
    return step;
}

} // namespace

struct NIVORA_CS_NO_EXPORT SpatialTransform::Impl
{
    Impl(const SpatialSystem &from, const SpatialSystem &to, const OperationChoice &choice);
    using Failed = std::vector<std::size_t>;
    /// The coordinates of points and their epochs; those of time may be null.
    struct Points
    {
        double *x, *y, *z;
        const double *t, *wantedT;
        std::size_t count;
    };
    Failed convert(int direction, const Points &points, OperationTally *tally) const;
    bool convert(int direction, SpatialPoint &point, OperationTally *tally = nullptr) const;
    QVector<TransformOperation> operations(OperationSet set) const;

    SpatialSystem source;
    SpatialSystem destination;
    bool withHeights;
    QString missing;
    std::unique_ptr<OperationPool> pool;

private:
    void describeMissing(PJ_CONTEXT *context, const PJ *from, const PJ *to);
    bool convertOne(const TransformQueue &queue, OperationWatch &watch, int direction, PJ_COORD &c) const;
    bool settleTime(int direction, const Points &points, std::size_t i, double &time) const;
};

SpatialTransform::Impl::Impl(const SpatialSystem &from, const SpatialSystem &to,
                             const OperationChoice &choice)
    : source(from)
    , destination(to)
    , withHeights(haveHeights(from, to))
{
    const QMutexLocker lock(globalProj4Mutex());
    PJ_CONTEXT *context = globalProjContext();
    const PjHandle begin = endOf(context, from, to, withHeights);
    const PjHandle end = endOf(context, to, from, withHeights);
    auto queue = std::make_shared<TransformQueue>();
    if (begin && end)
        queue->first = choice.isDefault() ? usualStep(context, begin.get(), end.get())
                                          : chosenStepBetween(begin.get(), end.get(), choice);
    if (!queue->first)
        throw std::logic_error(
            CoordSysTexts::tr("Не могу создать объект трансформации. %1").arg(projLastError()).toStdString());
    pool = std::make_unique<OperationPool>(std::move(queue));
    if (withHeights)
        describeMissing(context, begin.get(), end.get());
}

void SpatialTransform::Impl::describeMissing(PJ_CONTEXT *context, const PJ *from, const PJ *to)
{
    for (const TransformOperation &operation : operationsBetween(context, from, to, OperationSet::Working))
        if (!leavesGeoidOut(operation))
            return;
    const QString files = missingFiles(context, from, to);
    const auto apart = geoidM(context, source.height() == Height::Own ? from : to);
    const QString metres = apart ? QString::number(*apart, 'f', 0) : QStringLiteral("110");
    missing = files.isEmpty()
                  ? CoordSysTexts::tr(
                        "Высоты не пересчитываются: связь их систем неизвестна (ошибка была бы порядка %1 м)")
                        .arg(metres)
                  : CoordSysTexts::tr("Высоты не пересчитываются: нет файла %1 (ошибка была бы порядка %2 м)")
                        .arg(files, metres);
}

bool SpatialTransform::Impl::convertOne(const TransformQueue &queue, OperationWatch &watch, int direction,
                                        PJ_COORD &c) const
{
    const double height = c.v[2];
    const ProjOperation &step = queue.first;
    step.in[sideOf(direction)].enter(c.v[0], c.v[1]);
    c = proj_trans(step.pj.get(), step.objectDirection(direction), c);
    step.out[sideOf(direction)].leave(c.v[0], c.v[1]);
    if (!withHeights)
        c.v[2] = height;
    const bool works = std::isfinite(c.v[0]) && std::isfinite(c.v[1]) && std::isfinite(c.v[2]);
    return works && (!withHeights || !leavesGeoidOut(*watch.lastUsed(queue)[0]));
}

/// False for two epochs that nothing joins.
bool SpatialTransform::Impl::settleTime(int direction, const Points &points, std::size_t i,
                                        double &time) const
{
    const bool isForward = direction == PJ_FWD;
    bool clash = false;
    const auto epoch = epochBetween((isForward ? source : destination).isDynamic(),
                                    (isForward ? destination : source).isDynamic(), yearAt(points.t, i),
                                    yearAt(points.wantedT, i), clash);
    time = epoch.value_or(HUGE_VAL); // which is none for PROJ
    return !clash;
}

SpatialTransform::Impl::Failed SpatialTransform::Impl::convert(int direction, const Points &points,
                                                               OperationTally *tally) const
{
    const PoolLease engine(*pool);
    std::unique_ptr<OperationWatch> spare;
    OperationWatch &watch = engine.watch(spare);
    Failed failed;
    for (std::size_t i = 0; i < points.count; ++i) {
        double time = HUGE_VAL;
        const bool hasTime = settleTime(direction, points, i, time);
        PJ_COORD c = proj_coord(points.x[i], points.y[i], points.z[i], time);
        if (hasTime && convertOne(engine.queue(), watch, direction, c)) {
            if (tally)
                tally->add(*watch.lastUsed(engine.queue())[0], 1);
        } else {
            c = proj_coord(NAN, NAN, NAN, time);
            failed.push_back(i);
        }
        points.x[i] = c.v[0];
        points.y[i] = c.v[1];
        points.z[i] = c.v[2];
    }
    return failed;
}

bool SpatialTransform::Impl::convert(int direction, SpatialPoint &point, OperationTally *tally) const
{
    SpatialPoint moved = point;
    const double time = point.t.value_or(std::numeric_limits<double>::quiet_NaN());
    const double wanted = point.wantedT.value_or(std::numeric_limits<double>::quiet_NaN());
    if (!convert(direction, {&moved.x, &moved.y, &moved.z, &time, &wanted, 1}, tally).empty())
        return false;
    point = moved;
    return true;
}

QVector<TransformOperation> SpatialTransform::Impl::operations(OperationSet set) const
{
    const SearchContext context;
    const PjHandle begin = endOf(context.get(), source, destination, withHeights);
    const PjHandle end = endOf(context.get(), destination, source, withHeights);
    return begin && end ? operationsBetween(context.get(), begin.get(), end.get(), set)
                        : QVector<TransformOperation>();
}

std::optional<double> operationEpoch(const SpatialSystem &from, const SpatialSystem &to,
                                     std::optional<double> epoch, std::optional<double> wantedEpoch)
{
    bool clash = false;
    const auto result = epochBetween(from.isDynamic(), to.isDynamic(), epoch, wantedEpoch, clash);
    if (clash)
        throwCoded<std::logic_error>(
            Error::Code::NoOperation,
            CoordSysTexts::tr(
                "Координаты на эпоху %1 нельзя перевести на эпоху %2: обе системы («%3» и «%4») "
                "движутся относительно плит, а как двигались точки, неизвестно")
                .arg(QString::number(*epoch), QString::number(*wantedEpoch), from.name(), to.name()));
    return result;
}

SpatialTransform::SpatialTransform(const SpatialSystem &from, const SpatialSystem &to)
    : m_impl(std::make_shared<Impl>(from, to, OperationChoice()))
{}

SpatialTransform::SpatialTransform(const SpatialSystem &from, const SpatialSystem &to,
                                   const OperationChoice &choice)
    : m_impl(std::make_shared<Impl>(from, to, choice))
{}

SpatialTransform::SpatialTransform(const SpatialTransform &other) = default;
SpatialTransform &SpatialTransform::operator=(const SpatialTransform &other) = default;
SpatialTransform::~SpatialTransform() = default;

SpatialSystem SpatialTransform::source() const { return m_impl->source; }

SpatialSystem SpatialTransform::destination() const { return m_impl->destination; }

bool SpatialTransform::transformsHeights() const { return m_impl->withHeights; }

QString SpatialTransform::missingHeights() const { return m_impl->missing; }

QVector<TransformOperation> SpatialTransform::operations() const
{
    return m_impl->operations(OperationSet::Working);
}

std::optional<TransformOperation> SpatialTransform::operationAt(const SpatialPoint &point) const
{
    SpatialPoint moved = point;
    OperationTally tally;
    if (!m_impl->convert(PJ_FWD, moved, &tally))
        return std::nullopt;
    return tally.uses().constFirst().operation;
}

QVector<GridOffer> SpatialTransform::gridOffers() const
{
    return offersBetween(m_impl->operations(OperationSet::Working), m_impl->operations(OperationSet::Known));
}

std::vector<std::size_t> SpatialTransform::forward(double *x, double *y, double *z, const double *t,
                                                   std::size_t count, OperationTally *tally) const
{
    return m_impl->convert(PJ_FWD, {x, y, z, t, nullptr, count}, tally);
}

std::vector<std::size_t> SpatialTransform::inverse(double *x, double *y, double *z, const double *t,
                                                   std::size_t count, OperationTally *tally) const
{
    return m_impl->convert(PJ_INV, {x, y, z, t, nullptr, count}, tally);
}

std::vector<std::size_t> SpatialTransform::forward(double *x, double *y, double *z, const double *t,
                                                   const double *wantedT, std::size_t count,
                                                   OperationTally *tally) const
{
    return m_impl->convert(PJ_FWD, {x, y, z, t, wantedT, count}, tally);
}

std::vector<std::size_t> SpatialTransform::inverse(double *x, double *y, double *z, const double *t,
                                                   const double *wantedT, std::size_t count,
                                                   OperationTally *tally) const
{
    return m_impl->convert(PJ_INV, {x, y, z, t, wantedT, count}, tally);
}

bool SpatialTransform::forward(SpatialPoint &point) const { return m_impl->convert(PJ_FWD, point); }

bool SpatialTransform::inverse(SpatialPoint &point) const { return m_impl->convert(PJ_INV, point); }

} // namespace nivora::cs
