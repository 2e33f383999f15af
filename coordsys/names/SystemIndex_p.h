#pragma once

// All systems that a name, a word or a place can mean: the catalogue's and those of PROJ's database.

#include "CodelessSystems_p.h"
#include <coordsys/MapinfoSearch.h>

#include <QHash>
#include <QRectF>

#include <optional>
#include <string>
#include <unordered_map>
#include <utility>
#include <vector>

namespace nivora::cs {

class MapinfoCoordSystem;

/// The zone in a name: "UTM zone 37N", "Lo29", "CM 39E".
struct ZoneInName
{
    std::optional<int> number;
    char hemisphere = 0; ///< 'n', 's', 0 when the name does not tell
    std::optional<int> meridian;
};

/// A system as the search knows it. Words are numbers in the index.
struct IndexedSystem
{
    MapinfoSearch::Hit hit;
    std::vector<int> name;                ///< in the name's order
    std::vector<std::vector<int>> others; ///< names in other languages
    std::vector<int> group;               ///< category, method of projection
    int area = -1;                        ///< among areaWords()
    QRectF extent;      ///< degrees, width may run on across the 180th meridian; null: unknown
    double share = 1.0; ///< of the earth
    ZoneInName zone;
    int family = -1;       ///< one number for names alike but for their numbers, -1 without numbers
    double standing = 0.0; ///< what speaks for it, or against, before anything is asked
    bool isInFeet = false;
    bool isGeographic = false;
    bool isRealization = false; ///< of a datum that has a plain system beside it, as "NAD83(2011)"
};

class SystemIndex
{
public:
    explicit SystemIndex(const MapinfoCoordSystem &catalogue);

    /// Names of the same entries in another language.
    void addNames(const MapinfoCoordSystem &otherLanguage);
    /// Joins what PROJ's database knows of the catalogue's systems, and all others that it has: by every
    /// authority, longitude/latitude and projected, withdrawn ones too. A tenth of a second, in a context of
    /// its own.
    void addDatabase();

    /// A user's own system, found by its name and its branch's.
    void addOwn(const CodelessSystem &own);
    /// Takes the areas of use of systems without a code; those that have none stay without. Returns them by
    /// their numbers here.
    std::vector<std::pair<int, LocatedSystem>> locate(const std::vector<CodelessSystem> &codeless,
                                                      const CodelessAreas &areas);
    const std::vector<IndexedSystem> &systems() const { return m_systems; }
    const std::vector<std::string> &words() const { return m_words; }
    const std::vector<std::vector<int>> &areaWords() const { return m_areaWords; }
    /// The first system with a code ("EPSG:4326"), -1 when there is none.
    int withCode(const QString &code) const { return m_byCode.value(code, -1); }
    /// The number of a word, -1 for one that nothing has.
    int numberOf(const std::string &word) const;
    /// Whether a name has both words, the one behind the other.
    bool hasInName(const std::string &word, const std::string &next) const;

private:
    int number(const std::string &word);
    std::vector<int> numbers(const QString &text);
    void describe(IndexedSystem &system, const QString &englishName);
    int areaNamed(const QString &area);

    std::vector<IndexedSystem> m_systems;
    std::vector<std::string> m_words;
    std::unordered_map<std::string, int> m_numbers;
    std::vector<std::vector<int>> m_areaWords;
    QHash<QString, int> m_areas;
    QHash<QString, int> m_families;
    QHash<QString, int> m_byCode;
    QList<CoordSystemParamsList> m_categories;
};

/// The value of a Roman numeral of lower case below 40, nothing for other words.
std::optional<int> romanValue(const std::string &word);
/// The number of a word of up to three digits, else of a Roman numeral.
std::optional<int> zoneNumber(const std::string &word);
/// Words behind which a zone's number stands: "zone", "belt", "Lo", "UTM" and their likes.
bool precedesZone(const std::string &word);

} // namespace nivora::cs
