#pragma once

#include <string>

namespace nivora::system {

/// The name of the encoding that the environment's locale asks for, whatever the host or Qt has made of the
/// process's own locale; "ANSI_X3.4-1968" is ASCII. Thread-safe.
std::string localeEncoding();

} // namespace nivora::system
