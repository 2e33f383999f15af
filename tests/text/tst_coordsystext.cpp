#include <coordsys/CoordSystemStrings.h>
#include <coordsys/MapHeaderCoordsysConverter.h>
#include <coordsys/MapinfoCoordSystem.h>
#include <coordsys/SystemInfo.h>

#include <support/Support.h>

#include <QRegularExpression>

using namespace nivora::cs;

namespace {

/// Every form of clause, no figure of which is 0 and none like another's.
const QStringList &forms()
{
    static const QStringList all = {
        "CoordSys Earth Projection 8, 1001, \"m\", 39, 2, 1, 7500000, 3"_s,
        "8 104 7 39 2 0.9996 500000 3"_s,
        "3008, 104, 7, 39, 2, 1, 500000, 3, 7, 1, -0.5, 10, 0.25, 1, 20, 4, 5, 1000000, 2000000"_s,
        "2001, 104, -180, -90, 180, 90"_s,
        "Earth Projection 1008, 104, 7, 39, 2, 1, 5, 3, 7, 1, 2, 3, 4, 5, 6 Bounds (0, 1) (2, 3)"_s,
        "Earth Projection 8, 999, 3, 23.5, -141, -81, \"survey ft\", 39, 2, 0.9996, 5e5, 3 "
        "Affine Units \"m\", 1, 2, 3, 4, 5, 6 Bounds (0, 1) (2, 3)"_s,
        "CoordSys Earth Projection 3, 9999, 3, 24, -123, -94, -0.02, 0.25, 0.13, 1.1, 4, 7, 39, 50, 45, 55, "
        "2, 3 "
        "Bounds (-1, -2) (30, 40)"_s,
        "NonEarth Units \"ft\" Affine Units \"m\", 1, 2, 3, 4, 5, 6 Bounds (0, 1) (2, 3)"_s,
        "CoordSys NonEarth Affine Units \"m\", 1, 2, 3, 4, 5, 6 Units \"ft\" Bounds (0, 1) (2, 3)"_s,
        "NonEarth 0, 7"_s,
        "CoordSys Earth Projection 1, 104 Bounds (-10, -20) (30, 40)"_s,
    };
    return all;
}

const QRegularExpression &tokens()
{
    static const QRegularExpression form("\"[^\"]*\"|[^ ,()]+"_s);
    return form;
}

QString with(const QString &text, int from, int to, const QString &put)
{
    return text.left(from) + put + text.mid(to);
}

} // namespace

