#pragma once

#include <coordsys/LinearUnit.h>

namespace nivora::cs {

/// A number with its unit. A plain value; const calls may run together.
class NIVORA_CS_EXPORT LinearUnitValue
{
public:
    /// 0 in no unit.
    LinearUnitValue() = default;
    /// In a unit that is at hand.
    LinearUnitValue(double valueInUnits, const LinearUnit &unit);
    /// The unit is looked up in the catalogue, linear units before area units.
    /// Throws UnknownUnitException, and std::logic_error when no factory is installed.
    LinearUnitValue(double valueInUnits, LinearUnit::MIUnitCode code);

    /// Replaces number and unit.
    void set(double valueInUnits, const LinearUnit &unit);
    /// As the constructor; the old value stays when it throws.
    void set(double valueInUnits, LinearUnit::MIUnitCode code);

    /// In metres (square metres for an area unit).
    double value() const { return m_valueInUnits * m_unit.conversion(); }
    /// The number as it was given.
    double valueInUnits() const { return m_valueInUnits; }
    /// The unit as it was given.
    const LinearUnit &unit() const { return m_unit; }

private:
    double m_valueInUnits = 0.0;
    LinearUnit m_unit;
};

} // namespace nivora::cs
