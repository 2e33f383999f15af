#pragma once

#include <coordsys/CoordSystemParams.h>

#include <QList>
#include <QString>

namespace nivora::cs {

/// Appends the categories of a MapInfo catalogue's text, those without entries left out, as
/// MapinfoPrjReader reads them, at a quarter of its cost. Returns the number of entries, or -1 with nothing
/// appended for a text that is left to the reader: one with control characters or line ends of other kinds.
int scanCategories(const QString &text, QList<CoordSystemParamsList> &categories);

} // namespace nivora::cs
