#include "CrsParts_p.h"

#include <proj_experimental.h>

#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <QRegularExpression>

namespace nivora::cs {
namespace {

PjHandle copyOf(PJ_CONTEXT *context, const PJ *crs) { return ownPj(proj_clone(context, crs)); }

bool isBound(const PJ *crs) { return crs && proj_get_type(crs) == PJ_TYPE_BOUND_CRS; }

/// \p crs itself unless it is bound: then its source, which \p owner keeps. A copy costs more than most
/// questions.
const PJ *sourceOrItself(PJ_CONTEXT *context, const PJ *crs, PjHandle &owner)
{
    if (!isBound(crs))
        return crs;
    owner = ownPj(proj_get_source_crs(context, crs));
    return owner.get();
}

/// Longitude and latitude to the centre of the body; with a radius, or as x, y, z, they are no plane.
bool isPlanetocentric(PJ_CONTEXT *context, const PJ *crs)
{
    if (proj_get_type(crs) != PJ_TYPE_GEODETIC_CRS)
        return false;
    const PjHandle axes = ownPj(proj_crs_get_coordinate_system(context, crs));
    return axes && proj_cs_get_type(context, axes.get()) == PJ_CS_TYPE_SPHERICAL &&
           proj_cs_get_axis_count(context, axes.get()) == 2;
}

/// PROJ has no type for a system that is derived from a projected one.
bool isDerivedProjected(PJ_CONTEXT *context, const PJ *crs)
{
    if (proj_get_type(crs) != PJ_TYPE_OTHER_CRS)
        return false;
    const PjHandle base = ownPj(proj_get_source_crs(context, crs));
    return base && kindOf(context, base.get()) == CrsKind::Projected;
}

PjHandle flat(PJ_CONTEXT *context, const PJ *crs)
{
    const PJ_TYPE type = proj_get_type(crs);
    if (type == PJ_TYPE_COMPOUND_CRS) {
        const PjHandle first = ownPj(proj_crs_get_sub_crs(context, crs, 0));
        return first ? horizontalPart(context, first.get()) : nullptr;
    }
    if (type == PJ_TYPE_GEOGRAPHIC_3D_CRS || type == PJ_TYPE_PROJECTED_CRS)
        return ownPj(proj_crs_demote_to_2D(context, nullptr, crs));
    const bool planar = type == PJ_TYPE_GEOGRAPHIC_2D_CRS || type == PJ_TYPE_ENGINEERING_CRS ||
                        isPlanetocentric(context, crs) || isDerivedProjected(context, crs);
    return planar ? copyOf(context, crs) : nullptr;
}

/// A bound CRS can be changed only in parts: it is taken apart and bound again. \p change makes a part from
/// one; that of the source counts when the others fail.
template <typename Change> PjHandle changedBound(PJ_CONTEXT *context, const PJ *bound, Change &&change)
{
    const PjHandle source = ownPj(proj_get_source_crs(context, bound));
    const PjHandle hub = ownPj(proj_get_target_crs(context, bound));
    const PjHandle shift = ownPj(proj_crs_get_coordoperation(context, bound));
    PjHandle part = source ? change(source.get()) : nullptr;
    const PjHandle flatHub = hub ? flat(context, hub.get()) : nullptr;
    if (!part || !flatHub || !shift)
        return part;
    return ownPj(proj_crs_create_bound_crs(context, part.get(), flatHub.get(), shift.get()));
}

PjHandle axesOf(PJ_CONTEXT *context, const PJ *crs)
{
    PjHandle owner;
    const PJ *plain = sourceOrItself(context, crs, owner);
    return plain ? ownPj(proj_crs_get_coordinate_system(context, plain)) : nullptr;
}

} // namespace

PjHandle sourceOfBoundCrs(PJ_CONTEXT *context, const PJ *crs)
{
    return isBound(crs) ? ownPj(proj_get_source_crs(context, crs)) : copyOf(context, crs);
}

CrsKind kindOf(PJ_CONTEXT *context, const PJ *crs)
{
    PjHandle owner;
    const PJ *plain = sourceOrItself(context, crs, owner);
    switch (plain ? proj_get_type(plain) : PJ_TYPE_UNKNOWN) {
    case PJ_TYPE_GEOGRAPHIC_2D_CRS:
    case PJ_TYPE_GEOGRAPHIC_3D_CRS:
        return proj_is_derived_crs(context, plain) ? CrsKind::RotatedGeographic : CrsKind::Geographic;
    case PJ_TYPE_PROJECTED_CRS:
        return CrsKind::Projected;
    case PJ_TYPE_ENGINEERING_CRS:
        return CrsKind::Local;
    case PJ_TYPE_COMPOUND_CRS: {
        const PjHandle first = ownPj(proj_crs_get_sub_crs(context, plain, 0));
        return first ? kindOf(context, first.get()) : CrsKind::Other;
    }
    case PJ_TYPE_GEODETIC_CRS:
        return isPlanetocentric(context, plain) ? CrsKind::Geographic : CrsKind::Other;
    default:
        return plain && isDerivedProjected(context, plain) ? CrsKind::Projected : CrsKind::Other;
    }
}

bool hasPlanetocentricBase(PJ_CONTEXT *context, const PJ *crs)
{
    const PjHandle base = baseOf(context, crs);
    return base && isPlanetocentric(context, base.get());
}

PjHandle reboundTo(PJ_CONTEXT *context, const PJ *bound, const PJ *source)
{
    return changedBound(context, bound, [=](const PJ *) { return copyOf(context, source); });
}

bool hasVerticalPart(PJ_CONTEXT *context, const PJ *crs)
{
    PjHandle owner;
    const PJ *plain = sourceOrItself(context, crs, owner);
    if (!plain)
        return false;
    const PJ_TYPE type = proj_get_type(plain);
    return type == PJ_TYPE_COMPOUND_CRS || type == PJ_TYPE_GEOGRAPHIC_3D_CRS ||
           axisDirections(context, plain).size() > 2;
}

PjHandle horizontalPart(PJ_CONTEXT *context, const PJ *crs)
{
    const auto flattened = [context](const PJ *part) { return flat(context, part); };
    return isBound(crs) ? changedBound(context, crs, flattened) : flattened(crs);
}

PjHandle withoutCode(PJ_CONTEXT *context, const PJ *crs)
{
    // … ,ID["EPSG",28407]] at the end of the text
    static const QRegularExpression code(QStringLiteral(",\\s*ID\\[\"[^\"]*\",[^\\]]*\\]\\]\\s*$"));
    const auto bare = [context](const PJ *part) {
        const QString text = wkt2Of(context, part).replace(code, QStringLiteral("]"));
        return ownPj(proj_create(context, text.toUtf8().constData()));
    };
    return isBound(crs) ? changedBound(context, crs, bare) : bare(crs);
}

PjHandle baseOf(PJ_CONTEXT *context, const PJ *crs)
{
    PjHandle plain = sourceOfBoundCrs(context, crs);
    const CrsKind kind = plain ? kindOf(context, plain.get()) : CrsKind::Other;
    if (kind == CrsKind::Geographic)
        return plain;
    if (kind != CrsKind::RotatedGeographic && kind != CrsKind::Projected)
        return nullptr;
    PjHandle base = ownPj(proj_get_source_crs(context, plain.get()));
    const bool isPlane = base && kindOf(context, base.get()) == CrsKind::Projected;
    return isPlane ? baseOf(context, base.get()) : std::move(base);
}

PjHandle longitudeFirst(PJ_CONTEXT *context, PjHandle crs)
{
    const QStringList ways = crs ? axisDirections(context, crs.get()) : QStringList();
    const bool isLatitudeFirst =
        ways.size() == 2 && (ways[0] == QLatin1String("north") || ways[0] == QLatin1String("south"));
    const bool isTurnedByProj =
        ways.value(1) == QLatin1String("east") && proj_get_type(crs.get()) != PJ_TYPE_GEODETIC_CRS;
    if (!isLatitudeFirst || isTurnedByProj || kindOf(context, crs.get()) != CrsKind::Geographic ||
        isBound(crs.get()))
        return crs;
    QJsonObject json = QJsonDocument::fromJson(proj_as_projjson(context, crs.get(), nullptr)).object();
    QJsonObject system = json.value(QLatin1String("coordinate_system")).toObject();
    const QJsonArray axes = system.value(QLatin1String("axis")).toArray();
    system.insert(QStringLiteral("axis"), QJsonArray{axes.at(1), axes.at(0)});
    json.insert(QStringLiteral("coordinate_system"), system);
    PjHandle turned = ownPj(proj_create(context, QJsonDocument(json).toJson().constData()));
    return turned ? std::move(turned) : std::move(crs);
}

double axisFactor(PJ_CONTEXT *context, const PJ *crs)
{
    const PjHandle axes = axesOf(context, crs);
    double factor = 0.0;
    if (axes)
        proj_cs_get_axis_info(context, axes.get(), 0, nullptr, nullptr, nullptr, &factor, nullptr, nullptr,
                              nullptr);
    return factor;
}

double meridianDeg(PJ_CONTEXT *context, const PJ *crs)
{
    constexpr double radiansPerDegree = 0.017453292519943295;
    const PjHandle meridian = ownPj(proj_get_prime_meridian(context, crs));
    double longitude = 0.0;
    double radiansPerUnit = 0.0;
    if (!meridian ||
        !proj_prime_meridian_get_parameters(context, meridian.get(), &longitude, &radiansPerUnit, nullptr))
        return 0.0;
    return longitude * (radiansPerUnit / radiansPerDegree);
}

QStringList axisDirections(PJ_CONTEXT *context, const PJ *crs)
{
    const PjHandle axes = axesOf(context, crs);
    QStringList directions;
    for (int i = 0; axes && i < proj_cs_get_axis_count(context, axes.get()); ++i) {
        const char *direction = nullptr;
        proj_cs_get_axis_info(context, axes.get(), i, nullptr, nullptr, &direction, nullptr, nullptr, nullptr,
                              nullptr);
        directions << QString::fromUtf8(direction);
    }
    return directions;
}

QString wkt2Of(PJ_CONTEXT *context, const PJ *crs)
{
    return QString::fromUtf8(proj_as_wkt(context, crs, PJ_WKT2_2019, nullptr));
}

std::optional<int> codeOf(const PJ *crs, QLatin1String authority)
{
    for (int i = 0; const char *name = proj_get_id_auth_name(crs, i); ++i) {
        bool isNumber = false;
        const int code = QString::fromLatin1(proj_get_id_code(crs, i)).toInt(&isNumber);
        if (isNumber && authority.compare(QLatin1String(name), Qt::CaseInsensitive) == 0)
            return code;
    }
    return std::nullopt;
}

} // namespace nivora::cs
