#include "engines/Driver.h"

#include "engines/Engine.h"

#include <algorithm>
#include <cmath>
#include <tuple>

namespace catalogue {
namespace {

constexpr int wgs84 = 6326;        // EPSG datum
constexpr int wgs84Number = 104;   // also the driver's answer for what it does not know
constexpr int lastEllipsoid = 255; // the map header keeps it in a byte
constexpr int lastDatum = 2999;
constexpr double equalShift =
    0.011; // metres, arc-seconds, ppm: the driver's tables round at the second decimal
constexpr double sameAxis = 0.001;
constexpr double sameMeridian = 1.0e-8;

// Numbers that repeat the figures of a more usual one: Hayford, NWL, GRS 67 of South America, and the two
// markers of datum 0 and of the web Mercator.
const std::set<int> secondChoice{5, 24, 29, 42, 43, 48, 54};

bool isUserDatum(int number) { return number == 999 || number == 9999; }

} // namespace

Driver::Driver(const Epsg &epsg, const Shifts &shifts)
{
    readEllipsoids();
    readDatums();
    findAssociations(epsg);
    findEqualShifts(epsg, shifts);
}

const DriverDatum *Driver::datum(int number) const
{
    const auto found = m_datums.find(number);
    return found == m_datums.end() ? nullptr : &found->second;
}

int Driver::numberFor(int epsgDatum) const
{
    const auto found = m_numberFor.find(epsgDatum);
    return found == m_numberFor.end() ? -1 : found->second;
}

std::vector<int> Driver::ellipsoidsNear(const Ellipsoid &ellipsoid, double metres) const
{
    using Rank = std::tuple<bool, double, int>;
    std::vector<Rank> ranks;
    for (const auto &[number, named] : m_ellipsoids)
        if (named.axes.isNear(ellipsoid, metres))
            ranks.emplace_back(secondChoice.count(number) > 0,
                               std::round(1.0e5 * std::fabs(named.axes.semiMinor - ellipsoid.semiMinor)),
                               number);
    std::sort(ranks.begin(), ranks.end());
    std::vector<int> numbers;
    for (const Rank &rank : ranks)
        numbers.push_back(std::get<int>(rank));
    return numbers;
}

void Driver::readEllipsoids()
{
    for (int number = 0; number <= lastEllipsoid; ++number) {
        const auto srs =
            Srs::fromCoordSys(QStringLiteral("Earth Projection 1, 999, %1, 1, 2, 3").arg(number));
        if (srs && srs->attribute("SPHEROID") != QLatin1String("unknown"))
            m_ellipsoids[number] = {srs->attribute("SPHEROID"), {srs->semiMajor(), srs->semiMinor()}};
    }
}

void Driver::readDatums()
{
    for (int number = 0; number <= lastDatum; ++number) {
        const auto srs = Srs::fromCoordSys(QStringLiteral("Earth Projection 1, %1").arg(number));
        if (!srs || isUserDatum(number))
            continue;
        DriverDatum datum;
        datum.name = srs->attribute("DATUM");
        const QString spheroid = srs->attribute("SPHEROID");
        // 157 says WGS_1984 too, but on a spheroid of its own.
        if (number != wgs84Number && datum.name == QLatin1String("WGS_1984") &&
            spheroid == QLatin1String("WGS 84"))
            continue;
        datum.axes = {srs->semiMajor(), srs->semiMinor()};
        datum.meridian = srs->primeMeridian();
        const std::vector<double> f = srs->toWgs84();
        datum.figures = {f[0], f[1], f[2], 0.0 - f[3], 0.0 - f[4], 0.0 - f[5], f[6]};
        for (const auto &[id, named] : m_ellipsoids)
            if (named.name == spheroid && datum.ellipsoid < 0)
                datum.ellipsoid = id;
        m_datums[number] = datum;
    }
}

void Driver::findAssociations(const Epsg &epsg)
{
    for (const int code : epsg.allGeographic()) {
        const auto srs = Srs::fromEpsg(code);
        const QString text = srs ? srs->toCoordSys() : QString();
        const int number = text.section(QStringLiteral(", "), 1, 1).toInt();
        const int datum = epsg.datumOfSystem(code);
        if (!text.startsWith(QLatin1String("Earth Projection 1, ")) || isUserDatum(number) ||
            (number == wgs84Number && datum != wgs84))
            continue;
        m_numberFor.emplace(datum, number);
    }
}

void Driver::findEqualShifts(const Epsg &epsg, const Shifts &shifts)
{
    const auto equal = [](const Figures &a, const Figures &b) {
        return std::equal(a.begin(), a.end(), b.begin(),
                          [](double x, double y) { return std::fabs(x - y) <= equalShift; });
    };
    for (const int code : shifts.datums()) {
        const EpsgDatum *known = epsg.datum(code);
        for (auto &[number, datum] : m_datums) {
            if (!known || !datum.hasShift() || !datum.axes.isNear(known->ellipsoid, sameAxis) ||
                std::fabs(datum.meridian - known->meridian) > sameMeridian)
                continue;
            for (const Shift &shift : shifts.direct(code))
                if (equal(shift.figures, datum.figures))
                    datum.equals.push_back({code, shift.area});
        }
    }
}

} // namespace catalogue
