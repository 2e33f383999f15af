#include "DriverText_p.h"

#include "ProjectionTable_p.h"
#include <coordsys/LinearUnit.h>
#include <coordsys/MapHeaderCoordsysConverter.h>

#include <cmath>
#include <utility>

namespace nivora::cs {
namespace {

constexpr std::uint8_t unsetUnit = 255; // written as metres
constexpr std::int16_t philippineDatum = 1031;
constexpr std::int16_t userDatum = 9999;

bool isMetric(std::uint8_t unit) { return unit == LinearUnit::Meter || unit == unsetUnit; }

} // namespace

QString mitabCoordSys(const TABProjInfo_t &info)
{
    TABProjInfo_t driver = info;
    driver.nAffineFlag = 0;
    driver.nBoundsFlag = 0;
    if (driver.nProjId == ExtendedTransverseMercator)
        driver.nProjId = TransverseMercator;

    double &parallel1 = driver.adProjParams[2];
    double &parallel2 = driver.adProjParams[3];
    if (driver.nProjId == LambertConic && !isMetric(driver.nUnitsId) &&
        std::fabs(parallel1) < std::fabs(parallel2))
        std::swap(parallel1, parallel2);
    if (driver.nDatumId == philippineDatum && driver.nProjId > LongitudeLatitude)
        driver.nDatumId = userDatum; // the record holds its figures
    return MapHeaderCoordsysConverter().tabProjInfoToString(driver);
}

} // namespace nivora::cs
