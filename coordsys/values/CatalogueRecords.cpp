#include <coordsys/CatalogueRecords.h>

#include <cmath>
#include <initializer_list>

namespace nivora::cs {
namespace {

bool anyNonZero(std::initializer_list<double> values)
{
    for (const double value : values)
        if (!(std::fabs(value) <= 1e-12)) // written so that NaN counts
            return true;
    return false;
}

} // namespace

bool MIDatumParam::has3Params() const { return anyNonZero({dx, dy, dz}); }
bool MIDatumParam::has7Params() const { return has3Params() && anyNonZero({rx, ry, rz, sa}); }

} // namespace nivora::cs
