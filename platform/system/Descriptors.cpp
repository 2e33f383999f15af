#include "Descriptors.h"

#include <cerrno>
#include <fcntl.h>
#include <initializer_list>
#include <sys/stat.h>
#include <sys/types.h>

#ifdef _WIN32
#include <io.h>
#include <windows.h>
#else
#include <poll.h>
#include <unistd.h>
#endif

namespace nivora::system {

#ifdef _WIN32 // untried

namespace {

FileFacts factsFrom(int failed, const struct _stat64 &status)
{
    if (failed != 0)
        return {errno, false, false, 0};
    return {0, (status.st_mode & _S_IFDIR) != 0, (status.st_mode & _S_IFREG) != 0, status.st_size};
}

unsigned limited(std::size_t size)
{
    constexpr std::size_t most = 1U << 30U;
    return static_cast<unsigned>(size < most ? size : most);
}

} // namespace

int openForReading(const char *path) { return ::_open(path, _O_RDONLY | _O_BINARY | _O_NOINHERIT); }
int openNowhere() { return ::_open("NUL", _O_WRONLY | _O_BINARY | _O_NOINHERIT); }
void closeDescriptor(int descriptor) { ::_close(descriptor); }

std::ptrdiff_t readSome(int descriptor, char *to, std::size_t size)
{
    return ::_read(descriptor, to, limited(size));
}

std::ptrdiff_t writeSome(int descriptor, const char *from, std::size_t size)
{
    return ::_write(descriptor, from, limited(size));
}

bool isTerminal(int descriptor) { return ::_isatty(descriptor) != 0; }

bool makePipe(std::array<int, 2> &ends)
{
    constexpr unsigned room = 4096;
    return ::_pipe(ends.data(), room, _O_BINARY | _O_NOINHERIT) == 0;
}

/// Files cannot be waited for here: an interruption is seen between two reads.
bool waitForInput(int, int interrupt)
{
    DWORD waiting = 0;
    auto *const pipe = reinterpret_cast<HANDLE>(::_get_osfhandle(interrupt));
    return !::PeekNamedPipe(pipe, nullptr, 0, nullptr, &waiting, nullptr) || waiting == 0;
}

void waitForRoom(int) {}
void occupyStandardDescriptors() {}

FileFacts factsOf(const char *path)
{
    struct _stat64 status = {};
    return factsFrom(::_stat64(path, &status), status);
}

FileFacts factsOf(int descriptor)
{
    struct _stat64 status = {};
    return factsFrom(::_fstat64(descriptor, &status), status);
}

#else

namespace {

FileFacts factsFrom(int failed, const struct stat &status)
{
    if (failed != 0)
        return {errno, false, false, 0};
    return {0, S_ISDIR(status.st_mode), S_ISREG(status.st_mode), static_cast<long long>(status.st_size)};
}

} // namespace

int openForReading(const char *path) { return ::open(path, O_RDONLY | O_CLOEXEC); }
int openNowhere() { return ::open("/dev/null", O_WRONLY | O_CLOEXEC); }
void closeDescriptor(int descriptor) { ::close(descriptor); }

std::ptrdiff_t readSome(int descriptor, char *to, std::size_t size) { return ::read(descriptor, to, size); }

std::ptrdiff_t writeSome(int descriptor, const char *from, std::size_t size)
{
    return ::write(descriptor, from, size);
}

bool isTerminal(int descriptor) { return ::isatty(descriptor) == 1; }

bool makePipe(std::array<int, 2> &ends)
{
    if (::pipe(ends.data()) != 0)
        return false;
    for (const int end : ends)
        static_cast<void>(::fcntl(end, F_SETFD, FD_CLOEXEC));
    return true;
}

bool waitForInput(int descriptor, int interrupt)
{
    std::array<pollfd, 2> ready{{{descriptor, POLLIN, 0}, {interrupt, POLLIN, 0}}};
    while (::poll(ready.data(), ready.size(), -1) < 0 && (errno == EINTR || errno == EAGAIN))
        ;
    return ready[1].revents == 0;
}

void waitForRoom(int descriptor)
{
    pollfd ready{descriptor, POLLOUT, 0};
    ::poll(&ready, 1, -1);
}

void occupyStandardDescriptors()
{
    for (const int descriptor : {standardInput, standardOutput, standardError})
        if (::fcntl(descriptor, F_GETFD) == -1)
            static_cast<void>(::open("/dev/null", descriptor == standardInput ? O_WRONLY : O_RDONLY));
}

FileFacts factsOf(const char *path)
{
    struct stat status = {};
    return factsFrom(::stat(path, &status) != 0 || ::access(path, R_OK) != 0, status);
}

FileFacts factsOf(int descriptor)
{
    struct stat status = {};
    return factsFrom(::fstat(descriptor, &status), status);
}

#endif

} // namespace nivora::system
