#include "MapinfoCoordSystem_p.h"

#include "BackgroundFills_p.h"
#include "CatalogueFile_p.h"
#include "CatalogueRevision_p.h"
#include "CoordSysTexts_p.h"
#include "CoordSystem_p.h"
#include "InputFile_p.h"
#include "MapinfoIndex_p.h"
#include "ProjectionTable_p.h"
#include <coordsys/CoordSystem.h>
#include <coordsys/MapHeaderCoordsysConverter.h>
#include <platform/Logger.h>
#include <platform/Utils.h>

#include <QCoreApplication>
#include <QFile>
#include <QReadLocker>
#include <QThreadPool>
#include <QWriteLocker>
#include <QtConcurrent>

#include <algorithm>
#include <optional>
#include <stdexcept>
#include <utility>

namespace nivora::cs {
namespace {

/// A cone with two standard parallels is the same in either order of them.
void sortParallels(TABProjInfo_t &record)
{
    const Projection *const projection = projectionByNumber(record.nProjId);
    double *parallels = record.adProjParams + 2;
    if (projection && projection->cone != Cone::None && parallels[0] > parallels[1])
        std::swap(parallels[0], parallels[1]);
}

/// The same record, a user's datum by its figures.
bool isSameSystem(TABProjInfo_t entry, TABProjInfo_t record)
{
    sortParallels(entry);
    sortParallels(record);
    if (isUserDatum(record.nDatumId))
        entry.nDatumId = record.nDatumId;
    return MapHeaderCoordsysConverter::compareTabProjInfo(entry, record, true, false);
}

/// The same record but for rounded figures.
bool isNearSystem(TABProjInfo_t entry, TABProjInfo_t record)
{
    constexpr double rounding = 1e-6; // of a degree, and of the size of larger numbers
    sortParallels(entry);
    sortParallels(record);
    for (std::size_t i = 0; i < std::size(record.adProjParams); ++i)
        if (std::fabs(record.adProjParams[i] - entry.adProjParams[i]) <=
            rounding * std::max(1.0, std::fabs(entry.adProjParams[i])))
            record.adProjParams[i] = entry.adProjParams[i];
    return isSameSystem(entry, record);
}

bool isPowerOfTwo(unsigned n) { return n != 0 && (n & (n - 1)) == 0; }

} // namespace

MapinfoCoordSystem::MapinfoCoordSystem(Creator creator)
    : d(std::make_unique<MapinfoCoordSystemPrivate>(*this, std::move(creator)))
{}

MapinfoCoordSystem::~MapinfoCoordSystem()
{
    try {
        clear();
    } catch (...) {
        LOG_ERROR(CoordSysTexts::tr("Ошибка при освобождении ресурсов %0")
                      .arg(QStringLiteral("MapinfoCoordSystem")));
    }
}

bool MapinfoCoordSystem::loadFromPRJ(const QDir &dir, const QString &language)
{
    return loadFromPRJ(QFileInfo(dir, QStringLiteral("projections_%1.prj").arg(language)));
}

bool MapinfoCoordSystem::loadFromPRJ(const QFileInfo &file)
{
    QList<CoordSystemParamsList> categories = d->m_categories;
    QFile source(nivora::utils::lookUpExistingFileInDirectory(file).absoluteFilePath());
    if (!openInput(source).isEmpty())
        throw std::runtime_error(
            CoordSysTexts::tr("Не могу открыть файл %1").arg(file.fileName()).toStdString());
    LOG_INFO(CoordSysTexts::tr("Файл с проекциями: %1").arg(source.fileName()));

    const int count = readCatalogueFile(source, categories);
    LOG_DEBUG(CoordSysTexts::tr("Категорий: %1, Проекций: %2")
                  .arg(QString::number(categories.size()), QString::number(count)));
    const int known = d->m_categories.size();
    d->m_categories = std::move(categories);
    d->noteCodes(known);
    ++catalogueRevision();
    {
        const QWriteLocker lock(&d->m_lock);
        d->m_index.reset(); // speaks of the entries before this file
    }
    return true;
}

const CoordSystemParams *MapinfoCoordSystemPrivate::entry(int category, int index) const
{
    if (category < 0 || category >= m_categories.size())
        return nullptr;
    const QList<CoordSystemParams> &entries = m_categories.at(category).entries;
    return index >= 0 && index < entries.size() ? &entries.at(index) : nullptr;
}

QString MapinfoCoordSystem::getStrMB(int category, int index) const
{
    if (category < 0 || category >= d->m_categories.size())
        throw std::out_of_range(
            CoordSysTexts::tr("Каталог координатных систем MapInfo не содержит категории с номером %1")
                .arg(category)
                .toStdString());
    const CoordSystemParams *found = d->entry(category, index);
    if (!found)
        throw std::out_of_range(
            CoordSysTexts::tr(
                "Каталог координатных систем MapInfo не содержит координатной системы с индексом %1,%2")
                .arg(QString::number(category), QString::number(index))
                .toStdString());
    return prjFromParams(found->params, QStringLiteral(", "));
}

CoordSystemPtr MapinfoCoordSystem::getProj(int category, int index) const
{
    {
        const QReadLocker lock(&d->m_lock);
        const auto cached = d->m_cache.find({category, index});
        if (cached != d->m_cache.end())
            return cached->second;
    }
    return tryAddToCache(category, index);
}

CoordSystemPtr MapinfoCoordSystem::getProj(const Position &position) const
{
    return getProj(position.first, position.second);
}

CoordSystemPtr MapinfoCoordSystem::tryAddToCache(int category, int index) const
{
    const CoordSystemPtr cs = d->m_creator(getStrMB(category, index));
    const CoordSystemParams *found = d->entry(category, index);
    if (d->m_cancelled || !found || !cs)
        return nullptr;
    cs->setDescription(found->name());
    if (found->epsg() != CoordSystem::EPSG_UNDEFINDED)
        privateOf(*cs).setEntryEpsg(found->epsg());

    const QWriteLocker lock(&d->m_lock);
    if (!d->m_cancelled) // asked again under the lock, so that nothing enters the cache behind clear()
        d->m_cache.emplace(Position(category, index), cs);
    return cs;
}

void MapinfoCoordSystem::initInternalCache()
{
    BackgroundFills &fills = BackgroundFills::instance();
    QThreadPool::globalInstance(); // made before the handler, so it waits for its tasks after it
    BackgroundFills::stopAtExit();
    qAddPostRoutine([] { BackgroundFills::instance().stop(); }); // the application's end waits for the pool
    d->m_fillStopped = false;
    d->m_fills.append(QtConcurrent::run([this, &fills, round = fills.round()] {
        if (!fills.enter(round))
            return;
        d->fillCache(
            [this, &fills, round] { return d->m_cancelled || d->m_fillStopped || !fills.isCurrent(round); });
        fills.leave();
    }));
}

void MapinfoCoordSystemPrivate::fillCache(const std::function<bool()> &stopped)
{
    unsigned built = 0;
    try {
        const int categories = m_categories.size();
        for (int category = 0; category < categories; ++category) {
            for (int index = 0; index < m_categories.at(category).entries.size(); ++index) {
                if (stopped())
                    return;
                q->tryAddToCache(category, index);
                if (isPowerOfTwo(++built))
                    BackgroundFills::stopAtExit();
            }
        }
    } catch (...) {
        // Whoever asks for the broken entry gets its exception; one that escaped here would come out of
        // clear().
    }
}

void MapinfoCoordSystem::stopInternalCache()
{
    d->m_fillStopped = true;
    for (QFuture<void> &fill : d->m_fills)
        fill.waitForFinished();
    d->m_fills.clear();
}

/// Notes the categories from a number on; the first entry of a code stands for it.
void MapinfoCoordSystemPrivate::noteCodes(int firstCategory)
{
    for (int category = firstCategory; category < m_categories.size(); ++category) {
        const QList<CoordSystemParams> &entries = m_categories.at(category).entries;
        for (int index = 0; index < entries.size(); ++index)
            if (!m_byCode.contains(entries.at(index).epsg()))
                m_byCode.insert(entries.at(index).epsg(), {category, index});
    }
}

QString MapinfoCoordSystem::seekByEPSG(int epsg) const
{
    const Position position = d->m_byCode.value(epsg, PairNone);
    return position == PairNone ? QString() : getStrMB(position.first, position.second);
}

std::optional<CoordSystemParams> MapinfoCoordSystem::entryByEpsg(int epsg) const
{
    const Position position = d->m_byCode.value(epsg, PairNone);
    const CoordSystemParams *found = d->entry(position.first, position.second);
    return found ? std::make_optional(*found) : std::nullopt;
}

CoordSystemPtr MapinfoCoordSystem::systemOfCode(int epsg) const
{
    const Position position = d->m_byCode.value(epsg, PairNone);
    const CoordSystemPtr cs =
        position == PairNone ? nullptr : d->buildForLookUp(position.first, position.second);
    return cs && !privateOf(*cs).hasForeignCataloguedCode() ? cs : nullptr;
}

int MapinfoCoordSystem::codeOfRecord(const TABProjInfo_t &record, const QVector<int> &codes) const
{
    Position first = PairNone;
    for (const int code : codes) {
        const Position position = d->m_byCode.value(code, PairNone);
        if (position != PairNone && (first == PairNone || position < first) && d->hasRecord(position, record))
            first = position;
    }
    const CoordSystemParams *found = d->entry(first.first, first.second);
    return found ? d->firstWithParams(found->params)->epsg() : int(CoordSystem::EPSG_UNDEFINDED);
}

QVector<int> MapinfoCoordSystem::codesNearRecord(const TABProjInfo_t &record) const
{
    const MapHeaderCoordsysConverter converter;
    const auto maybe =
        [&record](const CoordSystemParams &entry) { // reading all of them takes a tenth of a second
            const int datum = entry.params.value(1).toInt();
            return entry.epsg() > 0 && entry.params.value(0).toInt() == record.nProjId &&
                   (datum == record.nDatumId || isUserDatum(record.nDatumId));
        };
    QVector<int> codes;
    for (const CoordSystemParamsList &category : d->m_categories)
        for (const CoordSystemParams &entry : category.entries) {
            if (!maybe(entry))
                continue;
            try {
                if (isNearSystem(converter.prjStrToTABProjInfo(entry.asPrjString()), record))
                    codes << d->firstWithParams(entry.params)->epsg();
            } catch (const std::exception &e) {
                LOG_DEBUG(QString::fromUtf8(e.what()));
            }
        }
    return codes;
}

bool MapinfoCoordSystemPrivate::hasRecord(const Position &position, const TABProjInfo_t &record) const
{
    try {
        const QString prj = q->getStrMB(position.first, position.second);
        return isSameSystem(MapHeaderCoordsysConverter().prjStrToTABProjInfo(prj), record);
    } catch (const std::exception &) {
        return false; // an entry that cannot be read has no record
    }
}

/// Entries with the same parameters are one system, which has the code of the first of them, or none.
const CoordSystemParams *MapinfoCoordSystemPrivate::firstWithParams(const QStringList &params) const
{
    for (const CoordSystemParamsList &category : m_categories)
        for (const CoordSystemParams &candidate : category.entries)
            if (candidate.params == params)
                return &candidate;
    return nullptr;
}

/// The system of an entry for a look-up by equality: null when it cannot be built, which is logged once.
CoordSystemPtr MapinfoCoordSystemPrivate::buildForLookUp(int category, int index) const
{
    const Position position(category, index);
    {
        const QReadLocker lock(&m_lock);
        if (m_broken.count(position))
            return nullptr;
    }
    try {
        return q->getProj(position);
    } catch (const std::exception &error) {
        const QWriteLocker lock(&m_lock);
        if (m_broken.insert(position).second)
            LOG_ERROR(
                QStringLiteral("%1 (%2)").arg(QString::fromUtf8(error.what()), q->getStrMB(category, index)));
        return nullptr;
    }
}

/// The index, made by the first look-up; null when there is no catalogue to read the entries with.
std::shared_ptr<const MapinfoIndex> MapinfoCoordSystemPrivate::indexForLookUps() const
{
    {
        const QReadLocker lock(&m_lock);
        if (m_index)
            return m_index;
    }
    std::shared_ptr<const MapinfoIndex> made;
    try {
        made = std::make_shared<const MapinfoIndex>(m_categories);
    } catch (const std::exception &e) {
        LOG_DEBUG(QString::fromUtf8(e.what()));
        return nullptr;
    }
    const QWriteLocker lock(&m_lock);
    if (!m_index)
        m_index = std::move(made);
    return m_index;
}

namespace {

/// A search by equality for one system, with what is known of it.
class LookUp
{
public:
    LookUp(const MapinfoCoordSystemPrivate &catalogue, const CoordSystem &cs)
        : m_catalogue(catalogue)
        , m_cs(cs)
    {
        if (const CatalogueSource *owner = catalogue.m_owner)
            m_scope.emplace(*owner);
        m_index = catalogue.indexForLookUps();
        if (m_index)
            m_facts = factsOf(cs);
    }

