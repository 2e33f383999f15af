#pragma once

#include "Output.h"

#include <QString>
#include <QStringList>

#include <string_view>

/// Nobody can tell which column is meant.
struct DoubtfulColumns : Failure
{
    using Failure::Failure;
};

/// Names or numbers, from 1, of the columns that hold x and y.
struct CoordinateColumns
{
    QString x;
    QString y;
    bool byHeader = false; ///< nobody asked for them, the header's names told them
};

/// The columns of a header by what columns of coordinates are usually called; empty when it has none or has
/// one twice. The likeliest pair counts: a column "n" beside x and y is a number.
CoordinateColumns coordinateColumns(const QStringList &names);

/// What was asked for; where nothing was, the header's columns or the first two. Throws DoubtfulColumns for y
/// before x: a mathematician's y is north, a surveyor's may be east.
CoordinateColumns wantedColumns(const QString &x, const QString &y, const QStringList &names);

/// Says on stderr which columns a header gave, unless they are the first two.
void tellColumns(const CoordinateColumns &columns, const QStringList &names);

/// Throws Failure for a header without a table that names latitude or y first: x is read first.
void refuseSwappedHeader(std::string_view line);
