#include <coordsys/MapHeaderCoordsysConverter.h>
#include <coordsys/ProjectionParamsManager.h>

#include <support/Support.h>

#include <QDataStream>

#include <random>

using namespace nivora::cs;

namespace {

/// The record bit by bit.
QByteArray bits(const TABProjInfo_t &r)
{
    QByteArray bytes;
    QDataStream out(&bytes, QIODevice::WriteOnly);
    out << r.nProjId << r.nEllipsoidId << r.nUnitsId << r.nDatumId << r.nAffineFlag << r.nAffineUnits
        << r.nBoundsFlag << r.dDatumShiftX << r.dDatumShiftY << r.dDatumShiftZ << r.dXMin << r.dYMin
        << r.dXMax << r.dYMax;
    for (int i = 0; i < 6; ++i)
        out << r.adProjParams[i] << r.dAffineParams[i];
    for (const double parameter : r.adDatumParams)
        out << parameter;
    return bytes;
}

/// Figures of every size, with and without exponent, and the awkward ones.
class Figures
{
public:
    QString next()
    {
        static const char *const awkward[] = {"0",     "-0",    "1e-05", "-2.5E+3", "4.9e-324",
                                              "1e300", "1e999", "007",   "-.5"};
        const auto pick = m_random() % 40;
        if (pick < std::size(awkward))
            return QString::fromLatin1(awkward[pick]);
        const double value = std::uniform_real_distribution<double>(-1.0, 1.0)(m_random) *
                             std::pow(10.0, static_cast<double>(pick % 9));
        return QString::number(value, pick % 2 ? 'g' : 'f', pick % 3 ? 17 : 3);
    }
    QString next(int count)
    {
        QString list;
        for (int i = 0; i < count; ++i)
            list += ", "_s + next();
        return list;
    }

private:
    std::mt19937 m_random{20221121};
};

} // namespace

