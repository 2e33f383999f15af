#include "ParallelFor_p.h"

#include <QMutex>
#include <QMutexLocker>
#include <QRunnable>
#include <QThreadPool>
#include <QWaitCondition>

#include <exception>
#include <memory>
#include <new>

namespace nivora::cs {
namespace {

/// Outlives the call: a pool may start a helper late, which then finds the work closed.
class WorkGroup
{
public:
    explicit WorkGroup(const std::function<void()> &work)
        : m_work(work)
    {}

    void run()
    {
        if (!enter())
            return;
        std::exception_ptr error;
        try {
            m_work();
        } catch (...) {
            error = std::current_exception();
        }
        leave(error);
    }

    void closeAndWait()
    {
        const QMutexLocker lock(&m_mutex);
        m_closed = true;
        while (m_present > 0)
            m_left.wait(&m_mutex);
        if (m_error)
            std::rethrow_exception(m_error);
    }

private:
    bool enter()
    {
        const QMutexLocker lock(&m_mutex);
        if (!m_closed)
            ++m_present;
        return !m_closed;
    }

    void leave(const std::exception_ptr &error)
    {
        const QMutexLocker lock(&m_mutex);
        if (!m_error)
            m_error = error;
        if (--m_present == 0)
            m_left.wakeAll();
    }

    const std::function<void()> &m_work; ///< of the caller, who waits in closeAndWait()
    QMutex m_mutex;                      ///< guards the rest
    QWaitCondition m_left;
    int m_present = 0;
    bool m_closed = false;
    std::exception_ptr m_error;
};

class Helper : public QRunnable
{
public:
    explicit Helper(std::shared_ptr<WorkGroup> group)
        : m_group(std::move(group))
    {}
    void run() override { m_group->run(); }

private:
    std::shared_ptr<WorkGroup> m_group;
};

/// As many as there is memory for: the caller can do all the work, and must come to close the group.
void startHelpers(QThreadPool &pool, int helpers, const std::shared_ptr<WorkGroup> &group)
{
    try {
        for (int i = 0; i < helpers; ++i)
            pool.start(new Helper(group));
    } catch (const std::bad_alloc &) {
        return;
    }
}

} // namespace

void parallelFor(QThreadPool &pool, int helpers, const std::function<void()> &work)
{
    if (helpers < 1)
        return work();
    const auto group = std::make_shared<WorkGroup>(work);
    startHelpers(pool, helpers, group);
    group->run();
    group->closeAndWait();
}

} // namespace nivora::cs
