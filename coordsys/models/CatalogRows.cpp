#include "CatalogRows_p.h"

#include "CoordSystemCatalogModel_p.h"
#include "ModelTexts_p.h"
#include "ProjectionTable_p.h"
#include <coordsys/CoordSysFactory.h>
#include <coordsys/MapinfoCoordSystem.h>
#include <coordsys/SourceTags.h>

namespace nivora::cs {
namespace {

CoordSystemCatalogModel::Kind kindOfParams(const QStringList &params)
{
    using Kind = CoordSystemCatalogModel::Kind;
    const int projection = params.value(0).toInt() % 1000; // thousands announce clauses
    return projection == NonEarthPlan        ? Kind::NonEarth
           : projection == LongitudeLatitude ? Kind::Geographic
                                             : Kind::Projected;
}

} // namespace

bool isOtherCode(const QString &text)
{
    for (const char *authority : {"ESRI:", "IGNF:", "OGC:", "IAU_2015:"})
        if (text.startsWith(QLatin1String(authority)))
            return true;
    return false;
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

} // namespace nivora::cs
