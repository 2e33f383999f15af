#include "LayerCopy.h"

#include "FeatureReader.h"
#include "Losses.h"
#include "Output.h"

#include <QObject>

#include <algorithm>

namespace {

constexpr int samplesOfBatch = 4;
constexpr int mostSamples = 1024;

/// Drivers whose layers have one type, with heights or without, from the beginning. \p mixed: it may be
/// "any".
struct TypedDriver
{
    const char *name;
    bool mixed;
};
constexpr TypedDriver typedDrivers[] = {{"ESRI Shapefile", false}, {"FlatGeobuf", true}};

QString text(const char *utf8) { return QString::fromUtf8(utf8); }

QString notUtf8(const QString &layer)
{
    return QObject::tr("texts of \"%1\" are not UTF-8, see --encoding: they are passed on as they are")
        .arg(layer);
}

/// The type that holds both.
OGRwkbGeometryType commonType(OGRwkbGeometryType a, OGRwkbGeometryType b)
{
    if (a == wkbNone || a == b || OGR_GT_GetCollection(a) == b)
        return b;
    return OGR_GT_GetCollection(b) == a ? a : wkbUnknown;
}

/// That of the source; by the first features where it is any type and the driver must know.
OGRwkbGeometryType layerType(OGRLayerH source, const QString &driver,
                             const std::vector<FeatureBatch::Item> &items)
{
    const OGRwkbGeometryType type = OGR_L_GetGeomType(source);
    const auto *const typed =
        std::find_if(std::begin(typedDrivers), std::end(typedDrivers),
                     [&driver](const TypedDriver &row) { return driver == QLatin1String(row.name); });
    if (typed == std::end(typedDrivers) || OGR_GT_Flatten(type) != wkbUnknown)
        return type;
    bool heights = false;
    bool measures = false;
    bool same = true;
    OGRwkbGeometryType first = wkbNone;
    OGRwkbGeometryType common = wkbNone;
    for (const FeatureBatch::Item &item : items) {
        if (!item.geometry || OGR_G_IsEmpty(item.geometry.get()))
            continue;
        const OGRwkbGeometryType one = OGR_G_GetGeometryType(item.geometry.get());
        heights = heights || OGR_GT_HasZ(one);
        measures = measures || OGR_GT_HasM(one);
        first = first == wkbNone ? one : first;
        same = same && one == first;
        common = common == wkbUnknown ? common : commonType(common, OGR_GT_Flatten(one));
    }
    if (typed->mixed && !same)
        common = wkbUnknown;
    if (common == wkbNone || (common == wkbUnknown && !typed->mixed))
        return type;
    return OGR_GT_SetModifier(common, heights, measures);
}

} // namespace

LayerCopy::LayerCopy(const Job &job, Losses &losses, GdalMessages &messages)
    : m_job(job)
    , m_losses(losses)
    , m_messages(messages)
{}

void LayerCopy::createLayer(const std::vector<FeatureBatch::Item> &first)
{
    m_job.layer.type = layerType(m_job.source, m_job.format.name(), first);
    checkKinds(first); // before the first byte of the output
    m_messages.clear();
    m_layer = m_job.format.createLayer(m_job.target, m_job.layer);
    if (!m_layer)
        throw Failure(
            QObject::tr("the layer \"%1\" cannot be written: %2").arg(m_job.layer.name, m_messages.reason()));
    const int geometries = OGR_FD_GetGeomFieldCount(OGR_L_GetLayerDefn(m_job.source));
    if (geometries > 1)
        m_losses.add(QObject::tr("only the first of %1 geometries of \"%2\" is written")
                         .arg(QString::number(geometries), m_job.layer.name));
    createFields();
    m_messages.clear();
}

/// Before the layer is read in another thread. Some drivers hand on whatever bytes there are.
void LayerCopy::recodeNames()
{
    OGRFeatureDefnH definition = OGR_L_GetLayerDefn(m_job.source);
    for (int i = 0; i < OGR_FD_GetFieldCount(definition); ++i) {
        OGRFieldDefnH field = OGR_FD_GetFieldDefn(definition, i);
        if (OGR_Fld_GetType(field) == OFTString)
            m_textFields.push_back(i);
        const char *const name = OGR_Fld_GetNameRef(field);
        if (isUtf8(name))
            continue;
        if (m_job.coding.isNeeded())
            OGR_Fld_SetName(field, m_job.coding.decoded(name).c_str());
        else
            m_losses.add(notUtf8(m_job.layer.name));
    }
}

void LayerCopy::recodeTexts(OGRFeatureH feature)
{
    for (const int field : m_textFields) {
        if (!OGR_F_IsFieldSetAndNotNull(feature, field))
            continue;
        const char *const value = OGR_F_GetFieldAsString(feature, field);
        if (isUtf8(value))
            continue;
        if (m_job.coding.isNeeded())
            OGR_F_SetFieldString(feature, field, m_job.coding.decoded(value).c_str());
        else
            m_losses.add(notUtf8(m_job.layer.name));
    }
}

/// Its index in the layer, -1 when there is none. Types that the format does not have become wider ones.
int LayerCopy::createField(OGRFieldDefnH field)
{
    OGRFeatureDefnH made = OGR_L_GetLayerDefn(m_layer);
    const int index = OGR_FD_GetFieldCount(made);
    const auto isMade = [&](OGRFieldDefnH like) {
        return OGR_L_CreateField(m_layer, like, TRUE) == OGRERR_NONE && OGR_FD_GetFieldCount(made) > index;
    };
    if (isMade(field))
        return index;
    const OGRFieldType wider = OGR_Fld_GetType(field) == OFTInteger64 ? OFTReal : OFTString;
    const std::unique_ptr<void, void (*)(OGRFieldDefnH)> other(
        OGR_Fld_Create(OGR_Fld_GetNameRef(field), wider), OGR_Fld_Destroy);
    return wider != OGR_Fld_GetType(field) && isMade(other.get()) ? index : -1;
}

