#include "GdalFiles.h"

#include "BlockFiles.h"
#include "CommandLine.h"
#include "Commands.h"
#include "Output.h"

#include <cpl_error.h>
#include <cpl_string.h>

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QObject>

#include <algorithm>

namespace {

constexpr int mostWarnings = 20;

QString item(GDALDriverH driver, const char *name)
{
    return QString::fromUtf8(GDALGetMetadataItem(driver, name, nullptr));
}

bool has(GDALDriverH driver, const char *capability)
{
    return item(driver, capability) == QLatin1String("YES");
}

bool writesVectors(GDALDriverH driver)
{
    return has(driver, GDAL_DCAP_VECTOR) && has(driver, GDAL_DCAP_CREATE);
}

QStringList extensionsOf(GDALDriverH driver)
{
    const QString several = item(driver, GDAL_DMD_EXTENSIONS);
    return (several.isEmpty() ? item(driver, GDAL_DMD_EXTENSION) : several)
        .split(QLatin1Char(' '), Qt::SkipEmptyParts);
}

/// Their drivers read a few bytes at a time, and ask the system where they are before each.
constexpr const char *hastyDrivers[] = {"MapInfo File", "ESRI Shapefile"};

/// The name under which the driver reads fast.
QByteArray quickName(GDALDriverH driver, const QString &path)
{
    const QFileInfo info(path);
    const bool isHasty =
        driver && info.isFile() &&
        std::any_of(std::begin(hastyDrivers), std::end(hastyDrivers),
                    [driver](const char *one) { return driverName(driver) == QLatin1String(one); });
    return isHasty ? inBlocks(QFile::encodeName(info.absoluteFilePath())) : QFile::encodeName(path);
}

template <typename Accept> GDALDriverH firstDriver(Accept &&accept)
{
    for (int i = 0; i < GDALGetDriverCount(); ++i)
        if (GDALDriverH driver = GDALGetDriver(i); writesVectors(driver) && accept(driver))
            return driver;
    return nullptr;
}

} // namespace

GdalMessages::GdalMessages() { CPLPushErrorHandlerEx(&GdalMessages::take, this); }

GdalMessages::~GdalMessages() { CPLPopErrorHandler(); }

void GdalMessages::take(CPLErr level, CPLErrorNum, const char *text)
{
    auto *self = static_cast<GdalMessages *>(CPLGetErrorHandlerUserData());
    const QString message = QString::fromUtf8(withoutBlocks(text));
    if (level >= CE_Failure)
        self->m_error = message;
    else if (level == CE_Warning && self->m_warnings.size() < mostWarnings &&
             !self->m_warnings.contains(message))
        self->m_warnings << message;
}

QString GdalMessages::reason() const
{
    if (!m_error.isEmpty())
        return m_error;
    return m_warnings.isEmpty() ? QObject::tr("no reason is known") : m_warnings.last();
}

void GdalMessages::clear()
{
    m_error.clear();
    m_warnings.clear();
}

QByteArray driverEncoding(const QString &name)
{
    const QString prefix = QStringLiteral("windows-");
    return name.startsWith(prefix, Qt::CaseInsensitive) ? "CP" + name.mid(prefix.size()).toLatin1()
                                                        : name.toLatin1();
}

Dataset openForReading(const QString &path, const GdalMessages &messages, const QString &encoding)
{
    const QByteArray name = QFile::encodeName(path);
    GDALDriverH driver = GDALIdentifyDriverEx(name.constData(), GDAL_OF_VECTOR, nullptr, nullptr);
    char **list = nullptr;
    if (driver && driverName(driver) == QLatin1String("CSV"))
        list = CSLSetNameValue(list, "KEEP_GEOM_COLUMNS", "NO"); // else they were written twice
    if (driver && !encoding.isEmpty() &&
        item(driver, GDAL_DMD_OPENOPTIONLIST).contains(QLatin1String("'ENCODING'")))
        list = CSLSetNameValue(list, "ENCODING", driverEncoding(encoding).constData());
    const std::unique_ptr<char *, void (*)(char **)> options(list, CSLDestroy);
    Dataset dataset(GDALOpenEx(quickName(driver, path).constData(),
                               GDAL_OF_VECTOR | GDAL_OF_READONLY | GDAL_OF_VERBOSE_ERROR, nullptr,
                               options.get(), nullptr));
    if (!dataset)
        throw Failure(QObject::tr("cannot read %1: %2").arg(path, messages.reason()));
    return dataset;
}

