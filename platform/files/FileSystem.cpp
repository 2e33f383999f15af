#include "FileSystem.h"

#include <QFile>
#include <QFileInfo>

#include <cerrno>

#ifdef Q_OS_UNIX
#include <cstdio>
#include <fcntl.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <unistd.h>

#include <chrono>
#include <map>
#include <thread>
#else
#include <QDateTime>
#include <QTemporaryDir>
#endif

namespace nivora::files {
namespace {

constexpr int mostLinks = 40; ///< as many as the system follows

#ifdef Q_OS_UNIX
QByteArray bytes(const QString &path) { return QFile::encodeName(path); }

int errorOf(int result) { return result == 0 ? 0 : errno; }

/// For file systems that know neither a move without replacing nor second names: the name is taken first.
int moveToTakenName(const QByteArray &from, const QByteArray &to)
{
    const int descriptor = ::open(to.constData(), O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC, 0600);
    if (descriptor < 0)
        return errno;
    ::close(descriptor);
    const int error = errorOf(::rename(from.constData(), to.constData()));
    if (error != 0)
        ::unlink(to.constData());
    return error;
}

bool isUnknownCall(int error)
{
    return error == EINVAL || error == ENOSYS || error == EPERM || error == ENOTSUP || error == EMLINK;
}
#endif

} // namespace

#ifdef Q_OS_UNIX

Identity identityOf(const QString &path)
{
    struct stat found = {};
    if (::lstat(bytes(path).constData(), &found) != 0)
        return {};
    constexpr qint64 second = 1000000000;
    return {found.st_dev, found.st_ino, found.st_size, found.st_mtim.tv_sec * second + found.st_mtim.tv_nsec};
}

bool isRegularFile(const QString &path)
{
    struct stat found = {};
    return ::lstat(bytes(path).constData(), &found) == 0 && S_ISREG(found.st_mode);
}

int moveToNewName(const QString &from, const QString &to)
{
    const QByteArray source = bytes(from);
    const QByteArray target = bytes(to);
#ifdef RENAME_NOREPLACE
    const int moved =
        errorOf(::renameat2(AT_FDCWD, source.constData(), AT_FDCWD, target.constData(), RENAME_NOREPLACE));
    if (!isUnknownCall(moved))
        return moved;
#endif
    const int linked = errorOf(::link(source.constData(), target.constData()));
    if (linked == 0)
        return errorOf(::unlink(source.constData()));
    return isUnknownCall(linked) ? moveToTakenName(source, target) : linked;
}

int moveOver(const QString &from, const QString &to)
{
    return errorOf(::rename(bytes(from).constData(), bytes(to).constData()));
}

int setAside(const QString &path, const QString &aside)
{
    if (::link(bytes(path).constData(), bytes(aside).constData()) == 0)
        return 0;
    return moveOver(path, aside);
}

void copyAttributes(const QString &from, const QString &to)
{
    struct stat old = {};
    struct stat fresh = {};
    const QByteArray target = bytes(to);
    if (::stat(bytes(from).constData(), &old) != 0 || ::stat(target.constData(), &fresh) != 0)
        return;
    if (old.st_uid != fresh.st_uid || old.st_gid != fresh.st_gid) {
        const int refused = ::chown(target.constData(), old.st_uid, old.st_gid);
        static_cast<void>(refused); // only some users may
    }
    constexpr mode_t permissions = 07777;
    const int refused =
        ::chmod(target.constData(), old.st_mode & permissions); // behind chown, which clears bits
    static_cast<void>(refused);                                 // file systems without modes
}

int flushToDisk(int descriptor) { return errorOf(::fsync(descriptor)); }

int flushToDisk(const QString &path)
{
    const int descriptor = ::open(bytes(path).constData(), O_RDONLY | O_CLOEXEC);
    if (descriptor < 0)
        return errno;
    const int error = flushToDisk(descriptor);
    ::close(descriptor);
    return error;
}

QString makeFolder(const QString &prefix, int &error)
{
    QByteArray name = bytes(prefix + QStringLiteral("XXXXXX"));
    const bool made = ::mkdtemp(name.data()) != nullptr;
    error = made ? 0 : errno;
    return made ? QFile::decodeName(name) : QString();
}

/// How often this thread has locked which folder.
static std::map<FolderLock::Folder, int> &lockedHere()
{
    thread_local std::map<FolderLock::Folder, int> folders;
    return folders;
}

/// Device and inode; zeros when it cannot be told.
static FolderLock::Folder folderOf(int descriptor)
{
    struct stat found = {};
    return descriptor >= 0 && ::fstat(descriptor, &found) == 0
               ? FolderLock::Folder(found.st_dev, found.st_ino)
               : FolderLock::Folder();
}

FolderLock::~FolderLock()
{
    if (m_held && --lockedHere()[m_folder] == 0)
        lockedHere().erase(m_folder);
    if (m_descriptor >= 0)
        ::close(m_descriptor);
}

bool FolderLock::take(const QString &folder, int waitMs, bool again)
{
    using Clock = std::chrono::steady_clock;
    const auto until = Clock::now() + std::chrono::milliseconds(waitMs);
    m_descriptor = ::open(bytes(folder).constData(), O_RDONLY | O_DIRECTORY | O_CLOEXEC);
    m_folder = folderOf(m_descriptor);
    m_held = again && lockedHere().count(m_folder) > 0;
    while (m_descriptor >= 0 && !m_held) {
        m_held = ::flock(m_descriptor, LOCK_EX | LOCK_NB) == 0;
        m_busy = !m_held && errno == EWOULDBLOCK;
        if (!m_busy || Clock::now() >= until)
            break;
        std::this_thread::sleep_for(std::chrono::milliseconds(2));
    }
    if (m_held)
        ++lockedHere()[m_folder];
    return m_held;
}

#else // what Qt has: nothing is locked, and a file that appears in the last moment is replaced

Identity identityOf(const QString &path)
{
    const QFileInfo info(path);
    return info.exists() ? Identity{0, 1, info.size(), info.lastModified().toMSecsSinceEpoch()} : Identity{};
}

bool isRegularFile(const QString &path) { return QFileInfo(path).isFile(); }

int moveToNewName(const QString &from, const QString &to)
{
    if (QFileInfo::exists(to))
        return EEXIST;
    return QFile::rename(from, to) ? 0 : EIO;
}

int moveOver(const QString &from, const QString &to)
{
    QFile::remove(to);
    return QFile::rename(from, to) ? 0 : EIO;
}

int setAside(const QString &path, const QString &aside) { return moveToNewName(path, aside); }

void copyAttributes(const QString &from, const QString &to)
{
    QFile::setPermissions(to, QFile::permissions(from));
}

int flushToDisk(int) { return 0; }
int flushToDisk(const QString &) { return 0; }

QString makeFolder(const QString &prefix, int &error)
{
    QTemporaryDir folder(prefix + QStringLiteral("XXXXXX"));
    folder.setAutoRemove(false);
    error = folder.isValid() ? 0 : EIO;
    return folder.isValid() ? folder.path() : QString();
}

FolderLock::~FolderLock() = default;
bool FolderLock::take(const QString &, int, bool) { return false; }

#endif

QString withoutLinks(const QString &path)
{
    QString place = path;
    for (int i = 0; i < mostLinks && QFileInfo(place).isSymLink(); ++i)
        place = QFileInfo(place).symLinkTarget();
    return place;
}

} // namespace nivora::files
