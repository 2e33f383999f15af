#pragma once

#include <platform/Utils.h>

#include <QString>

#include <memory>

namespace nivora::cs {

/// The EPSG code that PROJ identifies a spatial reference by its names and figures, at least 70 % sure; else
/// EPSG_UNDEFINDED. For texts that name their datum (WKT): PROJ text does not. Works in a context of its own,
/// so nobody's points wait for it; thread-safe. Never throws.
int identifiedEpsg(const std::shared_ptr<nivora::concurrent::ProgressHandler> &progress, const QString &wkt);

} // namespace nivora::cs
