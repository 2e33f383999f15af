#include "Publication.h"

#include "FileSystem.h"

#include <QDataStream>
#include <QDir>
#include <QFile>
#include <QFileInfo>

#include <algorithm>
#include <cerrno>
#include <cstring>

namespace nivora::files {
namespace {

const QString prefix = QStringLiteral(".nivora-cs-");
const QString freshFolder = QStringLiteral("new");
const QString oldFolder = QStringLiteral("old");
const QString journalName = QStringLiteral("journal");

bool removeAll(const QString &path)
{
    return QFileInfo(path).isDir() ? QDir(path).removeRecursively() : QFile::remove(path);
}

std::string technicalText(const QString &path, int error)
{
    return path.toStdString() + ": " + (error == 0 ? "exists" : std::strerror(error));
}

} // namespace

PublishError::PublishError(Kind kind, const QString &path, int error)
    : std::runtime_error(technicalText(path, error))
    , m_kind(kind)
    , m_path(path)
    , m_error(error)
{}

/// The hidden folder in one directory. While its process lives, it holds the lock on it.
class Publication::Stage
{
public:
    /// A new one. Throws PublishError.
    explicit Stage(const QString &directory);
    /// One that is there, when it belongs to nobody; null otherwise.
    static std::unique_ptr<Stage> abandoned(const QString &folder);
    ~Stage();
    Stage(const Stage &) = delete;
    Stage &operator=(const Stage &) = delete;

    const QString &directory() const { return m_directory; }
    const QString &folder() const { return m_folder; }
    QString fresh(const QString &leaf) const { return inside(freshFolder, leaf); }
    QString old(const QString &leaf) const { return inside(oldFolder, leaf); }
    QString place(const QString &leaf) const { return QDir(m_directory).filePath(leaf); }

    /// Plans that the file takes its place, or that what has the name goes.
    void plan(const QString &leaf) { m_plan.push_back({leaf, identityOf(fresh(leaf))}); }
    /// From here on somebody else can undo it. Throws PublishError.
    void begin() const;
    /// From here on nobody can.
    void commit();
    /// Undoes what was planned. False when an old file could not be put back: the folder stays then.
    bool rollBack();

private:
    struct Planned
    {
        QString leaf;
        Identity fresh; ///< none for a file that goes
    };
    Stage() = default;
    QString inside(const QString &kind, const QString &leaf) const
    {
        return m_folder + QLatin1Char('/') + kind + QLatin1Char('/') + leaf;
    }
    QString journal() const { return QDir(m_folder).filePath(journalName); }
    bool open();
    void readJournal();
    bool undo(const Planned &planned) const;

