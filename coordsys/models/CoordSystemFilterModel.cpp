#include <coordsys/CoordSystemFilterModel.h>

#include "CoordSystemCatalogModel_p.h"
#include "GeographicExtent_p.h"
#include "ModelTexts_p.h"
#include "SearchMaker_p.h"
#include <coordsys/CoordSysFactory.h>

#include <QFutureWatcher>
#include <QThreadPool>
#include <QtConcurrent>

#include <algorithm>
#include <cmath>
#include <functional>
#include <iterator>
#include <limits>
#include <utility>

namespace nivora::cs {
namespace {

/// Rows that a view gets at a time: more than fit on a screen, few enough to be laid out in no time.
constexpr int portion = 200;

QRectF middleOf(const QRectF &place) { return {place.center(), QSizeF(0.0, 0.0)}; }

bool isUsable(const QRectF &place)
{
    return std::isfinite(place.x() + place.y() + place.width() + place.height()) && place.width() >= 0.0 &&
           place.height() >= 0.0;
}

struct Entry
{
    CoordSystemCatalogModel::Section section;
    int group;
    int row;
    int epsg;
};

struct Answer
{
    QVector<Entry> entries;
    QVector<CoordSystemFilterModel::Relaxation> relaxations;
};

bool isCodelessOwn(const Entry &entry)
{
    return entry.section == CoordSystemCatalogModel::OwnSystems && entry.epsg <= 0;
}

/// A question with all that is needed to answer it, so that any thread can.
struct Query
{
    using Entries = QVector<Entry>;
    using Place = std::optional<QRectF>;

    Answer answer() const;
    Entries find(const QString &words, const Place &where, QStringList *without = nullptr) const;
    void addOwn(const QStringList &words, Entries &out) const;
    void addOwn(int branch, int row, Entries &out) const;
    bool isFound(const Entries &entries, int branch, int row) const;
    QStringList addFound(const QString &words, const Place &where, Entries &out) const;
    CoordSystemFilterModel::Relaxation leftAside(const QStringList &without, int count) const;
    QRectF areaOf(const Entry &entry) const;
    Entries inUseAt(const QRectF &where, const Entries &entries) const;
    QVector<CoordSystemFilterModel::Relaxation> relaxations() const;

    QString text;
    Place place;
    bool isWithdrawnShown;
    std::shared_ptr<const CatalogIndex> index;
    std::function<std::shared_ptr<const MapinfoSearch>(const QList<UserCoordSystem::CsDataType> &)>
        searchWith;
    QList<CoordSystemParamsList> categories;
    QList<UserCoordSystem::CsDataType> branches;
};

struct Worker
{
    Worker() { pool.setMaxThreadCount(1); }

