#pragma once

#include <atomic>

namespace nivora::concurrent {

/// A cancellation flag that long searches poll. Thread-safe.
class ProgressHandler
{
public:
    /// Whether somebody asked to stop.
    bool isCanceled() const { return m_canceled.load(std::memory_order_relaxed); }
    /// Asks the work to stop; it does at its next look.
    void cancel() { m_canceled.store(true, std::memory_order_relaxed); }

private:
    std::atomic<bool> m_canceled{false};
};

} // namespace nivora::concurrent
