#include "SystemBenchmarks.h"

#include "Comparison.h"

#include <coordsys/CoordSystem.h>
#include <coordsys/ProjEngine.h>
#include <coordsys/ProjLibMetadata.h>

#include <cpl_conv.h>
#include <ogr_srs_api.h>
#include <proj.h>

#include <QElapsedTimer>

#include <algorithm>
#include <cstdio>
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

void addCodes(const Factory &factory, const QVector<int> &codes)
{
    const auto library = [factory, codes](State &state) {
        static int at = 0;
        for (auto _ : state) {
            try {
                benchmark::DoNotOptimize(factory->createFromEpsg(codes.at(at++ * 7 % codes.size())));
            } catch (const std::exception &) {
                // a method that PROJ cannot compute
            }
        }
    };
    add({"createFromEpsg, first time", 1000.0, Row::Microseconds, 50}, library, nullptr);
}

/// Time on the wall of epsg(), first and second, over PROJ texts of registered systems. Not a row of the
/// table's kind: the median and the worst are what counts.
void printSearches(const Factory &factory, const QVector<int> &codes)
{
    std::vector<double> first, second;
    for (int i = 0; i < codes.size() && first.size() < 200; i += codes.size() / 220) {
        try {
            const QString text = ProjLibMetadata().projStringForCrs(codes.at(i), ProjLibMetadata::EPSG);
            const CoordSystemPtr cs = factory->createFromProj(text);
            for (std::vector<double> *times : {&first, &second}) {
                QElapsedTimer timer;
                timer.start();
                cs->epsg();
                times->push_back(static_cast<double>(timer.nsecsElapsed()) * 1e-6);
            }
        } catch (const std::exception &) {
            // no PROJ text
        }
    }
    std::sort(first.begin(), first.end());
    std::sort(second.begin(), second.end());
    if (!first.empty())
        std::printf(
            "search for a code over %zu PROJ texts: median %.1f ms (aim 45), worst %.0f ms (aim 250), "
            "the second time %.2f us (aim 1); QGIS 8.7 ms\n\n",
            first.size(), first[first.size() / 2], first.back(), second[second.size() / 2] * 1e3);
}

} // namespace

void addSystems(const Factory &factory)
{
    const QVector<int> codes = projectedCodes();
    printSearches(factory, codes);
    addCreations(factory);
    addCodes(factory, codes);
}

} // namespace comparison
