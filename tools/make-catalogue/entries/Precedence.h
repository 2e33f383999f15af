#pragma once

#include "entries/Entry.h"
#include "reading/Table.h"

#include <QRegularExpression>

#include <vector>

namespace catalogue {

/// Which of the systems that share one text stands first: "precedence.tsv".
class Precedence
{
public:
    explicit Precedence(const QString &tables);

    /// The rank of a system by its EPSG name; the smallest stands first.
    int of(const QString &name) const;
    /// File order: by category, in it by rank, in that as the entries came. Throws Failure where a text's
    /// first entry is not one of its best: then the categories need another order, or a row another rank.
    void sort(std::vector<Entry> &entries) const;

private:
    struct Rule
    {
        int rank;
        QRegularExpression pattern;
    };
    std::vector<Rule> m_rules;
};

} // namespace catalogue
