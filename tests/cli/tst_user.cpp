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

    void entries()
    {
        const QString text = QStringLiteral("CoordSys Earth Projection 8, 1001, \"m\", 37.5, 0, 1, 0, 0");
        const QString name = QStringLiteral("Местная \"%1\" <&>");
        QVERIFY(user(words("list")).out.isEmpty());
        QCOMPARE(user(words("add --branch Москва --description") + QStringList{name, text}).status, 0);
        QCOMPARE(user(words("add 32637")).status, 0);
        const QString listed = QString::fromUtf8(user(words("list")).out);
        QVERIFY2(listed.startsWith(QStringLiteral("Москва\n  %1\tprj:%2\nКаталог\n").arg(name, text)),
                 qPrintable(listed));
        QVERIFY2(listed.endsWith(QStringLiteral("\tepsg:32637\n")), qPrintable(listed));
        QCOMPARE(user(words("check")).status, 0);

        // The name that a user gave is the one the library uses.
        const CliRun info = run(words("info --user-dir") + QStringList{folder(), text});
        QVERIFY2(QString::fromUtf8(info.out).startsWith(QStringLiteral("Name: ") + name), info.describe());

        QCOMPARE(user(words("set epsg:32637 --description Зона")).status, 0);
        QVERIFY(user(words("list")).out.endsWith("  Зона\tepsg:32637\n"));
        QCOMPARE(user(words("remove --branch Другая") + QStringList(text)).status, 2);
        QCOMPARE(user(words("remove") + QStringList(text)).status, 0);
        QVERIFY(!user(words("list")).out.contains("prj:"));
        QCOMPARE(user(words("add 4326")).status, 0);
        QCOMPARE(QDir(folder()).entryList(QDir::Files | QDir::Hidden).size(), 1);
    }

    void refusedChangesKeepTheFile_data()
    {
        QTest::addColumn<QByteArray>("before");
        QTest::addColumn<QString>("arguments");
        QTest::addColumn<QString>("message");
        const auto row = [](const char *name, const char *before, const char *arguments,
                            const char *message) {
            QTest::newRow(name) << QByteArray(before) << QString::fromUtf8(arguments)
                                << QString::fromUtf8(message);
        };
        const char *const good =
            R"(<coordsys><branch name="Каталог"><cs type="epsg" str="4326" desc="a"/></branch></coordsys>)";
        const char *const damaged = "<coordsys>\n<branch";
        row("add what makes no system", good, "add +proj=nonsense", "Not a coordinate system");
        row("set what makes no system", good, "set epsg:999999", "EPSG:999999");
        row("add what is there", good, "add 4326", "already in the branch");
        row("remove what is not there", good, "remove 32637", "not among");
        row("add to a damaged file", damaged, "add 4326", "UserCoordSystem.xml:2:");
        row("remove from a damaged file", damaged, "remove 4326", "UserCoordSystem.xml:2:");
        row("somebody else's file", "<html/>", "list", "UserCoordSystem.xml:1:");
        row("two systems", good, "add 4326 32637", "one coordinate system");
    }
    void refusedChangesKeepTheFile()
    {
        QFETCH(QByteArray, before);
        QFETCH(QString, arguments);
        QFETCH(QString, message);
        write(before);
        const CliRun refused = user(words(arguments.toUtf8()));
        QVERIFY2(refused.isRefusal(message), refused.describe());
        QCOMPARE(content(), before);
    }

    // The same system in other branches, one of them of the same name, keeps its name and place.
    void branches()
    {
        write(R"(<coordsys><branch name="a"><cs type="epsg" str="4326" desc="one"/></branch><branch name="b">
<cs type="epsg" str="32637" desc="two"/></branch><branch name="b"><cs type="epsg" str="4326" desc="three"/></branch></coordsys>)");
        QCOMPARE(user(words("set --branch b 4326")).status, 0);
        QCOMPARE(user(words("list")).out,
                 QByteArray("a\n  one\tepsg:4326\nb\n  two\tepsg:32637\nb\n  three\tepsg:4326\n"));
        QCOMPARE(user(words("remove --branch b 4326")).status, 0);
        QCOMPARE(user(words("list")).out, QByteArray("a\n  one\tepsg:4326\nb\n  two\tepsg:32637\nb\n"));
    }

    void check()
    {
        write(R"(<coordsys><branch name="a">
<cs type="epsg" str="4326" desc="one"/>
<cs type="epsg" str="999999" desc="no such code"/>
<cs type="zzz" str="1" desc="no such notation"/>
<cs type="epsg" str="32637" desc="two"/></branch><branch name="b">
<cs type="epsg" str="4326" desc="again"/>
<cs type="proj" str="+proj=utm +zone=37 +ellps=WGS84 +towgs84=0,0,0,0,0,0,0 +units=m +no_defs" desc="two again"/>
</branch></coordsys>)");
        const CliRun found = user(words("check"));
        const QList<QByteArray> lines = found.outLines();
        QVERIFY2(found.status == 1 && lines.size() == 5, found.describe());
        QVERIFY2(lines.at(0).startsWith("a: epsg:999999: ") && lines.at(0).contains("EPSG:999999"),
                 lines.at(0));
        QVERIFY2(lines.at(1).startsWith("a: unknown:1: "), lines.at(1));
        QCOMPARE(lines.at(2), QByteArray("b: epsg:4326: stands twice, also as a: epsg:4326"));
        QVERIFY2(lines.at(3).startsWith("b: proj:") &&
                     lines.at(3).endsWith("the same system as a: epsg:32637"),
                 lines.at(3));
        QVERIFY2(lines.at(4).endsWith(": 6 entries, 4 problems"), lines.at(4));

        // An unusable entry goes by the name that the list shows.
        QCOMPARE(user(words("remove unknown:1")).status, 0);
        QCOMPARE(user(words("check")).outLines().size(), 4);

        // What the next change would drop, and a line feed that would break the list.
        write("<coordsys version='2'><branch name='a'><!-- mine -->"
              "<cs type='epsg' str='4326' desc='o&#10;ne' x='1'><k/></cs>\n</branch><other/></coordsys>");
        const CliRun dropped = user(words("check"));
        QVERIFY2(dropped.status == 1 && dropped.outLines().size() == 6, dropped.describe());
        for (const char *what : {"1:22: the attribute \"version\"", "a comment", "the attribute \"x\"",
                                 "the element <k>", "the element <other>"})
            QVERIFY2(dropped.out.contains(what), what);
        QCOMPARE(user(words("list")).out, QByteArray("a\n  o ne\tepsg:4326\n"));

        write("no xml");
        const CliRun damaged = user(words("check"));
        QVERIFY2(damaged.status == 1 && damaged.errLines().size() == 1, damaged.describe());
    }

private:
    CliRun user(const QStringList &arguments) const
    {
        return run(words("user --user-dir") + QStringList(folder()) + arguments);
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

NIVORA_TEST(TestCliUser)
#include "tst_user.moc"
