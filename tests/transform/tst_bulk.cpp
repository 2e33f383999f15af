#include <support/Support.h>
#include <support/TestRunner.h>

#include <coordsys/BulkTransform.h>
#include <coordsys/CoordSystem.h>
#include <platform/utils/ProgressHandler.h>

#include <QPolygonF>
#include <QThreadPool>

#include <cmath>
#include <cstring>
#include <limits>
#include <random>
#include <thread>

using namespace nivora::cs;

namespace {

CoordTransform between(const QString &from, const QString &to)
{
    const auto factory = support::shippedFactory();
    return {factory->createFromTaggedString(from), factory->createFromTaggedString(to)};
}

/// Points in a rectangle, some of them impossible.
QVector<QPointF> pointsIn(const QRectF &rect, int count)
{
    std::mt19937 random(7); // the same on every run
    std::uniform_real_distribution<double> share(0.0, 1.0);
    QVector<QPointF> points;
    for (int i = 0; i < count; ++i)
        points << rect.topLeft() + QPointF(share(random) * rect.width(), share(random) * rect.height());
    const double notANumber = std::numeric_limits<double>::quiet_NaN();
    points[1].setY(notANumber);
    points[count / 2] = {1e300, -1e300};
    points[count - 1].setX(HUGE_VAL);
    return points;
}

/// What CoordTransform says of each point alone, NaN for a failure.
QVector<QPointF> oneByOne(const CoordTransform &transform, bool forward, const QVector<QPointF> &in)
{
    const double notANumber = std::numeric_limits<double>::quiet_NaN();
    QVector<QPointF> out(in.size(), {notANumber, notANumber});
    for (int i = 0; i < in.size(); ++i)
        static_cast<void>(forward ? transform.forward(in[i], out[i]) : transform.inverse(in[i], out[i]));
    return out;
}

bool sameBits(const QPointF &a, const QPointF &b)
{
    return std::memcmp(&a, &b, sizeof a) == 0 || (std::isnan(a.x()) && std::isnan(b.x()));
}

/// Where two lists differ, or where \p failed is not where the expected ones are NaN; -1 for nowhere.
int firstDifference(const QVector<QPointF> &got, const QVector<QPointF> &expected,
                    const std::vector<std::size_t> &failed)
{
    std::vector<std::size_t> bad;
    for (int i = 0; i < expected.size(); ++i) {
        if (!sameBits(got.value(i), expected[i]))
            return i;
        if (std::isnan(expected[i].x()))
            bad.push_back(static_cast<std::size_t>(i));
    }
    return bad == failed ? -1 : static_cast<int>(expected.size());
}

BulkOptions withThreads(int threads)
{
    BulkOptions options;
    options.threads = threads;
    return options;
}

} // namespace

