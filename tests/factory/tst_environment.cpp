#include <support/Support.h>
#include <support/TestRunner.h>

#include <coordsys/CoordSysRect.h>
#include <coordsys/CoordSystem.h>
#include <coordsys/CoordTransform.h>
#include <coordsys/MapinfoCoordSystem.h>
#include <coordsys/ProjEngine.h>
#include <coordsys/ProjLibMetadata.h>
#include <coordsys/ProjectionParamsManager.h>

#include <cpl_error.h>
#include <proj.h>

#include <QProcess>
#include <QSettings>

#include <sys/stat.h>

#include <clocale>

using namespace nivora::cs;

namespace {

const char childMark[] = "NIVORA_TEST_CHILD";
bool inChild() { return qEnvironmentVariableIsSet(childMark); }

/// Runs one test function in a new process, since PROJ reads its environment once. Empty when it passed
/// there.
QString inNewProcess(const char *function, const QString &workingDir, const QStringList &environment)
{
    QProcess child;
    QProcessEnvironment env = QProcessEnvironment::systemEnvironment();
    for (const char *name : {"PROJ_DATA", "PROJ_LIB", "NIVORA_DATA"})
        env.remove(QLatin1String(name));
    env.insert(QLatin1String(childMark), QStringLiteral("1"));
    env.insert(QStringLiteral("XDG_CONFIG_HOME"), workingDir);
    for (const QString &line : environment)
        env.insert(line.section(QLatin1Char('='), 0, 0), line.section(QLatin1Char('='), 1));
    child.setProcessEnvironment(env);
    child.setWorkingDirectory(workingDir);
    child.setProcessChannelMode(QProcess::MergedChannels);
    child.start(QCoreApplication::applicationFilePath(),
                {QStringLiteral("TestEnvironment"), QLatin1String(function)});
    if (!child.waitForFinished(60000) || child.exitStatus() != QProcess::NormalExit || child.exitCode() != 0)
        return QString::fromUtf8(child.readAll()) + child.errorString();
    return {};
}

/// What follows in the test function is run in a new process; the arguments are evaluated in the first one.
#define IN_NEW_PROCESS(workingDir, environment)                                                              \
    do {                                                                                                     \
        if (!inChild()) {                                                                                    \
            const QString said = inNewProcess(__func__, workingDir, environment);                            \
            QVERIFY2(said.isEmpty(), qPrintable(said));                                                      \
            return;                                                                                          \
        }                                                                                                    \
    } while (false)

QString databasePath()
{
    const QMutexLocker lock(globalProj4Mutex());
    return QString::fromUtf8(proj_context_get_database_path(globalProjContext()));
}

/// A directory with PROJ's database in it, and its path free of links.
QString withDatabase(const QTemporaryDir &dir, const QString &below = {})
{
    const QString path = QFileInfo(dir.path()).canonicalFilePath() + below;
    QDir().mkpath(path);
    QFile::copy(databasePath(), path + QStringLiteral("/proj.db"));
    return path;
}

std::shared_ptr<CoordSysFactory> factoryOver(const QDir &dir)
{
    static const QTemporaryDir user;
    return std::make_shared<CoordSysFactory>(dir, QDir(user.path()), QStringLiteral("ru"));
}

} // namespace

