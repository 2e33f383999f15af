#pragma once

#include <QByteArray>
#include <QString>
#include <QTextDecoder>

#include <array>
#include <cstddef>
#include <memory>
#include <string>
#include <string_view>

/// Ends the waiting of readers, from another thread.
class Interrupt
{
public:
    Interrupt();
    ~Interrupt();
    Interrupt(const Interrupt &) = delete;
    Interrupt &operator=(const Interrupt &) = delete;

    void raise() const;
    /// Waits until \p descriptor can be read. False when raised.
    bool wait(int descriptor) const;

private:
    std::array<int, 2> m_pipe{-1, -1};
};

/// Lines with the memory they lie in.
class Chunk
{
public:
    /// Complete lines with their ends; the last line of a file may lack its end.
    std::string_view text;
    /// A line longer than LineReader::LongestLine was skipped; the text is a bare line end in its place.
    bool oversized = false;

private:
    friend class LineReader;
    void reserve(std::size_t size, std::size_t kept);

    std::unique_ptr<char[]> m_buffer;
    std::size_t m_capacity = 0;
};

/// Reads a file, or standard input, by whole lines, as many at a time as one read brings. Bytes are not
/// decoded, except those of UTF-16, which becomes UTF-8.
class LineReader
{
public:
    /// Longer lines are not kept in memory.
    static constexpr std::size_t LongestLine = 16 * 1024 * 1024;

    /// "-" is standard input. Throws Failure when the file cannot be opened.
    LineReader(const QString &fileName, const Interrupt &interrupt);
    ~LineReader();
    LineReader(const LineReader &) = delete;
    LineReader &operator=(const LineReader &) = delete;

    /// From here on a line end between quotes ends no line. A quote counts where a field begins: behind one
    /// of the delimiters or a line end.
    void setQuotes(std::string_view delimiters);

    enum Amount { OneLine, WhatThereIs };
    /// Waits for input, not for a full buffer. A byte order mark before the first line is left out. False at
    /// the end and when interrupted. Throws Failure when reading fails.
    bool next(Chunk &chunk, Amount amount);

    bool hasByteOrderMark() const { return m_hasMark; }
    /// Bytes read so far, for progress.
    qint64 bytesRead() const { return m_bytesRead; }

private:
    enum class Field { Begin, Bare, Quoted, QuoteInside };

    std::size_t findEnd(const char *text, std::size_t size, Amount amount);
    std::size_t findQuotedEnd(const char *text, std::size_t size, Amount amount);
    Field after(Field field, char c) const;
    bool take(Chunk &chunk, std::size_t size, std::size_t end);
    bool skipLine(Chunk &chunk);
    std::size_t fill(char *to);
    std::size_t readInto(char *to, std::size_t size);
    std::size_t readFirst(char *to);
    std::size_t readUtf16(char *to);

    QString m_fileName;
    const Interrupt &m_interrupt;
    int m_descriptor;
    std::string m_rest;            ///< what was read and not handed out
    std::size_t m_searched = 0;    ///< of the rest; no line ends before this
    std::string m_quoteDelimiters; ///< empty: quotes mean nothing
    Field m_field = Field::Begin;  ///< behind what was searched
    qint64 m_bytesRead = 0;
    bool m_atStart = true;
    bool m_hasMark = false;
    std::unique_ptr<QTextDecoder> m_utf16; ///< of a file in these characters
    QByteArray m_undecoded;                ///< its beginning
    bool m_atEnd = false;
};

/// Throws Failure for a file that is missing, a directory or not readable. Opens nothing, so that a pipe's
/// writer notices nothing.
void checkReadable(const QString &fileName);

/// Size in bytes of a regular file ("-": of standard input), -1 for anything else.
qint64 fileSize(const QString &fileName);
