#include "BlockFiles.h"

#include <QFile>

#include <cpl_conv.h>
#include <cpl_error.h>
#include <cpl_vsi.h>

#include <algorithm>
#include <cstring>
#include <map>
#include <memory>
#include <vector>

namespace {

constexpr char prefix[] = "/vsiblocks";
constexpr qint64 blockSize = 1 << 16;
constexpr std::size_t mostBlocks = 256; ///< 16 MB of a file

/// One file. Threads: one at a time, as drivers use it.
class BlockFile
{
public:
    BlockFile(const char *path, QIODevice::OpenMode mode)
        : m_file(QFile::decodeName(path))
        , m_isOpen(m_file.open(mode | QIODevice::Unbuffered))
        , m_size(m_isOpen ? m_file.size() : 0)
    {}
    bool isOpen() const { return m_isOpen; }
    qint64 tell() const { return m_offset; }
    bool atEnd() const { return m_atEnd; }
    qint64 size() const { return m_size; }

    void seek(qint64 offset)
    {
        m_offset = offset;
        m_atEnd = false;
    }

    /// Bytes that were there.
    qint64 read(char *to, qint64 count)
    {
        const qint64 length = std::clamp<qint64>(m_size - m_offset, 0, count);
        m_atEnd = length < count;
        each(length, [&to](Block &block, qint64 at, qint64 part) {
            std::memcpy(to, block.bytes.data() + at, static_cast<std::size_t>(part));
            to += part;
        });
        return m_failed ? 0 : length;
    }

    qint64 write(const char *from, qint64 count)
    {
        m_size = std::max(m_size, m_offset + count); // first: blocks may be written on the way
        each(count, [&from](Block &block, qint64 at, qint64 part) {
            std::memcpy(block.bytes.data() + at, from, static_cast<std::size_t>(part));
            block.isChanged = true;
            from += part;
        });
        return m_failed ? 0 : count;
    }

    bool truncate(qint64 size)
    {
        const bool isDone = writeBlocks() && m_file.resize(size);
        m_size = isDone ? size : m_size;
        return isDone;
    }

    bool close()
    {
        const bool isWritten = writeBlocks();
        m_file.close();
        return isWritten;
    }
    QString reason() const { return m_reason; }

private:
    struct Block
    {
        std::vector<char> bytes = std::vector<char>(blockSize);
        bool isChanged = false;
    };

    /// Gives each block that the next bytes lie in, with the place in it and how many of them, and goes on.
    template <typename Use> void each(qint64 count, const Use &use)
    {
        while (count > 0) {
            const qint64 at = m_offset % blockSize;
            const qint64 part = std::min(count, blockSize - at);
            use(block(m_offset / blockSize), at, part);
            m_offset += part;
            count -= part;
        }
    }

    Block &block(qint64 number)
    {
        if (m_last && number == m_lastNumber)
            return *m_last;
        auto found = m_blocks.find(number);
        if (found == m_blocks.end()) {
            if (m_blocks.size() >= mostBlocks)
                writeBlocks();
            found = m_blocks.emplace(number, Block()).first;
            if (number * blockSize < m_file.size()) // behind are zeros
                if (!m_file.seek(number * blockSize) ||
                    m_file.read(found->second.bytes.data(), blockSize) < 0)
                    fail();
        }
        m_lastNumber = number;
        m_last = &found->second;
        return *m_last;
    }

    void fail()
    {
        m_failed = true;
        m_reason = m_file.errorString();
    }

    /// A disk that becomes full takes a part, and tells its reason for the rest.
    bool put(const char *from, qint64 length)
    {
        while (length > 0) {
            const qint64 part = m_file.write(from, length);
            if (part <= 0)
                return false;
            from += part;
            length -= part;
        }
        return true;
    }

    /// And forgets them.
    bool writeBlocks()
    {
        for (const auto &[number, block] : m_blocks) {
            const qint64 start = number * blockSize;
            const qint64 length = std::clamp<qint64>(m_size - start, 0, blockSize);
            if (block.isChanged && !m_failed && !(m_file.seek(start) && put(block.bytes.data(), length)))
                fail();
        }
        m_blocks.clear();
        m_last = nullptr;
        return !m_failed;
    }

