#include "FeatureReader.h"

#include "Output.h"

#include <QObject>

#include <utility>

namespace {

constexpr std::size_t mostReady = 4; ///< batches, so that memory does not grow with the input

} // namespace

FeatureReader::FeatureReader(OGRLayerH layer, const GeometryChange &change)
    : m_layer(layer)
    , m_change(change)
    , m_thread([this] { readAll(); })
{}

FeatureReader::~FeatureReader()
{
    {
        const std::lock_guard<std::mutex> lock(m_mutex);
        m_stopped = true;
    }
    m_changed.notify_all();
    m_thread.join();
}

std::unique_ptr<FeatureBatch> FeatureReader::next()
{
    std::unique_lock<std::mutex> lock(m_mutex);
    m_changed.wait(lock, [this] { return !m_ready.empty() || m_atEnd; });
    if (m_ready.empty()) {
        if (m_failure)
            std::rethrow_exception(m_failure);
        return nullptr;
    }
    std::unique_ptr<FeatureBatch> batch = std::move(m_ready.front());
    m_ready.pop_front();
    m_changed.notify_all();
    return batch;
}

void FeatureReader::readAll()
{
    const GdalMessages messages; // handlers of errors belong to threads
    std::exception_ptr failure;
    try {
        readBatches();
        if (messages.failed()) // the driver stopped in the middle
            throw Failure(QObject::tr("\"%1\" cannot be read to its end: %2")
                              .arg(QString::fromUtf8(OGR_L_GetName(m_layer)), messages.reason()));
    } catch (...) {
        failure = std::current_exception();
    }
    const std::lock_guard<std::mutex> lock(m_mutex);
    m_failure = failure;
    m_warnings = messages.warnings();
    m_atEnd = true;
    m_changed.notify_all();
}

void FeatureReader::readBatches()
{
    auto batch = std::make_unique<FeatureBatch>(m_change);
    OGR_L_ResetReading(m_layer);
    while (Feature source{OGR_L_GetNextFeature(m_layer)}) {
        if (m_change.choice && !m_change.choice->includes(OGR_F_GetGeometryRef(source.get())))
            continue;
        batch->add(std::move(source));
        if (!batch->isFull())
            continue;
        if (!hand(std::exchange(batch, std::make_unique<FeatureBatch>(m_change))))
            return;
    }
    hand(std::move(batch));
}

/// False when nobody wants more.
bool FeatureReader::hand(std::unique_ptr<FeatureBatch> batch)
{
    batch->convert();
    std::unique_lock<std::mutex> lock(m_mutex);
    m_changed.wait(lock, [this] { return m_stopped || m_ready.size() < mostReady; });
    m_ready.push_back(std::move(batch));
    m_changed.notify_all();
    return !m_stopped;
}
