#pragma once

// Tables of what people type, beside the catalogues.

#include <QFileInfo>
#include <QStringList>
#include <QVector>

#include <optional>
#include <string>
#include <vector>

namespace nivora::cs {

/// What people say for systems.
struct SearchAlias
{
    std::vector<std::vector<std::string>> names; ///< the words, as search keys, of each
    QStringList codes;                           ///< "EPSG:3857"; the likeliest first
    std::vector<std::string> words;              ///< what the catalogue says instead, as search keys
    QString remarks[2];                          ///< Russian, English

    /// "ru" or English; empty mostly.
    QString remark(const QString &language) const;
};

/// "EPSG:2154" of "2154"; a code that names its authority stays.
QString withAuthority(const QString &code);

/// The lines of a UTF-8 table: cells between tabs, comments left out. Nothing when it cannot be opened.
std::optional<std::vector<QStringList>> tableRows(const QFileInfo &file);

/// Lines of names, EPSG codes, words instead and remarks; others are passed over. Nothing when the table
/// cannot be opened.
std::optional<std::vector<SearchAlias>> aliasesIn(const QFileInfo &file);

} // namespace nivora::cs
