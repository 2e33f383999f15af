#include "BothWays.h"

#include <support/Support.h>

#include "CoordTransformCache_p.h"
#include <coordsys/CoordTransform.h>
#include <coordsys/DefaultRects.h>
#include <coordsys/ProjectionParamsManager.h>
#include <coordsys/ShiftQuality.h>

#include <proj.h>

#include <QMutexLocker>

#include <cmath>
#include <cstring>

using namespace nivora::cs;
using support::made;

namespace {
const QString utm37 = "prj:Earth Projection 8, 104, \"m\", 39, 0, 0.9996, 500000, 0"_s;
} // namespace

class TestTransform : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void initTestCase() { QVERIFY(support::shippedFactory()); }

    void nonEarth_data()
    {
        const support::Columns<int, QRectF> row;
        for (int unit : {0, 1, 2, 3, 4, 5, 6, 7, 8, 9, 30, 31, 32})
            for (const QRectF &bounds : {QRectF(), QRectF(-100.5, 20, 300, 400)})
                row("unit %1%2"_s.arg(unit).arg(bounds.isNull() ? ""_s : ", bounds"_s), unit, bounds);
    }

    // A plan lies on the equidistant cylinder over the sphere of 6370997 m: a degree is 111194.87428468118 m.
    void nonEarth()
    {
        const auto [unit, bounds] = support::row<int, QRectF>();
        const auto factory = support::shippedFactory();
        // PROJ's link and chain are the international ones, the catalogue's the survey ones.
        const double metres = unit == LinearUnit::Link ? 0.201168
                              : unit == LinearUnit::Chain
                                  ? 20.1168
                                  : factory->projectionParamsManager()->unitByID(unit)->conversion();
        const CoordSystemPtr plan = factory->createNonEarth(unit, bounds);
        QVERIFY(plan->isNonEarth() && !plan->isLatLong());
        QCOMPARE(plan->unit().unitCode(), unit);
        QCOMPARE(plan->isRectSet(), !bounds.isNull());
        VERIFY_NEAR(plan->rectNumericCoordSys(), bounds.isNull() ? DefaultRectNonEarth : bounds, 1e-9);

        const CoordSystemPtr again = made(plan->taggedString());
        QVERIFY(again->isEqual(plan, false));
        QCOMPARE(again->rectNumericCoordSys(), plan->rectNumericCoordSys());

        const QPointF planar = QPointF(39, 55) * (111194.87428468118 / metres);
        const double tolerance = 0.001 / metres;
        VERIFY_BOTH_WAYS(*plan, QPointF(39, 55), planar, tolerance, 1e-9);

        // Mixed with the earth both ways round: (39 E, 55 N) on WGS 84, as in the worked figure of
        // TestPlaces.
        const QPointF earth(500000.0, 6094791.421);
        const CoordTransform toEarth(plan, made(utm37));
        VERIFY_BOTH_WAYS(toEarth, planar, earth, 0.001, tolerance);
        VERIFY_BOTH_WAYS(CoordTransform(made(utm37), plan), earth, planar, tolerance, 0.001);
        QRectF rect;
        QVERIFY(toEarth.forwardMesh(QRectF(planar, QSizeF(1000.0 / metres, 1000.0 / metres)), rect, 10));
        VERIFY_NEAR(rect.topLeft(), earth, 20.0); // the edges of the square bend by metres
    }

    void planToPlan()
    {
        const CoordTransform t(made("prj:CoordSys NonEarth Units \"km\""),
                               made("wkt:LOCAL_CS[\"Nonearth\",UNIT[\"Foot (International)\",0.3048]]"));
        VERIFY_BOTH_WAYS(t, QPointF(3.048, -0.3048), QPointF(10000, -1000), 1e-5, 1e-8);
    }

    // A = 1 … F = 6: x' = x + 2 y + 3, y' = 4 x + 5 y + 6, so (10, 20) gives (53, 146).
    void affine()
    {
        const CoordSystemPtr plain = made("prj:CoordSys NonEarth Units \"m\"");
        const CoordSystemPtr bent =
            made("prj:CoordSys NonEarth Units \"m\" Affine Units \"m\", 1, 2, 3, 4, 5, 6");
        const CoordTransform t(plain, bent);
        VERIFY_BOTH_WAYS(t, QPointF(10, 20), QPointF(53, 146), 1e-6, 1e-6);
        VERIFY_BOTH_WAYS(CoordTransform(bent, plain), QPointF(53, 146), QPointF(10, 20), 1e-6, 1e-6);
        QVector<QPointF> list{QPointF(53, 146)};
        QVERIFY(CoordTransform(bent, plain).forward(list, list));
        VERIFY_NEAR(list.first(), QPointF(10, 20), 1e-6);
        // Small coefficients count: x' = 1e-13 x, y' = 1e-14 x + 1e-13 y. A micrometre is 1e-19 there.
        const CoordSystemPtr tiny =
            made(QStringLiteral("prj:CoordSys NonEarth Units \"m\" Affine Units \"m\", "
                                "0.0000000000001, 0, 0, 0.00000000000001, "
                                "0.0000000000001, 0"));
        VERIFY_BOTH_WAYS(CoordTransform(plain, tiny), QPointF(1e6, 2e6), QPointF(1e-7, 2.1e-7), 1e-19, 1e-6);
        QPointF lonLat, again;
        QVERIFY(tiny->inverse(QPointF(1e-7, 2.1e-7), lonLat) && tiny->forward(lonLat, again));
        VERIFY_NEAR(lonLat, QPointF(1e6, 2e6) / 111194.87428468118, 1e-9);
        VERIFY_NEAR(again, QPointF(1e-7, 2.1e-7), 1e-19);
        QRectF rect;
        QVERIFY(t.forward(QRectF(0, 0, 10, 20), rect));
        VERIFY_NEAR(rect, QRectF(3, 6, 50, 140), 1e-6);
        // In a geographic system the clause moves degrees.
        const CoordTransform shifted(made("prj:Earth Projection 1, 104"),
                                     made("prj:Earth Projection 1001, 104, \"degree\", 1, 0, 10, 0, 1, -5"));
        VERIFY_BOTH_WAYS(shifted, QPointF(30, 60), QPointF(40, 55), 1e-9, 1e-9);
    }

    void constructor()
    {
        const CoordSystemPtr utm = made(utm37);
        VERIFY_THROWS(std::invalid_argument, CoordTransform(nullptr, nullptr), "cs_from");
        VERIFY_THROWS(std::invalid_argument, CoordTransform(utm, nullptr), "cs_to");
        VERIFY_THROWS(std::runtime_error, CoordTransform::throwTransformFailed(),
                      "Ошибка преобразования координат");
        const CoordTransform t(utm, support::shippedFactory()->latLongWgs84CoordSystem());
        CoordTransform copy(t);
        QCOMPARE(copy.sourceCoordSystem(), utm);
        copy = CoordTransform(utm, utm);
        QVERIFY(copy.isEqualsCS());
        copy = t;
        VERIFY_BOTH_WAYS(copy, QPointF(500000, 6094791.421), QPointF(39, 55), 1e-8, 1e-3);
        // Units that the catalogue cannot name compare by factor.
        const auto yards = [] { return made("proj:+proj=tmerc +lon_0=39 +datum=WGS84 +units=ind-yd"); };
        QVERIFY(CoordTransform(yards(), yards()).isEqualsCS());
        QVERIFY(!CoordTransform(yards(), utm).isEqualsCS());
    }

    void equalSystemsCopy()
    {
        const std::size_t before = coordTransformCache().size();
        const CoordTransform t(made(utm37), made(utm37));
        QVERIFY(t.isEqualsCS());
        QCOMPARE(coordTransformCache().size(), before);
        QVERIFY(!CoordTransform(made("epsg:3006"), made("epsg:25833")).isEqualsCS()); // one record, two codes
        VERIFY_BOTH_WAYS(t, QPointF(1e30, -1e30), QPointF(1e30, -1e30), 0.0, 0.0);
        QRectF rect;
        QVERIFY(t.inverse(QRectF(1, 2, 3, 4), rect));
        QCOMPARE(rect, QRectF(1, 2, 3, 4));
        QVERIFY(!t.forward(QRectF(1, 2, 0, 4), rect));
        QVERIFY(t.forwardMesh(QRectF(1, 2, 3, 4), rect, 0));
        QCOMPARE(rect, QRectF(1, 2, 3, 4));
    }

    /// What the catalogue says is part of the answer: a unit that it learns makes two systems equal.
    void equalityFollowsTheCatalogue()
    {
        const support::ResourceCopy copy;
        const support::DefaultFactoryKeeper keeper;
        const auto host = std::make_shared<CoordSysFactory>(copy.dir(), copy.dir(), "en"_s);
        CoordSysFactory::setDefaultCoordSysFactory(host);
        QVERIFY(host->initCoordSystemEnvironment());
        const auto inKilometres = [&host](double scale) {
            return host->createFromProj(
                "+proj=tmerc +lon_0=39 +k=%1 +datum=WGS84 +units=km"_s.arg(scale, 0, 'f', 4));
        };
        const CoordSystemPtr asked = inKilometres(0.9997);
        QVERIFY(asked->unit());
        host->projectionParamsManager()->clear();
        const CoordSystemPtr other = inKilometres(0.9997);
        QVERIFY(!CoordTransform(asked, other).isEqualsCS());
        QVERIFY(host->projectionParamsManager()->initFromXML(copy.dir(), "en"_s));
        QVERIFY(CoordTransform(asked, other).isEqualsCS());
    }

    /// Degrees from Greenwich stay on the circle behind another meridian, whichever way it lies.
    void foreignMeridians_data()
    {
        const support::Columns<QString, double> row;
        row.named("proj:+proj=longlat +datum=WGS84 +pm=paris +no_defs", -179.0);
        row.named("proj:+proj=longlat +datum=WGS84 +pm=ferro +no_defs", 179.0);
        row.named("proj:+proj=tmerc +lon_0=178 +datum=WGS84 +pm=paris +no_defs", -179.5);
        row.named("proj:+proj=merc +datum=WGS84 +pm=ferro +no_defs", 179.5);
        row.named("epsg:27572", -179.0); // as registered, by way of its geographic base
        row.named("epsg:27561", -178.5);
    }
    void foreignMeridians()
    {
        const auto [system, longitude] = support::row<QString, double>();
        const CoordSystemPtr cs = made(system);
        const CoordTransform t(cs, made("epsg:4326"));
        const QPointF place(longitude, 10.0);
        constexpr double nearby = 1e-6; // degrees: shifts undone by iteration; the fault is a whole turn
        QPointF plane, back;
        QVERIFY(t.inverse(place, plane) && t.forward(plane, back));
        VERIFY_NEAR(back, place, nearby);
        QVERIFY(cs->forward(place, plane) && cs->inverse(plane, back));
        VERIFY_NEAR(back, place, nearby);
    }

    void failedPoints_data()
    {
        const support::Columns<QString, QPointF> row;
        // clang-format off
        const QString merc = "prj:Earth Projection 10, 104, \"m\", 0"_s;
        row("beyond the pole", merc, QPointF(0, 91));
        row("longitude 720", merc, QPointF(720, 10));
        row("NaN", merc, QPointF(qQNaN(), 10));
        row("NaN latitude", merc, QPointF(10, qQNaN()));
        row("infinite", merc, QPointF(10, qInf()));
        row("90 degrees off the meridian", utm37, QPointF(129, 0));
        row("behind a gnomonic", "proj:+proj=gnom +lat_0=90 +datum=WGS84"_s, QPointF(0, -10));
        row("the far pole of a cone", "prj:Earth Projection 3, 104, \"m\", 10, 45, 40, 50, 0, 0"_s, QPointF(0, -90));
        // clang-format on
    }
    void failedPoints()
    {
        const auto [system, bad] = support::row<QString, QPointF>();
        const CoordSystemPtr cs = made(system);
        const CoordTransform t(made("prj:Earth Projection 1, 104"), cs);
        const QPointF untouched(-7, -7);
        QPointF out = untouched;
        QVERIFY(!t.forward(bad, out) && !cs->forward(bad, out));
        QCOMPARE(out, untouched);
        const QPointF good(40, 56);
        QVector<QPointF> list;
        QVERIFY(!t.forward({good, bad, good}, list) && !cs->forward({good, bad, good}, list));
        // The failure does not stick.
        QVERIFY(t.forward(good, out));
        QPointF own;
        QVERIFY(cs->forward(good, own));
        VERIFY_NEAR(out, own, 1e-3);
    }

    void lists()
    {
        const CoordTransform t(made("epsg:4326"), made(utm37));
        QVector<QPointF> points;
        QVERIFY(t.forward(points, points));
        QVERIFY(points.isEmpty());
        for (int i = 0; i < 100000; ++i) // more than fits any small buffer
            points << QPointF(36 + i * 6e-5, 50 + i * 1e-5);
        const QVector<QPointF> in = points;
        QVERIFY(t.forward(points, points));
        for (int i : {0, 1, 256, 99999}) {
            QPointF one;
            QVERIFY(t.forward(in[i], one));
            QVERIFY(one == points[i]); // the short way for one point is the same arithmetic
        }
        QVERIFY(t.inverse(points, points));
        for (int i = 0; i < in.size(); i += 1000)
            VERIFY_NEAR(points[i], in[i], 1e-9);

        QVector<QPointF> million(1000000, QPointF(39, 55));
        QVERIFY(made(utm37)->forward(million, million));
        VERIFY_NEAR(million.last(), QPointF(500000, 6094791.421), 1e-3);
    }

    void rectangles()
    {
        const CoordTransform t(made("epsg:4326"), made("epsg:3395"));
        QRectF out;
        QVERIFY(t.forward(QRectF(0, 0, 10, 10), out));
        VERIFY_NEAR(out.right(), 1113194.9079327, 1e-6); // 6378137 m * 10 degrees
        QVERIFY(t.inverse(out, out));
        VERIFY_NEAR(out, QRectF(0, 0, 10, 10), 1e-9);
        out = QRectF();
        QVERIFY(!t.forward(QRectF(10, 10, 0, 5), out));
        VERIFY_NEAR(out.left(), 1113194.9079327, 1e-6); // collapsed, and written all the same
        QCOMPARE(rectToVector(QRectF(1, 2, 3, 4)),
                 QVector<QPointF>({QPointF(1, 2), QPointF(4, 2), QPointF(4, 6), QPointF(1, 6)}));
    }

    void bitsOfTheEngine_data()
    {
        const support::Columns<QString, QString> row;
        row("a projection behind the degrees", "epsg:4326", "epsg:32637");
        row("and before them", "epsg:32637", "epsg:4326");
        row("latitudes beyond the pole", "epsg:4087", "epsg:4326");
        row("a shift between two of them", "prj:Earth Projection 1, 1001", "epsg:4326");
        row("several operations too", "epsg:4284", "epsg:32637");
    }

    // PROJ's own steps between degrees and radians are left out of the objects that convert.
    void bitsOfTheEngine()
    {
        const auto [a, b] = support::row<QString, QString>();
        const CoordSystemPtr from = made(a), to = made(b);
        const CoordTransform transform(from, to);
        const std::shared_ptr<PJ> pj = CoordTransformCache().createNormalizedTransformation(from, to);
        const QVector<QPointF> points{{39.1, 55.2}, {-900, -90},    {180.0000000001, 89.99999999999999},
                                      {540, 10},    {-0.0, 0.0},    {500123.4, 6.1e6},
                                      {2e7, 1.5e7}, {-4e7, -3e7},   {qQNaN(), 1},
                                      {qInf(), 0},  {1e300, -1e300}};
        for (const QPointF &in : points)
            for (const PJ_DIRECTION direction : {PJ_FWD, PJ_INV}) {
                const QMutexLocker lock(globalProj4Mutex());
                const PJ_COORD c = proj_trans(pj.get(), direction, proj_coord(in.x(), in.y(), 0, HUGE_VAL));
                const QPointF expected(c.xy.x, c.xy.y);
                QPointF out;
                const bool done =
                    direction == PJ_FWD ? transform.forward(in, out) : transform.inverse(in, out);
                QCOMPARE(done, std::isfinite(c.xy.x) && std::isfinite(c.xy.y));
                if (done)
                    QVERIFY(std::memcmp(&out, &expected, sizeof out) == 0);
            }
    }

    void cacheIsByDefinition()
    {
        CoordTransformCache &cache = coordTransformCache();
        const QString krass = "prj:Earth Projection 8, 1001, \"m\", 45, 0, 1, 8500000, 0"_s;
        const CoordSystemPtr a = made(krass), a2 = made(krass), b = made(utm37), b2 = made(utm37);
        const std::size_t before = cache.size();
        const CoordTransform t(a, b), copy(t), again(a, b), twin(a2, b2);
        QCOMPARE(cache.size(), before + 1);
        QCOMPARE(cache.queueFor(a, b), cache.queueFor(a2, b2));
        QVERIFY(cache.queueFor(b, a) != cache.queueFor(a, b));
        // A plan goes through WGS 84 in two steps.
        const CoordSystemPtr plan = support::shippedFactory()->createNonEarth(7, QRectF());
        QVERIFY(cache.queueFor(a, plan)->second && !cache.queueFor(a, b)->second);
        // A changed object gets its new transformation; a finished one keeps its own.
        QPointF first, later, other;
        const QPointF place(8400000, 6100000);
        QVERIFY(t.forward(place, first));
        a->setSourceParameters(
            made("proj:+proj=tmerc +lon_0=45 +x_0=9500000 +ellps=krass"_s)->sourceParameters());
        QVERIFY(t.forward(place, later) && CoordTransform(a, b).forward(place + QPointF(1e6, 0), other));
        QCOMPARE(later, first);
        QVERIFY(!support::near(other, first, 1.0) && support::near(other, first, 500.0)); // the shift is gone
    }

    // The oldest go, and what has gone is made again.
    void cacheIsBounded()
    {
        const CoordSystemPtr wgs84 = made("epsg:4326"_s);
        const auto zone = [](int i) {
            return made("proj:+proj=tmerc +lon_0=%1 +datum=WGS84"_s.arg(0.25 * i - 150.0));
        };
        const CoordTransform first(zone(0), wgs84);
        for (int i = 1; i <= int(CoordTransformCache::mostQueues); ++i)
            const CoordTransform next(zone(i), wgs84);
        QCOMPARE(coordTransformCache().size(), CoordTransformCache::mostQueues);
        QPointF before, after;
        QVERIFY(first.forward(QPointF(1e5, 5e6), before));
        QVERIFY(CoordTransform(zone(0), wgs84).forward(QPointF(1e5, 5e6), after));
        QCOMPARE(after, before);
    }

    // Figures of cs2cs 9.1.1; PROJ's own answer without an epoch is that of the operation's reference epoch.
    void epoch_data()
    {
        QTest::addColumn<QString>("from");
        QTest::addColumn<QString>("to");
        QTest::addColumn<double>("year"); // 0: none
        QTest::addColumn<QPointF>("image");
        const auto row = [](const char *from, const char *to, double year, double x, double y) {
            QTest::addRow("%s to %s in %g", from, to, year)
                << QString::fromUtf8(from) << QString::fromUtf8(to) << year << QPointF(x, y);
        };
        row("epsg:9000", "epsg:7844", 2010.0, 134.0000031045, -24.9999946886);
        row("epsg:9000", "epsg:7844", 2030.5, 133.9999967403, -25.0000055769);
        row("epsg:7844", "epsg:9000", 2030.5, 134.0000032597, -24.9999944231);
        row("epsg:4258", "epsg:9000", 2030.5, 134.0000071521, -25.0000049785);
        row("epsg:4258", "epsg:9000", 0.0, 134.0000036192, -25.0000025192);
        row("epsg:9000", "epsg:7844", 0.0, 134.0, -25.0);
    }
    void epoch()
    {
        QFETCH(QString, from);
        QFETCH(QString, to);
        QFETCH(double, year);
        QFETCH(QPointF, image);
        constexpr double resolution = 1e-9; // degrees, as cs2cs prints them: a tenth of a millimetre
        const QPointF place(134, -25);
        const auto epoch = year == 0.0 ? std::nullopt : std::make_optional(year);
        CoordTransform transform(made(from), made(to));
        transform.setEpoch(epoch);
        const CoordTransform copy(transform);
        transform.setEpoch(1994.0);
        transform = copy;
        QPointF point;
        QVector<QPointF> list;
        QRectF mesh;
        QVERIFY(transform.forward(place, point) && copy.forward({place, place}, list) &&
                copy.forwardMesh(QRectF(place, QSizeF(0.1, 0.1)), mesh, 4));
        VERIFY_NEAR(point, image, resolution);
        VERIFY_NEAR(list.last(), image, resolution);
        VERIFY_NEAR(mesh.topLeft(), image, 1e-8); // the smallest x and y are those of two corners
        QVERIFY(copy.inverse(point, point));
        VERIFY_NEAR(point, place, resolution);
        QCOMPARE(copy.epoch().value_or(0.0), year);
        VERIFY_THROWS(std::invalid_argument, CoordTransform(made(from), made(to), qQNaN()),
                      QStringLiteral("epoch"));
    }

    // As projinfo lists them; the grid is not part of Debian's packages.
    void operations()
    {
        const auto operations =
            CoordTransform(made(QStringLiteral("epsg:27700")), made(QStringLiteral("epsg:4326")))
                .operations();
        QCOMPARE(operations.size(), 8);
        const TransformOperation &first = operations.first();
        QCOMPARE(first.shortName, "OSGB36 to WGS 84 (6)"_s);
        QVERIFY(first.isUsable() && first.hasInverse && first.codes.contains("EPSG:1314"_s));
        QVERIFY(first.accuracyM == 2.0 && first.worthM() == 2.0 && first.ensembleAccuracyM == 2.0);
        VERIFY_NEAR(first.area, QRectF(-8.82, 49.79, 10.74, 11.15), 1e-6);
        QVERIFY(operations.last().isBallpark && operations.last().accuracyM == -1.0);
        QVERIFY(!operations.last().worthM() && operations.last().leavesOut.startsWith("Ordnance Survey"_s));
        const auto offers = CoordTransform(made("epsg:27700"), made("epsg:4326")).gridOffers();
        QVERIFY(!offers.isEmpty() &&
                offers.first().withM().value_or(9) <= offers.first().withoutM().value_or(0));
        // Both steps of a way through WGS 84; no step for equal systems; a projection alone is exact.
        const auto plan =
            CoordTransform(made(QStringLiteral("NonEarth Units \"m\"")), made(utm37)).operations();
        QVERIFY(plan.size() >= 2 && plan.first().step == 0 && plan.last().step == 1);
        QVERIFY(CoordTransform(made(utm37), made(utm37)).operations().isEmpty());
        const auto utm = CoordTransform(made(QStringLiteral("epsg:4326")), made(QStringLiteral("epsg:32637")))
                             .operations();
        QVERIFY(utm.size() == 1 && utm.first().accuracyM == 0.0);
    }

    // The distance is that of MapInfo's three parameters (375, -111, 431) from the seven of the code; by hand
    // through cs2cs with both at the middle of the area: 4.1 m.
    void shiftQualities()
    {
        const auto quality = shiftQuality(*made(QStringLiteral("epsg:27700")));
        QVERIFY(quality && quality->accuracyM == 2.0 && quality->accuracyWithGridsM == 1.0);
        QCOMPARE(quality->definition, QStringLiteral("EPSG:27700"));
        QVERIFY(quality->textDistanceM && std::fabs(*quality->textDistanceM - 4.1) < 0.1);
        const auto exact = shiftQuality(*made(QStringLiteral("epsg:32637")));
        QVERIFY(exact && exact->accuracyM == 0.0 && exact->textDistanceM && *exact->textDistanceM < 1e-6);
        QVERIFY(!shiftQuality(*made(QStringLiteral("NonEarth Units \"m\""))));
    }

    void fallbacks()
    {
        // A code that PROJ does not know: the system's PROJ text takes over.
        const auto factory = support::shippedFactory();
        const CoordSystemPtr unknown = made("proj:+proj=utm +zone=37 +datum=WGS84 +units=m +no_defs");
        unknown->setSourceParameters({CoordSystem::Epsg, "999999"_s});
        const CoordTransform byText(factory->latLongWgs84CoordSystem(), unknown);
        VERIFY_BOTH_WAYS(byText, QPointF(39, 55), QPointF(500000, 6094791.421), 1e-3, 1e-8);
        // With no text that PROJ takes at either end there is no transformation, and nothing stays behind.
        const CoordSystemPtr broken = made(utm37);
        broken->setSourceParameters({CoordSystem::Wkt, "PROJCS[\"100%1 %2 broken\""_s});
        const std::size_t before = coordTransformCache().size();
        for (int i = 0; i < 2; ++i)
            VERIFY_THROWS_LIKE(std::logic_error, CoordTransform(factory->latLongWgs84CoordSystem(), broken),
                               "Не могу создать объект трансформации. ");
        QCOMPARE(coordTransformCache().size(), before);
    }
};

NIVORA_TEST(TestTransform)
#include "tst_transform.moc"
