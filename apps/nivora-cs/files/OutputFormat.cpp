#include "OutputFormat.h"

#include "MapInfoFiles.h"

#include <cpl_string.h>
#include <ogr_srs_api.h>

#include <QFile>

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

using OptionList = std::unique_ptr<char *, void (*)(char **)>;
using SpatialReference = std::unique_ptr<void, void (*)(OGRSpatialReferenceH)>;

OptionList layerOptionsOf(const QString &driver, const QRectF &bounds)
{
    char **list = nullptr;
    for (const DriverOption &row : layerOptions)
        if (driver == QLatin1String(row.driver))
            list = CSLAddString(list, row.option);
    QStringList corners;
    for (const double corner : {bounds.left(), bounds.top(), bounds.right(), bounds.bottom()})
        corners << QString::number(corner, 'g', 17);
    if (!bounds.isEmpty())
        list = CSLSetNameValue(list, "BOUNDS", corners.join(QLatin1Char(',')).toLatin1().constData());
    return OptionList(list, CSLDestroy);
}

/// MapInfo's files get theirs behind the driver's back.
SpatialReference referenceOf(const OutputLayer &layer)
{
    SpatialReference reference(nullptr, OSRDestroySpatialReference);
    if (!layer.system || layer.mapInfo)
        return reference;
    reference.reset(OSRNewSpatialReference(nullptr));
    OSRSetAxisMappingStrategy(reference.get(), OAMS_TRADITIONAL_GIS_ORDER);
    QByteArray wkt = layer.system->exportToWkt().toUtf8();
    char *text = wkt.data();
    if (OSRImportFromWkt(reference.get(), &text) != OGRERR_NONE)
        reference.reset();
    return reference;
}

} // namespace

OutputFormat::OutputFormat(const QString &path, const QString &name, const QString &source)
    : m_driver(driverForWriting(path, name))
    , m_isMapInfo(driverName(m_driver) == QLatin1String("MapInfo File"))
    , m_isMif(m_isMapInfo && path.endsWith(QLatin1String(".mif"), Qt::CaseInsensitive))
    , m_encoding(m_isMapInfo ? encodingLike(source) : QByteArray())
{}

bool OutputFormat::has(const char *capability) const
{
    return QLatin1String(GDALGetMetadataItem(m_driver, capability, nullptr)) == QLatin1String("YES");
}

/// A MapInfo file is opened, and its characters fixed, with the data set.
Dataset OutputFormat::create(const QString &path, const OutputLayer &layer) const
{
    char **list = nullptr;
    if (m_isMapInfo)
        list = CSLSetNameValue(list, "ENCODING", m_encoding.constData());
    if (layer.mapInfo && isTable() && layer.mapInfo->needsLongHeader)
        list = CSLSetNameValue(list, "BLOCKSIZE", "1024"); // the header is a block
    const OptionList options(list, CSLDestroy);
    return Dataset(
        GDALCreate(m_driver, QFile::encodeName(path).constData(), 0, 0, 0, GDT_Unknown, options.get()));
}

OGRLayerH OutputFormat::createLayer(GDALDatasetH dataset, const OutputLayer &layer) const
{
    const SpatialReference reference = referenceOf(layer);
    const OptionList options = layerOptionsOf(name(), layer.bounds);
    return GDALDatasetCreateLayer(dataset, layer.name.toUtf8().constData(), reference.get(), layer.type,
                                  options.get());
}

QStringList OutputFormat::filesOf(const QString &path) const
{
    const GdalMessages messages; // it may be damaged
    const QByteArray driver = name().toUtf8();
    const char *const drivers[] = {driver.constData(), nullptr};
    const Dataset dataset(
        GDALOpenEx(QFile::encodeName(path).constData(), GDAL_OF_VECTOR, drivers, nullptr, nullptr));
    if (!dataset)
        return {};
    const OptionList list(GDALGetFileList(dataset.get()), CSLDestroy);
    QStringList files;
    for (int i = 0; i < CSLCount(list.get()); ++i)
        files << QString::fromUtf8(list.get()[i]);
    return files;
}
