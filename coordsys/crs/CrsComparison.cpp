#include "CrsComparison_p.h"

#include "CrsParts_p.h"
#include "ProjLists_p.h"

#include <QRegularExpression>
#include <QStringList>

#include <algorithm>
#include <cmath>
#include <map>

namespace nivora::cs {
namespace {

constexpr double relativeTolerance = 1e-9;
constexpr double meridianToleranceDeg = 1e-8; // texts carry Paris with eight digits

bool close(double a, double b)
{
    return std::fabs(a - b) <= relativeTolerance * std::max({1.0, std::fabs(a), std::fabs(b)});
}

/// Parameters by EPSG's number or, where they have none, by name; in radians, metres and unity.
using Parameters = std::map<QByteArray, double>;

QByteArray methodOf(PJ_CONTEXT *context, const PJ *conversion)
{
    const char *name = nullptr;
    const char *code = nullptr;
    proj_coordoperation_get_method_info(context, conversion, &name, nullptr, &code);
    return code && *code ? code : name;
}

Parameters parametersOf(PJ_CONTEXT *context, const PJ *conversion)
{
    Parameters parameters;
    for (int i = 0; i < proj_coordoperation_get_param_count(context, conversion); ++i) {
        const char *name = nullptr;
        const char *code = nullptr;
        double value = 0.0;
        double factor = 1.0;
        proj_coordoperation_get_param(context, conversion, i, &name, nullptr, &code, &value, nullptr, &factor,
                                      nullptr, nullptr, nullptr, nullptr);
        parameters[code && *code ? code : name] = value * factor;
    }
    return parameters;
}

bool isSameFormula(PJ_CONTEXT *context, const PJ *a, const PJ *b)
{
    if (methodOf(context, a) != methodOf(context, b))
        return false;
    const Parameters left = parametersOf(context, a);
    const Parameters right = parametersOf(context, b);
    return left.size() == right.size() &&
           std::equal(left.begin(), left.end(), right.begin(), [](const auto &x, const auto &y) {
               return x.first == y.first && close(x.second, y.second);
           });
}

/// WKT 1 has one name for two methods, and PROJ one formula: "Lambert Azimuthal Equal Area (Spherical)".
bool isComputedAlike(PJ_CONTEXT *context, const PJ *a, const PJ *b)
{
    const QByteArray mine = proj_as_proj_string(context, a, PJ_PROJ_5, nullptr);
    return !mine.isEmpty() && mine == proj_as_proj_string(context, b, PJ_PROJ_5, nullptr);
}

bool isSameConversion(PJ_CONTEXT *context, const PJ *a, const PJ *b)
{
    const PjHandle mine = ownPj(proj_crs_get_coordoperation(context, a));
    const PjHandle theirs = ownPj(proj_crs_get_coordoperation(context, b));
    return mine && theirs &&
           (isSameFormula(context, mine.get(), theirs.get()) ||
            isComputedAlike(context, mine.get(), theirs.get()));
}

bool isSameDatum(PJ_CONTEXT *context, const PJ *a, const PJ *b)
{
    const PjHandle mine = ownPj(proj_crs_get_datum_forced(context, a));
    const PjHandle theirs = ownPj(proj_crs_get_datum_forced(context, b));
    return mine && theirs &&
           proj_is_equivalent_to_with_ctx(context, mine.get(), theirs.get(), PJ_COMP_EQUIVALENT);
}

/// Around a pole both axes run along meridians, to the south or to the north; PROJ computes them as east and
/// north, which some texts call them.
QStringList computedDirections(PJ_CONTEXT *context, const PJ *crs)
{
    const QStringList directions = axisDirections(context, crs);
    const bool isPolar = directions.size() == 2 && directions.first() == directions.last();
    return isPolar ? QStringList{QStringLiteral("east"), QStringLiteral("north")} : directions;
}

bool isSameAxes(PJ_CONTEXT *context, const PJ *a, const PJ *b)
{
    return computedDirections(context, a) == computedDirections(context, b) &&
           close(axisFactor(context, a), axisFactor(context, b));
}

PjList datumsNamed(PJ_CONTEXT *context, const QString &name)
{
    constexpr PJ_TYPE types[] = {PJ_TYPE_GEODETIC_REFERENCE_FRAME, PJ_TYPE_DYNAMIC_GEODETIC_REFERENCE_FRAME,
                                 PJ_TYPE_DATUM_ENSEMBLE};
    constexpr int enough = 10;
    return PjList(proj_create_from_name(context, nullptr, name.toUtf8().constData(), types, std::size(types),
                                        0, enough, nullptr));
}

/// "Pulkovo_1942" and "D_Pulkovo_1942" are names of "Pulkovo 1942".
QStringList spellingsOf(const PJ *datum)
{
    const QString name = QString::fromUtf8(proj_get_name(datum));
    QString plain = name;
    if (plain.startsWith(QLatin1String("D_")))
        plain.remove(0, 2);
    plain.replace(QLatin1Char('_'), QLatin1Char(' '));
    return plain == name ? QStringList{name} : QStringList{name, plain};
}

/// PROJ reads each web Mercator that WKT 1 can say as the one on WGS 84: a Mercator of the sphere whose
/// latitudes are WGS 84's.
bool isSameWebMercator(PJ_CONTEXT *context, const PJ *a, const PJ *b)
{
    const QByteArray mine = proj_as_proj_string(context, a, PJ_PROJ_4, nullptr);
    return mine.contains("+nadgrids=@null") && mine == proj_as_proj_string(context, b, PJ_PROJ_4, nullptr);
}

} // namespace

PjHandle mapOriented(PJ_CONTEXT *context, const PJ *crs)
{
    PjHandle plain = sourceOfBoundCrs(context, crs);
    PJ *turned = plain ? proj_normalize_for_visualization(context, plain.get()) : nullptr;
    return turned ? ownPj(turned) : std::move(plain);
}

bool hasNamedDatum(PJ_CONTEXT *context, const PJ *crs)
{
    // "Unknown based on GRS 1980 ellipsoid", "D_unknown", "Not specified (based on Airy 1830 ellipsoid)"
    static const QRegularExpression open(QStringLiteral("^(D_)?(unknown|unnamed|undefined|not[ _]specified)"),
                                         QRegularExpression::CaseInsensitiveOption);
    const PjHandle datum = ownPj(proj_crs_get_datum_forced(context, crs));
    const QString name = datum ? QString::fromUtf8(proj_get_name(datum.get())).trimmed() : QString();
    return !name.isEmpty() && !open.match(name).hasMatch();
}

bool namesAnotherDatum(PJ_CONTEXT *context, const PJ *crs, const PJ *registered)
{
    const PjHandle mine = ownPj(proj_crs_get_datum_forced(context, crs));
    const PjHandle theirs = ownPj(proj_crs_get_datum_forced(context, registered));
    if (!mine || !theirs)
        return false;
    const auto wanted = codeOf(theirs.get(), QLatin1String("EPSG"));
    bool isKnown = false;
    for (const QString &name : spellingsOf(mine.get())) {
        const PjList found = datumsNamed(context, name);
        for (int i = 0; found && i < proj_list_get_count(found.get()); ++i) {
            isKnown = true;
            const PjHandle datum = ownPj(proj_list_get(context, found.get(), i));
            if (wanted && codeOf(datum.get(), QLatin1String("EPSG")) == wanted)
                return false;
        }
    }
    return isKnown;
}

bool hasKnownDatum(PJ_CONTEXT *context, const PJ *crs)
{
    const PjHandle datum = ownPj(proj_crs_get_datum_forced(context, crs));
    if (!datum || !hasNamedDatum(context, crs))
        return false;
    const QStringList names = spellingsOf(datum.get());
    return proj_get_id_code(datum.get(), 0) ||
           std::any_of(names.begin(), names.end(), [&](const QString &name) {
               const PjList found = datumsNamed(context, name);
               return found && proj_list_get_count(found.get()) > 0;
           });
}

bool namesEllipsoidForDatum(PJ_CONTEXT *context, const PJ *crs)
{
    static const QRegularExpression name(QStringLiteral("^(D_)?GRS[ _]?(19)?(67|80)$")); // "GRS_80"
    const PjHandle datum = ownPj(proj_crs_get_datum_forced(context, crs));
    return datum && name.match(QString::fromUtf8(proj_get_name(datum.get()))).hasMatch();
}

bool isSameEllipsoid(PJ_CONTEXT *context, const PJ *a, const PJ *b, double toleranceM)
{
    double majorM[2] = {0.0, 1.0};
    double minorM[2] = {0.0, 1.0};
    const PJ *both[] = {a, b};
    for (int i = 0; i < 2; ++i) {
        const PjHandle ellipsoid = ownPj(proj_get_ellipsoid(context, both[i]));
        if (!ellipsoid || !proj_ellipsoid_get_parameters(context, ellipsoid.get(), &majorM[i], &minorM[i],
                                                         nullptr, nullptr))
            return false;
    }
    return std::fabs(majorM[0] - majorM[1]) <= toleranceM && std::fabs(minorM[0] - minorM[1]) <= toleranceM;
}

bool isSamePlane(PJ_CONTEXT *context, const PJ *a, const PJ *b)
{
    const PjHandle mine = mapOriented(context, a);
    const PjHandle theirs = mapOriented(context, b);
    if (!mine || !theirs)
        return false;
    const CrsKind kind = kindOf(context, mine.get());
    return kind == kindOf(context, theirs.get()) && isSameAxes(context, mine.get(), theirs.get()) &&
           std::fabs(meridianDeg(context, mine.get()) - meridianDeg(context, theirs.get())) <=
               meridianToleranceDeg &&
           isSameEllipsoid(context, mine.get(), theirs.get()) &&
           (kind == CrsKind::Geographic || isSameConversion(context, mine.get(), theirs.get()));
}

bool isRegisteredSystem(PJ_CONTEXT *context, const PJ *crs, const PJ *registered)
{
    const PjHandle mine = mapOriented(context, crs);
    const PjHandle theirs = mapOriented(context, registered);
    if (!mine || !theirs)
        return false;
    if (proj_is_equivalent_to_with_ctx(context, mine.get(), theirs.get(),
                                       PJ_COMP_EQUIVALENT_EXCEPT_AXIS_ORDER_GEOGCRS) ||
        isSameWebMercator(context, mine.get(), theirs.get()))
        return true;
    return isSamePlane(context, mine.get(), theirs.get()) &&
           (isSameDatum(context, mine.get(), theirs.get()) ||
            !namesAnotherDatum(context, mine.get(), theirs.get()));
}

} // namespace nivora::cs
