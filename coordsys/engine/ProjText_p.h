#pragma once

#include <coordsys/ProjEngine.h>

#include <functional>

namespace nivora::cs {

/// As proj4FromString(), but for text that GDAL made from WKT: "+R_A" is part of what the WKT says and stays.
PjHandle proj4FromExport(const QString &proj);

/// True for text of the earth without a datum: fixedProjString() takes its shift to WGS 84 for zero.
bool lacksDatum(const QString &proj);
/// True for text that states a shift of zero for a datum that it names.
bool statesZeroShift(const QString &proj);

/// PROJ text without the terms of a vertical part and without a title, blanks before them included.
QString systemTerms(const QString &proj);

/// The words of "+title=My zone", up to the next term, which PROJ would take for a part of them.
QString titleIn(const QString &proj);
QString withoutTitle(const QString &proj);

/// "+zone=37 +south" as zone, 37 and south, "".
void forEachTerm(const QString &proj,
                 const std::function<void(const QString &name, const QString &value)> &take);

} // namespace nivora::cs
