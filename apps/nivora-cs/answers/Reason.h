#pragma once

#include "Messages.h"

#include <QObject>
#include <QString>

#include <cstring>

/// Why a line cannot be used. Cheap to make and to drop: the text is put together when it is told.
class Reason
{
public:
    Reason() = default;
    /// \p what: a text for translated() that outlives this.
    Reason(const char *what)
        : m_what(what)
    {}
    /// \p subject: what it is about, likewise.
    Reason(const char *subject, const char *what)
        : m_subject(subject)
        , m_what(what)
    {}
    /// In the words of another.
    explicit Reason(const QString &words)
        : m_words(words)
    {}

    bool isEmpty() const { return !m_what && m_words.isEmpty(); }
    bool is(const char *what) const { return m_what && std::strcmp(m_what, what) == 0; }
    const char *what() const { return m_what; }
    /// In the language of messages.
    QString text() const
    {
        if (!m_what)
            return m_words;
        const QString what = translated(m_what);
        if (!m_subject)
            return what;
        //: a coordinate, and what is wrong with it: "x is no number"
        return QObject::tr("%1 %2").arg(translated(m_subject), what);
    }

private:
    const char *m_subject = nullptr;
    const char *m_what = nullptr;
    QString m_words;
};
