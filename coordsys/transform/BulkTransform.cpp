#include <coordsys/BulkTransform.h>

#include "DirectedOperation_p.h"
#include "OperationPool_p.h"
#include "ParallelFor_p.h"
#include "TransformAccess_p.h"
#include "TransformOperations_p.h"
#include <coordsys/CoordSystem.h>
#include <platform/utils/ProgressHandler.h>

#include <QMutexLocker>
#include <QThreadPool>

#include <algorithm>
#include <atomic>
#include <limits>

namespace nivora::cs {
namespace {

using nivora::concurrent::ProgressHandler;

/// Points that a thread takes at a time: a millisecond or so, after which it looks whether to stop.
constexpr std::size_t blockSize = 2048;
const QPointF failedPoint(std::numeric_limits<double>::quiet_NaN(), std::numeric_limits<double>::quiet_NaN());

/// One direction, as it stands at the time of a call.
struct Way
{
    OperationPool *pool; ///< null for equal systems
    DirectedOperation operation;

    bool fails() const { return pool && operation.isSingular(); }
};

bool isSingle(const TransformQueue &queue)
{
    return queue.first.single && (!queue.second || queue.second.single);
}

bool leavesDatumOut(const OperationWatch::Pair &used)
{
    return used[0]->isBallpark || (used[1] && used[1]->isBallpark);
}

/// The points of a block by operation, of which there are few.
class UseCounts
{
public:
    void add(const OperationWatch::Pair &used)
    {
        if (m_last == m_counts.size() || m_counts[m_last].first != used)
            m_last = place(used);
        ++m_counts[m_last].second;
    }
    void report(OperationTally &tally) const
    {
        for (const auto &[used, points] : m_counts)
            tally.add(used[1] ? joined(*used[0], *used[1]) : *used[0], points);
    }

private:
    std::size_t place(const OperationWatch::Pair &used)
    {
        const auto known =
            std::find_if(m_counts.begin(), m_counts.end(), [&](const auto &c) { return c.first == used; });
        const auto place = static_cast<std::size_t>(known - m_counts.begin());
        if (known == m_counts.end())
            m_counts.emplace_back(used, 0);
        return place;
    }
    std::vector<std::pair<OperationWatch::Pair, qint64>> m_counts;
    std::size_t m_last = 0;
};

/// The positions of a part's failed points, which become NaN.
void collectFailures(QPointF *points, std::size_t begin, std::size_t end, std::vector<std::size_t> &failed)
{
    for (std::size_t i = begin; i < end; ++i)
        if (!isFinite(points[i])) {
            points[i] = failedPoint;
            failed.push_back(i);
        }
}

/// A list on its way; run() is called by every thread that takes part.
class ListJob
{
public:
    ListJob(const Way &way, const QPointF *in, QPointF *out, std::size_t count, const BulkOptions &options)
        : m_way(way)
        , m_in(in)
        , m_out(out)
        , m_count(count)
        , m_options(options)
    {
        if (options.progress)
            options.progress->expect(count);
    }

    std::size_t blocks() const { return (m_count + blockSize - 1) / blockSize; }
    void run();
    BulkResult result();

private:
    bool goesOn();
    void convertBlock(std::size_t begin, std::size_t end, std::vector<std::size_t> &failed) const;
    void convertPieces(std::size_t begin, std::size_t end) const;
    bool isWatched() const { return m_options.tally || m_options.refusesBallpark; }
    void watchSingle(std::size_t begin, std::size_t end) const;
    void convertWatched(std::size_t begin, std::size_t end) const;