void LayerCopy::createFields()
{
    OGRFeatureDefnH definition = OGR_L_GetLayerDefn(m_job.source);
    for (int i = 0; i < OGR_FD_GetFieldCount(definition); ++i) {
        OGRFieldDefnH field = OGR_FD_GetFieldDefn(definition, i);
        m_messages.clear();
        const int created = createField(field);
        const int there = created < 0
                              ? OGR_FD_GetFieldIndex(OGR_L_GetLayerDefn(m_layer), OGR_Fld_GetNameRef(field))
                              : created;
        m_fieldMap.push_back(there);
        if (there < 0)
            m_losses.add(QObject::tr("the column \"%1\" cannot be written: %2")
                             .arg(text(OGR_Fld_GetNameRef(field)), m_messages.reason()));
        else if (created >= 0)
            noteFieldLoss(field, created);
    }
}

void LayerCopy::noteFieldLoss(OGRFieldDefnH wanted, int index)
{
    OGRFieldDefnH made = OGR_FD_GetFieldDefn(OGR_L_GetLayerDefn(m_layer), index);
    const QString wantedName = text(OGR_Fld_GetNameRef(wanted));
    const QString madeName = text(OGR_Fld_GetNameRef(made));
    if (wantedName != madeName)
        // NOLINTNEXTLINE(modernize-raw-string-literal): the extraction of texts reads this form
        m_losses.add(QObject::tr("the column \"%1\" gets the name \"%2\"").arg(wantedName, madeName));
    if (OGR_Fld_GetType(wanted) != OGR_Fld_GetType(made))
        m_losses.add(QObject::tr("the column \"%1\" is %2, not %3")
                         .arg(wantedName, text(OGR_GetFieldTypeName(OGR_Fld_GetType(made))),
                              text(OGR_GetFieldTypeName(OGR_Fld_GetType(wanted)))));
}

/// Tries what has not come before on the format.
void LayerCopy::checkKinds(const std::vector<FeatureBatch::Item> &items)
{
    std::vector<OGRGeometryH> samples;
    Kind last(wkbNone, false);
    for (const FeatureBatch::Item &item : items) {
        OGRGeometryH geometry = item.geometry.get();
        if (!geometry || item.rejection || OGR_G_IsEmpty(geometry))
            continue;
        const Kind kind(OGR_G_GetGeometryType(geometry), OGR_G_HasCurveGeometry(geometry, TRUE) != 0);
        if (kind != last && m_kinds.insert(kind).second)
            samples.push_back(geometry);
        last = kind;
    }
    if (m_layer && samples.empty())
        return;
    const LostProperties lost = m_job.probe.check(m_job.layer, samples, m_samples, m_losses);
    m_lost.heights |= lost.heights;
    m_lost.measures |= lost.measures;
    m_lost.curves |= lost.curves;
    m_lost.surfaces |= lost.surfaces;
}

void LayerCopy::takeSamples(const QVector<QPointF> &vertices)
{
    const int apart = 1 + vertices.size() / samplesOfBatch;
    for (int i = 0; i < vertices.size() && m_samples.size() < mostSamples; i += apart)
        m_samples << vertices.at(i);
}

Geometry LayerCopy::writable(Geometry geometry) const
{
    if (m_lost.heights)
        OGR_G_Set3D(geometry.get(), FALSE);
    if (m_lost.measures)
        OGR_G_SetMeasured(geometry.get(), FALSE);
    if (m_lost.curves && OGR_G_HasCurveGeometry(geometry.get(), TRUE))
        geometry.reset(OGR_G_GetLinearGeometry(geometry.get(), 0, nullptr));
    if (m_lost.surfaces && isSurface(geometry.get()))
        geometry.reset(OGR_G_ForceTo(geometry.release(), wkbMultiPolygon, nullptr));
    return geometry;
}

Feature LayerCopy::copyOf(FeatureBatch::Item &item)
{
    recodeTexts(item.feature.get());
    Feature copy(OGR_F_Create(OGR_L_GetLayerDefn(m_layer)));
    OGR_F_SetFromWithMap(copy.get(), item.feature.get(), TRUE, m_fieldMap.data());
    if (item.geometry)
        OGR_F_SetGeometryDirectly(copy.get(), writable(std::move(item.geometry)).release());
    return copy;
}

bool LayerCopy::write(FeatureBatch::Item &item)
{
    const Feature copy = copyOf(item);
    if (OGR_L_CreateFeature(m_layer, copy.get()) == OGRERR_NONE && !m_messages.failed()) {
        ++m_written;
        return true;
    }
    m_losses.add(
        QObject::tr("a feature of \"%1\" cannot be written: %2").arg(m_job.layer.name, m_messages.reason()));
    m_messages.clear();
    return false;
}

void LayerCopy::run(const Rejected &rejected, const std::function<void(GIntBig)> &advanced)
{
    recodeNames();
    FeatureReader reader(m_job.source, m_job.change);
    while (const std::unique_ptr<FeatureBatch> batch = reader.next()) {
        takeSamples(batch->vertices());
        if (m_layer)
            checkKinds(batch->items());
        else
            createLayer(batch->items());
        for (FeatureBatch::Item &item : batch->items())
            if (item.rejection)
                rejected(m_job.layer.name, *item.rejection);
            else if (!write(item))
                rejected(m_job.layer.name, {item.fid, item.firstVertex, Rejection::NotWritable});
        advanced(m_written);
    }
    m_messages.add(reader.warnings());
    m_job.probe.checkSystem(m_job.layer, m_samples, m_losses);
}
