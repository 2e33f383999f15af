#pragma once

#include "ProjOperation_p.h"
#include <coordsys/CoordSystemTypes.h>

namespace nivora::cs {

/// An operation between two systems that are not its own, by projections and changes of unit at its ends; the
/// way back where it fits the other way round. Throws std::logic_error, naming what it joins, where a datum
/// would have to be changed as well. Needs the PROJ lock.
PjHandle joinedWithEnds(const PJ *source, const PJ *operation, const PJ *target);

/// Whether a text is PROJ text.
bool isProjText(const QString &text);

/// A step of PROJ text as it stands. Throws std::logic_error when it is no operation, has no way back, or
/// takes a place of both systems elsewhere than any shift of a datum could. Needs the PROJ lock.
ProjOperation stepOfProjText(const QString &text, const CoordSystemPtr &from, const CoordSystemPtr &to);

} // namespace nivora::cs
