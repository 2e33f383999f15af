#include "OutputFormat.h"

#include "BlockFiles.h"
#include "MapInfoFiles.h"
#include "Output.h"

#include <coordsys/CoordSystem.h>
#include <coordsys/CoordSystemConversions.h>
#include <coordsys/SystemInfo.h>

#include <cpl_string.h>
#include <ogr_srs_api.h>

#include <QFile>
#include <QFileInfo>
#include <QObject>

#include <algorithm>

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
    {"SQLite", "LAUNDER=NO"},
    {"PGDUMP", "LAUNDER=NO"},
};

/// Formats in which columns that differ by letter case alone are one.
constexpr const char *caselessDrivers[] = {"MapInfo File", "ESRI Shapefile", "GPKG",   "SQLite", "CSV",
                                           "OpenFileGDB",  "PGDUMP",         "LIBKML", "KML"};

constexpr const char *quickDrivers[] = {"ESRI Shapefile", "GPKG", "SQLite", "FlatGeobuf", "OpenFileGDB"};

bool isAmong(const char *const *begin, const char *const *end, const QString &driver)
{
    return std::any_of(begin, end, [&driver](const char *one) { return driver == QLatin1String(one); });
}

/// What a driver calls the columns that it adds itself.
struct OwnColumns
{
    const char *driver;
    const char *numbers;
    const char *geometry;
};
constexpr OwnColumns ownColumns[] = {
    {"GPKG", "fid", "geom"},
    {"SQLite", "ogc_fid", "GEOMETRY"},
    {"OpenFileGDB", "OBJECTID", "SHAPE"},
    {"PGDUMP", "ogc_fid", "wkb_geometry"},
};

/// The name, or one that no column has.
QString freeName(const QString &wanted, const QStringList &taken)
{
    QString name = wanted;
    for (int i = 1; taken.contains(name, Qt::CaseInsensitive); ++i)
        name = wanted + QLatin1Char('_') + QString::number(i);
    return name;
}

/// Nobody else reads a database before it appears, and one that is not finished never does: it need not
/// reach the disk page by page. What the environment says goes first.
void useFewWrites()
{
    constexpr struct
    {
        const char *option;
        const char *value;
    } options[] = {{"OGR_SQLITE_SYNCHRONOUS", "OFF"}, {"OGR_SQLITE_CACHE", "128"}}; // MB
    for (const auto &[option, value] : options)
        if (!CPLGetConfigOption(option, nullptr))
            CPLSetConfigOption(option, value);
}

using nivora::cs::CoordSystem;
using nivora::cs::SystemFormat;
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

/// WKT 1 has no place for an affine transformation.
QByteArray wktOf(const CoordSystem &system)
{
    const bool isMoved = nivora::cs::hasAffine(&system) && !system.isNonEarth();
    return (isMoved ? exportSystem(system, SystemFormat::Wkt2) : system.exportToWkt()).toUtf8();
}

/// MapInfo's files get theirs behind the driver's back.
SpatialReference referenceOf(const OutputLayer &layer)
{
    SpatialReference reference(nullptr, OSRDestroySpatialReference);
    if (layer.reference)
        reference.reset(OSRClone(layer.reference));
    if (layer.reference || !layer.system || layer.mapInfo)
        return reference;
    reference.reset(OSRNewSpatialReference(nullptr));
    OSRSetAxisMappingStrategy(reference.get(), OAMS_TRADITIONAL_GIS_ORDER);
    QByteArray wkt = wktOf(*layer.system);
    char *text = wkt.data();
    if (OSRImportFromWkt(reference.get(), &text) != OGRERR_NONE)
        reference.reset();
    return reference;
}

} // namespace

OutputFormat::OutputFormat(const QString &path, const QString &name, const QString &source,
                           const QString &encoding)
    : m_driver(driverForWriting(path, name))
    , m_isMapInfo(driverName(m_driver) == QLatin1String("MapInfo File"))
    , m_isMif(m_isMapInfo && path.endsWith(QLatin1String(".mif"), Qt::CaseInsensitive))
    , m_encoding(!encoding.isEmpty() ? driverEncoding(encoding)
                 : m_isMapInfo       ? encodingLike(source)
                                     : QByteArray())
{
    const QString suffix = QFileInfo(path).suffix();
    if (ownName(path) != path && suffix != suffix.toUpper())
        throw Failure(QObject::tr("files ending in \".%1\" are not found as %2: write .%3")
                          .arg(suffix, this->name(), suffix.toLower()));
    if (!encoding.isEmpty() && !hasLayerOption("ENCODING"))
        throw Failure(QObject::tr("--out-encoding: %1 writes UTF-8 alone").arg(this->name()));
}

bool OutputFormat::has(const char *capability) const
{
    return QLatin1String(GDALGetMetadataItem(m_driver, capability, nullptr)) == QLatin1String("YES");
}

