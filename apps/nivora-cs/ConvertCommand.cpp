#include "CommandLine.h"
#include "Commands.h"
#include "CsText.h"
#include "GdalFiles.h"
#include "LayerCopy.h"
#include "LayerSystem.h"
#include "MapInfoFiles.h"
#include "MapInfoTarget.h"
#include "Output.h"
#include "Progress.h"
#include "Session.h"
#include "StagedOutput.h"

#include <coordsys/CoordSystemConversions.h>
#include <coordsys/MapHeaderCoordsysConverter.h>

#include <cpl_string.h>
#include <ogr_srs_api.h>

#include <QFile>
#include <QFileInfo>

#include <cmath>

using nivora::cs::CoordSystemPtr;
using nivora::cs::CoordTransform;
using nivora::cs::MapHeaderCoordsysConverter;

namespace {

/// What makes a driver write text and geometry as they are.
struct DriverOption
{
    const char *driver;
    const char *option;
};
constexpr DriverOption layerOptions[] = {
    {"ESRI Shapefile", "ENCODING=UTF-8"},
    {"CSV", "GEOMETRY=AS_WKT"},
};
constexpr const char *mapInfoDriver = "MapInfo File";

using SpatialReference = std::unique_ptr<void, void (*)(OGRSpatialReferenceH)>;
using OptionList = std::unique_ptr<char *, void (*)(char **)>;

OptionList layerOptionsOf(const QString &driver)
{
    char **list = nullptr;
    for (const DriverOption &row : layerOptions)
        if (driver == QLatin1String(row.driver))
            list = CSLAddString(list, row.option);
    return OptionList(list, CSLDestroy);
}

/// A MapInfo file is opened, and its characters fixed, with the data set.
OptionList dataSetOptionsOf(const QString &driver, const QString &source)
{
    char **list = nullptr;
    if (driver == QLatin1String(mapInfoDriver))
        list = CSLSetNameValue(list, "ENCODING", encodingLike(source).constData());
    return OptionList(list, CSLDestroy);
}

QString csvField(QString text)
{
    return QLatin1Char('"') + text.replace(QLatin1Char('"'), QLatin1String("\"\"")) + QLatin1Char('"');
}

/// The list of features that were left out.
class RejectedList
{
public:
    explicit RejectedList(const QString &path)
        : m_file(path)
    {}
    void add(const QString &layer, const Rejection &rejection)
    {
        if (m_count++ == 0) {
            if (!m_file.open(QIODevice::WriteOnly))
                throw Failure(
                    QStringLiteral("cannot write %1: %2").arg(m_file.fileName(), m_file.errorString()));
            m_file.write("layer,fid,x,y,reason\n");
        }
        const QString line =
            QStringLiteral("%1,%2,%3,%4,%5\n")
                .arg(csvField(layer), QString::number(rejection.fid),
                     QString::number(rejection.vertex.x(), 'g', 17),
                     QString::number(rejection.vertex.y(), 'g', 17), QLatin1String(rejection.reason));
        m_file.write(line.toUtf8());
    }
    void close()
    {
        m_file.close();
        if (m_file.error() != QFileDevice::NoError)
            throw Failure(QStringLiteral("cannot write %1: %2").arg(m_file.fileName(), m_file.errorString()));
    }
    qint64 count() const { return m_count; }

private:
    QFile m_file;
    qint64 m_count = 0;
};

/// A whole run.
class Conversion
{
public:
    explicit Conversion(const CommandLine &line);
    int run();

private:
    void convertLayer(int index);
    CoordSystemPtr sourceSystem(OGRLayerH layer) const;
    CoordSystemPtr carriable(const CoordSystemPtr &target);
    void prepare(OGRLayerH layer, const CoordSystemPtr &from, const CoordSystemPtr &to,
                 GeometryChange &change);
    QRectF tableBounds(OGRLayerH layer, const GeometryChange &change, const CoordSystemPtr &target) const;
    OptionList optionsFor(const GeometryChange &change) const;
    void noteWarnings();
    void checkSystems();
    void tell() const;
    bool isMapInfo() const { return m_format == QLatin1String(mapInfoDriver); }
    bool isMif() const { return isMapInfo() && m_out.endsWith(QLatin1String(".mif"), Qt::CaseInsensitive); }
    QString rejectedPath() const;

