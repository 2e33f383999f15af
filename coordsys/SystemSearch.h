#pragma once

#include <coordsys/coordsys_export.h>

#include <memory>

namespace nivora::cs {

class CoordSysFactory;
class MapinfoSearch;
class SystemGuess;

/// The search over all that a factory knows by name: its catalogue in every language of the resource
/// directory, PROJ's database, the systems of its user, countries, towns and nicknames. Made on the first
/// call (some 0.3 s) and shared by all who ask for it until the factory has another catalogue or its user
/// other systems (then some 10 ms); the factory need not outlive it. Null before start-up. Thread-safe while
/// nobody changes the user's systems.
NIVORA_CS_EXPORT std::shared_ptr<const MapinfoSearch> systemSearch(const CoordSysFactory &factory);

/// Which system bare coordinates are in, over that search; shared likewise. Null before start-up.
/// Thread-safe while nobody changes the user's systems.
NIVORA_CS_EXPORT std::shared_ptr<const SystemGuess> systemGuess(const CoordSysFactory &factory);

} // namespace nivora::cs
