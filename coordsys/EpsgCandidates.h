#pragma once

#include <coordsys/CoordSystemTypes.h>
#include <platform/Utils.h>

#include <QList>
#include <QString>

#include <memory>

namespace nivora::cs {

/// A code that resembles a system, for people to choose from. A plain value.
struct EpsgCandidate
{
    int code = CoordSystemTypes::EPSG_UNDEFINDED; ///< EPSG's
    QString name;                                 ///< the database's
    int confidence = 0; ///< PROJ's, in percent: 100 the same, 90 equivalent, 70 but for the name, 25 similar
};

/// The EPSG codes that PROJ finds for a system, the most likely first; any shift to WGS 84 is left aside.
/// CoordSystem::epsg() answers only what is certain, this tells what may be meant. Empty when there is
/// nothing, and when cancelled. Up to a second, in a context of its own; thread-safe; never throws.
NIVORA_CS_EXPORT QList<EpsgCandidate>
epsgCandidates(const CoordSystem &cs,
               const std::shared_ptr<nivora::concurrent::ProgressHandler> &progress = nullptr);

} // namespace nivora::cs
