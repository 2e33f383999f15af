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

/// Codes of systems of longitude and latitude or of a plane, a sample, without those of \p left.
QList<QByteArray> codesOf(const QByteArray &authority, int step, const QSet<int> &left = {})
{
    QList<QByteArray> codes;
    int count = 0;
    for (const PJ_TYPE type : {PJ_TYPE_GEOGRAPHIC_2D_CRS, PJ_TYPE_PROJECTED_CRS}) {
        PROJ_STRING_LIST list = proj_get_codes_from_database(nullptr, authority.constData(), type, 1);
        for (PROJ_STRING_LIST each = list; each && *each; ++each)
            if (!left.contains(QByteArray(*each).toInt()) && count++ % step == 0)
                codes << *each;
        proj_string_list_destroy(list);
    }
    return codes;
}

/// What a text has otherwise than PROJ's own system, empty when it stands for that one.
QString otherThan(const Definition &definition, const PrjText &text, CoordSysFactory &factory)
{
    constexpr double sameAxis = 0.05; // metres, as much as a text may be off when that is told
    const CoordSystemPtr read = factory.createFromPrj(text.text);
    const double axes = std::max(std::fabs(definition.figure.semiMajor - read->getSemiMajor()),
                                 std::fabs(definition.figure.semiMinor - read->getSemiMinor()));
    const double meridian = MapHeaderCoordsysConverter().prjStrToTABProjInfo(text.text).adDatumParams[4];
    double off = 0.0, strange = 0.0;
    const int found = read->epsg();
    const Definition stranger(found > 0 ? found : 4326);
    for (const QPointF &lonLat : definition.isProjected() ? definition.grid() : QVector<QPointF>()) {
        const QPointF plane = definition.plane(lonLat);
        QPointF image;
        const bool ok = read->forward(lonLat, image);
        if (ok != std::isfinite(plane.x()))
            return "only one of them has a place"_s;
        image = image * definition.metresPerUnit - plane;
        off = std::max(off, ok ? std::hypot(image.x(), image.y()) : 0.0);
        const QPointF apart = found > 0 && ok ? stranger.plane(lonLat) - plane : QPointF();
        strange = std::max(strange, std::hypot(apart.x(), apart.y()));
    }
    const bool same = read->isLatLong() != definition.isProjected() && axes <= sameAxis &&
                      std::fabs(meridian - definition.figure.primeMeridian) <= 1e-8 && strange <= sameAxis &&
                      off <= text.planeErrorM + samePlace && text.planeErrorM <= sameAxis;
    return same ? QString()
                : "%1 m, axes %2 m, code %3 %4 m away: %5"_s.arg(QString::number(off), QString::number(axes),
                                                                 QString::number(found),
                                                                 QString::number(strange), text.text);
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

    /// A text is refused with its reason, or it has the code's plane, ellipsoid and meridian and reads back
    /// as no system with another plane.
    void noCodeGivesAnotherPlane_data()
    {
        const support::Columns<QString, bool> row; // authority, some of its systems have a text
        row("EPSG's that the catalogue lacks", "EPSG", true);
        row.named("ESRI", true);
        row.named("IGNF", true);
        row.named("IAU_2015", false);
    }
    void noCodeGivesAnotherPlane()
    {
        const auto [authority, hasTexts] = support::row<QString, bool>();
        QSet<int> left;
        for (const Item &item : authority == "EPSG"_s ? catalogue::items() : std::vector<Item>())
            left << item.entry.epsg();
        QStringList faults;
        int written = 0;
        for (const QByteArray &code : codesOf(authority.toLatin1(), 2 * catalogue::sampleStep(), left)) {
            const QString name = authority + QLatin1Char(':') + QString::fromLatin1(code);
            CoordSystemPtr made;
            try {
                made = m_factory->createFromUserInput(name);
            } catch (const std::exception &) {
                continue; // PROJ cannot compute in it
            }
            const PrjText text = prjTextOf(*made);
            QString fault = "refused without a reason"_s;
            if (!text.isRefused())
                fault = otherThan(Definition(authority.toLatin1(), code), text, *m_factory);
            else if (!text.reason().isEmpty())
                fault.clear();
            written += text.isRefused() ? 0 : 1;
            if (!fault.isEmpty())
                faults << name + QLatin1Char(' ') + fault;
        }
        QCOMPARE(written * catalogue::sampleStep() > 100, hasTexts);
        QVERIFY2(faults.isEmpty(), qPrintable(summary(faults)));
    }

    /// In whatever notation a code's system came, as far as it is found to be that of a code.
    void oneTextByEveryNotation()
    {
        constexpr int rarer = 10; // five notations each, and searches
        QStringList faults;
        for (const QByteArray &code : codesOf("EPSG", rarer * catalogue::sampleStep())) {
            CoordSystemPtr made;
            try {
                made = m_factory->createFromEpsg(code.toInt());
            } catch (const ProjException &) {
                continue;
            }
            for (const SystemFormat format : {SystemFormat::Wkt1, SystemFormat::Wkt2, SystemFormat::Esri,
                                              SystemFormat::ProjJson, SystemFormat::Proj}) {
                const CoordSystemPtr read = m_factory->createFromUserInput(exportSystem(*made, format));
                const int found = read->epsg();
                if (found <= 0)
                    continue;
                const PrjText expected = prjTextOf(*m_factory->createFromEpsg(found));
                const PrjText text = prjTextOf(*read);
                if (text.text != expected.text || text.lack != expected.lack)
                    faults << "%1 by notation %2: %3, not %4"_s.arg(
                        QString::fromLatin1(code), QString::number(int(format)), text.text, expected.text);
            }
        }
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
        for (const SystemFormat format :
             {SystemFormat::Wkt1, SystemFormat::Wkt2, SystemFormat::Esri, SystemFormat::ProjJson})
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