    MapinfoCoordSystem::Position first(bool ignoreRect) const
    {
        if (!m_index)
            return m_catalogue.walkEntries(m_cs, ignoreRect);
        if (!m_facts)
            return MapinfoCoordSystem::PairNone;
        for (const MapinfoIndex::Row &row : m_index->rows())
            if (m_index->mayEqual(*m_facts, row) &&
                m_cs.isEqual(m_catalogue.buildForLookUp(row.position.first, row.position.second), ignoreRect))
                return row.position;
        return MapinfoCoordSystem::PairNone;
    }

private:
    const MapinfoCoordSystemPrivate &m_catalogue;
    const CoordSystem &m_cs;
    std::optional<SourceScope> m_scope;
    std::shared_ptr<const MapinfoIndex> m_index; ///< null when there is no catalogue to read the entries with
    std::optional<CrsFingerprint> m_facts;
};

} // namespace

MapinfoCoordSystem::Position MapinfoCoordSystem::seekProj(const CoordSystem &cs, bool ignoreRect) const
{
    return LookUp(*d, cs).first(ignoreRect);
}

MapinfoCoordSystem::Position MapinfoCoordSystemPrivate::walkEntries(const CoordSystem &cs,
                                                                    bool ignoreRect) const
{
    for (int category = 0; category < m_categories.size(); ++category)
        for (int index = 0; index < m_categories.at(category).entries.size(); ++index)
            if (cs.isEqual(buildForLookUp(category, index), ignoreRect))
                return {category, index};
    return PairNone;
}

MapinfoCoordSystem::Position MapinfoCoordSystem::seekProj(const CoordSystemPtr &cs, bool ignoreRect) const
{
    return cs ? seekProj(*cs, ignoreRect) : PairNone;
}

std::pair<QString, int> MapinfoCoordSystemPrivate::nameAndCode(const Position &position) const
{
    const CoordSystemParams *found = entry(position.first, position.second);
    return found ? std::make_pair(found->name(), found->epsg())
                 : std::make_pair(QString(), int(CoordSystem::EPSG_UNDEFINDED));
}

std::pair<QString, int> MapinfoCoordSystem::getHumanReadableTextWithEpsg(const CoordSystem &cs,
                                                                         bool ignoreRect) const
{
    return d->nameAndCode(seekProj(cs, ignoreRect));
}

std::pair<QString, int> MapinfoCoordSystem::getHumanReadableTextWithEpsg(const CoordSystem &cs) const
{
    const LookUp lookUp(*d, cs);
    const Position bounded = lookUp.first(false);
    return d->nameAndCode(bounded != PairNone ? bounded : lookUp.first(true));
}

QList<CoordSystemParamsList> MapinfoCoordSystem::projectionList() const { return d->m_categories; }

void MapinfoCoordSystem::clear()
{
    d->m_cancelled = true;
    stopInternalCache(); // the fill reads the categories
    d->m_categories.clear();
    d->m_byCode.clear();
    ++catalogueRevision();

    std::map<Position, CoordSystemPtr>
        released; // outlives the lock: systems take locks of their own as they die
    const QWriteLocker lock(&d->m_lock);
    d->m_cache.swap(released);
    d->m_broken.clear();
    d->m_index.reset();
}

} // namespace nivora::cs
