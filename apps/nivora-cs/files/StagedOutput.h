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
    /// What the output is, and what may become of what lies there.
    enum Mode {
        New,      ///< nothing is replaced
        Replaced, ///< what is there goes
        Family    ///< nothing has the name itself: further names are claimed
    };
    /// Throws Failure when something lies at \p path that may not be replaced, and when the directory cannot
    /// be written to.
    StagedOutput(const QString &path, Mode mode);
    /// A further output beside that of \p path. Throws Failure when something has the name and \p overwrite
    /// is false.
    void claim(const QString &name, bool overwrite);

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
    QStringList namesBeside(const QString &target, const QStringList &parts) const;

    QString m_target;
    QStringList m_replaced; ///< outputs that may be
    std::unique_ptr<nivora::files::Publication> m_publication;
};
