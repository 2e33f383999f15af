#include <coordsys/MapUnits.h>

namespace nivora::cs {

struct NIVORA_CS_NO_EXPORT MapUnits::Data : QSharedData
{
    LinearUnit coord;
    LinearUnit distance;
    LinearUnit area;
};

MapUnits::MapUnits()
    : m_data(new Data)
{}

MapUnits::MapUnits(const LinearUnit &coord, const LinearUnit &distance, const LinearUnit &area)
    : m_data(new Data)
{
    m_data->coord = coord;
    m_data->distance = distance;
    m_data->area = area;
}

MapUnits::MapUnits(const MapUnits &other) = default;

MapUnits &MapUnits::operator=(const MapUnits &other) = default;

MapUnits::~MapUnits() = default;

LinearUnit MapUnits::coordUnit() const { return m_data->coord; }

LinearUnit MapUnits::distanceUnit() const { return m_data->distance; }

LinearUnit MapUnits::areaUnit() const { return m_data->area; }

void MapUnits::setCoordUnit(const LinearUnit &unit) { m_data->coord = unit; }

void MapUnits::setDistanceUnit(const LinearUnit &unit) { m_data->distance = unit; }

void MapUnits::setAreaUnit(const LinearUnit &unit) { m_data->area = unit; }

bool MapUnits::isNull() const { return !m_data->coord && !m_data->distance && !m_data->area; }

} // namespace nivora::cs
