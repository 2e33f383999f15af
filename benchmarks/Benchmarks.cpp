// What the library adds to the engines' own cost. Each figure runs beside the bare call on the very same kind
// of PROJ object, made from the same texts, and both must give the same coordinates before anything is timed.

#include "CalibrationBenchmarks.h"
#include "CatalogueBenchmarks.h"
#include "Comparison.h"
#include "ParallelBenchmarks.h"
#include "ProcessBenchmarks.h"
#include "SystemBenchmarks.h"

#include <coordsys/CoordSysFactory.h>
#include <coordsys/CoordSystem.h>
#include <coordsys/CoordTransform.h>
#include <coordsys/ProjEngine.h>

#include <cpl_error.h>
#include <proj.h>

#include <QCoreApplication>
#include <QTemporaryDir>

#include <cmath>
#include <cstdlib>
#include <memory>
#include <vector>

using namespace nivora::cs;
using comparison::Row;

namespace {

constexpr int pointCount = 1'000'000;

[[noreturn]] void giveUp(const QString &why)
{
    std::fprintf(stderr, "%s\n", qPrintable(why));
    std::exit(1);
}

/// Spread over zone 37 without repeating: the golden ratio's multiples fill an interval evenly.
QVector<QPointF> somePoints(int count)
{
    QVector<QPointF> points;
    points.reserve(count);
    for (int i = 0; i < count; ++i)
        points << QPointF(36.0 + 6.0 * std::fmod(i * 0.6180339887498949, 1.0), 45.0 + 15.0 * i / count);
    return points;
}

/// The text by which the library hands a system to PROJ for a transformation.
QString engineText(const CoordSystem &cs)
{
    const CoordSystem::SourceData source = cs.sourceParameters();
    switch (source.type) {
    case CoordSystem::Epsg:
        return QStringLiteral("EPSG:") + source.string;
    case CoordSystem::Wkt:
        return source.string;
    case CoordSystem::Proj4:
        return fixedProjString(source.string, true);
    default:
        return fixedProjString(cs.projStr(), true);
    }
}

std::shared_ptr<PJ> engineTransform(const CoordSystemPtr &from, const CoordSystemPtr &to)
{
    const PjHandle raw =
        ownPj(proj_create_crs_to_crs(globalProjContext(), engineText(*from).toUtf8().constData(),
                                     engineText(*to).toUtf8().constData(), nullptr));
    std::shared_ptr<PJ> result(proj_normalize_for_visualization(globalProjContext(), raw.get()),
                               proj_destroy);
    if (!result)
        giveUp(QStringLiteral("PROJ has no transformation"));
    return result;
}

struct Pair
{
    Pair(const CoordSystemPtr &from, const CoordSystemPtr &to)
        : source(from)
        , destination(to)
        , transform(from, to)
        , pj(engineTransform(from, to))
    {
        QPointF ours;
        const PJ_COORD theirs = proj_trans(pj.get(), PJ_FWD, proj_coord(38.0, 55.0, 0.0, HUGE_VAL));
        if (!transform.forward(QPointF(38.0, 55.0), ours) || ours != QPointF(theirs.xy.x, theirs.xy.y))
            giveUp(QStringLiteral("library and engine disagree; the comparison would mean nothing"));
    }

