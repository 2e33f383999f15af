#include "InfoText.h"

#include "Messages.h"
#include "OperationText.h"

#include <coordsys/CoordSysFactory.h>
#include <coordsys/CoordSystem.h>
#include <coordsys/DefaultRects.h>
#include <coordsys/PrjText.h>

#include <QObject>

#include <algorithm>

using namespace nivora::cs;

namespace {

/// Twelve digits: databases keep sexagesimal angles as fractions, whose last digits tell nothing.
QString number(double value)
{
    constexpr int digits = 12;
    const QString shortest = QString::number(value, 'g', digits);
    return shortest.contains(QLatin1Char('e')) ? QString::number(value, 'f', 0) : shortest;
}

/// "36° … 42°, 0° … 84°"
QString degreesText(const QRectF &area)
{
    const double east = area.right() > 180.0 ? area.right() - 360.0 : area.right();
    return QStringLiteral("%1° … %2°, %3° … %4°")
        .arg(number(area.left()), number(east), number(area.top()), number(area.bottom()));
}

QString areaText(const CoordSystem &, const SystemInfo &info)
{
    return info.area.isNull() ? QString() : degreesText(info.area);
}

QString kindLine(const CoordSystem &, const SystemInfo &info)
{
    const QString kind = kindText(info.kind);
    return info.method.isEmpty() ? kind : QStringLiteral("%1 (%2)").arg(kind, info.method);
}

QString codeLine(const CoordSystem &, const SystemInfo &info)
{
    return info.isDeprecated ? QObject::tr("%1, withdrawn").arg(info.identifier) : info.identifier;
}

/// Units without a number of MapInfo's have a name and a length all the same.
std::optional<LinearUnit> numberedUnit(const CoordSystem &cs)
{
    try {
        return cs.unit();
    } catch (const std::exception &) {
        return std::nullopt;
    }
}

QString unitLine(const CoordSystem &cs, const SystemInfo &info)
{
    const std::optional<LinearUnit> known = numberedUnit(cs);
    if (!known)
        return info.metresPerUnit > 0.0
                   ? QObject::tr("%1 (%2 m)").arg(info.unitName, number(info.metresPerUnit))
                   : QString();
    const LinearUnit &unit = *known;
    const QString name = unit.localizedName().isEmpty() ? unit.name() : unit.localizedName();
    return unit.description().isEmpty() ? name : QStringLiteral("%1 (%2)").arg(name, unit.description());
}

QString ellipsoidLine(const CoordSystem &, const SystemInfo &info)
{
    if (!(info.semiMajorM > 0.0))
        return {};
    const QString figures =
        info.inverseFlattening > 0.0
            ? QObject::tr("a = %1 m, 1/f = %2").arg(number(info.semiMajorM), number(info.inverseFlattening))
            : QObject::tr("a sphere of %1 m").arg(number(info.semiMajorM));
    return info.ellipsoid.isEmpty() ? figures : QStringLiteral("%1, %2").arg(info.ellipsoid, figures);
}

QString meridianLine(const CoordSystem &, const SystemInfo &info)
{
    if (info.primeMeridianDeg == 0.0)
        return {};
    return QStringLiteral("%1, %2°").arg(info.primeMeridian, number(info.primeMeridianDeg));
}

QString shiftLine(const CoordSystem &cs, const SystemInfo &)
{
    QStringList figures;
    if (!cs.isNonEarth())
        for (const double figure : cs.getTOWGS84Params())
            figures << number(figure);
    return figures.join(QLatin1Char(' '));
}

/// Bounds that stand for none: no angle, and no place of the earth, reaches them.
bool areEverything(const CoordSystem &cs, const SystemInfo &info, const QRectF &rect)
{
    constexpr double aroundEarthM = 4.3e7;
    const bool isPlan = info.kind == SystemInfo::Kind::Local;
    return cs.isLatLong() || info.kind == SystemInfo::Kind::RotatedGeographic ||
           (!isPlan && isDefaultRectNonEarth(rect)) ||
           std::max(rect.width(), rect.height()) * cs.unit().conversion() > aroundEarthM;
}

QString boundsLine(const CoordSystem &cs, const SystemInfo &info)
{
    const QRectF rect = cs.rectNumericCoordSys();
    if (rect.isNull() || (!cs.isRectSet() && areEverything(cs, info, rect)))
        return {};
    const QString corners =
        QStringLiteral("%1 %2 … %3 %4")
            .arg(number(rect.left()), number(rect.top()), number(rect.right()), number(rect.bottom()));
    return cs.isRectSet() ? QObject::tr("%1, as the definition has them").arg(corners) : corners;
}

QString affineLine(const CoordSystem &cs, const SystemInfo &)
{
    const QTransform *t = cs.affineTransform();
    QStringList figures;
    if (t)
        for (const double figure : {t->m11(), t->m21(), t->dx(), t->m12(), t->m22(), t->dy()})
            figures << number(figure);
    return figures.join(QLatin1Char(' '));
}

QString baseLine(const CoordSystem &, const SystemInfo &info)
{
    return info.baseCode > 0 ? QObject::tr("EPSG:%1, moved").arg(info.baseCode) : QString();
}

/// "none, …" or the text, and behind it what a reader should know.
QString coordSysLine(const CoordSystem &cs, const SystemInfo &)
{
    const PrjText text = prjTextOf(cs);
    if (text.isRefused())
        return QObject::tr("none: %1").arg(text.reason());
    const QString remark = text.remark();
    return remark.isEmpty() ? text.text : QStringLiteral("%1 (%2)").arg(text.text, remark);
}

struct Line
{
    const char *title;
    QString (*text)(const CoordSystem &, const SystemInfo &); ///< empty, or throws: not known, not shown
};
const Line lines[] = {
    {QT_TRANSLATE_NOOP("QObject", "Name"), [](const CoordSystem &, const SystemInfo &i) { return i.name; }},
    {QT_TRANSLATE_NOOP("QObject", "Code"), codeLine},
    {QT_TRANSLATE_NOOP("QObject", "Kind"), kindLine},
    {QT_TRANSLATE_NOOP("QObject", "Unit"), unitLine},
    {QT_TRANSLATE_NOOP("QObject", "Area of use"),
     [](const CoordSystem &, const SystemInfo &i) { return i.areaName; }},
    {QT_TRANSLATE_NOOP("QObject", "Area (longitude, latitude)"), areaText},
    {QT_TRANSLATE_NOOP("QObject", "Ellipsoid"), ellipsoidLine},
    {QT_TRANSLATE_NOOP("QObject", "Datum"), [](const CoordSystem &, const SystemInfo &i) { return i.datum; }},
    {QT_TRANSLATE_NOOP("QObject", "Prime meridian"), meridianLine},
    {QT_TRANSLATE_NOOP("QObject", "Shift to WGS 84 in the text"), shiftLine},
    {QT_TRANSLATE_NOOP("QObject", "Datum shift"),
     [](const CoordSystem &cs, const SystemInfo &) { return shiftText(cs); }},
    {QT_TRANSLATE_NOOP("QObject", "Bounds"), boundsLine},
    {QT_TRANSLATE_NOOP("QObject", "Affine transformation (A B C D E F)"), affineLine},
    {QT_TRANSLATE_NOOP("QObject", "Based on"), baseLine},
    {QT_TRANSLATE_NOOP("QObject", "CoordSys"), coordSysLine},
};

QString titled(const QString &title, const QString &text)
{
    return text.isEmpty() ? QString() : QStringLiteral("%1: %2\n").arg(title, text.simplified());
}

} // namespace

QString infoPage(const CoordSystem &cs, const SystemInfo &info)
{
    QString page;
    for (const Line &line : lines) {
        try {
            page += titled(translated(line.title), line.text(cs, info));
        } catch (const std::exception &) {
            continue; // said under "Assumed" where it matters
        }
    }
    for (const QString &assumption : info.assumptions)
        page += titled(QObject::tr("Assumed"), assumption);
    return page;
}
