#include "MifCheck.h"

#include "Losses.h"
#include "MapInfoFiles.h"

#include <QFile>
#include <QObject>

#include <algorithm>
#include <array>
#include <cctype>
#include <charconv>
#include <cmath>
#include <cstring>
#include <string_view>
#include <utility>
#include <vector>

namespace {

/// What a line of the data begins with.
enum class Word { Object, Collection, Numbers, Style, Mark };
struct Keyword
{
    std::string_view name;
    Word word;
};
constexpr Keyword keywords[] = {
    {"none", Word::Object},  {"point", Word::Numbers},     {"line", Word::Numbers},
    {"pline", Word::Object}, {"region", Word::Object},     {"rect", Word::Numbers},
    {"arc", Word::Numbers},  {"ellipse", Word::Numbers},   {"roundrect", Word::Numbers},
    {"text", Word::Object},  {"multipoint", Word::Object}, {"collection", Word::Collection},
    {"symbol", Word::Style}, {"pen", Word::Style},         {"brush", Word::Style},
    {"font", Word::Style},   {"center", Word::Mark},       {"smooth", Word::Mark},
    {"spacing", Word::Mark}, {"justify", Word::Mark},      {"angle", Word::Mark},
    {"label", Word::Mark},
};

bool isBlank(char c) { return c == ' ' || c == '\t' || c == '\r' || c == '\n'; }

std::string_view trimmed(std::string_view line)
{
    while (!line.empty() && isBlank(line.front()))
        line.remove_prefix(1);
    while (!line.empty() && isBlank(line.back()))
        line.remove_suffix(1);
    return line;
}

/// By byte.
constexpr std::array<bool, 256> numericBytes = [] {
    std::array<bool, 256> bytes{};
    for (const char c : std::string_view("0123456789+-.eE \t,"))
        bytes[static_cast<unsigned char>(c)] = true;
    return bytes;
}();

bool isNumeric(std::string_view text)
{
    return std::all_of(text.begin(), text.end(),
                       [](char c) { return numericBytes[static_cast<unsigned char>(c)]; });
}

/// Lines of a file from where it is, one after the other.
class LineReader
{
public:
    explicit LineReader(QFile &file)
        : m_file(file)
    {}
    /// With its end; valid until the next call. False at the end of the file.
    bool next(std::string_view &line)
    {
        const char *end = nullptr;
        do
            end = lineEnd();
        while (!end && fill());
        const char *const begin = m_bytes.data() + m_begin;
        line = {begin, static_cast<std::size_t>((end ? end + 1 : m_bytes.data() + m_filled) - begin)};
        m_begin += line.size();
        m_seen = m_begin;
        return !line.empty();
    }

private:
    /// In what has not been looked at.
    const char *lineEnd() const
    {
        return static_cast<const char *>(std::memchr(m_bytes.data() + m_seen, '\n', m_filled - m_seen));
    }
    /// Keeps the line that has begun. False when there is no more.
    bool fill()
    {
        constexpr std::size_t block = 1 << 18;
        std::memmove(m_bytes.data(), m_bytes.data() + m_begin, m_filled - m_begin);
        m_filled -= std::exchange(m_begin, 0);
        m_seen = m_filled;
        m_bytes.resize(std::max(m_bytes.size(), m_filled + block));
        const qint64 size =
            m_file.read(m_bytes.data() + m_filled, static_cast<qint64>(m_bytes.size() - m_filled));
        m_filled += static_cast<std::size_t>(std::max<qint64>(size, 0));
        return size > 0;
    }

    QFile &m_file;
    std::vector<char> m_bytes = std::vector<char>(1);
    std::size_t m_begin = 0;
    std::size_t m_seen = 0;
    std::size_t m_filled = 0;
};

const Keyword *keywordOf(std::string_view word)
{
    const auto same = [word](const Keyword &row) {
        return std::equal(word.begin(), word.end(), row.name.begin(), row.name.end(),
                          [](char a, char b) { return std::tolower(static_cast<unsigned char>(a)) == b; });
    };
    const auto *const found = std::find_if(std::begin(keywords), std::end(keywords), same);
    return found == std::end(keywords) ? nullptr : found;
}

/// Around the places of lines that hold one or two.
class Places
{
public:
    /// Other numbers than places, or one alone, pass.
    void take(std::string_view text);
    std::optional<QRectF> extent() const
    {
        return m_isRead && m_low.x() <= m_high.x() ? std::optional<QRectF>({m_low, m_high}) : std::nullopt;
    }
    void giveUp() { m_isRead = false; }

private:
    void extend(const QPointF &place);

