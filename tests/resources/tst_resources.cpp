// The shipped catalogues against the engines that they describe.

#include <support/Support.h>
#include <support/TestRunner.h>

#include <coordsys/CoordSysRect.h>
#include <coordsys/CoordSystem.h>
#include <coordsys/CoordSystemParams.h>
#include <coordsys/MapinfoCoordSystem.h>
#include <coordsys/ProjectionParamsManager.h>

#include <cpl_conv.h>
#include <cpl_error.h>
#include <ogr_srs_api.h>
#include <proj.h>

#include <QDomDocument>
#include <QFile>

#include <array>
#include <cmath>

using namespace nivora::cs;

namespace {

using Srs = std::unique_ptr<void, void (*)(OGRSpatialReferenceH)>;
using Pj = std::unique_ptr<PJ, PJ *(*)(PJ *)>;
using Figures = std::array<double, 10>; // semi-major axis, inverse flattening, TOWGS84, meridian

constexpr double sameAxis = 1e-9;   // relative: the files carry the driver's own digits
constexpr double sameFigure = 1e-9; // metres, arc-seconds, ppm, degrees
constexpr double samePlace = 0.001; // metres: what the catalogue promises for entries with a code
constexpr double newMillimetres =
    0.02; // metres: the driver's IAG 75 lies 16 mm from the EPSG figures of Xian 1980

Srs driverSystem(const QString &coordSys)
{
    Srs srs(OSRNewSpatialReference(nullptr), OSRDestroySpatialReference);
    const bool read = OSRImportFromMICoordSys(srs.get(), coordSys.toUtf8().constData()) == OGRERR_NONE;
    return read ? std::move(srs) : Srs(nullptr, OSRDestroySpatialReference);
}

/// Rotations come back in MapInfo's sign.
Figures driverDatum(int number)
{
    const Srs srs = driverSystem(QStringLiteral("Earth Projection 1, %1").arg(number));
    Figures f{};
    if (!srs)
        return f;
    f[0] = OSRGetSemiMajor(srs.get(), nullptr);
    f[1] = OSRGetInvFlattening(srs.get(), nullptr);
    OSRGetTOWGS84(srs.get(), &f[2], 7);
    for (std::size_t i = 5; i < 8; ++i)
        f[i] = -f[i];
    f[9] = OSRGetPrimeMeridian(srs.get(), nullptr);
    return f;
}

/// The driver knows no such number: it falls back to WGS 84 without a word.
bool unknownToDriver(int number)
{
    const Srs srs = driverSystem(QStringLiteral("Earth Projection 1, %1").arg(number));
    return !srs || (number != 104 && QByteArray(OSRGetAttrValue(srs.get(), "DATUM", 0)) == "WGS_1984" &&
                    QByteArray(OSRGetAttrValue(srs.get(), "SPHEROID", 0)) == "WGS 84");
}

QList<CoordSystemParamsList> categories(const QString &language)
{
    MapinfoCoordSystem catalogue([](const QString &) { return CoordSystemPtr(); });
    catalogue.loadFromPRJ(support::resources(), language);
    return catalogue.projectionList();
}

QByteArray firstLine(const QString &name)
{
    QFile file(support::resources().filePath(name));
    return file.open(QIODevice::ReadOnly) ? file.readLine().trimmed() : QByteArray();
}

/// PROJ's own system of a code and the way from its geographic base to its plane.
struct Definition
{
    explicit Definition(int epsg)
        : crs(proj_create_from_database(ctx, "EPSG", QByteArray::number(epsg).constData(), PJ_CATEGORY_CRS, 0,
                                        nullptr),
              proj_destroy)
        , toPlane(nullptr, proj_destroy)
    {
        const Pj base(proj_crs_get_geodetic_crs(ctx, crs.get()), proj_destroy);
        const Pj meridian(proj_get_prime_meridian(ctx, base.get()), proj_destroy);
        double perUnit = 1.0;
        proj_prime_meridian_get_parameters(ctx, meridian.get(), &primeMeridian, &perUnit, nullptr);
        primeMeridian *= perUnit * 57.29577951308232;
        const Pj baseAxes(proj_crs_get_coordinate_system(ctx, base.get()), proj_destroy);
        proj_cs_get_axis_info(ctx, baseAxes.get(), 0, nullptr, nullptr, nullptr, &perUnit, nullptr, nullptr,
                              nullptr);
        degreesPerUnit = perUnit * 57.29577951308232;
        const Pj axes(proj_crs_get_coordinate_system(ctx, crs.get()), proj_destroy);
        proj_cs_get_axis_info(ctx, axes.get(), 0, nullptr, nullptr, nullptr, &metresPerUnit, nullptr, nullptr,
                              nullptr);
        const Pj raw(proj_create_crs_to_crs_from_pj(ctx, base.get(), crs.get(), nullptr, nullptr),
                     proj_destroy);
        toPlane.reset(proj_normalize_for_visualization(ctx, raw.get()));
        proj_get_area_of_use(ctx, crs.get(), &west, &south, &east, &north, nullptr);
        if (east < west)
            east += 360.0;
    }
    /// Every fifth of the area, corners left out: there a square over a country may leave the projection.
    QVector<QPointF> grid() const
    {
        QVector<QPointF> points;
        for (double u : {0.1, 0.5, 0.9})
            for (double v : {0.1, 0.5, 0.9})
                points << QPointF(std::remainder(west + (east - west) * u, 360.0),
                                  qBound(-89.9, south + (north - south) * v, 89.9));
        return points;
    }
    /// \p lonLat from Greenwich; the plane in metres.
    QPointF plane(const QPointF &lonLat) const
    {
        const double lon = std::remainder(lonLat.x() - primeMeridian, 360.0);
        const PJ_COORD c =
            proj_trans(toPlane.get(), PJ_FWD,
                       proj_coord(lon / degreesPerUnit, lonLat.y() / degreesPerUnit, 0.0, HUGE_VAL));
        return QPointF(c.xy.x, c.xy.y) * metresPerUnit;
    }
    bool isProjected() const { return proj_get_type(crs.get()) == PJ_TYPE_PROJECTED_CRS; }

