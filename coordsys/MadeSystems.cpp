#include <coordsys/MadeSystems_p.h>

#include <coordsys/CatalogueChanges_p.h>
#include <coordsys/CoordSystem.h>

#include <QMutexLocker>

namespace nivora::cs {

CoordSystemPtr MadeSystems::system(By by, const QString &text, const std::function<CoordSystemPtr()> &make)
{
    const Key key(static_cast<int>(by), text);
    if (const CoordSystemPtr known = find(key))
        return known->duplicate();
    const unsigned madeAt = catalogueChanges();
    const CoordSystemPtr made = make();
    if (by == By::Wkt && made->isNonEarth())
        return made; // its name may be the user's, who may change it
    keep(key, made, madeAt);
    return made->duplicate();
}

CoordSystemPtr MadeSystems::find(const Key &key)
{
    Systems outdated[2];
    const QMutexLocker lock(&m_lock);
    if (m_filledAt != catalogueChanges()) {
        m_young.swap(outdated[0]);
        m_old.swap(outdated[1]);
        m_filledAt = catalogueChanges();
    }
    const auto young = m_young.constFind(key);
    if (young != m_young.constEnd())
        return *young;
    const auto old = m_old.constFind(key);
    return old != m_old.constEnd() ? *m_young.insert(key, *old) : nullptr;
}

void MadeSystems::keep(const Key &key, const CoordSystemPtr &cs, unsigned madeAt)
{
    Systems forgotten;
    const QMutexLocker lock(&m_lock);
    if (m_filledAt != madeAt || madeAt != catalogueChanges())
        return;
    m_young.insert(key, cs);
    if (m_young.size() < generation)
        return;
    m_old.swap(forgotten);
    m_old.swap(m_young);
}

} // namespace nivora::cs
