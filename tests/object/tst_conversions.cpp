#include <support/Support.h>
#include <transform/BothWays.h>

#include <coordsys/CoordSystemConversions.h>
#include <coordsys/EpsgCandidates.h>
#include <coordsys/Measures.h>

#include <cmath>

using namespace nivora::cs;

namespace {
constexpr double METRES_PER_DEGREE = 111194.87428468118; // 6370997 m * pi / 180
CoordSystemPtr proj(const char *text) { return support::made("proj:"_s + QString::fromUtf8(text)); }
QRectF scaled(const QRectF &degrees)
{
    return {degrees.topLeft() * METRES_PER_DEGREE, degrees.size() * METRES_PER_DEGREE};
}
} // namespace

class TestConversions : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void initTestCase() { QVERIFY(support::shippedFactory()); }

    void geographicPlane()
    {
        const CoordSystemPtr cs = proj("+proj=longlat +datum=WGS84 +no_defs");
        VERIFY_BOTH_WAYS(*cs, QPointF(1, -2), QPointF(METRES_PER_DEGREE, -2 * METRES_PER_DEGREE), 1e-9,
                         1e-14);
        QVector<QPointF> list{QPointF(1, 1), QPointF(0, 90)};
        QVERIFY(cs->forward(list, list));
        VERIFY_NEAR(list[1], QPointF(0, 90 * METRES_PER_DEGREE), 1e-8);
        QVERIFY(cs->inverse(list, list));
        VERIFY_NEAR(list[1], QPointF(0, 90), 1e-12);
    }

    // A system converts on its own datum; 1000 m of shift would show as hundreds of metres.
    void noDatumShift()
    {
        const char *const bessel = "+proj=tmerc +lon_0=9 +ellps=bessel +no_defs";
        const std::pair<const char *, const char *> shiftedAndPlain[] = {
            {"+proj=tmerc +lon_0=9 +ellps=bessel +towgs84=1000,0,0 +no_defs", bessel},
            {"+proj=tmerc +lon_0=9 +datum=potsdam +no_defs", bessel},
            {"+proj=tmerc +lon_0=9 +ellps=bessel +nadgrids=@null +no_defs", bessel},
            {"+proj=tmerc +lon_0=9 +ellps=bessel +no_defs +type=crs", bessel},
            {" +proj=tmerc +lon_0=9 +datum=potsdam +type=crs", bessel},
            {"+proj=tmerc +lon_0=9 +datum=OSGB36", "+proj=tmerc +lon_0=9 +ellps=airy"},
            {"+proj=tmerc +lon_0=9 +datum=NAD27 +units=us-ft",
             "+proj=tmerc +lon_0=9 +ellps=clrk66 +units=us-ft"}};
        for (const auto &[shifted, plain] : shiftedAndPlain) {
            const QPointF place(10, 45);
            QPointF out;
            QVERIFY2(proj(plain)->forward(place, out), plain);
            VERIFY_BOTH_WAYS(*proj(shifted), place, out, 1e-6, 1e-9);
        }
    }

    void rectangles()
    {
        // The parallel of 60 N bulges to the south of its ends in a north polar map: only the edge's midpoint
        // shows it.
        const CoordSystemPtr polar = proj("+proj=stere +lat_0=90 +lon_0=0 +R=6370997");
        QRectF out;
        QVERIFY(polar->forward(QRectF(-30, 60, 60, 20), out));
        const double radius = 2 * 6370997 * std::tan(CoordSystem::DEGREES_TO_RADIANS * 15);
        VERIFY_NEAR(out.top(), -radius, 1e-3);
        VERIFY_NEAR(out.right(), radius / 2, 1e-3);
        QVERIFY(polar->inverse(QRectF(out), out) && out.top() < 60.0);
        const CoordSystemPtr geographic = proj("+proj=longlat +datum=WGS84");
        QVERIFY(geographic->inverse(QRectF(METRES_PER_DEGREE, 0, METRES_PER_DEGREE, METRES_PER_DEGREE), out));
        VERIFY_NEAR(out, QRectF(1, 0, 1, 1), 1e-12);
        geographic->setAffineTransform(std::make_unique<QTransform>(0, 1, -1, 0, 0, 0)); // a quarter turn
        QVERIFY(geographic->forward(QRectF(1, 0, 2, 1), out));
        VERIFY_NEAR(out, scaled(QRectF(-1, 1, 1, 2)), 1e-8);
        QVERIFY(geographic->inverse(QRectF(out), out));
        VERIFY_NEAR(out, QRectF(1, 0, 2, 1), 1e-12);
        VERIFY_BOTH_WAYS(*geographic, QPointF(3, 1), QPointF(-1, 3) * METRES_PER_DEGREE, 1e-8, 1e-12);
        for (const CoordSystemPtr &cs : {proj("+proj=merc +R=6370997"), geographic})
            for (const QRectF &empty :
                 {QRectF(10, 10, 0, 5), QRectF(10, 10, 0, 0), QRectF(10, 10, qQNaN(), 5),
                  QRectF(qQNaN(), 10, 5, 5), QRectF(10, qInf(), 5, 5)})
                QVERIFY(!cs->forward(empty, out));
        QVERIFY(!polar->forward(QRectF(0, 80, 20, 11), out)); // reaches beyond the pole
    }

    void distances()
    {
        const CoordSystemPtr geographic = proj("+proj=longlat +datum=WGS84");
        const CoordSystemPtr merc = proj("+proj=merc +R=6370997 +units=km");
        bool ok = false;
        VERIFY_NEAR(geographic->sphericalDistance({0, 0}, {0, 1}, &ok), METRES_PER_DEGREE, 1e-6);
        QVERIFY(ok);
        // From 60 N to 30 N, 90 degrees apart: arccos(sin 60 sin 30) on the sphere.
        QVERIFY(std::fabs(geographic->sphericalDistance({0, 60}, {90, 30}, nullptr) -
                          6370997 * std::acos(std::sin(M_PI / 3) * std::sin(M_PI / 6))) < 1e-5);
        for (const double bad : {qQNaN(), qInf()}) {
            ok = true;
            QVERIFY(geographic->sphericalDistance({0, bad}, {0, 1}, &ok) == 0.0 && !ok);
            QPointF out(1, 1);
            QVERIFY(!geographic->forward(QPointF(bad, 1), out) && !geographic->inverse(QPointF(1, bad), out));
        }
        // Half a great circle over the pole; and the same degree through a projection.
        QVERIFY(std::fabs(geographic->sphericalDistance({0, 45}, {180, 45}, nullptr) -
                          90 * METRES_PER_DEGREE) < 1e-5);
        QVERIFY(std::fabs(merc->sphericalDistance({0, 0}, {METRES_PER_DEGREE / 1000, 0}, &ok) -
                          METRES_PER_DEGREE) < 1e-5);
        VERIFY_NEAR(geographic->cartesianDistance({1, 1}, {4, 5}), 5 * METRES_PER_DEGREE, 1e-8);
        QCOMPARE(merc->cartesianDistance({1, 1}, {4, 5}), 5.0);
        const CoordSystemPtr ortho = proj("+proj=ortho +R=6370997");
        for (const auto &[a, b] :
             {std::pair(QPointF(0, 0), QPointF(1e7, 0)), std::pair(QPointF(1e7, 0), QPointF(0, 0))}) {
            ok = true;
            QCOMPARE(ortho->sphericalDistance(a, b, &ok), 0.0);
            QVERIFY(!ok);
            QCOMPARE(ortho->sphericalDistance(a, b, nullptr), 0.0);
        }
    }

    // Factors: on the sphere by Snyder, Map Projections (1987), (8-1) to (8-4): B = cos lat sin dlon, k = 1 /
    // sqrt(1 - B^2), convergence atan(sin lat tan dlon). The unit and the meridian that longitudes count from
    // do not change them.
    void factors_data()
    {
        QTest::addColumn<QString>("tail");
        QTest::newRow("metres") << QString();
        QTest::newRow("feet") << QStringLiteral(" +units=us-ft");
        QTest::newRow("from Paris") << QStringLiteral(" +pm=paris");
    }
    void factors()
    {
        QFETCH(QString, tail);
        const auto factory = support::shippedFactory();
        const CoordSystemPtr cs =
            factory->createFromProj(QStringLiteral("+proj=tmerc +R=6371000 +lon_0=39") + tail);
        const double meridian = tail.contains(QLatin1String("paris")) ? 2.33722917 : 0.0;
        QPointF point;
        QVERIFY(cs->forward(QPointF(49 + meridian, 30), point));
        const auto f = Measures(cs).factorsAt(point);
        const double rad = CoordSystem::DEGREES_TO_RADIANS;
        const double b = std::cos(30 * rad) * std::sin(10 * rad);
        const double k = 1 / std::sqrt(1 - b * b);
        QVERIFY(f && std::fabs(f->meridianScale - k) < 1e-7 && std::fabs(f->parallelScale - k) < 1e-7);
        QVERIFY(std::fabs(f->arealScale - k * k) < 1e-7);
        QVERIFY(std::fabs(f->convergenceDeg - std::atan(0.5 * std::tan(10 * rad)) / rad) < 1e-6);
        QVERIFY(std::fabs(f->angularDistortionDeg) < 1e-4);
    }

    // A plane's longitudes count from Greenwich, whichever meridian its own do; 178 degrees east of Paris lie
    // in the other hemisphere.
    void foreignMeridian()
    {
        const CoordSystemPtr cs = support::shippedFactory()->createFromWkt(QStringLiteral(
            R"(PROJCS["x",GEOGCS["y",DATUM["z",SPHEROID["GRS 80",6378137,298.257222101]],PRIMEM["Paris",2.33722917],
            UNIT["degree",0.0174532925199433]],PROJECTION["Transverse_Mercator"],PARAMETER["central_meridian",178],
            PARAMETER["latitude_of_origin",0],PARAMETER["scale_factor",1],PARAMETER["false_easting",500000],
            PARAMETER["false_northing",0],UNIT["metre",1]])"));
        QPointF lonLat, plane;
        QVERIFY(cs->inverse(QPointF(500000, 0), lonLat) && cs->forward(lonLat, plane));
        VERIFY_NEAR(lonLat, QPointF(178 + 2.33722917 - 360, 0), 1e-9);
        VERIFY_NEAR(plane, QPointF(500000, 0), 1e-6);
    }

    // From Kennedy airport to Heathrow, and a cell of a degree, as Karney's GeodSolve and Planimeter have
    // them.
    void geodesics()
    {
        const auto factory = support::shippedFactory();
        const CoordSystemPtr wgs84 = factory->createFromEpsg(4326);
        const Measures degrees(wgs84);
        const QPointF kennedy(-73.8, 40.6), heathrow(-0.5, 51.6);
        const auto line = degrees.line(kennedy, heathrow);
        QVERIFY(line && std::fabs(line->lengthM - 5551759.4003) < 1e-3);
        QVERIFY(std::fabs(line->startAzimuthDeg - 51.198882846) < 1e-8);
        QVERIFY(std::fabs(line->endAzimuthDeg - 107.821776736) < 1e-8);
        // The same places in a plane; a degree's cell at the equator, whichever way round; what has no place.
        const CoordSystemPtr utm = factory->createFromEpsg(32630);
        QPointF a, b;
        QVERIFY(utm->forward(QPointF(-3, 51), a) && utm->forward(heathrow, b));
        const auto planar = Measures(utm).line(a, b);
        const auto direct = degrees.line(QPointF(-3, 51), heathrow);
        QVERIFY(planar && direct && std::fabs(planar->lengthM - direct->lengthM) < 1e-3);
        const auto cell = degrees.polygon({{0, 0}, {1, 0}, {1, 1}, {0, 1}});
        const auto turned = degrees.polygon({{0, 1}, {1, 1}, {1, 0}, {0, 0}});
        QVERIFY(cell && turned && !cell->isClockwise && turned->isClockwise);
        QVERIFY(std::fabs(cell->areaM2 - 12308778361.469452) < 1.0 && cell->areaM2 == turned->areaM2);
        QVERIFY(!degrees.polygon({kennedy, heathrow}) && !degrees.line(QPointF(0, 91), heathrow));
        QVERIFY(!degrees.factorsAt(heathrow) && !degrees.line(QPointF(qQNaN(), 0), heathrow));
        const CoordSystemPtr plan = factory->createFromPrj(QStringLiteral("NonEarth Units \"m\""));
        QVERIFY(!Measures(plan).line(a, b) && !Measures(plan).factorsAt(a));
    }

    // The Krassowsky ellipsoid alone names no datum: three families of frames have this plane.
    void candidates()
    {
        const auto factory = support::shippedFactory();
        QList<int> codes;
        for (const EpsgCandidate &candidate : epsgCandidates(*factory->createFromProj(
                 QStringLiteral("+proj=tmerc +lon_0=39 +x_0=7500000 +ellps=krass +towgs84=1,2,3"))))
            codes << candidate.code;
        QCOMPARE(codes, (QList<int>{28407, 20007, 5565}));
        const auto own = epsgCandidates(*factory->createFromEpsg(3857)).value(0);
        QVERIFY(own.code == 3857 && own.confidence == 100 && own.name.contains(QLatin1String("Pseudo")));
        QVERIFY(epsgCandidates(*factory->createFromPrj(QStringLiteral("NonEarth Units \"m\""))).isEmpty());
    }

    void singularAffine()
    {
        const CoordSystemPtr cs = proj("+proj=merc +R=6370997");
        QVERIFY(!hasAffine(cs) && !hasAffine(static_cast<const CoordSystem *>(cs.get())));
        QCOMPARE(tryConvertForward(cs, QRectF(1, 2, 3, 4)), QRectF(1, 2, 3, 4));
        cs->setAffineTransform(
            std::make_unique<QTransform>(0, -1, 1, 0, 100, 0)); // a quarter turn: (y + 100, -x)
        QVERIFY(hasAffine(cs));
        QCOMPARE(tryConvertForward(cs, QRectF(1, 2, 3, 4)), QRectF(102, -4, 4, 3));
        QCOMPARE(tryConvertInverse(cs, QPointF(102, -1)), QPointF(1, 2));
        QCOMPARE(tryConvertInverse(cs, QPolygonF({QPointF(102, -1)})), QPolygonF({QPointF(1, 2)}));
        cs->setAffineTransform(std::make_unique<QTransform>(1, 1, 1, 1, 0, 0));
        QCOMPARE(tryConvertInverse(cs, QPointF(5, 6)), QPointF(5, 6)); // cannot be undone: the identity
        QPointF out;
        QVector<QPointF> list{QPointF(1, 2)};
        QVERIFY(!cs->forward(QPointF(1, 2), out) && !cs->inverse(QPointF(1, 2), out) &&
                !cs->forward(list, list));
    }

    /// The products of such coefficients are beyond every number; the way back is not.
    void affineOverflow_data()
    {
        QTest::addColumn<double>("scale");
        for (const double scale : {1e-200, 1e-150, 1e150, 1e200})
            QTest::addRow("%g", scale) << scale;
    }
    void affineOverflow()
    {
        QFETCH(double, scale);
        const CoordSystemPtr cs = proj("+proj=merc +R=6370997");
        cs->setAffineTransform(std::make_unique<QTransform>(scale, scale / 2, -scale / 2, scale, 0, 0));
        const QPointF place(10, 20);
        QPointF plane, lonLat;
        QVERIFY(cs->forward(place, plane) && cs->inverse(plane, lonLat));
        VERIFY_NEAR(lonLat, place, 1e-9);
    }

    void normalizedText_data()
    {
        const support::Columns<QString, QString, QString> row;
        const QString zero = "+towgs84=0,0,0,0,0,0,0"_s;
        const QString lonLat = "+proj=longlat +ellps=WGS84 %1 +no_defs"_s.arg(zero);
        row.named("+proj=longlat +ellps=WGS84 +no_defs", lonLat, lonLat);
        const QString twice = "+proj=longlat +datum=WGS84 %1 +no_defs"_s.arg(zero);
        row.named(lonLat, twice, twice);
        row.named("+proj=merc +ellps=WGS84", "+proj=merc +ellps=WGS84", "+proj=merc +ellps=WGS84 "_s + zero);
        row.named("+proj=mill +R_A +towgs84=1,2,3", "+proj=mill  +towgs84=1,2,3",
                  "+proj=mill  +towgs84=1,2,3");
    }
    void normalizedText()
    {
        const auto [in, geographicOnly, always] = support::row<QString, QString, QString>();
        QCOMPARE(fixedProjString(in, true), geographicOnly);
        QCOMPARE(fixedProjString(in, false), always);
        bool removed = false;
        QCOMPARE(
            removeHelmertFromProjString("+proj=x +nadgrids=a +towgs84=1 +geoidgrids=b +no_defs"_s, removed),
            "+proj=x    +no_defs"_s);
        QVERIFY(removed);
        for (const char *term : {"+towgs84=1", "+nadgrids=a", "+geoidgrids=b"})
            QVERIFY(removeHelmertFromProjString(QString::fromUtf8(term), removed).isEmpty() && removed);
    }
};

NIVORA_TEST(TestConversions)
#include "tst_conversions.moc"
