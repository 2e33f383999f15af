#include "BothWays.h"

#include <support/Support.h>

#include <coordsys/CoordTransform.h>
#include <coordsys/ProjEngine.h>
#include <coordsys/ProjectionParamsManager.h>
#include <coordsys/SystemInfo.h>

#include <proj.h>

using namespace nivora::cs;

namespace {

using support::made;

/// The place that PROJ alone gives a point of a PROJ text, degrees on WGS 84; infinite where it refuses.
QPointF byProj(const QString &text, const QPointF &point)
{
    PJ_CONTEXT *const context = globalProjContext();
    const QByteArray source = (text + " +type=crs"_s).toUtf8();
    const PjHandle way = ownPj(proj_create_crs_to_crs(context, source.constData(), "EPSG:4326", nullptr));
    const PjHandle asMaps = way ? ownPj(proj_normalize_for_visualization(context, way.get())) : nullptr;
    if (!asMaps)
        return {HUGE_VAL, HUGE_VAL};
    const PJ_COORD place = proj_trans(asMaps.get(), PJ_FWD, proj_coord(point.x(), point.y(), 0, HUGE_VAL));
    return {place.xy.x, place.xy.y};
}

QPointF placeOf(const CoordSystemPtr &cs, const QPointF &point)
{
    QPointF place;
    const CoordTransform transform(cs, support::shippedFactory()->latLongWgs84CoordSystem());
    return transform.forward(point, place) ? place : QPointF(HUGE_VAL, HUGE_VAL);
}

} // namespace

