#include <coordsys/CoordSystemStrings.h>

#include "CatalogueSource_p.h"
#include "CoordSysText_p.h"
#include "CoordSysTexts_p.h"
#include <coordsys/SourceTags.h>
#include <platform/Logger.h>
#include <platform/Utils.h>

#include <QRegularExpression>

namespace nivora::cs {
namespace {

using nivora::utils::toString;

struct UnitTerm
{
    LinearUnit::MIUnitCode code;
    const char *term;
};
constexpr UnitTerm unitTerms[] = {
    {LinearUnit::Mile, "+units=mi"},
    {LinearUnit::Kilometer, "+units=km"},
    {LinearUnit::Inch, "+units=in"},
    {LinearUnit::Foot, "+units=ft"},
    {LinearUnit::Yard, "+units=yd"},
    {LinearUnit::Millimeter, "+units=mm"},
    {LinearUnit::Centimeter, "+units=cm"},
    {LinearUnit::Meter, "+units=m"},
    {LinearUnit::SurveyFoot, "+units=us-ft"},
    {LinearUnit::NauticalMile, "+units=kmi"},
    {LinearUnit::Link, "+units=link"},
    {LinearUnit::Chain, "+units=ch"},
    {LinearUnit::Rod, "+to_meter=5.02921005842012"}, // PROJ has no name for the rod
};

} // namespace

CoordSystemTypes::SourceType tryDetectTypeCoordSystem(const QString &text)
{
    struct Notation
    {
        QRegularExpression pattern;
        CoordSystemTypes::SourceType type;
    };
    const auto notation = [](const QString &pattern, CoordSystemTypes::SourceType type) {
        return Notation{QRegularExpression(pattern, QRegularExpression::CaseInsensitiveOption), type};
    };
    // The first hit wins. The anchors bind only to the first alternative; stored texts rely on that
    // looseness. A run of blanks or digits is never tried again from within: texts may be long.
    static const Notation notations[] = {
        notation(QStringLiteral(R"(^\s*GEOGCS|PROJCS|LOCAL_CS\[)"), CoordSystemTypes::Wkt),
        notation(QStringLiteral(R"(^\s*+(?:Coordsys\s*+)?+Earth\s+Projection|NonEarth|\d\s*+,\s*+\d)"),
                 CoordSystemTypes::Prj),
        notation(QStringLiteral(R"(^\s*\+proj=)"), CoordSystemTypes::Proj4),
        notation(QStringLiteral(R"(^\s*\d{4,7}$)"), CoordSystemTypes::Epsg),
    };
    for (const Notation &candidate : notations)
        if (candidate.pattern.match(text).hasMatch())
            return candidate.type;
    return CoordSystemTypes::Unknown;
}

CoordSystemPtr csStringToInternal(const QString &type, const QString &text)
{
    switch (stringToSourceType(type)) {
    case CoordSystemTypes::Prj:
        return activeCatalogues()->createFromPrj(text);
    case CoordSystemTypes::Proj4:
        return activeCatalogues()->createFromProj(text);
    case CoordSystemTypes::Epsg:
        return activeCatalogues()->createFromEpsg(text.toInt());
    case CoordSystemTypes::Wkt:
        return activeCatalogues()->createFromWkt(text);
    case CoordSystemTypes::Oracle:
        return activeCatalogues()->createFromOracleSRID(text.toInt());
    case CoordSystemTypes::Unknown:
        break;
    }
    LOG_ERROR(CoordSysTexts::tr("Неизвестный тип проекции %1").arg(type));
    return nullptr;
}

CoordSystemPtr csStringToInternal(const CoordSystemTypes::SourceData &source)
{
    return csStringToInternal(sourceTypeToString(source.type), source.string);
}

PrjClauses hasAffineOrBoundsInString(const QString &prj) { return CoordSysText(prj).announced(); }

AffineAndBounds affineParamsAndBoundsFromPrj(const QString &prj)
{
    const CoordSysText text(prj);
    return text.clauses(text.announced());
}

QString boundConditionAsString(const QRectF &rect)
{
    return QStringLiteral(" Bounds (%1, %2) (%3, %4)")
        .arg(toString(rect.left()), toString(rect.top()), toString(rect.left() + rect.width()),
             toString(rect.top() + rect.height()));
}

QString projUnitStringForLinearUnit(const LinearUnit::MIUnitCode &code)
{
    for (const UnitTerm &unit : unitTerms)
        if (unit.code == code)
            return QString::fromLatin1(unit.term);
    return QStringLiteral("m"); // not a PROJ term; callers compare and store it
}

QString projNonEarthString(const LinearUnit::MIUnitCode &code)
{
    return QStringLiteral("+proj=eqc +R=%1 %2 +no_defs")
        .arg(toString(CoordSystemTypes::EARTH_SPHERE_RADIUS), projUnitStringForLinearUnit(code));
}

} // namespace nivora::cs
