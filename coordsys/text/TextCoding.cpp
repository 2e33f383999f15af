#include <coordsys/TextCoding.h>

#include "CoordSysTexts_p.h"

#include <QTextCodec>

#include <algorithm>
#include <array>
#include <stdexcept>
#include <unordered_map>

namespace nivora::cs {
namespace {

constexpr unsigned char firstBeyondAscii = 0x80;
constexpr ushort privateUse = 0xF700; ///< and the byte: for bytes that stand for no character

/// Of the character that begins with the byte; 0 when none does.
std::size_t lengthOf(char first)
{
    const auto c = static_cast<unsigned char>(first);
    if (c < firstBeyondAscii)
        return 1;
    return c >= 0xF0 && c < 0xF5 ? 4 : c >= 0xE0 ? 3 * (c < 0xF0) : 2 * (c >= 0xC2);
}

bool isContinuation(char c) { return (static_cast<unsigned char>(c) & 0xC0) == 0x80; }

} // namespace

bool isUtf8(std::string_view bytes)
{
    while (!bytes.empty()) {
        const std::size_t length = lengthOf(bytes.front());
        if (length == 0 || length > bytes.size() ||
            !std::all_of(bytes.begin() + 1, bytes.begin() + static_cast<std::ptrdiff_t>(length),
                         isContinuation))
            return false;
        bytes.remove_prefix(length);
    }
    return true;
}

bool looksLikeUtf16(std::string_view bytes)
{
    const std::string_view mark = bytes.substr(0, 2);
    if (mark == "\xFF\xFE" || mark == "\xFE\xFF")
        return true;
    if (bytes.size() < 4)
        return false;
    const auto isZero = [bytes](std::size_t at) { return bytes[at] == '\0'; };
    return isZero(0) != isZero(1) && isZero(0) == isZero(2) && isZero(1) == isZero(3);
}

struct NIVORA_CS_NO_EXPORT TextCoding::Data
{
    explicit Data(const QString &codecName);

    QString name;
    std::array<std::string, 256> utf8;
    std::unordered_map<std::string, char> bytes; ///< of characters; empty for UTF-8
};

TextCoding::TextCoding()
    : TextCoding(QString())
{}

TextCoding::TextCoding(const QString &name)
    : m_data(std::make_shared<const Data>(name))
{}

TextCoding::TextCoding(const TextCoding &other) = default;

TextCoding &TextCoding::operator=(const TextCoding &other) = default;

TextCoding::~TextCoding() = default;

bool TextCoding::isNeeded() const { return !m_data->bytes.empty(); }

TextCoding::Data::Data(const QString &codecName)
    : name(codecName)
{
    constexpr int utf8Mib = 106;
    const QTextCodec *const codec = QTextCodec::codecForName(name.toLatin1());
    if (name.isEmpty() || (codec && codec->mibEnum() == utf8Mib))
        return;
    for (std::size_t byte = 0; codec && byte < utf8.size(); ++byte) {
        const char c = static_cast<char>(byte);
        QString text = codec->toUnicode(&c, 1);
        if (text.isEmpty() || text.at(0) == QChar::ReplacementCharacter)
            text = QChar(static_cast<ushort>(privateUse + byte));
        utf8[byte] = text.toStdString();
        bytes[utf8[byte]] = c;
    }
    const bool asciiStays = codec && std::all_of(utf8.begin(), utf8.begin() + firstBeyondAscii,
                                                 [](const std::string &c) { return c.size() == 1; });
    const bool aByteEach = codec && codec->fromUnicode(QStringLiteral("aя")).size() == 2;
    if (!asciiStays || !aByteEach || bytes.size() != utf8.size())
        throw std::invalid_argument(
            CoordSysTexts::tr(
                "\"%1\" — не кодировка с байтом на каждый знак, как windows-1251, KOI8-R или CP866")
                .arg(name)
                .toStdString());
}

std::string TextCoding::decoded(std::string_view bytes) const
{
    std::string text;
    text.reserve(bytes.size() * 2);
    for (const char byte : bytes)
        text += m_data->utf8[static_cast<unsigned char>(byte)];
    return text;
}

std::string TextCoding::encoded(std::string_view utf8) const
{
    std::string bytes;
    bytes.reserve(utf8.size());
    for (std::size_t i = 0; i < utf8.size();) {
        const std::string character(utf8.substr(i, std::max<std::size_t>(lengthOf(utf8[i]), 1)));
        const auto byte = m_data->bytes.find(character);
        if (byte == m_data->bytes.end())
            throw std::runtime_error(CoordSysTexts::tr("\"%1\" нельзя записать в кодировке %2")
                                         .arg(QString::fromStdString(character), m_data->name)
                                         .toStdString());
        bytes += byte->second;
        i += character.size();
    }
    return bytes;
}

} // namespace nivora::cs
