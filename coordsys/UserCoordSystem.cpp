#include <coordsys/UserCoordSystem.h>

#include <coordsys/CatalogueSource.h>
#include <coordsys/CoordSystem.h>
#include <coordsys/CoordSystemStrings.h>
#include <coordsys/MapHeaderCoordsysConverter.h>
#include <coordsys/SourceTags.h>
#include <platform/Logger.h>

#include <QDomDocument>
#include <QFile>
#include <QObject>
#include <QSaveFile>
#include <QXmlStreamWriter>

#include <algorithm>
#include <stdexcept>
#include <utility>

namespace nivora::cs {
namespace {

QString fileName() { return QStringLiteral("UserCoordSystem.xml"); }

QString rootTag() { return QStringLiteral("coordsys"); }
QString branchTag() { return QStringLiteral("branch"); }
QString entryTag() { return QStringLiteral("cs"); }
QString nameAttribute() { return QStringLiteral("name"); }
QString typeAttribute() { return QStringLiteral("type"); }
QString sourceAttribute() { return QStringLiteral("str"); }
QString descriptionAttribute() { return QStringLiteral("desc"); }

QString withoutDescription() { return QObject::tr("Без имени"); }

QString failure(const std::exception &error, const CoordSystemTypes::SourceData &source)
{
    return QStringLiteral("%1 (%2)").arg(QString::fromUtf8(error.what()), source.string);
}

std::logic_error fileError(const QString &message, const QFileInfo &file)
{
    return std::logic_error(message.arg(file.fileName()).toStdString());
}

enum class ReadResult { Read, NotOpened, NotXml };

ReadResult readDocument(const QFileInfo &file, QDomDocument &document)
{
    QFile source(file.absoluteFilePath());
    if (!source.open(QIODevice::ReadOnly))
        return ReadResult::NotOpened;
    return document.setContent(&source) ? ReadResult::Read : ReadResult::NotXml;
}

/// XML 1.0 has no form for most control characters and for halves of surrogate pairs: one of them would make
/// the whole file unreadable. They become U+FFFD.
QString writable(const QString &text)
{
    QString result = text;
    for (int i = 0; i < result.size(); ++i) {
        const QChar c = result.at(i);
        if (c.isHighSurrogate() && i + 1 < result.size() && result.at(i + 1).isLowSurrogate()) {
            ++i;
            continue;
        }
        const bool control = c < QLatin1Char(' ') && c != QLatin1Char('\t') && c != QLatin1Char('\n') &&
                             c != QLatin1Char('\r');
        if (control || c.isSurrogate() || c.unicode() >= 0xFFFE)
            result[i] = QChar(QChar::ReplacementCharacter);
    }
    return result;
}

/// The writer turns line feeds and tabs in attributes into character references, so they survive reading.
void writeDocument(QIODevice &target, const QList<UserCoordSystem::CsDataType> &branches)
{
    QXmlStreamWriter writer(&target);
    writer.setAutoFormatting(true);
    writer.writeStartDocument();
    writer.writeStartElement(rootTag());
    for (const UserCoordSystem::CsDataType &branch : branches) {
        writer.writeStartElement(branchTag());
        writer.writeAttribute(nameAttribute(), writable(branch.name));
        for (const UserCoordSystem::CoordSystemParam &entry : branch.entries) {
            writer.writeEmptyElement(entryTag());
            writer.writeAttribute(typeAttribute(), sourceTypeToString(entry.source().type));
            writer.writeAttribute(sourceAttribute(), writable(entry.source().string));
            writer.writeAttribute(descriptionAttribute(), writable(entry.description()));
        }
        writer.writeEndElement();
    }
    writer.writeEndElement();
    writer.writeEndDocument();
}

/// Keeps a copy of a file that cannot be read, since a person may yet mend it. An older copy is worth more
/// than a newer one: it is nearer to the last good state. Throws when there is no copy at all.
void keepUnreadable(const QFileInfo &file)
{
    const QString path = file.absoluteFilePath();
    QDomDocument document;
    if (!QFileInfo::exists(path) || QFileInfo(path).isDir() ||
        readDocument(file, document) == ReadResult::Read)
        return;
    const QString copy = path + QStringLiteral(".bak");
    if (QFileInfo::exists(copy))
        LOG_ERROR(
            QObject::tr("Файл %1 не читается и будет заменён, прежняя копия %2 сохранена").arg(path, copy));
    else if (QFile::copy(path, copy))
        LOG_ERROR(QObject::tr("Файл %1 не читается и будет заменён, его копия: %2").arg(path, copy));
    else
        throw fileError(QObject::tr("Не могу создать файл %1"), QFileInfo(copy));
}

template <typename Entries> auto findSource(Entries &entries, const CoordSystemTypes::SourceData &source)
{
    return std::find_if(entries.begin(), entries.end(), [&](const auto &e) { return e.source() == source; });
}

} // namespace

const QString UserCoordSystem::PrjTag = nivora::cs::sourceTypeToString(CoordSystemTypes::Prj);
const QString UserCoordSystem::Proj4Tag = nivora::cs::sourceTypeToString(CoordSystemTypes::Proj4);
const QString UserCoordSystem::EpsgTag = nivora::cs::sourceTypeToString(CoordSystemTypes::Epsg);
const QString UserCoordSystem::WktTag = nivora::cs::sourceTypeToString(CoordSystemTypes::Wkt);
const QString UserCoordSystem::OracleTag = nivora::cs::sourceTypeToString(CoordSystemTypes::Oracle);

UserCoordSystem::CoordSystemParam::CoordSystemParam(const CoordSystemTypes::SourceData &source,
                                                    const QString &description, const CoordSystemPtr &cs)
    : m_source(source)
    , m_description(description)
    , m_system(cs ? cs : csStringToInternalNoDescription(source))
{
    describeSystem();
}

void UserCoordSystem::CoordSystemParam::describeSystem()
{
    if (m_system && !m_description.isEmpty())
        m_system->setDescription(m_description);
}

CoordSystemPtr UserCoordSystem::CoordSystemParam::coordSystem() const
{
    return m_system ? m_system : CoordSystemParam(m_source, m_description, nullptr).m_system;
}

UserCoordSystem::UserCoordSystem(const QDir &dir)
    : m_file(dir, fileName())
{}

void UserCoordSystem::setDir(const QDir &dir) { m_file = QFileInfo(dir, m_file.fileName()); }

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
    const auto found = std::find_if(m_branches.begin(), m_branches.end(),
                                    [&](const CsDataType &b) { return b.name == branch; });
    return found == m_branches.end() ? -1 : static_cast<int>(found - m_branches.begin());
}

