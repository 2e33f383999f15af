#pragma once

#include <QString>

#include <cstddef>
#include <memory>
#include <stdexcept>
#include <string_view>

/// What ends the program with one line on stderr and exit status 2.
class Failure : public std::runtime_error
{
public:
    explicit Failure(const QString &message)
        : std::runtime_error(message.toStdString())
    {}
};

/// The reader of standard output has gone, as in "| head": the program ends in silence.
struct ReaderGone : std::exception
{};

/// Exit statuses of the program.
enum ExitStatus : int {
    Success = 0,
    SomeFailed = 1, ///< the work was done, but not for every line or entry
    Unusable = 2,   ///< nothing could be done: arguments, coordinate system, resources, files
};

/// A text on one line, the middle left out when it is very long: the library quotes whole WKT texts.
QString oneLine(const QString &text);

/// Writes "nivora-cs: text" to stderr as one line.
void complain(const QString &text);

/// Writes a line to stderr as it is.
void report(const QString &line);

/// The system's words for an errno value.
QString systemMessage(int error);

/// Bytes to a file descriptor through a buffer. Every failure to write is a Failure, a closed pipe
/// ReaderGone; nothing is written by the destructor, where a failure would be lost.
class Output
{
public:
    explicit Output(int descriptor);

    /// Room for \p size bytes; what is put there counts after advance().
    char *reserve(std::size_t size);
    void advance(const char *end) { m_size = static_cast<std::size_t>(end - m_buffer.get()); }
    void write(std::string_view bytes);
    void write(const QString &text);
    void flush();

private:
    void writeAll(const char *bytes, std::size_t size) const;

    static constexpr std::size_t capacity = 256 * 1024;
    std::unique_ptr<char[]> m_buffer;
    std::size_t m_size = 0;
    int m_descriptor;
};

/// Writes a whole text to standard output.
void print(const QString &text);
