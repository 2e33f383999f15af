#include "AnswerJson.h"
#include "CatalogueCheck.h"
#include "CommandLine.h"
#include "Commands.h"
#include "FileNames.h"
#include "Output.h"
#include "PointText.h"
#include "Session.h"

#include <coordsys/CoordSystem.h>
#include <coordsys/CoordSystemStrings.h>
#include <coordsys/MapinfoCoordSystem.h>
#include <coordsys/MapinfoSearch.h>
#include <coordsys/PrjText.h>
#include <coordsys/ShiftQuality.h>
#include <coordsys/SystemSearch.h>

#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <QMap>
#include <QObject>

#include <cmath>

using namespace nivora::cs;

namespace {

QString codeText(int epsg)
{
    return epsg == CoordSystem::EPSG_UNDEFINDED ? QStringLiteral("-") : QString::number(epsg);
}

/// The number of an EPSG code, a code of another authority with its name, "-" where there is none.
QString codeText(const MapinfoSearch::Hit &hit)
{
    return hit.code.isEmpty() || hit.epsg > 0 ? codeText(hit.epsg) : hit.code;
}

/// Code, name and CoordSys string of an entry, separated by tabs.
QString entryLine(const QString &code, const QString &name, const QString &prj)
{
    return code + QLatin1Char('\t') + name + QLatin1Char('\t') + prj + QLatin1Char('\n');
}

/// The categories, a row each.
void addCategories(const QList<CoordSystemParamsList> &categories, QString &text, QJsonArray &rows)
{
    for (const CoordSystemParamsList &list : categories) {
        text += QStringLiteral("%1\t%2\n").arg(QString::number(list.entries.size()), list.name);
        rows << QJsonObject{{QStringLiteral("category"), list.name},
                            {QStringLiteral("systems"), list.entries.size()}};
    }
}

struct ShownText
{
    QString prj;    ///< empty when there is none
    QString remark; ///< why there is none, or what a reader of it should know
    QString line() const
    {
        const QString text = prj.isEmpty() ? QObject::tr("none") : prj;
        return remark.isEmpty() ? text : QStringLiteral("%1 (%2)").arg(text, remark);
    }
};

/// An entry's own string. What programs lose of its affine clause only its code tells.
ShownText shownEntry(const CoordSysFactory &factory, const QString &prj, int epsg)
{
    if (epsg <= 0 || !hasAffineOrBoundsInString(prj).affine)
        return {prj, {}};
    try {
        return {prj, prjTextOf(*factory.createFromEpsg(epsg)).remark()};
    } catch (const std::exception &) { // a code of a host's file that the database lacks
        return {prj, {}};
    }
}

/// The entry's CoordSys string, or that of the database's system, with the metres of its datum.
ShownText shownText(const CoordSysFactory &factory, const MapinfoSearch::Hit &hit)
{
    try {
        if (!hit.isInCatalogue()) {
            const CoordSystemPtr cs = factory.createFromUserInput(hit.isOwn() ? hit.name : hit.code);
            return {prjTextOf(*cs).text, prjRemark(*cs)};
        }
        const QString prj = factory.mapinfoCoordSystem()->getStrMB(hit.position.first, hit.position.second);
        const bool isByCode = hit.epsg > 0 && hasAffineOrBoundsInString(prj).affine;
        return {prj, prjRemark(isByCode ? *factory.createFromEpsg(hit.epsg) : *factory.createFromPrj(prj))};
    } catch (const std::exception &e) {
        return {{}, oneLine(QString::fromUtf8(e.what()))};
    }
}

/// The entries of one category. False when there is none of that name.
bool addEntries(const CoordSysFactory &factory, const QString &wanted, QString &text, QJsonArray &rows)
{
    const MapinfoCoordSystem &catalogue = *factory.mapinfoCoordSystem();
    const QList<CoordSystemParamsList> categories = catalogue.projectionList();
    bool known = false;
    for (int category = 0; category < categories.size(); ++category) {
        const CoordSystemParamsList &list = categories.at(category);
        if (list.name.compare(wanted, Qt::CaseInsensitive) != 0)
            continue;
        known = true;
        for (int index = 0; index < list.entries.size(); ++index) {
            const int epsg = list.entries.at(index).epsg();
            const QString name = list.entries.at(index).name();
            const ShownText shown = shownEntry(factory, catalogue.getStrMB(category, index), epsg);
            text += entryLine(codeText(epsg), name, shown.line());
            QJsonObject row{{QStringLiteral("epsg"), epsg > 0 ? QJsonValue(epsg) : QJsonValue()},
                            {QStringLiteral("name"), name},
                            {QStringLiteral("prj"), shown.prj}};
            if (!shown.remark.isEmpty())
                row.insert(QStringLiteral("remark"), shown.remark);
            rows << row;
        }
    }
    return known;
}

int runList(const CommandLine &line)
{
    const Session session(line);
    if (line.isSet("check"))
        return checkCatalogue(session.factory(), line.value("check"));
    const auto catalogue = session.factory().mapinfoCoordSystem();
    const QString wanted = typedText(line.value("category"));
    QString text;
    QJsonArray rows;
    if (wanted.isEmpty())
        addCategories(catalogue->projectionList(), text, rows);
    else if (!addEntries(session.factory(), wanted, text, rows))
        throw Failure(QObject::tr("no category \"%1\"; nivora-cs list shows them").arg(wanted));
    if (line.isSet("json"))
        printJson({{wanted.isEmpty() ? QStringLiteral("categories") : QStringLiteral("systems"), rows}});
    else
        print(text);
    return Success;
}

QPointF placeOf(const QString &text)
{
    const QStringList parts = text.split(QLatin1Char(','));
    double numbers[2] = {};
    bool ok = parts.size() == 2;
    for (int i = 0; ok && i < 2; ++i) {
        const QByteArray utf8 = parts.at(i).trimmed().toUtf8();
        ok = readNumber({utf8.constData(), static_cast<std::size_t>(utf8.size())}, numbers[i]);
    }
    if (!ok)
        throw Failure(QObject::tr("\"%1\" is no LON,LAT").arg(text));
    if (std::fabs(numbers[0]) > 360.0 || std::fabs(numbers[1]) > 90.0)
        throw Failure(
            QObject::tr("%1 is no place on the earth: longitude and latitude in degrees").arg(text));
    return {numbers[0], numbers[1]};
}

/// The systems that words mean, those of a place where one is given. Tells which words were of no use.
QVector<MapinfoSearch::Hit> hitsOf(const CommandLine &line, const MapinfoSearch &search, int limit)
{
    const QString words = typedText(line.arguments().join(QLatin1Char(' ')));
    const std::optional<QPointF> place =
        line.isSet("at") ? std::optional<QPointF>(placeOf(line.value("at"))) : std::nullopt;
    const MapinfoSearch::Answer answer = search.answer(words, place, limit);
    if (!answer.hits.isEmpty() && !answer.without.isEmpty())
        complain(QObject::tr("found without \"%1\"").arg(answer.without.join(QLatin1String("\", \""))));
    return answer.hits;
}

QJsonObject hitJson(const MapinfoSearch::Hit &hit, const ShownText &shown)
{
    QJsonObject object{{QStringLiteral("name"), hit.name},
                       {QStringLiteral("category"), hit.category},
                       {QStringLiteral("coordsys"), shown.prj}};
    if (!shown.remark.isEmpty())
        object.insert(QStringLiteral("remark"), shown.remark);
    if (hit.epsg != CoordSystem::EPSG_UNDEFINDED)
        object.insert(QStringLiteral("epsg"), hit.epsg);
    if (!hit.code.isEmpty())
        object.insert(QStringLiteral("code"), hit.code);
    object.insert(QStringLiteral("withdrawn"), hit.isWithdrawn);
    return object;
}

int runFind(const CommandLine &line)
{
    const QString words = typedText(line.arguments().join(QLatin1Char(' ')));
    if (words.trimmed().isEmpty() && !line.isSet("at"))
        throw Failure(QObject::tr("find needs words or --at LON,LAT"));
    constexpr int fewEnoughToRead = 50;
    const int limit = line.number("limit", 1, 1 << 20, fewEnoughToRead);
    const Session session(line);
    const auto search = systemSearch(session.factory());
    QString text;
    QJsonArray list;
    const QVector<MapinfoSearch::Hit> hits = hitsOf(line, *search, limit);
    for (const MapinfoSearch::Hit &hit : hits) {
        const ShownText shown = shownText(session.factory(), hit);
        text += entryLine(codeText(hit), hit.name, shown.line());
        list.append(hitJson(hit, shown));
    }
    print(line.isSet("json") ? QString::fromUtf8(QJsonDocument(list).toJson()) : text);
    const QString remark = search->remark(words, session.factory().language());
    if (hits.isEmpty() || !remark.isEmpty())
        complain(remark.isEmpty() ? QObject::tr("nothing found") : remark);
    return hits.isEmpty() ? SomeFailed : Success;
}

} // namespace

