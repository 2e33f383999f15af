#include "DriverText_p.h"
#include <coordsys/MapHeaderCoordsysConverter.h>
#include <coordsys/SpatialReferenceText.h>

#include <support/Support.h>

#include <cpl_error.h>
#include <ogr_srs_api.h>

#include <array>
#include <atomic>
#include <cmath>
#include <thread>
#include <vector>

using namespace nivora::cs;
using Srs = std::shared_ptr<void>;

constexpr double toleranceM = 1e-3; // what a user may see

namespace {

/// From PROJ text, WKT, "EPSG:code", or a CoordSys string.
Srs import(const QString &text)
{
    const Srs srs(OSRNewSpatialReference(nullptr), OSRDestroySpatialReference);
    OSRSetAxisMappingStrategy(srs.get(), OAMS_TRADITIONAL_GIS_ORDER);
    const QByteArray bytes = text.toUtf8();
    if (text.startsWith("Earth"_s) || text.startsWith("NonEarth"_s))
        OSRImportFromMICoordSys(srs.get(), bytes.constData());
    else
        OSRSetFromUserInput(srs.get(), bytes.constData());
    return srs;
}

/// Easting and northing in metres of degrees on the reference's own datum and prime meridian; NaN when it
/// fails.
QPointF plane(const Srs &srs, double lon, double lat)
{
    const Srs base(OSRCloneGeogCS(srs.get()), OSRDestroySpatialReference);
    OSRSetAxisMappingStrategy(base.get(), OAMS_TRADITIONAL_GIS_ORDER);
    const double perDegree = std::acos(-1.0) / 180.0 / OSRGetAngularUnits(base.get(), nullptr);
    double x = lon * perDegree;
    double y = lat * perDegree;
    const std::shared_ptr<void> transform(OCTNewCoordinateTransformation(base.get(), srs.get()),
                                          OCTDestroyCoordinateTransformation);
    if (!transform || !OCTTransform(transform.get(), 1, &x, &y, nullptr))
        return {NAN, NAN};
    const double factor = OSRIsGeographic(srs.get()) ? 111e3 : OSRGetLinearUnits(srs.get(), nullptr);
    return {x * factor, y * factor};
}

} // namespace