class TestBulkTransform : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void initTestCase() { QVERIFY(support::shippedFactory()); }

    void bitsOfCoordTransform_data()
    {
        QTest::addColumn<QString>("from");
        QTest::addColumn<QString>("to");
        QTest::addColumn<QRectF>("area");
        const QRectF degrees(30, 50, 12, 10);
        QTest::newRow("one operation") << "epsg:4326"
                                       << "epsg:32637" << degrees;
        QTest::newRow("several operations") << "epsg:4284"
                                            << "epsg:4326" << degrees;
        QTest::newRow("grads") << "epsg:4807"
                               << "epsg:27572" << QRectF(1, 42, 5, 8);
        QTest::newRow("two steps") << "prj:CoordSys NonEarth Units \"km\""
                                   << "prj:Earth Projection 8, 104, \"m\", 39, 0, 0.9996, 500000, 0"
                                   << QRectF(3000, 5000, 2000, 2000);
        QTest::newRow("affine, both sides")
            << "prj:Earth Projection 1001, 104, \"degree\", 1e-13, 0, 10, 0, 1e-13, -5"
            << "prj:Earth Projection 8, 104, \"m\", 39, 0, 0.9996, 500000, 0 Affine Units \"m\", 1, 2, 3, 4, "
               "5, 6"
            << QRectF(10, -5, 1e-11, 5e-12);
        QTest::newRow("equal systems") << "epsg:32637"
                                       << "epsg:32637" << degrees;
    }

    void bitsOfCoordTransform()
    {
        QFETCH(QString, from);
        QFETCH(QString, to);
        QFETCH(QRectF, area);
        const CoordTransform single = between(from, to);
        const BulkTransform bulk(single);
        const QVector<QPointF> in = pointsIn(area, 5000); // three blocks, the last one partly filled
        const QVector<QPointF> expected = oneByOne(single, true, in);
        const QVector<QPointF> back = oneByOne(single, false, expected);
        for (const int threads : {1, 3}) {
            QVector<QPointF> out;
            BulkResult result = bulk.forward(in, out, withThreads(threads));
            QCOMPARE(firstDifference(out, expected, result.failed), -1);
            result = bulk.inverse(out.constData(), out.data(), static_cast<std::size_t>(out.size()),
                                  withThreads(threads));
            QCOMPARE(firstDifference(out, back, result.failed), -1);
            QCOMPARE(result.ending, BulkResult::Finished);
            QVERIFY(!result.isComplete());
        }
        QPointF point;
        QVERIFY(bulk.forward(in[0], point) && sameBits(point, expected[0]));
        QVERIFY(!bulk.forward(in[1], point) && sameBits(point, expected[0]));
        QPolygonF polygon(in.mid(2, 5));
        const QPolygonF shared = polygon; // the original must not change with the result
        QVERIFY(bulk.forward(polygon, polygon).isComplete());
        QVERIFY(sameBits(polygon[4], expected[6]) && shared == QPolygonF(in.mid(2, 5)));
    }

    void stopsEarly()
    {
        const BulkTransform bulk(between(QStringLiteral("epsg:4326"), QStringLiteral("epsg:32637")));
        const auto progress = std::make_shared<nivora::concurrent::ProgressHandler>();
        BulkOptions options = withThreads(1);
        options.progress = progress;
        const QVector<QPointF> good(10000, QPointF(39, 55));
        QVector<QPointF> out;
        QVERIFY(bulk.forward(good, out, options).isComplete());
        QCOMPARE(progress->done(), std::uint64_t(10000));
        QCOMPARE(progress->total(), progress->done());

        QVector<QPointF> mixed = good;
        std::fill_n(mixed.begin(), 3, QPointF(0, 1e9));
        options.mostFailures = 3;
        QCOMPARE(bulk.forward(mixed, out, options).ending, BulkResult::Finished);
        options.mostFailures = 2;
        BulkResult result = bulk.forward(mixed, out, options);
        QCOMPARE(result.ending, BulkResult::TooManyFailures);
        QCOMPARE(result.failed, (std::vector<std::size_t>{0, 1, 2}));
        QVERIFY(!std::isnan(out[3].x()) && std::isnan(out.last().x()));

        progress->cancel();
        result = bulk.forward(good, out, options);
        QCOMPARE(result.ending, BulkResult::Canceled);
        QVERIFY(std::isnan(out.first().y()));
        QVERIFY(bulk.forward(QVector<QPointF>(), out).isComplete() && out.isEmpty());
    }

    // GDA2020 is ITRF2014 as it lay in 2020.0; the Australian plate goes north-east by 7 cm a year.
    void epoch()
    {
        const BulkTransform bulk(between(QStringLiteral("epsg:9000"), QStringLiteral("epsg:7844")));
        BulkOptions options;
        options.epoch = 2020.0;
        const QVector<QPointF> in(2, QPointF(134.0, -25.0));
        QVector<QPointF> out;
        QVERIFY(bulk.forward(in, out, options).isComplete());
        VERIFY_NEAR(out[1], in[1], 1e-8); // a millimetre
        QPointF later;
        QVERIFY(bulk.forward(in[0], later, 2030.0));
        const double metres =
            std::hypot((later.x() - in[0].x()) * std::cos(0.436), later.y() - in[0].y()) * 111e3;
        QVERIFY2(metres > 0.5 && metres < 0.8 && later.y() < in[0].y(), qPrintable(QString::number(metres)));
    }

    // Every thread of a pool asks that same pool for help.
    void callersInThePool()
    {
        const CoordTransform single = between(QStringLiteral("epsg:4326"), QStringLiteral("epsg:32637"));
        const BulkTransform bulk(single);
        const QVector<QPointF> in = pointsIn(QRectF(30, 50, 12, 10), 20000);
        const QVector<QPointF> expected = oneByOne(single, true, in);
        std::atomic<int> right{0};
        {
            QThreadPool pool;
            pool.setMaxThreadCount(2);
            BulkOptions options = withThreads(4);
            options.pool = &pool;
            for (int i = 0; i < 4; ++i)
                pool.start([&, options] {
                    QVector<QPointF> out;
                    const BulkResult result = bulk.forward(in, out, options);
                    right += firstDifference(out, expected, result.failed) == -1;
                });
            pool.waitForDone();
        }
        QCOMPARE(right.load(), 4);
    }

    // For the thread sanitizer, too: no lock is left that would order them.
    void eightThreads()
    {
        const CoordTransform single = between(QStringLiteral("epsg:4284"), QStringLiteral("epsg:32637"));
        const BulkTransform bulk(single);
        const QVector<QPointF> in = pointsIn(QRectF(30, 50, 12, 10), 3000);
        const QVector<QPointF> expected = oneByOne(single, true, in);
        std::atomic<int> right{0};
        std::vector<std::thread> threads;
        for (int i = 0; i < 8; ++i)
            threads.emplace_back([&, i] {
                QVector<QPointF> out;
                const BulkTransform copy(bulk);
                const BulkResult result = copy.forward(in, out, withThreads(1 + i % 2));
                QPointF point;
                right += firstDifference(out, expected, result.failed) == -1 && copy.forward(in[2], point) &&
                         sameBits(point, expected[2]);
            });
        for (std::thread &thread : threads)
            thread.join();
        QCOMPARE(right.load(), 8);
    }
};

NIVORA_TEST(TestBulkTransform)
#include "tst_bulk.moc"
