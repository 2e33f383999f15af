#pragma once

/// The deleter of a std::unique_ptr that owns what a C library returned: calls its releasing function.
template <auto Release> struct ReleasedBy
{
    template <typename T> void operator()(T *owned) const { Release(owned); }
};
