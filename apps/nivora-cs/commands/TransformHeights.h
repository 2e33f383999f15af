#pragma once

class CommandLine;
class Session;

/// What transform does with --z: an exit status. Throws Failure.
int transformWithHeights(const CommandLine &line, const Session &session);
