#pragma once

#include <coordsys/LinearUnit.h>

namespace nivora::cs {

/// The three units a map works with. A plain value; const calls may run together.
class NIVORA_CS_EXPORT MapUnits
{
public:
    MapUnits() = default;
    MapUnits(const LinearUnit &coord, const LinearUnit &distance, const LinearUnit &area);

    LinearUnit coordUnit() const { return m_coord; }
    LinearUnit distanceUnit() const { return m_distance; }
    LinearUnit areaUnit() const { return m_area; }
    void setCoordUnit(const LinearUnit &unit) { m_coord = unit; }
    void setDistanceUnit(const LinearUnit &unit) { m_distance = unit; }
    void setAreaUnit(const LinearUnit &unit) { m_area = unit; }

    /// True when none of the three is valid.
    bool isNull() const;

private:
    LinearUnit m_coord;
    LinearUnit m_distance;
    LinearUnit m_area;
};

} // namespace nivora::cs
