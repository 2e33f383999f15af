#pragma once

#include "ProjMutex_p.h"

#include <proj.h>

namespace nivora::cs {

/// A PROJ context for searches of the database, which take up to a quarter of a second: objects of other
/// contexts stay usable meanwhile. One search at a time.
class SearchContext
{
public:
    SearchContext();
    PJ_CONTEXT *get() const;

private:
    ProjLocker m_lock;
};

} // namespace nivora::cs
