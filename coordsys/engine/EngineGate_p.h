#pragma once

#include "CrsParts_p.h"
#include "OsrHandle_p.h"
#include "ProjLists_p.h"

#include <memory>

namespace nivora::cs {

// The gate in front of what PROJ and GDAL do only for some objects: given others they do not refuse but end
// the process. What a call needs is looked up on the object itself; one that may not pass gets the answer of
// an engine that found nothing. Nobody else makes these calls. Each needs the lock of what it is given.

/// Registered systems with the figures of an unbound CRS, and how sure PROJ is of each, percent.
struct IdentifiedCrs
{
    PjList list;
    PjIntList confidences;
    int count() const { return list && confidences ? proj_list_get_count(list.get()) : 0; }
};

/// proj_identify(). It takes the base of a projected CRS for geographic unseen: none over a planetocentric
/// one (IAU_2015:49912, "+proj=eqc +geoc").
IdentifiedCrs identifyCrs(PJ_CONTEXT *context, const PJ *crs, const char *authority);

/// What GDAL found, best first.
struct MatchedSrs
{
    SrsArray list;
    std::unique_ptr<int, ReleasedBy<VSIFree>> confidences;
    int count = 0;
};

/// OSRFindMatches(), which asks proj_identify().
MatchedSrs matchSrs(void *srs);

/// OSRExportToMICoordSys(). It reads GEOGCS and DATUM of WKT 1, which rotated and derived systems and those
/// bound to another hub than WGS 84 have none of: false for them, GDAL's error set, \p text untouched.
bool exportToMapinfo(void *srs, CplText &text);

/// OSRImportFromMICoordSys(): false when the driver refuses the text.
bool importFromMapinfo(void *srs, const QString &text);

} // namespace nivora::cs
