#include "StagedOutput.h"

#include "Output.h"

#include <platform/system/Signals.h>

#include <QFile>
#include <QFileInfo>
#include <QObject>

#include <cerrno>
#include <csignal>
#include <ctime>

using nivora::files::Publication;
using nivora::files::PublishError;

namespace {

volatile std::sig_atomic_t interrupted = 0;
volatile std::time_t interruptedAt = 0; // seconds

/// One request often arrives twice, as from a terminal's process group and from timeout(1): only one that
/// comes later is a second request, and ends the program at once. Calls nothing that a signal handler must
/// not.
void noteInterruption(int signal)
{
    constexpr int patience = 2; // seconds, as whole ones are counted
    const std::time_t now = std::time(nullptr);
    if (interrupted && now - interruptedAt >= patience) {
        std::signal(signal, SIG_DFL);
        std::raise(signal); // blocked until the handler returns
    }
    if (!interrupted)
        interruptedAt = now;
    interrupted = 1;
}

Failure existing(const QString &path)
{
    return Failure(QObject::tr("%1 exists already; --overwrite replaces it").arg(path));
}

Failure notWritten(const QString &path, int error)
{
    return Failure(QObject::tr("cannot write %1: %2").arg(path, systemMessage(error)));
}

/// What a database has beside it as long as something is not in it yet; it would go into the next one.
void checkFinished(const QString &path)
{
    for (const char *suffix : {"-wal", "-journal"})
        if (QFileInfo(path + QLatin1String(suffix)).size() > 0)
            throw Failure(
                QObject::tr("%1 is open in another program, or was not written to its end: there is %2")
                    .arg(path, path + QLatin1String(suffix)));
}

void checkFree(const QString &path, bool overwrite)
{
    const QFileInfo info(path);
    if (info.isDir() && overwrite)
        throw Failure(
            QObject::tr("%1 is a folder, which is never replaced: other files may have been put into it; "
                        "remove it, or write to another name")
                .arg(path));
    if (info.exists() && !info.isFile())
        throw Failure(QObject::tr("%1 exists already and is no file").arg(path));
    if ((info.exists() || info.isSymLink()) && !overwrite)
        throw existing(path);
    checkFinished(path);
}

} // namespace

StagedOutput::StagedOutput(const QString &path, Mode mode)
    : m_target(path)
{
    if (mode != Family)
        checkFree(path, mode == Replaced);
    if (mode == Replaced)
        m_replaced << path;
    nivora::system::listenForInterruptions(noteInterruption);
    try {
        m_publication = std::make_unique<Publication>(path);
    } catch (const PublishError &e) {
        throw Failure(QObject::tr("cannot write to %1: %2").arg(e.path(), systemMessage(e.error())));
    }
}

void StagedOutput::claim(const QString &name, bool overwrite)
{
    checkFree(place(name), overwrite);
    if (overwrite)
        m_replaced << place(name);
}

QString StagedOutput::path() const { return path(QFileInfo(m_target).fileName()); }

void StagedOutput::checkInterrupted() const
{
    if (interrupted)
        throw Failure(QObject::tr("interrupted; %1 was not written").arg(m_target));
}

void StagedOutput::checkRoom() const
{
    constexpr int size = 1 << 16; // more than any buffer whose flushing may have failed
    QFile file(dir().filePath(QStringLiteral(".room")));
    const bool fits =
        file.open(QIODevice::WriteOnly) && file.write(QByteArray(size, '\1')) == size && file.flush();
    const bool isShort = file.error() == QFileDevice::NoError; // fewer bytes than asked for, and no more word
    const QString why = isShort ? systemMessage(ENOSPC) : file.errorString();
    file.remove();
    if (!fits)
        throw Failure(QObject::tr("cannot write %1: %2").arg(m_target, why));
    const qint64 largest = nivora::system::largestFile();
    for (const QString &name : largest < 0 ? QStringList() : m_publication->names())
        if (QFileInfo(path(name)).size() >= largest)
            throw notWritten(m_target, EFBIG);
}

/// Of a data set that names no parts, such as a damaged one, what has its name is one.
QStringList StagedOutput::namesBeside(const QString &path, const QStringList &parts) const
{
    const QFileInfo target(path);
    const QString prefix = target.completeBaseName() + QLatin1Char('.');
    QStringList names;
    for (const QString &part : parts)
        if (QFileInfo(part).absolutePath() == target.absolutePath() &&
            QFileInfo(part).fileName().startsWith(prefix))
            names << QFileInfo(part).fileName();
    if (names.isEmpty() && target.exists())
        for (const QString &name : m_publication->names())
            if (name.startsWith(prefix))
                names << name;
    names << target.fileName();
    names.removeDuplicates();
    return names;
}

void StagedOutput::publish(const QStringList &parts)
{
    checkInterrupted();
    if (m_publication->names().isEmpty()) // a driver that keeps all in memory, say
        throw Failure(QObject::tr("nothing was written to %1").arg(m_target));
    QStringList replaceable;
    for (const QString &target : m_replaced) {
        checkFinished(target);
        replaceable << namesBeside(target, parts);
    }
    replaceable.removeDuplicates();
    QStringList obsolete = replaceable;
    for (const QString &name : m_publication->names())
        obsolete.removeAll(name);
    try {
        m_publication->publish(replaceable, obsolete);
    } catch (const PublishError &e) {
        if (e.kind() == PublishError::NoFile)
            throw Failure(QObject::tr("%1 exists already and is no file").arg(e.path()));
        if (e.kind() == PublishError::NotUndone)
            throw Failure(QObject::tr("cannot write %1; what was there lies in %2").arg(m_target, e.path()));
        if (e.kind() == PublishError::Exists && !m_replaced.isEmpty())
            throw Failure(QObject::tr("%1 exists already and is no part of %2").arg(e.path(), m_target));
        throw e.kind() == PublishError::Exists ? existing(e.path()) : notWritten(e.path(), e.error());
    }
}
