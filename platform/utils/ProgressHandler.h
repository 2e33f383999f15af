#pragma once

#include <atomic>

namespace nivora::concurrent {

/// A cancellation flag that long searches poll. Thread-safe.
class ProgressHandler
{
public:
    bool isCanceled() const { return m_canceled.load(std::memory_order_relaxed); }
    void cancel() { m_canceled.store(true, std::memory_order_relaxed); }

private:
    std::atomic<bool> m_canceled{false};
};

} // namespace nivora::concurrent
