#include "Soak.h"

#include <coordsys/CoordSysFactory.h>
#include <coordsys/CoordTransform.h>

#include <cmath>
#include <cstdio>

using namespace nivora::cs;

namespace {

// echo 51.4 39 | cs2cs -f %.4f EPSG:4326 EPSG:32637
constexpr double easting = 500000.0;
constexpr double northing = 5694307.9291;
constexpr double tolerance = 1e-3; // metres; cs2cs printed ten times finer

SoakStatus convertPoint(CoordSysFactory &factory)
{
    const CoordTransform toUtm(factory.createFromEpsg(4326), factory.createFromEpsg(32637));
    QPointF out;
    const bool right = toUtm.forward(QPointF(39.0, 51.4), out) &&
                       std::hypot(out.x() - easting, out.y() - northing) < tolerance;
    return right ? Right : Wrong;
}

} // namespace

std::shared_ptr<CoordSysFactory> startFactory(const char *resources)
{
    const QString dir = QString::fromLocal8Bit(resources ? resources : NIVORA_RESOURCES);
    auto factory =
        std::make_shared<CoordSysFactory>(dir, QStringLiteral("/nonexistent"), QStringLiteral("en"));
    if (!factory->initCoordSystemEnvironment())
        return nullptr;
    CoordSysFactory::setDefaultCoordSysFactory(factory);
    return factory;
}

int soakStartUp(const char *resources)
{
    try {
        const auto factory = startFactory(resources);
        return factory ? convertPoint(*factory) : NotStarted;
    } catch (const std::exception &e) {
        std::fprintf(stderr, "%s\n", e.what());
        return Refused;
    }
}
