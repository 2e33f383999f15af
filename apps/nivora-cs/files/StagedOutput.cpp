#include "StagedOutput.h"

#include "Output.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QObject>

#include <cerrno>
#include <csignal>
#include <cstdio>

namespace {

volatile std::sig_atomic_t interrupted = 0;

void noteInterruption(int) { interrupted = 1; }

/// A second signal ends the program at once.
void listenForSignals()
{
    struct sigaction action = {};
    action.sa_handler = noteInterruption;
    action.sa_flags = static_cast<int>(SA_RESETHAND | SA_RESTART);
    struct sigaction before = {};
    for (const int signal : {SIGINT, SIGTERM, SIGHUP})
        if (::sigaction(signal, nullptr, &before) == 0 && before.sa_handler != SIG_IGN) // as under nohup
            ::sigaction(signal, &action, nullptr);
}

} // namespace

StagedOutput::StagedOutput(const QString &path, bool overwrite)
    : m_target(path)
    , m_overwrite(overwrite)
{
    const QFileInfo info(path);
    if (info.exists() && !info.isFile())
        throw Failure(QObject::tr("%1 exists already and is no file").arg(path));
    if (info.exists() && !overwrite)
        throw Failure(QObject::tr("%1 exists already; --overwrite replaces it").arg(path));
    listenForSignals();
    m_dir = std::make_unique<QTemporaryDir>(info.dir().filePath(QStringLiteral(".nivora-cs-XXXXXX")));
    if (!m_dir->isValid())
        throw Failure(QObject::tr("cannot write to %1: %2").arg(info.dir().path(), m_dir->errorString()));
}

QString StagedOutput::path() const { return m_dir->filePath(QFileInfo(m_target).fileName()); }

void StagedOutput::checkInterrupted() const
{
    if (interrupted)
        throw Failure(QObject::tr("interrupted; %1 was not written").arg(m_target));
}

void StagedOutput::checkRoom() const
{
    constexpr int size = 1 << 16; // more than any buffer whose flushing may have failed
    QFile file(m_dir->filePath(QStringLiteral(".room")));
    const bool fits =
        file.open(QIODevice::WriteOnly) && file.write(QByteArray(size, '\1')) == size && file.flush();
    const QString why = file.errorString();
    file.remove();
    if (!fits)
        throw Failure(QObject::tr("cannot write %1: %2").arg(m_target, why));
}

void StagedOutput::publish(const QStringList &obsolete)
{
    checkInterrupted();
    const QDir target = QFileInfo(m_target).dir();
    const QString main = QFileInfo(m_target).fileName();
    QStringList names = dir().entryList(QDir::Files | QDir::Hidden);
    if (names.removeAll(main) > 0)
        names << main; // who waits for the output waits for this one
    for (const QString &name : names)
        if (name != main && !m_overwrite && target.exists(name))
            throw Failure(
                QObject::tr("%1 exists already; --overwrite replaces it").arg(target.filePath(name)));
    QStringList done;
    for (const QString &name : names)
        replace(name, done);
    removeObsolete(obsolete, names);
}

/// A projection file that stayed would speak for the new coordinates.
void StagedOutput::removeObsolete(const QStringList &obsolete, const QStringList &fresh) const
{
    const QFileInfo target(m_target);
    for (const QString &path : obsolete) {
        const QFileInfo old(path);
        const bool ours = old.dir() == target.dir() &&
                          old.fileName().startsWith(target.completeBaseName() + QLatin1Char('.'));
        if (ours && !fresh.contains(old.fileName()))
            QFile::remove(path);
    }
}

void StagedOutput::replace(const QString &name, QStringList &done)
{
    const QString place = QFileInfo(m_target).dir().filePath(name);
    if (std::rename(QFile::encodeName(m_dir->filePath(name)).constData(),
                    QFile::encodeName(place).constData()) == 0) {
        done << place;
        return;
    }
    const QString why = systemMessage(errno);
    for (const QString &earlier : done)
        QFile::remove(earlier);
    throw Failure(QObject::tr("cannot write %1: %2").arg(place, why));
}
