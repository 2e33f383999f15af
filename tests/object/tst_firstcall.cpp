#include "FirstCalls.h"

using namespace nivora::cs;

using firstcalls::Question;
using firstcalls::questions;

/// The lazily found facts lead into each other, and each object has a lock that cannot be taken twice: a
/// wrong turn hangs (CTest's timeout), and an answer must not depend on what was asked before.
class TestFirstCall : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void initTestCase() { QVERIFY(support::shippedFactory()); }

    void answersDoNotDependOnOrder_data()
    {
        const support::Columns<QString> row;
        // clang-format off
        for (const char *system :
             {"prj:Earth Projection 8, 1001, \"m\", 39, 0, 1, 7500000, 0", "prj:Earth Projection 1, 104", "epsg:32637",
              "prj:Earth Projection 8, 104, \"ft\", 39, 0, 1, 0, 0 Affine Units \"m\", 1, 2, 3, 4, 5, 6 Bounds (0, 0) (9, 9)",
              "prj:CoordSys NonEarth Units \"yd\"", "prj:CoordSys NonEarth Units \"mi\" Bounds (0, 0) (10, 20)",
              "proj:+proj=eqc +R=6370997 +units=ft +no_defs", "proj:+proj=longlat +ellps=krass +no_defs",
              "proj:+proj=laea +lat_0=90 +lon_0=0 +datum=WGS84 +units=m", "wkt:LOCAL_CS[\"Nonearth\",UNIT[\"Meter\",1]]",
              "prj:CoordSys Earth Projection 4, 104, 7, 90, 90, 90"})
            row.named(system);
        // clang-format on
    }
    void answersDoNotDependOnOrder()
    {
        const auto [system] = support::row<QString>();
        const CoordSystemPtr warm = support::made(system);
        for (int round = 0; round < 2; ++round)
            for (const Question &question : questions)
                question.ask(*warm, warm->clone());
        for (const Question &question : questions) {
            const CoordSystemPtr fresh = support::made(system);
            const QString first = question.ask(*fresh, support::made(system));
            const QString later = question.ask(*warm, fresh);
            QVERIFY2(!first.isEmpty() && first == later,
                     qPrintable("%1: %2 / %3"_s.arg(QLatin1String(question.name), first, later)));
        }
    }

    void freshObject()
    {
        const CoordSystem cs;
        QVERIFY(!cs.isRectSet() && !cs.isLatLong() && !cs.isNonEarth() && !cs.isSpecialDatum());
        QCOMPARE(cs.affineUnit().unitCode(), -1);
        QCOMPARE(cs.exportToWkt(), QString());
        const char *const text = "Ошибка экспорта КС в формат proj\n";
        VERIFY_THROWS_LIKE(std::logic_error, cs.projStr(), text);
        VERIFY_THROWS_LIKE(std::logic_error, cs.epsg(), text);
        VERIFY_THROWS_LIKE(std::logic_error, cs.taggedString(), text);
        VERIFY_THROWS(std::logic_error, cs.getSemiMajor(), "Не могу получить параметр");
        VERIFY_THROWS(std::logic_error, cs.getTOWGS84Params(), "Не могу получить параметры");
        QPointF out(1, 2);
        QVERIFY(!cs.forward(out, out));
        QVERIFY_EXCEPTION_THROWN(cs.unit(), std::exception);
        QVERIFY_EXCEPTION_THROWN(cs.prjStr(), std::exception);
        QVERIFY_EXCEPTION_THROWN(cs.clone(), std::exception);
    }
};

NIVORA_TEST(TestFirstCall)
#include "tst_firstcall.moc"
