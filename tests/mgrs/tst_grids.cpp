// UTM, UPS and the two projections under them, against PROJ and published examples.

#include "support/Support.h"

#include <coordsys/mgrs/polarst.h>
#include <coordsys/mgrs/tranmerc.h>
#include <coordsys/mgrs/ups.h>
#include <coordsys/mgrs/utm.h>

#include <proj.h>

#include <atomic>
#include <cmath>
#include <memory>
#include <random>
#include <thread>
#include <vector>

using namespace mgrs;

namespace {

// PROJ's series and ours are good to a few nanometres; a northing of 10^7 m is rounded to two, an angle near
// 2 pi to three.
constexpr double TOLERANCE_M = 3e-8;
constexpr double TOLERANCE_RAD = TOLERANCE_M / 6.4e6;

double rad(double degrees) { return proj_torad(degrees); }

struct Projection
{
    explicit Projection(const QString &definition)
        : context(proj_context_create(), proj_context_destroy)
        , pj(proj_create(context.get(), qPrintable(definition)), proj_destroy)
    {}
    PJ_XY forward(double latRad, double lonRad) const
    {
        return proj_trans(pj.get(), PJ_FWD, proj_coord(lonRad, latRad, 0, 0)).xy;
    }
    std::unique_ptr<PJ_CONTEXT, PJ_CONTEXT *(*)(PJ_CONTEXT *)> context;
    std::unique_ptr<PJ, PJ *(*)(PJ *)> pj;
};

// Random points of a region, its edges and corners.
template <typename F> void forPoints(const QRectF &area, F &&check)
{
    const double south = area.top(), north = area.bottom(), west = area.left(), east = area.right();
    std::mt19937 random(20240517);
    std::uniform_real_distribution<double> anyLat(south, north);
    std::uniform_real_distribution<double> anyLon(west, east);
    for (const double lat : {south, (south + north) / 2, north})
        for (const double lon : {west, (west + east) / 2, east})
            check(lat, lon);
    for (int i = 0; i < 2000; ++i)
        check(anyLat(random), anyLon(random));
}

} // namespace

