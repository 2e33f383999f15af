#include "BothWays.h"

#include <support/Support.h>

#include <coordsys/CoordTransform.h>
#include <coordsys/ProjEngine.h>
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
};

NIVORA_TEST(TestDefinitions)
#include "tst_definitions.moc"
