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

OwnEnginePtr EngineStock::taken()
{
    const QMutexLocker lock(&m_mutex);
    if (m_idle.empty())
        return nullptr;
    OwnEnginePtr engine = std::move(m_idle.back());
    m_idle.pop_back();
    return engine;
}

OwnEnginePtr EngineStock::fromStore()
{
    OwnEnginePtr engine = taken();
    return engine ? std::move(engine) : clonedFrom(*m_original);
}

void EngineStock::store(OwnEnginePtr engine)
{
    const QMutexLocker lock(&m_mutex);
    m_idle.push_back(std::move(engine));
}

} // namespace nivora::cs
