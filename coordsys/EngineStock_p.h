#pragma once

#include <coordsys/CoordTransformCache_p.h>

#include <QMutex>

#include <memory>
#include <vector>

namespace nivora::cs {

/// A transformation's steps in a PROJ context of their own, which the thread that holds them needs no lock
/// for.
struct OwnEngine
{
    PJ_CONTEXT *context = nullptr;
    TransformQueue queue;

    OwnEngine() = default;
    OwnEngine(const OwnEngine &) = delete;
    OwnEngine &operator=(const OwnEngine &) = delete;
    ~OwnEngine();
};

/// Leaves the engine where it is while the process takes PROJ apart.
struct OwnEngineDelete
{
    void operator()(OwnEngine *engine) const;
};
using OwnEnginePtr = std::unique_ptr<OwnEngine, OwnEngineDelete>;

/// Clones of one transformation, lent to whoever converts. It grows to the greatest number that was ever lent
/// at once and keeps them: a clone costs up to 3 ms and, with grid files, half a megabyte. Thread-safe; only
/// cloning takes the PROJ lock.
class EngineStock
{
public:
    explicit EngineStock(TransformQueuePtr original)
        : m_original(std::move(original))
    {}

    /// Null when PROJ cannot clone any more.
    OwnEnginePtr borrow();
    void giveBack(OwnEnginePtr engine);
    const TransformQueue &original() const { return *m_original; }

private:
    OwnEnginePtr taken();

    TransformQueuePtr m_original;
    QMutex m_mutex; ///< guards m_idle
    std::vector<OwnEnginePtr> m_idle;
};

/// Borrows for a block. Without an engine of its own it holds the PROJ lock and lends the original.
class BorrowedEngine
{
public:
    explicit BorrowedEngine(EngineStock &stock);
    ~BorrowedEngine();
    BorrowedEngine(const BorrowedEngine &) = delete;
    BorrowedEngine &operator=(const BorrowedEngine &) = delete;

    const TransformQueue &queue() const { return m_engine ? m_engine->queue : m_stock.original(); }

private:
    EngineStock &m_stock;
    OwnEnginePtr m_engine;
};

} // namespace nivora::cs
