#include <coordsys/MapinfoCoordSystem.h>

#include <support/Support.h>

#include <QTextCodec>

#include <atomic>
#include <future>
#include <thread>

using namespace nivora::cs;

namespace {

CoordSystemPtr bare(const QString &) { return std::make_shared<CoordSystem>(); }

CoordSystemPtr shipped(const QString &prj)
{
    if (prj.contains("broken"_s))
        throw std::runtime_error("no % system %1");
    return support::shippedFactory()->createWithoutDescription(prj);
}

} // namespace

class TestMapinfoCoordSystem : public QObject
{
    Q_OBJECT
private Q_SLOTS:
    void encodings_data()
    {
        const support::Columns<QByteArray, QString, QString> row;
        const QString text = "\"---Россия---\"\n\"Пулково\", 1, 1001\n"_s;
        const QByteArray windows = QTextCodec::codecForName("Windows-1251")->fromUnicode(text);
        const QByteArray ascii("\"---World---\"\n\"Пулково\", 1, 1001\n");
        // clang-format off
        row("UTF-8", text.toUtf8(), "Россия"_s, "Пулково"_s);
        row("UTF-8 with byte order mark", "\xEF\xBB\xBF" + text.toUtf8(), "Россия"_s, "Пулково"_s);
        row("Windows-1251", windows, "Россия"_s, "Пулково"_s);
        row("plain heading, UTF-8", ascii, "World"_s, "Пулково"_s);
        row("plain heading, UTF-8 with mark", "\xEF\xBB\xBF" + ascii, "World"_s, "Пулково"_s);
        row("first line empty: UTF-8 whatever follows", "\n" + windows, QString(6, QChar(0xFFFD)), QString(7, QChar(0xFFFD)));
        // clang-format on
    }
    void encodings()
    {
        const auto [content, heading, name] = support::row<QByteArray, QString, QString>();
        write(content);
        const support::LogCapture quiet;
        MapinfoCoordSystem catalogue(bare);
        QVERIFY(catalogue.loadFromPRJ(QDir(m_dir.path()), "ru"_s));
        QCOMPARE(catalogue.projectionList().size(), 1);
        QCOMPARE(catalogue.projectionList().at(0).name, heading);
        QCOMPARE(catalogue.projectionList().at(0).entries.at(0).name(), name);
    }

    void categories()
    {
        write("\"A\", 1, 0\nrejected\n\"---dropped---\"\n\"---B---\"\n\"B1\\p1\", 8\n\"B2\", "
              "8\n\"---last---\"\n");
        const support::LogCapture log;
        MapinfoCoordSystem catalogue(bare);
        catalogue.loadFromPRJ(m_file);
        QCOMPARE(catalogue.projectionList().size(), 2);
        QVERIFY(catalogue.projectionList().at(0).name.isNull());
        QCOMPARE(catalogue.projectionList().at(1).name, "B"_s);
        QCOMPARE(catalogue.projectionList().at(1).entries.size(), 2);

        VERIFY_THROWS(std::runtime_error, catalogue.loadFromPRJ(QDir(m_dir.path()), "xx"_s),
                      "Не могу открыть файл projections_xx.prj");
        const CoordSystemPtr kept = catalogue.getProj(1, 0);
        write("\"------\"\n\"C\", 1, 104\n");
        catalogue.loadFromPRJ(m_file);
        QCOMPARE(catalogue.projectionList().size(), 3);
        QVERIFY(!catalogue.projectionList().at(2).name.isNull());
        QCOMPARE(catalogue.getProj(1, 0), kept);
        QCOMPARE(log.lines("debug"_s),
                 QStringList({"Категорий: 2, Проекций: 3"_s, "Категорий: 3, Проекций: 1"_s}));
        QCOMPARE(log.lines("info"_s).at(0), "Файл с проекциями: "_s + m_file.absoluteFilePath());
    }

    void strings()
    {
        write("\"A\\p4326\", 1, 104\n\"plan\", 0, 7\n\"word\", x, 7\n\"second\\p4326\", 1, 0\n");
        const support::LogCapture quiet;
        MapinfoCoordSystem catalogue(bare);
        catalogue.loadFromPRJ(m_file);
        QCOMPARE(catalogue.getStrMB(0, 0), "Earth Projection 1, 104"_s);
        QCOMPARE(catalogue.projectionList().at(0).entries.at(0).asPrjString(), "Earth Projection 1,104"_s);
        QCOMPARE(catalogue.getStrMB(0, 1), "NonEarth 0, 7"_s);
        QCOMPARE(catalogue.getStrMB(0, 2), "NonEarth x, 7"_s);
        QCOMPARE(catalogue.seekByEPSG(4326), catalogue.getStrMB(0, 0));
        QVERIFY(catalogue.seekByEPSG(4327).isNull());

        const QString noCategory = "Каталог координатных систем MapInfo не содержит категории с номером %1"_s;
        const QString noEntry =
            "Каталог координатных систем MapInfo не содержит координатной системы с индексом 0,%1"_s;
        VERIFY_THROWS(std::out_of_range, catalogue.getStrMB(-1, 0), noCategory.arg(-1));
        VERIFY_THROWS(std::out_of_range, catalogue.getProj(1, 0), noCategory.arg(1));
        VERIFY_THROWS(std::out_of_range, catalogue.getProj({0, -1}), noEntry.arg(-1));
        VERIFY_THROWS(std::out_of_range, catalogue.tryAddToCache(0, 4), noEntry.arg(4));
    }

