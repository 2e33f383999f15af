#pragma once

#include "ProjOperation_p.h"
#include <coordsys/CoordSystemTypes.h>

#include <QHash>
#include <QMutex>
#include <QString>

#include <cstdint>
#include <map>
#include <memory>
#include <utility>
#include <vector>

namespace nivora::cs {

/// One step, or two when the way runs through WGS 84. Immutable; its PJ objects need the PROJ lock.
struct TransformQueue
{
    ProjOperation first;
    ProjOperation second;
};
using TransformQueuePtr = std::shared_ptr<const TransformQueue>;

/// From ordered pairs of systems (by address) to their transformations. Entries are never evicted, so every
/// system used here lives until exit. PROJ objects made from the same two texts are shared between entries.
/// Thread-safe; the lock is not held while PROJ works.
class NIVORA_CS_EXPORT CoordTransformCache
{
public:
    /// The pair's queue, null when there is none yet.
    TransformQueuePtr find(const CoordSystemPtr &from, const CoordSystemPtr &to) const;
    /// Keeps a queue for the pair; the last insertion wins.
    void insert(const CoordSystemPtr &from, const CoordSystemPtr &to, TransformQueuePtr queue);
    /// The pair's queue, made (and kept) when there is none. Throws as createNormalizedTransformation.
    TransformQueuePtr queueFor(const CoordSystemPtr &from, const CoordSystemPtr &to);
    std::size_t size() const;

    /// from.isEqual(to, false), asked once for as long as neither is changed and no catalogue is.
    bool areEqual(const CoordSystem &from, const CoordSystem &to);

    /// A PROJ transformation of the caller's own that takes and gives longitude or easting first. Never null.
    /// Throws std::logic_error "Не могу создать объект трансформации. …".
    std::shared_ptr<PJ> createNormalizedTransformation(const CoordSystemPtr &from, const CoordSystemPtr &to);

    /// The texts by which PROJ is asked for a way, one pair an attempt; from 0 until it knows one.
    static constexpr int attempts = 3;
    using Texts = std::pair<QString, QString>;
    static Texts textsOf(int attempt, const CoordSystemPtr &from, const CoordSystemPtr &to);
    /// The pairs of systems of the one or two steps from one to the other. Throws std::logic_error when the
    /// way runs through WGS 84 and there is no catalogue.
    static std::vector<std::pair<CoordSystemPtr, CoordSystemPtr>> stepsBetween(const CoordSystemPtr &from,
                                                                               const CoordSystemPtr &to);

private:
    using Key = std::pair<CoordSystemPtr, CoordSystemPtr>;
    struct ByAddress
    {
        bool operator()(const Key &a, const Key &b) const;
    };

    static QString definitionOf(const CoordSystem &cs);
    static QString fallbackOf(const CoordSystem &cs, const QString &first);
    ProjOperation stepFor(const CoordSystemPtr &from, const CoordSystemPtr &to);
    ProjOperation sharedByTexts(const Texts &texts) const;
    ProjOperation madeByTexts(const Texts &texts);

    /// A step whose object lives as long as a queue has it.
    struct Shared
    {
        ProjOperation step; ///< without its object
        std::weak_ptr<PJ> pj;
    };

    using States = std::pair<std::uint64_t, std::uint64_t>;
    static constexpr int mostAnswers = 10000;

    mutable QMutex m_mutex; ///< guards the following
    std::map<Key, TransformQueuePtr, ByAddress> m_queues;
    std::map<Texts, Shared> m_byTexts;
    QHash<States, bool> m_equal; ///< by the states of two objects
    unsigned m_equalSince = 0;   ///< catalogueRevision()
};

/// The process's cache, made on first call.
NIVORA_CS_EXPORT CoordTransformCache &coordTransformCache();

} // namespace nivora::cs
