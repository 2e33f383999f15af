#pragma once

#include "CatalogueCache_p.h"
#include "CatalogueSource_p.h"

#include <QString>

#include <memory>
#include <optional>

namespace nivora::cs {

/// What a system keeps of the catalogues that it was made with: it finds them while their owner lives, and
/// does not keep the owner alive. Thread-safe.
class CatalogueToken
{
public:
    virtual ~CatalogueToken() = default;
    /// Null once the owner is gone. Its end waits until the pointer is let go, on the thread that asked.
    virtual std::shared_ptr<const CatalogueSource> lock() const = 0;
    using Codes = CatalogueCache<QString, int>;
    /// What searches for texts found with these catalogues, nothing included.
    Codes &codes() const { return m_codes; }

private:
    mutable Codes m_codes{1000};
};
using CatalogueTokenPtr = std::shared_ptr<const CatalogueToken>;

/// The token of the innermost scope's source; null without a scope.
CatalogueTokenPtr tokenOfScope();

/// While one lives, the catalogues that a token finds are the active ones of this thread; nothing where a
/// scope is open already, or the token finds none.
class AskedCatalogues
{
public:
    explicit AskedCatalogues(const CatalogueTokenPtr &token);
    AskedCatalogues(const AskedCatalogues &) = delete;
    AskedCatalogues &operator=(const AskedCatalogues &) = delete;

private:
    std::shared_ptr<const CatalogueSource> m_source; ///< outlives the scope
    std::optional<SourceScope> m_scope;
};

} // namespace nivora::cs
