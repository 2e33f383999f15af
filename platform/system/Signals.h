#pragma once

namespace nivora::system {

/// A reader that has gone is an ordinary write error then, and so is a file that may not grow.
void ignoreBrokenOutput();

/// Has \p note called for every signal with which a person or the system asks a program to end, except for
/// those that whoever started it turned off. \p note may do nothing that a signal handler must not.
void listenForInterruptions(void (*note)(int signal));

/// What a file may have at most, bytes; -1 for no limit.
long long largestFile();

} // namespace nivora::system
