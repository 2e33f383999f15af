#pragma once

#include <QString>

namespace comparison {

/// What only a process of its own can tell: start-up, what comes first after it, and memory. Forks: call it
/// before anything starts a thread, touches the engines or loads a catalogue. \p userDir has no user store.
void addProcesses(const QString &userDir);

} // namespace comparison
