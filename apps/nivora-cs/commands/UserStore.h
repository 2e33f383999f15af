#pragma once

#include <coordsys/UserCoordSystem.h>

#include <functional>

class Session;

/// One change of the file of own systems, under its lock. Throws Failure.
void changeOwnSystems(const Session &session, const std::function<void(nivora::cs::UserCoordSystem &)> &work);
