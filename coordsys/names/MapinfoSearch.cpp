#include <coordsys/MapinfoSearch.h>

#include "GeographicExtent_p.h"
#include "SearchTables_p.h"
#include "SearchWords_p.h"
#include <coordsys/MapinfoCoordSystem.h>
#include <coordsys/ProjEngine.h>
#include <coordsys/ProjLibMetadata.h>

#include <QHash>
#include <QSet>

#include <algorithm>
#include <cmath>
#include <functional>
#include <map>
#include <mutex>
#include <optional>
#include <set>
#include <string>
#include <vector>

namespace nivora::cs {
namespace {

using Hit = MapinfoSearch::Hit;

/// "EPSG" says nothing beside a code, and nothing alone but that codes are meant.
std::vector<std::string> queryWords(const QString &text)
{
    std::vector<std::string> words = wordsOf(text);
    if (words.size() > 1)
        words.erase(std::remove(words.begin(), words.end(), "epsg"), words.end());
    return words;
}

/// The code that a query is, if it is nothing else.
std::optional<int> codeOf(const SearchWords &words)
{
    constexpr std::size_t longestCode = 8;
    const std::string &word = words.front().forms.front();
    if (words.size() != 1 || !words.front().isNumber || word.size() > longestCode)
        return std::nullopt;
    return std::stoi(word);
}

/// A system of the database as a hit; nothing for a code that is no system.
std::optional<Hit> registered(int code)
{
    try {
        return Hit{{-1, -1}, {}, ProjLibMetadata().nameCrs(code, ProjLibMetadata::EPSG), code};
    } catch (const ProjException &) {
        return std::nullopt;
    }
}

/// The hits as they come, each once, up to a limit.
class Hits
{
public:
    explicit Hits(int limit)
        : m_limit(limit)
    {}

    void add(const Hit &hit)
    {
        const auto key = hit.isInCatalogue() ? hit.position : std::pair<int, int>(-1, hit.epsg);
        if (!isFull() && m_known.insert(key).second)
            m_list << hit;
    }
    bool isEmpty() const { return m_list.isEmpty(); }
    bool isFull() const { return m_list.size() >= m_limit; }
    const QVector<Hit> &list() const { return m_list; }

private:
    int m_limit;
    QVector<Hit> m_list;
    std::set<std::pair<int, int>> m_known;
};

} // namespace

struct NIVORA_CS_NO_EXPORT MapinfoSearch::Data
{
    struct Entry
    {
        Hit hit;
        std::string name;     ///< as search keys, a line for each language
        std::string category; ///< likewise
        std::string code;     ///< digits, empty for none
        int area = -1;        ///< in areaTexts, once they are loaded
    };
    struct Named
    {
        std::vector<std::string> words; ///< as search keys, of one name
        std::size_t index;              ///< into places or aliases
    };
    struct Area
    {
        double share;
        QRectF rect;
        std::size_t entry;
    };

    /// How a query meets an entry; the better the later.
    enum Match { None, Held, Begun, Coded, Exact };
    static Match match(const Entry &entry, const SearchWords &words);
    static std::vector<const Named *> namesIn(const std::vector<Named> &names, const SearchWords &words);
    static SearchWords without(SearchWords words, const Named &name);

    void search(const SearchWords &words, Hits &hits);
    void addNamed(const SearchWords &words, Match least, Match most, Hits &hits) const;
    void addAliased(const SearchWords &words, Hits &hits) const;
    void addPlace(const SearchWords &words, Hits &hits);
    void addRegion(const SearchWords &words, Hits &hits);
    void addAt(const QPointF &lonLat, const SearchWords &words, Hits &hits);
    void addCode(int code, const SearchWords &words, Hits &hits) const;
    std::vector<SearchWords> reworded(const SearchWords &words) const;
    SearchWords corrected(const SearchWords &words);
    const QSet<QString> &knownWords();
    const std::vector<Area> &knownAreas();
    void loadAreas();

