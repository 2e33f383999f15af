#pragma once

#include <memory>

namespace nivora::cs {
class CoordSysFactory;
}

/// How a run ends; scripts/soak compares.
enum SoakStatus : int { Right = 0, Wrong = 1, Refused = 3, NotStarted = 4 };

/// A started and installed factory over \p resources (null: the shipped ones); null when it does not start.
/// Throws what the start-up throws.
std::shared_ptr<nivora::cs::CoordSysFactory> startFactory(const char *resources);

/// Starts, converts a point and compares it with the figure that cs2cs gives. A SoakStatus; never throws.
extern "C" __attribute__((visibility("default"))) int soakStartUp(const char *resources);

/// Eight threads do everything for so many seconds.
int soakThreads(int seconds);
/// A process that saves the user's systems is killed so many times.
int soakKills(int rounds);