class TestGrids : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void cleanup() { Set_Ellipsoid_Parameters(6378137.0, 298.257223563); }

    // With parameters and an ellipsoid that neither UTM nor UPS has. The tolerance is half the last digit
    // that was printed in each coordinate.
    void published()
    {
        double x = 0, y = 0, lat = 0, lon = 0;
        // EPSG Guidance Note 7-2, British National Grid.
        QCOMPARE(Set_Ellipsoid_Parameters(6377563.396, 299.32496), 0);
        const TransverseMercatorParameters tm{rad(49), rad(-2), 400000, -100000, 0.9996013};
        QCOMPARE(Convert_Geodetic_To_Transverse_Mercator(tm, rad(50.5), rad(0.5), &x, &y), 0);
        QVERIFY(std::hypot(x - 577274.99, y - 69740.50) <= 0.009);
        QCOMPARE(Convert_Transverse_Mercator_To_Geodetic(tm, x, y, &lat, &lon), 0);
        QVERIFY(std::hypot(lat - rad(50.5), lon - rad(0.5)) < TOLERANCE_RAD);

        // The same note, UPS North.
        cleanup();
        const PolarStereographicParameters ps{'N', rad(0), 2e6, 2e6, 0.994};
        QCOMPARE(Convert_Geodetic_To_Polar_Stereographic(ps, rad(73), rad(44), &x, &y), 0);
        QVERIFY(std::hypot(x - 3320416.75, y - 632668.43) <= 0.009);
        QCOMPARE(Convert_Polar_Stereographic_To_Geodetic(ps, x, y, &lat, &lon), 0);
        QVERIFY(std::hypot(lat - rad(73), lon - rad(44)) < TOLERANCE_RAD);
    }

    void againstProj_data()
    {
        const support::Columns<int, QRectF, QString>
            row; // zone, 0 for UPS; degrees, with the overlap and more
        const auto utm = [&](const char *name, int zone, double south, double north, double halfWidth) {
            row(name, zone, {6.0 * zone - 183.0 - halfWidth, south, 2.0 * halfWidth, north - south},
                "+proj=utm +ellps=WGS84 +zone=%1"_s.arg(zone));
        };
        utm("first zone, both hemispheres", 1, -60.0, 60.0, 3.5);
        utm("last zone, far south", 60, -80.5, -60.0, 5.5);
        utm("widened zone of Norway", 32, 56.0, 64.0, 6.3); // 107 km
        utm("widened zone of Svalbard", 33, 72.0, 84.5, 9.8);
        const QString ups = "+proj=stere +ellps=WGS84 +lat_0=%1 +k=0.994 +x_0=2e6 +y_0=2e6"_s;
        row("north pole", 0, {-180.0, 83.5, 540.0, 6.5}, ups.arg(90));
        row("south pole", 0, {-180.0, -90.0, 540.0, 10.5}, ups.arg(-90));
    }
    void againstProj()
    {
        const auto [zone, area, definition] = support::row<int, QRectF, QString>();
        const int utm = zone;
        const Projection proj(definition);
        double worst = 0.0;
        forPoints(area, [&](double lat, double anyLon) {
            const double lon = anyLon < -180.0 ? anyLon + 360.0 : anyLon;
            char hemisphere = 0;
            double x = 0, y = 0, backLat = 0, backLon = 0;
            QCOMPARE(utm ? Convert_Geodetic_To_UTM_Zone(rad(lat), rad(lon), utm, &hemisphere, &x, &y)
                         : Convert_Geodetic_To_UPS(rad(lat), rad(lon), &hemisphere, &x, &y),
                     0);
            QCOMPARE(hemisphere, lat < 0.0 ? 'S' : 'N');
            QCOMPARE(utm ? Convert_UTM_To_Geodetic(utm, hemisphere, x, y, &backLat, &backLon)
                         : Convert_UPS_To_Geodetic(hemisphere, x, y, &backLat, &backLon),
                     0);
            // PROJ's inverse is iterated to half a millimetre only, so the way back goes through its forward.
            const double falseNorthing = utm && lat < 0.0 ? 1e7 : 0.0;
            for (const PJ_XY &expected : {proj.forward(rad(lat), rad(lon)), proj.forward(backLat, backLon)})
                worst = std::max(worst, std::hypot(x - expected.x, y - expected.y - falseNorthing));
        });
        QVERIFY2(worst < TOLERANCE_M, qPrintable(QString::number(worst)));
    }

    void refusals()
    {
        const double nan = std::nan("");
        double x = -7, y = -7;
        int zone = -7;
        char h = '?';
        // Latitudes beyond the overlap, longitudes, zones, coordinates and hemispheres; codes add up.
        QCOMPARE(Convert_Geodetic_To_UTM(rad(84.51), rad(10), &zone, &h, &x, &y), 1);
        QCOMPARE(Convert_Geodetic_To_UTM(rad(-80.51), rad(361), &zone, &h, &x, &y), 3);
        QCOMPARE(Convert_Geodetic_To_UTM(nan, nan, &zone, &h, &x, &y), 3);
        QCOMPARE(Convert_Geodetic_To_UTM_Zone(rad(0), rad(0), 61, &h, &x, &y), 256);
        QCOMPARE(Convert_Geodetic_To_UTM_Zone(rad(0), rad(60), 31, &h, &x, &y), 2);
        QCOMPARE(Convert_Geodetic_To_UTM_Zone(rad(80), rad(-177), 31, &h, &x, &y), 2); // across the pole
        QCOMPARE(Convert_Geodetic_To_UPS(rad(83.4), rad(0), &h, &x, &y), 1);
        QCOMPARE(Convert_Geodetic_To_UPS(rad(-79.4), rad(-181), &h, &x, &y), 3);
        QCOMPARE(Convert_UTM_To_Geodetic(0, 'n', 99999, -1, &x, &y), 64 | 128 | 256 | 512);
        QCOMPARE(Convert_UTM_To_Geodetic(31, 'N', 500000, 1e7, &x, &y), 128); // beyond the pole
        QCOMPARE(Convert_UTM_To_Geodetic(31, 'S', nan, nan, &x, &y), 64 | 128);
        QCOMPARE(Convert_UPS_To_Geodetic('X', 4000001, -1, &x, &y), 64 | 128 | 512);
        QCOMPARE(Convert_UPS_To_Geodetic('N', 1000, 1000, &x, &y), 64 | 128); // 66 degrees
        QCOMPARE(Convert_Geodetic_To_Transverse_Mercator({}, rad(0), rad(40), &x, &y), 2);
        QCOMPARE(Convert_Transverse_Mercator_To_Geodetic({}, 5e6, 1.1e7, &x, &y), 64 | 128);
        QCOMPARE(Convert_Geodetic_To_Polar_Stereographic({}, rad(-90), rad(0), &x, &y), 1);
        QCOMPARE(Convert_Polar_Stereographic_To_Geodetic({'s'}, INFINITY, nan, &x, &y), 64 | 128 | 512);
        QVERIFY(x == -7 && y == -7 && zone == -7 && h == '?');

        QCOMPARE(Set_Ellipsoid_Parameters(0.0, 298.3), 16);
        QCOMPARE(Set_Ellipsoid_Parameters(nan, 249.9), 16 | 32);
        QCOMPARE(Set_Ellipsoid_Parameters(6378137.0, 350.1), 32);
        QCOMPARE(Set_Ellipsoid_Parameters(6378137.0, INFINITY), 32); // a sphere
        Get_Ellipsoid_Parameters(&x, &y);
        QVERIFY(x == 6378137.0 && y == 298.257223563);
    }

    // A conversion gives the result of one ellipsoid or the other to the bit, never of a mixture.
    void ellipsoidChangesUnderWay()
    {
        constexpr double sets[2][2] = {{6378137.0, 298.257223563}, {6378245.0, 298.3}};
        const auto northing = [] {
            int zone = 0;
            char hemisphere = 0;
            double x = 0, y = 0;
            Convert_Geodetic_To_UTM(rad(55.75), rad(37.6), &zone, &hemisphere, &x, &y);
            return y;
        };
        double expected[2];
        for (int i = 0; i < 2; ++i) {
            QCOMPARE(Set_Ellipsoid_Parameters(sets[i][0], sets[i][1]), 0);
            expected[i] = northing();
        }
        QVERIFY(std::fabs(expected[0] - expected[1]) > 10.0);

        std::atomic<int> strange{0};
        std::vector<std::thread> threads;
        for (int t = 0; t < 3; ++t)
            threads.emplace_back([&] {
                for (int i = 0; i < 20000; ++i) {
                    const double y = northing();
                    double a = 0, invF = 0;
                    Get_Ellipsoid_Parameters(&a, &invF);
                    if ((y != expected[0] && y != expected[1]) || (a == sets[0][0]) != (invF == sets[0][1]))
                        ++strange;
                }
            });
        for (int i = 0; i < 2000; ++i)
            Set_Ellipsoid_Parameters(sets[i % 2][0], sets[i % 2][1]);
        for (std::thread &thread : threads)
            thread.join();
        QCOMPARE(strange.load(), 0);
    }
};

NIVORA_TEST(TestGrids)
#include "tst_grids.moc"
