#pragma once

#include <QByteArray>
#include <QMap>
#include <QString>

namespace catalogue {

/// Puts finished files into a directory, all of them or none, and tells what becomes of each.
class Output
{
public:
    /// With \p dryRun nothing is written, only compared.
    Output(QString directory, bool dryRun)
        : m_directory(std::move(directory))
        , m_dryRun(dryRun)
    {}

    /// A file of the set.
    void put(const QString &name, const QByteArray &content);
    /// Writes those that differ. Throws Failure, after which the directory is as it was.
    void publish() const;
    /// How many files differed from what was there.
    int changed() const { return m_changed; }

private:
    QString m_directory;
    bool m_dryRun;
    int m_changed = 0;
    QMap<QString, QByteArray> m_files; ///< those that differ
};

} // namespace catalogue
