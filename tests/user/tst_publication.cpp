#include <platform/files/Publication.h>

#include <support/Support.h>

#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

#include <csignal>

using nivora::files::Publication;
using nivora::files::PublishError;

namespace {

/// Everything in a folder: a line for each name with its kind, mode and content.
QStringList snapshot(const QDir &dir)
{
    QStringList lines;
    for (const QString &name :
         dir.entryList(QDir::AllEntries | QDir::Hidden | QDir::System | QDir::NoDotAndDotDot)) {
        const QFileInfo info(dir.filePath(name));
        const QString kind = info.isSymLink() ? "-> "_s + QFileInfo(info.symLinkTarget()).fileName()
                             : info.isDir()   ? "folder"_s
                                              : QString::number(int(info.permissions() & 0x7777), 16);
        QFile file(info.filePath());
        lines << name + " "_s + kind + " "_s +
                     (info.isFile() && file.open(QIODevice::ReadOnly) ? QString::fromUtf8(file.readAll())
                                                                      : QString());
    }
    return lines;
}

void publishAll(const QString &target, const QStringList &names, const QByteArray &content)
{
    Publication publication(target);
    for (const QString &name : names)
        support::writeFile(publication.path(name), content);
    publication.publish(names, {});
}

} // namespace

class TestPublication : public QObject
{
    Q_OBJECT
private Q_SLOTS:
    void init()
    {
        m_dir = std::make_unique<QTemporaryDir>();
        QVERIFY(QDir::setCurrent(m_dir->path()));
    }
    void cleanupTestCase() { QDir::setCurrent(QDir::tempPath()); }

    void places_data()
    {
        // What a shell does before, and after the files "o.a", "o.b" were written; whether the old ones may
        // be replaced; the folder afterwards, and nothing where it is as before.
        const support::Columns<QByteArray, QByteArray, bool, QStringList> row;
        row("nothing there", "", "", false, {"o.a 6644 new"_s, "o.b 6644 new"_s});
        row("another file", "echo -n x > o.c", "", true,
            {"o.a 6644 new"_s, "o.b 6644 new"_s, "o.c 6644 x"_s});
        row("first exists", "echo -n x > o.a", "", false, {});
        row("second exists", "echo -n x > o.b; chmod 600 o.b", "", false, {});
        row("appears meanwhile", "", "echo -n x > o.b", false, {"o.b 6644 x"_s});
        row("a link appears meanwhile", "", "ln -s nowhere o.b", false, {"o.b -> nowhere "_s});
        row("replaced, with its mode", "echo -n x > o.a; chmod 640 o.a; echo -n y > o.b", "", true,
            {"o.a 6640 new"_s, "o.b 6644 new"_s});
        row("a link stays one", "echo -n x > r; ln -s r o.a", "", true,
            {"o.a -> r new"_s, "o.b 6644 new"_s, "r 6644 new"_s});
        row("a link to nowhere", "ln -s r o.a", "", true,
            {"o.a -> r new"_s, "o.b 6644 new"_s, "r 6644 new"_s});
        row("second is a folder", "echo -n x > o.a; mkdir o.b", "", true, {});
        row("second becomes a folder", "echo -n x > o.a", "mkdir o.b", true,
            {"o.a 6644 x"_s, "o.b folder "_s});
        row("what is obsolete goes", "echo -n x > o.a; echo -n p > o.p; echo -n q > o.q", "", true,
            {"o.a 6644 new"_s, "o.b 6644 new"_s, "o.q 6644 q"_s});
        row("and comes back", "echo -n p > o.p; mkdir o.b", "", true, {});
    }
    void places()
    {
        const auto [before, meanwhile, replace, after] =
            support::row<QByteArray, QByteArray, bool, QStringList>();
        umask(022);
        QCOMPARE(std::system(("true;" + before).constData()), 0);
        const QStringList old = snapshot(m_dir->path());
        bool thrown = false;
        {
            Publication publication("o.a"_s);
            support::writeFile(publication.path("o.a"_s), "new");
            support::writeFile(publication.path("o.b"_s), "new");
            QCOMPARE(std::system(("true;" + meanwhile).constData()), 0);
            try {
                publication.publish(replace ? QStringList{"o.a"_s, "o.b"_s} : QStringList(), {"o.p"_s});
            } catch (const PublishError &) {
                thrown = true;
            }
        }
        const bool isPublished = after.join(" "_s).contains("new"_s);
        QCOMPARE(thrown, !isPublished);
        QCOMPARE(snapshot(m_dir->path()), after.isEmpty() ? old : after);
    }

    // Whenever the process is killed, the next one finds a whole set or makes it whole; nothing else is left.
    void killed()
    {
        QStringList names;
        for (int i = 0; i < 30; ++i)
            names << "o.%1"_s.arg(i);
        publishAll("o.0"_s, names, "0");
        int swept = 0;
        for (int round = 0; round < 40; ++round) {
            const pid_t child = fork();
            if (child == 0) {
                for (int i = 0;; ++i)
                    publishAll("o.0"_s, names, QByteArray::number(i));
            }
            usleep(static_cast<useconds_t>(2000 + round * 130));
            kill(child, SIGKILL);
            waitpid(child, nullptr, 0);
            swept += QDir().entryList({".nivora-cs-*"_s}, QDir::Dirs | QDir::Hidden).size();
            Publication("o.0"_s);
            QSet<QString> contents;
            for (const QString &line : snapshot(m_dir->path()))
                contents << line.section(" "_s, 2);
            QCOMPARE(contents.size(), 1);
            QCOMPARE(snapshot(m_dir->path()).size(), names.size());
        }
        QVERIFY(swept > 0);
    }

    // What a user did to the files of a dead process stays, and a living one's folder too.
    void otherHands()
    {
        support::writeFile("o.a"_s, "old");
        Publication living("o.a"_s);
        support::writeFile(living.path("o.a"_s), "living");
        Publication other("o.b"_s);
        QVERIFY(QFile::exists(living.path("o.a"_s)));
        living.publish({"o.a"_s}, {});
        QVERIFY(snapshot(m_dir->path()).contains("o.a 6644 living"_s));
    }

private:
    std::unique_ptr<QTemporaryDir> m_dir;
};

NIVORA_TEST(TestPublication)
#include "tst_publication.moc"
