#pragma once

#include <QString>

namespace nivora::cs {

/// PROJ text of web Mercator as GDAL writes it, a Mercator on a sphere with grid tricks, turned into PROJ's
/// own spherical Mercator on WGS 84; terms that PROJ does not take there are dropped.
QString webMercatorText(const QString &proj);

} // namespace nivora::cs
