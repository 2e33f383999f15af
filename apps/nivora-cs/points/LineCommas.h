#pragma once

/// How the commas of a line are meant.
enum class Commas { Separate, Decimal, Doubtful, Grouping };

/// \p p is at the beginning of the first column. Two numbers with commas and another separator between them
/// leave no doubt. One such number beside a plain one, or four whole numbers in a row, can be read both ways.
Commas commasOf(const char *p, const char *end, bool degrees);
