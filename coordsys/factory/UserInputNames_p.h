#pragma once

#include "SearchTables_p.h"

#include <QDir>
#include <QString>
#include <QStringList>
#include <QVector>

#include <functional>
#include <optional>
#include <vector>

namespace nivora::cs {

class MapinfoCoordSystem;

/// A system that a text names, by its code or by the text of its catalogue entry.
struct NamedSystem
{
    QString name;
    QString code;           ///< "EPSG:4326", empty when the entry has none
    QString prj;            ///< of an entry; empty for a system of the database
    int rank = 0;           ///< less is likelier, among systems with one name
    bool isForeign = false; ///< of a catalogue in another language than the factory's
    /// Whether it is one of heights alone, or geocentric.
    bool isHorizontal() const;
    /// "WGS 84 (EPSG:4326)"
    QString shown() const;
};

/// Names to look a text up in: those of the PROJ database, and those of the catalogues in every language that
/// the resource directory has. Reads the other languages' files when they are first needed. For one call.
class SystemNames
{
public:
    /// The catalogue, and where the other languages' lie.
    SystemNames(const MapinfoCoordSystem &catalogue, const QDir &resources, const QString &language);

    /// Systems that the text names best, letter case and repeated blanks aside: by the database's names and
    /// aliases (of those the two-dimensional ones, those in force, their own names before aliases, EPSG
    /// before others), else by the catalogues' names. More than one when the text does not tell which.
    QVector<NamedSystem> named(const QString &text) const;
    /// The same, blanks, punctuation and the word "zone" left aside ("ETRS89/UTM zone32N"), and by what
    /// people say for systems ("google").
    QVector<NamedSystem> namedLoosely(const QString &text) const;
    /// Those of the catalogues with the most similar names, the nearest first.
    QStringList nearest(const QString &text) const;
    /// What there is to say on a text that names no system; empty mostly.
    QString remark(const QString &text) const;

private:
    const QVector<NamedSystem> &foreignSystems() const;
    const QVector<NamedSystem> &databaseSystems() const;
    const std::vector<SearchAlias> &aliases() const;
    QVector<NamedSystem> aliased(const QString &text) const;
    bool isOfNames(const QString &text) const;
    QVector<NamedSystem> fromCatalogues(const std::function<bool(const NamedSystem &)> &fits) const;

    QDir m_resources;
    QString m_language;
    QString m_ownFile;
    QVector<NamedSystem> m_own;
    mutable QVector<NamedSystem> m_foreign;
    mutable QVector<NamedSystem> m_database;
    mutable std::optional<std::vector<SearchAlias>> m_aliases;
};

/// The authorities of the database, as it writes them.
QStringList databaseAuthorities();
/// The name that the database has for a code; empty when it has no such system. PROJ's reader of "EPSG:n"
/// also takes numbers of ESRI's.
QString databaseName(const QString &authority, const QString &code);
/// "EPSG:4326 (WGS 84)" and others with the most similar numbers of an authority.
QStringList nearestCodes(const QString &authority, const QString &code);
/// The most similar of some words, empty when none is within two letters.
QString nearestWord(const QString &word, const QStringList &words);

} // namespace nivora::cs
