#include <support/SampleStep.h>
#include <support/Support.h>

#include <coordsys/CoordTransform.h>
#include <coordsys/MapinfoCoordSystem.h>
#include <coordsys/Mgrs.h>
#include <coordsys/ProjEngine.h>
#include <coordsys/SystemInfo.h>
#include <coordsys/UserCoordSystem.h>

#include <proj.h>

#include <QRandomGenerator>

#include <cmath>
#include <map>
#include <thread>

using namespace nivora::cs;

namespace {

constexpr quint32 SEED = 20261122;

PjHandle crsOf(const QByteArray &text) { return ownPj(proj_create(globalProjContext(), text.constData())); }

QByteArray nameOf(int code) { return "EPSG:" + QByteArray::number(code); }

/// In the three forms that keep a datum's name. Empty where PROJ has no form of the method.
QByteArrayList wktForms(int code)
{
    QByteArrayList forms;
    const PjHandle crs = crsOf(nameOf(code));
    for (const PJ_WKT_TYPE form : {PJ_WKT1_GDAL, PJ_WKT2_2019, PJ_WKT1_ESRI})
        forms << QByteArray(proj_as_wkt(globalProjContext(), crs.get(), form, nullptr));
    return forms;
}

QByteArray datumOf(int code)
{
    const PjHandle crs = crsOf(nameOf(code));
    const PjHandle datum = ownPj(proj_crs_get_datum_forced(globalProjContext(), crs.get()));
    return datum ? proj_get_name(datum.get()) : "";
}

/// The codes of the database by PROJ text, those with a text of their own left out.
std::map<QByteArray, std::vector<int>> codesByText()
{
    std::map<QByteArray, std::vector<int>> found;
    for (const PJ_TYPE type : {PJ_TYPE_GEOGRAPHIC_2D_CRS, PJ_TYPE_PROJECTED_CRS}) {
        const std::unique_ptr<char *, void (*)(char **)> list(
            proj_get_codes_from_database(globalProjContext(), "EPSG", type, 0),
            [](char **codes) { proj_string_list_destroy(codes); });
        for (char **code = list.get(); code && *code; ++code) {
            const PjHandle crs = crsOf("EPSG:" + QByteArray(*code));
            const char *text = proj_as_proj_string(globalProjContext(), crs.get(), PJ_PROJ_4, nullptr);
            if (text)
                found[text].push_back(QByteArray(*code).toInt());
        }
    }
    for (auto each = found.begin(); each != found.end();)
        each = each->second.size() < 2 ? found.erase(each) : std::next(each);
    return found;
}

QPointF middleOf(int code)
{
    const PjHandle crs = crsOf(nameOf(code));
    double west = 0.0, south = 0.0, east = 0.0, north = 0.0;
    proj_get_area_of_use(globalProjContext(), crs.get(), &west, &south, &east, &north, nullptr);
    return {std::remainder(0.5 * (west + east + (east < west ? 360.0 : 0.0)), 360.0), 0.5 * (south + north)};
}

/// Numbers of one text as another has them, by PROJ alone; not finite where it knows no way.
QPointF byProj(const QByteArray &from, const QByteArray &to, const QPointF &numbers)
{
    PjHandle way =
        ownPj(proj_create_crs_to_crs(globalProjContext(), from.constData(), to.constData(), nullptr));
    if (way)
        way = ownPj(proj_normalize_for_visualization(globalProjContext(), way.get()));
    const PJ_COORD out = proj_trans(way.get(), PJ_FWD, proj_coord(numbers.x(), numbers.y(), 0.0, HUGE_VAL));
    return {out.xy.x, out.xy.y};
}

/// Every n-th geographic and projected system in force.
std::vector<int> sampledCodes(int usualStep)
{
    const int step = support::sampleStep(usualStep);
    std::vector<int> codes;
    int i = 0;
    for (const PJ_TYPE type : {PJ_TYPE_GEOGRAPHIC_2D_CRS, PJ_TYPE_PROJECTED_CRS}) {
        const std::unique_ptr<char *, void (*)(char **)> list(
            proj_get_codes_from_database(globalProjContext(), "EPSG", type, 0),
            [](char **found) { proj_string_list_destroy(found); });
        for (char **code = list.get(); code && *code; ++code)
            if (i++ % step == step / 2)
                codes.push_back(QByteArray(*code).toInt());
    }
    return codes;
}

/// What a PROJ text is in the other notations that say as much: ESRI's has no place for a shift.
QStringList otherNotations(const QString &proj)
{
    const PjHandle crs = crsOf((proj + " +type=crs"_s).toUtf8());
    QByteArrayList texts{proj_as_wkt(globalProjContext(), crs.get(), PJ_WKT1_GDAL, nullptr),
                         proj_as_wkt(globalProjContext(), crs.get(), PJ_WKT2_2019, nullptr),
                         proj_as_projjson(globalProjContext(), crs.get(), nullptr)};
    if (proj_get_type(crs.get()) != PJ_TYPE_BOUND_CRS)
        texts << proj_as_wkt(globalProjContext(), crs.get(), PJ_WKT1_ESRI, nullptr);
    QStringList notations;
    for (const QByteArray &text : qAsConst(texts))
        if (!text.isEmpty())
            notations << QString::fromUtf8(text);
    return notations;
}

CoordSystemPtr read(const QString &text) { return support::shippedFactory()->createFromUserInput(text); }

bool isGood(const QPointF &p) { return std::isfinite(p.x()) && std::isfinite(p.y()); }

} // namespace

