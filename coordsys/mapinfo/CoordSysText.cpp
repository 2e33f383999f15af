#include "CoordSysText_p.h"

#include "PrjNumber_p.h"

#include <algorithm>
#include <cmath>

namespace nivora::cs {
namespace {

constexpr int affineTokenCount = 7; // unit, A to F
constexpr int boundsTokenCount = 4; // x1, y1, x2, y2

bool isDigit(QChar c) { return c >= QLatin1Char('0') && c <= QLatin1Char('9'); }

/// The kind of a separator; Word for other characters.
CoordSysToken::Kind separatorKind(QChar c)
{
    switch (c.unicode()) {
    case ',':
        return CoordSysToken::Comma;
    case '(':
        return CoordSysToken::Open;
    case ')':
        return CoordSysToken::Close;
    default:
        return CoordSysToken::Word;
    }
}

/// Behind the quoted name that begins at \p at; -1 when nothing is quoted there.
int endOfQuoted(const QString &text, int at)
{
    return text.at(at) == QLatin1Char('"') ? text.indexOf(QLatin1Char('"'), at + 1) : -1;
}

bool isBareSign(const CoordSysToken &token)
{
    return token.kind == CoordSysToken::Word && token.text.size() == 1 &&
           (token.text.at(0) == QLatin1Char('-') || token.text.at(0) == QLatin1Char('+'));
}

bool isFigureSign(QChar c) { return isDigit(c) || c == QLatin1Char('.') || c == QLatin1Char('-'); }

/// Behind the figure at \p from, "-1.5e-05": digits, points and signs, then an exponent.
int endOfFigure(const TextRef &text, int from)
{
    int end = from;
    while (end < text.size() && isFigureSign(text.at(end)))
        ++end;
    if (end == from || end == text.size() || text.at(end).toLower() != QLatin1Char('e'))
        return end;
    int digits = end + 1;
    if (digits < text.size() && (text.at(digits) == QLatin1Char('-') || text.at(digits) == QLatin1Char('+')))
        ++digits;
    int behind = digits;
    while (behind < text.size() && isDigit(text.at(behind)))
        ++behind;
    return behind > digits ? behind : end;
}

bool endsWithWord(const TextRef &text, const char *word)
{
    return text.endsWith(QLatin1String(word), Qt::CaseInsensitive);
}

/// May a number of four digits be the projection's with this text before it? Any letter of "Projection" or
/// "NonEarth" and white space are enough; files rely on it.
bool mayPrecedeProjection(const TextRef &before)
{
    int end = before.size();
    bool hasComma = false;
    for (; end > 0 && (before.at(end - 1).isSpace() || before.at(end - 1) == QLatin1Char(',')); --end)
        hasComma = hasComma || before.at(end - 1) == QLatin1Char(',');
    if (end == 0)
        return true;
    if (end == before.size())
        return false;
    const TextRef word = before.left(end);
    return (!hasComma && QStringLiteral("projectinah|").contains(word.back().toLower())) ||
           endsWithWord(word, "CoordSys") || endsWithWord(word, "Projection") || endsWithWord(word, "Earth");
}

/// Is a place empty between the two tokens, or a blank in a number?
bool leavesOpen(const CoordSysToken &before, const CoordSysToken &token, bool hasComma)
{
    using Token = CoordSysToken;
    if (token.kind == Token::Comma || token.kind == Token::Close)
        return before.kind == Token::Comma || before.kind == Token::Open;
    const bool continues =
        token.text.size() > 1 && token.text.at(0) == QLatin1Char('0') && isDigit(token.text.at(1));
    return token.kind == Token::Number && before.kind == Token::Number && (hasComma || continues);
}

/// The thousands of the projection's number, 0 when no number of four digits is that.
int thousandsIn(const QString &text)
{
    for (int at = 0; at < text.size();) {
        int end = at;
        while (end < text.size() && isDigit(text.at(end)))
            ++end;
        if (end - at == 4 && mayPrecedeProjection(leftRef(text, at)))
            return text.at(at).unicode() - '0';
        at = end + 1;
    }
    return 0;
}

} // namespace

/// A number or a quoted name, where the affine clause and the bounds are looked for: digits within words are
/// numbers, too.
struct CoordSysText::Piece
{
    QString text;
    int position;
    int end;
};

QRectF rectBetween(double x1, double y1, double x2, double y2)
{
    const QRectF rect(x1, y1, x2 - x1, y2 - y1);
    return std::isfinite(rect.width()) && std::isfinite(rect.height()) ? rect.normalized() : QRectF();
}

CoordSysText::CoordSysText(const QString &text)
    : m_text(text)
{
    m_tokens.reserve(32);
    for (int at = 0; at < m_text.size();) {
        const QChar c = m_text.at(at);
        const CoordSysToken::Kind separator = separatorKind(c);
        const int quote = endOfQuoted(m_text, at);
        int end = at + 1;
        if (quote >= 0) {
            end = quote + 1;
            m_tokens.push_back({CoordSysToken::Quoted, at, end, midRef(m_text, at + 1, quote - at - 1), 0.0});
        } else if (separator != CoordSysToken::Word) {
            m_tokens.push_back({separator, at, end, midRef(m_text, at, 1), 0.0});
        } else if (c != QLatin1Char(' ')) {
            while (end < m_text.size() && m_text.at(end) != QLatin1Char(' ') &&
                   separatorKind(m_text.at(end)) == CoordSysToken::Word && endOfQuoted(m_text, end) < 0)
                ++end;
            addWord(at, end);
        }
        at = end;
    }
}

void CoordSysText::addWord(int from, int to)
{
    while (from < to && m_text.at(from).isSpace())
        ++from;
    while (from < to && m_text.at(to - 1).isSpace())
        --to;
    if (from == to)
        return;
    CoordSysToken token{CoordSysToken::Word, from, to, midRef(m_text, from, to - from), 0.0};
    if (const auto value = wholeNumber(token.text)) {
        token.kind = CoordSysToken::Number;
        token.value = *value;
        if (joinSign(token))
            m_tokens.pop_back();
    }
    m_tokens.push_back(token);
}

/// Takes the sign that stands apart before a number into it.
bool CoordSysText::joinSign(CoordSysToken &number) const
{
    const std::size_t count = m_tokens.size();
    const bool isUnsigned = isDigit(number.text.at(0)) || number.text.at(0) == QLatin1Char('.');
    if (!isUnsigned || count < 2 || !isBareSign(m_tokens[count - 1]) || m_tokens[count - 2].isItem())
        return false;
    const CoordSysToken &sign = m_tokens[count - 1];
    if (sign.text.at(0) == QLatin1Char('-'))
        number.value = 0.0 - number.value;
    number.position = sign.position;
    number.text = midRef(m_text, sign.position, number.end - sign.position);
    return true;
}

PrjClauses CoordSysText::announced() const
{
    const int thousands = thousandsIn(m_text);
    PrjClauses clauses{thousands == 1 || thousands == 3 ? 1 : 0, thousands == 2 || thousands == 3 ? 1 : 0};
    if (clauses.affine == 0 && endOfAffineWords() >= 0)
        clauses.affine = 1;
    if (clauses.bounds == 0 && m_text.contains(QLatin1String("Bounds"), Qt::CaseInsensitive))
        clauses.bounds = 2;
    return clauses;
}

AffineAndBounds CoordSysText::clauses(const PrjClauses &announced) const
{
    AffineAndBounds result;
    if (announced.bounds == 2)
        result.bounds = boundsFromWords();
    if (announced.affine == 0 && announced.bounds != 1)
        return result;

    const std::vector<Piece> all = pieces();
    const int count = static_cast<int>(all.size());
    const auto number = [&](int i) { return prjNumber(all[static_cast<std::size_t>(i)].text); };
    if (announced.bounds == 1 && count >= boundsTokenCount)
        result.bounds =
            rectBetween(number(count - 4), number(count - 3), number(count - 2), number(count - 1));
    if (announced.affine == 0)
        return result;
    const int words = endOfAffineWords();
    const int first = count - affineTokenCount - (announced.bounds ? boundsTokenCount : 0);
    if (words >= 0)
        result.affine = affineFromWords(all, words, announced.bounds);
    else if (first >= 0) // announced by the thousands it is counted from the end of the text
        for (int i = first; i < first + affineTokenCount; ++i)
            result.affine << all[static_cast<std::size_t>(i)].text;
    return result;
}

std::vector<CoordSysText::Piece> CoordSysText::pieces() const
{
    std::vector<Piece> all;
    all.reserve(m_tokens.size());
    for (const CoordSysToken &token : m_tokens) {
        if (token.kind == CoordSysToken::Quoted)
            all.push_back(
                {m_text.mid(token.position, token.end - token.position), token.position, token.end});
        if (token.kind > CoordSysToken::Number)
            continue;
        for (int at = 0; at < token.text.size();) {
            int end = endOfFigure(token.text, at);
            if (token.text.at(at) == QLatin1Char('-') && end == at + 1)
                end = token.kind == CoordSysToken::Number ? token.text.size() : end; // "- 5"
            if (end > at)
                all.push_back({token.text.mid(at, end - at).toString().remove(QLatin1Char(' ')),
                               token.position + at, token.position + end});
            at = std::max(end, at + 1);
        }
    }
    return all;
}

/// … Affine Units "m", 1, 0, 500, 0, 1, 600: behind the first of these pairs of words, -1 without one.
int CoordSysText::endOfAffineWords() const
{
    const QLatin1String affine("affine");
    const QLatin1String units("units");
    for (int at = -1; (at = m_text.indexOf(affine, at + 1, Qt::CaseInsensitive)) >= 0;) {
        int next = at + affine.size();
        while (next < m_text.size() && m_text.at(next).isSpace())
            ++next;
        if (next > at + affine.size() &&
            midRef(m_text, next, units.size()).compare(units, Qt::CaseInsensitive) == 0)
            return next + units.size();
    }
    return -1;
}

/// … Bounds (-7786100, -1e4) (7786100.5, 9686800), exactly in this form.
QRectF CoordSysText::boundsFromWords() const
{
    using Token = CoordSysToken;
    static constexpr Token::Kind form[] = {Token::Open,   Token::Number, Token::Comma,  Token::Number,
                                           Token::Close,  Token::Open,   Token::Number, Token::Comma,
                                           Token::Number, Token::Close};
    const auto fits = [](const Token &token, Token::Kind kind) {
        return token.kind == kind || (kind == Token::Number && token.kind == Token::Word &&
                                      endOfFigure(token.text, 0) == token.text.size());
    };
    for (auto word = m_tokens.begin(); m_tokens.end() - word > std::end(form) - std::begin(form); ++word)
        if (word->kind == Token::Word && endsWithWord(word->text, "Bounds") &&
            std::equal(word + 1, word + 11, std::begin(form), fits))
            return rectBetween(word[2].value, word[4].value, word[7].value, word[9].value);
    return {};
}

/// Where a plan's unit ends that stands behind its affine clause; \p from when there is none:
/// NonEarth Affine Units "m", 1, 0, 0, 0, 1, 0 Units "m" Bounds …
int CoordSysText::endOfPlanUnit(int from) const
{
    if (!m_text.contains(QLatin1String("NonEarth"), Qt::CaseInsensitive))
        return from;
    const auto next = std::find_if(m_tokens.begin(), m_tokens.end(), [from](const CoordSysToken &token) {
        return token.position >= from && token.kind != CoordSysToken::Comma;
    });
    const bool isUnit =
        m_tokens.end() - next > 1 && next->is(QLatin1String("Units")) && std::next(next)->isItem();
    return isUnit ? std::next(next)->end : from;
}

/// The seven tokens must follow the words at once, and behind them may stand a plan's unit and the bounds,
/// nothing else: with a missing number or an unquoted unit other figures of the text would be taken.
QStringList CoordSysText::affineFromWords(const std::vector<Piece> &pieces, int endOfWords,
                                          int boundsKind) const
{
    const auto from = [&pieces](int position) {
        return std::find_if(pieces.begin(), pieces.end(),
                            [position](const Piece &piece) { return piece.position >= position; });
    };
    const auto isSeparator = [](QChar c) {
        return c.isSpace() || separatorKind(c) != CoordSysToken::Word || c == QLatin1Char('+');
    };
    auto next = from(endOfWords);
    if (pieces.end() - next < affineTokenCount)
        return {};
    QStringList clause;
    int end = endOfWords;
    for (; clause.size() < affineTokenCount; ++next) {
        if (!std::all_of(m_text.begin() + end, m_text.begin() + next->position, isSeparator))
            return {};
        clause << next->text;
        end = next->end;
    }
    end = endOfPlanUnit(end);
    const bool boundsBehind =
        boundsKind != 2 || m_text.indexOf(QLatin1String("Bounds"), end, Qt::CaseInsensitive) >= 0;
    const bool nothingElse = pieces.end() - from(end) == (boundsKind ? boundsTokenCount : 0);
    return boundsBehind && nothingElse ? clause : QStringList();
}

const CoordSysToken *CoordSysText::oddSeparator() const
{
    const CoordSysToken *open = nullptr;
    if (!m_tokens.empty() && m_tokens.front().kind == CoordSysToken::Comma)
        return &m_tokens.front();
    bool hasComma[] = {false, false}; // outside of brackets, within the current ones
    for (const CoordSysToken &token : m_tokens) {
        if (token.kind == CoordSysToken::Open || token.kind == CoordSysToken::Close) {
            if ((token.kind == CoordSysToken::Open) == (open != nullptr))
                return &token;
            open = open ? nullptr : &token;
        } else if (token.kind == CoordSysToken::Comma && !open) {
            hasComma[0] = true;
        }
    }
    if (open)
        return open;
    for (std::size_t i = 1; i < m_tokens.size(); ++i) {
        const CoordSysToken &token = m_tokens[i];
        if (m_tokens[i - 1].kind == CoordSysToken::Open)
            hasComma[1] = i + 1 < m_tokens.size() && m_tokens[i + 1].kind == CoordSysToken::Comma;
        open = token.kind == CoordSysToken::Open    ? &token
               : token.kind == CoordSysToken::Close ? nullptr
                                                    : open;
        if (leavesOpen(m_tokens[i - 1], token, hasComma[open ? 1 : 0]))
            return &token;
    }
    return nullptr;
}

} // namespace nivora::cs
