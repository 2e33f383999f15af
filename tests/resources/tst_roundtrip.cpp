// EPSG codes written as CoordSys text and read back: what a MapInfo reader of our files would get.

#include "Catalogue.h"

#include <support/Support.h>

#include <coordsys/MapHeaderCoordsysConverter.h>
#include <coordsys/MapinfoCoordSystem.h>
#include <coordsys/PrjText.h>
#include <coordsys/ProjectionParamsManager.h>
#include <coordsys/SystemInfo.h>

#include <proj.h>

#include <QtMath>

#include <cmath>

using namespace nivora::cs;
using catalogue::Definition;
using catalogue::Item;
using catalogue::Pj;
using catalogue::summary;

namespace {

constexpr double samePlace = 0.001; // metres: the text has 12 digits, which keep a micrometre
// The code's ellipsoid is flattened by 1/298.257, the one that CoordSys text can name by 1/298.257222.
constexpr double sameOnXian = 0.02;

/// The first difference in what two CoordSys strings say of the datum, empty when there is none.
QString otherDatum(const TABProjInfo_t &a, const TABProjInfo_t &b)
{
    constexpr double sameFigure = 1e-9; // metres, arc-seconds, ppm, degrees: both texts have the same digits
    if (a.nDatumId != b.nDatumId)
        return "datum %1 became %2"_s.arg(a.nDatumId).arg(b.nDatumId);
    if (a.nEllipsoidId != b.nEllipsoidId)
        return "ellipsoid %1 became %2"_s.arg(a.nEllipsoidId).arg(b.nEllipsoidId);
    double off = std::fabs(a.dDatumShiftX - b.dDatumShiftX) + std::fabs(a.dDatumShiftY - b.dDatumShiftY) +
                 std::fabs(a.dDatumShiftZ - b.dDatumShiftZ);
    for (int i = 0; i < 5; ++i)
        off += std::fabs(a.adDatumParams[i] - b.adDatumParams[i]);
    return off <= sameFigure ? QString() : "the shift differs"_s;
}

/// Worst distance in the plane over the area of a code, metres; infinite when only one of them has a value.
double farthest(const CoordSystem &a, const CoordSystem &b, const Definition &definition)
{
    double worst = 0.0;
    for (const QPointF &lonLat : definition.grid()) {
        QPointF one, other;
        const bool ok = a.forward(lonLat, one);
        if (b.forward(lonLat, other) != ok)
            return HUGE_VAL;
        const QPointF off = (one - other) * definition.metresPerUnit;
        if (ok)
            worst = std::max(worst, std::hypot(off.x(), off.y()));
    }
    return worst;
}

/// EPSG's systems that the catalogue lacks, a sample.
std::vector<int> otherCodes()
{
    QSet<int> catalogued;
    for (const Item &item : catalogue::items())
        catalogued << item.entry.epsg();
    std::vector<int> codes;
    int count = 0;
    for (const PJ_TYPE type : {PJ_TYPE_GEOGRAPHIC_2D_CRS, PJ_TYPE_PROJECTED_CRS}) {
        PROJ_STRING_LIST list = proj_get_codes_from_database(nullptr, "EPSG", type, 1);
        for (PROJ_STRING_LIST each = list; each && *each; ++each) {
            const int code = QByteArray(*each).toInt();
            if (!catalogued.contains(code) && count++ % catalogue::sampleStep() == 0)
                codes.push_back(code);
        }
        proj_string_list_destroy(list);
    }
    return codes;
}

} // namespace

class TestRoundTrip : public QObject
{
    Q_OBJECT
private Q_SLOTS:
    void initTestCase()
    {
        proj_log_level(nullptr, PJ_LOG_NONE);
        QVERIFY(m_factory = support::shippedFactory());
    }
    void cataloguedCodesKeepPlaneAndDatum_data() { catalogue::addParts(); }
    void cataloguedCodesKeepPlaneAndDatum()
    {
        const MapHeaderCoordsysConverter converter;
        QStringList faults;
        for (const Item &item : catalogue::itemsOfPart()) {
            const int code = item.entry.epsg();
            if (code <= 0)
                continue;
            try {
                const CoordSystemPtr made = m_factory->createFromEpsg(code);
                const QString text = made->prjStr();
                const CoordSystemPtr read = m_factory->createFromPrj(text);
                QString fault = otherDatum(converter.prjStrToTABProjInfo(item.entry.asPrjString()),
                                           converter.prjStrToTABProjInfo(text));
                if (fault.isEmpty() && made->isLatLong() != read->isLatLong())
                    fault = "another kind of system"_s;
                const double off = made->isLatLong() ? 0.0 : farthest(*made, *read, Definition(code));
                const bool isXian = made->description().contains("1980"_s);
                if (fault.isEmpty() && !(off <= (isXian ? sameOnXian : samePlace)))
                    fault = "%1 m off"_s.arg(off);
                if (!fault.isEmpty())
                    faults << "%1: %2: %3"_s.arg(QString::number(code), fault, text);
            } catch (const std::exception &e) {
                faults << "%1: %2"_s.arg(QString::number(code), QString::fromUtf8(e.what()));
            }
        }
        QVERIFY2(faults.isEmpty(), qPrintable(summary(faults)));
    }