    void cache()
    {
        write("\"A %1\\p4326\", 1, 104\n\"B\", 1, 0\n");
        const support::LogCapture quiet;
        QStringList asked;
        MapinfoCoordSystem catalogue([&](const QString &prj) {
            asked << prj;
            return bare(prj);
        });
        catalogue.loadFromPRJ(m_file);
        const CoordSystemPtr first = catalogue.getProj(0, 0);
        QCOMPARE(first->description(), "A %1"_s);
        QCOMPARE(first->epsg(), 4326);
        QCOMPARE(catalogue.getProj({0, 0}), first);
        QCOMPARE(asked, QStringList{"Earth Projection 1, 104"_s});
        QVERIFY(catalogue.tryAddToCache(0, 0) != first); // built anew, but the first stays in the cache
        QCOMPARE(catalogue.getProj(0, 0), first);

        MapinfoCoordSystem withoutCreator(nullptr);
        withoutCreator.loadFromPRJ(m_file);
        QVERIFY_EXCEPTION_THROWN(withoutCreator.getProj(0, 0), std::bad_function_call);
    }

    void brokenEntry()
    {
        write("\"bad\", 1, broken\n\"---B---\"\n\"WGS 84\", 1, 104\n");
        QVERIFY(support::shippedFactory());
        const CoordSystemPtr wgs = shipped("Earth Projection 1, 104"_s);
        MapinfoCoordSystem catalogue(shipped);
        const support::LogCapture log;
        catalogue.loadFromPRJ(m_file);
        for (int round = 0; round < 2; ++round)
            QCOMPARE(catalogue.seekProj(*wgs, true), MapinfoCoordSystem::Position(1, 0));
        QCOMPARE(catalogue.seekProj(CoordSystemPtr(), true), MapinfoCoordSystem::PairNone);
        QCOMPARE(log.lines("error"_s), QStringList{"no % system %1 (Earth Projection 1, broken)"_s});
        VERIFY_THROWS(std::runtime_error, catalogue.getProj(0, 0), "no % system %1");
    }

    /// Bytes of another encoding, a line that is no entry, an entry twice, an end that is cut off: what can
    /// be read is read, and nothing is said.
    void brokenFile()
    {
        write("\"---A---\"\n\"\xCF\xF1\xEA\", 1, 104\n\"no values\",\nnone\n\"B\\p4326\", 1, 104\n"
              "\"B\\p4326\", 1, 104\n\"zero\", 1, 0\n\"cut\", 8, 104, 7, 3");
        QVERIFY(support::shippedFactory());
        MapinfoCoordSystem catalogue(shipped);
        const support::LogCapture log;
        QVERIFY(catalogue.loadFromPRJ(m_file));
        QVERIFY(log.lines("error"_s).isEmpty());
        QStringList texts;
        for (const CoordSystemParams &entry : catalogue.projectionList().at(0).entries)
            texts << entry.asPrjString();
        const QString wgs = "Earth Projection 1,104"_s;
        QCOMPARE(texts,
                 QStringList({wgs, wgs, wgs, "Earth Projection 1,0"_s, "Earth Projection 8,104,7,3"_s}));
        QCOMPARE(catalogue.seekByEPSG(4326), "Earth Projection 1, 104"_s);
    }

    void clearDuringFill()
    {
        write("\"A\", 1, 104\n\"B\", 1, 0\n\"C\", 1, 0\n");
        const support::LogCapture quiet;
        std::promise<void> started;
        int built = 0;
        int categoriesSeen = 0;
        bool inside = false;
        // The first entry of the fill goes on until clear() has raised its flag, which shows as a null
        // system.
        MapinfoCoordSystem catalogue([&](const QString &prj) {
            if (inside)
                return bare(prj);
            inside = true;
            ++built;
            started.set_value();
            while (catalogue.tryAddToCache(0, 1))
                std::this_thread::yield();
            categoriesSeen = catalogue.projectionList().size();
            inside = false;
            return bare(prj);
        });
        catalogue.loadFromPRJ(m_file);
        catalogue.initInternalCache();
        started.get_future().wait();
        catalogue.clear();
        QCOMPARE(categoriesSeen, 1); // clear() waited before it took them away
        QCOMPARE(built, 1);
        QVERIFY(catalogue.projectionList().isEmpty());
    }

    void fillMeetsBrokenEntry()
    {
        write("\"A\", 1, 104\n\"bad\", 1, 0\n\"C\", 1, 0\n");
        const support::LogCapture quiet;
        std::promise<void> reached;
        std::atomic<int> calls{0};
        MapinfoCoordSystem catalogue([&](const QString &prj) {
            if (++calls < 2)
                return bare(prj);
            reached.set_value();
            throw std::runtime_error("bad");
        });
        catalogue.loadFromPRJ(m_file);
        catalogue.initInternalCache();
        reached.get_future().wait();
        catalogue.clear(); // must not bring the exception out
        QCOMPARE(calls.load(), 2);
    }

    void cleared()
    {
        write("\"A\", 1, 104\n");
        const support::LogCapture quiet;
        MapinfoCoordSystem catalogue(bare);
        catalogue.loadFromPRJ(m_file);
        QVERIFY(catalogue.getProj(0, 0));
        catalogue.clear();
        VERIFY_THROWS(std::out_of_range, catalogue.getProj(0, 0),
                      "Каталог координатных систем MapInfo не содержит категории с номером 0");
        catalogue.loadFromPRJ(m_file);
        QVERIFY(!catalogue.getProj(0, 0));
    }

private:
    void write(const QByteArray &content) { support::writeFile(m_file.filePath(), content); }

    QTemporaryDir m_dir;
    QFileInfo m_file{QDir(m_dir.path()), "projections_ru.prj"_s};
};

NIVORA_TEST(TestMapinfoCoordSystem)
#include "tst_mapinfocoordsystem.moc"
