#pragma once

#include <coordsys/CoordSystemParams.h>

#include <QFileInfo>
#include <QPointF>
#include <QVector>

#include <memory>
#include <utility>

namespace nivora::cs {

class MapinfoCoordSystem;

/// Finds entries of a catalogue the way people look for them: by words, by code, by place. It reads the
/// catalogue once, at construction, and keeps its own copy; make a new one after loading more. Threads: const
/// calls may run together.
class NIVORA_CS_EXPORT MapinfoSearch
{
public:
    /// An entry that was found.
    struct Hit
    {
        std::pair<int, int> position; ///< category and index, as MapinfoCoordSystem takes them
        QString category;             ///< its name
        QString name;                 ///< of the entry
        int epsg = CoordSystemTypes::EPSG_UNDEFINDED; ///< EPSG_UNDEFINDED when it has none
    };

    /// Reads the catalogue; it need not outlive the search.
    explicit MapinfoSearch(const MapinfoCoordSystem &catalogue);
    ~MapinfoSearch();
    MapinfoSearch(const MapinfoSearch &) = delete;
    MapinfoSearch &operator=(const MapinfoSearch &) = delete;

    /// More names by which the entries are found: those of the same catalogue in another language. Positions
    /// where the two do not hold the same parameters are passed over. Not while other threads search.
    void addNames(const MapinfoCoordSystem &otherLanguage);
    /// Towns by which find() knows places: a UTF-8 file, a line each of longitude, latitude (degrees) and
    /// names, separated by tabs, the names by semicolons; other lines are passed over. Returns how many were
    /// read, -1 when the file cannot be opened. Not while other threads search.
    int loadPlaces(const QFileInfo &file);

    /// Entries that hold all words of \p text in name, category or code, in any order and as parts of words;
    /// letter case and accents do not count, and letters and digits are words apart ("wgs84" is "wgs 84"). An
    /// entry whose code is a word of the text comes first, then those whose name begins each word so, then
    /// the rest, each group in file order. When some of the words name a town, the entries in use there that
    /// hold the other words follow, as at() has them. Nothing for a text without words or a limit below 1.
    QVector<Hit> find(const QString &text, int limit) const;

    /// Entries with an EPSG code whose area of use holds a point (longitude and latitude in degrees), the
    /// smallest area first, in file order within one size. The areas come from the PROJ database on first
    /// call, which takes some 40 ms.
    QVector<Hit> at(const QPointF &lonLat, int limit) const;

private:
    struct Data;
    std::unique_ptr<Data> m_data;
};

} // namespace nivora::cs