    struct Written
    {
        CoordSystemPtr system;
        QVector<QPointF> samples;
    };

    Session m_session;
    GdalMessages m_messages;
    QString m_in, m_out;
    CoordSystemPtr m_from, m_to;
    double m_mostBendM = 0.0;
    Losses m_losses;
    Dataset m_source;
    GDALDriverH m_driver;
    QString m_format;
    StagedOutput m_stage;
    Dataset m_target;
    RejectedList m_rejected;
    std::vector<Written> m_written;
    std::optional<MapInfoTarget> m_mapInfo;
    QStringList m_notes; ///< of the drivers
    qint64 m_features = 0;
};

double bendOption(const CommandLine &line)
{
    if (!line.isSet("segmentize"))
        return 0.0;
    bool ok = false;
    const double metres = line.value("segmentize").toDouble(&ok);
    if (!ok || !(metres > 0.0) || !std::isfinite(metres))
        throw Failure(QStringLiteral("--segmentize takes metres greater than 0, not \"%1\"")
                          .arg(line.value("segmentize")));
    return metres;
}

CoordSystemPtr optionalSystem(const Session &session, const CommandLine &line, const char *option)
{
    return line.isSet(option) ? systemOfOption(session, line, option) : nullptr;
}

/// In the member list's order, so that a mistake in the arguments is told before anything is opened.
Conversion::Conversion(const CommandLine &line)
    : m_session(line)
    , m_in(line.arguments().at(0))
    , m_out(line.arguments().at(1))
    , m_from(optionalSystem(m_session, line, "from"))
    , m_to(optionalSystem(m_session, line, "to"))
    , m_mostBendM(bendOption(line))
    , m_losses(line.isSet("lossy"))
    , m_source((GDALAllRegister(), openForReading(m_in, m_messages)))
    , m_driver(driverForWriting(m_out, line.value("format")))
    , m_format(driverName(m_driver))
    , m_stage(m_out, line.isSet("overwrite"))
    , m_target(GDALCreate(m_driver, m_stage.path().toUtf8().constData(), 0, 0, 0, GDT_Unknown,
                          dataSetOptionsOf(m_format, m_in).get()))
    , m_rejected(rejectedPath())
{
    if (!m_target)
        throw Failure(QStringLiteral("cannot write %1: %2").arg(m_out, m_messages.reason()));
}

QString Conversion::rejectedPath() const
{
    return m_stage.path(QFileInfo(m_out).completeBaseName() + QStringLiteral(".rejected.csv"));
}

CoordSystemPtr Conversion::sourceSystem(OGRLayerH layer) const
{
    const CoordSystemPtr source = m_from ? m_from : systemOfLayer(m_session, m_source.get(), layer);
    if (!source && m_to)
        throw Failure(QStringLiteral("%1 does not say its coordinate system; give --from").arg(m_in));
    return source;
}

/// Only a MIF says an affine transformation.
CoordSystemPtr Conversion::carriable(const CoordSystemPtr &target)
{
    if (!target || !hasAffine(target) || isMif())
        return target;
    m_losses.add(
        QStringLiteral("%1 cannot carry the affine transformation of the system; the coordinates are "
                       "written in its projection's plane")
            .arg(m_format));
    const MapHeaderCoordsysConverter converter;
    nivora::cs::TABProjInfo_t record = converter.prjStrToTABProjInfo(target->prjStr());
    record.nAffineFlag = record.nBoundsFlag = 0; // bounds are those of the transformed plane
    return m_session.factory().createFromPrj(converter.tabProjInfoToString(record));
}

/// The driver counts coordinates in whole steps between bounds and would move a point behind them onto them.
/// Those of a system that states none are wide enough for the data.
QRectF Conversion::tableBounds(OGRLayerH layer, const GeometryChange &change,
                               const CoordSystemPtr &target) const
{
    OGREnvelope extent;
    QRectF bounds = m_mapInfo->bounds;
    if (target->isRectSet() || OGR_L_GetExtent(layer, &extent, TRUE) != OGRERR_NONE)
        return bounds;
    const double margin = 1e-3 * std::hypot(extent.MaxX - extent.MinX, extent.MaxY - extent.MinY) + 1e-6;
    const QRectF data = QRectF(QPointF(extent.MinX, extent.MinY), QPointF(extent.MaxX, extent.MaxY))
                            .adjusted(-margin, -margin, margin, margin);
    QRectF image = data;
    if (change.transform &&
        !change.transform->transform().forwardMesh(data, image, CoordTransform::DefaultAddPointsMesh))
        return bounds;
    return bounds.united(image);
}

void Conversion::prepare(OGRLayerH layer, const CoordSystemPtr &from, const CoordSystemPtr &to,
                         GeometryChange &change)
{
    if (from && to && from != to)
        change.transform.emplace(CoordTransform(from, to));
    change.mostBendM = m_mostBendM;
    if (!to || !isMapInfo())
        return;
    m_mapInfo = mapInfoTarget(*to);
    if (!isMif())
        change.limits = tableBounds(layer, change, to);
}

OptionList Conversion::optionsFor(const GeometryChange &change) const
{
    OptionList list = layerOptionsOf(m_format);
    const QRectF &r = change.limits;
    QStringList corners;
    for (const double corner : {r.left(), r.top(), r.right(), r.bottom()})
        corners << QString::number(corner, 'g', 17);
    const QByteArray bounds = QByteArray("BOUNDS=") + corners.join(QLatin1Char(',')).toLatin1();
    if (!r.isEmpty())
        list.reset(CSLAddString(list.release(), bounds.constData()));
    return list;
}

SpatialReference referenceOf(const CoordSystemPtr &system)
{
    SpatialReference reference(OSRNewSpatialReference(nullptr), OSRDestroySpatialReference);
    OSRSetAxisMappingStrategy(reference.get(), OAMS_TRADITIONAL_GIS_ORDER);
    QByteArray wkt = system->exportToWkt().toUtf8();
    char *text = wkt.data();
    if (OSRImportFromWkt(reference.get(), &text) != OGRERR_NONE)
        reference.reset();
    return reference;
}

void Conversion::convertLayer(int index)
{
    OGRLayerH layer = GDALDatasetGetLayer(m_source.get(), index);
    const CoordSystemPtr source = sourceSystem(layer);
    const CoordSystemPtr target = carriable(m_to ? m_to : source);
    GeometryChange change;
    prepare(layer, source, target, change);
    const bool named = target && !isMapInfo(); // MapInfo's files get theirs behind the driver's back
    const SpatialReference reference =
        named ? referenceOf(target) : SpatialReference(nullptr, OSRDestroySpatialReference);
    const OptionList options = optionsFor(change);
    LayerCopy copy({layer, m_target.get(), reference.get(), options.get(), change}, m_losses, m_messages);

    const GIntBig total = OGR_L_GetFeatureCount(layer, FALSE);
    Progress progress(true, total);
    copy.run([this](const QString &name, const Rejection &rejection) { m_rejected.add(name, rejection); },
             [&progress](GIntBig done) { progress.update(done, done); });
    m_features += copy.written();
    noteWarnings();
    m_written.push_back({target, copy.samples()});
}

/// The driver's words for what it changed: "… couldn't be converted correctly from UTF-8 to CP1251", "Value …
/// has been truncated to …".
bool tellsLoss(const QString &warning)
{
    return warning.contains(QLatin1String("converted correctly")) ||
           warning.contains(QLatin1String("truncated"));
}

void Conversion::noteWarnings()
{
    for (const QString &warning : m_messages.warnings())
        if (tellsLoss(warning))
            m_losses.add(warning);
        else
            m_notes << warning;
    m_messages.clear();
}

/// How far a place is off when the output is read again, in the system's unit; NaN for no place.
double farthestOff(const CoordSystemPtr &system, const CoordSystemPtr &readAgain,
                   const QVector<QPointF> &samples)
{
    const CoordTransform transform(system, readAgain);
    double farthest = 0.0;
    for (const QPointF &sample : samples) {
        QPointF again(NAN, NAN);
        if (std::isfinite(sample.x()) && transform.forward(sample, again))
            farthest = std::max(farthest, std::hypot(again.x() - sample.x(), again.y() - sample.y()));
    }
    return farthest;
}

QString lossOf(const CoordSystemPtr &system, const CoordSystemPtr &readAgain, const QVector<QPointF> &samples)
{
    if (!readAgain)
        return QStringLiteral("the format carries no coordinate system (%1)").arg(system->description());
    const double millimetre = system->isLatLong() ? 1e-8 : 1e-3;
    const double off = farthestOff(system, readAgain, samples);
    if (off <= millimetre)
        return {};
    return QStringLiteral("the format carries another system, %1 instead of %2: places are off by %3")
        .arg(readAgain->description(), system->description(), QString::number(off, 'g', 4));
}

/// Reads the output as anyone would, and compares.
void Conversion::checkSystems()
{
    m_messages.clear();
    const Dataset again = openForReading(m_stage.path(), m_messages);
    const int layers = GDALDatasetGetLayerCount(again.get());
    for (int i = 0; i < layers && i < static_cast<int>(m_written.size()); ++i) {
        const Written &written = m_written[static_cast<std::size_t>(i)];
        if (!written.system)
            continue;
        OGRLayerH layer = GDALDatasetGetLayer(again.get(), i);
        const QString loss =
            lossOf(written.system, systemOfLayer(m_session, again.get(), layer), written.samples);
        if (!loss.isEmpty())
            m_losses.add(loss);
    }
}

void Conversion::tell() const
{
    for (const QString &note : m_notes)
        complain(QStringLiteral("note: ") + note);
    for (const QString &loss : m_losses.all())
        complain(QStringLiteral("lost: ") + loss);
    if (m_rejected.count() > 0)
        complain(QStringLiteral("%1 of %2 features left out; see %3.rejected.csv")
                     .arg(QString::number(m_rejected.count()),
                          QString::number(m_rejected.count() + m_features),
                          QFileInfo(m_out).completeBaseName()));
}

int Conversion::run()
{
    const bool transaction = GDALDatasetTestCapability(m_target.get(), ODsCTransactions) &&
                             GDALDatasetStartTransaction(m_target.get(), FALSE) == OGRERR_NONE;
    const int layers = GDALDatasetGetLayerCount(m_source.get());
    for (int i = 0; i < layers; ++i)
        convertLayer(i);
    m_messages.clear();
    if (transaction && GDALDatasetCommitTransaction(m_target.get()) != OGRERR_NONE)
        throw Failure(QStringLiteral("cannot write %1: %2").arg(m_out, m_messages.reason()));
    m_target.reset();
    if (m_messages.failed())
        throw Failure(QStringLiteral("cannot write %1: %2").arg(m_out, m_messages.reason()));
    if (m_mapInfo)
        giveSystem(m_stage.path(), *m_mapInfo);
    checkSystems();
    m_rejected.close();
    m_stage.publish();
    tell();
    return m_rejected.count() > 0 ? SomeFailed : Success;
}

int run(const CommandLine &line) { return Conversion(line).run(); }

} // namespace

