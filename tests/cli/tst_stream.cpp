#include "CliRun.h"

#include "support/Support.h"
#include "support/TestRunner.h"

#include <coordsys/CoordTransform.h>

#include <QRegularExpression>

namespace {

const QString geographic = QStringLiteral("CoordSys Earth Projection 1, 104");
const QStringList toUtm = {QStringLiteral("transform"), QStringLiteral("--from"), geographic,
                           QStringLiteral("--to"), QStringLiteral("32637")};
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
    void lines_data();
    void lines();
    void reports();
    void blocks();
    void longLines();
    void files();
    void output();
    void decimals_data();
    void decimals();
    void references_data();
    void references();
};

void TestCliStream::lines_data()
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

void TestCliStream::lines()
{
    QFETCH(QByteArray, in);
    QFETCH(QByteArray, out);
    QFETCH(QByteArray, why);
    const CliRun done = run(toUtm, in);
    QVERIFY2(done.out == out && done.status == (why.isEmpty() ? 0 : 1), done.describe());
    QCOMPARE(done.err, why.isEmpty() ? QByteArray() : "line 1: " + why + '\n');
}

/// Twenty lines are reported by number, the rest is counted.
void TestCliStream::reports()
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

/// A bad point in any place of a block costs its own line only: every other line is what the library gives
/// for the point alone, across the borders of blocks and reads.
void TestCliStream::blocks()
{
    constexpr int count = 60000; // over a megabyte, a block is 256 KiB at most
    const QSet<int> bad = {0, 1, 999, 13107, 13108, 29999, 30000, 30001, 45000, count - 1};
    const auto factory = support::shippedFactory();
    const nivora::cs::CoordTransform transform(factory->createFromPrj(geographic),
                                               factory->createFromEpsg(32637));
    QByteArray input;
    QList<QByteArray> expected;
    for (int i = 0; i < count; ++i) {
        if (bad.contains(i)) {
            input += badPoint;
            expected << "* *";
        } else {
            const QPointF point(36.0 + (i % 6000) * 0.001, 40.0 + i * 0.0005);
            QPointF out;
            QVERIFY(transform.forward(point, out));
            input += QByteArray::number(point.x(), 'f', 3) + ' ' + QByteArray::number(point.y(), 'f', 4);
            // The library reads the same decimals.
            QVERIFY(transform.forward({QString::number(point.x(), 'f', 3).toDouble(),
                                       QString::number(point.y(), 'f', 4).toDouble()},
                                      out));
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
void TestCliStream::longLines()
{
    const QByteArray wide = "37 55" + QByteArray(1000000, ' ') + "end\n";
    const CliRun whole = run(toUtm, wide + "37 55\n");
    QVERIFY(whole.status == 0 && whole.out == utm + wide.mid(5) + utm + '\n');

    const CliRun tooLong = run(toUtm, QByteArray(20 * 1024 * 1024, '1') + "\n37 55\n");
    QVERIFY2(tooLong.out == "* *\n" + utm + '\n' && tooLong.err.contains("line 1: longer than"),
             tooLong.describe());
}

void TestCliStream::files()
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
    const CliRun missing = run(toUtm + QStringList{file.fileName(), dir.filePath(QStringLiteral("none"))});
    QVERIFY2(missing.isRefusal(QStringLiteral("none: No such file")), missing.describe());
}

/// Output that cannot be written is told once and never counts as success.
void TestCliStream::output()
{
    const auto shell = [](const char *redirection) {
        return runShell(QStringLiteral("nivora-cs transform --from 4326 --to 32637 ") +
                            QString::fromUtf8(redirection),
                        QString(), QByteArray("37 55\n").repeated(50000));
    };
    QVERIFY(shell("> /dev/full").isRefusal(QStringLiteral("cannot write the output: No space left")));
    QVERIFY(shell(">&-").isRefusal(QStringLiteral("cannot write the output: Bad file descriptor")));
    QVERIFY(shell("<&-").isRefusal(QStringLiteral("cannot read standard input: Bad file descriptor")));
    const CliRun closed = shell("| head -n 1");
    QCOMPARE(closed.out, utm + '\n');
    QCOMPARE(closed.err, QByteArray("nivora-cs: cannot write the output: Broken pipe\n"));
}

void TestCliStream::decimals_data()
{
    QTest::addColumn<QString>("to");
    QTest::addColumn<QStringList>("more");
    QTest::addColumn<QByteArray>("pattern");
    const QString lcc = QStringLiteral("+proj=merc +ellps=WGS84 +units=");
    QTest::newRow("degrees") << geographic << QStringList() << QByteArray("^37\\.\\d{9} 55\\.\\d{9}$");
    QTest::newRow("metres") << lcc + QStringLiteral("m") << QStringList()
                            << QByteArray("^\\d+\\.\\d{4} \\d+\\.\\d{4}$");
    QTest::newRow("kilometres") << lcc + QStringLiteral("km") << QStringList()
                                << QByteArray("^\\d+\\.\\d{7} ");
    QTest::newRow("millimetres") << lcc + QStringLiteral("mm") << QStringList() << QByteArray("^\\d+\\.\\d ");
    QTest::newRow("asked for") << lcc + QStringLiteral("m")
                               << QStringList{QStringLiteral("--precision"), QStringLiteral("0")}
                               << QByteArray("^\\d+ \\d+$");
    QTest::newRow("no minus before zero") << QStringLiteral("+proj=merc +ellps=WGS84 +lon_0=37.0000000000001")
                                          << QStringList() << QByteArray("^0\\.0000 ");
}

void TestCliStream::decimals()
{
    QFETCH(QString, to);
    QFETCH(QStringList, more);
    QFETCH(QByteArray, pattern);
    const CliRun done = run(QStringList{QStringLiteral("transform"), QStringLiteral("--from"), geographic,
                                        QStringLiteral("--to"), to} +
                                more,
                            "37 55\n");
    const QRegularExpression expected(QString::fromLatin1(pattern));
    QVERIFY2(expected.match(QString::fromUtf8(done.out.trimmed())).hasMatch(), done.describe());
}

void TestCliStream::references_data()
{
    QTest::addColumn<QString>("cs");
    QTest::addColumn<QStringList>("more");
    QTest::addColumn<QByteArray>("in");
    QTest::addColumn<QByteArray>("out");
    const QString zone7 = QStringLiteral("CoordSys Earth Projection 8, 1001, \"m\", 39, 0, 1, 7500000, 0");
    const auto options = [](const char *text) {
        return QString::fromUtf8(text).split(QLatin1Char(' '), Qt::SkipEmptyParts);
    };
    // The reference is the UTM coordinates of zone 37 (413224.1377, 6179766.9539), cut off.
    QTest::newRow("metres") << geographic << options("") << QByteArray("37.6173,55.7558,a\n")
                            << QByteArray("37UDB1322479766,a\n");
    QTest::newRow("hundreds of metres") << geographic << options("--precision 3")
                                        << QByteArray("37.6173 55.7558\n") << QByteArray("37UDB132797\n");
    QTest::newRow("a CoordSys string's datum is shifted")
        << zone7 << options("") << QByteArray("7413298.7768 6182343.5196\n")
        << QByteArray("37UDB1322479766\n");
    QTest::newRow("beyond the pole") << geographic << options("") << QByteArray("37 95 a\n")
                                     << QByteArray("* * a\n");
    QTest::newRow("read, with a column")
        << QStringLiteral("32637") << options("--inverse --precision 3") << QByteArray("37UDB1322479766 7\n")
        << QByteArray("413224.000 6179766.000 7\n");
    QTest::newRow("read, blanks and lower case")
        << QStringLiteral("32637") << options("--inverse --precision 3")
        << QByteArray("37u db 13224 79766,a\n") << QByteArray("413224.000 6179766.000,a\n");
    QTest::newRow("read, equally long column")
        << QStringLiteral("32637") << options("--inverse --precision 0") << QByteArray("37UDB17 34\n")
        << QByteArray("410000 6170000 34\n");
    QTest::newRow("read, nonsense") << QStringLiteral("32637") << options("--inverse")
                                    << QByteArray("37UDB123\n") << QByteArray("* *\n");
    QTest::newRow("read, garbage behind")
        << QStringLiteral("32637") << options("--inverse") << QByteArray("37UDB12x\n") << QByteArray("* *\n");
}

void TestCliStream::references()
{
    QFETCH(QString, cs);
    QFETCH(QStringList, more);
    QFETCH(QByteArray, in);
    QFETCH(QByteArray, out);
    const CliRun done = run(QStringList{QStringLiteral("mgrs"), QStringLiteral("--cs"), cs} + more, in);
    QVERIFY2(done.out == out && done.status == (out.startsWith('*') ? 1 : 0), done.describe());
}

NIVORA_TEST(TestCliStream)
#include "tst_stream.moc"
