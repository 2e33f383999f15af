#include <support/Support.h>
#include <support/TestRunner.h>

#include <coordsys/CoordSystem.h>
#include <coordsys/DefaultRects.h>
#include <coordsys/MapHeaderCoordsysConverter.h>
#include <coordsys/MapinfoCoordSystem.h>
#include <coordsys/ProjEngine.h>
#include <coordsys/SourceTags.h>
#include <coordsys/UserCoordSystem.h>

#include <gdal.h>
#include <ogr_api.h>

#include <QRegularExpression>
#include <QTextCodec>

using namespace nivora::cs;

namespace {
std::shared_ptr<CoordSysFactory> factory() { return support::shippedFactory(); }
} // namespace

class TestCreation : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void initTestCase() { QVERIFY(factory()); }

    /// Systems of one text share the engines' objects and nothing else.
    void sameTextAgain()
    {
        for (const QString &text :
             {QStringLiteral("proj:+proj=utm +zone=37 +ellps=krass +towgs84=1,2,3"),
              QStringLiteral("epsg:28407"), QStringLiteral("prj:Earth Projection 1, 1001")}) {
            const CoordSystemPtr first = factory()->createFromTaggedString(text);
            const QString name = first->description();
            first->setDescription(QStringLiteral("changed"));
            first->setEpsg(1);
            const CoordSystemPtr second = factory()->createFromTaggedString(text);
            QCOMPARE(second->description(), name);
            QVERIFY(second->epsg() != 1 && second->isEqual(first, false));
            QVERIFY(second->OGRSpatialReference() != first->OGRSpatialReference());
        }
    }

    /// The user's name of a plan that the catalogue does not have is asked for each time.
    void renamedPlan()
    {
        const support::ResourceCopy copy;
        copy.write(QStringLiteral("projections_en.prj"), "\"--- a ---\"\n\"b\", 1, 104\n");
        const support::DefaultFactoryKeeper keeper;
        const auto host = std::make_shared<CoordSysFactory>(copy.dir(), copy.dir(), QStringLiteral("en"));
        CoordSysFactory::setDefaultCoordSysFactory(host);
        QVERIFY(host->initCoordSystemEnvironment());
        const QString wkt = QStringLiteral("LOCAL_CS[\"\",UNIT[\"metre\",1]]");
        const CoordSystem::SourceData plan =
            host->createFromPrj(host->createFromWkt(wkt)->prjStr())->sourceParameters();
        for (const char *name : {"first", "second"}) {
            host->userCoordSystem()->setCoordSystem(QStringLiteral("A"), plan, QString::fromLatin1(name));
            QCOMPARE(host->createFromWkt(wkt)->description(), QString::fromLatin1(name));
        }
    }

    void refused_data()
    {
        QTest::addColumn<QString>("tagged");
        QTest::addColumn<QString>("type");
        QTest::addColumn<QString>("text"); // the beginning of the message
        const auto row = [](const char *tagged, const char *type, const char *text) {
            QTest::newRow(tagged) << QString::fromUtf8(tagged) << QString::fromUtf8(type)
                                  << QString::fromUtf8(text);
        };
        row("", "invalid_argument", "Строка КС пустая");
        row("prj:", "invalid_argument", "Строка КС пустая");
        row("proj:", "invalid_argument", "Строка КС пустая");
        row("wkt:", "runtime_error", "Строка КС пустая");
        row("proj:proj=merc", "logic_error", "Неверный формат строки");
        row("proj:x +proj=merc", "logic_error", "Неверный формат строки");
        row("proj:+proj=helmert +x=1", "runtime_error", "Неверная строка КС\n+proj=helmert");
        row("proj:+proj=utm +type=crsword= +no_defs", "runtime_error", "Неверная строка КС\n+proj=utm");
        row("proj:+proj=100%1 %2", "runtime_error", "Неверная строка КС\n+proj=100%1 %2");
        row("wkt:PROJCS[\"100%1 %2\"", "runtime_error",
            "Ошибка импорта из строки WKT:\nPROJCS[\"100%1 %2\"\n(");
        row("epsg:-2", "ProjException", "Запрос proj строки для EPSG=-2:");
        row("epsg:x", "ProjException", "Запрос proj строки для EPSG=0:");
        row("epsg:99999999999", "ProjException", "Запрос proj строки для EPSG=0:");
        row("EPSG:2147483647", "ProjException", "Запрос proj строки для EPSG=2147483647:");
        row("prj:NonEarth Units \"m\" Affine Units \"m\", 1, 1, 0, 1, 1, 0", "invalid_argument",
            "Вырожденное аффинное преобразование");
        row("epsg:102100", "ProjException", "Запрос proj строки для EPSG=102100:"); // ESRI's number
        row("epsg:4978", "runtime_error", "КС не имеет плановой части: EPSG:4978");
        row("epsg:5773", "runtime_error", "КС не имеет плановой части: EPSG:5773");
        row("proj:+proj=geocent +ellps=WGS84 +towgs84=1,2,3", "runtime_error",
            "КС не имеет плановой части: +proj");
        row("wkt:VERTCRS[\"h\",VDATUM[\"d\"],CS[vertical,1],AXIS[\"h\",up],LENGTHUNIT[\"metre\",1]]",
            "runtime_error", "КС не имеет плановой части: VERTCRS");
        row("epsg:32600", "ProjException",
            "Ошибка инициализации проекции: EPSG:32600:");  // no projection at all
        row(" epsg:4326", "NotEnoughtParamsException", ""); // a blank before the tag: not a tag
        row("prj:Earth Projection 8, 104", "NotEnoughtParamsException", "");
        row("prj:Earth Projection 35, 104, 7, 1, 2, 3, 4, 5, 6", "runtime_error", "Неверная строка КС\n");
        row("prj:Earth Projection 8, 7777, 7, 39, 0, 1, 0, 0", "logic_error",
            "Не могу определить дополнительные параметры датума");
        row("prj:NonEarth Units \"m\" Affine Units \"ell\", 1, 2, 3, 4, 5, 6", "invalid_argument",
            "unitCode");
    }
    void refused()
    {
        QFETCH(QString, tagged);
        QFETCH(QString, type);
        QFETCH(QString, text);
        const auto call = [&] { (void)factory()->createFromTaggedString(tagged); };
        using support::thrownInstead;
        const QString instead =
            type == QLatin1String("invalid_argument") ? thrownInstead<std::invalid_argument>(call, text, true)
            : type == QLatin1String("runtime_error")  ? thrownInstead<std::runtime_error>(call, text, true)
            : type == QLatin1String("ProjException")  ? thrownInstead<ProjException>(call, text, true)
            : type == QLatin1String("logic_error")
                ? thrownInstead<std::logic_error>(call, text, true)
                : thrownInstead<NotEnoughtParamsException>(call, text, true);
        QVERIFY2(instead.isEmpty(), qPrintable(instead));
    }

    void badInput_data()
    {
        QTest::addColumn<QString>("whole");
        for (const char *text :
             {"proj:+proj=tmerc +lat_0=0 +lon_0=39 +k=1 +x_0=7500000 +ellps=krass "
              "+towgs84=24,-123,-94,0.02,-0.25,-0.13,1.1 +units=m",
              "prj:CoordSys Earth Projection 8, 9999, 3, 24, -123, -94, -0.02, 0.25, 0.13, "
              "1.1, 0, \"m\", 39, 0, 1, 7500000, 0 "
              "Affine Units \"m\", 1, 2, 3, 4, 5, 6 Bounds (0, 0) (1, 1)",
              "wkt:PROJCS[\"x\",GEOGCS[\"y\",DATUM[\"WGS_1984\",SPHEROID[\"WGS "
              "84\",6378137,298.257223563]],PRIMEM[\"Greenwich\",0],"
              "UNIT[\"degree\",0.0174532925199433]],PROJECTION[\"Mercator_1SP\"],PARAMETER["
              "\"central_meridian\",39],UNIT[\"metre\",1]]",
              "wkt:LOCAL_CS[\"Nonearth\",UNIT[\"Meter\",1]]", "epsg:32637"})
            QTest::newRow(QByteArray(text).left(12)) << QString::fromUtf8(text);
    }

    // Cut anywhere, or with any number replaced: an object that can be used, or an exception; never a crash
    // or a hang.
    void badInput()
    {
        QFETCH(QString, whole);
        QStringList texts;
        const int body = whole.indexOf(QLatin1Char(':')) + 1;
        for (int length = body; length < whole.size(); length += 7)
            texts << whole.left(length);
        const QRegularExpression number(QStringLiteral("\\d+(\\.\\d+)?"));
        int at = body;
        for (auto match = number.match(whole, at); match.hasMatch(); match = number.match(whole, at)) {
            at = match.capturedEnd();
            for (const char *other : {"nan", "-1e308", "99999999999999999999", "%1%s%n"})
                texts << whole.left(match.capturedStart()) + QLatin1String(other) + whole.mid(at);
        }
        int made = 0, refused = 0;
        for (const QString &text : texts) {
            try {
                const CoordSystemPtr cs = factory()->createFromTaggedString(text);
                QPointF out;
                cs->forward(QPointF(40, 50), out);
                cs->inverse(QPointF(40, 50), out);
                QVERIFY2(!cs->description().isEmpty(), qPrintable(text));
                ++made;
            } catch (const std::exception &e) {
                QVERIFY2(*e.what() != '\0', qPrintable(text));
                ++refused;
            }
        }
        QVERIFY(refused > 0);
        QVERIFY(factory()->createFromTaggedString(whole));
    }

    // What people write, and what it is: "epsg:" and the code, or how the WKT ends; notes are told by a
    // piece.
    void userInput_data()
    {
        QTest::addColumn<QString>("text");
        QTest::addColumn<QString>("source");
        QTest::addColumn<QString>("note");
        const auto row = [](const char *text, const char *source, const char *note = "") {
            QTest::newRow(text) << QString::fromUtf8(text) << QString::fromUtf8(source)
                                << QString::fromUtf8(note);
        };
        for (const char *text : {"4326",
                                 "EPSG:4326",
                                 "EPSG::4326",
                                 "epsg 4326",
                                 "+init=epsg:4326",
                                 "SRID=4326",
                                 "urn:ogc:def:crs:EPSG::4326",
                                 "urn:ogc:def:crs:EPSG:6.9:4326",
                                 "\"EPSG:4326\"",
                                 "http://www.opengis.net/def/crs/EPSG/0/4326",
                                 "http://www.opengis.net/gml/srs/epsg.xml#4326",
                                 "WGS84",
                                 " wgs  84 ",
                                 "WGS 84 (EPSG:4326)",
                                 "Долгота / широта (WGS 84)",
                                 "Longitude / Latitude (WGS 84)",
                                 "\"any name\\p4326\", 1, 104",
                                 "EPSG:4326;",
                                 "4326,",
                                 "[epsg:4326]",
                                 "EPSG:4326 - WGS 84",
                                 "WGS 84 [EPSG:4326]"})
            row(text, "epsg:4326");
        row("SRID=4326;POINT(37 55)", "epsg:4326", "POINT(37 55)");
        row("EPSG:27700+5701", "epsg:27700", "EPSG:27700");
        row("urn:ogc:def:crs,crs:EPSG::27700,crs:EPSG::5701", "epsg:27700", "EPSG:27700");
        row("EPSG:7405", "epsg:7405", "Вертикальная");
        row("ETRS89 / UTM zone 32N", "epsg:25832");
        row("etrs89/utm zone 32n", "epsg:25832", "EPSG:25832");
        row("WGS 1984 UTM Zone 37N", "epsg:32637", "EPSG:32637"); // as Esri's programs show it
        row("WGS84 UTM 37N", "epsg:32637", "EPSG:32637");
        row("google", "epsg:3857", "EPSG:3857");
        row("СК-42", "epsg:4284", "EPSG:4284");
        row("EPSG:9057@2016.47", "epsg:9057", "2016.47");
        row("COORDINATEMETADATA[GEOGCRS[\"WGS 84\",DATUM[\"World Geodetic System 1984\",ELLIPSOID[\"WGS "
            "84\",6378137,298.257223563]],CS[ellipsoidal,2],AXIS[\"lat\",north],AXIS[\"lon\",east],UNIT["
            "\"degree\",0.0174532925199433]],EPOCH[2016.47]]",
            R"(wkt:UNIT["degree",0.0174532925199433]])", "2016.47");
        row("AUTO2:42001,1,-93,0", "wkt:]");
        row("CRS84", R"(wkt:ID["OGC","CRS84"]])");
        row("NAD83", "epsg:4269"); // of the five systems with this name or alias the plain one
        row("ogc:crs84", R"(wkt:ID["OGC","CRS84"]])");
        row("CRS:84", R"(wkt:ID["OGC","CRS84"]])");
        row("esri:102100", R"(wkt:ID["ESRI",102100]])"); // no code of EPSG's, though PROJ takes it
        row("IGNF:lamb93", R"(wkt:ID["IGNF","LAMB93"]])");
        row("+lon_0=37 +proj=tmerc +ellps=krass", "proj:+proj=tmerc +lon_0=37 +ellps=krass");
        row("proj=utm zone=33", "proj:+proj=utm +zone=33");
        row("+proj=utm  +zone=33", "proj:+proj=utm  +zone=33"); // the source text stays
        row("1, 104", "prj:Earth Projection 1, 104");
        row("Longitude / Latitude (GRS 80)", "prj:Earth Projection 1, 33");
        row("\"x\\p32638\", 8, 104, 7, 39, 0, 0.9996, 500000, 0",
            "prj:Earth Projection 8, 104, \"m\", 39, 0, 0.9996, 500000, 0", "EPSG:32638");
        row("Earth Projection 8, 104, \"m\", 39,\n\t0", "prj:Earth Projection 8, 104, \"m\", 39, 0, 1, 0, 0",
            "Масштаб");
        row("oracle:8307", "oracle:8307");
    }
    void userInput()
    {
        QFETCH(QString, text);
        QFETCH(QString, source);
        QFETCH(QString, note);
        const UserInput input = factory()->readUserInput(text);
        const CoordSystem::SourceData made = input.system->sourceParameters();
        const QString type = sourceTypeToString(made.type);
        QCOMPARE(made.type == CoordSystem::Wkt ? QStringLiteral("wkt:") + made.string.right(source.size() - 4)
                                               : type + QLatin1Char(':') + made.string,
                 source);
        const QString notes = input.notes.join(QLatin1Char('\n'));
        QVERIFY2(note.isEmpty() ? notes.isEmpty() : notes.contains(note), qPrintable(notes));
    }

    void userInputRefused_data()
    {
        QTest::addColumn<QString>("text");
        QTest::addColumn<QString>("piece"); // of the message
        const auto row = [](const char *name, const QString &text, const char *piece) {
            QTest::newRow(name) << text << QString::fromUtf8(piece);
        };
        row("near a name", QStringLiteral("WGS 85"), "WGS 84) (EPSG:4326)");
        row("near by words", QStringLiteral("utm 37n"),
            "Ближайшее: WGS 84 / UTM, зона 37 (сев. полушарие) (EPSG:32637)");
        row("several", QStringLiteral("swiss"), "EPSG:21781");
        row("unpublished", QStringLiteral("МСК-50"), "не опубликованы");
        row("feet", QStringLiteral("AUTO2:42001,0.3048,-93,0"), "AUTO2");
        row("near a code", QStringLiteral("EPSG:43260"), "EPSG:4326 (WGS 84)");
        row("near an authority", QStringLiteral("ESPG:4326"), "EPSG:4326");
        row("an alias of eight", QStringLiteral("KY1Z"), "EPSG:3088");
        row("no plane", QStringLiteral("EPSG:4978"), "не имеет плановой части");
        row("too few numbers", QStringLiteral("Earth Projection 8, 104"), "5 чисел");
        row("two systems", QStringLiteral("+proj=utm +zone=33 +to +proj=longlat"), "больше одной");
        row("beyond an int", QStringLiteral("EPSG:99999999999"), "В базе нет");
        row("zero character", QStringLiteral("WGS") + QChar(QChar::Null), "недопустимые символы");
        row("half a character", QStringLiteral("WGS") + QChar(0xd800), "недопустимые символы");
        row("deep", QString(100000, QLatin1Char('{')), "вложенность");
        row("deep WKT", QStringLiteral("ABCCS[").repeated(1000), "вложенность");
        row("huge", QString(20000, QLatin1Char('x')), "слишком длинный");
        row("quotes", QString(10000, QLatin1Char('"')), "строк");
        row("a device", QStringLiteral("@/dev/zero"), "Это не файл");
        row("no file", QStringLiteral("@"), "имя файла");
    }
    void userInputRefused()
    {
        QFETCH(QString, text);
        QFETCH(QString, piece);
        try {
            const CoordSystemPtr cs = factory()->createFromUserInput(text);
            QFAIL(qPrintable(cs->description()));
        } catch (const std::runtime_error &e) {
            QVERIFY2(QString::fromUtf8(e.what()).contains(piece), e.what());
        }
    }

    // Encodings, clauses over several lines, and files that stand for others.
    void userFiles_data()
    {
        QTest::addColumn<QString>("name");
        QTest::addColumn<QByteArray>("content");
        QTest::addColumn<int>("epsg"); // 0: refused
        const QString wkt = factory()->createFromEpsg(32637)->exportToWkt();
        QTextCodec *utf16 = QTextCodec::codecForName("UTF-16LE");
        QTextCodec::ConverterState noMark(QTextCodec::IgnoreHeader);
        const QByteArray bare = utf16->fromUnicode(wkt.constData(), wkt.size(), &noMark);
        const QByteArray mif = "Version 300\nCoordSys Earth Projection 8,\r\n 104, \"m\", 39, 0,\n"
                               " 0.9996, 500000, 0\nColumns 1\n a Integer\nData\nCoordSys Earth\n";
        QTest::newRow("UTF-8 with mark") << "a.prj" << ("\xef\xbb\xbf" + wkt.toUtf8()) << 32637;
        QTest::newRow("UTF-16 with mark") << "a.qpj" << ("\xff\xfe" + bare) << 32637;
        QTest::newRow("UTF-16 without") << "a.wkt" << bare << 32637;
        QTest::newRow("mif") << "a.MIF" << mif << 32637;
        QTest::newRow("mif without clause") << "b.mif" << QByteArray("Version 300\nColumns 0\nData\n") << -2;
        QTest::newRow("raster's tab")
            << "a.tab" << QByteArray("!table\n CoordSys Earth Projection 1, 104\n Units \"degree\"\n")
            << 4326;
        QTest::newRow("tab alone") << "b.tab" << QByteArray("!table\nType NATIVE\n") << 0;
        QTest::newRow("itself") << "a.prj" << QByteArray("@a.prj") << 0;
        QTest::newRow("empty") << "a.prj" << QByteArray(" \n") << 0;
        QTest::newRow("catalogue") << "a.prj" << QByteArray("\"a\", 1, 104\n\"b\", 1, 0\n") << 0;
    }
    void userFiles()
    {
        QFETCH(QString, name);
        QFETCH(QByteArray, content);
        QFETCH(int, epsg);
        const QTemporaryDir dir;
        const QString path = dir.filePath(name);
        QFile file(path);
        QVERIFY(file.open(QIODevice::WriteOnly) && file.write(content) == content.size());
        file.close();
        const QString text = QLatin1Char('@') + path;
        if (epsg == 0)
            QVERIFY_EXCEPTION_THROWN((void)factory()->createFromUserInput(text), std::runtime_error);
        else
            QCOMPARE(factory()->createFromUserInput(text)->epsg(), epsg);
    }

    // GDAL's driver writes the header; of a datum by its figures it writes the scale with the wrong sign.
    void userTabFiles_data()
    {
        QTest::addColumn<QString>("system");
        QTest::newRow("numbered datum") << QStringLiteral("epsg:28407");
        QTest::newRow("figures") << QStringLiteral("prj:Earth Projection 8, 9999, 10, 598.1, 73.7, 418.2, "
                                                   "-0.202, -0.045, 2.455, 0, 0, 7, 40, 0, 1, 1000, 2000");
    }
    void userTabFiles()
    {
        QFETCH(QString, system);
        const QTemporaryDir dir;
        const QString path = dir.filePath(QStringLiteral("t.tab"));
        const CoordSystemPtr cs = factory()->createFromTaggedString(system);
        GDALAllRegister();
        GDALDatasetH set = GDALCreate(GDALGetDriverByName("MapInfo File"), path.toUtf8().constData(), 0, 0, 0,
                                      GDT_Unknown, nullptr);
        OGRLayerH layer = GDALDatasetCreateLayer(set, "t", cs->OGRSpatialReference(), wkbPoint, nullptr);
        OGRFieldDefnH field = OGR_Fld_Create("a", OFTInteger);
        QVERIFY(OGR_L_CreateField(layer, field, 1) == OGRERR_NONE);
        OGR_Fld_Destroy(field);
        GDALClose(set);
        const CoordSystemPtr read = factory()->createFromUserInput(QLatin1Char('@') + path);
        QVERIFY2(read->isEqual(cs, true), qPrintable(read->prjStr()));
        QVERIFY(!read->isRectSet()); // the table's data have bounds, its system has none
    }

    void sources_data()
    {
        QTest::addColumn<QString>("tagged");
        QTest::addColumn<int>("type");
        QTest::addColumn<QString>("source");
        const auto row = [](const char *tagged, int type, const char *source) {
            QTest::newRow(tagged) << QString::fromUtf8(tagged) << type << QString::fromUtf8(source);
        };
        row("EpSg:4326", CoordSystem::Epsg, "4326");
        row("epsg:2154", CoordSystem::Epsg, "2154");
        row("PROJ4:  +proj=merc +datum=WGS84", CoordSystem::Proj4, "  +proj=merc +datum=WGS84");
        row("CoordSys Earth", CoordSystem::Prj, "Earth Projection 1, 0");
        row("PRJ:coordsys EARTH projection 1, 104", CoordSystem::Prj, "Earth Projection 1, 104");
        row("coordsys earth projection 8,104,7,39,0,1,0,0", CoordSystem::Prj,
            "Earth Projection 8, 104, \"m\", 39, 0, 1, 0, 0");
        row("prj:Earth Projection 34, 104, 7, 39, 0, 1, 0, 0", CoordSystem::Prj,
            "Earth Projection 34, 104, \"m\", 39, 0, 1, 0, 0");
        for (const char *plan :
             {"wkt:LOCAL_CS[\"x\",\nUNIT[\"Meter\",1]]", "wkt: local_cs[\"x\",UNIT[\"Meter\",1]]",
              "wkt:ENGCRS[\"x\",EDATUM[\"y\"],CS[Cartesian,2],AXIS[\"x\",east],AXIS[\"y\",north],LENGTHUNIT["
              "\"metre\",1]]"})
            row(plan, CoordSystem::Wkt, plan + 4);
    }
    void sources()
    {
        QFETCH(QString, tagged);
        QFETCH(int, type);
        QFETCH(QString, source);
        const CoordSystemPtr cs = factory()->createFromTaggedString(tagged);
        QCOMPARE(int(cs->sourceType()), type);
        QCOMPARE(cs->sourceParameters().string, source);
        QVERIFY(!cs->description().isEmpty());
    }

    void webMercator()
    {
        for (const char *text : {"prj:Earth Projection 10, 157, \"m\", 0", "epsg:3857"}) {
            const QString proj = factory()->createFromTaggedString(QString::fromUtf8(text))->projStr();
            QVERIFY2(proj.contains(QLatin1String("+proj=webmerc")) &&
                         proj.contains(QLatin1String("+datum=WGS84")),
                     qPrintable(proj));
            QVERIFY2(!proj.contains(QLatin1String("+k=")) && !proj.contains(QLatin1String("grids")),
                     qPrintable(proj));
        }
        QPointF feet;
        QVERIFY(factory()
                    ->createFromPrj(QStringLiteral("Earth Projection 10, 157, \"ft\", 0"))
                    ->forward(QPointF(180, 0), feet));
        VERIFY_NEAR(feet, QPointF(20037508.342789 / 0.3048, 0), 1e-5);
        // The fix-up leaves no ellipsoid where there is no sphere to replace: the text before it is used.
        const CoordSystemPtr lonLat = factory()->createFromPrj(QStringLiteral("Earth Projection 1, 157"));
        QVERIFY(lonLat->isLatLong());
        const CoordSystemPtr wkt = factory()->createFromWkt(factory()->createFromEpsg(3857)->exportToWkt());
        QPointF out;
        QVERIFY2(wkt->projStr().contains(QLatin1String("+proj=webmerc")), qPrintable(wkt->projStr()));
        QVERIFY(wkt->forward(QPointF(180, 0), out));
        VERIFY_NEAR(out, QPointF(20037508.342789, 0), 1e-5); // pi * 6378137 m
    }

    // GDAL misreads one order of the parallels: one PROJ text for both, the stored text keeps the caller's.
    void lambertInFeet()
    {
        const QString cone =
            QStringLiteral("Earth Projection 3, 62, \"survey ft\", -99, 27.5, %1, 2000000, 0");
        const CoordSystemPtr up = factory()->createFromPrj(cone.arg(QStringLiteral("28.5, 30.5")));
        const CoordSystemPtr down = factory()->createFromPrj(cone.arg(QStringLiteral("30.5, 28.5")));
        QCOMPARE(up->projStr(), down->projStr());
        QVERIFY(up->isEqual(down, false));
        QVERIFY(up->prjStr().contains(QLatin1String("28.5, 30.5")) &&
                down->prjStr().contains(QLatin1String("30.5, 28.5")));
    }

    void names()
    {
        // From the catalogue; from the database for a code that the catalogue lacks; from the quoted name of
        // a WKT.
        QCOMPARE(
            factory()->createFromProj(QStringLiteral("+proj=tmerc +lon_0=39.5 +ellps=krass"))->description(),
            QStringLiteral("+proj=tmerc +lon_0=39.5 +ellps=krass"));
        QVERIFY(factory()->mapinfoCoordSystem()->seekByEPSG(30200).isNull());
        QCOMPARE(factory()->createFromEpsg(30200)->description(),
                 QStringLiteral("Trinidad 1903 / Trinidad Grid"));
        const CoordSystemPtr grid = factory()->createFromWkt(QStringLiteral(
            "PROJCS[\"Site grid-2\",GEOGCS[\"g\",DATUM[\"d\",SPHEROID[\"Krassovsky "
            "1940\",6378245,298.3]],PRIMEM[\"Greenwich\",0],"
            "UNIT[\"degree\",0.0174532925199433]],PROJECTION[\"Transverse_Mercator\"],PARAMETER["
            "\"central_meridian\",39.7],"
            "PARAMETER[\"scale_factor\",1],UNIT[\"metre\",1]]"));
        QCOMPARE(grid->description(), QStringLiteral("Site grid-2"));
        // Nobody's name: the text itself.
        const QString prj = QStringLiteral("Earth Projection 8, 104, \"m\", 39.123, 0, 1, 0, 0");
        QCOMPARE(factory()->createFromPrj(prj)->description(), prj);
        // Systems that differ by bounds alone are told apart first and taken together when there is no other.
        const QString bounded = QStringLiteral("Earth Projection 1, 104 Bounds (0, 0) (10, 10)");
        QCOMPARE(factory()->createFromPrj(bounded)->description(),
                 factory()->createFromPrj(QStringLiteral("Earth Projection 1, 104"))->description());
    }

    void nonEarth()
    {
        VERIFY_THROWS(UnknownUnitException, factory()->createNonEarth(77, QRectF()),
                      QStringLiteral("Неизвестная единица измерения: #77"));
        QVERIFY(!factory()->createNonEarth(7, QRectF(5, 5, 0, 10))->isRectSet());
        const QRectF fine(-1e-5, 2.5, 1e9, 3);
        VERIFY_NEAR(factory()->createNonEarth(32, fine)->rectNumericCoordSys(), fine, 1e-6);
        // The clause's corners may come in any order.
        QVERIFY(factory()->createNonEarth(7, QRectF(0, 0, -5, 5))->isRectSet());
    }

    void resetBounds()
    {
        const CoordSystemPtr cs =
            factory()->createFromPrj(QStringLiteral("Earth Projection 1, 104 Bounds (0, 0) (10, 10)"));
        const CoordSystemPtr reset = factory()->resetRectCsToDefault(cs);
        VERIFY_NEAR(cs->rectNumericCoordSys(), QRectF(0, 0, 10, 10), 0.0);
        VERIFY_NEAR(reset->rectNumericCoordSys(), DefaultRectLatLonMapinfo, 0.0);
        QVERIFY(reset->isEqual(cs, true));
        cs->setEpsg(12345);
        cs->setAffineTransform(std::make_unique<QTransform>(2, 0, 0, 2, 0, 0));
        const CoordSystemPtr bent = factory()->resetRectCsToDefault(cs);
        QVERIFY(bent->baseCode() == 12345 && bent->epsg() < 0 && bent->affineTransform());
        VERIFY_NEAR(bent->rectNumericCoordSys(), QRectF(-2000, -2000, 4000, 4000), 0.0);
    }
};

NIVORA_TEST(TestCreation)
#include "tst_creation.moc"
