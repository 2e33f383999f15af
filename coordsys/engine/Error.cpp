#include <coordsys/Error.h>

namespace nivora::cs {

Error::~Error() = default;

const char *Error::nameOf(Code code)
{
    switch (code) {
    case Code::Other:
        break;
    case Code::EmptyText:
        return "empty-text";
    case Code::NotUnderstood:
        return "not-understood";
    case Code::AmbiguousName:
        return "ambiguous-name";
    case Code::UnknownCode:
        return "unknown-code";
    case Code::UnknownUnit:
        return "unknown-unit";
    case Code::MissingParameters:
        return "missing-parameters";
    case Code::NoPlane:
        return "no-plane";
    case Code::NotWritable:
        return "not-writable";
    case Code::NoOperation:
        return "no-operation";
    case Code::MissingGrid:
        return "missing-grid";
    case Code::PointFailed:
        return "point-failed";
    case Code::InvalidArgument:
        return "invalid-argument";
    case Code::NotReady:
        return "not-ready";
    case Code::NoDatabase:
        return "no-database";
    case Code::FileFailed:
        return "file-failed";
    case Code::Engine:
        return "engine";
    }
    return "other";
}

Error::Code Error::codeOf(const std::exception &error)
{
    const auto *own = dynamic_cast<const Error *>(&error);
    return own ? own->code() : Code::Other;
}

} // namespace nivora::cs
