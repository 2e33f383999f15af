#include "AnswerJson.h"
#include "CommandLine.h"
#include "Commands.h"
#include "CsText.h"
#include "FileNames.h"
#include "GuessPoints.h"
#include "GuessText.h"
#include "Output.h"
#include "Session.h"
#include "SharedOptions.h"

#include <coordsys/SystemInfo.h>
#include <coordsys/SystemSearch.h>

#include <QObject>

using nivora::cs::SystemGuess;

namespace {

/// Throws Failure for a place that nobody knows.
SystemGuess::Answer answerOf(const CommandLine &line, const SystemGuess &guess,
                             const SystemGuess::Question &question, int limit)
{
    if (!line.isSet("near"))
        return guess.guess(question, limit);
    const QString text = typedText(line.value("near"));
    const std::optional<SystemGuess::Answer> answer = guess.guessNear(text, question, limit);
    if (!answer)
        throw Failure(
            QObject::tr("--near: no town, region or country \"%1\" is known; give LON,LAT in degrees")
                .arg(text));
    return *answer;
}

int run(const CommandLine &line)
{
    const Session session(line);
    const auto guess = nivora::cs::systemGuess(session.factory());
    SystemGuess::Question question;
    question.isSwapped = line.isSet("swap");
    const GuessPoints data = readGuessPoints(line, session);
    question.points = data.points;
    question.stated =
        line.isSet("from") ? systemInfo(*systemOfOption(session, line, "from")).identifier : data.stated;
    if (!data.problem.isEmpty())
        complain(data.problem);
    constexpr int fewEnoughToRead = 5;
    const int limit = line.number("limit", 1, 100, fewEnoughToRead);
    const SystemGuess::Answer answer = answerOf(line, *guess, question, limit);
    if (line.isSet("json"))
        printJson(guessJson(answer));
    else
        print(doubtText(answer) + guessText(answer));
    if (answer.entries.isEmpty())
        complain(QObject::tr("no system's area of use holds these coordinates"));
    return answer.entries.isEmpty() || (answer.doubt && answer.doubt->isRaised) ? SomeFailed : Success;
}

/// The rest of the help.
constexpr const char *guessHelp = QT_TRANSLATE_NOOP(
    "QObject", R"(Reads a table of points, "-" for standard input, or a file of any format that
convert reads, and writes the systems whose area of use holds the coordinates, the
likeliest first: near the place that --near names, else by towns, by what is in
force where the data would lie, and by how small the area is. Each with the place
on the map, its distance, the share of the data inside the area, and what was
assumed: axes swapped, kilometres, feet, the zone's number left out or put before
the easting, degrees, minutes and seconds in one number. Systems that lie within
20 m of each other on the data are one entry: the data cannot tell them apart; the
metres between them and the point whose known position would decide are told. A
system that the file states, or --from, is doubted when most of the data lie
outside its area of use. The exit status is 1 then, and when nothing fits.

Without --x and --y a table's columns are found by their names (x, lon, easting,
y, lat, northing and their likes), else they are the first two.

Examples:
  nivora-cs guess points.csv --near Tver
  nivora-cs guess points.csv --near Romania
  nivora-cs guess parcels.shp --near 37.6,55.7 --json
)");

} // namespace

const Command &guessCommand()
{
    static const Command command = {
        "guess",
        "[options] FILE",
        QT_TRANSLATE_NOOP("QObject", "Which system the coordinates of a file may be in."),
        guessHelp,
        1,
        {
            {"near", "PLACE|LON,LAT",
             QT_TRANSLATE_NOOP(
                 "QObject",
                 "A town near the data, a region or country that holds them, or a place in degrees.")},
            {"swap", nullptr,
             QT_TRANSLATE_NOOP("QObject", "The northing or latitude stands first, for certain.")},
            {"from", "CS",
             QT_TRANSLATE_NOOP("QObject", "The system that is stated for the data, whatever the file says.")},
            {"limit", "N", QT_TRANSLATE_NOOP("QObject", "At most N entries, 5 when not given.")},
            {"x", "NAME|N", QT_TRANSLATE_NOOP("QObject", "The table's column of x.")},
            {"y", "NAME|N", QT_TRANSLATE_NOOP("QObject", "The table's column of y.")},
            shared::decimalComma,
            shared::delimiter,
            shared::encoding,
            {"skip", "N", QT_TRANSLATE_NOOP("QObject", "Pass over the first N lines of the table.")},
            {"json", nullptr, QT_TRANSLATE_NOOP("QObject", "A JSON object.")},
        },
        run,
    };
    return command;
}
