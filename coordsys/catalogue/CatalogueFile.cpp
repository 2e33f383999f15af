#include "CatalogueFile_p.h"

#include "InputFile_p.h"
#include "MapinfoScanner_p.h"
#include <coordsys/MapinfoCoordSystem.h>

#include <QFile>
#include <QTextCodec>
#include <QTextStream>

#include <algorithm>

namespace nivora::cs {
namespace {

bool hasRussianLetter(const QString &text)
{
    static const QString letters =
        QString::fromUtf8("абвгдеёжзийклмнопрстуфхцчшщъыьэюяАБВГДЕЁЖЗИЙКЛМНОПРСТУФХЦЧШЩЪЫЬЭЮЯ");
    return std::any_of(text.begin(), text.end(), [](QChar c) { return letters.contains(c); });
}

} // namespace

// A catalogue begins with a heading in Russian or in plain ASCII. Windows-1251 bytes read as UTF-8 turn into
// replacement characters, and the UTF-8 bytes of those read as Windows-1251 spell a Russian letter.
QByteArray codecNameForTextFile(const QString &path)
{
    static const QByteArray utf8 = QByteArrayLiteral("UTF-8");
    QFile file(path);
    if (!openInput(file).isEmpty())
        return utf8;
    QTextStream stream(&file);
#if QT_VERSION < QT_VERSION_CHECK(6, 0, 0) // the later one takes UTF-8 unless told otherwise
    stream.setCodec(utf8.constData());
#endif
    const QString line = stream.readLine();
    if (line.isEmpty() || hasRussianLetter(line))
        return utf8;
    const QTextCodec *windows = QTextCodec::codecForName("Windows-1251");
    return windows && hasRussianLetter(windows->toUnicode(line.toUtf8())) ? windows->name() : utf8;
}

int readCatalogueFile(QFile &file, QList<CoordSystemParamsList> &categories)
{
    const QByteArray bytes = file.readAll();
    QTextCodec *const named = QTextCodec::codecForName(codecNameForTextFile(file.fileName()));
    const QString text = QTextCodec::codecForUtfText(bytes, named)->toUnicode(bytes);
    return scanCategories(text, categories);
}

} // namespace nivora::cs
