#pragma once

#include <coordsys/CoordSystemTypes.h>

class QModelIndex;
class QPoint;
class QWidget;

namespace nivora::cs {

class CoordSystemCatalogModel;

/// The menu of a row: its system in a notation to the clipboard, a recent one pinned or taken away, one of
/// the user's own renamed, changed or deleted in the file as other windows have left it. Waits until it is
/// closed.
void runSystemMenu(QWidget *parent, CoordSystemCatalogModel &model, const QModelIndex &row,
                   const CoordSystemPtr &system, const QPoint &at);

} // namespace nivora::cs
