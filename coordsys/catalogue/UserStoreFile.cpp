#include "UserStoreFile_p.h"

#include "CodedError_p.h"
#include "CoordSysTexts_p.h"
#include "InputFile_p.h"
#include <coordsys/SourceTags.h>
#include <platform/Logger.h>
#include <platform/files/Publication.h>

#include <QDir>
#include <QFile>
#include <QRegularExpression>
#include <QXmlStreamWriter>

#include <algorithm>
#include <stdexcept>

namespace nivora::cs {
namespace {

CodedError<std::logic_error> cannotWrite(const QFileInfo &file)
{
    return {Error::Code::FileFailed, CoordSysTexts::tr("Не могу создать файл %1").arg(file.fileName())};
}

/// The writer turns line feeds and tabs in attributes into character references, so they survive reading.
void writeDocument(QIODevice &target, const QList<UserCoordSystem::CsDataType> &branches)
{
    QXmlStreamWriter writer(&target);
    writer.setAutoFormatting(true);
    writer.writeStartDocument();
    writer.writeStartElement(storetext::root());
    for (const UserCoordSystem::CsDataType &branch : branches) {
        writer.writeStartElement(storetext::branch());
        writer.writeAttribute(storetext::name(), xmlWritable(branch.name));
        for (const UserCoordSystem::CoordSystemParam &entry : branch.entries) {
            writer.writeEmptyElement(storetext::entry());
            writer.writeAttribute(storetext::type(), sourceTypeToString(entry.source().type));
            writer.writeAttribute(storetext::source(), xmlWritable(entry.source().string));
            writer.writeAttribute(storetext::description(), xmlWritable(entry.description()));
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
    const StoreReading reading = readStore(file);
    if (!reading.exists || reading.problem.isEmpty())
        return;
    const QString path = file.absoluteFilePath();
    const QString copy = path + QStringLiteral(".bak");
    if (QFileInfo::exists(copy))
        LOG_ERROR(CoordSysTexts::tr("Файл %1 не читается и будет заменён, прежняя копия %2 сохранена")
                      .arg(path, copy));
    else if (QFile::copy(path, copy))
        LOG_ERROR(CoordSysTexts::tr("Файл %1 не читается и будет заменён, его копия: %2").arg(path, copy));
    else
        throw cannotWrite(QFileInfo(copy));
}

/// Whether a file begins as a save does, or as much of that as it has.
bool beginsAsSaved(const QString &path)
{
    static const QByteArray start =
        QByteArrayLiteral("<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n<coordsys");
    QFile file(path);
    return openInput(file).isEmpty() && start.startsWith(file.read(start.size()));
}

/// Removes what killed saves of earlier versions left. Qt adds a dot and six letters of either case at
/// random; a name that a person may have typed (".backup", ".Before") stays, and so does what was not written
/// here.
void sweepLeftovers(const QFileInfo &file)
{
    static const QRegularExpression random(
        QStringLiteral("^(?=.*[a-z])(?=..*[A-Z])[A-Za-z]{6}$")); // "aXbQrT"
    const QString prefix = file.fileName() + QLatin1Char('.');
    const QFileInfoList files =
        file.absoluteDir().entryInfoList(QDir::Files | QDir::NoSymLinks | QDir::Hidden);
    for (const QFileInfo &found : files)
        if (found.fileName().startsWith(prefix) &&
            random.match(found.fileName().mid(prefix.size())).hasMatch() &&
            beginsAsSaved(found.absoluteFilePath()))
            QFile::remove(found.absoluteFilePath());
}

/// Another program's document is not an empty store.
QString foreignRootError(const XmlElement &root)
{
    if (root.name == storetext::root() || root.hasChild(storetext::branch()))
        return {};
    return QStringLiteral("%1:%2: %3")
        .arg(QString::number(root.line), QString::number(root.column),
             CoordSysTexts::tr("Корневой элемент <%1> не из файла систем координат").arg(root.name));
}

} // namespace

QString xmlWritable(const QString &text)
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

StoreReading readStore(const QFileInfo &file)
{
    StoreReading result;
    QFile source(file.absoluteFilePath());
    result.exists =
        QFileInfo::exists(source.fileName()); // never file.exists(): it may remember an older answer
    const QString whyClosed = openInput(source);
    if (!whyClosed.isEmpty()) {
        result.problem = QStringLiteral("%1: %2").arg(source.fileName(), whyClosed);
        return result;
    }
    QString damage = readXml(source, result.root);
    if (damage.isEmpty())
        damage = foreignRootError(result.root);
    if (!damage.isEmpty())
        result.problem = QStringLiteral("%1:%2").arg(source.fileName(), damage);
    return result;
}

StoreLock::StoreLock(const QFileInfo &file)
{
    constexpr int waitMs = 5000; // a save takes a few
    QDir().mkpath(file.absolutePath());
    m_lock.take(file.absolutePath(), waitMs, true); // what belongs to the store is saved within its changes
}

void writeStore(const QFileInfo &file, const QList<UserCoordSystem::CsDataType> &branches,
                const StoreLock &lock)
{
    const QString path = file.absoluteFilePath();
    if (QFileInfo::exists(path) && !QFileInfo(path).isFile())
        throw cannotWrite(file);
    keepUnreadable(file);
    if (lock.isHeld())
        sweepLeftovers(file);
    try {
        files::Publication publication(path);
        QFile target(publication.path(file.fileName()));
        if (!target.open(QIODevice::WriteOnly))
            throw cannotWrite(file);
        writeDocument(target, branches);
        if (!target.flush() || target.error() != QFileDevice::NoError ||
            files::flushToDisk(target.handle()) != 0)
            throw cannotWrite(file);
        target.close();
        publication.publish({file.fileName()}, {});
    } catch (const files::PublishError &) {
        throw cannotWrite(file);
    }
}

} // namespace nivora::cs
