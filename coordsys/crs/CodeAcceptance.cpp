#include "CodeAcceptance_p.h"

#include "CrsComparison_p.h"
#include "CrsDefinition_p.h"
#include "CrsParts_p.h"
#include "OsrHandle_p.h"
#include "SearchContext_p.h"

#include <proj_experimental.h>

#include <algorithm>
#include <cmath>

namespace nivora::cs {
namespace {

PjHandle readCrs(PJ_CONTEXT *context, const QString &definition, const CrsDefinition *known = nullptr)
{
    PjHandle crs = known && known->isBareEsri()
                       ? known->copyOfCrs(context)
                       : ownPj(proj_create(context, definition.toUtf8().constData()));
    return crs && proj_is_crs(crs.get()) ? horizontalPart(context, crs.get()) : nullptr;
}

/// Latitude first, as the registry has it: PROJ's search finds nothing for another order that is stated.
PjHandle latitudeFirst(PJ_CONTEXT *context, PjHandle crs)
{
    if (!crs || kindOf(context, crs.get()) != CrsKind::Geographic ||
        axisDirections(context, crs.get()).value(0) != QLatin1String("east"))
        return crs;
    PjHandle datum = ownPj(proj_crs_get_datum(context, crs.get()));
    if (!datum)
        datum = ownPj(proj_crs_get_datum_ensemble(context, crs.get()));
    const PjHandle axes = ownPj(proj_create_ellipsoidal_2D_cs(context, PJ_ELLPS2D_LATITUDE_LONGITUDE, "unit",
                                                              axisFactor(context, crs.get())));
    PjHandle turned = datum && axes ? ownPj(proj_create_geographic_crs_from_datum(
                                          context, proj_get_name(crs.get()), datum.get(), axes.get()))
                                    : nullptr;
    return turned ? std::move(turned) : std::move(crs);
}

/// Without a shift and without a code: one that a text states is not what a search may lean on. Names as the
/// text spells them are found better than PROJ's own, so that a text without a code is not written anew.
PjHandle bareCrs(PJ_CONTEXT *context, const PJ *crs)
{
    PjHandle plain = sourceOfBoundCrs(context, crs);
    const bool hasCode = plain && proj_get_id_code(plain.get(), 0);
    return latitudeFirst(context, hasCode ? withoutCode(context, plain.get()) : std::move(plain));
}

/// What the definition has to get to WGS 84, as TOWGS84 would have it.
std::optional<Shift> shiftOf(PJ_CONTEXT *context, const PJ *crs)
{
    Shift shift{};
    const PjHandle way =
        proj_get_type(crs) == PJ_TYPE_BOUND_CRS ? ownPj(proj_crs_get_coordoperation(context, crs)) : nullptr;
    if (!way || !proj_coordoperation_get_towgs84_values(context, way.get(), shift.data(),
                                                        static_cast<int>(shift.size()), 0))
        return std::nullopt;
    return shift;
}

bool isZero(const Shift &shift)
{
    return std::all_of(shift.begin(), shift.end(), [](double figure) { return figure == 0.0; });
}

bool hasEllipsoidOfWgs84(PJ_CONTEXT *context, const PJ *crs)
{
    const PjHandle ellipsoid = ownPj(proj_get_ellipsoid(context, crs));
    double majorM = 0.0, inverseFlattening = 0.0;
    return ellipsoid &&
           proj_ellipsoid_get_parameters(context, ellipsoid.get(), &majorM, nullptr, nullptr,
                                         &inverseFlattening) &&
           std::fabs(majorM - 6378137.0) < 1e-3 && std::fabs(inverseFlattening - 298.257223563) < 1e-6;
}

CodeAcceptance::Datum datumOf(PJ_CONTEXT *context, const PJ *plain, const std::optional<Shift> &shift)
{
    using Datum = CodeAcceptance::Datum;
    if (hasKnownDatum(context, plain))
        return Datum::Named;
    const bool isShifted = shift && !isZero(*shift);
    if (!isShifted && !hasNamedDatum(context, plain) && hasEllipsoidOfWgs84(context, plain))
        return Datum::PlainWgs84;
    // A driver's "GRS_80" is a name for no datum, whatever zeros stand behind it.
    const bool isEllipsoid = !isShifted && namesEllipsoidForDatum(context, plain);
    return shift && !isEllipsoid ? Datum::ByShift : Datum::None;
}

/// The engines' searches know a bare ellipsoid only in PROJ's own words; Esri's form has others for it.
PjHandle asProjTextHasIt(PJ_CONTEXT *context, PjHandle crs)
{
    const QByteArray text = proj_as_proj_string(context, crs.get(), PJ_PROJ_5, nullptr);
    PjHandle read = text.isEmpty() ? nullptr : readCrs(context, QString::fromUtf8(text));
    return read ? latitudeFirst(context, std::move(read)) : std::move(crs);
}

bool isWgs84(PJ_CONTEXT *context, const PJ *registered)
{
    const PjHandle datum = ownPj(proj_crs_get_datum_forced(context, registered));
    return datum && QByteArray(proj_get_name(datum.get())) == "World Geodetic System 1984";
}

} // namespace

CodeAcceptance::CodeAcceptance(const QString &definition, const CrsDefinition *known)
{
    const SearchContext context;
    const PjHandle crs = readCrs(context.get(), definition, known);
    if (!crs)
        return;
    m_wkt = wkt2Of(context.get(), crs.get());
    m_shift = shiftOf(context.get(), crs.get());
    m_plain = bareCrs(context.get(), crs.get());
    if (m_plain)
        m_datum = datumOf(context.get(), m_plain.get(), m_shift);
    if (m_datum == Datum::PlainWgs84)
        m_plain = asProjTextHasIt(context.get(), std::move(m_plain));
}

bool CodeAcceptance::hasOwnShift() const { return m_shift && !isZero(*m_shift); }

std::shared_ptr<void> CodeAcceptance::srs() const
{
    const SearchContext context;
    return srsFromWkt(wkt2Of(context.get(), m_plain.get()));
}

bool CodeAcceptance::takes(int epsg, bool isByRecord) const
{
    const SearchContext context;
    const PjHandle whole = ownPj(proj_create_from_database(
        context.get(), "EPSG", QByteArray::number(epsg).constData(), PJ_CATEGORY_CRS, false, nullptr));
    const PjHandle registered = whole ? horizontalPart(context.get(), whole.get()) : nullptr;
    if (!registered || !takesDatum(registered.get()))
        return false;
    return (isByRecord ||
            (isSamePlane(context.get(), m_plain.get(), registered.get()) && takesShift(epsg))) &&
           (!m_shift || m_datum == Datum::PlainWgs84 || isWithin100m(epsg, m_wkt));
}

bool CodeAcceptance::takesDatum(const PJ *registered) const
{
    const SearchContext context;
    switch (m_datum) {
    case Datum::Named:
        return !namesAnotherDatum(context.get(), m_plain.get(), registered);
    case Datum::PlainWgs84:
        return isWgs84(context.get(), registered);
    default:
        return m_datum == Datum::ByShift;
    }
}

bool CodeAcceptance::takesShift(int epsg) const
{
    return !hasOwnShift() || hasRegisteredShift(epsg, *m_shift);
}

} // namespace nivora::cs
