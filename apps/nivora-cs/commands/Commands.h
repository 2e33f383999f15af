#pragma once

struct Command;

const Command &infoCommand();
const Command &transformCommand();
const Command &rectCommand();
const Command &measureCommand();
const Command &mgrsCommand();
const Command &calibrateCommand();
const Command &gridsCommand();
const Command &userCommand();
const Command &listCommand();
const Command &findCommand();
const Command &guessCommand();
const Command &convertCommand();
const Command &listFormatsCommand();

#include <QString>

/// Lines of code and name of the catalogue's systems whose code begins so, for completion.
QString systemsBeginningWith(const QString &digits);
