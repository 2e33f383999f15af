// The shipped catalogues against the engines that they describe.

#include "Catalogue.h"

#include <support/Support.h>

#include <coordsys/CoordSysRect.h>
#include <coordsys/CoordSystemParams.h>
#include <coordsys/MapinfoCoordSystem.h>

#include <proj.h>

#include <QFile>
#include <QRegularExpression>
#include <QXmlStreamReader>

#include <algorithm>
#include <cmath>
#include <map>

using namespace nivora::cs;
using catalogue::Definition;
using catalogue::Figure;
using catalogue::Item;
using catalogue::Pj;
using catalogue::summary;

namespace {

constexpr double samePlace = 0.001;   // metres: what the catalogue promises for entries with a code
constexpr double sameAxis = 0.001;    // metres: the driver's figures are rounded in the last digit
constexpr double sameMeridian = 1e-8; // degrees: the driver has Paris to 12 digits, EPSG in grads to 7

QList<CoordSystemParamsList> categories(const QString &language)
{
    MapinfoCoordSystem catalogue([](const QString &) { return CoordSystemPtr(); });
    catalogue.loadFromPRJ(support::resources(), language);
    return catalogue.projectionList();
}

QByteArray firstLine(const QString &name)
{
    QFile file(support::resources().filePath(name));
    return file.open(QIODevice::ReadOnly) ? file.readLine().trimmed() : QByteArray();
}

std::vector<CoordSystemParams> entries(const QString &language)
{
    std::vector<CoordSystemParams> all;
    for (const CoordSystemParamsList &category : categories(language))
        all.insert(all.end(), category.entries.begin(), category.entries.end());
    return all;
}

/// Entries of equal text in file order, by that text.
std::map<QStringList, std::vector<CoordSystemParams>> groups()
{
    std::map<QStringList, std::vector<CoordSystemParams>> all;
    for (const CoordSystemParams &entry : entries("en"_s))
        all[entry.params].push_back(entry);
    return all;
}

/// The name that \p name is a twin of: with the axes turned, or on a realization of NAD83.
QString plain(QString name)
{
    static const QRegularExpression twin(" \\((z?E-?,?N|N-?,?z?E|lon-lat)\\)|(?<=NAD83)\\(.*?\\)(v\\d)?"_s);
    return name.remove(twin);
}

QString baseName(int epsg)
{
    const Pj crs = catalogue::registered(QByteArray::number(epsg));
    const Pj base(proj_crs_get_geodetic_crs(nullptr, crs.get()), proj_destroy);
    return QString::fromUtf8(proj_get_name(base.get()));
}

/// What an entry may differ in from the definition of its code, metres.
struct Exception
{
    double plane = samePlace;
    double semiMinor = sameAxis;
    bool otherFigure = false;
};

Exception exceptionFor(int epsg, const QString &name)
{
    Exception exception;
    // EPSG flattens Xian 1980 by 1/298.257, MapInfo's ellipsoid 31 by 1/298.257222: 15.9 mm in the semi-minor
    // axis, up to 18.9 mm in the plane.
    if (name.contains("Xian 1980"_s) || name.contains("Сиань 1980"_s)) {
        exception.plane = 0.019;
        exception.semiMinor = 0.016;
    }
    // Michigan's method raises Clarke's ellipsoid to the State's mean height: MapInfo has that ellipsoid,
    // EPSG has it in the method. The web Mercator is drawn on a sphere.
    exception.otherFigure = epsg == 6201 || epsg == 6202 || epsg == 6966 || epsg == 3857;
    return exception;
}

} // namespace

class TestResources : public QObject
{
    Q_OBJECT
private Q_SLOTS:
    void initTestCase() { QVERIFY(support::shippedFactory()); }

    void headings()
    {
        // The reader tells the encoding by the first line alone.
        QCOMPARE(firstLine("projections_ru.prj"_s), QByteArray("\"---Долгота / Широта---\""));
        QCOMPARE(firstLine("projections_en.prj"_s), QByteArray("\"---Longitude / Latitude---\""));
    }

