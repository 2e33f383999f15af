#include <coordsys/SharedWork_p.h>

#include <QMutex>
#include <QMutexLocker>
#include <QRunnable>
#include <QThreadPool>
#include <QWaitCondition>

#include <exception>
#include <memory>

namespace nivora::cs {
namespace {

/// Outlives the call: a pool may start a helper late, which then finds the work closed.
class Party
{
public:
    explicit Party(const std::function<void()> &work)
        : m_work(work)
    {}

    void takePart()
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
    explicit Helper(std::shared_ptr<Party> party)
        : m_party(std::move(party))
    {}
    void run() override { m_party->takePart(); }

private:
    std::shared_ptr<Party> m_party;
};

} // namespace

void shareWork(QThreadPool &pool, int helpers, const std::function<void()> &work)
{
    if (helpers < 1)
        return work();
    const auto party = std::make_shared<Party>(work);
    for (int i = 0; i < helpers; ++i)
        pool.start(new Helper(party));
    party->takePart();
    party->closeAndWait();
}

} // namespace nivora::cs
