#include "RecordReader_p.h"

#include "CodedError_p.h"
#include "CoordSysTexts_p.h"
#include "PrjNumber_p.h"
#include "ProjectionTable_p.h"
#include <coordsys/MapHeaderCoordsysConverter.h>
#include <coordsys/ProjectionParamsManager.h>

#include <QCoreApplication>

#include <algorithm>
#include <limits>
#include <stdexcept>

namespace nivora::cs {
namespace {

constexpr int recordParameters = 6;
constexpr int shiftEnd = 6; // behind projection, datum, ellipsoid and shift

/// What a token stands for, in messages for people; %1 counts.
constexpr const char *datumPlace = QT_TRANSLATE_NOOP("CoordSysTexts", "номер датума");
constexpr const char *ellipsoidPlace = QT_TRANSLATE_NOOP("CoordSysTexts", "эллипсоид датума");
constexpr const char *shiftPlace = QT_TRANSLATE_NOOP("CoordSysTexts", "сдвиг датума %1");
constexpr const char *datumFigurePlace = QT_TRANSLATE_NOOP("CoordSysTexts", "параметр датума %1");
constexpr const char *parameterPlace = QT_TRANSLATE_NOOP("CoordSysTexts", "параметр проекции %1");

using NotUnderstood = CodedError<std::logic_error>;

NotUnderstood logicError(const QString &message) { return {Error::Code::NotUnderstood, message}; }

NotUnderstood unknownDatum()
{
    return logicError(CoordSysTexts::tr("Не могу определить дополнительные параметры датума"));
}

const MIUnitConvParam *unitOf(const CoordSysToken &token, const ProjectionParamsManager &manager)
{
    return manager.unitByName(token.text.toString().toLower(), std::nothrow);
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

/// "1, 0": what a bare "Earth" stands for.
const CoordSysText &bareEarth()
{
    static const CoordSysText text(QStringLiteral("1, 0"));
    return text;
}

} // namespace

bool isClauseWord(const CoordSysToken *token)
{
    const auto has = [token](const char *word) {
        return token->text.contains(QLatin1String(word), Qt::CaseInsensitive);
    };
    return token->kind != CoordSysToken::Number && (has("affine") || has("units") || has("bounds"));
}

RecordReader::RecordReader(const CoordSysText &text, const ProjectionParamsManager &manager)
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

bool RecordReader::removeFirst(const char *word)
{
    const auto found = std::find_if(m_items.begin(), m_items.end(),
                                    [word](Item item) { return item->is(QLatin1String(word)); });
    if (found == m_items.end())
        return false;
    m_keywords.push_back(*found);
    m_items.erase(found);
    return true;
}

int RecordReader::beforeWords() const
{
    return static_cast<int>(std::find_if(m_items.begin(), m_items.end(), isClauseWord) - m_items.begin());
}

bool RecordReader::isAffineByNumber() const
{
    return m_announced.affine && std::none_of(m_items.begin(), m_items.end(), [](Item item) {
               return item->text.contains(QLatin1String("affine"), Qt::CaseInsensitive);
           });
}

double RecordReader::number(int i, const char *place, int count)
{
    const CoordSysToken &token = *at(i);
    if (token.kind == CoordSysToken::Number)
        return token.value;
    m_fault.note(Fault::NoNumber, at(i), place, QString::number(count));
    return wholeNumber(token.text).value_or(0.0);
}

int RecordReader::integer(int i, const char *place)
{
    bool isInteger = false;
    const int value = at(i)->text.toInt(&isInteger);
    if (!isInteger || at(i)->kind != CoordSysToken::Number)
        m_fault.note(Fault::NoNumber, at(i), place);
    return value;
}

/// A number that is not wholly one is the code 0 to the catalogue.
std::uint8_t RecordReader::unit(int i)
{
    const MIUnitConvParam *found = unitOf(*at(i), m_manager);
    bool isCode = false;
    (void)at(i)->text.toInt(&isCode);
    const bool beginsAsCode = !at(i)->text.isEmpty() && at(i)->text.at(0).isDigit();
    if (!found || (beginsAsCode && !isCode))
        m_fault.note(Fault::UnknownUnit, at(i));
    return static_cast<std::uint8_t>(found ? found->unitCode() : LinearUnit::Meter);
}

void RecordReader::readSystem()
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
        throw logicError(CoordSysTexts::tr("Не могу определить тип КС"));
    if (isPlan)
        return readPlan(1);
    bool fits = false;
    const int code = first.text.toInt(&fits); // the thousands announce clauses
    if (!fits || !projectionByNumber(code % 1000))
        throw logicError(
            CoordSysTexts::tr("Неверное значение проекции:%1").arg(first.text.toString().toLower()));
    if (m_isNonEarth && code == NonEarthPlan)
        readPlan(1); // NonEarth 0, 7
    else
        readEarth(code);
}

void RecordReader::readPlan(int unitIndex)
{
    m_info.nProjId = NonEarthPlan;
    if (unitIndex >= size())
        throw logicError(CoordSysTexts::tr("Не могу определить единицы измерения."));
    m_info.nUnitsId = unit(unitIndex);
    m_own = m_next = unitIndex + 1;
}

void RecordReader::readEarth(int code)
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
int RecordReader::ownTokens(int code) const
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
int RecordReader::readDatum()
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
            m_fault.note(Fault::ShortDatum, at(1)); // figures of the datum, or unit and parameters
        return shiftEnd;
    }
    for (int i = 0; i < 5; ++i)
        m_info.adDatumParams[i] = number(shiftEnd + i, datumFigurePlace, i + 1);
    return fullDatumEnd;
}

/// With thousands exactly the projection's parameters stand before the clauses; longitude/latitude may also
/// lack its unit. Before a word of a clause parameters may be left out as they may without thousands.
void RecordReader::checkOwnCount() const
{
    const int behindDatum = m_own - m_next;
    const int full = 1 + paramForPrj(m_info.nProjId); // unit and parameters
    const bool mayLackUnit = m_info.nProjId == LongitudeLatitude && behindDatum == 0;
    const bool mayBeShort = m_own == beforeWords() && m_own < size() && behindDatum < full;
    if (behindDatum != full && !mayLackUnit && !mayBeShort)
        throw NotEnoughtParamsException();
}

void RecordReader::readParameters()
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

void RecordReader::assumeMissing()
{
    if (m_info.nDatumId == fullUserDatum && m_own < fullDatumEnd)
        m_assumptions << CoordSysTexts::tr("Недостающие параметры датума приняты нулями.");
    if (m_needsUnit)
        m_assumptions << CoordSysTexts::tr("Единица не указана: приняты метры.");
    if (m_parameters >= paramForPrj(m_info.nProjId))
        return;
    m_assumptions << CoordSysTexts::tr("Недостающие параметры проекции приняты нулями.");
    const int scale = projectionByNumber(m_info.nProjId)->indexOf('s');
    if (scale < m_parameters)
        return;
    m_info.adProjParams[scale] = 1.0;
    m_assumptions << CoordSysTexts::tr("Масштаб не указан: принят 1.");
}

} // namespace nivora::cs
