#include "CatalogIndex_p.h"

#include "GeographicExtent_p.h"
#include <coordsys/MapinfoCoordSystem.h>
#include <coordsys/ProjLibMetadata.h>

#include <QMap>

#include <algorithm>
#include <tuple>

namespace nivora::cs {
namespace {

using Kind = CoordSystemCatalogModel::Kind;

/// "Russian Federation - onshore between 36°E and 42°E" belongs to "Russian Federation".
QString countryOf(const QString &areaName) { return areaName.section(QStringLiteral(" - "), 0, 0).trimmed(); }

CatalogIndex::System systemOf(const ProjLibMetadata::ProjectionInfo &info)
{
    const bool geographic = info.kind == ProjLibMetadata::Kind::Geographic;
    const bool isEpsg = info.id.section(QLatin1Char(':'), 0, 0) == QLatin1String("EPSG");
    return {info.id, info.name,
            isEpsg ? info.id.section(QLatin1Char(':'), 1).toInt() : int(CoordSystemTypes::EPSG_UNDEFINDED),
            geographic ? Kind::Geographic : Kind::Projected, eastward(info.rect)};
}

} // namespace

QString searchText(const QString &text)
{
    QString plain;
    for (const QChar c : text.normalized(QString::NormalizationForm_KD))
        if (!c.isMark())
            plain += c.isLetterOrNumber() ? c : QLatin1Char(' ');
    return plain.simplified().toCaseFolded();
}

bool holdsWords(const QString &searchText, const QStringList &words)
{
    return std::all_of(words.begin(), words.end(),
                       [&](const QString &word) { return searchText.contains(word); });
}

CatalogIndex::CatalogIndex(const CataloguePtr &catalogue, const QDir &resources, const QString &language)
    : m_search(sharedSearch(catalogue, resources, language, {}))
{
    // What it reads on first call is read now, not when somebody types.
    m_search->find(QStringLiteral("utm"), 1);
    readDatabase();
    readOthers();
    noteUncatalogued(*catalogue);
}

std::shared_ptr<const CatalogIndex> CatalogIndex::of(const CataloguePtr &catalogue, const QDir &resources,
                                                     const QString &language)
{
    static auto *const indexes = new PerCatalogue<CatalogIndex>; // a worker may outlive static objects
    return indexes->get(catalogue,
                        [&] { return std::make_shared<CatalogIndex>(catalogue, resources, language); });
}

void CatalogIndex::readDatabase()
{
    const ProjLibMetadata::ProjectionCatalog catalog =
        ProjLibMetadata().listProjections(ProjLibMetadata::EPSG);
    QMap<QString, QVector<System>> countries;
    for (auto area = catalog.begin(); area != catalog.end(); ++area) {
        QVector<System> &systems = countries[countryOf(area.key())];
        for (const ProjLibMetadata::ProjectionInfo &info : area.value()) {
            systems << systemOf(info);
            m_areas.insert(systems.last().code, systems.last().area);
        }
    }
    for (auto country = countries.begin(); country != countries.end(); ++country)
        addGroup(country.key(), country.value());
}

/// Each authority is one group: most of their areas have no name.
void CatalogIndex::readOthers()
{
    for (const char *authority : {"ESRI", "IGNF", "OGC", "IAU_2015"}) {
        QVector<System> systems;
        for (const auto &area : ProjLibMetadata().listProjections(QLatin1String(authority)))
            for (const ProjLibMetadata::ProjectionInfo &info : area)
                systems << systemOf(info);
        if (!systems.isEmpty())
            addGroup(QLatin1String(authority), systems);
    }
}

void CatalogIndex::addGroup(const QString &name, QVector<System> systems)
{
    const auto key = [](const System &system) { return std::tie(system.name, system.code, system.id); };
    std::sort(systems.begin(), systems.end(),
              [&](const System &a, const System &b) { return key(a) < key(b); });
    // The database lists a system once for each of its areas of use.
    systems.erase(std::unique(systems.begin(), systems.end(),
                              [&](const System &a, const System &b) { return key(a) == key(b); }),
                  systems.end());
    m_countries << Country{name, systems};
}

void CatalogIndex::noteUncatalogued(const MapinfoCoordSystem &catalogue)
{
    for (int country = 0; country < m_countries.size(); ++country) {
        const Country &list = m_countries.at(country);
        for (int row = 0; row < list.systems.size(); ++row) {
            const System &system = list.systems.at(row);
            if (system.code == CoordSystemTypes::EPSG_UNDEFINDED || !catalogue.entryByEpsg(system.code))
                m_uncatalogued.insert(system.id, {country, row});
        }
    }
}

} // namespace nivora::cs
