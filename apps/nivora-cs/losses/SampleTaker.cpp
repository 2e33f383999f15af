#include "SampleTaker.h"

#include <algorithm>
#include <climits>
#include <cmath>
#include <cstring>
#include <utility>

namespace {

constexpr quint64 nothing = 1;
constexpr quint64 notFinite = 2;

/// Lengths behind which some format ends a text.
constexpr std::size_t lengths[] = {0, 10, 16, 80, 128, 254, 255, 256, 1024, 4096, 65534, 65535};

/// Whether a decimal of so many places says it all.
bool fits(double value, int places)
{
    const double scaled = std::fabs(value) * std::pow(10.0, places);
    constexpr double mostExact = 9007199254740992.0; // 2^53: every larger number is whole
    return scaled >= mostExact || std::fabs(scaled - std::round(scaled)) <= 1e-9 * std::max(1.0, scaled);
}

quint64 kindOfReal(double value, int width, int precision)
{
    if (!std::isfinite(value))
        return notFinite;
    constexpr int offset = 400; // of the smallest power of ten
    constexpr int coarse = 8;   // powers of ten that are one kind where a column has room for all
    const int power = value == 0.0 ? 0 : static_cast<int>(std::floor(std::log10(std::fabs(value))));
    const bool isLimited = width > 0 || precision > 0;
    const int size = offset + (isLimited ? power : power / coarse);
    const bool isFine = isLimited && !fits(value, precision);
    return 16 + (static_cast<quint64>(size) << 3) + (value < 0.0 ? 1 : 0) + (isFine ? 2 : 0) +
           (value == std::floor(value) ? 4 : 0);
}

quint64 kindOfInteger(GIntBig value, int width)
{
    const bool isNegative = value < 0;
    const double size = std::fabs(static_cast<double>(value));
    const int digits = size < 1.0 ? 1 : 1 + static_cast<int>(std::log10(size));
    const auto isBeyond = [size](int bits) { return size >= std::ldexp(1.0, bits) ? 1 : 0; };
    const int coarse = isBeyond(15) + isBeyond(31) + isBeyond(53);
    return 16 + static_cast<quint64>((width > 0 ? digits : 32 + coarse) * 2 + (isNegative ? 1 : 0));
}

quint64 kindOfTime(OGRFeatureH feature, int column)
{
    int year = 0;
    int month = 0;
    int day = 0;
    int hour = 0;
    int minute = 0;
    int zone = 0;
    float second = 0.0F;
    OGR_F_GetFieldAsDateTimeEx(feature, column, &year, &month, &day, &hour, &minute, &second, &zone);
    const bool isFine = second != std::floor(second);
    const bool hasTime = hour != 0 || minute != 0 || second != 0.0F;
    const bool isOld = year < 1900;
    return 16 + static_cast<quint64>(zone) * 8 + (isFine ? 1U : 0U) + (hasTime ? 2U : 0U) + (isOld ? 4U : 0U);
}

void countParts(OGRGeometryH geometry, int &leaves, int &fewest)
{
    const int parts = OGR_G_GetGeometryCount(geometry);
    for (int i = 0; i < parts; ++i)
        countParts(OGR_G_GetGeometryRef(geometry, i), leaves, fewest);
    if (parts > 0)
        return;
    ++leaves;
    fewest = std::min(fewest, OGR_G_GetPointCount(geometry));
}

/// "PEN(w:1px,c:#000000);LABEL(t:"x")" is of the kind "PEN LABEL".
QByteArray kindOfStyle(const char *style)
{
    QByteArray kind;
    int depth = 0;
    bool isQuoted = false;
    for (const char *p = style; *p != '\0'; ++p) {
        isQuoted = isQuoted != (*p == '"');
        depth += isQuoted ? 0 : *p == '(' ? 1 : *p == ')' ? -1 : 0;
        if (depth == 0 && !isQuoted && *p != ')')
            kind += *p;
    }
    return kind;
}

} // namespace

std::vector<int> kindOfGeometry(OGRGeometryH geometry)
{
    constexpr int many = 4;
    int leaves = 0;
    int fewest = INT_MAX;
    countParts(geometry, leaves, fewest);
    return {static_cast<int>(OGR_G_GetGeometryType(geometry)), OGR_G_HasCurveGeometry(geometry, TRUE),
            std::min(leaves, 2), std::min(fewest, many)};
}

