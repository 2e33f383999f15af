#include "Conversion.h"

#include "CommandLine.h"
#include "CsText.h"
#include "LayerSystem.h"
#include "NetworkBorder.h"
#include "OperationOptions.h"
#include "OperationText.h"
#include "Output.h"
#include "Progress.h"
#include "TableSource.h"

#include <coordsys/CoordSystemConversions.h>
#include <coordsys/MapHeaderCoordsysConverter.h>

#include <QDir>
#include <QFileInfo>
#include <QObject>

#include <cmath>

using nivora::cs::CoordSystemPtr;
using nivora::cs::CoordTransform;
using nivora::cs::MapHeaderCoordsysConverter;

namespace {

double bendOption(const CommandLine &line)
{
    if (!line.isSet("segmentize"))
        return 0.0;
    bool ok = false;
    const double metres = line.value("segmentize").toDouble(&ok);
    if (!ok || !(metres > 0.0) || !std::isfinite(metres))
        throw Failure(QObject::tr("--segmentize takes metres greater than 0, not \"%1\"")
                          .arg(line.value("segmentize")));
    return metres;
}

CoordSystemPtr optionalSystem(const Session &session, const CommandLine &line, const char *option)
{
    return line.isSet(option) ? systemOfOption(session, line, option) : nullptr;
}

/// Drivers seek in files and write several of them.
QString fileArgument(const CommandLine &line, int index)
{
    const QString name = line.arguments().at(index);
    if (name == QLatin1String("-"))
        throw Failure(QObject::tr("convert reads and writes files, no pipes: \"-\" is none"));
    return name;
}

QString rejectedName(const QString &out)
{
    return QFileInfo(out).completeBaseName() + QStringLiteral(".rejected.csv");
}

bool extentOf(OGRLayerH source, const GeometryChange &change, OGREnvelope &extent)
{
    if (!change.points)
        return OGR_L_GetExtent(source, &extent, TRUE) == OGRERR_NONE;
    const QRectF rect = extentOfPoints(source, *change.points);
    extent.MinX = rect.left();
    extent.MaxX = rect.right();
    extent.MinY = rect.top();
    extent.MaxY = rect.bottom();
    return std::isfinite(rect.left());
}

/// The driver counts a table's coordinates in whole steps between bounds and would move a point behind them
/// onto them. Those of a system that states none are wide enough for the data.
QRectF tableBounds(OGRLayerH source, const GeometryChange &change, const OutputLayer &layer)
{
    const QRectF world(-180.0, -90.0, 360.0, 180.0); // wider degrees would only make the steps longer
    OGREnvelope extent;
    const QRectF bounds =
        layer.system->isLatLong() && !layer.system->isRectSet() ? world : layer.mapInfo->bounds;
    if (layer.system->isRectSet() || !extentOf(source, change, extent))
        return bounds;
    const bool isPlan = layer.system->isNonEarth();
    const double size = std::hypot(extent.MaxX - extent.MinX, extent.MaxY - extent.MinY);
    const double margin = isPlan ? size + 1.0 : 1e-3 * size + 1e-6;
    const QRectF data = QRectF(QPointF(extent.MinX, extent.MinY), QPointF(extent.MaxX, extent.MaxY))
                            .adjusted(-margin, -margin, margin, margin);
    QRectF image = data;
    if (change.transform &&
        !change.transform->transform().forwardMesh(data, image, CoordTransform::DefaultAddPointsMesh))
        return bounds;
    return isPlan ? image : bounds.united(image); // of a plan they are a guess, far too wide for its steps
}

/// The driver's words for what it changed: "… couldn't be converted correctly from UTF-8 to CP1251", "Value …
/// has been truncated to …".
bool tellsLoss(const QString &warning)
{
    return warning.contains(QLatin1String("converted correctly")) ||
           warning.contains(QLatin1String("truncated"));
}

} // namespace

