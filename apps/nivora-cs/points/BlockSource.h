#pragma once

#include "FileFormat.h"
#include "LineReader.h"
#include "PeopleText.h"
#include "TextBuffer.h"

#include <QStringList>

#include <memory>
#include <string>
#include <utility>
#include <vector>

/// Lines that are worked through at once, and what became of them.
struct Block
{
    enum Kind { Verbatim, FirstLine, Lines };
    Chunk chunk;
    std::string decoded; ///< what the chunk's text is a view of, when it is not UTF-8
    Kind kind = Lines;
    std::shared_ptr<const PointReader> reader;
    int file = 0;
    bool startsFile = false;
    bool keepsMark = false;  ///< a byte order mark goes before it
    qint64 bytesRead = 0;    ///< of all files
    std::string replacement; ///< of a header

    TextBuffer out;
    qint64 lineCount = 0;
    qint64 badLines = 0;
    std::vector<std::pair<qint64, Reason>> reports; ///< line in the block and what is wrong with it
};

/// The blocks of several files, one behind the other.
class BlockSource
{
public:
    /// Throws Failure when a file cannot be read. \p skip lines at the beginning of each are passed on.
    BlockSource(const FileFormat &format, const QStringList &fileNames, int skip, const TextCoding &coding);

    /// False at the end and when interrupted. Throws Failure when reading fails.
    bool next(Block &block);
    /// From any thread: waits for no more input.
    void interrupt() const { m_interrupt.raise(); }
    const QStringList &fileNames() const { return m_fileNames; }

private:
    enum Stage { Skipping, Heading, Body };

    bool openFile();
    bool read(Block &block);
    void decode(Block &block) const;
    void readHead(Block &block);

    const FileFormat &m_format;
    QStringList m_fileNames;
    int m_skip;
    const TextCoding &m_coding;
    Interrupt m_interrupt;
    std::unique_ptr<LineReader> m_reader;
    int m_file = -1;
    Stage m_stage = Skipping;
    int m_skipped = 0;
    bool m_startsFile = true;
    FileHead m_head;
    qint64 m_bytesBefore = 0; ///< of the files done
};
