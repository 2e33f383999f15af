#include "LayerCopy.h"

#include "FeatureReader.h"
#include "Losses.h"
#include "Output.h"
#include "TableBounds.h"

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
constexpr TypedDriver typedDrivers[] = {
    {"ESRI Shapefile", false}, {"OpenFileGDB", false}, {"FlatGeobuf", true}};

const TypedDriver *typedDriver(const QString &name)
{
    const auto *const found =
        std::find_if(std::begin(typedDrivers), std::end(typedDrivers),
                     [&name](const TypedDriver &row) { return name == QLatin1String(row.name); });
    return found == std::end(typedDrivers) ? nullptr : found;
}

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
    const TypedDriver *const typed = typedDriver(driver);
    if (typed && !typed->mixed && OGR_GT_Flatten(type) == wkbGeometryCollection)
        return wkbUnknown; // what may be in one decides
    if (!typed || OGR_GT_Flatten(type) != wkbUnknown)
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
    const bool isMixed = common == wkbUnknown || common == wkbGeometryCollection;
    if (common == wkbNone || (isMixed && !typed->mixed))
        return type;
    return OGR_GT_SetModifier(common, heights, measures);
}

} // namespace

LayerCopy::LayerCopy(const Job &job, Losses &losses, GdalMessages &messages)
    : m_job(job)
    , m_losses(losses)
    , m_messages(messages)
{}

LayerWriter::Plan LayerCopy::plan() const
{
    return {m_job.source, &m_job.format, m_job.layer, m_lost, m_job.layer.existing};
}

void LayerCopy::settleType(const std::vector<FeatureBatch::Item> &first)
{
    OGRwkbGeometryType &type = m_job.layer.type;
    const bool hasHeights = m_job.change.points && m_job.change.points->z >= 0;
    type = m_job.layer.existing  ? OGR_L_GetGeomType(m_job.layer.existing)
           : m_job.change.points ? (hasHeights ? wkbPoint25D : wkbPoint)
                                 : layerType(m_job.source, m_job.format.name(), first);
    if (m_job.layer.existing)
        return;
    if (m_job.change.splitter) // arcs become lines
        type = OGR_GT_GetLinear(type);
    const bool isCut = std::any_of(first.begin(), first.end(), [](const auto &item) { return item.isCut; });
    if (isCut && OGR_GT_Flatten(type) != wkbUnknown)
        type = OGR_GT_GetCollection(type);
}

/// A layer has one system, and the new features must be in it.
void LayerCopy::checkExisting() const
{
    const OutputLayer &layer = m_job.layer;
    const auto nameOf = [](const nivora::cs::CoordSystemPtr &system) {
        return system ? system->description() : QObject::tr("no system");
    };
    if (!m_job.probe.isSystemOf(layer.existingSystem))
        throw Failure(
            QObject::tr(
                "the layer \"%1\" is in another system: %2, not %3; --to names the system of the output")
                .arg(layer.name, nameOf(layer.existingSystem), nameOf(layer.system)));
}

/// Some drivers write others all the same, for the next program to stumble over.
void LayerCopy::checkType(OGRGeometryH geometry) const
{
    const OGRwkbGeometryType wanted = OGR_GT_Flatten(m_job.layer.type);
    const OGRwkbGeometryType type = OGR_GT_Flatten(OGR_G_GetGeometryType(geometry));
    const auto isOf = [wanted](OGRwkbGeometryType one) {
        return OGR_GT_IsSubClassOf(one, wanted) || one == OGR_GT_GetCollection(wanted);
    };
    if (wanted != wkbUnknown && !isOf(type) && !isOf(OGR_GT_GetCollection(type)))
        throw Failure(QObject::tr("the layer \"%1\" holds other geometries: %2, not %3")
                          .arg(m_job.layer.name, QString::fromUtf8(OGRGeometryTypeToName(wanted)),
                               QString::fromUtf8(OGRGeometryTypeToName(type))));
}

/// Everything that is lost is known before the first feature is written.
void LayerCopy::createLayer(std::vector<FeatureBatch::Item> &first)
{
    settleType(first);
    checkKinds(first);
    if (m_job.layer.existing)
        checkExisting();
    m_job.layer.isElsewhere = m_job.probe.isElsewhere();
    m_writer = std::make_unique<LayerWriter>(m_job.target, plan(), &m_losses);
    OGRFeatureDefnH definition = OGR_L_GetLayerDefn(m_job.source);
    const int geometries = OGR_FD_GetGeomFieldCount(definition);
    if (geometries > 1)
        m_losses.add(Loss::Layers, QObject::tr("only the first of %1 geometries of \"%2\" is written")
                                       .arg(QString::number(geometries), m_job.layer.name));
    m_sampleTaker =
        std::make_unique<SampleTaker>(definition, OGR_L_GetLayerDefn(m_writer->layer()), m_writer->columns());
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
            m_losses.add(Loss::Texts, notUtf8(m_job.layer.name));
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
            m_losses.add(Loss::Texts, notUtf8(m_job.layer.name));
    }
}