class TestEnvironment : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    // Everything works inside a factory that nobody installed; what is asked of an object later needs the
    // default.
    void beforeInstallation()
    {
        const QTemporaryDir cwd;
        IN_NEW_PROCESS(cwd.path(), {});
        QVERIFY(!CoordSysFactory::defaultCoordSysFactory());
        const QString text = QStringLiteral("Не проинициализированы КС");
        VERIFY_THROWS(std::logic_error, activeCatalogues(), text);
        const auto factory = factoryOver(support::resources());
        QVERIFY(factory->initCoordSystemEnvironment());
        QVERIFY(!CoordSysFactory::defaultCoordSysFactory());
        for (const char *tagged :
             {"prj:Earth Projection 8, 1001, \"m\", 39, 0, 1, 7500000, 0", "epsg:32637", "epsg:4326",
              "proj:+proj=utm +zone=37 +datum=WGS84", "prj:NonEarth Units \"ft\" Bounds (0, 0) (1, 1)"})
            QVERIFY2(!factory->createFromTaggedString(QString::fromUtf8(tagged))->description().isEmpty(),
                     tagged);
        QVERIFY(factory->createNonEarth(7, QRectF()) && factory->createFromOracleSRID(8307));
        const CoordSystemPtr cs =
            factory->createFromProj(QStringLiteral("+proj=tmerc +lon_0=39.5 +ellps=krass"));
        VERIFY_THROWS(std::logic_error, CoordSysFactory::cropCoordSystems(), text);
        VERIFY_THROWS(std::logic_error, factory->createNonEarth(7, QRectF(0, 0, 1, 1))->taggedString(), text);
        CoordSysFactory::setDefaultCoordSysFactory(factory);
        QVERIFY(cs->rectNumericCoordSys().width() > 0);
        QCOMPARE(CoordSysFactory::cropCoordSystems().size(), 2);
    }

    // Working directory (the unset setting), then NIVORA_DATA; what PROJ_LIB held before does not matter.
    void searchPaths()
    {
        const QTemporaryDir cwd, data;
        const auto environment = [&] {
            const QString base = withDatabase(data, QStringLiteral("/proj"));
            QDir().mkpath(data.path() + QStringLiteral("/inner"));
            const QString expected = withDatabase(cwd) + QLatin1Char(':') + base;
            const QString inner = QFileInfo(data.path()).canonicalFilePath() + QStringLiteral("/inner");
            return QStringList{QStringLiteral("NIVORA_DATA=") + inner, QStringLiteral("PROJ_LIB=/old"),
                               QStringLiteral("EXPECTED=") + expected};
        };
        IN_NEW_PROCESS(cwd.path(), environment());
        support::LogCapture log;
        QVERIFY(factoryOver(support::resources())->initCoordSystemEnvironment());
        QCOMPARE(qEnvironmentVariable("PROJ_LIB"), qEnvironmentVariable("EXPECTED"));
        QVERIFY(log.lines(QStringLiteral("trace"))
                    .contains(QStringLiteral("Put PROJ_LIB value: ") + qEnvironmentVariable("EXPECTED")));
        QVERIFY(databasePath().startsWith(qEnvironmentVariable("EXPECTED").section(QLatin1Char(':'), 0, 0)));
        QCOMPARE(std::string(std::setlocale(LC_NUMERIC, nullptr)), std::string("C"));
    }

    void settingNamesDatabase()
    {
        const QTemporaryDir cwd, data;
        IN_NEW_PROCESS(cwd.path(), {QStringLiteral("EXPECTED=") + withDatabase(data)});
        QSettings().setValue(QStringLiteral("proj/ProjDataDir"), qEnvironmentVariable("EXPECTED"));
        QVERIFY(factoryOver(support::resources())->initCoordSystemEnvironment());
        QCOMPARE(qEnvironmentVariable("PROJ_LIB"), qEnvironmentVariable("EXPECTED"));
    }

    void misledProj()
    {
        const QTemporaryDir cwd;
        IN_NEW_PROCESS(cwd.path(), QStringList({QStringLiteral("PROJ_DATA=/nonexistent"),
                                                QStringLiteral("PROJ_LIB=/old")}));
        VERIFY_THROWS(std::logic_error, factoryOver(support::resources())->initCoordSystemEnvironment(),
                      QStringLiteral("Не найден файл \"proj.db\". Необходимо указать путь к нему в "
                                     "переменной окружения PROJ_LIB. Каталог можно указать также в "
                                     "PROJ_DATA или в настройке proj/ProjDataDir."));
        QVERIFY(qEnvironmentVariableIsSet("PROJ_LIB") && qEnvironmentVariableIsEmpty("PROJ_LIB"));
    }

    // PROJ prefers PROJ_DATA to PROJ_LIB; a candidate that was found must win all the same, in GDAL too.
    void misledProjWithCandidate()
    {
        const QTemporaryDir cwd;
        if (!inChild())
            withDatabase(cwd);
        IN_NEW_PROCESS(cwd.path(), {QStringLiteral("PROJ_DATA=/nonexistent")});
        const auto factory = factoryOver(support::resources());
        QVERIFY(factory->initCoordSystemEnvironment());
        CoordSysFactory::setDefaultCoordSysFactory(factory);
        const CoordSystemPtr lambert = factory->createFromEpsg(2154);
        QCOMPARE(factory->createFromProj(QStringLiteral("+proj=utm +zone=37 +datum=WGS84"))->matchedEpsg(),
                 32637); // GDAL asks its own database
        QPointF out;
        QVERIFY(CoordTransform(factory->createFromEpsg(4326), lambert).forward(QPointF(3, 46.5), out));
        VERIFY_NEAR(out, QPointF(700000, 6600000), 1e-3); // the origin of Lambert-93
    }

    // What is no database of this PROJ is passed over, even when the context met one before.
    void uselessDatabases()
    {
        const QTemporaryDir cwd, data, older;
        const auto environment = [&] {
            QDir(cwd.path()).mkdir(QStringLiteral("proj.db"));
            const QString expected = withDatabase(data, QStringLiteral("/third-party/out/share/proj"));
            const QString cut = withDatabase(data, QStringLiteral("/proj")) + QStringLiteral("/proj.db");
            QFile::setPermissions(cut, QFile::ReadOwner | QFile::WriteOwner);
            QFile::resize(cut, 100000);
            QFile text(older.filePath(QStringLiteral("proj.db")));
            if (!text.open(QIODevice::WriteOnly) || text.write("no database") < 0)
                qFatal("cannot write");
            QDir(data.path()).mkdir(QStringLiteral("inner"));
            return QStringList{QStringLiteral("NIVORA_DATA=") + data.path() + QStringLiteral("/inner"),
                               QStringLiteral("PROJ_DATA=") + older.path(),
                               QStringLiteral("EXPECTED=") + expected};
        };
        IN_NEW_PROCESS(cwd.path(), environment());
        QVERIFY(databasePath().isEmpty());
        support::LogCapture log;
        QVERIFY(factoryOver(support::resources())->initCoordSystemEnvironment());
        QCOMPARE(qEnvironmentVariable("PROJ_LIB"), qEnvironmentVariable("EXPECTED"));
        QCOMPARE(databasePath(), qEnvironmentVariable("EXPECTED") + QStringLiteral("/proj.db"));
        QCOMPARE(log.lines(QStringLiteral("info")).filter(QStringLiteral("/proj.db не подходит")).size(), 2);
    }

    void contextUsedBefore()
    {
        const QTemporaryDir cwd;
        IN_NEW_PROCESS(cwd.path(), {QStringLiteral("EXPECTED=") + withDatabase(cwd)});
        // Not the one of the working directory: PROJ does not look there.
        QCOMPARE(ProjLibMetadata().nameCrs(4326, ProjLibMetadata::EPSG), QStringLiteral("WGS 84"));
        QVERIFY(!databasePath().startsWith(qEnvironmentVariable("EXPECTED")));
        QVERIFY(factoryOver(support::resources())->initCoordSystemEnvironment());
        QCOMPARE(databasePath(), qEnvironmentVariable("EXPECTED") + QStringLiteral("/proj.db"));
        QCOMPARE(ProjLibMetadata().nameCrs(4326, ProjLibMetadata::EPSG), QStringLiteral("WGS 84"));
    }

    void resources_data()
    {
        QTest::addColumn<QString>("file");
        QTest::addColumn<QString>("content"); // null: missing; "/": a directory; "|": a FIFO
        QTest::addColumn<QString>("outcome"); // of the start-up: "true", "false" or the exception's text
        const QString missing,
            empty = QStringLiteral(""), cut = QStringLiteral("<catalogue>\n<datums><datum id=\"1"),
            directory = QStringLiteral("/"), fifo = QStringLiteral("|"),
            deep = QStringLiteral("<a>").repeated(100000) + QStringLiteral("</a>").repeated(100000);
        const QString datum = QStringLiteral("Не могу определить дополнительные параметры датума");
        const auto row = [](const char *file, const QByteArray &how, const QString &content,
                            const QString &outcome) {
            QTest::addRow("%s %s", file, how.constData()) << QString::fromUtf8(file) << content << outcome;
        };
        row("projection_ru.xml", "empty", empty, QStringLiteral("false:1:"));
        row("projection_ru.xml", "cut short", cut, QStringLiteral("false:2:"));
        row("projection_ru.xml", "nested until the stack ends", deep, QStringLiteral("false:1:"));
        row("projection_ru.xml", "without entries", QStringLiteral("<catalogue/>"), datum);
        for (const QString &inItsPlace : {missing, directory, fifo}) {
            const QByteArray how = inItsPlace.toUtf8() + " in its place";
            row("projection_ru.xml", how, inItsPlace, QStringLiteral("false"));
            row("projections_ru.prj", how, inItsPlace, QStringLiteral("false"));
            row("cs_mbr.xml", how, inItsPlace, QStringLiteral("true"));
        }
        row("OracleSRID.xml", "FIFO", fifo, QStringLiteral("true"));
        row("projections_ru.prj", "empty", empty, QStringLiteral("true"));
        row("projections_ru.prj", "rubbish", QStringLiteral("\"no comma\"\n%1 %s\n\"---x\n"),
            QStringLiteral("true"));
        row("projections_ru.prj", "entries that cannot be built",
            QStringLiteral(
                "\"huge\\p99999999999\", 1, 99999999999\n\"%1 %2\\p4326\", 8, 104\n\"-\", -1, nan\n"),
            QStringLiteral("true"));
        row("OracleSRID.xml", "missing", missing, QStringLiteral("true"));
        for (const char *file : {"cs_mbr.xml", "OracleSRID.xml"}) {
            row(file, "empty", empty, QStringLiteral("true"));
            row(file, "cut short", cut, QStringLiteral("true"));
        }
    }
    void resources()
    {
        QFETCH(QString, file);
        QFETCH(QString, content);
        QFETCH(QString, outcome);
        const support::DefaultFactoryKeeper keeper;
        const support::ResourceCopy copy;
        copy.remove(file);
        const QString path = copy.dir().absoluteFilePath(file);
        if (content == QLatin1String("/"))
            QVERIFY(copy.dir().mkdir(file));
        else if (content == QLatin1String("|"))
            QCOMPARE(mkfifo(qPrintable(path), 0600), 0);
        else if (!content.isNull())
            copy.write(file, content.toUtf8());
        const auto factory = factoryOver(copy.dir());
        support::LogCapture log;
        QString got;
        try {
            got = factory->initCoordSystemEnvironment() ? QStringLiteral("true") : QStringLiteral("false");
        } catch (const std::exception &e) {
            got = QString::fromUtf8(e.what());
        }
        QCOMPARE(got, outcome.section(QLatin1Char(':'), 0, 0));
        if (got == QLatin1String("false"))
            QVERIFY2(log.lines(QStringLiteral("error")).last().contains(file + outcome.mid(5)),
                     "the last line must name the file, and where it is damaged");
        if (got != QLatin1String("true"))
            return;
        CoordSysFactory::setDefaultCoordSysFactory(factory);
        QVERIFY(factory->latLongWgs84CoordSystem()->isLatLong());
        QVERIFY(factory->createFromPrj(QStringLiteral("Earth Projection 8, 104, \"m\", 39, 0, 1, 0, 0"))
                    ->rectNumericCoordSys()
                    .width() > 0);
        if (file != QLatin1String("OracleSRID.xml")) {
            QCOMPARE(factory->createFromOracleSRID(8307)->sourceType(), CoordSystem::Oracle);
        } else {
            const QString text =
                content.isNull() || content == QLatin1String("|")
                    ? QStringLiteral("Не могу открыть файл ") + path
                    : QStringLiteral("Данные для SRID=8307 в файле %1 отсутствуют").arg(path);
            VERIFY_THROWS(std::runtime_error, factory->createFromOracleSRID(8307), text);
        }
    }

    // One bad line in a user's catalogue spoils neither the lines behind it nor the naming of anything.
    void badCatalogueLine()
    {
        const support::DefaultFactoryKeeper keeper;
        const support::ResourceCopy copy;
        copy.write(
            QStringLiteral("projections_ru.prj"),
            "\"--- first ---\"\n\"broken\", 8, 104\n\"unknown datum\", 8, 7777, 7, 39, 0, 1, 0, 0\n"
            "\"good 100%1\\p28407\", 8, 1001, 7, 39, 0, 1, 7500000, 0\n\"bounded\", 2008, 1001, 7, 39, 0, "
            "1, 7500000, 0, 0, 0, 9, 9\n");
        const auto factory = factoryOver(copy.dir());
        QVERIFY(factory->initCoordSystemEnvironment());
        support::LogCapture log;
        const QString prj = QStringLiteral("Earth Projection 8, 1001, \"m\", 39, 0, 1, 7500000, 0");
        for (int i = 0; i < 2; ++i) {
            const CoordSystemPtr cs = factory->createFromPrj(prj);
            QCOMPARE(cs->description(), QStringLiteral("good 100%1"));
            QCOMPARE(cs->epsg(), 28407);
        }
        QVERIFY(log.lines(QStringLiteral("error")).size() <= 2); // each bad entry at most once
        // Systems that differ by bounds alone have names of their own.
        QCOMPARE(factory->createFromPrj(prj + QStringLiteral(" Bounds (0, 0) (9, 9)"))->description(),
                 QStringLiteral("bounded"));
        QVERIFY_EXCEPTION_THROWN(factory->mapinfoCoordSystem()->getProj(0, 0), std::exception);
        QCOMPARE(factory->createFromEpsg(28407)->sourceParameters().string, QStringLiteral("28407"));
    }

    void standardSystems()
    {
        const auto factory = support::shippedFactory();
        QVERIFY(factory);
        QVERIFY(factory->LatLongCoordSystem()->isSpecialDatum());
        QVERIFY(factory->latLongWgs84CoordSystem() != factory->currentCoordSystem());
        QVERIFY(factory->latLongWgs84CoordSystem()->isEqual(factory->currentCoordSystem(), false));
        QCOMPARE(factory->currentCoordSystem()->epsg(), 4326);
        QCOMPARE(factory->unitById(LinearUnit::Kilometer).conversion(), 1000.0);
        const LinearUnit none = factory->unitById(LinearUnit::MIUnitCode(60));
        QVERIFY(none.unitCode() == -1 && none.conversion() == 0.0 && none.name().isEmpty());
        QCOMPARE(factory->areaUnitById(LinearUnit::MIUnitCode(25)).conversion(), 10000.0); // the hectare
        QVERIFY(!factory->areaUnitById(LinearUnit::Meter).isValid());
    }

    // What the library asks of GDAL leaves no trace in the host's view of it, nor does an exception in the
    // log.
    void hostsErrors()
    {
        const auto factory = support::shippedFactory();
        const CoordSystemPtr cs =
            factory->createFromProj(QStringLiteral("+proj=utm +zone=33 +ellps=intl +units=ind-yd"));
        support::LogCapture log;
        CPLErrorSetState(CE_Warning, 77, "the host's own");
        QVERIFY_EXCEPTION_THROWN(factory->createFromWkt(QStringLiteral("PROJCS[")), std::runtime_error);
        QVERIFY_EXCEPTION_THROWN(cs->unit(), std::logic_error);
        QVERIFY(cs->epsg() != 0 && !cs->exportToWkt().isEmpty());
        QCOMPARE(CPLGetLastErrorType(), CE_Warning);
        QCOMPARE(CPLGetLastErrorNo(), 77);
        QCOMPARE(CPLGetLastErrorMsg(), "the host's own");
        QCOMPARE(log.lines(QStringLiteral("error")), QStringList());
    }

    // Each factory sees its own catalogues, whichever is installed, and either may die first.
    void twoFactories()
    {
        const support::DefaultFactoryKeeper keeper;
        const support::ResourceCopy copy;
        copy.write(QStringLiteral("projections_ru.prj"),
                   "\"other\\p32637\", 8, 104, 7, 39, 0, 0.9996, 500000, 0\n");
        auto shipped = factoryOver(support::resources()), other = factoryOver(copy.dir());
        QVERIFY(shipped->initCoordSystemEnvironment() && other->initCoordSystemEnvironment());
        const QString prj = QStringLiteral("Earth Projection 8, 104, \"m\", 39, 0, 0.9996, 500000, 0");
        for (const auto &installed : {shipped, other}) {
            CoordSysFactory::setDefaultCoordSysFactory(installed);
            QCOMPARE(other->createFromPrj(prj)->description(), QStringLiteral("other"));
            QVERIFY(shipped->createFromPrj(prj)->description() != QLatin1String("other"));
        }
        const auto catalogue = other->mapinfoCoordSystem();
        const CoordSystemPtr cs = other->createFromPrj(prj);
        CoordSysFactory::setDefaultCoordSysFactory(shipped);
        other.reset(); // the catalogue outlives its factory: empty, not dangling
        QVERIFY(catalogue->projectionList().isEmpty());
        QPointF out;
        QVERIFY(CoordTransform(cs, shipped->latLongWgs84CoordSystem()).forward(QPointF(500000, 0), out));
        VERIFY_NEAR(out, QPointF(39, 0), 1e-9);
    }

    void clearAndReload()
    {
        const auto factory = factoryOver(support::resources());
        QVERIFY(factory->initCoordSystemEnvironment());
        const int units = factory->projectionParamsManager()->coordinateUnits().size();
        const auto mapinfo = factory->mapinfoCoordSystem();
        const auto entries = [](const MapinfoCoordSystem &catalogue) {
            int count = 0;
            for (const CoordSystemParamsList &category : catalogue.projectionList())
                count += category.entries.size();
            return count;
        };
        const int shipped = entries(*mapinfo);
        mapinfo->initInternalCache(); // must end before its catalogue goes out of use
        QVERIFY(factory->initCoordSystemEnvironment());
        QCOMPARE(entries(*factory->mapinfoCoordSystem()), shipped);
        QVERIFY(mapinfo != factory->mapinfoCoordSystem() && mapinfo->getProj(0, 0)->unit());
        support::LogCapture log;
        factory->clearEnvironment();
        QVERIFY(log.lines(QStringLiteral("info"))
                    .contains(QStringLiteral("Очистка ресурсов координатных систем")));
        QVERIFY(factory->projectionParamsManager()->coordinateUnits().isEmpty() &&
                factory->mapinfoCoordSystem()->projectionList().isEmpty());
        QVERIFY(factory->latLongWgs84CoordSystem() && factory->currentCoordSystem() &&
                factory->LatLongCoordSystem());
        QVERIFY(!factory->unitById(LinearUnit::Meter).isValid());
        QVERIFY_EXCEPTION_THROWN(factory->createFromPrj(QStringLiteral("Earth Projection 1, 104")),
                                 std::logic_error);
        QVERIFY(factory->initCoordSystemEnvironment());
        QCOMPARE(factory->projectionParamsManager()->coordinateUnits().size(), units);
        QCOMPARE(factory->createFromPrj(QStringLiteral("Earth Projection 1, 104"))->epsg(), 4326);
        QVERIFY(factory->mapinfoCoordSystem()->getProj(0, 0));
    }

    void missingDirectories()
    {
        support::LogCapture log;
        CoordSysFactory factory(QStringLiteral("/no/such %1"), QStringLiteral("/no/user %2"),
                                QStringLiteral("ru"));
        QCOMPARE(log.lines(QStringLiteral("error")),
                 QStringList(QStringLiteral("Путь с ресурсами неверен:/no/such %1")));
        QVERIFY(log.lines(QStringLiteral("trace"))
                    .contains(QStringLiteral("Пользовательские ресурсы КС: /no/user %2")));
        QVERIFY(!factory.initCoordSystemEnvironment());
        QVERIFY(!factory.latLongWgs84CoordSystem() && !factory.currentCoordSystem());
    }
};

NIVORA_TEST(TestEnvironment)
#include "tst_environment.moc"
