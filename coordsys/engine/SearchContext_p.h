#pragma once

#include <proj.h>

#include <QMutexLocker>

namespace nivora::cs {

/// A PROJ context for searches of the database, which take up to a quarter of a second: objects of other
/// contexts stay usable meanwhile. One search at a time.
class SearchContext
{
public:
    SearchContext();
    PJ_CONTEXT *get() const;

private:
    QMutexLocker m_lock;
};

} // namespace nivora::cs