    QString m_directory;
    QString m_folder;
    FolderLock m_lock;
    std::vector<Planned> m_plan;
    bool m_stays = false;
};

/// A folder is locked a moment after it was made, and may have been swept in between.
Publication::Stage::Stage(const QString &directory)
    : m_directory(directory)
{
    constexpr int tries = 10;
    int error = 0;
    for (int i = 0; i < tries && m_folder.isEmpty(); ++i) {
        m_folder = makeFolder(QDir(directory).filePath(prefix), error);
        if (error != 0)
            throw PublishError(PublishError::Impossible, directory, error);
        constexpr int waitMs = 1000;
        m_lock.take(m_folder, waitMs);
        if (!open())
            m_folder.clear();
    }
    if (m_folder.isEmpty())
        throw PublishError(PublishError::Impossible, directory, EIO);
}

bool Publication::Stage::open()
{
    const QDir folder(m_folder);
    return folder.exists() && folder.mkdir(freshFolder) && folder.mkdir(oldFolder);
}

std::unique_ptr<Publication::Stage> Publication::Stage::abandoned(const QString &folder)
{
    std::unique_ptr<Stage> stage(new Stage);
    if (!stage->m_lock.take(folder, 0))
        return nullptr;
    stage->m_folder = folder;
    stage->m_directory = QFileInfo(folder).path();
    stage->readJournal();
    return stage;
}

Publication::Stage::~Stage()
{
    if (!m_folder.isEmpty() && !m_stays)
        QDir(m_folder).removeRecursively();
}

void Publication::Stage::begin() const
{
    QFile file(journal());
    bool written = file.open(QIODevice::WriteOnly);
    QDataStream stream(&file);
    for (const Planned &planned : m_plan)
        stream << QFile::encodeName(planned.leaf) << planned.fresh.device << planned.fresh.inode
               << planned.fresh.size << planned.fresh.changedNs;
    written = written && file.flush();
    if (!written)
        throw PublishError(PublishError::Impossible, m_directory, ENOSPC);
}

void Publication::Stage::readJournal()
{
    QFile file(journal());
    if (!file.open(QIODevice::ReadOnly))
        return;
    QDataStream stream(&file);
    while (!stream.atEnd()) {
        QByteArray leaf;
        Identity fresh;
        stream >> leaf >> fresh.device >> fresh.inode >> fresh.size >> fresh.changedNs;
        if (stream.status() == QDataStream::Ok && !leaf.isEmpty() && !leaf.contains('/'))
            m_plan.push_back({QFile::decodeName(leaf), fresh});
    }
}

void Publication::Stage::commit()
{
    QFile::remove(journal());
    m_plan.clear();
}

bool Publication::Stage::rollBack()
{
    for (auto planned = m_plan.rbegin(); planned != m_plan.rend(); ++planned)
        m_stays = !undo(*planned) || m_stays;
    if (!m_stays)
        commit();
    return !m_stays;
}

/// What somebody else put or wrote in the place meanwhile stays.
bool Publication::Stage::undo(const Planned &planned) const
{
    const QString aside = old(planned.leaf);
    const Identity before = identityOf(aside);
    const Identity now = identityOf(place(planned.leaf));
    const bool isOurs = planned.fresh.exists() && now == planned.fresh;
    if (before.exists())
        return (now.exists() && !isOurs) || moveOver(aside, place(planned.leaf)) == 0;
    return !isOurs || identityOf(fresh(planned.leaf)).exists() || removeAll(place(planned.leaf));
}

struct Publication::Step
{
    Stage &stage;
    QString name;
    QString leaf; ///< in the stage's directory: a link may lead to another name
    bool isNew;
};

Publication::Publication(const QString &target)
    : m_target(target)
{
    const QString directory = QFileInfo(withoutLinks(target)).absolutePath();
    const QStringList left = QDir(directory).entryList({prefix + QStringLiteral("??????")},
                                                       QDir::Dirs | QDir::Hidden | QDir::NoSymLinks);
    for (const QString &name : left)
        if (const auto stage = Stage::abandoned(QDir(directory).filePath(name)))
            stage->rollBack();
    stageFor(directory);
}

Publication::~Publication() = default;

Publication::Stage &Publication::stageFor(const QString &directory)
{
    for (const std::unique_ptr<Stage> &stage : m_stages)
        if (stage->directory() == directory)
            return *stage;
    m_stages.push_back(std::make_unique<Stage>(directory));
    return *m_stages.back();
}

QString Publication::folder() const { return m_stages.front()->folder(); }
QString Publication::path(const QString &name) const { return m_stages.front()->fresh(name); }

QString Publication::place(const QString &name) const { return QFileInfo(m_target).dir().filePath(name); }

QStringList Publication::names() const
{
    QStringList names =
        QDir(path(QString()))
            .entryList(QDir::Files | QDir::Dirs | QDir::NoDotAndDotDot | QDir::Hidden | QDir::NoSymLinks);
    const QString main = QFileInfo(m_target).fileName();
    if (names.removeAll(main) > 0)
        names << main;
    return names;
}

Publication::Step Publication::stepOf(const QString &name, bool isNew)
{
    const QFileInfo behindLinks(withoutLinks(place(name)));
    return {stageFor(behindLinks.absolutePath()), name, behindLinks.fileName(), isNew};
}

/// To the folder that lies on the file system of the place, under the name there.
void Publication::moveIn(const Step &step) const
{
    const QString from = path(step.name);
    const QString to = step.stage.fresh(step.leaf);
    if (from == to)
        return;
    const int moved = moveOver(from, to);
    if (moved != 0 && (moved != EXDEV || !QFile::copy(from, to)))
        throw PublishError(PublishError::Impossible, to, moved);
}

void Publication::take(const Step &step, bool mayReplace) const
{
    const QString place = step.stage.place(step.leaf);
    const QString fresh = step.stage.fresh(step.leaf);
    const bool hasName = identityOf(this->place(step.name)).exists(); // a link that leads nowhere too
    const bool isThere = identityOf(place).exists();
    if ((hasName || isThere) && !mayReplace)
        throw PublishError(PublishError::Exists, place, 0);
    if (isThere && !isRegularFile(place))
        throw PublishError(PublishError::NoFile, place, 0);
    // What replaces a file has to be on the disk before that one goes.
    int error = isThere && step.isNew ? flushToDisk(fresh) : 0;
    if (error != 0)
        throw PublishError(PublishError::Impossible, place, error);
    if (isThere && step.isNew)
        copyAttributes(place, fresh);
    error = !isThere     ? 0
            : step.isNew ? setAside(place, step.stage.old(step.leaf))
                         : moveOver(place, step.stage.old(step.leaf));
    if (error == 0 && step.isNew)
        error = isThere ? moveOver(fresh, place) : moveToNewName(fresh, place);
    if (error != 0)
        throw PublishError(error == EEXIST ? PublishError::Exists : PublishError::Impossible, place, error);
}

void Publication::undo()
{
    for (const std::unique_ptr<Stage> &stage : m_stages)
        if (!stage->rollBack())
            throw PublishError(PublishError::NotUndone, stage->folder(), EIO);
}

void Publication::publish(const QStringList &replaceable, const QStringList &obsolete)
{
    std::vector<Step> steps;
    for (const QString &name : obsolete)
        steps.push_back(stepOf(name, false));
    for (const QString &name : names()) {
        steps.push_back(stepOf(name, true));
        moveIn(steps.back());
    }
    for (const Step &step : steps)
        step.stage.plan(step.leaf);
    for (const std::unique_ptr<Stage> &stage : m_stages)
        stage->begin();
    try {
        for (const Step &step : steps)
            take(step, !step.isNew || replaceable.contains(step.name));
    } catch (const PublishError &) {
        undo();
        throw;
    }
    for (const std::unique_ptr<Stage> &stage : m_stages)
        stage->commit();
}

} // namespace nivora::files
