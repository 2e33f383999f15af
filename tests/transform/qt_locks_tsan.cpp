// The thread sanitizer cannot see into an uninstrumented Qt, whose locks are not pthread's, so every value
// behind one of them would be reported. These stand in front of Qt's functions and tell it what they do.
// Readers of one lock order each other here, which a lock does not promise: a race between two readers may go
// unseen.

#include <QDeadlineTimer>
#include <QMutex>
#include <QReadWriteLock>
#include <QRunnable>
#include <QThreadPool>
#include <QWaitCondition>

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

/// Gives up the lock and takes it again, out of sight of the two functions above.
bool QWaitCondition::wait(QMutex *mutex, QDeadlineTimer deadline)
{
    using Wait = bool (*)(QWaitCondition *, QMutex *, QDeadlineTimer);
    __tsan_release(mutex);
    const auto wait =
        reinterpret_cast<Wait>(dlsym(RTLD_NEXT, "_ZN14QWaitCondition4waitEP6QMutex14QDeadlineTimer"));
    const bool woken = wait(this, mutex, deadline);
    __tsan_acquire(mutex);
    return woken;
}

namespace {

/// A task on its way through a pool, which hands it from one thread to another and waits for its end.
class Handed : public QRunnable
{
public:
    Handed(QThreadPool *pool, QRunnable *task)
        : m_pool(pool)
        , m_task(task)
    {}
    __attribute__((no_sanitize("thread"))) void run() override
    {
        __tsan_acquire(m_task);
        m_task->run();
        __tsan_release(m_pool);
        if (m_task->autoDelete())
            delete m_task;
    }

private:
    QThreadPool *m_pool;
    QRunnable *m_task;
};

} // namespace

void QThreadPool::start(QRunnable *task, int priority)
{
    using Start = void (*)(QThreadPool *, QRunnable *, int);
    auto *handed = new Handed(this, task);
    __tsan_release(task);
    const auto start = reinterpret_cast<Start>(dlsym(RTLD_NEXT, "_ZN11QThreadPool5startEP9QRunnablei"));
    start(this, handed, priority);
}

bool QThreadPool::waitForDone(int msecs)
{
    using Wait = bool (*)(QThreadPool *, int);
    const bool done =
        reinterpret_cast<Wait>(dlsym(RTLD_NEXT, "_ZN11QThreadPool11waitForDoneEi"))(this, msecs);
    __tsan_acquire(this);
    return done;
}
