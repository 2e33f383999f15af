#include "GuessReading_p.h"

#include "CoordSysTexts_p.h"

#include <algorithm>
#include <cmath>
#include <limits>
#include <optional>

namespace nivora::cs {
namespace {

using Numbers = GuessReading::Numbers;

constexpr double million = 1e6;
constexpr double metresPerFoot = 0.3048;
constexpr double nan = std::numeric_limits<double>::quiet_NaN();
/// Decimal degrees look like minutes and seconds by chance: two values in five, each.
constexpr std::size_t enoughForFractions = 6;

struct ReadingRow
{
    Numbers numbers;
    double doubt; ///< how much less likely than plain coordinates, natural logarithm
    std::optional<GuessAssumption> assumption;
};
constexpr ReadingRow rows[] = {
    {Numbers::AsTheyAre, 0.0, std::nullopt},
    {Numbers::Kilometres, 6.0, GuessAssumption::Kilometres},
    {Numbers::Feet, 7.0, GuessAssumption::Feet},
    {Numbers::PrefixMissing, 4.0, GuessAssumption::PrefixMissing},
    {Numbers::PrefixAdded, 4.0, GuessAssumption::PrefixAdded},
    {Numbers::PackedDms, 5.0, GuessAssumption::DegreesAsDms},
    {Numbers::FractionDms, 5.0, GuessAssumption::DegreesAsDms},
};
constexpr double doubtOfSwapping = 3.0;
constexpr double doubtOfDegreesAsLengths = 14.0;

/// Degrees, minutes and seconds in one number, \p scale to bring it to DDMMSS.
double degreesOfDms(double value, double scale)
{
    constexpr double aboutAMicrosecond = 1e-6;
    const double packed = std::fabs(value) * scale + aboutAMicrosecond;
    const double degrees = std::floor(packed / 10000.0);
    const double minutes = std::floor((packed - degrees * 10000.0) / 100.0);
    const double seconds = packed - degrees * 10000.0 - minutes * 100.0;
    if (minutes >= 60.0 || seconds >= 60.0 || degrees > 180.0)
        return nan;
    return std::copysign(degrees + minutes / 60.0 + seconds / 3600.0, value);
}

constexpr double fractionScale = 10000.0;

QPointF fromDms(const QPointF &point, double scale)
{
    return {degreesOfDms(point.x(), scale), degreesOfDms(point.y(), scale)};
}

bool isPossible(const GuessReading &reading, const std::vector<QPointF> &sample)
{
    const bool isPacked = reading.numbers == Numbers::PackedDms;
    const bool isFraction = reading.numbers == Numbers::FractionDms;
    if (!isPacked && !isFraction)
        return true;
    const auto isDms = [&](const QPointF &point) {
        const QPointF degrees = fromDms(point, isPacked ? 1.0 : fractionScale);
        const bool hasMinutes = !isPacked || std::fabs(point.x()) > 1000.0 || std::fabs(point.y()) > 1000.0;
        return hasMinutes && std::isfinite(degrees.x() + degrees.y());
    };
    return (isPacked || sample.size() >= enoughForFractions) &&
           std::all_of(sample.begin(), sample.end(), isDms);
}

} // namespace

QString assumptionText(GuessAssumption assumption)
{
    switch (assumption) {
    case GuessAssumption::Swapped:
        return CoordSysTexts::tr("оси переставлены");
    case GuessAssumption::Kilometres:
        return CoordSysTexts::tr("координаты в километрах");
    case GuessAssumption::Feet:
        return CoordSysTexts::tr("координаты в футах");
    case GuessAssumption::PrefixMissing:
        return CoordSysTexts::tr("номер зоны перед координатой опущен");
    case GuessAssumption::PrefixAdded:
        return CoordSysTexts::tr("перед координатой добавлен номер зоны");
    case GuessAssumption::DegreesAsDms:
        return CoordSysTexts::tr("градусы, минуты и секунды одним числом");
    }
    return {};
}

QVector<GuessAssumption> GuessReading::assumptions() const
{
    QVector<GuessAssumption> list;
    if (isSwapped)
        list << GuessAssumption::Swapped;
    for (const ReadingRow &row : rows)
        if (row.numbers == numbers && row.assumption)
            list << *row.assumption;
    return list;
}

std::vector<GuessReading> readingsOf(const std::vector<QPointF> &sample, bool isSwapped)
{
    std::vector<GuessReading> readings;
    for (const ReadingRow &row : rows)
        for (const bool swaps : {false, true}) {
            const GuessReading reading{row.numbers, swaps,
                                       row.doubt + (swaps && !isSwapped ? doubtOfSwapping : 0.0)};
            if ((swaps || !isSwapped) && isPossible(reading, sample))
                readings.push_back(reading);
        }
    return readings;
}

double doubtOfLengths(const std::vector<QPointF> &sample)
{
    const auto isDegrees = [](const QPointF &point) {
        return std::fabs(point.x()) <= 180.0 && std::fabs(point.y()) <= 180.0;
    };
    return std::all_of(sample.begin(), sample.end(), isDegrees) ? doubtOfDegreesAsLengths : 0.0;
}

bool isReadingFor(const GuessReading &reading, const PlaneOfSystem &system, const Plane &plane)
{
    switch (reading.numbers) {
    case Numbers::AsTheyAre:
        return true;
    case Numbers::Kilometres:
    case Numbers::Feet:
        return system.metresPerUnit == 1.0;
    case Numbers::PrefixMissing:
        return plane.falseZone > 0 && system.metresPerUnit == 1.0;
    case Numbers::PrefixAdded:
        return !plane.zones.empty() && system.metresPerUnit == 1.0;
    case Numbers::PackedDms:
    case Numbers::FractionDms:
        return system.metresPerUnit == 0.0;
    }
    return false;
}

QPointF readPoint(const GuessReading &reading, const QPointF &asGiven, const Plane &plane)
{
    const QPointF point = reading.isSwapped ? QPointF(asGiven.y(), asGiven.x()) : asGiven;
    switch (reading.numbers) {
    case Numbers::AsTheyAre:
        break;
    case Numbers::Kilometres:
        return point * 1000.0;
    case Numbers::Feet:
        return point * metresPerFoot;
    case Numbers::PrefixMissing:
        return {point.x() + plane.falseZone * million, point.y()};
    case Numbers::PrefixAdded: {
        const double prefix = std::floor(point.x() / million);
        const bool isZone = std::any_of(plane.zones.begin(), plane.zones.end(),
                                        [prefix](int zone) { return zone == static_cast<int>(prefix); });
        return {isZone ? point.x() - prefix * million : nan, point.y()};
    }
    case Numbers::PackedDms:
        return fromDms(point, 1.0);
    case Numbers::FractionDms:
        return fromDms(point, fractionScale);
    }
    return point;
}

} // namespace nivora::cs
