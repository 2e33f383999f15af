#pragma once

#include "reading/Table.h"

#include <QRegularExpression>

#include <map>
#include <set>

namespace catalogue {

/// Where the area of a system lies: the region of longitude/latitude lists, the category of grids.
struct Place
{
    QString region;
    QString category;
};

/// Countries and seas by the beginning of the names that EPSG gives to areas.
class Places
{
public:
    explicit Places(const QString &tables);

    /// The longest known prefix of the area's name decides; \p known becomes false when there is none.
    Place of(const QString &area, bool &known) const;
    /// Names of countries and regions inside \p text in Russian.
    QString translated(QString text) const;

private:
    std::map<QString, Place> m_places;
    std::vector<std::pair<QRegularExpression, QString>> m_russian; ///< longer names first
};

/// A category of the files and what belongs to it.
struct Category
{
    QString id;
    QString nameRu;
    QString nameEn;
    QRegularExpression names;
    QRegularExpression areas;
    bool hasRule = false;
};

/// Sorts systems into categories.
class Categories
{
public:
    Categories(const QString &tables, const Places &places);

    const std::vector<Category> &list() const { return m_list; }
    /// Index of a category; throws Failure for an unknown id.
    int index(const QString &id) const;
    /// The category of a system with this name and area.
    int of(const QString &name, const QString &area, bool projected) const;
    /// Areas that no prefix fitted, met so far.
    const std::set<QString> &unknownAreas() const { return m_unknownAreas; }

private:
    const Places &m_places;
    std::vector<Category> m_list;
    std::map<QString, int> m_index;
    mutable std::set<QString> m_unknownAreas;
};

} // namespace catalogue
