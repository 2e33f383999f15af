// How often a search has the right system first and among three, over a table of queries with the codes that
// answer them, and what a query costs in processor time.
//   search-rates RESOURCES QUERIES

#include <coordsys/MapinfoCoordSystem.h>
#include <coordsys/MapinfoSearch.h>

#include <QCoreApplication>
#include <QFile>
#include <QTextStream>

#include <algorithm>
#include <ctime>
#include <vector>

using namespace nivora::cs;

namespace {

double milliseconds(std::clock_t since)
{
    return 1000.0 * static_cast<double>(std::clock() - since) / CLOCKS_PER_SEC;
}

struct Rates
{
    int queries = 0;
    int first = 0;
    int amongThree = 0;
    int empty = 0;
    std::vector<double> costs; ///< ms

    void take(const MapinfoSearch &search, const QString &text, const QStringList &codes)
    {
        const std::clock_t start = std::clock();
        const QVector<MapinfoSearch::Hit> hits = search.find(text, 3);
        costs.push_back(milliseconds(start));
        const auto isRight = [&codes](const MapinfoSearch::Hit &hit) {
            return codes.contains(hit.code.section(QLatin1Char(':'), -1));
        };
        ++queries;
        empty += hits.isEmpty();
        first += !hits.isEmpty() && isRight(hits.first());
        const bool isAmong = std::any_of(hits.begin(), hits.end(), isRight);
        amongThree += isAmong;
        if (!isAmong)
            QTextStream(stdout) << text << ": " << (hits.isEmpty() ? QString() : hits.first().name) << '\n';
    }
    double share(int count) const { return 100.0 * count / std::max(1, queries); }
};

} // namespace

int main(int argc, char **argv)
{
    const QCoreApplication application(argc, argv);
    const QDir resources(application.arguments().value(1));
    QFile table(application.arguments().value(2));
    if (!table.open(QIODevice::ReadOnly))
        return 1;
    const std::clock_t start = std::clock();
    MapinfoCoordSystem russian{MapinfoCoordSystem::Creator()};
    MapinfoCoordSystem english{MapinfoCoordSystem::Creator()};
    russian.loadFromPRJ(resources, QStringLiteral("ru"));
    english.loadFromPRJ(resources, QStringLiteral("en"));
    MapinfoSearch search(english);
    search.addNames(russian);
    search.loadTables(resources);
    search.find(QStringLiteral("utm"), 1);
    const double made = milliseconds(start);

    Rates rates;
    while (!table.atEnd()) {
        const QStringList cells = QString::fromUtf8(table.readLine()).trimmed().split(QLatin1Char('\t'));
        if (cells.size() == 2)
            rates.take(search, cells.first(), cells.last().split(QLatin1Char(';')));
    }
    std::sort(rates.costs.begin(), rates.costs.end());
    QTextStream(stdout) << rates.queries << " queries: first " << rates.share(rates.first)
                        << " %, among three " << rates.share(rates.amongThree) << " %, empty " << rates.empty
                        << "; index " << made << " ms, a query " << rates.costs.at(rates.costs.size() / 2)
                        << " ms, most " << rates.costs.back() << " ms\n";
    return 0;
}
