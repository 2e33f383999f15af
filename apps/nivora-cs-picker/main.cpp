// Shows the picker and prints what was chosen: a tagged string that nivora-cs and
// CoordSysFactory::createFromTaggedString() read.

#include <coordsys/CoordSysFactory.h>
#include <coordsys/CoordSystem.h>
#include <widgets/CoordSystemDialog.h>
#include <widgets/WidgetTranslations.h>

#include <QApplication>
#include <QCommandLineParser>
#include <QDir>
#include <QLocale>
#include <QLoggingCategory>
#include <QStandardPaths>

#include <algorithm>
#include <cstdio>
#include <cstring>
#include <exception>
#include <iterator>
#include <memory>
#include <stdexcept>

using namespace nivora::cs;

namespace {

enum ExitStatus { Chosen = 0, Cancelled = 1, Unusable = 2 };

QDir resourceDir()
{
    const QDir programDir(QCoreApplication::applicationDirPath());
    const QDir installed(QDir::cleanPath(programDir.filePath(QStringLiteral(NIVORA_CS_DATA_FROM_BIN))));
    return installed.exists()
               ? installed
               : QDir(QDir::cleanPath(programDir.filePath(QStringLiteral("../share/nivora-cs"))));
}

/// "37.6,55.7" or "30,50,40,60": as many numbers as wanted, longitude before latitude.
QVector<double> numbers(const QCommandLineParser &line, const QString &option, int count)
{
    QVector<double> values;
    bool isGood = true;
    for (const QString &text : line.value(option).split(QLatin1Char(','))) {
        bool isNumber = false;
        values << text.toDouble(&isNumber);
        isGood = isGood && isNumber && qIsFinite(values.last());
    }
    if (!isGood || values.size() != count)
        throw std::runtime_error("--" + option.toStdString() + ": " + line.value(option).toStdString());
    return values;
}

void addOptions(QCommandLineParser &line)
{
    line.setApplicationDescription(QStringLiteral(
        "Shows a dialog for choosing a coordinate system and prints the choice as a tagged string.\n"
        "Exit status: 0 chosen, 1 cancelled, 2 could not start."));
    line.addHelpOption();
    line.addVersionOption();
    const auto add = [&](const char *name, const char *description, const char *value) {
        line.addOption({QLatin1String(name), QLatin1String(description), QLatin1String(value)});
    };
    add("language", "Language of names and texts (that of the locale).", "ru|en");
    add("point", "Show systems in use at a point, degrees.", "LON,LAT");
    add("view", "The current view, drawn on the map and offered as a filter; degrees.",
        "WEST,SOUTH,EAST,NORTH");
    add("search", "Begin with this text in the search box.", "TEXT");
    add("current", "The system selected at first, in any notation.", "CS");
    add("resources", "Directory of the catalogues.", "DIR");
    add("user-dir", "Directory of the user's own systems.", "DIR");
}

QString languageOf(const QCommandLineParser &line)
{
    if (line.isSet(QStringLiteral("language")))
        return line.value(QStringLiteral("language"));
    return QLocale::system().language() == QLocale::Russian ? QStringLiteral("ru") : QStringLiteral("en");
}

std::shared_ptr<CoordSysFactory> startedFactory(const QCommandLineParser &line, const QString &language)
{
    const QString resources = QStringLiteral("resources");
    const QString user = QStringLiteral("user-dir");
    const auto factory = std::make_shared<CoordSysFactory>(
        line.isSet(resources) ? QDir(line.value(resources)) : resourceDir(),
        QDir(line.isSet(user) ? line.value(user)
                              : QStandardPaths::writableLocation(QStandardPaths::AppDataLocation)),
        language);
    if (!factory->initCoordSystemEnvironment())
        throw std::runtime_error("the catalogues cannot be read in " +
                                 factory->resourceDir().absolutePath().toStdString());
    CoordSysFactory::setDefaultCoordSysFactory(factory);
    return factory;
}

void prepare(CoordSystemPicker &picker, const CoordSysFactory &factory, const QCommandLineParser &line)
{
    if (line.isSet(QStringLiteral("current")))
        picker.setCoordSystem(factory.createFromUserInput(line.value(QStringLiteral("current"))));
    if (line.isSet(QStringLiteral("view"))) {
        const QVector<double> sides = numbers(line, QStringLiteral("view"), 4);
        const double east = sides.at(2) < sides.at(0) ? sides.at(2) + 360.0 : sides.at(2);
        picker.setView(QRectF(QPointF(sides.at(0), sides.at(1)), QPointF(east, sides.at(3))));
    }
    if (line.isSet(QStringLiteral("point"))) {
        const QVector<double> point = numbers(line, QStringLiteral("point"), 2);
        picker.filterByPoint({point.at(0), point.at(1)});
    }
    picker.setSearchText(line.value(QStringLiteral("search")));
}

int run(const QCommandLineParser &line)
{
    const QString language = languageOf(line);
    QLocale::setDefault(QLocale(language)); // numbers in texts
    installWidgetTranslations(language);
    QLoggingCategory::setFilterRules(QStringLiteral("nivora.cs.info=false"));
    const auto factory = startedFactory(line, language);
    CoordSystemDialog dialog(factory);
    prepare(*dialog.picker(), *factory, line);
    if (dialog.exec() != QDialog::Accepted)
        return Cancelled;
    std::puts(dialog.coordSystem()->taggedString().toUtf8().constData());
    return Chosen;
}

/// Qt ends the process where a window cannot be shown; a word of ours is better, and help needs no window.
bool hasDisplay(int argc, char **argv)
{
#if defined(Q_OS_UNIX) && !defined(Q_OS_MACOS)
    const char *const variables[] = {"DISPLAY", "WAYLAND_DISPLAY", "QT_QPA_PLATFORM"};
    const auto isSet = [](const char *name) { return !qEnvironmentVariableIsEmpty(name); };
    const auto isPlatform = [](const char *argument) { return std::strcmp(argument, "-platform") == 0; };
    return std::any_of(std::begin(variables), std::end(variables), isSet) ||
           std::any_of(argv, argv + argc, isPlatform);
#else
    Q_UNUSED(argc)
    Q_UNUSED(argv)
    return true;
#endif
}

std::unique_ptr<QCoreApplication> application(bool isShown, int &argc, char **argv)
{
    if (!isShown)
        return std::make_unique<QCoreApplication>(argc, argv);
#if QT_VERSION < QT_VERSION_CHECK(6, 0, 0) // always so later
    QCoreApplication::setAttribute(Qt::AA_EnableHighDpiScaling);
    QCoreApplication::setAttribute(Qt::AA_UseHighDpiPixmaps);
#endif
    return std::make_unique<QApplication>(argc, argv);
}

} // namespace

int main(int argc, char **argv)
{
    const bool isShown = hasDisplay(argc, argv);
    const std::unique_ptr<QCoreApplication> app = application(isShown, argc, argv);
    QCoreApplication::setOrganizationName(QStringLiteral("nivora"));
    QCoreApplication::setApplicationName(QStringLiteral("nivora-cs-picker"));
    QCoreApplication::setApplicationVersion(QStringLiteral(NIVORA_CS_VERSION));
    QCommandLineParser line;
    addOptions(line);
    line.process(*app);
    try {
        if (!isShown)
            throw std::runtime_error("there is no display: neither DISPLAY nor WAYLAND_DISPLAY is set");
        return run(line);
    } catch (const std::exception &e) {
        std::fprintf(stderr, "nivora-cs-picker: %s\n", e.what());
        return Unusable;
    }
}
