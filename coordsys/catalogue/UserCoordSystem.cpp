#include <coordsys/UserCoordSystem.h>

#include "CatalogueRevision_p.h"
#include "CatalogueSource_p.h"
#include "CodedError_p.h"
#include "CoordSysTexts_p.h"
#include "MapinfoIndex_p.h"
#include "UserStoreFile_p.h"
#include <coordsys/CoordSystem.h>
#include <coordsys/CoordSystemStrings.h>
#include <coordsys/MapHeaderCoordsysConverter.h>
#include <coordsys/ProjectionParamsManager.h>
#include <coordsys/SourceTags.h>
#include <platform/Logger.h>

#include <QMutexLocker>

#include <algorithm>
#include <optional>
#include <stdexcept>
#include <utility>

namespace nivora::cs {
namespace {

QString fileName() { return QStringLiteral("UserCoordSystem.xml"); }

QString withoutDescription() { return CoordSysTexts::tr("Без имени"); }

QString failure(const std::exception &error, const CoordSystemTypes::SourceData &source)
{
    return QStringLiteral("%1 (%2)").arg(QString::fromUtf8(error.what()), source.string);
}

CodedError<std::logic_error> fileError(const QString &message, const QFileInfo &file)
{
    return {Error::Code::FileFailed, message.arg(file.fileName())};
}

/// While one lives, look-ups by equality on this thread find nothing: they would build the entry that is
/// being built.
class StoreAbsence
{
public:
    StoreAbsence() { ++depth; }
    ~StoreAbsence() { --depth; }
    StoreAbsence(const StoreAbsence &) = delete;
    StoreAbsence &operator=(const StoreAbsence &) = delete;
    static bool isOn() { return depth > 0; }

private:
    static thread_local int depth;
};
thread_local int StoreAbsence::depth = 0;

CoordSystemPtr described(CoordSystemPtr cs, const QString &description)
{
    if (cs && !description.isEmpty())
        cs->setDescription(description);
    return cs;
}

template <typename Entries> auto findSource(Entries &entries, const CoordSystemTypes::SourceData &source)
{
    return std::find_if(entries.begin(), entries.end(), [&](const auto &e) { return e.source() == source; });
}

/// A system on its way from the file into memory. Copies of an entry share it, so it is made once.
struct StoredSystem
{
    QMutex lock; ///< guards what follows but the maker
    bool isBuilt = false;
    std::optional<CrsFingerprint> facts; ///< what the text tells, as the catalogues were at factsAt
    unsigned factsAt = 0;
    CoordSystemPtr cs;
    UserCoordSystem::Maker maker;
};

} // namespace

struct NIVORA_CS_NO_EXPORT UserCoordSystem::CoordSystemParam::Data : QSharedData
{
    Data() = default;
    Data(const CoordSystemTypes::SourceData &from, const QString &name)
        : source(from)
        , description(name)
        , system(std::make_shared<StoredSystem>())
    {}

    /// False only when the system, which need not be built to know that, cannot be equal to one with these
    /// facts.
    bool mayEqual(const CrsFingerprint &facts) const;

    CoordSystemTypes::SourceData source;
    QString description;
    std::shared_ptr<StoredSystem> system; ///< null for a default-constructed entry
};

struct NIVORA_CS_NO_EXPORT UserCoordSystem::Data : QSharedData
{
    const CoordSystemParam *find(const CoordSystemTypes::SourceData &source) const;
    CoordSystemParam *findInBranch(const QString &branch, const CoordSystemTypes::SourceData &source);
    CoordSystemParam entryFrom(const XmlElement &element) const;

