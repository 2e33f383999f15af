#pragma once

#include <coordsys/LinearUnit.h>

namespace nivora::cs {

/// The three units a map works with. A plain value; const calls may run together.
class NIVORA_CS_EXPORT MapUnits
{
public:
    /// Three invalid ones.
    MapUnits();
    /// Any of them may be invalid.
    MapUnits(const LinearUnit &coord, const LinearUnit &distance, const LinearUnit &area);
    /// Copies.
    MapUnits(const MapUnits &other);
    /// Copies.
    MapUnits &operator=(const MapUnits &other);
    ~MapUnits();

    /// The unit of coordinates.
    LinearUnit coordUnit() const;
    /// The unit of distances.
    LinearUnit distanceUnit() const;
    /// The unit of areas.
    LinearUnit areaUnit() const;
    /// Nothing is converted.
    void setCoordUnit(const LinearUnit &unit);
    /// Nothing is converted.
    void setDistanceUnit(const LinearUnit &unit);
    /// Nothing is converted.
    void setAreaUnit(const LinearUnit &unit);

    /// True when none of the three is valid.
    bool isNull() const;

private:
    struct Data;
    QSharedDataPointer<Data> m_data;
};

} // namespace nivora::cs
