#include "PlaceNames_p.h"

#include "GeographicExtent_p.h"
#include "SearchQuery_p.h"
#include "SearchWords_p.h"
#include "SystemIndex_p.h"

#include <algorithm>
#include <cmath>

namespace nivora::cs {
namespace {

QRectF pointArea(const QPointF &lonLat) { return {lonLat, QSizeF(0.0, 0.0)}; }

struct Typed
{
    bool isPair = false;
    std::optional<QRectF> place; ///< none for a pair that is nowhere on the earth
};

/// "37.6, 55.7"
Typed typedPlace(const QString &text)
{
    const QStringList parts = text.split(QLatin1Char(','));
    bool isLon = false;
    bool isLat = false;
    const double lon = parts.value(0).trimmed().toDouble(&isLon);
    const double lat = parts.value(1).trimmed().toDouble(&isLat);
    if (parts.size() != 2 || !isLon || !isLat)
        return {};
    const bool isOnEarth = std::fabs(lon) <= 360.0 && std::fabs(lat) <= 90.0;
    return {true, isOnEarth ? std::make_optional(pointArea({lon, lat})) : std::nullopt};
}

std::vector<QPointF> townsOf(const SearchLexicon &lexicon, int country)
{
    std::vector<QPointF> towns;
    for (const SearchTown &town : lexicon.towns())
        if (town.country == country)
            towns.push_back(town.lonLat);
    return towns;
}

QRectF around(const std::vector<QPointF> &towns)
{
    constexpr double marginDeg = 1.5;
    QPointF low = towns.front();
    QPointF high = low;
    for (const QPointF &town : towns) {
        const double x = towns.front().x() + std::remainder(town.x() - towns.front().x(), 360.0);
        low = {std::min(low.x(), x), std::min(low.y(), town.y())};
        high = {std::max(high.x(), x), std::max(high.y(), town.y())};
    }
    return QRectF(low, high).adjusted(-marginDeg, -marginDeg, marginDeg, marginDeg);
}

/// Of its system in force with the smallest area that holds all of its towns. When that is far larger than
/// the towns need, as that of a continent's system, around the towns.
std::optional<QRectF> areaOfCountry(int country, const SearchLexicon &lexicon, const SystemIndex &index)
{
    constexpr double farLarger = 3.0;
    const std::vector<QPointF> towns = townsOf(lexicon, country);
    const std::optional<QRectF> townArea = towns.empty() ? std::nullopt : std::make_optional(around(towns));
    std::optional<QRectF> smallest;
    for (const QString &code : lexicon.countries()[static_cast<std::size_t>(country)].codes) {
        const int number = index.withCode(code);
        const QRectF area = number < 0 ? QRectF() : index.systems()[static_cast<std::size_t>(number)].extent;
        const bool holdsAll =
            !area.isNull() && std::all_of(towns.begin(), towns.end(),
                                          [&](const auto &town) { return areaHolds(area, pointArea(town)); });
        if (holdsAll && (!smallest || shareOfEarth(area) < shareOfEarth(*smallest)))
            smallest = area;
    }
    const bool isLarge =
        smallest && townArea && shareOfEarth(*smallest) > farLarger * shareOfEarth(*townArea);
    return smallest && !isLarge ? smallest : townArea;
}

/// The area of use with all of the words and the fewest others.
std::optional<NamedPlace> regionNamed(const std::vector<std::string> &words, const SystemIndex &index)
{
    std::vector<int> wanted;
    wanted.reserve(words.size());
    for (const std::string &word : words)
        wanted.push_back(index.numberOf(word));
    const IndexedSystem *best = nullptr;
    std::size_t fewest = 0;
    for (const IndexedSystem &system : index.systems()) {
        if (system.area < 0 || system.extent.isNull())
            continue;
        const std::vector<int> &area = index.areaWords()[static_cast<std::size_t>(system.area)];
        const bool hasAll = std::all_of(wanted.begin(), wanted.end(), [&area](int word) {
            return word >= 0 && std::find(area.begin(), area.end(), word) != area.end();
        });
        if (hasAll && (!best || area.size() < fewest)) {
            best = &system;
            fewest = area.size();
        }
    }
    return best ? std::make_optional(NamedPlace{best->extent, -1, std::move(wanted)}) : std::nullopt;
}

std::optional<NamedPlace> countryPlace(int country, const SearchLexicon &lexicon, const SystemIndex &index)
{
    const std::optional<QRectF> area = areaOfCountry(country, lexicon, index);
    return area ? std::make_optional(NamedPlace{*area, country, {}}) : std::nullopt;
}

NamedPlace pointPlace(const QPointF &lonLat) { return {pointArea(lonLat), -1, {}}; }

} // namespace

std::optional<NamedPlace> namedPlace(const QString &text, const SearchLexicon &lexicon,
                                     const SystemIndex &index)
{
    if (const Typed typed = typedPlace(text); typed.isPair)
        return typed.place ? std::make_optional(NamedPlace{*typed.place, -1, {}}) : std::nullopt;
    const std::vector<std::string> words = wordsOf(text);
    if (words.empty())
        return std::nullopt;
    if (const int country = lexicon.countryNamed(text); country >= 0)
        return countryPlace(country, lexicon, index);
    const auto towns = lexicon.townsIn(words);
    if (!towns.empty() && towns.front().count == words.size())
        return pointPlace(lexicon.towns()[static_cast<std::size_t>(towns.front().index)].lonLat);
    if (std::optional<NamedPlace> region = regionNamed(words, index))
        return region;
    const SearchQuery meant = readQuery(text, lexicon, index); // with a slip, or as "Vladimir, Russia"
    if (!meant.words.empty() || !meant.numbers.isEmpty() || meant.zone)
        return std::nullopt;
    if (meant.place)
        return pointPlace(*meant.place);
    return meant.country < 0 ? std::nullopt : countryPlace(meant.country, lexicon, index);
}

} // namespace nivora::cs
