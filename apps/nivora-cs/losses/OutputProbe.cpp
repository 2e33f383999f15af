#include "OutputProbe.h"

#include "LayerHeights.h"
#include "LayerSystem.h"
#include "Losses.h"
#include "Output.h"

#include <coordsys/CoordSystemConversions.h>
#include <coordsys/CoordTransform.h>

#include <QObject>
#include <QTemporaryDir>

#include <algorithm>
#include <array>
#include <cmath>

using namespace nivora::cs;

namespace {

bool hasCurves(OGRGeometryH geometry) { return OGR_G_HasCurveGeometry(geometry, TRUE) != 0; }
bool hasHeights(OGRGeometryH geometry) { return OGR_G_Is3D(geometry) != 0; }
bool hasMeasures(OGRGeometryH geometry) { return OGR_G_IsMeasured(geometry) != 0; }

struct Property
{
    bool (*has)(OGRGeometryH);
    bool LostProperties::*lost;
    Loss kind;
    const char *message;
};
constexpr Property properties[] = {
    {hasHeights, &LostProperties::heights, Loss::Heights,
     QT_TRANSLATE_NOOP("QObject", "the format holds no heights: they are left out")},
    {hasMeasures, &LostProperties::measures, Loss::Heights,
     QT_TRANSLATE_NOOP("QObject", "the format holds no measures: they are left out")},
    {hasCurves, &LostProperties::curves, Loss::Types,
     QT_TRANSLATE_NOOP("QObject", "the format holds no curves: they become polylines")},
    {isSurface, &LostProperties::surfaces, Loss::Types,
     QT_TRANSLATE_NOOP("QObject", "the format holds no surfaces: they become polygons")},
};

struct Offsets
{
    double places = 0.0; ///< in the unit of the system
    double planes = 0.0; ///< without the datums' shift, likewise
};

/// How far places are off when the output is read again.
Offsets farthestOff(const CoordSystemPtr &system, const CoordSystemPtr &readAgain,
                    const QVector<QPointF> &places)
{
    const CoordTransform transform(system, readAgain);
    Offsets farthest;
    const auto off = [](const QPointF &a, const QPointF &b) {
        return std::hypot(a.x() - b.x(), a.y() - b.y());
    };
    for (const QPointF &place : places) {
        QPointF again(NAN, NAN);
        if (!std::isfinite(place.x()) || !transform.forward(place, again))
            continue;
        farthest.places = std::max(farthest.places, off(again, place));
        QPointF lonLat = place;
        QPointF ownPlace = place;
        const bool isPlaced =
            system->isLatLong() || (system->inverse(place, lonLat) && readAgain->forward(lonLat, ownPlace));
        farthest.planes = std::max(farthest.planes, isPlaced ? off(ownPlace, place) : HUGE_VAL);
    }
    return farthest;
}

/// Of a format that has one system.
QString conversionText(const CoordSystem &held)
{
    const QString name = held.epsg() > 0 ? QString::number(held.epsg()) : held.description();
    return QObject::tr("the format holds %1 alone, and GDAL converts into it; --to %2 does so by an "
                       "operation that is told and can be chosen")
        .arg(held.description(), name);
}

QString lossOf(const CoordSystemPtr &system, const CoordSystemPtr &readAgain, const QVector<QPointF> &places)
{
    if (!readAgain)
        return QObject::tr("the format carries no coordinate system (%1)").arg(system->description());
    const double millimetre = system->isLatLong() ? 1e-8 : 1e-3;
    const Offsets off = farthestOff(system, readAgain, places);
    if (off.places <= millimetre)
        return {};
    const double metres =
        off.places * (system->isLatLong() ? CoordSystem::DEGREES_TO_METERS : system->unit().conversion());
    const QString size = QString::number(metres, 'g', 3);
    if (off.planes <= millimetre && system->isLatLong() == readAgain->isLatLong())
        return QObject::tr(
                   "only the shift of the datum differs, by %1 m: the format carries that of %2, not of "
                   "%3; with --to %2 the places move by so much and are true")
            .arg(size, readAgain->description(), system->description());
    return QObject::tr("the format carries another system, %1 instead of %2: places are off by %3 m")
        .arg(readAgain->description(), system->description(), size);
}

/// Of an empty layer some drivers leave nothing that they could read.
Dataset openIfReadable(const QString &path, const GdalMessages &messages)
{
    try {
        return openForReading(path, messages);
    } catch (const Failure &) {
        return nullptr;
    }
}

/// Nearly: not in other units, on another map.
bool isSamePlace(OGRGeometryH a, OGRGeometryH b)
{
    constexpr double relative = 1e-3; // chords of arcs lie inside
    OGREnvelope one = {};
    OGREnvelope other = {};
    OGR_G_GetEnvelope(a, &one);
    OGR_G_GetEnvelope(b, &other);
    const auto near = [](double p, double q) {
        return std::fabs(p - q) <= relative * std::max(1.0, std::fabs(q));
    };
    return near(one.MinX, other.MinX) && near(one.MinY, other.MinY) && near(one.MaxX, other.MaxX) &&
           near(one.MaxY, other.MaxY);
}

/// Some drivers write nothing of a layer without columns.
void addColumn(OGRLayerH layer)
{
    const std::unique_ptr<void, void (*)(OGRFieldDefnH)> column(OGR_Fld_Create("id", OFTInteger),
                                                                OGR_Fld_Destroy);
    const OGRErr refused = OGR_L_CreateField(layer, column.get(), TRUE);
    static_cast<void>(refused); // others take none
}

} // namespace

