#include "SystemBenchmarks.h"

#include "Comparison.h"

#include <coordsys/CoordSystem.h>
#include <coordsys/CoordTransform.h>
#include <coordsys/ProjEngine.h>
#include <coordsys/ProjLibMetadata.h>

#include <cpl_conv.h>
#include <ogr_srs_api.h>
#include <proj.h>

#include <QElapsedTimer>

#include <algorithm>
#include <atomic>
#include <cmath>
#include <thread>
#include <utility>

using namespace nivora::cs;
using benchmark::State;

namespace comparison {
namespace {

using Factory = std::shared_ptr<CoordSysFactory>;

/// A text that nobody has seen: engines and library both remember texts.
QString unseen(const QString &pattern)
{
    static int count = 0;
    return pattern.arg(QString::number(20.0 + ++count * 1e-4, 'f', 4));
}

using Create = CoordSystemPtr (CoordSysFactory::*)(const QString &) const;
using Import = OGRErr (*)(OGRSpatialReferenceH, const QByteArray &);

OGRErr importProj(OGRSpatialReferenceH srs, const QByteArray &text)
{
    return OSRImportFromProj4(srs, text.constData());
}

OGRErr importPrj(OGRSpatialReferenceH srs, const QByteArray &text)
{
    return OSRImportFromMICoordSys(srs, text.constData());
}

OGRErr importWkt(OGRSpatialReferenceH srs, const QByteArray &text)
{
    QByteArray copy = text;
    char *rest = copy.data();
    return OSRImportFromWkt(srs, &rest);
}

/// One import by GDAL and one PROJ object of its export: the least that any maker of a system has to do.
std::function<void(State &)> engineCreation(const QString &pattern, Import import)
{
    return [pattern, import](State &state) {
        for (auto _ : state) {
            const OGRSpatialReferenceH srs = OSRNewSpatialReference(nullptr);
            char *proj = nullptr;
            if (import(srs, unseen(pattern).toUtf8()) != OGRERR_NONE ||
                OSRExportToProj4(srs, &proj) != OGRERR_NONE)
                state.SkipWithError("GDAL refuses the text");
            const PjHandle pj = ownPj(proj_create(globalProjContext(), proj));
            benchmark::DoNotOptimize(pj.get());
            CPLFree(proj);
            OSRDestroySpatialReference(srs);
        }
    };
}

struct Kind
{
    const char *name;
    double aimUs;
    Create create;
    Import import;
    const char *pattern;
    const char *peer;
};

const Kind kinds[] = {
    {"createFromProj, aea on GRS80", 400.0, &CoordSysFactory::createFromProj, importProj,
     "+proj=aea +lat_1=30 +lat_2=60 +lon_0=%1 +ellps=GRS80", "QGIS 8.7 ms"},
    {"createFromProj, bonne", 400.0, &CoordSysFactory::createFromProj, importProj,
     "+proj=bonne +lat_1=60 +lon_0=%1 +ellps=WGS84", "QGIS 8.7 ms"},
    {"createFromProj, tmerc", 400.0, &CoordSysFactory::createFromProj, importProj,
     "+proj=tmerc +lon_0=%1 +x_0=500000 +ellps=krass", "QGIS 8.7 ms"},
    {"createFromProj, longlat with a shift", 400.0, &CoordSysFactory::createFromProj, importProj,
     "+proj=longlat +ellps=bessel +towgs84=%1,2,3", "QGIS 8.7 ms"},
    {"createFromWkt, no code", 800.0, &CoordSysFactory::createFromWkt, importWkt,
     "PROJCS[\"mine\",GEOGCS[\"WGS 84\",DATUM[\"WGS_1984\",SPHEROID[\"WGS 84\",6378137,298.257223563]],"
     "PRIMEM[\"Greenwich\",0],UNIT[\"degree\",0.0174532925199433]],PROJECTION[\"Transverse_Mercator\"],"
     "PARAMETER[\"latitude_of_origin\",0],PARAMETER[\"central_meridian\",%1],PARAMETER[\"scale_factor\",1],"
     "PARAMETER[\"false_easting\",500000],PARAMETER[\"false_northing\",0],UNIT[\"metre\",1]]",
     "-"},
    {"createFromWkt, with a code", 3000.0, &CoordSysFactory::createFromWkt, importWkt,
     "PROJCS[\"mine %1\",GEOGCS[\"Pulkovo 1942\",DATUM[\"Pulkovo_1942\",SPHEROID[\"Krassowsky 1940\",6378245,"
     "298.3]],PRIMEM[\"Greenwich\",0],UNIT[\"degree\",0.0174532925199433],AUTHORITY[\"EPSG\",\"4284\"]],"
     "PROJECTION[\"Transverse_Mercator\"],PARAMETER[\"latitude_of_origin\",0],PARAMETER[\"central_meridian\","
     "39],"
     "PARAMETER[\"scale_factor\",1],PARAMETER[\"false_easting\",7500000],PARAMETER[\"false_northing\",0],"
     "UNIT[\"metre\",1],AUTHORITY[\"EPSG\",\"28407\"]]",
     "-"},
    {"createFromPrj, first time", 1000.0, &CoordSysFactory::createFromPrj, importPrj,
     "CoordSys Earth Projection 8, 1001, \"m\", %1, 0, 1, 7500000, 0", "-"},
};

void addCreations(const Factory &factory)
{
    for (const Kind &kind : kinds) {
        const QString pattern = QString::fromLatin1(kind.pattern);
        const auto library = [factory, pattern, create = kind.create](State &state) {
            for (auto _ : state)
                benchmark::DoNotOptimize((factory.get()->*create)(unseen(pattern)));
        };
        add({kind.name, kind.aimUs, Row::Microseconds, 50, kind.peer}, library,
            engineCreation(pattern, kind.import));
        const auto again = [factory, text = unseen(pattern), create = kind.create](State &state) {
            for (auto _ : state)
                benchmark::DoNotOptimize((factory.get()->*create)(text));
        };
        add({std::string("again: ") + kind.name, 20.0, Row::Microseconds, 0, "QGIS 150 us"}, again, nullptr);
    }
}

/// Codes of the database in turn, each once.
QVector<int> projectedCodes()
{
    QVector<int> codes;
    const PROJ_STRING_LIST list =
        proj_get_codes_from_database(globalProjContext(), "EPSG", PJ_TYPE_PROJECTED_CRS, 0);
    for (int i = 0; list && list[i]; ++i)
        codes << QString::fromLatin1(list[i]).toInt();
    proj_string_list_destroy(list);
    return codes;
}

/// The least that a program on PROJ alone has to do to compute in a system by its code. Some methods have no
/// PROJ text.
void projCode(int code)
{
    PJ_CONTEXT *const context = globalProjContext();
    const PjHandle crs = ownPj(proj_create_from_database(
        context, "EPSG", QByteArray::number(code).constData(), PJ_CATEGORY_CRS, false, nullptr));
    QByteArray text = crs ? proj_as_proj_string(context, crs.get(), PJ_PROJ_5, nullptr) : nullptr;
    if (!text.isEmpty())
        benchmark::DoNotOptimize(
            ownPj(proj_create(context, text.replace("+type=crs", "").constData())).get());
}

/// The least that any maker of all objects of a system by its code has to do.
void engineCode(int code)
{
    const OGRSpatialReferenceH srs = OSRNewSpatialReference(nullptr);
    char *proj = nullptr;
    if (OSRImportFromEPSG(srs, code) == OGRERR_NONE && OSRExportToProj4(srs, &proj) == OGRERR_NONE)
        benchmark::DoNotOptimize(ownPj(proj_create(globalProjContext(), proj)).get());
    CPLFree(proj);
    OSRDestroySpatialReference(srs);
}

/// A code that neither engines nor library have met in this process: they remember.
int unseenCode(const QVector<int> &codes)
{
    static int at = 0;
    constexpr int stride = 7; // shares no factor with the 5,000 codes, as far as they are asked
    return codes.at(at++ * stride % codes.size());
}

using CodeWork = std::function<void(int)>;

std::function<void(State &)> overCodes(const QVector<int> &codes, const CodeWork &work)
{
    return [codes, work](State &state) {
        for (auto _ : state) {
            try {
                work(unseenCode(codes));
            } catch (const std::exception &) {
                // a method that PROJ cannot compute
            }
        }
    };
}

void addCodes(const Factory &factory, const QVector<int> &codes)
{
    const CodeWork create = [factory](int code) { benchmark::DoNotOptimize(factory->createFromEpsg(code)); };
    const CodeWork use = [factory](int code) {
        benchmark::DoNotOptimize(factory->createFromEpsg(code)->OGRSpatialReference());
    };
    add({"createFromEpsg, first time", 1.25, Row::Ratio, 50, "QGIS 270 to 480 us"}, overCodes(codes, create),
        overCodes(codes, projCode));
    add({"createFromEpsg and the objects of PROJ and GDAL", 1.6, Row::Ratio, 50}, overCodes(codes, use),
        overCodes(codes, engineCode));
    const auto again = [factory](State &state) {
        for (auto _ : state)
            benchmark::DoNotOptimize(factory->createFromEpsg(32637));
    };
    add({"again: createFromEpsg", 20.0, Row::Microseconds, 0, "QGIS 150 us"}, again, nullptr);
}

using Seconds = std::vector<double>;

/// epsg(), first and second, over PROJ texts of registered systems.
std::pair<Seconds, Seconds> searchTimes(const Factory &factory, const QVector<int> &codes)
{
    constexpr std::size_t texts = 200;
    Seconds first, second;
    for (int i = 0; i < codes.size() && first.size() < texts; i += codes.size() / 220) {
        try {
            const QString text = ProjLibMetadata().projStringForCrs(codes.at(i), ProjLibMetadata::EPSG);
            const CoordSystemPtr cs = factory->createFromProj(text);
            for (Seconds *times : {&first, &second})
                times->push_back(processorSeconds([&cs] { cs->epsg(); }));
        } catch (const std::exception &) {
            // no PROJ text
        }
    }
    std::sort(first.begin(), first.end());
    std::sort(second.begin(), second.end());
    return {first, second};
}

void addSearches(const Factory &factory, const QVector<int> &codes)
{
    const auto [first, second] = searchTimes(factory, codes);
    const std::size_t middle = first.size() / 2;
    addGiven(
        {"search for a code, the median of 200 PROJ texts", 45000.0, Row::Microseconds, 0, "QGIS 8.7 ms"},
        first.empty() ? NAN : first[middle]);
    addGiven({"search for a code, the longest of 200", 250000.0, Row::Microseconds},
             first.empty() ? NAN : first.back());
    addGiven({"search for a code, the second time", 1.0, Row::Microseconds},
             second.empty() ? NAN : second[middle]);
}

/// The longest of the points that are converted until \p enough.
double longestPoint(const CoordTransform &transform, const std::function<bool()> &enough)
{
    qint64 longest = 0;
    QPointF out;
    while (!enough()) {
        QElapsedTimer timer;
        timer.start();
        benchmark::DoNotOptimize(transform.forward(QPointF(38, 55), out));
        longest = std::max(longest, timer.nsecsElapsed());
    }
    return static_cast<double>(longest) * 1e-9;
}

/// Searches last 10 to 100 ms each; the texts differ, so that none is remembered.
void addWaits(const Factory &factory)
{
    constexpr int searches = 10;
    const auto transform =
        std::make_shared<const CoordTransform>(factory->createFromEpsg(4326), factory->createFromEpsg(32637));
    const auto searching = [factory, transform](State &state) {
        for (auto _ : state) {
            std::vector<CoordSystemPtr> strangers;
            for (int i = 0; i < searches; ++i)
                strangers.push_back(factory->createFromProj(
                    unseen(QStringLiteral("+proj=tmerc +lon_0=%1 +k=0.9996 +x_0=500000 +ellps=krass"))));
            std::atomic<bool> done{false};
            std::thread searcher([&] {
                for (const CoordSystemPtr &cs : strangers)
                    cs->epsg();
                done = true;
            });
            state.SetIterationTime(longestPoint(*transform, [&done] { return done.load(); }));
            searcher.join();
        }
    };
    const auto undisturbed = [transform](State &state) {
        for (auto _ : state) {
            QElapsedTimer timer;
            timer.start();
            state.SetIterationTime(longestPoint(*transform, [&timer] { return timer.elapsed() > 200; }));
        }
    };
    add({"longest wait of a point while another thread searches, beside none", 1000.0, Row::Microseconds, 1,
         "-", Row::Given},
        searching, undisturbed);
}

} // namespace

void addSystems(const Factory &factory)
{
    const QVector<int> codes = projectedCodes();
    addSearches(factory, codes);
    addCreations(factory);
    addCodes(factory, codes);
    addWaits(factory);
}

} // namespace comparison
