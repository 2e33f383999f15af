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

} // namespace nivora::cs
