#pragma once

#include <platform/files/Publication.h>

#include <QDir>
#include <QString>
#include <QStringList>

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
    QString path(const QString &name) const { return m_publication->path(name); }
    /// For what is not published.
    QDir dir() const { return QDir(m_publication->folder()); }
    /// Where a file of that name appears.
    QString place(const QString &name) const { return m_publication->place(name); }
    /// Throws Failure when a signal asked the program to end.
    void checkInterrupted() const;
    /// Throws Failure when the disk is full or a file as large as files may be, which not every driver
    /// notices.
    void checkRoom() const;
    /// Moves everything into place. \p parts are the files that the output was made of before: when it is
    /// overwritten, they are replaced or, for a projection file that stayed would speak for the new
    /// coordinates, removed. No other file is touched. Throws Failure, after which all is as it was.
    void publish(const QStringList &parts);

private:
    QStringList namesBeside(const QStringList &parts) const;

    QString m_target;
    bool m_overwrite;
    std::unique_ptr<nivora::files::Publication> m_publication;
};
