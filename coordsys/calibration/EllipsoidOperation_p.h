#pragma once

#include <coordsys/ProjEngine.h>

#include <QString>

#include <array>

namespace nivora::cs {

/// One of PROJ's operations on an ellipsoid, as it takes and gives numbers: radians and metres. Thread-safe.
class EllipsoidOperation
{
public:
    /// \p terms: "+proj=cart" and the like. 0 for the inverse flattening of a sphere.
    EllipsoidOperation(const QString &terms, double semiMajorM, double inverseFlattening);

    using Numbers = std::array<double, 3>;
    /// Not finite where the operation fails.
    Numbers forward(const Numbers &in) const { return trans(1, in); }
    Numbers inverse(const Numbers &in) const { return trans(-1, in); }

private:
    Numbers trans(int direction, const Numbers &in) const;

    PjHandle m_pj;
};

} // namespace nivora::cs
