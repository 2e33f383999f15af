#include "SearchQuery_p.h"

#include "SearchSpelling_p.h"
#include "SearchWords_p.h"
#include "SystemIndex_p.h"

#include <algorithm>
#include <iterator>
#include <string_view>
#include <utility>

namespace nivora::cs {
namespace {

using Words = std::vector<std::string>;

constexpr std::pair<std::string_view, const char *> authorityWords[] = {
    {"epsg", "EPSG"}, {"esri", "ESRI"}, {"arcgis", "ESRI"},
    {"ignf", "IGNF"}, {"ogc", "OGC"},   {"iau", "IAU_2015"}};

constexpr std::pair<std::string_view, AskedUnit> unitWords[] = {
    {"ft", AskedUnit::Feet},      {"feet", AskedUnit::Feet},     {"foot", AskedUnit::Feet},
    {"ftus", AskedUnit::Feet},    {"usft", AskedUnit::Feet},     {"футы", AskedUnit::Feet},
    {"футах", AskedUnit::Feet},   {"футов", AskedUnit::Feet},    {"фут", AskedUnit::Feet},
    {"m", AskedUnit::Metres},     {"metre", AskedUnit::Metres},  {"metres", AskedUnit::Metres},
    {"meter", AskedUnit::Metres}, {"meters", AskedUnit::Metres}, {"метры", AskedUnit::Metres},
    {"метрах", AskedUnit::Metres}};

constexpr std::pair<std::string_view, char> hemisphereWords[] = {
    {"n", 'n'},     {"s", 's'},    {"north", 'n'},    {"south", 's'}, {"northern", 'n'}, {"southern", 's'},
    {"с", 'n'},     {"ю", 's'},    {"сев", 'n'},      {"юж", 's'},    {"северная", 'n'}, {"южная", 's'},
    {"север", 'n'}, {"юг", 's'},   {"северное", 'n'}, {"южное", 's'}, {"norte", 'n'},    {"sur", 's'},
    {"sul", 's'},   {"nord", 'n'}, {"sud", 's'}};

/// Beginnings of what is said of a country's own system.
constexpr std::string_view nationalWords[] = {"national",   "nacional",  "nazionale",    "official",
                                              "национальн", "официальн", "государственн"};

/// They say nothing of which system is meant.
constexpr std::string_view fillers[] = {
    "crs", "srs", "coordinate", "coordinates", "system",    "projection", "projected", "the",  "of",   "for",
    "in",  "and", "система",    "системы",     "координат", "проекция",   "для",       "на",   "в",    "и",
    "по",  "с",   "degrees",    "градусы",     "градусах",  "zone",       "зона",      "зоны", "datum"};

template <typename Value, std::size_t Size>
const Value *valueOf(const std::pair<std::string_view, Value> (&table)[Size], const std::string &word)
{
    const auto row =
        std::find_if(std::begin(table), std::end(table), [&](const auto &r) { return r.first == word; });
    return row == std::end(table) ? nullptr : &row->second;
}

bool isNumber(const std::string &word) { return word.find_first_not_of("0123456789") == std::string::npos; }

bool isYear(const std::string &word)
{
    return word.size() == 4 && isNumber(word) && word > "1800" && word < "2030";
}

bool isZoneWord(const std::string &word)
{
    return word == "zone" || word == "зона" || word == "зоны" || word == "belt";
}

/// Words of queries that no system need have.
bool isUnderstood(const std::string &word)
{
    const auto begins = [&word](std::string_view beginning) { return word.rfind(beginning, 0) == 0; };
    return valueOf(authorityWords, word) || valueOf(unitWords, word) || valueOf(hemisphereWords, word) ||
           std::find(std::begin(fillers), std::end(fillers), word) != std::end(fillers) ||
           std::any_of(std::begin(nationalWords), std::end(nationalWords), begins);
}

/// Takes the words one kind after the other; what is left are words to look for.
class QueryReader
{
public:
    QueryReader(const QString &text, const SearchLexicon &lexicon, const SystemIndex &index)
        : m_lexicon(lexicon)
        , m_index(index)
        , m_words(meantWords(wordsOf(text)))
    {
        m_query.text = text.simplified().toCaseFolded();
        m_query.allWords = m_words;
    }

