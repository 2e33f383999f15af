#include "GuessText.h"

#include "AnswerJson.h"

#include <QJsonArray>
#include <QObject>

using namespace nivora::cs;

namespace {

constexpr int shownMembers = 6;
constexpr double sameM = 0.01;

struct AssumptionWord
{
    GuessAssumption assumption;
    const char *word; ///< in JSON
};
constexpr AssumptionWord words[] = {
    {GuessAssumption::Swapped, "swapped"},
    {GuessAssumption::Kilometres, "kilometres"},
    {GuessAssumption::Feet, "feet"},
    {GuessAssumption::PrefixMissing, "prefix-missing"},
    {GuessAssumption::PrefixAdded, "prefix-added"},
    {GuessAssumption::DegreesAsDms, "degrees-as-dms"},
};

QString metresText(double metres)
{
    return metres < 1000.0 ? QObject::tr("%1 m").arg(QString::number(metres, 'f', metres < 10.0 ? 1 : 0))
                           : QObject::tr("%1 km").arg(QString::number(metres / 1000.0, 'f', 0));
}

QString placeText(const QPointF &lonLat)
{
    return QStringLiteral("%1, %2").arg(QString::number(lonLat.x(), 'f', 4),
                                        QString::number(lonLat.y(), 'f', 4));
}

/// Where the data would lie, how far from the place, and how much of it inside the area.
QString whereText(const SystemGuess::Entry &entry)
{
    QString text = QObject::tr("   around %1").arg(placeText(entry.centre));
    if (entry.distanceM && *entry.distanceM > 0.0)
        text += QObject::tr(", %1 from the place").arg(metresText(*entry.distanceM));
    text += QObject::tr("; %1 % of the data inside the area of use").arg(qRound(100.0 * entry.share));
    return text + QLatin1Char('\n');
}

QString assumptionsText(const SystemGuess::Entry &entry)
{
    QStringList parts;
    for (const GuessAssumption assumption : entry.assumptions)
        parts << assumptionText(assumption);
    return parts.isEmpty() ? QString()
                           : QObject::tr("   assumed: %1\n").arg(parts.join(QStringLiteral(", ")));
}

QString memberText(const SystemGuess::Member &member)
{
    const QString name =
        member.code.isEmpty() ? member.name : QStringLiteral("%1 %2").arg(member.code, member.name);
    return member.isWithdrawn ? QObject::tr("%1 (withdrawn)").arg(name) : name;
}

/// The systems that the data cannot tell from the first, and what would.
QString membersText(const SystemGuess::Entry &entry)
{
    QString text;
    for (int i = 1; i < entry.members.size() && i <= shownMembers; ++i)
        text += QObject::tr("   or %1, %2 away\n")
                    .arg(memberText(entry.members.at(i)), metresText(entry.members.at(i).metres));
    if (const int rest = entry.members.size() - 1 - shownMembers + entry.more; rest > 0)
        text += QObject::tr("   or %1 more\n").arg(rest);
    if (entry.members.size() < 2)
        return text;
    if (!entry.isDecidable())
        return text + QObject::tr("   not decidable: more than 30 systems put the data on the same ground\n");
    if (entry.spreadM < sameM)
        return text + QObject::tr("   the same on the data\n");
    return text + QObject::tr("   up to %1 apart: a position of %2 known better than %3 would decide\n")
                      .arg(metresText(entry.spreadM),
                           QStringLiteral("%1, %2").arg(QString::number(entry.deciding.x(), 'g', 12),
                                                        QString::number(entry.deciding.y(), 'g', 12)),
                           metresText(entry.spreadM / 2.0));
}

QJsonArray boxJson(const QRectF &box) { return {box.left(), box.top(), box.right(), box.bottom()}; }

QJsonObject memberJson(const SystemGuess::Member &member)
{
    return {{QStringLiteral("code"), member.code},
            {QStringLiteral("name"), member.name},
            {QStringLiteral("withdrawn"), member.isWithdrawn},
            {QStringLiteral("metres"), member.metres}};
}

QJsonObject entryJson(const SystemGuess::Entry &entry)
{
    QJsonArray members;
    for (const SystemGuess::Member &member : entry.members)
        members << memberJson(member);
    QJsonArray assumptions;
    for (const AssumptionWord &word : words)
        if (entry.assumptions.contains(word.assumption))
            assumptions << QLatin1String(word.word);
    return {{QStringLiteral("systems"), members},
            {QStringLiteral("more"), entry.more},
            {QStringLiteral("decidable"), entry.isDecidable()},
            {QStringLiteral("assumed"), assumptions},
            {QStringLiteral("longitude"), entry.centre.x()},
            {QStringLiteral("latitude"), entry.centre.y()},
            {QStringLiteral("box"), boxJson(entry.box)},
            {QStringLiteral("area"), boxJson(entry.area)},
            {QStringLiteral("share"), entry.share},
            {QStringLiteral("distance"), numberOrNull(entry.distanceM)},
            {QStringLiteral("spread"), entry.spreadM},
            {QStringLiteral("deciding"), QJsonArray{entry.deciding.x(), entry.deciding.y()}},
            {QStringLiteral("shiftKnown"), entry.isShiftKnown}};
}

QJsonValue doubtJson(const std::optional<SystemGuess::Doubt> &doubt)
{
    if (!doubt)
        return {};
    return QJsonObject{
        {QStringLiteral("code"), doubt->code},
        {QStringLiteral("share"), doubt->share},
        {QStringLiteral("raised"), doubt->isRaised},
        {QStringLiteral("fits"), doubt->fits.isEmpty() ? QJsonValue() : QJsonValue(doubt->fits)}};
}

} // namespace

QString doubtText(const SystemGuess::Answer &answer)
{
    if (!answer.doubt)
        return {};
    const SystemGuess::Doubt &doubt = *answer.doubt;
    const int percent = qRound(100.0 * doubt.share);
    if (!doubt.isRaised)
        return QObject::tr("stated as %1: %2 % of the data lie inside its area of use\n")
            .arg(doubt.code, QString::number(percent));
    const QString text = QObject::tr("stated as %1, but %2 % of the data lie inside its area of use")
                             .arg(doubt.code, QString::number(percent));
    return (doubt.fits.isEmpty() ? text : QObject::tr("%1: fits %2").arg(text, doubt.fits)) +
           QLatin1Char('\n');
}

QString guessText(const SystemGuess::Answer &answer)
{
    QString text;
    int number = 0;
    for (const SystemGuess::Entry &entry : answer.entries) {
        text += QStringLiteral("%1. %2\n").arg(QString::number(++number), memberText(entry.members.first()));
        text += whereText(entry) + assumptionsText(entry);
        if (!entry.isShiftKnown)
            text +=
                QObject::tr("   its datum's shift is not known: the place may be hundreds of metres off\n");
        text += membersText(entry);
    }
    return text;
}

QJsonObject guessJson(const SystemGuess::Answer &answer)
{
    QJsonArray entries;
    for (const SystemGuess::Entry &entry : answer.entries)
        entries << entryJson(entry);
    return {{QStringLiteral("guess"), entries}, {QStringLiteral("doubt"), doubtJson(answer.doubt)}};
}
