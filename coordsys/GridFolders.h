#pragma once

#include <coordsys/coordsys_export.h>

#include <QStringList>

namespace nivora::cs {

/// Another folder in which PROJ finds grid files, before those that it looks in already. Start-up only,
/// behind initProjLibEnvironment(), which takes the application setting "proj/GridDir" itself. Throws
/// std::invalid_argument "Нет каталога …" for what is no folder.
NIVORA_CS_EXPORT void addGridFolder(const QString &folder);

/// The folders in which PROJ looks for grid files, in its order.
NIVORA_CS_EXPORT QStringList gridFolders();

/// Where "projsync" puts what it fetches.
NIVORA_CS_EXPORT QString gridDownloadFolder();

/// Whether PROJ may fetch pieces of grid files that are missing over the network; never unless it is asked
/// for. Start-up only.
NIVORA_CS_EXPORT void setGridsFromNetwork(bool isAllowed);

} // namespace nivora::cs
