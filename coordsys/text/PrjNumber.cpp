#include "PrjNumber_p.h"

#include <cmath>

namespace nivora::cs {
namespace {

bool isSign(QChar c) { return c == QLatin1Char('-') || c == QLatin1Char('+'); }

/// "-7500000.25" and the like at a tenth of the general cost: up to 15 digits and a power of ten below 10^22
/// are doubles themselves, so that their quotient is the nearest one. Nothing for other forms.
std::optional<double> plainNumber(const TextRef &text)
{
    constexpr int mostDigits = 15;
    double mantissa = 0.0;
    double scale = 1.0;
    bool behindPoint = false;
    int digits = 0;
    for (int i = isSign(text.at(0)) ? 1 : 0; i < text.size(); ++i) {
        const int digit = text.at(i).unicode() - '0';
        if (digit >= 0 && digit <= 9 && ++digits <= mostDigits) {
            mantissa = mantissa * 10.0 + digit;
            scale *= behindPoint ? 10.0 : 1.0;
        } else if (text.at(i) == QLatin1Char('.') && !behindPoint) {
            behindPoint = true;
        } else {
            return std::nullopt;
        }
    }
    if (digits == 0)
        return std::nullopt;
    return (text.at(0) == QLatin1Char('-') ? -mantissa : mantissa) / scale + 0.0;
}

} // namespace

std::optional<double> wholeNumber(const TextRef &text)
{
    const TextRef bare = text.trimmed();
    if (bare.isEmpty() || bare.at(0) > QLatin1Char('9'))
        return std::nullopt; // what begins with a letter is "nan" or "inf" at best
    if (const auto plain = plainNumber(bare))
        return plain;
    bool isNumber = false;
    const double value = bare.toDouble(&isNumber);
    return isNumber && std::isfinite(value) ? std::make_optional(value + 0.0) : std::nullopt;
}

} // namespace nivora::cs