    PJ_CONTEXT *ctx = nullptr; // the default context: this class's objects stay on one thread
    Pj crs;
    Pj toPlane;
    double primeMeridian = 0.0;
    double degreesPerUnit = 1.0;
    double metresPerUnit = 1.0;
    double west = 0.0, south = 0.0, east = 0.0, north = 0.0;
};

/// The first lines of a list of faults, empty when there are none.
QString summary(const QStringList &faults)
{
    return faults.isEmpty()
               ? QString()
               : QStringLiteral("%1 faults:\n%2")
                     .arg(QString::number(faults.size()), faults.mid(0, 20).join(QLatin1Char('\n')));
}

} // namespace

class TestResources : public QObject
{
    Q_OBJECT
    template <typename F> void eachEntry(F &&take)
    {
        const auto catalogue = support::shippedFactory()->mapinfoCoordSystem();
        const QList<CoordSystemParamsList> list = catalogue->projectionList();
        for (int c = 0; c < list.size(); ++c)
            for (int i = 0; i < list[c].entries.size(); ++i)
                take(list[c].entries[i], *catalogue, c, i);
    }

private Q_SLOTS:
    void initTestCase();
    void numbersOfTheDriver();
    void figuresOfTheDriver();
    void datumThatTheDriverLoses();
    void units();
    void headings();
    void languagesAgree();
    void everyEntryBuilds();
    void planesAgreeWithProj();
    void boundsHoldTheArea();
    void boundsOfKnownGrids();
    void oracleNumbers();
};

void TestResources::initTestCase()
{
    CPLSetConfigOption("MITAB_SET_TOWGS84_ON_KNOWN_DATUM", "YES");
    QVERIFY(support::shippedFactory());
}

void TestResources::numbersOfTheDriver()
{
    // 161 and 1017 come with an ellipsoid that the driver does not know.
    const QSet<int> leftOut{161, 1017};
    ProjectionParamsManager params;
    QVERIFY(params.initFromXML(support::resources(), QStringLiteral("en")));
    QStringList faults;
    CPLPushErrorHandler(CPLQuietErrorHandler);
    for (int number = 0; number < 1200; ++number)
        if (number != 999 && !leftOut.contains(number) &&
            unknownToDriver(number) == !!params.datumByID(number))
            faults << QString::number(number);
    CPLPopErrorHandler();
    QCOMPARE(summary(faults), QString());
    QCOMPARE(params.projections().size(), std::size_t(36)); // 0 to 35
    QCOMPARE(params.datums().front()->id, 104);             // the first of equal datums is found
    QCOMPARE(params.findDatumByParams(0, {0, 0, 0}, {0, 0, 0}, 0, 0), 74);
}