/// Who a system is, whether two are the same and which code one has: laws over PROJ's database.
class TestJudge : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void initTestCase() { QVERIFY(support::shippedFactory()); }

    // PROJ text does not say the datum, and what has one text may lie a kilometre apart.
    void pairsOfOneText()
    {
        const support::LogCapture quiet;
        const auto byText = codesByText();
        QRandomGenerator random(SEED);
        QStringList faults;
        int compared = 0, apart = 0;
        for (const auto &[text, codes] : byText) {
            if (random.bounded(support::sampleStep(100)) >= 8)
                continue;
            const int a = codes.at(std::size_t(random.bounded(int(codes.size()))));
            const int b = codes.at(std::size_t(random.bounded(int(codes.size()))));
            if (datumOf(a) == datumOf(b))
                continue;
            const QByteArrayList first = wktForms(a), second = wktForms(b);
            const QPointF place = middleOf(a);
            for (int form = 0; form < first.size(); ++form) {
                const QPointF numbers = byProj("EPSG:4326", first[form], QPointF(place.y(), place.x()));
                if (first[form].isEmpty() || second[form].isEmpty() || !isGood(numbers))
                    continue;
                const QPointF expected = byProj(first[form], second[form], numbers);
                const auto factory = support::shippedFactory();
                QPointF out;
                if (!CoordTransform(factory->createFromWkt(QString::fromUtf8(first[form])),
                                    factory->createFromWkt(QString::fromUtf8(second[form])))
                         .forward(numbers, out) ||
                    !support::near(out, expected, 1e-6))
                    faults << QStringLiteral("%1 %2 form %3").arg(a).arg(b).arg(form);
                ++compared;
                apart += !support::near(numbers, expected, 1e-6);
            }
        }
        QVERIFY2(faults.isEmpty(), qPrintable(faults.join("; "_s)));
        QVERIFY2(compared > 400 / support::sampleStep() && apart > 60 / support::sampleStep(),
                 qPrintable(QStringLiteral("%1 %2").arg(compared).arg(apart)));
    }

    // One search behind every notation; a shift that no datum has gets no code in any.
    void oneCodeForEveryNotation()
    {
        const support::LogCapture quiet;
        QStringList faults;
        int found = 0;
        for (const int code : sampledCodes(120)) {
            const PjHandle crs = crsOf(nameOf(code));
            const char *own = proj_as_proj_string(globalProjContext(), crs.get(), PJ_PROJ_4, nullptr);
            const QString proj = QString::fromUtf8(own).remove(" +type=crs"_s);
            const bool hasDatum = proj.contains("+datum="_s) || proj.contains("+nadgrids="_s);
            for (const QString &text : {proj, hasDatum ? QString() : proj + " +towgs84=500,500,500"_s}) {
                if (!text.startsWith("+proj="_s))
                    continue;
                const int searched = read(text)->epsg();
                found += searched > 0;
                if (text != proj && searched > 0)
                    faults << "%1 %2"_s.arg(searched).arg(text);
                for (const QString &other : otherNotations(text))
                    if (const int its = read(other)->epsg(); its != searched)
                        faults << "%1 %2 %3 %4"_s.arg(searched).arg(its).arg(text, other.left(12));
            }
        }
        QVERIFY2(faults.isEmpty(), qPrintable(faults.join("; "_s)));
        QVERIFY2(found > 100 / support::sampleStep(), qPrintable(QString::number(found)));
    }

    // WGS 84's ellipsoid alone stands for WGS 84, whatever a notation calls it.
    void bareEllipsoidOfWgs84()
    {
        for (const auto &[text, code] : {std::pair("+proj=utm +zone=33 +ellps=WGS84"_s, 32633),
                                         std::pair("+proj=utm +zone=7 +south +ellps=WGS84"_s, 32707),
                                         std::pair("+proj=longlat +ellps=WGS84"_s, 4326)})
            for (const QString &notation : QStringList(otherNotations(text) << text))
                QVERIFY2(read(notation)->epsg() == code, qPrintable(notation));
    }

    // A clause that rounds the figures of the catalogue's has its code; one that says other figures has not.
    void roundedClauses()
    {
        const char *const clauses[] = {"3, 74, 8, -81, 37, 38.8833333333, 37.4833333333, 1968500, 0",
                                       "8, 74, 3, -118.3333333333, 45.0833333333, 1.000175, 98425.1969, 0",
                                       "3, 33, 7, -51, 65.3510393056, 67, 63.6666666667, 11500000, 7500000"};
        for (const char *clause : clauses) {
            const auto codeOf = [&](const QRegularExpression &digits, const QString &instead) {
                QString text = "CoordSys Earth Projection "_s + QString::fromUtf8(clause);
                text.replace(digits, instead);
                return support::made("prj:"_s + text)->epsg();
            };
            static const QRegularExpression behindSeventh("(?<=\\.\\d{7})\\d{3}"_s);
            const int exact = codeOf(QRegularExpression("$"_s), {});
            QVERIFY2(exact > 0, clause);
            QCOMPARE(codeOf(behindSeventh, {}), exact);
            QVERIFY(codeOf(QRegularExpression("(?<=\\.\\d{4})\\d{6}"_s), "999999"_s) != exact);
        }
    }

    // Grid references count from Greenwich, whatever meridian the system has.
    void gridReferencesOfOtherMeridians()
    {
        const auto factory = support::shippedFactory();
        const double parisDeg = 2.33722917;
        QCOMPARE(Mgrs(factory->createFromEpsg(4807)).getMGRSString(0.25, 48.8),
                 Mgrs(factory->createFromEpsg(4275)).getMGRSString(parisDeg + 0.25, 48.8));
    }

    // A title is words, wherever in the text it stands.
    void titles()
    {
        for (const char *text : {"+title=My zone +proj=tmerc +lon_0=10 +ellps=krass",
                                 "+proj=tmerc +title=My zone +lon_0=10 +ellps=krass",
                                 "+proj=tmerc +lon_0=10 +ellps=krass +title=My zone"}) {
            const CoordSystemPtr cs = read(QString::fromUtf8(text));
            QVERIFY2(!cs->description().contains(QLatin1Char('+')), qPrintable(cs->description()));
            QPointF out;
            QVERIFY(cs->forward(QPointF(10, 0), out));
            VERIFY_NEAR(out, QPointF(0, 0), 1e-6);
        }
    }

    // A system through its own WKT stays where it is.
    void ownWktMovesNothing()
    {
        const support::LogCapture quiet;
        const auto factory = support::shippedFactory();
        QStringList faults;
        for (const int code : sampledCodes(120)) {
            try {
                const CoordSystemPtr cs = factory->createFromEpsg(code);
                const CoordSystemPtr copy = factory->createFromWkt(cs->exportToWkt());
                QPointF numbers = middleOf(code), out;
                if ((!cs->isLatLong() && !cs->forward(numbers, numbers)) ||
                    !CoordTransform(cs, copy).forward(numbers, out) || !support::near(out, numbers, 1e-3))
                    faults << QString::number(code);
            } catch (const ProjException &) {
                // a method that PROJ lacks is refused
            }
        }
        QVERIFY2(faults.isEmpty(), qPrintable(faults.join(QLatin1Char(' '))));
    }

    // The engines' objects of a code are made when they are needed: for a system and its copies once, by
    // several threads at a time, and when its factory is gone.
    void codesMadeLater()
    {
        const support::DefaultFactoryKeeper keeper;
        const support::LogCapture quiet;
        auto own = std::make_shared<CoordSysFactory>(support::resources(), support::data(), "en"_s);
        QVERIFY(own->initCoordSystemEnvironment());
        QStringList faults;
        int compared = 0;
        for (const int code : sampledCodes(300)) {
            try {
                const CoordSystemPtr cs = own->createFromEpsg(code), again = own->createFromEpsg(code);
                const CoordSystemPtr other = support::shippedFactory()->createFromEpsg(code);
                PJ *found[2] = {};
                std::thread thread([&] { found[0] = cs->PJ_Proj4(); });
                found[1] = cs->PJ_Proj4();
                thread.join();
                const bool isShared = found[0] == found[1] && again->PJ_Proj4() == found[0];
                if (!isShared || !found[0] || !cs->isEqual(other, false) || cs->projStr() != other->projStr())
                    faults << QString::number(code);
                ++compared;
            } catch (const ProjException &) {
                // a method that PROJ lacks is refused at once
            }
        }
        QVERIFY2(faults.isEmpty(), qPrintable(faults.join(QLatin1Char(' '))));
        QVERIFY2(compared > 300 / support::sampleStep(), qPrintable(QString::number(compared)));

        const CoordSystemPtr left = own->createFromEpsg(28405), alone = own->createFromEpsg(28406);
        own.reset();
        QVERIFY(left->projStr().contains("+towgs84"_s)); // by the installed default's catalogue
        CoordSysFactory::setDefaultCoordSysFactory(nullptr);
        QPointF out;
        QVERIFY(alone->forward(QPointF(33, 0), out) && alone->OGRSpatialReference());
        VERIFY_NEAR(out, QPointF(6500000, 0), 1e-3);
    }

    // What a WKT is made into comes later, too; what cannot be computed is refused at once.
    void wktMadeLater()
    {
        const support::LogCapture quiet;
        const auto factory = support::shippedFactory();
        const QString proj = "+proj=lcc +lat_0=40 +lon_0=5 +lat_1=30 +lat_2=60 +datum=WGS84"_s;
        const CoordSystemPtr expected = factory->createFromProj(proj);
        for (QString text : otherNotations(proj)) {
            const CoordSystemPtr cs = factory->createFromWkt(text);
            QVERIFY(!cs->isLatLong() && !cs->isNonEarth());
            QPointF out, there;
            QVERIFY(cs->forward(QPointF(4, 50), out) && expected->forward(QPointF(4, 50), there));
            VERIFY_NEAR(out, there, 1e-6);
            QVERIFY(cs->PJ_Proj4() && factory->createFromWkt(text)->PJ_Proj4() == cs->PJ_Proj4());
            static const QRegularExpression parallel("(?<![\\d.])60(?!\\d)"_s);
            text.replace(parallel, "-30"_s);
            QVERIFY_EXCEPTION_THROWN(factory->createFromWkt(text), std::exception);
        }
    }

    // What a text or a catalogue says of a code is looked at.
    void foreignCodes()
    {
        const support::ResourceCopy copy;
        copy.write("projections_ru.prj"_s,
                   "\"---A---\"\n\"Moved\\p32636\", 8, 104, 7, 35, 0, 0.9996, 500000, 0\n"
                   "\"Zone\\p32637\", 8, 104, 7, 39, 0, 0.9996, 500000, 0\n"
                   "\"Turned\\p2053\", 1008, 104, 7, 33, 0, 1, 0, 0, 7, 2, 0, 5, 0, 2, 5\n");
        const support::LogCapture quiet;
        const auto factory = std::make_shared<CoordSysFactory>(copy.dir(), copy.dir(), "ru"_s);
        QVERIFY(factory->initCoordSystemEnvironment());
        const CoordSystemPtr moved = factory->mapinfoCoordSystem()->getProj(0, 0);
        QVERIFY(moved->epsg() != 32636 && !moved->exportToWkt().contains("32636"_s));
        QVERIFY(!factory->mapinfoCoordSystem()->systemOfCode(2053));
        QCOMPARE(factory->mapinfoCoordSystem()->getProj(0, 1)->epsg(), 32637);
        QCOMPARE(factory->createFromEpsg(32637)->description(), "Zone"_s);
        const CoordSystemPtr zone = factory->createFromEpsg(32636);
        QPointF out;
        QVERIFY(zone->forward(QPointF(33, 0), out) && zone->description() != "Moved"_s);
        VERIFY_NEAR(out, QPointF(500000, 0), 1e-6);

        const CoordSystemPtr set = read("+proj=utm +zone=35 +datum=WGS84"_s);
        set->setEpsg(32636);
        QVERIFY(set->epsg() == 32636 && !set->exportToWkt().contains("32636"_s)); // a setter is not checked
        const CoordSystemPtr wkt =
            read(QString(support::shippedFactory()->createFromEpsg(27572)->exportToWkt())
                     .replace("UNIT[\"metre\",1"_s, "UNIT[\"kilometre\",1000"_s));
        QVERIFY2(!systemInfo(*wkt).identifier.contains("27572"_s), qPrintable(systemInfo(*wkt).identifier));
    }

    // The code of a moved plane is that of the plane that it was.
    void movedPlanes()
    {
        for (const char *text : {"prj:Earth Projection 8, 104, \"m\", 33, 0, 0.9996, 500000, 0",
                                 "proj:+proj=utm +zone=36 +datum=WGS84", "wkt"}) {
            const CoordSystemPtr plain = support::shippedFactory()->createFromEpsg(32636);
            const CoordSystemPtr cs =
                QByteArray(text) == "wkt" ? read(plain->exportToWkt()) : support::made(support::Text(text));
            QCOMPARE(cs->epsg(), 32636);
            QCOMPARE(cs->baseCode(), int(CoordSystem::EPSG_UNDEFINDED));
            cs->setAffineTransform(std::make_unique<QTransform>(1, 0, 0, 1, 1000, 0));
            QCOMPARE(cs->epsg(), int(CoordSystem::EPSG_UNDEFINDED));
            QCOMPARE(cs->baseCode(), 32636);
            QVERIFY(!cs->exportToWkt().contains("32636"_s) && !cs->exportToWkt().isEmpty());
            const SystemInfo info = systemInfo(*cs);
            QVERIFY(info.epsg < 0 && info.baseCode == 32636 && info.identifier.isEmpty());
        }
    }

    // The code of a PROJJSON says nothing against its shift.
    void shiftsOfProjJson()
    {
        const PjHandle bound = crsOf("+proj=longlat +ellps=krass +towgs84=500,600,700 +type=crs");
        QString json = QString::fromUtf8(proj_as_projjson(globalProjContext(), bound.get(), nullptr));
        const PjHandle pulkovo = crsOf("EPSG:4284");
        const int from = json.indexOf("\"source_crs\": "_s) + 14, to = json.indexOf("\"target_crs\""_s);
        const QString source =
            QString::fromUtf8(proj_as_projjson(globalProjContext(), pulkovo.get(), nullptr));
        const CoordSystemPtr cs = read(json.replace(from, to - from, source + ", "_s));
        const CoordSystemPtr wgs84 = support::shippedFactory()->createFromEpsg(4326);
        QPointF out;
        QVERIFY(CoordTransform(cs, wgs84).forward(QPointF(39, 55), out));
        const QPointF expected =
            byProj("+proj=longlat +ellps=krass +towgs84=500,600,700", "EPSG:4326", {39, 55});
        VERIFY_NEAR(out, QPointF(expected.x(), expected.y()), 1e-7);
    }

    // Systems ask the catalogues they were made with; what nobody could be asked is asked again.
    void catalogues()
    {
        const support::DefaultFactoryKeeper keeper;
        const support::LogCapture quiet;
        const auto shipped = support::shippedFactory();
        auto english = std::make_shared<CoordSysFactory>(support::resources(), support::data(), "en"_s);
        QVERIFY(english->initCoordSystemEnvironment());
        const QString zone7 = "+proj=tmerc +lon_0=39 +k=1 +x_0=7500000 +ellps=krass +units=m "
                              "+towgs84=24,-123,-94,0.02,-0.25,-0.13,1.1"_s;
        const CoordSystemPtr named = english->createFromProj("+proj=utm +zone=37 +ellps=WGS84"_s);
        const CoordSystemPtr copy = english->createFromProj(zone7)->clone();
        QCOMPARE(named->description(), english->nameOfCode(32637));
        CoordSysFactory::setDefaultCoordSysFactory(nullptr);
        english.reset();
        QCOMPARE(copy->epsg(), int(CoordSystem::EPSG_UNDEFINDED)); // MapInfo's shift: the catalogue's to tell
        CoordSysFactory::setDefaultCoordSysFactory(shipped);
        QCOMPARE(copy->epsg(), 28407);
        QCOMPARE(copy->description(), shipped->nameOfCode(28407));
    }
};

NIVORA_TEST(TestJudge)
#include "tst_judge.moc"
