#include "BlockSource.h"

#include "Output.h"

namespace {

std::string_view withoutEnd(std::string_view line)
{
    for (const char end : {'\n', '\r'})
        if (!line.empty() && line.back() == end)
            line.remove_suffix(1);
    return line;
}

} // namespace

BlockSource::BlockSource(const FileFormat &format, const QStringList &fileNames, int skip,
                         const TextCoding &coding)
    : m_format(format)
    , m_fileNames(fileNames.isEmpty() ? QStringList(QStringLiteral("-")) : fileNames)
    , m_skip(skip)
    , m_coding(coding)
{
    for (const QString &fileName : m_fileNames)
        checkReadable(fileName);
}

bool BlockSource::next(Block &block)
{
    while (m_reader || openFile()) {
        if (read(block))
            return true;
        m_bytesBefore += m_reader->bytesRead();
        m_reader.reset();
    }
    return false;
}

bool BlockSource::openFile()
{
    if (m_file + 1 >= m_fileNames.size())
        return false;
    m_reader = std::make_unique<LineReader>(m_fileNames.at(++m_file), m_interrupt);
    m_stage = Skipping;
    m_skipped = 0;
    m_startsFile = true;
    return true;
}

bool BlockSource::read(Block &block)
{
    if (m_stage == Skipping && m_skipped++ == m_skip) {
        m_stage = Heading;
        m_reader->setQuotes(m_format.delimiters());
    }
    if (!m_reader->next(block.chunk, m_stage == Body ? LineReader::WhatThereIs : LineReader::OneLine))
        return false;
    decode(block);
    block.kind = m_stage == Body ? Block::Lines : Block::Verbatim;
    block.replacement.clear();
    if (m_stage == Heading && (block.chunk.oversized || !m_format.passesOn(withoutEnd(block.chunk.text))))
        readHead(block);
    block.reader = m_head.reader;
    block.file = m_file;
    block.startsFile = std::exchange(m_startsFile, false);
    block.keepsMark = block.startsFile && m_format.keepsBytes() && m_reader->hasByteOrderMark();
    block.bytesRead = m_bytesBefore + m_reader->bytesRead();
    return true;
}

void BlockSource::decode(Block &block) const
{
    if (!m_coding.isNeeded())
        return;
    block.decoded = m_coding.decoded(block.chunk.text);
    block.chunk.text = block.decoded;
}

void BlockSource::readHead(Block &block)
{
    const std::string_view line = withoutEnd(block.chunk.text);
    m_head = m_format.head(line);
    m_reader->setQuotes(m_head.delimiters);
    m_stage = Body;
    block.kind = m_head.isHeader ? Block::Verbatim : Block::FirstLine;
    if (m_head.isHeader)
        block.replacement = m_head.header + std::string(block.chunk.text.substr(line.size()));
}