/// What a text means is what PROJ reads in it: its datum, unit, body and kind, in every notation.
class TestDefinitions : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void initTestCase() { QVERIFY(support::shippedFactory()); }

    /// A datum that the text names keeps its shift, as longitude/latitude and in a plane. Other notations
    /// name it by its code, and one code may have several shifts: Carthage's lie 1.2 m apart.
    void namedDatums_data()
    {
        const support::Columns<QString, QPointF> row;
        row.named("+datum=WGS84", {30, 50});
        row.named("+datum=GGRS87", {23, 38});
        row.named("+datum=NAD83", {-100, 40});
        row.named("+datum=NAD27", {-100, 40});
        row.named("+datum=potsdam", {10, 51});
        row.named("+datum=carthage", {9.5, 35});
        row.named("+datum=hermannskogel", {15, 47});
        row.named("+datum=ire65", {-8, 53});
        row.named("+datum=nzgd49", {175, -40});
        row.named("+datum=OSGB36", {-2, 52});
        row.named("+datum=potsdam +towgs84=0,0,0", {10, 51});
        row.named("+ellps=krass +towgs84=24,-123,-94,0.02,-0.25,-0.13,1.1", {39, 55});
        row.named("+ellps=clrk66 +nadgrids=@conus,null", {-100, 40});
        row.named("+ellps=intl +pm=paris +towgs84=-84,-97,-117", {39, 55});
    }
    void namedDatums()
    {
        const auto [datum, lonLat] = support::row<QString, QPointF>();
        const double zone = std::floor((lonLat.x() + 180) / 6) * 6 - 177;
        const QString plane = "+proj=tmerc +lon_0=%1 +k=0.9996 +x_0=500000 "_s.arg(zone) + datum;
        QPointF planar;
        QVERIFY(made("proj:"_s + plane)->forward(lonLat, planar));
        for (const auto &[text, point] :
             {std::make_pair("+proj=longlat "_s + datum, lonLat), std::make_pair(plane, planar)}) {
            const QPointF expected = byProj(text, point);
            const CoordSystemPtr cs = made("proj:"_s + text);
            VERIFY_NEAR(placeOf(cs, point), expected, 1e-9);
            for (const SystemFormat format :
                 {SystemFormat::Wkt1, SystemFormat::Wkt2, SystemFormat::ProjJson}) {
                const QString written = exportSystem(*cs, format);
                VERIFY_NEAR(placeOf(support::shippedFactory()->createFromUserInput(written), point), expected,
                            2e-5);
            }
        }
    }

    /// Another body never becomes the earth; on one body there is a way.
    void otherBodies_data()
    {
        const support::Columns<QString> row;
        row.named("+R=1737400");
        row.named("+a=3396190 +b=3376200");
        row.named("+a=6050000 +rf=300");
    }
    void otherBodies()
    {
        const auto [figure] = support::row<QString>();
        const CoordSystemPtr lonLat = made("proj:+proj=longlat "_s + figure);
        const CoordSystemPtr plane = made("proj:+proj=merc "_s + figure);
        const CoordSystemPtr wgs84 = support::shippedFactory()->latLongWgs84CoordSystem();
        for (const CoordSystemPtr &cs : {lonLat, plane}) {
            VERIFY_THROWS_LIKE(std::logic_error, CoordTransform(cs, wgs84), "");
            QVERIFY(systemInfo(*cs).assumptions.isEmpty());
        }
        QPointF planar;
        QPointF back;
        QVERIFY(CoordTransform(lonLat, plane).forward({10, 20}, planar));
        QVERIFY(CoordTransform(plane, lonLat).forward(planar, back));
        VERIFY_NEAR(back, QPointF(10, 20), 1e-9);
    }

    /// A plan's unit is what its text says, in every notation; one without a number has no unit().
    void plans_data()
    {
        const support::Columns<QString, double, bool> row;
        row("LOCAL_CS, a factor of its own", R"(LOCAL_CS["s",UNIT["two and a half",2.5]])", 2.5, false);
        row("Indian yard", R"(LOCAL_CS["s",UNIT["Indian yard",0.91439853]])", 0.91439853, false);
        row("survey foot", R"(LOCAL_CS["s",UNIT["Foot_US",0.304800609601219]])", 0.304800609601219, true);
        row("ENGCRS",
            R"(ENGCRS["s",EDATUM["d"],CS[Cartesian,2],AXIS["x",east],AXIS["y",north],LENGTHUNIT["u",7]])", 7,
            false);
        row("ENGINEERINGCRS",
            R"(ENGINEERINGCRS["s",ENGINEERINGDATUM["d"],CS[Cartesian,2],AXIS["x",east],AXIS["y",north],LENGTHUNIT["km",1000]])",
            1000, true);
    }
    void plans()
    {
        const auto [text, metres, isNumbered] = support::row<QString, double, bool>();
        const auto factory = support::shippedFactory();
        const CoordSystemPtr plan = factory->createFromUserInput(text);
        const CoordSystemPtr metric = factory->createFromWkt(R"(LOCAL_CS["m",UNIT["metre",1]])"_s);
        QStringList notations{text, plan->exportToWkt(), plan->taggedString()};
        for (const SystemFormat format : {SystemFormat::Wkt1, SystemFormat::Wkt2, SystemFormat::ProjJson})
            notations << exportSystem(*plan, format);
        for (const QString &notation : notations) {
            const CoordSystemPtr read = factory->createFromUserInput(notation);
            QPointF point;
            QVERIFY(CoordTransform(read, metric).forward({100, -30}, point));
            VERIFY_NEAR(point, QPointF(100 * metres, -30 * metres), 1e-6 * metres);
            VERIFY_NEAR(systemInfo(*read).metresPerUnit, metres, 1e-9 * metres);
        }
        QVERIFY(plan->exportToWkt().contains("\"s\""_s));
        if (isNumbered)
            VERIFY_NEAR(plan->unit().conversion(), metres, 1e-9 * metres);
        else
            VERIFY_THROWS_LIKE(std::logic_error, plan->unit(), "Не могу определить единицы измерения");
    }

    /// An affine transformation is written as a derived system, and read from one, PROJ's own included.
    void moved_data()
    {
        const support::Columns<QString, QPointF> row;
        row.named("prj:Earth Projection 8, 104, \"m\", 15, 0, 0.9996, 500000, 0", {4e5, 5e6});
        row.named("prj:Earth Projection 8, 104, \"survey ft\", 15, 0, 0.9996, 1640416.667, 0",
                  {1.5e6, 1.6e7});
        row.named("EPSG:28404", {4.4e6, 6e6}); // north first
        row.named("EPSG:2263", {9e5, 2e5});
        row.named("proj:+proj=tmerc +lon_0=39 +ellps=krass +towgs84=24,-123,-94,0.02,-0.25,-0.13,1.1",
                  {2e5, 6e6});
        row.named("prj:NonEarth Units \"m\"", {10, 20});
        row.named("prj:NonEarth Units \"ft\"", {10, 20});
    }
    void moved()
    {
        const auto [tagged, point] = support::row<QString, QPointF>();
        const auto factory = support::shippedFactory();
        const CoordSystemPtr plane = made(tagged);
        const CoordSystemPtr cs = made(tagged);
        const LinearUnit units[] = {plane->unit(),
                                    *factory->projectionParamsManager()->unitByID(LinearUnit::Kilometer)};
        for (const LinearUnit &unit : units) {
            cs->setAffineTransform(std::make_unique<QTransform>(0.5, 0.1, -0.2, 0.7, 100, 2000), unit);
            QPointF moved;
            QVERIFY(CoordTransform(plane, cs).forward(point, moved));
            for (const SystemFormat format : {SystemFormat::Wkt2, SystemFormat::ProjJson}) {
                const CoordSystemPtr read = factory->createFromUserInput(exportSystem(*cs, format));
                QPointF again;
                QVERIFY(CoordTransform(plane, read).forward(point, again));
                VERIFY_NEAR(again, moved, 1e-6);
                QVERIFY(read->affineTransform());
                QCOMPARE(read->affineUnit(), unit);
            }
        }
    }

    /// EPSG's guidance note 7-2, similarity transformation: x' = x0 + x M cos t + y M sin t.
    void similarity()
    {
        const CoordSystemPtr base = made("EPSG:32633");
        const QString wkt =
            "DERIVEDPROJCRS[\"turned\",BASEPROJCRS[\"u\",BASEGEOGCRS[\"WGS 84\",DATUM[\"World Geodetic "
            "System 1984\","
            "ELLIPSOID[\"WGS 84\",6378137,298.257223563]]],CONVERSION[\"z\",METHOD[\"Transverse "
            "Mercator\",ID[\"EPSG\","
            "9807]],PARAMETER[\"Longitude of natural "
            "origin\",15,ANGLEUNIT[\"degree\",0.0174532925199433],ID[\"EPSG\","
            "8802]],PARAMETER[\"Scale factor at natural "
            "origin\",0.9996,SCALEUNIT[\"unity\",1],ID[\"EPSG\",8805]],"
            "PARAMETER[\"False "
            "easting\",500000,LENGTHUNIT[\"metre\",1],ID[\"EPSG\",8806]]]],DERIVINGCONVERSION[\"s\","
            "METHOD[\"Similarity transformation\",ID[\"EPSG\",9621]],PARAMETER[\"Ordinate 1 of evaluation "
            "point in "
            "target CRS\",1000,LENGTHUNIT[\"metre\",1],ID[\"EPSG\",8621]],PARAMETER[\"Ordinate 2 of "
            "evaluation point in "
            "target CRS\",2000,LENGTHUNIT[\"metre\",1],ID[\"EPSG\",8622]],PARAMETER[\"Scale factor for "
            "source CRS axes\","
            "2,SCALEUNIT[\"unity\",1],ID[\"EPSG\",1061]],PARAMETER[\"Rotation angle of source CRS axes\",30,"
            "ANGLEUNIT[\"degree\",0.0174532925199433],ID[\"EPSG\",8614]]],CS[Cartesian,2],AXIS[\"(E)\",east],"
            "AXIS[\"(N)\",north],LENGTHUNIT[\"metre\",1]]"_s;
        const CoordSystemPtr turned = support::shippedFactory()->createFromUserInput(wkt);
        QPointF point;
        QVERIFY(CoordTransform(base, turned).forward({400000, 5000000}, point));
        const double root3 = 1.7320508075688772;
        VERIFY_NEAR(point, QPointF(1000 + 400000 * root3 + 5000000, 2000 - 400000 + 5000000 * root3), 1e-3);
        QCOMPARE(turned->description(), "turned"_s);
    }

    /// Latitudes at the centre of the body, and a grid that is not there: described, and converted as PROJ
    /// does.
    void unusual_data()
    {
        const support::Columns<QString, bool> row;
        row.named("IAU_2015:49902", true);
        row.named("+proj=longlat +geoc +datum=WGS84", true);
        row.named("+proj=longlat +ellps=intl +nadgrids=absent.gsb", true);
        row.named("+proj=utm +zone=33 +ellps=intl +nadgrids=absent.gsb", false);
    }
    void unusual()
    {
        const auto [text, isLatLong] = support::row<QString, bool>();
        const CoordSystemPtr cs = support::shippedFactory()->createFromUserInput(text);
        QCOMPARE(cs->isLatLong(), isLatLong);
        QCOMPARE(systemInfo(*cs).kind,
                 isLatLong ? SystemInfo::Kind::Geographic : SystemInfo::Kind::Projected);
        QVERIFY(systemInfo(*cs).semiMajorM > 0);
        QPointF planar;
        QVERIFY(cs->forward({15, 50}, planar));
    }

    /// As PROJ: 11.5' of latitude on the earth, 20' on Mars.
    void planetocentric()
    {
        const CoordSystemPtr geocentric = made("proj:+proj=longlat +geoc +datum=WGS84");
        VERIFY_NEAR(placeOf(geocentric, {10, 45}), byProj("+proj=longlat +geoc +datum=WGS84"_s, {10, 45}),
                    1e-9);
        const auto factory = support::shippedFactory();
        QPointF planar;
        const CoordTransform toPlane(factory->createFromUserInput("IAU_2015:49902"_s),
                                     factory->createFromUserInput("IAU_2015:49912"_s));
        QVERIFY(toPlane.forward({0.5, 48}, planar));
        VERIFY_NEAR(planar, QPointF(29637.3488, 2865111.9564), 1e-4); // cs2cs
        // Longitudes to the west stand first, too.
        QVERIFY(
            CoordTransform(factory->createFromUserInput("IAU_2015:49901"_s), toPlane.destinationCoordSystem())
                .forward({0.5, 48}, planar));
        VERIFY_NEAR(planar, QPointF(-29637.3488, 2845185.4811), 1e-4); // cs2cs
        const CoordSystemPtr cs = factory->createFromUserInput("IAU_2015:49912"_s);
        VERIFY_THROWS_LIKE(std::runtime_error, exportSystem(*cs, SystemFormat::Wkt1), "");
    }

    void titles()
    {
        const CoordSystemPtr cs =
            made("proj:+proj=tmerc +lon_0=33.3 +datum=WGS84 +title=My zone, old +units=km");
        QCOMPARE(cs->description(), "My zone, old"_s);
        QCOMPARE(cs->unit().unitCode(), 1);
        VERIFY_NEAR(placeOf(cs, {0, 5000}),
                    byProj("+proj=tmerc +lon_0=33.3 +datum=WGS84 +units=km"_s, {0, 5000}), 1e-9);
        QVERIFY(exportSystem(*cs, SystemFormat::Wkt2).startsWith("PROJCRS[\"My zone, old\""_s));
    }

    void unitsOfPlanes()
    {
        const std::pair<const char *, double> units[] = {{"ch", 20.1168},
                                                         {"link", 0.201168},
                                                         {"fath", 1.8288},
                                                         {"ind-ft", 0.30479841},
                                                         {"us-mi", 1609.347218694438}};
        for (const auto &[unit, metres] : units) {
            const SystemInfo info =
                systemInfo(*made("proj:+proj=utm +zone=33 +datum=WGS84 +units="_s + QString::fromUtf8(unit)));
            VERIFY_NEAR(info.metresPerUnit, metres, 1e-7);
            QVERIFY(!info.unitName.isEmpty());
            QVERIFY(info.assumptions.isEmpty());
        }
    }
};

NIVORA_TEST(TestDefinitions)
#include "tst_definitions.moc"
