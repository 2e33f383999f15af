#include "FileNames.h"

#include "Output.h"

#include <platform/system/LocaleEncoding.h>

#include <QFile>
#include <QObject>
#include <QTextCodec>

#include <algorithm>
#include <cstring>

namespace {

constexpr ushort escapes = 0xDC00; ///< with the byte added

bool isEscape(QChar c) { return c.unicode() >= escapes + 0x80 && c.unicode() <= escapes + 0xFF; }

/// The text of bytes that are UTF-8, a byte order mark included; false for others.
bool decode(const char *bytes, int size, QString &text)
{
    static QTextCodec *const utf8 = QTextCodec::codecForName("UTF-8");
    QTextCodec::ConverterState state(QTextCodec::IgnoreHeader);
    text = utf8->toUnicode(bytes, size, &state);
    return state.invalidChars == 0 && state.remainingChars == 0;
}

/// The character that begins there, or the byte there.
QString firstOf(const char *bytes, int size, int &taken)
{
    constexpr int longest = 4;
    QString text;
    for (taken = 1; taken <= std::min(size, longest); ++taken)
        if (decode(bytes, taken, text))
            return text;
    taken = 1;
    return QChar(static_cast<ushort>(escapes + static_cast<unsigned char>(*bytes)));
}

/// Up to the next escape; the second half of a pair is none.
int plainLength(const QChar *text, int size)
{
    int length = 1;
    while (length < size && (text[length - 1].isHighSurrogate() || !isEscape(text[length])))
        ++length;
    return length;
}

QString textOf(const char *bytes, int size)
{
    QString text;
    if (decode(bytes, size, text))
        return text;
    text.clear();
    for (int at = 0, taken = 0; at < size; at += taken)
        text += firstOf(bytes + at, size - at, taken);
    return text;
}

QByteArray bytesOf(const QChar *text, int size)
{
    QByteArray bytes;
    for (int at = 0; at < size;) {
        const QChar *const plain = text + at;
        const bool isByte = isEscape(*plain);
        const int length = isByte ? 1 : plainLength(plain, size - at);
        bytes += isByte ? QByteArray(1, static_cast<char>(plain->unicode() & 0xFF))
                        : QString(plain, length).toUtf8();
        at += length;
    }
    return bytes;
}

/// What the locale makes of an argument that is not UTF-8.
QString inLocale(const QString &argument)
{
    const std::string encoding = nivora::system::localeEncoding();
    const QTextCodec *const locale = QTextCodec::codecForName(encoding.c_str());
    return locale ? locale->toUnicode(bytesOf(argument.constData(), static_cast<int>(argument.size())))
                  : argument;
}

#if QT_VERSION < QT_VERSION_CHECK(6, 0, 0)
class FileNameCodec : public QTextCodec
{
public:
    QByteArray name() const override { return "nivora-cs-file-names"; }
    int mibEnum() const override { return -4096; } // none of the registered numbers, and none of Qt's

protected:
    QString convertToUnicode(const char *bytes, int size, ConverterState *) const override
    {
        return textOf(bytes, size);
    }
    QByteArray convertFromUnicode(const QChar *text, int size, ConverterState *) const override
    {
        return bytesOf(text, size);
    }
};
#endif

} // namespace

#if QT_VERSION < QT_VERSION_CHECK(6, 0, 0)

void keepFileNames() { QTextCodec::setCodecForLocale(new FileNameCodec); } // Qt owns it

QString argumentText(const char *argument) { return QFile::decodeName(argument); }

void checkArguments(const QStringList &) {}

#else // which knows names in UTF-8 alone, and would open another file than the one that was named

void keepFileNames() {}

QString argumentText(const char *argument)
{
    const QString text = textOf(argument, static_cast<int>(std::strlen(argument)));
    const QString typed = typedText(text);
    return typed.contains(QChar::ReplacementCharacter) ? text : typed;
}

void checkArguments(const QStringList &arguments)
{
    for (const QString &argument : arguments)
        if (!argument.isValidUtf16())
            throw Failure(QObject::tr("texts and names of files must be UTF-8 here: %1").arg(argument));
}

#endif

QString typedText(const QString &argument) { return argument.isValidUtf16() ? argument : inLocale(argument); }

QString localPath(const QString &name)
{
    return name.startsWith(QLatin1Char(':')) ? QStringLiteral("./") + name : name;
}