    void languagesAgree()
    {
        const auto ru = categories("ru"_s);
        const auto en = categories("en"_s);
        QCOMPARE(ru.size(), en.size());
        // What start-up looks up must not cost the building of a thousand entries.
        QCOMPARE(ru.first().entries[0].asPrjString(), "Earth Projection 1,104"_s);
        QCOMPARE(ru.first().entries[1].asPrjString(), "Earth Projection 1,0"_s);
        for (int c = 0; c < ru.size(); ++c) {
            QCOMPARE(ru[c].entries.size(), en[c].entries.size());
            for (int i = 0; i < ru[c].entries.size(); ++i) {
                QCOMPARE(ru[c].entries[i].params, en[c].entries[i].params);
                QCOMPARE(ru[c].entries[i].epsg(), en[c].entries[i].epsg());
            }
        }
    }

    void everydaySystemFirst_data()
    {
        const support::Columns<QVector<int>> row; // codes: of one text; the first is the everyday one
        row("axes turned", {25832, 3044});
        row("axes turned, zone in the easting", {4647, 5652});
        row("plain before easting first", {31467, 5677});
        row("easting before northing first", {5041, 32661});
        row("NAD83 before its realizations", {26917, 2958, 3724, 6346, 22217});
        row("in another category", {5070, 5071, 5072, 6350});
        row("in Canada", {3347, 3348});
        row("WGS 84", {32635, 4037});
        row("a national grid before a zone: Sweden", {3006, 8687, 3767, 3065, 6708, 7792});
        row("a national grid before a zone: Finland", {3067, 25835, 3047, 5048});
        row("Serbia", {8682, 3768, 7799, 7803, 9716});
        row("the Canaries", {4083, 3188, 5016, 3343});
        row("the frame in force: Mexico", {6371, 4489, 8909, 31970});
        row("the frame of a continent", {31973, 3179, 2202, 31988});
        row("Greenland, where the continent has sea", {3184, 6211});
        row("a number for 130 frames: none of them", {0, 4490, 4619, 4674});
    }

    void everydaySystemFirst()
    {
        const auto codes = std::get<0>(support::row<QVector<int>>());
        for (const auto &[params, group] : groups()) {
            const auto last = std::find_if(group.begin(), group.end(),
                                           [&](const auto &entry) { return entry.epsg() == codes.last(); });
            if (last == group.end())
                continue;
            QCOMPARE(qMax(0, group.front().epsg()), codes.first());
            for (int code : codes)
                QVERIFY2(std::any_of(group.begin(), group.end(),
                                     [&](const auto &entry) { return qMax(0, entry.epsg()) == code; }),
                         qPrintable(QString::number(code)));
            return;
        }
        QFAIL("no such text");
    }

    void twinsInOrder()
    {
        QStringList faults;
        int twins = 0;
        for (const auto &[params, group] : groups()) {
            QSet<QString> plainAhead;
            for (const CoordSystemParams &entry : group) {
                const QString &name = entry.name();
                if (plain(name) != name)
                    plainAhead << plain(name);
                else if (plainAhead.contains(name))
                    faults << name;
                twins += plain(name) != name;
            }
            // Only the text that belongs to no country leads with a name of its own.
            const bool coded =
                std::any_of(group.begin(), group.end(), [](const auto &e) { return e.epsg() > 0; });
            if (coded && group.front().epsg() <= 0 && params != QStringList{"1"_s, "33"_s})
                faults << group.front().name();
        }
        QVERIFY2(faults.isEmpty(), qPrintable(summary(faults)));
        QVERIFY(twins > 1000);
    }

