#include "BoundsFile_p.h"

#include "InputFile_p.h"
#include "TextRefs_p.h"
#include <coordsys/CoordSysRect.h>
#include <platform/Logger.h>

#include <QRegularExpression>
#include <QXmlStreamReader>

#include <algorithm>
#include <array>
#include <cmath>

namespace nivora::cs {
namespace {

enum Figure {
    Prj,
    El,
    U,
    Pp0,
    Datum = Pp0 + 6,
    Sx,
    Sy,
    Sz,
    Dp0,
    Xmin = Dp0 + 5,
    Ymin,
    Xmax,
    Ymax,
    FigureCount
};
constexpr const char *figureNames[FigureCount] = {"prj", "el",    "u",    "pp0",  "pp1",  "pp2", "pp3", "pp4",
                                                  "pp5", "datum", "sx",   "sy",   "sz",   "dp0", "dp1", "dp2",
                                                  "dp3", "dp4",   "xmin", "ymin", "xmax", "ymax"};

using Figures = std::array<TextRef, FigureCount>;

/// A name's place in the table, FigureCount when it has none. \p next is where attributes in the table's
/// order stand.
std::size_t placeOf(const TextRef &name, std::size_t next)
{
    for (std::size_t tried = 0; tried < FigureCount; ++tried)
        if (name == QLatin1String(figureNames[(next + tried) % FigureCount]))
            return (next + tried) % FigureCount;
    return FigureCount;
}

Figures figuresIn(const QXmlStreamAttributes &attributes)
{
    Figures figures;
    std::size_t next = 0;
    for (const QXmlStreamAttribute &attribute : attributes) {
        const std::size_t place = placeOf(attribute.qualifiedName(), next);
        if (place == FigureCount)
            continue;
        figures[place] = attribute.value();
        next = place + 1;
    }
    return figures;
}

TABProjInfo_t entryFrom(const Figures &figures)
{
    const auto number = [](const TextRef &text) { return text.toDouble(); };
    const auto rule = [](const TextRef &text) { return getattrib(text.toString()); };
    TABProjInfo_t info;
    info.nProjId = static_cast<std::uint8_t>(figures[Prj].toInt());
    info.nEllipsoidId = static_cast<std::uint8_t>(rule(figures[El])); // -1 becomes 255: not set
    info.nUnitsId = static_cast<std::uint8_t>(rule(figures[U]));
    std::transform(&figures[Pp0], &figures[Pp0] + 6, std::begin(info.adProjParams), number);
    info.nDatumId = static_cast<std::int16_t>(rule(figures[Datum]));
    info.dDatumShiftX = number(figures[Sx]);
    info.dDatumShiftY = number(figures[Sy]);
    info.dDatumShiftZ = number(figures[Sz]);
    std::transform(&figures[Dp0], &figures[Dp0] + 5, std::begin(info.adDatumParams), number);
    info.dXMin = number(figures[Xmin]);
    info.dYMin = number(figures[Ymin]);
    info.dXMax = number(figures[Xmax]);
    info.dYMax = number(figures[Ymax]);
    return info;
}

/// "nan" and "inf" are numbers to the text conversion.
bool isFinite(const TABProjInfo_t &info)
{
    const auto finite = [](double value) { return std::isfinite(value); };
    return std::all_of(std::begin(info.adProjParams), std::end(info.adProjParams), finite) &&
           std::all_of(std::begin(info.adDatumParams), std::end(info.adDatumParams), finite) &&
           finite(info.dDatumShiftX) && finite(info.dDatumShiftY) && finite(info.dDatumShiftZ) &&
           std::isfinite(info.dXMax - info.dXMin) && std::isfinite(info.dYMax - info.dYMin);
}

/// The shipped form of the file, read at a fifth of an XML reader's cost: an ASCII declaration, a root, and
/// rows of
///   <cs prj="10" el="-1" … ymax="15000000"/>
/// Whatever else stands there is left to the reader.
class PlainRows
{
public:
    explicit PlainRows(const QString &text)
        : m_text(text)
    {}

