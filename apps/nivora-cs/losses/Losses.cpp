#include "Losses.h"

#include "CommandLine.h"
#include "Output.h"

#include <QObject>

namespace {

// By Loss.
constexpr const char *names[] = {"heights", "types",  "names",    "texts", "styles",
                                 "datum",   "affine", "features", "layers"};
constexpr int mostOfSubject = 2;
constexpr int mostReasons = 3; ///< a line on stderr

QString name(Loss kind) { return QLatin1String(names[static_cast<std::size_t>(kind)]); }

std::set<Loss> allKinds()
{
    std::set<Loss> kinds;
    for (std::size_t i = 0; i < std::size(names); ++i)
        kinds.insert(static_cast<Loss>(i));
    return kinds;
}

std::set<Loss> kindsOf(const QString &list)
{
    std::set<Loss> kinds;
    QStringList known;
    for (const Loss kind : allKinds()) {
        known << name(kind);
        if (list.split(QLatin1Char(',')).contains(name(kind)))
            kinds.insert(kind);
    }
    for (const QString &word : list.split(QLatin1Char(',')))
        if (!known.contains(word))
            throw Failure(QObject::tr("--allow takes %1, with commas between, not \"%2\"")
                              .arg(known.join(QStringLiteral(", ")), word));
    return kinds;
}

/// A driver's words for what it changed: "… couldn't be converted correctly from UTF-8 to CP1251", "Value …
/// has been truncated to …", "Value … parsed incompletely to integer …".
struct LossWords
{
    const char *words;
    Loss kind;
};
constexpr LossWords lossWords[] = {
    {"converted correctly", Loss::Texts}, {"truncated", Loss::Texts}, {"parsed incompletely", Loss::Types}};

} // namespace

std::optional<Loss> lossTold(const QString &warning)
{
    for (const LossWords &row : lossWords)
        if (warning.contains(QLatin1String(row.words)))
            return row.kind;
    return std::nullopt;
}

Losses::Losses(const CommandLine &line)
    : m_allowed(line.isSet("lossy")   ? allKinds()
                : line.isSet("allow") ? kindsOf(line.value("allow"))
                                      : std::set<Loss>())
{}

void Losses::add(Loss kind, const QString &what, const QString &subject)
{
    QStringList &list = isAllowed(kind) ? m_all : m_refused;
    if (!isAllowed(kind))
        m_refusedKinds.insert(kind);
    if (list.contains(what) || (!subject.isEmpty() && m_ofSubject[{kind, subject}]++ >= mostOfSubject))
        return;
    list << what;
}

void Losses::check() const
{
    if (m_refused.isEmpty())
        return;
    QStringList kinds;
    for (const Loss kind : m_refusedKinds)
        kinds << name(kind);
    QStringList reasons = m_refused.mid(0, mostReasons);
    if (m_refused.size() > mostReasons)
        reasons << QObject::tr("%1 more").arg(QString::number(m_refused.size() - mostReasons));
    if (m_refusedKinds.count(Loss::Features) > 0 && !m_way.isEmpty())
        reasons << m_way;
    throw Failure(QObject::tr("%1; --allow %2 goes on without")
                      .arg(reasons.join(QStringLiteral("; ")), kinds.join(QLatin1Char(','))));
}
