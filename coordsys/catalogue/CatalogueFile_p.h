#pragma once

#include <coordsys/CoordSystemParams.h>

#include <QList>

class QFile;

namespace nivora::cs {

/// Appends the categories of an open catalogue, those without entries left out. Returns the number of
/// entries.
int readCatalogueFile(QFile &file, QList<CoordSystemParamsList> &categories);

} // namespace nivora::cs
