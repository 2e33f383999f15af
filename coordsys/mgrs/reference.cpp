#include "arithmetic/reference_p.h"

namespace mgrs {
namespace {

bool isBlank(char c) { return c == ' ' || c == '\t'; }
bool isDigit(char c) { return c >= '0' && c <= '9'; } // not std::isdigit, which asks the locale
bool isLetter(char c) { return (c >= 'A' && c <= 'Z') || (c >= 'a' && c <= 'z'); }

class Reader
{
public:
    explicit Reader(const char *text)
        : m_at(text)
    {}

    bool read(Reference &out)
    {
        char zone[2];
        const int zoneDigits = digits(zone, 2);
        if (zoneDigits < 0 || !letter(out.band) || !letter(out.column) || !letter(out.row))
            return false;
        out.zone = number(zone, zoneDigits);
        if (zoneDigits > 0 && (out.zone < 1 || out.zone > 60))
            return false;
        return coordinates(out);
    }

private:
    /// One run of digits; -1 when it is longer than there is room.
    int digits(char *to, int room)
    {
        skipBlanks();
        int count = 0;
        for (; isDigit(*m_at); ++m_at) {
            if (count == room)
                return -1;
            to[count++] = *m_at;
        }
        return count;
    }

    static int number(const char *digits, int count)
    {
        int value = 0;
        for (int i = 0; i < count; ++i)
            value = value * 10 + (digits[i] - '0');
        return value;
    }

    bool letter(char &out)
    {
        skipBlanks();
        if (!isLetter(*m_at))
            return false;
        out = static_cast<char>(*m_at >= 'a' ? *m_at - 'a' + 'A' : *m_at);
        ++m_at;
        return true;
    }

    bool coordinates(Reference &out)
    {
        char text[2 * MAX_PRECISION];
        const int first = digits(text, 2 * MAX_PRECISION);
        const int second = first < 0 ? -1 : digits(text + first, 2 * MAX_PRECISION - first);
        skipBlanks();
        const bool halved = second == 0 ? first % 2 == 0 : first == second;
        if (second < 0 || !halved || *m_at != '\0')
            return false;
        const int precision = (first + second) / 2;
        out.size = powersOfTen[MAX_PRECISION - precision];
        out.eastM = number(text, precision) * out.size;
        out.northM = number(text + precision, precision) * out.size;
        return true;
    }

    void skipBlanks()
    {
        while (isBlank(*m_at))
            ++m_at;
    }

    const char *m_at;
};

} // namespace

bool readReference(const char *text, Reference &out) { return Reader(text).read(out); }

} // namespace mgrs
