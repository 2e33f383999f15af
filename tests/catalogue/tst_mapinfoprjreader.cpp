#include <coordsys/MapinfoCoordSystem.h>
#include <coordsys/MapinfoPrjReader.h>

#include <support/Support.h>

#include <QBuffer>
#include <QTemporaryDir>
#include <QTextStream>

#include <random>

using namespace nivora::cs;

class TestMapinfoPrjReader : public QObject
{
    Q_OBJECT
private Q_SLOTS:
    void oneLine_data()
    {
        const support::Columns<QString, QString, QString, int, QString> row;
        // clang-format off
        row("code", R"("Longitude / Latitude\p4326", 1, 104)", "entry", "Longitude / Latitude", 4326, "1|104");
        row("no code", R"("Longitude / Latitude", 1, 104)", "entry", "Longitude / Latitude", -2, "1|104");
        row("code too long for an int", R"("A\p99999999999", 1)", "entry", "A", -2, "1");
        row("not a code", R"("A\q12\p3x", 1)", "entry", R"(A\q12\p3x)", -2, "1");
        row("only the last code counts", R"("A\p1\p2", 1)", "entry", R"(A\p1)", 2, "1");
        row("blanks around the name", R"(" A \p5", 1)", "entry", "A", 5, "1");
        row("empty value, quoted unit", R"("A", 8,, "survey ft" ,)", "entry", "A", -2, R"(8||"survey ft"|)");
        row("text before the quote", R"(x = "A", 1)", "entry", "A", -2, "1");
        row("heading", R"("--- Россия ---")", "heading", "Россия", -2, "");
        row("heading with nothing in it", R"("------")", "heading", "", -2, "");
        row("heading before entry", R"("---A---", 1, 104)", "heading", "A", -2, "");
        row("blanks", "  \t ", "ignored", "", -2, "");
        row("comment", R"(  # "A", 1, 104)", "ignored", "", -2, "");
        row("name and comma only", R"("A",)", "rejected", "", -2, "");
        row("blank before the comma", R"("A" , 1)", "rejected", "", -2, "");
        // clang-format on
    }
    void oneLine()
    {
        const auto [line, kind, name, epsg, values] = support::row<QString, QString, QString, int, QString>();
        QString text = line + QLatin1Char('\n');
        QTextStream stream(&text);
        MapinfoPrjReader reader(&stream);
        const QSignalSpy rejected(&reader, &MapinfoPrjReader::rejected);
        const QSignalSpy captured(&reader, &MapinfoPrjReader::captured);

        const bool found = reader.readNext();
        QCOMPARE(captured.count(), 1);
        QCOMPARE(reader.currentLineNumber(), 1);
        QCOMPARE(rejected.count(), kind == "rejected"_s ? 1 : 0);
        QCOMPARE(found, kind == "heading"_s || kind == "entry"_s);
        if (!found)
            QCOMPARE(reader.currentLineTextRef().toString(), line.trimmed());

        const CoordSystemParams entry = reader.prj();
        const QString heading = reader.capturedCategoryName().toString();
        QCOMPARE(reader.capturedCategoryName().isNull(), kind != "heading"_s);
        QCOMPARE(kind == "heading"_s ? heading : entry.name(), name);
        QCOMPARE(entry.epsg(), epsg);
        QCOMPARE(entry.params.join(QLatin1Char('|')), values);
    }

    void wholeStream()
    {
        QString text = "# c\r\n\"---A---\"\r\nrubbish\r\n\r\n\"B\", 1\r\nmore"_s;
        QTextStream stream(&text);
        MapinfoPrjReader reader(&stream);
        QStringList seen;
        connect(&reader, &MapinfoPrjReader::rejected, this, [&] {
            seen << QString::number(reader.currentLineNumber()) + reader.currentLineTextRef().toString();
        });
        QVERIFY(reader.readNext());
        QCOMPARE(reader.currentLineNumber(), 2);
        QVERIFY(reader.prj().params.isEmpty() && reader.prj().epsg() == -2);
        QVERIFY(reader.readNext());
        QCOMPARE(reader.currentLineNumber(), 5);
        QVERIFY(!reader.readNext());
        QVERIFY(!reader.readNext());
        QCOMPARE(reader.currentLineNumber(), 6);
        QCOMPARE(seen, QStringList({"3rubbish"_s, "6more"_s}));
    }

    // Loading a catalogue takes another way through the text than the reader, to the same entries.
    void loadedAlike()
    {
        static const char *const pieces[] = {"\"",    "---",   "\\p",          "4326", ",", " ", "\t",
                                             "#",     "\r",    "Имя",          "\",",  "8", "x", "\"---",
                                             "---\"", ", 104", "\"A\\p7\", 1", "\f"};
        std::mt19937 random(20221122);
        QString text = "\"---A---\"\n\"Foo --- bar --- baz\", 1, 104\n"_s;
        for (int line = 0; line < 4000; ++line) {
            for (auto left = random() % 9; left > 0; --left)
                text += QString::fromUtf8(pieces[random() % std::size(pieces)]);
            text += QLatin1Char('\n');
        }
        QList<CoordSystemParamsList> expected;
        CoordSystemParamsList current;
        QTextStream stream(&text);
        MapinfoPrjReader reader(&stream);
        for (bool more = true; more;) {
            more = reader.readNext();
            const nivora::cs::TextRef heading = reader.capturedCategoryName();
            if (more && heading.isNull())
                current.entries << reader.prj();
            if ((!more || !heading.isNull()) && !current.entries.isEmpty())
                expected << current;
            if (!heading.isNull())
                current = {{}, heading.toString()};
        }
        const QTemporaryDir dir;
        QFile file(dir.filePath("x.prj"_s));
        QVERIFY(file.open(QIODevice::WriteOnly) && file.write(text.toUtf8()) > 0);
        file.close();
        MapinfoCoordSystem loaded([](const QString &) { return CoordSystemPtr(); });
        QVERIFY(loaded.loadFromPRJ(QFileInfo(file)));
        const auto found = loaded.projectionList();
        QVERIFY(found.size() > 20 && found.first().entries.first().params.size() == 2);
        QCOMPARE(found.size(), expected.size());
        for (int i = 0; i < found.size(); ++i) {
            QCOMPARE(found.at(i).name, expected.at(i).name);
            QCOMPARE(found.at(i).entries.size(), expected.at(i).entries.size());
            for (int j = 0; j < found.at(i).entries.size(); ++j) {
                const CoordSystemParams &a = found.at(i).entries.at(j), &b = expected.at(i).entries.at(j);
                QVERIFY2(a.name() == b.name() && a.epsg() == b.epsg() && a.params == b.params,
                         qPrintable(a.name()));
            }
        }
    }

    void progress()
    {
        QString text = "a\n"_s;
        QTextStream fromText(&text);
        MapinfoPrjReader textReader(&fromText);
        QCOMPARE(textReader.progress(), 0.0);
        textReader.readNext();
        QCOMPARE(textReader.progress(), 100.0);

        QBuffer device;
        QVERIFY(device.open(QIODevice::ReadWrite));
        QTextStream stream(&device);
        MapinfoPrjReader reader(&stream);
        const QSignalSpy captured(&reader, &MapinfoPrjReader::captured);
        QVERIFY(!reader.readNext());
        QCOMPARE(captured.count(), 0);
        QCOMPARE(reader.progress(), 100.0); // of nothing
        device.write(QByteArray(1000, 'x'));
        QVERIFY(device.seek(250));
        QCOMPARE(reader.progress(), 25.0);
    }
};

NIVORA_TEST(TestMapinfoPrjReader)
#include "tst_mapinfoprjreader.moc"
