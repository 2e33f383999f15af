#pragma once

#include <QCache>
#include <QMutex>
#include <QMutexLocker>
#include <QString>

namespace nivora::cs {

/// What searches for the last thousand texts gave, nothing included. Thread-safe.
class EpsgSearchCache
{
public:
    bool find(const QString &text, int &code) const
    {
        const QMutexLocker lock(&m_mutex);
        const int *known = m_codes.object(text);
        if (known)
            code = *known;
        return known;
    }
    void insert(const QString &text, int code)
    {
        const QMutexLocker lock(&m_mutex);
        m_codes.insert(text, new int(code));
    }

private:
    mutable QMutex m_mutex;
    QCache<QString, int> m_codes{1000};
};

} // namespace nivora::cs