bool isSurface(OGRGeometryH geometry)
{
    const OGRwkbGeometryType type = OGR_GT_Flatten(OGR_G_GetGeometryType(geometry));
    return type == wkbPolyhedralSurface || type == wkbTIN || type == wkbTriangle;
}

/// Geometries, and those with each of the properties.
struct OutputProbe::Counts
{
    void add(OGRGeometryH geometry)
    {
        ++all;
        plain += !hasCurves(geometry) && !isSurface(geometry);
        for (std::size_t i = 0; i < std::size(properties); ++i)
            with[i] += properties[i].has(geometry);
    }

    void add(const Counts &others)
    {
        all += others.all;
        plain += others.plain;
        for (std::size_t i = 0; i < std::size(properties); ++i)
            with[i] += others.with[i];
    }

    int all = 0;
    int plain = 0; ///< nothing stands in for them
    std::array<int, std::size(properties)> with{};
};

OutputProbe::OutputProbe(const Session &session, const OutputFormat &format, const QDir &place,
                         const QString &fileName)
    : m_session(session)
    , m_format(format)
    , m_place(place)
    , m_fileName(fileName)
{}

void OutputProbe::write(const QString &path, const OutputLayer &layer,
                        const std::vector<OGRGeometryH> &geometries)
{
    GdalMessages messages;
    Dataset dataset = m_format.create(path, layer);
    OGRLayerH target = dataset ? m_format.createLayer(dataset.get(), layer) : nullptr;
    if (!target)
        throw Failure(
            QObject::tr("the layer \"%1\" cannot be written: %2").arg(layer.name, messages.reason()));
    addColumn(target);
    for (OGRGeometryH geometry : geometries) {
        const Feature feature(OGR_F_Create(OGR_L_GetLayerDefn(target)));
        OGR_F_SetGeometry(feature.get(), geometry);
        const OGRErr refused = OGR_L_CreateFeature(target, feature.get());
        static_cast<void>(refused); // then it is not among what is read
    }
    dataset.reset();
    if (layer.mapInfo)
        giveSystem(path, *layer.mapInfo);
}

