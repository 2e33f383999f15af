#include <coordsys/ProjectionParamsManager.h>

#include <support/Support.h>

#include <cmath>

using namespace nivora::cs;

namespace {

// One record of each kind and a few traps; line numbers matter to skippedEntries().
const char *const catalogueXml = R"(<?xml version="1.0" encoding="UTF-8"?>
<anything>
 <projections><projection id="1" name="Longitude / Latitude"/><whatever id="8" name="TM"/></projections>
 <ellipsoids>
  <ellipsoid id="3" name="Красовский" name_mitab="Krassovsky" semi_major="6378245" inv_flatenning="298.3"/>
  <ellipsoid id="3" name="second" semi_major="1"/>
 </ellipsoids>
 <Datums><datum id="999"/></Datums>
 <datums>
  <datum id="1001" name="Pulkovo 1942" ellipsoid="3" dx="24" dy="-123" dz="-94" rx="-0.02" ry="0.25" rz="0.13" sa="1.1"/>
  <datum id="2001" ellipsoid="3" dx="24" dy="-123" dz="-94" rx="-0.02" ry="0.25" rz="0.13" sa="1.1"/>
  <datum id="86" ellipsoid="3" dx="oops" dy="1,5"/>
  <datum/>
  <!-- the rest is switched off -->
  <datum id="5"/>
 </datums>
 <units>
  <unit id="0" name_mi="mi" name_l10n="миля" descr="Miles" conv="1609.344" name_proj4="mi"/>
  <unit id="7" name_mi="m" name_l10n="м" descr="Meters" conv="1" name_proj4="m"/>
  <unit id="9" name_mi="bad" name_l10n="bad" conv="-1"/>
  <unit id="10" name_l10n="nameless" conv="1"/>
  <unit id="8" name_mi="survey ft" name_l10n="фут США" descr="US survey feet" conv="0.3048006096012192"/>
  <unit id="13" name_mi="degree" name_l10n="°" descr="Degrees"/>
 </units>
 <areas><area id="7" name_mi="sq m" name_l10n="кв. м" conv="1"/></areas>
 <datums><datum id="6"/></datums>
</anything>
)";

} // namespace

class TestProjectionParamsManager : public QObject
{
    Q_OBJECT
private Q_SLOTS:
    void init()
    {
        const support::LogCapture quiet;
        QVERIFY(load(catalogueXml));
    }

    void sections()
    {
        QCOMPARE(m_manager.projectionByID(8)->name, "TM"_s);         // entry names do not matter
        QCOMPARE(m_manager.ellipsoidByID(3)->semi_major, 6378245.0); // the first of two wins
        QCOMPARE(m_manager.ellipsoidByID(3)->name, "Красовский"_s);
        QCOMPARE(m_manager.ellipsoidByID(4), nullptr);

        QStringList ids;
        for (const auto &datum : m_manager.datums())
            ids << QString::number(datum->id);
        // An entry without id is 0; behind the comment nothing is read; a later section appends; the letter
        // case of section names counts.
        QCOMPARE(ids.join(QLatin1Char(' ')), "1001 2001 86 0 6"_s);
        QCOMPARE(m_manager.datumByID(1001)->rz, 0.13);
        QCOMPARE(m_manager.datumByID(86)->dx + m_manager.datumByID(86)->dy, 0.0); // no numbers in C form
        QCOMPARE(m_manager.unitByID(13)->conversion(), 0.0);
        QCOMPARE(m_manager.unitByID(7)->unitCode(), 7);
        QCOMPARE(m_manager.unitByDescr("US survey feet"_s)->id, 8);
        QCOMPARE(m_manager.unitByDescr("us survey feet"_s), nullptr);
    }

    void skippedEntries()
    {
        const support::LogCapture log;
        QVERIFY(load(catalogueXml));
        const QStringList errors = log.lines("error"_s);
        const QString message = "Строка %1: Не удалось добавить линейную единицу измерения: Ошибка %2"_s;
        QCOMPARE(errors, QStringList({message.arg("20"_s, "conversion"_s), message.arg("21"_s, "name"_s)}));
        QCOMPARE(m_manager.unitByID(9, std::nothrow), nullptr);
        QVERIFY(log.lines().contains("debug: projections=2, ellipsoids=2, datums=5, lunits=4, aunits=1"_s));
        QVERIFY(log.lines().contains("info: Файл с параметрами проекций: "_s + path()));
    }