/// In the member list's order, so that a mistake in the arguments is told before anything is opened.
Conversion::Conversion(const CommandLine &line)
    : m_line(line)
    , m_session(line)
    , m_in(fileArgument(line, 0))
    , m_out(fileArgument(line, 1))
    , m_from(optionalSystem(m_session, line, "from"))
    , m_to(optionalSystem(m_session, line, "to"))
    , m_choice(operationChoice(line))
    , m_mostBendM(bendOption(line))
    , m_coding(line.value("encoding"))
    , m_losses(line)
    , m_source((GDALAllRegister(), keepBorder(m_in),
                openForReading(tableToOpen(m_in, line.isSet("x")), m_messages, line.value("encoding"))))
    , m_format(m_out, line.value("format"), m_in, line.value("out-encoding"))
    , m_stage(m_out, line.isSet("overwrite"))
    , m_rejected(m_stage.path(rejectedName(m_out)))
    , m_probe(m_session, m_format, m_stage.dir(), QFileInfo(m_out).fileName())
    , m_values(m_stage.dir(), QFileInfo(m_out).fileName())
{
    const bool isVirtual = driverName(GDALGetDatasetDriver(m_source.get())) == QLatin1String("OGR_VRT");
    if (m_messages.failed() && (isVirtual || !placesNotAsked().isEmpty()))
        m_losses.add(isVirtual ? Loss::Layers : Loss::Datum,
                     QObject::tr("%1 cannot be read whole: %2").arg(m_in, m_messages.reason()));
    m_bulk.epoch = epochOf(line);
    m_bulk.refusesBallpark = line.isSet("strict");
    m_bulk.tally = &m_tally;
}

CoordSystemPtr Conversion::sourceSystem(OGRLayerH layer) const
{
    CoordSystemPtr source = m_from;
    try {
        source = m_from ? m_from : systemOfLayer(m_session, m_source.get(), layer);
    } catch (const Failure &) {
        if (!untouchedReference(layer)) // else nobody needs it
            throw;
    }
    if (!source && m_to)
        throw Failure(QObject::tr("%1 does not say its coordinate system; give --from").arg(m_in));
    // The catalogue has a code for this very clause: the code's plane needs no affine transformation.
    const bool isOfCode = source && hasAffine(source) && source->epsg() > 0;
    return isOfCode ? m_session.factory().createFromEpsg(source->epsg()) : source;
}

CoordSystemPtr Conversion::withoutAffine(const CoordSystemPtr &system) const
{
    if (!hasAffine(system))
        return system;
    const MapHeaderCoordsysConverter converter;
    nivora::cs::TABProjInfo_t record = converter.prjStrToTABProjInfo(system->prjStr());
    record.nAffineFlag = record.nBoundsFlag = 0; // bounds are those of the transformed plane
    return m_session.factory().createFromPrj(converter.tabProjInfoToString(record));
}

/// Only MapInfo's files say an affine transformation.
CoordSystemPtr Conversion::carriable(const CoordSystemPtr &target)
{
    if (!target || !hasAffine(target) || m_format.isMapInfo())
        return target;
    m_losses.add(Loss::Affine,
                 QObject::tr("%1 cannot carry the affine transformation of the system; the coordinates are "
                             "written in its projection's plane")
                     .arg(m_format.name()));
    return withoutAffine(target);
}

/// MapInfo's files always have a system: longitude and latitude where nothing is said.
CoordSystemPtr Conversion::plan()
{
    const QString note =
        QObject::tr("%1 does not say its coordinate system: it is written as a plan in metres");
    m_notes << note.arg(m_in);
    return m_session.factory().createFromPrj(QStringLiteral("CoordSys NonEarth Units \"m\""));
}

/// The layer's own reference, where nobody asked for another and the library need not read it: it may say
/// more than a plane, such as what heights are above.
OGRSpatialReferenceH Conversion::untouchedReference(OGRLayerH source) const
{
    const bool isMapInfo = driverName(GDALGetDatasetDriver(m_source.get())) == QLatin1String("MapInfo File");
    return m_from || m_to || isMapInfo || m_format.isMapInfo() ? nullptr : OGR_L_GetSpatialRef(source);
}

