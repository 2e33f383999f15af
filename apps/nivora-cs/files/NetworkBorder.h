#pragma once

#include <QString>
#include <QStringList>

/// Keeps the engines off the network unless \p argument, what the user calls the input, itself names a place
/// there: a file may name one too, in a linked reference or as the source of a virtual layer, and what
/// somebody else's computer answers would be believed. Call it behind GDALAllRegister().
void keepBorder(const QString &argument);

/// The places that files named and that were not asked.
QStringList placesNotAsked();
/// Why the place of missing grids cannot be reached, asked now; empty when it can.
QString whyNoNetwork();
