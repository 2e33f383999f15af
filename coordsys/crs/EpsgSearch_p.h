#pragma once

#include <platform/Utils.h>

#include <QString>

#include <memory>

namespace nivora::cs {

class CrsDefinition;

/// The EPSG code that PROJ and GDAL find for a definition (WKT) by its names and figures, as CodeAcceptance
/// takes it; the code that the definition states is left aside. Else EPSG_UNDEFINDED. Remembered with the
/// active catalogues, whose entries it may ask. Works in a context of its own, so nobody's points wait for
/// it; thread-safe. Never throws. \p known is what was read from the definition, if it was.
int epsgOfDefinition(const std::shared_ptr<nivora::concurrent::ProgressHandler> &progress,
                     const QString &definition, const CrsDefinition *known = nullptr);

} // namespace nivora::cs
