#include "GuessScore_p.h"

#include "GeographicExtent_p.h"

#include <algorithm>
#include <cmath>

namespace nivora::cs {
namespace {

// Found by trying, with guess-rates.
constexpr double standingWeight = 0.6;
constexpr double densityWeight = 0.6;
constexpr double earthKm2 = 5.1e8;
constexpr double inForceWorth = 2.5;
constexpr double inForceStep = 0.25;
constexpr double leastInForce = 1.25;
constexpr double ofFamilyInForce = 1.25;
constexpr double ofToday = 0.15;
constexpr double shareWeight = 6.0;
constexpr double uncatalogued = 0.9; ///< what the catalogue of everyday systems leaves out is rarer
constexpr double townReachM = 300e3;
constexpr double mostWithoutTown = 3.0;
constexpr double placeReachM = 100e3; ///< nearer than that is nearly as good
constexpr double atPlaceReach = 2.0;  ///< how much less likely there than at the place
constexpr double beyondScaleM = 10e3;
constexpr double mostFromPlace = 60.0;
constexpr double aroundPlaceDeg = 4.0;
constexpr double inOtherCountry = 8.0; ///< data in a neighbour of the country that was named
constexpr double ofRegion = 1.5;       ///< made for the region that was named
/// For the systems that data from everywhere are in: bare degrees are of WGS 84 unless something speaks
/// against it.
constexpr std::pair<const char *, double> everywhere[] = {{"EPSG:4326", 12.0}, {"EPSG:3857", 5.0}};

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
    for (const auto &[code, worth] : everywhere)
        score += system.hit.code == QLatin1String(code) ? worth : 0.0;
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

const std::map<int, double> &GuessScore::force(int country)
{
    const auto known = m_force.find(country);
    if (known != m_force.end())
        return known->second;
    std::map<int, double> &worth = m_force[country];
    std::map<int, double> &families = m_families[country];
    if (country < 0)
        return worth;
    double now = inForceWorth;
    for (const QString &code : m_lexicon.countries()[static_cast<std::size_t>(country)].codes) {
        const int system = m_index.withCode(code);
        if (system < 0)
            continue;
        worth.emplace(system, now);
        if (const int family = m_index.systems()[static_cast<std::size_t>(system)].family; family >= 0)
            families.emplace(family, std::max(ofFamilyInForce, now - inForceStep));
        now = std::max(leastInForce, now - inForceStep);
    }
    return worth;
}

double GuessScore::inForce(int system, int country)
{
    const std::map<int, double> &worth = force(country);
    if (const auto found = worth.find(system); found != worth.end())
        return found->second;
    const std::map<int, double> &families = m_families[country];
    const auto found = families.find(m_index.systems()[static_cast<std::size_t>(system)].family);
    return found == families.end() ? 0.0 : found->second;
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
    double score = shareWeight * std::log(std::max(0.01, candidate.share));
    const int town = m_lexicon.townNear(candidate.centre);
    const SearchTown *nearest = town < 0 ? nullptr : &m_lexicon.towns()[static_cast<std::size_t>(town)];
    if (nearest) {
        if (!m_place || m_place->area.width() > 0.0)
            score -= std::min(mostWithoutTown, metresBetween(nearest->lonLat, candidate.centre) / townReachM);
        score += inForce(candidate.system->system, nearest->country);
    }
    return m_place ? score + atPlace(candidate, nearest ? nearest->country : -1) : score;
}

} // namespace nivora::cs
