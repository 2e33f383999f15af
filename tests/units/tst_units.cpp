#include <coordsys/LinearUnitValue.h>
#include <coordsys/MapUnits.h>
#include <coordsys/ProjectionParamsManager.h>

#include <support/Support.h>

#include <cmath>

using namespace nivora::cs;

class TestUnits : public QObject
{
    Q_OBJECT
private Q_SLOTS:
    void refusedValues()
    {
        LinearUnit unit("a"_s, QString(), 0.0); // a zero factor is a factor
        const QString conversion = "conversion"_s;
        VERIFY_THROWS(std::invalid_argument, LinearUnit(QString(), QString(), -1.0), "name");
        VERIFY_THROWS(std::invalid_argument, LinearUnit("a"_s, QString(), -0.1), conversion);
        VERIFY_THROWS(std::invalid_argument, unit.setConversion(std::nan("")), conversion);
        VERIFY_THROWS(std::invalid_argument, unit.setName(QString()), "name");
        QVERIFY(unit.name() == "a"_s && unit.conversion() == 0.0);
        VERIFY_THROWS(UnknownUnitException, throw UnknownUnitException("локоть %1"_s),
                      "Неизвестная единица измерения: локоть %1");
    }

    void identity()
    {
        LinearUnit metre("Meter"_s, QString(), 1.0);
        QVERIFY(!metre.isValid() && MapUnits(metre, metre, metre).isNull());
        metre.setUnitCode(7);
        QVERIFY(metre);
        QVERIFY(!MapUnits(LinearUnit(), LinearUnit(), metre).isNull());
        LinearUnit other("Other"_s, QString(), 0.5);
        other.setUnitCode(7);
        QVERIFY(metre == other && other < metre && !(metre < other));
        other.setLocalizedName(QString(QChar(0x00BA))); // the ordinal sign only looks like it
        QVERIFY(!other.isDegree());
        other.setLocalizedName(QString(QChar(0x00B0)));
        QVERIFY(other.isDegree());
    }

    void valueFindsItsUnit()
    {
        const support::DefaultFactoryKeeper keeper;
        CoordSysFactory::setDefaultCoordSysFactory(nullptr);
        VERIFY_THROWS(std::logic_error, LinearUnitValue(1.0, LinearUnit::Meter), "Не проинициализированы КС");

        const QTemporaryDir dir;
        const CoordSysFactory factory(QDir(dir.path()), QDir(dir.path()), "ru"_s);
        const CatalogueScope scope(factory);
        MIUnitConvParam km;
        km.setConversion(1000.0);
        km.id = 1;
        MIAreaConvParam area;
        area.setConversion(1e6);
        for (const int id : {1, 19}) {
            area.id = id;
            factory.projectionParamsManager()->appendMIAreaConvParam(area);
        }
        factory.projectionParamsManager()->appendMIUnitConvParam(km);

        LinearUnitValue value(2.0, LinearUnit::Kilometer);
        QCOMPARE(value.value(), 2000.0); // linear units come before area units
        VERIFY_THROWS(UnknownUnitException, value.set(5.0, LinearUnit::Inch),
                      "Неизвестная единица измерения: #2");
        QCOMPARE(value.value(), 2000.0);
        value.set(3.0, static_cast<LinearUnit::MIUnitCode>(19));
        QCOMPARE(value.value(), 3e6);
    }
};

NIVORA_TEST(TestUnits)
#include "tst_units.moc"
