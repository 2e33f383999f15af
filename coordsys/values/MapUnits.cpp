#include <coordsys/MapUnits.h>

namespace nivora::cs {

MapUnits::MapUnits(const LinearUnit &coord, const LinearUnit &distance, const LinearUnit &area)
    : m_coord(coord)
    , m_distance(distance)
    , m_area(area)
{}

bool MapUnits::isNull() const { return !m_coord.isValid() && !m_distance.isValid() && !m_area.isValid(); }

} // namespace nivora::cs
