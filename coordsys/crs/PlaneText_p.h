#pragma once

#include <QString>

namespace nivora::cs {

/// True when two PROJ texts say the same plane on the same ellipsoid, term by term: datums and shifts are
/// left aside, a zone of UTM is written out, terms that stand for nothing (+x_0=0) may be missing. False
/// tells nothing: one plane has many texts. A tenth of the cost of a comparison by the engine.
bool saySamePlane(const QString &projA, const QString &projB);

} // namespace nivora::cs