    const Way &m_way;
    const QPointF *m_in;
    QPointF *m_out;
    std::size_t m_count;
    const BulkOptions &m_options;
    std::atomic<std::size_t> m_nextBlock{0};
    std::atomic<std::size_t> m_failures{0};
    std::atomic<int> m_ending{BulkResult::Finished};
    QMutex m_mutex; ///< guards m_failed
    std::vector<std::size_t> m_failed;
};

bool ListJob::goesOn()
{
    if (m_options.progress && m_options.progress->isCanceled())
        m_ending = BulkResult::Canceled;
    else if (m_failures > m_options.mostFailures)
        m_ending = BulkResult::TooManyFailures;
    return m_ending == BulkResult::Finished;
}

void ListJob::run()
{
    std::vector<std::size_t> failed;
    for (std::size_t block; (block = m_nextBlock++) < blocks();) {
        const std::size_t begin = block * blockSize;
        const std::size_t end = std::min(begin + blockSize, m_count);
        if (!goesOn()) {
            std::fill(m_out + begin, m_out + end, failedPoint);
            continue;
        }
        const std::size_t before = failed.size();
        convertBlock(begin, end, failed);
        m_failures += failed.size() - before;
        if (m_options.progress)
            m_options.progress->advance(end - begin);
    }
    const QMutexLocker lock(&m_mutex);
    m_failed.insert(m_failed.end(), failed.begin(), failed.end());
}

void ListJob::convertBlock(std::size_t begin, std::size_t end, std::vector<std::size_t> &failed) const
{
    if (m_way.fails())
        std::fill(m_out + begin, m_out + end, failedPoint);
    else if (m_way.pool && isWatched() && !isSingle(m_way.pool->original()))
        convertWatched(begin, end);
    else if (m_way.pool)
        convertPieces(begin, end);
    else if (m_in != m_out)
        std::copy(m_in + begin, m_in + end, m_out + begin);
    collectFailures(m_out, begin, end, failed);
}

void ListJob::convertPieces(std::size_t begin, std::size_t end) const
{
    const PoolLease engine(*m_way.pool);
    m_way.operation.convert(engine.queue(), m_in + begin, m_out + begin, end - begin, AtFailure::GoOn);
    if (isWatched())
        watchSingle(begin, end);
}

/// Where there is one operation for all points.
void ListJob::watchSingle(std::size_t begin, std::size_t end) const
{
    const TransformQueue &queue = m_way.pool->original();
    const TransformOperation used =
        queue.second ? joined(*queue.first.single, *queue.second.single) : *queue.first.single;
    if (m_options.refusesBallpark && used.isBallpark)
        std::fill(m_out + begin, m_out + end, failedPoint);
    if (m_options.tally)
        m_options.tally->add(used, std::count_if(m_out + begin, m_out + end, isFinite));
}

/// Point by point where PROJ chooses by place.
void ListJob::convertWatched(std::size_t begin, std::size_t end) const
{
    const PoolLease engine(*m_way.pool);
    std::unique_ptr<OperationWatch> spare;
    OperationWatch &watch = engine.watch(spare);
    UseCounts counts;
    for (std::size_t i = begin; i < end; ++i) {
        QPointF point = m_in[i];
        if (m_way.operation.convert(engine.queue(), point)) {
            const OperationWatch::Pair &used = watch.lastUsed(engine.queue());
            if (m_options.refusesBallpark && leavesDatumOut(used))
                point = failedPoint;
            else
                counts.add(used);
        }
        m_out[i] = point;
    }
    if (m_options.tally)
        counts.report(*m_options.tally);
}

BulkResult ListJob::result()
{
    goesOn(); // a bound that the last block passed
    std::sort(m_failed.begin(), m_failed.end());
    return {static_cast<BulkResult::Ending>(m_ending.load()), std::move(m_failed)};
}

} // namespace

struct NIVORA_CS_NO_EXPORT BulkTransform::Impl
{
    Impl(const CoordTransform &original, TransformQueuePtr queue)
        : transform(original)
        , source(original.sourceCoordSystem())
        , destination(original.destinationCoordSystem())
        , pool(queue ? OperationPool::of(std::move(queue)) : nullptr)
    {}

