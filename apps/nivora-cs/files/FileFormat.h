#pragma once

#include "CoordinateColumns.h"
#include "PointText.h"

#include <algorithm>
#include <memory>
#include <string>
#include <string_view>

/// What the first line of a file tells about the rest.
struct FileHead
{
    std::shared_ptr<const PointReader> reader;
    std::string delimiters; ///< of quoted fields; empty: quotes mean nothing
    std::string header;     ///< what the line becomes, when it is a header
    bool isHeader = false;
};

/// How files hold points.
class FileFormat
{
public:
    virtual ~FileFormat() = default;
    /// What may delimit fields in the first line; empty: quotes mean nothing.
    virtual std::string delimiters() const { return {}; }
    /// \p firstLine is the first that is not passed on. Throws Failure when the file cannot be used.
    virtual FileHead head(std::string_view firstLine) const = 0;
    /// Whether a line is passed on as it is.
    virtual bool passesOn(std::string_view line) const = 0;
    /// Whether a byte order mark and a missing last line end stay as they were.
    virtual bool keepsBytes() const { return false; }
};

/// A point a line, the same way in every file. Blank lines and lines that begin with '#' are passed on.
class PlainFormat : public FileFormat
{
public:
    explicit PlainFormat(std::shared_ptr<const PointReader> reader)
        : m_reader(std::move(reader))
    {}
    FileHead head(std::string_view firstLine) const override
    {
        refuseSwappedHeader(firstLine);
        return {m_reader, {}, {}, false};
    }
    bool passesOn(std::string_view line) const override
    {
        const auto first = std::find_if_not(line.begin(), line.end(), isBlank);
        return first == line.end() || *first == '#';
    }

private:
    std::shared_ptr<const PointReader> m_reader;
};
