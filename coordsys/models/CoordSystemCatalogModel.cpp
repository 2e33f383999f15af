#include "CoordSystemCatalogModel_p.h"

#include "ModelTexts_p.h"
#include <coordsys/CoordSysFactory.h>
#include <coordsys/CoordSystem.h>
#include <coordsys/MapinfoCoordSystem.h>
#include <coordsys/SystemInfo.h>
#include <platform/Logger.h>

#include <QtConcurrent>

#include <algorithm>
#include <stdexcept>

namespace nivora::cs {
namespace {

/// Recently used systems lie in their section without groups between.
bool isFlat(CoordSystemCatalogModel::Section section)
{
    return section == CoordSystemCatalogModel::RecentSystems;
}

CoordSystemPtr made(CoordSysFactory &factory, const QString &tagged)
{
    static const QString oracle = QStringLiteral("oracle:");
    if (isOtherCode(tagged))
        return factory.createFromUserInput(tagged);
    return tagged.startsWith(oracle) ? factory.createFromOracleSRID(tagged.mid(oracle.size()).toInt())
                                     : factory.createFromTaggedString(tagged);
}

} // namespace

CoordSystemCatalogModel::CoordSystemCatalogModel(std::shared_ptr<CoordSysFactory> factory, QObject *parent)
    : QAbstractItemModel(parent)
    , d(std::make_unique<CoordSystemCatalogModelPrivate>(*this, std::move(factory)))
{
    if (!d->m_factory)
        throw std::invalid_argument("factory");
    d->m_categories = d->m_factory->mapinfoCoordSystem()->projectionList();
    d->m_branches = d->m_factory->userCoordSystem()->data();
    connect(&d->m_worker.watcher, &QFutureWatcherBase::finished, this, [this] { d->takeIndex(); });
}

CoordSystemCatalogModel::~CoordSystemCatalogModel() = default;

const std::shared_ptr<CoordSysFactory> &CoordSystemCatalogModel::factory() const { return d->m_factory; }

bool CoordSystemCatalogModel::isPrepared() const { return d->m_index != nullptr; }

void CoordSystemCatalogModel::prepare()
{
    if (d->m_index || d->m_worker.isRunning)
        return;
    d->m_worker.isRunning = true;
    const auto work = [catalogue = d->m_factory->mapinfoCoordSystem(),
                       resources = d->m_factory->resourceDir(),
                       language = d->m_factory->language()]() -> std::shared_ptr<const CatalogIndex> {
        try {
            return CatalogIndex::of(catalogue, resources, language);
        } catch (const std::exception &e) {
            LOG_ERROR(
                ModelTexts::tr("Не могу подготовить поиск систем: %1").arg(QString::fromUtf8(e.what())));
            return nullptr;
        }
    };
    d->m_worker.watcher.setFuture(QtConcurrent::run(&d->m_worker.pool, work));
}

void CoordSystemCatalogModel::waitUntilPrepared()
{
    prepare();
    if (!d->m_index)
        d->takeIndex();
}

/// Runs again, to no effect, when the watcher tells what waitUntilPrepared() has taken already.
void CoordSystemCatalogModelPrivate::takeIndex()
{
    if (!m_worker.isRunning)
        return;
    m_worker.watcher.waitForFinished();
    m_worker.isRunning = false;
    const std::shared_ptr<const CatalogIndex> index = m_worker.watcher.result();
    if (!index)
        return;
    replaceRows(Model::EpsgDatabase, index->countries().size(), [&] { m_index = index; });
    Q_EMIT q->prepared();
}

/// Takes the rows of a section away and puts others in their place; \p change alters what they are made from.
/// The database's only come.
template <typename Change>
void CoordSystemCatalogModelPrivate::replaceRows(Section section, int newCount, Change &&change)
{
    const QModelIndex parent = q->sectionIndex(section);
    const int count = q->rowCount(parent);
    if (count > 0) {
        q->beginRemoveRows(parent, 0, count - 1);
        if (section == Model::RecentSystems)
            m_recent.clear();
        else
            m_branches.clear();
        q->endRemoveRows();
    }
    if (newCount > 0)
        q->beginInsertRows(parent, 0, newCount - 1);
    change();
    if (newCount > 0)
        q->endInsertRows();
}

void CoordSystemCatalogModel::setRecentSystems(const QVector<RecentSystem> &systems)
{
    const QVector<RecentSystem> kept = systems; // may be our own
    d->replaceRows(RecentSystems, kept.size(), [&] { d->m_recent = kept; });
}

void CoordSystemCatalogModel::reloadOwnSystems()
{
    const QList<UserCoordSystem::CsDataType> branches = d->m_factory->userCoordSystem()->data();
    d->replaceRows(OwnSystems, branches.size(), [&] { d->m_branches = branches; });
    Q_EMIT ownSystemsChanged();
}

QModelIndex CoordSystemCatalogModel::index(int row, int column, const QModelIndex &parent) const
{
    if (!hasIndex(row, column, parent))
        return {};
    switch (levelOf(parent)) {
    case Level::Root:
        return createIndex(row, column, quintptr(0));
    case Level::Section:
        if (!isFlat(sectionOf(parent)))
            return createIndex(row, column, groupBase + static_cast<quintptr>(sectionOf(parent)));
        return d->systemIndex(sectionOf(parent), 0, row, column);
    default:
        return d->systemIndex(sectionOf(parent), parent.row(), row, column);
    }
}

QModelIndex CoordSystemCatalogModelPrivate::systemIndex(Section section, int group, int row, int column) const
{
    return q->createIndex(row, column,
                          systemBase + static_cast<quintptr>(section) +
                              Model::SectionCount * static_cast<quintptr>(group));
}

QModelIndex CoordSystemCatalogModel::parent(const QModelIndex &child) const
{
    const Level level = levelOf(child);
    if (level == Level::Root || level == Level::Section)
        return {};
    const Section section = sectionOf(child);
    if (level == Level::Group || isFlat(section))
        return createIndex(section, NameColumn, quintptr(0));
    return createIndex(groupOf(child), NameColumn, groupBase + static_cast<quintptr>(section));
}

int CoordSystemCatalogModel::rowCount(const QModelIndex &parent) const
{
    if (parent.column() > NameColumn)
        return 0;
    switch (levelOf(parent)) {
    case Level::Root:
        return SectionCount;
    case Level::Section:
        return isFlat(sectionOf(parent)) ? d->systemCount(sectionOf(parent), 0)
                                         : d->groupCount(sectionOf(parent));
    case Level::Group:
        return d->systemCount(sectionOf(parent), parent.row());
    default:
        return 0;
    }
}

int CoordSystemCatalogModel::columnCount(const QModelIndex &parent) const
{
    return levelOf(parent) == Level::System || parent.column() > NameColumn ? 0 : ColumnCount;
}

bool CoordSystemCatalogModel::hasChildren(const QModelIndex &parent) const
{
    // The database is on its way from the first look on: its section stays open meanwhile.
    const bool isComing =
        levelOf(parent) == Level::Section && sectionOf(parent) == EpsgDatabase && !d->m_index;
    return (isComing && parent.column() == NameColumn) || rowCount(parent) > 0;
}

bool CoordSystemCatalogModel::canFetchMore(const QModelIndex &parent) const
{
    return levelOf(parent) == Level::Section && parent.column() == NameColumn &&
           sectionOf(parent) == EpsgDatabase && !d->m_index && !d->m_worker.isRunning;
}

void CoordSystemCatalogModel::fetchMore(const QModelIndex &parent)
{
    if (canFetchMore(parent))
        prepare();
}

bool CoordSystemCatalogModel::isSystem(const QModelIndex &index) { return levelOf(index) == Level::System; }

QVariant CoordSystemCatalogModel::data(const QModelIndex &index, int role) const
{
    if (!index.isValid())
        return {};
    const bool shown = role == Qt::DisplayRole;
    if (role == NameRole || (shown && index.column() == NameColumn))
        return d->nameOf(index);
    if (!isSystem(index))
        return {};
    if (!shown)
        return d->systemData(index, role);
    const CoordSystemCatalogModelPrivate::Record system = d->record(index);
    return system.epsg == CoordSystemTypes::EPSG_UNDEFINDED ? system.id : QString::number(system.epsg);
}

QVariant CoordSystemCatalogModel::headerData(int section, Qt::Orientation orientation, int role) const
{
    if (orientation != Qt::Horizontal || role != Qt::DisplayRole)
        return {};
    return section == NameColumn   ? ModelTexts::tr("Название")
           : section == CodeColumn ? ModelTexts::tr("Код")
                                   : QVariant();
}

Qt::ItemFlags CoordSystemCatalogModel::flags(const QModelIndex &index) const
{
    if (!index.isValid())
        return Qt::NoItemFlags;
    const Qt::ItemFlags flags = Qt::ItemIsEnabled | Qt::ItemIsSelectable;
    return isSystem(index) ? flags | Qt::ItemNeverHasChildren : flags;
}

QModelIndex CoordSystemCatalogModel::catalogueIndex(int category, int entry) const
{
    return index(entry, NameColumn, index(category, NameColumn, sectionIndex(MapinfoCatalogue)));
}

QModelIndex CoordSystemCatalogModel::indexOfCode(int epsg) const
{
    const auto same = [epsg](const auto &system) { return system.epsg() == epsg; };
    for (int category = 0; category < d->m_categories.size() && epsg > 0; ++category) {
        const QList<CoordSystemParams> &entries = d->m_categories.at(category).entries;
        const auto found = std::find_if(entries.begin(), entries.end(), same);
        if (found != entries.end())
            return catalogueIndex(category, static_cast<int>(found - entries.begin()));
    }
    const std::optional<CatalogIndex::Row> rest =
        d->m_index ? d->m_index->uncatalogued(epsgTag(epsg)) : std::nullopt;
    return rest ? d->systemIndex(EpsgDatabase, rest->country, rest->row) : QModelIndex();
}

/// The user's own system, by its text, else by what it is.
QModelIndex CoordSystemCatalogModelPrivate::ownIndexOf(const CoordSystem &cs) const
{
    const CoordSystemTypes::SourceData source = cs.sourceParameters();
    const CoordSystemPtr equal = m_factory->userCoordSystem()->storedEqual(cs);
    for (int branch = 0; branch < m_branches.size(); ++branch) {
        const QList<UserCoordSystem::CoordSystemParam> &entries = m_branches.at(branch).entries;
        for (int row = 0; row < entries.size(); ++row) {
            const bool isText = !cs.affineTransform() && entries.at(row).source() == source;
            if (isText || (equal && entries.at(row).storedSystem() == equal))
                return systemIndex(Model::OwnSystems, branch, row);
        }
    }
    return {};
}

QModelIndex CoordSystemCatalogModel::indexOfSystem(const CoordSystem &cs) const
{
    const bool isPlain = !cs.affineTransform();
    if (isPlain && cs.sourceType() == CoordSystemTypes::Epsg)
        if (const QModelIndex row = indexOfCode(cs.epsg()); row.isValid())
            return row;
    if (const QModelIndex own = d->ownIndexOf(cs); own.isValid())
        return own;
    const MapinfoCoordSystem::Position position = d->m_factory->mapinfoCoordSystem()->seekProj(cs, true);
    if (position != MapinfoCoordSystem::PairNone)
        return catalogueIndex(position.first, position.second);
    const QString id = isPlain && d->m_index && cs.epsg() <= 0 ? systemInfo(cs).identifier : QString();
    if (const auto other = d->m_index ? d->m_index->uncatalogued(id) : std::nullopt)
        return d->systemIndex(EpsgDatabase, other->country, other->row);
    return indexOfCode(isPlain ? cs.epsg() : cs.baseCode());
}

CoordSystemPtr CoordSystemCatalogModel::create(const QModelIndex &index) const
{
    if (!isSystem(index))
        throw std::invalid_argument("index");
    const CoordSystemCatalogModelPrivate::Record system = d->record(index);
    const CoordSystemPtr cs = made(*d->m_factory, d->taggedText(index));
    if (!system.name.isEmpty())
        cs->setDescription(system.name);
    return cs;
}

} // namespace nivora::cs