class TestMapHeaderCoordsysConverter : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void initTestCase() { QVERIFY(support::shippedFactory()); }

    void readAndWrite_data()
    {
        const support::Columns<QString, QString> row;
        // clang-format off
        row("bare earth, no unit where none is needed", "CoordSys Earth", "1, 0");
        row("capitals", "COORDSYS EARTH PROJECTION 10, 104, \"SURVEY FT\", 39", "10, 104, \"survey ft\", 39");
        row("missing parameters are not left out", "8, 104, 8, 39", "8, 104, \"survey ft\", 39, 0, 0, 0, 0");
        row("nor taken from a clause", "2, 104, 7 Affine Units \"ft\", 1, 2, 3, 4, 5, 6",
            "2, 104, \"m\", 0, 0 Affine Units \"ft\", 1, 2, 3, 4, 5, 6");
        row("unit missing", "10, 104 Bounds (0, 0) (1, 1)", "10, 104, \"m\", 0 Bounds (0, 0) (1, 1)");
        row("unknown unit is the metre", "10, 104, \"x%1\", nan", "10, 104, \"m\", 0");
        row("ten tokens: the shift only", "2, 9999, 3, 1, 2, 3, 7, 5, 6, 7", "2, 9999, 3, 1, 2, 3, 0, 0, 0, 0, 0, \"m\", 5, 6");
        row("eleven: all of the datum", "1, 9999, 3, 1, 2, 3, 4, 5, 6, 7, 8", "1, 9999, 3, 1, 2, 3, 4, 5, 6, 7, 8");
        row("no exponents, no minus zero", "2, 999, 3, 1e-5, -0, 1e3, 7, 1e-7, 5", "2, 999, 3, 0.00001, 0, 1000, \"m\", 0.0000001, 5");
        row("thousands become clauses", "3001, 104, 7, 3, 1, 2, 3, 4, 5, 6, 9, 8, 0, 0",
            "1, 104, \"m\" Affine Units \"ft\", 1, 2, 3, 4, 5, 6 Bounds (0, 0) (9, 8)");
        row("zero width is no bounds", "1, 104 Bounds (5, 0) (5, 1)", "1, 104");
        row("plan", "CoordSys NonEarth Units \"parsec\" Bounds (0, 0) (1, 2)", "NonEarth Units \"m\" Bounds (0, 0) (1, 2)");
        row("plan by number", "NonEarth 0, 8", "NonEarth Units \"survey ft\"");
        row("plan, affine before its unit",
            "NonEarth Affine Units \"ft\", 1, 2, 3, 4, 5, 6 Units \"survey ft\" Bounds (0, 0) (1, 2)",
            "NonEarth Units \"survey ft\" Affine Units \"ft\", 1, 2, 3, 4, 5, 6 Bounds (0, 0) (1, 2)");
        row("bounds behind the datum", "2001, 104, -180, -90, 180, 90", "1, 104 Bounds (-180, -90) (180, 90)");
        row("the affine unit is not the system's", "1001, 104, \"ft\", 1, 2, 3, 4, 5, 6", "1, 104 Affine Units \"ft\", 1, 2, 3, 4, 5, 6");
        row("a comma before the thousands", "Earth Projection, 2001, 999, 3, 1, 2, 3, 7, 0, 0, 9, 8",
            "1, 999, 3, 1, 2, 3, \"m\" Bounds (0, 0) (9, 8)");
        row("announced, then in words",
            "3010, 104 Affine Units \"ft\", 1, 2, 3, 4, 5, 6 Bounds (0, 0) (9, 8)",
            "10, 104, \"m\", 0 Affine Units \"ft\", 1, 2, 3, 4, 5, 6 Bounds (0, 0) (9, 8)");
        row("seven own parameters", "2035, 104, 7, 1, 2, 3, 4, 5, 6, 7, 0, 0, 9, 8", "35, 104, \"m\", 1, 2, 3, 4, 5, 6 Bounds (0, 0) (9, 8)");
        row("a clause is no part of the datum", "1, 9999, 3, 1, 2, 3 Affine Units \"ft\", 1, 2, 3, 4, 5, 6",
            "1, 9999, 3, 1, 2, 3, 0, 0, 0, 0, 0 Affine Units \"ft\", 1, 2, 3, 4, 5, 6");
        // clang-format on
    }
    void readAndWrite()
    {
        const auto [prj, text] = support::row<QString, QString>();
        const MapHeaderCoordsysConverter converter;
        const QString expected = text.startsWith(QLatin1Char('N')) ? text : "Earth Projection "_s + text;
        QCOMPARE(converter.tabProjInfoToString(converter.prjStrToTABProjInfo(prj)), expected);
        VERIFY_THROWS(std::logic_error, converter.tabProjInfoToString({}), "Не проинициализированы КС");
    }

    void refuse_data()
    {
        const support::Columns<QString, QString> row;
        const char *const few = "Недостаточно параметров в строке prj";
        const char *const kind = "Не могу определить тип КС";
        const char *const datum = "Не могу определить дополнительные параметры датума";
        // clang-format off
        row("empty", "", "Пустая входная строка");
        row("one token", "CoordSys Earth Projection 8", few);
        row("plan without unit", "NonEarth Units", few);
        row("only longitude/latitude needs no more", "Earth Projection 8, 104", few);
        row("plan by number without the word", "0, 7", few);
        row("clause cut short", "Earth Projection 8, 104, 7, 39, 0, 1, 500000, 0 Affine Units \"m\", 1, 0, 500", few);
        row("affine unit without quotes", "Earth Projection 1, 104 Affine Units m, 1, 0, 0, 0, 1, 0", few);
        row("no number first", "Earth Projection %1, 104", kind);
        row("second unit without a plan", "Affine Units \"m\", 1, 0, 0, 0, 1, 0 Units \"m\"", kind);
        row("plan's unit missing behind affine", "NonEarth Affine Units \"m\", 1, 0, 0, 0, 1, 0", "Не могу определить единицы измерения.");
        row("seven taken from the parameters", "1008, 104, 7, 39, 0, 1, 500000, 0, 1, 2, 3", few);
        row("one too many", "2008, 104, 7, 39, 0, 1, 500000, 0, 0, 0, 9, 8, 7", few);
        row("one too few", "3001, 104, 7, 1, 2, 3, 4, 5, 6, 9, 8, 0", few);
        row("only longitude/latitude may lack its unit", "2000, 104, 0, 0, 9, 8", few);
        row("a plan's 1000 is no 0", "NonEarth 2000, 7, 0, 0, 9, 8", few);
        row("more than 10000 says", "11008, 104, 7, 39, 0, 1, 0, 0, 7, 1, 2, 3, 4, 5, 6", few);
        row("user datum cut short", "2010, 999, 3, 1, 2, 3, 7, 0, 0, 9, 8", few);
        row("bounds for a datum", "1, 999 Bounds (0, 0) (1, 1)", datum);
        row("tab is no separator", "Earth\tProjection 1, 104", kind);
        row("projection unknown", "Earth Projection 36, 104, 7", "Неверное значение проекции:36");
        row("thousands stay in the message", "Earth Projection 1036, 104, 7", "Неверное значение проекции:1036");
        row("number beyond an int", "Earth Projection 99999999999, 104, 7", "Неверное значение проекции:99999999999");
        row("datum unknown", "Earth Projection 1, 160", datum);
        row("datum beyond a short", "Earth Projection 1, 65640", datum); // 104 in the low bits
        row("user datum without figures", "Earth Projection 1, 999, 3, 1", datum);
        row("ellipsoid beyond a byte", "Earth Projection 1, 999, 259, 1, 2, 3", datum);
        row("affine unit unknown", "Earth Projection 1, 104 Affine Units \"%1\", 1, 0, 0, 0, 1, 0", "unitCode");
        row("affine unit is a fraction", "Earth Projection 1001, 104, 7, 0.5, 1, 0, 0, 0, 1, 0", "unitCode");
        // clang-format on
    }
    void refuse()
    {
        const auto [prj, message] = support::row<QString, QString>();
        const MapHeaderCoordsysConverter converter;
        if (message == "unitCode"_s)
            VERIFY_THROWS(std::invalid_argument, converter.prjStrToTABProjInfo(prj), message);
        else if (message.startsWith("Недостаточно"_s))
            VERIFY_THROWS(NotEnoughtParamsException, converter.prjStrToTABProjInfo(prj), message);
        else
            VERIFY_THROWS(std::logic_error, converter.prjStrToTABProjInfo(prj), message);
    }

    void law_data()
    {
        const support::Columns<QString, int> row; // datum: "#n": n figures follow
        row("by number", "1001"_s, 0);
        row("own meridian", "1002"_s, 0);
        row("999", "999, 3"_s, 3);
        row("9999", "9999, 15"_s, 8);
    }

    // What is written reads back as the same record, for every projection, unit and form of the clauses.
    void law()
    {
        const auto [datum, figures] = support::row<QString, int>();
        const MapHeaderCoordsysConverter converter;
        Figures figure;
        const QString units[] = {{}, ", \"m\""_s, ", \"survey ft\""_s, ", 0"_s};
        for (int projection = 0; projection <= 35; ++projection) {
            for (const QString &unit : units) {
                for (int form = 0; form < 8; ++form) { // bit 0 affine, bit 1 bounds, bit 2 by thousands
                    const bool affine = form & 1;
                    const bool bounds = form & 2;
                    const bool thousands = form & 4;
                    QString prj = "CoordSys Earth Projection %1, "_s.arg(
                        projection + (thousands ? 1000 * (affine + 2 * bounds) : 0));
                    prj += datum + figure.next(figures) + unit;
                    if (!unit.isEmpty())
                        prj += figure.next(paramForPrj(projection));
                    if (affine)
                        prj += (thousands ? ", \"li\""_s : " Affine Units \"li\""_s) + figure.next(6);
                    if (bounds && thousands)
                        prj += figure.next(4);
                    else if (bounds)
                        prj += " Bounds (%1, %2) (%3, %4)"_s.arg(figure.next(), figure.next(), figure.next(),
                                                                 figure.next());
                    if (projection != 1 && unit.isEmpty() && (form > 4 || (figures == 0 && form % 4 == 0)))
                        continue; // refused: two tokens, or clauses in place of the parameters

                    TABProjInfo_t expected = converter.prjStrToTABProjInfo(prj);
                    const QString written = converter.tabProjInfoToString(expected);
                    if (projection == 0) { // a plan has no datum
                        expected.nDatumId = -1;
                        expected.nEllipsoidId = 255;
                        expected.dDatumShiftX = expected.dDatumShiftY = expected.dDatumShiftZ = 0.0;
                        std::fill(std::begin(expected.adDatumParams), std::end(expected.adDatumParams), 0.0);
                    }
                    if (expected.nUnitsId == 255 && projection != 1)
                        expected.nUnitsId = 7;
                    QVERIFY2(bits(converter.prjStrToTABProjInfo(written)) == bits(expected),
                             qPrintable(prj + " -> "_s + written));
                }
            }
        }
    }

    void compare_data()
    {
        const support::Columns<QString, QString, QString, QString>
            row; // unset: of b: d datum, e ellipsoid, u unit; equal: plain, with affine, with bounds
        // clang-format off
        row("same", "10, 104, 7, 39", "CoordSys Earth Projection 10, 104, \"m\", 39", "", "111");
        row("within 1e-9 of the size", "18, 104, 7, 0, 0, 7500000", "18, 104, 7, 0, 0, 7500000.005", "", "111");
        row("beyond it", "18, 104, 7, 0, 0, 7500000", "18, 104, 7, 0, 0, 7500000.01", "", "000");
        row("projection", "10, 104, 7, 39", "11, 104, 7, 39", "", "000");
        row("unit", "10, 104, 7, 39", "10, 104, 3, 39", "", "000");
        row("datum of equal figures", "1, 74", "1, 33", "", "000");
        row("shift", "1, 999, 3, 1, 2, 3", "1, 999, 3, 1, 2, 3.1", "", "000");
        row("scale", "1, 9999, 3, 1, 2, 3, 0, 0, 0, 1, 0", "1, 9999, 3, 1, 2, 3, 0, 0, 0, 2, 0", "", "000");
        row("datum and ellipsoid unset: no figures", "1, 1001", "1, 104", "de", "111");
        row("ellipsoid differs", "1, 1001", "1, 104", "d", "000");
        row("unit unset is the metre", "10, 104, 7, 0", "10, 104, 7, 0", "u", "111");
        row("but no other unit", "10, 104, 3, 0", "10, 104, 7, 0", "u", "000");
        row("except behind a false origin", "18, 104, 3, 0, 0, 0, 5", "18, 104, 3, 0, 0, 0, 5", "u", "111");
        row("a parallel is no false origin", "2, 104, 3, 10, 20", "2, 104, 3, 10, 20", "u", "000");
        row("affine", "1001, 104, 7, 7, 1, 0, 5, 0, 1, 6", "1001, 104, 7, 7, 1, 0, 5, 0, 1, 7", "", "101");
        row("affine unit", "1001, 104, 7, 7, 1, 0, 5, 0, 1, 6", "1001, 104, 7, 3, 1, 0, 5, 0, 1, 6", "", "101");
        row("no affine", "1, 104 Affine Units \"m\", 1, 0, 0, 0, 1, 0", "1, 104", "", "101");
        row("bounds", "1, 104 Bounds (0, 0) (1, 1)", "1, 104", "", "110");
        row("bounds from y", "1, 104 Bounds (0, 0) (1, 3)", "1, 104 Bounds (0, 1) (1, 3)", "", "110");
        row("bounds to y", "1, 104 Bounds (0, 0) (1, 2)", "1, 104 Bounds (0, 0) (1, 3)", "", "110");
        // clang-format on
    }
    void compare()
    {
        const auto [a, b, unset, equal] = support::row<QString, QString, QString, QString>();
        const MapHeaderCoordsysConverter converter;
        const TABProjInfo_t first = converter.prjStrToTABProjInfo(a);
        TABProjInfo_t second = converter.prjStrToTABProjInfo(b);
        if (unset.contains(QLatin1Char('d')))
            second.nDatumId = -1;
        if (unset.contains(QLatin1Char('e')))
            second.nEllipsoidId = 255;
        if (unset.contains(QLatin1Char('u')))
            second.nUnitsId = 255;
        const auto answers = [](const TABProjInfo_t &x, const TABProjInfo_t &y) {
            QString text;
            for (const int which : {0, 1, 2})
                text += QString::number(
                    MapHeaderCoordsysConverter::compareTabProjInfo(x, y, which == 1, which == 2));
            return text;
        };
        QCOMPARE(answers(first, second), equal);
        QCOMPARE(answers(second, first), equal);
    }

    void dumps()
    {
        const MapHeaderCoordsysConverter converter;
        QCOMPARE(
            converter.prjStrToXml("8, 1001, 8, 39, 0, 0.9996, 5e-7, -1 Bounds (1, 2) (3, 4)"_s),
            R"(<cs prj="8" el="3" u=""survey ft"" pp0="39" pp1="0" pp2="0.9996" pp3="0.0000005" pp4="-1" )"
            R"(pp5="0" datum="1001"  sx="24" sy="-123" sz="-94" dp0="-0.02" dp1="0.25" dp2="0.13" )"
            R"(dp3="1.1" dp4="0"  xmin="1" ymin="2" xmax="3" ymax="4"/>)"_s);
        QCOMPARE(converter.tabProjInfoToInnerString(converter.prjStrToTABProjInfo(
                     "NonEarth Units \"m\" Affine Units \"ft\", 1, 2, 3, 4, 5, 6 Bounds (0, 0) (1, 2)"_s)),
                 "{prj=0, ellips=255, unit=\"m\", pars={0, 0, 0, 0, 0, 0}, datum=-1 shift=(0,0,0), "
                 "datumpars={0, 0, 0, 0, 0}} rect={(0, 0) (1, 2)} affine={\"ft\" {1, 2, 3, 4, 5, 6}} "
                 "bound={(0, 0) (1, 2)}"_s);
        TABProjInfo_t info;
        info.dXMin = 5;
        info.dXMax = 3;
        info.dYMax = 2;
        QCOMPARE(converter.tabProjInfoToTemplateString(info, "100% %22%1%2 %3 %99 %0"_s),
                 "100% 2255255 255 %99 %0"_s);
        QCOMPARE(MapHeaderCoordsysConverter::boundForTabProj(info), QRectF(3, 0, 2, 2));
    }
};

NIVORA_TEST(TestMapHeaderCoordsysConverter)
#include "tst_mapheadercoordsysconverter.moc"
