#include <platform/utils/Utils.h>

#include <QDir>
#include <QLocale>
#include <QRegularExpression>

#include <algorithm>
#include <cmath>

namespace nivora::utils {
namespace {

struct Letter
{
    char16_t cyrillic;
    const char *latin;
};

// Lower case; upper case is derived from it.
constexpr Letter letters[] = {
    {u'а', "a"},  {u'б', "b"},  {u'в', "v"},  {u'г', "g"},  {u'д', "d"},  {u'е', "e"},    {u'ё', "yo"},
    {u'ж', "zh"}, {u'з', "z"},  {u'и', "i"},  {u'й', "j"},  {u'к', "k"},  {u'л', "l"},    {u'м', "m"},
    {u'н', "n"},  {u'о', "o"},  {u'п', "p"},  {u'р', "r"},  {u'с', "s"},  {u'т', "t"},    {u'у', "u"},
    {u'ф', "f"},  {u'х', "kh"}, {u'ц', "ts"}, {u'ч', "ch"}, {u'ш', "sh"}, {u'щ', "shch"}, {u'ъ', ""},
    {u'ы', "y"},  {u'ь', ""},   {u'э', "e"},  {u'ю', "yu"}, {u'я', "ya"},
};

bool nearlySame(double a, double b)
{
    return std::fabs(a - b) <= 1e-9 * std::max({1.0, std::fabs(a), std::fabs(b)});
}

} // namespace

QString toString(double value)
{
    if (value == 0.0)
        return QStringLiteral("0"); // also for minus zero, whose sign readers of coordinates trip over
    return QString::number(value, 'f', QLocale::FloatingPointShortest);
}

QString toString(const QRectF &rect)
{
    return QStringLiteral("(%1, %2, %3, %4)")
        .arg(toString(rect.x()), toString(rect.y()), toString(rect.width()), toString(rect.height()));
}

bool fuzzyEq(double a, double b, double factor)
{
    if (a == b)
        return true;
    const double difference = std::fabs(a - b); // infinite when an infinity is compared with anything else
    return std::isfinite(difference) && difference * factor <= std::min(std::fabs(a), std::fabs(b));
}

bool fuzzyCompareRects(const QRectF &a, const QRectF &b)
{
    return nearlySame(a.x(), b.x()) && nearlySame(a.y(), b.y()) && nearlySame(a.width(), b.width()) &&
           nearlySame(a.height(), b.height());
}

QString translitString(const QString &text)
{
    QString result;
    result.reserve(text.size());
    for (const QChar c : text) {
        const char16_t lower = c.toLower().unicode();
        const auto *row = std::find_if(std::begin(letters), std::end(letters),
                                       [lower](const Letter &l) { return l.cyrillic == lower; });
        if (row == std::end(letters)) {
            result += c;
            continue;
        }
        QString latin = QLatin1String(row->latin);
        if (c.isUpper() && !latin.isEmpty())
            latin[0] = latin[0].toUpper();
        result += latin;
    }
    return result;
}

QFileInfo lookUpExistingFileInDirectory(const QFileInfo &file)
{
    if (file.exists())
        return file;
    const QStringList entries =
        file.dir()
            .entryList(QDir::Files)
            .filter(QRegularExpression(QLatin1Char('^') + QRegularExpression::escape(file.fileName()) +
                                           QLatin1Char('$'),
                                       QRegularExpression::CaseInsensitiveOption));
    return entries.size() == 1 ? QFileInfo(file.dir(), entries.first()) : file;
}

} // namespace nivora::utils
