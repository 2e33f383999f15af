#pragma once

#include "FeatureBatch.h"

#include <QStringList>

#include <condition_variable>
#include <deque>
#include <exception>
#include <memory>
#include <mutex>
#include <thread>

/// Reads a layer and converts its geometries in a thread of its own, while the caller writes. Nothing else
/// may touch the layer's data set in the meantime.
class FeatureReader
{
public:
    FeatureReader(OGRLayerH layer, const GeometryChange &change);
    /// Does not wait for what is left to be read.
    ~FeatureReader();
    FeatureReader(const FeatureReader &) = delete;
    FeatureReader &operator=(const FeatureReader &) = delete;

    /// The next features, null at the end. Throws Failure when the layer cannot be read to its end.
    std::unique_ptr<FeatureBatch> next();
    /// What the driver warned of, complete at the end.
    const QStringList &warnings() const { return m_warnings; }

private:
    void readAll();
    void readBatches();
    bool hand(std::unique_ptr<FeatureBatch> batch);

    OGRLayerH m_layer;
    const GeometryChange &m_change;
    std::mutex m_mutex; ///< guards what follows
    std::condition_variable m_changed;
    std::deque<std::unique_ptr<FeatureBatch>> m_ready;
    bool m_atEnd = false;
    bool m_stopped = false;
    std::exception_ptr m_failure;
    QStringList m_warnings;
    std::thread m_thread; ///< last: it uses all the others
};
