#include "GuessScore_p.h"

#include "GeographicExtent_p.h"

#include <algorithm>
#include <cmath>

namespace nivora::cs {
namespace {

// Fitted to guesses of guess-rates over systems that people search for and, with a fifth of the weight, over
// all: how likely the right entry is made.
constexpr double standingWeight = 1.03;
constexpr double densityWeight = 0.7;
constexpr double earthKm2 = 5.1e8;
constexpr double inForceWorth = 2.6;
constexpr double inForceStep = 0.26;
constexpr double leastInForce = 1.3;
constexpr double ofFamilyInForce = 1.3;
constexpr double ofBaseInForce = 0.8;
constexpr double outsideArea = 3.5; ///< data beside the area: people go on with a system behind its border
constexpr double outsideScaleM = 20e3;
constexpr double ofToday = 0.3;
constexpr double ofZone = 0.2; ///< one of a row of zones
constexpr double ofMeridian =
    -0.6; ///< a zone called by its meridian: its number stands before the easting mostly
constexpr double ofRealization = 0.7; ///< what the search does not mean by a plain name is as often in data
constexpr double shareWeight = 6.0;
constexpr double uncatalogued = 0.5; ///< what the catalogue of everyday systems leaves out is rarer
constexpr double townReachM = 300e3;
constexpr double mostWithoutTown = 3.0;
constexpr double placeReachM = 100e3; ///< nearer than that is nearly as good
constexpr double atPlaceReach = 2.6;  ///< how much less likely there than at the place
constexpr double beyondScaleM = 10e3;
constexpr double mostFromPlace = 60.0;
constexpr double aroundPlaceDeg = 4.0;
constexpr double inOtherCountry = 8.0; ///< data in a neighbour of the country that was named
constexpr double ofRegion = 1.5;       ///< made for the region that was named
/// For the systems that data from everywhere are in: bare degrees are of WGS 84 unless something speaks
/// against it.
constexpr std::pair<const char *, double> everywhere[] = {{"EPSG:4326", 12.0}, {"EPSG:3857", 5.0}};
/// By the beginning of the name: the zones that receivers count in, and those of their predecessor.
constexpr std::pair<const char *, double> families[] = {{"WGS 84 / UTM", 1.5}, {"WGS 72", -1.5}};

} // namespace

double metresFrom(const QRectF &area, const QPointF &place)
{
    const double middle = area.center().x();
    const double x = middle + std::remainder(place.x() - middle, 360.0);
    const QPointF nearest(std::clamp(x, area.left(), area.right()),
                          std::clamp(place.y(), area.top(), area.bottom()));
    return metresBetween(nearest, place);
}

double GuessScore::beforehand(const IndexedSystem &system, const GuessReading &reading) const
{
    double score = standingWeight * system.standing - reading.doubt -
                   densityWeight * std::log(std::max(1.0, system.share * earthKm2));
    score -= system.hit.isInCatalogue() ? 0.0 : uncatalogued;
    score += (system.zone.number ? ofZone : 0.0) + (system.zone.meridian ? ofMeridian : 0.0) +
             (system.isRealization ? ofRealization : 0.0);
    for (const auto &[code, worth] : everywhere)
        score += system.hit.code == QLatin1String(code) ? worth : 0.0;
    for (const auto &[beginning, worth] : families)
        score += system.hit.name.startsWith(QLatin1String(beginning)) ? worth : 0.0;
    return score;
}

double GuessScore::ofDatum(const Ground &ground) { return ground.isGeocentric ? ofToday : 0.0; }

bool GuessScore::isNear(const IndexedSystem &system) const
{
    if (!m_place)
        return true;
    const QPointF middle = m_place->area.center();
    const double widen =
        aroundPlaceDeg / std::max(0.1, std::cos(middle.y() * CoordSystemTypes::DEGREES_TO_RADIANS));
    const QRectF near = m_place->area.adjusted(-widen, -aroundPlaceDeg, widen, aroundPlaceDeg);
    const double between = std::remainder(system.extent.center().x() - middle.x(), 360.0);
    return 2.0 * std::fabs(between) <= near.width() + system.extent.width() &&
           system.extent.top() <= near.bottom() && system.extent.bottom() >= near.top();
}

const GuessScore::Force &GuessScore::force(int country)
{
    const auto known = m_force.find(country);
    if (known != m_force.end())
        return known->second;
    Force &force = m_force[country];
    if (country < 0)
        return force;
    double now = inForceWorth;
    for (const QString &code : m_lexicon.countries()[static_cast<std::size_t>(country)].codes) {
        const int system = m_index.withCode(code);
        const auto row = std::find_if(m_table.systems().begin(), m_table.systems().end(),
                                      [system](const PlaneOfSystem &one) { return one.system == system; });
        if (system < 0 || row == m_table.systems().end())
            continue;
        force.systems.emplace(system, now);
        force.bases.insert(row->base);
        if (const int family = m_index.systems()[static_cast<std::size_t>(system)].family; family >= 0)
            force.families.emplace(std::make_pair(family, row->base),
                                   std::max(ofFamilyInForce, now - inForceStep));
        now = std::max(leastInForce, now - inForceStep);
    }
    return force;
}

double GuessScore::inForce(const PlaneOfSystem &system, int country)
{
    const Force &known = force(country);
    const double base = known.bases.count(system.base) > 0 ? ofBaseInForce : 0.0;
    if (const auto found = known.systems.find(system.system); found != known.systems.end())
        return base + found->second;
    const int family = m_index.systems()[static_cast<std::size_t>(system.system)].family;
    const auto found = known.families.find({family, system.base});
    return base + (found == known.families.end() ? 0.0 : found->second);
}

double GuessScore::inArea(const GuessCandidate &candidate) const
{
    const double held = shareWeight * std::log(std::max(0.01, candidate.share));
    if (!m_place || candidate.share >= 1.0)
        return held;
    const QRectF &area = m_index.systems()[static_cast<std::size_t>(candidate.system->system)].extent;
    return std::max(held, -outsideArea - metresFrom(area, candidate.centre) / outsideScaleM);
}

/// For the place that was named; \p country: where the data would lie.
double GuessScore::atPlace(const GuessCandidate &candidate, int country) const
{
    const double away = metresFrom(m_place->area, candidate.centre);
    const double beyond = std::max(0.0, away - placeReachM) / beyondScaleM;
    const double within = std::min(away, placeReachM) / placeReachM;
    double score = -std::min(mostFromPlace, beyond + atPlaceReach * within * within);
    if (m_place->country >= 0 && country >= 0 && country != m_place->country)
        score -= inOtherCountry;
    const int area = m_index.systems()[static_cast<std::size_t>(candidate.system->system)].area;
    if (!m_place->region.empty() && area >= 0) {
        const std::vector<int> &words = m_index.areaWords()[static_cast<std::size_t>(area)];
        const bool isOfRegion = std::all_of(m_place->region.begin(), m_place->region.end(), [&](int word) {
            return std::find(words.begin(), words.end(), word) != words.end();
        });
        score += isOfRegion ? ofRegion : 0.0;
    }
    return score;
}

double GuessScore::there(const GuessCandidate &candidate)
{
    double score = inArea(candidate);
    const int town = m_lexicon.townNear(candidate.centre);
    const SearchTown *nearest = town < 0 ? nullptr : &m_lexicon.towns()[static_cast<std::size_t>(town)];
    if (nearest) {
        if (!m_place || m_place->area.width() > 0.0)
            score -= std::min(mostWithoutTown, metresBetween(nearest->lonLat, candidate.centre) / townReachM);
        score += inForce(*candidate.system, nearest->country);
    }
    return m_place ? score + atPlace(candidate, nearest ? nearest->country : -1) : score;
}

} // namespace nivora::cs
