#include "SystemRanking_p.h"

#include "GeographicExtent_p.h"
#include "WordLikeness_p.h"

#include <QHash>

#include <algorithm>
#include <cmath>
#include <optional>

namespace nivora::cs {
namespace {

constexpr float asStrong = 2.0F; ///< a hit in a name
constexpr float asZone = 3.0F;   ///< a number that is a zone's

// Points for what is understood of a query; a rare word in a name is worth some eight.
constexpr double rightZone = 6.0;
constexpr double noZone = -3.0;
constexpr double otherZone = -5.0;
constexpr double inForce = 10.0;
constexpr double inForceStep = 0.45;
constexpr double ofFamilyInForce = 8.5;
constexpr double ofCountry = 3.5;
constexpr double missingWord = 2.2;
constexpr double degreesOfCountry = 2.0; ///< who names a country and its datum has data in metres mostly

struct Scored
{
    int system;
    int missing; ///< things asked for that it does not have
    double score;
};

class Ranking
{
public:
    Ranking(const SystemIndex &index, const SystemsByWord &byWord, const SearchLexicon &lexicon,
            const SearchQuery &query)
        : m_index(index)
        , m_byWord(byWord)
        , m_lexicon(lexicon)
        , m_query(query)
        , m_points(index.systems().size(), 0.0)
        , m_found(index.systems().size(), 0)
        , m_force(forceIn(query.country))
        , m_placeForce(forceIn(query.placeCountry))
        , m_countryNames(countryNames())
        , m_countryAreas(countryAreas())
    {}

    RankedSystems ranked()
    {
        addWords();
        if (!m_query.numbers.isEmpty())
            addCodes();
        addNicknames();
        noteNames();
        std::vector<Scored> scored;
        for (std::size_t i = 0; i < m_points.size(); ++i)
            if (const Scored one = score(static_cast<int>(i)); one.score > leastScore)
                scored.push_back(one);
        return {best(scored), m_without};
    }

private:
    static constexpr double leastScore = -1e9;

    /// Of a country: the place of each system in its list, and that of families.
    struct Force
    {
        QHash<int, int> systems;
        QHash<int, int> families;
    };

    const IndexedSystem &at(int system) const { return m_index.systems()[static_cast<std::size_t>(system)]; }

    Force forceIn(int country) const
    {
        Force force;
        if (country < 0)
            return force;
        const QStringList &codes = m_lexicon.countries()[static_cast<std::size_t>(country)].codes;
        for (int rank = 0; rank < codes.size(); ++rank) {
            const int system = m_index.withCode(codes.at(rank));
            if (system < 0)
                continue;
            force.systems.insert(system, rank);
            const int family = at(system).family;
            if (family >= 0 && !force.families.contains(family))
                force.families.insert(family, rank);
        }
        return force;
    }

    void addWords()
    {
        for (const std::string &word : m_query.words) {
            const WordLikeness likeness(word, m_index.words());
            if (!likeness.isKnown()) {
                const QString text = QString::fromStdString(word);
                if (!m_query.numbers.contains(text) && !isOfNickname())
                    m_without << text;
                continue;
            }
            addWord(likeness, word, zoneNumber(word));
            ++m_words;
        }
    }

    bool isOfNickname() const
    {
        return std::any_of(m_query.nicknames.begin(), m_query.nicknames.end(),
                           [](const auto &n) { return n.isAll; });
    }

    /// \p zone: a number may be that of a zone, also where it stands alone ("plane rectangular 12").
    void addWord(const WordLikeness &likeness, const std::string &word, std::optional<int> zone)
    {
        std::vector<float> values = m_byWord.worth(likeness);
        addSystemsOfCountriesBegun(likeness, word, values);
        int strong = 0;
        for (std::size_t i = 0; i < values.size(); ++i) {
            if (zone && m_index.systems()[i].zone.number == zone)
                values[i] = asZone;
            strong += values[i] >= asStrong;
        }
        const double weight = weightOf(strong);
        for (std::size_t i = 0; i < values.size(); ++i)
            if (values[i] > 0.0F) {
                m_points[i] += (values[i] + missingWord) * weight;
                ++m_found[i];
            }
    }

    /// "swis" on the way to "Swiss": the country's first systems.
    void addSystemsOfCountriesBegun(const WordLikeness &likeness, const std::string &word,
                                    std::vector<float> &values) const
    {
        constexpr std::size_t leastBytes = 4;
        constexpr float worth[] = {3.0F, 2.6F, 2.3F};
        if (likeness.isWhole() || word.size() < leastBytes)
            return;
        for (const int country : m_lexicon.countriesBeginning(word)) {
            const QStringList &codes = m_lexicon.countries()[static_cast<std::size_t>(country)].codes;
            const int count = std::min(static_cast<int>(codes.size()), static_cast<int>(std::size(worth)));
            for (int rank = 0; rank < count; ++rank)
                if (const int system = m_index.withCode(codes.at(rank)); system >= 0) {
                    float &value = values[static_cast<std::size_t>(system)];
                    value = std::max(value, worth[rank]);
                }
        }
    }

