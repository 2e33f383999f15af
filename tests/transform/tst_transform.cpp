#include "BothWays.h"

#include <support/Support.h>
#include <support/TestRunner.h>

#include <coordsys/CoordSystem.h>
#include <coordsys/CoordTransform.h>
#include <coordsys/CoordTransformCache_p.h>
#include <coordsys/DefaultRects.h>
#include <coordsys/ProjectionParamsManager.h>

#include <cmath>
#include <limits>

using namespace nivora::cs;

namespace {
const double notANumber = std::numeric_limits<double>::quiet_NaN();
const QString utm37 = QStringLiteral("prj:Earth Projection 8, 104, \"m\", 39, 0, 0.9996, 500000, 0");
CoordSystemPtr made(const QString &tagged)
{
    return support::shippedFactory()->createFromTaggedString(tagged);
}
} // namespace

class TestTransform : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void initTestCase() { QVERIFY(support::shippedFactory()); }

    void nonEarth_data()
    {
        QTest::addColumn<int>("unit");
        QTest::addColumn<QRectF>("bounds");
        for (int unit : {0, 1, 2, 3, 4, 5, 6, 7, 8, 9, 30, 31, 32})
            for (const QRectF &bounds : {QRectF(), QRectF(-100.5, 20, 300, 400)})
                QTest::addRow("unit %d%s", unit, bounds.isNull() ? "" : ", bounds") << unit << bounds;
    }

    // A plan lies on the equidistant cylinder over the sphere of 6370997 m: a degree is 111194.87428468118 m.
    void nonEarth()
    {
        QFETCH(int, unit);
        QFETCH(QRectF, bounds);
        const auto factory = support::shippedFactory();
        // PROJ's link and chain are the international ones, the catalogue's the survey ones.
        const double metres = unit == LinearUnit::Link ? 0.201168
                              : unit == LinearUnit::Chain
                                  ? 20.1168
                                  : factory->projectionParamsManager()->unitByID(unit)->conversion();
        const CoordSystemPtr plan = factory->createNonEarth(unit, bounds);
        QVERIFY(plan->isNonEarth());
        QVERIFY(!plan->isLatLong());
        QCOMPARE(plan->unit().unitCode(), unit);
        QCOMPARE(plan->isRectSet(), !bounds.isNull());
        VERIFY_NEAR(plan->rectNumericCoordSys(), bounds.isNull() ? DefaultRectNonEarth : bounds, 1e-9);

        const CoordSystemPtr again = factory->createFromTaggedString(plan->taggedString());
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
        const CoordTransform t(
            made(QStringLiteral("prj:CoordSys NonEarth Units \"km\"")),
            made(QStringLiteral("wkt:LOCAL_CS[\"Nonearth\",UNIT[\"Foot (International)\",0.3048]]")));
        VERIFY_BOTH_WAYS(t, QPointF(3.048, -0.3048), QPointF(10000, -1000), 1e-5, 1e-8);
    }

    // A = 1 … F = 6: x' = x + 2 y + 3, y' = 4 x + 5 y + 6, so (10, 20) gives (53, 146).
    void affine()
    {
        const CoordSystemPtr plain = made(QStringLiteral("prj:CoordSys NonEarth Units \"m\""));
        const CoordSystemPtr bent =
            made(QStringLiteral("prj:CoordSys NonEarth Units \"m\" Affine Units \"m\", 1, 2, 3, 4, 5, 6"));
        const CoordTransform t(plain, bent);
        VERIFY_BOTH_WAYS(t, QPointF(10, 20), QPointF(53, 146), 1e-6, 1e-6);
        VERIFY_BOTH_WAYS(CoordTransform(bent, plain), QPointF(53, 146), QPointF(10, 20), 1e-6, 1e-6);
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
        const CoordTransform shifted(
            made(QStringLiteral("prj:Earth Projection 1, 104")),
            made(QStringLiteral("prj:Earth Projection 1001, 104, \"degree\", 1, 0, 10, 0, 1, -5")));
        VERIFY_BOTH_WAYS(shifted, QPointF(30, 60), QPointF(40, 55), 1e-9, 1e-9);
    }

    void constructor()
    {
        const CoordSystemPtr utm = made(utm37);
        VERIFY_THROWS(std::invalid_argument, CoordTransform(nullptr, nullptr), QStringLiteral("cs_from"));
        VERIFY_THROWS(std::invalid_argument, CoordTransform(utm, nullptr), QStringLiteral("cs_to"));
        VERIFY_THROWS(std::runtime_error, CoordTransform::throwTransformFailed(),
                      QStringLiteral("Ошибка преобразования координат"));
        const CoordTransform t(utm, support::shippedFactory()->latLongWgs84CoordSystem());
        CoordTransform copy(t);
        QCOMPARE(copy.sourceCoordSystem(), utm);
        copy = CoordTransform(utm, utm);
        QVERIFY(copy.isEqualsCS());
        copy = t;
        VERIFY_BOTH_WAYS(copy, QPointF(500000, 6094791.421), QPointF(39, 55), 1e-8, 1e-3);
        // Units that the catalogue cannot name compare by factor.
        const auto yards = [] {
            return made(QStringLiteral("proj:+proj=tmerc +lon_0=39 +datum=WGS84 +units=ind-yd"));
        };
        QVERIFY(CoordTransform(yards(), yards()).isEqualsCS());
        QVERIFY(!CoordTransform(yards(), utm).isEqualsCS());
    }

    void equalSystemsCopy()
    {
        const std::size_t before = coordTransformCache().size();
        const CoordTransform t(made(utm37), made(utm37));
        QVERIFY(t.isEqualsCS());
        QCOMPARE(coordTransformCache().size(), before);
        VERIFY_BOTH_WAYS(t, QPointF(1e30, -1e30), QPointF(1e30, -1e30), 0.0, 0.0);
        QRectF rect;
        QVERIFY(t.inverse(QRectF(1, 2, 3, 4), rect));
        QCOMPARE(rect, QRectF(1, 2, 3, 4));
        QVERIFY(!t.forward(QRectF(1, 2, 0, 4), rect));
        QVERIFY(t.forwardMesh(QRectF(1, 2, 3, 4), rect, 0));
        QCOMPARE(rect, QRectF(1, 2, 3, 4));
    }

    void failedPoints_data()
    {
        QTest::addColumn<QString>("system");
        QTest::addColumn<QPointF>("bad");
        const QString merc = QStringLiteral("prj:Earth Projection 10, 104, \"m\", 0");
        QTest::newRow("beyond the pole") << merc << QPointF(0, 91);
        QTest::newRow("longitude 720") << merc << QPointF(720, 10);
        QTest::newRow("NaN") << merc << QPointF(notANumber, 10);
        QTest::newRow("NaN latitude") << merc << QPointF(10, notANumber);
        QTest::newRow("infinite") << merc << QPointF(10, std::numeric_limits<double>::infinity());
        QTest::newRow("90 degrees off the meridian") << utm37 << QPointF(129, 0);
        QTest::newRow("behind a gnomonic")
            << QStringLiteral("proj:+proj=gnom +lat_0=90 +datum=WGS84") << QPointF(0, -10);
        QTest::newRow("the far pole of a cone")
            << QStringLiteral("prj:Earth Projection 3, 104, \"m\", 10, 45, 40, 50, 0, 0") << QPointF(0, -90);
    }
    void failedPoints()
    {
        QFETCH(QString, system);
        QFETCH(QPointF, bad);
        const CoordSystemPtr cs = made(system);
        const CoordTransform t(made(QStringLiteral("prj:Earth Projection 1, 104")), cs);
        const QPointF untouched(-7, -7);
        QPointF out = untouched;
        QVERIFY(!t.forward(bad, out));
        QCOMPARE(out, untouched);
        QVERIFY(!cs->forward(bad, out));
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
        const CoordTransform t(made(QStringLiteral("epsg:4326")), made(utm37));
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
        const CoordTransform t(made(QStringLiteral("epsg:4326")), made(QStringLiteral("epsg:3395")));
        QRectF out;
        QVERIFY(t.forward(QRectF(0, 0, 10, 10), out));
        QVERIFY(std::fabs(out.right() - 1113194.9079327) < 1e-6); // 6378137 m * 10 degrees
        QVERIFY(t.inverse(out, out));
        VERIFY_NEAR(out, QRectF(0, 0, 10, 10), 1e-9);
        out = QRectF();
        QVERIFY(!t.forward(QRectF(10, 10, 0, 5), out));
        QVERIFY(std::fabs(out.left() - 1113194.9079327) < 1e-6); // collapsed, and written all the same
        QCOMPARE(rectToVector(QRectF(1, 2, 3, 4)),
                 QVector<QPointF>({QPointF(1, 2), QPointF(4, 2), QPointF(4, 6), QPointF(1, 6)}));
    }

    void cacheIsByAddress()
    {
        CoordTransformCache &cache = coordTransformCache();
        const QString krass = QStringLiteral("prj:Earth Projection 8, 1001, \"m\", 45, 0, 1, 8500000, 0");
        const CoordSystemPtr a = made(krass), a2 = made(krass), b = made(utm37), b2 = made(utm37);
        const std::size_t before = cache.size();
        const CoordTransform t(a, b), copy(t), again(a, b);
        QCOMPARE(cache.size(), before + 1);
        const CoordTransform twin(a2, b2);
        QCOMPARE(cache.size(), before + 2);
        QCOMPARE(cache.find(a, b)->first.pj,
                 cache.find(a2, b2)->first.pj); // equal texts share the engine's object
        QVERIFY(!cache.find(b, a));
        // A plan goes through WGS 84 in two steps.
        const CoordTransform mixed(a, support::shippedFactory()->createNonEarth(7, QRectF()));
        QVERIFY(cache.find(a, mixed.destinationCoordSystem())->second);
        QVERIFY(!cache.find(a, b)->second);
    }

    void fallbacks()
    {
        // A code that PROJ does not know: the system's PROJ text takes over.
        const auto factory = support::shippedFactory();
        const CoordSystemPtr unknown =
            made(QStringLiteral("proj:+proj=utm +zone=37 +datum=WGS84 +units=m +no_defs"));
        unknown->setSourceParameters({CoordSystem::Epsg, QStringLiteral("999999")});
        const CoordTransform byText(factory->latLongWgs84CoordSystem(), unknown);
        VERIFY_BOTH_WAYS(byText, QPointF(39, 55), QPointF(500000, 6094791.421), 1e-3, 1e-8);
        // With no text that PROJ takes at either end there is no transformation, and nothing stays behind.
        const CoordSystemPtr broken = made(utm37);
        broken->setSourceParameters({CoordSystem::Wkt, QStringLiteral("PROJCS[\"100%1 %2 broken\"")});
        const std::size_t before = coordTransformCache().size();
        for (int i = 0; i < 2; ++i) {
            const QString text = QStringLiteral("Не могу создать объект трансформации. ");
            const QString instead = support::thrownInstead<std::logic_error>(
                [&] { CoordTransform(factory->latLongWgs84CoordSystem(), broken); }, text, true);
            QVERIFY2(instead.isEmpty(), qPrintable(instead));
        }
        QCOMPARE(coordTransformCache().size(), before);
    }
};

NIVORA_TEST(TestTransform)
#include "tst_transform.moc"
