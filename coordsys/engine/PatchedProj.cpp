#include "PatchedProj_p.h"

#ifndef NIVORA_NO_PATCHED_ENGINES
// Null when the PROJ at hand is not patched.
extern "C" {
__attribute__((weak)) int proj_pj_is_radian_left(PJ *pj, int direction);
__attribute__((weak)) int proj_pj_is_radian_right(PJ *pj, int direction);
}
#endif

namespace nivora::cs {

bool takesRadians(PJ *pj, int direction)
{
#ifndef NIVORA_NO_PATCHED_ENGINES
    if (proj_pj_is_radian_left)
        return proj_pj_is_radian_left(pj, direction) != 0;
#endif
    return proj_angular_input(pj, static_cast<PJ_DIRECTION>(direction)) != 0;
}

bool givesRadians(PJ *pj, int direction)
{
#ifndef NIVORA_NO_PATCHED_ENGINES
    if (proj_pj_is_radian_right)
        return proj_pj_is_radian_right(pj, direction) != 0;
#endif
    return proj_angular_output(pj, static_cast<PJ_DIRECTION>(direction)) != 0;
}

} // namespace nivora::cs