void Conversion::describe(OGRLayerH source, OutputLayer &layer) const
{
    OGRFeatureDefnH definition = OGR_L_GetLayerDefn(source);
    layer.name = QString::fromUtf8(OGR_L_GetName(source));
    layer.reference = untouchedReference(source);
    for (int i = 0; i < OGR_FD_GetFieldCount(definition); ++i)
        layer.columns << QString::fromUtf8(OGR_Fld_GetNameRef(OGR_FD_GetFieldDefn(definition, i)));
    layer.numbersColumn = QString::fromUtf8(OGR_L_GetFIDColumn(source));
    layer.geometryColumn = QString::fromUtf8(OGR_L_GetGeometryColumn(source));
    layer.keepsNumbers = !layer.numbersColumn.isEmpty() && m_format.holdsNumbers();
}

void Conversion::findPoints(OGRLayerH source, const CoordSystemPtr &from, GeometryChange &change) const
{
    change.points = pointColumns(m_line, source, from && from->isLatLong(), m_coding);
    const bool isTable =
        GDALDatasetGetLayerCount(m_source.get()) == 1 && OGR_L_GetGeomType(source) == wkbNone;
    if (isTable && !change.points && (m_from || m_to))
        throw Failure(
            QObject::tr("%1 has no geometry; --x and --y name the columns of coordinates").arg(m_in));
}

void Conversion::settle(OGRLayerH source, OutputLayer &layer, GeometryChange &change)
{
    describe(source, layer);
    const CoordSystemPtr from = sourceSystem(source);
    findPoints(source, from, change);
    layer.system = carriable(m_to ? m_to : from);
    if (from && layer.system && from != layer.system)
        change.transform.emplace(m_way.emplace(from, layer.system, m_choice, m_bulk.epoch));
    change.bulk = m_bulk;
    if (change.transform)
        change.seams.emplace(*change.transform);
    if (change.transform && m_mostBendM > 0.0)
        change.splitter.emplace(*change.transform, *withoutAffine(layer.system), m_mostBendM);
    if (!m_format.isMapInfo() || (OGR_L_GetGeomType(source) == wkbNone && !change.points))
        return;
    if (!layer.system)
        layer.system = plan();
    layer.mapInfo = mapInfoTarget(*layer.system);
    if (layer.mapInfo->withoutAffineM > 0.0)
        m_losses.add(
            Loss::Affine,
            QObject::tr("only an affine clause says where the system lies: programs on GDAL pass over it "
                        "without a word and are up to %1 m off (%2)")
                .arg(QString::number(layer.mapInfo->withoutAffineM, 'f', 0), layer.mapInfo->clause));
    if (m_format.isTable())
        layer.bounds = change.limits = tableBounds(source, change, layer);
    m_mapInfo = layer.mapInfo;
}

void Conversion::openTarget(const OutputLayer &first)
{
    m_target = m_format.create(m_stage.path(), first);
    if (!m_target)
        throw Failure(QObject::tr("cannot write %1: %2").arg(m_out, m_messages.reason()));
    m_transaction = GDALDatasetTestCapability(m_target.get(), ODsCTransactions) &&
                    GDALDatasetStartTransaction(m_target.get(), FALSE) == OGRERR_NONE;
}

void Conversion::convertLayer(int index)
{
    OGRLayerH source = GDALDatasetGetLayer(m_source.get(), index);
    OutputLayer layer;
    GeometryChange change;
    settle(source, layer, change);
    m_losses.check();
    if (!m_target)
        openTarget(layer);
    LayerCopy copy({source, m_target.get(), layer, m_format, change, m_probe, m_values, m_coding}, m_losses,
                   m_messages);

    Progress progress(true, OGR_L_GetFeatureCount(source, FALSE), Progress::Features);
    copy.run([this](const QString &name, const Rejection &rejection) { m_rejected.add(name, rejection); },
             [this, &progress](GIntBig done) {
                 m_stage.checkInterrupted();
                 m_stage.checkRoom();
                 progress.update(done, done);
             });
    m_features += copy.written();
    if (copy.numbersLost())
        m_notes << QObject::tr("features of \"%1\" get new numbers: the format holds none").arg(layer.name);
    noteWarnings();
}

void Conversion::noteWarnings()
{
    for (const QString &warning : m_messages.warnings())
        if (tellsLoss(warning))
            m_losses.add(Loss::Texts, warning);
        else
            m_notes << warning;
    m_losses.check();
    m_messages.clear();
}