    /// Beside Cyrillic letters only codes (no two small letters together) and proper names of datums are
    /// Latin.
    void namesAreUniqueAndOfOneLanguage()
    {
        static const QRegularExpression cyrillic("[А-яЁё]"_s);
        static const QRegularExpression word("[a-z]{2}"_s);
        static const QRegularExpression common(
            "\\b(Islands?|North|South|East|West|Central|Old|New|Datum|System|Grid|Zone|Belt|Valley|Gulf|"
            "Lighthouse|Corrected|Antarctic|Indian|Korean|lon-lat|extended|accurate)\\b"_s);
        const auto ru = entries("ru"_s);
        const auto en = entries("en"_s);
        QStringList faults;
        QSet<QString> russian, english;
        int code = 0; // a second entry without one follows the first
        for (std::size_t i = 0; i < ru.size(); ++i) {
            QString name = ru[i].name();
            if (russian.contains(name) || english.contains(en[i].name()))
                faults << "twice: "_s + name;
            russian << name;
            english << en[i].name();
            code = ru[i].epsg() > 0 ? ru[i].epsg() : code;
            if (!name.contains(cyrillic)) {
                if (name != en[i].name())
                    faults << name;
            } else if (name.contains(common) ||
                       (name.contains(word) && name.remove(baseName(code)).contains(word)))
                faults << ru[i].name();
        }
        QVERIFY2(faults.isEmpty(), qPrintable(summary(faults)));
    }

    void everyEntryBuilds()
    {
        const QTemporaryDir userDir;
        for (const auto &language : {"ru"_s, "en"_s}) {
            CoordSysFactory factory(support::resources(), QDir(userDir.path()), language);
            QVERIFY(factory.initCoordSystemEnvironment());
            QStringList faults;
            QSet<int> codes;
            support::LogCapture log;
            int asked = 0;
            for (const Item &item : catalogue::items()) {
                const int code = item.entry.epsg();
                try {
                    if (asked++ % catalogue::sampleStep() == 0 &&
                        !factory.mapinfoCoordSystem()->getProj(item.category, item.index))
                        faults << item.entry.name() + ": null"_s;
                } catch (const std::exception &e) {
                    faults << item.entry.name() + ": "_s + QString::fromUtf8(e.what());
                }
                if (code > 0 && codes.contains(code))
                    faults << "code %1 stands twice"_s.arg(code);
                codes << code;
            }
            faults << support::LogCapture::lines("error"_s);
            QVERIFY2(faults.isEmpty(), qPrintable(summary(faults)));
            QVERIFY(codes.size() > 5000);
        }
    }

    void codesMeanWhatTheySay()
    {
        QStringList faults;
        int compared = 0;
        for (const Item &item : catalogue::items(catalogue::sampleStep())) {
            if (item.entry.epsg() <= 0)
                continue;
            const QString &name = item.entry.name();
            const Exception exception = exceptionFor(item.entry.epsg(), name);
            const Definition definition(item.entry.epsg());
            const CoordSystemPtr cs =
                support::shippedFactory()->mapinfoCoordSystem()->getProj(item.category, item.index);
            if (definition.isProjected() == cs->isLatLong())
                faults << name + ": another kind of system"_s;
            const Pj built(proj_create(nullptr, (cs->projStr() + " +type=crs"_s).toUtf8().constData()),
                           proj_destroy);
            const Figure figure(built.get());
            const Figure &expectedFigure = definition.figure;
            if (!exception.otherFigure &&
                !(std::fabs(figure.semiMajor - expectedFigure.semiMajor) <= sameAxis &&
                  std::fabs(figure.semiMinor - expectedFigure.semiMinor) <= exception.semiMinor))
                faults << "%1: axes %2 %3"_s.arg(name).arg(figure.semiMajor).arg(figure.semiMinor);
            if (!(std::fabs(figure.primeMeridian - expectedFigure.primeMeridian) <= sameMeridian))
                faults << "%1: meridian %2"_s.arg(name).arg(figure.primeMeridian);
            if (!definition.isProjected())
                continue;
            for (const QPointF &lonLat : definition.grid()) {
                const QPointF expected = definition.plane(lonLat);
                if (!std::isfinite(expected.x()) || !std::isfinite(expected.y()))
                    continue;
                QPointF got;
                const bool ok = cs->forward(lonLat, got);
                const QPointF off = got * definition.metresPerUnit - expected;
                if (!ok || !(std::hypot(off.x(), off.y()) <= exception.plane))
                    faults << "%1: %2 m"_s.arg(name, QString::number(std::hypot(off.x(), off.y())));
                ++compared;
            }
        }
        QVERIFY2(faults.isEmpty(), qPrintable(summary(faults)));
        QVERIFY(compared > 30000 / catalogue::sampleStep());
    }

