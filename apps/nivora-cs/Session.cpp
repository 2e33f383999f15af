#include "Session.h"

#include "CommandLine.h"
#include "FileNames.h"
#include "Messages.h"
#include "Output.h"

#include <coordsys/GridFolders.h>

#include <QCoreApplication>
#include <QDir>
#include <QLoggingCategory>
#include <QMutex>
#include <QStandardPaths>

using nivora::cs::CoordSysFactory;

namespace {

QMutex messageLock;
bool verbose = false;     // under messageLock, like the next
QString lastErrorMessage; // of the library

const char *levelName(QtMsgType type)
{
    switch (type) {
    case QtDebugMsg:
        return "debug";
    case QtInfoMsg:
        return "info";
    case QtWarningMsg:
        return "warning";
    default:
        return "error";
    }
}

void takeMessage(QtMsgType type, const QMessageLogContext &context, const QString &message)
{
    const QMutexLocker lock(&messageLock);
    if (type == QtCriticalMsg && QLatin1String(context.category) == QLatin1String("nivora.cs"))
        lastErrorMessage = message;
    if (verbose || type == QtFatalMsg)
        report(QStringLiteral("%1: %2").arg(QLatin1String(levelName(type)), message));
}

void setVerbose()
{
    QLoggingCategory::setFilterRules(QStringLiteral("nivora.cs.debug=true\nnivora.cs.info=true"));
    const QMutexLocker lock(&messageLock);
    verbose = true;
}

QString takeLastErrorMessage()
{
    const QMutexLocker lock(&messageLock);
    return std::exchange(lastErrorMessage, QString());
}

QDir resourceDir(const CommandLine &line)
{
    if (line.isSet("resources"))
        return QDir(localPath(line.value("resources")));
    const QDir programDir(QCoreApplication::applicationDirPath());
    const QDir installed(QDir::cleanPath(programDir.filePath(QStringLiteral(NIVORA_CS_DATA_FROM_BIN))));
    const QDir inBuildTree(QDir::cleanPath(programDir.filePath(QStringLiteral("../share/nivora-cs"))));
    return installed.exists() ? installed : inBuildTree;
}

QDir userDir(const CommandLine &line)
{
    return QDir(line.isSet("user-dir") ? localPath(line.value("user-dir"))
                                       : QStandardPaths::writableLocation(QStandardPaths::AppDataLocation));
}

/// One reason for one failure: what was logged, which is nearer to the cause, else the exception.
Failure startUpFailure(const QDir &resources, const QString &exceptionText)
{
    const QString logged = takeLastErrorMessage();
    return Failure(QObject::tr("cannot start with the catalogues in %1: %2")
                       .arg(resources.absolutePath(), logged.isEmpty() ? exceptionText : logged));
}

} // namespace

void installMessageHandler() { qInstallMessageHandler(takeMessage); }

Session::Session(const CommandLine &line)
{
    if (line.isSet("verbose"))
        setVerbose();
    const QString language = line.isSet("language") ? line.value("language") : localeLanguage();
    const QDir resources = resourceDir(line);
    m_factory = std::make_shared<CoordSysFactory>(resources, userDir(line), language);
    bool started = false;
    try {
        started = m_factory->initCoordSystemEnvironment();
    } catch (const std::exception &e) {
        throw startUpFailure(resources, QString::fromUtf8(e.what()));
    }
    if (!started)
        throw startUpFailure(resources, QObject::tr("no reason is known"));
    if (line.isSet("grids"))
        nivora::cs::addGridFolder(localPath(line.value("grids")));
    nivora::cs::setGridsFromNetwork(line.isSet("network"));
    CoordSysFactory::setDefaultCoordSysFactory(m_factory);
}
