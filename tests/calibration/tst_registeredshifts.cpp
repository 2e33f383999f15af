#include <support/Support.h>

#include <coordsys/Calibration.h>
#include <coordsys/ProjEngine.h>

#include <proj.h>

#include <array>
#include <cmath>
#include <memory>

using namespace nivora::cs;
using Model = CalibrationModel;

namespace {

/// A transformation with seven figures, and places of its area by it.
struct Registered
{
    QString name;
    double a = 0.0, b = 0.0; ///< of the source's ellipsoid
    QVector<CalibrationPair> pairs;
    CalibrationPair inside;
};

using Object = std::unique_ptr<PJ, decltype(&proj_destroy)>;

bool leadsToWgs84(const PJ *operation)
{
    const Object target(proj_get_target_crs(globalProjContext(), operation), proj_destroy);
    return target && qstrcmp(proj_get_id_code(target.get(), 0), "4326") == 0;
}

/// False when the transformation is of another kind.
bool read(const PJ *operation, Registered &shift)
{
    std::array<double, 7> seven{};
    double west = 0.0, south = 0.0, east = 0.0, north = 0.0;
    if (!proj_coordoperation_get_towgs84_values(globalProjContext(), operation, seven.data(), 7, 0) ||
        seven[3] == 0.0 || !leadsToWgs84(operation) ||
        !proj_get_area_of_use(globalProjContext(), operation, &west, &south, &east, &north, nullptr) ||
        east <= west)
        return false;
    const Object source(proj_get_source_crs(globalProjContext(), operation), proj_destroy);
    const Object ellipsoid(proj_get_ellipsoid(globalProjContext(), source.get()), proj_destroy);
    proj_ellipsoid_get_parameters(globalProjContext(), ellipsoid.get(), &shift.a, &shift.b, nullptr, nullptr);
    shift.name = QString::fromUtf8(proj_get_name(operation));
    const Object way(proj_normalize_for_visualization(globalProjContext(), operation), proj_destroy);
    const auto pairAt = [&](double x, double y) {
        const QPointF local(west + x * (east - west), south + y * (north - south));
        const PJ_COORD known = proj_trans(way.get(), PJ_FWD, proj_coord(local.x(), local.y(), 0, 0));
        CalibrationPair pair;
        pair.local = local;
        pair.known = {known.xy.x, known.xy.y};
        return pair;
    };
    for (int i = 0; i < 16; ++i)
        shift.pairs << pairAt((i % 4) / 3.0, (i / 4) / 3.0);
    shift.inside = pairAt(0.4, 0.7);
    return true;
}

/// Every so many of EPSG's.
QVector<Registered> shiftsOfTheDatabase(int step)
{
    QVector<Registered> result;
    PROJ_STRING_LIST codes =
        proj_get_codes_from_database(globalProjContext(), "EPSG", PJ_TYPE_TRANSFORMATION, 0);
    int found = 0;
    for (PROJ_STRING_LIST code = codes; code && *code; ++code) {
        const Object one(proj_create_from_database(globalProjContext(), "EPSG", *code,
                                                   PJ_CATEGORY_COORDINATE_OPERATION, 0, nullptr),
                         proj_destroy);
        Registered shift;
        if (one && read(one.get(), shift) && found++ % step == 0)
            result << shift;
    }
    proj_string_list_destroy(codes);
    return result;
}

} // namespace

class TestRegisteredShifts : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    // What national agencies published as seven figures is found again from places in the area where it
    // holds.
    void registeredShifts()
    {
        const CoordSystemPtr wgs84 = support::made("EPSG:4326");
        int tried = 0;
        for (const Registered &shift : shiftsOfTheDatabase(12)) {
            const Calibration::Local local{
                {},
                support::made("proj:+proj=longlat +a=%1 +b=%2 +no_defs"_s.arg(shift.a, 0, 'g', 17)
                                  .arg(shift.b, 0, 'g', 17))};
            const CalibrationFit fit = Calibration(wgs84, shift.pairs, local).fit(Model::DatumShift);
            QVERIFY2(fit.isUsable(), qPrintable(shift.name + fit.refusal()));
            QPointF image;
            QVERIFY(fit.image(shift.inside.local, image));
            const QPointF offM = 111e3 * (image - shift.inside.known);
            QVERIFY2(std::hypot(offM.x(), offM.y()) < 5e-3,
                     qPrintable("%1: %2 m"_s.arg(shift.name).arg(std::hypot(offM.x(), offM.y()))));
            ++tried;
        }
        QVERIFY2(tried > 5, qPrintable(QString::number(tried)));
    }
};

NIVORA_TEST(TestRegisteredShifts)
#include "tst_registeredshifts.moc"
