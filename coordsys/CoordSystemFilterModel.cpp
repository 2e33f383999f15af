#include <coordsys/CoordSystemFilterModel.h>

#include <coordsys/CatalogIndex_p.h>

#include <QSet>

#include <algorithm>
#include <cmath>
#include <limits>
#include <tuple>

namespace nivora::cs {
namespace {

/// Rows that a view gets at a time: more than fit on a screen, few enough to be laid out in no time.
constexpr int portion = 200;
constexpr double aboutADecimetre = 1e-6; // degrees

/// Part of the sphere between two meridians and two parallels, as a share of it.
double share(const QRectF &area)
{
    const auto sine = [](double degrees) { return std::sin(degrees * CoordSystemTypes::DEGREES_TO_RADIANS); };
    return area.width() / 360.0 * (sine(area.bottom()) - sine(area.top())) / 2.0;
}

/// Whether an area that may run on across the 180th meridian holds all of a rectangle.
bool holds(const QRectF &area, const QRectF &part)
{
    if (area.isNull() || part.top() < area.top() - aboutADecimetre ||
        part.bottom() > area.bottom() + aboutADecimetre)
        return false;
    const double turned = std::fmod(part.left() - area.left(), 360.0);
    const double east = turned < -aboutADecimetre ? turned + 360.0 : turned;
    return area.width() >= 360.0 || east + part.width() <= area.width() + aboutADecimetre;
}

QRectF middleOf(const QRectF &place) { return {place.center(), QSizeF(0.0, 0.0)}; }

bool isUsable(const QRectF &place)
{
    return std::isfinite(place.x() + place.y() + place.width() + place.height()) && place.width() >= 0.0 &&
           place.height() >= 0.0;
}

} // namespace

CoordSystemFilterModel::CoordSystemFilterModel(CoordSystemCatalogModel &source, QObject *parent)
    : QAbstractTableModel(parent)
    , m_source(source)
{
    connect(&source, &CoordSystemCatalogModel::prepared, this, &CoordSystemFilterModel::refresh);
    connect(&source, &CoordSystemCatalogModel::ownSystemsChanged, this, &CoordSystemFilterModel::refresh);
}

void CoordSystemFilterModel::setText(const QString &text)
{
    if (text == m_text)
        return;
    m_text = text;
    refresh();
}

void CoordSystemFilterModel::setPlace(const std::optional<QRectF> &lonLat)
{
    m_place = lonLat && isUsable(*lonLat) ? lonLat : std::nullopt;
    refresh();
}

bool CoordSystemFilterModel::isFiltering() const { return m_place || !searchText(m_text).isEmpty(); }

bool CoordSystemFilterModel::isPending() const { return isFiltering() && !m_source.isPrepared(); }

void CoordSystemFilterModel::refresh()
{
    if (isFiltering())
        m_source.prepare();
    Entries found = find(m_text, m_place);
    beginResetModel();
    m_found = std::move(found);
    m_fetched = std::min(portion, m_found.size());
    endResetModel();
}

CoordSystemFilterModel::Entries CoordSystemFilterModel::find(const QString &text,
                                                             const std::optional<QRectF> &place) const
{
    const QStringList words = searchText(text).split(QLatin1Char(' '), Qt::SkipEmptyParts);
    Entries entries;
    if (!m_source.m_index || (words.isEmpty() && !place))
        return entries;
    addOwn(words, entries);
    addCatalogue(text, entries);
    addDatabase(words, entries);
    return place ? inUseAt(*place, std::move(entries), words.isEmpty()) : entries;
}

void CoordSystemFilterModel::addOwn(const QStringList &words, Entries &out) const
{
    for (int branch = 0; branch < m_source.m_branches.size(); ++branch) {
        const auto &list = m_source.m_branches.at(branch);
        for (int row = 0; row < list.entries.size(); ++row) {
            const CoordSystemTypes::SourceData &source = list.entries.at(row).source();
            const QString text = list.entries.at(row).description() + QLatin1Char(' ') + list.name +
                                 QLatin1Char(' ') + source.string;
            const int code = source.type == CoordSystemTypes::Epsg ? source.string.toInt()
                                                                   : CoordSystemTypes::EPSG_UNDEFINDED;
            if (holdsWords(searchText(text), words))
                out << Entry{CoordSystemCatalogModel::OwnSystems, branch, row, code};
        }
    }
}

void CoordSystemFilterModel::addCatalogue(const QString &text, Entries &out) const
{
    const auto section = CoordSystemCatalogModel::MapinfoCatalogue;
    if (!searchText(text).isEmpty()) {
        const auto hits = m_source.m_index->search().find(text, std::numeric_limits<int>::max());
        for (const MapinfoSearch::Hit &hit : hits) {
            const auto *rest = hit.isInCatalogue() ? nullptr : m_source.m_index->uncatalogued(hit.epsg);
            if (hit.isInCatalogue())
                out << Entry{section, hit.position.first, hit.position.second, hit.epsg};
            else if (rest)
                out << Entry{CoordSystemCatalogModel::EpsgDatabase, rest->country, rest->row, hit.epsg};
        }
        return;
    }
    for (int category = 0; category < m_source.m_categories.size(); ++category) {
        const QList<CoordSystemParams> &entries = m_source.m_categories.at(category).entries;
        for (int row = 0; row < entries.size(); ++row)
            out << Entry{section, category, row, entries.at(row).epsg()};
    }
}

/// A code that is asked for by number stands above all that merely hold the number. The search itself may
/// have given some of the database's systems.
void CoordSystemFilterModel::addDatabase(const QStringList &words, Entries &out) const
{
    QSet<int> given;
    for (const Entry &entry : qAsConst(out))
        if (entry.section == CoordSystemCatalogModel::EpsgDatabase)
            given << entry.epsg;
    int asked = 0;
    for (const CatalogIndex::Uncatalogued &system : m_source.m_index->uncatalogued()) {
        if (given.contains(system.code) || !holdsWords(system.text, words))
            continue;
        const Entry entry{CoordSystemCatalogModel::EpsgDatabase, system.country, system.row, system.code};
        if (words.contains(QString::number(system.code)))
            out.insert(asked++, entry);
        else
            out << entry;
    }
}

CoordSystemFilterModel::Entries CoordSystemFilterModel::inUseAt(const QRectF &place, Entries entries,
                                                                bool bySize) const
{
    struct Sized
    {
        bool isPart;
        double share;
        Entry entry;
    };
    QVector<Sized> there;
    for (const Entry &entry : entries) {
        const QRectF area = m_source.area(entry.epsg);
        if (holds(area, middleOf(place)))
            there << Sized{!holds(area, place), share(area), entry};
    }
    if (bySize)
        std::stable_sort(there.begin(), there.end(), [](const Sized &a, const Sized &b) {
            return std::tie(a.isPart, a.share) < std::tie(b.isPart, b.share);
        });
    entries.clear();
    for (const Sized &system : there)
        entries << system.entry;
    return entries;
}

QVector<CoordSystemFilterModel::Relaxation> CoordSystemFilterModel::relaxations() const
{
    QVector<Relaxation> all;
    const auto add = [&](const QString &text, const QString &without, const std::optional<QRectF> &place) {
        if (const int count = find(text, place).size())
            all << Relaxation{text, without, count};
    };
    const QStringList words = m_text.simplified().split(QLatin1Char(' '), Qt::SkipEmptyParts);
    for (int i = 0; i < words.size() && words.size() > 1; ++i) {
        QStringList rest = words;
        rest.removeAt(i);
        add(rest.join(QLatin1Char(' ')), words.at(i), m_place);
    }
    if (m_place)
        add(m_text, QString(), std::nullopt);
    std::stable_sort(all.begin(), all.end(),
                     [](const Relaxation &a, const Relaxation &b) { return a.count < b.count; });
    return all;
}

QModelIndex CoordSystemFilterModel::sourceIndex(const Entry &entry) const
{
    return m_source.systemIndex(entry.section, entry.group, entry.row);
}

QModelIndex CoordSystemFilterModel::mapToSource(const QModelIndex &index) const
{
    return index.isValid() ? sourceIndex(m_found.at(index.row())) : QModelIndex();
}

QModelIndex CoordSystemFilterModel::mapFromSource(const QModelIndex &source)
{
    const auto found = std::find_if(m_found.begin(), m_found.end(), [&](const Entry &entry) {
        return sourceIndex(entry) == source.siblingAtColumn(CoordSystemCatalogModel::NameColumn);
    });
    if (found == m_found.end())
        return {};
    const int row = static_cast<int>(found - m_found.begin());
    while (row >= m_fetched)
        fetchMore({});
    return index(row, NameColumn);
}

int CoordSystemFilterModel::rowCount(const QModelIndex &parent) const
{
    return parent.isValid() ? 0 : m_fetched;
}

int CoordSystemFilterModel::columnCount(const QModelIndex &parent) const
{
    return parent.isValid() ? 0 : ColumnCount;
}

bool CoordSystemFilterModel::canFetchMore(const QModelIndex &parent) const
{
    return !parent.isValid() && m_fetched < m_found.size();
}

void CoordSystemFilterModel::fetchMore(const QModelIndex &parent)
{
    if (!canFetchMore(parent))
        return;
    const int fetched = std::min(m_fetched + portion, m_found.size());
    beginInsertRows({}, m_fetched, fetched - 1);
    m_fetched = fetched;
    endInsertRows();
}

QVariant CoordSystemFilterModel::data(const QModelIndex &index, int role) const
{
    if (!index.isValid())
        return {};
    const QModelIndex source = mapToSource(index);
    if (index.column() == GroupColumn)
        return m_source.data(source, role == Qt::DisplayRole ? CoordSystemCatalogModel::GroupRole : role);
    return m_source.data(source.siblingAtColumn(index.column()), role);
}

QVariant CoordSystemFilterModel::headerData(int section, Qt::Orientation orientation, int role) const
{
    if (section != GroupColumn || orientation != Qt::Horizontal || role != Qt::DisplayRole)
        return m_source.headerData(section, orientation, role);
    return QObject::tr("Раздел");
}

} // namespace nivora::cs
