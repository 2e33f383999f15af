#pragma once

#include "SharedSearch_p.h"
#include <coordsys/CoordSystemCatalogModel.h>
#include <coordsys/MapinfoSearch.h>

#include <QHash>
#include <QStringList>
#include <QVector>

#include <memory>
#include <optional>

namespace nivora::cs {

/// What a catalogue model has to read before it can list the EPSG database, search and tell areas: some 0.2 s
/// of work that needs the PROJ lock for a part of it. Made on a thread of its own, only read afterwards.
class CatalogIndex
{
public:
    struct System
    {
        QString id; ///< "EPSG:4326"
        QString name;
        int code; ///< of EPSG's, EPSG_UNDEFINDED for another authority's
        CoordSystemCatalogModel::Kind kind;
        QRectF area;
    };
    /// Behind the countries of EPSG's systems the other authorities with theirs.
    struct Country
    {
        QString name;
        QVector<System> systems;
    };
    /// Where the section of the database has a system.
    struct Row
    {
        int country;
        int row;
    };

    /// \p resources holds the names in other languages and the towns; what is not there is left out.
    CatalogIndex(const CataloguePtr &catalogue, const QDir &resources, const QString &language);
    /// The same for all models of a catalogue, made when it is asked for first. Thread-safe.
    static std::shared_ptr<const CatalogIndex> of(const CataloguePtr &catalogue, const QDir &resources,
                                                  const QString &language);

    const QVector<Country> &countries() const { return m_countries; }
    /// Nothing for a code ("ESRI:54030") that the catalogue has, or nobody.
    std::optional<Row> uncatalogued(const QString &id) const
    {
        const auto found = m_uncatalogued.constFind(id);
        return found == m_uncatalogued.constEnd() ? std::nullopt : std::optional<Row>(*found);
    }
    const System &system(int country, int row) const { return m_countries.at(country).systems.at(row); }
    const MapinfoSearch &search() const { return *m_search; }
    /// Area of use of a code, null when unknown.
    QRectF area(int code) const { return m_areas.value(code); }

private:
    void readDatabase();
    void readOthers();
    void addGroup(const QString &name, QVector<System> systems);
    void noteUncatalogued(const MapinfoCoordSystem &catalogue);

    std::shared_ptr<const MapinfoSearch> m_search;
    QVector<Country> m_countries;
    QHash<QString, Row> m_uncatalogued;
    QHash<int, QRectF> m_areas;
};

/// Words as they are compared: accents dropped, case folded, whatever is no letter or digit a blank.
QString searchText(const QString &text);
bool holdsWords(const QString &searchText, const QStringList &words);

} // namespace nivora::cs
