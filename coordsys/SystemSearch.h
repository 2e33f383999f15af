#pragma once

#include <coordsys/coordsys_export.h>

#include <memory>

namespace nivora::cs {

class CoordSysFactory;
class MapinfoSearch;
class SystemGuess;

/// The search over all that a factory knows by name: its catalogue in every language of the resource
/// directory, PROJ's database, countries, towns and nicknames. Made on the first call (some 0.3 s) and shared
/// by all who ask for it until the factory has another catalogue; the factory need not outlive it. Null
/// before start-up. Thread-safe.
NIVORA_CS_EXPORT std::shared_ptr<const MapinfoSearch> systemSearch(const CoordSysFactory &factory);

/// Which system bare coordinates are in, over that search; shared likewise. Null before start-up.
/// Thread-safe.
NIVORA_CS_EXPORT std::shared_ptr<const SystemGuess> systemGuess(const CoordSysFactory &factory);

} // namespace nivora::cs
