#include "OperationWatch_p.h"

#include "TransformOperations_p.h"

#include <cstring>

namespace nivora::cs {
namespace {

void noteChange(void *flag, int, const char *message)
{
    if (std::strncmp(message, "Using coordinate operation", 26) == 0)
        *static_cast<bool *>(flag) = true;
}

} // namespace

OperationWatch::OperationWatch(PJ_CONTEXT *context)
    : m_context(context)
{
    if (!context)
        return;
    proj_log_func(context, &m_mayHaveChanged, noteChange);
    proj_log_level(context, PJ_LOG_DEBUG);
}

const OperationWatch::Pair &OperationWatch::lastUsed(const TransformQueue &queue)
{
    if (m_mayHaveChanged || !m_context) {
        m_last = {find(queue.first), queue.second ? find(queue.second) : nullptr};
        m_mayHaveChanged = false;
    }
    return m_last;
}

OperationPtr OperationWatch::find(const ProjOperation &step)
{
    if (step.single)
        return step.single;
    const PJ_PROJ_INFO info = proj_pj_info(step.pj.get());
    const QByteArray key = QByteArray(info.description) + '\n' + info.definition;
    const auto known = m_known.constFind(key);
    if (known != m_known.constEnd())
        return *known;
    PJ_CONTEXT *context = m_context ? m_context : globalProjContext();
    const auto used = std::make_shared<const TransformOperation>(lastUsedOperation(context, step.pj.get()));
    m_known.insert(key, used);
    return used;
}

} // namespace nivora::cs
