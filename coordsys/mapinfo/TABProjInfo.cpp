#include <coordsys/TABProjInfo.h>

#include "ProjectionTable_p.h"

namespace nivora::cs {

bool isUserDatum(int datum) { return datum == 999 || datum == 9999; }

int paramForPrj(int projection)
{
    const Projection *const row = projectionByNumber(projection);
    return row ? row->count() : 0;
}

} // namespace nivora::cs
