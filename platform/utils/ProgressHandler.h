#pragma once

#include <atomic>
#include <cstdint>

namespace nivora::concurrent {

/// What a long piece of work and those who wait for it tell each other: a cancellation flag that the work
/// polls, and how far it has come. Work that knows its size sets the total and advances; a search leaves both
/// at 0. Thread-safe.
class ProgressHandler
{
public:
    bool isCanceled() const { return m_canceled.load(std::memory_order_relaxed); }
    void cancel() { m_canceled.store(true, std::memory_order_relaxed); }

    /// Items done and to be done, in the unit of the work.
    std::uint64_t done() const { return m_done.load(std::memory_order_relaxed); }
    std::uint64_t total() const { return m_total.load(std::memory_order_relaxed); }
    /// For the work: so many more items are to be done, so many more are. One handler may follow several
    /// pieces of work, one after the other or at once.
    void expect(std::uint64_t items) { m_total.fetch_add(items, std::memory_order_relaxed); }
    void advance(std::uint64_t items) { m_done.fetch_add(items, std::memory_order_relaxed); }

private:
    std::atomic<bool> m_canceled{false};
    std::atomic<std::uint64_t> m_done{0};
    std::atomic<std::uint64_t> m_total{0};
};

} // namespace nivora::concurrent