    /// Rare words tell more.
    double weightOf(int systems) const
    {
        const double share = static_cast<double>(m_index.systems().size()) / std::max(1, systems);
        return std::clamp(std::log10(share) / 2.0, 0.35, 1.6);
    }

    /// Numbers that are codes; "1942" is none.
    void addCodes()
    {
        for (const IndexedSystem &system : m_index.systems()) {
            const QString number = system.hit.code.section(QLatin1Char(':'), -1);
            if (m_query.numbers.contains(number) && !m_codes.contains(number))
                m_codes << number;
        }
    }

    void addNicknames()
    {
        constexpr double all = 12.0;
        constexpr double part = 7.0;
        constexpr double step = 0.8;
        for (const SearchQuery::Nickname &name : m_query.nicknames)
            for (int i = 0; i < name.codes.size(); ++i) {
                const int system = m_index.withCode(name.codes.at(i));
                if (system < 0)
                    continue;
                const double points =
                    (name.isAll ? all : part) - step * i + 0.3 * static_cast<double>(name.words.size());
                Nicknamed &known = m_nicknamed[system];
                if (points > known.points)
                    known = {points, static_cast<int>(name.words.size()), lacksNumber(at(system), name)};
            }
    }

    /// "PZ-90.11" is not what "PZ-90" is, nor a zone the system without zones.
    bool lacksNumber(const IndexedSystem &system, const SearchQuery::Nickname &name) const
    {
        const auto isLacking = [&](const std::string &word) {
            return zoneNumber(word) && word.find_first_not_of("0123456789") == std::string::npos &&
                   std::find(name.words.begin(), name.words.end(), word) == name.words.end() &&
                   std::find(system.name.begin(), system.name.end(), m_index.numberOf(word)) ==
                       system.name.end();
        };
        return (m_query.zone && system.zone.number != m_query.zone) ||
               std::any_of(m_query.words.begin(), m_query.words.end(), isLacking);
    }

    /// The words of a query for what a name has more of.
    void noteNames()
    {
        m_asked.assign(m_index.words().size(), false);
        for (std::size_t i = 0; i < m_asked.size(); ++i)
            m_asked[i] = isAsked(m_index.words()[i]);
    }

    bool isAsked(const std::string &known) const
    {
        constexpr std::size_t leastBeginning = 3;
        static const char *const ofZones[] = {"zone", "n", "s", "gauss", "kruger"};
        const auto is = [&known](const std::string &word) {
            return known == word ||
                   (word.size() >= leastBeginning && known.compare(0, word.size(), word) == 0);
        };
        return std::any_of(m_query.allWords.begin(), m_query.allWords.end(), is) ||
               std::any_of(m_query.words.begin(), m_query.words.end(), is) ||
               (m_query.zone &&
                std::find(std::begin(ofZones), std::end(ofZones), known) != std::end(ofZones));
    }

    Scored score(int number) const
    {
        const IndexedSystem &system = at(number);
        const auto i = static_cast<std::size_t>(number);
        Scored result{number, m_words - m_found[i], m_points[i] + system.standing};
        bool isAny = m_found[i] > 0;
        addField(result, isAny, zonePoints(system));
        addField(result, isAny, meridianPoints(system));
        addField(result, isAny, countryPoints(number, system));
        if (m_query.country >= 0 && system.isGeographic && !m_query.words.empty())
            result.score -= degreesOfCountry;
        addField(result, isAny, placePoints(number, system));
        addField(result, isAny, codePoints(system));
        if (const auto nickname = m_nicknamed.constFind(number); nickname != m_nicknamed.constEnd()) {
            const bool fits = nickname->points >= 12.0
                                  ? !m_query.zone
                                  : result.missing <= nickname->words && !nickname->lacksNumber;
            result.score += fits ? nickname->points : 2.0;
            result.missing = fits ? 0 : result.missing;
            isAny = true;
        }
        const bool isUnitAll = m_query.unit == AskedUnit::Feet && m_query.words.empty();
        if (!isAny && !(isUnitAll && system.isInFeet))
            return {number, 0, leastScore};
        constexpr double lack = 1.5;
        result.score += plainPoints(system) + namePoints(system) - lack * result.missing;
        return result;
    }

    struct Nicknamed
    {
        double points = 0.0;
        int words = 0; ///< of the query, that the system's name need not have
        bool lacksNumber = false;
    };

