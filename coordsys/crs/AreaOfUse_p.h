#pragma once

#include "GeographicExtent_p.h"

#include <proj.h>

#include <optional>

namespace nivora::cs {

/// The area of use of a system or an operation, in degrees; none where it names none. Needs the lock of the
/// context.
inline std::optional<QRectF> areaOfUse(PJ_CONTEXT *context, const PJ *object)
{
    constexpr double leastDeg = -180.0; // PROJ has -1000 for none
    double west = 0.0, south = 0.0, east = 0.0, north = 0.0;
    if (!object || !proj_get_area_of_use(context, object, &west, &south, &east, &north, nullptr) ||
        west < leastDeg)
        return std::nullopt;
    return eastward(QRectF(QPointF(west, south), QPointF(east, north)));
}

} // namespace nivora::cs
