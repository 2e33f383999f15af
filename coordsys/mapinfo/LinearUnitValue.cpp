#include <coordsys/LinearUnitValue.h>

#include "CatalogueSource_p.h"
#include <coordsys/ProjectionParamsManager.h>

namespace nivora::cs {
namespace {

LinearUnit unitByCode(LinearUnit::MIUnitCode code)
{
    const auto catalogue = activeCatalogues()->projectionParamsManager();
    if (const MIUnitConvParam *linear = catalogue->unitByID(code, std::nothrow))
        return *linear;
    if (const MIAreaConvParam *area = catalogue->areaUnitByID(code, std::nothrow))
        return *area;
    throw UnknownUnitException(code);
}

} // namespace

struct NIVORA_CS_NO_EXPORT LinearUnitValue::Data : QSharedData
{
    double valueInUnits = 0.0;
    LinearUnit unit;
};

LinearUnitValue::LinearUnitValue()
    : m_data(new Data)
{}

LinearUnitValue::LinearUnitValue(double valueInUnits, const LinearUnit &unit)
    : m_data(new Data)
{
    set(valueInUnits, unit);
}

LinearUnitValue::LinearUnitValue(const LinearUnitValue &other) = default;

LinearUnitValue &LinearUnitValue::operator=(const LinearUnitValue &other) = default;

LinearUnitValue::~LinearUnitValue() = default;

double LinearUnitValue::value() const { return m_data->valueInUnits * m_data->unit.conversion(); }

double LinearUnitValue::valueInUnits() const { return m_data->valueInUnits; }

const LinearUnit &LinearUnitValue::unit() const { return m_data->unit; }

LinearUnitValue::LinearUnitValue(double valueInUnits, LinearUnit::MIUnitCode code)
    : LinearUnitValue(valueInUnits, unitByCode(code))
{}

void LinearUnitValue::set(double valueInUnits, const LinearUnit &unit)
{
    m_data->valueInUnits = valueInUnits;
    m_data->unit = unit;
}

void LinearUnitValue::set(double valueInUnits, LinearUnit::MIUnitCode code)
{
    set(valueInUnits, unitByCode(code));
}

} // namespace nivora::cs
