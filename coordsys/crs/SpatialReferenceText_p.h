#pragma once

namespace nivora::cs {

/// While one lives, exports of this thread to CoordSys strings do not log what they lose: for a text that
/// only names a system, such as an exception's, nothing is lost.
class QuietExportScope
{
public:
    QuietExportScope() { ++depth; }
    ~QuietExportScope() { --depth; }
    QuietExportScope(const QuietExportScope &) = delete;
    QuietExportScope &operator=(const QuietExportScope &) = delete;
    static bool isOn() { return depth > 0; }

private:
    static thread_local int depth;
};

} // namespace nivora::cs
