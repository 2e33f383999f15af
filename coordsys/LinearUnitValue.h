#pragma once

#include <coordsys/LinearUnit.h>

namespace nivora::cs {

/// A number with its unit. A plain value; const calls may run together.
class NIVORA_CS_EXPORT LinearUnitValue
{
public:
    /// 0 in no unit.
    LinearUnitValue();
    /// In a unit that is at hand.
    LinearUnitValue(double valueInUnits, const LinearUnit &unit);
    /// The unit is looked up in the catalogue, linear units before area units.
    /// Throws UnknownUnitException, and std::logic_error when no factory is installed.
    LinearUnitValue(double valueInUnits, LinearUnit::MIUnitCode code);
    /// Copies.
    LinearUnitValue(const LinearUnitValue &other);
    /// Copies.
    LinearUnitValue &operator=(const LinearUnitValue &other);
    ~LinearUnitValue();

    /// Replaces number and unit.
    void set(double valueInUnits, const LinearUnit &unit);
    /// As the constructor; the old value stays when it throws.
    void set(double valueInUnits, LinearUnit::MIUnitCode code);

    /// In metres (square metres for an area unit).
    double value() const;
    /// The number as it was given.
    double valueInUnits() const;
    /// The unit as it was given.
    const LinearUnit &unit() const;

private:
    struct Data;
    QSharedDataPointer<Data> m_data;
};

} // namespace nivora::cs