    Way way(int direction, std::optional<double> epoch) const
    {
        const bool forward = direction == PJ_FWD;
        return {pool.get(),
                {AffineMap(forward ? *source : *destination), AffineMap(forward ? *destination : *source),
                 direction, epoch.value_or(HUGE_VAL)}};
    }
    BulkResult convert(const Way &way, const QPointF *in, QPointF *out, std::size_t count,
                       const BulkOptions &options) const;
    BulkResult convert(int direction, const QVector<QPointF> &in, QVector<QPointF> &out,
                       const BulkOptions &options) const;
    bool convert(const Way &way, const QPointF &in, QPointF &out) const;

    CoordTransform transform;
    CoordSystemPtr source;
    CoordSystemPtr destination;
    std::shared_ptr<OperationPool> pool; ///< null for equal systems
};

BulkResult BulkTransform::Impl::convert(const Way &way, const QPointF *in, QPointF *out, std::size_t count,
                                        const BulkOptions &options) const
{
    ListJob job(way, in, out, count, options);
    QThreadPool &threadPool = options.pool ? *options.pool : *QThreadPool::globalInstance();
    const int wanted = options.threads > 0 ? options.threads : threadPool.maxThreadCount();
    const auto threads = std::min(static_cast<std::size_t>(std::max(wanted, 1)), job.blocks());
    parallelFor(threadPool, static_cast<int>(threads) - 1, [&job] { job.run(); });
    return job.result();
}

BulkResult BulkTransform::Impl::convert(int direction, const QVector<QPointF> &in, QVector<QPointF> &out,
                                        const BulkOptions &options) const
{
    const auto count = static_cast<std::size_t>(in.size());
    if (&in != &out)
        out.resize(in.size());
    QPointF *target = out.data(); // detaches first: in and out may share their points
    return convert(way(direction, options.epoch), in.constData(), target, count, options);
}

bool BulkTransform::Impl::convert(const Way &way, const QPointF &in, QPointF &out) const
{
    if (way.fails())
        return false;
    QPointF point = in;
    if (way.pool ? !way.operation.convert(PoolLease(*way.pool).queue(), point) : !isFinite(point))
        return false;
    out = point;
    return true;
}

BulkTransform::BulkTransform(const CoordTransform &transform)
    : m_impl(std::make_shared<Impl>(transform, TransformAccess::queue(transform)))
{}

BulkTransform::BulkTransform(const BulkTransform &other) = default;
BulkTransform &BulkTransform::operator=(const BulkTransform &other) = default;
BulkTransform::~BulkTransform() = default;

const CoordTransform &BulkTransform::transform() const { return m_impl->transform; }

BulkResult BulkTransform::forward(const QPointF *in, QPointF *out, std::size_t count,
                                  const BulkOptions &options) const
{
    return m_impl->convert(m_impl->way(PJ_FWD, options.epoch), in, out, count, options);
}

BulkResult BulkTransform::inverse(const QPointF *in, QPointF *out, std::size_t count,
                                  const BulkOptions &options) const
{
    return m_impl->convert(m_impl->way(PJ_INV, options.epoch), in, out, count, options);
}

BulkResult BulkTransform::forward(const QVector<QPointF> &in, QVector<QPointF> &out,
                                  const BulkOptions &options) const
{
    return m_impl->convert(PJ_FWD, in, out, options);
}

BulkResult BulkTransform::inverse(const QVector<QPointF> &in, QVector<QPointF> &out,
                                  const BulkOptions &options) const
{
    return m_impl->convert(PJ_INV, in, out, options);
}

bool BulkTransform::forward(const QPointF &in, QPointF &out, std::optional<double> epoch) const
{
    return m_impl->convert(m_impl->way(PJ_FWD, epoch), in, out);
}

bool BulkTransform::inverse(const QPointF &in, QPointF &out, std::optional<double> epoch) const
{
    return m_impl->convert(m_impl->way(PJ_INV, epoch), in, out);
}

} // namespace nivora::cs
