#include <coordsys/GridFolders.h>

#include "CoordSysTexts_p.h"
#include <coordsys/ProjEngine.h>

#include <proj.h>

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QMutexLocker>

#include <stdexcept>
#include <vector>

namespace nivora::cs {
namespace {

/// Needs the PROJ lock. PROJ's own list is that of its default context, which is none of ours.
QStringList &folders()
{
    static QStringList &list = *new QStringList; // outlives every static object
    if (list.isEmpty()) {
        list = QFile::decodeName(qgetenv("PROJ_LIB")).split(QDir::listSeparator(), Qt::SkipEmptyParts);
        list << gridDownloadFolder();
        const char *database = proj_context_get_database_path(globalProjContext());
        if (database)
            list << QFileInfo(QFile::decodeName(database)).absolutePath();
        list.removeDuplicates();
    }
    return list;
}

} // namespace

void addGridFolder(const QString &folder)
{
    if (folder.isEmpty() || !QFileInfo(folder).isDir())
        throw std::invalid_argument(CoordSysTexts::tr("Нет каталога %1").arg(folder).toStdString());
    const QMutexLocker lock(globalProj4Mutex());
    folders().prepend(QFileInfo(folder).absoluteFilePath());
    std::vector<QByteArray> names;
    for (const QString &name : folders())
        names.push_back(QFile::encodeName(name));
    std::vector<const char *> list;
    for (const QByteArray &name : names)
        list.push_back(name.constData());
    proj_context_set_search_paths(globalProjContext(), static_cast<int>(list.size()), list.data());
}

QStringList gridFolders()
{
    const QMutexLocker lock(globalProj4Mutex());
    return folders();
}

QString gridDownloadFolder()
{
    const QMutexLocker lock(globalProj4Mutex());
    return QFile::decodeName(proj_context_get_user_writable_directory(globalProjContext(), 0));
}

void setGridsFromNetwork(bool isAllowed)
{
    const QMutexLocker lock(globalProj4Mutex());
    proj_context_set_enable_network(globalProjContext(), isAllowed ? 1 : 0);
}

} // namespace nivora::cs
