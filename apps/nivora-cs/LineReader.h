#pragma once

#include <QString>

#include <cstddef>
#include <memory>
#include <string_view>

/// Reads a file, or standard input, by whole lines, as many at a time as one read brings. Bytes are not
/// decoded.
class LineReader
{
public:
    /// Longer lines are not kept in memory.
    static constexpr std::size_t LongestLine = 16 * 1024 * 1024;

    /// "-" is standard input. Throws Failure when the file cannot be opened.
    explicit LineReader(const QString &fileName);
    ~LineReader();
    LineReader(const LineReader &) = delete;
    LineReader &operator=(const LineReader &) = delete;

    struct Chunk
    {
        /// Complete lines with their ends; the last line of a file may lack its end. Valid until the next
        /// call. A byte order mark before the first line is left out.
        std::string_view text;
        /// A line longer than LongestLine was skipped; the text is a bare line end in its place.
        bool oversized = false;
    };
    /// Waits for input, not for a full buffer. Throws Failure when reading fails.
    Chunk next();
    bool atEnd() const { return m_atEnd; }

    /// Bytes read so far, for progress.
    qint64 bytesRead() const { return m_bytesRead; }

private:
    bool fill();
    void makeRoom();
    Chunk take(std::size_t end);
    Chunk skipLine();

    QString m_fileName;
    int m_descriptor;
    std::size_t m_capacity;
    std::unique_ptr<char[]> m_buffer;
    std::size_t m_begin = 0; ///< what was not handed out yet lies from here
    std::size_t m_end = 0;
    qint64 m_bytesRead = 0;
    bool m_atStart = true;
    bool m_atEnd = false;
};

/// Throws Failure for a file that is missing, a directory or not readable. Opens nothing, so that a pipe's
/// writer notices nothing.
void checkReadable(const QString &fileName);

/// Size in bytes of a regular file ("-": of standard input), -1 for anything else.
qint64 fileSize(const QString &fileName);
