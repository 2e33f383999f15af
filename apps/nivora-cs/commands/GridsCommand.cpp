#include "AnswerJson.h"
#include "CommandLine.h"
#include "Commands.h"
#include "CsText.h"
#include "OperationOptions.h"
#include "OperationText.h"
#include "Output.h"
#include "Session.h"

#include <coordsys/GridFolders.h>

#include <QObject>

using namespace nivora::cs;

namespace {

bool touches(const QRectF &area, const QRectF &wanted)
{
    QRectF whole = area;
    if (whole.width() < 0.0)
        whole.setWidth(whole.width() + 360.0); // across the 180th meridian
    return whole.isNull() || whole.intersects(wanted) || whole.translated(-360.0, 0.0).intersects(wanted) ||
           whole.translated(360.0, 0.0).intersects(wanted);
}

QVector<GridOffer> offersFor(const CommandLine &line, const CoordTransform &transform)
{
    QVector<GridOffer> offers;
    for (const GridOffer &offer : transform.gridOffers())
        if (!line.isSet("area") || touches(offer.operation().area, areaOf(line.value("area"))))
            offers << offer;
    return offers;
}

/// The files that are here, a line each.
QString presentText(const CoordTransform &transform)
{
    QStringList lines;
    for (const TransformOperation &operation : transform.operations())
        for (const TransformGrid &grid : operation.grids)
            lines << QObject::tr("%1: here, %2").arg(grid.name, grid.path) + QLatin1Char('\n');
    lines.removeDuplicates();
    return lines.join(QString());
}

QString foldersText()
{
    QString text;
    for (const QString &folder : gridFolders())
        text += folder + QLatin1Char('\n');
    return QObject::tr("Folders that are searched:\n%1projsync writes to %2\n")
        .arg(text, gridDownloadFolder());
}

QJsonObject answerOf(const QVector<GridOffer> &offers)
{
    return {{QStringLiteral("grids"), offersJson(offers)},
            {QStringLiteral("folders"), QJsonArray::fromStringList(gridFolders())}};
}

int run(const CommandLine &line)
{
    if (line.isSet("from") != line.isSet("to"))
        throw Failure(QObject::tr("grids takes --from and --to together"));
    const Session session(line);
    QVector<GridOffer> offers;
    QString text;
    if (line.isSet("from")) {
        const CoordTransform transform(systemOfOption(session, line, "from"),
                                       systemOfOption(session, line, "to"));
        offers = offersFor(line, transform);
        text = presentText(transform) +
               (offers.isEmpty() ? QObject::tr("No file is missing that would help.\n") : offersText(offers));
    }
    if (line.isSet("json"))
        printJson(answerOf(offers));
    else
        print(text + foldersText());
    return Success;
}

} // namespace

const Command &gridsCommand()
{
    static const Command command = {
        "grids",
        "[--from CS --to CS] [options]",
        QT_TRANSLATE_NOOP("QObject",
                          "Files with datum shifts: which are here, what the missing ones would give."),
        QT_TRANSLATE_NOOP(
            "QObject",
            R"(For a pair of systems: the files that are in use, then the missing ones that would
make positions better, each with what it gives, the operation, its area and how to
get it. Behind them the folders that are searched. Nothing is fetched: projsync,
which comes with PROJ, does that, or --network on any command.

Examples:
  nivora-cs grids --from 27700 --to 4258
  nivora-cs grids --from 4267 --to 4326 --area -80,43,-74,46
)"),
        0,
        {
            {"from", "CS", QT_TRANSLATE_NOOP("QObject", "One system.")},
            {"to", "CS", QT_TRANSLATE_NOOP("QObject", "The other system.")},
            {"area", "W,S,E,N", QT_TRANSLATE_NOOP("QObject", "Only files for this area, in degrees.")},
            {"json", nullptr, QT_TRANSLATE_NOOP("QObject", "A JSON object.")},
        },
        run,
    };
    return command;
}
