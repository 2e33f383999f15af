#include "CliRun.h"

#include "support/TestRunner.h"

#include <QDir>
#include <QFile>
#include <QTemporaryDir>
#include <QtTest>

class TestCliUser : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void init() { m_dir = std::make_unique<QTemporaryDir>(); }
    void entries();
    void refusedChangesKeepTheFile_data();
    void refusedChangesKeepTheFile();
    void check();

private:
    CliRun user(const QStringList &arguments) const
    {
        return run(QStringList{QStringLiteral("user"), QStringLiteral("--user-dir"), folder()} + arguments);
    }
    /// Not there until the program makes it.
    QString folder() const { return m_dir->filePath(QStringLiteral("мои КС")); }
    QByteArray content() const
    {
        QFile f(folder() + QStringLiteral("/UserCoordSystem.xml"));
        return f.open(QIODevice::ReadOnly) ? f.readAll() : QByteArray("no file");
    }
    void write(const QByteArray &content) const
    {
        QDir().mkpath(folder());
        QFile f(folder() + QStringLiteral("/UserCoordSystem.xml"));
        QVERIFY(f.open(QIODevice::WriteOnly) && f.write(content) == content.size());
    }

    std::unique_ptr<QTemporaryDir> m_dir;
};

void TestCliUser::entries()
{
    const QString text = QStringLiteral("CoordSys Earth Projection 8, 1001, \"m\", 37.5, 0, 1, 0, 0");
    const QString name = QStringLiteral("Местная \"%1\" <&>");
    QVERIFY(user({QStringLiteral("list")}).out.isEmpty());
    QCOMPARE(user({QStringLiteral("add"), text, QStringLiteral("--branch"), QStringLiteral("Москва"),
                   QStringLiteral("--description"), name})
                 .status,
             0);
    QCOMPARE(user({QStringLiteral("add"), QStringLiteral("32637")}).status, 0);
    const QString listed = QString::fromUtf8(user({QStringLiteral("list")}).out);
    QVERIFY2(listed.startsWith(QStringLiteral("Москва\n  %1\tprj:%2\nКаталог\n").arg(name, text)),
             qPrintable(listed));
    QVERIFY2(listed.endsWith(QStringLiteral("\tepsg:32637\n")), qPrintable(listed));
    QVERIFY(user({QStringLiteral("check")}).status == 0);

    // The name that a user gave is the one the library uses.
    const CliRun info = run({QStringLiteral("info"), text, QStringLiteral("--user-dir"), folder()});
    QVERIFY2(QString::fromUtf8(info.out).contains(QStringLiteral("\nDescription: ") + name), info.describe());

    QCOMPARE(user({QStringLiteral("set"), QStringLiteral("epsg:32637"), QStringLiteral("--description"),
                   QStringLiteral("Зона")})
                 .status,
             0);
    QVERIFY(user({QStringLiteral("list")}).out.endsWith("  Зона\tepsg:32637\n"));
    QCOMPARE(
        user({QStringLiteral("remove"), text, QStringLiteral("--branch"), QStringLiteral("Другая")}).status,
        2);
    QCOMPARE(user({QStringLiteral("remove"), text}).status, 0);
    QVERIFY(!user({QStringLiteral("list")}).out.contains("prj:"));
    QCOMPARE(QDir(folder()).entryList(QDir::Files | QDir::Hidden).size(),
             1); // no lock, no temporary file left
}

void TestCliUser::refusedChangesKeepTheFile_data()
{
    QTest::addColumn<QByteArray>("before");
    QTest::addColumn<QStringList>("arguments");
    QTest::addColumn<QString>("message");
    const QByteArray good =
        R"(<coordsys><branch name="Каталог"><cs type="epsg" str="4326" desc="a"/></branch></coordsys>)";
    const auto words = [](const char *text) { return QString::fromUtf8(text).split(QLatin1Char('|')); };
    QTest::newRow("add what makes no system")
        << good << words("add|+proj=nonsense") << QStringLiteral("Неверная строка КС");
    QTest::newRow("set what makes no system")
        << good << words("set|epsg:999999") << QStringLiteral("EPSG=999999");
    QTest::newRow("add what is there")
        << good << words("add|4326") << QStringLiteral("already in the branch");
    QTest::newRow("remove what is not there") << good << words("remove|32637") << QStringLiteral("not among");
    QTest::newRow("add to a damaged file")
        << QByteArray("<coordsys><branch") << words("add|4326") << QStringLiteral("UserCoordSystem.xml");
    QTest::newRow("remove from a damaged file")
        << QByteArray("<coordsys><branch") << words("remove|4326") << QStringLiteral("UserCoordSystem.xml");
    QTest::newRow("two systems") << good << words("add|4326|32637")
                                 << QStringLiteral("one coordinate system");
}

void TestCliUser::refusedChangesKeepTheFile()
{
    QFETCH(QByteArray, before);
    QFETCH(QStringList, arguments);
    QFETCH(QString, message);
    write(before);
    const CliRun refused = user(arguments);
    QVERIFY2(refused.isRefusal(message), refused.describe());
    QCOMPARE(content(), before);
}

void TestCliUser::check()
{
    write(R"(<coordsys><branch name="a">
<cs type="epsg" str="4326" desc="one"/>
<cs type="epsg" str="999999" desc="no such code"/>
<cs type="zzz" str="1" desc="no such notation"/>
<cs type="epsg" str="32637" desc="two"/></branch><branch name="b">
<cs type="epsg" str="4326" desc="again"/>
<cs type="proj" str="+proj=utm +zone=37 +ellps=WGS84 +towgs84=0,0,0,0,0,0,0 +units=m +no_defs" desc="two again"/>
</branch></coordsys>)");
    const CliRun found = user({QStringLiteral("check")});
    const QList<QByteArray> lines = found.outLines();
    QVERIFY2(found.status == 1 && lines.size() == 5, found.describe());
    QVERIFY2(lines.at(0).startsWith("a: epsg:999999: ") && lines.at(0).contains("EPSG=999999"), lines.at(0));
    QVERIFY2(lines.at(1).startsWith("a: unknown:1: "), lines.at(1));
    QCOMPARE(lines.at(2), QByteArray("b: epsg:4326: stands twice, also as a: epsg:4326"));
    QVERIFY2(lines.at(3).startsWith("b: proj:") && lines.at(3).endsWith("the same system as a: epsg:32637"),
             lines.at(3));
    QVERIFY2(lines.at(4).endsWith(": 6 entries, 4 problems"), lines.at(4));

    // An unusable entry goes by the name that the list shows.
    QCOMPARE(user({QStringLiteral("remove"), QStringLiteral("unknown:1")}).status, 0);
    QCOMPARE(user({QStringLiteral("check")}).outLines().size(), 4);

    write("no xml");
    const CliRun damaged = user({QStringLiteral("check")});
    QVERIFY2(damaged.status == 1 && damaged.errLines().size() == 1, damaged.describe());
}

NIVORA_TEST(TestCliUser)
#include "tst_user.moc"
