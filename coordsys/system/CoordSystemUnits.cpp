#include <coordsys/CoordSystem.h>

#include "CoordSysTexts_p.h"
#include "CoordSystem_p.h"
#include "OsrHandle_p.h"
#include "SpatialReferenceText_p.h"
#include <coordsys/ProjectionParamsManager.h>

#include <proj.h>

#include <QMutexLocker>
#include <QRegularExpression>
#include <QWriteLocker>

#include <cmath>

// What a system counts in.

namespace nivora::cs {
namespace {

/// How GDAL names a unit, or how long it is: a row is a name or, without one, a factor to metres.
struct UnitRule
{
    const char *name;
    double factor;
    LinearUnit::MIUnitCode code;
};
// The first hit wins: names come before factors where two units are close.
constexpr UnitRule unitRules[] = {
    {"Mile", 0.0, LinearUnit::Mile},
    {"IMILE", 0.0, LinearUnit::Mile},
    {nullptr, 1000.0, LinearUnit::Kilometer},
    {nullptr, 0.0254, LinearUnit::Inch},
    {"Foot (International)", 0.0, LinearUnit::Foot},
    {"IYARD", 0.0, LinearUnit::Yard},
    {nullptr, 0.9144, LinearUnit::Yard},
    {nullptr, 0.001, LinearUnit::Millimeter},
    {nullptr, 0.01, LinearUnit::Centimeter},
    {"Meter", 0.0, LinearUnit::Meter},
    {"metre", 0.0, LinearUnit::Meter},
    {"Foot_US", 0.0, LinearUnit::SurveyFoot},
    {"US survey foot", 0.0, LinearUnit::SurveyFoot},
    {"Nautical Mile", 0.0, LinearUnit::NauticalMile},
    {"Link", 0.0, LinearUnit::Link},
    {"Chain", 0.0, LinearUnit::Chain},
    {"Rod", 0.0, LinearUnit::Rod},
};

/// PROJ's chain and link bear the names of the survey units and are six millionths shorter.
bool isLength(const MIUnitConvParam &unit, double factor)
{
    return std::fabs(unit.conversion() - factor) <= 1e-9 * factor;
}

const MIUnitConvParam *unitByRule(const ProjectionParamsManager &manager, const QString &name, double factor)
{
    for (const UnitRule &rule : unitRules) {
        const bool hit = rule.name ? name.compare(QLatin1String(rule.name), Qt::CaseInsensitive) == 0
                                   : qFuzzyCompare(factor, rule.factor);
        const MIUnitConvParam *unit = hit ? manager.unitByID(rule.code, std::nothrow) : nullptr;
        if (unit && isLength(*unit, factor))
            return unit;
    }
    return nullptr;
}

/// GDAL says "unknown", "foot" or "Statute mile" where the rules expect other words; the length still tells.
const MIUnitConvParam *unitByLength(const ProjectionParamsManager &manager, double factor)
{
    for (const auto &unit : manager.linearUnits())
        if (unit->id != LinearUnit::Degree && isLength(*unit, factor))
            return unit.get();
    return nullptr;
}

/// Whether PROJ text says that it is of a plane in metres, which need not be asked of GDAL then: it copies a
/// reference that has a shift for each question (60 us).
bool isMetricPlane(const QString &proj)
{
    static const QRegularExpression metres(QStringLiteral("\\+units=m(?=\\s|$)")); // "+units=m"
    // "+to_meter=0.3", "+proj=ob_tran", a second step
    static const QRegularExpression other(
        QStringLiteral("\\+(to_meter=|step|proj=(ob_tran|pipeline|longlat|latlong|lonlat|latlon))"));
    return metres.match(proj).hasMatch() && !other.match(proj).hasMatch();
}

} // namespace

double CoordSystemPrivate::osrLinearUnits(QString *name) const
{
    void *const reference = srs();
    if (!reference)
        return 0.0;
    const QMutexLocker lock(globalProj4Mutex());
    const CplErrorScope quiet;
    char *borrowed = nullptr;
    const double factor = OSRGetLinearUnits(reference, &borrowed);
    if (name)
        *name = QString::fromUtf8(borrowed);
    return factor;
}

/// The unit of most systems, which their PROJ object tells; null where GDAL has to be asked.
const MIUnitConvParam *CoordSystemPrivate::plainUnit(const ProjectionParamsManager &manager) const
{
    if (isLatLong())
        return manager.unitByID(LinearUnit::Degree, std::nothrow);
    const PJ *const main = pj();
    if (!main || isNonEarth())
        return nullptr;
    const QMutexLocker lock(globalProj4Mutex());
    const char *text = proj_as_proj_string(globalProjContext(), main, PJ_PROJ_4, nullptr);
    const MIUnitConvParam *metre = manager.unitByID(LinearUnit::Meter, std::nothrow);
    return metre && isLength(*metre, 1.0) && isMetricPlane(QString::fromUtf8(text)) ? metre : nullptr;
}

LinearUnit CoordSystemPrivate::detectUnitLocked(const ProjectionParamsManager &manager,
                                                QString *osrName) const
{
    if (m_detectedUnit)
        return m_detectedUnit;
    const MIUnitConvParam *unit = plainUnit(manager);
    if (!unit) {
        QString name;
        const double factor = osrLinearUnits(&name);
        const bool isAngle = isLatLong() || isRotated();
        unit =
            isAngle ? manager.unitByID(LinearUnit::Degree, std::nothrow) : unitByRule(manager, name, factor);
        if (!unit && !isAngle)
            unit = unitByLength(manager, factor);
        if (osrName)
            *osrName = name;
    }
    if (unit)
        m_detectedUnit = *unit;
    return m_detectedUnit;
}

LinearUnit CoordSystem::unit() const
{
    const AskedCatalogues asked(d->m_catalogues);
    return unit(*activeCatalogues()->projectionParamsManager());
}

LinearUnit CoordSystem::unit(const ProjectionParamsManager &manager) const
{
    QString name;
    d->ensureMade(); // asks catalogues: never under the lock
    {
        const QWriteLocker lock(&d->m_lock);
        if (const LinearUnit found = d->detectUnitLocked(manager, &name))
            return found;
    }
    QString text = d->m_source.string;
    const QuietExportScope quiet; // an exception is no reason to log as well
    try {
        text = d->sourcePrj();
    } catch (const std::exception &) {
        // a system that cannot be written as a CoordSys string is named by its source
    }
    throw std::logic_error(CoordSysTexts::tr("Не могу определить единицы измерения (%1) КС (%2).")
                               .arg(name, text)
                               .toStdString());
}

} // namespace nivora::cs
