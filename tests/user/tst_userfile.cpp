#include <coordsys/UserCoordSystem.h>

#include <support/Support.h>
#include <support/TestRunner.h>

#include <sys/resource.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

#include <csignal>

using namespace nivora::cs;
using Branches = QList<UserCoordSystem::CsDataType>;

namespace {

/// \p count entries that make no system (the file does not care), all with the same text.
Branches branches(int count, const QString &text)
{
    UserCoordSystem::CsDataType branch{text, {}};
    for (int i = 0; i < count; ++i)
        branch.entries.append(
            UserCoordSystem::CoordSystemParam({CoordSystemTypes::Unknown, text}, text, nullptr));
    return {branch};
}

QString summary(const Branches &list)
{
    if (list.isEmpty())
        return QStringLiteral("nothing");
    const QString text = list.at(0).name;
    for (const auto &entry : list.at(0).entries)
        if (entry.source().string != text || entry.description() != text)
            return QStringLiteral("mixed");
    return text + QString::number(list.at(0).entries.size());
}

/// A child process that saves over and over and reports each save by a byte.
class SavingChild
{
public:
    SavingChild(const QFileInfo &file, const QList<Branches> &contents, int rounds)
    {
        int ends[2];
        if (pipe(ends) != 0)
            qFatal("no pipe");
        m_pid = fork();
        if (m_pid == 0) {
            try {
                for (int i = 0; i < rounds; ++i) {
                    UserCoordSystem::saveToFile(file, contents.at(i % contents.size()), true);
                    if (write(ends[1], "s", 1) != 1)
                        break;
                }
            } catch (...) {
                _exit(1);
            }
            _exit(0);
        }
        close(ends[1]);
        m_reports = ends[0];
    }
    ~SavingChild() { close(m_reports); }

    /// False when the child has ended.
    bool awaitSave()
    {
        char c;
        return read(m_reports, &c, 1) == 1;
    }
    void killNow() { kill(m_pid, SIGKILL); }
    int exitStatus()
    {
        int status = 0;
        waitpid(m_pid, &status, 0);
        return status;
    }

private:
    pid_t m_pid = -1;
    int m_reports = -1;
};

} // namespace

class TestUserFile : public QObject
{
    Q_OBJECT
private Q_SLOTS:
    void init()
    {
        m_log = std::make_unique<support::LogCapture>();
        m_dir = std::make_unique<QTemporaryDir>();
        m_file = QFileInfo(QDir(m_dir->path()), QStringLiteral("UserCoordSystem.xml"));
    }

    void cleanup() { m_log.reset(); }

    void written()
    {
        UserCoordSystem::saveToFile(m_file, {}, false);
        QVERIFY(content().simplified().endsWith("?> <coordsys/>"));
        UserCoordSystem::CsDataType branch{QStringLiteral("B"), {}};
        branch.entries.append(UserCoordSystem::CoordSystemParam({CoordSystemTypes::Wkt, QStringLiteral("W")},
                                                                QStringLiteral("D"), nullptr));
        branch.entries.append(UserCoordSystem::CoordSystemParam({}, QString(), nullptr));
        UserCoordSystem::saveToFile(m_file, {branch}, true);
        QCOMPARE(content().simplified(),
                 QByteArray("<?xml version=\"1.0\" encoding=\"UTF-8\"?> <coordsys> <branch name=\"B\"> "
                            "<cs type=\"wkt\" str=\"W\" desc=\"D\"/> "
                            "<cs type=\"unknown\" str=\"\" desc=\"\"/> </branch> </coordsys>"));
        QCOMPARE(m_log->lines(QStringLiteral("info")).last(),
                 QString::fromUtf8("Пользовательские КС сохранены в файле ") + m_file.absoluteFilePath());
    }

