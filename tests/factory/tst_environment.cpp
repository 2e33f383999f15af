#include <support/Support.h>

#include <coordsys/CoordSysRect.h>
#include <coordsys/CoordTransform.h>
#include <coordsys/LinearUnitValue.h>
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
    env.insert(QLatin1String(childMark), "1"_s);
    env.insert("XDG_CONFIG_HOME"_s, workingDir);
    for (const QString &line : environment)
        env.insert(line.section(QLatin1Char('='), 0, 0), line.section(QLatin1Char('='), 1));
    child.setProcessEnvironment(env);
    child.setWorkingDirectory(workingDir);
    child.setProcessChannelMode(QProcess::MergedChannels);
    child.start(QCoreApplication::applicationFilePath(), {"TestEnvironment"_s, QLatin1String(function)});
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
    QFile::copy(databasePath(), path + "/proj.db"_s);
    return path;
}

std::shared_ptr<CoordSysFactory> factoryOver(const QDir &dir)
{
    static const QTemporaryDir user;
    return std::make_shared<CoordSysFactory>(dir, QDir(user.path()), "ru"_s);
}

} // namespace

class TestEnvironment : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    // Everything works inside a factory that nobody installed, also what is asked of its objects later.
    void beforeInstallation()
    {
        const QTemporaryDir cwd;
        IN_NEW_PROCESS(cwd.path(), {});
        QVERIFY(!CoordSysFactory::defaultCoordSysFactory());
        const QString text = "Не проинициализированы КС"_s;
        VERIFY_THROWS(std::logic_error, LinearUnitValue(1.0, LinearUnit::Meter), text);
        const auto factory = factoryOver(support::resources());
        QVERIFY(factory->initCoordSystemEnvironment());
        QVERIFY(!CoordSysFactory::defaultCoordSysFactory());
        for (const char *tagged :
             {"prj:Earth Projection 8, 1001, \"m\", 39, 0, 1, 7500000, 0", "epsg:32637", "epsg:4326",
              "proj:+proj=utm +zone=37 +datum=WGS84", "prj:NonEarth Units \"ft\" Bounds (0, 0) (1, 1)"})
            QVERIFY2(!factory->createFromTaggedString(QString::fromUtf8(tagged))->description().isEmpty(),
                     tagged);
        QVERIFY(factory->createNonEarth(7, QRectF()) && factory->createFromOracleSRID(8307));
        const CoordSystemPtr cs = factory->createFromProj("+proj=tmerc +lon_0=39.5 +ellps=krass"_s);
        VERIFY_THROWS(std::logic_error, CoordSysFactory::cropCoordSystems(), text);
        QVERIFY(factory->createNonEarth(7, QRectF(0, 0, 1, 1))->taggedString().startsWith("prj:NonEarth"_s));
        QVERIFY(cs->rectNumericCoordSys().width() > 0);
        CoordSysFactory::setDefaultCoordSysFactory(factory);
        QCOMPARE(CoordSysFactory::cropCoordSystems().size(), 2);
    }

    // Working directory (the unset setting), then NIVORA_DATA; what PROJ_LIB held before does not matter.
    void searchPaths()
    {
        const QTemporaryDir cwd, data;
        const auto environment = [&] {
            const QString base = withDatabase(data, "/proj"_s);
            QDir().mkpath(data.path() + "/inner"_s);
            const QString expected = withDatabase(cwd) + QLatin1Char(':') + base;
            const QString inner = QFileInfo(data.path()).canonicalFilePath() + "/inner"_s;
            return QStringList{"NIVORA_DATA="_s + inner, "PROJ_LIB=/old"_s, "EXPECTED="_s + expected};
        };
        IN_NEW_PROCESS(cwd.path(), environment());
        support::LogCapture log;
        QVERIFY(factoryOver(support::resources())->initCoordSystemEnvironment());
        QCOMPARE(qEnvironmentVariable("PROJ_LIB"), qEnvironmentVariable("EXPECTED"));
        QVERIFY(log.lines("trace"_s).contains("Put PROJ_LIB value: "_s + qEnvironmentVariable("EXPECTED")));
        QVERIFY(databasePath().startsWith(qEnvironmentVariable("EXPECTED").section(QLatin1Char(':'), 0, 0)));
        QCOMPARE(std::string(std::setlocale(LC_NUMERIC, nullptr)), std::string("C"));
    }

    void settingNamesDatabase()
    {
        const QTemporaryDir cwd, data;
        IN_NEW_PROCESS(cwd.path(), {"EXPECTED="_s + withDatabase(data)});
        QSettings().setValue("proj/ProjDataDir"_s, qEnvironmentVariable("EXPECTED"));
        QVERIFY(factoryOver(support::resources())->initCoordSystemEnvironment());
        QCOMPARE(qEnvironmentVariable("PROJ_LIB"), qEnvironmentVariable("EXPECTED"));
    }

    void misledProj()
    {
        const QTemporaryDir cwd;
        IN_NEW_PROCESS(cwd.path(), QStringList({"PROJ_DATA=/nonexistent"_s, "PROJ_LIB=/old"_s}));
        VERIFY_THROWS(std::logic_error, factoryOver(support::resources())->initCoordSystemEnvironment(),
                      "Не найден файл \"proj.db\". Необходимо указать путь к нему в "
                      "переменной окружения PROJ_LIB. Каталог можно указать также в "
                      "PROJ_DATA или в настройке proj/ProjDataDir.");
        QVERIFY(qEnvironmentVariableIsSet("PROJ_LIB") && qEnvironmentVariableIsEmpty("PROJ_LIB"));
    }

    // PROJ prefers PROJ_DATA to PROJ_LIB; a candidate that was found must win all the same, in GDAL too.
    void misledProjWithCandidate()
    {
        const QTemporaryDir cwd;
        if (!inChild())
            withDatabase(cwd);
        IN_NEW_PROCESS(cwd.path(), {"PROJ_DATA=/nonexistent"_s});
        const auto factory = factoryOver(support::resources());
        QVERIFY(factory->initCoordSystemEnvironment());
        CoordSysFactory::setDefaultCoordSysFactory(factory);
        const CoordSystemPtr lambert = factory->createFromEpsg(2154);
        QCOMPARE(factory->createFromProj("+proj=utm +zone=37 +datum=WGS84"_s)->matchedEpsg(),
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
            QDir(cwd.path()).mkdir("proj.db"_s);
            const QString expected = withDatabase(data, "/third-party/out/share/proj"_s);
            const QString cut = withDatabase(data, "/proj"_s) + "/proj.db"_s;
            QFile::setPermissions(cut, QFile::ReadOwner | QFile::WriteOwner);
            QFile::resize(cut, 100000);
            support::writeFile(older.filePath("proj.db"_s), "no database");
            QDir(data.path()).mkdir("inner"_s);
            return QStringList{"NIVORA_DATA="_s + data.path() + "/inner"_s, "PROJ_DATA="_s + older.path(),
                               "EXPECTED="_s + expected};
        };
        IN_NEW_PROCESS(cwd.path(), environment());
        QVERIFY(databasePath().isEmpty());
        support::LogCapture log;
        QVERIFY(factoryOver(support::resources())->initCoordSystemEnvironment());
        QCOMPARE(qEnvironmentVariable("PROJ_LIB"), qEnvironmentVariable("EXPECTED"));
        QCOMPARE(databasePath(), qEnvironmentVariable("EXPECTED") + "/proj.db"_s);
        QCOMPARE(log.lines("info"_s).filter("/proj.db не подходит"_s).size(), 2);
    }

    void contextUsedBefore()
    {
        const QTemporaryDir cwd;
        IN_NEW_PROCESS(cwd.path(), {"EXPECTED="_s + withDatabase(cwd)});
        // Not the one of the working directory: PROJ does not look there.
        QCOMPARE(ProjLibMetadata().nameCrs(4326, ProjLibMetadata::EPSG), "WGS 84"_s);
        QVERIFY(!databasePath().startsWith(qEnvironmentVariable("EXPECTED")));
        QVERIFY(factoryOver(support::resources())->initCoordSystemEnvironment());
        QCOMPARE(databasePath(), qEnvironmentVariable("EXPECTED") + "/proj.db"_s);
        QCOMPARE(ProjLibMetadata().nameCrs(4326, ProjLibMetadata::EPSG), "WGS 84"_s);
    }

    void resources_data()
    {
        // File; content (null: missing; "/": a directory; "|": a FIFO); start-up ("true", "false",
        // exception).
        const support::Columns<QString, QString, QString> columns;
        const QString missing, empty = ""_s, cut = "<catalogue>\n<datums><datum id=\"1"_s, directory = "/"_s,
                               fifo = "|"_s, deep = "<a>"_s.repeated(100000) + "</a>"_s.repeated(100000);
        const auto row = [&](const char *file, const char *how, const QString &content, const char *outcome) {
            columns("%1 %2"_s.arg(QLatin1String(file), QLatin1String(how)), file, content, outcome);
        };
        row("projection_ru.xml", "empty", empty, "false:1:");
        row("projection_ru.xml", "cut short", cut, "false:2:");
        row("projection_ru.xml", "nested until the stack ends", deep, "false:1:");
        row("projection_ru.xml", "without entries", "<catalogue/>"_s,
            "Не могу определить дополнительные параметры датума");
        for (const QString &inItsPlace : {missing, directory, fifo}) {
            const QByteArray how = inItsPlace.toUtf8() + " in its place";
            row("projection_ru.xml", how.constData(), inItsPlace, "false");
            row("projections_ru.prj", how.constData(), inItsPlace, "false");
            row("cs_mbr.xml", how.constData(), inItsPlace, "true");
        }
        row("OracleSRID.xml", "FIFO", fifo, "true");
        row("projections_ru.prj", "empty", empty, "true");
        row("projections_ru.prj", "rubbish", "\"no comma\"\n%1 %s\n\"---x\n"_s, "true");
        row("projections_ru.prj", "entries that cannot be built",
            "\"huge\\p99999999999\", 1, 99999999999\n\"%1 %2\\p4326\", 8, 104\n\"-\", -1, nan\n"_s, "true");
        row("OracleSRID.xml", "missing", missing, "true");
        for (const char *file : {"cs_mbr.xml", "OracleSRID.xml"}) {
            row(file, "empty", empty, "true");
            row(file, "cut short", cut, "true");
        }
    }
    void resources()
    {
        const auto [file, content, outcome] = support::row<QString, QString, QString>();
        const support::DefaultFactoryKeeper keeper;
        const support::ResourceCopy copy;
        copy.remove(file);
        const QString path = copy.dir().absoluteFilePath(file);
        if (content == "/"_s)
            QVERIFY(copy.dir().mkdir(file));
        else if (content == "|"_s)
            QCOMPARE(mkfifo(qPrintable(path), 0600), 0);
        else if (!content.isNull())
            copy.write(file, content.toUtf8());
        const auto factory = factoryOver(copy.dir());
        support::LogCapture log;
        QString got;
        try {
            got = factory->initCoordSystemEnvironment() ? "true"_s : "false"_s;
        } catch (const std::exception &e) {
            got = QString::fromUtf8(e.what());
        }
        QCOMPARE(got, outcome.section(QLatin1Char(':'), 0, 0));
        if (got == "false"_s)
            QVERIFY2(log.lines("error"_s).last().contains(file + outcome.mid(5)),
                     "the last line must name the file, and where it is damaged");
        if (got != "true"_s)
            return;
        CoordSysFactory::setDefaultCoordSysFactory(factory);
        QVERIFY(factory->latLongWgs84CoordSystem()->isLatLong());
        QVERIFY(factory->createFromPrj("Earth Projection 8, 104, \"m\", 39, 0, 1, 0, 0"_s)
                    ->rectNumericCoordSys()
                    .width() > 0);
        if (file != "OracleSRID.xml"_s) {
            QCOMPARE(factory->createFromOracleSRID(8307)->sourceType(), CoordSystem::Oracle);
        } else {
            const QString text = content.isNull() || content == "|"_s
                                     ? "Не могу открыть файл "_s + path
                                     : "Данные для SRID=8307 в файле %1 отсутствуют"_s.arg(path);
            VERIFY_THROWS(std::runtime_error, factory->createFromOracleSRID(8307), text);
        }
    }

    // One bad line in a user's catalogue spoils neither the lines behind it nor the naming of anything.
    void badCatalogueLine()
    {
        const support::DefaultFactoryKeeper keeper;
        const support::ResourceCopy copy;
        copy.write(
            "projections_ru.prj"_s,
            "\"--- first ---\"\n\"broken\", 8, 104\n\"unknown datum\", 8, 7777, 7, 39, 0, 1, 0, 0\n"
            "\"good 100%1\\p28407\", 8, 1001, 7, 39, 0, 1, 7500000, 0\n\"bounded\", 2008, 1001, 7, 39, 0, "
            "1, 7500000, 0, 0, 0, 9, 9\n");
        const auto factory = factoryOver(copy.dir());
        QVERIFY(factory->initCoordSystemEnvironment());
        support::LogCapture log;
        const QString prj = "Earth Projection 8, 1001, \"m\", 39, 0, 1, 7500000, 0"_s;
        for (int i = 0; i < 2; ++i) {
            const CoordSystemPtr cs = factory->createFromPrj(prj);
            QCOMPARE(cs->description(), "good 100%1"_s);
            QCOMPARE(cs->epsg(), 28407);
        }
        QVERIFY(log.lines("error"_s).size() <= 2); // each bad entry at most once
        // Systems that differ by bounds alone have names of their own.
        QCOMPARE(factory->createFromPrj(prj + " Bounds (0, 0) (9, 9)"_s)->description(), "bounded"_s);
        QVERIFY_EXCEPTION_THROWN(factory->mapinfoCoordSystem()->getProj(0, 0), std::exception);
        QCOMPARE(factory->createFromEpsg(28407)->sourceParameters().string, "28407"_s);
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
        const CoordSystemPtr cs = factory->createFromProj("+proj=utm +zone=33 +ellps=intl +units=ind-yd"_s);
        support::LogCapture log;
        CPLErrorSetState(CE_Warning, 77, "the host's own");
        QVERIFY_EXCEPTION_THROWN(factory->createFromWkt("PROJCS["_s), std::runtime_error);
        QVERIFY_EXCEPTION_THROWN(cs->unit(), std::logic_error);
        QVERIFY(cs->epsg() != 0 && !cs->exportToWkt().isEmpty());
        QCOMPARE(CPLGetLastErrorType(), CE_Warning);
        QCOMPARE(CPLGetLastErrorNo(), 77);
        QCOMPARE(CPLGetLastErrorMsg(), "the host's own");
        QCOMPARE(log.lines("error"_s), QStringList());
    }

    // Each factory sees its own catalogues, whichever is installed, and either may die first.
    void twoFactories()
    {
        const support::DefaultFactoryKeeper keeper;
        const support::ResourceCopy copy;
        copy.write("projections_ru.prj"_s, "\"other\\p32637\", 8, 104, 7, 39, 0, 0.9996, 500000, 0\n");
        auto shipped = factoryOver(support::resources()), other = factoryOver(copy.dir());
        QVERIFY(shipped->initCoordSystemEnvironment() && other->initCoordSystemEnvironment());
        const QString prj = "Earth Projection 8, 104, \"m\", 39, 0, 0.9996, 500000, 0"_s;
        for (const auto &installed : {shipped, other}) {
            CoordSysFactory::setDefaultCoordSysFactory(installed);
            QCOMPARE(other->createFromPrj(prj)->description(), "other"_s);
            QVERIFY(shipped->createFromPrj(prj)->description() != "other"_s);
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
        QVERIFY(log.lines("info"_s).contains("Очистка ресурсов координатных систем"_s));
        QVERIFY(factory->projectionParamsManager()->coordinateUnits().isEmpty() &&
                factory->mapinfoCoordSystem()->projectionList().isEmpty());
        QVERIFY(factory->latLongWgs84CoordSystem() && factory->currentCoordSystem() &&
                factory->LatLongCoordSystem());
        QVERIFY(!factory->unitById(LinearUnit::Meter).isValid());
        QVERIFY_EXCEPTION_THROWN(factory->createFromPrj("Earth Projection 1, 104"_s), std::logic_error);
        QVERIFY(factory->initCoordSystemEnvironment());
        QCOMPARE(factory->projectionParamsManager()->coordinateUnits().size(), units);
        QCOMPARE(factory->createFromPrj("Earth Projection 1, 104"_s)->epsg(), 4326);
        QVERIFY(factory->mapinfoCoordSystem()->getProj(0, 0));
    }

    void missingDirectories()
    {
        support::LogCapture log;
        CoordSysFactory factory("/no/such %1"_s, "/no/user %2"_s, "ru"_s);
        QCOMPARE(log.lines("error"_s), QStringList("Путь с ресурсами неверен:/no/such %1"_s));
        QVERIFY(log.lines("trace"_s).contains("Пользовательские ресурсы КС: /no/user %2"_s));
        QVERIFY(!factory.initCoordSystemEnvironment());
        QVERIFY(!factory.latLongWgs84CoordSystem() && !factory.currentCoordSystem());
    }
};

NIVORA_TEST(TestEnvironment)
#include "tst_environment.moc"
