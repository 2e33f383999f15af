#pragma once

// How texts that people write for a coordinate system look. Nothing here asks a database or a catalogue.

#include <QString>
#include <QStringList>
#include <QVector>

#include <functional>
#include <optional>

namespace nivora::cs {

/// "EPSG", "", "4326" of "EPSG:4326"; "OGC", "1.3", "CRS84" of "urn:ogc:def:crs:OGC:1.3:CRS84".
struct CodeReference
{
    QString authority;
    QString version; ///< as written, mostly empty
    QString code;

    QString text() const { return authority + QLatin1Char(':') + code; }
};

/// A text that names a system by code.
struct CodeText
{
    QVector<CodeReference> parts; ///< the first is horizontal; more for "A:n+B:m" and its URN and URL forms
    QString leftAside;            ///< the geometry of extended WKT
};

/// Asked only where it matters: the database is walked through for them.
using Authorities = std::function<QStringList()>;

/// Bare numbers, "EPSG:4326", "epsg 4326", SRID, URN, URL and compound forms; nothing for other texts. Words
/// apart by a blank name an authority only when it is one of \p authorities.
std::optional<CodeText> codeTextOf(const QString &text, const Authorities &authorities);

/// PROJ text as the engines take it, "+proj=…" first and every term with its sign, of text whose terms stand
/// in any order and may lack the sign; nothing when there is no term "proj" or "init".
std::optional<QString> projTextOf(const QString &text);
/// The code of PROJ text that begins with "+init=epsg:4326" and says nothing more of a system; else nothing.
std::optional<CodeReference> initCodeOf(const QString &proj);

/// A system's text with the epoch of coordinates in it.
struct DatedText
{
    QString system; ///< its own text
    QString epoch;  ///< decimal years; empty when there is none
};
/// COORDINATEMETADATA of WKT 2 and PROJJSON, and "EPSG:9057@2016.47"; nothing for other texts.
std::optional<DatedText> datedTextOf(const QString &text);

/// "AUTO:42001,-93,0", a system of the Web Map Service made for a place.
bool isAutoText(const QString &text);
/// As PROJ reads it; nothing for AUTO2 with other units than the metre, and for what is malformed.
std::optional<QString> autoTextOf(const QString &text);
bool isWktText(const QString &text);

/// The notations of systems, in the order in which a text is tried.
enum class Notation { Tagged, Json, Wkt, Proj, CatalogueLine, CoordSys, Auto, Code, Urn, Name };
/// What a text without blanks and quotes around it is written in: a name when it is nothing else.
Notation notationOf(const QString &text, const Authorities &authorities);
/// "prj" of "PRJ:Earth Projection 1, 104"; empty without a tag.
QString tagOf(const QString &text);
/// Texts are pasted with the quotes around them; a catalogue's line has quotes of its own.
QString withoutQuotes(const QString &text);
/// Brackets of PROJJSON or WKT are nested deeper than any system needs; the engines read them by recursion.
bool isNestedTooDeep(const QString &text);

/// The text on one line, cut to what a message can hold.
QString shownText(const QString &text);

} // namespace nivora::cs
