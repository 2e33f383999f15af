#include <support/Support.h>

#include <coordsys/CoordSysRect.h>
#include <coordsys/MapHeaderCoordsysConverter.h>

using namespace nivora::cs;

class TestCoordSysRect : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void initTestCase() { QVERIFY(support::shippedFactory()); }

    void rule_data()
    {
        const support::Columns<QString, QRectF> row;
        // clang-format off
        row.named("NonEarth Units \"m\"", {-1e7, -1e7, 2e7, 2e7});
        row.named("Earth Projection 1, 104", {-1000, -1000, 2000, 2000});
        row.named("Earth Projection 3, 104, 7, 10, 45, 40, 50, 0, 0", {-360, -85, 720, 170});
        row.named("Earth Projection 8, 104, 7, 39, 0, 1, 0, 0", {-21, -90, 120, 180});
        row.named("Earth Projection 2034, 104, 7, 39, 0, 1, 0, 0, 0, 0, 9, 9", {-21, -90, 120, 180});
        row.named("Earth Projection 10, 104, 7, 0", {-360, -85.05112878, 720, 170.10225756});
        row.named("Earth Projection 20, 104, \"m\", 0, 90, 1, 500000, 0", {500000 - 1e8, -1e8, 2e8, 2e8});
        row.named("Earth Projection 31, 109, \"km\", 5, 52, 1, 155, 463", {155 - 1e11, 463 - 1e11, 2e11, 2e11});
        row.named("Earth Projection 25, 1003, \"m\", 7, 46, 600000, 200000", {600000 - 1e8, 200000 - 1e8, 2e8, 2e8});
        row.named("Earth Projection 9, 104, 7, 10, 45, 40, 50, 0, 0", {-360, -90, 720, 180});
        // clang-format on
    }
    void rule()
    {
        const auto [prj, expected] = support::row<QString, QRectF>();
        VERIFY_NEAR(CoordSysRect::rectMifalAlgorithm(prj, nullptr), expected, 1e-9);
        // An empty catalogue has nothing but the rule, and says so.
        support::LogCapture log;
        VERIFY_NEAR(CoordSysRect().rect(prj, nullptr), expected, 1e-9);
        QVERIFY(log.lines("debug"_s).contains(
            "Не могу рассчитать ограничивающий прямоугольник для КС (%1)"_s.arg(prj)));
    }

    void projectedRule()
    {
        // Mercator's square: half a circumference, 20037508.3428 m, up and down. The longitudes of the rule
        // wrap to zero width, so the answer is the degrees; transverse Mercator's 60 degrees do not.
        const auto factory = support::shippedFactory();
        const QString tm = "Earth Projection 8, 104, \"m\", 39, 0, 1, 0, 0"_s;
        const QRectF out = CoordSysRect::rectMifalAlgorithm(tm, factory->createWithoutDescription(tm).get());
        QVERIFY(out.width() > 1e7 && qAbs(out.center().x()) < 1.0);
        QVERIFY(qAbs(out.bottom() - 10001965.7293) < 1e-3); // the meridian quadrant of WGS 84
    }

    void catalogue()
    {
        const support::ResourceCopy copy;
        const QByteArray entry =
            "<cs prj=\"8\" el=\"5\" u=\"7\" pp0=\"39\" pp1=\"0\" pp2=\"1\" pp3=\"0\" pp4=\"0\" pp5=\"0\""
            " datum=\"5\" sx=\"0\" sy=\"0\" sz=\"0\" xmin=\"%1\" ymin=\"-2\" xmax=\"30\" ymax=\"40\"/>";
        copy.write("cs_mbr.xml"_s,
                   "<a>" + QByteArray(entry).replace("%1", "nan") + QByteArray(entry).replace("%1", "-inf") +
                       QByteArray(entry).replace("%1", "-10").replace("<cs", "<cs dp0=\"inf\"") +
                       QByteArray(entry).replace("%1", "-10") + "<other/>" +
                       QByteArray(entry).replace("%1", "0") + "</a>");
        CoordSysRect rects;
        support::LogCapture log;
        QVERIFY(rects.initFromXML(copy.dir()));
        QVERIFY(log.lines("info"_s).contains("CS MBRs loaded from cs_mbr.xml=2"_s));
        QCOMPARE(log.lines("error"_s).size(), 3); // what is not finite
        const QString metres = "Earth Projection 8, 1001, \"m\", 39, 0, 1, 0, 0"_s;
        VERIFY_NEAR(rects.rect(metres, nullptr), QRectF(-10, -2, 40, 42), 0.0); // the first entry
        const QString feet = "Earth Projection 8, 1001, \"ft\", 39, 0, 1, 0, 0"_s;
        VERIFY_NEAR(rects.rect(feet, nullptr), QRectF(-21, -90, 120, 180),
                    1e-9); // bounds in metres are not for feet
        rects.clear();
        VERIFY_NEAR(rects.rect(metres, nullptr), QRectF(-21, -90, 120, 180), 1e-9);
        QCOMPARE(getattrib("0x00"_s), 0);
        for (const char *text : {"", "0", "0x01", "0X00"})
            QCOMPARE(getattrib(QString::fromUtf8(text)), -1);
        QVERIFY(CoordSysRect::isDefaultRectLatLong({-360, -90, 720, 180}) &&
                CoordSysRect::isDefaultRectLatLong({-1000, -1000, 2000, 2000}));
        QVERIFY(!CoordSysRect::isDefaultRectLatLong({-180, -90, 360, 180}) &&
                !CoordSysRect::isDefaultRectNonEarth({-1e7, -1e7, 2e7, 1e7}));
    }

    void malformedFile()
    {
        const support::ResourceCopy copy;
        CoordSysRect rects;
        for (const QByteArray &content :
             {QByteArray(), QByteArray("<a><cs prj=\"8\"/>"), QByteArray("\xff\xfe%1 %s")}) {
            copy.write("cs_mbr.xml"_s, content);
            support::LogCapture log;
            QVERIFY(rects.initFromXML(copy.dir()));
            QCOMPARE(log.lines("error"_s).size(), 1);
            QVERIFY(log.lines("info"_s).contains("CS MBRs loaded from cs_mbr.xml=0"_s));
        }
        copy.remove("cs_mbr.xml"_s);
        support::LogCapture log;
        QVERIFY(!rects.initFromXML(copy.dir()));
        QVERIFY(log.lines("error"_s).join(QString()).startsWith("Не могу открыть файл "_s));
    }

    void systems()
    {
        struct Row
        {
            const char *system;
            QRectF expected;
            double tolerance;
        };
        const double half = 20037508.3428; // pi * 6378137 m
        const Row rows[] = {
            {"epsg:4284", {-1000, -1000, 2000, 2000}, 0.0}, // whatever the code
            {"proj:+proj=merc +lon_0=11 +datum=WGS84", {-half, -half, 2 * half, 2 * half}, 1e5},
            {"proj:+proj=laea +lat_0=90 +lon_0=11 +ellps=krass", {-12.74e6, -12.74e6, 25.48e6, 25.48e6}, 5e4},
            {"proj:+proj=aeqd +lat_0=90 +lon_0=0 +ellps=krass", {-20.0e6, -20.0e6, 40.0e6, 40.0e6}, 1e5}};
        const auto factory = support::shippedFactory();
        for (const auto &[system, expected, tolerance] : rows) {
            const CoordSystemPtr cs = factory->createFromTaggedString(QString::fromUtf8(system));
            VERIFY_NEAR(CoordSysRect().rect(cs), expected, tolerance);
            cs->setEpsg(32637); // a code that was only set must not move the bounds
            VERIFY_NEAR(CoordSysRect().rect(cs), expected, tolerance);
        }
        // Across the 180th meridian: Fiji's grid (EPSG 3460) keeps some hundred kilometres each way.
        const QRectF fiji = CoordSysRect().rect(factory->createFromEpsg(3460));
        QVERIFY2(fiji.width() < 2e6 && fiji.height() < 2e6, qPrintable(QString::number(fiji.height())));
    }

    // The bounds are those of the plane; the system maps them by its affine transformation, once.
    void affineOnce()
    {
        const auto factory = support::shippedFactory();
        const QString plain = "Earth Projection 8, 104, \"m\", 39.123, 0, 1, 500000, 0"_s;
        const QRectF bounds = factory->createWithoutDescription(plain)->rectInternal();
        const CoordSystemPtr moved =
            factory->createWithoutDescription(plain + " Affine Units \"m\", 0, 2, 1000, -2, 0, 3000"_s);
        QVERIFY(bounds.width() > 1e6);
        VERIFY_NEAR(CoordSysRect().rect(moved), CoordSysRect().rect(factory->createWithoutDescription(plain)),
                    1e-3);
        VERIFY_NEAR(moved->rectInternal(), moved->affineTransform()->mapRect(bounds), 1e-2);
    }

    void badText()
    {
        support::LogCapture log;
        QVERIFY(CoordSysRect().rect(QString(), nullptr).isNull());
        QVERIFY(CoordSysRect().rect(std::make_shared<CoordSystem>()).isNull());
        QCOMPARE(log.lines("error"_s).first(), "Строка с координатной системой пустая"_s);
        QVERIFY(log.lines("error"_s).size() >= 2);
        QVERIFY_EXCEPTION_THROWN(CoordSysRect().rect("Earth Projection 8, 104"_s, nullptr),
                                 NotEnoughtParamsException);
    }
};

NIVORA_TEST(TestCoordSysRect)
#include "tst_coordsysrect.moc"
