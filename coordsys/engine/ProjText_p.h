#pragma once

#include <coordsys/ProjEngine.h>

namespace nivora::cs {

/// As proj4FromString(), but for text that GDAL made from WKT: "+R_A" is part of what the WKT says and stays.
PjHandle proj4FromExport(const QString &proj);

/// PROJ text without the terms of a vertical part, blanks before them included.
QString withoutVerticalTerms(const QString &proj);

} // namespace nivora::cs
