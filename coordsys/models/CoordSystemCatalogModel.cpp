#include "CoordSystemCatalogModel_p.h"

#include "ModelTexts_p.h"
#include "ProjectionTable_p.h"
#include <coordsys/CoordSysFactory.h>
#include <coordsys/CoordSystem.h>
#include <coordsys/MapinfoCoordSystem.h>
#include <coordsys/SourceTags.h>
#include <coordsys/SystemInfo.h>
#include <platform/Logger.h>

#include <QFutureWatcher>
#include <QThreadPool>
#include <QtConcurrent>

#include <algorithm>
#include <stdexcept>

namespace nivora::cs {
namespace {

// What a row is lies in its internal id: 0 for a section, 1 + section for a group, and for a system
// SectionCount + 1 + section + SectionCount * group. Nothing is kept per row.
constexpr quintptr groupBase = 1;
constexpr quintptr systemBase = groupBase + CoordSystemCatalogModel::SectionCount;

enum class Level { Root, Section, Group, System };

Level levelOf(const QModelIndex &index)
{
    if (!index.isValid())
        return Level::Root;
    const quintptr id = index.internalId();
    return id == 0 ? Level::Section : id < systemBase ? Level::Group : Level::System;
}

/// Meaningless for the root.
CoordSystemCatalogModel::Section sectionOf(const QModelIndex &index)
{
    const quintptr id = index.internalId();
    const quintptr section = id == 0           ? static_cast<quintptr>(index.row())
                             : id < systemBase ? id - groupBase
                                               : (id - systemBase) % CoordSystemCatalogModel::SectionCount;
    return static_cast<CoordSystemCatalogModel::Section>(section);
}

int groupOf(const QModelIndex &system)
{
    return static_cast<int>((system.internalId() - systemBase) / CoordSystemCatalogModel::SectionCount);
}

/// Recently used systems lie in their section without groups between.
bool isFlat(CoordSystemCatalogModel::Section section)
{
    return section == CoordSystemCatalogModel::RecentSystems;
}

CoordSystemCatalogModel::Kind kindOfParams(const QStringList &params)
{
    using Kind = CoordSystemCatalogModel::Kind;
    const int projection = params.value(0).toInt() % 1000; // thousands announce clauses
    return projection == NonEarthPlan        ? Kind::NonEarth
           : projection == LongitudeLatitude ? Kind::Geographic
                                             : Kind::Projected;
}

QString epsgTag(int code) { return QStringLiteral("EPSG:%1").arg(code); }

/// "ESRI:54030", which no tagged string can be.
bool isOtherCode(const QString &text)
{
    for (const char *authority : {"ESRI:", "IGNF:", "OGC:", "IAU_2015:"})
        if (text.startsWith(QLatin1String(authority)))
            return true;
    return false;
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

int CoordSystemCatalogModelPrivate::groupCount(Section section) const
{
    switch (section) {
    case Model::OwnSystems:
        return m_branches.size();
    case Model::MapinfoCatalogue:
        return m_categories.size();
    case Model::EpsgDatabase:
        return m_index ? m_index->countries().size() : 0;
    default:
        return 0;
    }
}

int CoordSystemCatalogModelPrivate::systemCount(Section section, int group) const
{
    switch (section) {
    case Model::OwnSystems:
        return m_branches.at(group).entries.size();
    case Model::RecentSystems:
        return m_recent.size();
    case Model::MapinfoCatalogue:
        return m_categories.at(group).entries.size();
    default:
        return m_index->countries().at(group).systems.size();
    }
}

QString CoordSystemCatalogModelPrivate::groupName(Section section, int group) const
{
    switch (section) {
    case Model::OwnSystems:
        return m_branches.at(group).name;
    case Model::MapinfoCatalogue:
        return m_categories.at(group).name;
    case Model::EpsgDatabase:
        return m_index->countries().at(group).name;
    default:
        return {};
    }
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

const CoordSystemParams &CoordSystemCatalogModelPrivate::catalogueEntry(const QModelIndex &index) const
{
    return m_categories.at(groupOf(index)).entries.at(index.row());
}

const UserCoordSystem::CoordSystemParam &
CoordSystemCatalogModelPrivate::ownEntry(const QModelIndex &index) const
{
    return m_branches.at(groupOf(index)).entries.at(index.row());
}

/// What views ask for all the time; copies nothing.
CoordSystemCatalogModelPrivate::Record CoordSystemCatalogModelPrivate::record(const QModelIndex &index) const
{
    switch (sectionOf(index)) {
    case Model::OwnSystems: {
        const CoordSystemTypes::SourceData &source = ownEntry(index).source();
        const bool isCode = source.type == CoordSystemTypes::Epsg;
        return {ownEntry(index).description(),
                isCode ? source.string.toInt() : CoordSystemTypes::EPSG_UNDEFINDED,
                Model::Kind::Unknown,
                {}};
    }
    case Model::RecentSystems:
        return {m_recent.at(index.row()).name, m_recent.at(index.row()).epsg, Model::Kind::Unknown,
                isOtherCode(m_recent.at(index.row()).tagged) ? m_recent.at(index.row()).tagged : QString()};
    case Model::MapinfoCatalogue: {
        const CoordSystemParams &entry = catalogueEntry(index);
        return {entry.name(), entry.epsg(), kindOfParams(entry.params), {}};
    }
    default: {
        const CatalogIndex::System &system = m_index->system(groupOf(index), index.row());
        const bool isEpsg = system.code != CoordSystemTypes::EPSG_UNDEFINDED;
        return {system.name, system.code, system.kind, isEpsg ? QString() : system.id};
    }
    }
}

QString CoordSystemCatalogModelPrivate::prjText(const QModelIndex &index) const
{
    switch (sectionOf(index)) {
    case Model::OwnSystems: {
        const CoordSystemTypes::SourceData &source = ownEntry(index).source();
        return source.type == CoordSystemTypes::Prj ? source.string : QString();
    }
    case Model::RecentSystems:
        return {};
    case Model::MapinfoCatalogue:
        return catalogueEntry(index).asPrjString();
    default:
        return record(index).epsg > 0 ? m_factory->mapinfoCoordSystem()->seekByEPSG(record(index).epsg)
                                      : QString();
    }
}

/// By its code where that makes this very entry: the system then knows its code without a search.
QString CoordSystemCatalogModelPrivate::taggedText(const QModelIndex &index) const
{
    switch (sectionOf(index)) {
    case Model::OwnSystems: {
        const CoordSystemTypes::SourceData &source = ownEntry(index).source();
        return sourceTypeToString(source.type) + QLatin1Char(':') + source.string;
    }
    case Model::RecentSystems:
        return m_recent.at(index.row()).tagged;
    case Model::MapinfoCatalogue: {
        const CoordSystemParams &entry = catalogueEntry(index);
        const auto first = entry.epsg() == CoordSystemTypes::EPSG_UNDEFINDED
                               ? std::nullopt
                               : m_factory->mapinfoCoordSystem()->entryByEpsg(entry.epsg());
        const bool isByCode = first && first->params == entry.params;
        return isByCode ? epsgTag(entry.epsg()) : QStringLiteral("prj:") + entry.asPrjString();
    }
    default:
        return record(index).code();
    }
}

QRectF CoordSystemCatalogModelPrivate::area(int epsg) const
{
    return m_index ? m_index->area(epsg) : QRectF();
}

QString CoordSystemCatalogModelPrivate::nameOf(const QModelIndex &index) const
{
    switch (levelOf(index)) {
    case Level::Section:
        break;
    case Level::Group:
        return groupName(sectionOf(index), index.row());
    default:
        return record(index).name;
    }
    const QString sections[Model::SectionCount] = {ModelTexts::tr("Мои системы"), ModelTexts::tr("Недавние"),
                                                   ModelTexts::tr("Каталог MapInfo"),
                                                   ModelTexts::tr("База PROJ: EPSG и другие")};
    return sections[index.row()];
}

QVariant CoordSystemCatalogModelPrivate::systemData(const QModelIndex &index, int role) const
{
    switch (role) {
    case Model::CodeRole:
        return record(index).epsg;
    case Model::PrjRole:
        return prjText(index);
    case Model::AreaRole:
        return sectionOf(index) == Model::EpsgDatabase ? m_index->system(groupOf(index), index.row()).area
                                                       : area(record(index).epsg);
    case Model::KindRole:
        return static_cast<int>(record(index).kind);
    case Model::TaggedRole:
        return taggedText(index);
    case Model::GroupRole:
        return groupName(sectionOf(index), groupOf(index));
    case Model::WithdrawnRole:
        return m_index && m_index->search().isWithdrawn(record(index).code());
    default:
        return {};
    }
}

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
