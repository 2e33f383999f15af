#include <coordsys/MapinfoSearch.h>

#include <coordsys/MapinfoCoordSystem.h>
#include <coordsys/ProjLibMetadata.h>

#include <QHash>

#include <algorithm>
#include <cmath>
#include <mutex>
#include <string>
#include <string_view>
#include <vector>

namespace nivora::cs {
namespace {

/// Letters and digits as they are compared: accents dropped, case folded, everything else a blank. UTF-8,
/// with a blank before each word, so that " wo" finds the beginning of a word.
std::string comparable(const QString &text)
{
    QString plain;
    const QString parts = text.normalized(QString::NormalizationForm_KD);
    plain.reserve(parts.size() + 1);
    plain += QLatin1Char(' ');
    for (const QChar c : parts) {
        if (c.isMark())
            continue;
        plain += c.isLetterOrNumber() ? c : QLatin1Char(' ');
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

struct MapinfoSearch::Data
{
    struct Entry
    {
        Hit hit;
        std::string name;     ///< comparable
        std::string category; ///< comparable
        std::string code;     ///< digits, empty for none
    };
    struct Area
    {
        double share;
        QRectF rect;
        std::size_t entry;
    };

    std::vector<Entry> entries;
    std::once_flag areasOnce;
    std::vector<Area> areas; ///< smallest first

    void loadAreas();
};

MapinfoSearch::MapinfoSearch(const MapinfoCoordSystem &catalogue)
    : m_data(std::make_unique<Data>())
{
    const QList<CoordSystemParamsList> categories = catalogue.projectionList();
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

QVector<MapinfoSearch::Hit> MapinfoSearch::find(const QString &text, int limit) const
{
    const std::vector<std::string> words = wordsOf(text);
    if (words.empty() || limit < 1)
        return {};
    std::vector<const Data::Entry *> byCode;
    std::vector<const Data::Entry *> byBeginning;
    std::vector<const Data::Entry *> rest;
    for (const Data::Entry &entry : m_data->entries) {
        bool all = true;
        bool code = false;
        bool beginnings = true;
        for (const std::string &word : words) {
            const bool isCode = !entry.code.empty() && entry.code == word;
            code = code || isCode;
            const std::size_t inName = entry.name.find(word);
            if (!isCode && inName == std::string::npos && entry.category.find(word) == std::string::npos &&
                entry.code.find(word) == std::string::npos) {
                all = false;
                break;
            }
            beginnings =
                beginnings && inName != std::string::npos && entry.name.find(' ' + word) != std::string::npos;
        }
        if (all)
            (code ? byCode : beginnings ? byBeginning : rest).push_back(&entry);
    }
    QVector<Hit> hits;
    for (const auto *group : {&byCode, &byBeginning, &rest})
        for (const Data::Entry *entry : *group)
            if (hits.size() < limit)
                hits << entry->hit;
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

QVector<MapinfoSearch::Hit> MapinfoSearch::at(const QPointF &lonLat, int limit) const
{
    std::call_once(m_data->areasOnce, [this] { m_data->loadAreas(); });
    QVector<Hit> hits;
    for (const Data::Area &area : m_data->areas) {
        if (hits.size() >= limit)
            break;
        if (holds(area.rect, lonLat))
            hits << m_data->entries[area.entry].hit;
    }
    return hits;
}

} // namespace nivora::cs
