#include "CoordSysReader_p.h"

#include "CodedError_p.h"
#include "PrjNumber_p.h"
#include "ProjectionTable_p.h"
#include <coordsys/MapHeaderCoordsysConverter.h>
#include <coordsys/ProjectionParamsManager.h>

#include <QCoreApplication>
#include <QObject>

#include <algorithm>
#include <limits>
#include <stdexcept>

namespace nivora::cs {
namespace {

constexpr int recordParameters = 6;
constexpr int fullUserDatum = 9999; // also has rotations, scale and prime meridian
constexpr int shiftEnd = 6;         // behind projection, datum, ellipsoid and shift
constexpr int fullDatumEnd = 11;
constexpr int affineFigures = 6;
constexpr int boundsFigures = 4;

/// What a token stands for, in messages for people; %1 counts.
constexpr const char *datumPlace = QT_TRANSLATE_NOOP("QObject", "номер датума");
constexpr const char *ellipsoidPlace = QT_TRANSLATE_NOOP("QObject", "эллипсоид датума");
constexpr const char *shiftPlace = QT_TRANSLATE_NOOP("QObject", "сдвиг датума %1");
constexpr const char *datumFigurePlace = QT_TRANSLATE_NOOP("QObject", "параметр датума %1");
constexpr const char *parameterPlace = QT_TRANSLATE_NOOP("QObject", "параметр проекции %1");
constexpr const char *affinePlace = QT_TRANSLATE_NOOP("QObject", "коэффициент аффинного преобразования %1");
constexpr const char *boundsPlace = QT_TRANSLATE_NOOP("QObject", "число границ %1");

using NotUnderstood = CodedError<std::logic_error>;

NotUnderstood logicError(const QString &message) { return {Error::Code::NotUnderstood, message}; }

NotUnderstood unknownDatum()
{
    return logicError(QObject::tr("Не могу определить дополнительные параметры датума"));
}

const MIUnitConvParam *unitOf(const CoordSysToken &token, const ProjectionParamsManager &manager)
{
    return manager.unitByName(token.text.toString().toLower(), std::nothrow);
}

/// Unit of an affine clause, in quotes or as a number; null when there is no such. A unit of coordinates may
/// be guessed, this one may not.
const MIUnitConvParam *affineUnit(const ProjectionParamsManager &manager, const QString &token)
{
    bool isCode = false;
    token.toInt(&isCode);
    if (!isCode && !token.startsWith(QLatin1Char('"')))
        return nullptr;
    const MIUnitConvParam *unit = manager.unitByName(token, std::nothrow);
    return unit ? unit : manager.unitByName(token.toLower(), std::nothrow);
}

void setDatum(TABProjInfo_t &info, const MIDatumParam &datum)
{
    info.nEllipsoidId = static_cast<std::uint8_t>(datum.ellipsoid);
    info.dDatumShiftX = datum.dx;
    info.dDatumShiftY = datum.dy;
    info.dDatumShiftZ = datum.dz;
    const double parameters[] = {datum.rx, datum.ry, datum.rz, datum.sa, datum.pm};
    std::copy(std::begin(parameters), std::end(parameters), info.adDatumParams);
}

void setBounds(TABProjInfo_t &info, const QRectF &bounds)
{
    info.nBoundsFlag = bounds.width() > 0.0 && bounds.height() > 0.0 ? 1 : 0;
    if (!info.nBoundsFlag)
        return;
    info.dXMin = bounds.left();
    info.dYMin = bounds.top();
    info.dXMax = bounds.left() + bounds.width();
    info.dYMax = bounds.top() + bounds.height();
}

bool isClauseWord(const CoordSysToken *token)
{
    const auto has = [token](const char *word) {
        return token->text.contains(QLatin1String(word), Qt::CaseInsensitive);
    };
    return token->kind != CoordSysToken::Number && (has("affine") || has("units") || has("bounds"));
}

QString shown(const CoordSysToken &token) { return token.text.left(40).toString(); }

/// Throws std::logic_error where separators leave open what the figures are.
void checkSeparators(const CoordSysText &text)
{
    const CoordSysToken *odd = text.oddSeparator();
    if (!odd)
        return;
    const QString place = QString::number(odd->position + 1);
    throw logicError(odd->isItem()
                         ? QObject::tr("Пробел вместо запятой или внутри числа перед «%1» (знак %2)")
                               .arg(shown(*odd), place)
                         : QObject::tr("Пустое место или лишняя скобка (знак %1)").arg(place));
}

/// "1, 0": what a bare "Earth" stands for.
const CoordSysText &bareEarth()
{
    static const CoordSysText text(QStringLiteral("1, 0"));
    return text;
}

/// Reads the words and numbers of a text from left to right, and notes the first that it does not understand.
class Reader
{
public:
    Reader(const CoordSysText &text, const ProjectionParamsManager &manager);