    SearchQuery read()
    {
        takeAuthorities();
        takeNicknames();
        noteKinds();
        takeZone();
        takeUnit();
        takeCountry();
        takePlace();
        takeNational();
        takeNumbers();
        for (const std::string &word : m_words)
            if (std::find(std::begin(fillers), std::end(fillers), word) == std::end(fillers))
                m_query.words.push_back(word);
        if (m_query.words.empty() && !m_isUnderstood) // "zone" alone
            m_query.words = m_words;
        return std::move(m_query);
    }

private:
    Words meantWords(const Words &written) const
    {
        Words meant;
        for (const std::string &word : written)
            if (isUnderstood(word))
                meant.push_back(word);
            else
                for (std::string &one : meantBy(word, m_lexicon, m_index))
                    meant.push_back(std::move(one));
        return meant;
    }

    std::string word(std::size_t at) const { return at < m_words.size() ? m_words[at] : std::string(); }
    std::string before(std::size_t at) const { return at > 0 ? m_words[at - 1] : std::string(); }
    void take(std::size_t first, std::size_t count)
    {
        const auto begin = m_words.begin() + static_cast<std::ptrdiff_t>(first);
        m_words.erase(begin, begin + static_cast<std::ptrdiff_t>(count));
        m_isUnderstood = true;
    }

    void takeAuthorities()
    {
        for (std::size_t i = 0; i < m_words.size() && m_words.size() > 1;) {
            const char *const *authority = valueOf(authorityWords, m_words[i]);
            if (!authority) {
                ++i;
                continue;
            }
            m_query.authorities << QString::fromLatin1(*authority);
            take(i, 1);
            if (word(i) == "2015" && m_query.authorities.last() == QLatin1String("IAU_2015"))
                take(i, 1);
        }
    }

    /// The longest ones; their words are replaced by the catalogue's, or stay where codes are meant, since
    /// the system may have them in its name.
    void takeNicknames()
    {
        std::vector<bool> isTaken(m_words.size());
        Words result;
        const std::vector<FoundPhrase> found = m_lexicon.aliasesIn(m_words);
        std::vector<const SearchAlias *> replaced(m_words.size());
        for (const FoundPhrase &phrase : found) {
            const auto begin = isTaken.begin() + static_cast<std::ptrdiff_t>(phrase.first);
            const auto end = begin + static_cast<std::ptrdiff_t>(phrase.count);
            const bool isCut = phrase.count == 1 && isFollowedByYear(phrase.first);
            if (std::find(begin, end, true) != end || isCut || isInsideCountry(phrase))
                continue;
            const SearchAlias &alias = m_lexicon.aliases()[static_cast<std::size_t>(phrase.index)];
            addCodes(alias,
                     Words(m_words.begin() + static_cast<std::ptrdiff_t>(phrase.first),
                           m_words.begin() + static_cast<std::ptrdiff_t>(phrase.first + phrase.count)));
            m_query.isUnpublished = m_query.isUnpublished || (alias.codes.isEmpty() && alias.words.empty());
            if (alias.words.empty())
                continue;
            std::fill(begin, end, true);
            replaced[phrase.first] = &alias;
        }
        for (std::size_t i = 0; i < m_words.size(); ++i) {
            if (replaced[i])
                result.insert(result.end(), replaced[i]->words.begin(), replaced[i]->words.end());
            else if (!isTaken[i])
                result.push_back(m_words[i]);
        }
        m_words = std::move(result);
    }

