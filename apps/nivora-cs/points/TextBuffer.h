#pragma once

#include <cstddef>
#include <memory>
#include <string_view>

/// Bytes put one behind the other. It grows, and keeps its room when it is emptied.
class TextBuffer
{
public:
    /// Room for \p size bytes; what is put there counts after advance().
    char *reserve(std::size_t size)
    {
        if (size > m_capacity - m_size)
            grow(size);
        return m_bytes.get() + m_size;
    }
    void advance(const char *end) { m_size = static_cast<std::size_t>(end - m_bytes.get()); }
    void write(std::string_view bytes)
    {
        char *room = reserve(bytes.size());
        bytes.copy(room, bytes.size()); // unlike memcpy, nothing may lie at null
        advance(room + bytes.size());
    }
    void clear() { m_size = 0; }
    std::string_view view() const { return {m_bytes.get(), m_size}; }

private:
    void grow(std::size_t size)
    {
        m_capacity = 2 * (m_size + size);
        std::unique_ptr<char[]> larger(new char[m_capacity]);
        view().copy(larger.get(), m_size);
        m_bytes = std::move(larger);
    }

    std::unique_ptr<char[]> m_bytes;
    std::size_t m_size = 0;
    std::size_t m_capacity = 0;
};