    const TABProjInfo_t &record() const { return m_info; }
    void readSystem();
    void readClauses();
    /// Goes over the tokens again behind the parameters; what nothing claims is not understood.
    void understandRest();
    void throwFault() const;
    const QStringList &assumptions() const { return m_assumptions; }

private:
    using Item = const CoordSysToken *;

    enum class Fault { None, NoNumber, UnknownUnit, Surplus, ShortDatum, NoCorners };

    int size() const { return static_cast<int>(m_items.size()); }
    Item at(int i) const { return m_items[static_cast<std::size_t>(i)]; }
    bool isWord(int i, const char *word) const
    {
        return i < size() && at(i)->kind == CoordSysToken::Word && at(i)->is(QLatin1String(word));
    }
    bool removeFirst(const char *word);
    void checkKeywords();
    int beforeWords() const;
    bool isAffineByNumber() const;

    void note(Fault fault, Item item, const char *place = nullptr, const QString &count = QString());
    double number(int i, const char *place, int count);
    int integer(int i, const char *place);
    std::uint8_t unit(int i);

    void readPlan(int unitIndex);
    void readEarth(int code);
    int ownTokens(int code) const;
    int readDatum();
    void readParameters();
    void checkOwnCount() const;
    int understandClause(int i);
    int understandAffine(int i);
    int understandBounds(int i);
    bool areCorners(int i) const;
    void understandSurplus(int i);
    void assumeMissing();

    const CoordSysText &m_text;
    const ProjectionParamsManager &m_manager;
    const PrjClauses m_announced;
    std::vector<Item> m_items;
    std::vector<Item> m_keywords;
    bool m_isNonEarth = false;
    int m_own = 0;        ///< so many items belong to the projection itself
    int m_next = 0;       ///< behind the last one that has been read
    int m_parameters = 0; ///< so many of the projection's have been read
    bool m_needsUnit = false;
    bool m_hasAffine = false; ///< its clause was gone over
    bool m_hasBounds = false;
    TABProjInfo_t m_info;

