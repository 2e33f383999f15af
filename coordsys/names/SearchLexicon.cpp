#include "SearchLexicon_p.h"

#include "SearchWords_p.h"
#include "WordLikeness_p.h"
#include <coordsys/CoordSystemTypes.h>

#include <algorithm>
#include <cmath>
#include <iterator>
#include <limits>
#include <numeric>

namespace nivora::cs {
namespace {

std::vector<std::vector<std::string>> namesIn(const QString &cell)
{
    std::vector<std::vector<std::string>> names;
    for (const QString &name : cell.split(QLatin1Char(';')))
        if (std::vector<std::string> words = wordsOf(name); !words.empty())
            names.push_back(std::move(words));
    return names;
}

std::vector<std::string> stems(const std::vector<std::string> &words)
{
    std::vector<std::string> result;
    std::transform(words.begin(), words.end(), std::back_inserter(result), russianStem);
    return result;
}

using KnownWord = std::pair<const std::string, std::size_t>;

/// Of the words that fit the one that came first; empty without any.
template <typename Iterator, typename Fits>
std::string earliest(Iterator begin, Iterator end, const Fits &fits)
{
    const KnownWord *best = nullptr;
    for (; begin != end; ++begin)
        if ((!best || begin->second < best->second) && fits(*begin))
            best = &*begin;
    return best ? best->first : std::string();
}

} // namespace

std::string russianStem(const std::string &word)
{
    constexpr int shortestStem = 3;
    const QString endings = QStringLiteral("аеёиоуыэюяйь");
    QString stem = QString::fromStdString(word);
    while (stem.size() > shortestStem && endings.contains(stem.back()))
        stem.chop(1);
    return stem.toStdString();
}

void SearchLexicon::Phrases::add(const Words &phrase, int index)
{
    m_longest = std::max(m_longest, phrase.size());
    m_phrases.emplace(stems(phrase), index);
}

int SearchLexicon::Phrases::find(const Words &phrase) const
{
    const auto found = m_phrases.find(stems(phrase));
    return found == m_phrases.end() ? -1 : found->second;
}

std::vector<FoundPhrase> SearchLexicon::Phrases::in(const Words &words) const
{
    const Words stemmed = stems(words);
    std::vector<FoundPhrase> found;
    for (std::size_t count = std::min(m_longest, words.size()); count > 0; --count)
        for (std::size_t first = 0; first + count <= words.size(); ++first) {
            const auto begin = stemmed.begin() + static_cast<std::ptrdiff_t>(first);
            const auto hit = m_phrases.find(Words(begin, begin + static_cast<std::ptrdiff_t>(count)));
            if (hit != m_phrases.end())
                found.push_back({first, count, hit->second});
        }
    return found;
}

void SearchLexicon::add(Phrases &phrases, const Words &name, std::size_t index)
{
    phrases.add(name, static_cast<int>(index));
    for (const std::string &word : name)
        m_words.emplace(russianStem(word), m_words.size());
}

int SearchLexicon::loadCountries(const QFileInfo &file)
{
    const auto rows = tableRows(file);
    for (const QStringList &cells : rows.value_or(std::vector<QStringList>())) {
        SearchCountry country{namesIn(cells.value(0)), {}};
        for (const QString &code : cells.value(1).split(QLatin1Char(';'), Qt::SkipEmptyParts))
            country.codes << withAuthority(code);
        for (const Words &name : country.names)
            add(m_countryNames, name, m_countries.size());
        m_countries.push_back(std::move(country));
    }
    return rows ? static_cast<int>(m_countries.size()) : -1;
}

int SearchLexicon::loadTowns(const QFileInfo &file)
{
    enum Column { Longitude, Latitude, Names, Country };
    const auto rows = tableRows(file);
    int count = 0;
    for (const QStringList &cells : rows.value_or(std::vector<QStringList>())) {
        bool isLon = false;
        bool isLat = false;
        const QPointF lonLat(cells.value(Longitude).toDouble(&isLon), cells.value(Latitude).toDouble(&isLat));
        if (cells.size() <= Names || !isLon || !isLat)
            continue;
        ++count;
        for (const Words &name : namesIn(cells.at(Names)))
            add(m_townNames, name, m_towns.size());
        m_towns.push_back({lonLat, countryNamed(cells.value(Country))});
    }
    m_byLatitude.resize(m_towns.size());
    std::iota(m_byLatitude.begin(), m_byLatitude.end(), 0);
    std::sort(m_byLatitude.begin(), m_byLatitude.end(), [this](int a, int b) {
        return m_towns[static_cast<std::size_t>(a)].lonLat.y() <
               m_towns[static_cast<std::size_t>(b)].lonLat.y();
    });
    return rows ? count : -1;
}

int SearchLexicon::loadAliases(const QFileInfo &file)
{
    const auto rows = nivora::cs::aliasesIn(file);
    if (!rows)
        return -1;
    for (const SearchAlias &alias : *rows) {
        for (const Words &name : alias.names)
            add(m_aliasNames, name, m_aliases.size());
        m_aliases.push_back(alias);
    }
    return static_cast<int>(rows->size());
}

int SearchLexicon::countryNamed(const QString &name) const { return m_countryNames.find(wordsOf(name)); }

std::string SearchLexicon::wordBegunBy(const std::string &word) const
{
    const std::string stem = russianStem(word);
    const auto begins = [&stem](const KnownWord &known) { return known.first.rfind(stem, 0) == 0; };
    const auto first = m_words.lower_bound(stem);
    return earliest(first, std::find_if_not(first, m_words.end(), begins), begins);
}

std::string SearchLexicon::wordSlippedTo(const std::string &word) const
{
    const std::string stem = russianStem(word);
    return earliest(m_words.begin(), m_words.end(),
                    [&stem](const KnownWord &known) { return isSlip(stem, known.first); });
}

std::vector<int> SearchLexicon::countriesBeginning(const std::string &word) const
{
    std::vector<int> countries;
    for (std::size_t i = 0; i < m_countries.size(); ++i)
        for (const Words &name : m_countries[i].names)
            if (name.size() == 1 && name.front().size() > word.size() && name.front().rfind(word, 0) == 0) {
                countries.push_back(static_cast<int>(i));
                break;
            }
    return countries;
}

int SearchLexicon::countryAt(const QPointF &lonLat) const
{
    const int town = townNear(lonLat);
    return town < 0 ? -1 : m_towns[static_cast<std::size_t>(town)].country;
}

int SearchLexicon::townNear(const QPointF &lonLat) const
{
    const auto at = [this](int town) { return m_towns[static_cast<std::size_t>(town)].lonLat; };
    const double shrink = std::cos(lonLat.y() * CoordSystemTypes::DEGREES_TO_RADIANS);
    int nearest = -1;
    double least = std::numeric_limits<double>::infinity();
    // False when this town is too far to the north or south, and so all beyond it.
    const auto take = [&](int town) {
        const double north = at(town).y() - lonLat.y();
        const double east = std::remainder(at(town).x() - lonLat.x(), 360.0) * shrink;
        const double square = east * east + north * north;
        if (square < least || (square == least && town < nearest)) {
            least = square;
            nearest = town;
        }
        return north * north <= least;
    };
    const auto middle = std::lower_bound(m_byLatitude.begin(), m_byLatitude.end(), lonLat.y(),
                                         [&](int town, double latitude) { return at(town).y() < latitude; });
    for (auto town = middle; town != m_byLatitude.end() && take(*town); ++town) {
    }
    for (auto town = middle; town != m_byLatitude.begin() && take(*std::prev(town)); --town) {
    }
    return nearest;
}

QString SearchLexicon::remark(const Words &words, const QString &language) const
{
    const auto isIn = [&words](const std::string &word) {
        return std::find(words.begin(), words.end(), word) != words.end();
    };
    for (const SearchAlias &alias : m_aliases)
        for (const Words &name : alias.names)
            if (std::all_of(name.begin(), name.end(), isIn) && !alias.remark(language).isEmpty())
                return alias.remark(language);
    return {};
}

} // namespace nivora::cs