/// Where one file cannot hold them all.
void LayerCopy::suggestSplit(const std::vector<OGRGeometryH> &samples)
{
    for (OGRGeometryH geometry : samples)
        m_featureKinds.insert(kindOfFeature(geometry));
    const TypedDriver *const typed = typedDriver(m_job.format.name());
    if (typed && !typed->mixed && m_featureKinds.size() > 1)
        m_losses.suggest(QObject::tr("--split writes a file for each kind of geometry"));
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
        if (kind != last && m_job.layer.existing)
            checkType(geometry);
        last = kind;
    }
    suggestSplit(samples);
    m_hasHeights = m_hasHeights || std::any_of(samples.begin(), samples.end(),
                                               [](OGRGeometryH one) { return OGR_G_Is3D(one) != 0; });
    if (m_writer && samples.empty())
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

/// Of tables: their bounds may be stated, and far too wide.
void LayerCopy::checkSteps(const QVector<QPointF> &vertices)
{
    constexpr double mostNotedM = 0.02; // usual bounds in files of MapInfo
    if (m_roundingM == 0.0 && m_job.format.isTable() && m_job.layer.system)
        m_roundingM = roundingM(m_job.layer, vertices);
    if (m_roundingM > mostNotedM)
        m_losses.add(Loss::Types, roundingText());
}

QString LayerCopy::roundingText() const
{
    return QObject::tr(
               "places of \"%1\" move by up to %2 m: a table counts in steps of its bounds, which the "
               "system states; without its bounds they are fine enough")
        .arg(m_job.layer.name, QString::number(m_roundingM, 'g', 1));
}

/// What is no loss.
QStringList LayerCopy::notes() const
{
    const bool isLoss = m_losses.all().contains(roundingText());
    return m_roundingM > 0.0 && !isLoss ? QStringList(roundingText()) : QStringList();
}

void LayerCopy::checkValues(std::vector<FeatureBatch::Item> &items)
{
    for (FeatureBatch::Item &item : items)
        recodeTexts(item.feature.get());
    m_job.values.check(plan(), m_sampleTaker->take(items), m_losses);
    m_losses.check();
}

/// Numbers that follow each other are mere positions, which stay.
void LayerCopy::noteNumbers(const FeatureBatch::Item &item)
{
    if (m_read++ == 0)
        m_firstNumber = item.fid;
    const bool isPosition = item.fid == m_firstNumber + m_read - 1;
    m_numbersLost |= !isPosition && m_job.layer.storesNumbers && !m_job.layer.keepsNumbers;
}

bool LayerCopy::writePart(OGRFeatureH feature, Geometry geometry)
{
    if (!m_writer->write(feature, std::move(geometry)) || m_messages.failed())
        return false;
    ++m_written;
    return true;
}

/// False for a feature that goes among the rejected ones.
bool LayerCopy::write(FeatureBatch::Item &item, const Advanced &advanced)
{
    OGRFeatureH feature = item.feature.get();
    const auto verdict = item.geometry ? m_job.values.verdict(item.geometry.get()) : ValueProbe::Held;
    if (verdict == ValueProbe::Refused)
        return false;
    bool isWritten = true;
    if (verdict == ValueProbe::Split)
        for (int i = 0; i < OGR_G_GetGeometryCount(item.geometry.get()); ++i)
            isWritten =
                writePart(feature, Geometry(OGR_G_Clone(OGR_G_GetGeometryRef(item.geometry.get(), i)))) &&
                isWritten;
    else
        isWritten = writePart(feature, std::move(item.geometry));
    if (!isWritten && !m_hasFailed)
        advanced(m_written); // a full disk is no loss of the format
    m_hasFailed = m_hasFailed || !isWritten;
    if (!isWritten)
        m_losses.add(Loss::Features, QObject::tr("a feature of \"%1\" cannot be written: %2")
                                         .arg(m_job.layer.name, m_messages.reason()));
    m_losses.check();
    m_messages.clear();
    return isWritten;
}

void LayerCopy::run(const Rejected &rejected, const Advanced &advanced)
{
    recodeNames();
    FeatureReader reader(m_job.source, m_job.change);
    while (const std::unique_ptr<FeatureBatch> batch = reader.next()) {
        takeSamples(batch->vertices());
        if (m_writer)
            checkKinds(batch->items());
        else
            createLayer(batch->items());
        checkSteps(batch->vertices());
        checkValues(batch->items());
        for (FeatureBatch::Item &item : batch->items()) {
            noteNumbers(item);
            if (item.rejection)
                rejected(m_job.layer.name, *item.rejection);
            else if (!write(item, advanced))
                rejected(m_job.layer.name, {item.fid, item.firstVertex, Rejection::NotWritable});
        }
        advanced(m_written);
    }
    m_messages.add(reader.warnings());
    m_job.probe.checkSystem(m_job.layer, m_samples, m_losses);
    m_losses.check();
}