    QFile m_file;
    bool m_isOpen;
    bool m_atEnd = false;
    bool m_failed = false;
    QString m_reason;
    qint64 m_offset = 0;
    qint64 m_size;
    std::map<qint64, Block> m_blocks;
    qint64 m_lastNumber = 0;
    Block *m_last = nullptr; ///< in m_blocks
};

BlockFile *fileOf(void *handle) { return static_cast<BlockFile *>(handle); }

/// By the letters that fopen() takes.
QIODevice::OpenMode modeOf(const char *access)
{
    if (access[0] == 'r')
        return std::strchr(access, '+') ? QIODevice::ReadWrite | QIODevice::ExistingOnly
                                        : QIODevice::ReadOnly;
    // what stands around new bytes in a block is read
    return access[0] == 'w' ? QIODevice::ReadWrite | QIODevice::Truncate : QIODevice::ReadWrite;
}

void *open(void *, const char *path, const char *access)
{
    auto file = std::make_unique<BlockFile>(path, modeOf(access));
    if (!file->isOpen())
        return nullptr;
    if (access[0] == 'a')
        file->seek(file->size());
    return file.release();
}

int seek(void *handle, vsi_l_offset offset, int whence)
{
    BlockFile *const file = fileOf(handle);
    const auto by = static_cast<qint64>(offset);
    file->seek(whence == SEEK_SET ? by : whence == SEEK_CUR ? file->tell() + by : file->size() + by);
    return 0;
}

std::size_t read(void *handle, void *to, std::size_t size, std::size_t count)
{
    const qint64 got =
        fileOf(handle)->read(static_cast<char *>(to), static_cast<qint64>(size) * static_cast<qint64>(count));
    return size == 0 ? 0 : static_cast<std::size_t>(got) / size;
}

std::size_t write(void *handle, const void *from, std::size_t size, std::size_t count)
{
    const qint64 put = fileOf(handle)->write(static_cast<const char *>(from),
                                             static_cast<qint64>(size) * static_cast<qint64>(count));
    return size == 0 ? 0 : static_cast<std::size_t>(put) / size;
}

int close(void *handle)
{
    const std::unique_ptr<BlockFile> file(fileOf(handle));
    if (file->close())
        return 0;
    CPLError(CE_Failure, CPLE_FileIO, "%s", file->reason().toUtf8().constData()); // drivers do not look
    return -1;
}

void install()
{
    VSIFilesystemPluginCallbacksStruct *const calls = VSIAllocFilesystemPluginCallbacksStruct();
    calls->open = open;
    calls->seek = seek;
    calls->read = read;
    calls->write = write;
    calls->close = close;
    calls->tell = [](void *handle) { return static_cast<vsi_l_offset>(fileOf(handle)->tell()); };
    calls->eof = [](void *handle) { return fileOf(handle)->atEnd() ? 1 : 0; };
    calls->flush = [](void *) { return 0; }; // nobody else reads it yet
    calls->truncate = [](void *handle, vsi_l_offset size) {
        return fileOf(handle)->truncate(static_cast<qint64>(size)) ? 0 : -1;
    };
    calls->stat = [](void *, const char *path, VSIStatBufL *to, int flags) {
        return VSIStatExL(path, to, flags);
    };
    calls->unlink = [](void *, const char *path) { return VSIUnlink(path); };
    calls->rename = [](void *, const char *from, const char *to) { return VSIRename(from, to); };
    calls->mkdir = [](void *, const char *path, long mode) { return VSIMkdir(path, mode); };
    calls->rmdir = [](void *, const char *path) { return VSIRmdir(path); };
    calls->read_dir = [](void *, const char *path, int most) { return VSIReadDirEx(path, most); };
    VSIInstallPluginHandler(prefix, calls);
    VSIFreeFilesystemPluginCallbacksStruct(calls);
}

} // namespace

QByteArray inBlocks(const QByteArray &path)
{
    static const bool isInstalled = (install(), true);
    return isInstalled && path.startsWith('/') ? prefix + path : path;
}

QByteArray withoutBlocks(QByteArray message) { return message.replace(prefix, ""); }