    QFutureWatcher<Answer> watcher;
    QThreadPool pool; ///< waits as it goes
    bool isRunning = false;
    bool isOvertaken = false; ///< the question has changed since
};

Answer Query::answer() const
{
    Answer answer;
    QStringList without;
    answer.entries = find(text, place, &without);
    if (answer.entries.isEmpty())
        answer.relaxations = relaxations();
    else if (!without.isEmpty())
        answer.relaxations = {leftAside(without, answer.entries.size())};
    return answer;
}

Query::Entries Query::find(const QString &words, const Place &where, QStringList *without) const
{
    const QStringList list = searchText(words).split(QLatin1Char(' '), Qt::SkipEmptyParts);
    Entries entries;
    if (list.isEmpty() && !where)
        return entries;
    addOwn(list, entries);
    const QStringList useless = addFound(words, where, entries);
    if (without)
        *without = useless;
    return where ? inUseAt(*where, entries) : entries;
}

void Query::addOwn(const QStringList &words, Entries &out) const
{
    for (int branch = 0; branch < branches.size(); ++branch) {
        const auto &list = branches.at(branch);
        for (int row = 0; row < list.entries.size(); ++row) {
            const UserCoordSystem::CoordSystemParam &own = list.entries.at(row);
            const QString known =
                own.description() + QLatin1Char(' ') + list.name + QLatin1Char(' ') + own.source().string;
            if (holdsWords(searchText(known), words))
                addOwn(branch, row, out);
        }
    }
}

/// Unless it is there.
void Query::addOwn(int branch, int row, Entries &out) const
{
    const auto isIt = [&](const Entry &entry) {
        return entry.section == CoordSystemCatalogModel::OwnSystems && entry.group == branch &&
               entry.row == row;
    };
    const CoordSystemTypes::SourceData &source = branches.at(branch).entries.at(row).source();
    const int code =
        source.type == CoordSystemTypes::Epsg ? source.string.toInt() : CoordSystemTypes::EPSG_UNDEFINDED;
    if (std::none_of(out.begin(), out.end(), isIt))
        out << Entry{CoordSystemCatalogModel::OwnSystems, branch, row, code};
}

/// \return the words of no use.
QStringList Query::addFound(const QString &words, const Place &where, Entries &out) const
{
    const std::optional<QPointF> middle = where ? std::optional<QPointF>(where->center()) : std::nullopt;
    const auto answer = searchWith(branches)->answer(words, middle, std::numeric_limits<int>::max());
    for (const MapinfoSearch::Hit &hit : answer.hits) {
        if (hit.isWithdrawn && !isWithdrawnShown)
            continue;
        if (hit.isOwn())
            addOwn(-2 - hit.position.first, hit.position.second, out);
        else if (hit.isInCatalogue())
            out << Entry{CoordSystemCatalogModel::MapinfoCatalogue, hit.position.first, hit.position.second,
                         hit.epsg};
        else if (const auto row = index->uncatalogued(hit.code))
            out << Entry{CoordSystemCatalogModel::EpsgDatabase, row->country, row->row, hit.epsg};
    }
    return answer.without;
}

/// The text without the words that the search had no use for.
CoordSystemFilterModel::Relaxation Query::leftAside(const QStringList &without, int count) const
{
    QStringList rest;
    for (const QString &part : text.simplified().split(QLatin1Char(' ')))
        if (!without.contains(searchText(part)))
            rest << part;
    return {rest.join(QLatin1Char(' ')), without.join(QLatin1Char(' ')), count};
}

QRectF Query::areaOf(const Entry &entry) const
{
    if (isCodelessOwn(entry))
        return SearchMaker::ownArea(*searchWith(branches), {-2 - entry.group, entry.row});
    return entry.section == CoordSystemCatalogModel::EpsgDatabase ? index->system(entry.group, entry.row).area
                                                                  : index->area(entry.epsg);
}

/// Those that hold the middle of a place; before the others those that hold all of it. Behind them own
/// systems of which nobody knows where they are in use.
Query::Entries Query::inUseAt(const QRectF &where, const Entries &entries) const
{
    Entries whole;
    Entries middle;
    Entries unknown;
    for (const Entry &entry : entries)
        if (const QRectF area = areaOf(entry); area.isNull() && isCodelessOwn(entry))
            unknown << entry;
        else if (areaHolds(area, where))
            whole << entry;
        else if (areaHolds(area, middleOf(where)))
            middle << entry;
    return whole + middle + unknown;
}

QVector<CoordSystemFilterModel::Relaxation> Query::relaxations() const
{
    QVector<CoordSystemFilterModel::Relaxation> all;
    const auto add = [&](const QString &words, const QString &without, const Place &where) {
        if (const int count = find(words, where).size())
            all << CoordSystemFilterModel::Relaxation{words, without, count};
    };
    const QStringList parts = text.simplified().split(QLatin1Char(' '), Qt::SkipEmptyParts);
    for (int i = 0; i < parts.size() && parts.size() > 1; ++i) {
        QStringList rest = parts;
        rest.removeAt(i);
        add(rest.join(QLatin1Char(' ')), parts.at(i), place);
    }
    if (place)
        add(text, QString(), std::nullopt);
    std::stable_sort(all.begin(), all.end(), [](const auto &a, const auto &b) { return a.count < b.count; });
    return all;
}

} // namespace

/// What a CoordSystemFilterModel consists of.
class CoordSystemFilterModelPrivate
{
public:
    CoordSystemFilterModelPrivate(CoordSystemFilterModel &model, CoordSystemCatalogModel &source)
        : q(&model)
        , m_source(source)
    {}

