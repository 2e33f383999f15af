#include <coordsys/MapinfoSearch.h>

#include "MapinfoSearchData_p.h"
#include "SearchWords_p.h"
#include "SystemRanking_p.h"
#include <coordsys/MapinfoCoordSystem.h>

#include <cmath>

namespace nivora::cs {

MapinfoSearch::MapinfoSearch(const MapinfoCoordSystem &catalogue)
    : m_data(std::make_unique<Data>(catalogue))
{}

MapinfoSearch::MapinfoSearch(std::unique_ptr<Data> data)
    : m_data(std::move(data))
{}

MapinfoSearch::~MapinfoSearch() = default;

void MapinfoSearch::addNames(const MapinfoCoordSystem &otherLanguage)
{
    m_data->systems.addNames(otherLanguage);
}

int MapinfoSearch::loadPlaces(const QFileInfo &file) { return m_data->lexicon.loadTowns(file); }

int MapinfoSearch::loadAliases(const QFileInfo &file) { return m_data->lexicon.loadAliases(file); }

int MapinfoSearch::loadCountries(const QFileInfo &file) { return m_data->lexicon.loadCountries(file); }

void MapinfoSearch::loadTables(const QDir &resources)
{
    loadCountries(QFileInfo(resources, QStringLiteral("countries.tsv")));
    loadPlaces(QFileInfo(resources, QStringLiteral("places.tsv")));
    loadAliases(QFileInfo(resources, QStringLiteral("aliases.tsv")));
}

QVector<MapinfoSearch::Hit> MapinfoSearch::find(const QString &text, int limit) const
{
    return answer(text, std::nullopt, limit).hits;
}

MapinfoSearch::Answer MapinfoSearch::answer(const QString &text, const std::optional<QPointF> &lonLat,
                                            int limit) const
{
    Answer answer;
    const SystemIndex &index = m_data->index();
    SearchQuery query = readQuery(text, m_data->lexicon, index);
    if (lonLat) {
        query.place = lonLat;
        query.placeCountry = query.country >= 0 ? query.country : m_data->lexicon.countryAt(*lonLat);
    }
    const SystemIndex &ranking = query.place ? m_data->indexWithPlaces() : index;
    const bool isPlace = !lonLat || std::isfinite(lonLat->x() + lonLat->y());
    if (query.isEmpty() || query.isUnpublished || limit < 1 || !isPlace)
        return answer;
    const RankedSystems ranked = rank(ranking, m_data->systemsByWord(), m_data->lexicon, query);
    for (const int system : ranked.systems) {
        if (answer.hits.size() >= limit)
            break;
        answer.hits << index.systems()[static_cast<std::size_t>(system)].hit;
    }
    answer.without = ranked.without;
    return answer;
}

QString MapinfoSearch::remark(const QString &text, const QString &language) const
{
    return m_data->lexicon.remark(wordsOf(text), language);
}

bool MapinfoSearch::isWithdrawn(const QString &code) const
{
    const SystemIndex &index = m_data->index();
    const int system = index.withCode(code);
    return system >= 0 && index.systems()[static_cast<std::size_t>(system)].hit.isWithdrawn;
}

QVector<MapinfoSearch::Hit> MapinfoSearch::at(const QPointF &lonLat, int limit) const
{
    return answer({}, lonLat, limit).hits;
}

} // namespace nivora::cs
