#pragma once

#include <atomic>

namespace nivora::cs {

/// Counts what happens to the catalogues of the process: loading, adding, clearing. Whoever remembers what
/// was made with them compares. Thread-safe.
inline std::atomic<unsigned> &catalogueRevision()
{
    static std::atomic<unsigned> changes{0};
    return changes;
}

} // namespace nivora::cs
