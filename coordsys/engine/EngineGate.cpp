#include "EngineGate_p.h"

namespace nivora::cs {
namespace {

/// Derived from what PROJ's search can go on with, or from nothing.
bool hasGeographicBase(PJ_CONTEXT *context, const PJ *crs)
{
    if (proj_get_type(crs) != PJ_TYPE_PROJECTED_CRS)
        return true;
    const PjHandle base = ownPj(proj_get_source_crs(context, crs));
    const PJ_TYPE type = base ? proj_get_type(base.get()) : PJ_TYPE_UNKNOWN;
    return type == PJ_TYPE_GEOGRAPHIC_2D_CRS || type == PJ_TYPE_GEOGRAPHIC_3D_CRS;
}

bool mayIdentify(PJ_CONTEXT *context, const PJ *crs)
{
    return crs && proj_is_crs(crs) && proj_get_type(crs) != PJ_TYPE_BOUND_CRS &&
           hasGeographicBase(context, crs);
}

/// GDAL does not give its PROJ object away, and reading its text again would make the base geographic: the
/// keyword of the base tells.
bool mayMatch(void *srs) { return !osrToWkt2(srs).contains(QLatin1String("BASEGEODCRS[")); }

bool hasWkt1Datum(void *srs)
{
    return OSRGetAttrValue(srs, "GEOGCS", 0) && OSRGetAttrValue(srs, "DATUM", 0) &&
           OSRGetAttrValue(srs, "SPHEROID", 0);
}

} // namespace

IdentifiedCrs identifyCrs(PJ_CONTEXT *context, const PJ *crs, const char *authority)
{
    if (!mayIdentify(context, crs))
        return {};
    int *confidences = nullptr;
    PjList list(proj_identify(context, crs, authority, nullptr, &confidences));
    return {std::move(list), PjIntList(confidences)};
}

MatchedSrs matchSrs(void *srs)
{
    MatchedSrs found;
    if (!srs || !mayMatch(srs))
        return found;
    int *confidences = nullptr;
    found.list.reset(OSRFindMatches(srs, nullptr, &found.count, &confidences));
    found.confidences.reset(confidences);
    if (!found.list || !found.confidences)
        found.count = 0;
    return found;
}

bool exportToMapinfo(void *srs, CplText &text)
{
    if (srs && !(OSRIsLocal(srs) || OSRIsGeocentric(srs) || hasWkt1Datum(srs))) {
        CPLError(CE_Failure, CPLE_NotSupported, "No geographic system with a datum beneath the coordinates");
        return false;
    }
    char *raw = nullptr;
    const OGRErr code = OSRExportToMICoordSys(srs, &raw);
    text.reset(raw);
    return code == OGRERR_NONE;
}

bool importFromMapinfo(void *srs, const QString &text)
{
    return OSRImportFromMICoordSys(srs, text.toUtf8().constData()) == OGRERR_NONE;
}

} // namespace nivora::cs