const Command &convertCommand()
{
    static const Command command = {
        "convert",
        "[--to CS] [options] IN OUT",
        "A file of features into another system, another format, or both.",
        R"(Reads and writes every vector format that GDAL knows (nivora-cs list-formats), all
layers and attributes included. The format of OUT follows from its extension.
Without --to only the format changes. The CoordSys clause of a MIF and the
projection of a TAB are read as they stand, affine transformation and bounds
included, and a MIF gets the exact clause of its system.
OUT appears whole or not at all. What its format cannot hold - the system, an
affine transformation, a column, curves, heights - is refused, unless --lossy is
given; then it is told on stderr. Features that cannot be transformed are left
out and listed in OUT's name with .rejected.csv; the exit status is 1 then.

Examples:
  nivora-cs convert parcels.tab parcels.gpkg --to 4326
  nivora-cs convert --from 28407 --to 'CoordSys Earth Projection 1, 104' roads.shp roads.mif
  nivora-cs convert --segmentize 1 --to 3857 borders.mif borders.geojson
)",
        2,
        {
            {"to", "CS", "The system of OUT; that of IN when not given."},
            {"from", "CS", "The system of IN, whatever the file says."},
            {"format", "NAME", "The format of OUT, whatever its extension."},
            {"lossy", nullptr, "Go on without what the format cannot hold."},
            {"overwrite", nullptr, "Replace OUT."},
            {"segmentize", "M", "Add vertices where a straight edge bends by more than M metres in OUT."},
        },
        run,
    };
    return command;
}
