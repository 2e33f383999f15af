#pragma once

#include <coordsys/CoordSystemTypes.h>

namespace nivora::cs {

/// The stored word for a source type: "prj", "proj", "epsg", "wkt", "oracle", else "unknown". Thread-safe.
NIVORA_CS_EXPORT QString sourceTypeToString(CoordSystemTypes::SourceType type);
/// The source type for a stored word in any letter case, Unknown when there is none. Thread-safe.
NIVORA_CS_EXPORT CoordSystemTypes::SourceType stringToSourceType(const QString &tag);

} // namespace nivora::cs
