#pragma once

#include <QString>

#include <cmath>

namespace nivora::cs {

/// A number of a CoordSys string. Text that is no finite number counts as 0, "nan" and an overflow included;
/// so does "-0", which GDAL writes and which would make records differ that mean the same.
inline double prjNumber(const QString &text)
{
    const double value = text.toDouble();
    return std::isfinite(value) ? value + 0.0 : 0.0;
}

} // namespace nivora::cs
