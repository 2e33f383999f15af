#pragma once

#include <coordsys/CoordTransform.h>
#include <coordsys/OperationTally.h>

#include <QPointF>
#include <QVector>

#include <cstddef>
#include <limits>
#include <memory>
#include <optional>
#include <vector>

class QThreadPool;

namespace nivora::concurrent {
class ProgressHandler;
}

namespace nivora::cs {

/// How a list is converted. A default value suits most.
struct BulkOptions
{
    /// Threads that convert, the calling one among them: 1 is that one alone, 0 as many as the pool has.
    int threads = 0;
    /// Where the others come from, borrowed for the call; null is QThreadPool::globalInstance().
    QThreadPool *pool = nullptr;
    /// When the coordinates hold, in decimal years, for operations between moving frames; none by default.
    std::optional<double> epoch;
    /// More failures than this stop the conversion.
    std::size_t mostFailures = std::numeric_limits<std::size_t>::max();
    /// Is told the number of points (expected at the start, advanced block by block) and asked for
    /// cancellation; may be null.
    std::shared_ptr<nivora::concurrent::ProgressHandler> progress;
    /// Is told by which operations the points went; borrowed for the call, may be null. Where PROJ chooses by
    /// place the points go one by one then, which costs a tenth more.
    OperationTally *tally = nullptr;
    /// A point for which the datums' difference would be left out fails.
    bool refusesBallpark = false;
};

/// What became of a list.
struct BulkResult
{
    /// Why it ended.
    enum Ending { Finished, Canceled, TooManyFailures };

    Ending ending = Finished; ///< the list was gone through when Finished
    /// Positions of the points that failed, ascending. After an early end there may be more behind them.
    std::vector<std::size_t> failed;

    /// Every point was converted.
    bool isComplete() const { return ending == Finished && failed.empty(); }
};

/// Converts many points with many threads, or with one that waits for no other: what CoordTransform does
/// under a process-wide lock, to the bit, this does with PROJ objects of its own. Not for rectangles and
/// bounds. Coordinates are those of CoordTransform: x = longitude or easting first, degrees for geographic
/// systems, affine transformations included; equal systems copy. A point that fails is NaN in both
/// coordinates and fails alone. Where a conversion ended early, the points that it did not come to are NaN
/// too, so that nobody takes them for converted ones. Threads: thread-safe; one object serves any number at
/// once, each with a clone of PROJ's objects that is made on first need (up to 3 ms, with grid files half a
/// megabyte) and kept until the last object of the pair goes: all of one pair share the clones. May be called
/// from a thread of the pool it uses. Keeps the systems; their affine transformations are read at each call.
class NIVORA_CS_EXPORT BulkTransform
{
public:
    /// Takes the pair over; clones are made on first need.
    explicit BulkTransform(const CoordTransform &transform);
    /// Shares the clones.
    BulkTransform(const BulkTransform &other);
    /// Likewise.
    BulkTransform &operator=(const BulkTransform &other);
    ~BulkTransform();

    /// The pair it was made from.
    const CoordTransform &transform() const;

    /// \name Lists
    /// \p in and \p out are the same place, or do not overlap. They never throw for coordinates;
    /// std::bad_alloc when memory runs out.
    /// @{
    BulkResult forward(const QPointF *in, QPointF *out, std::size_t count,
                       const BulkOptions &options = {}) const;
    BulkResult inverse(const QPointF *in, QPointF *out, std::size_t count,
                       const BulkOptions &options = {}) const;
    /// Lists and polygons; \p in and \p out may be the same object. \p out gets the size of \p in.
    BulkResult forward(const QVector<QPointF> &in, QVector<QPointF> &out,
                       const BulkOptions &options = {}) const;
    BulkResult inverse(const QVector<QPointF> &in, QVector<QPointF> &out,
                       const BulkOptions &options = {}) const;
    /// @}

    /// \name A point, in the calling thread
    /// False when it fails; \p out is written only on success.
    /// @{
    /// Source to destination; the epoch as in BulkOptions.
    bool forward(const QPointF &in, QPointF &out, std::optional<double> epoch = std::nullopt) const;
    /// Destination to source.
    bool inverse(const QPointF &in, QPointF &out, std::optional<double> epoch = std::nullopt) const;
    /// @}

private:
    struct Impl;
    std::shared_ptr<const Impl> m_impl;
};

} // namespace nivora::cs
