// Writes resources/system-planes.tsv, from which coordinates without a system are told where they may lie:
// the areas of use of PROJ's projected systems in their own planes. Run it after an update of PROJ's
// database; systems that the file lacks are computed when a guess is asked for first, a millisecond each.
//   make-system-planes RESOURCES

#include <coordsys/MapinfoCoordSystem.h>
#include <coordsys/MapinfoSearch.h>
#include <coordsys/SystemGuess.h>

#include <QCoreApplication>
#include <QDir>
#include <QSaveFile>
#include <QTextStream>

using namespace nivora::cs;

int main(int argc, char **argv)
{
    const QCoreApplication application(argc, argv);
    const QDir resources(application.arguments().value(1));
    MapinfoCoordSystem catalogue{MapinfoCoordSystem::Creator()};
    catalogue.loadFromPRJ(resources, QStringLiteral("en"));
    const MapinfoSearch search(catalogue);
    QSaveFile file(resources.filePath(QStringLiteral("system-planes.tsv")));
    const bool isWritten =
        file.open(QIODevice::WriteOnly) && SystemGuess(search, resources).writePlanes(file) && file.commit();
    if (!isWritten)
        QTextStream(stderr) << file.fileName() << ": " << file.errorString() << '\n';
    return isWritten ? 0 : 1;
}
