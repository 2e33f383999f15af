#include <coordsys/LinearUnitValue.h>

#include <coordsys/CatalogueSource.h>
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

LinearUnitValue::LinearUnitValue(double valueInUnits, const LinearUnit &unit)
    : m_valueInUnits(valueInUnits)
    , m_unit(unit)
{}

LinearUnitValue::LinearUnitValue(double valueInUnits, LinearUnit::MIUnitCode code)
    : LinearUnitValue(valueInUnits, unitByCode(code))
{}

void LinearUnitValue::set(double valueInUnits, const LinearUnit &unit)
{
    m_valueInUnits = valueInUnits;
    m_unit = unit;
}

void LinearUnitValue::set(double valueInUnits, LinearUnit::MIUnitCode code)
{
    set(valueInUnits, unitByCode(code));
}

} // namespace nivora::cs