bool isUsualStyle(const char *style)
{
    static constexpr const char *usual[] = {
        "",
        "SYMBOL(a:0,c:#000000,s:12pt,id:\"mapinfo-sym-35,ogr-sym-9\")",
        "PEN(w:1px,c:#000000,id:\"mapinfo-pen-2,ogr-pen-0\",cap:r,j:r)",
        ("BRUSH(fc:#000000,bc:#ffffff,id:\"mapinfo-brush-1,ogr-brush-1\");"
         "PEN(w:1px,c:#000000,id:\"mapinfo-pen-2,ogr-pen-0\",cap:r,j:r)"),
    };
    return !style || std::any_of(std::begin(usual), std::end(usual),
                                 [style](const char *one) { return std::strcmp(style, one) == 0; });
}

SampleTaker::SampleTaker(OGRFeatureDefnH source, OGRFeatureDefnH made, const std::vector<int> &map)
{
    for (int i = 0; i < OGR_FD_GetFieldCount(source); ++i) {
        const int there = map[static_cast<std::size_t>(i)];
        if (there < 0)
            continue; // lost, and told so
        OGRFieldDefnH field = OGR_FD_GetFieldDefn(made, there);
        m_columns.push_back({i, OGR_Fld_GetType(OGR_FD_GetFieldDefn(source, i)), OGR_Fld_GetWidth(field),
                             OGR_Fld_GetPrecision(field)});
    }
}

std::vector<FeatureBatch::Item *> SampleTaker::take(std::vector<FeatureBatch::Item> &items)
{
    std::vector<FeatureBatch::Item *> samples;
    for (FeatureBatch::Item &item : items)
        if (!item.rejection && isNew(item))
            samples.push_back(&item);
    return samples;
}

bool SampleTaker::isNew(const FeatureBatch::Item &item)
{
    OGRFeatureH feature = item.feature.get();
    bool found = false;
    for (Column &column : m_columns)
        found = isNewValue(feature, column) || found;
    if (item.geometry)
        found = m_geometries.insert(kindOfGeometry(item.geometry.get())).second || found;
    const char *const style = OGR_F_GetStyleString(feature);
    if (!isUsualStyle(style))
        found = m_styles.insert(kindOfStyle(style)).second || found;
    return found;
}

bool SampleTaker::isNewValue(OGRFeatureH feature, Column &column)
{
    bool hasNewCharacter = false;
    quint64 kind = nothing;
    if (OGR_F_IsFieldSetAndNotNull(feature, column.index)) {
        if (column.type == OFTReal)
            kind = kindOfReal(OGR_F_GetFieldAsDouble(feature, column.index), column.width, column.precision);
        else if (column.type == OFTInteger || column.type == OFTInteger64)
            kind = kindOfInteger(OGR_F_GetFieldAsInteger64(feature, column.index), column.width);
        else if (column.type == OFTDate || column.type == OFTTime || column.type == OFTDateTime)
            kind = kindOfTime(feature, column.index);
        else
            kind = kindOfText(OGR_F_GetFieldAsString(feature, column.index), column, hasNewCharacter);
    }
    if (kind == std::exchange(column.last, kind)) // most are like the one before
        return hasNewCharacter;
    return column.kinds.insert(kind).second || hasNewCharacter;
}

quint64 SampleTaker::kindOfText(const char *text, const Column &column, bool &hasNewCharacter)
{
    const std::size_t size = std::strlen(text);
    quint64 kind = static_cast<quint64>(std::lower_bound(std::begin(lengths), std::end(lengths), size) -
                                        std::begin(lengths));
    quint64 marks = column.width > 0 && size > static_cast<std::size_t>(column.width) ? 1 : 0;
    constexpr char special[] = "\n\r\t\\\"'";
    for (const char *p = text; *p != '\0'; ++p) {
        const auto byte = static_cast<unsigned char>(*p);
        if (byte < 0x20 || byte == '\\' || byte == '"' || byte == '\'') {
            const char *const found = std::strchr(special, *p);
            marks |= 2ULL << (found ? found - special : 7);
        } else if (byte >= 0xC0) {
            const auto next = static_cast<unsigned char>(p[1]);
            const auto third = static_cast<unsigned char>(next == 0 ? 0 : p[2]);
            const unsigned code = byte < 0xE0   ? (byte & 0x1FU) << 6 | (next & 0x3FU)
                                  : byte < 0xF0 ? (byte & 0xFU) << 12 | (next & 0x3FU) << 6 | (third & 0x3FU)
                                                : 0xFFFFU;
            hasNewCharacter = hasNewCharacter || !m_characters[code];
            m_characters[code] = true;
        }
    }
    if (size > 0 && text[0] == ' ')
        marks |= 0x400;
    if (size > 0 && text[size - 1] == ' ')
        marks |= 0x800;
    return 16 + (kind << 16) + marks;
}
