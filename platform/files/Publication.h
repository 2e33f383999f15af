#pragma once

#include <QString>
#include <QStringList>

#include <memory>
#include <stdexcept>
#include <vector>

namespace nivora::files {

/// Why new files did not appear. The callers have the words.
class PublishError : public std::runtime_error
{
public:
    enum Kind {
        Exists,     ///< something has the name, or got it meanwhile, and may not be replaced
        NoFile,     ///< what has the name is a directory, a device or the like
        Impossible, ///< the system refused, see error()
        NotUndone   ///< so, and old files could not be put back: they lie at path()
    };
    PublishError(Kind kind, const QString &path, int error);

    Kind kind() const { return m_kind; }
    const QString &path() const { return m_path; }
    int error() const { return m_error; } ///< an errno value, 0 for none

private:
    Kind m_kind;
    QString m_path;
    int m_error;
};

/// Files, or folders that are one data set, that are written in a hidden folder and appear beside each other
/// under their own names, all of them or none. What has such a name is set aside, and put back when one of
/// them cannot appear, also by the next publication in that directory when the process was killed in between.
/// A name that is a link stays one: the file that it leads to is replaced. A file that is replaced gives its
/// mode to the new one; a folder is never replaced. Threads: one at a time; any number of processes.
class Publication
{
public:
    /// Makes the folder in the directory of \p target, behind its links; removes what dead processes left
    /// there. Throws PublishError.
    explicit Publication(const QString &target);
    /// Removes the folder, with all that was not published.
    ~Publication();
    Publication(const Publication &) = delete;
    Publication &operator=(const Publication &) = delete;

    /// Where files that are not published may lie.
    QString folder() const;
    /// Where to write the file of that name; its place is beside the target.
    QString path(const QString &name) const;
    /// What has been written, the target last: who waits for the output waits for this one.
    QStringList names() const;
    /// The place of a name beside the target.
    QString place(const QString &name) const;

    /// Moves everything into place. Only a file named in \p replaceable is replaced; those of \p obsolete go,
    /// where there are any. Throws PublishError, after which all is as it was.
    void publish(const QStringList &replaceable, const QStringList &obsolete);

private:
    class Stage;
    struct Step;

    Stage &stageFor(const QString &directory);
    Step stepOf(const QString &name, bool isNew);
    void take(const Step &step, bool mayReplace) const;
    void moveIn(const Step &step) const;
    void undo();

    QString m_target;
    std::vector<std::unique_ptr<Stage>> m_stages; ///< the first is that of the target
};

} // namespace nivora::files