    struct Points
    {
        double points = 0.0;
        bool isHit = false;
        bool isMissing = false;
    };
    static void addField(Scored &scored, bool &isAny, const Points &points)
    {
        scored.score += points.points;
        scored.missing += points.isMissing;
        isAny = isAny || points.isHit;
    }

    Points zonePoints(const IndexedSystem &system) const
    {
        const ZoneInName &zone = system.zone;
        if (!m_query.zone)
            return {zone.number || zone.meridian ? -0.5 : 0.0};
        if (!zone.number)
            return {noZone, false, true};
        if (*zone.number != *m_query.zone)
            return {otherZone, false, true};
        if (m_query.hemisphere == 0)
            return {zone.hemisphere == 's' ? rightZone - 0.7 : rightZone, true};
        if (zone.hemisphere != m_query.hemisphere)
            return {zone.hemisphere == 0 ? 2.0 : -3.0, false, zone.hemisphere != 0};
        return {rightZone, true};
    }

    /// A zone of six degrees has its meridian from its number.
    Points meridianPoints(const IndexedSystem &system) const
    {
        if (!m_query.meridian)
            return {};
        if (system.zone.meridian == m_query.meridian)
            return {rightZone, true};
        const bool isSixDegree = system.zone.number && *system.zone.number * 6 - 3 == *m_query.meridian &&
                                 system.hit.name.contains(QLatin1String("Kruger"));
        return isSixDegree ? Points{rightZone - 1.0, true} : Points{noZone, false, true};
    }

    Points countryPoints(int number, const IndexedSystem &system) const
    {
        if (m_query.country < 0)
            return {};
        if (const auto rank = m_force.systems.constFind(number); rank != m_force.systems.constEnd())
            return {inForce - inForceStep * std::min(*rank, 8) +
                        (m_query.isNational && *rank == 0 ? 4.0 : 0.0),
                    true};
        const auto family = m_force.families.constFind(system.family);
        if (m_query.zone && system.family >= 0 && family != m_force.families.constEnd())
            return {ofFamilyInForce - 0.2 * std::min(*family, 8), true};
        const bool isNamed = holdsCountry(system.name) ||
                             (system.area >= 0 && m_countryAreas[static_cast<std::size_t>(system.area)]);
        return isNamed ? Points{ofCountry, true} : Points{0.0, false, true};
    }

    /// Any name of the country that was asked for, as the database spells it.
    bool holdsCountry(const std::vector<int> &words) const
    {
        return std::any_of(m_countryNames.begin(), m_countryNames.end(), [&](const std::vector<int> &name) {
            return std::all_of(name.begin(), name.end(), [&](int part) {
                return std::find(words.begin(), words.end(), part) != words.end();
            });
        });
    }

    /// Of each area whether its name has that country; none without a country.
    std::vector<bool> countryAreas() const
    {
        std::vector<bool> areas;
        if (m_query.country >= 0)
            for (const std::vector<int> &area : m_index.areaWords())
                areas.push_back(holdsCountry(area));
        return areas;
    }

    /// As numbers of words; names with a word that no system has are left out.
    std::vector<std::vector<int>> countryNames() const
    {
        std::vector<std::vector<int>> names;
        if (m_query.country < 0)
            return names;
        for (const auto &name : m_lexicon.countries()[static_cast<std::size_t>(m_query.country)].names) {
            std::vector<int> numbers;
            numbers.reserve(name.size());
            for (const std::string &part : name)
                numbers.push_back(m_index.numberOf(part));
            if (std::find(numbers.begin(), numbers.end(), -1) == numbers.end())
                names.push_back(std::move(numbers));
        }
        return names;
    }

    Points placePoints(int number, const IndexedSystem &system) const
    {
        if (!m_query.place)
            return {};
        const std::optional<int> rank = rankAtPlace(number, system);
        if (!areaHolds(system.extent, QRectF(*m_query.place, QSizeF(0.0, 0.0)))) {
            // The zone beside the place's own is what was asked for.
            const bool isAsked = rank && m_query.zone && system.zone.number == m_query.zone;
            return isAsked ? Points{-0.5 - rankStep * *rank, true} : Points{-7.0, false, true};
        }
        double points = 3.0 - 0.8 * std::log10(system.share * 1e4 + 1.0) - (system.isGeographic ? 1.5 : 0.0);
        constexpr double largeCountry =
            0.009; // one system for all of it serves no town; half a UTM zone does
        if (rank)
            points += (system.share > largeCountry ? 0.5 : 3.5) - rankStep * *rank;
        if (system.hit.name.startsWith(QLatin1String("WGS 84 / UTM")))
            points += 1.8;
        return {points, true};
    }

