#include <coordsys/MapHeaderCoordsysConverter.h>

#include "PrjNumber_p.h"
#include <coordsys/CatalogueSource.h>
#include <coordsys/CoordSystemStrings.h>
#include <coordsys/LinearUnit.h>
#include <coordsys/ProjectionParamsManager.h>
#include <platform/Utils.h>

#include <QObject>
#include <QRegularExpression>
#include <QStringList>

#include <algorithm>
#include <cmath>
#include <limits>

namespace nivora::cs {
namespace {

using nivora::utils::toString;

constexpr std::uint8_t unset = 255;
constexpr std::int16_t unsetDatum = -1;
constexpr std::uint8_t nonEarth = 0;
constexpr std::uint8_t longitudeLatitude = 1;
constexpr int lastProjection = 35;
constexpr int recordParameters = 6;
constexpr int fullUserDatum = 9999; // also has rotations, scale and prime meridian

std::logic_error logicError(const QString &message) { return std::logic_error(message.toStdString()); }

std::logic_error unknownDatum()
{
    return logicError(QObject::tr("Не могу определить дополнительные параметры датума"));
}

int parameterCount(const TABProjInfo_t &info)
{
    return std::min(paramForPrj(info.nProjId), recordParameters);
}

// ---- Units

std::uint8_t tryUnitCode(const ProjectionParamsManager &manager, const QString &name)
{
    const MIUnitConvParam *unit = manager.unitByName(name, std::nothrow);
    return static_cast<std::uint8_t>(unit ? unit->unitCode() : LinearUnit::Meter);
}

QString unitString(const ProjectionParamsManager &manager, int code)
{
    const MIUnitConvParam *unit = manager.unitByID(code, std::nothrow);
    return unit ? QLatin1Char('"') + unit->name() + QLatin1Char('"') : QString::number(code);
}

/// Unit of an affine clause, in quotes or as a number. A unit of coordinates may be guessed, this one may
/// not.
std::uint8_t affineUnitCode(const ProjectionParamsManager &manager, const QString &token)
{
    bool isCode = false;
    token.toInt(&isCode);
    const MIUnitConvParam *unit = nullptr;
    if (isCode || token.startsWith(QLatin1Char('"'))) {
        unit = manager.unitByName(token, std::nothrow);
        if (!unit)
            unit = manager.unitByName(token.toLower(), std::nothrow);
    }
    if (!unit)
        throw std::invalid_argument("unitCode");
    return static_cast<std::uint8_t>(unit->unitCode());
}

// ---- Parsing

/// The words and numbers of a CoordSys string, walked from left to right.
class Tokens
{
public:
    /// Throws NotEnoughtParamsException when nothing usable is left besides the keywords.
    explicit Tokens(const QString &prj)
        : m_tokens(split(prj.toLower()))
    {
        m_nonEarth = m_tokens.contains(QLatin1String("nonearth"));
        for (const QLatin1String keyword :
             {QLatin1String("coordsys"), QLatin1String("nonearth"), QLatin1String("projection")})
            removeFirst(keyword);
        if (removeFirst(QLatin1String("earth")) && m_tokens.isEmpty())
            m_tokens = QStringList{QStringLiteral("1"), QStringLiteral("0")};
        if (m_tokens.size() < 2)
            throw NotEnoughtParamsException();
    }

    int size() const { return m_tokens.size(); }
    const QString &at(int i) const { return m_tokens.at(i); }
    int indexOf(QLatin1String word, int from = 0) const
    {
        return static_cast<int>(m_tokens.indexOf(word, from));
    }
    bool isNonEarth() const { return m_nonEarth; }
    double number(int i) const { return prjNumber(m_tokens.at(i)); }
    /// True past the last token and where a clause begins.
    bool endsAt(int i) const
    {
        if (i >= m_tokens.size())
            return true;
        return isClauseWord(m_tokens.at(i));
    }
    /// How many tokens stand before the first word of a clause.
    int beforeWords() const
    {
        const auto word = std::find_if(m_tokens.begin(), m_tokens.end(), isClauseWord);
        return static_cast<int>(word - m_tokens.begin());
    }
    bool containsAffine() const { return !m_tokens.filter(QStringLiteral("affine")).isEmpty(); }
    int clauseWords() const
    {
        return static_cast<int>(std::count_if(m_tokens.begin(), m_tokens.end(), isClauseWord));
    }

private:
    static bool isClauseWord(const QString &token)
    {
        return token.contains(QLatin1String("affine")) || token.contains(QLatin1String("units")) ||
               token.contains(QLatin1String("bounds"));
    }

