#pragma once

#include "CatalogueToken_p.h"
#include <coordsys/CoordSysFactory.h>

#include <QReadWriteLock>

namespace nivora::cs {

/// What the MapInfo catalogue's creator and the systems hold instead of the factory, since they may outlive
/// it: the factory while it lives, null afterwards. A creation or question holds the lock for reading, the
/// factory's end for writing.
struct NIVORA_CS_NO_EXPORT CoordSysFactory::FactoryGuard : CatalogueToken,
                                                           std::enable_shared_from_this<FactoryGuard>
{
    explicit FactoryGuard(const CoordSysFactory *owner)
        : factory(owner)
        , alive(QReadWriteLock::Recursive)
    {}

    std::shared_ptr<const CatalogueSource> lock() const override
    {
        alive.lockForRead();
        if (factory)
            return {factory, [self = shared_from_this()](const CatalogueSource *) { self->alive.unlock(); }};
        alive.unlock();
        return nullptr;
    }

    CoordSystemPtr madeFromEpsg(int epsg) const;

    const CoordSysFactory *factory;
    mutable QReadWriteLock alive;
};

/// "КС не имеет плановой части: …"
[[noreturn]] void throwWithoutPlane(const QString &text);

} // namespace nivora::cs
