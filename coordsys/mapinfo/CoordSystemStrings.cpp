#include <coordsys/CoordSystemStrings.h>

#include "PrjNumber_p.h"
#include <coordsys/CatalogueSource.h>
#include <coordsys/SourceTags.h>
#include <platform/Logger.h>
#include <platform/Utils.h>

#include <QObject>
#include <QRegularExpression>
#include <QVector>

#include <algorithm>
#include <cmath>

namespace nivora::cs {
namespace {

using nivora::utils::toString;

constexpr int affineTokenCount = 7; // unit, A to F
constexpr int boundsTokenCount = 4; // x1, y1, x2, y2

struct Token
{
    QString text;
    int position;
    int end() const { return position + text.size(); }
};

/// Numbers and quoted names of a CoordSys string: 1008, 104, "survey ft", -1.5e-05 …
QVector<Token> clauseTokens(const QString &prj)
{
    static const QRegularExpression pattern(QStringLiteral(R"(([\d.-]+(?:[eE][+-]?\d+)?)|("[^"]*"))"));
    QVector<Token> tokens;
    for (auto matches = pattern.globalMatch(prj); matches.hasNext();) {
        const QRegularExpressionMatch match = matches.next();
        tokens.append({match.captured(0), match.capturedStart(0)});
    }
    return tokens;
}

/// … Affine Units "m", 1, 0, 500, 0, 1, 600
QRegularExpressionMatch affineWords(const QString &prj)
{
    static const QRegularExpression pattern(QStringLiteral(R"(Affine\s+Units)"),
                                            QRegularExpression::CaseInsensitiveOption);
    return pattern.match(prj);
}

/// The rectangle between two corners in any order; empty when its extent is beyond a double.
QRectF rectBetween(const QString &x1, const QString &y1, const QString &x2, const QString &y2)
{
    const double left = prjNumber(x1);
    const double top = prjNumber(y1);
    const QRectF rect(left, top, prjNumber(x2) - left, prjNumber(y2) - top);
    return std::isfinite(rect.width()) && std::isfinite(rect.height()) ? rect.normalized() : QRectF();
}

QRectF boundsFromWords(const QString &prj)
{
    // … Bounds (-7786100, -1e4) (7786100.5, 9686800)
    static const QRegularExpression pattern = [] {
        const QString number = QStringLiteral(R"(([\d.-]+(?:[eE][+-]?\d+)?))");
        const QString corner = QStringLiteral(R"(\s*\(\s*%1\s*,\s*%1\s*\))").arg(number);
        return QRegularExpression(QStringLiteral("Bounds") + corner + corner,
                                  QRegularExpression::CaseInsensitiveOption);
    }();
    const QRegularExpressionMatch match = pattern.match(prj);
    if (!match.hasMatch())
        return {};
    return rectBetween(match.captured(1), match.captured(2), match.captured(3), match.captured(4));
}

QRectF boundsFromTail(const QVector<Token> &tokens)
{
    const int first = tokens.size() - boundsTokenCount;
    if (first < 0)
        return {};
    return rectBetween(tokens[first].text, tokens[first + 1].text, tokens[first + 2].text,
                       tokens[first + 3].text);
}

QStringList texts(const QVector<Token> &tokens, int first)
{
    QStringList clause;
    for (int i = first; i < first + affineTokenCount; ++i)
        clause << tokens[i].text;
    return clause;
}

/// Announced by the thousands the clause is counted from the end of the text.
QStringList affineFromTail(const QVector<Token> &tokens, bool behindBounds)
{
    const int first = tokens.size() - affineTokenCount - (behindBounds ? boundsTokenCount : 0);
    return first < 0 ? QStringList() : texts(tokens, first);
}

bool onlySeparators(const QString &prj, int from, int to)
{
    return std::all_of(prj.begin() + from, prj.begin() + to,
                       [](QChar c) { return c.isSpace() || QStringLiteral(",()+").contains(c); });
}

/// Where a plan's unit ends that stands behind its affine clause; \p from when there is none.
int endOfPlanUnit(const QString &prj, int from)
{
    // NonEarth Affine Units "m", 1, 0, 0, 0, 1, 0 Units "m" Bounds …
    static const QRegularExpression unit(QStringLiteral(R"rx([\s,]*+Units\s*+("[^"]*"|[^\s,()"]+))rx"),
                                         QRegularExpression::CaseInsensitiveOption);
    if (!prj.contains(QLatin1String("NonEarth"), Qt::CaseInsensitive))
        return from;
    const QRegularExpressionMatch match =
        unit.match(prj, from, QRegularExpression::NormalMatch, QRegularExpression::AnchoredMatchOption);
    return match.hasMatch() ? match.capturedEnd() : from;
}

/// The seven tokens must follow the words at once, and behind them may stand a plan's unit and the bounds,
/// nothing else: with a missing number or an unquoted unit other figures of the text would be taken.
QStringList affineFromWords(const QString &prj, const QVector<Token> &tokens, int endOfWords, int boundsKind)
{
    const auto firstFrom = [&tokens](int position) {
        return static_cast<int>(std::count_if(tokens.begin(), tokens.end(),
                                              [position](const Token &t) { return t.position < position; }));
    };
    const int first = firstFrom(endOfWords);
    if (first + affineTokenCount > tokens.size())
        return {};
    int end = endOfWords;
    for (int i = first; i < first + affineTokenCount; ++i) {
        if (!onlySeparators(prj, end, tokens[i].position))
            return {};
        end = tokens[i].end();
    }
    end = endOfPlanUnit(prj, end);
    const bool boundsBehind =
        boundsKind != 2 || prj.indexOf(QLatin1String("Bounds"), end, Qt::CaseInsensitive) >= 0;
    const int rest = tokens.size() - firstFrom(end);
    return boundsBehind && rest == (boundsKind ? boundsTokenCount : 0) ? texts(tokens, first) : QStringList();
}

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
    LOG_ERROR(QObject::tr("Неизвестный тип проекции %1").arg(type));
    return nullptr;
}

CoordSystemPtr csStringToInternal(const CoordSystemTypes::SourceData &source)
{
    return csStringToInternal(sourceTypeToString(source.type), source.string);
}

PrjClauses hasAffineOrBoundsInString(const QString &prj)
{
    // Earth Projection 3008, 104 … The class takes any of its letters before the number; kept, files rely on
    // it. A longer number announces nothing.
    static const QRegularExpression projection(
        QStringLiteral(
            R"rx((?:[Projection|NonEarth]\s++|(?:CoordSys|Projection|Earth)[\s,]++|^[\s,]*+)(?<prj_id>\d{4})(?!\d))rx"),
        QRegularExpression::CaseInsensitiveOption);

    PrjClauses clauses{0, 0};
    const QRegularExpressionMatch match = projection.match(prj);
    if (match.hasMatch()) {
        const int thousands = match.captured(QStringLiteral("prj_id")).toInt() / 1000;
        clauses.affine = thousands == 1 || thousands == 3 ? 1 : 0;
        clauses.bounds = thousands == 2 || thousands == 3 ? 1 : 0;
    }
    if (clauses.affine == 0 && affineWords(prj).hasMatch())
        clauses.affine = 1;
    if (clauses.bounds == 0 && prj.contains(QLatin1String("Bounds"), Qt::CaseInsensitive))
        clauses.bounds = 2;
    return clauses;
}

AffineAndBounds affineParamsAndBoundsFromPrj(const QString &prj)
{
    AffineAndBounds result;
    const PrjClauses clauses = hasAffineOrBoundsInString(prj);
    if (clauses.bounds == 2)
        result.bounds = boundsFromWords(prj);
    if (clauses.affine == 0 && clauses.bounds != 1)
        return result;

    const QVector<Token> tokens = clauseTokens(prj);
    if (clauses.bounds == 1)
        result.bounds = boundsFromTail(tokens);
    if (clauses.affine == 0)
        return result;
    const QRegularExpressionMatch words = affineWords(prj);
    result.affine = words.hasMatch() ? affineFromWords(prj, tokens, words.capturedEnd(), clauses.bounds)
                                     : affineFromTail(tokens, clauses.bounds != 0);
    return result;
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
