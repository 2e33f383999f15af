#pragma once

#include <coordsys/coordsys_export.h>

#include <QString>

#include <memory>
#include <string>
#include <string_view>

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
    TextCoding();
    /// "windows-1251", "KOI8-R", "CP866" and so on; empty: UTF-8. Throws std::invalid_argument
    /// for others.
    explicit TextCoding(const QString &name);
    /// Shares the tables.
    TextCoding(const TextCoding &other);
    /// Likewise.
    TextCoding &operator=(const TextCoding &other);
    ~TextCoding();

    /// False for UTF-8.
    bool isNeeded() const;
    /// As UTF-8.
    std::string decoded(std::string_view bytes) const;
    /// Throws std::runtime_error for a character that the coding does not have.
    std::string encoded(std::string_view utf8) const;

private:
    struct Data;
    std::shared_ptr<const Data> m_data;
};

} // namespace nivora::cs
