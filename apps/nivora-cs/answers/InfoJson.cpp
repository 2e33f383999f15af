#include "InfoText.h"

#include "AnswerJson.h"
#include "Output.h"

#include <coordsys/CoordSystem.h>
#include <coordsys/MapHeaderCoordsysConverter.h>
#include <coordsys/PrjText.h>
#include <coordsys/SourceTags.h>

#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>

#include <functional>
#include <initializer_list>
#include <vector>

using namespace nivora::cs;

namespace {

QJsonArray numbers(std::initializer_list<double> values)
{
    QJsonArray array;
    for (const double value : values)
        array << value;
    return array;
}

/// One key of the object. What throws, or is null, is not known.
struct Fact
{
    const char *key;
    std::function<QJsonValue(const CoordSystem &, const SystemInfo &)> find;
};

/// A unit without a number of MapInfo's has the code -1.
QJsonValue unitOf(const CoordSystem &cs, const SystemInfo &info)
{
    LinearUnit unit;
    try {
        unit = cs.unit();
    } catch (const std::exception &) {
        if (!(info.metresPerUnit > 0.0))
            return {};
        unit = LinearUnit(info.unitName, QString(), info.metresPerUnit);
    }
    return QJsonObject{{QStringLiteral("name"), unit.name()},
                       {QStringLiteral("description"), unit.description()},
                       {QStringLiteral("code"), unit.unitCode()},
                       {QStringLiteral("factor"), unit.conversion()}};
}

QJsonValue boundsOf(const CoordSystem &cs, const SystemInfo &)
{
    const QRectF rect = cs.rectNumericCoordSys();
    return rect.isNull() ? QJsonValue() : numbers({rect.left(), rect.top(), rect.right(), rect.bottom()});
}

QJsonValue ellipsoidOf(const CoordSystem &cs, const SystemInfo &)
{
    if (cs.isNonEarth())
        return {};
    return numbers({cs.getSemiMajor(), cs.getSemiMinor(), cs.getInvFlattening()});
}

QJsonValue shiftOf(const CoordSystem &cs, const SystemInfo &)
{
    if (cs.isNonEarth())
        return {};
    QJsonArray figures;
    for (const double figure : cs.getTOWGS84Params())
        figures << figure;
    return figures;
}

QJsonValue affineOf(const CoordSystem &cs, const SystemInfo &)
{
    const QTransform *t = cs.affineTransform();
    return t ? numbers({t->m11(), t->m21(), t->dx(), t->m12(), t->m22(), t->dy()}) : QJsonValue();
}

QJsonValue areaOf(const CoordSystem &, const SystemInfo &info)
{
    const QRectF &area = info.area;
    return area.isNull() ? QJsonValue() : numbers({area.left(), area.top(), area.right(), area.bottom()});
}

QJsonValue mapHeaderOf(const CoordSystem &cs, const SystemInfo &)
{
    const MapHeaderCoordsysConverter converter;
    return converter.tabProjInfoToInnerString(
        converter.prjStrToTABProjInfo(exportSystem(cs, SystemFormat::Mapinfo)));
}

Fact written(const char *key, SystemFormat format)
{
    return {key, [format](const CoordSystem &cs, const SystemInfo &) {
                return textOrNull(exportSystem(cs, format));
            }};
}

QString kindWord(SystemInfo::Kind kind)
{
    switch (kind) {
    case SystemInfo::Kind::Geographic:
        return QStringLiteral("geographic");
    case SystemInfo::Kind::RotatedGeographic:
        return QStringLiteral("rotated");
    case SystemInfo::Kind::Projected:
        return QStringLiteral("projected");
    case SystemInfo::Kind::Local:
        return QStringLiteral("local");
    case SystemInfo::Kind::Unknown:
        break;
    }
    return {};
}

/// Why there is no CoordSys text, or what a reader of it should know.
QString prjRemark(const CoordSystem &cs)
{
    const nivora::cs::PrjText text = nivora::cs::prjTextOf(cs);
    return text.isRefused() ? text.reason() : text.remark();
}

const std::vector<Fact> &facts()
{
    using Cs = const CoordSystem &;
    using Info = const SystemInfo &;
    static const std::vector<Fact> all = {
        {"notation", [](Cs cs, Info) { return nivora::cs::sourceTypeToString(cs.sourceType()); }},
        {"description", [](Cs, Info info) { return info.name; }},
        {"epsg", [](Cs, Info info) { return info.epsg > 0 ? QJsonValue(info.epsg) : QJsonValue(); }},
        {"identifier", [](Cs, Info info) { return textOrNull(info.identifier); }},
        {"deprecated", [](Cs, Info info) { return info.isDeprecated; }},
        {"kind", [](Cs, Info info) { return textOrNull(kindWord(info.kind)); }},
        {"method", [](Cs, Info info) { return textOrNull(info.method); }},
        {"geographic", [](Cs cs, Info) { return cs.isLatLong(); }},
        {"nonEarth", [](Cs cs, Info) { return cs.isNonEarth(); }},
        {"unit", unitOf},
        {"areaName", [](Cs, Info info) { return textOrNull(info.areaName); }},
        {"area", areaOf},
        {"bounds", boundsOf},
        {"boundsGiven", [](Cs cs, Info) { return cs.isRectSet(); }},
        {"ellipsoid", ellipsoidOf},
        {"ellipsoidName", [](Cs, Info info) { return textOrNull(info.ellipsoid); }},
        {"datum", [](Cs, Info info) { return textOrNull(info.datum); }},
        {"primeMeridian", [](Cs, Info info) { return textOrNull(info.primeMeridian); }},
        {"towgs84", shiftOf},
        {"affine", affineOf},
        {"baseCode",
         [](Cs, Info info) { return info.baseCode > 0 ? QJsonValue(info.baseCode) : QJsonValue(); }},
        {"assumptions", [](Cs, Info info) { return QJsonArray::fromStringList(info.assumptions); }},
        written("prj", SystemFormat::Mapinfo),
        {"prjRemark", [](Cs cs, Info) { return textOrNull(prjRemark(cs)); }},
        {"proj", [](Cs cs, Info) { return cs.projStr(); }},
        written("wkt", SystemFormat::Wkt1),
        written("wkt2", SystemFormat::Wkt2),
        written("esri", SystemFormat::Esri),
        {"tagged", [](Cs cs, Info) { return cs.taggedString(); }},
        {"mapHeader", mapHeaderOf},
    };
    return all;
}

} // namespace

QString infoJson(const CoordSystem &cs, const SystemInfo &info, const QJsonValue &heights,
                 const QJsonValue &calibration)
{
    QJsonObject json;
    QJsonObject unknown; // why
    for (const Fact &fact : facts()) {
        const QString key = QLatin1String(fact.key);
        try {
            json[key] = fact.find(cs, info);
        } catch (const std::exception &e) {
            json[key] = QJsonValue();
            unknown[key] = oneLine(QString::fromUtf8(e.what()));
        }
    }
    json[QStringLiteral("heights")] = heights;
    json[QStringLiteral("calibration")] = calibration;
    json[QStringLiteral("unknown")] = unknown;
    return QString::fromUtf8(QJsonDocument(json).toJson());
}
