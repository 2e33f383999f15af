#pragma once

#include "CommandLine.h"

#include <QObject>

/// Options that mean the same in every command that takes them.
namespace shared {

inline constexpr Option pointSystem{"cs", "CS", QT_TRANSLATE_NOOP("QObject", "The system of the points.")};
inline constexpr Option csv{"csv", nullptr,
                            QT_TRANSLATE_NOOP("QObject", "The input is a table with quoted fields.")};
inline constexpr Option delimiter{
    "delimiter", "C",
    QT_TRANSLATE_NOOP("QObject", "Between the table's columns, \"tab\" too; found when not given.")};
inline constexpr Option x{
    "x", "NAME|N",
    QT_TRANSLATE_NOOP("QObject", "The table's column of x, 1 when not given; several with commas between.")};
inline constexpr Option y{"y", "NAME|N",
                          QT_TRANSLATE_NOOP("QObject", "The table's column of y, 2 when not given.")};
inline constexpr Option decimalComma{
    "decimal-comma", nullptr,
    QT_TRANSLATE_NOOP("QObject", "Commas inside numbers are decimal marks. The output has points.")};
inline constexpr Option encoding{
    "encoding", "NAME",
    QT_TRANSLATE_NOOP("QObject",
                      "Characters of the files, such as windows-1251 or CP866; UTF-8 when not given.")};
inline constexpr Option skip{
    "skip", "N", QT_TRANSLATE_NOOP("QObject", "Pass the first N lines of each file on as they are.")};
inline constexpr Option jobs{
    "jobs", "N",
    QT_TRANSLATE_NOOP("QObject", "Threads that work; all cores when not given. The output is the same.")};
inline constexpr Option progress{
    "progress", nullptr, QT_TRANSLATE_NOOP("QObject", "Show a bar on stderr, when it is a terminal.")};
inline constexpr Option precision{
    "precision", "N",
    QT_TRANSLATE_NOOP("QObject", "Decimals; when not given, enough for a tenth of a millimetre.")};
inline constexpr Option strict{
    "strict", nullptr,
    QT_TRANSLATE_NOOP("QObject", "A point for which the difference of the datums would be left out fails.")};
inline constexpr Option epoch{
    "epoch", "YEAR", QT_TRANSLATE_NOOP("QObject", "When the points were measured, in decimal years.")};
inline constexpr Option toEpoch{
    "to-epoch", "YEAR",
    QT_TRANSLATE_NOOP("QObject", "When the output's coordinates shall hold, where that is another year.")};
inline constexpr Option branch{
    "branch", "NAME", QT_TRANSLATE_NOOP("QObject", "The branch of the entry, \"Каталог\" when not given.")};

} // namespace shared