    void refresh();
    void start();
    void takeAnswer();
    void show(Answer answer);
    QModelIndex sourceIndex(const Entry &entry) const;

    CoordSystemFilterModel *const q;
    CoordSystemCatalogModel &m_source;
    QString m_text;
    std::optional<QRectF> m_place;
    QVector<Entry> m_found;
    QVector<CoordSystemFilterModel::Relaxation> m_relaxations;
    int m_fetched = 0;
    bool m_isPending = false;
    bool m_isWithdrawnShown = true;
    Worker m_worker; ///< last: it ends first
};

CoordSystemFilterModel::CoordSystemFilterModel(CoordSystemCatalogModel &source, QObject *parent)
    : QAbstractTableModel(parent)
    , d(std::make_unique<CoordSystemFilterModelPrivate>(*this, source))
{
    connect(&source, &CoordSystemCatalogModel::prepared, this, [this] {
        if (isFiltering())
            d->refresh();
    });
    connect(&source, &CoordSystemCatalogModel::ownSystemsChanged, this, [this] {
        d->show({}); // rows may stand for what is gone
        d->refresh();
    });
    connect(&d->m_worker.watcher, &QFutureWatcherBase::finished, this, [this] { d->takeAnswer(); });
}

CoordSystemFilterModel::~CoordSystemFilterModel() = default;

void CoordSystemFilterModel::setText(const QString &text)
{
    if (text == d->m_text)
        return;
    d->m_text = text;
    d->refresh();
}

void CoordSystemFilterModel::setPlace(const std::optional<QRectF> &lonLat)
{
    d->m_place = lonLat && isUsable(*lonLat) ? lonLat : std::nullopt;
    d->refresh();
}

void CoordSystemFilterModel::setWithdrawnShown(bool isShown)
{
    if (std::exchange(d->m_isWithdrawnShown, isShown) != isShown && isFiltering())
        d->refresh();
}

QString CoordSystemFilterModel::remark() const
{
    const auto &index = CoordSystemCatalogModelPrivate::get(d->m_source).m_index;
    return index ? index->search().remark(d->m_text, d->m_source.factory()->language()) : QString();
}

QString CoordSystemFilterModel::text() const { return d->m_text; }

const std::optional<QRectF> &CoordSystemFilterModel::place() const { return d->m_place; }

bool CoordSystemFilterModel::isPending() const { return d->m_isPending; }

const QVector<CoordSystemFilterModel::Relaxation> &CoordSystemFilterModel::relaxations() const
{
    return d->m_relaxations;
}

bool CoordSystemFilterModel::isFiltering() const { return d->m_place || !searchText(d->m_text).isEmpty(); }

int CoordSystemFilterModel::foundCount() const { return d->m_found.size(); }

void CoordSystemFilterModelPrivate::refresh()
{
    m_isPending = q->isFiltering();
    m_worker.isOvertaken = m_worker.isRunning;
    if (!m_isPending) {
        show({});
        Q_EMIT q->found();
        return;
    }
    m_source.prepare();
    if (m_source.isPrepared() && !m_worker.isRunning)
        start();
}

void CoordSystemFilterModelPrivate::start()
{
    m_worker.isRunning = true;
    m_worker.isOvertaken = false;
    const CoordSystemCatalogModelPrivate &known = CoordSystemCatalogModelPrivate::get(m_source);
    const CoordSysFactory &factory = *m_source.factory();
    const auto searchWith = [catalogue = CataloguePtr(factory.mapinfoCoordSystem()),
                             dir = factory.resourceDir(),
                             language = factory.language()](const auto &branches) {
        return sharedSearch(catalogue, dir, language, branches);
    };
    const Query query{
        m_text, m_place, m_isWithdrawnShown, known.m_index, searchWith, known.m_categories, known.m_branches};
    m_worker.watcher.setFuture(QtConcurrent::run(&m_worker.pool, [query] { return query.answer(); }));
}

/// Runs again, to no effect, when the watcher tells what waitUntilFound() has taken already.
void CoordSystemFilterModelPrivate::takeAnswer()
{
    if (!m_worker.isRunning)
        return;
    m_worker.watcher.waitForFinished();
    m_worker.isRunning = false;
    if (!m_isPending)
        return;
    if (m_worker.isOvertaken) {
        start();
        return;
    }
    m_isPending = false;
    show(m_worker.watcher.result());
    Q_EMIT q->found();
}

void CoordSystemFilterModel::waitUntilFound()
{
    if (d->m_isPending && !d->m_source.isPrepared())
        d->m_source.waitUntilPrepared();
    while (d->m_isPending && d->m_worker.isRunning)
        d->takeAnswer();
}

void CoordSystemFilterModelPrivate::show(Answer answer)
{
    q->beginResetModel();
    m_found = std::move(answer.entries);
    m_relaxations = std::move(answer.relaxations);
    m_fetched = std::min(portion, int(m_found.size()));
    q->endResetModel();
}

QModelIndex CoordSystemFilterModelPrivate::sourceIndex(const Entry &entry) const
{
    return CoordSystemCatalogModelPrivate::get(m_source).systemIndex(entry.section, entry.group, entry.row);
}

QModelIndex CoordSystemFilterModel::mapToSource(const QModelIndex &index) const
{
    return index.isValid() ? d->sourceIndex(d->m_found.at(index.row())) : QModelIndex();
}

QModelIndex CoordSystemFilterModel::mapFromSource(const QModelIndex &source)
{
    const auto found = std::find_if(d->m_found.begin(), d->m_found.end(), [&](const Entry &entry) {
        return d->sourceIndex(entry) == source.siblingAtColumn(CoordSystemCatalogModel::NameColumn);
    });
    if (found == d->m_found.end())
        return {};
    const int row = static_cast<int>(found - d->m_found.begin());
    while (row >= d->m_fetched)
        fetchMore({});
    return index(row, NameColumn);
}

int CoordSystemFilterModel::rowCount(const QModelIndex &parent) const
{
    return parent.isValid() ? 0 : d->m_fetched;
}

int CoordSystemFilterModel::columnCount(const QModelIndex &parent) const
{
    return parent.isValid() ? 0 : ColumnCount;
}

bool CoordSystemFilterModel::canFetchMore(const QModelIndex &parent) const
{
    return !parent.isValid() && d->m_fetched < d->m_found.size();
}

void CoordSystemFilterModel::fetchMore(const QModelIndex &parent)
{
    if (!canFetchMore(parent))
        return;
    const int fetched = std::min(d->m_fetched + portion, int(d->m_found.size()));
    beginInsertRows({}, d->m_fetched, fetched - 1);
    d->m_fetched = fetched;
    endInsertRows();
}

QVariant CoordSystemFilterModel::data(const QModelIndex &index, int role) const
{
    if (!index.isValid())
        return {};
    const QModelIndex source = mapToSource(index);
    if (index.column() == GroupColumn)
        return d->m_source.data(source, role == Qt::DisplayRole ? CoordSystemCatalogModel::GroupRole : role);
    return d->m_source.data(source.siblingAtColumn(index.column()), role);
}

QVariant CoordSystemFilterModel::headerData(int section, Qt::Orientation orientation, int role) const
{
    if (section != GroupColumn || orientation != Qt::Horizontal || role != Qt::DisplayRole)
        return d->m_source.headerData(section, orientation, role);
    return ModelTexts::tr("Раздел");
}

} // namespace nivora::cs
