#include <support/Support.h>

#include <coordsys/Calibration.h>
#include <coordsys/CoordTransform.h>
#include <coordsys/SystemInfo.h>

#include <QFile>

#include <cmath>
#include <random>

using namespace nivora::cs;
using Model = CalibrationModel;

namespace {

constexpr double tenthOfMillimetre = 1e-4;

CoordSystemPtr plan() { return support::shippedFactory()->createNonEarth(7, {-1e9, -1e9, 2e9, 2e9}); }

CalibrationPair pairOf(const QPointF &local, const QPointF &known)
{
    CalibrationPair pair;
    pair.local = local;
    pair.known = known;
    return pair;
}

struct Set
{
    QString model;
    double toleranceM = 0.0;
    QVector<CalibrationPair> pairs;
    QVector<QPointF> images;
    QVector<QPointF> figures; ///< value, deviation
};

/// What tools/make-calibration-rows wrote.
QVector<Set> sets()
{
    QVector<Set> result;
    QFile file(support::data().filePath("calibration/rows.txt"_s));
    if (!file.open(QIODevice::ReadOnly))
        return result;
    for (const QString &line : QString::fromLatin1(file.readAll()).split(QLatin1Char('\n'))) {
        const QStringList words = line.split(QLatin1Char(' '));
        const auto number = [&words](int i) { return words.value(i).toDouble(); };
        const QPointF first(number(1), number(2));
        if (words.first() == "set"_s)
            result << Set{words.at(1), number(3), {}, {}, {}};
        else if (words.first() == "image"_s)
            result.last().images << first;
        else if (words.first() == "figure"_s)
            result.last().figures << first;
        if (words.first() != "pair"_s)
            continue;
        CalibrationPair pair = pairOf(first, {number(3), number(4)});
        pair.weight = number(5);
        if (words.size() > 6) {
            pair.localHeightM = number(6);
            pair.knownHeightM = number(7);
        }
        result.last().pairs << pair;
    }
    return result;
}

/// Points about a place, turned and scaled against the known ones.
QVector<CalibrationPair> turned(const QPointF &centre, double extent, double scale, double turnDeg, int count,
                                double noise = 0.0)
{
    std::mt19937_64 random(7);
    std::uniform_real_distribution<double> place(-extent, extent);
    std::normal_distribution<double> error(0.0, noise > 0.0 ? noise : 1.0);
    const double cosine = std::cos(turnDeg / 57.29577951308232), sine = std::sin(turnDeg / 57.29577951308232);
    QVector<CalibrationPair> pairs;
    for (int i = 0; i < count; ++i) {
        const QPointF d(place(random), place(random));
        const QPointF off = noise > 0.0 ? QPointF(error(random), error(random)) : QPointF();
        const QPointF local(1000.0 + (cosine * d.x() + sine * d.y()) / scale,
                            2000.0 + (cosine * d.y() - sine * d.x()) / scale);
        pairs << pairOf(local, centre + d + off);
    }
    return pairs;
}

/// How far two systems are apart at local points, metres of the known plane (degrees count as 111 km).
double apartM(const CoordSystemPtr &system, const CoordSystemPtr &known, const CalibrationFit &fit,
              const QVector<CalibrationPair> &pairs)
{
    double greatest = 0.0;
    const double unit = known->isLatLong() ? 111e3 : 1.0;
    const CoordTransform transform(system, known);
    for (const CalibrationPair &pair : pairs) {
        QPointF expected, moved;
        if (!fit.image(pair.local, expected) || !transform.forward(pair.local, moved))
            return qInf();
        greatest = std::max(greatest, unit * std::hypot(moved.x() - expected.x(), moved.y() - expected.y()));
    }
    return greatest;
}

/// The same for two systems, on WGS 84: to a code of the same datum PROJ may know another way for one of
/// them.
double apartM(const CoordSystemPtr &one, const CoordSystemPtr &other, const QVector<CalibrationPair> &pairs)
{
    double greatest = 0.0;
    const CoordSystemPtr earth = support::made("EPSG:4326");
    for (const CalibrationPair &pair : pairs) {
        QPointF a, b;
        if (!CoordTransform(one, earth).forward(pair.local, a) ||
            !CoordTransform(other, earth).forward(pair.local, b))
            return qInf();
        greatest = std::max(greatest, 111e3 * std::hypot(a.x() - b.x(), a.y() - b.y()));
    }
    return greatest;
}

/// The system by every text of it that says everything.
QString lostInTexts(const CalibrationFit &fit, const CoordSystemPtr &known,
                    const QVector<CalibrationPair> &pairs)
{
    const auto factory = support::shippedFactory();
    const CoordSystemPtr system = fit.system();
    const CoordSystemPtr read[] = {system, factory->createFromPrj(system->prjStr()),
                                   factory->createFromTaggedString(system->taggedString())};
    for (const CoordSystemPtr &one : read) {
        const double lostM = apartM(one, known, fit, pairs);
        if (!(lostM < tenthOfMillimetre))
            return "%1: %2 m"_s.arg(one->prjStr(), QString::number(lostM));
    }
    for (const SystemFormat format : {SystemFormat::Wkt2, SystemFormat::ProjJson}) {
        if (system->isNonEarth())
            continue;
        const QString text = exportSystem(*system, format);
        const double lostM = apartM(system, factory->createFromUserInput(text), pairs);
        if (!(lostM < tenthOfMillimetre))
            return "%2 m: %1"_s.arg(text, QString::number(lostM));
    }
    return {};
}

} // namespace