    void texts_data()
    {
        QTest::addColumn<QString>("text");
        QTest::addColumn<QString>("readBack");
        const auto row = [](const char *title, const QString &text, const QString &readBack = QString()) {
            QTest::newRow(title) << text << (readBack.isEmpty() ? text : readBack);
        };
        row("quotes and brackets", QStringLiteral("Earth Projection 8, 104, \"m\" <a> 'b' & &amp; ]]>"));
        row("line feeds and tabs", QStringLiteral("PROJCS[\n\t\"a\",\r\n  GEOGCS]\r"));
        row("blanks at the ends", QStringLiteral("  a   b  "));
        row("percent signs", QStringLiteral("100% %1 %2 %n %%"));
        row("scripts", QString::fromUtf8("Пулково ÷ Ελλάς 東京 עברית 🌍 é"));
        row("control characters have no form in XML", QString::fromUtf8("a\u0001b\u000Bc\uFFFEd"),
            QString::fromUtf8("a\uFFFDb\uFFFDc\uFFFDd"));
        row("half a surrogate pair", QStringLiteral("a") + QChar(0xD83C) + QStringLiteral("b"),
            QString::fromUtf8("a\uFFFDb"));
    }
    void texts()
    {
        QFETCH(QString, text);
        UserCoordSystem::saveToFile(m_file, branches(2, text), false);
        QTEST(loaded().chopped(1), "readBack");
    }

    void unreadable_data()
    {
        QTest::addColumn<QByteArray>("bytes");
        QTest::newRow("missing") << QByteArray();
        QTest::newRow("directory") << QByteArray("/");
        QTest::newRow("FIFO") << QByteArray("|");
        QTest::newRow("not a store") << QByteArray("<html/>");
        QTest::newRow("empty") << QByteArray("");
        QTest::newRow("not XML") << QByteArray("+proj=longlat");
        QTest::newRow("cut off") << QByteArray(
            "<coordsys><branch name=\"x\"><cs type=\"epsg\" str=\"4326\"/>");
    }
    void unreadable()
    {
        QFETCH(QByteArray, bytes);
        UserCoordSystem store{m_file.dir()};
        UserCoordSystem::saveToFile(m_file, branches(3, QStringLiteral("kept")), true);
        store.loadFromFile(false);
        QVERIFY(QFile::remove(m_file.filePath()));
        if (bytes == "/")
            QVERIFY(QDir().mkdir(m_file.filePath()));
        else if (bytes == "|")
            QCOMPARE(mkfifo(qPrintable(m_file.filePath()), 0600), 0);
        else if (!bytes.isNull())
            put(bytes);

        VERIFY_THROWS(std::logic_error, store.loadFromFile(false),
                      QString::fromUtf8("Не могу открыть файл UserCoordSystem.xml"));
        store.loadFromFile(true);
        QCOMPARE(summary(store.data()), QStringLiteral("kept3"));
        if (bytes == "/" || bytes == "|")
            VERIFY_THROWS(std::logic_error, store.saveToFile(true),
                          QString::fromUtf8("Не могу создать файл UserCoordSystem.xml"));
    }

    void backup()
    {
        put("<cut off");
        UserCoordSystem::saveToFile(m_file, branches(1, QStringLiteral("a")), true);
        QCOMPARE(content(QStringLiteral(".bak")), QByteArray("<cut off"));
        QCOMPARE(m_log->lines(QStringLiteral("error")).filter(QStringLiteral(".bak")).size(), 1);
        QCOMPARE(loaded(), QStringLiteral("a1"));

        put("<cut off again");
        UserCoordSystem::saveToFile(m_file, branches(2, QStringLiteral("b")), true);
        QCOMPARE(content(QStringLiteral(".bak")), QByteArray("<cut off"));
        QCOMPARE(loaded(), QStringLiteral("b2"));

        QVERIFY(QFile::remove(m_file.filePath() + QStringLiteral(".bak")));
        UserCoordSystem::saveToFile(m_file, branches(3, QStringLiteral("c")),
                                    true); // a good file needs no copy
        QVERIFY(!QFile::exists(m_file.filePath() + QStringLiteral(".bak")));
    }

    void refusedSaves()
    {
        const Branches list = branches(1, QStringLiteral("a"));
        const QFileInfo deep(m_file.dir().filePath(QStringLiteral("x/y/z.xml")));
        UserCoordSystem::saveToFile(deep, list, false); // makes the directories
        VERIFY_THROWS(std::logic_error, UserCoordSystem::saveToFile(deep, {}, false),
                      QString::fromUtf8("Файл z.xml существует"));
        const QFileInfo directory(m_file.dir().filePath(QStringLiteral("x/y")));
        VERIFY_THROWS(std::logic_error, UserCoordSystem::saveToFile(directory, list, true),
                      QString::fromUtf8("Не могу создать файл y"));
        const QFileInfo underFile(deep.filePath() + QStringLiteral("/w.xml"));
        VERIFY_THROWS(std::logic_error, UserCoordSystem::saveToFile(underFile, list, true),
                      QString::fromUtf8("Не могу создать файл w.xml"));
        QVERIFY(QFileInfo::exists(deep.filePath()));
    }

