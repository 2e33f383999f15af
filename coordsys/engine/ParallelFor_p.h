#pragma once

#include <functional>

class QThreadPool;

namespace nivora::cs {

/// Runs \p work in the calling thread and, as threads become free, in up to \p helpers threads of \p pool at
/// once; \p work takes its pieces from a common place until none is left. Returns when every call that has
/// begun has ended. Helpers that no thread was free for are not waited for, so that it works with a full pool
/// and from a thread of that pool. Throws what \p work threw first.
void parallelFor(QThreadPool &pool, int helpers, const std::function<void()> &work);

} // namespace nivora::cs
