#pragma once

#include <QDeadlineTimer>
#include <QMutex>
#include <QMutexLocker>
#include <QWaitCondition>

#include <atomic>
#include <cstdlib>

namespace nivora::cs {

/// The background fills of the process. They end before the engines and Qt take themselves apart: a fill
/// works with both. Never destroyed.
class BackgroundFills
{
public:
    static BackgroundFills &instance()
    {
        static BackgroundFills &made = *new BackgroundFills;
        return made;
    }

    /// What a fill is given when it is asked for; it may run while the number is still the current one.
    unsigned round() const { return m_round; }
    bool isCurrent(unsigned round) const { return round == m_round; }
    /// False when the fill must not start any more; else leave() must follow.
    bool enter(unsigned round)
    {
        const QMutexLocker lock(&m_lock);
        if (!isCurrent(round))
            return false;
        ++m_running;
        return true;
    }
    void leave()
    {
        const QMutexLocker lock(&m_lock);
        --m_running;
        m_left.wakeAll();
    }
    /// Ends the fills that run or wait for a thread. The wait is bounded: whoever ends the process may hold a
    /// lock that a fill needs.
    void stop()
    {
        const QMutexLocker lock(&m_lock);
        ++m_round;
        const QDeadlineTimer patience(longestWaitMs);
        while (m_running > 0 && m_left.wait(&m_lock, patience)) {
        }
    }
    /// What is made later is taken apart earlier, so this is called again as a fill makes the engines'
    /// statics.
    static void stopAtExit()
    {
        std::atexit([] { instance().stop(); });
    }

private:
    static constexpr int longestWaitMs = 3000;

    QMutex m_lock; ///< guards m_running
    QWaitCondition m_left;
    int m_running = 0;
    std::atomic<unsigned> m_round{0};
};

} // namespace nivora::cs
