#include "CliRun.h"

#include "support/Support.h"
#include "support/TestRunner.h"

#include <coordsys/CoordTransform.h>

#include <QProcess>
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
                            const QByteArray &out = {}) {
            QTest::newRow(name) << in << (out.isEmpty() ? "* * " + in : out) << QByteArray(why);
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
        bad("identifier first", "P1 37.6 55.7\n", "x is no number");
        bad("words are a header", "lon,lat,name\n", "x is no number; passed on as a header",
            "lon,lat,name\n");
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
        bad("empty column", "37,,55\n", "y is no number", "*,*,37,,55\n");
        bad("beyond the pole", QByteArray(badPoint) + '\n', "the point cannot be transformed", "* *\n");
        bad("beyond the pole, carriage return, columns", "37,95,a\r\n", "the point cannot be transformed",
            "*,*,a\r\n");
        good("decimal commas, semicolon", "37,0;55,0;a\n", utmLine(";", ";a\n"));
        good("decimal commas, blank", "37,0 55,0\n", utm + '\n');
        good("commas separate, a height", "37,55,120\n", utmLine(",", ",120\n"));
        good("commas separate, no latitude of 120", "37,55,120,5\n", utmLine(",", ",120,5\n"));
        const char *doubt =
            "could be read as two numbers or as one with a decimal comma: give --decimal-comma, "
            "or --csv when commas separate";
        bad("four whole numbers", "37,0,55,0\n", doubt, "*,*,37,0,55,0\n");
        bad("one decimal comma before", "37,0 55\n", doubt, "*,*,37,0 55\n");
        bad("two columns or a decimal comma before a letter", "37,55N 12\n", doubt, "*,*,37,55N 12\n");
        bad("one decimal comma before, a letter", "37,0 55N\n", doubt, "*,*,37,0 55N\n");
        bad("one decimal comma behind", "37 55,0\n", doubt, "*,*,37 55,0\n");
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
        QCOMPARE(done.outLines().count("* *"), 15);
        QCOMPARE(done.outLines().count("* * x"), 15);
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
        for (const char *jobs : {"--jobs 1", "--jobs 5"}) {
            const CliRun other = run(toUtm + words(jobs), input);
            QVERIFY(other.out == done.out && other.err == done.err);
        }
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

    /// A line is answered before the next is written, and output that fails is told although a thread waits
    /// for input.
    void slowPipe()
    {
        QProcess process;
        process.start(QStringLiteral(NIVORA_CS_PROGRAM), toUtm);
        for (int i = 0; i < 3; ++i) {
            process.write("37 55\n");
            QVERIFY(process.waitForReadyRead());
            QCOMPARE(process.readAll(), utm + '\n');
        }
        process.closeWriteChannel();
        QVERIFY(process.waitForFinished());

        process.setStandardOutputFile(QStringLiteral("/dev/full"));
        process.start(QStringLiteral(NIVORA_CS_PROGRAM), toUtm);
        process.write("37 55\n");
        QVERIFY(process.waitForFinished());
        QCOMPARE(process.exitCode(), 2);
    }

    /// Degrees by hand arithmetic: 55°45'21.5" is 55.755972, 37°37'2.25" is 37.617292. Equal systems copy.
    void notations_data()
    {
        QTest::addColumn<QByteArray>("in");
        QTest::addColumn<QByteArray>("out");
        const auto row = [](const char *name, const char *in, const char *out) {
            QTest::newRow(name) << QByteArray(in) + '\n' << QByteArray(out) + '\n';
        };
        const auto point = [row](const char *name, const char *in) { row(name, in, "37.617292 55.755972"); };
        const auto bad = [](const char *name, const QByteArray &in) {
            QTest::newRow(name) << in + '\n' << "* * " + in + '\n';
        };
        point("marks", "37°37'2.25\" 55°45'21.5\"");
        point("latitude first", "55°45'21.5\"N 37°37'2.25\"E");
        point("one letter will do", "55°45'21.5\" 37°37'2.25\"E");
        point("letters first", "N55d45'21.5 E 37d37'2.25");
        point("primes, Cyrillic", "55°45′21.5″С 37°37′2.25″В");
        point("quotation marks, abbreviations", "55º 45’ 21.5” с.ш. 37˚ 37’ 2.25’’ в.д.");
        point("colons", "37:37:2.25 55:45:21.5");
        point("dashes", "55-45-21.5N 37-37-2.25Ö");
        point("nothing between", "554521.5N 0373702.25E");
        row("minutes with decimals", "5545.358N,W00337.5", "-3.625000,55.755967");
        row("French west", "37°30'O 55N", "-37.500000 55.000000");
        point("quoted", "\"55 45 21.5 N\" \"37 37 2.25 E\"");
        point("quoted with marks", "\"55°45'21.5\"\"N\" \"37°37'2.25\"\"\"");
        point("columns", "55 45 21.5 N 37 37 2.25 E");
        point("columns, decimal commas", "55 45 21,5 N 37 37 2,25 E");
        point("columns, letters first", "E 37 37 2.25 N 55 45 21,5");
        point("seconds with a decimal comma", "37°37'2,25\" 55°45'21,5\"");
        point("columns, letters at the numbers", "55 45 21.5N 37 37 2,25E");
        row("decimal comma before a semicolon", "N55 45 21,5;E37 37 2,25;a", "37.617292;55.755972;a");
        row("commas separate up to the blank", "N55,45,21 E37,37,2", "37.617222 55.755833");
        point("columns, letters before the numbers", "N55 45 21.5 E37 37 2.25");
        row("decimal commas before letters", "55,5с.ш. 37,5вд", "37.500000 55.500000");
        row("a house number is no hemisphere", "37.5 55.5 12В", "37.500000 55.500000 12В");
        row("columns with commas and a further one", "37,37,2.25,E,55,45,21.5,N,a", "37.617292,55.755972,a");
        row("letter behind a height is no hemisphere", "37 55 120 N", "37.000000 55.000000 120 N");
        row("south and west", "0°30'S 0°30'З", "-0.500000 -0.500000");
        row("minus zero degrees", "-0°30' −0°00'36\"", "-0.500000 -0.010000");
        row("seconds carry", "36°59'60\" 55.5", "37.000000 55.500000");
        bad("sixty minutes", "37°60' 55");
        bad("more than sixty seconds", "37°0'60.1\" 55");
        bad("decimals before minutes", "37.5°30' 55");
        bad("marks in the wrong order", "37'30° 55");
        bad("beyond the pole", "90°00'01\"N 37°E");
        bad("two latitudes", "55°N 37°N");
        bad("thousands are no minutes", "\"37 000\" \"55 000\"");
        bad("a sign and a letter", "-55°N 37°E");
        bad("minutes out of range in columns", "55 61 0 N 37 37 2 E");
    }
    void notations()
    {
        QFETCH(QByteArray, in);
        QFETCH(QByteArray, out);
        const CliRun done = run(words("transform --from 4326 --to 4326 --precision 6"), in);
        // A point that was read and contradicts itself keeps its columns, without its text.
        const bool failed = out.startsWith('*');
        QVERIFY2((failed ? done.out.startsWith("* *") : done.out == out) && done.status == failed,
                 done.describe());
    }

    void angles_data()
    {
        QTest::addColumn<QString>("options");
        QTest::addColumn<QByteArray>("in");
        QTest::addColumn<QByteArray>("out");
        const auto row = [](const char *name, const char *options, const char *in, const char *out) {
            QTest::newRow(name) << QString::fromUtf8(options) << QByteArray(in) << QByteArray(out);
        };
        row("half to even", "--precision 0", "0.5 1.5\n2.5 -3.5\n", "0 2\n2 -4\n");
        row("half to even, decimals", "--precision 2", "0.125 0.375\n", "0.12 0.38\n");
        row("carries", "--dms=1", "36.999999999 -0.016666666\n", "37°00'00.0\"E 0°01'00.0\"S\n");
        row("no minus before zero", "--dms 0", "-0.0001,-180\n", "0°00'00\"E,180°00'00\"S\n");
        row("five decimals, Cyrillic", "--dms --letters ru", "-37.5 5.01 a\n",
            "37°30'00.00000\"З 5°00'36.00000\"С a\n");
        row("in a table", "--dms 0 --csv", "37.5,55\n", "\"37°30'00\"\"E\",\"55°00'00\"\"N\"\n");
    }
    void angles()
    {
        QFETCH(QString, options);
        QFETCH(QByteArray, in);
        QFETCH(QByteArray, out);
        const CliRun done = run(words("transform --from 4326 --to 4326") + words(options.toUtf8()), in);
        QVERIFY2(done.out == out && done.status == 0, done.describe());
    }

    /// Spreadsheets set thousands apart. Where blanks may separate columns as well, nothing is guessed.
    void thousands_data()
    {
        QTest::addColumn<QString>("options");
        QTest::addColumn<QByteArray>("in");
        QTest::addColumn<QByteArray>("out");
        const auto row = [](const char *name, const char *options, const char *in, const char *out) {
            QTest::newRow(name) << QString::fromUtf8(options) << QByteArray(in) << QByteArray(out);
        };
        const char *const plain = "411000.5;6182000.0;a b\n";
        row("blanks, semicolon", "", "411 000,5;6 182 000;a b\n", plain);
        row("blanks behind a plain number", "", "411000.5;6 182 000;a b\n", plain);
        row("no-break spaces, blank", "",
            "411\xC2\xA0"
            "000,5 6\xC2\xA0"
            "182\xC2\xA0"
            "000 a\n",
            "411000.5 6182000.0 a\n");
        row("apostrophes, tab", "", "+411'000.5\t-6'182'000\ta\n", "411000.5\t-6182000.0\ta\n");
        row("in a table", "--csv",
            "411 000,5;6\xE2\x80\xAF"
            "182\xE2\x80\xAF"
            "000;a b\n",
            plain);
        row("quoted, of older encodings", "--csv",
            "\"411\xA0"
            "000,5\";6\xA0"
            "182\xA0"
            "000\n",
            "\"411000.5\";6182000.0\n");
        row("three small numbers", "", "100 200 300\n", "100.0 200.0 300\n");
        row("small numbers in columns", "", "100 200 300 400 500 600\n", "100.0 200.0 300 400 500 600\n");
        row("groups of four", "--csv", "4110 0005;6182\n", "*;*\n");
        row("blanks alone", "", "411 123 6 182 456.5 a\n", "* * 411 123 6 182 456.5 a\n");
        row("blanks alone, a zero in front", "", "411 000 182 000\n", "* * 411 000 182 000\n");
        row("comma between", "", "411 123, 6 182 456\n", "*,*,411 123, 6 182 456\n");
    }
    void thousands()
    {
        QFETCH(QString, options);
        QFETCH(QByteArray, in);
        QFETCH(QByteArray, out);
        const CliRun done =
            run(words("transform --from 32637 --to 32637 --precision 1") + words(options.toUtf8()), in);
        QVERIFY2(done.out == out && done.status == out.startsWith('*'), done.describe());
    }

    /// A header that names its columns is believed, one that leaves doubt is asked about.
    void headers_data()
    {
        QTest::addColumn<QString>("options");
        QTest::addColumn<QByteArray>("in");
        QTest::addColumn<QByteArray>("out"); // empty: refused
        const auto row = [](const char *name, const char *options, const char *in, const char *out) {
            QTest::newRow(name) << QString::fromUtf8(options) << QByteArray(in) << QByteArray(out);
        };
        row("latitude first", "--csv --dms 0", "id,lat,lon\n1,2,3\n",
            "id,lat,lon\n1,\"2°00'00\"\"N\",\"3°00'00\"\"E\"\n");
        row("a number before x", "--csv", "id;X;Y\n1;2;3\n", "id;X;Y\n1;2.0;3.0\n");
        row("Russian", "--csv", "Широта\tДолгота\n2\t3\n", "Широта\tДолгота\n2.0\t3.0\n");
        row("with heights", "--csv --z=h", "h,lat,lon\n1,2,3\n", "h,lat,lon\n1.0000,2.0,3.0\n");
        row("asked for otherwise", "--csv --x lat --y lon", "id,lat,lon\n1,2,3\n", "id,lat,lon\n1,2.0,3.0\n");
        row("y before x", "--csv", "y,x\n2,3\n", "");
        row("y before x, one of them asked for", "--csv --x y", "y,x\n2,3\n", "y,x\n2.0,3.0\n");
        row("no table", "", "lat lon\n2 3\n", "");
        row("no table, letters", "", "2 N 3 E\n", "3.0 2.0\n");
        row("no table, six numbers", "", "55 45 21.5 37 36 12\n", "* * 55 45 21.5 37 36 12\n");
    }
    void headers()
    {
        QFETCH(QString, options);
        QFETCH(QByteArray, in);
        QFETCH(QByteArray, out);
        const bool isByHeader =
            options.contains(QLatin1String("--csv")) && !options.contains(QLatin1String("--x"));
        const QString decimals =
            options.contains(QLatin1String("--dms")) ? QString() : QStringLiteral("--precision 1 ");
        const CliRun done =
            run(words("transform --from 4326 --to 4326 " + (decimals + options).toUtf8()), in);
        QVERIFY2(done.out == out && done.status == (out.isEmpty() ? 2 : out.startsWith('*')),
                 done.describe());
        QCOMPARE(done.err.contains("x is the column"), isByHeader && !out.isEmpty());
    }

    /// Surveyors write x for the northing: a remark, nothing is exchanged.
    void exchanged()
    {
        const QStringList fromZone7 = words("transform --from 28407 --to 4326");
        const QByteArray remark = "is y first?";
        QVERIFY(run(fromZone7, "6182000 7411000\n6183000 7412000\n").err.contains(remark));
        QVERIFY(run(words("transform --from 4326 --to 28407 --inverse"), "6182000 7411000\n")
                    .err.contains(remark));
        QVERIFY(!run(fromZone7, "6182000 7411000\n7411000 6182000\n").err.contains(remark));
        QVERIFY(!run(fromZone7, "411000 6182000\n").err.contains(remark)); // nor with the prefix left out
        QVERIFY(!run(toUtm, "55 37\n").err.contains(remark));
    }

    /// Tables with every quoting there is; what is not x or y stays to the byte. Equal systems copy.
    void tables_data()
    {
        QTest::addColumn<QString>("options");
        QTest::addColumn<QByteArray>("in");
        QTest::addColumn<QByteArray>("out");
        QTest::addColumn<QByteArray>("why");
        const auto row = [](const char *name, const char *options, const char *in, const char *out,
                            const char *why = "") {
            QTest::newRow(name) << QString::fromUtf8(options) << QByteArray(in) << QByteArray(out)
                                << QByteArray(why);
        };
        const char *const named = "--x lon --y lat";
        row("quotes, line feeds, carriage returns, mark", named,
            "\xEF\xBB\xBFn,lon,lat,z\r\n\"a, \"\"b\"\"\r\nc\",1,\"2\",\"\"\r\n5\" pipe, 3,4,",
            "\xEF\xBB\xBFn,lon,lat,z\r\n\"a, \"\"b\"\"\r\nc\",1.0,\"2.0\",\"\"\r\n5\" pipe,3.0,4.0,");
        row("y before x, semicolons, decimal commas", named, "lat;lon;a,b\n1,5;\"2,5\";\"x;y\"\n",
            "lat;lon;a,b\n1.5;\"2.5\";\"x;y\"\n");
        row("failures keep the rest", named, "n,lat,lon,z\nA,91,5,q\nB,,5,\"q\nq\"\n\nC,1\nD,1,2,\n",
            "n,lat,lon,z\nA,91.0,5.0,q\nB,*,*,\"q\nq\"\n\nC,*\nD,1.0,2.0,\n",
            "line 3: y is no number\nline 6: x is missing\n");
        row("new columns", "--x 1 --y 2 --out-x E --out-y N,m", "lon;lat\n1;2\n",
            "lon;lat;E;N,m\n1;2;1.0;2.0\n");
        row("one in place, one new, tab", "--x 1 --y 2 --out-x lat --out-y=N --delimiter tab",
            "lon\tlat\tz\n1\t2\t3\n", "lon\tlat\tz\tN\n1\t1.0\t3\t2.0\n");
        row("no header, lines skipped", "--skip 2", "\"x\ny,z\n1,2,a\n", "\"x\ny,z\n1.0,2.0,a\n");
        row("header by its words, over two lines", "", "\"lon\ngitude\",lat\n1,2\n",
            "\"lon\ngitude\",lat\n1.0,2.0\n");
        row("angle in columns", "--x 1,2,3 --y 4 --out-x X --out-y 4", "1,30,W,2\n", "1,30,W,2.0,-1.5\n");
        row("thousands or decimals", "", "\"1,500\",2\n", "*,*\n",
            "line 1: x could be read as one number with thousands or with decimals: give --decimal-comma for "
            "decimals\n");
        row("decimals", "--decimal-comma", "\"1,500\",2\n", "\"1.5\",2.0\n");
        row("no room for the result", "--out-y 3", "1,2,3\n1,2\n", "1.0,2,2.0\n*,2\n",
            "line 2: the line has too few columns for the result\n");
        row("another encoding", "--x 1 --y 2 --out-x \xD0\xAA --encoding cp1251", "\xC4,\x98,z\n1,2,\x98\n",
            "\xC4,\x98,z,\xDA\n1,2.0,\x98,1.0\n");
        row("unclosed quote", "", "1,2,\"a\n3,4\n", "1.0,2.0,\"a\n3,4\n");
    }
    void tables()
    {
        QFETCH(QString, options);
        QFETCH(QByteArray, in);
        QFETCH(QByteArray, out);
        QFETCH(QByteArray, why);
        const CliRun done =
            run(words("transform --from 4326 --to 4326 --precision 1 --csv") + words(options.toUtf8()), in);
        QVERIFY2(done.out == out && done.err == why && done.status == !why.isEmpty(), done.describe());
    }

    /// A table larger than a read: a quoted line feed that lies on the border ends no line.
    void largeTable()
    {
        const QByteArray line = "\"" + QByteArray("a,\n").repeated(300) + "\",1,2\n";
        const QByteArray table = "n,x,y\n" + line.repeated(2000);
        const CliRun done =
            run(words("transform --from 4326 --to 4326 --precision 0 --csv --x x --y y --jobs 3"), table);
        QVERIFY(done.out == table && done.status == 0);
    }

    void refusals_data()
    {
        QTest::addColumn<QString>("options");
        QTest::addColumn<QString>("why");
        const auto row = [](const char *options, const char *why) {
            QTest::newRow(options) << QString::fromUtf8(options) << QString::fromUtf8(why);
        };
        row("--to 4326 --csv --x q", "no column \"q\"");
        row("--to 4326 --csv --x 1 --y 1", "one column");
        row("--to 4326 --csv --out-x 9", "no column \"9\"");
        row("--to 4326 --csv --x 1,2 --y 3", "--out-x is needed");
        row("--to 4326 --csv --delimiter ab", "--delimiter");
        row("--to 4326 --x lon", "--x needs --csv");
        row("--to 32637 --dms", "no degrees");
        row("--to 4326 --jobs 0", "--jobs");
        row("--to 4326 --encoding UTF-16", "a byte for each character");
    }
    void refusals()
    {
        QFETCH(QString, options);
        QFETCH(QString, why);
        const CliRun done = run(words("transform --from 4326") + words(options.toUtf8()), "a,b,c\n1,2,3\n");
        QVERIFY2(done.isRefusal(why), done.describe());
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
        QCOMPARE(done.out, utm + "\n* * x\n" + utm + '\n' + utm + "\n* * x\n");
        QCOMPARE(done.err, QByteArray(file.fileName().toUtf8() + ": line 2: x is no number\n").repeated(2));
        QVERIFY(file.open(QIODevice::WriteOnly));
        file.write("1,2,\"a\"");
        file.close();
        const CliRun tables = run(words("transform --from 4326 --to 4326 --precision 0 --csv") +
                                  QStringList{file.fileName(), file.fileName()});
        QCOMPARE(tables.out, QByteArray("1,2,\"a\"\n1,2,\"a\""));
        const CliRun missing =
            run(toUtm + QStringList{file.fileName(), dir.filePath(QStringLiteral("none"))});
        QVERIFY2(missing.isRefusal(QStringLiteral("none: No such file")), missing.describe());
        const CliRun wide = run(toUtm, QByteArray("3\0007\0 \0005\0005\0\n\0", 12));
        QCOMPARE(wide.out, utm + "\n");
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
        row("beyond the pole", degrees, "37 95 a\n", "* a\n");
        const char *const back = "--cs 32637 --inverse --precision 3";
        row("into a table", "--cs 4326 --csv --x lon --y lat", "n,lon,lat\n\"a,b\",37.6173,55.7558\n",
            "n,lon,lat,mgrs\n\"a,b\",37.6173,55.7558,37UDB1322479766\n");
        row("from a table", "--cs 32637 --inverse --precision 0 --csv --ref r --out-x n",
            "n;r\na;\"37U DB 13224 79766\"\n", "n;r;y\n413224;\"37U DB 13224 79766\";6179766\n");
        row("read, with a column", back, "37UDB1322479766 7\n", "413224.000 6179766.000 7\n");
        row("read, blanks and lower case", back, "37u db 13224 79766,a\n", "413224.000 6179766.000,a\n");
        row("read, equally long column", back, "37UDB17 34\n", "410000.000 6170000.000 34\n");
        row("read, nonsense", back, "37UDB123\n", "* *\n");
        row("read, garbage behind", back, "37UDB12x\n", "* * 37UDB12x\n");
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