void Conversion::closeTarget()
{
    m_messages.clear();
    const bool committed = !m_transaction || GDALDatasetCommitTransaction(m_target.get()) == OGRERR_NONE;
    m_target.reset();
    if (!committed || m_messages.failed())
        throw Failure(QObject::tr("cannot write %1: %2").arg(m_out, m_messages.reason()));
    if (m_mapInfo)
        giveSystem(m_stage.path(), *m_mapInfo);
    m_rejected.close();
    m_stage.checkRoom();
    checkCount();
}

/// What was written is counted as others will read it: a damaged feature may hide all behind it. Where that
/// means to take a large text apart once more, the samples of every kind have to do.
void Conversion::checkCount()
{
    constexpr qint64 soonRead = 4 * 1024 * 1024;
    if (!m_format.canBeRead() || m_features == 0)
        return;
    m_messages.clear();
    const Dataset dataset = openForReading(m_stage.path(), m_messages);
    qint64 found = 0;
    for (int i = 0; i < GDALDatasetGetLayerCount(dataset.get()); ++i) {
        OGRLayerH layer = GDALDatasetGetLayer(dataset.get(), i);
        if (!OGR_L_TestCapability(layer, OLCFastFeatureCount) && QFileInfo(m_stage.path()).size() > soonRead)
            return;
        found += OGR_L_GetFeatureCount(layer, TRUE);
    }
    if (found < m_features)
        m_losses.add(Loss::Features, QObject::tr("of %1 features that were written only %2 can be read again")
                                         .arg(QString::number(m_features), QString::number(found)));
    m_losses.check();
    m_messages.clear();
}

void Conversion::tell() const
{
    for (const QString &place : placesNotAsked())
        complain(
            QObject::tr("note: %1 names %2, which was not asked: the network is asked only when an argument "
                        "names it")
                .arg(m_in, place));
    for (const QString &note : m_notes)
        complain(QObject::tr("note: %1").arg(note));
    for (const QString &loss : m_losses.all())
        complain(QObject::tr("lost: %1").arg(loss));
    if (m_rejected.count() > 0)
        complain(QObject::tr("%1 of %2 features left out; see %3")
                     .arg(QString::number(m_rejected.count()),
                          QString::number(m_rejected.count() + m_features), rejectedName(m_out)));
    if (m_way)
        report(usageText(*m_way, m_tally));
}

/// Those that --layer names, else all.
std::vector<int> Conversion::chosenLayers() const
{
    QStringList names;
    for (int i = 0; i < GDALDatasetGetLayerCount(m_source.get()); ++i)
        names << QString::fromUtf8(OGR_L_GetName(GDALDatasetGetLayer(m_source.get(), i)));
    std::vector<int> chosen;
    for (const QString &wanted : m_line.values("layer")) {
        if (!names.contains(wanted))
            throw Failure(QObject::tr("%1 has no layer \"%2\", but %3")
                              .arg(m_in, wanted, names.join(QStringLiteral(", "))));
        chosen.push_back(names.indexOf(wanted));
    }
    for (int i = 0; i < names.size() && !m_line.isSet("layer"); ++i)
        chosen.push_back(i);
    return chosen;
}

/// A driver may write further layers into files of other names, which nobody asked for.
std::vector<int> Conversion::convertibleLayers()
{
    const std::vector<int> layers = chosenLayers();
    if (layers.size() < 2 || m_format.holdsManyLayers())
        return layers;
    OGRLayerH first = GDALDatasetGetLayer(m_source.get(), layers.front());
    m_losses.add(
        Loss::Layers,
        QObject::tr("%1 holds one layer: of %2 only the first, \"%3\", is written; --layer "
                    "names another")
            .arg(m_format.name(), QString::number(layers.size()), QString::fromUtf8(OGR_L_GetName(first))));
    m_losses.check();
    return {layers.front()};
}

int Conversion::run()
{
    for (const int layer : convertibleLayers())
        convertLayer(layer);
    if (!m_target)
        openTarget({});
    closeTarget();
    QStringList parts = m_format.filesOf(m_out);
    const QString oldList = m_stage.place(rejectedName(m_out));
    if (RejectedList::isOne(oldList))
        parts << oldList;
    m_stage.publish(parts);
    tell();
    return m_rejected.count() > 0 ? SomeFailed : Success;
}
