#pragma once

#include <QMutex>
#include <QMutexLocker>
#include <QString>

#include <functional>
#include <optional>
#include <utility>

namespace nivora::cs {

/// The name that a catalogue has for a system, looked up when it is first asked for; copies of the system
/// share the answer. Thread-safe; the look-up runs unlocked.
class CatalogueName
{
public:
    using LookUp = std::function<QString()>;

    explicit CatalogueName(LookUp lookUp)
        : m_lookUp(std::move(lookUp))
    {}

    /// Empty when no entry equals the system.
    QString name() const
    {
        {
            const QMutexLocker lock(&m_lock);
            if (m_name)
                return *m_name;
        }
        const QString found = m_lookUp();
        const QMutexLocker lock(&m_lock);
        if (!m_name)
            m_name = found;
        return *m_name;
    }

private:
    LookUp m_lookUp;
    mutable QMutex m_lock; ///< guards m_name
    mutable std::optional<QString> m_name;
};

} // namespace nivora::cs
