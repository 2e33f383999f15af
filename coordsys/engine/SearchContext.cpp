#include "SearchContext_p.h"

#include <coordsys/ProjEngine.h>

namespace nivora::cs {
namespace {

ProjMutex *searchMutex()
{
    static ProjMutex *const mutex = newProjMutex(); // systems may outlive every static object
    return mutex;
}

} // namespace

SearchContext::SearchContext()
    : m_lock(searchMutex())
{}

PJ_CONTEXT *SearchContext::get() const
{
    // Made on the first search: its search paths are those of the process's context by then.
    static PJ_CONTEXT *const context = [] {
        const QMutexLocker lock(globalProj4Mutex());
        return proj_context_clone(globalProjContext());
    }();
    return context;
}

} // namespace nivora::cs