const UserCoordSystem::CoordSystemParam *
UserCoordSystem::find(const CoordSystemTypes::SourceData &source) const
{
    for (const CsDataType &branch : m_branches) {
        const auto found = findSource(branch.entries, source);
        if (found != branch.entries.end())
            return &*found;
    }
    return nullptr;
}

bool UserCoordSystem::hasValue(const CoordSystemTypes::SourceData &source) const { return find(source); }

QString UserCoordSystem::description(const CoordSystemTypes::SourceData &source) const
{
    const CoordSystemParam *found = find(source);
    return found ? found->description() : QString();
}

CoordSystemPtr UserCoordSystem::getCoordSystem(const CoordSystemTypes::SourceData &source) const
{
    const CoordSystemPtr built = csStringToInternalNoDescription(source);
    return built ? storedEqual(*built) : nullptr;
}

CoordSystemPtr UserCoordSystem::storedEqual(const CoordSystem &cs) const
{
    for (const CsDataType &branch : m_branches) {
        for (const CoordSystemParam &entry : branch.entries) {
            try {
                if (cs.isEqual(entry.storedSystem(), false))
                    return entry.storedSystem();
            } catch (const std::exception &error) {
                LOG_ERROR(failure(error, entry.source()));
            }
        }
    }
    return nullptr;
}

bool UserCoordSystem::hasCoordSystem(const CoordSystemPtr &cs) const { return cs && storedEqual(*cs); }

