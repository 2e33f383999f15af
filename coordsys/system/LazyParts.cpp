#include "LazyParts_p.h"

#include <coordsys/ProjEngine.h>
#include <platform/Logger.h>

#include <QMutexLocker>

namespace nivora::cs {
namespace {

/// The handles' deleters work on the shared context.
void drop(LazyParts::Parts &parts)
{
    const QMutexLocker lock(globalProj4Mutex());
    parts = {};
}

} // namespace

LazyParts::LazyParts(Make make)
    : m_make(std::move(make))
{}

LazyParts::~LazyParts() { drop(m_parts); }

LazyParts::Parts LazyParts::made() const
{
    Make make;
    {
        const QMutexLocker lock(&m_lock);
        make = m_make;
    }
    try {
        return make ? make() : Parts();
    } catch (const std::exception &e) {
        LOG_ERROR(QString::fromUtf8(e.what()));
        return {};
    }
}

const LazyParts::Parts &LazyParts::get() const
{
    {
        const QMutexLocker lock(&m_lock);
        if (m_isMade)
            return m_parts;
    }
    Parts parts = made();
    Make done; // what it holds goes after the lock
    {
        const QMutexLocker lock(&m_lock);
        if (!m_isMade) // another thread may have been faster
            std::swap(m_parts, parts);
        m_make.swap(done);
        m_isMade = true;
    }
    drop(parts);
    return m_parts;
}

} // namespace nivora::cs
