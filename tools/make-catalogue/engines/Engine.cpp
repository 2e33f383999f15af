#include "engines/Engine.h"

#include <cpl_conv.h>
#include <cpl_error.h>
#include <ogr_srs_api.h>

#include <cmath>
#include <limits>

namespace catalogue {
namespace {

constexpr double degreeRad = 0.017453292519943295;

using Handle = std::unique_ptr<void, void (*)(OGRSpatialReferenceH)>;
using Transformation = std::unique_ptr<void, void (*)(OGRCoordinateTransformationH)>;

} // namespace

Srs::Srs(std::shared_ptr<void> handle)
    : m_handle(std::move(handle))
{
    OSRSetAxisMappingStrategy(m_handle.get(), OAMS_TRADITIONAL_GIS_ORDER);
}

Srs Srs::fresh() { return Srs({OSRNewSpatialReference(nullptr), OSRDestroySpatialReference}); }
Srs Srs::fromHandle(std::shared_ptr<void> handle) { return Srs(std::move(handle)); }

std::optional<Srs> Srs::fromCoordSys(const QString &text)
{
    Srs made = fresh();
    if (OSRImportFromMICoordSys(made.m_handle.get(), text.toUtf8().constData()) != OGRERR_NONE)
        return std::nullopt;
    return made;
}

std::optional<Srs> Srs::fromEpsg(int code)
{
    Srs made = fresh();
    if (OSRImportFromEPSG(made.m_handle.get(), code) != OGRERR_NONE)
        return std::nullopt;
    return made;
}

bool Srs::isGeographic() const { return OSRIsGeographic(m_handle.get()) != 0; }
bool Srs::isLocal() const { return OSRIsLocal(m_handle.get()) != 0; }
double Srs::semiMajor() const { return OSRGetSemiMajor(m_handle.get(), nullptr); }
double Srs::semiMinor() const { return OSRGetSemiMinor(m_handle.get(), nullptr); }
double Srs::primeMeridian() const { return OSRGetPrimeMeridian(m_handle.get(), nullptr); }

QString Srs::attribute(const char *name) const
{
    return QString::fromUtf8(OSRGetAttrValue(m_handle.get(), name, 0));
}

std::vector<double> Srs::toWgs84() const
{
    std::vector<double> figures(7, 0.0);
    OSRGetTOWGS84(m_handle.get(), figures.data(), 7);
    return figures;
}

QString Srs::toCoordSys() const
{
    char *raw = nullptr;
    const OGRErr code = OSRExportToMICoordSys(m_handle.get(), &raw);
    const std::unique_ptr<char, void (*)(void *)> text(raw, VSIFree);
    return code == OGRERR_NONE ? QString::fromUtf8(text.get()) : QString();
}

Points Srs::plane(const Points &degrees) const
{
    const double bad = std::numeric_limits<double>::infinity();
    const Handle base(OSRCloneGeogCS(m_handle.get()), OSRDestroySpatialReference);
    if (!base)
        return Points(degrees.size(), QPointF(bad, bad));
    OSRSetAxisMappingStrategy(base.get(), OAMS_TRADITIONAL_GIS_ORDER);
    // Grads are the one other unit in use.
    const double perUnit = OSRGetAngularUnits(base.get(), nullptr) / degreeRad;
    const double scale = std::fabs(perUnit - 1.0) < 1e-12 ? 1.0 : 1.0 / perUnit;
    const Transformation forward(OCTNewCoordinateTransformation(base.get(), m_handle.get()),
                                 OCTDestroyCoordinateTransformation);
    std::vector<double> xs, ys, zs(degrees.size(), 0.0);
    std::vector<int> done(degrees.size(), 0);
    for (const QPointF &p : degrees) {
        xs.push_back(p.x() * scale);
        ys.push_back(p.y() * scale);
    }
    if (forward)
        OCTTransformEx(forward.get(), static_cast<int>(xs.size()), xs.data(), ys.data(), zs.data(),
                       done.data());
    Points result;
    for (std::size_t i = 0; i < degrees.size(); ++i) {
        const bool good = done[i] && std::isfinite(xs[i]) && std::isfinite(ys[i]);
        result.push_back(good ? QPointF(xs[i], ys[i]) : QPointF(bad, bad));
    }
    return result;
}

void prepareEngines()
{
    CPLSetConfigOption("MITAB_SET_TOWGS84_ON_KNOWN_DATUM", "YES");
    CPLSetErrorHandler(CPLQuietErrorHandler);
}

} // namespace catalogue
