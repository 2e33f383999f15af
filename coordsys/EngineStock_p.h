#pragma once

#include <coordsys/CoordTransformCache_p.h>

#include <QMutex>

#include <atomic>
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
    ~EngineStock() { OwnEnginePtr(m_nearest.load()).reset(); }
    EngineStock(const EngineStock &) = delete;
    EngineStock &operator=(const EngineStock &) = delete;

    /// Null when PROJ cannot clone any more.
    OwnEnginePtr borrow()
    {
        OwnEnginePtr engine(m_nearest.exchange(nullptr, std::memory_order_acquire));
        return engine ? std::move(engine) : fromStore();
    }
    void giveBack(OwnEnginePtr engine)
    {
        OwnEngine *none = nullptr;
        if (m_nearest.compare_exchange_strong(none, engine.get(), std::memory_order_release))
            static_cast<void>(engine.release());
        else
            store(std::move(engine));
    }
    const TransformQueue &original() const { return *m_original; }

private:
    OwnEnginePtr taken();
    OwnEnginePtr fromStore();
    void store(OwnEnginePtr engine);

    TransformQueuePtr m_original;
    std::atomic<OwnEngine *> m_nearest{nullptr}; ///< owned; the one that single points take without a lock
    QMutex m_mutex;                              ///< guards m_idle
    std::vector<OwnEnginePtr> m_idle;
};

/// Borrows for a block. Without an engine of its own it holds the PROJ lock and lends the original.
class BorrowedEngine
{
public:
    explicit BorrowedEngine(EngineStock &stock)
        : m_stock(stock)
        , m_engine(stock.borrow())
    {
        if (!m_engine)
            globalProj4Mutex()->lock();
    }
    ~BorrowedEngine()
    {
        if (m_engine)
            m_stock.giveBack(std::move(m_engine));
        else
            globalProj4Mutex()->unlock();
    }
    BorrowedEngine(const BorrowedEngine &) = delete;
    BorrowedEngine &operator=(const BorrowedEngine &) = delete;

    const TransformQueue &queue() const { return m_engine ? m_engine->queue : m_stock.original(); }

private:
    EngineStock &m_stock;
    OwnEnginePtr m_engine;
};

} // namespace nivora::cs