    /// "Африка" in "Южная Африка"
    bool isInsideCountry(const FoundPhrase &phrase) const
    {
        const std::vector<FoundPhrase> countries = m_lexicon.countriesIn(m_words);
        return std::any_of(countries.begin(), countries.end(), [&phrase](const FoundPhrase &country) {
            return country.count > phrase.count && country.first <= phrase.first &&
                   country.first + country.count >= phrase.first + phrase.count;
        });
    }

    /// "wgs 72" is no "wgs".
    bool isFollowedByYear(std::size_t at) const
    {
        const std::string next = word(at + 1);
        return m_words[at] == "wgs" && !next.empty() && isNumber(next);
    }

    void addCodes(const SearchAlias &alias, const Words &said)
    {
        if (alias.codes.isEmpty())
            return;
        m_query.nicknames.push_back({alias.codes, said, said.size() == m_words.size()});
    }

    void noteKinds()
    {
        m_query.isUtm = std::find(m_words.begin(), m_words.end(), "utm") != m_words.end();
        for (std::size_t i = 0; i + 1 < m_words.size(); ++i) {
            const auto begins = [&](std::string_view with) { return m_words[i + 1].rfind(with, 0) == 0; };
            const bool isWidth = begins("degree") || begins("градус") || begins("°");
            m_query.isThreeDegree = m_query.isThreeDegree || (isWidth && m_words[i] == "3");
            if (isWidth && m_words[i] == "6" &&
                m_words.size() > 2) // as zones are that are called nothing else
                take(i, 2);
        }
    }

    void takeZone()
    {
        for (std::size_t i = 0; i < m_words.size(); ++i) {
            const auto number = zoneNumber(m_words[i]);
            if (!number || *number > 180 ||
                (m_query.isThreeDegree && m_words[i] == "3" && i + 1 < m_words.size() &&
                 !isZoneWord(word(i + 1)) && !precedesZone(before(i))))
                continue;
            if (before(i) == "cm" || before(i) == "цм") {
                m_query.meridian = number;
                take(i - 1, word(i + 1) == "e" || word(i + 1) == "в" ? 3 : 2);
                return;
            }
            if (isZoneAt(i)) {
                takeZoneAt(i, *number);
                return;
            }
        }
    }

    bool isZoneAt(std::size_t i) const
    {
        if (!isNumber(m_words[i])) // a Roman one
            return isZoneWord(before(i));
        const bool isBeforeZone = isZoneWord(word(i + 1)) && !zoneNumber(word(i + 2));
        const bool hasHemisphere = (word(i + 1) == "n" || word(i + 1) == "s") && std::stoi(m_words[i]) <= 60;
        return precedesZone(before(i)) || isBeforeZone || hasHemisphere;
    }

    void takeZoneAt(std::size_t i, int number)
    {
        m_query.zone = number;
        const char *hemisphere = valueOf(hemisphereWords, word(i + 1));
        if (hemisphere && (m_query.isUtm || word(i + 1).size() == 1)) {
            m_query.hemisphere = *hemisphere;
            take(i + 1, 1);
        }
        if (isZoneWord(word(i + 1)) && !isZoneWord(before(i)))
            take(i + 1, 1);
        const std::size_t first = i > 0 && isZoneWord(before(i)) ? i - 1 : i;
        take(first, i + 1 - first);
        takeHemisphereElsewhere();
    }

    /// "UTM north 37", "южное полушарие"
    void takeHemisphereElsewhere()
    {
        if (m_query.hemisphere != 0 || !m_query.isUtm)
            return;
        for (std::size_t i = 0; i < m_words.size(); ++i)
            if (const char *hemisphere = valueOf(hemisphereWords, m_words[i])) {
                m_query.hemisphere = *hemisphere;
                take(i, word(i + 1) == "hemisphere" || word(i + 1) == "полушарие" ? 2 : 1);
                return;
            }
    }

    /// "m" on the way to "mercator" is no unit, "feet" is one.
    bool isLoneLetters(std::size_t i) const { return m_words.size() == 1 && m_words[i].size() <= 2; }

