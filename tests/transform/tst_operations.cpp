#include <support/Support.h>

#include <coordsys/BulkTransform.h>

#include <proj.h>

#include <QRandomGenerator>

#include <algorithm>

using namespace nivora::cs;
using support::made;

namespace {

struct System
{
    QString tagged;
    QRectF area;
};

/// The database's everyday systems whose area lies within a box.
std::vector<System> systemsIn(const QRectF &box)
{
    std::vector<System> systems;
    int count = 0;
    const std::unique_ptr<PJ_CONTEXT, decltype(&proj_context_destroy)> context(proj_context_create(),
                                                                               proj_context_destroy);
    PROJ_CRS_INFO **list = proj_get_crs_info_list_from_database(context.get(), "EPSG", nullptr, &count);
    for (int i = 0; i < count; ++i) {
        const PROJ_CRS_INFO &info = *list[i];
        const QRectF area(info.west_lon_degree, info.south_lat_degree,
                          info.east_lon_degree - info.west_lon_degree,
                          info.north_lat_degree - info.south_lat_degree);
        const bool isPlanar = info.type == PJ_TYPE_PROJECTED_CRS || info.type == PJ_TYPE_GEOGRAPHIC_2D_CRS;
        if (isPlanar && info.bbox_valid && area.width() > 0.0 && box.contains(area))
            systems.push_back({"epsg:"_s + QString::fromLatin1(info.code), area});
    }
    proj_crs_info_list_destroy(list);
    return systems;
}

bool isListed(const QVector<TransformOperation> &operations, const TransformOperation &used)
{
    return std::any_of(operations.begin(), operations.end(), [&](const TransformOperation &o) {
        return o.name == used.name && o.definition == used.definition;
    });
}

OperationChoice byOperation(const QString &text) { return OperationChoice().withOperation(text); }

/// The registered operation as WKT.
QString wktOf(const char *code)
{
    const std::unique_ptr<PJ_CONTEXT, decltype(&proj_context_destroy)> context(proj_context_create(),
                                                                               proj_context_destroy);
    const std::unique_ptr<PJ, decltype(&proj_destroy)> operation(
        proj_create_from_database(context.get(), "EPSG", code, PJ_CATEGORY_COORDINATE_OPERATION, 0, nullptr),
        proj_destroy);
    return QString::fromUtf8(proj_as_wkt(context.get(), operation.get(), PJ_WKT2_2019, nullptr));
}

} // namespace

Q_DECLARE_METATYPE(nivora::cs::OperationChoice)

