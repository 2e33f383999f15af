#pragma once

#include "CatalogueRevision_p.h"

#include <QCache>
#include <QMutex>
#include <QMutexLocker>
#include <QString>

namespace nivora::cs {

/// What searches for the last thousand texts gave, nothing included, as long as no catalogue changes.
/// Thread-safe.
class EpsgSearchCache
{
public:
    bool find(const QString &text, int &code)
    {
        const QMutexLocker lock(&m_mutex);
        forgetOutdated();
        const int *known = m_codes.object(text);
        if (known)
            code = *known;
        return known;
    }
    /// \p since is what catalogueRevision() was before the search.
    void insert(const QString &text, int code, unsigned since)
    {
        const QMutexLocker lock(&m_mutex);
        forgetOutdated();
        if (m_since == since)
            m_codes.insert(text, new int(code));
    }
    void clear()
    {
        const QMutexLocker lock(&m_mutex);
        m_codes.clear();
    }

private:
    void forgetOutdated()
    {
        const unsigned now = catalogueRevision();
        if (m_since != now)
            m_codes.clear();
        m_since = now;
    }

    QMutex m_mutex;
    QCache<QString, int> m_codes{1000};
    unsigned m_since = 0; ///< catalogueRevision()
};

} // namespace nivora::cs
