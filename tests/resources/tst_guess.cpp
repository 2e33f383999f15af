#include <support/Support.h>
#include <support/TestRunner.h>

#include <coordsys/CoordSysFactory.h>
#include <coordsys/CoordSystem.h>
#include <coordsys/CoordTransform.h>
#include <coordsys/MapinfoSearch.h>
#include <coordsys/ProjLibMetadata.h>
#include <coordsys/SystemGuess.h>
#include <coordsys/SystemSearch.h>
#include <coordsys/UserCoordSystem.h>

#include <QBuffer>

#include <algorithm>
#include <cmath>

using namespace nivora::cs;
using Answer = SystemGuess::Answer;
using Entry = SystemGuess::Entry;
using Assumption = GuessAssumption;

class TestGuess : public QObject
{
    Q_OBJECT
private Q_SLOTS:
    void initTestCase()
    {
        QVERIFY(m_factory = support::shippedFactory());
        QVERIFY(m_guess = systemGuess(*m_factory));
    }

    /// Places around one, in a system, and what people do to coordinates before they lose it.
    void readings_data()
    {
        const support::Columns<int, QPointF, QString, bool, int> row; // code, place, change, hint, assumption
        const QPointF moscow(37.6, 55.7);
        row("as they are", 28407, moscow, "", true, -1);
        row("without a hint", 2154, QPointF(2.3, 48.9), "", false, -1);
        row("swapped", 28407, moscow, "swapped", true, int(Assumption::Swapped));
        row("kilometres", 32637, moscow, "kilometres", true, int(Assumption::Kilometres));
        row("feet", 27700, QPointF(-1.5, 52.4), "feet", true, int(Assumption::Feet));
        row("prefix missing", 31468, QPointF(11.6, 48.1), "prefix missing", true,
            int(Assumption::PrefixMissing));
        row("prefix added", 32637, moscow, "prefix added", true, int(Assumption::PrefixAdded));
        row("packed degrees", 4326, moscow, "dms", true, int(Assumption::DegreesAsDms));
        row("degrees", 4326, moscow, "", false, -1);
        row("across the 180th meridian", 3832, QPointF(179.99, -16.5), "", true, -1);
        row("another prime meridian", 27572, QPointF(2.3, 46.9), "", true, -1);
        row("feet of its own", 2263, QPointF(-74.0, 40.7), "", true, -1);
    }

    void readings()
    {
        const auto [code, place, change, hint, assumption] = support::row<int, QPointF, QString, bool, int>();
        SystemGuess::Question question;
        for (const QPointF &point : survey(code, place))
            question.points << changed(point, change);
        question.points << QPointF(NAN, 0.0); // a hole in a table
        if (hint)
            question.place = place + QPointF(0.3, 0.4);
        const QVector<Entry> entries = m_guess->guess(question, 3).entries;
        const auto right =
            std::find_if(entries.begin(), entries.end(),
                         [&, wanted = code](const Entry &entry) { return has(entry, wanted); });
        QVERIFY2(right != entries.end(),
                 qPrintable(entries.isEmpty() ? QString() : entries.first().members.first().name));
        QCOMPARE(right->assumptions, assumption < 0
                                         ? QVector<Assumption>()
                                         : QVector<Assumption>{static_cast<Assumption>(assumption)});
        QVERIFY(std::fabs(std::remainder(right->centre.x() - place.x(), 360.0)) < 0.05);
        QVERIFY(std::fabs(right->centre.y() - place.y()) < 0.05);
        QCOMPARE(right->share, 1.0);
        QCOMPARE(bool(right->distanceM), hint);
    }