class TestCoordSysText : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void initTestCase()
    {
        m_factory = support::shippedFactory();
        QVERIFY(m_factory);
    }

    // Junk in every place of every form of clause is refused, or changes nothing.
    void junk_data()
    {
        const support::Columns<QString> row;
        for (const char *junk : {"3O",
                                 "x",
                                 "\"\"",
                                 "\"x\"",
                                 "--1",
                                 "1-2",
                                 "0x10",
                                 "12abc",
                                 "e",
                                 "nan",
                                 "inf",
                                 "1e999",
                                 "+",
                                 "метр",
                                 "(",
                                 ")",
                                 ",",
                                 ", ,",
                                 "500 000",
                                 "1 5",
                                 "\"",
                                 "Affine",
                                 "Units",
                                 "Bounds",
                                 "Earth",
                                 "Projection",
                                 "CoordSys",
                                 "NonEarth",
                                 "Affine Units",
                                 "Bounds (1, 2)"})
            row.named(junk);
    }
    void junk()
    {
        const auto [junk] = support::row<QString>();
        for (const QString &form : forms()) {
            const QString whole = m_factory->createWithoutDescription(form)->prjStr();
            for (auto places = tokens().globalMatch(form); places.hasNext();) {
                const QRegularExpressionMatch token = places.next();
                const int from = token.capturedStart(), to = token.capturedEnd();
                for (const QString &text :
                     {with(form, from, to, junk), with(form, from, from, " "_s + junk + " "_s),
                      with(form, to, to, " "_s + junk + " "_s), with(form, to, to, ", "_s + junk),
                      with(form, to, to, "O"_s), with(form, from, from, "x"_s)}) {
                    if (form.startsWith("NonEarth 0"_s) && text.contains("0 7"_s))
                        continue;
                    try {
                        const CoordSystemPtr cs = m_factory->createWithoutDescription(text);
                        QVERIFY2(cs->prjStr() == whole || !cs->assumptions().isEmpty(),
                                 qPrintable(text + " -> "_s + cs->prjStr()));
                    } catch (const std::exception &) {
                    }
                }
            }
        }
    }

    // Files and lines of a catalogue are read as the text alone is.
    void junkInFiles_data() { junk_data(); }
    void junkInFiles()
    {
        const auto [junk] = support::row<QString>();
        const QTemporaryDir dir;
        const QString mif = dir.filePath("a.mif"_s), prj = dir.filePath("a.prj"_s);
        const auto outcome = [this](const QString &text) {
            try {
                return m_factory->createFromUserInput(text)->prjStr();
            } catch (const std::exception &) {
                return QString();
            }
        };
        for (const QString &form : forms()) {
            const QString bare = form.startsWith("CoordSys "_s) ? form.mid(9) : form;
            int place = 0;
            for (auto places = tokens().globalMatch(bare); places.hasNext(); ++place) {
                const QRegularExpressionMatch token = places.next();
                if (place % 5 != form.size() % 5)
                    continue;
                const QString text = with(bare, token.capturedStart(), token.capturedEnd(), junk);
                const QString expected = outcome("prj:CoordSys "_s + text);
                support::writeFile(mif, "Version 300\nCoordSys " + text.toUtf8() + "\nColumns 0\nData\n");
                support::writeFile(prj, "CoordSys " + text.toUtf8() + "\n");
                QCOMPARE(outcome("@"_s + mif), expected);
                QCOMPARE(outcome("@"_s + prj), expected);
                if (bare.at(0).isDigit() && !junk.contains(QLatin1Char('"')))
                    QCOMPARE(outcome("\"name\\p0\", "_s + text), expected);
            }
        }
    }

    // What readUserInput() takes for a definition; the picker searches for everything else.
    void definitions_data()
    {
        const support::Columns<QString, bool> row;
        for (const char *text : {"CoordSys Earth",
                                 "earth projection 8, 104",
                                 "NonEarth Units \"m\"",
                                 "Projection 1, 104",
                                 "1, 104",
                                 "8 104 7 39 0 1 500000 0",
                                 "3008, 104, 7",
                                 "prj:1, 104",
                                 "\"Zone\\p32637\", 8, 104",
                                 "+proj=utm +zone=37",
                                 "proj=utm zone=37",
                                 "+units=m",
                                 "PROJCRS[\"x\"",
                                 "{\"type\":",
                                 "AUTO:42001,39,0",
                                 "urn:ogc:def:crs:EPSG::4326",
                                 "http://www.opengis.net/def/crs/EPSG/0/4326",
                                 "@zone.prj",
                                 "«+proj=longlat»",
                                 " coordsys "})
            row.named(text, true);
        for (const char *text :
             {"", "Pulkovo 1942", "32637", "EPSG:4326", "epsg 4326", "Earth sphere", "1942, zone 7",
              "2000, zone 5", "37, 55", "zone 7", "8 zone", "coordsystem", "UTM 37N", "«ГСК-2011»"})
            row(text[0] ? text : "nothing", text, false);
    }
    void definitions()
    {
        const auto [text, isDefinition] = support::row<QString, bool>();
        QCOMPARE(isSystemDefinition(text), isDefinition);
    }

    void refused_data()
    {
        const support::Columns<QString, QString> row; // text, pieces of the message
        // clang-format off
        row("a letter for a nought", "Earth Projection 8, 1001, \"m\", 3O, 0, 1, 7500000, 0", "3O|32|параметр проекции 1");
        row("a fraction of a datum", "1, 104.5", "104.5|4|номер датума");
        row("a word for a datum", "1, abc", "abc|номер датума");
        row("shift", "1, 999, 3, 1, x, 3", "x|сдвиг датума 2");
        row("rotation", "1, 9999, 3, 1, 2, 3, 4, 5, y, 7, 8", "y|параметр датума 3");
        row("half a datum of one's own", "2, 9999, 3, 1, 2, 3, 7, 5, 6, 7", "9999|4");
        row("a blank in a number", "8, 104, 7, 39, 0, 1, 500 000, 0", "Пробел|000|26");
        row("also without commas", "Earth Projection 8 104 7 39 0 1 500 000", "Пробел|000");
        row("an empty place", "8, 104, 7, 39, , 1, 500000, 0", "Пустое место|16");
        row("an empty place of bounds", "1, 104 Bounds (0, ) (5, 5)", "Пустое место");
        row("figures behind the parameters", "10, 104, 7, 39, 5", "Лишнее|«5»|17");
        row("words behind the clauses", "1, 104 Bounds (0, 0) (5, 5) ft", "Лишнее|«ft»");
        row("two bounds", "1, 104 Bounds (0, 0) (5, 5) Bounds (0, 0) (6, 6)", "Лишнее|Bounds");
        row("keyword behind", "1, 104 Earth", "Лишнее|Earth");
        row("no projection", "CoordSys Earth Units \"m\"", "Лишнее|Earth");
        row("no plan", "NonEarth 8, 104, 7, 39, 0, 1, 0, 0", "Лишнее|NonEarth");
        row("unknown unit", "8, 104, \"furlong\", 39, 0, 1, 0, 0", "Неизвестная единица|furlong|9");
        row("half a unit's number", "8, 104, 7x, 39, 0, 1, 0, 0", "Неизвестная единица|7x");
        row("a plan's unit", "NonEarth Units \"furlong\"", "Неизвестная единица|furlong");
        row("affine unit", "1, 104 Affine Units \"furlong\", 1, 0, 0, 0, 1, 0", "unitCode");
        row("affine figure", "1, 104 Affine Units \"m\", 1, 0, 0, 0, 1O, 0", "1O|коэффициент аффинного преобразования 5");
        row("corner", "1, 104 Bounds (0, 0) (5, 5m)", "5m|число границ 4");
        row("half of the bounds", "1, 104 Bounds (0, 0)", "Недостаточно");
        row("no corners", "1, 104 Bounds 0, 0, 5, 5", "скобках");
        row("bounds before affine", "1, 104 Bounds (0, 0) (1, 1) Affine Units \"m\", 1, 0, 5, 0, 1, 6", "Affine");
        // clang-format on
    }
    void refused()
    {
        const auto [text, pieces] = support::row<QString, QString>();
        for (const auto &create : {&CoordSysFactory::createFromPrj, &CoordSysFactory::createFromTaggedString,
                                   &CoordSysFactory::createFromUserInput}) {
            QString message;
            try {
                (m_factory.get()->*create)(text);
            } catch (const std::exception &e) {
                message = QString::fromUtf8(e.what());
            }
            for (const QString &piece : pieces.split(QLatin1Char('|')))
                QVERIFY2(message.contains(piece), qPrintable(message));
        }
        QVERIFY_EXCEPTION_THROWN(m_factory->createWithoutDescription(text), std::logic_error);
    }

    void assumed_data()
    {
        const support::Columns<QString, QString, QString> row; // text, as read, pieces of the assumptions
        // clang-format off
        row("nothing", "8, 104, 7, 39, 0, 0.9996, 500000, 0", "8, 104, \"m\", 39, 0, 0.9996, 500000, 0", "");
        row("figures at the end", "18, 104, 7, 39", "18, 104, \"m\", 39, 0, 0, 0", "нулями");
        row("the scale, too", "8, 104, 7, 39", "8, 104, \"m\", 39, 0, 1, 0, 0", "нулями|Масштаб");
        row("of an oblique projection", "7, 104, 7, -80, 20, 60", "7, 104, \"m\", -80, 20, 60, 1, 0, 0", "нулями|Масштаб");
        row("the unit", "10, 999, 3, 0, 0, 0", "10, 999, 3, 0, 0, 0, \"m\", 0", "нулями|метры");
        row("longitude and latitude need none", "1, 104", "1, 104", "");
        row("rotations", "1, 9999, 3, 1, 2, 3", "1, 9999, 3, 1, 2, 3, 0, 0, 0, 0, 0", "датума");
        row("zeros behind", "10, 104, 7, 39, 0, 0", "10, 104, \"m\", 39", "Лишние нули");
        row("bounds without an area", "1, 104 Bounds (5, 0) (5, 9)", "1, 104", "без площади");
        row("sign apart", "10, 104, 7, - 39 Bounds (- 5, - 6) (+ 7, -8)", "10, 104, \"m\", -39 Bounds (-5, -8) (7, -6)", "");
        row("corners apart", "1, 104 bounds (0 0), ( 5 6)", "1, 104 Bounds (0, 0) (5, 6)", "");
        row("blanks alone", "earth projection 8 104 \"m\" 39 0 1 500000 0", "8, 104, \"m\", 39, 0, 1, 500000, 0", "");
        row("no blanks", "COORDSYS EARTH PROJECTION 8,104,\"M\",39,0,1,5,6 BOUNDS(0,0)(5,6)", "8, 104, \"m\", 39, 0, 1, 5, 6 Bounds (0, 0) (5, 6)", "");
        // clang-format on
    }
    void assumed()
    {
        const auto [text, read, pieces] = support::row<QString, QString, QString>();
        const CoordSystemPtr cs = m_factory->createFromPrj(text);
        QCOMPARE(cs->prjStr(), "Earth Projection "_s + read);
        const QStringList said = cs->assumptions();
        QCOMPARE(said.size(), pieces.isEmpty() ? 0 : pieces.count(QLatin1Char('|')) + 1);
        for (const QString &piece : pieces.split(QLatin1Char('|')))
            QVERIFY2(said.join(QLatin1Char('\n')).contains(piece), qPrintable(said.join(QLatin1Char('\n'))));
        for (const QString &sentence : said)
            QVERIFY(systemInfo(*cs).assumptions.contains(sentence));
        QCOMPARE(m_factory->readUserInput(text).notes, said);
        // Another text of the same record assumes nothing, and copies say what the system says.
        QVERIFY(m_factory->createFromPrj(cs->prjStr())->assumptions().isEmpty());
        QCOMPARE(cs->clone()->assumptions(), said);
    }

    // What the creators understand is what the record's reader reads.
    void oneReader()
    {
        QStringList texts = forms();
        const auto categories = m_factory->mapinfoCoordSystem()->projectionList();
        for (const CoordSystemParamsList &category : categories)
            for (int i = 0; i < category.entries.size(); i += 7)
                texts << category.entries.at(i).asPrjString();
        const MapHeaderCoordsysConverter converter;
        for (const QString &text : qAsConst(texts)) {
            const CoordSystemPtr cs = m_factory->createWithoutDescription(text);
            QCOMPARE(cs->sourceParameters().string,
                     converter.tabProjInfoToString(converter.prjStrToTABProjInfo(text)));
            QVERIFY2(cs->assumptions().isEmpty(), qPrintable(text));
        }
    }

    void clause_data()
    {
        const support::Columns<QString, QString, int> row; // header, clause, position
        // clang-format off
        row("MIF", "Version 300\n coordsys Earth Projection 1, 104\nColumns 1\n Id Integer\nData\n", "coordsys Earth Projection 1, 104", 12);
        row("over several lines", "CoordSys Earth\n Projection 8,\r\n\t104, 7, 39, 0, 1, 0, 0\nTransform 1, 1, 0, 0\nColumns 0\nData\n",
            "CoordSys Earth Projection 8, 104, 7, 39, 0, 1, 0, 0", 0);
        row("a column of that name", "Version 300\nColumns 2\n  CoordSys Char(10)\n  Id Integer\nData\n", "", 12);
        row("a column of that name behind", "CoordSys Earth\nColumns 1\n  CoordSys Char(10)\nData\n", "CoordSys Earth", 0);
        row("before the transform", "Version 300\nTransform 1, 1, 0, 0\nColumns 0\nData\n", "", 12);
        row("a word that begins so", "CoordSystem 5\nColumns 0\nData\n", "", 14);
        row("TAB with such a field", "Definition Table\n Type NATIVE\n Fields 1\n CoordSys Char (9) ;\nCoordSys Earth", "CoordSys Earth", 61);
        row("data", "Data\nCoordSys Earth\n", "", 0);
        row("no header", "x\n", "", -1);
        // clang-format on
    }
    void clause()
    {
        const auto [header, text, position] = support::row<QString, QString, int>();
        const CoordSysClause found = coordSysClauseIn(header);
        QCOMPARE(found.text, text);
        QCOMPARE(found.position, position);
        QCOMPARE(found.length == 0, text.isEmpty());
        QCOMPARE(header.mid(found.position, found.length).simplified(), text);
    }

private:
    std::shared_ptr<CoordSysFactory> m_factory;
};

NIVORA_TEST(TestCoordSysText)
#include "tst_coordsystext.moc"