    QPointF m_low = QPointF(HUGE_VAL, HUGE_VAL);
    QPointF m_high = -m_low;
    bool m_isRead = true;
};

void Places::extend(const QPointF &place)
{
    m_low = QPointF(std::min(m_low.x(), place.x()), std::min(m_low.y(), place.y()));
    m_high = QPointF(std::max(m_high.x(), place.x()), std::max(m_high.y(), place.y()));
}

void Places::take(std::string_view text)
{
    std::array<double, 4> numbers{};
    std::size_t count = 0;
    const char *const end = text.data() + text.size();
    for (const char *at = text.data(); at < end; ++at) {
        if (*at == ' ' || *at == '\t' || *at == ',')
            continue;
        if (count == numbers.size())
            return giveUp();
        const auto [next, error] = std::from_chars(at, end, numbers[count++]);
        if (error != std::errc())
            return giveUp();
        at = next - 1;
    }
    for (std::size_t i = 0; i + 1 < count; i += 2)
        extend({numbers[i], numbers[i + 1]});
    if (count == 3)
        giveUp();
}

/// Goes through the lines behind "Data".
class DataLines
{
public:
    /// False for a line that is none.
    bool take(std::string_view line);
    int objects() const { return m_objects; }
    Places &places() { return m_places; }

private:
    Places m_places;
    bool m_anglesFollow = false; ///< in the next line, of an arc
    int m_objects = 0;
    int m_parts = 0; ///< of a collection, still to come
};

bool DataLines::take(std::string_view line)
{
    line = trimmed(line);
    if (line.empty() || line.front() == '"')
        return true;
    if (isNumeric(line)) {
        if (!std::exchange(m_anglesFollow, false))
            m_places.take(line);
        return true;
    }
    const std::size_t end = std::min(line.find_first_of(" \t(\""), line.size());
    const Keyword *const keyword = keywordOf(line.substr(0, end));
    if (!keyword)
        return false;
    const std::string_view rest = trimmed(line.substr(end));
    if (keyword->word == Word::Style)
        return !rest.empty() && rest.front() == '(' && rest.back() == ')';
    if (keyword->word == Word::Mark)
        return true;
    if (m_parts > 0)
        --m_parts;
    else
        ++m_objects;
    if (keyword->word == Word::Collection)
        m_parts = QByteArray(rest.data(), static_cast<int>(rest.size())).toInt();
    if (keyword->word == Word::Object)
        return true;
    m_anglesFollow = keyword->name == "arc";
    if (keyword->word == Word::Numbers)
        m_places.take(rest);
    return isNumeric(rest);
}

/// Lines with as many quotation marks as close each other.
int recordsOf(QFile &file)
{
    int records = 0;
    qint64 quotes = 0;
    LineReader lines(file);
    for (std::string_view line; lines.next(line);) {
        quotes += std::count(line.begin(), line.end(), '"');
        records += quotes % 2 == 0 && !trimmed(line).empty();
    }
    return records;
}

/// At the first line of the data; the count of the columns that the header has.
int passHeader(QFile &file, int &number, bool &isTransformed)
{
    int columns = 0;
    while (!file.atEnd()) {
        const QByteArray line = file.readLine().trimmed().toLower();
        ++number;
        if (line == "data")
            break;
        isTransformed = isTransformed || line.startsWith("transform");
        if (line.startsWith("columns"))
            columns = line.mid(7).trimmed().toInt();
    }
    return columns;
}

void checkRecords(const QString &path, int columns, int objects, Losses &losses)
{
    const QString mid = siblingOf(path, QStringLiteral("mid"));
    QFile file(mid);
    if (columns > 0 && (mid.isEmpty() || !file.open(QIODevice::ReadOnly)))
        return losses.add(Loss::Types, QObject::tr("%1 has no MID: its columns are empty").arg(path));
    const int records = columns > 0 ? recordsOf(file) : objects;
    if (records != objects)
        losses.add(Loss::Features,
                   QObject::tr("%1 has %2 objects, but its MID %3 records: values may stand at other objects")
                       .arg(path, QString::number(objects), QString::number(records)));
}

} // namespace

std::optional<QRectF> checkMif(const QString &path, Losses &losses)
{
    QFile file(path);
    if (!file.open(QIODevice::ReadOnly))
        return std::nullopt;
    int number = 0;
    bool isTransformed = false;
    const int columns = passHeader(file, number, isTransformed);
    DataLines lines;
    LineReader reader(file);
    for (std::string_view line; reader.next(line);) {
        ++number;
        if (lines.take(line))
            continue;
        losses.add(Loss::Features,
                   QObject::tr("%1 is damaged in line %2: features may be missing or other than "
                               "they were")
                       .arg(path, QString::number(number)));
        return std::nullopt;
    }
    checkRecords(path, columns, lines.objects(), losses);
    return isTransformed ? std::nullopt : lines.places().extent();
}