    /// Members of an entry lie as near to each other as it says, by the library's own transformations.
    void members()
    {
        SystemGuess::Question question;
        question.points = survey(32633, {14.4, 50.1});
        question.place = QPointF(14.4, 50.1);
        const Answer answer = m_guess->guess(question, 10);
        const Entry &entry = answer.entries.first();
        QVERIFY(has(entry, 32633) && has(entry, 25833));
        QVERIFY(!has(entry, 23033)); // ED50 is a hundred metres off
        QVERIFY(entry.members.size() <= 30 && entry.spreadM <= 20.0);
        const CoordSystemPtr first = m_factory->createFromUserInput(inputFor(entry.members.first()));
        for (const SystemGuess::Member &member : entry.members) {
            const CoordTransform way(m_factory->createFromUserInput(inputFor(member)), first);
            QPointF there;
            QVERIFY2(way.forward(question.points.first(), there), qPrintable(member.code));
            const QPointF apart = there - question.points.first();
            QVERIFY2(std::hypot(apart.x(), apart.y()) < member.metres + 3.0, qPrintable(member.code));
        }
        for (const Entry &other : answer.entries)
            QVERIFY(other.members.size() <= 30 && other.spreadM <= 20.0 && other.share <= 1.0);
        const auto isOwn = [&](const QPointF &point) { return point == entry.deciding; };
        QVERIFY(std::any_of(question.points.begin(), question.points.end(), isOwn));
    }

    /// Systems without a code: the catalogue's, and the user's own as they are now.
    void codeless()
    {
        const QString local = QStringLiteral("Earth Projection 8, 1001, 7, 40.5, 0, 1, 250000, -5500000");
        const auto ask = [&](const CoordSystemPtr &system, const QPointF &place) {
            const CoordTransform way(m_factory->latLongWgs84CoordSystem(), system);
            SystemGuess::Question question;
            for (int i = 0; i < 4; ++i) {
                QPointF point;
                if (way.forward(place + QPointF(0.01 * i, 0.004 * i), point))
                    question.points << point;
            }
            question.place = place;
            return systemGuess(*m_factory)->guess(question, 3).entries;
        };
        const QPointF place(40.4, 56.1);
        const CoordSystemPtr own = m_factory->createFromPrj(local);
        const auto isFound = [&](const QString &name) {
            const auto hits = systemSearch(*m_factory)->find(name, 1);
            const QVector<Entry> entries = ask(own, place);
            const bool isGuessed = !entries.isEmpty() && entries.first().members.first().name == name &&
                                   entries.first().members.first().code.isEmpty();
            return isGuessed && !hits.isEmpty() && hits.first().isOwn() && hits.first().name == name;
        };
        UserCoordSystem &store = *m_factory->userCoordSystem();
        const QString branch = QStringLiteral("Места");
        store.setCoordSystem(branch, {CoordSystem::Prj, local}, QStringLiteral("Квартал 17 Вязники"));
        QVERIFY(isFound(QStringLiteral("Квартал 17 Вязники")));
        store.setCoordSystem(branch, {CoordSystem::Prj, local}, QStringLiteral("Судогда участок"));
        QVERIFY(!isFound(QStringLiteral("Квартал 17 Вязники")) && isFound(QStringLiteral("Судогда участок")));
        QVERIFY(store.removeCoordSystem(branch, {CoordSystem::Prj, local}));
        QVERIFY(!isFound(QStringLiteral("Судогда участок")));
        const QString italian =
            systemSearch(*m_factory)
                ->find(QStringLiteral("Longitude / Latitude (Monte Mario) (accurate shift)"), 1)
                .first()
                .name;
        const QVector<Entry> italy = ask(m_factory->createFromUserInput(italian), {12.4, 41.9});
        QVERIFY(std::any_of(italy.begin(), italy.end(), [&](const Entry &entry) {
            return std::any_of(entry.members.begin(), entry.members.end(),
                               [&](const auto &member) { return member.name == italian; });
        }));
    }

    /// Datums of satellites are one another's without a registered shift; an old one is not.
    void unknownShifts()
    {
        SystemGuess::Question question;
        question.points = survey(22220, {-63.6, 44.7}); // NAD83(CSRS)v2
        question.place = QPointF(-63.6, 44.7);
        const Answer canada = m_guess->guess(question, 1);
        QVERIFY(has(canada.entries.first(), 2961) && has(canada.entries.first(), 22220));
        QVERIFY(canada.entries.first().isShiftKnown && !has(canada.entries.first(), 26720)); // NAD27
        question.points = survey(3027, {18.0, 59.3});                                        // RT38
        question.place = QPointF(18.0, 59.3);
        const QVector<Entry> sweden = m_guess->guess(question, 10).entries;
        const auto old =
            std::find_if(sweden.begin(), sweden.end(), [](const Entry &entry) { return has(entry, 3027); });
        QVERIFY(old != sweden.end() && !old->isShiftKnown);
    }

