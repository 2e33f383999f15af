#include <coordsys/MapinfoSearch.h>

#include <coordsys/MapinfoCoordSystem.h>
#include <coordsys/ProjLibMetadata.h>

#include <QFile>
#include <QHash>

#include <algorithm>
#include <cmath>
#include <functional>
#include <limits>
#include <map>
#include <mutex>
#include <set>
#include <string>
#include <string_view>
#include <vector>

namespace nivora::cs {
namespace {

/// Letters and digits as they are compared: accents dropped, case folded, everything else a blank, and a
/// blank between letter and digit. UTF-8, with a blank before each word, so that " wo" finds the beginning of
/// a word.
std::string comparable(const QString &text)
{
    QString plain;
    const QString parts = text.normalized(QString::NormalizationForm_KD);
    plain.reserve(parts.size() + 1);
    plain += QLatin1Char(' ');
    QChar last = QLatin1Char(' ');
    for (const QChar c : parts) {
        if (c.isMark())
            continue;
        if ((last.isLetter() && c.isDigit()) || (last.isDigit() && c.isLetter()))
            plain += QLatin1Char(' ');
        plain += c.isLetterOrNumber() ? c : QLatin1Char(' ');
        last = c;
    }
    return plain.simplified().prepend(QLatin1Char(' ')).toCaseFolded().toStdString();
}

std::vector<std::string> wordsOf(const QString &text)
{
    std::vector<std::string> words;
    const QStringList parts =
        QString::fromStdString(comparable(text)).split(QLatin1Char(' '), Qt::SkipEmptyParts);
    for (const QString &part : parts)
        words.push_back(part.toStdString());
    return words;
}

/// Part of the sphere between two meridians and two parallels, as a share of it.
double share(const QRectF &area)
{
    const auto sine = [](double degrees) { return std::sin(degrees * CoordSystemTypes::DEGREES_TO_RADIANS); };
    return area.width() / 360.0 * (sine(area.y() + area.height()) - sine(area.y())) / 2.0;
}

bool holds(const QRectF &area, const QPointF &lonLat)
{
    if (!(lonLat.y() >= area.y() && lonLat.y() <= area.y() + area.height()) || !std::isfinite(lonLat.x()))
        return false;
    const double east = std::fmod(std::fmod(lonLat.x() - area.x(), 360.0) + 360.0, 360.0);
    return east <= area.width() || 360.0 - east < 1e-9;
}

} // namespace

struct NIVORA_CS_NO_EXPORT MapinfoSearch::Data
{
    struct Entry
    {
        Hit hit;
        std::string name;     ///< comparable, a line for each language
        std::string category; ///< likewise
        std::string code;     ///< digits, empty for none
    };
    struct Place
    {
        std::vector<std::string> words; ///< comparable, of one name
        QPointF lonLat;
    };
    struct Area
    {
        double share;
        QRectF rect;
        std::size_t entry;
    };

    /// How a text of words meets an entry.
    enum Match { None, Held, Begun, Coded };
    static Match match(const Entry &entry, const std::vector<std::string> &words);
    const Place *placeIn(const std::vector<std::string> &words) const;
    QVector<Hit> at(const QPointF &lonLat, const std::vector<std::string> &words, int limit);

    QList<CoordSystemParamsList> categories;
    std::vector<Entry> entries;
    std::vector<Place> places;
    std::once_flag areasOnce;
    std::vector<Area> areas; ///< smallest first

