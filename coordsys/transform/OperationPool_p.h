#pragma once

#include "CoordTransformCache_p.h"
#include "OperationWatch_p.h"

#include <QMutex>

#include <array>
#include <atomic>
#include <memory>
#include <vector>

namespace nivora::cs {

/// A transformation's steps in a PROJ context of their own, which the thread that holds them needs no lock
/// for.
struct PooledOperation
{
    PJ_CONTEXT *context = nullptr;
    TransformQueue queue;
    std::unique_ptr<OperationWatch> watch; ///< made on first need

    PooledOperation() = default;
    PooledOperation(const PooledOperation &) = delete;
    PooledOperation &operator=(const PooledOperation &) = delete;
    ~PooledOperation();
};

/// Leaves the engine where it is while the process takes PROJ apart.
struct PooledOperationDelete
{
    void operator()(PooledOperation *engine) const;
};
using PooledOperationPtr = std::unique_ptr<PooledOperation, PooledOperationDelete>;

/// Clones of one transformation, lent to whoever converts. It grows to the greatest number that was ever lent
/// at once and keeps them: a clone costs up to 3 ms and, with grid files, half a megabyte. Thread-safe; only
/// cloning takes the PROJ lock.
class OperationPool // NOLINT(clang-analyzer-optin.performance.Padding): slots have cache lines of their own
{
public:
    /// Where a thread finds its engine without a lock. On a cache line of its own, since a point is converted
    /// in the time that a line takes from one core to the other.
    struct alignas(64) Slot
    {
        std::atomic<bool> isTaken{false}; ///< whoever set it has the engine
        PooledOperationPtr engine;
    };

    /// The one pool of these steps: as long as anybody converts with them, all who do share its clones.
    static std::shared_ptr<OperationPool> of(TransformQueuePtr original);
    explicit OperationPool(TransformQueuePtr original)
        : m_original(std::move(original))
    {}
    OperationPool(const OperationPool &) = delete;
    OperationPool &operator=(const OperationPool &) = delete;

    /// The calling thread's slot, which it shares with few others or none.
    Slot &slotOfThread() { return m_slots[threadNumber() % m_slots.size()]; }
    /// One that nobody uses, else a new one; null when PROJ cannot clone any more.
    PooledOperationPtr borrow();
    void giveBack(PooledOperationPtr engine);
    const TransformQueue &original() const { return *m_original; }

private:
    static unsigned threadNumber()
    {
        static thread_local unsigned number = 0;
        return number > 0 ? number : number = newThreadNumber();
    }
    static unsigned newThreadNumber();
    PooledOperationPtr idle();
    PooledOperationPtr fromSlots();

    TransformQueuePtr m_original;
    std::array<Slot, 16> m_slots;
    QMutex m_mutex; ///< guards m_idle
    std::vector<PooledOperationPtr> m_idle;
};

/// Borrows for a block or a point. Without an engine of its own it holds the PROJ lock and lends the
/// original.
class PoolLease
{
public:
    explicit PoolLease(OperationPool &pool)
        : m_pool(pool)
        , m_claim(pool.slotOfThread())
    {
        if (m_claim.place && m_claim.place->engine)
            m_queue = &m_claim.place->engine->queue;
        else
            borrow();
    }
    ~PoolLease()
    {
        if (m_engine || m_isLocked)
            giveBack();
    }
    PoolLease(const PoolLease &) = delete;
    PoolLease &operator=(const PoolLease &) = delete;

    const TransformQueue &queue() const { return *m_queue; }
    /// That of the engine; \p spare, made at once, without an engine of its own.
    OperationWatch &watch(std::unique_ptr<OperationWatch> &spare) const;

private:
    struct Claim
    {
        explicit Claim(OperationPool::Slot &wanted)
            : place(wanted.isTaken.exchange(true, std::memory_order_acquire) ? nullptr : &wanted)
        {}
        ~Claim()
        {
            if (place)
                place->isTaken.store(false, std::memory_order_release);
        }
        Claim(const Claim &) = delete;
        Claim &operator=(const Claim &) = delete;
        OperationPool::Slot *place; ///< null when another thread is there
    };

    void borrow();
    void giveBack();

    OperationPool &m_pool;
    Claim m_claim;
    const TransformQueue *m_queue = nullptr;
    PooledOperationPtr m_engine; ///< that of no place
    bool m_isLocked = false;
};

} // namespace nivora::cs