    void doubt()
    {
        SystemGuess::Question question;
        question.points = survey(28408, {43.0, 55.0});
        question.stated = QStringLiteral("EPSG:28407");
        const auto raised = m_guess->guess(question, 5).doubt;
        QVERIFY(raised && raised->isRaised && raised->share < 0.5);
        QCOMPARE(raised->fits, QStringLiteral("EPSG:28408"));
        question.stated = QStringLiteral("EPSG:28408");
        const auto none = m_guess->guess(question, 5).doubt;
        QVERIFY(none && !none->isRaised && none->share == 1.0);
        question.stated = QStringLiteral("EPSG:999999");
        QVERIFY(!m_guess->guess(question, 5).doubt);
    }

    /// Names of places as the search reads them: areas of countries and regions, towns as points.
    void places_data()
    {
        const support::Columns<QString, QPointF, double> row; // name, inside, widest in degrees, 0: a point
        row("country", "romania", QPointF(25.0, 46.0), 15.0);
        row("in Russian", "в Румынии", QPointF(25.0, 46.0), 15.0);
        row("in its own language", "Deutschland", QPointF(10.5, 51.0), 15.0);
        row("across the 180th meridian", "Fiji", QPointF(178.0, -17.8), 20.0);
        row("around half the world", "россия", QPointF(100.0, 60.0), 180.0);
        row("large", "USA", QPointF(-98.0, 39.0), 150.0);
        row("region", "texas", QPointF(-99.0, 31.0), 20.0);
        row("town in a country", "Vladimir, Russia", QPointF(40.4, 56.14), 0.0);
        row("town with a slip", "Krasnoyarks", QPointF(92.9, 56.0), 0.0);
        row("country with a slip", "portugla", QPointF(-8.0, 39.5), 30.0);
    }

    void places()
    {
        const auto [name, inside, widest] = support::row<QString, QPointF, double>();
        const auto area = m_guess->areaNamed(name);
        QVERIFY(area && area->width() <= widest && (area->width() > 0.0) == (widest > 0.0));
        const QRectF around = area->adjusted(-0.3, -0.3, 0.3, 0.3);
        QVERIFY(around.contains(inside) || around.contains(inside + QPointF(360.0, 0.0)));
        if (widest == 0.0 || widest > 20.0)
            return;
        SystemGuess::Question question;
        question.points = survey(4326, inside);
        const QVector<Entry> entries = m_guess->guessIn(*area, question, 1).entries;
        QVERIFY(!entries.isEmpty() && has(entries.first(), 4326) && entries.first().distanceM == 0.0);
    }

    /// A country's data go before those of a neighbour that its box holds, whatever language names it.
    void countries_data()
    {
        const support::Columns<QString, QPointF, int> row; // named, inside, code
        row("Russia's box holds Lithuania", "Russia", QPointF(37.6, 55.7), 32637);
        row("in Russian", "Россия", QPointF(49.1, 55.8), 28409);
        row("Kaliningrad beside it", "РФ", QPointF(20.5, 54.7), 20904);
        row("Germany", "Германия", QPointF(11.6, 48.1), 25832);
        row("Austria", "Österreich", QPointF(14.3, 48.3), 31255);
        row("Norway beside Sweden", "Норвегия", QPointF(10.7, 59.9), 25832);
        row("Sweden beside Norway", "Sweden", QPointF(13.0, 59.4), 3006);
        row("Portugal in Spain's box", "España", QPointF(-3.7, 40.4), 25830);
        row("Texas", "texas", QPointF(-97.7, 30.3), 2277);
    }

    void countries()
    {
        const auto [name, place, code] = support::row<QString, QPointF, int>();
        SystemGuess::Question question;
        question.points = survey(code, place);
        const auto answer = m_guess->guessNear(name, question, 3);
        QVERIFY(answer && !answer->entries.isEmpty());
        QVERIFY2(has(answer->entries.first(), code),
                 qPrintable(answer->entries.first().members.first().name));
    }

