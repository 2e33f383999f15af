#pragma once

#include <coordsys/coordsys_export.h>

#include <QString>

#include <array>
#include <string>
#include <string_view>
#include <unordered_map>

namespace nivora::cs {

/// Whether bytes are UTF-8.
NIVORA_CS_EXPORT bool isUtf8(std::string_view bytes);
/// Whether a text begins as UTF-16 and UTF-32 do, with a byte order mark or without.
NIVORA_CS_EXPORT bool looksLikeUtf16(std::string_view bytes);

/// The characters of files that are not UTF-8, a byte each. Every byte comes back as it was, also one that
/// stands for no character. Const calls may run together.
class NIVORA_CS_EXPORT TextCoding
{
public:
    /// UTF-8: nothing is to be done.
    TextCoding() = default;
    /// "windows-1251", "KOI8-R", "CP866" and so on; empty: UTF-8. Throws std::invalid_argument
    /// for others.
    explicit TextCoding(const QString &name);

    /// False for UTF-8.
    bool isNeeded() const { return !m_bytes.empty(); }
    /// As UTF-8.
    std::string decoded(std::string_view bytes) const;
    /// Throws std::runtime_error for a character that the coding does not have.
    std::string encoded(std::string_view utf8) const;

private:
    QString m_name;
    std::array<std::string, 256> m_utf8;
    std::unordered_map<std::string, char> m_bytes; ///< of characters; empty for UTF-8
};

} // namespace nivora::cs
