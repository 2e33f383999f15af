#pragma once

#include <coordsys/LinearUnit.h>

namespace nivora::cs {

/// The three units a map works with. A plain value; const calls may run together.
class NIVORA_CS_EXPORT MapUnits
{
public:
    MapUnits() = default;
    /// Any of them may be invalid.
    MapUnits(const LinearUnit &coord, const LinearUnit &distance, const LinearUnit &area);

    /// The unit of coordinates.
    LinearUnit coordUnit() const { return m_coord; }
    /// The unit of distances.
    LinearUnit distanceUnit() const { return m_distance; }
    /// The unit of areas.
    LinearUnit areaUnit() const { return m_area; }
    /// Nothing is converted.
    void setCoordUnit(const LinearUnit &unit) { m_coord = unit; }
    /// Nothing is converted.
    void setDistanceUnit(const LinearUnit &unit) { m_distance = unit; }
    /// Nothing is converted.
    void setAreaUnit(const LinearUnit &unit) { m_area = unit; }

    /// True when none of the three is valid.
    bool isNull() const;

private:
    LinearUnit m_coord;
    LinearUnit m_distance;
    LinearUnit m_area;
};

} // namespace nivora::cs
