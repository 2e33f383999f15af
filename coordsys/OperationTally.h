#pragma once

#include <coordsys/TransformOperation.h>

#include <QVector>

#include <memory>

namespace nivora::cs {

/// How many points went by which operation. Lent to BulkTransform (BulkOptions::tally), any number of calls
/// after each other or at once. What PROJ says it used for a point counts; points that fail are not counted.
/// Thread-safe.
class NIVORA_CS_EXPORT OperationTally
{
public:
    /// An operation and its points.
    struct Use
    {
        /// Which it was.
        TransformOperation operation;
        /// How many went by it.
        qint64 points = 0;
    };

    OperationTally();
    OperationTally(const OperationTally &) = delete;
    OperationTally &operator=(const OperationTally &) = delete;
    ~OperationTally();

    /// The most used first.
    QVector<Use> uses() const;
    /// Points whose datums' difference was left out.
    qint64 ballparkPoints() const;
    /// Counts points.
    void add(const TransformOperation &operation, qint64 points);

private:
    struct Data;
    std::unique_ptr<Data> m_data;
};

} // namespace nivora::cs
