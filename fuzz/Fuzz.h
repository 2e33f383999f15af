#pragma once

#include <QByteArray>

/// A reader under test: takes any bytes, may refuse them with a std::exception, and aborts when a promise of
/// the reader is broken (what it wrote does not read back, an answer outside its range).
struct FuzzTarget
{
    const char *name;
    void (*run)(const QByteArray &input);
};

// Text of systems, in each notation.
void fuzzCoordSys(const QByteArray &input);
void fuzzProj(const QByteArray &input);
void fuzzWkt(const QByteArray &input);
void fuzzTagged(const QByteArray &input);
void fuzzClauses(const QByteArray &input);
void fuzzUserInput(const QByteArray &input);
void fuzzSystemFile(const QByteArray &input);

// Files and records.
void fuzzCatalogue(const QByteArray &input);
void fuzzParameters(const QByteArray &input);
void fuzzBounds(const QByteArray &input);
void fuzzOracle(const QByteArray &input);
void fuzzUser(const QByteArray &input);
void fuzzPlaces(const QByteArray &input);
void fuzzRecord(const QByteArray &input);
void fuzzMapHeader(const QByteArray &input);
void fuzzMif(const QByteArray &input);
void fuzzMapFile(const QByteArray &input);

// Points.
void fuzzMgrs(const QByteArray &input);
void fuzzPointLine(const QByteArray &input);
void fuzzCsv(const QByteArray &input);
void fuzzCsvOptions(const QByteArray &input);
void fuzzLines(const QByteArray &input);

/// A broken promise: says which on stderr and aborts, so that libFuzzer keeps the input.
void require(bool holds, const char *promise);