QString writtenFile(const QString &path)
{
    const QFileInfo info(path);
    const QString attributes = info.dir().filePath(info.completeBaseName() + QStringLiteral(".dbf"));
    const bool isShape = info.suffix().compare(QLatin1String("shp"), Qt::CaseInsensitive) == 0;
    return isShape && !info.exists() && QFileInfo::exists(attributes) ? attributes : path;
}

std::vector<int> layersNamed(const QStringList &wanted, GDALDatasetH dataset, const QString &path)
{
    QStringList names;
    for (int i = 0; i < GDALDatasetGetLayerCount(dataset); ++i)
        names << QString::fromUtf8(OGR_L_GetName(GDALDatasetGetLayer(dataset, i)));
    std::vector<int> layers;
    for (const QString &name : wanted) {
        if (!names.contains(name))
            throw Failure(QObject::tr("%1 has no layer \"%2\", but %3")
                              .arg(path, name, names.join(QStringLiteral(", "))));
        layers.push_back(static_cast<int>(names.indexOf(name)));
    }
    for (int i = 0; i < names.size() && wanted.isEmpty(); ++i)
        layers.push_back(i);
    return layers;
}

GDALDriverH driverForWriting(const QString &path, const QString &format)
{
    const QString extension = QFileInfo(path).suffix();
    // The other driver of this extension comes first and takes a time that grows with the square of the size.
    const bool isKml = format.isEmpty() && extension.compare(QLatin1String("kml"), Qt::CaseInsensitive) == 0;
    const QString name = isKml ? QStringLiteral("KML") : format;
    GDALDriverH driver = firstDriver([&](GDALDriverH candidate) {
        return name.isEmpty() ? extensionsOf(candidate).contains(extension, Qt::CaseInsensitive)
                              : driverName(candidate).compare(name, Qt::CaseInsensitive) == 0;
    });
    if (driver)
        return driver;
    throw Failure(
        format.isEmpty()
            ? QObject::tr("no format is written to files ending in \".%1\"; give --format (see "
                          "nivora-cs list-formats)")
                  .arg(extension)
            : QObject::tr("no format \"%1\" can be written; see nivora-cs list-formats").arg(format));
}

QString driverName(GDALDriverH driver) { return QString::fromUtf8(GDALGetDriverShortName(driver)); }

namespace {

int listFormats(const CommandLine &)
{
    GDALAllRegister();
    QString text;
    for (int i = 0; i < GDALGetDriverCount(); ++i) {
        GDALDriverH driver = GDALGetDriver(i);
        if (!has(driver, GDAL_DCAP_VECTOR))
            continue;
        const QString access = QStringLiteral("%1%2").arg(
            has(driver, GDAL_DCAP_OPEN) ? QStringLiteral("r") : QStringLiteral("-"),
            has(driver, GDAL_DCAP_CREATE) ? QStringLiteral("w") : QStringLiteral("-"));
        text += QStringLiteral("%1\t%2\t%3\t%4\n")
                    .arg(driverName(driver), access, extensionsOf(driver).join(QLatin1Char(',')),
                         QString::fromUtf8(GDALGetDriverLongName(driver)));
    }
    print(text);
    return Success;
}

} // namespace

const Command &listFormatsCommand()
{
    static const Command command = {
        "list-formats",
        "",
        QT_TRANSLATE_NOOP("QObject", "The file formats that convert reads and writes."),
        QT_TRANSLATE_NOOP("QObject",
                          R"(A line each: name (for --format), r when it can be read and w when it can be
written, the extensions of its files, and what it is; separated by tabs.

Example:
  nivora-cs list-formats | grep -i mapinfo
)"),
        0,
        {},
        listFormats,
    };
    return command;
}
