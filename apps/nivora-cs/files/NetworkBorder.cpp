#include "NetworkBorder.h"

#include "GdalFiles.h"

#include <cpl_conv.h>
#include <cpl_http.h>
#include <cpl_string.h>
#include <cpl_vsi.h>

#include <QFileInfo>
#include <QMutex>
#include <QObject>

#include <algorithm>

namespace {

/// File systems of GDAL that lie elsewhere.
constexpr const char *remoteSystems[] = {"/vsicurl", "/vsis3",    "/vsigs",      "/vsiaz",  "/vsiadls",
                                         "/vsioss",  "/vsiswift", "/vsiwebhdfs", "/vsihdfs"};

/// Those that GDAL's option below does not close.
constexpr const char *streamingSystems[] = {
    "/vsicurl_streaming/", "/vsis3_streaming/",    "/vsigs_streaming/", "/vsiaz_streaming/",
    "/vsioss_streaming/",  "/vsiswift_streaming/", "/vsiwebhdfs/",      "/vsihdfs/"};

/// Drivers that open a connection of their own.
constexpr const char *connectingDrivers[] = {"PostgreSQL", "MySQL", "MSSQLSpatial", "ODBC", "OCI",
                                             "MongoDBv3",  "HANA",  "GPSBabel",     "OGDI", "SOSI"};

constexpr char gridPlace[] = "https://cdn.proj.org"; ///< where the engine gets them

QMutex lock;
QStringList notAsked; // under the lock

bool namesNetwork(const QString &argument)
{
    if (QFileInfo::exists(argument))
        return false;
    const auto contains = [&argument](const char *part) {
        return argument.contains(QLatin1String(part), Qt::CaseInsensitive);
    };
    if (contains("://") || std::any_of(std::begin(remoteSystems), std::end(remoteSystems), contains))
        return true;
    for (int i = 0; i < GDALGetDriverCount(); ++i) {
        const char *const prefix = GDALGetMetadataItem(GDALGetDriver(i), GDAL_DMD_CONNECTION_PREFIX, nullptr);
        if (prefix && argument.startsWith(QLatin1String(prefix), Qt::CaseInsensitive))
            return true;
    }
    return false;
}

CPLHTTPResult *refuse(const char *url, CSLConstList, GDALProgressFunc, void *, CPLHTTPFetchWriteFunc, void *,
                      void *)
{
    {
        const QMutexLocker locked(&lock);
        if (!notAsked.contains(QString::fromUtf8(url)))
            notAsked << QString::fromUtf8(url);
    }
    const QByteArray why = QObject::tr("the network is asked only when an argument names it").toUtf8();
    CPLError(CE_Failure, CPLE_AppDefined, "%s: %s", url, why.constData());
    auto *const result = static_cast<CPLHTTPResult *>(CPLCalloc(1, sizeof(CPLHTTPResult))); // GDAL frees it
    result->nStatus = 1;
    result->pszErrBuf = CPLStrdup(why.constData());
    return result;
}

/// Puts a file system without files in the place of one.
void close(const char *system)
{
    const std::unique_ptr<VSIFilesystemPluginCallbacksStruct, void (*)(VSIFilesystemPluginCallbacksStruct *)>
        empty(VSIAllocFilesystemPluginCallbacksStruct(), VSIFreeFilesystemPluginCallbacksStruct);
    empty->open = [](void *, const char *, const char *) -> void * { return nullptr; };
    VSIInstallPluginHandler(system, empty.get());
}

void drop(GDALDriverH driver)
{
    GDALDeregisterDriver(driver);
    GDALDestroyDriver(driver);
}

} // namespace

void keepBorder(const QString &argument)
{
    if (namesNetwork(argument))
        return;
    CPLHTTPSetFetchCallback(refuse, nullptr);
    CPLSetConfigOption("CPL_VSIL_CURL_ALLOWED_FILENAME", "/vsicurl/none"); // the only one that may be opened
    for (const char *system : streamingSystems)
        close(system);
    for (const char *name : connectingDrivers)
        if (GDALDriverH driver = GDALGetDriverByName(name))
            drop(driver);
}

QStringList placesNotAsked()
{
    const QMutexLocker locked(&lock);
    return notAsked;
}

QString whyNoNetwork()
{
    const GdalMessages quiet;
    const QByteArray place =
        qEnvironmentVariableIsSet("PROJ_NETWORK_ENDPOINT") ? qgetenv("PROJ_NETWORK_ENDPOINT") : gridPlace;
    CPLHTTPSetFetchCallback(nullptr, nullptr); // it was asked for
    const std::unique_ptr<char *, void (*)(char **)> options(
        CSLSetNameValue(CSLSetNameValue(nullptr, "TIMEOUT", "10"), "NO_BODY", "1"), CSLDestroy);
    const std::unique_ptr<CPLHTTPResult, void (*)(CPLHTTPResult *)> result(
        CPLHTTPFetch(place.constData(), options.get()), CPLHTTPDestroyResult);
    if (result && result->nStatus == 0) // any answer is one
        return {};
    return QStringLiteral("%1: %2").arg(QString::fromUtf8(place), result && result->pszErrBuf
                                                                      ? QString::fromUtf8(result->pszErrBuf)
                                                                      : quiet.reason());
}
