#include "CliRun.h"

#include "support/Support.h"
#include "support/TestRunner.h"

#include <coordsys/CoordTransform.h>

#include <QRegularExpression>

namespace {

const QStringList toUtm = words("transform --from 4326 --to 32637");
// (37, 55) in UTM zone 37 by cs2cs 9.1.1
const QByteArray utm = "372071.8086 6096620.7065";
constexpr const char *badPoint = "37 95"; // no such latitude

QByteArray utmLine(const char *separator, const char *rest = "")
{
    return "372071.8086" + QByteArray(separator) + "6096620.7065" + rest;
}

} // namespace

class TestCliStream : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void lines_data()
    {
        QTest::addColumn<QByteArray>("in");
        QTest::addColumn<QByteArray>("out");
        QTest::addColumn<QByteArray>("why"); // empty: the line is good
        const auto good = [](const char *name, const QByteArray &in, const QByteArray &out) {
            QTest::newRow(name) << in << out << QByteArray();
        };
        const auto bad = [](const char *name, const QByteArray &in, const char *why,
                            const QByteArray &out = "* *\n") {
            QTest::newRow(name) << in << out << QByteArray(why);
        };
        good("blank", "37 55\n", utm + '\n');
        good("tab, further columns", "37\t55\ta\tb\n", utmLine("\t", "\ta\tb\n"));
        good("comma", "37,55,a,b\n", utmLine(",", ",a,b\n"));
        good("semicolon and blanks", "37 ; 55;a\n", utmLine(" ; ", ";a\n"));
        good("blanks before", " \t37 55\n", utm + '\n');
        good("plus, exponent, bare points", "+3.7e1 +55.\n", utm + '\n');
        good("carriage return", "37 55\r\n", utm + "\r\n");
        good("no line end", "37 55", utm + '\n');
        good("nothing", "", "");
        good("comment", "# 37 55\r\n", "# 37 55\r\n");
        good("blank lines", "\n \t\n\r\n", "\n \t\n\r\n");
        good("zero byte in a further column", QByteArray("37 55 a\0b\n", 10),
             utmLine(" ", " a") + QByteArray("\0b\n", 3));
        good("byte order mark",
             "\xEF\xBB\xBF"
             "37 55\n",
             utm + '\n');
        bad("word", "abc 55\n", "x is no number");
        bad("one number", "37\n", "y is missing");
        bad("garbage behind x", "37a 55\n", "x is no number");
        bad("garbage behind y", "37 55a\n", "y is no number");
        bad("zero byte behind y", QByteArray("37 55\0\n", 7), "y is no number");
        bad("zero bytes", QByteArray("\0\0\n", 3), "x is no number");
        bad("nan", "nan 55\n", "x is no number");
        bad("inf", "37 -inf\n", "y is no number");
        bad("too large", "1e999 55\n", "x is too large or too small for a number");
        bad("hexadecimal", "0x25 55\n", "x is no number");
        bad("two signs", "+-37 55\n", "x is no number");
        bad("empty column", "37,,55\n", "y is no number");
        bad("beyond the pole", QByteArray(badPoint) + '\n', "the point cannot be transformed");
        bad("beyond the pole, carriage return, columns", "37,95,a\r\n", "the point cannot be transformed",
            "* *,a\r\n");
    }
    void lines()
    {
        QFETCH(QByteArray, in);
        QFETCH(QByteArray, out);
        QFETCH(QByteArray, why);
        const CliRun done = run(toUtm, in);
        QVERIFY2(done.out == out && done.status == (why.isEmpty() ? 0 : 1), done.describe());
        QCOMPARE(done.err, why.isEmpty() ? QByteArray() : "line 1: " + why + '\n');
    }

    /// Twenty lines are reported by number, the rest is counted.
    void reports()
    {
        const CliRun done = run(toUtm, "37 55\n#\n" + QByteArray("x\n37 95\n").repeated(15));
        const QList<QByteArray> reported = done.errLines();
        QCOMPARE(done.status, 1);
        QCOMPARE(reported.size(), 21);
        QCOMPARE(reported.at(0), QByteArray("line 3: x is no number"));
        QCOMPARE(reported.at(19), QByteArray("line 22: the point cannot be transformed"));
        QVERIFY(reported.at(20).contains("10 more lines failed, 30 in all"));
        QCOMPARE(done.outLines().count("* *"), 30);
    }

    /// A bad point in any place of a block costs its own line only: every other line is what the library
    /// gives for the point alone, across the borders of blocks and reads.
    void blocks()
    {
        constexpr int count = 60000; // over a megabyte, a block is 256 KiB at most
        const QSet<int> bad = {0, 1, 999, 13107, 13108, 29999, 30000, 30001, 45000, count - 1};
        const auto factory = support::shippedFactory();
        const nivora::cs::CoordTransform transform(factory->createFromEpsg(4326),
                                                   factory->createFromEpsg(32637));
        QByteArray input;
        QList<QByteArray> expected;
        for (int i = 0; i < count; ++i) {
            if (bad.contains(i)) {
                input += badPoint;
                expected << "* *";
            } else {
                const QByteArray x = QByteArray::number(36.0 + (i % 6000) * 0.001, 'f', 3);
                const QByteArray y = QByteArray::number(40.0 + i * 0.0005, 'f', 4);
                QPointF out;
                QVERIFY(transform.forward({x.toDouble(), y.toDouble()}, out)); // reads the same decimals
                input += x + ' ' + y;
                expected << QByteArray::number(out.x(), 'f', 4) + ' ' + QByteArray::number(out.y(), 'f', 4);
            }
            input += '\n';
        }
        const CliRun done = run(toUtm, input);
        QCOMPARE(done.status, 1);
        QCOMPARE(done.errLines().size(), bad.size());
        const QList<QByteArray> lines = done.outLines();
        QCOMPARE(lines.size(), expected.size());
        for (int i = 0; i < count; ++i)
            QVERIFY2(lines.at(i) == expected.at(i),
                     QByteArray::number(i) + ": " + lines.at(i) + " / " + expected.at(i));

        const CliRun nothingGood = run(toUtm, QByteArray("37 95\n").repeated(count));
        QCOMPARE(nothingGood.out, QByteArray("* *\n").repeated(count));
    }

    /// Lines longer than one read are put together, up to a limit; beyond it they are bad lines and cost no
    /// memory.
    void longLines()
    {
        const QByteArray wide = "37 55" + QByteArray(1000000, ' ') + "end\n";
        const CliRun whole = run(toUtm, wide + "37 55\n");
        QVERIFY(whole.status == 0 && whole.out == utm + wide.mid(5) + utm + '\n');

        const CliRun tooLong = run(toUtm, QByteArray(20 * 1024 * 1024, '1') + "\n37 55\n");
        QVERIFY2(tooLong.out == "* *\n" + utm + '\n' && tooLong.err.contains("line 1: longer than"),
                 tooLong.describe());
    }

    void files()
    {
        const QTemporaryDir dir;
        QFile file(dir.filePath(QStringLiteral("точки 1.txt")));
        QVERIFY(file.open(QIODevice::WriteOnly));
        file.write("37 55\nx"); // without a line end before the next file's first line
        file.close();
        const CliRun done =
            run(toUtm + QStringList{file.fileName(), QStringLiteral("-"), file.fileName()}, "37 55");
        QCOMPARE(done.out, utm + "\n* *\n" + utm + '\n' + utm + "\n* *\n");
        QCOMPARE(done.err, QByteArray(file.fileName().toUtf8() + ": line 2: x is no number\n").repeated(2));
        const CliRun missing =
            run(toUtm + QStringList{file.fileName(), dir.filePath(QStringLiteral("none"))});
        QVERIFY2(missing.isRefusal(QStringLiteral("none: No such file")), missing.describe());
    }

    /// Output that cannot be written is told once and never counts as success.
    void output()
    {
        const auto shell = [](const char *redirection) {
            const QString line = QStringLiteral("nivora-cs transform --from 4326 --to 32637 %1");
            return runShell(line.arg(QLatin1String(redirection)), {}, QByteArray("37 55\n").repeated(50000));
        };
        QVERIFY(shell("> /dev/full").isRefusal(QStringLiteral("cannot write the output: No space left")));
        QVERIFY(shell(">&-").isRefusal(QStringLiteral("cannot write the output: Bad file descriptor")));
        QVERIFY(shell("<&-").isRefusal(QStringLiteral("cannot read standard input: Bad file descriptor")));
        const CliRun closed = shell("| head -n 1");
        QCOMPARE(closed.out, utm + '\n');
        QCOMPARE(closed.err, QByteArray());
    }

    void decimals_data()
    {
        QTest::addColumn<QString>("to");
        QTest::addColumn<QString>("options");
        QTest::addColumn<QString>("pattern");
        const auto row = [](const char *name, const char *to, const char *options, const char *pattern) {
            QTest::newRow(name) << QString::fromUtf8(to) << QString::fromUtf8(options)
                                << QString::fromUtf8(pattern);
        };
        row("degrees", "CoordSys Earth Projection 1, 104", "", "^37\\.\\d{9} 55\\.\\d{9}$");
        row("metres", "+proj=merc +ellps=WGS84", "", "^\\d+\\.\\d{4} \\d+\\.\\d{4}$");
        row("kilometres", "+proj=merc +ellps=WGS84 +units=km", "", "^\\d+\\.\\d{7} ");
        row("millimetres", "+proj=merc +ellps=WGS84 +units=mm", "", "^\\d+\\.\\d ");
        row("asked for", "+proj=merc +ellps=WGS84", "--precision 0", "^\\d+ \\d+$");
        row("no minus before zero", "+proj=merc +ellps=WGS84 +lon_0=37.0000000000001", "", "^0\\.0000 ");
    }
    void decimals()
    {
        QFETCH(QString, to);
        QFETCH(QString, options);
        QFETCH(QString, pattern);
        const CliRun done =
            run(words("transform --from 4326 --to") + QStringList(to) + words(options.toUtf8()), "37 55\n");
        QVERIFY2(QRegularExpression(pattern).match(QString::fromUtf8(done.out.trimmed())).hasMatch(),
                 done.describe());
    }

    void references_data()
    {
        QTest::addColumn<QString>("options");
        QTest::addColumn<QByteArray>("in");
        QTest::addColumn<QByteArray>("out");
        const auto row = [](const char *name, const char *options, const char *in, const char *out) {
            QTest::newRow(name) << QString::fromUtf8(options) << QByteArray(in) << QByteArray(out);
        };
        const char *const degrees = "--cs 4326";
        // The reference is the UTM coordinates of zone 37 (413224.1377, 6179766.9539), cut off.
        row("metres", degrees, "37.6173,55.7558,a\n", "37UDB1322479766,a\n");
        row("hundreds of metres", "--cs 4326 --precision 3", "37.6173 55.7558\n", "37UDB132797\n");
        row("a CoordSys string's datum is shifted", "--cs 8,1001,7,39,0,1,7500000,0",
            "7413298.7768 6182343.5196\n", "37UDB1322479766\n");
        row("beyond the pole", degrees, "37 95 a\n", "* * a\n");
        const char *const back = "--cs 32637 --inverse --precision 3";
        row("read, with a column", back, "37UDB1322479766 7\n", "413224.000 6179766.000 7\n");
        row("read, blanks and lower case", back, "37u db 13224 79766,a\n", "413224.000 6179766.000,a\n");
        row("read, equally long column", back, "37UDB17 34\n", "410000.000 6170000.000 34\n");
        row("read, nonsense", back, "37UDB123\n", "* *\n");
        row("read, garbage behind", back, "37UDB12x\n", "* *\n");
    }
    void references()
    {
        QFETCH(QString, options);
        QFETCH(QByteArray, in);
        QFETCH(QByteArray, out);
        const CliRun done = run(words("mgrs") + words(options.toUtf8()), in);
        QVERIFY2(done.out == out && done.status == (out.startsWith('*') ? 1 : 0), done.describe());
    }
};

NIVORA_TEST(TestCliStream)
#include "tst_stream.moc"
