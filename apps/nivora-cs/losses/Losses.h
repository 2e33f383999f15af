#pragma once

#include <QStringList>

#include <map>
#include <optional>
#include <set>
#include <utility>

class CommandLine;

/// What can be lost on the way; each is allowed by its own name.
enum class Loss { Heights, Types, Names, Texts, Styles, Datum, Affine, Features, Layers };

/// The loss that a driver's warning tells, if it is one.
std::optional<Loss> lossTold(const QString &warning);

/// What was left out or changed on the way, and whether that is allowed.
class Losses
{
public:
    /// By --allow and --lossy. Throws Failure for a name that is none.
    explicit Losses(const CommandLine &line);

    /// Each text is kept once. Of those with one \p subject, such as a column, the first few.
    void add(Loss kind, const QString &what, const QString &subject = QString());
    /// A way without the loss, for the refusal.
    void suggest(const QString &way) { m_way = way; }
    /// Throws Failure that tells what was added and is not allowed, with the names that would allow it.
    void check() const;
    bool isAllowed(Loss kind) const { return m_allowed.count(kind) > 0; }
    /// Those that are allowed.
    const QStringList &all() const { return m_all; }

private:
    std::set<Loss> m_allowed;
    std::set<Loss> m_refusedKinds;
    std::map<std::pair<Loss, QString>, int> m_ofSubject;
    QStringList m_refused;
    QString m_way;
    QStringList m_all;
};
