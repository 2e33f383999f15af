#pragma once

#include <coordsys/CoordSysFactory.h>

#include <QReadWriteLock>

namespace nivora::cs {

/// What the MapInfo catalogue's creator holds instead of the factory, since catalogues may outlive it: the
/// factory while it lives, null afterwards. A creation holds the lock for reading, the factory's end for
/// writing.
struct CoordSysFactory::FactoryGuard
{
    explicit FactoryGuard(const CoordSysFactory *owner)
        : factory(owner)
        , lock(QReadWriteLock::Recursive)
    {}

    const CoordSysFactory *factory;
    QReadWriteLock lock;
};

} // namespace nivora::cs
