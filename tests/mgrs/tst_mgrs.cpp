// The formatter: from points of any system to references, and what happens when there is none.

#include "support/Support.h"
#include "support/TestRunner.h"

#include <coordsys/CoordSystem.h>
#include <coordsys/Mgrs.h>

#include <QtTest>

#include <cmath>
#include <limits>

using namespace nivora::cs;
using support::LogCapture;

class TestMgrs : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void initTestCase()
    {
        m_factory = support::shippedFactory();
        QVERIFY(m_factory);
    }

    void points_data();
    void points();
    void gridErrorsAreLogged();
    void binding();
    void messages_data();
    void messages();

private:
    std::shared_ptr<CoordSysFactory> m_factory;
};

void TestMgrs::points_data()
{
    QTest::addColumn<QString>("system");
    QTest::addColumn<QPointF>("point");
    QTest::addColumn<QString>("expected"); // at the precision of a new object, null for none
    const QString wgs84 = QStringLiteral("epsg:4326");
    const QString utm = QStringLiteral("epsg:32637");
    const QString moscow = QStringLiteral("37UDB12127914");
    const double nan = std::numeric_limits<double>::quiet_NaN();

    QTest::newRow("longitude first") << wgs84 << QPointF(37.6, 55.75) << moscow;
    // The same place by PROJ's own UTM.
    QTest::newRow("projected") << utm << QPointF(412125.8, 6179143.5) << moscow;
    QTest::newRow("in another notation")
        << QStringLiteral("proj:+proj=utm +zone=37 +datum=WGS84 +units=m +no_defs")
        << QPointF(412125.8, 6179143.5) << moscow;
    // Shifted to WGS 84 the point would lie a hundred metres off.
    QTest::newRow("a geographic system keeps its datum")
        << QStringLiteral("epsg:4284") << QPointF(37.6, 55.75) << moscow;
    QTest::newRow("outside the system's bounds") << utm << QPointF(9e7, 6179143.5) << QString();
    QTest::newRow("domain, north-east corner") << wgs84 << QPointF(360, 90) << QStringLiteral("ZAH00000000");
    QTest::newRow("domain, south-west corner")
        << wgs84 << QPointF(-180, -90) << QStringLiteral("BAN00000000");
    QTest::newRow("east of it") << wgs84 << QPointF(360.0001, 0) << QString();
    QTest::newRow("west of it") << wgs84 << QPointF(-180.0001, 0) << QString();
    QTest::newRow("north of it") << wgs84 << QPointF(0, 90.0001) << QString();
    QTest::newRow("no number") << wgs84 << QPointF(nan, 10) << QString();
    QTest::newRow("no number, projected") << utm << QPointF(500000, nan) << QString();
    QTest::newRow("infinite") << utm << QPointF(std::numeric_limits<double>::infinity(), 0) << QString();
}

void TestMgrs::points()
{
    QFETCH(QString, system);
    QFETCH(QPointF, point);
    QFETCH(QString, expected);
    const Mgrs mgrs(m_factory->createFromTaggedString(system));
    const LogCapture log;
    const QString text = mgrs.getMGRSString(point);
    QCOMPARE(text, expected);
    QCOMPARE(text.isNull(), expected.isNull());
    QCOMPARE(mgrs.getMGRSString(point.x(), point.y()), text);
    QCOMPARE(LogCapture::lines(QStringLiteral("error")), QStringList());
}

void TestMgrs::gridErrorsAreLogged()
{
    Mgrs mgrs(m_factory->latLongWgs84CoordSystem());
    for (const int precision : {6, -1}) {
        mgrs.setPrecision(precision);
        const LogCapture log;
        QVERIFY(mgrs.getMGRSString(37.6, 55.75).isNull());
        const QString line = QStringLiteral("mgrs: Точность должна быть между 0 и 5 включительно");
        QCOMPARE(LogCapture::lines(QStringLiteral("error")), QStringList(line));
        QVERIFY(mgrs.getMGRSString(361, 0).isNull()); // outside the domain the grid is not asked
        QCOMPARE(LogCapture::lines(QStringLiteral("error")).size(), 1);
    }
}

void TestMgrs::binding()
{
    const CoordSystemPtr utm = m_factory->createFromEpsg(32637);
    Mgrs mgrs(utm);
    mgrs.setPrecision(2);
    QCOMPARE(mgrs.coordSystem(), utm);
    VERIFY_THROWS(std::invalid_argument, mgrs.setCoordSystem(nullptr), QStringLiteral("cs_from"));
    VERIFY_THROWS(std::invalid_argument, Mgrs(nullptr), QStringLiteral("cs_from"));
    QCOMPARE(mgrs.coordSystem(), utm);

    mgrs.setCoordSystem(m_factory->latLongWgs84CoordSystem());
    QCOMPARE(mgrs.coordSystem(), m_factory->LatLongCoordSystem());
    QCOMPARE(mgrs.getMGRSString(37.6, 55.75), QStringLiteral("37UDB1279"));
}

void TestMgrs::messages_data()
{
    QTest::addColumn<int>("code");
    QTest::addColumn<QString>("expected");
    QTest::newRow("first") << 1
                           << QStringLiteral(
                                  "Широта не попадает в допустимые пределы (от -90 до 90 градусов)");
    QTest::newRow("string")
        << 4
        << QStringLiteral("Ошибка строки MGRS: строка слишком длинная, слишком короткая или содержит ошибки");
    QTest::newRow("northing") << 128
                              << QStringLiteral(
                                     "Координата северного положения не попадает в допустимые пределы (от 0 "
                                     "до 10,000,000 метров для UTM) (от 0 до 4,000,000 метров для UPS)");
    QTest::newRow("last") << 512 << QStringLiteral("Не задано полушарие (должно быть 'N' или 'S')");
    QTest::newRow("none") << 0 << QStringLiteral("Неизвестный код ошибки 0");
    QTest::newRow("two bits are unknown") << 3 << QStringLiteral("Неизвестный код ошибки 3");
    QTest::newRow("beyond the table") << 1024 << QStringLiteral("Неизвестный код ошибки 1024");
    QTest::newRow("negative") << -1 << QStringLiteral("Неизвестный код ошибки -1");
}

void TestMgrs::messages()
{
    QFETCH(int, code);
    QTEST(Mgrs(m_factory->latLongWgs84CoordSystem()).errorMsg(code), "expected");
}

NIVORA_TEST(TestMgrs)
#include "tst_mgrs.moc"
