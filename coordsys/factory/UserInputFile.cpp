#include "UserInputFile_p.h"

#include "CatalogueSource_p.h"
#include "CodedError_p.h"
#include "CoordSysTexts_p.h"
#include "InputFile_p.h"
#include <coordsys/CoordSystemStrings.h>
#include <coordsys/MapHeaderCoordsysConverter.h>
#include <coordsys/MapHeaderRecord.h>
#include <coordsys/ProjectionParamsManager.h>
#include <platform/system/LocaleEncoding.h>

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QRegularExpression>
#include <QTextCodec>

#include <algorithm>
#include <memory>
#include <stdexcept>

namespace nivora::cs {
namespace {

constexpr qint64 largestText = 1024 * 1024;
/// A .mif file holds its data behind the header; a CoordSys clause stands within so much.
constexpr qint64 headerBytes = 64 * 1024;

[[noreturn]] void refuse(const QString &path, const QString &reason)
{
    throwCoded<std::runtime_error>(Error::Code::FileFailed,
                                   CoordSysTexts::tr("Не могу прочитать файл %1: %2").arg(path, reason));
}

std::unique_ptr<QFile> opened(const QString &path)
{
    auto file = std::make_unique<QFile>(path);
    const QString reason = openInput(*file);
    if (!reason.isEmpty())
        refuse(path, reason);
    return file;
}

QString wholeText(const QString &path)
{
    const QByteArray bytes = opened(path)->read(largestText + 1);
    if (bytes.size() > largestText)
        refuse(path, CoordSysTexts::tr("Файл слишком велик"));
    return decodedText(bytes);
}

/// The locale's, whatever the host has made Qt take for it. ASCII says nothing of other bytes.
QTextCodec *localeCodec()
{
    const std::string name = system::localeEncoding();
    return name.rfind("ANSI_X3.4", 0) == 0 ? nullptr : QTextCodec::codecForName(name.c_str());
}

/// Every other byte of ASCII in UTF-16 is zero. Null for other encodings.
QTextCodec *utf16Of(const QByteArray &bytes)
{
    if (bytes.size() < 2 || bytes.size() % 2 != 0)
        return nullptr;
    const bool bigEndian = bytes.at(0) == '\0' && bytes.at(1) != '\0';
    const bool littleEndian = bytes.at(0) != '\0' && bytes.at(1) == '\0';
    return bigEndian      ? QTextCodec::codecForName("UTF-16BE")
           : littleEndian ? QTextCodec::codecForName("UTF-16LE")
                          : nullptr;
}

bool decodes(QTextCodec *codec, const QByteArray &bytes, QString &text)
{
    QTextCodec::ConverterState state;
    text = codec->toUnicode(bytes.constData(), bytes.size(), &state);
    return state.invalidChars == 0;
}

/// Bytes of other files, read as text, have control characters or no place in Unicode.
bool isReadable(const QString &text)
{
    return text.isValidUtf16() && std::none_of(text.begin(), text.end(), [](QChar c) {
               return (c.category() == QChar::Other_Control && !c.isSpace()) ||
                      c == QChar::ReplacementCharacter;
           });
}

QString textInMif(const QString &path, QStringList &notes)
{
    const QString clause = coordSysClauseIn(decodedText(opened(path)->read(headerBytes))).text;
    if (!clause.isEmpty())
        return clause;
    notes << CoordSysTexts::tr("В файле %1 нет предложения CoordSys: это долгота и широта").arg(path);
    return QStringLiteral("CoordSys Earth Projection 1, 0");
}

QString textInMap(const QString &path, QStringList &)
{
    MapHeaderRecord record = readMapHeader(*opened(path));
    record.projection.nBoundsFlag = 0; // those of the file, not of the system
    return QStringLiteral("CoordSys ") + coordSysText(record);
}

/// The .map file beside a .tab file, in any letter case.
QString mapBeside(const QString &tab)
{
    const QFileInfo info(tab);
    const QString wanted = info.completeBaseName() + QStringLiteral(".map");
    for (const QString &name : info.dir().entryList(QDir::Files))
        if (name.compare(wanted, Qt::CaseInsensitive) == 0)
            return info.dir().filePath(name);
    refuse(tab, CoordSysTexts::tr("рядом нет файла %1").arg(wanted));
}

/// In a raster's table the unit of its pixels follows the clause: Units "degree"
QString withoutPixelUnit(const QString &clause)
{
    static const QRegularExpression unit(QStringLiteral("(?<!affine)\\s+units\\s+\"[^\"]*\"$"),
                                         QRegularExpression::CaseInsensitiveOption);
    const bool isPlan = clause.contains(QLatin1String("nonearth"), Qt::CaseInsensitive);
    return isPlan ? clause : QString(clause).remove(unit);
}

QString textInTab(const QString &path, QStringList &notes)
{
    const QString clause = withoutPixelUnit(coordSysClauseIn(wholeText(path)).text);
    return clause.isEmpty() ? textInMap(mapBeside(path), notes) : clause;
}

struct FileKind
{
    const char *suffix;
    QString (*read)(const QString &path, QStringList &notes);
};
constexpr FileKind fileKinds[] = {
    {"mif", textInMif},
    {"tab", textInTab},
    {"map", textInMap},
};

} // namespace

QString decodedText(const QByteArray &bytes)
{
    if (QTextCodec *marked = QTextCodec::codecForUtfText(bytes, nullptr))
        return marked->toUnicode(bytes);
    QString text;
    if (QTextCodec *utf16 = utf16Of(bytes))
        return utf16->toUnicode(bytes);
    for (QTextCodec *codec : {QTextCodec::codecForName("UTF-8"), localeCodec()})
        if (codec && decodes(codec, bytes, text))
            return text;
    return QTextCodec::codecForName("Windows-1251")->toUnicode(bytes); // as the catalogues' files
}

QString systemTextInFile(const QString &path, QStringList &notes)
{
    const QString suffix = QFileInfo(path).suffix().toLower();
    const auto kind = std::find_if(std::begin(fileKinds), std::end(fileKinds),
                                   [&](const FileKind &row) { return suffix == QLatin1String(row.suffix); });
    const QString text = kind != std::end(fileKinds) ? kind->read(path, notes) : wholeText(path).trimmed();
    if (text.isEmpty())
        refuse(path, CoordSysTexts::tr("в нём нет текста"));
    if (!isReadable(text))
        refuse(path, CoordSysTexts::tr("это не текст"));
    return text;
}

} // namespace nivora::cs
