#include "CatalogueSource_p.h"

#include "CatalogueToken_p.h"
#include "CodedError_p.h"
#include "CoordSysTexts_p.h"
#include <coordsys/PrjText.h>

#include <atomic>
#include <stdexcept>

namespace nivora::cs {
namespace {

thread_local const CatalogueSource *innermost = nullptr;
std::atomic<DefaultCatalogues> lookUpDefault{nullptr};

} // namespace

CatalogueSource::~CatalogueSource() = default;

std::shared_ptr<const CatalogueToken> CatalogueSource::token() const { return nullptr; }

QVector<int> CatalogueSource::codesNearRecord(const TABProjInfo_t &) const { return {}; }

QString CatalogueSource::prjOfCode(int) const { return {}; }

std::optional<PrjText> CatalogueSource::writtenText(int) const { return std::nullopt; }

SourceScope::SourceScope(const CatalogueSource &source)
    : m_outer(innermost)
{
    innermost = &source;
}

SourceScope::~SourceScope() { innermost = m_outer; }

CatalogueTokenPtr tokenOfScope() { return innermost ? innermost->token() : nullptr; }

AskedCatalogues::AskedCatalogues(const CatalogueTokenPtr &token)
    : m_source(token && !innermost ? token->lock() : nullptr)
{
    if (m_source)
        m_scope.emplace(*m_source);
}

std::shared_ptr<const CatalogueSource> activeCatalogues(std::nothrow_t)
{
    if (innermost)
        return {std::shared_ptr<void>(), innermost}; // borrowed: the scope's source outlives the scope
    const DefaultCatalogues lookUp = lookUpDefault.load();
    return lookUp ? lookUp() : nullptr;
}

std::shared_ptr<const CatalogueSource> activeCatalogues()
{
    std::shared_ptr<const CatalogueSource> installed = activeCatalogues(std::nothrow);
    if (!installed)
        throwCoded<std::logic_error>(Error::Code::NotReady, CoordSysTexts::tr("Не проинициализированы КС"));
    return installed;
}

void setDefaultCatalogues(DefaultCatalogues lookUp) { lookUpDefault.store(lookUp); }

} // namespace nivora::cs
