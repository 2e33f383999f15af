#pragma once

#include "ProjOperation_p.h"

#include <QMutex>

#include <functional>
#include <memory>

namespace nivora::cs {

/// The engines' objects of a system, which cost five times its definition: made when first asked for, once
/// for a system and its copies. Thread-safe.
class LazyParts
{
public:
    struct Parts
    {
        std::shared_ptr<void> srs;
        std::shared_ptr<PJ> pj;
        std::shared_ptr<const ProjOperation> plane;
    };
    using Make = std::function<Parts()>;

    explicit LazyParts(Make make);
    ~LazyParts();
    LazyParts(const LazyParts &) = delete;
    LazyParts &operator=(const LazyParts &) = delete;

    /// Nothing in them when they cannot be made, which is logged. May ask catalogues and takes the PROJ lock.
    const Parts &get() const;

private:
    Parts made() const;

    mutable QMutex m_lock; ///< guards the following; never held while the parts are made
    mutable bool m_isMade = false;
    mutable Parts m_parts; ///< constant once made
    mutable Make m_make;   ///< let go once they are
};

} // namespace nivora::cs