    QFileInfo file;
    QList<CsDataType> branches;
    Maker maker;
    QString readProblem;
};

const QString UserCoordSystem::PrjTag = nivora::cs::sourceTypeToString(CoordSystemTypes::Prj);
const QString UserCoordSystem::Proj4Tag = nivora::cs::sourceTypeToString(CoordSystemTypes::Proj4);
const QString UserCoordSystem::EpsgTag = nivora::cs::sourceTypeToString(CoordSystemTypes::Epsg);
const QString UserCoordSystem::WktTag = nivora::cs::sourceTypeToString(CoordSystemTypes::Wkt);
const QString UserCoordSystem::OracleTag = nivora::cs::sourceTypeToString(CoordSystemTypes::Oracle);

UserCoordSystem::CoordSystemParam::CoordSystemParam(const CoordSystemTypes::SourceData &source,
                                                    const QString &description, const CoordSystemPtr &cs)
    : m_data(new Data(source, description))
{
    m_data->system->isBuilt = true;
    m_data->system->cs = described(cs ? cs : csStringToInternalNoDescription(source), description);
}

UserCoordSystem::CoordSystemParam::CoordSystemParam()
    : m_data(new Data)
{}

UserCoordSystem::CoordSystemParam::CoordSystemParam(const CoordSystemParam &other) = default;

UserCoordSystem::CoordSystemParam &
UserCoordSystem::CoordSystemParam::operator=(const CoordSystemParam &other) = default;

UserCoordSystem::CoordSystemParam::~CoordSystemParam() = default;

const CoordSystemTypes::SourceData &UserCoordSystem::CoordSystemParam::source() const
{
    return m_data->source;
}

const QString &UserCoordSystem::CoordSystemParam::description() const { return m_data->description; }

CoordSystemPtr UserCoordSystem::CoordSystemParam::coordSystem() const
{
    const CoordSystemPtr known = storedSystem();
    return known ? known : described(csStringToInternalNoDescription(source()), description());
}

CoordSystemPtr UserCoordSystem::CoordSystemParam::storedSystem() const
{
    StoredSystem *const system = m_data->system.get();
    if (!system)
        return nullptr;
    {
        const QMutexLocker lock(&system->lock);
        if (system->isBuilt)
            return system->cs;
    }
    const StoreAbsence noNamesFromHere; // the system may ask the store for a name while it is made
    const CoordSystemPtr made =
        system->maker ? system->maker(source()) : csStringToInternalNoDescription(source());
    const QMutexLocker lock(&system->lock);
    if (!system->isBuilt) // else another thread was faster
        system->cs = described(made, description() == withoutDescription() ? QString() : description());
    system->isBuilt = true;
    return system->cs;
}

bool UserCoordSystem::CoordSystemParam::Data::mayEqual(const CrsFingerprint &facts) const
{
    const auto catalogues = activeCatalogues(std::nothrow);
    if (!system || !catalogues)
        return true;
    const unsigned now = catalogueRevision();
    const QMutexLocker lock(&system->lock);
    if (!system->facts || system->factsAt != now) {
        system->facts = factsOf(source, *catalogues->projectionParamsManager());
        system->factsAt = now;
    }
    return facts.mayEqual(*system->facts);
}

UserCoordSystem::UserCoordSystem(const QDir &dir)
    : m_data(new Data)
{
    m_data->file = QFileInfo(dir, fileName());
}

UserCoordSystem::UserCoordSystem(const UserCoordSystem &other) = default;

UserCoordSystem &UserCoordSystem::operator=(const UserCoordSystem &other) = default;

UserCoordSystem::~UserCoordSystem() = default;

void UserCoordSystem::setMaker(Maker maker) { m_data->maker = std::move(maker); }

const QFileInfo &UserCoordSystem::fileInfo() const { return m_data->file; }

const QList<UserCoordSystem::CsDataType> &UserCoordSystem::data() const { return m_data->branches; }

bool UserCoordSystem::isEmpty() const { return m_data->branches.isEmpty(); }

const QString &UserCoordSystem::readProblem() const { return m_data->readProblem; }

void UserCoordSystem::setDir(const QDir &dir) { m_data->file = QFileInfo(dir, m_data->file.fileName()); }

CoordSystemTypes::SourceType UserCoordSystem::stringToSourceType(const QString &text)
{
    return nivora::cs::stringToSourceType(text);
}

QString UserCoordSystem::sourceTypeToString(CoordSystemTypes::SourceType type)
{
    return nivora::cs::sourceTypeToString(type);
}

int UserCoordSystem::keyIndex(const QString &branch) const
{
    const auto found = std::find_if(m_data->branches.begin(), m_data->branches.end(),
                                    [&](const CsDataType &b) { return b.name == branch; });
    return found == m_data->branches.end() ? -1 : static_cast<int>(found - m_data->branches.begin());
}

const UserCoordSystem::CoordSystemParam *
UserCoordSystem::Data::find(const CoordSystemTypes::SourceData &source) const
{
    for (const CsDataType &branch : branches) {
        const auto found = findSource(branch.entries, source);
        if (found != branch.entries.end())
            return &*found;
    }
    return nullptr;
}

bool UserCoordSystem::hasValue(const CoordSystemTypes::SourceData &source) const
{
    return m_data->find(source);
}

QString UserCoordSystem::description(const CoordSystemTypes::SourceData &source) const
{
    const CoordSystemParam *found = m_data->find(source);
    return found ? found->description() : QString();
}

CoordSystemPtr UserCoordSystem::getCoordSystem(const CoordSystemTypes::SourceData &source) const
{
    const CoordSystemPtr built = csStringToInternalNoDescription(source);
    return built ? storedEqual(*built) : nullptr;
}

CoordSystemPtr UserCoordSystem::storedEqual(const CoordSystem &cs) const
{
    if (StoreAbsence::isOn() || m_data->branches.isEmpty())
        return nullptr;
    const std::optional<CrsFingerprint> facts = factsOf(cs);
    for (const CsDataType &branch : m_data->branches) {
        for (const CoordSystemParam &entry : branch.entries) {
            try {
                if (facts && !entry.m_data->mayEqual(*facts))
                    continue;
                const CoordSystemPtr stored = entry.storedSystem();
                if (cs.isEqual(stored, false))
                    return stored;
            } catch (const std::exception &error) {
                LOG_ERROR(failure(error, entry.source()));
            }
        }
    }
    return nullptr;
}

bool UserCoordSystem::hasCoordSystem(const CoordSystemPtr &cs) const { return cs && storedEqual(*cs); }

UserCoordSystem::CoordSystemParam *
UserCoordSystem::Data::findInBranch(const QString &branch, const CoordSystemTypes::SourceData &source)
{
    for (CsDataType &candidate : branches) { // a file may hold several branches of one name
        if (candidate.name != branch)
            continue;
        const auto found = findSource(candidate.entries, source);
        if (found != candidate.entries.end())
            return &*found;
    }
    return nullptr;
}

bool UserCoordSystem::setCoordSystem(const QString &branch, const CoordSystemTypes::SourceData &source,
                                     const QString &description)
{
    CoordSystemParam fresh(source, description, nullptr);
    if (CoordSystemParam *known = m_data->findInBranch(branch, source)) {
        fresh.m_data->source = known->source(); // the user's own spelling stays
        *known = fresh;
    } else if (keyIndex(branch) == -1) {
        m_data->branches.append({branch, {fresh}});
    } else {
        m_data->branches[keyIndex(branch)].entries.append(fresh);
    }
    return fresh.storedSystem() != nullptr;
}

bool UserCoordSystem::removeCoordSystem(const QString &branch, const CoordSystemTypes::SourceData &source)
{
    for (CsDataType &candidate : m_data->branches) {
        if (candidate.name != branch)
            continue;
        const auto found = findSource(candidate.entries, source);
        if (found == candidate.entries.end())
            continue;
        candidate.entries.erase(found);
        return true;
    }
    return false;
}

UserCoordSystem::CoordSystemParam UserCoordSystem::testStringValue(const QString &text) const
{
    const CoordSystemTypes::SourceType type = tryDetectTypeCoordSystem(text);
    if (type != CoordSystemTypes::Prj)
        return CoordSystemParam({type, text}, QString(), nullptr);

    const MapHeaderCoordsysConverter converter;
    const TABProjInfo_t wanted = converter.prjStrToTABProjInfo(text);
    for (const CsDataType &branch : m_data->branches) {
        for (const CoordSystemParam &entry : branch.entries) {
            if (entry.source().type != CoordSystemTypes::Prj)
                continue;
            try {
                const TABProjInfo_t stored = converter.prjStrToTABProjInfo(entry.source().string);
                if (MapHeaderCoordsysConverter::compareTabProjInfo(stored, wanted, true, true))
                    return entry;
            } catch (const std::exception &error) {
                LOG_ERROR(failure(error, entry.source()));
            }
        }
    }
    return CoordSystemParam({type, text}, QString(), nullptr);
}

CoordSystemPtr UserCoordSystem::csStringToInternalNoDescription(const CoordSystemTypes::SourceData &source)
{
    try {
        return source.type == CoordSystemTypes::Prj
                   ? activeCatalogues()->createWithoutDescription(source.string)
                   : csStringToInternal(source);
    } catch (const std::exception &error) {
        LOG_ERROR(failure(error, source));
        return nullptr;
    }
}

/// An entry as the file has it; its system is made when it is asked for.
UserCoordSystem::CoordSystemParam UserCoordSystem::Data::entryFrom(const XmlElement &element) const
{
    CoordSystemParam entry;
    const CoordSystemTypes::SourceData source{stringToSourceType(element.attribute(storetext::type())),
                                              element.attribute(storetext::source())};
    entry.m_data =
        new CoordSystemParam::Data(source, element.attribute(storetext::description(), withoutDescription()));
    entry.m_data->system->maker = maker;
    return entry;
}

QString UserCoordSystem::defaultBranch() { return QStringLiteral("Каталог"); }

void UserCoordSystem::loadFromFile(bool quiet)
{
    const StoreReading reading = readStore(m_data->file);
    m_data->readProblem = reading.problem;
    if (!reading.problem.isEmpty()) {
        if (!quiet)
            throw fileError(CoordSysTexts::tr("Не могу открыть файл %1"), m_data->file);
        if (reading.exists)
            LOG_ERROR(reading.problem);
        return;
    }

    QList<CsDataType> branches;
    int count = 0;
    for (const XmlElement &b : reading.root.children) {
        if (b.name != storetext::branch())
            continue;
        CsDataType branch;
        branch.name = b.attribute(storetext::name(), defaultBranch());
        for (const XmlElement &e : b.children)
            if (!e.name.isEmpty())
                branch.entries.append(m_data->entryFrom(e));
        count += branch.entries.size();
        branches.append(branch);
    }
    m_data->branches = branches;
    LOG_INFO(CoordSysTexts::tr("Пользовательские КС: %1 (%2)")
                 .arg(m_data->file.fileName(), QString::number(count)));
}

bool UserCoordSystem::update(const std::function<bool(UserCoordSystem &)> &change)
{
    const StoreLock lock(m_data->file);
    if (lock.isBusy())
        throw fileError(CoordSysTexts::tr("Файл %1 изменяет другая программа"), m_data->file);
    const QList<CsDataType> before = m_data->branches;
    try {
        if (QFileInfo::exists(m_data->file.absoluteFilePath()))
            loadFromFile(false);
        else
            m_data->branches.clear();
        if (!change(*this))
            return false;
        writeStore(m_data->file, m_data->branches, lock);
    } catch (...) {
        m_data->branches = before;
        throw;
    }
    LOG_INFO(
        CoordSysTexts::tr("Пользовательские КС сохранены в файле %1").arg(m_data->file.absoluteFilePath()));
    return true;
}

void UserCoordSystem::saveToFile(bool overwrite) const
{
    saveToFile(m_data->file, m_data->branches, overwrite);
}

void UserCoordSystem::saveToFile(const QFileInfo &file, const QList<CsDataType> &branches, bool overwrite)
{
    const QString path = file.absoluteFilePath();
    if (!overwrite && QFileInfo::exists(path)) // never file.exists(): it may remember an older answer
        throw fileError(CoordSysTexts::tr("Файл %1 существует"), file);
    writeStore(file, branches, StoreLock(file));
    LOG_INFO(CoordSysTexts::tr("Пользовательские КС сохранены в файле %1").arg(path));
}

} // namespace nivora::cs
