#include "Conversion.h"

#include "CommandLine.h"
#include "CsText.h"
#include "HeightsText.h"
#include "LayerSystem.h"
#include "MifCheck.h"
#include "NetworkBorder.h"
#include "OperationOptions.h"
#include "OperationText.h"
#include "Output.h"
#include "Progress.h"
#include "TableBounds.h"
#include "TableSource.h"

#include <coordsys/CoordSystemConversions.h>
#include <coordsys/MapHeaderCoordsysConverter.h>

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QObject>

#include <cerrno>
#include <cmath>

using nivora::cs::CoordSystemPtr;
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

/// That only the plane acts is no news where heights go their own way.
CoordSystemPtr optionalSystem(const Session &session, const CommandLine &line, const char *option)
{
    if (!line.isSet(option))
        return nullptr;
    const Notes notes = systemWithHeights(line.value(option)) ? Notes::Dropped : Notes::Told;
    return systemOfOption(session, line, option, notes);
}

/// Drivers seek in files and write several of them.
QString fileArgument(const CommandLine &line, int index)
{
    QString name = line.arguments().at(index);
    while (name.size() > 1 && name.endsWith(QLatin1Char('/'))) // of a folder that is one data set
        name.chop(1);
    const QFileInfo info(name);
    const bool isPipe = index == 0 && info.exists() && !info.isFile() && !info.isDir();
    if (isPipe || name == QLatin1String("-"))
        throw Failure(QObject::tr("convert reads and writes files, no pipes: \"%1\" is none").arg(name));
    return name;
}

/// Throws Failure for options that exclude each other.
StagedOutput::Mode modeOf(const CommandLine &line)
{
    const char *const ways[] = {"overwrite", "append", "split"};
    if (line.isSet("append"))
        for (const char *other : ways)
            if (line.isSet(other) && other != ways[1])
                throw Failure(QObject::tr("--append and --%1 exclude each other").arg(QLatin1String(other)));
    return line.isSet("split")                               ? StagedOutput::Family
           : line.isSet("overwrite") || line.isSet("append") ? StagedOutput::Replaced
                                                             : StagedOutput::New;
}

/// The driver counts a table by reading it; its features are numbered without gaps.
qint64 lastNumber(OGRLayerH layer, qint64 expected)
{
    const Feature last(OGR_L_GetFeature(layer, expected));
    return last ? expected : OGR_L_GetFeatureCount(layer, TRUE);
}

