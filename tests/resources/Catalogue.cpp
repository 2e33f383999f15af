#include "Catalogue.h"

#include <support/Support.h>

#include <coordsys/MapinfoCoordSystem.h>

#include <QtMath>

#include <cmath>

using namespace nivora::cs;

namespace catalogue {

std::vector<Item> items(int step)
{
    std::vector<Item> result;
    const QList<CoordSystemParamsList> list =
        support::shippedFactory()->mapinfoCoordSystem()->projectionList();
    int count = 0;
    for (int c = 0; c < list.size(); ++c)
        for (int i = 0; i < list.at(c).entries.size(); ++i)
            if (count++ % step == 0)
                result.push_back({list.at(c).entries.at(i), c, i});
    return result;
}

constexpr std::size_t parts = 8;

void addParts()
{
    QTest::addColumn<int>("part");
    for (int part = 0; part < int(parts); ++part)
        QTest::addRow("part %d", part + 1) << part;
}

std::vector<Item> itemsOfPart()
{
    QFETCH(int, part);
    const std::vector<Item> all = items(sampleStep());
    std::vector<Item> result;
    for (std::size_t i = std::size_t(part); i < all.size(); i += parts)
        result.push_back(all[i]);
    return result;
}

QString summary(const QStringList &faults)
{
    return faults.isEmpty() ? QString()
                            : "%1 faults:\n%2"_s.arg(QString::number(faults.size()),
                                                     faults.mid(0, 20).join(QLatin1Char('\n')));
}

Pj registered(const QByteArray &code, PJ_CATEGORY category, const QByteArray &authority)
{
    return Pj(
        proj_create_from_database(nullptr, authority.constData(), code.constData(), category, 0, nullptr),
        proj_destroy);
}

Figure::Figure(const PJ *crs)
{
    const Pj ellipsoid(proj_get_ellipsoid(nullptr, crs), proj_destroy);
    proj_ellipsoid_get_parameters(nullptr, ellipsoid.get(), &semiMajor, &semiMinor, nullptr, nullptr);
    const Pj meridian(proj_get_prime_meridian(nullptr, crs), proj_destroy);
    double perUnit = 1.0;
    proj_prime_meridian_get_parameters(nullptr, meridian.get(), &primeMeridian, &perUnit, nullptr);
    primeMeridian *= qRadiansToDegrees(perUnit);
}

Definition::Definition(const QByteArray &authority, const QByteArray &code)
    : crs(registered(code, PJ_CATEGORY_CRS, authority))
    , base(proj_crs_get_geodetic_crs(nullptr, crs.get()), proj_destroy)
    , toPlane(nullptr, proj_destroy)
    , figure(base.get())
{
    double perUnit = 1.0;
    const Pj baseAxes(proj_crs_get_coordinate_system(nullptr, base.get()), proj_destroy);
    proj_cs_get_axis_info(nullptr, baseAxes.get(), 0, nullptr, nullptr, nullptr, &perUnit, nullptr, nullptr,
                          nullptr);
    degreesPerUnit = qRadiansToDegrees(perUnit);
    const Pj axes(proj_crs_get_coordinate_system(nullptr, crs.get()), proj_destroy);
    proj_cs_get_axis_info(nullptr, axes.get(), 0, nullptr, nullptr, nullptr, &metresPerUnit, nullptr, nullptr,
                          nullptr);
    const Pj raw(proj_create_crs_to_crs_from_pj(nullptr, base.get(), crs.get(), nullptr, nullptr),
                 proj_destroy);
    toPlane.reset(proj_normalize_for_visualization(nullptr, raw.get()));
    proj_get_area_of_use(nullptr, crs.get(), &west, &south, &east, &north, nullptr);
    if (east < west)
        east += 360.0;
}

QVector<QPointF> Definition::grid() const
{
    QVector<QPointF> points;
    for (double u : {0.1, 0.5, 0.9})
        for (double v : {0.1, 0.5, 0.9})
            points << QPointF(std::remainder(west + (east - west) * u, 360.0),
                              qBound(-89.9, south + (north - south) * v, 89.9));
    return points;
}

QPointF Definition::plane(const QPointF &lonLat) const
{
    const PJ_COORD c = proj_trans(toPlane.get(), PJ_FWD, onBase(lonLat));
    return QPointF(c.xy.x, c.xy.y) * metresPerUnit;
}

PJ_COORD Definition::onBase(const QPointF &lonLat) const
{
    return proj_coord(std::remainder(lonLat.x() - figure.primeMeridian, 360.0) / degreesPerUnit,
                      lonLat.y() / degreesPerUnit, 0.0, HUGE_VAL);
}

} // namespace catalogue
