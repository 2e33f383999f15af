#pragma once

#include <QByteArray>
#include <QString>

namespace catalogue {

/// Puts finished files into a directory and tells what became of each.
class Output
{
public:
    /// With \p dryRun nothing is written, only compared.
    Output(QString directory, bool dryRun)
        : m_directory(std::move(directory))
        , m_dryRun(dryRun)
    {}

    /// Throws Failure when the file cannot be written.
    void put(const QString &name, const QByteArray &content);
    /// How many files differed from what was there.
    int changed() const { return m_changed; }

private:
    QString m_directory;
    bool m_dryRun;
    int m_changed = 0;
};

} // namespace catalogue
