// EPSG codes written as CoordSys text and read back: what a MapInfo reader of our files would get.

#include "Catalogue.h"
#include "Published.h"

#include <support/Support.h>

#include <coordsys/MapHeaderCoordsysConverter.h>
#include <coordsys/MapinfoCoordSystem.h>
#include <coordsys/ProjectionParamsManager.h>

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

    void otherCodesClaimNoWrongDatum()
    {
        std::vector<int> codes;
        for (const PJ_TYPE type : {PJ_TYPE_GEOGRAPHIC_2D_CRS, PJ_TYPE_PROJECTED_CRS}) {
            PROJ_STRING_LIST list = proj_get_codes_from_database(nullptr, "EPSG", type, 1);
            for (PROJ_STRING_LIST each = list; each && *each; ++each)
                codes.push_back(QByteArray(*each).toInt());
            proj_string_list_destroy(list);
        }
        QSet<int> catalogued;
        for (const Item &item : catalogue::items())
            catalogued << item.entry.epsg();

        constexpr double farOff = 100.0; // metres: as for the entries of the catalogue
        catalogue::Published published;
        QStringList faults;
        int told = 0, refused = 0;
        for (std::size_t i = 0; i < codes.size(); i += static_cast<std::size_t>(catalogue::sampleStep())) {
            if (catalogued.contains(codes[i]))
                continue;
            CoordSystemPtr read;
            {
                const support::LogCapture log;
                try {
                    read = m_factory->createWithoutDescription(m_factory->createFromEpsg(codes[i])->prjStr());
                } catch (const std::exception &) {
                    ++refused; // no text, hence no claim
                    continue;
                }
                if (!support::LogCapture::lines("error"_s).isEmpty()) {
                    ++told;
                    continue;
                }
            }
            const Definition definition(codes[i]);
            const auto &operations = published.of(definition.base.get());
            const catalogue::Distances off = catalogue::distances(read, definition, operations);
            // 3785 is the web Mercator under its first number: on a sphere, by the angles of WGS 84.
            if (operations.empty() ? codes[i] != 3785 : !(off.best <= farOff))
                faults << "%1: %2 m: %3"_s.arg(QString::number(codes[i]), QString::number(off.best),
                                               read->prjStr());
        }
        QVERIFY(told > refused);
        QVERIFY2(faults.isEmpty(), qPrintable(summary(faults)));
    }

private:
    std::shared_ptr<CoordSysFactory> m_factory;
};

NIVORA_TEST(TestRoundTrip)
#include "tst_roundtrip.moc"
