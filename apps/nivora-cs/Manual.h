#pragma once

#include <QString>

#include <vector>

struct Command;

/// What the build makes of the commands' tables: "man" (roff, in the language of messages), "bash" or "zsh"
/// (completion). Throws Failure for anything else.
QString generatedText(const std::vector<const Command *> &commands, const QString &kind);
