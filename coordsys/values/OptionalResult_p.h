#pragma once

#include <optional>

namespace nivora::cs {

/// The image as a value; none where forward() says false.
template <typename Converter, typename T> std::optional<T> forwardOf(const Converter &converter, const T &in)
{
    T out;
    return converter.forward(in, out) ? std::make_optional(out) : std::nullopt;
}

/// The same of inverse().
template <typename Converter, typename T> std::optional<T> inverseOf(const Converter &converter, const T &in)
{
    T out;
    return converter.inverse(in, out) ? std::make_optional(out) : std::nullopt;
}

} // namespace nivora::cs
