#pragma once

// What people say besides names: countries, towns, nicknames of systems.

#include "SearchTables_p.h"

#include <QFileInfo>
#include <QPointF>
#include <QString>
#include <QStringList>

#include <map>
#include <string>
#include <vector>

namespace nivora::cs {

/// A country with the systems in force there.
struct SearchCountry
{
    std::vector<std::vector<std::string>> names; ///< the words, as search keys, of each
    QStringList codes;                           ///< "EPSG:2154", the one for the whole country first
};

struct SearchTown
{
    QPointF lonLat;   ///< degrees
    int country = -1; ///< in countries(), -1 when the table does not tell
};

/// Where a phrase stands among the words of a query, and what it names.
struct FoundPhrase
{
    std::size_t first = 0;
    std::size_t count = 0;
    int index = -1;
};

/// A Russian word without the vowels of its ending ("Германии" and "Германия" are one); others as they are.
std::string russianStem(const std::string &word);

/// Filled by its loaders, only read afterwards.
class SearchLexicon
{
public:
    /// Tables as MapinfoSearch describes them; how many rows were read, -1 when a file cannot be opened.
    int loadCountries(const QFileInfo &file);
    int loadTowns(const QFileInfo &file);
    int loadAliases(const QFileInfo &file);

    const std::vector<SearchCountry> &countries() const { return m_countries; }
    const std::vector<SearchTown> &towns() const { return m_towns; }
    const std::vector<SearchAlias> &aliases() const { return m_aliases; }

    using Words = std::vector<std::string>;
    /// The longest phrases first, from left to right.
    std::vector<FoundPhrase> countriesIn(const Words &words) const { return m_countryNames.in(words); }
    std::vector<FoundPhrase> townsIn(const Words &words) const { return m_townNames.in(words); }
    std::vector<FoundPhrase> aliasesIn(const Words &words) const { return m_aliasNames.in(words); }
    int countryNamed(const QString &name) const;
    /// Whether a name of a country, a town or a nickname has it, in whatever case of Russian grammar.
    bool hasWord(const std::string &word) const { return m_words.count(russianStem(word)) > 0; }
    /// Of those words the one of the earliest row that begins so, or that a slip of the hand makes it; empty
    /// without any.
    std::string wordBegunBy(const std::string &word) const;
    std::string wordSlippedTo(const std::string &word) const;
    /// Countries with a name of one word that begins so, and goes on.
    std::vector<int> countriesBeginning(const std::string &word) const;
    /// Of the nearest town, -1 without towns. Good enough to order systems that hold the place anyway.
    int countryAt(const QPointF &lonLat) const;
    /// The nearest one, in towns(); -1 without any.
    int townNear(const QPointF &lonLat) const;
    /// A remark of the aliases whose words all stand in \p words, wherever; empty mostly.
    QString remark(const Words &words, const QString &language) const;

private:
    class Phrases
    {
    public:
        void add(const Words &phrase, int index);
        std::vector<FoundPhrase> in(const Words &words) const;
        int find(const Words &phrase) const;

    private:
        std::map<Words, int> m_phrases; ///< the stems of Russian words, so that cases do not count
        std::size_t m_longest = 0;
    };

    void add(Phrases &phrases, const Words &name, std::size_t index);

    std::vector<SearchCountry> m_countries;
    std::vector<SearchTown> m_towns;
    std::vector<int> m_byLatitude; ///< towns from south to north
    std::vector<SearchAlias> m_aliases;
    Phrases m_countryNames;
    Phrases m_townNames;
    Phrases m_aliasNames;
    std::map<std::string, std::size_t> m_words; ///< stems of all names' words, numbered as they came
};

} // namespace nivora::cs
