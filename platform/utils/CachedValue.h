#pragma once

#include <optional>
#include <utility>

namespace nivora::utils {

/// A value that a stored function computes on first use. Not thread-safe: its owner locks.
template <typename T, typename F> class CachedValue
{
public:
    /// The function runs on the first call of the value.
    explicit CachedValue(F function)
        : m_function(std::move(function))
    {}

    /// The value, computed by the first call.
    const T &valueRef()
    {
        if (!m_value)
            m_value = m_function();
        return *m_value;
    }
    /// Whether it ran.
    bool hasValue() const { return m_value.has_value(); }
    /// Stores a value that was computed elsewhere, so that the function is not called.
    void setValue(T value) { m_value = std::move(value); }

private:
    F m_function;
    std::optional<T> m_value;
};

} // namespace nivora::utils
