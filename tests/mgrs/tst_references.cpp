// Grid references: lettering, edges, cutting, and the way back.

#include "support/Support.h"

#include <coordsys/mgrs/mgrs.h>
#include <coordsys/mgrs/utm.h>

#include <proj.h>

#include <cmath>
#include <random>
#include <string>

using namespace mgrs;

namespace {

std::string encodeRad(double lat, double lon, int precision)
{
    char buffer[MGRS_BUFFER_SIZE] = "untouched";
    const int code = Convert_Geodetic_To_MGRS(lat, lon, precision, buffer);
    return code == 0 ? buffer : buffer + std::string(" ") + std::to_string(code);
}

std::string encode(double lat, double lon, int precision = 5)
{
    return encodeRad(proj_torad(lat), proj_torad(lon), precision);
}

// The reference of what another one is read as.
std::string again(const std::string &text, int precision)
{
    double lat = -7, lon = -7;
    const int code = Convert_MGRS_To_Geodetic(text.c_str(), &lat, &lon);
    return code == 0 ? encodeRad(lat, lon, precision) : "code " + std::to_string(code);
}

} // namespace

class TestReferences : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void cleanup() { Set_Ellipsoid_Parameters(6378137.0, 298.257223563); }

    void writes_data()
    {
        const support::Columns<double, double, int, QString> row;
        // The published 630084 E 4833438 N of zone 17; letters by hand: 600 km is the sixth letter from J
        // without O, 4800 km is 48 mod 20 = 8 rows above A.
        row("Toronto, CN Tower", 43.6425667, -79.3871389, 5, "17TPJ3008433438");
        row("Paris, Eiffel Tower", 48.8582, 2.2945, 5, "31UDQ4825111932");
        row("UPS, row and column by hand", -89.3454, -48.9306, 5, "AZN4520747746");
        row("north pole", 90, 17, 5, "ZAH0000000000");
        row("south pole", -90, -17, 0, "BAN");
        row("zone and digits are padded", 0, -177, 2, "01NEA0000");
        row("even zones begin with F", 0, -171, 1, "02NNF00");
        row("just south of the equator", -1e-6, -177, 5, "01MEV0000099999");
        row("its rounding is no south", -1e-14, -177, 5, "01NEA0000000000");
        row("band and zone edges of Norway", 60, 12, 0, "33VUG");
        row("64 is the next band, zone 31 again", 64, 5, 0, "31WEL");
        row("a meridian that is a grid line, west of it", 56, 2.9999999, 5, "31VDC9999906079");
        row("X is twelve degrees high", 83.99999, 0, 0, "31XDP");
        row("84 is UPS", 84, 0, 0, "ZAA");
        row("-80 is UTM", -80, 0, 0, "31CDM");
        row("south of it UPS", -80.00001, 0, 0, "BAZ");
        row("180 and -180 are one, UTM", 0, 180, 0, "01NAA");
        row("just west of it", 0, 179.999999, 0, "60NZF");
        row("360 is 0", 0, 360, 0, "31NAA");
        row("between them", 0, 303, 0, "21NWA");
        row("Svalbard, 9", 72, 9, 0, "33XTV");
        row("Svalbard, just west of 21", 78, 20.999999, 0, "33XXG");
        row("Svalbard, east edge", 75, 42, 0, "38XMJ");
        row("UPS", 89, 180, 5, "ZAJ0000011026");
        row("UPS as -180", 89, -180, 5, "ZAJ0000011026");
        row("latitude", 90.001, 0, 5, "untouched 1");
        row("longitude and precision", 0, 360.001, 6, "untouched 10");
        row("everything", std::nan(""), std::nan(""), -1, "untouched 11");
    }
    void writes()
    {
        const auto [lat, lon, precision, expected] = support::row<double, double, int, QString>();
        QCOMPARE(QString::fromStdString(encode(lat, lon, precision)), expected);
    }

    void leavesTheGridOnAGiant()
    {
        QCOMPARE(Set_Ellipsoid_Parameters(1e8, 300.0), 0);
        QCOMPARE(encode(45, 2), std::string("untouched 192"));
        QCOMPARE(encode(89, 90), std::string("untouched 64"));
    }

    // For points everywhere, every second one close to an edge of a band or zone: the lower precision is cut
    // from the higher, and every reference is read as a point that has this reference, although its cell may
    // be cut by an edge.
    void cutsAndReturns()
    {
        std::mt19937 random(42);
        std::uniform_real_distribution<double> unit(0.0, 1.0);
        const auto nearEdge = [&](double edge) {
            return edge + std::copysign(std::pow(10.0, -9.0 * unit(random)), unit(random) - 0.5);
        };
        for (int i = 0; i < 10000; ++i) {
            double lat = proj_todeg(std::asin(2.0 * unit(random) - 1.0));
            double lon = 540.0 * unit(random) - 180.0;
            if (i % 4 == 0)
                lat =
                    std::clamp(nearEdge(8.0 * std::round(lat / 8.0) + (lat > 80.0 ? 4.0 : 0.0)), -90.0, 90.0);
            if (i % 4 >= 2)
                lon = std::clamp(nearEdge(3.0 * std::round(lon / 3.0)), -180.0, 360.0);
            const std::string full = encode(lat, lon);
            const std::size_t head = full.size() - 10;
            for (std::size_t digits = 0; digits <= 5; ++digits) {
                const std::string cut = encode(lat, lon, static_cast<int>(digits));
                QCOMPARE(cut, full.substr(0, head + digits) + full.substr(head + 5, digits));
                QCOMPARE(again(cut, static_cast<int>(digits)), cut);
            }
        }
    }

    // Corners of cells through degrees, where rounding falls on either side.
    void edgesDoNotFlip()
    {
        std::mt19937 random(7);
        std::uniform_int_distribution<int> metre(0, 99999);
        for (const char *square : {"60GXV", "31NEA", "37UDB", "33XVG", "ZAH", "BKP"})
            for (int i = 0; i < 500; ++i) {
                const std::string digits =
                    std::to_string(10000000000 + metre(random) * 100000LL + metre(random));
                const std::string text = square + digits.substr(1);
                double lat = 0, lon = 0;
                QCOMPARE(Convert_MGRS_To_Geodetic(text.c_str(), &lat, &lon), 0);
                const double east = proj_todeg(lon) < 0 ? proj_todeg(lon) + 360.0 : proj_todeg(lon);
                QCOMPARE(encode(proj_todeg(lat), proj_todeg(lon)), text);
                QCOMPARE(encode(proj_todeg(lat), east), text);
            }
    }

    void readsTheCorner()
    {
        double lat = 0, lon = 0, x = 0, y = 0;
        int zone = 0;
        char hemisphere = 0;
        QCOMPARE(Convert_MGRS_To_Geodetic("31UDQ4825111932", &lat, &lon), 0);
        QCOMPARE(Convert_Geodetic_To_UTM(lat, lon, &zone, &hemisphere, &x, &y), 0);
        QVERIFY(zone == 31 && hemisphere == 'N');
        QVERIFY(std::hypot(x - 448251.0, y - 5411932.0) < 1e-6);
        // Greenwich cuts the square's south-west corner off: the point moves along the south edge and no
        // further.
        QCOMPARE(Convert_MGRS_To_Geodetic("31NAB", &lat, &lon), 0);
        QCOMPARE(Convert_Geodetic_To_UTM_Zone(lat, lon, 31, &hemisphere, &x, &y), 0);
        QVERIFY(std::fabs(lon) < 1e-15 && std::fabs(y - 100000.0) < 1e-6);
        // 64 degrees north is 7097014.6 m on this meridian: the reference names a place of the next band.
        QCOMPARE(QString::fromStdString(again("32VNR0000098000", 5)), "32WNR0000098000"_s);
        // 290 km is 30 km west of the zone at 59 degrees, inside the overlap.
        QCOMPARE(QString::fromStdString(again("33VTF9000050000", 0)).left(3), "32V"_s);
    }

    void reads()
    {
        QCOMPARE(again("31udq4825111932", 5), std::string("31UDQ4825111932"));
        QCOMPARE(again(" 31 U\tD Q 48251 11932 ", 5), std::string("31UDQ4825111932"));
        QCOMPARE(again("31UDQ 4811", 5), std::string("31UDQ4800011000")); // padded on the right
        QCOMPARE(again("1NEA0000", 5), std::string("01NEA0000000000"));
        QCOMPARE(again("01NEA", 5), std::string("01NEA0000000000"));
        QCOMPARE(again("zah 00000 00000", 5), std::string("ZAH0000000000"));
    }

    void refuses_data()
    {
        const support::Columns<QByteArray> row;
        const auto rows = [](const char *why, std::initializer_list<const char *> texts) {
            for (const char *text : texts)
                QTest::addRow("%s: %s", why, text) << QByteArray(text);
        };
        row("null", QByteArray());
        rows("too short", {"", "  ", "31", "31U", "31UD", "UDQ1234"});
        rows("digits", {"31UDQ1", "31UDQ123", "31UDQ12345612345", "31UDQ123456123456", "31UDQ 12 3456",
                        "31UDQ 12 34 56", "3 1UDQ", "31UDQ12-34", "31UDQ1234x", "31UDQ12.34"});
        rows("zone", {"00UDQ", "61UDQ", "131UDQ", "4294967327UDQ"});
        rows("band", {"31IDQ", "31ODQ", "31ADQ", "31BDQ", "31YDQ"});
        rows("column of no zone or another one", {"31UIQ", "31UOQ", "31UJQ", "31USQ", "32UDQ"});
        rows("row", {"31UDI", "31UDO", "31UDW", "31UDZ"});
        rows("4500 or 6500 km, never between 48 and 56 degrees", {"31UDF"});
        rows("rows of 8 degrees and more", {"31XAP"});
        rows("far west of the zone", {"31NAL"});
        rows("zone that Svalbard does without", {"32XNH", "34XDH", "36XDH"});
        rows("UPS column of the other side or none", {"ZRH", "YAH", "AMN", "BSN", "AON"});
        rows("UPS row", {"ZAQ", "AZI"});
        rows("UPS corner without a place", {"YRA", "AJA"});
    }
    void refuses()
    {
        const auto [text] = support::row<QByteArray>();
        double lat = -7, lon = -7;
        QCOMPARE(Convert_MGRS_To_Geodetic(text.isNull() ? nullptr : text.constData(), &lat, &lon), 4);
        QVERIFY(lat == -7 && lon == -7);
    }
};

NIVORA_TEST(TestReferences)
#include "tst_references.moc"
