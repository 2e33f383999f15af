#pragma once

#include "CatalogueCache_p.h"
#include "ProjOperation_p.h"
#include <coordsys/CoordSystemTypes.h>
#include <coordsys/OperationChoice.h>

#include <QString>
#include <QStringList>

#include <cstdint>
#include <memory>
#include <utility>
#include <vector>

namespace nivora::cs {

class OperationPool;

/// One step, or two when the way runs through WGS 84. Immutable; its PJ objects need the PROJ lock.
struct TransformQueue
{
    ProjOperation first;
    ProjOperation second;
    mutable std::weak_ptr<OperationPool> pool; ///< that of OperationPool::of()
};
using TransformQueuePtr = std::shared_ptr<const TransformQueue>;

/// Transformations by the definitions of the two systems, which is what PROJ makes them from: at most so
/// many, all of them gone when a catalogue changes. Whoever converts keeps its own. What was asked
/// of two objects last is found by their states, so that a changed one gets its new transformation.
/// Thread-safe.
class NIVORA_CS_EXPORT CoordTransformCache
{
public:
    static constexpr std::size_t mostQueues = 1000;

    /// The way from one system to another.
    struct Route
    {
        bool isEqual = false;    ///< nothing is to be done
        TransformQueuePtr queue; ///< null when nothing is
    };
    /// Systems are equal as CoordSystem::isEqual() says with bounds, except two of different EPSG codes: PROJ
    /// decides there. A route by a choice is made anew each time. Throws as createNormalizedTransformation,
    /// and as chosenQueue() for a choice.
    Route routeFor(const CoordSystemPtr &from, const CoordSystemPtr &to, const OperationChoice &choice = {});
    /// The pair's queue, made (and kept) when there is none. Throws as createNormalizedTransformation.
    TransformQueuePtr queueFor(const CoordSystemPtr &from, const CoordSystemPtr &to);
    /// How many transformations are kept.
    std::size_t size() const { return m_queues.size(); }

    /// A PROJ transformation of the caller's own that takes and gives longitude or easting first. Never null.
    /// Throws std::logic_error "Не могу создать объект трансформации. …".
    std::shared_ptr<PJ> createNormalizedTransformation(const CoordSystemPtr &from, const CoordSystemPtr &to);

    /// The texts by which PROJ is asked for a way, one pair an attempt; from 0 until it knows one.
    static constexpr int attempts = 3;
    using Texts = std::pair<QString, QString>;
    static Texts textsOf(int attempt, const CoordSystemPtr &from, const CoordSystemPtr &to);
    using Steps = std::vector<std::pair<CoordSystemPtr, CoordSystemPtr>>;
    /// The pairs of systems of the one or two steps from one to the other. Throws std::logic_error when the
    /// way runs through WGS 84 and there is no catalogue.
    static Steps stepsBetween(const CoordSystemPtr &from, const CoordSystemPtr &to);

private:
    using States = std::pair<std::uint64_t, std::uint64_t>;
    /// What is known of two objects as they are.
    struct Known
    {
        bool isEqual;
        std::weak_ptr<const TransformQueue> queue; ///< of unequal ones; gone when the cache let it go
    };

    static QString definitionOf(const CoordSystem &cs);
    static QString fallbackOf(const CoordSystem &cs, const QString &first);
    static ProjOperation stepFor(const CoordSystemPtr &from, const CoordSystemPtr &to);

    /// By the definitions of their steps, of which standing still has none.
    CatalogueCache<QStringList, TransformQueuePtr> m_queues{mostQueues};
    CatalogueCache<States, Known> m_known{4096}; ///< by the states of two objects
};

/// The process's cache, made on first call.
NIVORA_CS_EXPORT CoordTransformCache &coordTransformCache();

} // namespace nivora::cs