    static QStringList split(const QString &prj)
    {
        // earth projection 8, 104, "survey ft", 39, 0, 1, 500000, 0 bounds (0, 0) (1, 1)
        static const QRegularExpression pattern(QStringLiteral(R"rx("([^"]*)"|([^ ,()]+))rx"));
        QStringList tokens;
        for (auto matches = pattern.globalMatch(prj); matches.hasNext();) {
            const QRegularExpressionMatch match = matches.next();
            tokens << match.captured(match.lastCapturedIndex());
        }
        return tokens;
    }

    bool removeFirst(QLatin1String word)
    {
        const int position = indexOf(word);
        if (position < 0)
            return false;
        m_tokens.removeAt(position);
        return true;
    }

    QStringList m_tokens;
    bool m_nonEarth = false;
};

void setDatum(TABProjInfo_t &info, const MIDatumParam &datum)
{
    info.nEllipsoidId = static_cast<std::uint8_t>(datum.ellipsoid);
    info.dDatumShiftX = datum.dx;
    info.dDatumShiftY = datum.dy;
    info.dDatumShiftZ = datum.dz;
    const double parameters[] = {datum.rx, datum.ry, datum.rz, datum.sa, datum.pm};
    std::copy(std::begin(parameters), std::end(parameters), info.adDatumParams);
}

/// How many tokens belong to the projection itself, before its clauses. Thousands announce clauses: without
/// words before them those are the last seven, four or eleven tokens, and no other number of them will do.
int ownTokens(const Tokens &tokens, int code, const PrjClauses &announced)
{
    const int ahead = tokens.beforeWords();
    const int thousands = code / 1000;
    const bool affine = thousands == 1 || thousands == 3;
    const bool bounds = thousands == 2 || thousands == 3;
    const bool affineByNumber = announced.affine && !tokens.containsAffine();
    if ((affine && !announced.affine) || (affineByNumber && !affine) || bounds != (announced.bounds == 1))
        throw NotEnoughtParamsException(); // another number than the projection's announces
    if (thousands == 0)
        return ahead;
    const int behindWords = tokens.size() - ahead - tokens.clauseWords();
    const int clauses = (announced.affine ? 7 : 0) + (announced.bounds ? 4 : 0) - behindWords;
    if (clauses < 0 || clauses > ahead)
        throw NotEnoughtParamsException();
    return ahead - clauses;
}

/// Reads the datum and, for a user's datum, its figures. Returns the index of the token behind them.
int parseDatum(const Tokens &tokens, int own, const ProjectionParamsManager &manager, TABProjInfo_t &info)
{
    const int number = tokens.at(1).toInt();
    info.nDatumId = static_cast<std::int16_t>(number);
    if (!isUserDatum(number) || own <= 5) {
        const MIDatumParam *datum = manager.datumByID(number);
        if (!datum)
            throw unknownDatum();
        setDatum(info, *datum);
        return 2;
    }

    const int ellipsoid = tokens.at(2).toInt();
    if (ellipsoid < 0 || ellipsoid > std::numeric_limits<std::uint8_t>::max())
        throw unknownDatum(); // cut to a byte it would be the number of another ellipsoid
    info.nEllipsoidId = static_cast<std::uint8_t>(ellipsoid);
    info.dDatumShiftX = tokens.number(3);
    info.dDatumShiftY = tokens.number(4);
    info.dDatumShiftZ = tokens.number(5);
    if (number != fullUserDatum || own <= 10)
        return 6;
    for (int i = 0; i < 5; ++i)
        info.adDatumParams[i] = tokens.number(6 + i);
    return 11;
}

void parseNonEarth(const Tokens &tokens, int unitIndex, const ProjectionParamsManager &manager,
                   TABProjInfo_t &info)
{
    info.nProjId = nonEarth;
    if (unitIndex >= tokens.size())
        throw logicError(QObject::tr("Не могу определить единицы измерения."));
    info.nUnitsId = tryUnitCode(manager, tokens.at(unitIndex));
}

/// NonEarth Affine Units "m", 1, 0, 0, 0, 1, 0 Units "m": the plan's unit is the second one.
void parseNonEarthBehindAffine(const Tokens &tokens, const ProjectionParamsManager &manager,
                               TABProjInfo_t &info)
{
    const int units = tokens.indexOf(QLatin1String("units"), 2);
    parseNonEarth(tokens, units < 0 ? tokens.size() : units + 1, manager, info);
}

/// With thousands exactly the projection's parameters stand before the clauses; longitude/latitude may also
/// lack its unit. Before a word of a clause parameters may be left out as they may without thousands.
void checkOwnCount(const Tokens &tokens, int behindDatum, int own, const TABProjInfo_t &info)
{
    const int full = 1 + paramForPrj(info.nProjId); // unit and parameters
    const bool mayLackUnit = info.nProjId == longitudeLatitude && behindDatum == 0;
    const bool mayBeShort = own == tokens.beforeWords() && own < tokens.size() && behindDatum < full;
    if (behindDatum != full && !mayLackUnit && !mayBeShort)
        throw NotEnoughtParamsException();
}

void parseEarth(const Tokens &tokens, int code, const PrjClauses &announced,
                const ProjectionParamsManager &manager, TABProjInfo_t &info)
{
    info.nProjId = static_cast<std::uint8_t>(code % 1000);
    if (info.nProjId != longitudeLatitude && tokens.size() == 2)
        throw NotEnoughtParamsException();

    const int own = ownTokens(tokens, code, announced);
    if (own < 2)
        throw NotEnoughtParamsException(); // the datum is missing
    int next = parseDatum(tokens, own, manager, info);
    if (code >= 1000)
        checkOwnCount(tokens, own - next, own, info);
    if (next < own)
        info.nUnitsId = tryUnitCode(manager, tokens.at(next++));
    const int count = std::min(parameterCount(info), own - next);
    for (int i = 0; i < count; ++i)
        info.adProjParams[i] = tokens.number(next + i);
}

/// The thousands announce clauses; those are read from the text.
int projectionCode(const QString &token)
{
    bool fits = false;
    const int code = token.toInt(&fits);
    if (!fits || code % 1000 > lastProjection)
        throw logicError(QObject::tr("Неверное значение проекции:%1").arg(token));
    return code;
}

void parseSystem(const Tokens &tokens, const PrjClauses &announced, const ProjectionParamsManager &manager,
                 TABProjInfo_t &info)
{
    static const QRegularExpression numberOrUnits(QStringLiteral("^\\d+$|units"));
    const QString &first = tokens.at(0);
    if (tokens.isNonEarth() && first == QLatin1String("affine")) {
        parseNonEarthBehindAffine(tokens, manager, info);
        return;
    }
    if (!numberOrUnits.match(first).hasMatch())
        throw logicError(QObject::tr("Не могу определить тип КС"));
    if (first == QLatin1String("units")) {
        parseNonEarth(tokens, 1, manager, info);
        return;
    }
    const int code = projectionCode(first);
    if (tokens.isNonEarth() && code == nonEarth)
        parseNonEarth(tokens, 1, manager, info); // NonEarth 0, 7
    else
        parseEarth(tokens, code, announced, manager, info);
}

void parseClauses(const QString &prj, const PrjClauses &announced, const ProjectionParamsManager &manager,
                  TABProjInfo_t &info)
{
    if (announced.affine == 0 && announced.bounds == 0)
        return;
    const AffineAndBounds clauses = affineParamsAndBoundsFromPrj(prj);
    if (announced.affine != 0) {
        if (clauses.affine.isEmpty())
            throw NotEnoughtParamsException();
        info.nAffineFlag = 1;
        info.nAffineUnits = affineUnitCode(manager, clauses.affine.first());
        for (int i = 0; i < 6; ++i)
            info.dAffineParams[i] = prjNumber(clauses.affine.at(i + 1));
    }
    const QRectF &bounds = clauses.bounds;
    if (bounds.width() > 0.0 && bounds.height() > 0.0) {
        info.nBoundsFlag = 1;
        info.dXMin = bounds.left();
        info.dYMin = bounds.top();
        info.dXMax = bounds.left() + bounds.width();
        info.dYMax = bounds.top() + bounds.height();
    }
}

// ---- Writing

void appendNumber(QString &text, double value)
{
    text += QLatin1String(", ");
    text += toString(value);
}

template <std::size_t N> void appendNumbers(QString &text, const double (&values)[N], int count = N)
{
    for (int i = 0; i < count; ++i)
        appendNumber(text, values[i]);
}

void appendEarth(QString &text, const TABProjInfo_t &info, const ProjectionParamsManager &manager)
{
    text += QLatin1String("Earth Projection ") + QString::number(info.nProjId);
    text += QLatin1String(", ") + QString::number(info.nDatumId);
    if (isUserDatum(info.nDatumId)) {
        text += QLatin1String(", ") + QString::number(info.nEllipsoidId);
        appendNumber(text, info.dDatumShiftX);
        appendNumber(text, info.dDatumShiftY);
        appendNumber(text, info.dDatumShiftZ);
        if (info.nDatumId == fullUserDatum)
            appendNumbers(text, info.adDatumParams);
    }

    // GDAL takes a missing unit for miles and a missing scale for 0: all parameters are written, behind a
    // unit.
    const int count = parameterCount(info);
    if (info.nUnitsId != unset)
        text += QLatin1String(", ") + unitString(manager, info.nUnitsId);
    else if (count > 0)
        text += QLatin1String(", \"m\"");
    appendNumbers(text, info.adProjParams, count);
}

// ---- Comparison

bool sameNumber(double a, double b)
{
    const double difference = std::fabs(a - b);
    return a == b ||
           (std::isfinite(difference) && difference <= 1e-9 * std::max({1.0, std::fabs(a), std::fabs(b)}));
}

template <std::size_t N> bool sameNumbers(const double (&a)[N], const double (&b)[N])
{
    return std::equal(std::begin(a), std::end(a), std::begin(b), sameNumber);
}

template <typename T> bool sameOrUnset(T a, T b, T unsetValue)
{
    return a == b || a == unsetValue || b == unsetValue;
}

/// False easting and northing are the last two parameters of the projections that have four or more.
bool hasFalseOrigin(const TABProjInfo_t &info)
{
    const int count = paramForPrj(info.nProjId);
    for (int i = count - 2; count >= 4 && i < std::min(count, recordParameters); ++i)
        if (info.adProjParams[i] != 0.0)
            return true;
    return false;
}

/// An unset unit stands for metres, or for any unit when a false origin tells the systems apart: without one
/// the same figures in feet and in metres describe different planes. The parameters have been compared
/// before.
bool sameUnits(const TABProjInfo_t &a, const TABProjInfo_t &b)
{
    if (a.nUnitsId == b.nUnitsId)
        return true;
    if (a.nUnitsId != unset && b.nUnitsId != unset)
        return false;
    const int other = a.nUnitsId == unset ? b.nUnitsId : a.nUnitsId;
    return other == LinearUnit::Meter || hasFalseOrigin(a);
}

bool sameDatum(const TABProjInfo_t &a, const TABProjInfo_t &b)
{
    if (!sameOrUnset(a.nEllipsoidId, b.nEllipsoidId, unset) ||
        !sameOrUnset(a.nDatumId, b.nDatumId, unsetDatum))
        return false;
    if (a.nDatumId == unsetDatum || b.nDatumId == unsetDatum)
        return true;
    return sameNumber(a.dDatumShiftX, b.dDatumShiftX) && sameNumber(a.dDatumShiftY, b.dDatumShiftY) &&
           sameNumber(a.dDatumShiftZ, b.dDatumShiftZ) && sameNumbers(a.adDatumParams, b.adDatumParams);
}

bool sameAffine(const TABProjInfo_t &a, const TABProjInfo_t &b)
{
    return a.nAffineFlag == b.nAffineFlag &&
           (a.nAffineFlag == 0 ||
            (a.nAffineUnits == b.nAffineUnits && sameNumbers(a.dAffineParams, b.dAffineParams)));
}

bool sameBounds(const TABProjInfo_t &a, const TABProjInfo_t &b)
{
    return a.nBoundsFlag == b.nBoundsFlag &&
           (a.nBoundsFlag == 0 || (sameNumber(a.dXMin, b.dXMin) && sameNumber(a.dYMin, b.dYMin) &&
                                   sameNumber(a.dXMax, b.dXMax) && sameNumber(a.dYMax, b.dYMax)));
}

// ---- Dumps

/// Puts values[n - 1] for %n, two digits at most, in one pass: a percent sign inside a value stays.
/// Placeholders without a value stay too.
QString filled(const QString &pattern, const QStringList &values)
{
    static const QRegularExpression placeholder(QStringLiteral("%([1-9][0-9]?)"));
    QString text;
    int copied = 0;
    for (auto matches = placeholder.globalMatch(pattern); matches.hasNext();) {
        const QRegularExpressionMatch match = matches.next();
        const int number = match.captured(1).toInt();
        if (number > values.size())
            continue;
        text += pattern.mid(copied, match.capturedStart() - copied) + values.at(number - 1);
        copied = match.capturedEnd();
    }
    return text + pattern.mid(copied);
}

template <std::size_t N> void append(QStringList &values, const double (&numbers)[N])
{
    for (const double number : numbers)
        values << toString(number);
}

} // namespace

NotEnoughtParamsException::NotEnoughtParamsException()
    : std::logic_error(QObject::tr("Недостаточно параметров в строке prj").toStdString())
{}

TABProjInfo_t MapHeaderCoordsysConverter::prjStrToTABProjInfo(const QString &prj) const
{
    if (prj.isEmpty())
        throw logicError(QObject::tr("Пустая входная строка"));

    const Tokens tokens(prj);
    const auto manager = activeCatalogues()->projectionParamsManager();
    TABProjInfo_t info;
    const PrjClauses announced = hasAffineOrBoundsInString(prj);
    parseSystem(tokens, announced, *manager, info);
    parseClauses(prj, announced, *manager, info);
    return info;
}

QString MapHeaderCoordsysConverter::tabProjInfoToString(const TABProjInfo_t &info) const
{
    if (info.nProjId == unset)
        throw logicError(QObject::tr("Не проинициализированы КС"));

    const auto manager = activeCatalogues()->projectionParamsManager();
    QString text;
    text.reserve(160);
    if (info.nProjId == nonEarth)
        text += QLatin1String("NonEarth Units ") +
                unitString(*manager, info.nUnitsId == unset ? int(LinearUnit::Meter) : info.nUnitsId);
    else
        appendEarth(text, info, *manager);
    if (info.nAffineFlag != 0) {
        text += QLatin1String(" Affine Units ") + unitString(*manager, info.nAffineUnits);
        appendNumbers(text, info.dAffineParams);
    }
    if (info.nBoundsFlag != 0)
        text += boundConditionAsString(boundForTabProj(info));
    return text;
}

QString MapHeaderCoordsysConverter::tabProjInfoToInnerString(const TABProjInfo_t &info) const
{
    QString text = tabProjInfoToTemplateString(
        info, QStringLiteral(
                  "{prj=%1, ellips=%2, unit=%3, pars={%4, %5, %6, %7, %8, %9}, datum=%10 "
                  "shift=(%11,%12,%13), datumpars={%14, %15, %16, %17, %18}} rect={(%19, %20) (%21, %22)}"));
    if (info.nAffineFlag != 0) {
        QStringList affine{unitString(*activeCatalogues()->projectionParamsManager(), info.nAffineUnits)};
        append(affine, info.dAffineParams);
        text += filled(QStringLiteral(" affine={%1 {%2, %3, %4, %5, %6, %7}}"), affine);
    }
    if (info.nBoundsFlag != 0)
        text +=
            QStringLiteral(" bound={(%1, %2) (%3, %4)}")
                .arg(toString(info.dXMin), toString(info.dYMin), toString(info.dXMax), toString(info.dYMax));
    return text;
}

QString MapHeaderCoordsysConverter::tabProjInfoToTemplateString(const TABProjInfo_t &info,
                                                                const QString &pattern) const
{
    QStringList values{QString::number(info.nProjId), QString::number(info.nEllipsoidId),
                       unitString(*activeCatalogues()->projectionParamsManager(), info.nUnitsId)};
    append(values, info.adProjParams);
    values << QString::number(info.nDatumId);
    append(values, {info.dDatumShiftX, info.dDatumShiftY, info.dDatumShiftZ});
    append(values, info.adDatumParams);
    append(values, {info.dXMin, info.dYMin, info.dXMax, info.dYMax});
    return filled(pattern, values);
}

QString MapHeaderCoordsysConverter::prjStrToXml(const QString &prj) const
{
    return tabProjInfoToTemplateString(
        prjStrToTABProjInfo(prj),
        QStringLiteral(R"(<cs prj="%1" el="%2" u="%3" pp0="%4" pp1="%5" pp2="%6" pp3="%7" pp4="%8" pp5="%9" )"
                       R"(datum="%10"  sx="%11" sy="%12" sz="%13" dp0="%14" dp1="%15" dp2="%16" dp3="%17" )"
                       R"(dp4="%18"  xmin="%19" ymin="%20" xmax="%21" ymax="%22"/>)"));
}

bool MapHeaderCoordsysConverter::compareTabProjInfo(const TABProjInfo_t &a, const TABProjInfo_t &b,
                                                    bool compareAffine, bool compareBounds)
{
    return a.nProjId == b.nProjId && sameNumbers(a.adProjParams, b.adProjParams) && sameUnits(a, b) &&
           sameDatum(a, b) && (!compareAffine || sameAffine(a, b)) && (!compareBounds || sameBounds(a, b));
}

QRectF MapHeaderCoordsysConverter::boundForTabProj(const TABProjInfo_t &info)
{
    return QRectF(info.dXMin, info.dYMin, info.dXMax - info.dXMin, info.dYMax - info.dYMin).normalized();
}

bool MapHeaderCoordsysConverter::isUserDatum(int datum) { return cs::isUserDatum(datum); }

} // namespace nivora::cs
