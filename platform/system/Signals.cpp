#include "Signals.h"

#include <initializer_list>

#ifdef _WIN32
#include <csignal>
#else
#include <signal.h>
#include <sys/resource.h>
#endif

namespace nivora::system {

#ifdef _WIN32 // untried

void ignoreBrokenOutput() {}

void listenForInterruptions(void (*note)(int signal))
{
    for (const int signal : {SIGINT, SIGTERM, SIGBREAK})
        std::signal(signal, note);
}

long long largestFile() { return -1; }

#else

void ignoreBrokenOutput()
{
    ::signal(SIGPIPE, SIG_IGN);
    ::signal(SIGXFSZ, SIG_IGN);
}

void listenForInterruptions(void (*note)(int signal))
{
    struct sigaction action = {};
    action.sa_handler = note;
    action.sa_flags = SA_RESTART;
    struct sigaction before = {};
    for (const int signal : {SIGINT, SIGTERM, SIGHUP, SIGQUIT, SIGXCPU})
        if (::sigaction(signal, nullptr, &before) == 0 && before.sa_handler != SIG_IGN) // as under nohup
            ::sigaction(signal, &action, nullptr);
}

long long largestFile()
{
    rlimit limit = {};
    const bool isLimited = ::getrlimit(RLIMIT_FSIZE, &limit) == 0 && limit.rlim_cur != RLIM_INFINITY;
    return isLimited ? static_cast<long long>(limit.rlim_cur) : -1;
}

#endif

} // namespace nivora::system
