#pragma once

// The file of the user's own systems: reading, and saving so that it is whole at any time.

#include "XmlElement_p.h"
#include <coordsys/UserCoordSystem.h>
#include <platform/files/FileSystem.h>

namespace nivora::cs {

struct StoreReading
{
    bool exists = false;
    QString problem; ///< "path:line:column: reason" or "path: reason"; empty when the document was read
    XmlElement root;
};

/// Reads the file of a store. A well-formed document of another root that holds no branches is somebody
/// else's and counts as a problem.
StoreReading readStore(const QFileInfo &file);

/// Held by every change of the stores in a directory, which it makes when there is none. The system's lock on
/// the directory itself leaves no file behind and goes with the process, however that ends.
class StoreLock
{
public:
    explicit StoreLock(const QFileInfo &file);
    /// False where there are no such locks.
    bool isHeld() const { return m_lock.isHeld(); }
    /// Somebody else keeps it for long.
    bool isBusy() const { return m_lock.isBusy(); }

private:
    files::FolderLock m_lock;
};

/// Replaces the file through a temporary one. What cannot be read there is copied to "….bak" first, and
/// temporary files that killed saves left behind are removed. Throws std::logic_error.
void writeStore(const QFileInfo &file, const QList<UserCoordSystem::CsDataType> &branches,
                const StoreLock &lock);

/// XML 1.0 has no form for most control characters and for halves of surrogate pairs: one of them would make
/// the whole file unreadable. They become U+FFFD.
QString xmlWritable(const QString &text);

/// Names of elements and attributes.
namespace storetext {
inline QString root() { return QStringLiteral("coordsys"); }
inline QString branch() { return QStringLiteral("branch"); }
inline QString entry() { return QStringLiteral("cs"); }
inline QLatin1String name() { return QLatin1String("name"); }
inline QLatin1String type() { return QLatin1String("type"); }
inline QLatin1String source() { return QLatin1String("str"); }
inline QLatin1String description() { return QLatin1String("desc"); }
} // namespace storetext

} // namespace nivora::cs
