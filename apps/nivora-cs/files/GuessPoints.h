#pragma once

#include <QPointF>
#include <QString>
#include <QVector>

class CommandLine;
class Session;

/// Coordinates whose system is asked for.
struct GuessPoints
{
    QVector<QPointF> points;
    QString stated;  ///< code of the system that the file has, "EPSG:28407"; empty without one
    QString problem; ///< why the file's system cannot be told; empty mostly
};

/// Of the first argument's file: a table of points, as transform reads it, or the vertices of any file that
/// GDAL reads, evenly chosen where there are many. Throws Failure.
GuessPoints readGuessPoints(const CommandLine &line, const Session &session);
