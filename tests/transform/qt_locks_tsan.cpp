// The thread sanitizer cannot see into an uninstrumented Qt, whose locks are not pthread's, so every value
// behind one of them would be reported. These stand in front of Qt's functions and tell it what they do.
// Readers of one lock order each other here, which a lock does not promise: a race between two readers may go
// unseen.

#include <QMutex>
#include <QReadWriteLock>

#include <dlfcn.h>

extern "C" {
void __tsan_acquire(void *address);
void __tsan_release(void *address);
}

namespace {

/// Qt's own function of that (mangled) name.
template <typename Lock> void callQt(const char *symbol, Lock *lock)
{
    reinterpret_cast<void (*)(Lock *)>(dlsym(RTLD_NEXT, symbol))(lock);
}

} // namespace

void QMutex::lock() QT_MUTEX_LOCK_NOEXCEPT
{
    callQt("_ZN6QMutex4lockEv", this);
    __tsan_acquire(this);
}

void QMutex::unlock() noexcept
{
    __tsan_release(this);
    callQt("_ZN6QMutex6unlockEv", this);
}

void QReadWriteLock::lockForRead()
{
    callQt("_ZN14QReadWriteLock11lockForReadEv", this);
    __tsan_acquire(this);
}

void QReadWriteLock::lockForWrite()
{
    callQt("_ZN14QReadWriteLock12lockForWriteEv", this);
    __tsan_acquire(this);
}

void QReadWriteLock::unlock()
{
    __tsan_release(this);
    callQt("_ZN14QReadWriteLock6unlockEv", this);
}
