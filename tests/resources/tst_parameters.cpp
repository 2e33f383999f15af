// The shipped parameter catalogues against the driver that they describe.

#include "Catalogue.h"

#include <support/Support.h>

#include <coordsys/ProjectionParamsManager.h>

#include <cpl_conv.h>
#include <cpl_error.h>
#include <ogr_srs_api.h>
#include <proj.h>

#include <array>
#include <cmath>

using namespace nivora::cs;
using catalogue::Pj;
using catalogue::summary;

namespace {

using Srs = std::unique_ptr<void, void (*)(OGRSpatialReferenceH)>;
using Figures = std::array<double, 10>; // semi-major axis, inverse flattening, TOWGS84, meridian

constexpr double sameAxis = 1e-9;   // relative: the files carry the driver's own digits
constexpr double sameFigure = 1e-9; // metres, arc-seconds, ppm, degrees

Srs driverSystem(const QString &coordSys)
{
    Srs srs(OSRNewSpatialReference(nullptr), OSRDestroySpatialReference);
    const bool read = OSRImportFromMICoordSys(srs.get(), coordSys.toUtf8().constData()) == OGRERR_NONE;
    return read ? std::move(srs) : Srs(nullptr, OSRDestroySpatialReference);
}

/// Rotations come back in MapInfo's sign.
Figures driverDatum(int number)
{
    const Srs srs = driverSystem("Earth Projection 1, %1"_s.arg(number));
    Figures f{};
    if (!srs)
        return f;
    f[0] = OSRGetSemiMajor(srs.get(), nullptr);
    f[1] = OSRGetInvFlattening(srs.get(), nullptr);
    OSRGetTOWGS84(srs.get(), &f[2], 7);
    for (std::size_t i = 5; i < 8; ++i)
        f[i] = -f[i];
    f[9] = OSRGetPrimeMeridian(srs.get(), nullptr);
    return f;
}

/// The driver knows no such number: it falls back to WGS 84 without a word.
bool unknownToDriver(int number)
{
    const Srs srs = driverSystem("Earth Projection 1, %1"_s.arg(number));
    return !srs || (number != 104 && QByteArray(OSRGetAttrValue(srs.get(), "DATUM", 0)) == "WGS_1984" &&
                    QByteArray(OSRGetAttrValue(srs.get(), "SPHEROID", 0)) == "WGS 84");
}

} // namespace

class TestParameters : public QObject
{
    Q_OBJECT
private Q_SLOTS:
    void initTestCase()
    {
        CPLSetConfigOption("MITAB_SET_TOWGS84_ON_KNOWN_DATUM", "YES");
        QVERIFY(support::shippedFactory());
    }

    void numbersOfTheDriver()
    {
        // 161 and 1017 come with an ellipsoid that the driver does not know.
        const QSet<int> leftOut{161, 1017};
        ProjectionParamsManager params;
        QVERIFY(params.initFromXML(support::resources(), "en"_s));
        QStringList faults;
        CPLPushErrorHandler(CPLQuietErrorHandler);
        for (int number = 0; number < 1200; ++number)
            if (number != 999 && !leftOut.contains(number) &&
                unknownToDriver(number) == !!params.datumByID(number))
                faults << QString::number(number);
        CPLPopErrorHandler();
        QVERIFY2(faults.isEmpty(), qPrintable(summary(faults)));
        QCOMPARE(params.projections().size(), std::size_t(36)); // 0 to 35
        QCOMPARE(params.datums().front()->id, 104);             // the first of equal datums is found
        QCOMPARE(params.findDatumByParams(0, {0, 0, 0}, {0, 0, 0}, 0, 0), 74);
    }

    void figuresOfTheDriver()
    {
        QStringList faults;
        for (const auto &language : {"ru"_s, "en"_s}) {
            ProjectionParamsManager params;
            QVERIFY(params.initFromXML(support::resources(), language));
            for (const auto &datum : params.datums()) {
                const MIEllipsoidParam *ellipsoid = params.ellipsoidByID(datum->ellipsoid);
                QVERIFY2(ellipsoid, qPrintable(datum->name));
                const Figures driver = driverDatum(datum->id);
                // clang-format off
            const Figures file{ellipsoid->semi_major, ellipsoid->inv_flatenning, datum->dx, datum->dy, datum->dz,
                               datum->rx, datum->ry, datum->rz, datum->sa, datum->pm};
                // clang-format on
                for (std::size_t i = 0; i < file.size(); ++i) {
                    const double tolerance = i < 2 ? sameAxis * file[i] : sameFigure;
                    const bool lost = datum->id == 1031 && i >= 2;
                    if (!lost && !(std::fabs(file[i] - driver[i]) <= tolerance))
                        faults << "datum %1, figure %2: off by %3"_s.arg(datum->id).arg(i).arg(file[i] -
                                                                                               driver[i]);
                }
                if (datum->name.isEmpty())
                    faults << "datum %1 has no name"_s.arg(datum->id);
            }
        }
        QVERIFY2(faults.isEmpty(), qPrintable(summary(faults)));
    }

    void datumThatTheDriverLoses()
    {
        // The driver reads 1031 as EPSG:4683, which carries no shift; the figures are those of EPSG 15708.
        const Pj operation = catalogue::registered("15708", PJ_CATEGORY_COORDINATE_OPERATION);
        std::array<double, 7> expected{};
        QVERIFY(proj_coordoperation_get_towgs84_values(nullptr, operation.get(), expected.data(), 7, 0));
        const MIDatumParam *datum = support::shippedFactory()->projectionParamsManager()->datumByID(1031);
        QVERIFY(datum);
        const std::array<double, 7> file{datum->dx,  datum->dy,  datum->dz, -datum->rx,
                                         -datum->ry, -datum->rz, datum->sa};
        for (std::size_t i = 0; i < 7; ++i)
            QVERIFY2(std::fabs(file[i] - expected[i]) < sameFigure, qPrintable(QString::number(i)));
    }

    void units()
    {
        const auto params = support::shippedFactory()->projectionParamsManager();
        QStringList faults;
        for (const auto &unit : params->linearUnits()) {
            if (unit->id == LinearUnit::Degree) {
                QVERIFY(unit->isDegree());
                continue;
            }
            const Srs srs = driverSystem("NonEarth Units \"%1\""_s.arg(unit->name()));
            // The driver takes an unknown name for metres.
            const double factor = srs ? OSRGetLinearUnits(srs.get(), nullptr) : 0.0;
            if (!(std::fabs(factor - unit->conversion()) <= 1e-12 * factor) ||
                unit->localizedName().isEmpty())
                faults << unit->name();
            if (params->areaUnitByID(unit->id, std::nothrow))
                faults << "code %1 is a length and an area"_s.arg(unit->id);
        }
        QVERIFY2(faults.isEmpty(), qPrintable(summary(faults)));
    }
};

NIVORA_TEST(TestParameters)
#include "tst_parameters.moc"