class TestCalibration : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void initTestCase() { QVERIFY(support::shippedFactory()); }

    void agreesWithFiftyDigits_data()
    {
        const support::Columns<int> row;
        const QVector<Set> all = sets();
        for (int i = 0; i < all.size(); ++i)
            row("%1 %2"_s.arg(all.at(i).model).arg(i), i);
    }
    void agreesWithFiftyDigits()
    {
        const Set set = sets().at(std::get<0>(support::row<int>()));
        const bool onEarth = set.images.isEmpty();
        const CoordSystemPtr known = onEarth ? support::made("EPSG:4326") : plan();
        const Calibration::Local local{{}, support::made("proj:+proj=longlat +ellps=krass +no_defs")};
        const CalibrationFit fit = Calibration(known, set.pairs, local).fit(*calibrationModel(set.model));
        QCOMPARE(fit.refusal(), QString());
        for (int i = 0; i < set.images.size(); ++i) {
            QPointF image;
            QVERIFY(fit.image(set.pairs.at(i).local, image));
            VERIFY_NEAR(image, set.images.at(i), set.toleranceM);
            const QPointF left = set.pairs.at(i).known - set.images.at(i);
            VERIFY_NEAR(fit.residuals().at(i).offsetM, left, set.toleranceM);
        }
        const auto parameters = fit.parameters();
        QCOMPARE(parameters.size(), set.figures.size());
        for (int i = 0; i < parameters.size(); ++i) {
            const QPointF &figure = set.figures.at(i);
            const double millionth = 1e-6 * figure.y();
            VERIFY_NEAR(parameters.at(i).deviation, figure.y(), onEarth ? 100 * millionth : millionth);
            VERIFY_NEAR(parameters.at(i).value, figure.x(),
                        (onEarth ? 1000 : 1) * millionth + 1e-14 * std::fabs(figure.x()));
        }
        if (fit.model() != Model::Polynomial)
            QCOMPARE(lostInTexts(fit, known, set.pairs), QString());
    }

    // C. D. Ghilani, Adjustment Computations (5th ed., 2010), example 18.1: three control points.
    void publishedSimilarity()
    {
        const CalibrationFit fit = Calibration(plan(), {pairOf({121.622, -128.066}, {1049422.40, 51089.20}),
                                                        pairOf({141.228, 187.718}, {1049413.95, 49659.30}),
                                                        pairOf({175.802, 135.728}, {1049244.95, 49884.95})})
                                       .fit(Model::Similarity);
        const auto p = fit.parameters();
        VERIFY_NEAR(p.at(0).value, 1050003.715, 5e-4);
        VERIFY_NEAR(p.at(1).value, 50542.131, 5e-4);
        const double turn = p.at(3).value / 57.29577951308232;
        VERIFY_NEAR(QPointF(p.at(2).value * std::cos(turn), p.at(2).value * std::sin(turn)),
                    QPointF(-4.51249, -0.25371), 5e-6);
        QCOMPARE(fit.redundancy(), 2);
    }

    // EPSG's guidance note 7-2, position vector: WGS 72 to WGS 84 at 55 N, 4 E. A sign lost would show as
    // metres.
    void publishedDatumShift()
    {
        const CoordSystemPtr truth =
            support::made("proj:+proj=longlat +ellps=WGS72 +towgs84=0,0,4.5,0,0,0.554,0.219 +no_defs");
        const CoordSystemPtr wgs84 = support::made("EPSG:4326");
        const CoordTransform shift(truth, wgs84);
        QVector<CalibrationPair> pairs;
        for (int i = 0; i < 12; ++i) {
            const QPointF place(-5.0 + 7.0 * (i % 4), 40.0 + 9.0 * (i / 4));
            QPointF known;
            QVERIFY(shift.forward(place, known));
            pairs << pairOf(place, known);
        }
        const CalibrationFit fit =
            Calibration(wgs84, pairs, {{}, support::made("proj:+proj=longlat +ellps=WGS72 +no_defs")})
                .fit(Model::DatumShift);
        QPointF image;
        QVERIFY(fit.image({4.0, 55.0}, image));
        VERIFY_NEAR((image - QPointF(4.0, 55.0)) * 3600.0, QPointF(0.554, 0.090), 6e-4);
        QCOMPARE(lostInTexts(fit, wgs84, pairs), QString());
        QVERIFY2(fit.coordSysText().contains(" 9999,"_s), qPrintable(fit.coordSysText()));
    }

    void systemsOfTheCatalogue_data()
    {
        const support::Columns<QString, QPointF> row;
        row("UTM", "EPSG:32637", {413000, 6180000});
        row("a zone with another datum", "EPSG:28407", {7413000, 6180000});
        row("a grid file's datum", "EPSG:27700", {400000, 300000});
        row("degrees", "EPSG:4326", {37.6, 55.7});
        row("degrees across the 180th meridian", "EPSG:4326", {179.999, 66.0});
        row("the web's sphere", "EPSG:3857", {4187000, 7509000});
        row("two parallels, Paris's datum", "EPSG:27572", {600000, 2400000});
        row("south", "EPSG:2193", {1600000, 5400000});
        row("feet", "EPSG:2263", {990000, 200000});
        row("a pole", "EPSG:32661", {2100000, 2200000});
        row("Affine of its own",
            R"(prj:Earth Projection 8, 1001, "m", 39, 0, 1, 0, 0 Affine Units "m", 0.6, 0.8, -1e6, -0.8, 0.6, 5e6)",
            {3900000, 8350000});
        row("a plan", R"(prj:NonEarth Units "m" Bounds (0, 0) (1000000, 1000000))", {5000, 5000});
    }
    void systemsOfTheCatalogue()
    {
        const auto [tagged, centre] = support::row<QString, QPointF>();
        const CoordSystemPtr known = support::made(tagged);
        QVector<CalibrationPair> pairs = turned(centre, known->isLatLong() ? 0.03 : 3000.0, 0.9997, 0.4, 9);
        if (known->isLatLong()) // a plane's own coordinates are the local ones
            for (CalibrationPair &pair : pairs)
                QVERIFY(CoordTransform(
                            known, support::made("proj:+proj=tmerc +lon_0=%1 +datum=WGS84"_s.arg(centre.x())))
                            .forward(pair.known, pair.local));
        const Calibration calibration(known, pairs);
        for (const Model model : {Model::Similarity, Model::Affine, Model::TransverseMercator}) {
            const CalibrationFit fit = calibration.fit(model);
            if (model == Model::TransverseMercator && (known->isNonEarth() || !fit.isUsable()))
                continue;
            QCOMPARE(fit.refusal(), QString());
            QCOMPARE(lostInTexts(fit, known, pairs), QString());
        }
    }

    void findsBlunders()
    {
        const int wanted = qEnvironmentVariableIntValue("NIVORA_CALIBRATION_SETS");
        std::mt19937_64 random(11);
        std::normal_distribution<double> noise(0.0, 0.05);
        std::uniform_real_distribution<double> unit(-1.0, 1.0);
        const CoordSystemPtr known = plan();
        int blunders = 0, found = 0, good = 0, accused = 0;
        for (int set = 0; set < (wanted > 0 ? wanted : 400); ++set) {
            const int count = 12 + static_cast<int>(random() % 29);
            QVector<CalibrationPair> pairs;
            for (int i = 0; i < count; ++i) {
                const QPointF place(4000 * unit(random), 4000 * unit(random));
                pairs << pairOf(place, place * 1.0003 + QPointF(6e6 + noise(random), 5e5 + noise(random)));
            }
            QVector<int> spoilt;
            while (spoilt.size() < (count + 9) / 10) {
                const int i = static_cast<int>(random() % static_cast<unsigned>(count));
                if (spoilt.contains(i))
                    continue;
                const double angle = 3.141592653589793 * unit(random);
                pairs[i].known +=
                    (8.0 + 20.0 * std::fabs(unit(random))) * 0.05 * QPointF(std::cos(angle), std::sin(angle));
                spoilt << i;
            }
            const Model model = set % 2 ? Model::Affine : Model::Similarity;
            const QVector<int> suspects = Calibration(known, pairs).fit(model).suspects();
            for (int i = 0; i < count; ++i)
                (spoilt.contains(i)     ? (suspects.contains(i) ? found : blunders)
                 : suspects.contains(i) ? accused
                                        : good)++;
        }
        const double foundPart = double(found) / (found + blunders),
                     accusedPart = double(accused) / (accused + good);
        QVERIFY2(foundPart > 0.95 && accusedPart < 0.01,
                 qPrintable("found %1, accused %2"_s.arg(foundPart).arg(accusedPart)));
        if (wanted > 0)
            qInfo("%d sets: %.3f %% found, %.3f %% of good points accused", wanted, 100 * foundPart,
                  100 * accusedPart);
    }

    void refuses_data()
    {
        const support::Columns<QString, int, QString> row;
        const QString few = "Нужно не меньше точек: %1, а разных точек: %2"_s;
        row("no points", "shift", 0, few.arg(1).arg(0));
        row("one for a similarity", "similarity", 1, few.arg(2).arg(1));
        row("two for an affine", "affine", 2, few.arg(3).arg(2));
        row("a line for an affine", "affine", 9, "Точки лежат на одной прямой");
        row("a line for a polynomial", "polynomial", 9, "Точки лежат на одной прямой");
        row("a plan has no meridian", "tmerc", 9,
            "План без места на Земле не имеет ни датума, ни осевого меридиана");
        row("no ellipsoid", "helmert", 9, "Для сдвига датума нужны эллипсоид и проекция местных координат");
        row("a line will do for a similarity", "similarity", 9, "");
    }
    void refuses()
    {
        const auto [word, count, reason] = support::row<QString, int, QString>();
        QVector<CalibrationPair> pairs; // nearly on a line, where rounding would give an affine
        for (int i = 0; i < count; ++i)
            pairs << pairOf({100.0 * i, 37.0 * i + 1e-3 * (i % 2)}, {6e6 + 100.0 * i, 5e5 + 37.0 * i});
        const CalibrationFit fit = Calibration(plan(), pairs).fit(*calibrationModel(word));
        QCOMPARE(fit.refusal(), reason);
        if (reason.isEmpty())
            return;
        QPointF image(1, 2);
        QVERIFY(!fit.image({0, 0}, image) && image == QPointF(1, 2));
        QVERIFY(fit.parameters().isEmpty() && fit.hull().isEmpty() && std::isnan(fit.rmsM()));
        VERIFY_THROWS(std::logic_error, fit.system(), reason);
    }

    void refusesTheSamePlaces()
    {
        const QVector<CalibrationPair> same(5, pairOf({1, 1}, {2, 2}));
        QVERIFY(!Calibration(plan(), same).fit(Model::Similarity).isUsable());
        QVector<CalibrationPair> conic; // a polynomial of degree two is 0 on them
        for (int i = 0; i < 12; ++i)
            conic << pairOf({std::cos(0.5 * i), std::sin(0.5 * i)}, {std::cos(0.5 * i), std::sin(0.5 * i)});
        QCOMPARE(Calibration(plan(), conic).fit(Model::Polynomial).refusal(),
                 "Точки не определяют параметры модели"_s);
        QVERIFY(Calibration(plan(), conic).fit(Model::Affine).isUsable());
        CalibrationPair bad = pairOf({qQNaN(), 0}, {0, 0});
        bad.name = "P7"_s;
        VERIFY_THROWS(std::invalid_argument, Calibration(plan(), {bad}), "Точка P7: координаты не числа");
        CalibrationPair weightless = pairOf({0, 0}, {0, 0});
        weightless.weight = 0.0;
        VERIFY_THROWS(std::invalid_argument, Calibration(plan(), {weightless}),
                      "Точка 1: вес не положительное число");
        VERIFY_THROWS(std::runtime_error, Calibration(support::made("EPSG:4326"), {pairOf({0, 0}, {37, 91})}),
                      "Точка 1: в известной системе нет такого места");
    }

    void justifiedModel_data()
    {
        const support::Columns<double, double, double, QString> row; // scale of x, of y, turn
        row("only moved", 1.0, 1.0, 0.0, "shift");
        row("turned", 1.0, 1.0, 0.01, "similarity");
        row("a scale of its own", 1.0003, 1.0003, 0.0, "similarity");
        row("two scales", 1.0003, 0.9999, 0.0, "affine");
    }
    void justifiedModel()
    {
        const auto [scaleX, scaleY, turn, word] = support::row<double, double, double, QString>();
        QVector<CalibrationPair> pairs = turned({6e6, 5e5}, 3000.0, 1.0, turn, 20, 0.02);
        for (CalibrationPair &pair : pairs)
            pair.local = {pair.local.x() * scaleX, pair.local.y() * scaleY};
        pairs[3].known += QPointF(40, 0); // a blunder justifies nothing
        const Calibration calibration(plan(), pairs);
        QCOMPARE(calibrationWord(*calibration.justifiedModel()), word);
        QCOMPARE(calibration.fit(Model::Affine).suspects(), QVector<int>{3});
        QCOMPARE(*Calibration(plan(), pairs.mid(5, 2)).justifiedModel(), Model::Similarity);
        QVERIFY(!Calibration(plan(), {}).justifiedModel());
    }

    void hints_data()
    {
        const support::Columns<QString, QString> row;
        row("feet", "feet", "Масштаб 0.3048: местные координаты даны в единицах «футы»?");
        row("swapped", "swapped", "С переставленными осями точки согласуются: x и y перепутаны?");
        row("latitude first", "latitude", "С переставленными осями точки согласуются: x и y перепутаны?");
        row("zone number", "number", "Сдвиг 7000 км к востоку и 0 км к северу: ложное начало, номер зоны?");
        row("next zone", "zone", "Местные координаты похожи на зону с осевым меридианом 45°: другая зона?");
        row("a local grid", "local", "");
    }
    void hints()
    {
        const auto [kind, expected] = support::row<QString, QString>();
        const CoordSystemPtr known = support::made("EPSG:32637");
        const CoordTransform zone(known, support::made("EPSG:32638"));
        QVector<CalibrationPair> pairs =
            turned({640000, 6180000}, 3000.0, 1.0, kind == "local"_s ? 31.0 : 0.0, 8);
        for (CalibrationPair &pair : pairs) {
            if (kind == "feet"_s)
                pair.local /= 0.3048;
            if (kind == "swapped"_s)
                pair.local = pair.local.transposed();
            if (kind == "number"_s)
                pair.local = pair.known + QPointF(7e6, 0);
            if (kind == "zone"_s)
                QVERIFY(zone.forward(pair.known, pair.local));
        }
        const CoordSystemPtr earth = support::made("EPSG:4326");
        const bool isEarth = kind == "latitude"_s;
        for (CalibrationPair &pair : pairs) {
            QPointF lonLat;
            QVERIFY(CoordTransform(known, earth).forward(pair.known, lonLat));
            pair.known = isEarth ? lonLat.transposed() : pair.known;
        }
        QCOMPARE(Calibration(isEarth ? earth : known, pairs).hints().join(QLatin1Char('|')), expected);
    }

    // The figures' uncertainty at the centre is the noise by the root of the number of points, and grows
    // outwards.
    void expectedError()
    {
        QVector<CalibrationPair> pairs = turned({6e6, 5e5}, 1000.0, 1.0, 12.0, 25, 0.03);
        const CalibrationFit fit = Calibration(plan(), pairs).fit(Model::Similarity);
        QPointF centre;
        for (const CalibrationPair &pair : qAsConst(pairs))
            centre += pair.local / pairs.size();
        VERIFY_NEAR(fit.expectedErrorM(centre), std::sqrt(2.0 / 25.0) * fit.sigmaM(), 1e-12);
        QVERIFY(fit.expectedErrorM(centre + QPointF(9000, 0)) > 4.0 * fit.expectedErrorM(centre));
        QVERIFY(fit.isInside(centre) && !fit.isInside(centre + QPointF(3000, 0)));
        for (const CalibrationPair &pair : qAsConst(pairs))
            QVERIFY(fit.isInside(pair.local));
        QVERIFY(
            std::isnan(Calibration(plan(), pairs.mid(0, 2)).fit(Model::Similarity).expectedErrorM(centre)));
    }

    // A point that is switched off keeps its residual, known place less image, and loses its pull.
    void switchedOff_data()
    {
        const support::Columns<QString> row;
        for (const char *word : {"similarity", "affine", "tmerc", "helmert"})
            row.named(word);
    }
    void switchedOff()
    {
        const Model model = *calibrationModel(std::get<0>(support::row<QString>()));
        const CoordSystemPtr known = support::made("EPSG:32637");
        const bool isShift = model == Model::DatumShift;
        QVector<CalibrationPair> pairs = turned({512000.0, 6180000.0}, isShift ? 4e5 : 1000.0, 1.0,
                                                model == Model::Similarity ? 12.0 : 0.1, 12);
        if (isShift) // a shift of datum may be none at all
            for (CalibrationPair &pair : pairs)
                pair.local = pair.known;
        pairs[2].known += QPointF(0, 5);
        const Calibration::Local local{{}, known};
        QCOMPARE(Calibration(known, pairs, local).fit(model).suspects(), QVector<int>{2});
        pairs[2].isUsed = false;
        const CalibrationFit fit = Calibration(known, pairs, local).fit(model);
        const double tolerance = isShift || model == Model::TransverseMercator ? 0.5 : 1e-6; // another north
        VERIFY_NEAR(fit.residuals().at(2).offsetM, QPointF(0, 5), tolerance);
        VERIFY_NEAR(fit.rmsM(), 0.0, isShift ? 1e-3 : 1e-4);
        QVERIFY(fit.suspects().isEmpty());
    }
};

NIVORA_TEST(TestCalibration)
#include "tst_calibration.moc"
