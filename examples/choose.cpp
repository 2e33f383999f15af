#include <coordsys/CoordSysFactory.h>
#include <coordsys/CoordSystem.h>
#include <widgets/CoordSystemDialog.h>
#include <widgets/WidgetTranslations.h>

#include <QApplication>
#include <QStandardPaths>
#include <QTextStream>

using namespace nivora::cs;

int main(int argc, char **argv)
{
    QApplication app(argc, argv);
    installWidgetTranslations(QStringLiteral("en"));
    const QString resources = app.arguments().value(1, QStringLiteral("/usr/local/share/nivora-cs"));
    const QString ownSystems = QStandardPaths::writableLocation(QStandardPaths::AppDataLocation);
    const auto factory = std::make_shared<CoordSysFactory>(resources, ownSystems, QStringLiteral("en"));
    if (!factory->initCoordSystemEnvironment())
        return 1;
    CoordSysFactory::setDefaultCoordSysFactory(factory);

    const CoordSystemPtr chosen = CoordSystemDialog::choose(nullptr);
    if (chosen)
        QTextStream(stdout) << chosen->description() << '\n';
}