    /// Outside the catalogue a text is refused with its reason, or it has the code's plane and ellipsoid and
    /// reads back as no system with another plane.
    void otherCodesKeepTheirPlane()
    {
        constexpr double sameAxis = 0.05; // metres, as much as a text may be off when that is told
        QStringList faults;
        int written = 0;
        for (const int code : otherCodes()) {
            CoordSystemPtr made;
            try {
                made = m_factory->createFromEpsg(code);
            } catch (const ProjException &) {
                continue; // PROJ cannot compute in it
            }
            const PrjText text = prjTextOf(*made);
            if (text.isRefused()) {
                if (text.reason().isEmpty())
                    faults << "%1: refused without a reason"_s.arg(code);
                continue;
            }
            ++written;
            const CoordSystemPtr read = m_factory->createFromPrj(text.text);
            const Definition definition(code);
            const double off = made->isLatLong() ? 0.0 : farthest(*made, *read, definition);
            const double axes = std::max(std::fabs(made->getSemiMajor() - read->getSemiMajor()),
                                         std::fabs(made->getSemiMinor() - read->getSemiMinor()));
            const int found = read->epsg();
            const bool isStranger =
                found > 0 && !read->isLatLong() &&
                !(farthest(*made, *m_factory->createFromEpsg(found), definition) <= sameAxis);
            if (made->isLatLong() != read->isLatLong() || !(off <= text.planeErrorM + samePlace) ||
                !(text.planeErrorM <= sameAxis) || !(axes <= sameAxis) || isStranger)
                faults << "%1: %2 m, axes %3 m, code %4: %5"_s.arg(
                    QString::number(code), QString::number(off), QString::number(axes),
                    QString::number(found), text.text);
        }
        QVERIFY(written > 5);
        QVERIFY2(faults.isEmpty(), qPrintable(summary(faults)));
    }

    void oneTextByEveryDoor_data()
    {
        QTest::addColumn<int>("code");
        QTest::newRow("a false origin in the clause") << 3035;
        QTest::newRow("a scale in the clause") << 5514;
        QTest::newRow("axes that run south and west") << 5513;
        QTest::newRow("a rectified grid angle") << 3375;
        QTest::newRow("around the pole") << 3413;
        QTest::newRow("a cone with a scale above 1") << 7122;
        QTest::newRow("an everyday zone") << 32637;
    }
    void oneTextByEveryDoor()
    {
        QFETCH(int, code);
        const auto textOf = [](const CoordSystemPtr &cs) { return prjTextOf(*cs).text; };
        const CoordSystemPtr byCode = m_factory->createFromEpsg(code);
        const QString expected = textOf(byCode);
        for (const SystemFormat format : {SystemFormat::Wkt1, SystemFormat::Wkt2, SystemFormat::ProjJson})
            QCOMPARE(textOf(m_factory->createFromUserInput(exportSystem(*byCode, format))), expected);
        if (!expected.isEmpty())
            QCOMPARE(m_factory->createFromPrj(expected)->prjStr(), expected);
    }

    void clauseOfTheTextAndOfTheObject()
    {
        // The published false origin of the European equal-area grid, 4321000 and 3210000 m.
        const CoordSystemPtr grid = m_factory->createFromEpsg(3035);
        QVERIFY2(grid->prjStr().endsWith("Affine Units \"m\", 1, 0, 4321000, 0, 1, 3210000"_s),
                 qPrintable(grid->prjStr()));
        QVERIFY(!grid->affineTransform());
        QCOMPARE(m_factory->createFromPrj(grid->prjStr())->epsg(), 3035);
        CoordSysFactory::setAffineParams(*grid, {"m"_s, "2"_s, "0"_s, "10"_s, "0"_s, "3"_s, "20"_s});
        grid->setRectCoordSystem({0.0, 0.0, 1e7, 1e7});
        QVERIFY2(grid->prjStr().endsWith("2, 0, 8642010, 0, 3, 9630020 Bounds (0, 0) (10000000, 10000000)"_s),
                 qPrintable(grid->prjStr()));
        QPointF one, other;
        QVERIFY(grid->forward({12.0, 50.0}, one));
        QVERIFY(m_factory->createFromPrj(grid->prjStr())->forward({12.0, 50.0}, other));
        QVERIFY(std::hypot(one.x() - other.x(), one.y() - other.y()) < samePlace);
    }

private:
    std::shared_ptr<CoordSysFactory> m_factory;
};

NIVORA_TEST(TestRoundTrip)
#include "tst_roundtrip.moc"
