#include <coordsys/TABProjInfo.h>

namespace nivora::cs {
namespace {

constexpr std::uint8_t parameterCounts[] = {
    0, 0, 2, 6, 3, 3,
    6, 6, 5, 6, //  0 non-earth, longitude/latitude, equal-area, Lambert conic, polar, conics
    1, 1, 1, 1, 1, 1,
    1, 1, 4, 6, // 10 world projections, New Zealand grid, Belgian Lambert
    5, 5, 5, 5, 5, 4,
    2, 4, 3, 3,       // 20 stereographic, Danish and Finnish grids, Swiss, Mercator, polyconic, azimuthal
    4, 5, 6, 4, 5, 7, // 30 Cassini, double stereographic, Krovak, plate carrée, extended, oblique
};
static_assert(sizeof parameterCounts == 36, "one entry for each projection from 0 to 35");

} // namespace

bool isUserDatum(int datum) { return datum == 999 || datum == 9999; }

int paramForPrj(int projection)
{
    if (projection < 0 || projection >= static_cast<int>(sizeof parameterCounts))
        return 0;
    return parameterCounts[projection];
}

} // namespace nivora::cs
