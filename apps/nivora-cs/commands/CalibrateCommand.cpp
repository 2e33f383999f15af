#include "CalibrationReport.h"
#include "CalibrationText.h"
#include "CommandLine.h"
#include "Commands.h"
#include "CsText.h"
#include "FileNames.h"
#include "Output.h"
#include "PairTable.h"
#include "Session.h"
#include "SharedOptions.h"
#include "StagedOutput.h"
#include "UserStore.h"

#include <coordsys/CalibrationStore.h>
#include <coordsys/CoordSystem.h>
#include <coordsys/ProjectionParamsManager.h>

#include <QFile>
#include <QObject>

#include <algorithm>
#include <memory>

using namespace nivora::cs;

namespace {

Calibration::Local localOf(const CommandLine &line, const Session &session)
{
    Calibration::Local local;
    if (line.isSet("from"))
        local.system = systemOfOption(session, line, "from");
    if (!line.isSet("unit"))
        return local;
    const MIUnitConvParam *unit =
        session.factory().projectionParamsManager()->unitByName(line.value("unit"), std::nothrow);
    if (!unit || !(unit->conversion() > 0.0))
        throw Failure(QObject::tr("--unit: there is no unit \"%1\"").arg(line.value("unit")));
    local.unit = *unit;
    return local;
}

/// The record of a saved system. Throws Failure.
CalibrationRecord savedRecord(const Session &session, const QString &name)
{
    for (const CalibrationRecord &record : CalibrationStore(session.userSystems().fileInfo()).records())
        if (record.name.simplified().compare(name.simplified(), Qt::CaseInsensitive) == 0)
            return record;
    throw Failure(QObject::tr("no points are kept of a system with the name \"%1\"").arg(name));
}

/// Leaves out the points of the option --without, and those alone.
void switchPoints(const CommandLine &line, QVector<CalibrationPair> &pairs)
{
    if (!line.isSet("without"))
        return;
    QStringList off = line.value("without").split(QLatin1Char(','), Qt::SkipEmptyParts);
    const QStringList named = off;
    for (CalibrationPair &pair : pairs) {
        pair.isUsed = !named.contains(pair.name);
        off.removeAll(pair.name);
    }
    if (!off.isEmpty())
        throw Failure(QObject::tr("--without: there is no point \"%1\"").arg(off.first()));
}

/// The points of the file, or those that were kept, with the file's behind them.
Calibration calibrationOf(const CommandLine &line, const Session &session)
{
    if (!line.isSet("saved")) {
        const CoordSystemPtr known = systemOfOption(session, line, "to");
        const Calibration::Local local = localOf(line, session);
        QVector<CalibrationPair> pairs = readPairs(line, *known, local.system.get());
        switchPoints(line, pairs);
        return Calibration(known, pairs, local);
    }
    for (const char *option : {"to", "from", "unit"})
        if (line.isSet(option))
            throw Failure(QObject::tr("--saved goes without --%1").arg(QLatin1String(option)));
    CalibrationRecord record = savedRecord(session, typedText(line.value("saved")));
    const Calibration kept = record.calibration();
    if (!line.arguments().isEmpty())
        record.pairs += readPairs(line, *kept.knownSystem(), kept.localSystem().get());
    switchPoints(line, record.pairs);
    return record.calibration();
}

/// Throws Failure for a word that is none.
CalibrationModel modelOf(const CommandLine &line, const Calibration &calibration)
{
    const QString word = line.isSet("model") ? line.value("model") : QStringLiteral("auto");
    if (word == QLatin1String("auto")) {
        const auto justified = calibration.justifiedModel();
        if (!justified)
            throw Failure(calibration.fit(CalibrationModel::Shift).refusal());
        return *justified;
    }
    if (const auto model = calibrationModel(word))
        return *model;
    QStringList known{QStringLiteral("auto")};
    for (const CalibrationModel model : calibrationModels())
        known << calibrationWord(model);
    throw Failure(QObject::tr("--model takes %1, not \"%2\"").arg(known.join(QStringLiteral(", ")), word));
}

/// Where the report will be written, null without one. Throws Failure for a file of another kind, or one that
/// is there, before anything is computed.
std::unique_ptr<StagedOutput> reportOf(const CommandLine &line)
{
    if (!line.isSet("report"))
        return nullptr;
    const QString name = line.value("report");
    if (!name.endsWith(QLatin1String(".html")) && !name.endsWith(QLatin1String(".md")))
        throw Failure(QObject::tr("--report takes a .html or .md file, not \"%1\"").arg(name));
    return std::make_unique<StagedOutput>(localPath(name), line.isSet("overwrite") ? StagedOutput::Replaced
                                                                                   : StagedOutput::New);
}

void writeReport(StagedOutput &report, const CalibrationAnswer &answer)
{
    const QString text =
        report.path().endsWith(QLatin1String(".md")) ? calibrationMarkdown(answer) : calibrationHtml(answer);
    QFile file(report.path());
    const QByteArray bytes = text.toUtf8();
    if (!file.open(QIODevice::WriteOnly) || file.write(bytes) != bytes.size() || !file.flush())
        throw Failure(QObject::tr("cannot write %1: %2").arg(report.path(), file.errorString()));
    file.close();
    report.publish({});
}

bool isFit(const CalibrationStore &calibrations, const CoordSystemTypes::SourceData &source)
{
    const QVector<CalibrationRecord> kept = calibrations.records();
    return std::any_of(kept.begin(), kept.end(),
                       [&](const CalibrationRecord &record) { return record.system == source; });
}

/// Takes out the entries that an earlier fit was kept in under the same name. \return their sources, of which
/// the points are to be forgotten. Throws Failure when the name is that of another system.
QVector<CoordSystemTypes::SourceData>
removeEarlier(UserCoordSystem &systems, const CalibrationStore &calibrations, const CalibrationRecord &record)
{
    QVector<CoordSystemTypes::SourceData> replaced;
    const QList<UserCoordSystem::CsDataType> branches =
        systems.data(); // a copy: entries go while it is walked
    for (const UserCoordSystem::CsDataType &branch : branches)
        for (const UserCoordSystem::CoordSystemParam &entry : branch.entries) {
            if (entry.description().simplified() != record.name.simplified())
                continue;
            if (entry.source() != record.system && !isFit(calibrations, entry.source()))
                throw Failure(QObject::tr("you have another system with the name \"%1\"").arg(record.name));
            systems.removeCoordSystem(branch.name, entry.source());
            if (entry.source() != record.system)
                replaced << entry.source();
        }
    return replaced;
}

/// The points of what is replaced go last: until then a failure leaves everything as it was.
void save(const CommandLine &line, const Session &session, const CalibrationAnswer &answer)
{
    const QString name = typedText(line.value("save"));
    const QString branch =
        line.isSet("branch") ? typedText(line.value("branch")) : UserCoordSystem::defaultBranch();
    const CalibrationRecord record = CalibrationRecord::of(answer.calibration, answer.fit, name);
    const CalibrationStore calibrations(session.userSystems().fileInfo());
    QVector<CoordSystemTypes::SourceData> replaced;
    changeOwnSystems(session, [&](UserCoordSystem &systems) {
        replaced = removeEarlier(systems, calibrations, record);
        calibrations.save(record);
        systems.setCoordSystem(branch, record.system, name);
    });
    for (const CoordSystemTypes::SourceData &source : qAsConst(replaced))
        calibrations.remove(source);
}

int run(const CommandLine &line)
{
    const std::unique_ptr<StagedOutput> report = reportOf(line);
    const Session session(line);
    if (line.arguments().size() > 1)
        throw Failure(QObject::tr("calibrate takes one file"));
    const Calibration calibration = calibrationOf(line, session);
    const CalibrationFit fit = calibration.fit(modelOf(line, calibration));
    if (!fit.isUsable())
        throw Failure(QStringLiteral("%1: %2").arg(calibrationText(fit.model()), fit.refusal()));
    const CalibrationAnswer answer = answerOf(calibration, fit, typedText(line.value("save")));
    if (report)
        writeReport(*report, answer);
    if (line.isSet("save"))
        save(line, session, answer);
    print(line.isSet("json") ? calibrationJson(answer) : calibrationPage(answer));
    return fit.suspects().isEmpty() ? Success : SomeFailed;
}

constexpr const char *help = QT_TRANSLATE_NOOP(
    "QObject", R"(Reads a table of points, local and known coordinates on a line, and finds by least
squares the system in which the points have their local coordinates. Writes the
figures with their standard deviations, what is left at each point in metres, and
the system's CoordSys string and WKT 2. With --save the system becomes one of your
own: convert --from NAME and info NAME know it, and its points are kept beside it.
The exit status is 1 when a point is suspected to be a blunder.

A line holds x, y, known x, known y, with a name before them when there are five
columns or more; other orders by --name, --x, --y, --to-x and --to-y, by the names
of a header or by number. Degrees may be written as transform reads them. With
--saved the points are those that were kept; a FILE adds to them.

  auto        shift, similarity or affine: the simplest that the next does not improve on
  shift       another origin
  similarity  also turned, of another scale
  affine      also of two scales and skew
  tmerc       a transverse Mercator of its own: meridian, scale, false origin
  helmert     another datum, seven figures; --from tells projection and ellipsoid
  polynomial  of degree two, to compare with: makes no system

Examples:
  nivora-cs calibrate pairs.csv --to 28407
  nivora-cs calibrate site.csv --to 4326 --model similarity --save 'Site 7'
  nivora-cs calibrate pairs.csv --to 32637 --without P3,P8 --report fit.html
  nivora-cs calibrate --saved 'Site 7' --without P3 --save 'Site 7'
)");

std::vector<Option> options()
{
    return {
        {"to", "CS", QT_TRANSLATE_NOOP("QObject", "The system of the known coordinates.")},
        {"from", "CS",
         QT_TRANSLATE_NOOP("QObject", "Projection and ellipsoid of the local coordinates, for helmert.")},
        {"model", "auto|shift|similarity|affine|tmerc|helmert|polynomial",
         QT_TRANSLATE_NOOP("QObject", "How the systems differ; auto when not given.")},
        {"unit", "NAME", QT_TRANSLATE_NOOP("QObject", "Unit of the local coordinates, m when not given.")},
        {"without", "NAMES",
         QT_TRANSLATE_NOOP("QObject", "Points to leave out of the fit, with commas between.")},
        {"saved", "NAME",
         QT_TRANSLATE_NOOP("QObject", "The points of a system that was saved, with those of the FILE.")},
        {"save", "NAME", QT_TRANSLATE_NOOP("QObject", "Keep the system under this name.")},
        shared::branch,
        {"json", nullptr, QT_TRANSLATE_NOOP("QObject", "Write a JSON object.")},
        {"report", "FILE", QT_TRANSLATE_NOOP("QObject", "Write a report with a drawing, .html or .md, too.")},
        {"overwrite", nullptr, QT_TRANSLATE_NOOP("QObject", "Replace a report that is there.")},
        {"name", "NAME|N", QT_TRANSLATE_NOOP("QObject", "The table's column of names.")},
        {"x", "NAME|N", QT_TRANSLATE_NOOP("QObject", "The table's column of the local x.")},
        {"y", "NAME|N", QT_TRANSLATE_NOOP("QObject", "The table's column of the local y.")},
        {"to-x", "NAME|N", QT_TRANSLATE_NOOP("QObject", "The table's column of the known x.")},
        {"to-y", "NAME|N", QT_TRANSLATE_NOOP("QObject", "The table's column of the known y.")},
        {"height", "NAME|N",
         QT_TRANSLATE_NOOP("QObject", "Local heights above the ellipsoid, metres, for helmert.")},
        {"to-height", "NAME|N", QT_TRANSLATE_NOOP("QObject", "Known heights, likewise.")},
        {"weight", "NAME|N", QT_TRANSLATE_NOOP("QObject", "Weights: 4 is twice as exact as 1.")},
        shared::decimalComma,
        shared::delimiter,
        shared::encoding,
        {"skip", "N", QT_TRANSLATE_NOOP("QObject", "Pass over the first N lines of the table.")},
    };
}

} // namespace

const Command &calibrateCommand()
{
    static const Command command = {
        "calibrate",
        "--to CS|--saved NAME [options] [FILE]",
        QT_TRANSLATE_NOOP("QObject", "A system made from points whose coordinates are known in another."),
        help,
        Command::AnyCount,
        options(),
        run,
    };
    return command;
}
