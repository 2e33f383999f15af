#include "MapInfoFiles.h"

#include "Output.h"

#include <coordsys/CoordSystemStrings.h>

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QObject>
#include <QRegularExpression>

#include <algorithm>
#include <cstdio>

namespace {

constexpr qint64 longestHeader = 16 * 1024 * 1024; // ten thousands of columns
constexpr qint64 chunk = 1024 * 1024;

struct Charset
{
    const char *mapInfo;
    const char *encoding;
};
constexpr Charset charsets[] = {
    {"WindowsLatin1", "CP1252"}, {"WindowsLatin2", "CP1250"},    {"WindowsCyrillic", "CP1251"},
    {"WindowsGreek", "CP1253"},  {"WindowsTurkish", "CP1254"},   {"WindowsHebrew", "CP1255"},
    {"WindowsArabic", "CP1256"}, {"WindowsBalticRim", "CP1257"}, {"CodePage437", "CP437"},
    {"CodePage850", "CP850"},    {"CodePage852", "CP852"},       {"CodePage866", "CP866"},
};
constexpr const char *usualEncoding = "CP1251";

/// Where the clause stands in the header, and where one would stand.
struct ClausePlace
{
    qint64 begin = 0;
    qint64 end = 0;
    QByteArray text; ///< empty for none
};

/// True for the whole word, as the finder of the clause reads it: a column or a damaged line may begin with
/// its letters.
bool beginsWith(const QByteArray &line, const char *word)
{
    const QString text = QString::fromLatin1(line).trimmed();
    const QChar next = text.mid(static_cast<int>(qstrlen(word))).leftJustified(1).at(0);
    return text.startsWith(QLatin1String(word), Qt::CaseInsensitive) && !next.isLetterOrNumber() &&
           next != QLatin1Char('_');
}

ClausePlace findClause(QFile &file)
{
    QByteArray header;
    for (QByteArray line;
         file.pos() < longestHeader && !beginsWith(line, "columns") && !beginsWith(line, "data");) {
        line = file.readLine();
        if (line.isEmpty())
            break;
        header += line;
    }
    const auto clause = nivora::cs::coordSysClauseIn(QString::fromLatin1(header));
    if (clause.position < 0)
        throw Failure(QObject::tr("%1 has no header of a MIF").arg(file.fileName()));
    return {clause.position, clause.position + clause.length, header.mid(clause.position, clause.length)};
}

void openOrFail(QFile &file)
{
    if (!file.open(QIODevice::ReadOnly))
        throw Failure(QObject::tr("cannot read %1: %2").arg(file.fileName(), file.errorString()));
}

/// False when not all of it could be written.
bool copyRest(QFile &from, QFile &to)
{
    while (!from.atEnd()) {
        const QByteArray bytes = from.read(chunk);
        if (bytes.isEmpty() || to.write(bytes) != bytes.size())
            return false;
    }
    return to.flush();
}

} // namespace

QString coordSysOfMif(const QString &path)
{
    QFile file(path);
    openOrFail(file);
    const QByteArray text = findClause(file).text;
    return text.isEmpty() ? QStringLiteral("CoordSys Earth Projection 1, 0")
                          : QString::fromLatin1(text).simplified();
}

void replaceCoordSysOfMif(const QString &path, const QString &clause)
{
    QFile file(path);
    openOrFail(file);
    const ClausePlace place = findClause(file);
    const bool hasKeyword = clause.startsWith(QLatin1String("CoordSys"), Qt::CaseInsensitive);
    QFile result(path + QStringLiteral(".new")); // no QSaveFile, which waits for the disk
    result.open(QIODevice::WriteOnly);
    file.seek(0);
    result.write(file.read(place.begin));
    result.write((hasKeyword ? QString() : QStringLiteral("CoordSys ")).toLatin1() + clause.toLatin1() +
                 '\n');
    file.seek(place.end);
    const bool replaced =
        copyRest(file, result) && std::rename(QFile::encodeName(result.fileName()).constData(),
                                              QFile::encodeName(path).constData()) == 0;
    if (!replaced)
        throw Failure(QObject::tr("cannot write %1: %2").arg(path, result.errorString()));
}

QString siblingOf(const QString &path, const QString &suffix)
{
    const QFileInfo info(path);
    const QString wanted = info.completeBaseName() + QLatin1Char('.') + suffix;
    const QStringList files = info.dir().entryList(QDir::Files | QDir::Hidden);
    for (const QString &file : files)
        if (file.compare(wanted, Qt::CaseInsensitive) == 0)
            return info.dir().filePath(file);
    return {};
}

QByteArray encodingLike(const QString &source)
{
    // Charset "WindowsCyrillic" in a MIF, !charset WindowsCyrillic in a TAB
    static const QRegularExpression charset(QStringLiteral("^!?charset\\s+\"?(\\w+)"),
                                            QRegularExpression::CaseInsensitiveOption |
                                                QRegularExpression::MultilineOption);
    const bool isMapInfo = source.endsWith(QLatin1String(".mif"), Qt::CaseInsensitive) ||
                           source.endsWith(QLatin1String(".tab"), Qt::CaseInsensitive);
    QFile file(source);
    if (!isMapInfo || !file.open(QIODevice::ReadOnly))
        return usualEncoding;
    const QString named = charset.match(QString::fromLatin1(file.read(4096))).captured(1);
    for (const Charset &row : charsets)
        if (named.compare(QLatin1String(row.mapInfo), Qt::CaseInsensitive) == 0)
            return row.encoding;
    return usualEncoding;
}
