// The formatter: from points of any system to references, and what happens when there is none.

#include "support/Support.h"

#include <coordsys/Mgrs.h>

#include <cmath>
#include <limits>

using namespace nivora::cs;
using support::LogCapture;

class TestMgrs : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void initTestCase() { QVERIFY(m_factory = support::shippedFactory()); }

    void points_data()
    {
        const support::Columns<QString, QPointF, QString> row; // at the precision of a new object
        const char *const wgs84 = "epsg:4326", *const utm = "epsg:32637", *const moscow = "37UDB12127914";

        // clang-format off
        row("longitude first", wgs84, {37.6, 55.75}, moscow);
        row("projected", utm, {412125.8, 6179143.5}, moscow); // the same place by PROJ's own UTM
        // Shifted to WGS 84 the point would lie a hundred metres off.
        row("a geographic system keeps its datum", "epsg:4284", {37.6, 55.75}, moscow);
        row("outside the system's bounds", utm, {9e7, 6179143.5}, nullptr);
        row("domain, south-west corner", wgs84, {-180, -90}, "BAN00000000");
        row("the eastern edge", wgs84, {360, 90}, "ZAH00000000");
        row("east of it", wgs84, {360.0001, 0}, nullptr);
        row("west of it", wgs84, {-180.0001, 0}, nullptr);
        row("north of it", wgs84, {0, 90.0001}, nullptr);
        row("no number", wgs84, {qQNaN(), 10}, nullptr);
        row("infinite", utm, {qInf(), 0}, nullptr);
        // clang-format on
    }
    void points()
    {
        const auto [system, point, expected] = support::row<QString, QPointF, QString>();
        const Mgrs mgrs(m_factory->createFromTaggedString(system));
        const LogCapture log;
        const QString text = mgrs.getMGRSString(point);
        QCOMPARE(text, expected);
        QCOMPARE(text.isNull(), expected.isNull());
        QCOMPARE(mgrs.getMGRSString(point.x(), point.y()), text);
        QCOMPARE(LogCapture::lines("error"_s), QStringList());
    }

    void gridErrorsAreLogged()
    {
        Mgrs mgrs(m_factory->latLongWgs84CoordSystem());
        for (const int precision : {6, -1}) {
            mgrs.setPrecision(precision);
            const LogCapture log;
            QVERIFY(mgrs.getMGRSString(37.6, 55.75).isNull());
            const QString line = "mgrs: Точность должна быть между 0 и 5 включительно"_s;
            QCOMPARE(LogCapture::lines("error"_s), QStringList(line));
            QVERIFY(mgrs.getMGRSString(361, 0).isNull()); // outside the domain the grid is not asked
            QCOMPARE(LogCapture::lines("error"_s).size(), 1);
        }
    }

    void binding()
    {
        const CoordSystemPtr utm = m_factory->createFromEpsg(32637);
        Mgrs mgrs(utm);
        mgrs.setPrecision(2);
        QCOMPARE(mgrs.coordSystem(), utm);
        VERIFY_THROWS(std::invalid_argument, mgrs.setCoordSystem(nullptr), "cs_from");
        VERIFY_THROWS(std::invalid_argument, Mgrs(nullptr), "cs_from");
        QCOMPARE(mgrs.coordSystem(), utm);

        mgrs.setCoordSystem(m_factory->latLongWgs84CoordSystem());
        QCOMPARE(mgrs.coordSystem(), m_factory->LatLongCoordSystem());
        QCOMPARE(mgrs.getMGRSString(37.6, 55.75), "37UDB1279"_s);
    }

    // The first, the last, two between them, and codes without a text; two bits are none.
    void messages()
    {
        const Mgrs mgrs(m_factory->latLongWgs84CoordSystem());
        const std::pair<int, const char *> texts[] = {
            {1, "Широта не попадает в допустимые пределы (от -90 до 90 градусов)"},
            {4, "Ошибка строки MGRS: строка слишком длинная, слишком короткая или содержит ошибки"},
            {128,
             "Координата северного положения не попадает в допустимые пределы (от 0 до 10,000,000 метров "
             "для UTM) (от 0 до 4,000,000 метров для UPS)"},
            {512, "Не задано полушарие (должно быть 'N' или 'S')"}};
        for (const auto &[code, text] : texts)
            QCOMPARE(mgrs.errorMsg(code), QString::fromUtf8(text));
        for (const int code : {0, 3, 1024, -1})
            QCOMPARE(mgrs.errorMsg(code), "Неизвестный код ошибки %1"_s.arg(code));
    }

private:
    std::shared_ptr<CoordSysFactory> m_factory;
};

NIVORA_TEST(TestMgrs)
#include "tst_mgrs.moc"