class TestSpatialReferenceText : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void initTestCase() { QVERIFY(support::shippedFactory()); }

    void text_data()
    {
        const support::Columns<QString, QString, QString> row; // logged: beginning of the one error line
        const char *const incorrect = "Строка PRJ сформирована некорректно (";
        const char *const noShift = "Сдвиг датума неизвестен";
        const auto geographic = [](const char *datum) {
            return R"(GEOGCS["x",DATUM[%1],PRIMEM["Greenwich",0],UNIT["degree",0.0174532925199433]])"_s.arg(
                QString::fromUtf8(datum));
        };
        // clang-format off
        for (const char *prj : {"Earth Projection 1, 0", "Earth Projection 1, 104", "Earth Projection 1, 157",
                 "Earth Projection 10, 157, \"m\", 0",
                 "Earth Projection 10, 157, \"ft\", 0", // GDAL writes 104: the ellipsoidal Mercator, 43 km off
                 "Earth Projection 8, 1001, \"m\", 39, 0, 1, 7500000, 0", "Earth Projection 1, 1002",
                 "Earth Projection 8, 999, 3, 1, 2, 3, \"m\", 39, 0, 1, 0, 0",
                 "Earth Projection 1, 9999, 3, 23.57, -140.95, -79.8, 0, -0.35, -0.79, -0.22, 0",
                 "Earth Projection 1, 9999, 3, 23.57, -140.95, -79.8, 0, -0.35, -0.79, -0.22, 2.33722917",
                 "Earth Projection 1, 79", "Earth Projection 1, 1028", // GDAL writes figures, and its scale is reversed
                 "NonEarth Units \"rd\""})
            // clang-format off
            row(prj, prj, prj, "");
        row("miles were dropped", "+proj=tmerc +lon_0=39 +x_0=804672 +units=mi +datum=WGS84", "8, 104, \"mi\", 39, 0, 1, 500, 0", "");
        row("rods by factor",
            "+proj=tmerc +lon_0=39 +x_0=502.921005842012 +to_meter=5.02921005842012 +datum=WGS84",
            "8, 104, \"rd\", 39, 0, 1, 100, 0", "");
        row("no code for decimetres", "+proj=tmerc +lon_0=39 +units=dm +datum=WGS84", "8, 104, \"m\", 39, 0, 1, 0, 0", incorrect);
        row("nor for those of a plan", "LOCAL_CS[\"%1\",UNIT[\"dm\",0.1]]", "NonEarth Units \"m\"", incorrect);
        row("scale and its sign", "+proj=longlat +ellps=krass +towgs84=23.57,-140.95,-79.8,0,0.35,0.79,-0.22",
            "1, 9999, 3, 23.57, -140.95, -79.8, 0, -0.35, -0.79, -0.22, 0", "");
        row("a user datum stays one", "+proj=longlat +ellps=krass +towgs84=24,-123,-94,0.02,-0.25,-0.13,1.1",
            "1, 9999, 3, 24, -123, -94, -0.02, 0.25, 0.13, 1.1, 0", "");
        row("ellipsoid without datum", "+proj=longlat +ellps=krass", "1, 999, 3, 0, 0, 0", noShift);
        row("meridian", "+proj=tmerc +lon_0=0 +ellps=krass +pm=paris +towgs84=1,2,3",
            "8, 9999, 3, 1, 2, 3, 0, 0, 0, 0, 2.33722917, \"m\", 0, 0, 1, 0, 0", "");
        row("meridian without shift", "+proj=longlat +ellps=GRS80 +pm=paris", "1, 9999, 0, 0, 0, 0, 0, 0, 0, 0, 2.33722917", noShift);
        row("the number of ellipsoid, shift and meridian", "+proj=longlat +a=6378249.2 +b=6356515 +pm=paris +towgs84=-168,-60,320", "1, 1002", "");
        row("shift differs from the number's",
            geographic(R"("Pulkovo_1942",SPHEROID["Krassowsky 1940",6378245,298.3],TOWGS84[28,-130,-95,0,0,0,0],AUTHORITY["EPSG","6284"])"),
            "1, 999, 3, 28, -130, -95", "");
        row("WGS 84 is only its ellipsoid", geographic(R"("Vietnam_2000",SPHEROID["WGS 84",6378137,298.257223563])"), "1, 104", noShift);
        row("WGS 84 by another name", geographic(R"("D_WGS_1984",SPHEROID["WGS_1984",6378137,298.257223563])"), "1, 104", "");
        row("Mercator of 157's ellipsoid", "+proj=merc +a=6378137.01 +rf=298.257223563", "10, 999, 29, 0, 0, 0, \"m\", 0", noShift);
        row("only in its figures: no number has that ellipsoid", "EPSG:23853", "8, 999, 41, 0, 0, 0, \"m\", 135, 0, 0.9996, 500000, 0", noShift);
        row("GDAL takes the number of another ellipsoid", "EPSG:2000", "8, 999, 6, 0, 0, 0, \"m\", -62, 0, 0.9995, 400000, 0", noShift);
        row("false origin in survey feet", // 600 and 1 km
            "+proj=lcc +lon_0=-99 +lat_0=27.5 +lat_1=28 +lat_2=30 +x_0=600000 +y_0=1000 +datum=NAD27 +units=us-ft",
            "3, 62, \"survey ft\", -99, 27.5, 28, 30, 1968500, 3280.83333333333", "");
        row("no ellipsoid number", "+proj=longlat +a=6400000 +rf=300", "1, 104", incorrect);
        row("method without a number", "+proj=airy +datum=WGS84", "NonEarth Units \"m\"", incorrect);
        row("geocentric", "EPSG:4978", "NonEarth Units \"m\"", incorrect);
        row("no place for the false origin", "EPSG:3035", "29, 115, \"m\", 10, 52, 90", incorrect);
        row("no place for the scale", "+proj=krovak +ellps=bessel +towgs84=570.69,85.69,462.84", "32, 999, 10, 570.69, 85.69, 462.84, \"m\", 24.8333333333333, 49.5, 78.5, 30.2881397527778, 0, 0", incorrect);
        row("no place for the axes", "+proj=krovak +czech +k=1 +ellps=bessel +towgs84=570.69,85.69,462.84", "32, 999, 10, 570.69, 85.69, 462.84, \"m\", 24.8333333333333, 49.5, 78.5, 30.2881397527778, 0, 0", incorrect);
        row("no place for the parallel", "+proj=eqc +lat_ts=30 +datum=WGS84", "33, 104, \"m\", 0, 0, 0, 0", incorrect);
        row("no place for the sphere", "+proj=sinu +R_V +datum=WGS84", "16, 104, \"m\", 0", incorrect);
        row("no place for the grid angle", "EPSG:26931",
            "7, 74, \"m\", -133.666666666667, 57, 323.130102361111, 0.9999, 5000000, "
            "-5000000",
            incorrect);
        // clang-format on
    }
    void text()
    {
        const auto [reference, prj, logged] = support::row<QString, QString, QString>();
        const Srs srs = import(reference);
        const support::LogCapture log;
        const QString got = prjFromSpatialReference(srs.get());
        QCOMPARE(got, prj.at(0).isDigit() ? "Earth Projection "_s + prj : prj);
        const QStringList errors = log.lines("error"_s);
        QCOMPARE(errors.size(), logged.isEmpty() ? 0 : 1);
        QVERIFY(logged.isEmpty() || errors.first().startsWith(logged));
    }

    void driverReadsThePlane_data()
    {
        // What is handed to the driver (empty: not compared), and the system spelled out.
        const support::Columns<QString, QString, QString> row;
        const char *const utm = "+proj=utm +zone=10 +datum=WGS84";
        // clang-format off
        row("known parallels of California 1",
            "3, 74, 8, -122, 39.5, 40, 41.6666666666667, 6561666.667, 1640416.667",
            "3, 74, \"survey ft\", -122, 39.5, 41.6666666666667, 40, 6561666.667, "
            "1640416.667",
            "+proj=lcc +lon_0=-122 +lat_0=39.5 +lat_1=40 +lat_2=41.6666666666667 +x_0=2000000.0001016 "
            "+y_0=500000.0001016 +ellps=GRS80 +units=us-ft");
        row("by absolute value", "3, 999, 28, 0, 0, 0, 3, -122, 39, -38, 40, 0, 0",
            "3, 999, 28, 0, 0, 0, \"ft\", -122, 39, 40, -38, 0, 0",
            "+proj=lcc +lon_0=-122 +lat_0=39 +lat_1=40 +lat_2=-38 +ellps=WGS84 +units=ft");
        row("metres keep their order", "3, 74, 7, -122, 39, 40, 41.5, 2e6, 5e5",
            "3, 74, \"m\", -122, 39, 40, 41.5, 2000000, 500000",
            "+proj=lcc +lon_0=-122 +lat_0=39 +lat_1=40 +lat_2=41.5 +x_0=2e6 +y_0=5e5 +ellps=GRS80");
        row("extended transverse Mercator", "34, 104, 7, -123, 0, 0.9996, 5e5, 0", "8, 104, \"m\", -123, 0, 0.9996, 500000, 0", utm);
        row("datum 1031 in figures", "8, 1031, 7, -123, 0, 1, 5e5, 0", "", "+proj=tmerc +lon_0=-123 +x_0=500000 +ellps=clrk66");
        row("clauses", "3008, 104, 7, -123, 0, 0.9996, 5e5, 0, 7, 2, 0, 5, 0, 2, 6, 0, 0, 9, 9", "8, 104, \"m\", -123, 0, 0.9996, 500000, 0", utm);
        // clang-format on
    }
    void driverReadsThePlane()
    {
        const auto [prj, text, proj] = support::row<QString, QString, QString>();
        const QString handed = mitabCoordSys(MapHeaderCoordsysConverter().prjStrToTABProjInfo(prj));
        if (!text.isEmpty())
            QCOMPARE(handed, "Earth Projection "_s + text);
        QVERIFY(support::near(plane(import(handed), -121.5, 40.5), plane(import(proj), -121.5, 40.5),
                              toleranceM));
    }

    void refused()
    {
        CPLErrorReset();
        CPLPushErrorHandler(CPLQuietErrorHandler);
        VERIFY_THROWS(
            ExportToPrjException, prjFromSpatialReference(nullptr),
            "Ошибка экспорта КС в формат MI Prj: Pointer 'hSRS' is NULL in 'OSRExportToMICoordSys'.\n");
        CPLPopErrorHandler();
    }

    void epsg()
    {
        const std::pair<const char *, int> codes[] = {
            {"Earth Projection 8, 1001, \"m\", 39, 0, 1, 7500000, 0", 28407}, // with a shift beside it
            {"+proj=tmerc +lon_0=39.5 +x_0=2500000 +ellps=krass", -2},        // like 2588, but not it
            {"NonEarth Units \"m\"", -2}};
        for (const auto &[reference, code] : codes) {
            const Srs srs = import(QString::fromUtf8(reference));
            const auto progress = std::make_shared<nivora::concurrent::ProgressHandler>();
            QCOMPARE(getEpsgFromCrs(srs.get()), code);
            QCOMPARE(getEpsgFromCrs(progress, srs.get()), code);
            progress->cancel();
            QCOMPARE(getEpsgFromCrs(progress, srs.get()), CoordSystem::EPSG_UNDEFINDED);
        }
        QCOMPARE(getEpsgFromCrs(nullptr), CoordSystem::EPSG_UNDEFINDED);
    }

    // GDAL fills the caches of a handle in its const calls: unlocked calls on a fresh one crash or misread
    // it.
    void sharedHandle()
    {
        std::vector<Srs> handles(300);
        for (Srs &srs : handles)
            srs = import("EPSG:28407"_s);
        std::atomic<int> wrong{0};
        std::array<std::atomic<int>, 300> arrived{};
        std::vector<std::thread> threads;
        for (int t = 0; t < 4; ++t)
            threads.emplace_back([&] {
                for (std::size_t i = 0; i < handles.size(); ++i) {
                    for (++arrived[i]; arrived[i] < 4;)
                        std::this_thread::yield();
                    if (prjFromSpatialReference(handles[i].get()) !=
                        "Earth Projection 8, 1001, \"m\", 39, 0, 1, 7500000, 0"_s)
                        ++wrong;
                }
            });
        for (std::thread &thread : threads)
            thread.join();
        QCOMPARE(wrong.load(), 0);
    }
};

NIVORA_TEST(TestSpatialReferenceText)
#include "tst_spatialreferencetext.moc"
