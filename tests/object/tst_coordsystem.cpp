#include <support/Support.h>

#include <coordsys/ProjectionParamsManager.h>

#include <QRegularExpression>

#include <ctime>

using namespace nivora::cs;
using support::made;

namespace {
CoordSystemPtr tmercIn(const QString &unit)
{
    return made("proj:+proj=tmerc +lon_0=39 +ellps=krass "_s + unit + " +no_defs"_s);
}
} // namespace

class TestCoordSystem : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void initTestCase() { QVERIFY(support::shippedFactory()); }

    void unit_data()
    {
        const support::Columns<QString, int> row;
        const QString proj = "proj:+proj=tmerc +lon_0=39 +datum=WGS84 %1 +no_defs"_s;
        int inOrder = 0; // the codes of the first ten count up
        for (const char *name : {"mi", "km", "in", "ft", "yd", "mm", "cm", "m", "us-ft", "kmi"})
            row.named(proj.arg("+units="_s + QLatin1String(name)), inOrder++);
        row.named(proj.arg(QString()), 7);
        row.named(proj.arg("+to_meter=5.02921005842012"_s), 32);
        row.named(proj.arg("+to_meter=1000"_s), 1);
        for (int code : {0, 1, 2, 3, 4, 5, 6, 7, 8, 9, 30, 31, 32})
            for (const char *projection :
                 {"8, 104, %1, 39, 0, 1, 0, 0", "4, 104, %1, 0, 90, 90", "29, 104, %1, 9, 50, 90"})
                row.named("prj:Earth Projection "_s + QString::fromUtf8(projection).arg(code), code);
        row("degrees by another name", "proj:+proj=latlon +ellps=WGS84", 13);
        row("degrees", "prj:Earth Projection 1, 104", 13);
        row("degrees from WKT", "epsg:4284", 13);
        row("a name in capitals", "wkt:LOCAL_CS[\"x\",UNIT[\"METRE\",1]]", 7);
    }
    void unit()
    {
        const auto [system, code] = support::row<QString, int>();
        const CoordSystemPtr cs = made(system);
        QCOMPARE(cs->unit().unitCode(), code);
        QCOMPARE(cs->affineUnit().unitCode(), code); // what has been found is told from now on
    }

    void unitUnknown()
    {
        // PROJ's chain and link are six millionths shorter than the survey units of that name.
        for (const char *unit : {"+units=ind-yd", "+to_meter=2.5", "+units=ch", "+units=link"}) {
            const QString term = QString::fromUtf8(unit);
            const CoordSystemPtr cs = tmercIn(term);
            VERIFY_THROWS_LIKE(std::logic_error, cs->unit(), "Не могу определить единицы измерения (");
            QVERIFY(cs->isEqual(tmercIn(term), true)); // equal factors; and the lock was given back
            QVERIFY(!cs->isEqual(tmercIn("+units=m"_s), true));
        }
    }

    void secondObject()
    {
        CoordSystem cs;
        cs.setProj4(proj4FromString("+proj=tmerc +lon_0=9 +ellps=bessel +towgs84=1000,0,0"_s));
        QVERIFY(cs.PJ_Proj4_Internal() != cs.PJ_Proj4());
        cs.setProj4(proj4FromString("+proj=tmerc +lon_0=39 +ellps=krass"_s));
        QVERIFY(cs.PJ_Proj4_Internal() == cs.PJ_Proj4());
        QPointF out;
        QVERIFY(cs.forward(QPointF(39, 0), out) && qAbs(out.x()) < 1e-6);
        QVERIFY(!cs.isLatLong());
        cs.setProj4(proj4FromString("+proj=longlat +datum=WGS84"_s));
        QVERIFY(cs.isLatLong()); // asked before, found anew
        const CoordSystemPtr stated = made("wkt:"_s + made("epsg:32637")->exportToWkt());
        QCOMPARE(stated->epsg(), 32637);
        stated->setSourceParameters({CoordSystem::Wkt, made("epsg:32638")->exportToWkt()});
        QCOMPARE(stated->epsg(), 32638);
        QVERIFY(!made("proj:+proj=merc +R=6370997 +units=m")->isNonEarth()); // the sphere alone is no plan
    }

    void sourceData()
    {
        using Source = CoordSystem::SourceData;
        const Source earth{CoordSystem::Prj, "Earth Projection 1, 104"_s};
        QVERIFY((Source{CoordSystem::Prj, "coordsys  Earth Projection  1,  104"_s} == earth));
        QVERIFY(!(Source{CoordSystem::Wkt, earth.string} == earth));
        QVERIFY(!(Source{CoordSystem::Proj4, "CoordSys x"_s} == Source{CoordSystem::Proj4, "x"_s}));
        QVERIFY(compareprojStr("+a=1 +b=2 "_s, "+b=2 +a=1 "_s));
        QVERIFY(!compareprojStr("+a=1 +b=2"_s, "+b=2 +a=1"_s)); // the blank counts
    }

    void equality_data()
    {
        const support::Columns<QString, QString, bool, bool> row;
        const QString tm = "prj:Earth Projection 8, 1001, \"m\", 39, 0, 1, 7500000, 0"_s;
        const QString bounded = tm + " Bounds (0, 0) (9e6, 9e6)"_s;
        const QString bent = tm + " Affine Units \"m\", 1, 0, 5, 0, 1, 0"_s;
        // clang-format off
        row("unit by name and by number", tm, "prj:CoordSys Earth Projection 8, 1001, 7, 39, 0, 1, 7500000, 0", true, true);
        row("bounds", tm, bounded, false, true);
        row("bounds from y", bounded, tm + " Bounds (0, 1e6) (9e6, 10e6)"_s, false, true);
        row("bounds to y", bounded, tm + " Bounds (0, 0) (9e6, 8e6)"_s, false, true);
        row("equal bounds", bounded, bounded, true, true);
        row("unit", tm, "prj:Earth Projection 8, 1001, \"km\", 39, 0, 1, 7500, 0", false, false);
        row("affine", tm, bent, false, false);
        row("affines", tm + " Affine Units \"m\", 1, 0, 6, 0, 1, 0"_s, bent, false, false);
        row("no datum", "prj:Earth Projection 1, 0", "prj:Earth Projection 1, 33", false, false);
        row("datums of equal shift", "prj:Earth Projection 1, 33", "prj:Earth Projection 1, 74", false, false);
        row("across notations", "prj:Earth Projection 1, 104", "proj:+proj=longlat +datum=WGS84 +no_defs", true, true);
        row("units that the PROJ object does not tell", "prj:Earth Projection 10, 157, 7, 0", "prj:Earth Projection 10, 157, 3, 0", false, false);
        row("bounds of plans", "prj:NonEarth Units \"m\"", "prj:NonEarth Units \"m\" Bounds (0, 0) (1, 1)", false, true);
        row("text order, as PROJ sees it", "proj:+proj=utm +zone=7 +datum=WGS84 +no_defs", "proj:+proj=utm +zone=7 +no_defs +datum=WGS84", false, false);
        // clang-format on
    }
    void equality()
    {
        const auto [a, b, equal, equalWithoutBounds] = support::row<QString, QString, bool, bool>();
        const CoordSystemPtr first = made(a), second = made(b);
        QCOMPARE(first->isEqual(second, false), equal);
        QCOMPARE(second->isEqual(first, false), equal);
        QCOMPARE(CoordSystem::testEqual(first, second, true), equalWithoutBounds);
        QVERIFY(first->isEqual(first, false));
        QVERIFY(!first->isEqual(CoordSystemPtr(), true));
        // "No datum" is not the datum of equal figures, though the engine sees none.
        const CoordSystemPtr none = made("prj:Earth Projection 1, 0");
        QVERIFY(!none->isEqual(made("proj:"_s + none->projStr()), true));
        // The systems that need cropping answer too: their unit has no name in GDAL.
        const auto crop = CoordSysFactory::cropCoordSystems();
        QVERIFY(!crop[0]->isEqual(crop[1], true) && crop[0]->needCropCoords() && !first->needCropCoords());
    }

    void clones()
    {
        for (const char *text :
             {"prj:Earth Projection 8, 1001, \"m\", 39, 0, 1, 7500000, 0 Bounds (0, 0) (9e6, 8e6)",
              "epsg:32637", "proj:+proj=eqc +R=6370997 +units=m +no_defs"}) {
            const CoordSystemPtr cs = made(text);
            const CoordSystemPtr copy = cs->clone();
            QVERIFY2(copy->isEqual(cs, false), text);
            QVERIFY(copy->OGRSpatialReference() != cs->OGRSpatialReference() &&
                    copy->PJ_Proj4() != cs->PJ_Proj4());
            QCOMPARE(copy->description(), cs->description());
            QVERIFY(copy->sourceParameters() == cs->sourceParameters());
            QCOMPARE(copy->rectNumericCoordSys(), cs->rectNumericCoordSys());
            QCOMPARE(copy->isRectSet(), cs->isRectSet());
        }
        const CoordSystemPtr bent = made("prj:NonEarth Units \"m\" Affine Units \"m\", 1, 2, 3, 4, 5, 6");
        QVERIFY(bent->affineTransform() && !bent->clone()->affineTransform());
    }

    void bounds()
    {
        const CoordSystemPtr cs =
            made("prj:Earth Projection 8, 104, \"m\", 39, 0, 1, 0, 0 Bounds (-10, -20) (30, 50.5)");
        const QRectF rect(-10, -20, 40, 70.5);
        QVERIFY(cs->isRectSet());
        QVERIFY(cs->rectNumericCoordSys() == rect && cs->rectInternal() == rect);
        QVERIFY(cs->prjStr().endsWith(" Bounds (-10, -20) (30, 50.5)"_s));
        const CoordSystemPtr plain = made("epsg:32637");
        QVERIFY(!plain->isRectSet());
        for (const QRectF &empty :
             {QRectF(), QRectF(0, 0, 1, 0), QRectF(0, 0, -1, 5), QRectF(0, 0, qQNaN(), 1)})
            VERIFY_THROWS(std::logic_error, plain->setRectCoordSystem(empty),
                          "Не могу задать пустые границы");
        plain->setRectCoordSystem(rect);
        QCOMPARE(plain->prjStr(), "Earth Projection 8, 104, \"m\", 39, 0, 0.9996, 500000, 0 "
                                  "Bounds (-10, -20) (30, 50.5)"_s);
        QVERIFY(plain->rectInternal() != rect);
        // Found bounds go through the affine transformation: x' = x + 2 y + 3, y' = 4 x + 5 y + 6 of a square
        // of 2e7.
        const CoordSystemPtr bent =
            made("prj:NonEarth Units \"m\" Affine Units \"survey ft\", 1, 2, 3, 4, 5, 6");
        QCOMPARE(bent->affineUnit().unitCode(), 8);
        VERIFY_NEAR(bent->rectNumericCoordSys(), QRectF(3 - 3e7, 6 - 9e7, 6e7, 18e7), 1e-6);
        bent->setAffineTransform(std::make_unique<QTransform>(2, 0, 0, 2, 0, 0)); // asked before, found anew
        VERIFY_NEAR(bent->rectNumericCoordSys(), QRectF(-2e7, -2e7, 4e7, 4e7), 1e-6);
        VERIFY_NEAR(bent->rectWithoutSearch(), QRectF(-2e7, -2e7, 4e7, 4e7), 1e-6);
    }

    void affineClauseWithoutUnit()
    {
        const auto bent = [](const char *text) {
            const CoordSystemPtr cs = made(text);
            cs->setAffineTransform(std::make_unique<QTransform>(1, 4, 2, 5, 3, 6));
            return cs->prjStr();
        };
        QVERIFY(bent("proj:+proj=tmerc +lon_0=39 +datum=WGS84 +units=ft")
                    .contains("Affine Units \"ft\", 1, 2, 3, 4, 5, 6"_s));
        QVERIFY(bent("proj:+proj=tmerc +lon_0=39 +datum=WGS84 +units=ind-yd")
                    .contains("Affine Units \"m\", 1, 2,"_s));
        // The array form is the matrix itself; a missing unit is the system's.
        const CoordSystemPtr cs = made("epsg:4326");
        setAffineParamsArray(*cs, nullptr, {1, 4, 2, 5, 3, 6});
        VERIFY_NEAR(cs->affineTransform()->map(QPointF(10, 20)), QPointF(53, 146), 1e-12);
        QCOMPARE(cs->affineUnit().unitCode(), 13);
        CoordSysFactory::setAffineParams(*cs,
                                         {"\"no such unit\""_s, "1"_s, "2"_s, "3"_s, "4"_s, "5"_s, "6"_s});
        VERIFY_NEAR(cs->affineTransform()->map(QPointF(10, 20)), QPointF(53, 146), 1e-12);
    }

    void taggedStrings()
    {
        const std::pair<const char *, const char *> systems[] = {
            {"epsg:4326", "EPSG:4326"},
            {"proj:+proj=utm +zone=37 +datum=WGS84", "proj4:+proj=utm +zone=37 +datum=WGS84"},
            {"Earth Projection 1, 104", "prj:Earth Projection 1, 104"},
            {"proj:+proj=eqc +R=6370997 +units=ft +no_defs",
             "prj:NonEarth Units \"ft\" Bounds (-10000000, -10000000) (10000000, 10000000)"}};
        for (const auto &[system, tagged] : systems) {
            QCOMPARE(made(system)->taggedString(), QString::fromUtf8(tagged));
            QVERIFY2(made(tagged)->isEqual(made(made(tagged)->taggedString()), false), tagged);
        }
        const CoordSystemPtr coded = made("epsg:4326");
        coded->setSourceParameters({CoordSystem::Epsg, QString()});
        QCOMPARE(coded->taggedString(), "EPSG:4326"_s); // looked up
        QCOMPARE(coded->epsg(), 0);                     // the empty text as a number
    }

    void nonEarthAsWkt()
    {
        const QRegularExpression sphere(
            "^PROJCS\\[\"World_Equidistant_Cylindrical\",\nGEOGCS\\[\"Sphere\",\nDATUM\\["
            "\"Sphere\",\nSPHEROID\\[\"Sphere\",6370997,0\\]\\],"
            "\nUNIT\\[\"Degree\",0.017453292519943295\\]\\],\nPROJECTION\\[\"Equirectangular\"\\],"
            "\nUNIT\\[\"[^\"]+\",0\\.3048\\d*\\]\\]$"_s);
        for (const char *text :
             {"proj:+proj=eqc +R=6370997 +units=ft +no_defs", "prj:NonEarth Units \"ft\""}) {
            const QString wkt = made(text)->exportToWkt2();
            QVERIFY2(sphere.match(wkt).hasMatch(), qPrintable(wkt));
            QCOMPARE(support::shippedFactory()->createFromWkt(wkt)->unit().unitCode(), 3);
        }
        const CoordSystemPtr bare =
            made("wkt:LOCAL_CS[\"x\",UNIT[\"metre\",1,AUTHORITY[\"EPSG\",\"9001\"]]]");
        QVERIFY(bare->isNonEarth());
        QVERIFY(made("epsg:32637")->exportToWkt2().contains("Transverse_Mercator"_s)); // as it is
    }

    void epsg()
    {
        // A local grid only resembles registered ones.
        const CoordSystemPtr local =
            made("proj:+proj=tmerc +lon_0=39.5 +k=1 +x_0=1250000 +ellps=krass +units=m");
        const std::clock_t start = std::clock(); // processor time: other work beside this does not count
        QCOMPARE(local->matchedEpsg(), int(CoordSystem::EPSG_UNDEFINDED));
        const std::clock_t searched = std::clock();
        for (int i = 0; i < 10; ++i)
            QCOMPARE(local->epsg(), int(CoordSystem::EPSG_UNDEFINDED));
        const std::clock_t search = searched - start;
        QVERIFY2(search < CLOCKS_PER_SEC / 1000 || std::clock() - searched < search,
                 "a search without result must be remembered");
        // A cancelled search is not a result.
        const CoordSystemPtr cs = made("proj:+proj=merc +lon_0=0 +k=1 +datum=WGS84 +units=m");
        const auto cancelled = std::make_shared<nivora::concurrent::ProgressHandler>();
        cancelled->cancel();
        QCOMPARE(cs->epsg(cancelled), int(CoordSystem::EPSG_UNDEFINDED));
        QCOMPARE(cs->epsg(), 3395);
        cs->setEpsg(12345);
        QCOMPARE(cs->epsg(), 12345);
        QCOMPARE(cs->matchedEpsg(), 3395);
    }

    void parameters()
    {
        const CoordSystemPtr cs = made("prj:Earth Projection 8, 1001, \"m\", 39, 0, 1, 7500000, 0");
        QCOMPARE(cs->getSemiMajor(), 6378245.0); // Krassovsky 1940
        QCOMPARE(cs->getInvFlattening(), 298.3);
        QVERIFY(qAbs(cs->getSemiMinor() - 6356863.0188) < 1e-4);
        QCOMPARE(cs->getTOWGS84Params(), QList<double>({24, -123, -94, 0.02, -0.25, -0.13, 1.1}));
        QVERIFY(made("prj:Earth Projection 1, 0")->isSpecialDatum() && !cs->isSpecialDatum());
        QCOMPARE(made("epsg:29873")->longitudeOfCenter(), 115.0);
        VERIFY_THROWS(std::logic_error,
                      getParamOSR([](void *, int *error) { return *error = 6, 1.0; }, nullptr),
                      "Не могу получить параметр"_s);
    }
};

NIVORA_TEST(TestCoordSystem)
#include "tst_coordsystem.moc"
