#include <coordsys/SpatialSystem.h>

#include "CoordSysTexts_p.h"
#include "CrsParts_p.h"

#include <QMutexLocker>

#include <algorithm>
#include <stdexcept>

namespace nivora::cs {

struct NIVORA_CS_NO_EXPORT SpatialSystem::Data
{
    QString definition;
    QString name;
    Height height = Height::None;
    bool isGeographic = false;
    bool isDynamic = false;
    QString verticalName;
    QString verticalDatum;
    QString verticalUnit;
    double verticalUnitM = 0.0;
    QString horizontalWkt;

    bool read(PJ_CONTEXT *context, const PJ *root);

private:
    void readVertical(PJ_CONTEXT *context, const PJ *vertical);
    bool readPlane(PJ_CONTEXT *context, const PJ *root);
};

namespace {

/// As PROJ reads it: bare numbers are EPSG's, also two of them ("25832+7837"), PROJ text is a system.
QString readable(const QString &text)
{
    const QString trimmed = text.trimmed();
    const auto isNumber = [](const QString &part) {
        return !part.isEmpty() &&
               std::all_of(part.begin(), part.end(), [](QChar c) { return c >= u'0' && c <= u'9'; });
    };
    const QString vertical = trimmed.section(QLatin1Char('+'), 1);
    if (isNumber(trimmed.section(QLatin1Char('+'), 0, 0)) && (vertical.isEmpty() || isNumber(vertical)) &&
        !trimmed.endsWith(QLatin1Char('+')))
        return QStringLiteral("EPSG:") + trimmed;
    const bool isBare = trimmed.startsWith(QLatin1Char('+')) && !trimmed.contains(QLatin1String("+type=crs"));
    return isBare ? trimmed + QStringLiteral(" +type=crs") : trimmed;
}

struct Axis
{
    QString unit;
    double unitM = 0.0;
    int count = 0; ///< axes of the system
};

/// The last axis.
Axis lastAxis(PJ_CONTEXT *context, const PJ *crs)
{
    Axis axis;
    const PjHandle system = ownPj(proj_crs_get_coordinate_system(context, crs));
    axis.count = system ? proj_cs_get_axis_count(context, system.get()) : 0;
    const char *unit = nullptr;
    if (axis.count > 0 && proj_cs_get_axis_info(context, system.get(), axis.count - 1, nullptr, nullptr,
                                                nullptr, &axis.unitM, &unit, nullptr, nullptr))
        axis.unit = QString::fromUtf8(unit);
    return axis;
}

/// An ensemble has the members' nature, and they have one.
bool hasDynamicDatum(PJ_CONTEXT *context, const PJ *root)
{
    const PjHandle base = ownPj(proj_crs_get_geodetic_crs(context, root));
    const PjHandle ensemble = base ? ownPj(proj_crs_get_datum_ensemble(context, base.get())) : nullptr;
    const PjHandle datum = ensemble ? ownPj(proj_datum_ensemble_get_member(context, ensemble.get(), 0))
                           : base   ? ownPj(proj_crs_get_datum(context, base.get()))
                                    : nullptr;
    return datum && proj_get_type(datum.get()) == PJ_TYPE_DYNAMIC_GEODETIC_REFERENCE_FRAME;
}

} // namespace

/// From PROJ's object. False for what has neither a horizontal part nor a middle of the earth.
bool SpatialSystem::Data::read(PJ_CONTEXT *context, const PJ *root)
{
    name = QString::fromUtf8(proj_get_name(root));
    isDynamic = hasDynamicDatum(context, root);
    const PjHandle crs = sourceOfBoundCrs(context, root);
    const bool isCompound = proj_get_type(crs.get()) == PJ_TYPE_COMPOUND_CRS;
    const PjHandle vertical = isCompound ? ownPj(proj_crs_get_sub_crs(context, crs.get(), 1)) : nullptr;
    const Axis axis = lastAxis(context, vertical ? vertical.get() : crs.get());
    const bool isGeocentric = proj_get_type(crs.get()) == PJ_TYPE_GEOCENTRIC_CRS;
    height = isGeocentric      ? Height::Geocentric
             : vertical        ? Height::Own
             : axis.count == 3 ? Height::Ellipsoidal
                               : Height::None;
    if (vertical)
        readVertical(context, vertical.get());
    if (height != Height::None) {
        verticalUnit = axis.unit;
        verticalUnitM = axis.unitM;
    }
    return isGeocentric || readPlane(context, root);
}

void SpatialSystem::Data::readVertical(PJ_CONTEXT *context, const PJ *vertical)
{
    const PjHandle plain = sourceOfBoundCrs(context, vertical);
    const PjHandle datum = ownPj(proj_crs_get_datum_forced(context, plain.get()));
    verticalName = QString::fromUtf8(proj_get_name(plain.get()));
    verticalDatum = datum ? QString::fromUtf8(proj_get_name(datum.get())) : QString();
}

bool SpatialSystem::Data::readPlane(PJ_CONTEXT *context, const PJ *root)
{
    const PjHandle plane = horizontalPart(context, root);
    if (!plane || kindOf(context, plane.get()) == CrsKind::Other)
        return false;
    isGeographic = kindOf(context, plane.get()) == CrsKind::Geographic;
    horizontalWkt = wkt2Of(context, plane.get());
    return true;
}

SpatialSystem::SpatialSystem(const QString &definition)
{
    auto data = std::make_shared<Data>();
    data->definition = readable(definition);
    const QMutexLocker lock(globalProj4Mutex());
    const PjHandle root = ownPj(proj_create(globalProjContext(), data->definition.toUtf8().constData()));
    if (!root || !proj_is_crs(root.get()) || !data->read(globalProjContext(), root.get()))
        throw std::logic_error(
            CoordSysTexts::tr("Не удалось прочитать КС: %1").arg(definition.left(200)).toStdString());
    m_data = data;
}

SpatialSystem::SpatialSystem(const SpatialSystem &other) = default;
SpatialSystem &SpatialSystem::operator=(const SpatialSystem &other) = default;
SpatialSystem::~SpatialSystem() = default;

QString SpatialSystem::definition() const { return m_data->definition; }

QString SpatialSystem::name() const { return m_data->name; }

SpatialSystem::Height SpatialSystem::height() const { return m_data->height; }

bool SpatialSystem::isDynamic() const { return m_data->isDynamic; }

bool SpatialSystem::isGeographic() const { return m_data->isGeographic; }

QString SpatialSystem::verticalName() const { return m_data->verticalName; }

QString SpatialSystem::verticalDatum() const { return m_data->verticalDatum; }

QString SpatialSystem::verticalUnit() const { return m_data->verticalUnit; }

double SpatialSystem::verticalUnitM() const { return m_data->verticalUnitM; }

QString SpatialSystem::horizontalWkt() const { return m_data->horizontalWkt; }

} // namespace nivora::cs