    void nothing()
    {
        SystemGuess::Question question;
        QVERIFY(m_guess->guess(question, 5).entries.isEmpty());
        question.points << QPointF(1e12, -1e12) << QPointF(INFINITY, 0.0);
        QVERIFY(m_guess->guess(question, 5).entries.isEmpty());
        QVERIFY(!m_guess->placeNamed(QStringLiteral("Nowhereville")));
        QVERIFY(!m_guess->guessNear(QStringLiteral("Nowhereville"), question, 5));
        QVERIFY(!m_guess->placeNamed(QStringLiteral("400, 95")));
        QCOMPARE(*m_guess->placeNamed(QStringLiteral("37.6, 55.7")), QPointF(37.6, 55.7));
        QCOMPARE(m_guess->placeNamed(QStringLiteral("Москва")),
                 m_guess->placeNamed(QStringLiteral("moscow")));
    }

    /// The shipped table has what the database would give now.
    void table()
    {
        QFile shipped(support::resources().filePath(QStringLiteral("system-planes.tsv")));
        QVERIFY(shipped.open(QIODevice::ReadOnly));
        int rows = 0;
        int wrong = 0;
        int number = 0;
        for (const QByteArray &line : shipped.readAll().split('\n')) {
            const QList<QByteArray> cells = line.split('\t');
            if (cells.size() < 9 || !cells.at(1).startsWith("EPSG:") || ++number % 97 != 0)
                continue;
            ++rows;
            const int code = cells.at(1).mid(5).toInt();
            QRectF area = ProjLibMetadata().rectWgs84ForCrs(code, ProjLibMetadata::EPSG);
            if (area.width() < 0.0)
                area.setWidth(area.width() + 360.0);
            const CoordSystemPtr system = m_factory->createFromEpsg(code);
            const QRectF box(QPointF(cells.at(5).toDouble(), cells.at(6).toDouble()),
                             QPointF(cells.at(7).toDouble(), cells.at(8).toDouble()));
            QPointF centre = area.center();
            centre.setX(std::remainder(centre.x(), 360.0));
            QPointF inPlane;
            const CoordTransform way(m_factory->latLongWgs84CoordSystem(), system);
            const double shift = 500.0 / cells.at(4).toDouble(); // the datum's
            wrong +=
                way.forward(centre, inPlane) && !box.adjusted(-shift, -shift, shift, shift).contains(inPlane);
        }
        QVERIFY(rows > 40);
        QCOMPARE(wrong, 0);
    }

private:
    /// Eight points some kilometres around a place, in the system's coordinates.
    QVector<QPointF> survey(int code, const QPointF &place) const
    {
        const CoordTransform way(m_factory->latLongWgs84CoordSystem(), m_factory->createFromEpsg(code));
        QVector<QPointF> points;
        for (int i = 0; i < 8; ++i) {
            QPointF point;
            const QPointF at(place.x() + 0.0093 * (i % 3) - 0.009, place.y() + 0.0077 * (i / 3) - 0.008);
            if (way.forward(at, point))
                points << point;
        }
        return points;
    }
    static double packed(double degrees)
    {
        const double minutes = (degrees - std::floor(degrees)) * 60.0;
        return std::floor(degrees) * 10000.0 + std::floor(minutes) * 100.0 +
               (minutes - std::floor(minutes)) * 60.0;
    }
    static QPointF changed(const QPointF &point, const QString &change)
    {
        if (change == QLatin1String("swapped"))
            return {point.y(), point.x()};
        if (change == QLatin1String("kilometres"))
            return point / 1000.0;
        if (change == QLatin1String("feet"))
            return point / 0.3048;
        if (change == QLatin1String("prefix missing"))
            return {std::fmod(point.x(), 1e6), point.y()};
        if (change == QLatin1String("prefix added"))
            return {37e6 + point.x(), point.y()};
        if (change == QLatin1String("dms"))
            return {packed(point.x()), packed(point.y())};
        return point;
    }
    static QString inputFor(const SystemGuess::Member &member)
    {
        return member.code.isEmpty() ? member.name : member.code;
    }
    static bool has(const Entry &entry, int code)
    {
        const QString text = QStringLiteral("EPSG:%1").arg(code);
        return std::any_of(entry.members.begin(), entry.members.end(),
                           [&](const SystemGuess::Member &member) { return member.code == text; });
    }

    std::shared_ptr<CoordSysFactory> m_factory;
    std::shared_ptr<const SystemGuess> m_guess;
};

NIVORA_TEST(TestGuess)
#include "tst_guess.moc"
