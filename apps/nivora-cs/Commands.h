#pragma once

struct Command;

const Command &infoCommand();
const Command &transformCommand();
const Command &rectCommand();
const Command &mgrsCommand();
const Command &userCommand();
const Command &listCommand();
const Command &findCommand();
const Command &convertCommand();
const Command &listFormatsCommand();
