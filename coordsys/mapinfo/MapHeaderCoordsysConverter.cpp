#include <coordsys/MapHeaderCoordsysConverter.h>

#include "CatalogueSource_p.h"
#include "CoordSysReader_p.h"
#include "CoordSysTexts_p.h"
#include <coordsys/CoordSystemStrings.h>
#include <coordsys/LinearUnit.h>
#include <coordsys/ProjectionParamsManager.h>
#include <platform/Utils.h>

#include <QRegularExpression>
#include <QStringList>

#include <algorithm>
#include <cmath>

namespace nivora::cs {
namespace {

using nivora::utils::toString;

constexpr std::uint8_t unset = 255;
constexpr std::int16_t unsetDatum = -1;
constexpr std::uint8_t nonEarth = 0;
constexpr int recordParameters = 6;
constexpr int fullUserDatum = 9999; // also has rotations, scale and prime meridian

std::logic_error logicError(const QString &message) { return std::logic_error(message.toStdString()); }

int parameterCount(const TABProjInfo_t &info)
{
    return std::min(paramForPrj(info.nProjId), recordParameters);
}

// ---- Units

QString unitString(const ProjectionParamsManager &manager, int code)
{
    const MIUnitConvParam *unit = manager.unitByID(code, std::nothrow);
    return unit ? QLatin1Char('"') + unit->name() + QLatin1Char('"') : QString::number(code);
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
    : std::logic_error(CoordSysTexts::tr("Недостаточно параметров в строке prj").toStdString())
    , Error(Code::MissingParameters)
{}

TABProjInfo_t MapHeaderCoordsysConverter::prjStrToTABProjInfo(const QString &prj) const
{
    if (prj.isEmpty())
        throw logicError(CoordSysTexts::tr("Пустая входная строка"));

    return lenientRecord(CoordSysText(prj), *activeCatalogues()->projectionParamsManager());
}

QString MapHeaderCoordsysConverter::tabProjInfoToString(const TABProjInfo_t &info) const
{
    if (info.nProjId == unset)
        throw logicError(CoordSysTexts::tr("Не проинициализированы КС"));

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
