#pragma once

#include <coordsys/CoordSystemParams.h>
#include <coordsys/TextRef.h>

#include <QObject>

#include <memory>

class QTextStream;

namespace nivora::cs {

/// Reads a MapInfo catalogue of coordinate systems line by line. Opens no file and chooses no encoding: the
/// caller hands it a configured stream, which it borrows. Belongs to one thread.
/// A heading is "---Name---" in double quotes, an entry is "Name\p4326", 1, 104.
class NIVORA_CS_EXPORT MapinfoPrjReader : public QObject
{
    Q_OBJECT
public:
    /// Borrows an open stream; nothing is read yet.
    explicit MapinfoPrjReader(QTextStream *stream, QObject *parent = nullptr);
    ~MapinfoPrjReader() override;

    /// Goes to the next heading or entry; false at the end.
    bool readNext();
    /// The trimmed name when readNext() stopped at a heading, else null (an empty heading is not null).
    /// Refers to the reader's current line: dead after the next readNext() and with the reader; keep
    /// toString().
    TextRef capturedCategoryName() const;
    /// The entry that readNext() stopped at, else an empty one.
    CoordSystemParams prj() const;
    /// Lines read so far, ignored ones included.
    int currentLineNumber() const;
    /// The heading or entry without what stands before it: the whole trimmed line for an ignored or rejected
    /// one. As short-lived as capturedCategoryName().
    TextRef currentLineTextRef() const;
    /// Percent of the device read (it runs ahead by the stream's buffer).
    double progress() const;
    /// Empty, or a comment that begins with '#'.
    static bool isIgnoredLine(const QString &line);

Q_SIGNALS:
    /// A line that is neither ignored nor heading nor entry.
    void rejected();
    /// Once for every line read, whatever its kind.
    void captured();

private:
    struct Data;
    const std::unique_ptr<Data> m_data;
};

} // namespace nivora::cs
