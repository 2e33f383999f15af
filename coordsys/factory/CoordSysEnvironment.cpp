#include <coordsys/CoordSysEnvironment.h>

#include "CodedError_p.h"
#include "CoordSysTexts_p.h"
#include <coordsys/GridFolders.h>
#include <coordsys/ProjEngine.h>
#include <platform/Logger.h>
#include <platform/system/ReleasedBy.h>

#include <cpl_conv.h>
#include <ogr_srs_api.h>
#include <proj.h>

#include <QCoreApplication>
#include <QDir>
#include <QMutexLocker>
#include <QSettings>
#include <QStringList>

#include <memory>
#include <stdexcept>
#include <vector>

namespace nivora::cs {
namespace {

const QLatin1String databaseFile("proj.db");

/// Where a database may lie, in the order of preference. An empty path stands for the working directory.
QStringList candidates()
{
    QStringList paths = {
        QStringLiteral("../../third-party/out/share/proj"),
        QStringLiteral("../../../third-party/out/share/proj"),
    };
    if (QCoreApplication::instance()) { // a host without one has no directory and no settings
        const QString application = QCoreApplication::applicationDirPath();
        paths << application + QStringLiteral("/../share/proj")
              << application + QStringLiteral("/../Resources/proj") << application
              << QDir::toNativeSeparators(QSettings().value(QStringLiteral("proj/ProjDataDir")).toString())
              << application + QStringLiteral("/../../share/proj");
    }
    const QString dataDir = qEnvironmentVariable("NIVORA_DATA");
    if (!dataDir.isEmpty()) {
        paths << dataDir + QStringLiteral("/../proj");
        paths << dataDir + QStringLiteral("/../third-party/out/share/proj");
    }
    return paths;
}

/// Whether PROJ works with a database: it refuses other layouts, and SQLite what is damaged. Tried in a
/// context of its own, since one that opened a database keeps it.
bool isUsable(const QString &database)
{
    if (!QFileInfo(database).isFile()) // a FIFO would be waited for
        return false;
    const std::unique_ptr<PJ_CONTEXT, ReleasedBy<proj_context_destroy>> context(proj_context_create());
    proj_log_level(context.get(), PJ_LOG_NONE);
    return proj_context_set_database_path(context.get(), QFile::encodeName(database).constData(), nullptr,
                                          nullptr) &&
           proj_context_get_database_metadata(context.get(), "EPSG.VERSION");
}

QStringList directoriesWithDatabase()
{
    QStringList found;
    const QStringList paths = candidates();
    for (const QString &path : paths) {
        const QDir dir(path); // reads an empty path as ".", which QFileInfo would not
        if (!dir.exists())
            LOG_TRACE(CoordSysTexts::tr("Каталог с ресурсами %1 не существует").arg(dir.absolutePath()));
        else if (!dir.exists(databaseFile))
            continue;
        else if (isUsable(dir.absoluteFilePath(databaseFile)))
            found << QDir::toNativeSeparators(dir.absolutePath());
        else
            LOG_INFO(CoordSysTexts::tr("База данных %1 не подходит для PROJ, каталог пропущен")
                         .arg(QDir::toNativeSeparators(dir.absoluteFilePath(databaseFile))));
    }
    return found;
}

std::vector<QByteArray> encoded(const QStringList &paths)
{
    std::vector<QByteArray> result;
    for (const QString &path : paths)
        result.push_back(QFile::encodeName(path));
    return result;
}

/// PROJ_DATA wins over PROJ_LIB, and a context that looked once keeps what it found: the variable alone would
/// often go unheard. Needs the PROJ lock.
void tellEngines(const QStringList &paths)
{
    const std::vector<QByteArray> names = encoded(paths);
    std::vector<const char *> list;
    list.reserve(names.size());
    for (const QByteArray &name : names)
        list.push_back(name.constData());
    proj_context_set_search_paths(globalProjContext(), static_cast<int>(list.size()), list.data());
    const char *opened = proj_context_get_database_path(globalProjContext());
    const QString database = QDir::fromNativeSeparators(QFile::decodeName(opened));
    const QString wanted = QDir::fromNativeSeparators(paths.first()) + QLatin1Char('/') + databaseFile;
    if (QFileInfo(database).canonicalFilePath() != QFileInfo(wanted).canonicalFilePath())
        proj_context_set_database_path(globalProjContext(), QFile::encodeName(wanted).constData(), nullptr,
                                       nullptr);
    list.push_back(nullptr);
    OSRSetPROJSearchPaths(list.data());
}

} // namespace

void setMitabEnvVariable() { CPLSetConfigOption("MITAB_SET_TOWGS84_ON_KNOWN_DATUM", "YES"); }

void initProjLibEnvironment()
{
    const QStringList paths = directoriesWithDatabase();
    const QString joined = paths.join(QLatin1Char(':'));
    LOG_TRACE(QStringLiteral("Put PROJ_LIB value: %1").arg(joined));
    qputenv("PROJ_LIB", QFile::encodeName(joined));

    const QMutexLocker lock(globalProj4Mutex());
    if (!paths.isEmpty())
        tellEngines(paths);
    const QString grids = QCoreApplication::instance()
                              ? QSettings().value(QStringLiteral("proj/GridDir")).toString()
                              : QString();
    if (QFileInfo(grids).isDir())
        addGridFolder(grids);
    const PJ_INFO info = proj_info();
    LOG_INFO(QStringLiteral("proj version=%1").arg(QString::fromUtf8(info.version)));
    LOG_DEBUG(QStringLiteral("proj path (PROJ_LIB)=%1").arg(QFile::decodeName(info.searchpath)));
    if (!proj_context_get_database_path(globalProjContext()))
        throwCoded<std::logic_error>(
            Error::Code::NoDatabase,
            CoordSysTexts::tr(
                "Не найден файл \"%1\". Необходимо указать путь к нему в переменной окружения %2. "
                "Каталог можно указать также в PROJ_DATA или в настройке proj/ProjDataDir.")
                .arg(databaseFile, QStringLiteral("PROJ_LIB")));
}

} // namespace nivora::cs
