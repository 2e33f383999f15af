#include "DerivedPlane_p.h"

#include <proj_experimental.h>

#include <QRegularExpression>

#include <cmath>
#include <map>

namespace nivora::cs {
namespace {

// Codes of EPSG's parameters. Offsets are lengths in the unit of the image.
constexpr const char *affineMethod = "9624";
constexpr const char *similarityMethod = "9621";

/// Figures by EPSG's code; lengths in metres, angles in radians.
using Figures = std::map<QByteArray, double>;

Figures figuresOf(PJ_CONTEXT *context, const PJ *conversion)
{
    Figures figures;
    for (int i = 0; i < proj_coordoperation_get_param_count(context, conversion); ++i) {
        const char *code = nullptr;
        double value = 0.0;
        double factor = 1.0;
        if (proj_coordoperation_get_param(context, conversion, i, nullptr, nullptr, &code, &value, nullptr,
                                          &factor, nullptr, nullptr, nullptr, nullptr) &&
            code)
            figures[code] = value * factor;
    }
    return figures;
}

double at(const Figures &figures, const char *code, double absent = 0.0)
{
    const auto found = figures.find(code);
    return found == figures.end() ? absent : found->second;
}

/// x' = A0 + A1 x + A2 y, y' = B0 + B1 x + B2 y
QTransform affineOf(const Figures &f, double metresPerUnit)
{
    return {at(f, "8624", 1.0),
            at(f, "8640"),
            at(f, "8625"),
            at(f, "8641", 1.0),
            at(f, "8623") / metresPerUnit,
            at(f, "8639") / metresPerUnit};
}

/// EPSG's guidance note 7-2: x' = x0 + x M cos t + y M sin t, y' = y0 - x M sin t + y M cos t
QTransform similarityOf(const Figures &f, double metresPerUnit)
{
    const double scale = at(f, "1061", at(f, "8611", 1.0));
    const double c = scale * std::cos(at(f, "8614"));
    const double s = scale * std::sin(at(f, "8614"));
    return {c, -s, s, c, at(f, "8621") / metresPerUnit, at(f, "8622") / metresPerUnit};
}

/// The methods count in the base's own order of axes.
bool isNorthFirst(PJ_CONTEXT *context, const PJ *crs)
{
    return axisDirections(context, crs).value(0) == QLatin1String("north");
}

PjHandle conversionOf(PJ_CONTEXT *context, const PJ *crs)
{
    const PJ_TYPE type = proj_get_type(crs);
    const bool maybe = type == PJ_TYPE_OTHER_CRS || type == PJ_TYPE_ENGINEERING_CRS;
    return maybe ? ownPj(proj_crs_get_coordoperation(context, crs)) : nullptr;
}

QString figure(double value) { return QString::number(value, 'g', 17); }

QString parameter(const char *name, const char *code, double value, const QString &unit)
{
    return QStringLiteral(",PARAMETER[\"%1\",%2,%3,ID[\"EPSG\",%4]]")
        .arg(QLatin1String(name), figure(value), unit, QLatin1String(code));
}

QString derivingConversion(const QTransform &affine, const QString &length)
{
    const QString unity = QStringLiteral("SCALEUNIT[\"coefficient\",1]");
    return QStringLiteral(",DERIVINGCONVERSION[\"Affine\",METHOD[\"Affine parametric transformation\","
                          "ID[\"EPSG\",9624]]") +
           parameter("A0", "8623", affine.dx(), length) + parameter("A1", "8624", affine.m11(), unity) +
           parameter("A2", "8625", affine.m21(), unity) + parameter("B0", "8639", affine.dy(), length) +
           parameter("B1", "8640", affine.m12(), unity) + parameter("B2", "8641", affine.m22(), unity) +
           QLatin1Char(']');
}

QString quoted(QString text) { return text.replace(QLatin1Char('"'), QStringLiteral("\"\"")); }

QString unitName(PJ_CONTEXT *context, const PJ *crs, double metresPerUnit)
{
    const PjHandle axes = ownPj(proj_crs_get_coordinate_system(context, crs));
    const char *name = nullptr;
    double factor = 0.0;
    if (axes &&
        proj_cs_get_axis_info(context, axes.get(), 0, nullptr, nullptr, nullptr, &factor, &name, nullptr,
                              nullptr) &&
        factor == metresPerUnit)
        return QString::fromUtf8(name);
    return metresPerUnit == 1.0 ? QStringLiteral("metre")
                                : QStringLiteral("unit of %1 m").arg(figure(metresPerUnit));
}

/// The base as every reader takes it: east first and, as WKT 2 has no place for its unit, in metres. The
/// transformation is changed to match.
PjHandle plainBase(PJ_CONTEXT *context, const PJ *crs, QTransform &affine)
{
    PJ *const turned = proj_normalize_for_visualization(context, crs);
    PjHandle base = turned ? ownPj(turned) : ownPj(proj_clone(context, crs));
    const double factor = axisFactor(context, crs);
    if (!(factor > 0.0) || factor == 1.0)
        return base;
    affine = QTransform(affine.m11() / factor, affine.m12() / factor, affine.m21() / factor,
                        affine.m22() / factor, affine.dx(), affine.dy());
    if (proj_get_type(crs) == PJ_TYPE_ENGINEERING_CRS)
        return base;
    const PjHandle inMetres =
        ownPj(proj_crs_alter_cs_linear_unit(context, base.get(), "metre", 1.0, "EPSG", "9001"));
    return ownPj(
        proj_crs_alter_parameters_linear_unit(context, inMetres.get(), "metre", 1.0, "EPSG", "9001", 1));
}

/// The inside of a base, its closing bracket included. A plan's axes are left out: PROJ then takes metres.
QString bodyOf(PJ_CONTEXT *context, const PJ *base)
{
    static const QRegularExpression axes(QStringLiteral(",\\s*CS\\["));
    const QString text = wkt2Of(context, base);
    const QString body = text.mid(text.indexOf(QLatin1Char('[')) + 1);
    const bool isPlan = proj_get_type(base) == PJ_TYPE_ENGINEERING_CRS;
    return isPlan ? body.left(body.lastIndexOf(axes)) + QLatin1Char(']') : body;
}

/// The text of an unbound CRS with the coordinates of another.
QString derivedText(PJ_CONTEXT *context, const PJ *base, const QTransform &affine, double metresPerUnit,
                    const QString &name)
{
    const bool isPlan = proj_get_type(base) == PJ_TYPE_ENGINEERING_CRS;
    const QString unit = QStringLiteral("LENGTHUNIT[\"%1\",%2]")
                             .arg(quoted(unitName(context, base, metresPerUnit)), figure(metresPerUnit));
    const QString axes =
        QStringLiteral(",CS[Cartesian,2],AXIS[\"%1\",east,ORDER[1]],AXIS[\"%2\",north,ORDER[2]],")
            .arg(isPlan ? QStringLiteral("x") : QStringLiteral("(E)"),
                 isPlan ? QStringLiteral("y") : QStringLiteral("(N)"));
    const QString head = isPlan ? QStringLiteral("ENGCRS[\"%1\",BASEENGCRS[")
                                : QStringLiteral("DERIVEDPROJCRS[\"%1\",BASEPROJCRS[");
    return head.arg(quoted(name)) + bodyOf(context, base) + derivingConversion(affine, unit) + axes + unit +
           QLatin1Char(']');
}

} // namespace

std::optional<DerivedPlane> derivedPlaneOf(PJ_CONTEXT *context, const PJ *crs)
{
    const PjHandle conversion = conversionOf(context, crs);
    PjHandle base = conversion ? ownPj(proj_get_source_crs(context, crs)) : nullptr;
    const char *code = nullptr;
    if (!base || !proj_coordoperation_get_method_info(context, conversion.get(), nullptr, nullptr, &code) ||
        !code)
        return std::nullopt;
    const double metresPerUnit = axisFactor(context, crs);
    const Figures figures = figuresOf(context, conversion.get());
    const bool isAffine = qstrcmp(code, affineMethod) == 0;
    if ((!isAffine && qstrcmp(code, similarityMethod) != 0) || !(metresPerUnit > 0.0))
        return std::nullopt;
    QTransform affine = isAffine ? affineOf(figures, metresPerUnit) : similarityOf(figures, metresPerUnit);
    if (isNorthFirst(context, base.get()))
        affine = QTransform(affine.m21(), affine.m22(), affine.m11(), affine.m12(), affine.dx(), affine.dy());
    return DerivedPlane{std::move(base), affine, metresPerUnit};
}

PjHandle derivedCrs(PJ_CONTEXT *context, const PJ *base, const QTransform &affine, double metresPerUnit,
                    const QString &name)
{
    const PjHandle plain = sourceOfBoundCrs(context, base);
    const CrsKind kind = kindOf(context, plain.get());
    if (kind != CrsKind::Projected && kind != CrsKind::Local)
        return nullptr;
    QTransform fromPlain = affine;
    const PjHandle oriented = plainBase(context, plain.get(), fromPlain);
    const QString text = derivedText(context, oriented.get(), fromPlain, metresPerUnit, name);
    PjHandle derived = ownPj(proj_create(context, text.toUtf8().constData()));
    const bool isBound = proj_get_type(base) == PJ_TYPE_BOUND_CRS;
    return derived && isBound ? reboundTo(context, base, derived.get()) : std::move(derived);
}

} // namespace nivora::cs
