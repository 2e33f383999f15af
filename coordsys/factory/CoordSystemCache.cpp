#include "CoordSystemCache_p.h"

#include "CoordSystem_p.h"

#include <optional>

namespace nivora::cs {

CoordSystemPtr CoordSystemCache::system(By by, const QString &text,
                                        const std::function<CoordSystemPtr()> &make)
{
    const std::pair<int, QString> key(static_cast<int>(by), text);
    if (const std::optional<CoordSystemPtr> known = m_systems.find(key))
        return privateOf(**known).duplicate();
    const unsigned madeAt = catalogueRevision();
    const CoordSystemPtr made = make();
    if (by == By::Wkt && made->isNonEarth())
        return made; // its name may be the user's, who may change it
    return privateOf(*m_systems.keep(key, made, madeAt)).duplicate();
}

} // namespace nivora::cs
