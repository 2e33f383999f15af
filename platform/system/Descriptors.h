#pragma once

#include <array>
#include <cstddef>

namespace nivora::system {

// Descriptors of files and pipes. Functions that fail return a negative number or an error with errno set.

constexpr int standardInput = 0;
constexpr int standardOutput = 1;
constexpr int standardError = 2;

/// \p path in the bytes that the system takes. Programs that are started do not inherit it.
int openForReading(const char *path);
/// What swallows everything.
int openNowhere();
void closeDescriptor(int descriptor);

/// At most \p size bytes; 0 at the end.
std::ptrdiff_t readSome(int descriptor, char *to, std::size_t size);
std::ptrdiff_t writeSome(int descriptor, const char *from, std::size_t size);
bool isTerminal(int descriptor);

/// An end to read from and one to write to. False with errno set.
bool makePipe(std::array<int, 2> &ends);
/// Waits until there is something to read or the end. False when \p interrupt has something first.
bool waitForInput(int descriptor, int interrupt);
void waitForRoom(int descriptor);

/// A standard descriptor that the caller closed would be given to the first file that is opened, a database
/// of the engines perhaps, and be written to. Opened the wrong way round, it fails with "Bad file
/// descriptor".
void occupyStandardDescriptors();

struct FileFacts
{
    int error = 0; ///< an errno value: there is no such file, or it may not be read
    bool isFolder = false;
    bool isRegular = false;
    long long size = 0; ///< bytes
};
FileFacts factsOf(const char *path);
FileFacts factsOf(int descriptor);

} // namespace nivora::system
