#include "CoordSystemCache_p.h"

#include "CatalogueRevision_p.h"
#include <coordsys/CoordSystem.h>

#include <QMutexLocker>

namespace nivora::cs {

CoordSystemPtr CoordSystemCache::system(By by, const QString &text,
                                        const std::function<CoordSystemPtr()> &make)
{
    const Key key(static_cast<int>(by), text);
    if (const CoordSystemPtr known = find(key))
        return known->duplicate();
    const unsigned madeAt = catalogueRevision();
    const CoordSystemPtr made = make();
    if (by == By::Wkt && made->isNonEarth())
        return made; // its name may be the user's, who may change it
    keep(key, made, madeAt);
    return made->duplicate();
}

CoordSystemPtr CoordSystemCache::find(const Key &key)
{
    Systems outdated[2];
    const QMutexLocker lock(&m_lock);
    if (m_filledAt != catalogueRevision()) {
        m_young.swap(outdated[0]);
        m_old.swap(outdated[1]);
        m_filledAt = catalogueRevision();
    }
    const auto young = m_young.constFind(key);
    if (young != m_young.constEnd())
        return *young;
    const auto old = m_old.constFind(key);
    return old != m_old.constEnd() ? *m_young.insert(key, *old) : nullptr;
}

void CoordSystemCache::keep(const Key &key, const CoordSystemPtr &cs, unsigned madeAt)
{
    Systems forgotten;
    const QMutexLocker lock(&m_lock);
    if (m_filledAt != madeAt || madeAt != catalogueRevision())
        return;
    m_young.insert(key, cs);
    if (m_young.size() < generation)
        return;
    m_old.swap(forgotten);
    m_old.swap(m_young);
}

} // namespace nivora::cs
