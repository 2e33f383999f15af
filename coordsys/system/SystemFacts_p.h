#pragma once

#include "CoordSystem_p.h"

namespace nivora::cs {

/// What a system knows of itself, for this library.
class SystemFacts
{
public:
    /// What it was made from.
    static CrsDefinitionPtr own(const CoordSystem &cs) { return privateOf(cs).identity(); }
    /// The database's system of its code, its plane looked at; null without one. May search.
    static CrsDefinitionPtr registered(const CoordSystem &cs) { return privateOf(cs).registeredIdentity(); }
    /// The database's, else its own.
    static CrsDefinitionPtr named(const CoordSystem &cs) { return privateOf(cs).namedIdentity(); }
    /// What it is written from.
    static CrsDefinitionPtr writable(const CoordSystem &cs) { return privateOf(cs).writableIdentity(); }
};

} // namespace nivora::cs
