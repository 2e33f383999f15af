#include <support/Support.h>

#include <coordsys/CoordTransform.h>
#include <coordsys/Error.h>
#include <coordsys/SystemInfo.h>

#include <functional>

using namespace nivora::cs;
using support::Columns;
using support::made;

using Call = std::function<void()>;
Q_DECLARE_METATYPE(Call)

/// Systems like another one, conversions that return a value, and the codes of what is thrown.
class TestValues : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void initTestCase() { QVERIFY(support::shippedFactory()); }

    void aSystemLikeAnother_data()
    {
        const Columns<QString> row;
        for (const char *text :
             {"epsg:32637", "epsg:4284", "prj:Earth Projection 8, 1001, \"m\", 39, 0, 1, 7500000, 0",
              "proj:+proj=laea +lat_0=50 +lon_0=20 +ellps=GRS80"})
            row.named(text);
    }
    void aSystemLikeAnother()
    {
        const auto [text] = support::row<QString>();
        const CoordSystemPtr plain = made(text);
        const QString tag = plain->taggedString();
        const CoordSystemPtr all =
            plain->withDescription("site"_s)->withAffine({2, 0, 0, 2, 10, 20})->withBounds({1, 2, 3, 4});
        QCOMPARE(all->description(), "site"_s);
        QCOMPARE(all->rectNumericCoordSys(), QRectF(1, 2, 3, 4));
        QCOMPARE(*all->affineTransform(), QTransform(2, 0, 0, 2, 10, 20));
        QCOMPARE(all->affineUnit().unitCode(), plain->unit().unitCode());
        QCOMPARE(all->baseCode(), plain->epsg());
        QCOMPARE(all->withoutAffine()->epsg(), plain->epsg());
        QCOMPARE(plain->taggedString(), tag);
        QVERIFY(!plain->affineTransform() && !plain->isRectSet());

        const std::optional<QPointF> moved = CoordTransform(plain, all).forward(QPointF(5, 6));
        QVERIFY(moved && qFuzzyCompare(moved->x(), 20.0) && qFuzzyCompare(moved->y(), 32.0));
        QVERIFY(!CoordTransform(plain, all).inverse(QPointF(qQNaN(), 0)));
    }

    void theSameAsWithOutParameters()
    {
        const CoordSystemPtr zone = made("epsg:32637");
        QPointF point;
        QRectF rect;
        QVERIFY(zone->forward(QPointF(37, 55), point) && zone->forward(QRectF(37, 55, 1, 1), rect));
        QCOMPARE(zone->toPlane(QPointF(37, 55)), std::make_optional(point));
        QCOMPARE(zone->toPlane(QRectF(37, 55, 1, 1)), std::make_optional(rect));
        QCOMPARE(zone->toPlane(QVector<QPointF>{{37, 55}}), std::make_optional(QVector<QPointF>{point}));
        QVERIFY(zone->inverse(point, point) && zone->toGeographic(*zone->toPlane(QPointF(37, 55))) == point);
        QVERIFY(!zone->toPlane(QVector<QPointF>{{37, 55}, {0, 95}}) &&
                !zone->toGeographic(QPointF(qInf(), 0)));
    }

    void codes_data()
    {
        const Columns<Call, QString> row;
        const auto read = [](const char *text) {
            return [text] { support::shippedFactory()->createFromUserInput(QString::fromUtf8(text)); };
        };
        const auto made = [](const char *text) { return [text] { support::made(text); }; };
        row("empty", read(" "), "empty-text");
        row("unknown code", read("EPSG:999999"), "unknown-code");
        row("unknown authority", read("NOBODY:1"), "unknown-code");
        row("words", read("qwertyuiop asdf"), "not-understood");
        row("height", read("EPSG:5773"), "no-plane");
        row("file", read("@/nowhere/a.prj"), "file-failed");
        row("code", made("epsg:999999"), "unknown-code");
        row("projection", made("prj:Earth Projection 99, 104"), "not-understood");
        row("figures", made("prj:Earth Projection 8, 1001"), "missing-parameters");
        row("another notation", made("proj:WGS 84"), "not-understood");
        row("geocentric", made("proj:+proj=geocent +datum=WGS84"), "no-plane");
        row(
            "bounds", [] { support::made("epsg:4326")->withBounds(QRectF()); }, "invalid-argument");
        row(
            "affine",
            [] {
                support::made("epsg:4326")->withAffine({0, 0, 0, 0, 0, 0});
            },
            "invalid-argument");
        row(
            "written",
            [] {
                exportSystem(*support::made("epsg:4326")->withAffine({1, 0, 0, 1, 5, 0}), SystemFormat::Esri);
            },
            "not-writable");
        row(
            "grid",
            [] {
                CoordTransform(support::made("epsg:4277"), support::made("epsg:4326"),
                               OperationChoice().withOperation("EPSG:7709"_s));
            },
            "missing-grid");
        row(
            "point", [] { CoordTransform::throwTransformFailed(); }, "point-failed");
        row(
            "foreign", [] { throw std::runtime_error("x"); }, "other");
    }
    void codes()
    {
        const auto [call, code] = support::row<Call, QString>();
        try {
            call();
            QFAIL("nothing was thrown");
        } catch (const std::exception &e) {
            QCOMPARE(QString::fromLatin1(Error::nameOf(Error::codeOf(e))), code);
        }
    }
};

NIVORA_TEST(TestValues)
#include "tst_values.moc"
