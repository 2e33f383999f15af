#include <support/Support.h>

using namespace nivora::cs;

namespace {

QVariant text(const QRectF &r)
{
    return "%1 %2 %3 %4"_s.arg(r.x(), 0, 'g', 12).arg(r.y(), 0, 'g', 12).arg(r.width()).arg(r.height());
}

using Cs = const CoordSystem &;
using Twin = const CoordSystemPtr &; // an equal system

struct Question
{
    const char *name;
    QVariant (*ask)(Cs cs, Twin twin);
};

/// Everything about a system that is found on the first call or leads to such a thing.
const Question questions[] = {
    {"unit", [](Cs cs, Twin) { return QVariant(cs.unit().name()); }},
    {"rectNumericCoordSys", [](Cs cs, Twin) { return text(cs.rectNumericCoordSys()); }},
    {"rectInternal", [](Cs cs, Twin) { return text(cs.rectInternal()); }},
    {"needCropCoords", [](Cs cs, Twin) { return QVariant(cs.needCropCoords()); }},
    {"epsg", [](Cs cs, Twin) { return QVariant(cs.epsg()); }},
    {"matchedEpsg", [](Cs cs, Twin) { return QVariant(cs.matchedEpsg()); }},
    {"isLatLong", [](Cs cs, Twin) { return QVariant(cs.isLatLong()); }},
    {"prjStr", [](Cs cs, Twin) { return QVariant(cs.prjStr()); }},
    {"projStr", [](Cs cs, Twin) { return QVariant(cs.projStr()); }},
    {"taggedString", [](Cs cs, Twin) { return QVariant(cs.taggedString()); }},
    {"exportToWkt2", [](Cs cs, Twin) { return QVariant(cs.exportToWkt2()); }},
    {"isEqual", [](Cs cs, Twin twin) { return QVariant(cs.isEqual(twin, false)); }},
    {"isEqual of the other", [](Cs cs, Twin twin) { return QVariant(twin->isEqual(cs, false)); }},
    {"clone", [](Cs cs, Twin) { return text(cs.clone()->rectNumericCoordSys()); }},
    {"forward",
     [](Cs cs, Twin) {
         QRectF r;
         cs.forward(QRectF(40, 50, 1, 1), r);
         return text(r);
     }},
};

} // namespace

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
        for (const char *system :
             {"prj:Earth Projection 8, 1001, \"m\", 39, 0, 1, 7500000, 0", "prj:Earth Projection 1, 104",
              "epsg:32637",
              "prj:Earth Projection 8, 104, \"ft\", 39, 0, 1, 0, 0 Affine Units \"m\", 1, 2, 3, 4, 5, 6 "
              "Bounds "
              "(0, 0) (9, 9)",
              "prj:CoordSys NonEarth Units \"yd\"",
              "prj:CoordSys NonEarth Units \"mi\" Bounds (0, 0) (10, 20)",
              "proj:+proj=eqc +R=6370997 +units=ft +no_defs", "proj:+proj=longlat +ellps=krass +no_defs",
              "proj:+proj=laea +lat_0=90 +lon_0=0 +datum=WGS84 +units=m",
              "wkt:LOCAL_CS[\"Nonearth\",UNIT[\"Meter\",1]]",
              "prj:CoordSys Earth Projection 4, 104, 7, 90, 90, 90"})
            row(system, system);
    }
    void answersDoNotDependOnOrder()
    {
        const auto [system] = support::row<QString>();
        const auto factory = support::shippedFactory();
        const CoordSystemPtr warm = factory->createFromTaggedString(system);
        for (int round = 0; round < 2; ++round)
            for (const Question &question : questions)
                question.ask(*warm, warm->clone());
        for (const Question &question : questions) {
            const CoordSystemPtr fresh = factory->createFromTaggedString(system);
            const QString first = question.ask(*fresh, factory->createFromTaggedString(system)).toString();
            QVERIFY2(!first.isEmpty(), question.name);
            const QString later = question.ask(*warm, fresh).toString();
            QVERIFY2(first == later,
                     qPrintable(QString::fromUtf8(question.name) + ": "_s + first + " / "_s + later));
        }
    }

    void freshObject()
    {
        const CoordSystem cs;
        QVERIFY(!cs.isRectSet() && !cs.isLatLong() && !cs.isNonEarth() && !cs.isSpecialDatum());
        QCOMPARE(cs.affineUnit().unitCode(), -1);
        QCOMPARE(cs.exportToWkt(), QString());
        const QString text = "Ошибка экспорта КС в формат proj\n"_s;
        for (const std::function<void()> &call : std::initializer_list<std::function<void()>>{
                 [&] { (void)cs.projStr(); }, [&] { (void)cs.epsg(); }, [&] { (void)cs.taggedString(); }}) {
            const QString instead = support::thrownInstead<std::logic_error>(call, text, true);
            QVERIFY2(instead.isEmpty(), qPrintable(instead));
        }
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
