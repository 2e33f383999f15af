#include "CliRun.h"

#include "support/Support.h"
#include "support/TestRunner.h"

#include <QTemporaryDir>

#include <arpa/inet.h>
#include <sys/socket.h>
#include <unistd.h>

namespace {

/// A socket of this machine that listens, and whether somebody came.
class Listener
{
public:
    Listener()
        : m_socket(::socket(AF_INET, SOCK_STREAM | SOCK_NONBLOCK, 0))
    {
        m_address.sin_family = AF_INET;
        m_address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
        socklen_t size = sizeof(m_address);
        auto *const address = reinterpret_cast<sockaddr *>(&m_address);
        if (::bind(m_socket, address, size) != 0 || ::listen(m_socket, 20) != 0 ||
            ::getsockname(m_socket, address, &size) != 0)
            qFatal("no socket");
    }
    ~Listener() { ::close(m_socket); }
    QByteArray address() const { return "127.0.0.1:" + QByteArray::number(ntohs(m_address.sin_port)); }
    bool wasAsked() const
    {
        const int visitor = ::accept(m_socket, nullptr, nullptr);
        ::close(visitor);
        return visitor >= 0;
    }

private:
    sockaddr_in m_address = {};
    int m_socket;
};

} // namespace

/// What the program does to the files that are there, and to the world around.
class TestCliPublish : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void folders_data()
    {
        // A shell's line; the files and folders beside the input that are new or changed then.
        const support::Columns<QString, QString> row;
        row("a list of somebody else's", "echo mine > o.rejected.csv; mark; convert a.csv o.gpkg", "o.gpkg");
        row("it is not replaced",
            "echo mine > o.rejected.csv; mark; convert bad.csv o.gpkg --to 32637 --overwrite", "");
        row("an old one of ours goes",
            "convert bad.csv o.gpkg --to 32637; mark; convert a.csv o.gpkg --overwrite",
            "o.gpkg o.rejected.csv");
        row("somebody's table", "echo mine > o.dbf; mark; convert a.csv o.shp --overwrite", "");
        row("parts of the old set",
            "convert a.csv o.shp; rm o.cpg; echo x > o.txt; mark; convert a.csv o.shp "
            "--overwrite",
            "o.cpg o.dbf o.prj o.shp o.shx");
        row("a damaged set", "echo x > o.shp; echo x > o.dbf; mark; convert a.csv o.shp --overwrite",
            "o.cpg o.dbf o.prj o.shp o.shx");
        row("a set that cannot be replaced whole",
            "convert a.csv o.shp; rm o.prj; mkdir o.prj; mark; convert a.csv o.shp "
            "--overwrite",
            "");
        row("a link to nowhere", "ln -s nowhere o.gpkg; mark; convert a.csv o.gpkg", "");
        row("mode and link",
            "echo x > r; chmod 640 r; ln -s r o.gpkg; mark; convert a.csv o.gpkg --overwrite; "
            "test $(stat -c %a r) = 640 && rm r",
            "r");
        row("leftovers of the dead",
            "mkdir -p .nivora-cs-abcdef/new .nivora-cs-abcdef/old; mark; convert a.csv o.gpkg",
            ".nivora-cs-abcdef o.gpkg");
        row("a folder that is one data set", "mark; convert a.csv o.gdb; convert a.csv o.gdb --overwrite",
            "o.gdb");
        row("names in capitals",
            "mark; convert a.csv O.SHP && convert O.SHP P.TAB && convert P.TAB o.gpkg && convert O.SHP O.SHP "
            "--overwrite; convert a.csv o.Shp",
            "O.CPG O.DBF O.PRJ O.SHP O.SHX P.DAT P.ID P.MAP P.TAB o.gpkg");
        row("a driver that writes nothing", "mark; convert a.csv o.xyz --format Memory", "");
        row("appending to a set of files behind a link",
            "mkdir s; convert a.csv s/o.shp; for e in shp dbf shx prj cpg; do ln -s s/o.$e o.$e; done; chmod "
            "600 s/*; "
            "mark; convert a.csv o.shp --append; test $(stat -c %a%F s/o.dbf | tr -d ' ') = 600regularfile "
            "&& touch ok",
            "ok s");
        row("appending, and a full disk",
            "convert a.csv o.gpkg; mark; (ulimit -f 100; convert many.csv o.gpkg --append)", "");
        row("a limit of size", "mark; (ulimit -f 8; convert many.csv o.mif)", "");
        row("a limit of size that the driver does not notice",
            "mark; (ulimit -f 8; convert many.csv o.geojson)", "");
        row("asked to end",
            "yes '1,POINT (37.123456 55)' | head -1000000 | sed '1iid,WKT' > /tmp/big.$$.csv; mark; "
            "for s in INT TERM QUIT XCPU; do timeout -s $s 0.4 \"$program\" convert --from 4326 "
            "/tmp/big.$$.csv "
            "o.gpkg 2>/dev/null; done; rm /tmp/big.$$.csv",
            "");
    }
    void folders()
    {
        const auto [line, changed] = support::row<QString, QString>();
        const QTemporaryDir dir;
        const auto write = [&dir](const char *name, const QByteArray &content) {
            support::writeFile(dir.filePath(QLatin1String(name)), content);
        };
        write("a.csv", "id,WKT\n1,POINT (37 55)\n");
        write("bad.csv", "id,WKT\n1,POINT (37 95)\n");
        write("many.csv", "id,WKT\n" + QByteArray("1,POINT (37.123456 55)\n").repeated(3000));
        const QString script =
            QStringLiteral("umask 022; program=$(command -v nivora-cs); "
                           "convert() { \"$program\" convert \"$@\" --from 4326 2>/dev/null; }; "
                           "state() { for f in $(ls -A); do stat -c '%n %i %a %s %y' $f; done | sort; }; "
                           "mark() { state > /tmp/state.$$; }; ") +
            line +
            QStringLiteral(
                "; state | sort - /tmp/state.$$ | uniq -u | cut -d' ' -f1 | sort -u; rm /tmp/state.$$");
        const CliRun run = runShell(script, dir.path());
        QCOMPARE(QString::fromUtf8(run.out).simplified(), changed);
    }

    // Missing grids are fetched when an argument says so; what the environment says is for other programs.
    void networkOfGrids()
    {
        const Listener listener;
        const QTemporaryDir dir;
        const auto transform = [&](const char *option, const QByteArray &place) {
            return runShell(
                QStringLiteral("echo 10 50 100 | PROJ_NETWORK=ON PROJ_USER_WRITABLE_DIRECTORY=. "
                               "PROJ_NETWORK_ENDPOINT=http://%1 timeout 3 nivora-cs transform --z "
                               "--from 4979 --to EPSG:9518 %2")
                    .arg(QString::fromUtf8(place), QLatin1String(option)),
                dir.path());
        };
        const QByteArray closed = "127.0.0.1:1";
        const bool isInstalled = transform("", listener.address()).status == 0;
        QVERIFY(!listener.wasAsked());
        transform("--network", listener.address()); // nobody answers, so it ends by the time limit
        QVERIFY(isInstalled || listener.wasAsked());
        const CliRun refused = transform("--network", closed);
        QVERIFY2(isInstalled || refused.err.contains("the network does not answer: http://" + closed),
                 refused.describe());
    }

    // What a file says does not send the program anywhere; an argument does.
    void network()
    {
        const Listener listener;
        const QTemporaryDir dir;
        const QByteArray url = "http://" + listener.address();
        support::writeFile(
            dir.filePath(QStringLiteral("linked.geojson")),
            "{\"type\":\"FeatureCollection\",\"crs\":{\"type\":\"link\",\"properties\":{\"href\":\"" + url +
                "/crs\",\"type\":\"ogcwkt\"}},\"features\":[{\"type\":\"Feature\",\"properties\":{},"
                "\"geometry\":{\"type\":\"Point\",\"coordinates\":[1,2]}}]}");
        const auto convert = [&dir](const QByteArray &in) {
            return runShell(QStringLiteral("timeout 5 nivora-cs convert --lossy --overwrite '%1' o.csv")
                                .arg(QString::fromUtf8(in)),
                            dir.path());
        };
        const CliRun linked = convert("linked.geojson");
        QVERIFY2(linked.err.contains("only when an argument names it"), linked.describe());
        for (const QByteArray &source :
             {url + "/a.geojson", "/vsicurl/" + url + "/a.csv", "/vsicurl_streaming/" + url + "/a.csv",
              "/vsizip//vsicurl/" + url + "/a.zip", "WFS:" + url}) {
            support::writeFile(dir.filePath(QStringLiteral("remote.vrt")),
                               "<OGRVRTDataSource><OGRVRTLayer name='a'><SrcDataSource>" + source +
                                   "</SrcDataSource></OGRVRTLayer></OGRVRTDataSource>");
            convert("remote.vrt");
            QVERIFY2(!listener.wasAsked(), source);
        }
        convert(url + "/a.geojson"); // nobody answers, so it ends by the time limit
        QVERIFY(listener.wasAsked());
    }
};

NIVORA_TEST(TestCliPublish)
#include "tst_publish.moc"
