#include "RecordReader_p.h"

#include "CoordSysTexts_p.h"
#include "PrjNumber_p.h"
#include "ProjectionTable_p.h"
#include <coordsys/MapHeaderCoordsysConverter.h>
#include <coordsys/ProjectionParamsManager.h>

#include <QCoreApplication>

#include <algorithm>
#include <stdexcept>

namespace nivora::cs {
namespace {

constexpr int affineFigures = 6;
constexpr int boundsFigures = 4;

/// What a token stands for, in messages for people; %1 counts.
constexpr const char *affinePlace =
    QT_TRANSLATE_NOOP("CoordSysTexts", "коэффициент аффинного преобразования %1");
constexpr const char *boundsPlace = QT_TRANSLATE_NOOP("CoordSysTexts", "число границ %1");

/// Unit of an affine clause, in quotes or as a number; null when there is no such. A unit of coordinates may
/// be guessed, this one may not.
const MIUnitConvParam *affineUnit(const ProjectionParamsManager &manager, const QString &token)
{
    bool isCode = false;
    (void)token.toInt(&isCode);
    if (!isCode && !token.startsWith(QLatin1Char('"')))
        return nullptr;
    const MIUnitConvParam *unit = manager.unitByName(token, std::nothrow);
    return unit ? unit : manager.unitByName(token.toLower(), std::nothrow);
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

} // namespace

void RecordReader::readClauses()
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

/// The keywords stand before everything else, and say one thing: a plan is no projection of the earth.
void RecordReader::checkKeywords()
{
    const auto isKeyword = [](Item item, const char *word) { return item->is(QLatin1String(word)); };
    const bool isPlan = m_info.nProjId == NonEarthPlan;
    for (const Item keyword : m_keywords) {
        const bool isLate = keyword->position > at(0)->position && isPartOf(at(0)->text, m_text.text());
        const bool contradicts = isPlan ? isKeyword(keyword, "earth") || isKeyword(keyword, "projection")
                                        : isKeyword(keyword, "nonearth");
        if (isLate || contradicts || keyword->kind != CoordSysToken::Word)
            m_fault.note(Fault::Surplus, keyword);
    }
}

void RecordReader::understandRest()
{
    checkKeywords();
    assumeMissing();
    for (int i = m_next; i < m_own; ++i)
        understandSurplus(i);
    for (int i = std::max(m_next, m_own); i < size() && !m_fault.isNoted();)
        i = understandClause(i);
    const bool isShort = (m_announced.affine && !m_hasAffine) || (m_announced.bounds && !m_hasBounds);
    if (!m_fault.isNoted() && isShort)
        throw NotEnoughtParamsException();
}

/// Returns the index behind the clause.
int RecordReader::understandClause(int i)
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
    m_fault.note(Fault::Surplus, at(i));
    return i + 1;
}

int RecordReader::understandAffine(int i)
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

int RecordReader::understandBounds(int i)
{
    m_hasBounds = true;
    if (i + boundsFigures > size())
        throw NotEnoughtParamsException();
    if (isWord(i - 1, "bounds") && !areCorners(i))
        m_fault.note(Fault::NoCorners, at(i - 1));
    double figures[boundsFigures];
    for (int figure = 0; figure < boundsFigures; ++figure)
        figures[figure] = number(i + figure, boundsPlace, figure + 1);
    setBounds(m_info, rectBetween(figures[0], figures[1], figures[2], figures[3]));
    if (!m_info.nBoundsFlag)
        m_assumptions << CoordSysTexts::tr("Границы без площади отброшены.");
    return i + boundsFigures;
}

/// (x1, y1) (x2, y2): the corners in brackets, whatever else separates them.
bool RecordReader::areCorners(int i) const
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
void RecordReader::understandSurplus(int i)
{
    const CoordSysToken &before = *(at(i) - 1);
    const bool isZero = at(i)->kind == CoordSysToken::Number && at(i)->value == 0.0;
    if (!isZero || before.kind != CoordSysToken::Comma)
        m_fault.note(Fault::Surplus, at(i));
    const QString said = CoordSysTexts::tr("Лишние нули за параметрами проекции отброшены.");
    if (!m_assumptions.contains(said))
        m_assumptions << said;
}

} // namespace nivora::cs
