#pragma once

#include "CrsDefinition_p.h"
#include <coordsys/CoordSystem.h>

namespace nivora::cs {

/// What a system knows of itself, for this library.
class SystemFacts
{
public:
    /// What it was made from.
    static CrsDefinitionPtr own(const CoordSystem &cs) { return cs.identity(); }
    /// The database's system of its code, its plane looked at; null without one. May search.
    static CrsDefinitionPtr registered(const CoordSystem &cs) { return cs.registeredIdentity(); }
    /// The database's, else its own.
    static CrsDefinitionPtr named(const CoordSystem &cs) { return cs.namedIdentity(); }
    /// What it is written from.
    static CrsDefinitionPtr writable(const CoordSystem &cs) { return cs.writableIdentity(); }
};

} // namespace nivora::cs
