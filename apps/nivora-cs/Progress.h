#pragma once

#include <QElapsedTimer>
#include <QString>

/// A bar on stderr, or a line count when the size of the input is not known. Nothing when stderr is no
/// terminal.
class Progress
{
public:
    /// \p totalBytes -1 when unknown.
    Progress(bool wanted, qint64 totalBytes);
    ~Progress() { clear(); }
    Progress(const Progress &) = delete;
    Progress &operator=(const Progress &) = delete;

    /// Draws a few times a second at most.
    void update(qint64 bytes, qint64 lines);
    /// Takes the bar away, so that other text can be written; the next update draws it again.
    void clear();

private:
    bool m_active;
    bool m_drawn = false;
    qint64 m_totalBytes;
    QElapsedTimer m_sinceDrawn;
};
