#pragma once

#include "engines/Engine.h"
#include "reading/Epsg.h"

namespace catalogue {

/// Compares what is read from CoordSys text with the definition of a system.
class PlaneCheck
{
public:
    PlaneCheck(const EpsgSystem &system, const EpsgDatum &datum, const Srs &definition);

    /// Empty when \p srs is exact, else what is wrong. \p tolerance in metres holds for the semi-axes; the
    /// plane must agree within a millimetre, or the tolerance if that is larger.
    QString fault(const std::optional<Srs> &srs, double tolerance) const;
    /// The plane alone: for definitions that scale the ellipsoid.
    QString planeFault(const Srs &srs, double tolerance) const;

private:
    const EpsgSystem &m_system;
    const EpsgDatum &m_datum;
    Points m_grid;
    Points m_expected;
};

} // namespace catalogue
