#include <coordsys/UserCoordSystem.h>

#include <support/Support.h>

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
        return "nothing"_s;
    const QString text = list.at(0).name;
    for (const auto &entry : list.at(0).entries)
        if (entry.source().string != text || entry.description() != text)
            return "mixed"_s;
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
        m_file = QFileInfo(QDir(m_dir->path()), "UserCoordSystem.xml"_s);
    }

    void cleanup() { m_log.reset(); }

    void written()
    {
        UserCoordSystem::saveToFile(m_file, {}, false);
        QVERIFY(content().simplified().endsWith("?> <coordsys/>"));
        UserCoordSystem::CsDataType branch{"B"_s, {}};
        branch.entries.append(
            UserCoordSystem::CoordSystemParam({CoordSystemTypes::Wkt, "W"_s}, "D"_s, nullptr));
        branch.entries.append(UserCoordSystem::CoordSystemParam({}, QString(), nullptr));
        UserCoordSystem::saveToFile(m_file, {branch}, true);
        QCOMPARE(content().simplified(),
                 QByteArray("<?xml version=\"1.0\" encoding=\"UTF-8\"?> <coordsys> <branch name=\"B\"> "
                            "<cs type=\"wkt\" str=\"W\" desc=\"D\"/> "
                            "<cs type=\"unknown\" str=\"\" desc=\"\"/> </branch> </coordsys>"));
        QCOMPARE(m_log->lines("info"_s).last(),
                 "Пользовательские КС сохранены в файле "_s + m_file.absoluteFilePath());
    }

    void texts_data()
    {
        const support::Columns<QString, QString> row;
        row("quotes and brackets", "Earth Projection 8, 104, \"m\" <a> 'b' & &amp; ]]>"_s, "");
        row("line feeds and tabs", "PROJCS[\n\t\"a\",\r\n  GEOGCS]\r"_s, "");
        row("blanks at the ends", "  a   b  "_s, "");
        row("percent signs", "100% %1 %2 %n %%"_s, "");
        row("scripts", "Пулково ÷ Ελλάς 東京 עברית 🌍 é"_s, "");
        row("control characters have no form in XML", "a\u0001b\u000Bc\uFFFEd"_s, "a\uFFFDb\uFFFDc\uFFFDd"_s);
        row("half a surrogate pair", "a"_s + QChar(0xD83C) + "b"_s, "a\uFFFDb"_s);
    }
    void texts()
    {
        const auto [text, readBack] = support::row<QString, QString>();
        UserCoordSystem::saveToFile(m_file, branches(2, text), false);
        QCOMPARE(loaded().chopped(1), readBack.isEmpty() ? text : readBack);
    }

    void unreadable_data()
    {
        const support::Columns<QByteArray> row;
        row("missing", QByteArray());
        row("directory", QByteArray("/"));
        row("FIFO", QByteArray("|"));
        row("not a store", QByteArray("<html/>"));
        row("empty", QByteArray(""));
        row("not XML", QByteArray("+proj=longlat"));
        row("entities that stand for more and more",
            QByteArray("<!DOCTYPE a [<!ENTITY b \"x\"><!ENTITY c \"&b;&b;\">]><coordsys>&c;</coordsys>"));
        row("cut off", QByteArray("<coordsys><branch name=\"x\"><cs type=\"epsg\" str=\"4326\"/>"));
    }
    void unreadable()
    {
        const auto [bytes] = support::row<QByteArray>();
        UserCoordSystem store{m_file.dir()};
        UserCoordSystem::saveToFile(m_file, branches(3, "kept"_s), true);
        store.loadFromFile(false);
        QVERIFY(QFile::remove(m_file.filePath()));
        if (bytes == "/")
            QVERIFY(QDir().mkdir(m_file.filePath()));
        else if (bytes == "|")
            QCOMPARE(mkfifo(qPrintable(m_file.filePath()), 0600), 0);
        else if (!bytes.isNull())
            put(bytes);

        VERIFY_THROWS(std::logic_error, store.loadFromFile(false),
                      "Не могу открыть файл UserCoordSystem.xml");
        store.loadFromFile(true);
        QCOMPARE(summary(store.data()), "kept3"_s);
        if (bytes == "/" || bytes == "|")
            VERIFY_THROWS(std::logic_error, store.saveToFile(true),
                          "Не могу создать файл UserCoordSystem.xml");
    }

    void backup()
    {
        put("<cut off");
        UserCoordSystem::saveToFile(m_file, branches(1, "a"_s), true);
        QCOMPARE(content(".bak"_s), QByteArray("<cut off"));
        QCOMPARE(m_log->lines("error"_s).filter(".bak"_s).size(), 1);
        QCOMPARE(loaded(), "a1"_s);

        put("<cut off again");
        UserCoordSystem::saveToFile(m_file, branches(2, "b"_s), true);
        QCOMPARE(content(".bak"_s), QByteArray("<cut off"));
        QCOMPARE(loaded(), "b2"_s);

        QVERIFY(QFile::remove(m_file.filePath() + ".bak"_s));
        UserCoordSystem::saveToFile(m_file, branches(3, "c"_s),
                                    true); // a good file needs no copy
        QVERIFY(!QFile::exists(m_file.filePath() + ".bak"_s));
    }

    void refusedSaves()
    {
        const Branches list = branches(1, "a"_s);
        const QFileInfo deep(m_file.dir().filePath("x/y/z.xml"_s));
        UserCoordSystem::saveToFile(deep, list, false); // makes the directories
        VERIFY_THROWS(std::logic_error, UserCoordSystem::saveToFile(deep, {}, false),
                      "Файл z.xml существует");
        const QFileInfo directory(m_file.dir().filePath("x/y"_s));
        VERIFY_THROWS(std::logic_error, UserCoordSystem::saveToFile(directory, list, true),
                      "Не могу создать файл y");
        const QFileInfo underFile(deep.filePath() + "/w.xml"_s);
        VERIFY_THROWS(std::logic_error, UserCoordSystem::saveToFile(underFile, list, true),
                      "Не могу создать файл w.xml");
        QVERIFY(QFileInfo::exists(deep.filePath()));
    }

    void killedWhileSaving()
    {
        const QList<Branches> contents = {branches(1, "a"_s), branches(400, "b"_s)};
        for (int round = 0; round < 25; ++round) {
            SavingChild child(m_file, contents, 1000000);
            for (int i = 0; i <= round % 5; ++i)
                QVERIFY(child.awaitSave());
            usleep(static_cast<useconds_t>(round * 40)); // to be killed at different places of the next save
            child.killNow();
            QVERIFY(WIFSIGNALED(child.exitStatus()));
            const QString got = loaded();
            QVERIFY2(got == "a1"_s || got == "b400"_s, qPrintable(got));
        }
        const QStringList foreign = {"Other.xml.aBcDeF"_s, "UserCoordSystem.xml.aBcDeF"_s,
                                     "UserCoordSystem.xml.backup"_s, "UserCoordSystem.xml.old"_s};
        for (const QString &name : foreign)
            QVERIFY(QFile::copy(m_file.filePath(), m_file.dir().filePath(name)));
        QFile note(m_file.dir().filePath(foreign.at(1)));
        QVERIFY(QFile::copy(m_file.filePath(), m_file.filePath() + ".qRsTuV"_s));
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
        SavingChild small(m_file, {branches(1, "a"_s)}, 150);
        SavingChild large(m_file, {branches(400, "b"_s)}, 150);
        QVERIFY(small.awaitSave() && large.awaitSave());
        do {
            const QString got = loaded();
            QVERIFY2(got == "a1"_s || got == "b400"_s, qPrintable(got));
        } while (large.awaitSave());
        QCOMPARE(small.exitStatus(), 0);
        QCOMPARE(large.exitStatus(), 0);
        QCOMPARE(m_file.dir().entryList(QDir::Files),
                 QStringList{m_file.fileName()}); // nothing temporary is left
    }

    // The last of two windows does not win: each change is made on what the file holds then.
    void updates()
    {
        UserCoordSystem first{m_file.dir()};
        UserCoordSystem second{m_file.dir()};
        const auto adding = [](const QString &name) {
            return [name](UserCoordSystem &store) {
                store.setCoordSystem(name, {CoordSystemTypes::Unknown, name}, name);
                return true;
            };
        };
        QVERIFY(first.update(adding("a"_s)));
        QVERIFY(second.update(adding("b"_s)));
        QVERIFY(first.update(adding("c"_s)));
        second.loadFromFile(false);
        QCOMPARE(second.data().size(), 3);
        QVERIFY(!second.update([](UserCoordSystem &store) {
            store.removeCoordSystem("a"_s, {CoordSystemTypes::Unknown, "a"_s});
            return false;
        }));
        second.loadFromFile(false);
        QCOMPARE(second.data().size(), 3);
        VERIFY_THROWS(std::logic_error, second.update([](UserCoordSystem &store) -> bool {
            store.removeCoordSystem("a"_s, {CoordSystemTypes::Unknown, "a"_s});
            throw std::logic_error("no");
        }),
                      "no");
        QCOMPARE(second.data().at(0).entries.size(), 1);
        put("<cut off");
        VERIFY_THROWS(std::logic_error, second.update(adding("d"_s)),
                      "Не могу открыть файл UserCoordSystem.xml");
        QCOMPARE(content(), QByteArray("<cut off"));
        QCOMPARE(second.data().size(), 3);
    }

    void fullDisk()
    {
        UserCoordSystem::saveToFile(m_file, branches(1, "a"_s), false);
        const Branches large = branches(2000, "b"_s);
        const pid_t child = fork();
        if (child == 0) {
            std::signal(SIGXFSZ, SIG_IGN); // writing past the limit then fails as on a full disk
            const rlimit limit{4096, 4096};
            if (setrlimit(RLIMIT_FSIZE, &limit) != 0)
                _exit(2);
            const QString instead = support::thrownInstead<std::logic_error>(
                [&] { UserCoordSystem::saveToFile(m_file, large, true); },
                "Не могу создать файл UserCoordSystem.xml"_s);
            _exit(instead.isEmpty() ? 0 : 1);
        }
        int status = 0;
        waitpid(child, &status, 0);
        QCOMPARE(status, 0);
        QCOMPARE(loaded(), "a1"_s);
        QCOMPARE(m_file.dir().entryList(QDir::Files), QStringList{m_file.fileName()});
    }

private:
    QByteArray content(const QString &suffix = QString()) const
    {
        QFile file(m_file.filePath() + suffix);
        return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray("no file");
    }
    void put(const QByteArray &bytes) const { support::writeFile(m_file.filePath(), bytes); }
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
