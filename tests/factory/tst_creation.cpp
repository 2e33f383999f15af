#include <support/Support.h>
#include <support/TestRunner.h>

#include <coordsys/CoordSystem.h>
#include <coordsys/DefaultRects.h>
#include <coordsys/MapHeaderCoordsysConverter.h>
#include <coordsys/MapinfoCoordSystem.h>
#include <coordsys/ProjEngine.h>

#include <QRegularExpression>

using namespace nivora::cs;

namespace {
std::shared_ptr<CoordSysFactory> factory() { return support::shippedFactory(); }
} // namespace

class TestCreation : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void initTestCase() { QVERIFY(factory()); }

    /// Systems of one text share the engines' objects and nothing else.
    void sameTextAgain()
    {
        for (const QString &text :
             {QStringLiteral("proj:+proj=utm +zone=37 +ellps=krass +towgs84=1,2,3"),
              QStringLiteral("epsg:28407"), QStringLiteral("prj:Earth Projection 1, 1001")}) {
            const CoordSystemPtr first = factory()->createFromTaggedString(text);
            const QString name = first->description();
            first->setDescription(QStringLiteral("changed"));
            first->setEpsg(1);
            const CoordSystemPtr second = factory()->createFromTaggedString(text);
            QCOMPARE(second->description(), name);
            QVERIFY(second->epsg() != 1 && second->isEqual(first, false));
            QVERIFY(second->OGRSpatialReference() != first->OGRSpatialReference());
        }
    }

    void refused_data()
    {
        QTest::addColumn<QString>("tagged");
        QTest::addColumn<QString>("type");
        QTest::addColumn<QString>("text"); // the beginning of the message
        const auto row = [](const char *tagged, const char *type, const char *text) {
            QTest::newRow(tagged) << QString::fromUtf8(tagged) << QString::fromUtf8(type)
                                  << QString::fromUtf8(text);
        };
        row("", "invalid_argument", "Строка КС пустая");
        row("prj:", "invalid_argument", "Строка КС пустая");
        row("proj:", "invalid_argument", "Строка КС пустая");
        row("wkt:", "runtime_error", "Строка КС пустая");
        row("proj:proj=merc", "logic_error", "Неверный формат строки");
        row("proj:x +proj=merc", "logic_error", "Неверный формат строки");
        row("proj:+proj=100%1 %2", "runtime_error", "Неверная строка КС\n+proj=100%1 %2");
        row("wkt:PROJCS[\"100%1 %2\"", "runtime_error",
            "Ошибка импорта из строки WKT:\nPROJCS[\"100%1 %2\"\n(");
        row("epsg:-2", "ProjException", "Запрос proj строки для EPSG=-2:");
        row("epsg:x", "ProjException", "Запрос proj строки для EPSG=0:");
        row("epsg:99999999999", "ProjException", "Запрос proj строки для EPSG=0:");
        row("EPSG:2147483647", "ProjException", "Запрос proj строки для EPSG=2147483647:");
        row(" epsg:4326", "NotEnoughtParamsException", ""); // a blank before the tag: not a tag
        row("prj:Earth Projection 8, 104", "NotEnoughtParamsException", "");
        row("prj:Earth Projection 35, 104, 7, 1, 2, 3, 4, 5, 6", "runtime_error", "Неверная строка КС\n");
        row("prj:Earth Projection 8, 7777, 7, 39, 0, 1, 0, 0", "logic_error",
            "Не могу определить дополнительные параметры датума");
        row("prj:NonEarth Units \"m\" Affine Units \"ell\", 1, 2, 3, 4, 5, 6", "invalid_argument",
            "unitCode");
    }
    void refused()
    {
        QFETCH(QString, tagged);
        QFETCH(QString, type);
        QFETCH(QString, text);
        const auto call = [&] { (void)factory()->createFromTaggedString(tagged); };
        using support::thrownInstead;
        const QString instead =
            type == QLatin1String("invalid_argument") ? thrownInstead<std::invalid_argument>(call, text, true)
            : type == QLatin1String("runtime_error")  ? thrownInstead<std::runtime_error>(call, text, true)
            : type == QLatin1String("ProjException")  ? thrownInstead<ProjException>(call, text, true)
            : type == QLatin1String("logic_error")
                ? thrownInstead<std::logic_error>(call, text, true)
                : thrownInstead<NotEnoughtParamsException>(call, text, true);
        QVERIFY2(instead.isEmpty(), qPrintable(instead));
    }

    void badInput_data()
    {
        QTest::addColumn<QString>("whole");
        for (const char *text :
             {"proj:+proj=tmerc +lat_0=0 +lon_0=39 +k=1 +x_0=7500000 +ellps=krass "
              "+towgs84=24,-123,-94,0.02,-0.25,-0.13,1.1 +units=m",
              "prj:CoordSys Earth Projection 8, 9999, 3, 24, -123, -94, -0.02, 0.25, 0.13, "
              "1.1, 0, \"m\", 39, 0, 1, 7500000, 0 "
              "Affine Units \"m\", 1, 2, 3, 4, 5, 6 Bounds (0, 0) (1, 1)",
              "wkt:PROJCS[\"x\",GEOGCS[\"y\",DATUM[\"WGS_1984\",SPHEROID[\"WGS "
              "84\",6378137,298.257223563]],PRIMEM[\"Greenwich\",0],"
              "UNIT[\"degree\",0.0174532925199433]],PROJECTION[\"Mercator_1SP\"],PARAMETER["
              "\"central_meridian\",39],UNIT[\"metre\",1]]",
              "wkt:LOCAL_CS[\"Nonearth\",UNIT[\"Meter\",1]]", "epsg:32637"})
            QTest::newRow(QByteArray(text).left(12)) << QString::fromUtf8(text);
    }

    // Cut anywhere, or with any number replaced: an object that can be used, or an exception; never a crash
    // or a hang.
    void badInput()
    {
        QFETCH(QString, whole);
        QStringList texts;
        const int body = whole.indexOf(QLatin1Char(':')) + 1;
        for (int length = body; length < whole.size(); length += 7)
            texts << whole.left(length);
        const QRegularExpression number(QStringLiteral("\\d+(\\.\\d+)?"));
        int at = body;
        for (auto match = number.match(whole, at); match.hasMatch(); match = number.match(whole, at)) {
            at = match.capturedEnd();
            for (const char *other : {"nan", "-1e308", "99999999999999999999", "%1%s%n"})
                texts << whole.left(match.capturedStart()) + QLatin1String(other) + whole.mid(at);
        }
        int made = 0, refused = 0;
        for (const QString &text : texts) {
            try {
                const CoordSystemPtr cs = factory()->createFromTaggedString(text);
                QPointF out;
                cs->forward(QPointF(40, 50), out);
                cs->inverse(QPointF(40, 50), out);
                QVERIFY2(!cs->description().isEmpty(), qPrintable(text));
                ++made;
            } catch (const std::exception &e) {
                QVERIFY2(*e.what() != '\0', qPrintable(text));
                ++refused;
            }
        }
        QVERIFY(refused > 0);
        QVERIFY(factory()->createFromTaggedString(whole));
    }

    void sources_data()
    {
        QTest::addColumn<QString>("tagged");
        QTest::addColumn<int>("type");
        QTest::addColumn<QString>("source");
        const auto row = [](const char *tagged, int type, const char *source) {
            QTest::newRow(tagged) << QString::fromUtf8(tagged) << type << QString::fromUtf8(source);
        };
        row("EpSg:4326", CoordSystem::Epsg, "4326");
        row("epsg:2154", CoordSystem::Epsg, "2154");
        row("PROJ4:  +proj=merc +datum=WGS84", CoordSystem::Proj4, "  +proj=merc +datum=WGS84");
        row("CoordSys Earth", CoordSystem::Prj, "Earth Projection 1, 0");
        row("PRJ:coordsys EARTH projection 1, 104", CoordSystem::Prj, "Earth Projection 1, 104");
        row("coordsys earth projection 8,104,7,39,0,1,0,0", CoordSystem::Prj,
            "Earth Projection 8, 104, \"m\", 39, 0, 1, 0, 0");
        row("prj:Earth Projection 34, 104, 7, 39, 0, 1, 0, 0", CoordSystem::Prj,
            "Earth Projection 34, 104, \"m\", 39, 0, 1, 0, 0");
        row("wkt:LOCAL_CS[\"x\",\nUNIT[\"Meter\",1]]", CoordSystem::Wkt,
            "LOCAL_CS[\"x\",\nUNIT[\"Meter\",1]]");
    }
    void sources()
    {
        QFETCH(QString, tagged);
        QFETCH(int, type);
        QFETCH(QString, source);
        const CoordSystemPtr cs = factory()->createFromTaggedString(tagged);
        QCOMPARE(int(cs->sourceType()), type);
        QCOMPARE(cs->sourceParameters().string, source);
        QVERIFY(!cs->description().isEmpty());
    }

    void webMercator()
    {
        for (const char *text : {"prj:Earth Projection 10, 157, \"m\", 0", "epsg:3857"}) {
            const QString proj = factory()->createFromTaggedString(QString::fromUtf8(text))->projStr();
            QVERIFY2(proj.contains(QLatin1String("+proj=webmerc")) &&
                         proj.contains(QLatin1String("+datum=WGS84")),
                     qPrintable(proj));
            QVERIFY2(!proj.contains(QLatin1String("+k=")) && !proj.contains(QLatin1String("grids")),
                     qPrintable(proj));
        }
        // The fix-up leaves no ellipsoid where there is no sphere to replace: the text before it is used.
        const CoordSystemPtr lonLat = factory()->createFromPrj(QStringLiteral("Earth Projection 1, 157"));
        QVERIFY(lonLat->isLatLong());
        const CoordSystemPtr wkt = factory()->createFromWkt(factory()->createFromEpsg(3857)->exportToWkt());
        QPointF out;
        QVERIFY2(wkt->projStr().contains(QLatin1String("+proj=webmerc")), qPrintable(wkt->projStr()));
        QVERIFY(wkt->forward(QPointF(180, 0), out));
        VERIFY_NEAR(out, QPointF(20037508.342789, 0), 1e-5); // pi * 6378137 m
    }

    // GDAL misreads one order of the parallels: one PROJ text for both, the stored text keeps the caller's.
    void lambertInFeet()
    {
        const QString cone =
            QStringLiteral("Earth Projection 3, 62, \"survey ft\", -99, 27.5, %1, 2000000, 0");
        const CoordSystemPtr up = factory()->createFromPrj(cone.arg(QStringLiteral("28.5, 30.5")));
        const CoordSystemPtr down = factory()->createFromPrj(cone.arg(QStringLiteral("30.5, 28.5")));
        QCOMPARE(up->projStr(), down->projStr());
        QVERIFY(up->isEqual(down, false));
        QVERIFY(up->prjStr().contains(QLatin1String("28.5, 30.5")) &&
                down->prjStr().contains(QLatin1String("30.5, 28.5")));
    }

    void names()
    {
        // From the catalogue; from the database for a code that the catalogue lacks; from the quoted name of
        // a WKT.
        QCOMPARE(
            factory()->createFromProj(QStringLiteral("+proj=tmerc +lon_0=39.5 +ellps=krass"))->description(),
            QStringLiteral("+proj=tmerc +lon_0=39.5 +ellps=krass"));
        QVERIFY(factory()->mapinfoCoordSystem()->seekByEPSG(30200).isNull());
        QCOMPARE(factory()->createFromEpsg(30200)->description(),
                 QStringLiteral("Trinidad 1903 / Trinidad Grid"));
        const CoordSystemPtr grid = factory()->createFromWkt(QStringLiteral(
            "PROJCS[\"Site grid-2\",GEOGCS[\"g\",DATUM[\"d\",SPHEROID[\"Krassovsky "
            "1940\",6378245,298.3]],PRIMEM[\"Greenwich\",0],"
            "UNIT[\"degree\",0.0174532925199433]],PROJECTION[\"Transverse_Mercator\"],PARAMETER["
            "\"central_meridian\",39.7],"
            "PARAMETER[\"scale_factor\",1],UNIT[\"metre\",1]]"));
        QCOMPARE(grid->description(), QStringLiteral("Site grid-2"));
        // Nobody's name: the text itself.
        const QString prj = QStringLiteral("Earth Projection 8, 104, \"m\", 39.123, 0, 1, 0, 0");
        QCOMPARE(factory()->createFromPrj(prj)->description(), prj);
        // Systems that differ by bounds alone are told apart first and taken together when there is no other.
        const QString bounded = QStringLiteral("Earth Projection 1, 104 Bounds (0, 0) (10, 10)");
        QCOMPARE(factory()->createFromPrj(bounded)->description(),
                 factory()->createFromPrj(QStringLiteral("Earth Projection 1, 104"))->description());
    }

    void nonEarth()
    {
        VERIFY_THROWS(UnknownUnitException, factory()->createNonEarth(77, QRectF()),
                      QStringLiteral("Неизвестная единица измерения: #77"));
        QVERIFY(!factory()->createNonEarth(7, QRectF(5, 5, 0, 10))->isRectSet());
        const QRectF fine(-1e-5, 2.5, 1e9, 3);
        VERIFY_NEAR(factory()->createNonEarth(32, fine)->rectNumericCoordSys(), fine, 1e-6);
        // The clause's corners may come in any order.
        QVERIFY(factory()->createNonEarth(7, QRectF(0, 0, -5, 5))->isRectSet());
    }

    void resetBounds()
    {
        const CoordSystemPtr cs =
            factory()->createFromPrj(QStringLiteral("Earth Projection 1, 104 Bounds (0, 0) (10, 10)"));
        const CoordSystemPtr reset = factory()->resetRectCsToDefault(cs);
        VERIFY_NEAR(cs->rectNumericCoordSys(), QRectF(0, 0, 10, 10), 0.0);
        VERIFY_NEAR(reset->rectNumericCoordSys(), DefaultRectLatLonMapinfo, 0.0);
        QVERIFY(reset->isEqual(cs, true));
    }
};

NIVORA_TEST(TestCreation)
#include "tst_creation.moc"
