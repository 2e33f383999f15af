#pragma once

#include "FeatureBatch.h"

#include <QFile>

/// The list of features that were left out, a table that appears with its first line.
class RejectedList
{
public:
    explicit RejectedList(const QString &path)
        : m_file(path)
    {}
    /// Whether the file is one, and none of somebody else's that happens to have the name.
    static bool isOne(const QString &path);
    /// The name of the list beside an output.
    static QString nameFor(const QString &out);
    /// Throws Failure.
    void add(const QString &layer, const Rejection &rejection);
    /// Throws Failure when something could not be written.
    void close();
    qint64 count() const { return m_count; }

private:
    QFile m_file;
    qint64 m_count = 0;
};