    void boundsHoldTheArea()
    {
        // A country's system of one zone has the bounds of the zone, a degree of overlap included.
        constexpr double halfZone = 4.0;
        QStringList faults;
        for (const auto &[entry, category, index] : catalogue::items(catalogue::sampleStep())) {
            const CoordSystemPtr cs =
                support::shippedFactory()->mapinfoCoordSystem()->getProj(category, index);
            const QRectF rect = support::shippedFactory()->coordSysRect()->rect(cs);
            if (!(rect.width() > 0.0 && rect.height() > 0.0))
                faults << entry.name() + ": empty"_s;
            // Behind an affine clause the projection's rule counts, which is one-sided for cones.
            if (entry.epsg() <= 0 || cs->isLatLong() || cs->affineTransform())
                continue;
            const Definition definition(entry.epsg());
            const QPointF centre = definition.centre();
            const double off = std::remainder(centre.x() - cs->longitudeOfCenter(), 360.0);
            if (definition.east - definition.west > 60.0 ||
                (entry.params[0] == "8"_s && std::fabs(off) > halfZone))
                continue;
            QPointF middle;
            if (!cs->forward(centre, middle) || !rect.contains(middle))
                faults << entry.name();
        }
        QVERIFY2(faults.isEmpty(), qPrintable(summary(faults)));
    }

    void boundsOfKnownGrids()
    {
        // Areas of use of EPSG 28407 and 27700 in the plane, worked out with PROJ's cs2cs, and rounded
        // outward.
        const auto rect = [](int code) {
            const auto factory = support::shippedFactory();
            const CoordSystemPtr cs = factory->createFromEpsg(code);
            return factory->coordSysRect()->rect(cs->prjStr(), cs.get());
        };
        QCOMPARE(rect(28407), QRectF(QPointF(7200000, 4500000), QPointF(7800000, 7700000)));
        QCOMPARE(rect(27700), QRectF(QPointF(-200000, -100000), QPointF(700000, 1300000)));
        // The width of the world on the sphere of the web Mercator is 2 pi 6378137 m.
        QVERIFY(rect(3857).contains(QRectF(-20037508.0, -20037508.0, 40075016.0, 40075016.0)));
    }

    void oracleNumbers()
    {
        QFile file(support::resources().filePath("OracleSRID.xml"_s));
        QVERIFY(file.open(QIODevice::ReadOnly));
        QXmlStreamReader xml(&file);
        QHash<int, QString> texts;
        for (xml.readNextStartElement(); xml.readNextStartElement(); xml.skipCurrentElement())
            texts.insert(xml.attributes().value("srid"_s).toInt(),
                         xml.attributes().value("mbproj"_s).toString());
        QVERIFY(!xml.hasError());
        QStringList faults;
        for (const Item &item : catalogue::items())
            if (item.entry.epsg() > 0 && texts.take(item.entry.epsg()) != item.entry.params.join(", "_s))
                faults << item.entry.name();
        // What is left are the numbers from before the numbering followed EPSG.
        for (auto it = texts.cbegin(); it != texts.cend(); ++it)
            if (!support::shippedFactory()->createFromOracleSRID(it.key()))
                faults << QString::number(it.key());
        QVERIFY2(faults.isEmpty(), qPrintable(summary(faults)));
        QVERIFY(texts.contains(8307));
    }
};

NIVORA_TEST(TestResources)
#include "tst_resources.moc"