    bool read(std::vector<TABProjInfo_t> &entries)
    {
        static const QRegularExpression head(
            QStringLiteral("\\A<\\?xml version=\"1\\.0\" encoding=\"UTF-8\"\\?>\\s*"
                           "<bounds(?: gdal=\"[\\w.]*\")?(?: epsg=\"[\\w.]*\")?>"));
        const QRegularExpressionMatch start = head.match(m_text);
        if (!start.hasMatch())
            return false;
        m_at = start.capturedEnd();
        while (skipBlanks() && take("<cs")) {
            Figures figures;
            if (!readAttributes(figures))
                return false;
            entries.push_back(entryFrom(figures));
        }
        return take("</bounds>") && (skipBlanks(), m_at == m_text.size()) &&
               std::all_of(entries.begin(), entries.end(),
                           [](const TABProjInfo_t &entry) { return isFinite(entry); });
    }

private:
    bool skipBlanks()
    {
        while (m_at < m_text.size() &&
               (m_text.at(m_at) == QLatin1Char(' ') || m_text.at(m_at) == QLatin1Char('\n') ||
                m_text.at(m_at) == QLatin1Char('\r')))
            ++m_at;
        return true;
    }

    bool take(const char *word)
    {
        const QLatin1String expected(word);
        if (midRef(m_text, m_at, expected.size()) != expected)
            return false;
        m_at += expected.size();
        return true;
    }

    /// Up to and with the "/>". False for anything but known names, once each.
    bool readAttributes(Figures &figures)
    {
        std::size_t next = 0;
        while (take(" ")) {
            const int equals = m_text.indexOf(QLatin1Char('='), m_at);
            const int end = m_text.indexOf(QLatin1Char('"'), equals + 2);
            const std::size_t place = placeOf(midRef(m_text, m_at, equals - m_at), next);
            if (equals < 0 || end < 0 || place == FigureCount || !figures[place].isNull() ||
                m_text.at(equals + 1) != QLatin1Char('"'))
                return false;
            figures[place] = midRef(m_text, equals + 2, end - equals - 2);
            if (!std::all_of(figures[place].begin(), figures[place].end(), isFigureLetter))
                return false;
            m_at = end + 1;
            next = place + 1;
        }
        return take("/>");
    }

    static bool isFigureLetter(QChar c)
    {
        return (c >= QLatin1Char('0') && c <= QLatin1Char('9')) || c == QLatin1Char('.') ||
               c == QLatin1Char('-') || c == QLatin1Char('+') || c == QLatin1Char('e') ||
               c == QLatin1Char('x');
    }

    const QString &m_text;
    int m_at = 0;
};

/// The children of the root that are named "cs"; deeper elements are not entries.
bool readEntries(QXmlStreamReader &xml, std::vector<TABProjInfo_t> &entries)
{
    if (!readRoot(xml))
        return false;
    while (xml.readNextStartElement()) {
        if (xml.name() == QLatin1String("cs")) {
            const TABProjInfo_t entry = entryFrom(figuresIn(xml.attributes()));
            if (isFinite(entry))
                entries.push_back(entry);
            else
                LOG_ERROR(QStringLiteral("cs_mbr.xml:%1: not a finite number").arg(xml.lineNumber()));
        }
        xml.skipCurrentElement();
    }
    while (!xml.atEnd())
        xml.readNext(); // what stands behind the root must be well-formed too
    return !xml.hasError();
}

} // namespace

int getattrib(const QString &text) { return text == QLatin1String("0x00") ? 0 : -1; }

std::vector<TABProjInfo_t> boundsIn(const QByteArray &xml, const QString &fileName)
{
    std::vector<TABProjInfo_t> entries;
    if (PlainRows(QString::fromLatin1(xml)).read(entries) && !entries.empty())
        return entries;
    entries.clear();
    QXmlStreamReader reader(xml);
    if (readEntries(reader, entries))
        return entries;
    LOG_ERROR(QStringLiteral("%1:%2: %3")
                  .arg(fileName, QString::number(reader.lineNumber()), reader.errorString()));
    return {};
}

} // namespace nivora::cs
