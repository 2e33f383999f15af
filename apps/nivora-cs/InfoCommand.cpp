#include "CommandLine.h"
#include "Commands.h"
#include "CsText.h"
#include "InfoText.h"
#include "Output.h"
#include "Session.h"

#include <coordsys/CoordSystem.h>

#include <QObject>

using nivora::cs::CoordSystem;
using nivora::cs::SystemFormat;

namespace {

struct Notation
{
    const char *name;
    SystemFormat format;
};
constexpr Notation notations[] = {
    {"wkt1", SystemFormat::Wkt1},         {"wkt2", SystemFormat::Wkt2}, {"esri", SystemFormat::Esri},
    {"projjson", SystemFormat::ProjJson}, {"proj", SystemFormat::Proj}, {"mapinfo", SystemFormat::Mapinfo},
};

/// A CoordSys string as a map's file has it.
QString savedText(const CoordSystem &cs, SystemFormat format)
{
    const QString text = exportSystem(cs, format);
    const QString word = QStringLiteral("CoordSys ");
    const bool bare = format == SystemFormat::Mapinfo && !text.startsWith(word, Qt::CaseInsensitive);
    return bare ? word + text : text;
}

/// Throws Failure for a notation that is none.
QString textIn(const QString &format, const CoordSystem &cs)
{
    if (format == QLatin1String("json"))
        return infoJson(cs, systemInfo(cs));
    QStringList known{QStringLiteral("json")};
    for (const Notation &notation : notations) {
        if (format == QLatin1String(notation.name))
            return savedText(cs, notation.format).trimmed() + QLatin1Char('\n');
        known << QLatin1String(notation.name);
    }
    throw Failure(QObject::tr("--format takes %1, not \"%2\"").arg(known.join(QStringLiteral(", ")), format));
}

int run(const CommandLine &line)
{
    const Session session(line);
    const nivora::cs::CoordSystemPtr cs = makeSystem(session, readSource(line.arguments().first()));
    const QString format = line.isSet("json") ? QStringLiteral("json") : line.value("format");
    print(format.isEmpty() ? infoPage(*cs, systemInfo(*cs)) : textIn(format, *cs));
    return Success;
}

} // namespace

const Command &infoCommand()
{
    static const Command command = {
        "info",
        "[options] CS",
        QT_TRANSLATE_NOOP("QObject", "What is known of a coordinate system, and its text in any notation."),
        QT_TRANSLATE_NOOP("QObject",
                          R"(Writes a line "Title: value" for each thing that is known, and what was assumed.
With --format the system in that notation alone, fit to be saved: with its name and
its code where it has one.

Examples:
  nivora-cs info 32637
  nivora-cs info --format esri 28407 > zone7.prj
  nivora-cs info --format json 'CoordSys Earth Projection 8, 1001, "m", 39, 0, 1, 7500000, 0'
)"),
        1,
        {
            {"format", "wkt1|wkt2|esri|projjson|proj|mapinfo|json",
             QT_TRANSLATE_NOOP("QObject",
                               "The text in one notation; json: all that is known, as one object.")},
            {"json", nullptr, QT_TRANSLATE_NOOP("QObject", "The same as --format json.")},
        },
        run,
    };
    return command;
}
