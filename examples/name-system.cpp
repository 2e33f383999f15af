// Names the system that a file describes: a .prj, .qpj or .wkt in any notation, the layer of a .tab or .mif.

#include <coordsys/CoordSysFactory.h>
#include <coordsys/CoordSystem.h>
#include <coordsys/UserInput.h>

#include <QCoreApplication>
#include <QTextStream>

using namespace nivora::cs;

namespace {

void tell(const UserInput &input)
{
    const CoordSystem &cs = *input.system;
    QTextStream out(stdout);
    out << "name: " << cs.description() << '\n';
    if (cs.epsg() != CoordSystem::EPSG_UNDEFINDED)
        out << "code: " << cs.epsg() << '\n';
    out << "unit: " << cs.unit().name() << '\n';
    out << "CoordSys text: " << cs.prjStr() << '\n';
    for (const QString &note : input.notes) // what was assumed or left aside
        out << "note: " << note << '\n';
}

} // namespace

int main(int argc, char **argv)
{
    const QCoreApplication app(argc, argv);
    const QStringList arguments = app.arguments();
    const auto factory =
        std::make_shared<CoordSysFactory>(arguments.value(1), QString(), QStringLiteral("en"));
    try {
        if (!factory->initCoordSystemEnvironment())
            return 1;
        CoordSysFactory::setDefaultCoordSysFactory(factory);
        tell(factory->readUserInput(QLatin1Char('@') + arguments.value(2)));
    } catch (const std::exception &e) { // texts throw, coordinates do not
        QTextStream(stderr) << QString::fromUtf8(e.what()) << '\n';
        return 1;
    }
}