    /// Among the systems in force in the place's country, itself or its family; at most 8.
    std::optional<int> rankAtPlace(int number, const IndexedSystem &system) const
    {
        constexpr int last = 8;
        if (const auto rank = m_placeForce.systems.constFind(number); rank != m_placeForce.systems.constEnd())
            return std::min(*rank, last);
        const auto rank = m_placeForce.families.constFind(system.family);
        if (system.family < 0 || rank == m_placeForce.families.constEnd())
            return std::nullopt;
        return std::min(*rank, last);
    }
    static constexpr double rankStep = 0.15;

    Points codePoints(const IndexedSystem &system) const
    {
        for (const QString &number : m_codes)
            if (system.hit.code.section(QLatin1Char(':'), -1) == number)
                return {m_query.words.size() == 1 && m_query.country < 0 ? 14.0 : 6.0, true};
        return {0.0, false, !m_codes.isEmpty()};
    }

    /// What people mean when they do not say it.
    double plainPoints(const IndexedSystem &system) const
    {
        double points = 0.0;
        if (m_query.unit == AskedUnit::Feet)
            points += system.isInFeet ? 2.0 : -2.0;
        if (m_query.unit == AskedUnit::Metres)
            points += system.isInFeet ? -1.5 : 0.5;
        if (!m_query.authorities.isEmpty())
            points +=
                m_query.authorities.contains(system.hit.code.section(QLatin1Char(':'), 0, 0)) ? 2.5 : -4.0;
        const bool isZoneAll = m_query.zone && m_query.words.empty();
        if ((m_query.isUtm || isZoneAll) && m_query.country < 0 &&
            system.hit.name.startsWith(QLatin1String("WGS 84 / UTM")))
            points += 1.5;
        if (m_query.zone && system.hit.code.startsWith(QLatin1String("EPSG:284")))
            points += 1.2; // Pulkovo 1942, zones of six degrees
        if (m_query.isThreeDegree)
            points += isThreeDegree(system) ? 3.0 : -1.0;
        return points;
    }

    static bool isThreeDegree(const IndexedSystem &system)
    {
        for (const char *mark : {"3-degree", "TM-3", "3GK", "3-градус"})
            if (system.hit.name.contains(QString::fromUtf8(mark)))
                return true;
        return false;
    }

    /// Names that say no more than was asked.
    double namePoints(const IndexedSystem &system) const
    {
        int unasked = unaskedIn(system.name);
        for (const std::vector<int> &other : system.others)
            unasked = std::min(unasked, unaskedIn(other));
        const bool isElsewhere = m_query.country >= 0 || m_query.place;
        double points = (isElsewhere ? -0.05 : -0.18) * unasked;
        if (unasked == 0)
            points += 1.5;
        if (system.hit.name.toCaseFolded() == m_query.text)
            points += 6.0;
        return points;
    }

    int unaskedIn(const std::vector<int> &words) const
    {
        return static_cast<int>(std::count_if(words.begin(), words.end(), [this](int word) {
            return !m_asked[static_cast<std::size_t>(word)];
        }));
    }

    /// Systems that lack more of the query than others do are left out, unless they stand close.
    static std::vector<int> best(std::vector<Scored> &scored)
    {
        constexpr double close = 3.0;
        std::vector<int> systems;
        if (scored.empty())
            return systems;
        std::stable_sort(scored.begin(), scored.end(),
                         [](const Scored &a, const Scored &b) { return a.score > b.score; });
        int least = scored.front().missing;
        for (const Scored &one : scored)
            least = std::min(least, one.missing);
        const double near = scored.front().score - close;
        for (const Scored &one : scored)
            if (one.missing == least || one.score >= near)
                systems.push_back(one.system);
        return systems;
    }

    const SystemIndex &m_index;
    const SystemsByWord &m_byWord;
    const SearchLexicon &m_lexicon;
    const SearchQuery &m_query;
    std::vector<double> m_points;
    std::vector<int> m_found; ///< words of the query, of each system
    int m_words = 0;          ///< of the query that some system has
    std::vector<bool> m_asked;
    QHash<int, Nicknamed> m_nicknamed;
    Force m_force;
    Force m_placeForce;
    std::vector<std::vector<int>> m_countryNames; ///< of the country asked for
    std::vector<bool> m_countryAreas;             ///< by number
    QStringList m_codes;                          ///< numbers of the query that are codes
    QStringList m_without;
};

} // namespace

RankedSystems rank(const SystemIndex &index, const SystemsByWord &byWord, const SearchLexicon &lexicon,
                   const SearchQuery &query)
{
    return Ranking(index, byWord, lexicon, query).ranked();
}

} // namespace nivora::cs