void TestResources::figuresOfTheDriver()
{
    QStringList faults;
    for (const auto &language : {QStringLiteral("ru"), QStringLiteral("en")}) {
        ProjectionParamsManager params;
        QVERIFY(params.initFromXML(support::resources(), language));
        for (const auto &datum : params.datums()) {
            const MIEllipsoidParam *ellipsoid = params.ellipsoidByID(datum->ellipsoid);
            QVERIFY2(ellipsoid, qPrintable(datum->name));
            const Figures driver = driverDatum(datum->id);
            const Figures file{ellipsoid->semi_major,
                               ellipsoid->inv_flatenning,
                               datum->dx,
                               datum->dy,
                               datum->dz,
                               datum->rx,
                               datum->ry,
                               datum->rz,
                               datum->sa,
                               datum->pm};
            for (std::size_t i = 0; i < file.size(); ++i) {
                const double tolerance = i < 2 ? sameAxis * file[i] : sameFigure;
                const bool lost = datum->id == 1031 && i >= 2;
                if (!lost && !(std::fabs(file[i] - driver[i]) <= tolerance))
                    faults << QStringLiteral("datum %1, figure %2: %3, driver %4")
                                  .arg(datum->id)
                                  .arg(i)
                                  .arg(file[i], 0, 'g', 15)
                                  .arg(driver[i], 0, 'g', 15);
            }
            if (datum->name.isEmpty())
                faults << QStringLiteral("datum %1 has no name").arg(datum->id);
        }
    }
    QCOMPARE(summary(faults), QString());
}

void TestResources::datumThatTheDriverLoses()
{
    // The driver reads 1031 as EPSG:4683, which carries no shift; the figures are those of EPSG 15708.
    const Pj operation(
        proj_create_from_database(nullptr, "EPSG", "15708", PJ_CATEGORY_COORDINATE_OPERATION, 0, nullptr),
        proj_destroy);
    std::array<double, 7> expected{};
    QVERIFY(proj_coordoperation_get_towgs84_values(nullptr, operation.get(), expected.data(), 7, 0));
    const MIDatumParam *datum = support::shippedFactory()->projectionParamsManager()->datumByID(1031);
    QVERIFY(datum);
    const std::array<double, 7> file{datum->dx,  datum->dy,  datum->dz, -datum->rx,
                                     -datum->ry, -datum->rz, datum->sa};
    for (std::size_t i = 0; i < 7; ++i)
        QVERIFY2(std::fabs(file[i] - expected[i]) < sameFigure, qPrintable(QString::number(i)));
}

void TestResources::units()
{
    const auto params = support::shippedFactory()->projectionParamsManager();
    QStringList faults;
    for (const auto &unit : params->linearUnits()) {
        if (unit->id == LinearUnit::Degree) {
            QVERIFY(unit->isDegree());
            continue;
        }
        const Srs srs = driverSystem(QStringLiteral("NonEarth Units \"%1\"").arg(unit->name()));
        // The driver takes an unknown name for metres.
        const double factor = srs ? OSRGetLinearUnits(srs.get(), nullptr) : 0.0;
        if (!(std::fabs(factor - unit->conversion()) <= 1e-12 * factor) || unit->localizedName().isEmpty())
            faults << unit->name();
        if (params->areaUnitByID(unit->id, std::nothrow))
            faults << QStringLiteral("code %1 is a length and an area").arg(unit->id);
    }
    QCOMPARE(summary(faults), QString());
}

void TestResources::headings()
{
    // The reader tells the encoding by the first line alone.
    QCOMPARE(firstLine(QStringLiteral("projections_ru.prj")), QByteArray("\"---Долгота / Широта---\""));
    QCOMPARE(firstLine(QStringLiteral("projections_en.prj")), QByteArray("\"---Longitude / Latitude---\""));
}

void TestResources::languagesAgree()
{
    const auto ru = categories(QStringLiteral("ru"));
    const auto en = categories(QStringLiteral("en"));
    QCOMPARE(ru.size(), en.size());
    // What start-up looks up must not cost the building of a thousand entries.
    QCOMPARE(ru.first().entries[0].asPrjString(), QStringLiteral("Earth Projection 1,104"));
    QCOMPARE(ru.first().entries[1].asPrjString(), QStringLiteral("Earth Projection 1,0"));
    for (int c = 0; c < ru.size(); ++c) {
        QCOMPARE(ru[c].entries.size(), en[c].entries.size());
        for (int i = 0; i < ru[c].entries.size(); ++i) {
            QCOMPARE(ru[c].entries[i].params, en[c].entries[i].params);
            QCOMPARE(ru[c].entries[i].epsg(), en[c].entries[i].epsg());
        }
    }
}

void TestResources::everyEntryBuilds()
{
    QStringList faults;
    QSet<int> codes;
    support::LogCapture log;
    eachEntry([&](const CoordSystemParams &entry, const MapinfoCoordSystem &catalogue, int c, int i) {
        try {
            if (!catalogue.getProj(c, i))
                faults << entry.name() + QStringLiteral(": null");
        } catch (const std::exception &e) {
            faults << entry.name() + QStringLiteral(": ") + QString::fromUtf8(e.what());
        }
        if (entry.epsg() > 0 && codes.contains(entry.epsg()))
            faults << QStringLiteral("code %1 stands twice").arg(entry.epsg());
        codes << entry.epsg();
    });
    faults << support::LogCapture::lines(QStringLiteral("error"));
    QCOMPARE(summary(faults), QString());
}

