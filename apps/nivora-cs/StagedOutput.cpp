#include "StagedOutput.h"

#include "Output.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>

#include <cerrno>
#include <cstdio>

StagedOutput::StagedOutput(const QString &path, bool overwrite)
    : m_target(path)
    , m_overwrite(overwrite)
{
    const QFileInfo info(path);
    if (info.exists() && (!overwrite || !info.isFile()))
        throw Failure(
            QStringLiteral("%1 exists already%2")
                .arg(path, info.isFile() ? QStringLiteral("; --overwrite replaces it") : QString()));
    m_dir = std::make_unique<QTemporaryDir>(info.dir().filePath(QStringLiteral(".nivora-cs-XXXXXX")));
    if (!m_dir->isValid())
        throw Failure(QStringLiteral("cannot write to %1: %2").arg(info.dir().path(), m_dir->errorString()));
}

QString StagedOutput::path() const { return m_dir->filePath(QFileInfo(m_target).fileName()); }

void StagedOutput::publish()
{
    const QDir target = QFileInfo(m_target).dir();
    const QString main = QFileInfo(m_target).fileName();
    QStringList names = QDir(m_dir->path()).entryList(QDir::Files | QDir::Hidden);
    if (names.removeAll(main) > 0)
        names << main; // who waits for the output waits for this one
    for (const QString &name : names)
        if (name != main && !m_overwrite && target.exists(name))
            throw Failure(
                QStringLiteral("%1 exists already; --overwrite replaces it").arg(target.filePath(name)));
    QStringList done;
    for (const QString &name : names)
        replace(name, done);
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
    throw Failure(QStringLiteral("cannot write %1: %2").arg(place, why));
}