    CoordSystemPtr source;
    CoordSystemPtr destination;
    CoordTransform transform;
    std::shared_ptr<PJ> pj;
};

using State = benchmark::State;

/// \p aim is lower where PROJ has one operation than where it has to choose at each point.
void addVector(const char *name, double aim, const std::shared_ptr<const Pair> &pair,
               const QVector<QPointF> &points)
{
    const auto library = [pair, points](State &state) {
        QVector<QPointF> out;
        for (auto _ : state) {
            if (!pair->transform.forward(points, out))
                state.SkipWithError("failed");
            benchmark::DoNotOptimize(out.constData());
        }
    };
    const auto engine = [pair, points](State &state) {
        std::vector<PJ_COORD> buffer(static_cast<std::size_t>(points.size()));
        QVector<QPointF> out(points.size());
        for (auto _ : state) {
            auto slot = buffer.begin();
            for (const QPointF &p : points)
                *slot++ = proj_coord(p.x(), p.y(), 0.0, HUGE_VAL);
            if (proj_trans_array(pair->pj.get(), PJ_FWD, buffer.size(), buffer.data()) != 0)
                state.SkipWithError("failed");
            QPointF *to = out.data();
            for (const PJ_COORD &c : buffer)
                *to++ = QPointF(c.xy.x, c.xy.y);
            benchmark::DoNotOptimize(out.constData());
        }
    };
    comparison::add({name, aim, Row::Ratio}, library, engine);
}

void addSinglePoint(const std::shared_ptr<const Pair> &pair, const QVector<QPointF> &points)
{
    const auto library = [pair, points](State &state) {
        int i = 0;
        for (auto _ : state) {
            QPointF out;
            if (!pair->transform.forward(points.at(i), out))
                state.SkipWithError("failed");
            benchmark::DoNotOptimize(out);
            i = i + 1 < points.size() ? i + 1 : 0;
        }
    };
    const auto engine = [pair, points](State &state) {
        int i = 0;
        for (auto _ : state) {
            const QPointF &p = points.at(i);
            const PJ_COORD out = proj_trans(pair->pj.get(), PJ_FWD, proj_coord(p.x(), p.y(), 0.0, HUGE_VAL));
            benchmark::DoNotOptimize(out);
            i = i + 1 < points.size() ? i + 1 : 0;
        }
    };
    comparison::add({"CoordTransform::forward, one point", 1.2, Row::Ratio, 0, "QGIS 1.7 of the bare call"},
                    library, engine);
}

void addSinglePointOfSystem(const CoordSystemPtr &cs, const QVector<QPointF> &points)
{
    const auto library = [cs, points](State &state) {
        int i = 0;
        for (auto _ : state) {
            QPointF out;
            if (!cs->forward(points.at(i), out))
                state.SkipWithError("failed");
            benchmark::DoNotOptimize(out);
            i = i + 1 < points.size() ? i + 1 : 0;
        }
    };
    const auto engine = [cs, points](State &state) {
        PJ *const pj = cs->PJ_Proj4_Internal();
        int i = 0;
        for (auto _ : state) {
            const QPointF &p = points.at(i);
            const PJ_COORD in = proj_coord(proj_torad(p.x()), proj_torad(p.y()), 0.0, HUGE_VAL);
            const PJ_COORD out = proj_trans(pj, PJ_FWD, in);
            benchmark::DoNotOptimize(out);
            i = i + 1 < points.size() ? i + 1 : 0;
        }
    };
    comparison::add({"CoordSystem::forward, one point", 1.2, Row::Ratio}, library, engine);
}

const QRectF meshSquare(36.5, 50.0, 5.0, 5.0);

/// 101 x 101 points for a square.
void addMesh(const std::shared_ptr<const Pair> &pair)
{
    const QRectF square = meshSquare;
    const int intervals = CoordTransform::DefaultAddPointsMesh;
    const auto library = [pair, square, intervals](State &state) {
        for (auto _ : state) {
            QRectF out;
            if (!pair->transform.forwardMesh(square, out, intervals))
                state.SkipWithError("failed");
            benchmark::DoNotOptimize(out);
        }
    };
    const auto engine = [pair, square, intervals](State &state) {
        const double step = square.width() / intervals;
        for (auto _ : state) {
            for (int i = 0; i <= intervals; ++i)
                for (int j = 0; j <= intervals; ++j) {
                    const PJ_COORD in =
                        proj_coord(square.x() + i * step, square.y() + j * step, 0.0, HUGE_VAL);
                    const PJ_COORD out = proj_trans(pair->pj.get(), PJ_FWD, in);
                    benchmark::DoNotOptimize(out);
                }
        }
    };
    comparison::add({"forwardMesh, 100 intervals", 1.05, Row::Ratio}, library, engine);
}

/// A pair that has just been made asks for bounds and the like at its first mesh.
void addFirstMesh(const std::shared_ptr<CoordSysFactory> &factory)
{
    const auto meshes = [factory](int before) {
        return [factory, before](State &state) {
            static double meridian = 36.0;
            for (auto _ : state) {
                const QString plane =
                    QStringLiteral("CoordSys Earth Projection 8, 104, \"m\", %1, 0, 1, 0, 0");
                const CoordTransform transform(
                    factory->createFromEpsg(4326),
                    factory->createFromPrj(plane.arg(meridian += 1e-3, 0, 'f', 3)));
                QRectF out;
                for (int i = 0; i < before; ++i)
                    transform.forwardMesh(meshSquare, out, CoordTransform::DefaultAddPointsMesh);
                state.SetIterationTime(comparison::processorSeconds([&] {
                    if (!transform.forwardMesh(meshSquare, out, CoordTransform::DefaultAddPointsMesh))
                        state.SkipWithError("failed");
                }));
            }
        };
    };
    comparison::add({"first mesh of a pair, beside the second", 1.05, Row::Ratio, 30, "-", Row::Given},
                    meshes(0), meshes(1));
}

void addConstruction(const std::shared_ptr<const Pair> &pair)
{
    const auto library = [pair](State &state) {
        for (auto _ : state) {
            const CoordTransform again(pair->source, pair->destination);
            benchmark::DoNotOptimize(&again);
        }
    };
    comparison::add({"CoordTransform of a known pair", 0.4, Row::Microseconds, 0, "QGIS 0.8 us"}, library,
                    nullptr);
}

void addAll(const std::shared_ptr<CoordSysFactory> &factory, const QString &userDir)
{
    const CoordSystemPtr utm = factory->createFromEpsg(32637);
    const auto toUtm = std::make_shared<const Pair>(factory->createFromEpsg(4326), utm);
    const auto shifted = std::make_shared<const Pair>(
        factory->createFromPrj(QStringLiteral("CoordSys Earth Projection 1, 1001")), utm);
    const auto choosing = std::make_shared<const Pair>(factory->createFromEpsg(4284), utm);

    const QVector<QPointF> million = somePoints(pointCount);
    const QVector<QPointF> few = somePoints(1000);
    addVector("1,000,000 points, EPSG:4326 to EPSG:32637, one operation", 0.95, toUtm, million);
    addVector("1,000,000 points, Pulkovo 1942 with a shift to EPSG:32637, one operation", 0.95, shifted,
              million);
    addVector("1,000,000 points, EPSG:4284 to EPSG:32637, several operations", 0.98, choosing, million);
    addSinglePoint(toUtm, few);
    addSinglePointOfSystem(utm, few);
    addMesh(toUtm);
    addFirstMesh(factory);
    addConstruction(toUtm);
    comparison::addSystems(factory);
    comparison::addCalibrations(factory);
    comparison::addParallel(toUtm->transform, engineTransform(toUtm->source, toUtm->destination), million);
    comparison::addCatalogue(factory, userDir);
}

} // namespace

int main(int argc, char **argv)
{
    QCoreApplication app(argc, argv);
    qInstallMessageHandler([](QtMsgType, const QMessageLogContext &, const QString &) {});
    CPLPushErrorHandler(CPLQuietErrorHandler);
    benchmark::Initialize(&argc, argv);
    if (benchmark::ReportUnrecognizedArguments(argc, argv))
        return 1;

    const QTemporaryDir userDir;
    comparison::addProcesses(userDir.path()); // while nothing has touched the engines
    const auto factory = std::make_shared<CoordSysFactory>(QStringLiteral(NIVORA_RESOURCES), userDir.path(),
                                                           QStringLiteral("ru"));
    if (!factory->initCoordSystemEnvironment())
        giveUp(QStringLiteral("cannot load the catalogues"));
    CoordSysFactory::setDefaultCoordSysFactory(factory);

    addAll(factory, userDir.path());
    comparison::Reporter reporter;
    benchmark::RunSpecifiedBenchmarks(&reporter);
    reporter.printTable();
    return reporter.allRan() ? 0 : 1;
}
