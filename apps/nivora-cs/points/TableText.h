#pragma once

#include <functional>
#include <string>
#include <string_view>

class CommandLine;

/// The first argument's file, standard input when there is none or it is "-", as UTF-8 without a byte order
/// mark. Throws Failure.
std::string tableText(const CommandLine &line);

/// The lines of a table that are neither blank nor a remark, without their ends, behind those that --skip
/// passes over. A Failure of \p take gets the file's name and the line's number.
void forEachTableLine(const CommandLine &line, std::string_view text,
                      const std::function<void(std::string_view)> &take);
