#pragma once

#include <QString>
#include <QStringList>
#include <QTemporaryDir>

#include <memory>

/// A place beside the output where files are written before they appear under their own names, all of them
/// or none. What is not published is removed.
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
    /// Moves everything into place. Throws Failure, after which nothing new is there.
    void publish();

private:
    void replace(const QString &name, QStringList &done);

    QString m_target;
    bool m_overwrite;
    std::unique_ptr<QTemporaryDir> m_dir;
};