/// Which operation a point goes by, and choosing another.
class TestOperations : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void initTestCase() { QVERIFY(support::shippedFactory()); }

    void usedIsListed_data()
    {
        const support::Columns<QString, QRectF> row;
        row.named("Europe", {-25, 35, 65, 37});
        row.named("Russia", {20, 41, 160, 41});
        row.named("Asia", {60, -12, 90, 65});
        row.named("Africa", {-20, -36, 72, 74});
        row.named("North America", {-170, 14, 120, 70});
        row.named("South America", {-93, -57, 60, 71});
        row.named("Oceania", {110, -50, 70, 50});
        row.named("Antarctica", {-180, -90, 360, 31});
    }

    // A law over the database: what PROJ says it used for a point is among the operations that were told, and
    // a list's tally says the same.
    void usedIsListed()
    {
        const auto [name, box] = support::row<QString, QRectF>();
        QRandomGenerator random(static_cast<quint32>(name.size()));
        const std::vector<System> systems = systemsIn(box);
        const auto any = [&]() -> const System & {
            return systems[random.bounded(static_cast<quint32>(systems.size()))];
        };
        int compared = 0;
        for (int tries = 0; compared < 8 && tries < 4000; ++tries) {
            const System &from = any();
            const System &to = any();
            const QRectF common = from.area & to.area;
            QPointF place;
            if (common.isEmpty() || from.tagged == to.tagged ||
                !CoordTransform(made("epsg:4326"), made(from.tagged)).forward(common.center(), place))
                continue;
            const CoordTransform transform(made(from.tagged), made(to.tagged));
            const auto used = transform.operationAt(place);
            if (!used)
                continue;
            const QByteArray pair = QStringList{from.tagged, to.tagged, used->name}.join(" "_s).toUtf8();
            QVERIFY2(isListed(transform.operations(), *used), pair.constData());
            OperationTally tally;
            BulkOptions options;
            options.tally = &tally;
            QVector<QPointF> points{place, place};
            BulkTransform(transform).forward(points, points, options);
            QVERIFY2(tally.uses().size() == 1 && tally.uses().first().points == 2 &&
                         tally.uses().first().operation.name == used->name,
                     pair.constData());
            ++compared;
        }
        QVERIFY(compared >= 4);
    }

    // Points of one list that go by different operations, on several threads.
    void tally()
    {
        const CoordTransform transform(made("epsg:4284"), made("epsg:32637"));
        QVector<QPointF> points;
        for (int i = 0; i < 9000; ++i)
            points << (i % 3 == 0 ? QPointF(10, 80) : QPointF(37.6, 55.7 + 1e-5 * i)); // Svalbard, Moscow
        points << QPointF(37.6, 95.0);
        for (const bool refuses : {false, true}) {
            OperationTally tally;
            BulkOptions options;
            options.threads = 3;
            options.tally = &tally;
            options.refusesBallpark = refuses;
            QVector<QPointF> out, plain;
            const BulkResult result = BulkTransform(transform).forward(points, out, options);
            BulkTransform(transform).forward(points, plain);
            QCOMPARE(result.failed.size(), refuses ? std::size_t(3001) : std::size_t(1));
            QCOMPARE(out.at(1), plain.at(1));
            QCOMPARE(tally.uses().first().operation.shortName, "Pulkovo 1942 to WGS 84 (20)"_s);
            QCOMPARE(tally.uses().first().points, 6000);
            QCOMPARE(tally.ballparkPoints(), refuses ? 0 : 3000);
        }
    }

    void choices_data()
    {
        const support::Columns<QString, QString> row;
        const QString code = "{\"operation\":\"%1\"}"_s;
        row("code", "epsg:4277", code.arg("EPSG:1196"_s));
        row("bare number", "epsg:4277", code.arg("1196"_s));
        row("URN", "epsg:4277", code.arg("urn:ogc:def:coordinateOperation:EPSG::1196"_s));
        row("name", "epsg:4277", code.arg("osgb36 to wgs 84 (2)"_s));
        row("pipeline", "epsg:4277",
            code.arg(
                "+proj=pipeline +step +proj=unitconvert +xy_in=deg +xy_out=rad +step +proj=push +v_3 +step "
                "+proj=cart +ellps=airy +step +proj=helmert +x=371 +y=-112 +z=434 +step +inv +proj=cart "
                "+ellps=WGS84 +step +proj=pop +v_3 +step +proj=unitconvert +xy_in=rad +xy_out=deg"_s));
        row("WKT", "epsg:4277", "");
        row("projection at an end", "epsg:27700", "");
    }

    // As cct has it from the parameters of EPSG:1196, which PROJ would not take here.
    void choices()
    {
        const auto [from, text] = support::row<QString, QString>();
        const OperationChoice choice =
            text.isEmpty() ? byOperation(wktOf("1196")) : OperationChoice::fromText(text);
        const OperationChoice again = OperationChoice::fromText(choice.toText());
        QVERIFY(again == choice && !choice.isDefault());
        QPointF place(-3, 55);
        QVERIFY(from == "epsg:4277"_s || CoordTransform(made("epsg:4277"), made(from)).forward(place, place));
        const CoordTransform copy(CoordTransform(made(from), made("epsg:4326"), again));
        QPointF out, back;
        QVERIFY(copy.forward(place, out) && BulkTransform(copy).inverse(out, back));
        VERIFY_NEAR(out, QPointF(-3.0014443424, 55.0001276166), 1e-9);
        VERIFY_NEAR(back, place, from == "epsg:27700"_s ? 1e-2 : 1e-7); // seven parameters turned round
        QVERIFY(copy.operationAt(place) && !copy.operationAt(place)->isBallpark);
    }

    void refusals_data()
    {
        const support::Columns<QString, OperationChoice, QString> row;
        const OperationChoice any;
        row("other datums", "epsg:4277", byOperation("EPSG:1623"_s),
            "Операция «S-JTSK to WGS 84 (1)» соединяет S-JTSK → WGS 84, а не эти КС");
        row("no such", "epsg:4277", byOperation("EPSG:99999"_s), "Нет такой операции");
        row("a system", "epsg:4277", byOperation("+proj=longlat +type=crs"_s), "Нет такой операции");
        row("latitude first", "epsg:4277", byOperation("+proj=axisswap +order=2,1"_s),
            "Операция не соединяет эти КС");
        row("too coarse", "epsg:4284", any.withMostError(1), "Нет операции, которая подходит выбору");
        row("ballpark", "epsg:28355", any.withoutBallpark().withArea({0, 50, 1, 1}),
            "Нет операции, которая подходит выбору");
        row("missing grid", "epsg:27700", byOperation("EPSG:7710"_s), "Для операции «EPSG:7710» нет файла");
    }

    void refusals()
    {
        const auto [from, choice, why] = support::row<QString, OperationChoice, QString>();
        VERIFY_THROWS_LIKE(std::logic_error, CoordTransform(made(from), made("epsg:4326"), choice), why);
    }

    void areasAndErrors()
    {
        const CoordSystemPtr pulkovo = made("epsg:4284"), utm = made("epsg:32637");
        const auto nameBy = [&](const OperationChoice &choice) {
            return CoordTransform(pulkovo, utm, choice).operationAt({37.6, 55.7})->shortName;
        };
        QCOMPARE(nameBy(OperationChoice().withArea({50, 47, 10, 5})).left(24), "Pulkovo 1942 to WGS 84 ("_s);
        QCOMPARE(nameBy(OperationChoice().withMostError(3.5)), "Pulkovo 1942 to WGS 84 (20)"_s);
        VERIFY_THROWS(std::invalid_argument, OperationChoice().withMostError(qQNaN()),
                      "Погрешность должна быть больше нуля"_s);
        VERIFY_THROWS(std::invalid_argument, OperationChoice().withArea({0, 80, 10, 20}),
                      "Область не лежит на земле"_s);
        for (const char *text : {"", "[]", "{\"operator\":\"1\"}", "{\"operation\":5}", "{\"area\":[1,2]}"})
            QVERIFY_EXCEPTION_THROWN(OperationChoice::fromText(QLatin1String(text)), std::invalid_argument);
    }
};

NIVORA_TEST(TestOperations)
#include "tst_operations.moc"
