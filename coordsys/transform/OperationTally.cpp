#include <coordsys/OperationTally.h>

#include <QMutex>
#include <QMutexLocker>

#include <algorithm>

namespace nivora::cs {

struct NIVORA_CS_NO_EXPORT OperationTally::Data
{
    mutable QMutex mutex; ///< guards the following
    QVector<Use> uses;
};

OperationTally::OperationTally()
    : m_data(std::make_unique<Data>())
{}

OperationTally::~OperationTally() = default;

QVector<OperationTally::Use> OperationTally::uses() const
{
    const QMutexLocker lock(&m_data->mutex);
    QVector<Use> sorted = m_data->uses;
    std::sort(sorted.begin(), sorted.end(), [](const Use &a, const Use &b) {
        return a.points != b.points ? a.points > b.points : a.operation.name < b.operation.name;
    });
    return sorted;
}

qint64 OperationTally::ballparkPoints() const
{
    qint64 points = 0;
    for (const Use &use : uses())
        points += use.operation.isBallpark ? use.points : 0;
    return points;
}

void OperationTally::add(const TransformOperation &operation, qint64 points)
{
    const QMutexLocker lock(&m_data->mutex);
    const auto same = [&operation](const Use &use) {
        return use.operation.name == operation.name && use.operation.definition == operation.definition;
    };
    const auto known = std::find_if(m_data->uses.begin(), m_data->uses.end(), same);
    if (known == m_data->uses.end())
        m_data->uses << Use{operation, points};
    else
        known->points += points;
}

} // namespace nivora::cs