/// Features that say no number are counted from 0.
bool statesNumbers(OGRLayerH layer)
{
    const Feature first(OGR_L_GetNextFeature(layer));
    OGR_L_ResetReading(layer);
    return first && OGR_F_GetFID(first.get()) != 0;
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
    , m_stage(m_out, modeOf(line))
    , m_file(QFileInfo(m_out).fileName())
    , m_rejected(m_stage.path(RejectedList::nameFor(m_out)))
    , m_probe(m_session, m_format, m_stage.dir(), m_format.ownName(m_file))
    , m_values(m_stage.dir(), m_format.ownName(m_file))
{
    const bool isVirtual = driverName(GDALGetDatasetDriver(m_source.get())) == QLatin1String("OGR_VRT");
    if (m_messages.failed() && (isVirtual || !placesNotAsked().isEmpty()))
        m_losses.add(isVirtual ? Loss::Layers : Loss::Datum,
                     QObject::tr("%1 cannot be read whole: %2").arg(m_in, m_messages.reason()));
    if (m_in.endsWith(QLatin1String(".mif"), Qt::CaseInsensitive))
        m_extent = checkMif(m_in, m_losses);
    if (!line.isSet("x"))
        checkGeometryTexts(m_source.get(), m_losses);
    if (line.isSet("append"))
        m_append.emplace(m_out, m_format, m_stage);
    m_bulk.refusesBallpark = line.isSet("strict");
    m_bulk.tally = &m_tally;
}

/// A system that nobody understands is a loss of its own: other programs drop it.
CoordSystemPtr Conversion::sourceSystem(OGRLayerH layer)
{
    CoordSystemPtr source = m_from;
    try {
        source = m_from ? m_from : systemOfLayer(m_session, m_source.get(), layer);
    } catch (const Failure &e) {
        if (m_to)
            throw;
        if (!untouchedReference(layer)) // else nobody needs it
            m_losses.add(Loss::Datum, QString::fromUtf8(e.what()));
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

/// MapInfo's files say an affine transformation, and formats whose systems are texts of WKT 2.
CoordSystemPtr Conversion::carriable(const CoordSystemPtr &target)
{
    if (!target || !hasAffine(target) || m_format.isMapInfo() || m_probe.carriesAffine(target))
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
    const bool isGeoJson =
        driverName(GDALGetDatasetDriver(m_source.get())).startsWith(QLatin1String("GeoJSON"));
    layer.storesNumbers = !layer.numbersColumn.isEmpty() || isGeoJson;
    layer.keepsNumbers = (!layer.numbersColumn.isEmpty() || (isGeoJson && statesNumbers(source))) &&
                         m_format.holdsNumbers() && !m_append;
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

/// Heights go along where both ends say what theirs are above; a reference that passes untouched keeps them.
void Conversion::findHeights(OGRLayerH source, OutputLayer &layer, GeometryChange &change)
{
    const QString given = m_from ? m_line.value("from") : textOfReference(OGR_L_GetSpatialRef(source));
    const LayerHeights heights = layerHeights(given, m_line.value("to"));
    layer.heightsAbove = heights.above;
    layer.heightsAreUnclear = heights.isUnclear;
    if (!heights.missing.isEmpty())
        layer.heightsMissing = QObject::tr("heights stay as they are: %1").arg(heights.missing);
    change.heights = heights.transform;
    change.heightTally = &m_heightTally;
    if (layer.reference || !heights.system || m_format.isMapInfo())
        return;
    m_reference = referenceOf(*heights.system);
    layer.reference = m_reference.get();
}

/// A table counts in steps of its own bounds.
void Conversion::findExisting(OutputLayer &layer, GeometryChange &change)
{
    if (!m_append)
        return;
    layer.existing = m_append->layer(m_target.get(), layer.name);
    layer.name = QString::fromUtf8(OGR_L_GetName(layer.existing));
    layer.existingSystem = systemOfLayer(m_session, m_target.get(), layer.existing);
    if (!layer.mapInfo || !layer.existingSystem)
        return;
    m_mapInfo = mapInfoTarget(*layer.existingSystem);
    if (m_format.isTable())
        layer.bounds = change.limits = m_mapInfo->bounds;
}

void Conversion::settle(OGRLayerH source, OutputLayer &layer, GeometryChange &change)
{
    describe(source, layer);
    change.choice = m_choiceOfFeatures;
    change.extent = m_extent;
    const CoordSystemPtr from = sourceSystem(source);
    findPoints(source, from, change);
    layer.system = carriable(m_to ? m_to : from);
    if (from && layer.system)
        m_bulk.epoch = epochOfEnds(m_line, *from, *layer.system);
    if (from && layer.system && from != layer.system)
        change.transform.emplace(m_way.emplace(from, layer.system, m_choice, m_bulk.epoch));
    change.bulk = m_bulk;
    findHeights(source, layer, change);
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
    m_target = m_append ? m_append->open() : m_format.create(written(), first);
    if (!m_target)
        throw Failure(QObject::tr("cannot write %1: %2").arg(m_out, m_messages.reason()));
    m_before = m_append ? featureCount(m_target.get()) : 0;
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
    findExisting(layer, change);
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
    noteLayer(copy, layer);
    noteWarnings();
}

void Conversion::noteLayer(const LayerCopy &copy, const OutputLayer &layer)
{
    const bool hasRoom = m_format.holdsNumbers();
    m_notes << copy.notes();
    if (copy.numbersLost())
        m_notes << (m_append  ? QObject::tr("features of \"%1\" get new numbers, behind those that are there")
                    : hasRoom ? QObject::tr("features of \"%1\" get new numbers")
                              : QObject::tr("features of \"%1\" get new numbers: the format holds none"))
                       .arg(layer.name);
    if (copy.hasHeights() && layer.heightsAreUnclear)
        m_notes
            << QObject::tr("heights of \"%1\" are passed on: a system says nothing of them").arg(layer.name);
}

void Conversion::noteWarnings()
{
    for (const QString &warning : m_messages.warnings())
        if (const auto kind = lossTold(warning))
            m_losses.add(*kind, warning);
        else
            m_notes << warning;
    m_losses.check();
    m_messages.clear();
}

QString Conversion::written() const { return m_stage.path(m_append ? m_file : m_format.ownName(m_file)); }

/// Readers look for the other files of a set in the same letters.
void Conversion::nameAsAsked() const
{
    const QFileInfo own(written());
    const QFileInfo asked(m_stage.path(m_file));
    if (m_append || own.fileName() == asked.fileName())
        return;
    const bool isLarge = asked.suffix() == asked.suffix().toUpper();
    const QString base = own.completeBaseName() + QLatin1Char('.');
    for (const QString &name : own.dir().entryList(QDir::Files | QDir::Hidden)) {
        const QString suffix = name.mid(base.size());
        if (!name.startsWith(base) || suffix.contains(QLatin1Char('.')))
            continue;
        const QString wanted = name == own.fileName() ? asked.fileName()
                               : isLarge              ? base + suffix.toUpper()
                                                      : name;
        if (name != wanted && !QFile::rename(own.dir().filePath(name), own.dir().filePath(wanted)))
            throw Failure(QObject::tr("cannot write %1: %2").arg(m_out, systemMessage(errno)));
    }
}

void Conversion::closeTarget()
{
    m_messages.clear();
    const bool committed = !m_transaction || GDALDatasetCommitTransaction(m_target.get()) == OGRERR_NONE;
    m_target.reset();
    if (!committed || m_messages.failed())
        throw Failure(QObject::tr("cannot write %1: %2").arg(m_out, m_messages.reason()));
    if (m_mapInfo)
        giveSystem(written(), *m_mapInfo);
    m_stage.checkRoom();
    const QString name = QFileInfo(writtenFile(written())).fileName();
    if (name != QFileInfo(written()).fileName())
        m_notes << QObject::tr("without geometry there is no %1, but %2").arg(m_file, name);
    checkCount();
    nameAsAsked();
    m_allFeatures += m_features;
    m_features = 0;
}

/// What was written is counted as others will read it: a damaged feature may hide all behind it. Where that
/// means to take a large text apart once more, the samples of every kind have to do.
void Conversion::checkCount()
{
    constexpr qint64 soonRead = 4 * 1024 * 1024;
    const bool isLarge = QFileInfo(written()).size() > soonRead;
    if (!m_format.canBeRead() || m_features == 0 || (isLarge && !m_format.opensQuickly()))
        return;
    m_messages.clear();
    const Dataset dataset = openForReading(writtenFile(written()), m_messages);
    qint64 found = 0;
    for (int i = 0; i < GDALDatasetGetLayerCount(dataset.get()); ++i) {
        OGRLayerH layer = GDALDatasetGetLayer(dataset.get(), i);
        found += m_format.isTable() ? lastNumber(layer, m_before + m_features)
                                    : OGR_L_GetFeatureCount(layer, TRUE);
    }
    found -= m_before;
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
                          QString::number(m_rejected.count() + m_allFeatures), RejectedList::nameFor(m_out)));
    if (m_way)
        report(usageText(*m_way, m_tally));
    if (!m_heightTally.uses().isEmpty())
        report(QObject::tr("with heights: %1").arg(usageText(m_heightTally, m_bulk.epoch.has_value())));
}

/// A driver may write further layers into files of other names, which nobody asked for.
std::vector<int> Conversion::convertibleLayers()
{
    const std::vector<int> layers = layersNamed(m_line.values("layer"), m_source.get(), m_in);
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

/// The files that the output is made of today.
QStringList Conversion::writeWhole(const std::vector<int> &layers)
{
    for (const int layer : layers)
        convertLayer(layer);
    if (!m_target)
        openTarget({});
    closeTarget();
    return m_append ? m_append->parts() : m_format.filesOf(m_stage.place(m_file));
}

/// An output for each kind of geometry; features without any go into the first.
QStringList Conversion::writeKinds(const std::vector<int> &layers)
{
    std::set<FeatureKind> kinds;
    for (const int layer : layers)
        for (const FeatureKind kind : kindsIn(GDALDatasetGetLayer(m_source.get(), layer)))
            kinds.insert(m_line.isSet("x") ? FeatureKind::Points : kind);
    const bool hasNothing = kinds.size() > 1 && kinds.erase(FeatureKind::Nothing) > 0;
    QStringList parts;
    for (const FeatureKind kind : kinds) {
        m_file = nameForKind(m_out, kind);
        m_stage.claim(m_file, m_line.isSet("overwrite"));
        m_choiceOfFeatures = FeatureChoice{kind, hasNothing && kind == *kinds.begin()};
        if (m_line.isSet("x"))
            m_choiceOfFeatures.reset();
        parts << writeWhole(layers);
        m_mapInfo.reset();
    }
    return parts;
}

int Conversion::run()
{
    if (!m_format.canBeRead())
        m_notes << QObject::tr("%1 is written, but never read: what it loses cannot be found out")
                       .arg(m_format.name());
    const std::vector<int> layers = convertibleLayers();
    QStringList parts = m_line.isSet("split") ? writeKinds(layers) : writeWhole(layers);
    m_rejected.close();
    const QString oldList = m_stage.place(RejectedList::nameFor(m_out));
    if (RejectedList::isOne(oldList))
        parts << oldList;
    if (m_append)
        m_append->checkUnchanged();
    m_stage.publish(parts);
    tell();
    return m_rejected.count() > 0 ? SomeFailed : Success;
}
