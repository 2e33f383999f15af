#pragma once

#include <coordsys/CoordSystemCatalogModel.h>

#include <QVector>

namespace nivora::cs {

/// The systems chosen last, the latest first, in the application's default QSettings. Entries without a text
/// are passed over.
QVector<CoordSystemCatalogModel::RecentSystem> loadRecentSystems();
/// Puts one at the head, in place of an older one with the same text, and returns what is kept then.
QVector<CoordSystemCatalogModel::RecentSystem>
addRecentSystem(const CoordSystemCatalogModel::RecentSystem &system);

/// Takes one away, and returns what is kept then.
QVector<CoordSystemCatalogModel::RecentSystem> removeRecentSystem(const QString &tagged);
/// Pinned ones stay ahead of the others, however many come; a system that is not there yet is added.
QVector<CoordSystemCatalogModel::RecentSystem> pinSystem(const CoordSystemCatalogModel::RecentSystem &system,
                                                         bool isPinned);
bool isPinnedSystem(const QString &tagged);

} // namespace nivora::cs
