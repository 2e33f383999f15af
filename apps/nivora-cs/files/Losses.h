#pragma once

#include <QStringList>

/// What was left out or changed on the way, and whether that is allowed.
class Losses
{
public:
    explicit Losses(bool allowed)
        : m_allowed(allowed)
    {}
    /// Throws Failure that names --lossy unless losses are allowed; each text is kept once.
    void add(const QString &what);
    const QStringList &all() const { return m_all; }

private:
    bool m_allowed;
    QStringList m_all;
};