OutputProbe::Counts OutputProbe::writtenAndRead(const OutputLayer &layer,
                                                const std::vector<OGRGeometryH> &geometries)
{
    const QTemporaryDir directory(m_place.filePath(QStringLiteral("probe-XXXXXX")));
    const QString path = directory.filePath(m_fileName);
    write(path, layer, geometries);
    const GdalMessages messages;
    const Dataset dataset = openIfReadable(writtenFile(path), messages);
    OGRLayerH again = dataset ? GDALDatasetGetLayer(dataset.get(), 0) : nullptr;
    m_readAgain = again && layer.system ? systemOfLayer(m_session, dataset.get(), again) : nullptr;
    m_heightsAgain = again ? heightSystemOf(OGR_L_GetSpatialRef(again)) : QString();
    m_isConverted = false;
    Counts counts;
    while (const Feature feature{again ? OGR_L_GetNextFeature(again) : nullptr})
        if (OGRGeometryH geometry = OGR_F_GetGeometryRef(feature.get())) {
            m_isConverted = counts.all == 0 ? !isSamePlace(geometry, geometries.front()) : m_isConverted;
            counts.add(geometry);
        }
    return counts;
}

bool OutputProbe::carriesAffine(const CoordSystemPtr &system)
{
    if (system->isNonEarth() || !m_format.canBeRead())
        return false;
    OutputLayer layer;
    layer.name = QStringLiteral("probe");
    layer.type = wkbPoint;
    layer.system = system;
    const Geometry place(OGR_G_CreateGeometry(wkbPoint)); // some formats keep nothing of an empty layer
    OGR_G_SetPoint_2D(place.get(), 0, 0.0, 0.0);
    try {
        writtenAndRead(layer, {place.get()});
    } catch (const Failure &) { // what is read cannot be used
        return false;
    }
    return m_readAgain && hasAffine(m_readAgain);
}

LostProperties OutputProbe::check(const OutputLayer &layer, const std::vector<OGRGeometryH> &geometries,
                                  const QVector<QPointF> &places, Losses &losses)
{
    LostProperties lost;
    if (!m_format.canBeRead() || (geometries.empty() && !layer.system))
        return lost;
    Counts given;
    for (OGRGeometryH geometry : geometries)
        given.add(geometry);
    Counts read = writtenAndRead(layer, geometries);
    if (read.all != given.all && geometries.size() > 1) { // one kind keeps another out
        read = {};
        for (OGRGeometryH geometry : geometries)
            read.add(writtenAndRead(layer, {geometry}));
    }
    if (given.plain > 0 && read.all == 0)
        losses.add(Loss::Features, QObject::tr("the format holds no such geometries: they are left out"));
    for (std::size_t i = 0; i < std::size(properties); ++i) {
        lost.*properties[i].lost = read.with[i] < given.with[i];
        if (read.with[i] < given.with[i])
            losses.add(properties[i].kind, QObject::tr(properties[i].message));
    }
    const bool hasHeightsLeft = given.with[0] > 0 && !lost.heights;
    if (hasHeightsLeft && !layer.heightsMissing.isEmpty())
        losses.add(Loss::Heights, layer.heightsMissing);
    if (hasHeightsLeft && m_heightsAgain.isEmpty() && !layer.heightsAbove.isEmpty())
        losses.add(
            Loss::Heights,
            QObject::tr("the output does not say what its heights are above (%1)").arg(layer.heightsAbove));
    checkSystem(layer, places, losses);
    return lost;
}

bool OutputProbe::isSystemOf(const CoordSystemPtr &existing) const
{
    return existing && m_readAgain ? m_readAgain->isEqual(*existing, true) : existing == m_readAgain;
}

void OutputProbe::checkSystem(const OutputLayer &layer, const QVector<QPointF> &places, Losses &losses)
{
    if (!layer.system || !m_format.canBeRead())
        return;
    const bool isConverted = m_isConverted && m_readAgain && !m_readAgain->isEqual(*layer.system, true);
    const QString loss =
        isConverted ? conversionText(*m_readAgain) : lossOf(layer.system, m_readAgain, places);
    m_isElsewhere = !loss.isEmpty() && m_readAgain;
    if (!loss.isEmpty())
        losses.add(Loss::Datum, loss);
}
