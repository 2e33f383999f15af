#include "Workshop.h"

#include "Fuzz.h"

#include <QCoreApplication>
#include <QFile>
#include <QLoggingCategory>
#include <QTemporaryDir>

using namespace nivora::cs;

namespace {

struct Shared
{
    QTemporaryDir dir;
    std::shared_ptr<CoordSysFactory> factory;
};

Shared *shared = nullptr;

/// The Oracle table is read at every call: the factory's directory is the one that targets write to.
void linkCatalogues(const QDir &dir)
{
    const QDir shipped(QStringLiteral(NIVORA_RESOURCES));
    for (const char *name : {"projection_en.xml", "projections_en.prj", "cs_mbr.xml"})
        require(QFile::copy(shipped.filePath(QLatin1String(name)), dir.filePath(QLatin1String(name))),
                "the shipped catalogues can be copied");
}

} // namespace

void Workshop::open()
{
    static int argc = 1;
    static char name[] = "nivora-fuzz";
    static char *argv[] = {name, nullptr};
    new QCoreApplication(argc, argv);
    QLoggingCategory::setFilterRules(QStringLiteral("nivora.*=false"));
    shared = new Shared;
    linkCatalogues(QDir(shared->dir.path()));
    QDir(shared->dir.path()).mkdir(QStringLiteral("work"));
    shared->factory =
        std::make_shared<CoordSysFactory>(shared->dir.path(), dir().path(), QStringLiteral("en"));
    require(shared->factory->initCoordSystemEnvironment(), "the factory starts");
    CoordSysFactory::setDefaultCoordSysFactory(shared->factory);
}

CoordSysFactory &Workshop::factory() { return *shared->factory; }

QDir Workshop::dir() { return QDir(shared->dir.filePath(QStringLiteral("work"))); }

void Workshop::put(const char *name, const QByteArray &content)
{
    for (const QDir &target : {dir(), QDir(shared->dir.path())}) {
        if (target.path() == shared->dir.path() && qstrcmp(name, "OracleSRID.xml") != 0)
            continue;
        QFile file(target.filePath(QLatin1String(name)));
        require(file.open(QIODevice::WriteOnly | QIODevice::Truncate), "the directory takes files");
        file.write(content);
    }
}