bool OutputFormat::hasLayerOption(const char *option) const
{
    const QString list =
        QString::fromUtf8(GDALGetMetadataItem(m_driver, GDAL_DS_LAYER_CREATIONOPTIONLIST, nullptr));
    return list.contains(QStringLiteral("name='%1'").arg(QLatin1String(option)));
}

bool OutputFormat::holdsType(OGRFieldType type) const
{
    const QStringList types =
        QString::fromUtf8(GDALGetMetadataItem(m_driver, GDAL_DMD_CREATIONFIELDDATATYPES, nullptr))
            .split(QLatin1Char(' '), Qt::SkipEmptyParts);
    return types.isEmpty() || types.contains(QString::fromUtf8(OGR_GetFieldTypeName(type)));
}

bool OutputFormat::tellsCases() const
{
    return !isAmong(std::begin(caselessDrivers), std::end(caselessDrivers), name());
}

QString OutputFormat::ownName(const QString &name) const
{
    const int size = static_cast<int>(QFileInfo(name).suffix().size());
    const bool isSmall = m_isMapInfo || this->name() == QLatin1String("ESRI Shapefile");
    return isSmall ? name.left(name.size() - size) + name.right(size).toLower() : name;
}

bool OutputFormat::opensQuickly() const
{
    return isTable() || isAmong(std::begin(quickDrivers), std::end(quickDrivers), name());
}

bool OutputFormat::holdsNumbers() const
{
    return hasLayerOption("FID") || name().startsWith(QLatin1String("GeoJSON"));
}

/// The source's names of its numbers and geometries, and none that a column has.
char **OutputFormat::namesOf(const OutputLayer &layer, char **options) const
{
    const QString driver = name();
    for (const OwnColumns &own : ownColumns) {
        if (driver != QLatin1String(own.driver))
            continue;
        const bool hasNumbers = layer.keepsNumbers && !layer.numbersColumn.isEmpty();
        const QString numbers = hasNumbers ? layer.numbersColumn : QString::fromLatin1(own.numbers);
        const QString geometry =
            layer.geometryColumn.isEmpty() ? QString::fromLatin1(own.geometry) : layer.geometryColumn;
        options = CSLSetNameValue(options, "FID", freeName(numbers, layer.columns).toUtf8().constData());
        options =
            CSLSetNameValue(options, "GEOMETRY_NAME", freeName(geometry, layer.columns).toUtf8().constData());
    }
    return options;
}

/// A MapInfo file is opened, and its characters fixed, with the data set.
Dataset OutputFormat::create(const QString &path, const OutputLayer &layer) const
{
    useFewWrites();
    char **list = nullptr;
    if (m_isMapInfo)
        list = CSLSetNameValue(list, "ENCODING", m_encoding.constData());
    if (layer.mapInfo && isTable() && layer.mapInfo->needsLongHeader)
        list = CSLSetNameValue(list, "BLOCKSIZE", "1024"); // the header is a block
    const OptionList options(list, CSLDestroy);
    const bool jumps = isTable() || name() == QLatin1String("ESRI Shapefile");
    const QByteArray file = QFile::encodeName(path);
    return Dataset(GDALCreate(m_driver, (jumps ? inBlocks(file) : file).constData(), 0, 0, 0, GDT_Unknown,
                              options.get()));
}

OGRLayerH OutputFormat::createLayer(GDALDatasetH dataset, const OutputLayer &layer) const
{
    const SpatialReference reference = referenceOf(layer);
    char **list = namesOf(layer, layerOptionsOf(name(), layer.bounds).release());
    if (!m_isMapInfo && !m_encoding.isEmpty())
        list = CSLSetNameValue(list, "ENCODING", m_encoding.constData());
    if (layer.isProbe && hasLayerOption("SPATIAL_INDEX"))
        list = CSLSetNameValue(list, "SPATIAL_INDEX", "NO");
    const OptionList options(list, CSLDestroy);
    return GDALDatasetCreateLayer(dataset, layer.name.toUtf8().constData(), reference.get(), layer.type,
                                  options.get());
}

QStringList OutputFormat::filesOf(const QString &path) const
{
    const GdalMessages messages; // it may be damaged
    const QByteArray driver = name().toUtf8();
    const char *const drivers[] = {driver.constData(), nullptr};
    const Dataset dataset(GDALOpenEx(QFile::encodeName(writtenFile(path)).constData(), GDAL_OF_VECTOR,
                                     drivers, nullptr, nullptr));
    if (!dataset)
        return {};
    const OptionList list(GDALGetFileList(dataset.get()), CSLDestroy);
    QStringList files;
    for (int i = 0; i < CSLCount(list.get()); ++i)
        files << QString::fromUtf8(list.get()[i]);
    return files;
}