const Command &listCommand()
{
    static const Command command = {
        "list",
        "[--category NAME | --check FILE] [--json]",
        QT_TRANSLATE_NOOP("QObject", "The catalogue of named systems."),
        QT_TRANSLATE_NOOP("QObject",
                          R"(Without options the categories with their counts. With --category its systems, a
line each: EPSG code or "-", name, CoordSys string, separated by tabs.
--check reads another catalogue file and reports, by line, what loading it would
pass over in silence: lines that are no entry, entries that cannot be built or
lack values, duplicates, bytes of another encoding, an end that may be cut off;
the exit status is 1 when there are any.

Examples:
  nivora-cs list
)"),
        0,
        {
            {"category", "NAME",
             QT_TRANSLATE_NOOP("QObject", "The systems of one category, letter case does not count.")},
            {"check", "FILE", QT_TRANSLATE_NOOP("QObject", "Check a catalogue file.")},
            {"json", nullptr, QT_TRANSLATE_NOOP("QObject", "A JSON object.")},
        },
        runList,
        false,
    };
    return command;
}

const Command &findCommand()
{
    static const Command command = {
        "find",
        "[options] WORDS...",
        QT_TRANSLATE_NOOP("QObject", "Named systems by words, code or place."),
        QT_TRANSLATE_NOOP("QObject",
                          R"(The systems that the words mean, the likeliest first: names in either language,
codes and authorities, zones ("utm 22s", "zone 7"), units, countries and towns,
what people say (google, swiss, lambert 93), in any order; letter case and
accents do not count, slips of the hand are forgiven. Systems in force come
before withdrawn ones, everyday ones before their twins. Words that no system
has are told and left aside. --at finds the systems whose area of use holds a
place. A line each: EPSG code, code of another authority or "-", name, CoordSys
string, separated by tabs. The exit status is 1 when nothing was found.

Examples:
  nivora-cs find 32637
  nivora-cs find utm Pskov
  nivora-cs find --at 37.6,55.8 utm
)"),
        Command::AnyCount,
        {
            {"at", "LON,LAT", QT_TRANSLATE_NOOP("QObject", "Systems in use at a place, degrees.")},
            {"limit", "N", QT_TRANSLATE_NOOP("QObject", "At most N lines, 50 when not given.")},
            {"json", nullptr, QT_TRANSLATE_NOOP("QObject", "A JSON list.")},
        },
        runFind,
        false,
    };
    return command;
}

QString systemsBeginningWith(const QString &digits)
{
    static const Command plain = {"", "", "", "", Command::AnyCount, {}, nullptr, false};
    const Session session(CommandLine(plain, {}));
    QMap<QString, QString> lines;
    for (const CoordSystemParamsList &category : session.factory().mapinfoCoordSystem()->projectionList())
        for (const CoordSystemParams &entry : category.entries)
            if (const QString code = codeText(entry.epsg()); code.startsWith(digits) && !lines.contains(code))
                lines.insert(code, entry.name());
    QString text;
    for (auto line = lines.constBegin(); line != lines.constEnd(); ++line)
        text += QStringLiteral("%1\t%2\n").arg(line.key(), line.value());
    return text;
}