    QList<CoordSystemParamsList> categories;
    std::vector<Entry> entries;
    QHash<int, std::size_t> byCode; ///< the first entry
    std::vector<QPointF> places;
    std::vector<Named> placeNames;
    std::vector<SearchAlias> aliases;
    std::vector<Named> aliasNames;
    std::once_flag areasOnce;
    std::vector<Area> areas; ///< smallest first
    std::vector<std::string> areaTexts;
    std::mutex vocabularyLock;
    QSet<QString> vocabulary; ///< under vocabularyLock; empty when it has to be collected
};

MapinfoSearch::MapinfoSearch(const MapinfoCoordSystem &catalogue)
    : m_data(std::make_unique<Data>())
{
    const QList<CoordSystemParamsList> &categories = m_data->categories = catalogue.projectionList();
    for (int category = 0; category < categories.size(); ++category) {
        const CoordSystemParamsList &list = categories.at(category);
        const std::string categoryText = searchKey(list.name);
        for (int index = 0; index < list.entries.size(); ++index) {
            const CoordSystemParams &params = list.entries.at(index);
            const bool coded = params.epsg() != CoordSystemTypes::EPSG_UNDEFINDED;
            if (coded && !m_data->byCode.contains(params.epsg()))
                m_data->byCode.insert(params.epsg(), m_data->entries.size());
            m_data->entries.push_back({{{category, index}, list.name, params.name(), params.epsg()},
                                       searchKey(params.name()),
                                       categoryText,
                                       coded ? std::to_string(params.epsg()) : std::string()});
        }
    }
}

MapinfoSearch::~MapinfoSearch() = default;

void MapinfoSearch::addNames(const MapinfoCoordSystem &otherLanguage)
{
    const QList<CoordSystemParamsList> ours = m_data->categories;
    const QList<CoordSystemParamsList> theirs = otherLanguage.projectionList();
    for (Data::Entry &entry : m_data->entries) {
        const auto [category, index] = entry.hit.position;
        if (category >= theirs.size() || index >= theirs.at(category).entries.size())
            continue;
        const CoordSystemParams &other = theirs.at(category).entries.at(index);
        if (other.params != ours.at(category).entries.at(index).params)
            continue;
        entry.name += '\n' + searchKey(other.name());
        entry.category += '\n' + searchKey(theirs.at(category).name);
    }
    m_data->vocabulary.clear();
}

int MapinfoSearch::loadPlaces(const QFileInfo &file)
{
    const auto rows = tableRows(file);
    int count = 0;
    for (const QStringList &cells : rows.value_or(std::vector<QStringList>())) {
        bool isLon = false;
        bool isLat = false;
        const QPointF lonLat(cells.value(0).toDouble(&isLon), cells.value(1).toDouble(&isLat));
        if (cells.size() != 3 || !isLon || !isLat)
            continue;
        ++count;
        for (const QString &name : cells.at(2).split(QLatin1Char(';')))
            if (std::vector<std::string> words = wordsOf(name); !words.empty())
                m_data->placeNames.push_back({std::move(words), m_data->places.size()});
        m_data->places.push_back(lonLat);
    }
    m_data->vocabulary.clear();
    return rows ? count : -1;
}

int MapinfoSearch::loadAliases(const QFileInfo &file)
{
    const auto loaded = aliasesIn(file);
    if (!loaded)
        return -1;
    for (const SearchAlias &alias : *loaded) {
        for (const std::vector<std::string> &words : alias.names)
            m_data->aliasNames.push_back({words, m_data->aliases.size()});
        m_data->aliases.push_back(alias);
    }
    m_data->vocabulary.clear();
    return static_cast<int>(loaded->size());
}

MapinfoSearch::Data::Match MapinfoSearch::Data::match(const Entry &entry, const SearchWords &words)
{
    bool coded = false;
    bool begun = true;
    for (const SearchWord &word : words) {
        const bool isCode = !entry.code.empty() && word.is(entry.code);
        coded = coded || isCode;
        if (!isCode && !word.isIn(entry.name) && !word.isIn(entry.category))
            return None;
        begun = begun && word.begins(entry.name);
    }
    if (coded || !begun)
        return coded ? Coded : Held;
    std::string whole = " ";
    for (const SearchWord &word : words)
        whole += word.forms.front() + ' ';
    const bool exact = ('\n' + entry.name + '\n').find('\n' + whole + '\n') != std::string::npos;
    return exact ? Exact : Begun;
}

/// The names of which the query holds every word, the longest first.
std::vector<const MapinfoSearch::Data::Named *> MapinfoSearch::Data::namesIn(const std::vector<Named> &names,
                                                                             const SearchWords &words)
{
    std::vector<const Named *> found;
    for (const Named &name : names) {
        const bool all = std::all_of(name.words.begin(), name.words.end(), [&](const std::string &word) {
            return std::any_of(words.begin(), words.end(), [&](const SearchWord &w) { return w.is(word); });
        });
        if (all)
            found.push_back(&name);
    }
    std::stable_sort(found.begin(), found.end(),
                     [](const Named *a, const Named *b) { return a->words.size() > b->words.size(); });
    return found;
}

SearchWords MapinfoSearch::Data::without(SearchWords words, const Named &name)
{
    const auto isOfName = [&name](const SearchWord &word) {
        return std::any_of(name.words.begin(), name.words.end(),
                           [&word](const std::string &part) { return word.is(part); });
    };
    words.erase(std::remove_if(words.begin(), words.end(), isOfName), words.end());
    return words;
}

void MapinfoSearch::Data::addNamed(const SearchWords &words, Match least, Match most, Hits &hits) const
{
    std::map<Match, std::vector<const Entry *>, std::greater<>> groups;
    for (const Entry &entry : entries)
        if (const Match found = match(entry, words); found >= least && found <= most)
            groups[found].push_back(&entry);
    for (const auto &[found, group] : groups)
        for (const Entry *entry : group)
            hits.add(entry->hit);
}

/// The system of a code, if the words fit it.
void MapinfoSearch::Data::addCode(int code, const SearchWords &words, Hits &hits) const
{
    const auto known = byCode.constFind(code);
    if (known != byCode.constEnd()) {
        if (match(entries[*known], words) != None)
            hits.add(entries[*known].hit);
        return;
    }
    const std::optional<Hit> system = registered(code);
    const std::string name = system ? searchKey(system->name) : std::string();
    const bool fits =
        std::all_of(words.begin(), words.end(), [&name](const SearchWord &w) { return w.isIn(name); });
    if (system && fits)
        hits.add(*system);
}

/// The query in the catalogue's own words.
std::vector<SearchWords> MapinfoSearch::Data::reworded(const SearchWords &words) const
{
    std::vector<SearchWords> result;
    for (const Named *name : namesIn(aliasNames, words)) {
        const std::vector<std::string> &instead = aliases[name->index].words;
        if (instead.empty())
            continue;
        result.push_back(without(words, *name));
        for (const std::string &word : instead)
            result.back().emplace_back(word);
    }
    return result;
}

void MapinfoSearch::Data::addAliased(const SearchWords &words, Hits &hits) const
{
    for (const Named *name : namesIn(aliasNames, words))
        for (const int code : aliases[name->index].codes)
            addCode(code, without(words, *name), hits);
    for (const SearchWords &instead : reworded(words))
        addNamed(instead, Held, Exact, hits);
}

/// The towns of a query, those with the longest name first.
void MapinfoSearch::Data::addPlace(const SearchWords &words, Hits &hits)
{
    const std::vector<const Named *> names = namesIn(placeNames, words);
    if (!names.empty() && !hits.isFull())
        addAt(places[names.front()->index], without(words, *names.front()), hits);
}

/// Countries and regions: words that neither name nor category holds stand in the area of use.
void MapinfoSearch::Data::addRegion(const SearchWords &words, Hits &hits)
{
    const bool onlyNumbers =
        std::all_of(words.begin(), words.end(), [](const SearchWord &w) { return w.isNumber; });
    if (onlyNumbers || hits.isFull())
        return;
    (void)knownAreas();
    std::vector<std::vector<bool>> inArea; // for each word whether an area's text holds it
    for (const SearchWord &word : words) {
        std::vector<bool> held;
        for (const std::string &text : areaTexts)
            held.push_back(!word.isNumber && word.begins(text));
        inArea.push_back(std::move(held));
    }
    for (const Entry &entry : entries) {
        bool fits = entry.area >= 0;
        for (std::size_t i = 0; fits && i < words.size(); ++i)
            fits = inArea[i][static_cast<std::size_t>(entry.area)] || words[i].isIn(entry.name) ||
                   words[i].isIn(entry.category);
        if (fits)
            hits.add(entry.hit);
    }
}

void MapinfoSearch::Data::search(const SearchWords &words, Hits &hits)
{
    addNamed(words, Coded, Exact, hits);
    if (const std::optional<int> code = codeOf(words); code && !byCode.contains(*code))
        addCode(*code, {}, hits);
    addAliased(words, hits);
    addNamed(words, Held, Begun, hits);
    addPlace(words, hits);
    addRegion(words, hits);
    for (const SearchWords &instead : reworded(words))
        addRegion(instead, hits);
}

const QSet<QString> &MapinfoSearch::Data::knownWords()
{
    const std::lock_guard<std::mutex> lock(vocabularyLock);
    if (!vocabulary.isEmpty())
        return vocabulary;
    const auto take = [this](const std::string &text) {
        for (const QString &word : QString::fromStdString(text).split(QLatin1Char(' '), Qt::SkipEmptyParts))
            vocabulary.insert(word.trimmed());
    };
    for (const Entry &entry : entries) {
        take(entry.name);
        take(entry.category);
    }
    for (const std::vector<Named> *names : {&placeNames, &aliasNames})
        for (const Named &name : *names)
            std::for_each(name.words.begin(), name.words.end(), take);
    (void)knownAreas();
    std::for_each(areaTexts.begin(), areaTexts.end(), take);
    return vocabulary;
}

/// The words in every spelling that a slip of the hand may have changed, numbers as Roman ones too ("Japan
/// Plane Rectangular CS IX"); the words themselves when none fits.
SearchWords MapinfoSearch::Data::corrected(const SearchWords &words)
{
    SearchWords result = words;
    const QSet<QString> &known = knownWords();
    for (SearchWord &word : result) {
        const QString typed = QString::fromStdString(word.forms.front());
        const std::string roman = word.isNumber ? romanNumeral(word.forms.front()) : std::string();
        if (!roman.empty())
            word.addForm(roman);
        if (word.isNumber)
            continue;
        for (const QString &candidate : known)
            if (isOneEditAway(typed, candidate))
                word.addForm(candidate.toStdString());
    }
    return result;
}

QVector<Hit> MapinfoSearch::find(const QString &text, int limit) const
{
    const SearchWords words = searchWords(queryWords(text));
    if (words.empty() || limit < 1)
        return {};
    Hits hits(limit);
    m_data->search(words, hits);
    if (hits.isEmpty() && remark(text, {}).isEmpty())
        m_data->search(m_data->corrected(words), hits);
    return hits.list();
}

QString MapinfoSearch::remark(const QString &text, const QString &language) const
{
    for (const Data::Named *name : Data::namesIn(m_data->aliasNames, searchWords(wordsOf(text))))
        if (const QString remark = m_data->aliases[name->index].remark(language); !remark.isEmpty())
            return remark;
    return {};
}

void MapinfoSearch::Data::loadAreas()
{
    struct Known
    {
        QRectF rect;
        int text;
    };
    QHash<QString, Known> known;
    const ProjLibMetadata::ProjectionCatalog catalog =
        ProjLibMetadata().listProjections(ProjLibMetadata::EPSG);
    for (auto area = catalog.constBegin(); area != catalog.constEnd(); ++area) {
        for (const ProjLibMetadata::ProjectionInfo &info : area.value())
            known.insert(info.id, {info.rect, static_cast<int>(areaTexts.size())});
        areaTexts.push_back(searchKey(area.key()));
    }
    for (std::size_t i = 0; i < entries.size(); ++i) {
        const auto found = known.constFind(QStringLiteral("EPSG:%1").arg(entries[i].hit.epsg));
        if (found == known.constEnd())
            continue;
        entries[i].area = found->text;
        QRectF rect = found->rect;
        if (rect.isNull())
            continue;
        if (rect.width() < 0.0)
            rect.setWidth(rect.width() + 360.0); // across the 180th meridian
        areas.push_back({shareOfEarth(rect), rect, i});
    }
    std::stable_sort(areas.begin(), areas.end(),
                     [](const Area &a, const Area &b) { return a.share < b.share; });
}

const std::vector<MapinfoSearch::Data::Area> &MapinfoSearch::Data::knownAreas()
{
    std::call_once(areasOnce, [this] { loadAreas(); });
    return areas;
}

/// Entries in use at a place that hold all of the words, of which there may be none.
void MapinfoSearch::Data::addAt(const QPointF &lonLat, const SearchWords &words, Hits &hits)
{
    for (const Area &area : knownAreas())
        if (!hits.isFull() && areaHolds(area.rect, QRectF(lonLat, QSizeF(0.0, 0.0))) &&
            match(entries[area.entry], words) != None)
            hits.add(entries[area.entry].hit);
}

QVector<Hit> MapinfoSearch::at(const QPointF &lonLat, int limit) const
{
    Hits hits(limit);
    m_data->addAt(lonLat, {}, hits);
    return hits.list();
}

} // namespace nivora::cs
