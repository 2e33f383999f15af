// Writes resources/system-planes.tsv, from which coordinates without a system are told where they may lie:
// the areas of use of PROJ's projected systems, and of the catalogue's without a code, in their own planes.
// Run it after an update of PROJ's database; systems that the file lacks are computed when a guess is asked
// for first, a millisecond each.
//   make-system-planes RESOURCES

#include <coordsys/CoordSysFactory.h>
#include <coordsys/SystemGuess.h>
#include <coordsys/SystemSearch.h>

#include <QCoreApplication>
#include <QDir>
#include <QSaveFile>
#include <QTemporaryDir>
#include <QTextStream>

using namespace nivora::cs;

int main(int argc, char **argv)
{
    const QCoreApplication application(argc, argv);
    const QDir resources(application.arguments().value(1));
    const QTemporaryDir nobody; // without systems of a user's own
    const auto factory =
        std::make_shared<CoordSysFactory>(resources, QDir(nobody.path()), QStringLiteral("en"));
    if (!factory->initCoordSystemEnvironment())
        return 1;
    CoordSysFactory::setDefaultCoordSysFactory(factory);
    QSaveFile file(resources.filePath(QStringLiteral("system-planes.tsv")));
    const bool isWritten =
        file.open(QIODevice::WriteOnly) && systemGuess(*factory)->writePlanes(file) && file.commit();
    if (!isWritten)
        QTextStream(stderr) << file.fileName() << ": " << file.errorString() << '\n';
    return isWritten ? 0 : 1;
}
