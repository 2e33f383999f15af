// How often a guess has the right group first and among three, over coordinates of systems drawn from PROJ's
// database, and what a guess costs in processor time. With QUERIES the systems are those that the queries of
// search-rates are after: systems that people look for, while most of the database's are hardly used.
//   guess-rates RESOURCES [COUNT [SEED [QUERIES]]]

#include <coordsys/MapinfoCoordSystem.h>
#include <coordsys/MapinfoSearch.h>
#include <coordsys/SystemGuess.h>

#include <QCoreApplication>
#include <QDir>
#include <QFile>
#include <QSet>
#include <QTextStream>

#include <proj.h>

#include <algorithm>
#include <cmath>
#include <ctime>
#include <memory>
#include <random>
#include <vector>

using namespace nivora::cs;

namespace {

struct System
{
    QString code;
    double west, south, east, north; ///< degrees, of its area of use
};

struct PjFree
{
    void operator()(PJ *pj) const { proj_destroy(pj); }
};
using Pj = std::unique_ptr<PJ, PjFree>;

/// The first code that each query wants.
QSet<QByteArray> codesOfQueries(const QString &fileName)
{
    QSet<QByteArray> codes;
    QFile file(fileName);
    if (fileName.isEmpty() || !file.open(QIODevice::ReadOnly))
        return codes;
    for (const QByteArray &line : file.readAll().split('\n'))
        codes << line.mid(line.indexOf('\t') + 1).split(';').first().trimmed();
    return codes;
}

/// Projected systems of EPSG that are not withdrawn; of the codes alone when there are any.
std::vector<System> systemsOf(PJ_CONTEXT *context, const QSet<QByteArray> &codes)
{
    std::vector<System> systems;
    int count = 0;
    PROJ_CRS_INFO **list = proj_get_crs_info_list_from_database(context, "EPSG", nullptr, &count);
    for (int i = 0; i < count; ++i) {
        const PROJ_CRS_INFO &info = *list[i];
        if (info.type != PJ_TYPE_PROJECTED_CRS || info.deprecated || !info.bbox_valid ||
            (!codes.isEmpty() && !codes.contains(info.code)))
            continue;
        const double turn = info.east_lon_degree < info.west_lon_degree ? 360.0 : 0.0;
        systems.push_back({QStringLiteral("EPSG:") + QLatin1String(info.code), info.west_lon_degree,
                           info.south_lat_degree, info.east_lon_degree + turn, info.north_lat_degree});
    }
    proj_crs_info_list_destroy(list);
    return systems;
}

/// Points of a survey some kilometres wide, in the system's own coordinates; none when they cannot be made.
QVector<QPointF> surveyIn(PJ_CONTEXT *context, const System &system, const QPointF &centre,
                          std::mt19937 &random)
{
    constexpr int count = 12;
    constexpr double reachDeg = 0.05;
    std::uniform_real_distribution<double> around(-reachDeg, reachDeg);
    const Pj way(proj_create_crs_to_crs(context, "EPSG:4326", system.code.toUtf8().constData(), nullptr));
    const Pj plain(way ? proj_normalize_for_visualization(context, way.get()) : nullptr);
    QVector<QPointF> points;
    for (int i = 0; plain && i < count; ++i) {
        const double x = std::remainder(centre.x() + around(random), 360.0);
        const PJ_COORD at =
            proj_trans(plain.get(), PJ_FWD, proj_coord(x, centre.y() + around(random), 0.0, HUGE_VAL));
        if (!std::isfinite(at.xy.x) || !std::isfinite(at.xy.y))
            return {};
        points << QPointF(at.xy.x, at.xy.y);
    }
    return points;
}

struct Rates
{
    int guesses = 0;
    int first = 0;
    int amongThree = 0;
    std::vector<double> costs; ///< ms

    /// Whether it was among three.
    bool take(const SystemGuess &guess, const SystemGuess::Question &question, const QString &code,
              QString &instead)
    {
        const std::clock_t start = std::clock();
        const QVector<SystemGuess::Entry> entries = guess.guess(question, 3).entries;
        costs.push_back(1000.0 * static_cast<double>(std::clock() - start) / CLOCKS_PER_SEC);
        const auto isRight = [&code](const SystemGuess::Entry &entry) {
            return std::any_of(entry.members.begin(), entry.members.end(),
                               [&code](const SystemGuess::Member &member) { return member.code == code; });
        };
        ++guesses;
        const bool isFirst = !entries.isEmpty() && isRight(entries.first());
        first += isFirst;
        const bool isAmong = std::any_of(entries.begin(), entries.end(), isRight);
        amongThree += isAmong;
        instead.clear();
        for (const SystemGuess::Entry &entry : entries)
            instead += QStringLiteral("  %1 %2").arg(entry.members.first().code, entry.members.first().name);
        return isFirst;
    }
    QString line(const QString &name)
    {
        std::sort(costs.begin(), costs.end());
        const auto share = [this](int count) {
            return QString::number(100.0 * count / std::max(1, guesses), 'f', 1);
        };
        return QStringLiteral("%1: %2 guesses, first %3 %, among three %4 %; %5 ms, most %6 ms\n")
            .arg(name, QString::number(guesses), share(first), share(amongThree),
                 QString::number(costs.empty() ? 0.0 : costs[costs.size() / 2], 'f', 0),
                 QString::number(costs.empty() ? 0.0 : costs.back(), 'f', 0));
    }
};

} // namespace

int main(int argc, char **argv)
{
    const QCoreApplication application(argc, argv);
    const QDir resources(application.arguments().value(1));
    const int count = application.arguments().value(2, QStringLiteral("300")).toInt();
    std::mt19937 random(application.arguments().value(3, QStringLiteral("1")).toUInt());
    MapinfoCoordSystem catalogue{MapinfoCoordSystem::Creator()};
    catalogue.loadFromPRJ(resources, QStringLiteral("en"));
    MapinfoSearch search(catalogue);
    search.loadTables(resources);
    const SystemGuess guess(search, resources);
    PJ_CONTEXT *context = proj_context_create();
    const std::vector<System> systems = systemsOf(context, codesOfQueries(application.arguments().value(4)));
    Rates hinted;
    Rates bare;
    QTextStream out(stdout);
    std::uniform_real_distribution<double> inside(0.1, 0.9);
    std::uniform_real_distribution<double> hint(-0.6, 0.6); // degrees of latitude: 94 km at the corner
    while (hinted.guesses < count) {
        const System &system = systems[random() % systems.size()];
        const QPointF centre(system.west + inside(random) * (system.east - system.west),
                             system.south + inside(random) * (system.north - system.south));
        SystemGuess::Question question;
        question.points = surveyIn(context, system, centre, random);
        if (question.points.isEmpty() || std::fabs(centre.y()) > 85.0)
            continue;
        QString instead;
        bare.take(guess, question, system.code, instead);
        const double eastward = hint(random) / std::cos(centre.y() * M_PI / 180.0);
        question.place = QPointF(std::remainder(centre.x() + eastward, 360.0),
                                 std::clamp(centre.y() + hint(random), -90.0, 90.0));
        if (!hinted.take(guess, question, system.code, instead))
            out << system.code << " at " << centre.x() << ", " << centre.y() << ':' << instead << '\n';
    }
    out << hinted.line(QStringLiteral("hint of 100 km")) << bare.line(QStringLiteral("no hint"));
    proj_context_destroy(context);
    return 0;
}