bool UserCoordSystem::setCoordSystem(const QString &branch, const CoordSystemTypes::SourceData &source,
                                     const QString &description)
{
    CoordSystemParam fresh;
    fresh.m_source = source;
    fresh.m_description = description;
    fresh.m_system = csStringToInternalNoDescription(source);
    fresh.describeSystem();

    const int index = keyIndex(branch);
    if (index == -1) {
        m_branches.append({branch, {fresh}});
        return fresh.m_system != nullptr;
    }
    QList<CoordSystemParam> &entries = m_branches[index].entries;
    const auto found = findSource(entries, source);
    if (found == entries.end()) {
        entries.append(fresh);
    } else {
        found->m_description = fresh.m_description;
        found->m_system = fresh.m_system;
    }
    return fresh.m_system != nullptr;
}

void UserCoordSystem::removeCoordSystem(const QString &branch, const CoordSystemTypes::SourceData &source)
{
    const int index = keyIndex(branch);
    if (index == -1)
        return;
    QList<CoordSystemParam> &entries = m_branches[index].entries;
    const auto found = findSource(entries, source);
    if (found != entries.end())
        entries.erase(found);
}

UserCoordSystem::CoordSystemParam UserCoordSystem::testStringValue(const QString &text) const
{
    const CoordSystemTypes::SourceType type = tryDetectTypeCoordSystem(text);
    if (type != CoordSystemTypes::Prj)
        return CoordSystemParam({type, text}, QString(), nullptr);

    const MapHeaderCoordsysConverter converter;
    const TABProjInfo_t wanted = converter.prjStrToTABProjInfo(text);
    for (const CsDataType &branch : m_branches) {
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

void UserCoordSystem::loadFromFile(bool quiet)
{
    QDomDocument document;
    const ReadResult result = readDocument(m_file, document);
    if (result != ReadResult::Read) {
        if (!quiet)
            throw fileError(QObject::tr("Не могу открыть файл %1"), m_file);
        if (result == ReadResult::NotXml)
            LOG_ERROR(QObject::tr("Не могу открыть файл %1").arg(m_file.absoluteFilePath()));
        return;
    }

    QList<CsDataType> branches;
    int count = 0;
    for (QDomElement b = document.documentElement().firstChildElement(branchTag()); !b.isNull();
         b = b.nextSiblingElement(branchTag())) {
        CsDataType branch;
        branch.name = b.attribute(nameAttribute(), QObject::tr("Каталог"));
        for (QDomElement e = b.firstChildElement(); !e.isNull(); e = e.nextSiblingElement()) {
            CoordSystemParam entry;
            entry.m_source = {stringToSourceType(e.attribute(typeAttribute())),
                              e.attribute(sourceAttribute())};
            entry.m_description = e.attribute(descriptionAttribute(), withoutDescription());
            entry.m_system = csStringToInternalNoDescription(entry.m_source);
            if (entry.m_system && entry.m_description != withoutDescription())
                entry.m_system->setDescription(entry.m_description);
            branch.entries.append(entry);
            ++count;
        }
        branches.append(branch);
    }
    m_branches = branches;
    LOG_INFO(QObject::tr("Пользовательские КС: %1 (%2)").arg(m_file.fileName(), QString::number(count)));
}

void UserCoordSystem::saveToFile(bool overwrite) const { saveToFile(m_file, m_branches, overwrite); }

void UserCoordSystem::saveToFile(const QFileInfo &file, const QList<CsDataType> &branches, bool overwrite)
{
    const QString path = file.absoluteFilePath();
    if (!overwrite && QFileInfo::exists(path)) // never file.exists(): it may remember an older answer
        throw fileError(QObject::tr("Файл %1 существует"), file);
    QDir().mkpath(file.absolutePath());
    keepUnreadable(file);

    QSaveFile target(path);
    if (!target.open(QIODevice::WriteOnly))
        throw fileError(QObject::tr("Не могу создать файл %1"), file);
    writeDocument(target, branches);
    if (!target.commit())
        throw fileError(QObject::tr("Не могу создать файл %1"), file);
    LOG_INFO(QObject::tr("Пользовательские КС сохранены в файле %1").arg(path));
}

} // namespace nivora::cs