    void takeUnit()
    {
        for (std::size_t i = 0; i < m_words.size(); ++i)
            if (const AskedUnit *unit = isLoneLetters(i) ? nullptr : valueOf(unitWords, m_words[i])) {
                m_query.unit = *unit;
                const bool isUs = before(i) == "us" || before(i) == "survey";
                take(isUs ? i - 1 : i, isUs ? 2 : 1);
                return;
            }
    }

    void takeCountry()
    {
        const std::vector<FoundPhrase> found = m_lexicon.countriesIn(m_words);
        if (found.empty())
            return;
        const FoundPhrase &phrase = found.front();
        m_query.country = phrase.index;
        const auto begin = m_words.begin() + static_cast<std::ptrdiff_t>(phrase.first);
        m_query.countryWords.assign(begin, begin + static_cast<std::ptrdiff_t>(phrase.count));
        const bool isTown = isOfTown(phrase);
        if (!isTown)
            take(phrase.first, phrase.count);
        else
            m_query.country = -1;
    }

    /// "Mexico City", "Panama City"
    bool isOfTown(const FoundPhrase &country)
    {
        for (const FoundPhrase &town : m_lexicon.townsIn(m_words))
            if (town.count > country.count && town.first <= country.first &&
                town.first + town.count >= country.first + country.count)
                return true;
        return false;
    }

    void takePlace()
    {
        const std::vector<FoundPhrase> found = m_lexicon.townsIn(m_words);
        if (found.empty() || (m_query.country >= 0 && found.front().count == 0))
            return;
        const std::size_t behind = found.front().first + found.front().count;
        const std::size_t at = found.front().first;
        if ((isYear(word(behind)) && m_index.hasInName(before(behind), word(behind))) || // "Beijing 1954"
            m_index.hasInName(before(at), word(at)))                                     // "New Beijing"
            return;
        const SearchTown &town = m_lexicon.towns()[static_cast<std::size_t>(found.front().index)];
        if (m_query.country >= 0 && town.country != m_query.country)
            return;
        m_query.place = town.lonLat;
        m_query.placeCountry = town.country;
        const auto begin = m_words.begin() + static_cast<std::ptrdiff_t>(found.front().first);
        m_query.countryWords.insert(m_query.countryWords.end(), begin,
                                    begin + static_cast<std::ptrdiff_t>(found.front().count));
        take(found.front().first, found.front().count);
        m_query.country = -1;
    }

    /// "the national grid of Finland": whatever that is called.
    void takeNational()
    {
        const auto isNational = [](const std::string &word) {
            return std::any_of(std::begin(nationalWords), std::end(nationalWords),
                               [&word](std::string_view beginning) { return word.rfind(beginning, 0) == 0; });
        };
        m_query.isNational = m_query.country >= 0 && std::any_of(m_words.begin(), m_words.end(), isNational);
        if (!m_query.isNational)
            return;
        const auto isCovered = [&isNational](const std::string &word) {
            return isNational(word) || word == "grid" || word == "сетка";
        };
        m_words.erase(std::remove_if(m_words.begin(), m_words.end(), isCovered), m_words.end());
    }

    void takeNumbers()
    {
        constexpr std::size_t leastDigits = 4;
        constexpr std::size_t mostDigits = 8;
        for (const std::string &word : m_words)
            if (isNumber(word) && word.size() >= leastDigits && word.size() <= mostDigits)
                m_query.numbers << QString::fromStdString(word);
    }

    const SearchLexicon &m_lexicon;
    const SystemIndex &m_index;
    Words m_words;
    SearchQuery m_query;
    bool m_isUnderstood = false;
};

} // namespace

SearchQuery readQuery(const QString &text, const SearchLexicon &lexicon, const SystemIndex &index)
{
    return QueryReader(text, lexicon, index).read();
}

} // namespace nivora::cs
