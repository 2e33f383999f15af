#pragma once

#include <QElapsedTimer>

/// A bar on stderr, or a line count when the size of the input is not known. Nothing when stderr is no
/// terminal.
class Progress
{
public:
    enum Things { Lines, Features };

    /// \p total of bytes or features; -1 when unknown, then the \p things done are counted.
    Progress(bool wanted, qint64 total, Things things = Lines);
    ~Progress() { clear(); }
    Progress(const Progress &) = delete;
    Progress &operator=(const Progress &) = delete;

    /// Draws a few times a second at most.
    void update(qint64 done, qint64 things);
    /// Takes the bar away, so that other text can be written; the next update draws it again.
    void clear();

private:
    bool m_active;
    bool m_drawn = false;
    qint64 m_total;
    Things m_things;
    QElapsedTimer m_sinceDrawn;
};
