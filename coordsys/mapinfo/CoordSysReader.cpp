#include "CoordSysReader_p.h"

#include "RecordReader_p.h"

namespace nivora::cs {

TABProjInfo_t lenientRecord(const CoordSysText &text, const ProjectionParamsManager &manager)
{
    RecordReader reader(text, manager);
    reader.readSystem();
    reader.readClauses();
    return reader.record();
}

CoordSysReading understoodRecord(const CoordSysText &text, const ProjectionParamsManager &manager)
{
    RecordReader reader(text, manager);
    reader.readSystem();
    checkSeparators(text);
    reader.understandRest();
    reader.throwFault();
    return {reader.record(), reader.assumptions()};
}

} // namespace nivora::cs
