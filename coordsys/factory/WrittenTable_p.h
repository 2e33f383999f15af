#pragma once

#include <coordsys/PrjText.h>

#include <QDir>
#include <QHash>

#include <mutex>
#include <optional>

namespace nivora::cs {

/// "coordsys-texts.tsv" of a resource directory: the CoordSys texts of the EPSG systems that the MapInfo
/// catalogue lacks, as they were proved when the table was made. A line is the code, the text's greatest
/// error and what is off without its affine clause (metres), and the text; or the code, the number of what
/// is lacking, how far the nearest is off, and nothing. Read when it is first asked for; without the file
/// nothing is known. Thread-safe.
class WrittenTable
{
public:
    explicit WrittenTable(const QDir &directory);

    std::optional<PrjText> text(int epsg) const;

private:
    void read() const;

    QString m_path;
    mutable std::once_flag m_once;
    mutable QHash<int, PrjText> m_texts;
};

} // namespace nivora::cs
