#pragma once

#include <coordsys/coordsys_export.h>

namespace nivora::cs {

/// Finds the directories that hold "proj.db", writes them to PROJ_LIB (joined by ':', also when there are
/// none) and tells the library's context and GDAL of them. Reads NIVORA_DATA and the application setting
/// "proj/ProjDataDir". A directory whose database PROJ refuses is left out and logged. Start-up only. Throws
/// std::logic_error when PROJ finds no database it can use.
NIVORA_CS_EXPORT void initProjLibEnvironment();

/// Sets GDAL's option MITAB_SET_TOWGS84_ON_KNOWN_DATUM, so that numbered MapInfo datums keep their shifts.
/// Start-up only.
NIVORA_CS_EXPORT void setMitabEnvVariable();

} // namespace nivora::cs
