#pragma once

#include <QString>

#include <utility>

namespace nivora::files {

// What the system has to be asked for when files are put in their places: POSIX behind one header. Functions
// return 0 or an errno value. Names are as QFile takes them.

/// What tells a file from the one that somebody else put, or wrote, in its place.
struct Identity
{
    quint64 device = 0;
    quint64 inode = 0; ///< 0: there is no file
    qint64 size = 0;
    qint64 changedNs = 0; ///< when it was written to

    bool exists() const { return inode != 0; }
    bool operator==(const Identity &other) const
    {
        return device == other.device && inode == other.inode && size == other.size &&
               changedNs == other.changedNs;
    }
};
/// Of what has the name itself: links are not followed.
Identity identityOf(const QString &path);
bool isRegularFile(const QString &path);

/// Where a file goes that is written to \p path: links are followed, also one that leads nowhere yet.
QString withoutLinks(const QString &path);

/// Moves a file to a name that nothing has, EEXIST otherwise, also when something appears there meanwhile.
int moveToNewName(const QString &from, const QString &to);
/// Moves a file, replacing what has the name.
int moveOver(const QString &from, const QString &to);
/// Gives a file a second name, or, where files have one name only, another.
int setAside(const QString &path, const QString &aside);
/// Gives \p to the mode of \p from and, where this user may, its owner and group.
void copyAttributes(const QString &from, const QString &to);
/// Makes what was written of a file outlive a power cut.
int flushToDisk(int descriptor);
int flushToDisk(const QString &path);

/// A new folder beside other files, its name beginning with \p prefix; empty, with \p error set, when none
/// can be made.
QString makeFolder(const QString &prefix, int &error);

/// The system's lock on a folder, which leaves no file behind and goes with the process, however that ends.
/// For the thread that makes it.
class FolderLock
{
public:
    using Folder = std::pair<quint64, quint64>; ///< device and inode

    FolderLock() = default;
    ~FolderLock();
    FolderLock(const FolderLock &) = delete;
    FolderLock &operator=(const FolderLock &) = delete;

    /// Waits up to \p waitMs. False when somebody else holds it, or there are no such locks there. \p again:
    /// a lock that this thread holds already is shared; it must outlive this one.
    bool take(const QString &folder, int waitMs, bool again = false);
    bool isHeld() const { return m_held; }
    /// Whether somebody else held it to the end of the waiting.
    bool isBusy() const { return m_busy; }

private:
    Folder m_folder;
    int m_descriptor = -1;
    bool m_held = false;
    bool m_busy = false;
};

} // namespace nivora::files
