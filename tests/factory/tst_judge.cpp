#include <support/Support.h>

#include <coordsys/CoordTransform.h>
#include <coordsys/MapinfoCoordSystem.h>
#include <coordsys/ProjEngine.h>
#include <coordsys/SystemInfo.h>
#include <coordsys/UserCoordSystem.h>

#include <proj.h>

#include <QRandomGenerator>

#include <cmath>
#include <map>

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
            if (random.bounded(100) >= 8)
                continue;
            const int a = codes[random.bounded(int(codes.size()))];
            const int b = codes[random.bounded(int(codes.size()))];
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
        QVERIFY2(compared > 30 && apart > 5, qPrintable(QStringLiteral("%1 %2").arg(compared).arg(apart)));
    }
};

NIVORA_TEST(TestJudge)
#include "tst_judge.moc"
