#include "MifCheck.h"

#include "Losses.h"
#include "MapInfoFiles.h"

#include <QFile>
#include <QObject>

#include <algorithm>
#include <array>
#include <cctype>
#include <string_view>

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

bool isNumeric(std::string_view text)
{
    return std::all_of(text.begin(), text.end(), [](char c) {
        return std::string_view("0123456789+-.eE \t,").find(c) != std::string_view::npos;
    });
}

const Keyword *keywordOf(std::string_view word)
{
    const auto same = [word](const Keyword &row) {
        return std::equal(word.begin(), word.end(), row.name.begin(), row.name.end(),
                          [](char a, char b) { return std::tolower(static_cast<unsigned char>(a)) == b; });
    };
    const auto *const found = std::find_if(std::begin(keywords), std::end(keywords), same);
    return found == std::end(keywords) ? nullptr : found;
}

/// Goes through the lines behind "Data".
class DataLines
{
public:
    /// False for a line that is none.
    bool take(std::string_view line);
    int objects() const { return m_objects; }

private:
    int m_objects = 0;
    int m_parts = 0; ///< of a collection, still to come
};

bool DataLines::take(std::string_view line)
{
    line = trimmed(line);
    if (line.empty() || line.front() == '"' || isNumeric(line))
        return true;
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
    return keyword->word == Word::Object || isNumeric(rest);
}

/// Lines with as many quotation marks as close each other.
int recordsOf(QFile &file)
{
    int records = 0;
    int quotes = 0;
    while (!file.atEnd()) {
        const QByteArray line = file.readLine();
        quotes += line.count('"');
        records += quotes % 2 == 0 && !line.trimmed().isEmpty();
    }
    return records;
}

/// At the first line of the data; the count of the columns that the header has.
int passHeader(QFile &file, int &number)
{
    int columns = 0;
    while (!file.atEnd()) {
        const QByteArray line = file.readLine().trimmed().toLower();
        ++number;
        if (line == "data")
            break;
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

void checkMif(const QString &path, Losses &losses)
{
    QFile file(path);
    if (!file.open(QIODevice::ReadOnly))
        return;
    int number = 0;
    const int columns = passHeader(file, number);
    DataLines lines;
    std::array<char, 1 << 16> line{};
    while (!file.atEnd()) {
        const qint64 size = file.readLine(line.data(), static_cast<qint64>(line.size()));
        ++number;
        if (size > 0 && !lines.take({line.data(), static_cast<std::size_t>(size)}))
            return losses.add(Loss::Features,
                              QObject::tr("%1 is damaged in line %2: features may be missing or other than "
                                          "they were")
                                  .arg(path, QString::number(number)));
    }
    checkRecords(path, columns, lines.objects(), losses);
}
