#include "LayerCopy.h"

#include "Output.h"

#include <algorithm>

namespace {

constexpr int mostSamples = 64;

/// Drivers that write nothing in the place of a surface made of patches, some of them without a word.
constexpr const char *withoutSurfaces[] = {"MapInfo File", "GeoJSON", "GeoJSONSeq", "KML", "LIBKML",
                                           "GPX",          "DXF",     "DGN",        "GML"};

bool isSurface(OGRGeometryH geometry)
{
    const OGRwkbGeometryType type = OGR_GT_Flatten(OGR_G_GetGeometryType(geometry));
    return type == wkbPolyhedralSurface || type == wkbTIN || type == wkbTriangle;
}

QString text(const char *utf8) { return QString::fromUtf8(utf8); }

} // namespace

void Losses::add(const QString &what)
{
    if (!m_allowed)
        throw Failure(what + QStringLiteral("; --lossy goes on without"));
    if (!m_all.contains(what))
        m_all << what;
}

LayerCopy::LayerCopy(const Job &job, Losses &losses, GdalMessages &messages)
    : m_job(job)
    , m_losses(losses)
    , m_messages(messages)
{
    createLayer();
    createFields();
}

void LayerCopy::createLayer()
{
    m_layer = GDALDatasetCreateLayer(m_job.target, OGR_L_GetName(m_job.source), m_job.reference,
                                     OGR_L_GetGeomType(m_job.source), m_job.options);
    if (!m_layer)
        throw Failure(
            QStringLiteral("the layer \"%1\" cannot be written: %2").arg(name(), m_messages.reason()));
    m_curves = OGR_L_TestCapability(m_layer, OLCCurveGeometries);
    m_measures = OGR_L_TestCapability(m_layer, OLCMeasuredGeometries);
    m_heights = OGR_L_TestCapability(m_layer, OLCZGeometries);
    const QString driver = driverName(GDALGetDatasetDriver(m_job.target));
    m_surfaces = std::none_of(std::begin(withoutSurfaces), std::end(withoutSurfaces),
                              [&driver](const char *name) { return driver == QLatin1String(name); });
    const int geometries = OGR_FD_GetGeomFieldCount(OGR_L_GetLayerDefn(m_job.source));
    if (geometries > 1)
        m_losses.add(QStringLiteral("only the first of %1 geometries of \"%2\" is written")
                         .arg(QString::number(geometries), name()));
}

void LayerCopy::createFields()
{
    OGRFeatureDefnH definition = OGR_L_GetLayerDefn(m_job.source);
    for (int i = 0; i < OGR_FD_GetFieldCount(definition); ++i) {
        OGRFieldDefnH field = OGR_FD_GetFieldDefn(definition, i);
        const int index = OGR_FD_GetFieldCount(OGR_L_GetLayerDefn(m_layer));
        const bool created = OGR_L_CreateField(m_layer, field, TRUE) == OGRERR_NONE &&
                             OGR_FD_GetFieldCount(OGR_L_GetLayerDefn(m_layer)) > index;
        m_fieldMap.push_back(
            created ? index : OGR_FD_GetFieldIndex(OGR_L_GetLayerDefn(m_layer), OGR_Fld_GetNameRef(field)));
        if (m_fieldMap.back() < 0)
            m_losses.add(QStringLiteral("the column \"%1\" cannot be written: %2")
                             .arg(text(OGR_Fld_GetNameRef(field)), m_messages.reason()));
        else if (created)
            noteFieldLoss(field, index);
    }
}

void LayerCopy::noteFieldLoss(OGRFieldDefnH wanted, int index)
{
    OGRFieldDefnH made = OGR_FD_GetFieldDefn(OGR_L_GetLayerDefn(m_layer), index);
    const QString wantedName = text(OGR_Fld_GetNameRef(wanted));
    const QString madeName = text(OGR_Fld_GetNameRef(made));
    if (wantedName != madeName)
        m_losses.add(QStringLiteral("the column \"%1\" gets the name \"%2\"").arg(wantedName, madeName));
    if (OGR_Fld_GetType(wanted) != OGR_Fld_GetType(made))
        m_losses.add(QStringLiteral("the column \"%1\" is %2, not %3")
                         .arg(wantedName, text(OGR_GetFieldTypeName(OGR_Fld_GetType(made))),
                              text(OGR_GetFieldTypeName(OGR_Fld_GetType(wanted)))));
}

void LayerCopy::noteGeometryLoss(OGRGeometryH geometry)
{
    if (!m_curves && OGR_G_HasCurveGeometry(geometry, TRUE))
        m_losses.add(QStringLiteral("the format holds no curves: they become polylines"));
    if (!m_measures && OGR_G_IsMeasured(geometry))
        m_losses.add(QStringLiteral("the format holds no measures: they are left out"));
    if (!m_heights && OGR_G_Is3D(geometry))
        m_losses.add(QStringLiteral("the format holds no heights: they are left out"));
    if (!m_surfaces && isSurface(geometry))
        m_losses.add(QStringLiteral("the format holds no surfaces: they become polygons"));
}

Feature LayerCopy::copyOf(OGRFeatureH source)
{
    Feature copy(OGR_F_Create(OGR_L_GetLayerDefn(m_layer)));
    Geometry geometry(OGR_F_StealGeometry(source)); // the copy of the rest is cheap
    OGR_F_SetFromWithMap(copy.get(), source, TRUE, m_fieldMap.data());
    if (!geometry)
        return copy;
    noteGeometryLoss(geometry.get());
    if (!m_heights)
        OGR_G_Set3D(geometry.get(), FALSE);
    if (!m_measures)
        OGR_G_SetMeasured(geometry.get(), FALSE);
    if (!m_surfaces && isSurface(geometry.get()))
        geometry.reset(OGR_G_ForceTo(geometry.release(), wkbMultiPolygon, nullptr));
    OGR_F_SetGeometryDirectly(copy.get(), geometry.release());
    return copy;
}

bool LayerCopy::write(OGRFeatureH feature)
{
    if (OGR_L_CreateFeature(m_layer, feature) == OGRERR_NONE && !m_messages.failed()) {
        ++m_written;
        return true;
    }
    m_losses.add(
        QStringLiteral("a feature of \"%1\" cannot be written: %2").arg(name(), m_messages.reason()));
    m_messages.clear();
    return false;
}

void LayerCopy::run(const Rejected &rejected, const std::function<void(GIntBig)> &advanced)
{
    FeatureBatch batch(m_job.change);
    GIntBig count = 0;
    const auto flush = [&] {
        batch.flush([this](OGRFeatureH feature) { return write(feature); },
                    [&](const Rejection &rejection) { rejected(name(), rejection); });
        const QVector<QPointF> &vertices = batch.lastVertices();
        for (int i = 0; i < vertices.size() && m_samples.size() < mostSamples; i += 1 + vertices.size() / 16)
            m_samples << vertices.at(i);
        advanced(count);
    };
    OGR_L_ResetReading(m_job.source);
    m_messages.clear();
    while (Feature source{OGR_L_GetNextFeature(m_job.source)}) {
        ++count;
        const GIntBig fid = OGR_F_GetFID(source.get());
        batch.add(copyOf(source.get()), fid);
        if (batch.isFull())
            flush();
    }
    if (m_messages.failed()) // the driver stopped in the middle
        throw Failure(
            QStringLiteral("\"%1\" cannot be read to its end: %2").arg(name(), m_messages.reason()));
    flush();
}
