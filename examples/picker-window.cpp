// The picker in a window of one's own. With a second argument it looks for that, tells what was chosen, and
// ends.

#include <coordsys/CoordSysFactory.h>
#include <coordsys/CoordSystem.h>
#include <widgets/CoordSystemPicker.h>
#include <widgets/WidgetTranslations.h>

#include <QApplication>
#include <QLabel>
#include <QStandardPaths>
#include <QTextStream>
#include <QTimer>
#include <QVBoxLayout>

using namespace nivora::cs;

int main(int argc, char **argv)
{
    QApplication app(argc, argv);
    installWidgetTranslations(QStringLiteral("en")); // before the widgets
    const QStringList arguments = app.arguments();
    const QString ownSystems = QStandardPaths::writableLocation(QStandardPaths::AppDataLocation);
    const auto factory =
        std::make_shared<CoordSysFactory>(arguments.value(1), ownSystems, QStringLiteral("en"));
    if (!factory->initCoordSystemEnvironment())
        return 1;
    CoordSysFactory::setDefaultCoordSysFactory(factory);

    QWidget window;
    CoordSystemPicker picker(factory);
    QLabel choice;
    QVBoxLayout layout(&window);
    layout.addWidget(&picker);
    layout.addWidget(&choice);
    QObject::connect(&picker, &CoordSystemPicker::choiceChanged, &choice, [&picker, &choice] {
        const CoordSystemPtr cs = picker.coordSystem();
        choice.setText(cs ? cs->description() : QString());
    });
    window.resize(900, 600);
    window.show();

    if (arguments.size() > 2) {
        picker.setCoordSystem(factory->createFromEpsg(arguments.at(2).toInt()));
        QTimer::singleShot(0, &app, [&choice] {
            QTextStream(stdout) << choice.text() << '\n';
            QCoreApplication::quit();
        });
    }
    return QApplication::exec();
}
