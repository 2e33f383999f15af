#pragma once

#include <QDir>
#include <QString>
#include <QStringList>
#include <QTemporaryDir>

#include <memory>

/// A place beside the output where files are written before they appear under their own names, all of them
/// or none. What is not published is removed, also when the user interrupts the program.
class StagedOutput
{
public:
    /// Throws Failure when something lies at \p path and \p overwrite is false, and when the directory cannot
    /// be written to.
    StagedOutput(const QString &path, bool overwrite);

    /// Where to write; the name is the output's own.
    QString path() const;
    /// A further file of the output, by its name.
    QString path(const QString &name) const { return m_dir->filePath(name); }
    QDir dir() const { return QDir(m_dir->path()); }
    /// Throws Failure when a signal asked the program to end.
    void checkInterrupted() const;
    /// Throws Failure when the disk is full, which not every driver notices.
    void checkRoom() const;
    /// Moves everything into place. \p obsolete are paths of files of what was there before, which are
    /// removed when they lie beside the output, belong to its name and have no successor. Throws Failure,
    /// after which nothing new is there.
    void publish(const QStringList &obsolete);

private:
    void replace(const QString &name, QStringList &done);
    void removeObsolete(const QStringList &obsolete, const QStringList &fresh) const;

    QString m_target;
    bool m_overwrite;
    std::unique_ptr<QTemporaryDir> m_dir;
};