    void loadAreas();
};

MapinfoSearch::MapinfoSearch(const MapinfoCoordSystem &catalogue)
    : m_data(std::make_unique<Data>())
{
    const QList<CoordSystemParamsList> &categories = m_data->categories = catalogue.projectionList();
    for (int category = 0; category < categories.size(); ++category) {
        const CoordSystemParamsList &list = categories.at(category);
        const std::string categoryText = comparable(list.name);
        for (int index = 0; index < list.entries.size(); ++index) {
            const CoordSystemParams &params = list.entries.at(index);
            const bool coded = params.epsg() != CoordSystemTypes::EPSG_UNDEFINDED;
            m_data->entries.push_back({{{category, index}, list.name, params.name(), params.epsg()},
                                       comparable(params.name()),
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
        entry.name += '\n' + comparable(other.name());
        entry.category += '\n' + comparable(theirs.at(category).name);
    }
}

int MapinfoSearch::loadPlaces(const QFileInfo &file)
{
    QFile source(file.absoluteFilePath());
    if (!source.open(QIODevice::ReadOnly))
        return -1;
    int count = 0;
    while (!source.atEnd()) {
        const QStringList cells = QString::fromUtf8(source.readLine()).split(QLatin1Char('\t'));
        bool isLon = false;
        bool isLat = false;
        const QPointF lonLat(cells.value(0).toDouble(&isLon), cells.value(1).toDouble(&isLat));
        if (cells.size() != 3 || !isLon || !isLat)
            continue;
        ++count;
        const QStringList names = cells.at(2).split(QLatin1Char(';'));
        for (const QString &name : names) {
            std::vector<std::string> words = wordsOf(name);
            if (!words.empty())
                m_data->places.push_back({std::move(words), lonLat});
        }
    }
    return count;
}

MapinfoSearch::Data::Match MapinfoSearch::Data::match(const Entry &entry,
                                                      const std::vector<std::string> &words)
{
    bool coded = false;
    bool begun = true;
    for (const std::string &word : words) {
        const bool isCode = !entry.code.empty() && entry.code == word;
        coded = coded || isCode;
        const std::size_t inName = entry.name.find(word);
        if (!isCode && inName == std::string::npos && entry.category.find(word) == std::string::npos &&
            entry.code.find(word) == std::string::npos)
            return None;
        begun = begun && inName != std::string::npos && entry.name.find(' ' + word) != std::string::npos;
    }
    return coded ? Coded : begun ? Begun : Held;
}

/// The town with the longest name of which the text holds every word.
const MapinfoSearch::Data::Place *MapinfoSearch::Data::placeIn(const std::vector<std::string> &words) const
{
    const Place *longest = nullptr;
    for (const Place &place : places) {
        const bool all = std::all_of(place.words.begin(), place.words.end(), [&](const std::string &word) {
            return std::find(words.begin(), words.end(), word) != words.end();
        });
        if (all && (!longest || place.words.size() > longest->words.size()))
            longest = &place;
    }
    return longest;
}

QVector<MapinfoSearch::Hit> MapinfoSearch::find(const QString &text, int limit) const
{
    std::vector<std::string> words = wordsOf(text);
    if (words.empty() || limit < 1)
        return {};
    std::map<Data::Match, std::vector<const Data::Entry *>, std::greater<>> groups;
    for (const Data::Entry &entry : m_data->entries)
        if (const Data::Match match = Data::match(entry, words))
            groups[match].push_back(&entry);
    QVector<Hit> hits;
    std::set<std::pair<int, int>> known;
    for (const auto &[match, entries] : groups)
        for (const Data::Entry *entry : entries)
            if (hits.size() < limit && known.insert(entry->hit.position).second)
                hits << entry->hit;
    const Data::Place *place = hits.size() < limit ? m_data->placeIn(words) : nullptr;
    if (!place)
        return hits;
    for (const std::string &word : place->words)
        words.erase(std::remove(words.begin(), words.end(), word), words.end());
    const QVector<Hit> there = m_data->at(place->lonLat, words, std::numeric_limits<int>::max());
    for (const Hit &hit : there)
        if (hits.size() < limit && known.insert(hit.position).second)
            hits << hit;
    return hits;
}

void MapinfoSearch::Data::loadAreas()
{
    QHash<QString, QRectF> known;
    const ProjLibMetadata::ProjectionCatalog catalog =
        ProjLibMetadata().listProjections(ProjLibMetadata::EPSG);
    for (const auto &systems : catalog)
        for (const ProjLibMetadata::ProjectionInfo &info : systems)
            if (!info.rect.isNull())
                known.insert(info.id, info.rect);
    for (std::size_t i = 0; i < entries.size(); ++i) {
        const auto found = known.constFind(QStringLiteral("EPSG:%1").arg(entries[i].hit.epsg));
        if (found == known.constEnd())
            continue;
        QRectF rect = *found;
        if (rect.width() < 0.0)
            rect.setWidth(rect.width() + 360.0); // across the 180th meridian
        areas.push_back({share(rect), rect, i});
    }
    std::stable_sort(areas.begin(), areas.end(),
                     [](const Area &a, const Area &b) { return a.share < b.share; });
}

/// Entries in use at a place that hold all of the words, of which there may be none.
QVector<MapinfoSearch::Hit> MapinfoSearch::Data::at(const QPointF &lonLat,
                                                    const std::vector<std::string> &words, int limit)
{
    std::call_once(areasOnce, [this] { loadAreas(); });
    QVector<Hit> hits;
    for (const Area &area : areas) {
        if (hits.size() >= limit)
            break;
        if (holds(area.rect, lonLat) && match(entries[area.entry], words) != None)
            hits << entries[area.entry].hit;
    }
    return hits;
}

QVector<MapinfoSearch::Hit> MapinfoSearch::at(const QPointF &lonLat, int limit) const
{
    return m_data->at(lonLat, {}, limit);
}

} // namespace nivora::cs