void TestResources::planesAgreeWithProj()
{
    QStringList faults;
    int compared = 0;
    eachEntry([&](const CoordSystemParams &entry, const MapinfoCoordSystem &catalogue, int c, int i) {
        if (entry.epsg() <= 0)
            return;
        const Definition definition(entry.epsg());
        const CoordSystemPtr cs = catalogue.getProj(c, i);
        if (definition.isProjected() == cs->isLatLong())
            faults << entry.name() + QStringLiteral(": another kind of system");
        if (!definition.isProjected())
            return;
        const bool xian = entry.name().contains(QLatin1String("Xian 1980"));
        for (const QPointF &lonLat : definition.grid()) {
            const QPointF expected = definition.plane(lonLat);
            if (!std::isfinite(expected.x()) || !std::isfinite(expected.y()))
                continue;
            QPointF got;
            const bool ok = cs->forward(lonLat, got);
            const QPointF off = got * definition.metresPerUnit - expected;
            if (!ok || !(std::hypot(off.x(), off.y()) <= (xian ? newMillimetres : samePlace)))
                faults << QStringLiteral("%1: %2 m")
                              .arg(entry.name(), QString::number(std::hypot(off.x(), off.y())));
            ++compared;
        }
    });
    QCOMPARE(summary(faults), QString());
    QVERIFY(compared > 2000);
}

void TestResources::boundsHoldTheArea()
{
    // A country's system of one zone has the bounds of the zone, a degree of overlap included.
    constexpr double halfZone = 4.0;
    QStringList faults;
    eachEntry([&](const CoordSystemParams &entry, const MapinfoCoordSystem &catalogue, int c, int i) {
        const CoordSystemPtr cs = catalogue.getProj(c, i);
        const QRectF rect = support::shippedFactory()->coordSysRect()->rect(cs);
        if (!(rect.width() > 0.0 && rect.height() > 0.0))
            faults << entry.name() + QStringLiteral(": empty");
        if (entry.epsg() <= 0 || cs->isLatLong())
            return;
        const Definition definition(entry.epsg());
        const QPointF centre = definition.grid()[4];
        const double off = std::remainder(centre.x() - cs->longitudeOfCenter(), 360.0);
        if (definition.east - definition.west > 60.0 ||
            (entry.params[0] == QLatin1String("8") && std::fabs(off) > halfZone))
            return;
        QPointF middle;
        if (!cs->forward(centre, middle) || !rect.contains(middle))
            faults << entry.name();
    });
    QCOMPARE(summary(faults), QString());
}

void TestResources::boundsOfKnownGrids()
{
    // Areas of use of EPSG 28407 and 27700 in the plane, worked out with PROJ's cs2cs, and rounded outward.
    const auto rect = [](int code) {
        const auto factory = support::shippedFactory();
        const CoordSystemPtr cs = factory->createFromEpsg(code);
        return factory->coordSysRect()->rect(cs->prjStr(), cs.get());
    };
    QCOMPARE(rect(28407), QRectF(QPointF(7200000, 4500000), QPointF(7800000, 7700000)));
    QCOMPARE(rect(27700), QRectF(QPointF(-200000, -100000), QPointF(700000, 1300000)));
    // The width of the world on the sphere of the web Mercator is 2 pi 6378137 m.
    QVERIFY(rect(3857).contains(QRectF(-20037508.0, -20037508.0, 40075016.0, 40075016.0)));
}

void TestResources::oracleNumbers()
{
    QFile file(support::resources().filePath(QStringLiteral("OracleSRID.xml")));
    QVERIFY(file.open(QIODevice::ReadOnly));
    QDomDocument document;
    QVERIFY(document.setContent(&file));
    QHash<int, QString> texts;
    for (QDomElement e = document.documentElement().firstChildElement(); !e.isNull();
         e = e.nextSiblingElement())
        texts.insert(e.attribute(QStringLiteral("srid")).toInt(), e.attribute(QStringLiteral("mbproj")));
    QStringList faults;
    eachEntry([&](const CoordSystemParams &entry, const MapinfoCoordSystem &, int, int) {
        if (entry.epsg() > 0 && texts.take(entry.epsg()) != entry.params.join(QStringLiteral(", ")))
            faults << entry.name();
    });
    // What is left are the numbers from before the numbering followed EPSG.
    for (auto it = texts.cbegin(); it != texts.cend(); ++it)
        if (!support::shippedFactory()->createFromOracleSRID(it.key()))
            faults << QString::number(it.key());
    QCOMPARE(summary(faults), QString());
    QVERIFY(texts.contains(8307));
}

NIVORA_TEST(TestResources)
#include "tst_resources.moc"
