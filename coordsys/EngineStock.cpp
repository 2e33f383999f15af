#include <coordsys/EngineStock_p.h>

#include <coordsys/ProjEngine.h>
#include <coordsys/ProjEngine_p.h>

#include <proj.h>

#include <QMutexLocker>

#include <utility>

namespace nivora::cs {
namespace {

/// False when there was a step and it could not be cloned.
bool cloneStep(PJ_CONTEXT *context, const EngineStep &from, EngineStep &to)
{
    if (!from)
        return true;
    to = from.withObject(std::shared_ptr<PJ>(proj_clone(context, from.pj.get()), proj_destroy));
    return to.pj != nullptr;
}

/// Under the PROJ lock, since the original belongs to the one context.
OwnEnginePtr clonedFrom(const TransformQueue &original)
{
    const QMutexLocker lock(globalProj4Mutex());
    OwnEnginePtr engine(new OwnEngine);
    engine->context = proj_context_clone(globalProjContext());
    const bool done = engine->context && cloneStep(engine->context, original.first, engine->queue.first) &&
                      cloneStep(engine->context, original.second, engine->queue.second);
    return done ? std::move(engine) : nullptr;
}

} // namespace

OwnEngine::~OwnEngine()
{
    queue = TransformQueue(); // the objects before their context
    if (context)
        proj_context_destroy(context);
}

void OwnEngineDelete::operator()(OwnEngine *engine) const
{
    if (!isKeptAtProcessEnd(engine))
        delete engine;
}

unsigned EngineStock::newThreadNumber()
{
    static std::atomic<unsigned> last{0};
    return ++last;
}

OwnEnginePtr EngineStock::idle()
{
    const QMutexLocker lock(&m_mutex);
    if (m_idle.empty())
        return nullptr;
    OwnEnginePtr engine = std::move(m_idle.back());
    m_idle.pop_back();
    return engine;
}

/// That of a thread which does not convert at this moment, and may be gone.
OwnEnginePtr EngineStock::fromPlaces()
{
    OwnEnginePtr engine;
    for (Place &place : m_places) {
        if (engine || place.isTaken.exchange(true, std::memory_order_acquire))
            continue;
        engine = std::move(place.engine);
        place.isTaken.store(false, std::memory_order_release);
    }
    return engine;
}

OwnEnginePtr EngineStock::borrow()
{
    if (OwnEnginePtr engine = idle())
        return engine;
    OwnEnginePtr engine = fromPlaces();
    return engine ? std::move(engine) : clonedFrom(*m_original);
}

void EngineStock::giveBack(OwnEnginePtr engine)
{
    const QMutexLocker lock(&m_mutex);
    m_idle.push_back(std::move(engine));
}

void BorrowedEngine::borrow()
{
    m_engine = m_stock.borrow();
    m_queue = m_engine ? &m_engine->queue : &m_stock.original();
    if (!m_engine) {
        globalProj4Mutex()->lock();
        m_isLocked = true;
    } else if (m_claim.place) {
        m_claim.place->engine = std::move(m_engine);
    }
}

void BorrowedEngine::giveBack()
{
    if (m_isLocked)
        globalProj4Mutex()->unlock();
    else
        m_stock.giveBack(std::move(m_engine));
}

} // namespace nivora::cs