    void unusableFiles()
    {
        const QByteArray whole(catalogueXml);
        const QByteArray cutOff = whole.left(whole.indexOf("<units>")); // half a catalogue is none
        {
            const support::LogCapture log;
            QVERIFY(load(cutOff)); // it could be opened
            QVERIFY(m_manager.projections().empty() && m_manager.ellipsoids().empty());
        }
        const support::LogCapture log;
        QVERIFY(load(catalogueXml));
        QVERIFY(QFile::remove(path()));
        QVERIFY(!m_manager.initFromXML(QDir(m_dir.path()), "ru"_s));
        QVERIFY(m_manager.linearUnits().empty());
        QCOMPARE(log.lines().last(), "error: Не могу открыть файл "_s + path());
    }

    void unitByName()
    {
        const auto id = [this](const char *name) {
            const MIUnitConvParam *unit = m_manager.unitByName(QString::fromUtf8(name), std::nothrow);
            return unit ? unit->id : -1;
        };
        QCOMPARE(id("\"m\""), 7);
        QCOMPARE(id("\"survey ft\""), 8);
        QCOMPARE(id("миля"), 0);
        QCOMPARE(id("M"), -1); // letter case counts
        QCOMPARE(id("7"), 7);
        QCOMPARE(id("7x"), 0); // begins like a number: 0
        QCOMPARE(id("\"7\""), -1);
    }

    void otherLookUps()
    {
        const QString text = "Неизвестная единица измерения: %1"_s;
        VERIFY_THROWS(UnknownUnitException, m_manager.unitByID(99), text.arg("#99"_s));
        VERIFY_THROWS(UnknownUnitException, m_manager.unitByName("M"_s), text.arg("M"_s));
        VERIFY_THROWS(UnknownUnitException, m_manager.areaUnitByID(0), text.arg("#0"_s));
        VERIFY_THROWS(UnknownUnitException, m_manager.areaUnitByName("7"_s), // no number form
                      text.arg("7"_s));
        QCOMPARE(m_manager.areaUnitByName("кв. м"_s)->id, 7);
        QCOMPARE(m_manager.areaUnitByName("\"sq m\""_s, std::nothrow), nullptr); // quotes count

        QCOMPARE(m_manager.coordinateUnits().size(), 4);
        QCOMPARE(m_manager.distanceUnits().size(), 3);
        for (const LinearUnit &unit : m_manager.distanceUnits())
            QVERIFY(!unit.isDegree());
    }

    void findDatumByParams()
    {
        // Relative 1e-12 of 24 m is far below what the file can write.
        const std::array<double, 3> shift{24, -123, -94};
        const std::array<double, 3> rotation{-0.02, 0.25, 0.13};
        QCOMPARE(m_manager.findDatumByParams(3, shift, rotation, 1.1, 0), 1001);
        QCOMPARE(m_manager.findDatumByParams(3, {24 * (1 + 5e-13), -123, -94}, rotation, 1.1, 0), 1001);
        QCOMPARE(m_manager.findDatumByParams(3, {24 * (1 + 5e-12), -123, -94}, rotation, 1.1, 0), -1);
        QCOMPARE(m_manager.findDatumByParams(3, shift, {0.02, -0.25, -0.13}, 1.1, 0), -1);
        QCOMPARE(m_manager.findDatumByParams(4, shift, rotation, 1.1, 0), -1);
        QCOMPARE(m_manager.findDatumByParams(3, shift, rotation, 1.1, 2.337229166667), -1); // Paris
        QCOMPARE(ProjectionParamsManager().findDatumByParams(0, {}, {}, 0, 0), -1);
    }

    void shiftKinds()
    {
        const auto kinds = [](double dy, double rx, double sa) {
            MIDatumParam datum;
            datum.dy = dy;
            datum.rx = rx;
            datum.sa = sa;
            datum.pm = 2.0; // takes no part
            return std::make_pair(datum.has3Params(), datum.has7Params());
        };
        const auto none = std::make_pair(false, false), three = std::make_pair(true, false),
                   seven = std::make_pair(true, true);
        QCOMPARE(kinds(0.0, 0.0, 0.0), none);
        QCOMPARE(kinds(0.0, 1.0, 0.0), none); // rotation alone does not count
        QCOMPARE(kinds(1e-12, 0.0, 0.0), none);
        QCOMPARE(kinds(-1e-11, 0.0, 0.0), three);
        QCOMPARE(kinds(1.0, 0.0, -0.1), seven);
        QCOMPARE(kinds(std::nan(""), std::nan(""), 0.0), seven); // what is no number counts
    }

private:
    bool load(const QByteArray &xml)
    {
        support::writeFile(path(), xml);
        return m_manager.initFromXML(QDir(m_dir.path()), "ru"_s);
    }
    QString path() const { return QDir(m_dir.path()).filePath("projection_ru.xml"_s); }

    QTemporaryDir m_dir;
    ProjectionParamsManager m_manager;
};

NIVORA_TEST(TestProjectionParamsManager)
#include "tst_projectionparamsmanager.moc"
