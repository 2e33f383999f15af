#include "PrjWriter_p.h"

#include "AffineFit_p.h"
#include "CoordSystem_p.h"
#include "OsrHandle_p.h"
#include "ProjOperation_p.h"
#include "SpatialReferenceText_p.h"
#include <coordsys/MapHeaderCoordsysConverter.h>
#include <coordsys/ProjectionParamsManager.h>
#include <coordsys/SpatialReferenceText.h>
#include <platform/Logger.h>

#include <QMutexLocker>

#include <algorithm>
#include <cmath>

namespace nivora::cs {
namespace {

constexpr double exactM = 1e-3;
constexpr double toleratedM = 0.05;
constexpr double fitM = 1e-5; // an affine clause is no approximation
constexpr double sameMeridianDeg = 1e-8;
constexpr double sameShiftM = 0.01; // and seconds and ppm alike: as the database rounds its shifts

QString textOf(const TABProjInfo_t &record)
{
    return MapHeaderCoordsysConverter().tabProjInfoToString(record);
}

using Lack = PrjText::Lack;

PrjText refused(Lack lack, double lackM = 0.0)
{
    PrjText text;
    text.lack = lack;
    text.lackM = lackM;
    return text;
}

/// A text before a refusal, the nearer one first; of refusals the one with a distance tells most.
bool isBetter(const PrjText &a, const PrjText &b)
{
    if (a.isRefused() != b.isRefused())
        return b.isRefused();
    if (!a.isRefused())
        return a.planeErrorM < b.planeErrorM;
    return a.lack != Lack::Projection &&
           (b.lack == Lack::Projection || (a.lack == b.lack && a.lackM < b.lackM));
}

double &parameter(TABProjInfo_t &record, char letter)
{
    static thread_local double nowhere;
    const int index = projectionByNumber(record.nProjId)->indexOf(letter);
    return index >= 0 ? record.adProjParams[index] : nowhere = 0.0;
}

TABProjInfo_t withoutFalseOrigin(TABProjInfo_t record)
{
    parameter(record, 'e') = 0.0;
    parameter(record, 'n') = 0.0;
    return record;
}

/// The catalogue's record of an EPSG code.
std::optional<TABProjInfo_t> recordOfCode(int code)
{
    const QString prj = code > 0 ? activeCatalogues()->prjOfCode(code) : QString();
    if (prj.isEmpty())
        return std::nullopt;
    try {
        return MapHeaderCoordsysConverter().prjStrToTABProjInfo(prj);
    } catch (const std::exception &e) { // a line of a host's file
        LOG_DEBUG(QString::fromUtf8(e.what()));
        return std::nullopt;
    }
}

/// Of the geographic system beneath: the code that the definition states, else the one found by its datum.
int codeOfBase(const CrsDefinition &definition)
{
    QString wkt;
    {
        const QMutexLocker lock(globalProj4Mutex());
        const PjHandle base = baseOf(globalProjContext(), definition.crs());
        const auto stated = base ? codeOf(base.get(), QLatin1String("EPSG")) : std::nullopt;
        if (!base || stated || !definition.namesDatum())
            return stated.value_or(CoordSystemTypes::EPSG_UNDEFINDED);
        wkt = wkt2Of(globalProjContext(), base.get());
    }
    try {
        return activeCatalogues()->createFromWkt(wkt)->epsg();
    } catch (const std::exception &e) {
        LOG_DEBUG(QString::fromUtf8(e.what()));
        return CoordSystemTypes::EPSG_UNDEFINDED;
    }
}

double axesApartM(double semiMajorM, double semiMinorM, const PlaneFigures &plane)
{
    return std::max(std::fabs(semiMajorM - plane.semiMajorM), std::fabs(semiMinorM - plane.semiMinorM));
}

/// Metres to the nearest ellipsoid of the catalogue, in the axis that differs more.
double nearestEllipsoidM(const PlaneFigures &plane)
{
    double nearest = HUGE_VAL;
    for (const auto &ellipsoid : activeCatalogues()->projectionParamsManager()->ellipsoids()) {
        const double flattening = ellipsoid->inv_flatenning == 0.0 ? 0.0 : 1.0 / ellipsoid->inv_flatenning;
        const double semiMinorM = ellipsoid->semi_major * (1.0 - flattening);
        nearest = std::min(nearest, axesApartM(ellipsoid->semi_major, semiMinorM, plane));
    }
    return nearest;
}

/// Longitude and latitude of a spatial reference as the driver writes them, mended.
TABProjInfo_t driverDatum(void *srs)
{
    std::shared_ptr<void> geographic;
    {
        const QMutexLocker lock(globalProj4Mutex());
        const CplErrorScope quiet;
        geographic = ownSrs(OSRCloneGeogCS(srs));
    }
    return MapHeaderCoordsysConverter().prjStrToTABProjInfo(prjFromSpatialReference(geographic.get()));
}

/// What the driver makes of a spatial reference; none where it may not be asked or loses something.
std::optional<TABProjInfo_t> driverRecord(void *srs)
{
    try {
        return recordFromSpatialReference(srs);
    } catch (const ExportToPrjException &e) {
        LOG_DEBUG(QString::fromUtf8(e.what()));
        return std::nullopt;
    }
}

} // namespace

/// A record as it was read back.
struct PrjWriter::Trial
{
    CoordSystemPtr cs; ///< null when it was refused
    Images images;
    double errorM = HUGE_VAL;
    Lack lack = Lack::Nothing;
    double lackM = 0.0;
};

PrjWriter::PrjWriter(const CoordSystem &cs)
    : m_cs(cs)
    , m_plain(privateOf(cs).duplicate())
    , m_registered(privateOf(cs).registeredIdentity())
    , m_definition(m_registered ? m_registered : privateOf(cs).identity())
{
    m_plain->setAffineTransform(nullptr);
    if (m_definition)
        m_plane = planeFiguresOf(*m_definition);
    if (!m_plane)
        return;
    m_images = imagesIn(*m_plain, m_plane->places);
    m_wideImages = imagesIn(*m_plain, m_plane->widePlaces);
}

/// Not finite where the system has no place.
PrjWriter::Images PrjWriter::imagesIn(const CoordSystem &cs, const QVector<QPointF> &places) const
{
    Images images;
    for (const QPointF &place : places) {
        QPointF image(NAN, NAN);
        cs.forward(place, image);
        images << image;
    }
    return images;
}

/// Of kind, ellipsoid and prime meridian.
Lack PrjWriter::kindLack(const CoordSystem &text, const TABProjInfo_t &record, double &lackM) const
{
    if (text.isNonEarth() || text.isLatLong() != m_plain->isLatLong())
        return Lack::Projection;
    // Michigan's method works on an enlarged ellipsoid, which MapInfo counts to the datum.
    constexpr int ellipsoidScale = 1038; // EPSG's code
    const double scale = m_plane->figure(ellipsoidScale, 1.0);
    const bool isOwn = axesApartM(text.getSemiMajor(), text.getSemiMinor(), *m_plane) <= toleratedM;
    const bool isScaled =
        axesApartM(text.getSemiMajor() / scale, text.getSemiMinor() / scale, *m_plane) <= toleratedM;
    if (!isOwn && !isScaled) {
        lackM = nearestEllipsoidM(*m_plane);
        return Lack::Ellipsoid;
    }
    const bool sameMeridian = std::fabs(record.adDatumParams[4] - m_plane->meridianDeg) <= sameMeridianDeg;
    return sameMeridian ? Lack::Nothing : Lack::PrimeMeridian;
}

PrjWriter::Trial PrjWriter::trial(const TABProjInfo_t &record) const
{
    Trial tried;
    try {
        const CoordSystemPtr text = activeCatalogues()->createWithoutDescription(textOf(record));
        tried.lack = kindLack(*text, record, tried.lackM);
        if (tried.lack != Lack::Nothing)
            return tried;
        tried.cs = text;
    } catch (const std::exception &e) {
        LOG_DEBUG(QString::fromUtf8(e.what()));
        tried.lack = Lack::Projection;
        return tried;
    }
    if (m_plain->isLatLong()) {
        tried.errorM = 0.0;
        return tried;
    }
    tried.images = imagesIn(*tried.cs, m_plane->places);
    const std::optional<double> apart = greatestDistance(tried.images, m_images);
    tried.errorM = apart ? *apart * m_plane->metresPerUnit : HUGE_VAL;
    if (!apart)
        tried.lack = Lack::Places;
    return tried;
}

PrjText PrjWriter::proved(const TABProjInfo_t &record) const
{
    const Trial tried = trial(record);
    if (tried.lack != Lack::Nothing)
        return refused(tried.lack, tried.lackM);
    if (!(tried.errorM <= toleratedM))
        return std::isfinite(tried.errorM) ? refused(Lack::Plane, tried.errorM) : refused(Lack::Projection);
    PrjText text;
    text.text = textOf(record);
    text.planeErrorM = tried.errorM;
    if (record.nAffineFlag)
        text.withoutAffineM = withoutAffineM(record);
    return text;
}

double PrjWriter::withoutAffineM(TABProjInfo_t record) const
{
    record.nAffineFlag = 0;
    return trial(record).errorM;
}

/// The record with what one place-independent scale and shift say put into its own scale and false origin;
/// none when it has no parameters for them.
std::optional<TABProjInfo_t> PrjWriter::absorbed(const TABProjInfo_t &record, const Trial &tried) const
{
    const auto map =
        fittedAffine(imagesIn(*tried.cs, m_plane->widePlaces), m_wideImages, fitM / m_plane->metresPerUnit);
    const Projection &row = *projectionByNumber(record.nProjId);
    if (!map || !row.hasFalseOrigin())
        return std::nullopt;
    const double scale = (*map)[0];
    const bool isPlain = scale > 0.0 && scale == (*map)[4] && (*map)[1] == 0.0 && (*map)[3] == 0.0;
    if (!isPlain || (scale != 1.0 && row.indexOf('s') < 0))
        return std::nullopt;
    TABProjInfo_t mended = record;
    parameter(mended, 's') = withoutDust(parameter(mended, 's') * scale);
    parameter(mended, 'e') = withoutDust(parameter(mended, 'e') * scale + (*map)[2]);
    parameter(mended, 'n') = withoutDust(parameter(mended, 'n') * scale + (*map)[5]);
    return mended;
}

/// None when no affine transformation makes the plane of it.
std::optional<TABProjInfo_t> PrjWriter::withAffine(TABProjInfo_t record) const
{
    record = withoutFalseOrigin(record);
    const Trial tried = trial(record);
    if (!tried.cs)
        return std::nullopt;
    const auto map =
        fittedAffine(imagesIn(*tried.cs, m_plane->widePlaces), m_wideImages, fitM / m_plane->metresPerUnit);
    if (!map)
        return std::nullopt;
    record.nAffineFlag = 1;
    record.nAffineUnits = record.nUnitsId;
    std::copy(map->begin(), map->end(), record.dAffineParams);
    return record;
}

/// The first that is exact, else the nearest, else why the nearest is none.
PrjText PrjWriter::best(const QVector<TABProjInfo_t> &records) const
{
    PrjText nearest = refused(Lack::Projection);
    const auto offer = [&nearest](const PrjText &text) {
        if (isBetter(text, nearest))
            nearest = text;
        return !nearest.isRefused() && nearest.planeErrorM <= exactM;
    };
    for (const TABProjInfo_t &record : records) {
        if (offer(proved(record)))
            return nearest;
        const Trial tried = trial(record);
        const auto mended = tried.cs ? absorbed(record, tried) : std::nullopt;
        if (mended && offer(proved(*mended)))
            return nearest;
    }
    for (const TABProjInfo_t &record : records) {
        const auto mapped = withAffine(record);
        if (mapped && offer(proved(*mapped)))
            return nearest;
    }
    return nearest;
}

QVector<TABProjInfo_t> PrjWriter::candidates(const TABProjInfo_t &datum) const
{
    const auto unitCode = [this] {
        const auto manager = activeCatalogues()->projectionParamsManager();
        try {
            return static_cast<std::uint8_t>(m_plain->unit(*manager).unitCode());
        } catch (const std::exception &) { // no unit of the notation is as long: the clause scales metres
            return static_cast<std::uint8_t>(LinearUnit::Meter);
        }
    }();
    QVector<TABProjInfo_t> records;
    for (const PlaneForm &form : planeFormsOf(*m_plane)) {
        TABProjInfo_t record = form.datum == 0
                                   ? datum
                                   : MapHeaderCoordsysConverter().prjStrToTABProjInfo(
                                         QStringLiteral("Earth Projection 1, %1").arg(form.datum));
        record.nProjId = static_cast<std::uint8_t>(form.projection->number);
        record.nUnitsId = unitCode;
        std::copy_n(form.parameters.begin(), std::size(record.adProjParams), record.adProjParams);
        records << record;
    }
    const auto driver = driverRecord(privateOf(*m_plain).srs());
    if (driver && driver->nProjId > LongitudeLatitude)
        records << *driver;
    return records;
}

PrjText PrjWriter::withDatum(const TABProjInfo_t &datum) const
{
    if (!m_plane || m_definition->kind() == CrsKind::RotatedGeographic)
        return refused(Lack::Projection);
    if (!m_plain->isLatLong())
        return best(candidates(datum));
    TABProjInfo_t record = datum;
    record.nProjId = LongitudeLatitude;
    return proved(record);
}

/// A shift that the definition states and the record has otherwise.
bool PrjWriter::hasOtherShift(const TABProjInfo_t &record) const
{
    if (m_cs.sourceType() == CoordSystem::Epsg || !privateOf(m_cs).hasShift())
        return false;
    const QList<double> own = m_cs.getTOWGS84Params();
    const double *turn = record.adDatumParams; // with MapInfo's sign
    const double written[] = {
        record.dDatumShiftX, record.dDatumShiftY, record.dDatumShiftZ, -turn[0], -turn[1], -turn[2], turn[3]};
    return !std::equal(own.begin(), own.end(), std::begin(written), std::end(written),
                       [](double a, double b) { return std::fabs(a - b) <= sameShiftM; });
}

std::optional<TABProjInfo_t> PrjWriter::catalogued() const
{
    const auto record = recordOfCode(m_cs.epsg() > 0 ? m_cs.epsg() : m_cs.baseCode());
    return record && !hasOtherShift(*record) ? record : std::nullopt;
}

/// That of the catalogue's entry for the geographic system beneath, else what the driver knows.
TABProjInfo_t PrjWriter::ownDatum() const
{
    const auto base = recordOfCode(codeOfBase(*m_definition));
    if (base && !hasOtherShift(*base))
        return *base;
    if (m_registered && (m_cs.sourceType() == CoordSystem::Epsg || !privateOf(m_cs).hasShift()))
        return driverDatum(srsFromWkt(m_registered->wkt()).get());
    return driverDatum(privateOf(*m_plain).srs());
}

PrjText PrjWriter::written() const
{
    if (!m_plane || m_definition->kind() == CrsKind::RotatedGeographic)
        return refused(Lack::Projection);
    if (const auto record = catalogued()) {
        const PrjText text = proved(*record);
        if (!text.isRefused())
            return text;
    }
    try {
        return withDatum(ownDatum());
    } catch (const ExportToPrjException &e) { // the driver may not be asked about the datum
        LOG_DEBUG(QString::fromUtf8(e.what()));
        return refused(Lack::Projection);
    }
}

} // namespace nivora::cs
