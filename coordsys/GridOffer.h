#pragma once

#include <coordsys/TransformOperation.h>

#include <QSharedDataPointer>

#include <optional>

namespace nivora::cs {

/// What missing grid files would buy: the operation that they belong to beside the best one that works in its
/// area without them. A value; copies share it. Threads: const calls may run together.
class NIVORA_CS_EXPORT GridOffer
{
public:
    /// What the operation would give, and metres without it.
    GridOffer(const TransformOperation &operation, std::optional<double> withoutM);
    GridOffer(const GridOffer &other);
    /// Copies.
    GridOffer &operator=(const GridOffer &other);
    ~GridOffer();

    /// The operation, the files that are here among its grids.
    const TransformOperation &operation() const;
    /// The files that are missing.
    QVector<TransformGrid> missing() const;
    /// The accuracy of the operation, metres; none when nobody knows. How far the realizations of a datum at
    /// an end lie apart is left aside here.
    std::optional<double> withM() const;
    /// That of the best without; none where only ballpark operations and those of unknown accuracy work.
    std::optional<double> withoutM() const;

private:
    struct Data;
    QSharedDataPointer<Data> m_data;
};

} // namespace nivora::cs
