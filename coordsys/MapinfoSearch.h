#pragma once

#include <coordsys/CoordSystemParams.h>

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
    struct Hit
    {
        std::pair<int, int> position; ///< category and index, as MapinfoCoordSystem takes them
        QString category;
        QString name;
        int epsg = CoordSystemTypes::EPSG_UNDEFINDED;
    };

    explicit MapinfoSearch(const MapinfoCoordSystem &catalogue);
    ~MapinfoSearch();
    MapinfoSearch(const MapinfoSearch &) = delete;
    MapinfoSearch &operator=(const MapinfoSearch &) = delete;

    /// Entries that hold all words of \p text in name, category or code, in any order and as parts of words;
    /// letter case and accents do not count. An entry whose code is a word of the text comes first, then
    /// those whose name begins each word so, then the rest, each group in file order. Nothing for a text
    /// without words or a limit below 1.
    QVector<Hit> find(const QString &text, int limit) const;

    /// Entries with an EPSG code whose area of use holds a point (longitude and latitude in degrees), the
    /// smallest area first, in file order within one size. The areas come from the PROJ database on first
    /// call.
    QVector<Hit> at(const QPointF &lonLat, int limit) const;

private:
    struct Data;
    std::unique_ptr<Data> m_data;
};

} // namespace nivora::cs
