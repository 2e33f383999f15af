#include "BothWays.h"

#include <support/Support.h>

#include <coordsys/CoordTransform.h>

using namespace nivora::cs;

namespace {

double dms(double degrees, double minutes, double seconds)
{
    return degrees + minutes / 60.0 + seconds / 3600.0;
}

/// A tagged string; figures alone are those of a CoordSys string.
CoordSystemPtr made(const QString &text)
{
    return support::made(text.at(0).isDigit() ? "prj:Earth Projection "_s + text : text);
}

constexpr double CENTIMETRE = 0.01;    // what most worked examples are printed to
constexpr double HALF_CM = 0.0051;     // the same, where the printed digit is a rounding of the exact value
constexpr double MILLIMETRE = 0.00051; // national surveys print three decimals
constexpr double MICRODEGREE = 0.056;  // half of 1e-6 degree of latitude in metres
constexpr double MILLISECOND = 0.00051 / 3600.0;

} // namespace

/// Places whose coordinates were published. GN: "Coordinate Conversions and Transformations including
/// Formulas", IOGP guidance note 7-2, the worked example of the method.
class TestPlaces : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void initTestCase() { QVERIFY(support::shippedFactory()); }

    void plane_data()
    {
        // System, geographic system of its datum, place, place in the plane, tolerance in its unit.
        const support::Columns<QString, QString, QPointF, QPointF, double> row;
        // clang-format off

        // Ordnance Survey, "A guide to coordinate systems in Great Britain", annexe C: Caister water tower.
        const QPointF caister(dms(1, 43, 4.5177), dms(52, 39, 27.2531));
        row("OSGB guide, code", "epsg:27700", "epsg:4277", caister, {651409.903, 313177.270}, MILLIMETRE);
        row("OSGB guide, prj", "8, 79, \"m\", -2, 49, 0.9996012717, 400000, -100000", "1, 79", caister, {651409.903, 313177.270}, MILLIMETRE);
        row("GN Lambert 1SP", "epsg:24200", "epsg:4241", {-dms(76, 56, 37.26), dms(17, 55, 55.80)}, {255966.58, 142493.51}, HALF_CM);
        const QString texas = "3, 62, \"survey ft\", -99, 27.83333333333333, %1, 2000000, 0"_s;
        for (const char *parallels : {"28.38333333333333, 30.28333333333333", "30.28333333333333, 28.38333333333333"})
            row(parallels, texas.arg(QLatin1String(parallels)), "1, 62", {-96, 28.5}, {2963503.91, 254759.80}, HALF_CM);
        row("GN Lambert 2SP in feet", "epsg:32040", "epsg:4267", {-96, 28.5}, {2963503.91, 254759.80}, HALF_CM);
        row("GN Mercator A", "epsg:3002", "epsg:4257", {120, -3}, {5009726.58, 569150.82}, HALF_CM);
        row("GN Mercator B", "26, 1001, \"m\", 51, 42", "1, 1001", {53, 53}, {165704.29, 5171848.07}, HALF_CM);
        const QPointF sanAntonio(-dms(100, 20, 0), dms(24, 22, 54.433));
        row("GN pseudo Mercator, code", "epsg:3857", "epsg:4326", sanAntonio, {-11169055.58, 2800000.00}, HALF_CM);
        row("GN pseudo Mercator, prj", "10, 157, \"m\", 0", "1, 104", sanAntonio, {-11169055.58, 2800000.00}, HALF_CM);
        row("GN Cassini in Clarke's links", "epsg:30200", "epsg:4302", {-62, 10}, {66644.94, 82536.22}, HALF_CM);
        row("GN oblique Mercator B", "epsg:29873", "epsg:4298", {dms(115, 48, 19.8196), dms(5, 23, 14.1129)}, {679245.73, 596562.78}, HALF_CM);
        const char *rd = "31, 109, \"m\", 5.38763888888889, 52.1561605555556, 0.9999079, 155000, 463000";
        row("GN oblique stereographic, prj", rd, "1, 109", {6, 53}, {196105.283, 557057.739}, MILLIMETRE);
        row("GN Albers", "9, 74, \"m\", -84.455955, 45.568977, 42.122774, 49.01518, 1000000, 1000000", "1, 74",
            {-78.75, 42.75}, {1466493.492, 702903.006}, MILLIMETRE);
        row("GN azimuthal equal area", "epsg:3035", "epsg:4258", {5, 50}, {3962799.45, 2999718.85}, HALF_CM);
        row("GN polar stereographic A", "20, 104, \"m\", 0, 90, 0.994, 2000000, 2000000", "1, 104", {44, 73}, {3320416.75, 632668.43}, HALF_CM);
        row("GN polar stereographic B", "epsg:3032", "epsg:4326", {120, -75}, {7255380.79, 7053389.56}, HALF_CM);
        // The central meridian of UTM at 55 N: the meridian arc from the equator is 6097230.3134 m by the
        // series of the ellipsoid.
        const QPointF utm(500000.0, 6097230.3134 * 0.9996);
        const char *const wkt = R"(wkt:PROJCS["WGS 84 / UTM zone 37N",
 GEOGCS["WGS 84",DATUM["WGS_1984",SPHEROID["WGS 84",6378137,298.257223563]],PRIMEM["Greenwich",0],UNIT["degree",0.0174532925199433]],
 PROJECTION["Transverse_Mercator"],PARAMETER["latitude_of_origin",0],PARAMETER["central_meridian",39],PARAMETER["scale_factor",0.9996],
 PARAMETER["false_easting",500000],PARAMETER["false_northing",0],UNIT["metre",1]])";
        for (const char *system :
             {wkt, "EPSG:32637", "proj:+proj=utm +zone=37 +datum=WGS84 +no_defs +type=crs",
              "proj4:+proj=tmerc +lon_0=39 +k=0.9996 +x_0=500000 +ellps=WGS84 +towgs84=0,0,0",
              "prj:CoordSys Earth Projection 8, 104, 7, 39, 0, 0.9996, 500000, 0"})
            row.named(system, "epsg:4326", {39, 55}, utm, MILLIMETRE);
        // Land Information New Zealand, test points of the map grid; positions are given to 1e-6 degree.
        const char *nzmg = "18, 31, \"m\", 173, -41, 2510000, 6023150";
        row("LINZ map grid, north", nzmg, "1, 31", {172.739194, -34.444066}, {2487100.638, 6751049.719}, MICRODEGREE);
        row("LINZ map grid, south", "epsg:27200", "epsg:4272", {169.172062, -46.651295}, {2216746.425, 5388508.765}, MICRODEGREE);
        // swisstopo, "Formulas and constants for the calculation of the Swiss conformal cylindrical
        // projection": Rigi.
        row("Rigi", "25, 1003, \"m\", 7.439583333333333, 46.952405555555556, 600000, 200000",
            "1, 1003", {dms(8, 29, 11.111572), dms(47, 3, 28.956592)}, {679520.05, 212273.44}, CENTIMETRE);
        // clang-format on
    }
    void plane()
    {
        const auto [system, geographic, lonLat, planar, tolerance] =
            support::row<QString, QString, QPointF, QPointF, double>();
        // A quarter of a second of arc would hide a swapped axis or a datum shift: invert at the printed
        // digit instead.
        const double degrees =
            2.0 * tolerance / 1.1e5 / std::cos(CoordSystem::DEGREES_TO_RADIANS * lonLat.y());

        const CoordSystemPtr cs = made(system);
        VERIFY_BOTH_WAYS(*cs, lonLat, planar, tolerance, degrees);
        const CoordTransform transform(made(geographic), cs);
        VERIFY_BOTH_WAYS(transform, lonLat, planar, tolerance, degrees);
    }

    void datumShift_data()
    {
        const support::Columns<QString, QString, QPointF, QPointF> row;
        // clang-format off
        const char *const prjWgs = "1, 104";
        const char *const prjShifted = "1, 999, 4, -84.87, -96.49, -116.95";

        // GN, geocentric translations: 2°07'46.380"E 53°48'33.820"N.
        const QPointF wgs(dms(2, 7, 46.380), dms(53, 48, 33.820));
        const QPointF ed50(dms(2, 7, 51.477), dms(53, 48, 36.565));
        row("three parameters, PROJ", "proj:+proj=longlat +ellps=intl +towgs84=-84.87,-96.49,-116.95 +no_defs", "epsg:4326", ed50, wgs);
        row("three parameters, prj", prjShifted, prjWgs, ed50, wgs);
        row("notations mixed", prjShifted, "proj:+proj=longlat +datum=WGS84 +no_defs", ed50, wgs);
        // GN, position vector: WGS 72 (4 E, 55 N) to WGS 84. A CoordSys string has its rotations the other
        // way round.
        const QPointF wgs72(4, 55);
        const QPointF moved(dms(4, 0, 0.554), dms(55, 0, 0.090));
        row("seven parameters, PROJ", "proj:+proj=longlat +ellps=WGS72 +towgs84=0,0,4.5,0,0,0.554,0.219 +no_defs", "epsg:4326", wgs72, moved);
        row("seven parameters, prj", "1, 9999, 1, 0, 0, 4.5, 0, 0, -0.554, 0.219, 0", prjWgs, wgs72, moved);
        // "No datum" takes the other side's: the place keeps its numbers.
        row("no datum to a datum", "1, 0", prjShifted, wgs, wgs);
        row("a datum to no datum", prjShifted, "1, 0", wgs, wgs);
        // Grads from Paris are degrees from Paris at the border; figures of cs2cs.
        row("WGS 84 to NTF (Paris)", "epsg:4326", "epsg:4807", {2.5, 48.5}, {0.163482765, 48.500066072});
        // Frames that move: figures of cs2cs without an epoch.
        row("ETRS89 to ITRF2014", "epsg:4258", "epsg:9000", {10, 50}, {10.0000057064, 50.0000029609});
        row("ITRF2014 to GDA2020", "epsg:9000", "epsg:7844", {135, -25}, {135, -25});
        row("ITRF2020 to GDA2020", "epsg:9990", "epsg:7844", {135, -25}, {135.0000000161, -24.9999999873});
        row("GDA2020 to UTM on ITRF2014", "epsg:7844", "1, 104", {135, -25}, {135, -25});
        // clang-format on
    }
    void datumShift()
    {
        const auto [from, to, in, expected] = support::row<QString, QString, QPointF, QPointF>();
        VERIFY_BOTH_WAYS(CoordTransform(made(from), made(to)), in, expected, MILLISECOND, MILLISECOND);
        VERIFY_BOTH_WAYS(CoordTransform(made(to), made(from)), expected, in, MILLISECOND, MILLISECOND);
    }

    void oracle()
    {
        const auto factory = support::shippedFactory();
        const CoordSystemPtr cs = factory->createFromOracleSRID(81989); // British National Grid
        QCOMPARE(cs->sourceType(), CoordSystem::Oracle);
        QCOMPARE(cs->sourceParameters().string, "81989"_s);
        QPointF out;
        QVERIFY(cs->forward(QPointF(dms(1, 43, 4.5177), dms(52, 39, 27.2531)), out));
        VERIFY_NEAR(out, QPointF(651409.903, 313177.270), MILLIMETRE);
    }
};

NIVORA_TEST(TestPlaces)
#include "tst_places.moc"
