#pragma once

#include <coordsys/CoordSystemTypes.h>

#include <QHash>
#include <QMutex>
#include <QString>

#include <functional>
#include <utility>

namespace nivora::cs {

/// The systems that a factory made last, by the text or code that they were made from: who asks for one again
/// gets a new system that shares the engines' objects, at a hundredth of the cost. Emptied when any catalogue
/// of the process changes. Holds at most 2 * generation systems (some 20 KB each): with what the
/// engines remember, 10,000 different ones made and dropped leave less than 16 MB. Thread-safe; systems are
/// made and destroyed unlocked, since both take the PROJ lock.
class CoordSystemCache
{
public:
    enum class By { Proj, Prj, Record, Epsg, Wkt };
    using Key = std::pair<int, QString>;

    /// A system of its own for every caller. What \p make throws is passed on, and nothing kept.
    CoordSystemPtr system(By by, const QString &text, const std::function<CoordSystemPtr()> &make);

private:
    using Systems = QHash<Key, CoordSystemPtr>;
    static constexpr int generation = 128;

    CoordSystemPtr find(const Key &key);
    void keep(const Key &key, const CoordSystemPtr &cs, unsigned madeAt);

    QMutex m_lock;   ///< guards the following
    Systems m_young; ///< made or asked for lately; grown full they become the old ones
    Systems m_old;
    unsigned m_filledAt = 0; ///< catalogueRevision()
};

} // namespace nivora::cs
