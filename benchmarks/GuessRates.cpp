// How often a guess has the right group first and among three, over coordinates of systems drawn from PROJ's
// database, and what a guess costs in processor time. With QUERIES the systems are those that the queries of
// search-rates are after: systems that people look for, while most of the database's are hardly used.
// With PLACES the data lie around its towns, where most data are. Nobody does better than at best: that is
// who knows the systems and the areas that are drawn from, and nothing but coordinates and hint besides.
// --hint-only leaves out the guesses without a hint, which take most of the time.
//   guess-rates RESOURCES [COUNT [SEED [QUERIES [PLACES]]]] [--hint-only]

#include <coordsys/MapinfoCoordSystem.h>
#include <coordsys/MapinfoSearch.h>
#include <coordsys/SystemGuess.h>

#include <QCoreApplication>
#include <QDir>
#include <QFile>
#include <QHash>
#include <QSet>
#include <QTextStream>

#include <proj.h>

#include <algorithm>
#include <cmath>
#include <ctime>
#include <memory>
#include <optional>
#include <random>
#include <vector>

using namespace nivora::cs;

namespace {

struct System
{
    QString code;
    double west, south, east, north; ///< degrees, of its area of use

    double area() const
    {
        const double rad = M_PI / 180.0;
        return (east - west) * (std::sin(north * rad) - std::sin(south * rad));
    }
    bool holds(const QPointF &place) const
    {
        const double x = west + std::fmod(std::fmod(place.x() - west, 360.0) + 360.0, 360.0);
        return x <= east && place.y() >= south && place.y() <= north;
    }
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

/// Longitudes and latitudes of the towns of a table.
QVector<QPointF> townsOf(const QString &fileName)
{
    QVector<QPointF> towns;
    QFile file(fileName);
    if (fileName.isEmpty() || !file.open(QIODevice::ReadOnly))
        return towns;
    for (const QByteArray &line : file.readAll().split('\n'))
        if (const QList<QByteArray> cells = line.split('\t'); cells.size() > 2 && !line.startsWith('#'))
            towns << QPointF(cells.at(0).toDouble(), cells.at(1).toDouble());
    return towns;
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

/// What data are drawn from.
class Draw
{
public:
    Draw(std::vector<System> systems, QVector<QPointF> towns, unsigned seed)
        : m_systems(std::move(systems))
        , m_towns(std::move(towns))
        , m_random(seed)
    {
        for (const System &system : m_systems)
            m_areas.insert(system.code, areaOf(system));
    }

    const System &system() { return m_systems[m_random() % m_systems.size()]; }
    /// In the system's area; none when no town lies there.
    std::optional<QPointF> centre(const System &system)
    {
        std::uniform_real_distribution<double> inside(0.1, 0.9);
        if (m_towns.isEmpty())
            return QPointF(system.west + inside(m_random) * (system.east - system.west),
                           system.south + inside(m_random) * (system.north - system.south));
        const QVector<QPointF> towns = townsIn(system);
        if (towns.isEmpty())
            return std::nullopt;
        std::uniform_real_distribution<double> around(-0.3, 0.3);
        const QPointF town = towns.at(static_cast<int>(m_random() % static_cast<unsigned>(towns.size())));
        return town + QPointF(around(m_random), around(m_random));
    }
    /// Less than 95 km away.
    QPointF hint(const QPointF &centre)
    {
        std::uniform_real_distribution<double> away(-0.6, 0.6); // degrees of latitude
        const double eastward = away(m_random) / std::cos(centre.y() * M_PI / 180.0);
        return {std::remainder(centre.x() + eastward, 360.0),
                std::clamp(centre.y() + away(m_random), -90.0, 90.0)};
    }
    /// How likely it is that data of an entry were drawn.
    double chance(const SystemGuess::Entry &entry) const
    {
        constexpr double farthestM = 95e3;
        double sum = 0.0;
        for (const SystemGuess::Member &member : entry.members)
            if (entry.assumptions.isEmpty() && entry.distanceM.value_or(0.0) < farthestM)
                sum += m_areas.contains(member.code) ? 1.0 / m_areas.value(member.code) : 0.0;
        return sum * entry.share;
    }
    std::mt19937 &random() { return m_random; }

private:
    QVector<QPointF> townsIn(const System &system) const
    {
        QVector<QPointF> towns;
        std::copy_if(m_towns.begin(), m_towns.end(), std::back_inserter(towns),
                     [&system](const QPointF &town) { return system.holds(town); });
        return towns;
    }
    double areaOf(const System &system) const
    {
        return m_towns.isEmpty() ? system.area() : std::max(1, townsIn(system).size());
    }

    std::vector<System> m_systems;
    QVector<QPointF> m_towns;
    QHash<QString, double> m_areas;
    std::mt19937 m_random;
};

struct Rates
{
    int guesses = 0;
    int first = 0;
    int amongThree = 0;
    int atBest = 0;
    std::vector<double> costs; ///< ms

    /// Whether it was first.
    bool take(const SystemGuess &guess, const SystemGuess::Question &question, const QString &code,
              const Draw &draw, QString &instead)
    {
        constexpr int all = 200;
        constexpr int three = 3;
        const std::clock_t start = std::clock();
        const QVector<SystemGuess::Entry> entries = guess.guess(question, all).entries;
        costs.push_back(1000.0 * static_cast<double>(std::clock() - start) / CLOCKS_PER_SEC);
        const auto isRight = [&code](const SystemGuess::Entry &entry) {
            return std::any_of(entry.members.begin(), entry.members.end(),
                               [&code](const SystemGuess::Member &member) { return member.code == code; });
        };
        const auto likeliest =
            std::max_element(entries.begin(), entries.end(), [&draw](const auto &a, const auto &b) {
                return draw.chance(a) < draw.chance(b);
            });
        ++guesses;
        const bool isFirst = !entries.isEmpty() && isRight(entries.first());
        first += isFirst;
        atBest += likeliest != entries.end() && isRight(*likeliest);
        const auto end = entries.begin() + std::min(three, entries.size());
        amongThree += std::any_of(entries.begin(), end, isRight);
        instead.clear();
        for (auto entry = entries.begin(); entry != end; ++entry)
            instead +=
                QStringLiteral("  %1 %2").arg(entry->members.first().code, entry->members.first().name);
        return isFirst;
    }
    QString line(const QString &name)
    {
        std::sort(costs.begin(), costs.end());
        const auto share = [this](int count) {
            return QString::number(100.0 * count / std::max(1, guesses), 'f', 1);
        };
        return QStringLiteral(
                   "%1: %2 guesses, first %3 % (at best %4 %), among three %5 %; %6 ms, most %7 ms\n")
            .arg(name, QString::number(guesses), share(first), share(atBest), share(amongThree),
                 QString::number(costs.empty() ? 0.0 : costs[costs.size() / 2], 'f', 0),
                 QString::number(costs.empty() ? 0.0 : costs.back(), 'f', 0));
    }
};

} // namespace

int main(int argc, char **argv)
{
    const QCoreApplication application(argc, argv);
    QStringList arguments = application.arguments();
    const bool isHintOnly = arguments.removeAll(QStringLiteral("--hint-only")) > 0;
    const QDir resources(arguments.value(1));
    const int count = arguments.value(2, QStringLiteral("300")).toInt();
    const unsigned seed = arguments.value(3, QStringLiteral("1")).toUInt();
    MapinfoCoordSystem catalogue{MapinfoCoordSystem::Creator()};
    catalogue.loadFromPRJ(resources, QStringLiteral("en"));
    MapinfoSearch search(catalogue);
    search.loadTables(resources);
    const SystemGuess guess(search, resources);
    PJ_CONTEXT *context = proj_context_create();
    Draw draw(systemsOf(context, codesOfQueries(arguments.value(4))), townsOf(arguments.value(5)), seed);
    Rates hinted;
    Rates bare;
    QTextStream out(stdout);
    while (hinted.guesses < count) {
        const System &system = draw.system();
        const std::optional<QPointF> centre = draw.centre(system);
        SystemGuess::Question question;
        if (!centre || std::fabs(centre->y()) > 85.0)
            continue;
        question.points = surveyIn(context, system, *centre, draw.random());
        if (question.points.isEmpty())
            continue;
        QString instead;
        if (!isHintOnly)
            bare.take(guess, question, system.code, draw, instead);
        question.place = draw.hint(*centre);
        if (!hinted.take(guess, question, system.code, draw, instead))
            out << system.code << " at " << centre->x() << ", " << centre->y() << ':' << instead << '\n';
    }
    out << hinted.line(QStringLiteral("hint of 100 km")) << bare.line(QStringLiteral("no hint"));
    proj_context_destroy(context);
    return 0;
}