    Fault m_fault = Fault::None;
    Item m_faulty = nullptr;
    const char *m_faultyPlace = nullptr;
    QString m_faultyCount;
    QStringList m_assumptions;
};

Reader::Reader(const CoordSysText &text, const ProjectionParamsManager &manager)
    : m_text(text)
    , m_manager(manager)
    , m_announced(text.announced())
{
    m_items.reserve(text.tokens().size());
    for (const CoordSysToken &token : text.tokens())
        if (token.isItem())
            m_items.push_back(&token);
    removeFirst("coordsys");
    m_isNonEarth = removeFirst("nonearth");
    removeFirst("projection");
    if (removeFirst("earth") && m_items.empty())
        for (const int i : {0, 2})
            m_items.push_back(&bareEarth().tokens()[static_cast<std::size_t>(i)]);
    if (size() < 2)
        throw NotEnoughtParamsException();
}

bool Reader::removeFirst(const char *word)
{
    const auto found = std::find_if(m_items.begin(), m_items.end(),
                                    [word](Item item) { return item->is(QLatin1String(word)); });
    if (found == m_items.end())
        return false;
    m_keywords.push_back(*found);
    m_items.erase(found);
    return true;
}

int Reader::beforeWords() const
{
    return static_cast<int>(std::find_if(m_items.begin(), m_items.end(), isClauseWord) - m_items.begin());
}

bool Reader::isAffineByNumber() const
{
    return m_announced.affine && std::none_of(m_items.begin(), m_items.end(), [](Item item) {
               return item->text.contains(QLatin1String("affine"), Qt::CaseInsensitive);
           });
}

void Reader::note(Fault fault, Item item, const char *place, const QString &count)
{
    if (m_fault != Fault::None)
        return;
    m_fault = fault;
    m_faulty = item;
    m_faultyPlace = place;
    m_faultyCount = count;
}

double Reader::number(int i, const char *place, int count)
{
    const CoordSysToken &token = *at(i);
    if (token.kind == CoordSysToken::Number)
        return token.value;
    note(Fault::NoNumber, at(i), place, QString::number(count));
    return wholeNumber(token.text).value_or(0.0);
}

int Reader::integer(int i, const char *place)
{
    bool isInteger = false;
    const int value = at(i)->text.toInt(&isInteger);
    if (!isInteger || at(i)->kind != CoordSysToken::Number)
        note(Fault::NoNumber, at(i), place);
    return value;
}

/// A number that is not wholly one is the code 0 to the catalogue.
std::uint8_t Reader::unit(int i)
{
    const MIUnitConvParam *found = unitOf(*at(i), m_manager);
    bool isCode = false;
    (void)at(i)->text.toInt(&isCode);
    const bool beginsAsCode = !at(i)->text.isEmpty() && at(i)->text.at(0).isDigit();
    if (!found || (beginsAsCode && !isCode))
        note(Fault::UnknownUnit, at(i));
    return static_cast<std::uint8_t>(found ? found->unitCode() : LinearUnit::Meter);
}

void Reader::readSystem()
{
    const CoordSysToken &first = *at(0);
    if (m_isNonEarth && first.is(QLatin1String("affine"))) { // NonEarth Affine Units "m", 1, … Units "m"
        int units = 2;
        while (units < size() && !at(units)->is(QLatin1String("units")))
            ++units;
        readPlan(std::min(units + 1, size()));
        m_own = m_next = 0;
        return;
    }
    const bool isPlan = first.is(QLatin1String("units"));
    const bool isDigits = std::all_of(first.text.begin(), first.text.end(),
                                      [](QChar c) { return c >= QLatin1Char('0') && c <= QLatin1Char('9'); });
    if (!isDigits && !first.text.contains(QLatin1String("units"), Qt::CaseInsensitive))
        throw logicError(QObject::tr("Не могу определить тип КС"));
    if (isPlan)
        return readPlan(1);
    bool fits = false;
    const int code = first.text.toInt(&fits); // the thousands announce clauses
    if (!fits || !projectionByNumber(code % 1000))
        throw logicError(QObject::tr("Неверное значение проекции:%1").arg(first.text.toString().toLower()));
    if (m_isNonEarth && code == NonEarthPlan)
        readPlan(1); // NonEarth 0, 7
    else
        readEarth(code);
}

void Reader::readPlan(int unitIndex)
{
    m_info.nProjId = NonEarthPlan;
    if (unitIndex >= size())
        throw logicError(QObject::tr("Не могу определить единицы измерения."));
    m_info.nUnitsId = unit(unitIndex);
    m_own = m_next = unitIndex + 1;
}

void Reader::readEarth(int code)
{
    m_info.nProjId = static_cast<std::uint8_t>(code % 1000);
    if (m_info.nProjId != LongitudeLatitude && size() == 2)
        throw NotEnoughtParamsException();
    m_own = ownTokens(code);
    if (m_own < 2)
        throw NotEnoughtParamsException(); // the datum is missing
    m_next = readDatum();
    if (code >= 1000)
        checkOwnCount();
    readParameters();
}

/// How many tokens belong to the projection itself, before its clauses. Thousands announce clauses: without
/// words before them those are the last seven, four or eleven tokens, and no other number of them will do.
int Reader::ownTokens(int code) const
{
    const int ahead = beforeWords();
    const int thousands = code / 1000;
    const bool affine = thousands == 1 || thousands == 3;
    const bool bounds = thousands == 2 || thousands == 3;
    if ((affine && !m_announced.affine) || (isAffineByNumber() && !affine) ||
        bounds != (m_announced.bounds == 1))
        throw NotEnoughtParamsException(); // another number than the projection's announces
    if (thousands == 0)
        return ahead;
    const auto words = std::count_if(m_items.begin(), m_items.end(), isClauseWord);
    const int behindWords = size() - ahead - static_cast<int>(words);
    const int clauses = (m_announced.affine ? 7 : 0) + (m_announced.bounds ? 4 : 0) - behindWords;
    if (clauses < 0 || clauses > ahead)
        throw NotEnoughtParamsException();
    return ahead - clauses;
}

/// Reads the datum and, for a user's datum, its figures. Returns the index of the token behind them.
int Reader::readDatum()
{
    const int datum = integer(1, datumPlace);
    m_info.nDatumId = static_cast<std::int16_t>(datum);
    if (!isUserDatum(datum) || m_own < shiftEnd) {
        const MIDatumParam *known = m_manager.datumByID(datum);
        if (!known)
            throw unknownDatum();
        setDatum(m_info, *known);
        return 2;
    }
    const int ellipsoid = integer(2, ellipsoidPlace);
    if (ellipsoid < 0 || ellipsoid > std::numeric_limits<std::uint8_t>::max())
        throw unknownDatum(); // cut to a byte it would be the number of another ellipsoid
    m_info.nEllipsoidId = static_cast<std::uint8_t>(ellipsoid);
    m_info.dDatumShiftX = number(3, shiftPlace, 1);
    m_info.dDatumShiftY = number(4, shiftPlace, 2);
    m_info.dDatumShiftZ = number(5, shiftPlace, 3);
    if (datum != fullUserDatum)
        return shiftEnd;
    if (m_own < fullDatumEnd) {
        if (m_own > shiftEnd && at(shiftEnd)->kind == CoordSysToken::Number)
            note(Fault::ShortDatum, at(1)); // figures of the datum, or unit and parameters
        return shiftEnd;
    }
    for (int i = 0; i < 5; ++i)
        m_info.adDatumParams[i] = number(shiftEnd + i, datumFigurePlace, i + 1);
    return fullDatumEnd;
}

/// With thousands exactly the projection's parameters stand before the clauses; longitude/latitude may also
/// lack its unit. Before a word of a clause parameters may be left out as they may without thousands.
void Reader::checkOwnCount() const
{
    const int behindDatum = m_own - m_next;
    const int full = 1 + paramForPrj(m_info.nProjId); // unit and parameters
    const bool mayLackUnit = m_info.nProjId == LongitudeLatitude && behindDatum == 0;
    const bool mayBeShort = m_own == beforeWords() && m_own < size() && behindDatum < full;
    if (behindDatum != full && !mayLackUnit && !mayBeShort)
        throw NotEnoughtParamsException();
}

void Reader::readParameters()
{
    if (m_next < m_own)
        m_info.nUnitsId = unit(m_next++);
    else
        m_needsUnit = m_info.nProjId != LongitudeLatitude;
    const int count = paramForPrj(m_info.nProjId); // a seventh is read and has no place in the record
    for (; m_parameters < count && m_next < m_own; ++m_parameters, ++m_next) {
        const double value = number(m_next, parameterPlace, m_parameters + 1);
        if (m_parameters < recordParameters)
            m_info.adProjParams[m_parameters] = value;
    }
}

void Reader::readClauses()
{
    if (m_announced.affine == 0 && m_announced.bounds == 0)
        return;
    const AffineAndBounds clauses = m_text.clauses(m_announced);
    if (m_announced.affine != 0) {
        if (clauses.affine.isEmpty())
            throw NotEnoughtParamsException();
        m_info.nAffineFlag = 1;
        const MIUnitConvParam *unit = affineUnit(m_manager, clauses.affine.first());
        if (!unit)
            throw std::invalid_argument("unitCode");
        m_info.nAffineUnits = static_cast<std::uint8_t>(unit->unitCode());
        for (int i = 0; i < affineFigures; ++i)
            m_info.dAffineParams[i] = prjNumber(clauses.affine.at(i + 1));
    }
    setBounds(m_info, clauses.bounds);
}

// ---- Understood to the last token

/// The keywords stand before everything else, and say one thing.
void Reader::checkKeywords()
{
    const auto isKeyword = [](Item item, const char *word) { return item->is(QLatin1String(word)); };
    for (const Item keyword : m_keywords) {
        const bool isLate = keyword->position > at(0)->position && isPartOf(at(0)->text, m_text.text());
        const bool contradicts =
            m_isNonEarth && (isKeyword(keyword, "earth") || isKeyword(keyword, "projection") ||
                             (isKeyword(keyword, "nonearth") && m_info.nProjId != NonEarthPlan));
        if (isLate || contradicts || keyword->kind != CoordSysToken::Word)
            note(Fault::Surplus, keyword);
    }
}

void Reader::understandRest()
{
    checkKeywords();
    assumeMissing();
    for (int i = m_next; i < m_own; ++i)
        understandSurplus(i);
    for (int i = std::max(m_next, m_own); i < size() && m_fault == Fault::None;)
        i = understandClause(i);
    const bool isShort = (m_announced.affine && !m_hasAffine) || (m_announced.bounds && !m_hasBounds);
    if (m_fault == Fault::None && isShort)
        throw NotEnoughtParamsException();
}

/// Returns the index behind the clause.
int Reader::understandClause(int i)
{
    const bool isPlanUnit = m_info.nProjId == NonEarthPlan && m_next == 0 && isWord(0, "affine");
    if (m_announced.affine && isWord(i, "affine") && isWord(i + 1, "units") && !m_hasAffine && !m_hasBounds)
        return understandAffine(i + 2);
    if (isWord(i, "bounds") && !m_hasBounds)
        return understandBounds(i + 1);
    if (isWord(i, "units") && isPlanUnit && m_hasAffine) {
        m_next = i + 2; // its unit has been read
        return m_next;
    }
    if (!isClauseWord(at(i)) && isAffineByNumber() && !m_hasAffine)
        return understandAffine(i);
    if (!isClauseWord(at(i)) && m_announced.bounds == 1 && !m_hasBounds)
        return understandBounds(i);
    note(Fault::Surplus, at(i));
    return i + 1;
}

int Reader::understandAffine(int i)
{
    m_hasAffine = true;
    if (i + affineFigures >= size())
        throw NotEnoughtParamsException();
    const Item name = at(i++);
    const MIUnitConvParam *unit =
        affineUnit(m_manager, m_text.text().mid(name->position, name->end - name->position));
    if (!unit)
        throw std::invalid_argument("unitCode");
    m_info.nAffineFlag = 1;
    m_info.nAffineUnits = static_cast<std::uint8_t>(unit->unitCode());
    for (int figure = 0; figure < affineFigures; ++figure, ++i)
        m_info.dAffineParams[figure] = number(i, affinePlace, figure + 1);
    return i;
}

int Reader::understandBounds(int i)
{
    m_hasBounds = true;
    if (i + boundsFigures > size())
        throw NotEnoughtParamsException();
    if (isWord(i - 1, "bounds") && !areCorners(i))
        note(Fault::NoCorners, at(i - 1));
    double figures[boundsFigures];
    for (int figure = 0; figure < boundsFigures; ++figure)
        figures[figure] = number(i + figure, boundsPlace, figure + 1);
    setBounds(m_info, rectBetween(figures[0], figures[1], figures[2], figures[3]));
    if (!m_info.nBoundsFlag)
        m_assumptions << QObject::tr("Границы без площади отброшены.");
    return i + boundsFigures;
}

/// (x1, y1) (x2, y2): the corners in brackets, whatever else separates them.
bool Reader::areCorners(int i) const
{
    const Item last = &m_text.tokens().back();
    const auto isAt = [&](int figure, int offset, CoordSysToken::Kind kind) {
        const Item item = at(i + figure);
        return (offset < 0 || item < last) && item[offset].kind == kind;
    };
    return isAt(0, -1, CoordSysToken::Open) && isAt(1, 1, CoordSysToken::Close) &&
           isAt(2, -1, CoordSysToken::Open) && isAt(3, 1, CoordSysToken::Close);
}

/// Zeros behind the parameters say nothing; in a list without commas they may be the rest of a number.
void Reader::understandSurplus(int i)
{
    const CoordSysToken &before = *(at(i) - 1);
    const bool isZero = at(i)->kind == CoordSysToken::Number && at(i)->value == 0.0;
    if (!isZero || before.kind != CoordSysToken::Comma)
        note(Fault::Surplus, at(i));
    const QString said = QObject::tr("Лишние нули за параметрами проекции отброшены.");
    if (!m_assumptions.contains(said))
        m_assumptions << said;
}

void Reader::assumeMissing()
{
    if (m_info.nDatumId == fullUserDatum && m_own < fullDatumEnd)
        m_assumptions << QObject::tr("Недостающие параметры датума приняты нулями.");
    if (m_needsUnit)
        m_assumptions << QObject::tr("Единица не указана: приняты метры.");
    if (m_parameters >= paramForPrj(m_info.nProjId))
        return;
    m_assumptions << QObject::tr("Недостающие параметры проекции приняты нулями.");
    const int scale = projectionByNumber(m_info.nProjId)->indexOf('s');
    if (scale < m_parameters)
        return;
    m_info.adProjParams[scale] = 1.0;
    m_assumptions << QObject::tr("Масштаб не указан: принят 1.");
}

void Reader::throwFault() const
{
    const auto message = [this](const QString &text) {
        const QString place =
            QObject::tr(m_faultyPlace ? m_faultyPlace : "").replace(QLatin1String("%1"), m_faultyCount);
        return logicError(text.arg(shown(*m_faulty), QString::number(m_faulty->position + 1), place));
    };
    switch (m_fault) {
    case Fault::NoNumber:
        throw message(QObject::tr("Не число: «%1» (знак %2), %3"));
    case Fault::UnknownUnit:
        throw message(QObject::tr("Неизвестная единица: «%1» (знак %2)"));
    case Fault::Surplus:
        throw message(QObject::tr("Лишнее в строке КС: «%1» (знак %2)"));
    case Fault::ShortDatum:
        throw message(QObject::tr("Недостаёт параметров датума «%1» (знак %2)"));
    case Fault::NoCorners:
        throw message(QObject::tr("Углы границ стоят в скобках, (x1, y1) (x2, y2): «%1» (знак %2)"));
    case Fault::None:
        break;
    }
}

} // namespace

TABProjInfo_t lenientRecord(const CoordSysText &text, const ProjectionParamsManager &manager)
{
    Reader reader(text, manager);
    reader.readSystem();
    reader.readClauses();
    return reader.record();
}

CoordSysReading understoodRecord(const CoordSysText &text, const ProjectionParamsManager &manager)
{
    Reader reader(text, manager);
    reader.readSystem();
    checkSeparators(text);
    reader.understandRest();
    reader.throwFault();
    return {reader.record(), reader.assumptions()};
}

} // namespace nivora::cs
