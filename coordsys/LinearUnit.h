#pragma once

#include <coordsys/Error.h>

#include <QSharedDataPointer>
#include <QString>

#include <stdexcept>

namespace nivora::cs {

/// A unit of length or of area: names, factor to (square) metres and MapInfo's number for it. A plain value;
/// const calls may run together. Units normally come from ProjectionParamsManager.
class NIVORA_CS_EXPORT LinearUnit
{
public:
    /// MapInfo's unit numbers that the library itself uses.
    enum MIUnitCode {
        Mile = 0,
        Kilometer = 1,
        Inch = 2,
        Foot = 3,
        Yard = 4,
        Millimeter = 5,
        Centimeter = 6,
        Meter = 7,
        SurveyFoot = 8,
        NauticalMile = 9,
        Degree = 13,
        Link = 30,
        Chain = 31,
        Rod = 32
    };

    /// No unit: empty names, factor 0, code -1.
    LinearUnit();
    /// Not valid until setUnitCode(). Throws as setName and setConversion do.
    LinearUnit(QString name, QString description, double conversion);
    /// Shares the figures until one of the two is changed.
    LinearUnit(const LinearUnit &other);
    /// Copies.
    LinearUnit &operator=(const LinearUnit &other);
    ~LinearUnit();

    /// The name in texts and files.
    const QString &name() const;
    /// Throws std::invalid_argument "name" when empty; the old name stays.
    void setName(QString name);
    /// The name for people; "°" for degrees.
    const QString &localizedName() const;
    /// Any text, empty too.
    void setLocalizedName(const QString &name);
    /// A word or two for people.
    const QString &description() const;
    /// Any text, empty too.
    void setDescription(const QString &description);
    /// Metres per unit, square metres per unit for an area unit.
    double conversion() const;
    /// Throws std::invalid_argument "conversion" when negative or not a number; the old factor stays.
    void setConversion(double conversion);
    /// MapInfo's number, -1 for none.
    int unitCode() const;
    /// Not checked against any catalogue.
    void setUnitCode(int code);

    /// Any code but -1.
    bool isValid() const { return unitCode() != -1; }
    /// isValid()
    explicit operator bool() const { return isValid(); }
    /// True when the localized name is exactly "°".
    bool isDegree() const;

    /// Equal codes; names and factors are not looked at.
    friend bool operator==(const LinearUnit &a, const LinearUnit &b) { return a.unitCode() == b.unitCode(); }
    /// Unequal codes.
    friend bool operator!=(const LinearUnit &a, const LinearUnit &b) { return !(a == b); }
    /// Small units first.
    friend bool operator<(const LinearUnit &a, const LinearUnit &b)
    {
        return a.conversion() < b.conversion();
    }

private:
    struct Data;
    QSharedDataPointer<Data> m_data;
};

/// A unit that no catalogue knows: "Неизвестная единица измерения: NAME", or "#CODE" in place of the name.
class NIVORA_CS_EXPORT UnknownUnitException : public std::logic_error, public Error
{
public:
    /// By the name that was looked for.
    explicit UnknownUnitException(const QString &name);
    /// By the code that was looked for.
    explicit UnknownUnitException(int code);
};

} // namespace nivora::cs