    void killedWhileSaving()
    {
        const QList<Branches> contents = {branches(1, QStringLiteral("a")),
                                          branches(400, QStringLiteral("b"))};
        for (int round = 0; round < 25; ++round) {
            SavingChild child(m_file, contents, 1000000);
            for (int i = 0; i <= round % 5; ++i)
                QVERIFY(child.awaitSave());
            usleep(static_cast<useconds_t>(round * 40)); // to be killed at different places of the next save
            child.killNow();
            QVERIFY(WIFSIGNALED(child.exitStatus()));
            const QString got = loaded();
            QVERIFY2(got == QLatin1String("a1") || got == QLatin1String("b400"), qPrintable(got));
        }
        const QStringList foreign = {
            QStringLiteral("Other.xml.aBcDeF"), QStringLiteral("UserCoordSystem.xml.aBcDeF"),
            QStringLiteral("UserCoordSystem.xml.backup"), QStringLiteral("UserCoordSystem.xml.old")};
        for (const QString &name : foreign)
            QVERIFY(QFile::copy(m_file.filePath(), m_file.dir().filePath(name)));
        QFile note(m_file.dir().filePath(foreign.at(1)));
        QVERIFY(QFile::copy(m_file.filePath(), m_file.filePath() + QStringLiteral(".qRsTuV")));
        QVERIFY(note.open(QIODevice::WriteOnly) && note.write("a note") > 0 && note.flush());
        UserCoordSystem::saveToFile(m_file, {}, true);
        // What a killed save left is gone; a name that a person may have given stays, and so do strange
        // contents.
        QStringList left = m_file.dir().entryList(QDir::Files);
        left.sort();
        QCOMPARE(left, QStringList(foreign.mid(0, 1)) << m_file.fileName() << foreign.mid(1));
    }

    void twoProcessesSaving()
    {
        SavingChild small(m_file, {branches(1, QStringLiteral("a"))}, 150);
        SavingChild large(m_file, {branches(400, QStringLiteral("b"))}, 150);
        QVERIFY(small.awaitSave() && large.awaitSave());
        do {
            const QString got = loaded();
            QVERIFY2(got == QLatin1String("a1") || got == QLatin1String("b400"), qPrintable(got));
        } while (large.awaitSave());
        QCOMPARE(small.exitStatus(), 0);
        QCOMPARE(large.exitStatus(), 0);
        QCOMPARE(m_file.dir().entryList(QDir::Files),
                 QStringList{m_file.fileName()}); // nothing temporary is left
    }

    void fullDisk()
    {
        UserCoordSystem::saveToFile(m_file, branches(1, QStringLiteral("a")), false);
        const Branches large = branches(2000, QStringLiteral("b"));
        const pid_t child = fork();
        if (child == 0) {
            std::signal(SIGXFSZ, SIG_IGN); // writing past the limit then fails as on a full disk
            const rlimit limit{4096, 4096};
            if (setrlimit(RLIMIT_FSIZE, &limit) != 0)
                _exit(2);
            const QString instead = support::thrownInstead<std::logic_error>(
                [&] { UserCoordSystem::saveToFile(m_file, large, true); },
                QString::fromUtf8("Не могу создать файл UserCoordSystem.xml"));
            _exit(instead.isEmpty() ? 0 : 1);
        }
        int status = 0;
        waitpid(child, &status, 0);
        QCOMPARE(status, 0);
        QCOMPARE(loaded(), QStringLiteral("a1"));
        QCOMPARE(m_file.dir().entryList(QDir::Files), QStringList{m_file.fileName()});
    }

private:
    QByteArray content(const QString &suffix = QString()) const
    {
        QFile file(m_file.filePath() + suffix);
        return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray("no file");
    }
    void put(const QByteArray &bytes) const
    {
        QFile file(m_file.filePath());
        if (!file.open(QIODevice::WriteOnly) || file.write(bytes) != bytes.size())
            qFatal("cannot write %s", qPrintable(file.fileName()));
    }
    QString loaded() const
    {
        UserCoordSystem store{m_file.dir()};
        store.loadFromFile(false);
        return summary(store.data());
    }

    std::unique_ptr<QTemporaryDir> m_dir;
    QFileInfo m_file;
    std::unique_ptr<support::LogCapture> m_log;
};

NIVORA_TEST(TestUserFile)
#include "tst_userfile.moc"
