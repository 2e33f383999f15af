#pragma once

#include "CatalogueRevision_p.h"

#include <QHash>
#include <QMutex>
#include <QMutexLocker>

#include <cstddef>
#include <iterator>
#include <list>
#include <optional>
#include <utility>

namespace nivora::cs {

/// What was made with the catalogues, under what it was made from: at most so many values, those that were
/// not asked for longest go. All go when any catalogue of the process changes. Thread-safe; values are made
/// by the callers, and destroyed, without the cache's lock, since both may take others.
template <typename Key, typename Value> class CatalogueCache
{
public:
    explicit CatalogueCache(std::size_t most)
        : m_most(most)
    {}
    CatalogueCache(const CatalogueCache &) = delete;
    CatalogueCache &operator=(const CatalogueCache &) = delete;

    std::optional<Value> find(const Key &key)
    {
        Entries dropped;
        const QMutexLocker lock(&m_mutex);
        forgetOutdated(dropped);
        const auto found = m_places.constFind(key);
        if (found == m_places.constEnd())
            return std::nullopt;
        m_entries.splice(m_entries.begin(), m_entries, *found);
        return m_entries.front().second;
    }
    /// Keeps the value in place of one that may be there. \p since is what catalogueRevision() was before the
    /// value was made: one of other catalogues is not kept.
    void replace(const Key &key, const Value &value, unsigned since)
    {
        Entries dropped;
        const QMutexLocker lock(&m_mutex);
        if (!isOf(since, dropped))
            return;
        const auto found = m_places.constFind(key);
        if (found == m_places.constEnd())
            return add(key, value, dropped);
        dropped.emplace_back(key, std::exchange((*found)->second, value));
    }
    /// Keeps the value unless another thread was faster. Returns the one that is kept.
    Value keep(const Key &key, const Value &value, unsigned since)
    {
        Entries dropped;
        const QMutexLocker lock(&m_mutex);
        if (!isOf(since, dropped))
            return value;
        const auto found = m_places.constFind(key);
        if (found != m_places.constEnd())
            return (*found)->second;
        add(key, value, dropped);
        return value;
    }
    void clear()
    {
        Entries dropped;
        const QMutexLocker lock(&m_mutex);
        m_entries.swap(dropped);
        m_places.clear();
    }
    std::size_t size() const
    {
        const QMutexLocker lock(&m_mutex);
        return m_entries.size();
    }

private:
    using Entries = std::list<std::pair<Key, Value>>; ///< the one asked for last in front

    void forgetOutdated(Entries &dropped)
    {
        const unsigned now = catalogueRevision();
        if (m_since != now) {
            m_entries.swap(dropped);
            m_places.clear();
        }
        m_since = now;
    }
    bool isOf(unsigned since, Entries &dropped)
    {
        forgetOutdated(dropped);
        return m_since == since;
    }
    void add(const Key &key, const Value &value, Entries &dropped)
    {
        m_entries.emplace_front(key, value);
        m_places.insert(key, m_entries.begin());
        if (m_entries.size() <= m_most)
            return;
        m_places.remove(m_entries.back().first);
        dropped.splice(dropped.begin(), m_entries, std::prev(m_entries.end()));
    }

    const std::size_t m_most;
    mutable QMutex m_mutex; ///< guards the following
    Entries m_entries;
    QHash<Key, typename Entries::iterator> m_places;
    unsigned m_since = 0; ///< catalogueRevision()
};

} // namespace nivora::cs
