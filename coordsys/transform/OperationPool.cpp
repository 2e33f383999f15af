#include "OperationPool_p.h"

#include "ProjEngine_p.h"
#include <coordsys/ProjEngine.h>

#include <proj.h>

#include <QMutex>
#include <QMutexLocker>

#include <utility>

namespace nivora::cs {
namespace {

/// False when there was a step and it could not be cloned.
bool cloneStep(PJ_CONTEXT *context, const ProjOperation &from, ProjOperation &to)
{
    if (!from)
        return true;
    to = from.withObject(std::shared_ptr<PJ>(proj_clone(context, from.pj.get()), proj_destroy));
    return to.pj != nullptr;
}

/// Under the PROJ lock, since the original belongs to the one context.
PooledOperationPtr clonedFrom(const TransformQueue &original)
{
    const QMutexLocker lock(globalProj4Mutex());
    PooledOperationPtr engine(new PooledOperation);
    engine->context = proj_context_clone(globalProjContext());
    const bool done = engine->context && cloneStep(engine->context, original.first, engine->queue.first) &&
                      cloneStep(engine->context, original.second, engine->queue.second);
    return done ? std::move(engine) : nullptr;
}

} // namespace

PooledOperation::~PooledOperation()
{
    queue = TransformQueue(); // the objects before their context
    if (context)
        proj_context_destroy(context);
}

void PooledOperationDelete::operator()(PooledOperation *engine) const
{
    if (!isKeptAtProcessEnd(engine))
        delete engine;
}

std::shared_ptr<OperationPool> OperationPool::of(TransformQueuePtr original)
{
    static QMutex mutex; // guards every queue's pool
    const QMutexLocker lock(&mutex);
    std::weak_ptr<OperationPool> &known = original->pool;
    std::shared_ptr<OperationPool> pool = known.lock();
    if (!pool) {
        pool = std::make_shared<OperationPool>(std::move(original));
        known = pool;
    }
    return pool;
}

unsigned OperationPool::newThreadNumber()
{
    static std::atomic<unsigned> last{0};
    return ++last;
}

PooledOperationPtr OperationPool::idle()
{
    const QMutexLocker lock(&m_mutex);
    if (m_idle.empty())
        return nullptr;
    PooledOperationPtr engine = std::move(m_idle.back());
    m_idle.pop_back();
    return engine;
}

/// That of a thread which does not convert at this moment, and may be gone.
PooledOperationPtr OperationPool::fromSlots()
{
    PooledOperationPtr engine;
    for (Slot &slot : m_slots) {
        if (engine || slot.isTaken.exchange(true, std::memory_order_acquire))
            continue;
        engine = std::move(slot.engine);
        slot.isTaken.store(false, std::memory_order_release);
    }
    return engine;
}

PooledOperationPtr OperationPool::borrow()
{
    if (PooledOperationPtr engine = idle())
        return engine;
    PooledOperationPtr engine = fromSlots();
    return engine ? std::move(engine) : clonedFrom(*m_original);
}

void OperationPool::giveBack(PooledOperationPtr engine)
{
    const QMutexLocker lock(&m_mutex);
    m_idle.push_back(std::move(engine));
}

void PoolLease::borrow()
{
    m_engine = m_pool.borrow();
    m_queue = m_engine ? &m_engine->queue : &m_pool.original();
    if (!m_engine) {
        globalProj4Mutex()->lock();
        m_isLocked = true;
    } else if (m_claim.place) {
        m_claim.place->engine = std::move(m_engine);
    }
}

OperationWatch &PoolLease::watch(std::unique_ptr<OperationWatch> &spare) const
{
    PooledOperation *const engine = m_engine        ? m_engine.get()
                                    : m_claim.place ? m_claim.place->engine.get()
                                                    : nullptr;
    std::unique_ptr<OperationWatch> &watch = engine ? engine->watch : spare;
    if (!watch)
        watch = std::make_unique<OperationWatch>(engine ? engine->context : nullptr);
    return *watch;
}

void PoolLease::giveBack()
{
    if (m_isLocked)
        globalProj4Mutex()->unlock();
    else
        m_pool.giveBack(std::move(m_engine));
}

} // namespace nivora::cs
