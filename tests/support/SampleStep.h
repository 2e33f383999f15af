#pragma once

#include <QtGlobal>

namespace support {

/// Laws over a database look at every n-th member. The environment variable NIVORA_TEST_STEP says how many
/// those skip that skip 20 without it: 1 is twenty times as thorough, 60 takes a third of the time.
inline int sampleStep(int usual = 20)
{
    constexpr int usualOfAll = 20;
    const int asked = qEnvironmentVariableIntValue("NIVORA_TEST_STEP");
    return asked > 0 ? qMax(1, usual * asked / usualOfAll) : usual;
}

} // namespace support
