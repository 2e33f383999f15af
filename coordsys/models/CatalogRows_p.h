#pragma once

#include <coordsys/CoordSystemCatalogModel.h>

namespace nivora::cs {

// What a row is lies in its internal id: 0 for a section, 1 + section for a group, and for a system
// SectionCount + 1 + section + SectionCount * group. Nothing is kept per row.
constexpr quintptr groupBase = 1;
constexpr quintptr systemBase = groupBase + CoordSystemCatalogModel::SectionCount;

enum class Level { Root, Section, Group, System };

inline Level levelOf(const QModelIndex &index)
{
    if (!index.isValid())
        return Level::Root;
    const quintptr id = index.internalId();
    return id == 0 ? Level::Section : id < systemBase ? Level::Group : Level::System;
}

/// Meaningless for the root.
inline CoordSystemCatalogModel::Section sectionOf(const QModelIndex &index)
{
    const quintptr id = index.internalId();
    const quintptr section = id == 0           ? static_cast<quintptr>(index.row())
                             : id < systemBase ? id - groupBase
                                               : (id - systemBase) % CoordSystemCatalogModel::SectionCount;
    return static_cast<CoordSystemCatalogModel::Section>(section);
}

inline int groupOf(const QModelIndex &system)
{
    return static_cast<int>((system.internalId() - systemBase) / CoordSystemCatalogModel::SectionCount);
}

/// "ESRI:54030", which no tagged string can be.
bool isOtherCode(const QString &text);
/// "EPSG:4326"
inline QString epsgTag(int code) { return QStringLiteral("EPSG:%1").arg(code); }

} // namespace nivora::cs
