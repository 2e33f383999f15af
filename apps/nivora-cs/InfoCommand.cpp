#include "CommandLine.h"
#include "Commands.h"
#include "CsText.h"
#include "Output.h"
#include "Session.h"

#include <coordsys/MapHeaderCoordsysConverter.h>
#include <coordsys/SourceTags.h>

#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>

#include <functional>
#include <vector>

using nivora::cs::CoordSystem;
using nivora::cs::LinearUnit;
using nivora::cs::MapHeaderCoordsysConverter;

namespace {

/// One thing known of a system: the key of the JSON form and the title of the other. What throws, or is null,
/// is not known.
struct Fact
{
    const char *key;
    const char *title;
    std::function<QJsonValue(const CoordSystem &)> find;
};

QJsonValue unitOf(const CoordSystem &cs)
{
    const LinearUnit unit = cs.unit();
    return QJsonObject{{QStringLiteral("name"), unit.name()},
                       {QStringLiteral("description"), unit.description()},
                       {QStringLiteral("code"), unit.unitCode()},
                       {QStringLiteral("factor"), unit.conversion()}};
}

QJsonValue boundsOf(const CoordSystem &cs)
{
    const QRectF rect = cs.rectNumericCoordSys();
    return QJsonArray{rect.left(), rect.top(), rect.right(), rect.bottom()};
}

QJsonValue ellipsoidOf(const CoordSystem &cs)
{
    if (cs.isNonEarth())
        return {};
    return QJsonArray{cs.getSemiMajor(), cs.getSemiMinor(), cs.getInvFlattening()};
}

QJsonValue shiftOf(const CoordSystem &cs)
{
    if (cs.isNonEarth())
        return {};
    QJsonArray figures;
    for (const double figure : cs.getTOWGS84Params())
        figures << figure;
    return figures;
}

QJsonValue affineOf(const CoordSystem &cs)
{
    const QTransform *t = cs.affineTransform();
    if (!t)
        return {};
    return QJsonArray{t->m11(), t->m21(), t->dx(), t->m12(), t->m22(), t->dy()};
}

QJsonValue epsgOf(const CoordSystem &cs)
{
    const int code = cs.epsg();
    return code > 0 ? QJsonValue(code) : QJsonValue();
}

QJsonValue mapHeaderOf(const CoordSystem &cs)
{
    const MapHeaderCoordsysConverter converter;
    return converter.tabProjInfoToInnerString(converter.prjStrToTABProjInfo(cs.prjStr()));
}

const std::vector<Fact> &facts()
{
    static const std::vector<Fact> all = {
        {"notation", "Notation",
         [](const CoordSystem &cs) { return nivora::cs::sourceTypeToString(cs.sourceType()); }},
        {"description", "Description", [](const CoordSystem &cs) { return cs.description(); }},
        {"epsg", "EPSG code", epsgOf},
        {"geographic", "Geographic", [](const CoordSystem &cs) { return cs.isLatLong(); }},
        {"nonEarth", "Plan without a place on the earth",
         [](const CoordSystem &cs) { return cs.isNonEarth(); }},
        {"unit", "Unit", unitOf},
        {"bounds", "Bounds (x1 y1 x2 y2)", boundsOf},
        {"boundsGiven", "Bounds given in the definition",
         [](const CoordSystem &cs) { return cs.isRectSet(); }},
        {"ellipsoid", "Ellipsoid (a b 1/f)", ellipsoidOf},
        {"towgs84", "Shift to WGS 84", shiftOf},
        {"affine", "Affine (A B C D E F)", affineOf},
        {"prj", "CoordSys", [](const CoordSystem &cs) { return cs.prjStr(); }},
        {"proj", "PROJ", [](const CoordSystem &cs) { return cs.projStr(); }},
        {"wkt", "WKT", [](const CoordSystem &cs) { return cs.exportToWkt(); }},
        {"wkt2", "WKT, second form", [](const CoordSystem &cs) { return cs.exportToWkt2(); }},
        {"tagged", "Tagged", [](const CoordSystem &cs) { return cs.taggedString(); }},
        {"mapHeader", "Map header", mapHeaderOf},
    };
    return all;
}

QString plain(const QJsonValue &value)
{
    switch (value.type()) {
    case QJsonValue::Bool:
        return value.toBool() ? QStringLiteral("yes") : QStringLiteral("no");
    case QJsonValue::Double:
        return QString::number(value.toDouble(), 'g', QLocale::FloatingPointShortest);
    case QJsonValue::String:
        return value.toString().simplified(); // WKT may come on several lines
    case QJsonValue::Array: {
        QStringList items;
        for (const QJsonValue &item : value.toArray())
            items << plain(item);
        return items.join(QLatin1Char(' '));
    }
    case QJsonValue::Object: {
        const QJsonObject unit = value.toObject();
        return QStringLiteral("%1 (%2), factor %3")
            .arg(plain(unit[QStringLiteral("name")]), plain(unit[QStringLiteral("description")]),
                 plain(unit[QStringLiteral("factor")]));
    }
    default:
        return QStringLiteral("-");
    }
}

int run(const CommandLine &line)
{
    const Session session(line);
    const nivora::cs::CoordSystemPtr cs = makeSystem(session, readSource(line.arguments().first()));

    QJsonObject json;
    QJsonObject unknown; // why
    QString text;
    for (const Fact &fact : facts()) {
        QJsonValue value;
        QString shown;
        try {
            value = fact.find(*cs);
            shown = plain(value);
        } catch (const std::exception &e) {
            const QString why = oneLine(QString::fromUtf8(e.what()));
            unknown[QLatin1String(fact.key)] = why;
            shown = QStringLiteral("- (%1)").arg(why);
        }
        json[QLatin1String(fact.key)] = value;
        text += QLatin1String(fact.title) + QStringLiteral(": ") + shown + QLatin1Char('\n');
    }
    json[QStringLiteral("unknown")] = unknown;
    print(line.isSet("json") ? QString::fromUtf8(QJsonDocument(json).toJson()) : text);
    return Success;
}

} // namespace

const Command &infoCommand()
{
    static const Command command = {
        "info",
        "[options] CS",
        "Everything that is known of a coordinate system, and its text in every notation.",
        R"(Writes a line for each fact: "Title: value", "-" for what is not known, with the
reason where there is one.

Examples:
  nivora-cs info 32637
  nivora-cs info --json 'CoordSys Earth Projection 8, 1001, "m", 39, 0, 1, 7500000, 0'
)",
        1,
        {{"json", nullptr,
          "Write one JSON object; what is not known is null, with the reasons in \"unknown\"."}},
        run,
    };
    return command;
}
